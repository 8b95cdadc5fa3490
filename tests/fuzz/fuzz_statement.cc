// Arbitrary statement text through the SQLite database object. Each input runs inside a
// transaction that is rolled back, on a database seeded with a few rows, and is checked
// against a plain connection that runs the text's plain translation without lifting a value:
//  - the object answers what the plain translation answers (success, columns, rows, count);
//  - at most one statement ran: a text the plain connection refuses as two statements changes
//    nothing, and the object changes exactly the rows the plain connection changed.
// Any difference aborts, which the fuzzer reports as a finding.
#include <sqlite3.h>

#include <unistd.h>

#include <cctype>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <string>
#include <string_view>
#include <vector>

#include "automation/conversions.h"
#include "automation/safe_array.h"
#include "model/schema.h"
#include "services/create_database.h"
#include "services/jet_dialect.h"
#include "services/sqlite_database.h"
#include "services/sqlite_support_internal.h"
#include "tests/fuzz/scratch_dir.h"

namespace {

using kwx::Variant;

// The statements both databases start from.
const char* const kSeed[] = {
    "insert into Sector(Sector) select 'Energy'",
    "insert into Sector(Sector) select 'O" "\xC3\xBF" "Neil'",
    "insert into Exchange(Exchange) select 'NYSE'",
    ("insert into Company (strSymbol, strName, ExchangeID, sngCurPrice, datLastFY) "
     "select 'ABC', 'Abc', 1, 12.5, '6/30/2024'"),
    "insert into Yearly (CompanyID, Year, Sales) select 1, 2024, 100.25",
    "insert into Yearly (CompanyID, Year, Sales) select 1, 2023, 90",
};

struct Answer {
  bool ok = false;
  int32_t rows = 0;
  Variant fields;
  Variant data;
};

[[noreturn]] void Finding(const std::string& what, const std::string& sql) {
  std::fprintf(stderr, "finding: %s\nstatement: %s\n", what.c_str(), sql.c_str());
  std::abort();
}

// The plain connection: the translation prepared as it stands, one statement at most.
class Plain {
 public:
  explicit Plain(sqlite3* db) : db_(db) {}

  Answer Run(const std::string& jet) {
    Answer a;
    const std::string text = kwx::TranslateJetSql(jet);
    sqlite3_stmt* stmt = nullptr;
    const char* tail = nullptr;
    if (sqlite3_prepare_v2(db_, text.c_str(), static_cast<int>(text.size()), &stmt, &tail) !=
            SQLITE_OK ||
        stmt == nullptr) {
      sqlite3_finalize(stmt);
      return a;
    }
    const char* end = text.c_str() + text.size();
    if (tail != nullptr && !kwx::sqlite_support::TailIsEmpty(std::string_view(tail, end - tail))) {
      sqlite3_finalize(stmt);
      return a;
    }
    const int64_t before = sqlite3_total_changes64(db_);
    int step = sqlite3_step(stmt);
    const int columns = sqlite3_column_count(stmt);
    std::vector<kwx::sqlite_support::DeclaredKind> kinds;
    std::vector<Variant> names, values;
    for (int c = 0; c < columns; ++c) {
      const char* name = sqlite3_column_name(stmt, c);
      names.emplace_back(std::string(name != nullptr ? name : ""));
      kinds.push_back(kwx::sqlite_support::KindOfDeclaredType(sqlite3_column_decltype(stmt, c)));
    }
    int32_t rows = 0;
    for (; step == SQLITE_ROW; step = sqlite3_step(stmt)) {
      kwx::sqlite_support::AppendRow(values, stmt, kinds);
      ++rows;
    }
    sqlite3_finalize(stmt);
    if (step != SQLITE_DONE) return a;
    a.ok = true;
    if (columns == 0) {
      a.rows = sqlite3_total_changes64(db_) == before ? 0
                                                       : static_cast<int32_t>(sqlite3_changes64(db_));
      return a;
    }
    a.fields = Variant(kwx::SafeArray::FromValues(std::move(names)));
    if (rows > 0) a.data = Variant(kwx::SafeArray::FromRows(rows, columns, std::move(values)));
    a.rows = rows;
    return a;
  }

  bool Exec(const std::string& sql) {
    return sqlite3_exec(db_, sql.c_str(), nullptr, nullptr, nullptr) == SQLITE_OK;
  }
  int64_t Changes() const { return sqlite3_total_changes64(db_); }
  // Rows the last action statement changed itself, not counting what its triggers changed.
  int64_t OwnChanges() const { return sqlite3_changes64(db_); }

 private:
  sqlite3* db_;
};

struct Databases {
  kwx::SqliteDatabase object;
  sqlite3* plain_db = nullptr;
  Plain* plain = nullptr;

  Databases() {
    // Two files laid out by CreateDatabase, one per side; every input is rolled back, so
    // nothing of a run is ever committed to them.
    const std::filesystem::path dir = kwx::fuzz::ScratchDir("kwx_fuzz_statement");
    std::string object_path = (dir / "object.db").string();
    const std::string plain_path = (dir / "plain.db").string();
    if (!kwx::CreateDatabase(object_path).ok() || !kwx::CreateDatabase(plain_path).ok() ||
        !object.blnOpenDatabase(object_path)) {
      Finding("cannot lay out the databases", dir.string());
    }
    if (sqlite3_open_v2(plain_path.c_str(), &plain_db, SQLITE_OPEN_READWRITE, nullptr) !=
            SQLITE_OK ||
        !kwx::sqlite_support::RegisterJetFunctions(plain_db)) {
      Finding("cannot open the plain database", plain_path);
    }
    plain = new Plain(plain_db);
    plain->Exec("PRAGMA foreign_keys = ON");
    for (const char* sql : kSeed) {
      Variant f, d;
      if (!object.blnExecute(sql, f, d) || !plain->Run(sql).ok) Finding("seed", sql);
    }
  }
};

// True when `sql` names something whose answer differs between two connections or two
// moments (a random number, the clock, a connection's own change counts).
bool AnswerDependsOnTheConnection(const std::string& sql) {
  std::string lower = sql;
  for (char& c : lower) c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
  for (const char* word : {"random", "changes", "last_insert_rowid", "now", "current_",
                           "recursive", "sqlite_offset", "julianday"}) {
    if (lower.find(word) != std::string::npos) return true;
  }
  return false;
}

int64_t ObjectChanges(kwx::SqliteDatabase& db) {
  Variant f, d;
  if (!db.blnExecute("select total_changes()", f, d) || !d.IsArray()) return -1;
  return kwx::CLng(d.AsArray()(0, 0));
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* bytes, size_t size) {
  static Databases* dbs = new Databases();
  const std::string sql(reinterpret_cast<const char*>(bytes), size);
  // A NUL byte marks a value that could not be one literal: the object refuses such a text
  // before anything of it runs, lifted or not.
  if (sql.find('\0') != std::string::npos) {
    dbs->object.BeginTrans();
    const int64_t before = ObjectChanges(dbs->object);
    Variant fields, data;
    const bool ran = dbs->object.blnExecute(sql, fields, data);
    const int64_t changed = ObjectChanges(dbs->object) - before;
    dbs->object.RollbackTrans();
    if (ran || changed != 0) Finding("a text holding a NUL byte ran", sql);
    return 0;
  }
  // Only the statements whose values are lifted take a path of their own; every other text
  // runs as its plain translation in the object too.
  if (!kwx::ParameterizeJetSql(sql).lifted) return 0;
  // Recursive queries may run without end; they are no matter of lifting.
  if (AnswerDependsOnTheConnection(sql)) return 0;

  dbs->object.BeginTrans();
  dbs->plain->Exec("BEGIN IMMEDIATE");
  const int64_t object_before = ObjectChanges(dbs->object);
  const int64_t plain_before = dbs->plain->Changes();

  Answer lifted;
  lifted.ok = dbs->object.blnExecute(sql, lifted.fields, lifted.data);
  lifted.rows = dbs->object.lngRowCount();
  const int64_t object_changed = ObjectChanges(dbs->object) - object_before;
  const Answer plain = dbs->plain->Run(sql);
  const int64_t plain_changed = dbs->plain->Changes() - plain_before;

  dbs->object.RollbackTrans();
  dbs->plain->Exec("ROLLBACK");

  if (lifted.ok != plain.ok) Finding(lifted.ok ? "only the object ran it" : "only the plain ran it", sql);
  // Rows each statement changed itself. Counted without the key trigger's moves: the object
  // gives the loader's series rows their keys in the insert itself, where the plain statement
  // leaves the move to the trigger.
  const int64_t object_own = object_changed > 0 ? lifted.rows : 0;
  const int64_t plain_own = plain_changed > 0 ? dbs->plain->OwnChanges() : 0;
  if (object_own != plain_own) Finding("the two changed different rows", sql);
  if (!lifted.ok) return 0;
  if (lifted.rows != plain.rows) Finding("different row counts", sql);
  if (!lifted.fields.SameAs(plain.fields)) Finding("different columns", sql);
  if (!lifted.data.SameAs(plain.data)) Finding("different rows", sql);
  return 0;
}
