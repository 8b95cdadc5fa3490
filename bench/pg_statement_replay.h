// The raw side of the load benchmark on a PostgreSQL server: the queries a load of one study
// runs (StatementReplay's shapes, translated as the PostgreSQL database object translates
// them), prepared once per connection and sent in one pipeline, with nothing of the loader in
// between.
#ifndef KWX_BENCH_PG_STATEMENT_REPLAY_H_
#define KWX_BENCH_PG_STATEMENT_REPLAY_H_

#include <cstdint>
#include <string>
#include <vector>

#include "bench/pg_pipeline.h"
#include "services/jet_dialect.h"

namespace kwx::bench {

class PgStatementReplay {
 public:
  // Adds a query the loader ran (its text as traced, taken with kCaptureCompanyID and
  // kCaptureSymbol).
  void Add(const std::string& jet_sql);
  size_t size() const noexcept { return steps_.size(); }

  // Reads every row the load of company `id` reads, into plain values: all the queries sent
  // at once, their results read at one sync point. Answers the number of values read, or -1
  // when a step failed (pipe.error()).
  int64_t Load(PgPipeline& pipe, int64_t id);

 private:
  struct Step {
    ParameterizedSql sql;
    std::string name;                // its prepared statement
    std::vector<std::string> texts;  // the values as bound, taken once
    std::vector<size_t> company;     // the values that are the captured company's ID
  };
  std::vector<Step> steps_;
  std::string prefix_;  // of its statements' names, its own among the replays
  std::vector<unsigned long> prepared_on_;  // the serials of the pipelines prepared on
};

}  // namespace kwx::bench

#endif  // KWX_BENCH_PG_STATEMENT_REPLAY_H_
