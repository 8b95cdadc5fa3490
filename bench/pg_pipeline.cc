#include "bench/pg_pipeline.h"

#include <utility>

namespace kwx::bench {

namespace {

unsigned long next_serial = 0;

std::string Trimmed(const char* message) {
  std::string text = message != nullptr ? message : "";
  while (!text.empty() && (text.back() == '\n' || text.back() == ' ')) text.pop_back();
  return text;
}

}  // namespace

PgPipeline::PgPipeline(const std::string& uri, bool round_trip_each)
    : round_trip_each_(round_trip_each), serial_(++next_serial) {
  const char* keys[] = {"dbname", "client_encoding", nullptr};
  const char* values[] = {uri.c_str(), "UTF8", nullptr};
  conn_ = PQconnectdbParams(keys, values, /*expand_dbname=*/1);
  if (conn_ == nullptr || PQstatus(conn_) != CONNECTION_OK) {
    error_ = conn_ != nullptr ? Trimmed(PQerrorMessage(conn_)) : "out of memory";
  } else if (PQenterPipelineMode(conn_) != 1) {
    error_ = "cannot enter pipeline mode: " + Trimmed(PQerrorMessage(conn_));
  }
}

PgPipeline::~PgPipeline() { PQfinish(conn_); }

bool PgPipeline::Queued(bool sent, std::function<void(const PGresult*)> on_result) {
  if (!sent) {
    error_ = Trimmed(PQerrorMessage(conn_));
    return false;
  }
  pending_.push_back({false, std::move(on_result)});
  return !round_trip_each_ || Wait();
}

bool PgPipeline::Prepare(const std::string& name, const std::string& sql,
                         const std::vector<Oid>& types) {
  return ok() && Queued(PQsendPrepare(conn_, name.c_str(), sql.c_str(),
                                      static_cast<int>(types.size()), types.data()) == 1,
                        {});
}

bool PgPipeline::Run(const std::string& name, const std::vector<const char*>& values,
                     std::function<void(const PGresult*)> on_result) {
  return ok() && Queued(PQsendQueryPrepared(conn_, name.c_str(), static_cast<int>(values.size()),
                                            values.data(), nullptr, nullptr, 0) == 1,
                        std::move(on_result));
}

bool PgPipeline::Command(const char* sql, std::function<void(const PGresult*)> on_result) {
  // Pipeline mode speaks only the extended protocol: a statement without parameters goes as
  // one with none.
  return ok() &&
         Queued(PQsendQueryParams(conn_, sql, 0, nullptr, nullptr, nullptr, nullptr, 0) == 1,
                std::move(on_result));
}

bool PgPipeline::ReadOne() {
  Pending next = std::move(pending_.front());
  pending_.pop_front();
  PgResult result(PQgetResult(conn_));
  const ExecStatusType status = PQresultStatus(result.get());
  if (next.sync) {
    // A sync point is one result with nothing after it.
    if (status != PGRES_PIPELINE_SYNC && error_.empty()) error_ = "the pipeline lost its order";
    return error_.empty();
  }
  if (status == PGRES_COMMAND_OK || status == PGRES_TUPLES_OK) {
    if (next.on_result) next.on_result(result.get());
  } else if (error_.empty()) {
    // The first failure says why; the statements after it only report the pipeline aborted.
    error_ = result ? Trimmed(PQresultErrorMessage(result.get())) : Trimmed(PQerrorMessage(conn_));
  }
  // Each statement's results end with a null result.
  while (result) result.reset(PQgetResult(conn_));
  return error_.empty();
}

bool PgPipeline::Wait() {
  if (conn_ == nullptr) return false;
  if (PQsendFlushRequest(conn_) != 1 || PQflush(conn_) != 0) {
    if (error_.empty()) error_ = Trimmed(PQerrorMessage(conn_));
    return false;
  }
  while (!pending_.empty()) ReadOne();
  return error_.empty();
}

bool PgPipeline::Sync() {
  if (conn_ == nullptr) return false;
  if (PQpipelineSync(conn_) != 1) {
    if (error_.empty()) error_ = Trimmed(PQerrorMessage(conn_));
    return false;
  }
  pending_.push_back({true, {}});
  while (!pending_.empty()) ReadOne();
  return error_.empty();
}

}  // namespace kwx::bench
