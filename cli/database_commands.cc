// kwx init, kwx sql, kwx compact.
#include <CLI/CLI.hpp>
#include <algorithm>
#include <ostream>

#include "automation/conversions.h"
#include "automation/safe_array.h"
#include "cli/commands.h"
#include "cli/context.h"
#include "cli/json_values.h"
#include "services/create_database.h"

namespace kwx::cli {
namespace {

std::string CellText(const Variant& v) {
  if (v.IsEmpty() || v.IsNull()) return "";
  if (v.IsArray() || v.IsObject()) return "?";
  return CStr(v);
}

// A plain text table: a header line, then one tab-separated line per row.
void PrintRows(std::ostream& out, const Variant& fields, const Variant& data) {
  if (!fields.IsArray()) return;
  const SafeArray& names = fields.AsArray();
  for (int32_t c = names.LBound(); c <= names.UBound(); ++c) {
    out << (c > names.LBound() ? "\t" : "") << CellText(names(c));
  }
  out << "\n";
  if (!data.IsArray()) return;
  const SafeArray& rows = data.AsArray();
  for (int32_t r = rows.LBound(1); r <= rows.UBound(1); ++r) {
    for (int32_t c = rows.LBound(2); c <= rows.UBound(2); ++c) {
      out << (c > rows.LBound(2) ? "\t" : "") << CellText(rows(r, c));
    }
    out << "\n";
  }
}

nlohmann::json RowsJson(const Variant& fields, const Variant& data) {
  nlohmann::json out = nlohmann::json::array();
  if (!fields.IsArray() || !data.IsArray()) return out;
  const SafeArray& names = fields.AsArray();
  const SafeArray& rows = data.AsArray();
  for (int32_t r = rows.LBound(1); r <= rows.UBound(1); ++r) {
    nlohmann::json row = nlohmann::json::object();
    for (int32_t c = rows.LBound(2); c <= rows.UBound(2); ++c) {
      row[CellText(names(c - rows.LBound(2) + names.LBound()))] = ToJson(rows(r, c));
    }
    out.push_back(std::move(row));
  }
  return out;
}

}  // namespace

void AddDatabaseCommands(CLI::App& app, Context& ctx) {
  auto* init = app.add_subcommand("init", "create a new, empty study database (never overwrites)");
  init->callback([&ctx] {
    Status s = CreateDatabase(ctx.options.db_path);
    if (!s.ok()) throw CommandError(s.message());
    *ctx.out << "created " << ctx.options.db_path << "\n";
  });

  auto* sql = app.add_subcommand("sql", "run a query and print its rows");
  auto sql_text = std::make_shared<std::string>();
  auto sql_json = std::make_shared<bool>(false);
  sql->add_option("TEXT", *sql_text, "the SQL text (Jet dialect)")->required();
  sql->add_flag("--json", *sql_json, "print the rows as a JSON array of objects");
  sql->callback([&ctx, sql_text, sql_json] {
    kwxLoader& loader = ctx.OpenLoader();
    Variant data;
    Variant fields;
    loader.Access_GetCompanies(*sql_text, data, fields);
    if (!fields.IsArray()) {
      // An action statement or a failure: the row count is all there is to show.
      throw CommandError("the statement returned no rows (it failed, or is not a query)");
    }
    if (*sql_json) {
      *ctx.out << RowsJson(fields, data).dump(2) << "\n";
    } else {
      PrintRows(*ctx.out, fields, data);
    }
  });

  auto* compact = app.add_subcommand("compact", "compact the database file in place");
  compact->callback([&ctx] {
    kwxLoader& loader = ctx.OpenLoader();
    bool ok = false;
    try {
      ok = loader.Access_CompactDB(ctx.options.db_path);
    } catch (const std::exception& e) {
      throw CommandError(std::string("compacting failed: ") + e.what());
    }
    if (!ok) throw CommandError("compacting '" + ctx.options.db_path + "' failed");
    *ctx.out << "compacted " << ctx.options.db_path << "\n";
  });
}

}  // namespace kwx::cli
