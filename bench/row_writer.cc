#include "bench/row_writer.h"

#include <utility>

#include "services/sqlite_support_internal.h"

namespace kwx::bench {

namespace {

constexpr std::string_view kCompanyKey = "CompanyID";
// Series rows are keyed in per-study blocks of this many keys.
constexpr int64_t kKeyBlock = 65536;

struct Finalizer {
  void operator()(sqlite3_stmt* s) const noexcept { sqlite3_finalize(s); }
};
using Statement = std::unique_ptr<sqlite3_stmt, Finalizer>;

Statement Prepare(sqlite3* db, const std::string& sql) {
  sqlite3_stmt* raw = nullptr;
  sqlite3_prepare_v3(db, sql.c_str(), -1, SQLITE_PREPARE_PERSISTENT, &raw, nullptr);
  return Statement(raw);
}

std::string Quoted(std::string_view name) { return "\"" + std::string(name) + "\""; }

}  // namespace

// The captured rows of one table, the column each bound value goes to, and its insert.
struct RowWriter::Table {
  std::string name;
  std::vector<std::string> columns;  // keys the database assigns are not among them
  int company_column = -1;           // where the new company's ID goes
  int key_column = -1;               // a series row's key, kept in its study's block
  int symbol_column = -1;            // Company's strSymbol
  bool upsert = false;               // the shared market-averages row: updated in place
  std::vector<std::vector<sqlite3_value*>> rows;
  Statement insert;
  Statement update;

  ~Table() {
    for (auto& row : rows) {
      for (sqlite3_value* v : row) sqlite3_value_free(v);
    }
  }
};

RowWriter::RowWriter() = default;
RowWriter::~RowWriter() { Reset(); }

size_t RowWriter::size() const noexcept {
  size_t n = 0;
  for (const auto& t : tables_) n += t->rows.size();
  return n;
}

bool RowWriter::Capture(sqlite3* source, int64_t id) {
  tables_.clear();
  Statement list = Prepare(source, "select name from sqlite_master where type = 'table' "
                                   "and name not like 'sqlite%' order by name <> 'Company', name");
  if (!list) return false;
  while (sqlite3_step(list.get()) == SQLITE_ROW) {
    auto t = std::make_unique<Table>();
    t->name = reinterpret_cast<const char*>(sqlite3_column_text(list.get(), 0));
    Statement info = Prepare(source, "PRAGMA table_info(" + Quoted(t->name) + ")");
    bool has_company = false;
    std::string select;
    while (sqlite3_step(info.get()) == SQLITE_ROW) {
      const std::string column = reinterpret_cast<const char*>(sqlite3_column_text(info.get(), 1));
      const bool key = sqlite3_column_int(info.get(), 5) != 0;
      if (column == kCompanyKey) has_company = true;
      // The company's key is the database's to assign; a series row's key follows from it.
      if (t->name == "Company" && column == kCompanyKey) continue;
      if (key && column != kCompanyKey) t->key_column = static_cast<int>(t->columns.size());
      if (column == kCompanyKey) t->company_column = static_cast<int>(t->columns.size());
      if (column == "strSymbol") t->symbol_column = static_cast<int>(t->columns.size());
      select += (select.empty() ? "" : ", ") + Quoted(column);
      t->columns.push_back(column);
    }
    t->upsert = t->name == "DJAverages";
    if (!has_company && !t->upsert) continue;
    const std::string where = t->upsert ? "" : " where CompanyID = " + std::to_string(id);
    Statement rows = Prepare(source, "select " + select + " from " + Quoted(t->name) + where);
    if (!rows) return false;
    while (sqlite3_step(rows.get()) == SQLITE_ROW) {
      std::vector<sqlite3_value*> row;
      for (int c = 0; c < static_cast<int>(t->columns.size()); ++c) {
        row.push_back(sqlite3_value_dup(sqlite3_column_value(rows.get(), c)));
      }
      t->rows.push_back(std::move(row));
    }
    tables_.push_back(std::move(t));
  }
  return !tables_.empty() && tables_.front()->name == "Company";
}

void RowWriter::Reset() noexcept {
  for (auto& t : tables_) {
    t->insert.reset();
    t->update.reset();
  }
  for (sqlite3_stmt* s : compiled_) sqlite3_finalize(s);
  compiled_.clear();
  compiled_on_ = nullptr;
}

int64_t RowWriter::Save(sqlite3* db, std::string_view symbol, bool own_transaction) {
  if (compiled_on_ != db) {
    Reset();
    compiled_on_ = db;
    for (const char* sql : {"BEGIN IMMEDIATE", "COMMIT", "ROLLBACK", "SAVEPOINT study",
                            "RELEASE study", "ROLLBACK TO study"}) {
      compiled_.push_back(Prepare(db, sql).release());
    }
    for (auto& t : tables_) {
      std::string names, marks, sets;
      for (const std::string& c : t->columns) {
        names += (names.empty() ? "" : ", ") + Quoted(c);
        marks += marks.empty() ? "?" : ", ?";
      }
      t->insert = Prepare(db, "insert into " + Quoted(t->name) + " (" + names + ") values (" +
                                  marks + ")");
      if (t->upsert) {
        for (size_t c = 1; c < t->columns.size(); ++c) {
          sets += (sets.empty() ? "" : ", ") + Quoted(t->columns[c]) + " = ?" +
                  std::to_string(c + 1);
        }
        t->update = Prepare(db, "update " + Quoted(t->name) + " set " + sets + " where " +
                                    Quoted(t->columns[0]) + " = ?1");
      }
      if (!t->insert || (t->upsert && !t->update)) return 0;
    }
  }
  auto run = [&](size_t k) {
    const bool ok = sqlite3_step(compiled_[k]) == SQLITE_DONE;
    sqlite3_reset(compiled_[k]);
    return ok;
  };
  if (!run(own_transaction ? 0 : 3)) return 0;
  int64_t id = 0;
  bool ok = true;
  for (auto& t : tables_) {
    for (const auto& row : t->rows) {
      sqlite3_stmt* stmt = t->upsert ? t->update.get() : t->insert.get();
      for (int attempt = 0; attempt < 2 && ok; ++attempt) {
        for (int c = 0; c < static_cast<int>(row.size()); ++c) {
          if (c == t->company_column) {
            sqlite3_bind_int64(stmt, c + 1, id);
          } else if (c == t->key_column) {
            // The same place in the new study's key block as in the captured one's.
            sqlite3_bind_int64(stmt, c + 1, id * kKeyBlock + sqlite3_value_int64(row[c]) % kKeyBlock);
          } else if (c == t->symbol_column) {
            sqlite3_bind_text(stmt, c + 1, symbol.data(), static_cast<int>(symbol.size()),
                              SQLITE_STATIC);
          } else {
            sqlite3_bind_value(stmt, c + 1, row[c]);
          }
        }
        ok = sqlite3_step(stmt) == SQLITE_DONE;
        sqlite3_reset(stmt);
        // The day's averages are updated in place; only a day not stored yet is inserted.
        if (stmt != t->update.get() || sqlite3_changes(db) > 0) break;
        stmt = t->insert.get();
      }
      if (id == 0) id = sqlite3_last_insert_rowid(db);
    }
  }
  if (own_transaction) {
    if (!run(ok ? 1 : 2)) return 0;
  } else {
    if (!ok) run(5);
    run(4);
  }
  return ok ? id : 0;
}

bool SetUpRawSqlite() { return sqlite_support::PrepareSqliteLibrary(); }

void ApplyRawSettings(sqlite3* db) {
  for (const char* sql : {"PRAGMA journal_mode = WAL", "PRAGMA synchronous = FULL",
                          "PRAGMA foreign_keys = ON", "PRAGMA cache_size = -2048"}) {
    sqlite3_exec(db, sql, nullptr, nullptr, nullptr);
  }
  if (!SetUpRawSqlite()) sqlite3_exec(db, "PRAGMA temp_store = MEMORY", nullptr, nullptr, nullptr);
  sqlite3_busy_timeout(db, 5000);
}

}  // namespace kwx::bench
