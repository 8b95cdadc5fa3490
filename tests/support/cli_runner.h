// Runs the kwx command in-process, for the command-line tests.
#ifndef KWX_TESTS_SUPPORT_CLI_RUNNER_H_
#define KWX_TESTS_SUPPORT_CLI_RUNNER_H_

#include <sstream>
#include <string>
#include <vector>

#include "cli/app.h"
#include "loader/kwx_loader.h"
#include "model/company.h"

namespace kwx::testing {

struct CliResult {
  int code = 0;
  std::string out;
  std::string err;
};

// Runs `kwx args...` with `input` on standard input.
inline CliResult RunKwx(const std::vector<std::string>& args, const std::string& input = "") {
  std::istringstream in(input);
  std::ostringstream out, err;
  CliResult r;
  r.code = cli::Run(args, in, out, err);
  r.out = out.str();
  r.err = err.str();
  return r;
}

// Runs `kwx --db DB args...`.
inline CliResult RunKwxOn(const std::string& db, std::vector<std::string> args) {
  args.insert(args.begin(), {"--db", db});
  return RunKwx(args);
}

// Saves `study` into the database file `db` (made by `kwx init`) through a loader, adding its
// exchange first; answers its CompanyID as text, empty when the save reported an error.
inline std::string SaveStudy(const std::string& db, Company study) {
  kwxLoader loader;
  if (!loader.Access_blnOpenDatabase(db)) return "";
  if (!study.ExchangeID.empty()) loader.Access_AddExchange(study.ExchangeID);
  loader.Access_Update(study);
  return loader.ErrorReports().empty() ? std::to_string(study.CompanyID) : "";
}

}  // namespace kwx::testing

#endif  // KWX_TESTS_SUPPORT_CLI_RUNNER_H_
