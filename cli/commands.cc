#include "cli/commands.h"

#include <CLI/CLI.hpp>

#include "cli/context.h"

namespace kwx::cli {

void AddDatabaseCommands(CLI::App& app, Context& ctx);
void AddRefCommands(CLI::App& app, Context& ctx);

void AddCommands(CLI::App& app, Context& ctx) {
  AddDatabaseCommands(app, ctx);
  AddRefCommands(app, ctx);
}

}  // namespace kwx::cli
