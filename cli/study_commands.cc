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
#include "cli/study_lookup.h"
#include "json/company_json.h"
#include "json/json_values.h"
#include "model/company.h"

namespace kwx::cli {
namespace {

// A value as the text tables show it: dates ISO (the zero date, a date never set, as blank),
// numbers by their shortest text.
std::string Cell(const Variant& v) {
  if (v.IsEmpty() || v.IsNull() || v.IsArray() || v.IsObject()) return "";
  if (v.type() == VarType::Date) return v.AsDate().serial == 0 ? "" : Format(v, "yyyy-mm-dd");
  if (v.type() == VarType::String) return TextFromSql(v);
  return CStr(v);
}

void PrintSummary(std::ostream& out, const Company& c) {
  out << c.strName << " (" << c.strSymbol << " on " << c.ExchangeID << "), CompanyID "
      << c.CompanyID << "\n";
  out << "Sector: " << c.SectorID << "   Industry: " << c.IndustryID
      << "   Data source: " << c.DataSourceID << "\n";
  out << "Price " << Cell(Variant(c.sngCurPrice)) << " (52-week " << Cell(Variant(c.sngLowPrice52W))
      << " - " << Cell(Variant(c.sngHighPrice52W)) << ")   P/E " << Cell(Variant(c.sngCurPE))
      << "   Yield " << Cell(Variant(c.sngCurYield)) << "   Updated "
      << Cell(Variant(c.datDataUpdated)) << "\n";
  out << "Last fiscal year " << Cell(Variant(c.datLastFY)) << "   Latest quarter "
      << Cell(Variant(c.datLatestQEnding)) << "   Data years " << c.intNumDataYears << "\n";

  out << "\nYearly\n";
  bool first = true;
  for (const auto& b : YearlyRow::Bindings()) {
    out << (first ? "" : "\t") << b.column.name;
    first = false;
  }
  out << "\n";
  for (const YearlyRow& row : c.Yearly) {
    first = true;
    for (const auto& b : YearlyRow::Bindings()) {
      out << (first ? "" : "\t") << Cell(GetField(row, b));
      first = false;
    }
    out << "\n";
  }

  const JudgmentAnalysisGroup& a = c.JudgmentAnalysis;
  out << "\nJudgment\n";
  out << "Projected growth: revenue " << Cell(Variant(c.sngRevProjGrRate)) << "%, EPS "
      << Cell(Variant(c.sngEPSProjGrRate)) << "%\n";
  out << "Projected P/E: high " << Cell(Variant(a.sngProjAvgPEHigh)) << ", low "
      << Cell(Variant(a.sngProjAvgPELow)) << "\n";
  out << "Estimated prices: high " << Cell(Variant(a.sngEstHighPrice)) << ", low "
      << Cell(Variant(c.sngEstLowPrice)) << "   Up/down ratio " << Cell(Variant(c.sngUpDownRatio))
      << "   Total return " << Cell(Variant(c.sngTotalReturn)) << "%\n";
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
  auto* list = app.add_subcommand("list", "list the studies: ID, symbol, exchange, name, price, "
                                          "last updated");
  list->add_flag("--json", *list_json, "print a JSON array of objects");
  list->callback([&ctx, list_json] {
    ctx.reads_only = true;
    kwxLoader& loader = ctx.OpenLoader();
    Variant data;
    Variant fields;
    loader.Access_GetCompanies(kStudyListSql, data, fields);
    PrintErrorReports(loader, *ctx.err);
    if (!fields.IsArray()) throw CommandError("cannot read the company list");
    const int32_t rows = data.IsArray() ? data.AsArray().UBound(1) + 1 : 0;
    nlohmann::json json = nlohmann::json::array();
    if (!*list_json) {
      *ctx.out << "CompanyID\tSymbol\tExchange\tName\tPrice\tUpdated\n";
    }
    for (int32_t r = 0; r < rows; ++r) {
      nlohmann::json item = nlohmann::json::object();
      bool first = true;
      for (const char* column : kStudyListColumns) {
        const Variant v = FieldValue(column, fields, data, r);
        if (*list_json) {
          item[column] = v.type() == VarType::String ? nlohmann::json(TextFromSql(v)) : ToJson(v);
        } else {
          *ctx.out << (first ? "" : "\t") << Cell(v);
          first = false;
        }
      }
      if (*list_json) {
        json.push_back(std::move(item));
      } else {
        *ctx.out << "\n";
      }
    }
    if (*list_json) *ctx.out << json.dump(2) << "\n";
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
