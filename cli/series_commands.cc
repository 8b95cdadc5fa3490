// kwx series ID|SYMBOL EXCHANGE yearly|quarterly|monthly|pmg [--csv|--json]
#include <CLI/CLI.hpp>
#include <memory>
#include <ostream>
#include <string>
#include <vector>

#include "cli/context.h"
#include "cli/series_table.h"
#include "cli/study_lookup.h"
#include "cli/table_output.h"

namespace kwx::cli {
namespace {

struct SeriesArgs {
  std::vector<std::string>
      words;  // the study (an ID, or a symbol and an exchange), then the series
  bool csv = false;
  bool json = false;
};

}  // namespace

void AddSeriesCommands(CLI::App& app, Context& ctx) {
  auto args = std::make_shared<SeriesArgs>();
  std::string words;
  for (const std::string& w : SeriesWords()) words.append(words.empty() ? "" : "|").append(w);
  auto* cmd = app.add_subcommand(
      "series", "print one series of a saved study, a row per year, quarter or month: " + words +
                    " (a month's row starts with the day of its closing price)");
  cmd->add_option("ID|SYMBOL EXCHANGE SERIES", args->words,
                  "the company ID or its symbol and exchange, then the series: " + words)
      ->required()
      ->expected(2, 3)
      ->type_name("");
  auto* csv = cmd->add_flag("--csv", args->csv, "print CSV (a header row, values unrounded)");
  cmd->add_flag("--json", args->json, "print a JSON array of row objects")->excludes(csv);
  cmd->callback([&ctx, args] {
    ctx.reads_only = true;
    const std::vector<std::string> study(args->words.begin(), args->words.end() - 1);
    // The series word is checked before the study is read, so a wrong word costs nothing.
    const std::string& word = args->words.back();
    CheckSeriesWord(word);
    const ValueTable table = SeriesTable(LoadStudy(ctx, study), word);
    if (args->csv) {
      PrintCsv(*ctx.out, table);
    } else if (args->json) {
      *ctx.out << JsonRows(table).dump(2) << "\n";
    } else {
      PrintAligned(*ctx.out, table);
    }
  });
}

}  // namespace kwx::cli
