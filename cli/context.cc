#include "cli/context.h"

#include <cstdlib>
#include <filesystem>

namespace kwx::cli {

kwxLoader& Context::Loader() {
  if (!loader_) {
    // The database object reads the trace file from the environment when it is created.
    if (!options.trace_sql.empty()) ::setenv("KWX_TRACE_SQL", options.trace_sql.c_str(), 1);
    loader_ = std::make_unique<kwxLoader>();
    if (options.platform == "sp") loader_->ProgramPlatform(kPlatformSP);
  }
  return *loader_;
}

kwxLoader& Context::OpenLoader() {
  kwxLoader& loader = Loader();
  if (open_) return loader;
  if (!std::filesystem::exists(options.db_path)) {
    throw CommandError("database file '" + options.db_path +
                           "' does not exist (create it with 'kwx init' or name one with --db)",
                       2);
  }
  if (!loader.Access_blnOpenDatabase(options.db_path)) {
    throw CommandError("cannot open '" + options.db_path + "' as a study database", 2);
  }
  open_ = true;
  return loader;
}

}  // namespace kwx::cli
