// The raw side of the load benchmark: the queries a load of one study runs, replayed by direct
// SQLite calls on statements compiled once, with nothing of the loader in between.
#ifndef KWX_BENCH_STATEMENT_REPLAY_H_
#define KWX_BENCH_STATEMENT_REPLAY_H_

#include <sqlite3.h>

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "services/jet_dialect.h"

namespace kwx::bench {

// The company ID and symbol a capture is taken with; replaying puts the study's own in their
// place wherever a bound value equals them.
inline constexpr int64_t kCaptureCompanyID = 987655;
inline constexpr std::string_view kCaptureSymbol = "CAPSYM";

// One study's statements as the loader ran them, split into compiled-once shapes and values.
class StatementReplay {
 public:
  // Adds a query the loader ran (its text as traced).
  void Add(const std::string& jet_sql);
  size_t size() const noexcept { return steps_.size(); }

  // Reads every row the load of company `id` reads, into plain values. Answers the number of
  // values read, or -1 when a step failed.
  int64_t Load(sqlite3* db, int64_t id);

  // Finalizes the compiled statements (before `db` is closed).
  void Reset() noexcept;
  ~StatementReplay() { Reset(); }

 private:
  sqlite3_stmt* Compiled(sqlite3* db, const std::string& shape);
  bool Bind(sqlite3_stmt* stmt, const std::vector<SqlParameter>& values, int64_t id,
            std::string_view symbol);

  std::vector<ParameterizedSql> steps_;
  std::unordered_map<std::string, sqlite3_stmt*> compiled_;
};

}  // namespace kwx::bench

#endif  // KWX_BENCH_STATEMENT_REPLAY_H_
