// The `kwx` command: global options and the command table.
#ifndef KWX_CLI_APP_H_
#define KWX_CLI_APP_H_

#include <iosfwd>
#include <string>
#include <vector>

namespace kwx::cli {

// Runs the command line `args` (without the program name) with the given streams and answers
// the exit code: 0 success, 1 a failure of the work (a study not found, a file not read),
// 2 bad usage (unknown command, bad argument, missing database file).
int Run(const std::vector<std::string>& args, std::istream& in, std::ostream& out,
        std::ostream& err);

}  // namespace kwx::cli

#endif  // KWX_CLI_APP_H_
