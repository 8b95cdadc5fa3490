// kwx defaults ID|SYMBOL EXCHANGE [--dry-run] [--json]
#include <CLI/CLI.hpp>
#include <memory>
#include <ostream>
#include <string>
#include <vector>

#include "cli/commands.h"
#include "cli/context.h"
#include "cli/error_reports.h"
#include "cli/study_lookup.h"
#include "json/company_json.h"
#include "model/company.h"

namespace kwx::cli {
namespace {

struct DefaultsArgs {
  std::vector<std::string> study;  // an ID, or a symbol and an exchange
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
  cmd->add_option("STUDY", args->study, "the company ID, or SYMBOL EXCHANGE")
      ->required()
      ->expected(1, 2);
  cmd->add_flag("--dry-run", args->dry_run, "print the changes without saving them");
  cmd->add_flag("--json", args->json, "print the whole study as JSON instead of the changes");
  cmd->callback([&ctx, args] {
    Company company = LoadStudy(ctx, args->study);
    kwxLoader& loader = ctx.OpenLoader();
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
    PrintErrorReports(loader, *ctx.err);
    if (!loader.LastUpdateCommitted()) throw CommandError("study " + std::to_string(company.CompanyID) + " was not saved");
    if (!args->json) *ctx.out << "saved study " << company.CompanyID << "\n";
  });
}

}  // namespace kwx::cli
