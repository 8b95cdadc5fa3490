// A libpq connection in pipeline mode for the raw side on a PostgreSQL server: statements are
// sent without waiting for the one before, and their results read back in order only when a
// value is needed (a new study's key) or at a sync point (a commit). That is as fast as libpq
// lets a program that knows its next statements talk to the server: one round trip per wait,
// not one per statement.
#ifndef KWX_BENCH_PG_PIPELINE_H_
#define KWX_BENCH_PG_PIPELINE_H_

#include <libpq-fe.h>

#include <deque>
#include <functional>
#include <memory>
#include <string>
#include <vector>

namespace kwx::bench {

struct PgResultCloser {
  void operator()(PGresult* r) const noexcept { PQclear(r); }
};
using PgResult = std::unique_ptr<PGresult, PgResultCloser>;

class PgPipeline {
 public:
  // Connects to `uri` (a libpq URI) with texts in UTF-8 and enters pipeline mode. ok() says
  // whether that worked; error() why not. With `round_trip_each`, every statement waits for
  // its result before the next is sent, as a program that does not pipeline talks to the
  // server (PQexecPrepared): the same statements, one round trip each.
  explicit PgPipeline(const std::string& uri, bool round_trip_each = false);
  ~PgPipeline();
  PgPipeline(const PgPipeline&) = delete;
  PgPipeline& operator=(const PgPipeline&) = delete;

  bool ok() const noexcept { return conn_ != nullptr && error_.empty(); }
  const std::string& error() const noexcept { return error_; }
  // A number that changes with every connection (statements are prepared per connection).
  unsigned long serial() const noexcept { return serial_; }

  // Queues the preparation of `sql` under `name`, with the parameter types `types` (0: the
  // server's choice).
  bool Prepare(const std::string& name, const std::string& sql, const std::vector<Oid>& types);
  // Queues a run of prepared statement `name` with the values `values` (texts; nullptr for
  // NULL). `on_result`, when given, receives its result once it is read.
  bool Run(const std::string& name, const std::vector<const char*>& values,
           std::function<void(const PGresult*)> on_result = {});
  // Queues a statement without parameters (transaction control, a catalog query); `on_result`
  // as for Run.
  bool Command(const char* sql, std::function<void(const PGresult*)> on_result = {});
  // Asks the server to send the results so far and reads every queued result. False (with
  // error() set) when a statement failed.
  bool Wait();
  // Ends the pipeline's current sequence (the server commits an open implicit transaction)
  // and reads every result up to it.
  bool Sync();

 private:
  bool Queued(bool sent, std::function<void(const PGresult*)> on_result);
  bool ReadOne();

  PGconn* conn_ = nullptr;
  bool round_trip_each_ = false;
  std::string error_;
  unsigned long serial_ = 0;
  // The results still to read, oldest first: a handler (maybe empty) per statement; a sync
  // point is an entry without a statement.
  struct Pending {
    bool sync = false;
    std::function<void(const PGresult*)> on_result;
  };
  std::deque<Pending> pending_;
};

}  // namespace kwx::bench

#endif  // KWX_BENCH_PG_PIPELINE_H_
