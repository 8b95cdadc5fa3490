#include "cli/study_lookup.h"

#include <algorithm>
#include <limits>

#include "access/sql_text.h"
#include "automation/conversions.h"
#include "automation/safe_array.h"
#include "automation/text.h"
#include "cli/error_reports.h"

namespace kwx::cli {
namespace {

// Why a word is no ID, or "" when it is one; `value` receives the ID.
std::string IdProblem(std::string_view word, int32_t& value) {
  const bool digits = !word.empty() && std::all_of(word.begin(), word.end(),
                                                   [](char c) { return c >= '0' && c <= '9'; });
  if (!digits) return "'" + std::string(word) + "' is not a whole number";
  int64_t n = 0;
  for (char c : word) {
    n = n * 10 + (c - '0');
    if (n > std::numeric_limits<int32_t>::max()) return "'" + std::string(word) + "' is too large";
  }
  value = static_cast<int32_t>(n);
  return "";
}

}  // namespace

int32_t ParseId(std::string_view word, std::string_view what) {
  int32_t value = 0;
  const std::string problem = IdProblem(word, value);
  if (!problem.empty()) {
    throw CommandError(problem + ": " + std::string(what) + " is a whole number such as 12", 2);
  }
  return value;
}

CLI::Validator WholeNumberId() {
  return CLI::Validator(
      [](std::string& word) {
        int32_t value = 0;
        const std::string problem = IdProblem(word, value);
        return problem.empty() ? problem : problem + " (IDs are whole numbers such as 12)";
      },
      "ID");
}

int32_t ResolveStudy(Context& ctx, const std::vector<std::string>& words) {
  if (words.size() == 1) return ParseId(words[0]);
  if (words.size() != 2) throw CommandError("give a company ID, or a symbol and an exchange", 2);
  kwxLoader& loader = ctx.OpenLoader();
  const std::vector<int32_t> found = StudyIndex(loader).Find(words[0], words[1]);
  const std::string named = words[0] + " on " + words[1];
  if (found.empty()) throw CommandError("no study found for " + named);
  if (found.size() > 1) {
    std::string list;
    for (int32_t id : found) list += (list.empty() ? "" : ", ") + std::to_string(id);
    throw CommandError(named + " names " + std::to_string(found.size()) + " studies (IDs " + list +
                           "): give the company ID",
                       2);
  }
  return found.front();
}

Company LoadStudy(Context& ctx, const std::vector<std::string>& words) {
  const int32_t id = ResolveStudy(ctx, words);
  kwxLoader& loader = ctx.OpenLoader();
  Company company;
  // By ID even when the user gave a symbol: a load by symbol reads no PMG or PERT rows, and a
  // study saved or exported from such a load would lose them.
  loader.Access_Get(id, "", "", company);
  PrintErrorReports(loader, *ctx.err);
  // Loading leaves the object untouched when nothing matched, so its ID stays 0.
  if (company.CompanyID < 1) throw CommandError("no study found for ID " + std::to_string(id));
  return company;
}

}  // namespace kwx::cli
