// kwx init, kwx sql, kwx upgrade, kwx compact.
#include <CLI/CLI.hpp>
#include <algorithm>
#include <ostream>

#include "automation/conversions.h"
#include "automation/safe_array.h"
#include "cli/commands.h"
#include "cli/context.h"
#include "cli/table_output.h"
#include "json/json_values.h"
#include "services/create_database.h"
#include "services/database_engine.h"

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

// JSON text of one value or name. Stored bytes that are not UTF-8 are shown as U+FFFD rather
// than stopping the output.
std::string JsonText(const nlohmann::json& value) {
  return value.dump(-1, ' ', false, nlohmann::json::error_handler_t::replace);
}

// The rows as a JSON array of objects, written out here rather than built as JSON objects: a
// query may answer two columns of one name (a join's CompanyID), and each row keeps every
// column, in the query's order, under the name the query gave it.
void PrintRowsJson(std::ostream& out, const Variant& fields, const Variant& data) {
  if (!fields.IsArray() || !data.IsArray()) {
    out << "[]\n";
    return;
  }
  const SafeArray& names = fields.AsArray();
  const SafeArray& rows = data.AsArray();
  out << "[";
  for (int32_t r = rows.LBound(1); r <= rows.UBound(1); ++r) {
    out << (r > rows.LBound(1) ? ",\n  {" : "\n  {");
    for (int32_t c = rows.LBound(2); c <= rows.UBound(2); ++c) {
      out << (c > rows.LBound(2) ? ",\n    " : "\n    ")
          << JsonText(CellText(names(c - rows.LBound(2) + names.LBound()))) << ": "
          << JsonText(ToJson(rows(r, c)));
    }
    out << "\n  }";
  }
  out << "\n]\n";
}

}  // namespace

void AddDatabaseCommands(CLI::App& app, Context& ctx) {
  auto* init = app.add_subcommand("init", "create a new, empty study database (never overwrites)");
  init->callback([&ctx] {
    InitDatabase(ctx.options.db_path);
    *ctx.out << "created " << ctx.options.db_path << "\n";
  });

  auto* sql = app.add_subcommand(
      "sql", "run one statement: a query prints its rows, a change how many rows it changed");
  auto sql_text = std::make_shared<std::string>();
  auto sql_json = std::make_shared<bool>(false);
  sql->add_option("TEXT", *sql_text, "the SQL text (Jet dialect), one statement")->required();
  auto sql_csv = std::make_shared<bool>(false);
  auto* json_flag = sql->add_flag("--json", *sql_json, "print the rows as a JSON array of objects");
  sql->add_flag("--csv", *sql_csv, "print the rows as CSV: a header row of the column names, "
                                   "values unrounded")
      ->excludes(json_flag);
  sql->callback([&ctx, sql_text, sql_json, sql_csv] {
    kwxLoader& loader = ctx.OpenLoader();
    IDatabase* db = loader.database().get();
    if (db == nullptr) throw CommandError("no database object");
    Variant data;
    Variant fields;
    if (!db->blnExecute(*sql_text, fields, data)) {
      const auto* engine = dynamic_cast<const DatabaseEngine*>(db);
      throw CommandError(engine != nullptr && !engine->LastErrorMessage().empty()
                             ? engine->LastErrorMessage()
                             : "the statement failed");
    }
    if (!fields.IsArray()) {
      // An action statement: how many rows it changed is all there is to show.
      const int32_t changed = db->lngRowCount();
      if (*sql_json) {
        *ctx.out << "{\"changed\": " << changed << "}\n";
      } else {
        *ctx.out << changed << (changed == 1 ? " row" : " rows") << " changed\n";
      }
      return;
    }
    if (*sql_json) {
      PrintRowsJson(*ctx.out, fields, data);
    } else if (*sql_csv) {
      PrintCsv(*ctx.out, RowSetTable(fields, data));
    } else {
      PrintRows(*ctx.out, fields, data);
    }
  });

  auto* upgrade = app.add_subcommand(
      "upgrade", "bring a database written by an older version to the current form");
  upgrade->callback([&ctx] {
    // Opening for writing upgrades the file, in one transaction.
    ctx.OpenLoader();
    *ctx.out << ctx.options.db_path << " is up to date\n";
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
