// kwx comparison save|show|delete, kwx pert save|show|delete.
#include <CLI/CLI.hpp>
#include <memory>
#include <ostream>
#include <string>
#include <vector>

#include "automation/conversions.h"
#include "automation/dates.h"
#include "automation/format.h"
#include "automation/safe_array.h"
#include "cli/commands.h"
#include "cli/context.h"
#include "cli/error_reports.h"
#include "cli/study_lookup.h"
#include "cli/table_output.h"
#include "json/json_values.h"
#include "model/comparison.h"
#include "model/pert_report.h"

namespace kwx::cli {
namespace {

// What `save` takes for either kind of list.
struct SaveArgs {
  std::string name;
  std::vector<int32_t> companies;
  std::string description;
  int32_t id = 0;
  std::string person;
  int16_t section = 0;
};

// What `delete` takes.
struct DeleteArgs {
  int32_t id = 0;
  int32_t company = 0;
};

Date Today() {
  const Date now = Now();
  return DateSerial(Year(now), Month(now), Day(now));
}

std::string Cell(const Variant& v) {
  if (v.IsEmpty() || v.IsNull() || v.IsArray() || v.IsObject()) return "";
  if (v.type() == VarType::Date) return Format(v, "yyyy-mm-dd");
  return CStr(v);
}

template <class Rec>
nlohmann::json HeaderJson(const Rec& rec, std::string_view key, int32_t id) {
  nlohmann::json out = nlohmann::json::object();
  out[std::string(key)] = id;
  for (const auto& b : Rec::Bindings()) out[std::string(b.column.name)] = ToJson(GetField(rec, b));
  return out;
}

template <class Rec>
void PrintHeader(std::ostream& out, const Rec& rec, std::string_view key, int32_t id) {
  out << key << ": " << id << "\n";
  for (const auto& b : Rec::Bindings()) {
    const std::string value = Cell(GetField(rec, b));
    out << b.column.name << ":" << (value.empty() ? "" : " ") << value << "\n";
  }
}

// The figures `comparison show` sets side by side, one row each, in this order.
struct KeyFigure {
  const char* label;
  Align align;
  std::string (*text)(const Company&);
};

const KeyFigure kKeyFigures[] = {
    {"ID", Align::kRight, [](const Company& c) { return std::to_string(c.CompanyID); }},
    {"Name", Align::kLeft, [](const Company& c) { return c.strName; }},
    {"Exchange", Align::kLeft, [](const Company& c) { return c.ExchangeID; }},
    {"Price", Align::kRight, [](const Company& c) { return Grouped(c.sngCurPrice); }},
    {"P/E", Align::kRight, [](const Company& c) { return Ratio(c.sngCurPE); }},
    {"Yield", Align::kRight, [](const Company& c) { return Percent(c.sngCurYield); }},
    {"Sales, latest year", Align::kRight,
     [](const Company& c) { return c.Yearly.empty() ? "" : Grouped(c.Yearly[0].Sales); }},
    {"EPS, latest year", Align::kRight,
     [](const Company& c) { return c.Yearly.empty() ? "" : Grouped(c.Yearly[0].EPS); }},
    {"Sales growth, 5-year history", Align::kRight,
     [](const Company& c) { return Percent(c.sngRevHist5YrGr); }},
    {"Sales growth, projected", Align::kRight,
     [](const Company& c) { return Percent(c.sngRevProjGrRate); }},
    {"EPS growth, 5-year history", Align::kRight,
     [](const Company& c) { return Percent(c.sngEPSHist5YrGr); }},
    {"EPS growth, projected", Align::kRight,
     [](const Company& c) { return Percent(c.sngEPSProjGrRate); }},
    {"Projected P/E, high", Align::kRight,
     [](const Company& c) { return Ratio(c.JudgmentAnalysis.sngProjAvgPEHigh); }},
    {"Projected P/E, low", Align::kRight,
     [](const Company& c) { return Ratio(c.JudgmentAnalysis.sngProjAvgPELow); }},
    {"Estimated high price", Align::kRight,
     [](const Company& c) { return Grouped(c.JudgmentAnalysis.sngEstHighPrice); }},
    {"Estimated low price", Align::kRight,
     [](const Company& c) { return Grouped(c.sngEstLowPrice); }},
    {"Up/down ratio", Align::kRight, [](const Company& c) { return Ratio(c.sngUpDownRatio); }},
    {"Total return", Align::kRight, [](const Company& c) { return Percent(c.sngTotalReturn); }},
};

// The help text's account of kKeyFigures.
std::string KeyFigureNames() {
  std::string names;
  for (const KeyFigure& f : kKeyFigures) names.append(names.empty() ? "" : "; ").append(f.label);
  return names;
}

// Prints the members side by side: a column per member headed by its symbol, a row per key
// figure, then, when a member carries any, the field texts saved with each member. A member
// whose study is gone shows its ID and "(no study)".
void PrintKeyFigures(kwxLoader& loader, const std::vector<ComparisonMember>& members,
                     std::ostream& out) {
  std::vector<TextTable::Column> columns = {{"", Align::kLeft}};
  std::vector<Company> studies;
  bool field_data = false;
  for (const ComparisonMember& m : members) {
    Company& c = studies.emplace_back();
    loader.Access_Get(m.CompanyID, "", "", c);
    const bool found = c.CompanyID >= 1;
    columns.push_back(
        {found ? c.strSymbol : std::to_string(m.CompanyID) + " (no study)", Align::kRight});
    field_data |= m.FieldData.IsArray();
  }
  TextTable table(std::move(columns));
  for (const KeyFigure& f : kKeyFigures) {
    std::vector<TableCell> cells = {{f.label, Align::kLeft}};
    for (const Company& c : studies) {
      cells.push_back({c.CompanyID >= 1 ? f.text(c) : "", f.align});
    }
    table.AddCells(std::move(cells));
  }
  if (field_data) {
    std::vector<TableCell> cells = {{"Saved field data", Align::kLeft}};
    for (const ComparisonMember& m : members) {
      std::string texts;
      if (m.FieldData.IsArray()) {
        for (const Variant& v : m.FieldData.AsArray().elements()) {
          texts.append(texts.empty() ? "" : ", ").append(Cell(v));
        }
      }
      cells.push_back({std::move(texts), Align::kLeft});
    }
    table.AddCells(std::move(cells));
  }
  table.Print(out);
}

// Adds save, show and delete under `parent` for one kind of list.
struct ListKind {
  const char* command;
  const char* noun;     // "comparison", "PERT report"
  const char* table;    // for the existence check
  const char* key;
  // Save: fills and saves the object, answers its ID.
  int32_t (*save)(kwxLoader&, const SaveArgs&);
  // Show: loads ID; answers false when not found.
  bool (*show)(kwxLoader&, int32_t id, bool json, std::ostream& out);
  void (kwxLoader::*remove)(int32_t);
  void (kwxLoader::*remove_member)(int32_t, int32_t);
  // List: the ID, name and member count of each, by name. A PERT report counts the members
  // `show` lists, those whose study still exists.
  const char* list_sql;
};

int32_t SaveComparison(kwxLoader& loader, const SaveArgs& a) {
  Comparison c;
  c.ComparisonID = a.id;
  c.Name = a.name;
  c.Description = a.description;
  c.UpdatePerson = a.person;
  c.StudiedSection = a.section;
  c.LastUpdate = Today();
  for (int32_t id : a.companies) c.Members.push_back({id, Variant(), Variant()});
  loader.Access_UpdateComparison(c);
  return c.ComparisonID;
}

int32_t SavePERTReport(kwxLoader& loader, const SaveArgs& a) {
  PERTReport p;
  p.PERTReportID = a.id;
  p.Name = a.name;
  p.Description = a.description;
  p.UpdatePerson = a.person;
  p.LastUpdate = Today();
  for (int32_t id : a.companies) p.Members.push_back({id, ""});
  loader.Access_UpdatePERTReport(p);
  return p.PERTReportID;
}

bool ShowComparison(kwxLoader& loader, int32_t id, bool json, std::ostream& out) {
  Comparison c;
  c.ComparisonID = id;
  loader.Access_GetComparison(c);
  // A comparison loads only with its members; without any there is nothing to show.
  if (c.Members.empty()) return false;
  if (json) {
    nlohmann::json j = HeaderJson(c, "ComparisonID", c.ComparisonID);
    nlohmann::json members = nlohmann::json::array();
    for (const ComparisonMember& m : c.Members) {
      members.push_back({{"CompanyID", m.CompanyID},
                         {"SelectedFields", ToJson(m.SelectedFields)},
                         {"FieldData", ToJson(m.FieldData)}});
    }
    j["Members"] = std::move(members);
    out << j.dump(2) << "\n";
    return true;
  }
  PrintHeader(out, c, "ComparisonID", c.ComparisonID);
  out << "\n";
  PrintKeyFigures(loader, c.Members, out);
  return true;
}

bool ShowPERTReport(kwxLoader& loader, int32_t id, bool json, std::ostream& out) {
  PERTReport p;
  p.PERTReportID = id;
  loader.Access_GetPERTReport(p);
  if (p.Members.empty()) return false;
  if (json) {
    nlohmann::json j = HeaderJson(p, "PERTReportID", p.PERTReportID);
    nlohmann::json members = nlohmann::json::array();
    for (const PERTReportMember& m : p.Members) {
      members.push_back({{"CompanyID", m.CompanyID}, {"strName", m.CompanyName}});
    }
    j["Members"] = std::move(members);
    out << j.dump(2) << "\n";
    return true;
  }
  PrintHeader(out, p, "PERTReportID", p.PERTReportID);
  out << "\n";
  TextTable members({{"ID", Align::kRight}, {"Name", Align::kLeft}});
  for (const PERTReportMember& m : p.Members) members.AddRow({std::to_string(m.CompanyID), m.CompanyName});
  members.Print(out);
  return true;
}

const ListKind kKinds[] = {
    {"comparison", "comparison", "Comparison", "ComparisonID", &SaveComparison, &ShowComparison,
     &kwxLoader::Access_DeleteComparison, &kwxLoader::Access_DeleteComparisonCompany,
     "select C.ComparisonID, C.Name, count(CC.CompanyID) as Members "
     "from Comparison AS C LEFT JOIN ComparisonCompany AS CC ON CC.ComparisonID = C.ComparisonID "
     "group by C.ComparisonID, C.Name order by C.Name, C.ComparisonID"},
    {"pert", "PERT report", "PERTReport", "PERTReportID", &SavePERTReport, &ShowPERTReport,
     &kwxLoader::Access_DeletePERTReport, &kwxLoader::Access_DeletePERTReportCompany,
     "select P.PERTReportID, P.Name, count(C.CompanyID) as Members "
     "from (PERTReport AS P LEFT JOIN PERTReportCompany AS PRC ON PRC.PERTReportID = P.PERTReportID) "
     "LEFT JOIN Company AS C ON C.CompanyID = PRC.CompanyID "
     "group by P.PERTReportID, P.Name order by P.Name, P.PERTReportID"},
};

}  // namespace

void AddComparisonCommands(CLI::App& app, Context& ctx) {
  for (const ListKind& k : kKinds) {
    const std::string noun = k.noun;
    auto* group = app.add_subcommand(k.command, "save, show and delete a " + noun);
    group->require_subcommand(1);

    auto s = std::make_shared<SaveArgs>();
    auto* save = group->add_subcommand("save", "save a " + noun + " of the studies ID...");
    save->add_option("NAME", s->name, "its name")->required();
    save->add_option("ID", s->companies, "the member studies' company IDs, in order")
        ->required()
        ->check(WholeNumberId());
    save->add_option("--description", s->description, "a description");
    save->add_option("--id", s->id, "replace the header of this " + noun + " (and add the members) instead of adding one")
        ->check(WholeNumberId());
    save->add_option("--person", s->person, "who made the change");
    if (std::string(k.command) == "comparison") {
      save->add_option("--section", s->section, "the studied section");
    }
    save->callback([&ctx, &k, s, noun] {
      kwxLoader& loader = ctx.OpenLoader();
      const int32_t id = k.save(loader, *s);
      PrintErrorReports(loader, *ctx.err);
      if (id < 1) throw CommandError("the " + noun + " was not saved");
      *ctx.out << "saved " << noun << " " << id << "\n";
    });

    auto list_json = std::make_shared<bool>(false);
    auto* list = group->add_subcommand("list", "list the " + noun + "s: ID, name, member count");
    list->add_flag("--json", *list_json, "print a JSON array of objects");
    list->callback([&ctx, &k, list_json, noun] {
      ctx.reads_only = true;
      const ValueTable table = QueryList(ctx, k.list_sql, noun + "s");
      if (*list_json) {
        *ctx.out << JsonRows(table).dump(2) << "\n";
      } else {
        PrintAligned(*ctx.out, table, {"ID", "Name", "Members"});
      }
    });

    auto show_id = std::make_shared<int32_t>(0);
    auto show_json = std::make_shared<bool>(false);
    auto* show = group->add_subcommand(
        "show", k.show == &ShowComparison
                    ? "show a comparison and its members' key figures side by side: " +
                          KeyFigureNames() + " (growth rates as percentages, P/E and up/down "
                          "ratio to one decimal, prices and figures to two)"
                    : "show a " + noun + " and its members");
    show->add_option("ID", *show_id, "its ID")->required()->check(WholeNumberId());
    show->add_flag("--json", *show_json, "print it as one JSON object");
    show->callback([&ctx, &k, show_id, show_json, noun] {
      ctx.reads_only = true;
      kwxLoader& loader = ctx.OpenLoader();
      const bool found = k.show(loader, *show_id, *show_json, *ctx.out);
      PrintErrorReports(loader, *ctx.err);
      if (!found) {
        throw CommandError("no " + noun + " found for ID " + std::to_string(*show_id) +
                           " (or it has no members)");
      }
    });

    auto d = std::make_shared<DeleteArgs>();
    auto* del = group->add_subcommand(
        "delete", "delete a " + noun + "; with --company, remove that study from EVERY " + noun);
    del->add_option("ID", d->id, "its ID")->required()->check(WholeNumberId());
    del->add_option("--company", d->company, "remove only this member study")
        ->check(WholeNumberId());
    del->callback([&ctx, &k, d, noun] {
      kwxLoader& loader = ctx.OpenLoader();
      if (!loader.Access_DoesRecordExist(d->id, k.table, k.key)) {
        throw CommandError("no " + noun + " found for ID " + std::to_string(d->id));
      }
      if (d->company != 0) {
        (loader.*k.remove_member)(d->id, d->company);
        PrintErrorReports(loader, *ctx.err);
        // Members are deleted by company alone: say so rather than surprise the user.
        *ctx.out << "removed study " << d->company << " from every " << noun << "\n";
      } else {
        (loader.*k.remove)(d->id);
        PrintErrorReports(loader, *ctx.err);
        *ctx.out << "deleted " << noun << " " << d->id << "\n";
      }
    });
  }
}

}  // namespace kwx::cli
