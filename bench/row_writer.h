// The raw limit of a save: the rows the loader stored for one study, written again by direct
// SQLite calls with nothing of the loader in between, the way a program written only to store
// those rows as fast as SQLite allows would write them.
#ifndef KWX_BENCH_ROW_WRITER_H_
#define KWX_BENCH_ROW_WRITER_H_

#include <sqlite3.h>

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace kwx::bench {

// One study's stored rows, taken from a database the loader saved it in, with one insert per
// table compiled once per connection. Keys the database assigns are left to it; the company's
// own ID and symbol are replaced by the new study's.
class RowWriter {
 public:
  // Takes every row of company `id` in `source` (the tables holding a CompanyID column) and
  // the market-averages row its save touched. False when a table cannot be read.
  bool Capture(sqlite3* source, int64_t id);
  // Rows written per study.
  size_t size() const noexcept;

  // Writes the study once more on `db` as a new company with `symbol`, inside a savepoint of
  // its own (the study is atomic inside a batch), or, with `own_transaction`, inside a write
  // transaction of its own that commits. Answers the new company ID, 0 on failure.
  int64_t Save(sqlite3* db, std::string_view symbol, bool own_transaction);

  // Finalizes the compiled statements (before their connection is closed).
  void Reset() noexcept;
  RowWriter();
  ~RowWriter();

 private:
  struct Table;
  std::vector<std::unique_ptr<Table>> tables_;  // Company first
  std::vector<sqlite3_stmt*> compiled_;         // transaction control, reset with the tables
  sqlite3* compiled_on_ = nullptr;
};

// Sets SQLite up for the process before its first connection as the library sets it up for
// itself (PrepareSqliteLibrary): statement journals kept in memory as one 1 MB block (every
// insert into a table with a trigger journals the pages it changes; grown by the kilobyte, as
// SQLite's in-memory journal grows, that costs a fifth of the time), and a file layer that
// can write a journal that outgrows it. Answers whether SQLite took the setup.
bool SetUpRawSqlite();

// The settings a program that only stores rows would choose for the same guarantees (every
// committed transaction durable, foreign keys enforced): WAL with synchronous=FULL, statement
// journals in memory (temp_store=MEMORY only where SetUpRawSqlite could not keep them there),
// and a 2 MB page cache (faster than 1 or 4 MB: a larger one only takes in pages of studies
// written already).
void ApplyRawSettings(sqlite3* db);

}  // namespace kwx::bench

#endif  // KWX_BENCH_ROW_WRITER_H_
