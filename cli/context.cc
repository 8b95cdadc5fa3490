#include "cli/context.h"

#include <chrono>
#include <cmath>
#include <filesystem>

#include "automation/text.h"
#include "services/create_database.h"
#include "services/database_engine.h"

namespace kwx::cli {
namespace {

// A database named by a connection URI rather than a file path: the file checks do not apply.
bool IsConnectionUri(std::string_view path) { return path.find("://") != std::string_view::npos; }

// Whole seconds from `start` to now, rounded.
int SecondsSince(std::chrono::steady_clock::time_point start) {
  return static_cast<int>(
      std::lround(std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count()));
}

void ApplyWait(kwxLoader& loader, int seconds) {
  if (auto* sqlite = dynamic_cast<DatabaseEngine*>(loader.database().get())) {
    sqlite->SetBusyTimeout(seconds * 1000);
  }
}

std::unique_ptr<kwxLoader> NewLoader(const GlobalOptions& options, int32_t platform) {
  auto loader = std::make_unique<kwxLoader>();
  if (platform == kPlatformSP) loader->ProgramPlatform(kPlatformSP);
  ApplyWait(*loader, options.wait_seconds);
  return loader;
}

// Opens `path` with `loader`, or raises CommandError (exit 2) saying in the user's terms why
// not: no such file, a directory, a database another program holds, or the engine's reason.
void OpenDatabase(kwxLoader& loader, const std::string& path, const GlobalOptions& options,
                  bool reads_only) {
  if (!IsConnectionUri(path)) {
    std::error_code ec;
    if (!std::filesystem::exists(path, ec)) {
      throw CommandError("'" + path +
                             "': no such file (create a database with 'kwx init', or name one "
                             "with --db)",
                         2);
    }
    if (std::filesystem::is_directory(path, ec)) {
      throw CommandError("'" + path + "' is a directory, not a study database", 2);
    }
  }
  auto* sqlite = dynamic_cast<DatabaseEngine*>(loader.database().get());
  if (sqlite) sqlite->SetUpgradeAllowed(!reads_only);
  const auto start = std::chrono::steady_clock::now();
  if (loader.Access_blnOpenDatabase(path)) return;
  // The engine's reason (an upgrade that failed, a file that is no database) helps more than
  // the bare refusal.
  const std::string why = sqlite ? sqlite->LastErrorMessage() : std::string();
  if (SaysLocked(why)) throw CommandError(InUseMessage(path, SecondsSince(start)), 2);
  throw CommandError(
      "cannot open '" + path + "' as a study database" + (why.empty() ? "" : ": " + why), 2);
}

}  // namespace

void InitDatabase(const std::string& path) {
  std::error_code ec;
  if (std::filesystem::exists(std::filesystem::symlink_status(path, ec))) {
    throw CommandError("'" + path +
                       "' exists already; init never overwrites a file (name a new one with --db)");
  }
  const Status s = CreateDatabase(path);
  if (!s.ok()) throw CommandError("cannot create the database " + CreationReason(s));
}

std::string CreationReason(const Status& status) {
  // The message names the routine first; the user needs only the path and the reason.
  constexpr std::string_view kRoutine = "CreateDatabase: ";
  std::string_view text = status.message();
  if (text.starts_with(kRoutine)) text.remove_prefix(kRoutine.size());
  return std::string(text);
}

std::string InUseMessage(const std::string& path, int waited_seconds) {
  return "'" + path + "' is in use by another program; waited " + std::to_string(waited_seconds) +
         " s (try again later, or wait longer with --wait)";
}

bool SaysLocked(std::string_view message) {
  return FindNoCase(message, "database is locked") != std::string::npos ||
         FindNoCase(message, "database table is locked") != std::string::npos;
}

std::string Context::Reason(std::string_view what, const std::string& path) const {
  // A command that failed after a statement waited out another program's lock failed because
  // of that lock, whatever it guessed.
  const auto* sqlite =
      loader_ ? dynamic_cast<const DatabaseEngine*>(loader_->database().get()) : nullptr;
  if (SaysLocked(what) || (sqlite && sqlite->LockFailureSeen())) {
    return InUseMessage(path.empty() ? options.db_path : path, SecondsSince(started_));
  }
  return std::string(what);
}

kwxLoader& Context::Loader() {
  if (!loader_) {
    loader_ = NewLoader(options, options.platform == "sp" ? kPlatformSP : kPlatformPlain);
    if (!options.trace_sql.empty()) {
      auto* sqlite = dynamic_cast<DatabaseEngine*>(loader_->database().get());
      if (!sqlite || !sqlite->SetTraceFile(options.trace_sql)) {
        throw CommandError("cannot write the SQL trace to '" + options.trace_sql + "'", 2);
      }
    }
  }
  return *loader_;
}

kwxLoader& Context::OpenLoader() {
  kwxLoader& loader = Loader();
  if (open_) return loader;
  OpenDatabase(loader, options.db_path, options, reads_only);
  open_ = true;
  return loader;
}

std::unique_ptr<kwxLoader> Context::OpenAnother(const std::string& path, int32_t platform,
                                                bool reads_only) const {
  std::unique_ptr<kwxLoader> loader = NewLoader(options, platform);
  OpenDatabase(*loader, path, options, reads_only);
  return loader;
}

}  // namespace kwx::cli
