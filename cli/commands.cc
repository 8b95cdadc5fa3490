#include "cli/commands.h"

#include <CLI/CLI.hpp>

#include "cli/context.h"

namespace kwx::cli {

void AddDatabaseCommands(CLI::App& app, Context& ctx);
void AddRefCommands(CLI::App& app, Context& ctx);
void AddStudyCommands(CLI::App& app, Context& ctx);
void AddComparisonCommands(CLI::App& app, Context& ctx);
void AddFileCommands(CLI::App& app, Context& ctx);
void AddDefaultsCommands(CLI::App& app, Context& ctx);
void AddChartCommands(CLI::App& app, Context& ctx);
void AddSeriesCommands(CLI::App& app, Context& ctx);
void AddCopyCommands(CLI::App& app, Context& ctx);

void AddCommands(CLI::App& app, Context& ctx) {
  AddDatabaseCommands(app, ctx);
  AddRefCommands(app, ctx);
  AddStudyCommands(app, ctx);
  AddComparisonCommands(app, ctx);
  AddFileCommands(app, ctx);
  AddDefaultsCommands(app, ctx);
  AddChartCommands(app, ctx);
  AddSeriesCommands(app, ctx);
  AddCopyCommands(app, ctx);
}

}  // namespace kwx::cli
