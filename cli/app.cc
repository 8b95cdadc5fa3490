#include "cli/app.h"

#include <CLI/CLI.hpp>
#include <cstdlib>
#include <iostream>
#include <sstream>
#include <unistd.h>

#include "cli/commands.h"
#include "cli/context.h"

namespace kwx::cli {

int Run(const std::vector<std::string>& args, std::istream& in, std::ostream& out,
        std::ostream& err) {
  Context ctx;
  ctx.in = &in;
  ctx.out = &out;
  ctx.err = &err;
  ctx.err_is_terminal = &err == &std::cerr && ::isatty(STDERR_FILENO) == 1;
  if (const char* env = std::getenv("KWX_DB"); env && *env) {
    ctx.options.db_path = env;
  } else {
    ctx.options.db_path = "studies.db";
  }

  CLI::App app{"kwx: stock studies between a database, SSG/KWX data files and text streams",
               "kwx"};
  app.set_version_flag("--version", std::string("kwx ") + KWX_VERSION);
  app.require_subcommand(1);
  app.fallthrough();
  app.add_option("--db", ctx.options.db_path, "database file (default: $KWX_DB, else studies.db)");
  app.add_option("--platform", ctx.options.platform, "program platform")
      ->check(CLI::IsMember({"plain", "sp"}));
  app.add_option("--trace-sql", ctx.options.trace_sql,
                 "append every SQL statement executed to FILE as a JSON line");
  AddCommands(app, ctx);

  // CLI11 parses from the back; hand it the arguments in its order.
  std::vector<std::string> reversed(args.rbegin(), args.rend());
  try {
    app.parse(reversed);
  } catch (const CLI::CallForHelp&) {
    out << app.help();
    return 0;
  } catch (const CLI::CallForAllHelp&) {
    out << app.help("", CLI::AppFormatMode::All);
    return 0;
  } catch (const CLI::CallForVersion& e) {
    out << e.what() << "\n";
    return 0;
  } catch (const CLI::ParseError& e) {
    // A word where a command belongs reads better as "unknown command" than as CLI11's
    // "a subcommand is required".
    std::vector<std::string> rest = app.remaining();
    if (e.get_name() == "RequiredError" && !rest.empty() && app.get_subcommands().empty()) {
      err << "kwx: unknown command '" << rest.front() << "'\n";
    } else {
      err << "kwx: " << e.what() << "\n";
    }
    err << "Run 'kwx --help' for usage.\n";
    return 2;
  } catch (const CommandError& e) {
    err << "kwx: " << e.what() << "\n";
    return e.exit_code();
  } catch (const std::exception& e) {
    err << "kwx: " << e.what() << "\n";
    return 1;
  }
  return 0;
}

}  // namespace kwx::cli
