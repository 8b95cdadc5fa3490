// kwx ref sector|exchange|datasource|industry list|add|rename|delete
#include <CLI/CLI.hpp>
#include <ostream>

#include "automation/conversions.h"
#include "automation/safe_array.h"
#include "automation/text.h"
#include "cli/commands.h"
#include "cli/context.h"
#include "cli/study_lookup.h"
#include "cli/table_output.h"

namespace kwx::cli {
namespace {

// The cached tables' getters are const; wrap them to one signature.
template <void (kwxLoader::*Get)(Variant&, Variant&) const>
void CachedGet(kwxLoader& l, Variant& ids, Variant& names) {
  (l.*Get)(ids, names);
}

// The loader members of one reference table.
struct RefTable {
  const char* command;
  const char* title;
  void (*get)(kwxLoader&, Variant&, Variant&);
  void (kwxLoader::*update)(const Variant&, const Variant&);
  void (kwxLoader::*remove)(const Variant&);
  void (kwxLoader::*add)(const std::string&);
};

void GetIndustry(kwxLoader& l, Variant& ids, Variant& names) { l.Access_GetIndustry(ids, names); }

const RefTable kTables[] = {
    {"sector", "sectors", &CachedGet<&kwxLoader::Access_GetSector>, &kwxLoader::Access_UpdateSector, &kwxLoader::Access_DeleteSector,
      &kwxLoader::Access_AddSector},
    {"exchange", "exchanges", &CachedGet<&kwxLoader::Access_GetExchange>, &kwxLoader::Access_UpdateExchange,
      &kwxLoader::Access_DeleteExchange, &kwxLoader::Access_AddExchange},
    {"datasource", "data sources", &CachedGet<&kwxLoader::Access_GetDataSource>, &kwxLoader::Access_UpdateDataSource,
      &kwxLoader::Access_DeleteDataSource, &kwxLoader::Access_AddDataSource},
    {"industry", "industries", &GetIndustry, &kwxLoader::Access_UpdateIndustry,
      &kwxLoader::Access_DeleteIndustry, &kwxLoader::Access_AddIndustry},
};

void PrintList(std::ostream& out, const Variant& ids, const Variant& names) {
  TextTable table({{"ID", Align::kRight}, {"Name", Align::kLeft}});
  if (ids.IsArray() && names.IsArray()) {
    const SafeArray& id_list = ids.AsArray();
    const SafeArray& name_list = names.AsArray();
    for (int32_t i = id_list.LBound(); i <= id_list.UBound(); ++i) {
      if (id_list(i).IsEmpty()) continue;  // an empty table reads as one empty element
      table.AddRow({CStr(id_list(i)), name_list(i).IsNull() ? "" : CStr(name_list(i))});
    }
  }
  table.Print(out);
}

Variant OneElement(Variant v) {
  SafeArray a = SafeArray::Vector(0, 0);
  a(0) = std::move(v);
  return Variant(std::move(a));
}

}  // namespace

void AddRefCommands(CLI::App& app, Context& ctx) {
  auto* ref = app.add_subcommand("ref", "list and maintain the reference tables");
  ref->require_subcommand(1);
  for (const RefTable& m : kTables) {
    auto* table = ref->add_subcommand(m.command, std::string("the ") + m.title);
    table->require_subcommand(1);

    table->add_subcommand("list", std::string("list the ") + m.title + " (ID and name)")
        ->callback([&ctx, &m] {
          ctx.reads_only = true;
          Variant ids, names;
          m.get(ctx.OpenLoader(), ids, names);
          PrintList(*ctx.out, ids, names);
        });

    auto name = std::make_shared<std::string>();
    auto* add = table->add_subcommand("add", "add NAME unless a row of that name exists");
    add->add_option("NAME", *name)->required();
    add->callback([&ctx, &m, name] {
      kwxLoader& loader = ctx.OpenLoader();
      (loader.*m.add)(*name);
      // The member answers nothing; look the row up to tell the user what happened.
      Variant ids, names;
      m.get(loader, ids, names);
      if (!ids.IsArray() || !names.IsArray()) throw CommandError("cannot read the table back");
      const SafeArray& id_list = ids.AsArray();
      const SafeArray& name_list = names.AsArray();
      const std::string wanted = Trim(*name);
      for (int32_t i = id_list.LBound(); i <= id_list.UBound(); ++i) {
        if (name_list(i).type() == VarType::String && EqualsNoCase(name_list(i).AsString(), wanted)) {
          *ctx.out << CStr(id_list(i)) << "\t" << name_list(i).AsString() << "\n";
          return;
        }
      }
      throw CommandError("'" + *name + "' was not added (a name holding an apostrophe cannot be stored)");
    });

    auto id = std::make_shared<int32_t>(0);
    auto new_name = std::make_shared<std::string>();
    auto* rename = table->add_subcommand("rename", "rename the row ID to NAME");
    rename->add_option("ID", *id)->required()->check(WholeNumberId());
    rename->add_option("NAME", *new_name)->required();
    rename->callback([&ctx, &m, id, new_name] {
      kwxLoader& loader = ctx.OpenLoader();
      (loader.*m.update)(OneElement(Variant(*id)), OneElement(Variant(*new_name)));
      // The member answers nothing; read the row back so that a rename the database refused
      // is not taken for done.
      Variant ids, names;
      m.get(loader, ids, names);
      const std::string wanted = Trim(*new_name);
      if (ids.IsArray() && names.IsArray()) {
        const SafeArray& id_list = ids.AsArray();
        const SafeArray& name_list = names.AsArray();
        std::string added_as;
        for (int32_t i = id_list.LBound(); i <= id_list.UBound(); ++i) {
          if (id_list(i).IsEmpty() || name_list(i).type() != VarType::String ||
              name_list(i).AsString() != wanted) {
            continue;
          }
          if (CLng(id_list(i)) == *id) return;
          added_as = CStr(id_list(i));
        }
        // An ID with no row of its own takes the name as a new row.
        if (!added_as.empty()) {
          *ctx.err << "there is no row " << *id << "; '" << wanted << "' was added\n";
          *ctx.out << added_as << "\t" << wanted << "\n";
          return;
        }
      }
      throw CommandError("row " + std::to_string(*id) + " was not renamed to '" + *new_name +
                         "' (a name holding an apostrophe cannot be stored)");
    });

    auto ids = std::make_shared<std::vector<int32_t>>();
    auto* del = table->add_subcommand("delete", "delete the rows ID...");
    del->add_option("ID", *ids)->required()->check(WholeNumberId());
    del->callback([&ctx, &m, ids] {
      SafeArray list = SafeArray::Vector(0, static_cast<int32_t>(ids->size()) - 1);
      for (size_t i = 0; i < ids->size(); ++i) list(static_cast<int32_t>(i)) = Variant((*ids)[i]);
      (ctx.OpenLoader().*m.remove)(Variant(std::move(list)));
    });
  }
}

}  // namespace kwx::cli
