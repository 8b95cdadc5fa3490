// kwx show, kwx list, kwx delete, kwx price.
#include <CLI/CLI.hpp>
#include <memory>
#include <ostream>
#include <string>
#include <vector>

#include "access/sql_text.h"
#include "automation/conversions.h"
#include "automation/dates.h"
#include "automation/format.h"
#include "automation/safe_array.h"
#include "cli/commands.h"
#include "cli/context.h"
#include "cli/error_reports.h"
#include "cli/series_table.h"
#include "cli/study_lookup.h"
#include "cli/table_output.h"
#include "json/company_json.h"
#include "json/json_values.h"
#include "studies/study_index.h"
#include "model/company.h"

namespace kwx::cli {
namespace {

// The headers of `kwx list`'s aligned form, one per column of its query; the CSV and JSON
// forms use the query's column names.
const std::vector<std::string> kListHeaders = {"ID", "Symbol", "Exchange", "Name", "Price",
                                               "Updated"};

void PrintSummary(std::ostream& out, const Company& c) {
  const auto date = [](Date d) { return DisplayText(Variant(d)); };
  out << c.strName << " (" << c.strSymbol << " on " << c.ExchangeID << "), CompanyID "
      << c.CompanyID << "\n";
  out << "Sector: " << c.SectorID << "   Industry: " << c.IndustryID
      << "   Data source: " << c.DataSourceID << "\n";
  out << "Price " << Grouped(c.sngCurPrice) << " (52-week " << Grouped(c.sngLowPrice52W) << " - "
      << Grouped(c.sngHighPrice52W) << ")   P/E " << Ratio(c.sngCurPE) << "   Yield "
      << Percent(c.sngCurYield) << "   Updated " << date(c.datDataUpdated) << "\n";
  out << "Last fiscal year " << date(c.datLastFY) << "   Latest quarter "
      << date(c.datLatestQEnding) << "   Data years " << c.intNumDataYears << "\n";

  out << "\nYearly\n";
  PrintAligned(out, SeriesTable(c, "yearly"));

  const JudgmentAnalysisGroup& a = c.JudgmentAnalysis;
  out << "\nJudgment\n";
  out << "Projected growth: revenue " << Percent(c.sngRevProjGrRate) << ", EPS "
      << Percent(c.sngEPSProjGrRate) << "\n";
  out << "Projected P/E: high " << Ratio(a.sngProjAvgPEHigh) << ", low "
      << Ratio(a.sngProjAvgPELow) << "\n";
  out << "Estimated prices: high " << Grouped(a.sngEstHighPrice) << ", low "
      << Grouped(c.sngEstLowPrice) << "   Up/down ratio " << Ratio(c.sngUpDownRatio)
      << "   Total return " << Percent(c.sngTotalReturn) << "\n";
  if (!c.Notes.empty()) out << "\nNotes\n" << c.Notes << "\n";
}

}  // namespace

void AddStudyCommands(CLI::App& app, Context& ctx) {
  auto show_ids = std::make_shared<std::vector<std::string>>();
  auto show_json = std::make_shared<bool>(false);
  auto* show = app.add_subcommand("show", "show a study: by ID, or by SYMBOL EXCHANGE");
  show->add_option("STUDY", *show_ids, "a company ID, or a symbol and an exchange")
      ->required()
      ->expected(1, 2);
  show->add_flag("--json", *show_json, "print the whole study as one JSON object");
  show->callback([&ctx, show_ids, show_json] {
    ctx.reads_only = true;
    const Company company = LoadStudy(ctx, *show_ids);
    if (*show_json) {
      *ctx.out << CompanyJson(company).dump(2) << "\n";
    } else {
      PrintSummary(*ctx.out, company);
    }
  });

  auto list_json = std::make_shared<bool>(false);
  auto list_csv = std::make_shared<bool>(false);
  auto* list = app.add_subcommand("list", "list the studies: ID, symbol, exchange, name, price, "
                                          "last updated");
  auto* json_flag = list->add_flag("--json", *list_json, "print a JSON array of objects");
  list->add_flag("--csv", *list_csv, "print CSV: a header row of the column names, then a "
                                     "record per study, values unrounded")
      ->excludes(json_flag);
  list->callback([&ctx, list_json, list_csv] {
    ctx.reads_only = true;
    const ValueTable table = QueryList(ctx, kStudyListSql, "company list");
    if (*list_json) {
      *ctx.out << JsonRows(table).dump(2) << "\n";
    } else if (*list_csv) {
      PrintCsv(*ctx.out, table);
    } else {
      PrintAligned(*ctx.out, table, kListHeaders);
    }
  });

  auto delete_id = std::make_shared<int32_t>(0);
  auto* del = app.add_subcommand("delete", "delete a study with all its rows and memberships");
  del->add_option("ID", *delete_id, "the company ID")->required()->check(WholeNumberId());
  del->callback([&ctx, delete_id] {
    kwxLoader& loader = ctx.OpenLoader();
    if (!loader.Access_DoesRecordExist(*delete_id, "Company", "CompanyID")) {
      throw CommandError("no study found for ID " + std::to_string(*delete_id));
    }
    loader.Access_Delete(*delete_id);
    PrintErrorReports(loader, *ctx.err);
    if (loader.Access_DoesRecordExist(*delete_id, "Company", "CompanyID")) {
      throw CommandError("study " + std::to_string(*delete_id) + " was not deleted");
    }
    *ctx.out << "deleted study " << *delete_id << "\n";
  });

  struct PriceArgs {
    int32_t id = 0;
    float price = 0;
    std::string date;
    float high = 0;
    float low = 0;
  };
  auto p = std::make_shared<PriceArgs>();
  auto* price = app.add_subcommand(
      "price", "set a study's current price and 52-week range in place (DATE M/d/yyyy or "
               "yyyy-mm-dd)");
  price->add_option("ID", p->id, "the company ID")->required()->check(WholeNumberId());
  price->add_option("PRICE", p->price, "the current price")->required();
  price->add_option("DATE", p->date, "the day of the price")->required();
  price->add_option("HIGH", p->high, "the 52-week high")->required();
  price->add_option("LOW", p->low, "the 52-week low")->required();
  price->callback([&ctx, p] {
    const std::optional<Date> when = ParseDate(p->date);
    if (!when) throw CommandError("'" + p->date + "' is not a date (M/d/yyyy or yyyy-mm-dd)", 2);
    kwxLoader& loader = ctx.OpenLoader();
    const bool updated = loader.Access_UpdateCompanyPrice(p->id, p->price, *when, p->high, p->low);
    PrintErrorReports(loader, *ctx.err);
    if (!updated) throw CommandError("no study found for ID " + std::to_string(p->id));
    *ctx.out << "updated study " << p->id << ": price " << CStr(Variant(p->price)) << " on "
             << FormatDate(*when, "yyyy-mm-dd") << "\n";
  });
}

}  // namespace kwx::cli
