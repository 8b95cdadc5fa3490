#include "cli/commands.h"

#include <CLI/CLI.hpp>

#include "cli/context.h"

namespace kwx::cli {

void AddCommands(CLI::App& app, Context& ctx) {
  (void)app;
  (void)ctx;
}

}  // namespace kwx::cli
