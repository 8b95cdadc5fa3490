#include "services/schema_upgrade_internal.h"

#include <array>
#include <optional>
#include <string>

#include "automation/dates.h"
#include "model/company.h"
#include "model/schema.h"
#include "services/jet_dialect.h"
#include "services/schema_ddl_internal.h"

namespace kwx {
namespace {

bool Run(sqlite3* db, const std::string& sql) {
  return sqlite3_exec(db, sql.c_str(), nullptr, nullptr, nullptr) == SQLITE_OK;
}

// Version 1: series rows keyed in per-study blocks. Older files numbered series rows from one
// counter shared by every study, so a study's rows sat wherever its saves happened to fall.
// Each study's rows are renumbered into its block in their old order (the order a save and
// the yearly and monthly loads read them in), then the key trigger keeps new rows there.
bool SeriesKeysInBlocks(sqlite3* db) {
  for (const TableDef& t : AllTables()) {
    if (t.kind != TableKind::Series) continue;
    const std::string table = Quoted(t.name);
    const std::string key = Quoted(t.key);
    // Old keys are positive and new ones are at least kSeriesKeyBlock (a study's ID is 1 or
    // more), so moving every row to a negative key first lets no step of the renumbering meet
    // a key still held.
    const bool ok =
        Run(db, "DROP TABLE IF EXISTS temp.kwx_renumber") &&
        Run(db, "CREATE TEMP TABLE kwx_renumber AS SELECT " + key + " AS old_key, \"CompanyID\" * " +
                    std::to_string(kSeriesKeyBlock) +
                    " + ROW_NUMBER() OVER (PARTITION BY \"CompanyID\" ORDER BY " + key +
                    ") - 1 AS new_key FROM " + table) &&
        Run(db, "UPDATE " + table + " SET " + key + " = -1 - " + key) &&
        Run(db, "UPDATE " + table + " SET " + key +
                    " = (SELECT new_key FROM temp.kwx_renumber WHERE old_key = -1 - " + table +
                    "." + key + ")") &&
        Run(db, "DROP TABLE temp.kwx_renumber") &&
        Run(db, "DROP TRIGGER IF EXISTS " + Quoted(std::string(t.name) + "_key_block")) &&
        Run(db, SeriesKeyTrigger(t));
    if (!ok) return false;
  }
  return true;
}

// Version 2: every index as the tables declare it now; the symbol index orders symbols without
// regard to case, as lookups by symbol compare them, so that such a lookup can use it.
bool IndexesAsDeclared(sqlite3* db) {
  constexpr std::string_view kCreate = "CREATE INDEX \"";
  for (const std::string& sql : SchemaStatements(AllTables())) {
    if (sql.compare(0, kCreate.size(), kCreate) != 0) continue;
    const size_t end = sql.find('"', kCreate.size());
    const std::string name = sql.substr(kCreate.size() - 1, end - kCreate.size() + 2);
    if (!Run(db, "DROP INDEX IF EXISTS " + name) || !Run(db, sql)) return false;
  }
  return true;
}

// A stored date in its stored form (StoredDateText): a text that parses as a date, or a
// serial number; anything else is kept as it is.
void StoredDateFunction(sqlite3_context* ctx, int, sqlite3_value** argv) {
  sqlite3_value* v = argv[0];
  std::optional<Date> date;
  const int type = sqlite3_value_type(v);
  if (type == SQLITE_INTEGER || type == SQLITE_FLOAT) {
    date = Date{sqlite3_value_double(v)};
  } else if (type == SQLITE_TEXT) {
    date = ParseDate(std::string_view(reinterpret_cast<const char*>(sqlite3_value_text(v)),
                                      static_cast<size_t>(sqlite3_value_bytes(v))));
  }
  try {
    if (date) {
      const std::string text = StoredDateText(*date);
      sqlite3_result_text(ctx, text.data(), static_cast<int>(text.size()), SQLITE_TRANSIENT);
      return;
    }
  } catch (...) {
    // A serial outside the years a date text covers stays as it is.
  }
  sqlite3_result_value(ctx, v);
}

// Version 3: values in the forms other programs read correctly. Dates were stored in the
// M/d/yyyy text the statements write (which sorts as text, not as dates), a text's apostrophe
// as the U+00FF statements write in its place, and True as -1.
bool StoredForms(sqlite3* db) {
  if (sqlite3_create_function_v2(db, "kwx_stored_date", 1, SQLITE_UTF8 | SQLITE_DETERMINISTIC,
                                 nullptr, &StoredDateFunction, nullptr, nullptr,
                                 nullptr) != SQLITE_OK) {
    return false;
  }
  for (const TableDef& t : AllTables()) {
    const std::string table = Quoted(t.name);
    for (const ColumnDef& column : t.columns) {
      const std::string c = Quoted(column.name);
      std::string sql;
      switch (column.type) {
        case ColumnType::Date:
          sql = "UPDATE " + table + " SET " + c + " = kwx_stored_date(" + c + ") WHERE " + c +
                " IS NOT NULL";
          break;
        case ColumnType::Text:
        case ColumnType::Variant:
          sql = "UPDATE " + table + " SET " + c + " = replace(" + c + ", '\xC3\xBF', '''') " +
                "WHERE instr(" + c + ", '\xC3\xBF') > 0";
          break;
        case ColumnType::Boolean:
          sql = "UPDATE " + table + " SET " + c + " = 1 WHERE " + c + " = -1";
          break;
        default:
          continue;
      }
      if (!Run(db, sql)) return false;
    }
  }
  return true;
}

// Version 4: the key triggers move only rows inserted with a key outside their study's block;
// the database object gives the rows it inserts their key in the block itself.
bool KeyTriggersForStrayRowsOnly(sqlite3* db) {
  for (const TableDef& t : AllTables()) {
    if (t.kind != TableKind::Series) continue;
    if (!Run(db, "DROP TRIGGER IF EXISTS " + Quoted(std::string(t.name) + "_key_block")) ||
        !Run(db, SeriesKeyTrigger(t))) {
      return false;
    }
  }
  return true;
}

// Later steps are appended here; a step's version is one more than the one before it.
constexpr std::array<UpgradeStep, 4> kSteps = {{
    {1, "series keys in per-study blocks", &SeriesKeysInBlocks},
    {2, "indexes as declared", &IndexesAsDeclared},
    {3, "dates, apostrophes and Booleans in the forms other programs read", &StoredForms},
    {4, "key triggers for stray series rows only", &KeyTriggersForStrayRowsOnly},
}};

int UserVersion(sqlite3* db) {
  sqlite3_stmt* stmt = nullptr;
  int version = -1;
  if (sqlite3_prepare_v2(db, "PRAGMA user_version", -1, &stmt, nullptr) == SQLITE_OK &&
      sqlite3_step(stmt) == SQLITE_ROW) {
    version = sqlite3_column_int(stmt, 0);
  }
  sqlite3_finalize(stmt);
  return version;
}

bool HasStudyTables(sqlite3* db) {
  sqlite3_stmt* stmt = nullptr;
  bool found = false;
  if (sqlite3_prepare_v2(db, "SELECT 1 FROM sqlite_master WHERE type = 'table' AND name = ?", -1,
                         &stmt, nullptr) == SQLITE_OK) {
    const std::string_view company = Company::Table().name;
    sqlite3_bind_text(stmt, 1, company.data(), static_cast<int>(company.size()), SQLITE_STATIC);
    found = sqlite3_step(stmt) == SQLITE_ROW;
  }
  sqlite3_finalize(stmt);
  return found;
}

}  // namespace

std::span<const UpgradeStep> UpgradeSteps() noexcept { return kSteps; }

int CurrentSchemaVersion() noexcept { return kSteps.back().version; }

bool UpgradeSchema(sqlite3* db, bool allowed, std::string& error) {
  const int target = CurrentSchemaVersion();
  const int seen = UserVersion(db);
  if (seen < 0) {
    error = std::string("cannot read the schema version: ") + sqlite3_errmsg(db);
    return false;
  }
  // The common case reads one header field and takes no lock for writing.
  if (seen >= target || !HasStudyTables(db)) return true;
  if (!allowed) {
    error = "the database was written by an older version (schema " + std::to_string(seen) +
            ", now " + std::to_string(target) +
            ") and must be upgraded first: a command that writes to it upgrades it (kwx upgrade)";
    return false;
  }
  if (!Run(db, "BEGIN IMMEDIATE")) {
    error = std::string("cannot start the upgrade: ") + sqlite3_errmsg(db);
    return false;
  }
  // Another program may have upgraded the file while this one waited for the lock.
  const int version = UserVersion(db);
  for (const UpgradeStep& step : kSteps) {
    if (version < 0 || step.version <= version) continue;
    if (!step.apply(db)) {
      error = std::string("upgrade step '") + step.what + "' failed: " + sqlite3_errmsg(db);
      Run(db, "ROLLBACK");
      return false;
    }
  }
  if (!Run(db, "PRAGMA user_version = " + std::to_string(target)) || !Run(db, "COMMIT")) {
    error = std::string("cannot finish the upgrade: ") + sqlite3_errmsg(db);
    Run(db, "ROLLBACK");
    return false;
  }
  return true;
}

}  // namespace kwx
