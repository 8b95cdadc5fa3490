// kwx defaults ID [--dry-run] [--json]
#include <CLI/CLI.hpp>
#include <memory>
#include <ostream>
#include <string>

#include "cli/commands.h"
#include "cli/company_json.h"
#include "cli/context.h"
#include "model/company.h"

namespace kwx::cli {
namespace {

struct DefaultsArgs {
  int32_t id = 0;
  bool dry_run = false;
  bool json = false;
};

}  // namespace

void AddDefaultsCommands(CLI::App& app, Context& ctx) {
  auto args = std::make_shared<DefaultsArgs>();
  auto* cmd =
      app.add_subcommand("defaults",
                         "fill a saved study's unset growth rates, trend and projection lines and "
                         "factors, print what changed and save it");
  cmd->add_option("ID", args->id, "the company ID")->required();
  cmd->add_flag("--dry-run", args->dry_run, "print the changes without saving them");
  cmd->add_flag("--json", args->json, "print the whole study as JSON instead of the changes");
  cmd->callback([&ctx, args] {
    kwxLoader& loader = ctx.OpenLoader();
    Company company;
    loader.Access_Get(args->id, "", "", company);
    PrintErrorReports(loader, *ctx.err);
    // Loading leaves the object untouched when nothing matched, so its ID stays 0.
    if (company.CompanyID < 1) {
      throw CommandError("no study found for ID " + std::to_string(args->id));
    }
    const Company before = company;
    loader.ComputeDefaults(company);
    const std::string changes = DescribeDifferences(before, company);
    if (args->json) {
      *ctx.out << CompanyJson(company).dump(2) << "\n";
    } else {
      *ctx.out << (changes.empty() ? "nothing to fill\n" : changes);
    }
    if (args->dry_run || changes.empty()) return;
    loader.Access_Update(company);
    // A save reports its failures only through the error reports.
    const bool failed = !loader.ErrorReports().empty();
    PrintErrorReports(loader, *ctx.err);
    if (failed) throw CommandError("study " + std::to_string(args->id) + " was not saved");
    if (!args->json) *ctx.out << "saved study " << args->id << "\n";
  });
}

}  // namespace kwx::cli
