// The raw limit of a save on a PostgreSQL server: the rows the loader stored for one study,
// written again through libpq with nothing of the loader in between, the way a program written
// only to store those rows as fast as libpq allows would write them (RowWriter's counterpart).
#ifndef KWX_BENCH_PG_ROW_WRITER_H_
#define KWX_BENCH_PG_ROW_WRITER_H_

#include <libpq-fe.h>

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "bench/pg_pipeline.h"

namespace kwx::bench {

// One study's stored rows, taken from a server database the loader saved it in, with one
// insert per table prepared once per connection and run in pipeline mode (PgPipeline). The
// company key is the server's to assign (read back from the insert); a series row's key is
// put in the new study's key block; the company's symbol is replaced by the new study's.
class PgRowWriter {
 public:
  // Takes every row of company `id` in the database `uri` (the company's own tables) and the
  // market-averages rows. False, with `error` set, when a table cannot be read.
  bool Capture(const std::string& uri, int64_t id, std::string& error);
  // Rows written per study.
  size_t size() const noexcept;

  // Queues the study once more on `pipe` as a new company with `symbol`, inside a savepoint of
  // its own (the study is atomic inside a batch the caller opened), or, with
  // `own_transaction`, inside a transaction of its own that commits before this returns.
  // Waits only for the new company's key. Answers that key, 0 on failure (pipe.error()).
  int64_t Save(PgPipeline& pipe, std::string_view symbol, bool own_transaction);

  PgRowWriter();
  ~PgRowWriter();

 private:
  struct Table;
  std::vector<std::unique_ptr<Table>> tables_;  // company first
  std::vector<unsigned long> prepared_on_;      // the serials of the pipelines prepared on
};

}  // namespace kwx::bench

#endif  // KWX_BENCH_PG_ROW_WRITER_H_
