// kwx chart ID|SYMBOL EXCHANGE -o FILE
#include <CLI/CLI.hpp>
#include <memory>
#include <optional>
#include <ostream>
#include <string>
#include <vector>

#include "automation/dates.h"
#include "chart/chart_scene.h"
#include "chart/chart_writer.h"
#include "cli/context.h"
#include "cli/study_lookup.h"
#include "model/company.h"

namespace kwx::cli {
namespace {

struct ChartArgs {
  std::vector<std::string> study;  // an ID, or a symbol and an exchange
  std::string output;
};

}  // namespace

void AddChartCommands(CLI::App& app, Context& ctx) {
  auto args = std::make_shared<ChartArgs>();
  auto* cmd = app.add_subcommand(
      "chart",
      "draw a saved study's sales, EPS, pre-tax income and prices on a ratio scale with its "
      "trend and projection lines, as an SVG, PNG or PDF file");
  cmd->add_option("STUDY", args->study, "the company ID, or SYMBOL EXCHANGE")
      ->required()
      ->expected(1, 2);
  cmd->add_option("-o,--output", args->output, "the file to write: .svg, .png or .pdf")->required();
  cmd->callback([&ctx, args] {
    ctx.reads_only = true;
    // The format is checked before the study is read, so a wrong name costs nothing.
    const std::optional<ChartFormat> format = ChartFormatOf(args->output);
    if (!format) {
      throw CommandError("cannot write a chart as '" + args->output +
                             "': the file name must end in .svg, .png or .pdf",
                         2);
    }
    const Company company = LoadStudy(ctx, args->study);
    std::string error;
    if (!WriteChart(BuildChartScene(company, Now()), *format, args->output, &error)) {
      throw CommandError("cannot write " + args->output + ": " + error);
    }
    *ctx.out << "wrote " << args->output << "\n";
  });
}

}  // namespace kwx::cli
