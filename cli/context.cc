#include "cli/context.h"

#include <filesystem>

#include "services/database_engine.h"
#include "services/postgres_database.h"

namespace kwx::cli {

kwxLoader& Context::Loader() {
  if (!loader_) {
    loader_ = std::make_unique<kwxLoader>();
    if (options.platform == "sp") loader_->ProgramPlatform(kPlatformSP);
    if (!options.trace_sql.empty()) {
      auto* engine = dynamic_cast<DatabaseEngine*>(loader_->database().get());
      if (!engine || !engine->SetTraceFile(options.trace_sql)) {
        throw CommandError("cannot write the SQL trace to '" + options.trace_sql + "'", 2);
      }
    }
  }
  return *loader_;
}

kwxLoader& Context::OpenLoader() {
  kwxLoader& loader = Loader();
  if (open_) return loader;
  // A server database is not a file; whether it can be reached shows when it is opened.
  if (!IsPostgresUri(options.db_path) && !std::filesystem::exists(options.db_path)) {
    throw CommandError("database file '" + options.db_path +
                           "' does not exist (create it with 'kwx init' or name one with --db)",
                       2);
  }
  if (auto* engine = dynamic_cast<DatabaseEngine*>(loader.database().get())) {
    engine->SetUpgradeAllowed(!reads_only);
  }
  if (!loader.Access_blnOpenDatabase(options.db_path)) {
    // The engine's reason (a lock held too long, an upgrade that failed) helps more than the
    // bare refusal.
    std::string why;
    if (const auto* engine = dynamic_cast<const DatabaseEngine*>(loader.database().get())) {
      if (!engine->LastErrorMessage().empty()) why = ": " + engine->LastErrorMessage();
    }
    throw CommandError("cannot open '" + options.db_path + "' as a study database" + why, 2);
  }
  open_ = true;
  return loader;
}

}  // namespace kwx::cli
