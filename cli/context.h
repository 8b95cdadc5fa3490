// What every command shares: the global options and the loader they open.
#ifndef KWX_CLI_CONTEXT_H_
#define KWX_CLI_CONTEXT_H_

#include <iosfwd>
#include <memory>
#include <stdexcept>
#include <string>

#include "loader/kwx_loader.h"

namespace kwx::cli {

// A failure a command reports to the user as one line; `exit_code` 1 for a failure of the
// work, 2 for bad usage.
class CommandError : public std::runtime_error {
 public:
  CommandError(std::string message, int exit_code = 1)
      : std::runtime_error(std::move(message)), exit_code_(exit_code) {}
  int exit_code() const noexcept { return exit_code_; }

 private:
  int exit_code_;
};

struct GlobalOptions {
  // The database file: --db, else the environment variable KWX_DB, else "studies.db".
  std::string db_path;
  // "plain" or "sp".
  std::string platform = "plain";
  // --trace-sql: the statement trace file, empty for none.
  std::string trace_sql;
};

struct Context {
  GlobalOptions options;
  std::istream* in = nullptr;
  std::ostream* out = nullptr;
  std::ostream* err = nullptr;
  // True when `err` is the process's standard error and that is a terminal (progress bars).
  bool err_is_terminal = false;
  // Set by a command that only reads, before it opens the database: a file written by an
  // older version then is not upgraded (which writes) but refused with the reason.
  bool reads_only = false;

  // A loader on the chosen platform with no database open (created once).
  kwxLoader& Loader();
  // The loader with the database file open; raises CommandError (exit 2) when the file does
  // not exist or cannot be opened as a database.
  kwxLoader& OpenLoader();

 private:
  std::unique_ptr<kwxLoader> loader_;
  bool open_ = false;
};

}  // namespace kwx::cli

#endif  // KWX_CLI_CONTEXT_H_
