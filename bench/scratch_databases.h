// The databases the benchmark creates on a PostgreSQL server for itself, so that it never
// touches a database of the user's: each made fresh under a name of its own and dropped at the
// end.
#ifndef KWX_BENCH_SCRATCH_DATABASES_H_
#define KWX_BENCH_SCRATCH_DATABASES_H_

#include <string>
#include <string_view>
#include <vector>

struct pg_conn;

namespace kwx::bench {

// `uri` (a libpq URI) naming the database `name` instead of the one it names (or of the one
// the environment names when it names none).
std::string UriOfDatabase(const std::string& uri, std::string_view name);

class ScratchDatabases {
 public:
  // Connects to the server of `uri` through the database it names (any database of the
  // server does: databases are created and dropped from one). ok() says whether that worked.
  explicit ScratchDatabases(std::string uri);
  // Drops every database made, ending the connections still open to them.
  ~ScratchDatabases();
  ScratchDatabases(const ScratchDatabases&) = delete;
  ScratchDatabases& operator=(const ScratchDatabases&) = delete;

  bool ok() const noexcept { return conn_ != nullptr; }
  const std::string& error() const noexcept { return error_; }

  // Makes the database kwxbench_<process id>_<name> anew (dropping the one made before under
  // that name) and lays the study tables out in it. Answers its URI, or "" with error() set.
  std::string Fresh(std::string_view name);

 private:
  bool Run(const std::string& sql);

  std::string uri_;
  pg_conn* conn_ = nullptr;
  std::string error_;
  std::vector<std::string> made_;
};

}  // namespace kwx::bench

#endif  // KWX_BENCH_SCRATCH_DATABASES_H_
