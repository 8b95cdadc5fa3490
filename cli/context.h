// What every command shares: the global options and the loader they open.
#ifndef KWX_CLI_CONTEXT_H_
#define KWX_CLI_CONTEXT_H_

#include <chrono>
#include <iosfwd>
#include <memory>
#include <stdexcept>
#include <string>
#include <string_view>

#include "loader/kwx_loader.h"
#include "services/status.h"

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
  // --wait: how many seconds a statement waits for another program's lock on the database.
  int wait_seconds = 30;
};

// The message for a database another program holds locked: "'PATH' is in use by another
// program; waited N s", N the seconds the command waited for it.
std::string InUseMessage(const std::string& path, int waited_seconds);
// True when `message` (an engine's or a command's) says the database was locked.
bool SaysLocked(std::string_view message);

// Creates the new, empty study database `path` (the path as --db takes it); raises
// CommandError (exit 1) when `path` exists already or cannot be created.
void InitDatabase(const std::string& path);
// A creation failure's message for a person: the path and the reason, without the routine's
// name.
std::string CreationReason(const Status& status);

struct Context {
  GlobalOptions options;
  std::istream* in = nullptr;
  std::ostream* out = nullptr;
  std::ostream* err = nullptr;
  // True when `err` is the process's standard error and that is a terminal, or KWX_PROGRESS
  // is 1: progress bars are drawn.
  bool err_is_terminal = false;
  // Set by a command that only reads, before it opens the database: a file written by an
  // older version then is not upgraded (which writes) but refused with the reason.
  bool reads_only = false;

  // A failure's reason as the user reads it: `what`, except when it says the database was
  // locked or a statement of this command waited out another program's lock: then
  // InUseMessage for the --db database.
  // `path` names the database the message is about when it is not --db.
  std::string Reason(std::string_view what, const std::string& path = "") const;

  // A loader on the chosen platform with no database open (created once).
  kwxLoader& Loader();
  // A loader of its own on `platform` with the database `path` open, refused as OpenLoader
  // refuses; for a command that works on more than one database or platform at once. No SQL
  // trace.
  std::unique_ptr<kwxLoader> OpenAnother(const std::string& path, int32_t platform,
                                         bool reads_only) const;
  // The loader with the database file open; raises CommandError (exit 2) when the file does
  // not exist or cannot be opened as a database.
  kwxLoader& OpenLoader();

 private:
  std::unique_ptr<kwxLoader> loader_;
  bool open_ = false;
  // When the command began: what it waited for another program's lock is at most this long.
  std::chrono::steady_clock::time_point started_ = std::chrono::steady_clock::now();
};

}  // namespace kwx::cli

#endif  // KWX_CLI_CONTEXT_H_
