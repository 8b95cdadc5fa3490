// The command table of `kwx`. Each group of commands adds its subcommands to the app; the
// callbacks run during parsing and report failures as CommandError.
#ifndef KWX_CLI_COMMANDS_H_
#define KWX_CLI_COMMANDS_H_

namespace CLI {
class App;
}

namespace kwx::cli {

struct Context;

void AddCommands(CLI::App& app, Context& ctx);

}  // namespace kwx::cli

#endif  // KWX_CLI_COMMANDS_H_
