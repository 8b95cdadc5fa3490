#include "cli/app.h"

#include <unistd.h>

#include <CLI/CLI.hpp>
#include <algorithm>
#include <cstdlib>
#include <iostream>
#include <sstream>
#include <string_view>

#include "cli/commands.h"
#include "cli/context.h"

namespace kwx::cli {
namespace {

// The number of single-character insertions, deletions and substitutions that turn `a` into
// `b` (Levenshtein distance).
size_t EditDistance(std::string_view a, std::string_view b) {
  std::vector<size_t> row(b.size() + 1);
  for (size_t j = 0; j <= b.size(); ++j) row[j] = j;
  for (size_t i = 1; i <= a.size(); ++i) {
    size_t diagonal = row[0];
    row[0] = i;
    for (size_t j = 1; j <= b.size(); ++j) {
      const size_t above = row[j];
      row[j] = std::min({row[j] + 1, row[j - 1] + 1, diagonal + (a[i - 1] == b[j - 1] ? 0 : 1)});
      diagonal = above;
    }
  }
  return row[b.size()];
}

// The command of `parent` nearest to the mistyped `word`, or "" when none is near enough to be
// what the user meant (at most a third of the word's letters wrong, and never more than 3).
std::string NearestCommand(const CLI::App& parent, const std::string& word) {
  std::string best;
  size_t best_distance = std::min<size_t>(3, std::max<size_t>(1, word.size() / 3)) + 1;
  for (const CLI::App* sub : parent.get_subcommands([](const CLI::App*) { return true; })) {
    const size_t d = EditDistance(word, sub->get_name());
    if (d < best_distance) {
      best_distance = d;
      best = sub->get_name();
    }
  }
  return best;
}

// The innermost command the user named (the app itself when none): an unknown word is taken
// as a mistyped command of this one.
const CLI::App& InnermostCommand(const CLI::App& app) {
  const CLI::App* at = &app;
  for (;;) {
    const std::vector<CLI::App*> chosen = at->get_subcommands();
    if (chosen.empty()) return *at;
    at = chosen.front();
  }
}

}  // namespace

int Run(const std::vector<std::string>& args, std::istream& in, std::ostream& out,
        std::ostream& err) {
  Context ctx;
  ctx.in = &in;
  ctx.out = &out;
  ctx.err = &err;
  // KWX_PROGRESS=1 draws progress bars on any standard error (a log that keeps them).
  const char* progress = std::getenv("KWX_PROGRESS");
  ctx.err_is_terminal = (&err == &std::cerr && ::isatty(STDERR_FILENO) == 1) ||
                        (progress != nullptr && std::string_view(progress) == "1");
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
  app.add_option("--wait", ctx.options.wait_seconds,
                 "seconds to wait for another program that holds the database (default 30)")
      ->check(CLI::Range(0, 3600));
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
    const CLI::App& innermost = InnermostCommand(app);
    if (e.get_name() == "RequiredError" && !rest.empty() &&
        innermost.get_require_subcommand_min() > 0) {
      err << "kwx: unknown command '" << rest.front() << "'";
      if (const std::string near = NearestCommand(innermost, rest.front()); !near.empty()) {
        err << "; did you mean '" << near << "'?";
      }
      err << "\n";
    } else {
      err << "kwx: " << e.what() << "\n";
    }
    err << "Run 'kwx --help' for usage.\n";
    return 2;
  } catch (const CommandError& e) {
    err << "kwx: " << ctx.Reason(e.what()) << "\n";
    return e.exit_code();
  } catch (const std::exception& e) {
    // A lock held past the wait surfaces as the engine's terse words; say what it means.
    err << "kwx: " << ctx.Reason(e.what()) << "\n";
    return 1;
  }
  return 0;
}

}  // namespace kwx::cli
