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
  for (const auto& b : Rec::Bindings()) out << b.column.name << ": " << Cell(GetField(rec, b)) << "\n";
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
  out << "Members:\n";
  for (const ComparisonMember& m : c.Members) {
    out << "  " << m.CompanyID;
    if (m.FieldData.IsArray()) {
      for (const Variant& v : m.FieldData.AsArray().elements()) out << "\t" << Cell(v);
    }
    out << "\n";
  }
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
  out << "Members:\n";
  for (const PERTReportMember& m : p.Members) out << "  " << m.CompanyID << "\t" << m.CompanyName << "\n";
  return true;
}

const ListKind kKinds[] = {
    {"comparison", "comparison", "Comparison", "ComparisonID", &SaveComparison, &ShowComparison,
     &kwxLoader::Access_DeleteComparison, &kwxLoader::Access_DeleteComparisonCompany},
    {"pert", "PERT report", "PERTReport", "PERTReportID", &SavePERTReport, &ShowPERTReport,
     &kwxLoader::Access_DeletePERTReport, &kwxLoader::Access_DeletePERTReportCompany},
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

    auto show_id = std::make_shared<int32_t>(0);
    auto show_json = std::make_shared<bool>(false);
    auto* show = group->add_subcommand("show", "show a " + noun + " and its members");
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
