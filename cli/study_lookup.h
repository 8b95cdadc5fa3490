// Finding the saved study a command names, and reading the IDs given on the command line.
#ifndef KWX_CLI_STUDY_LOOKUP_H_
#define KWX_CLI_STUDY_LOOKUP_H_

#include <CLI/CLI.hpp>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "cli/context.h"
#include "model/company.h"
#include "studies/study_index.h"

namespace kwx::cli {

// The row ID a word on the command line names: a whole number written in decimal digits alone
// ("12"; not "1.5", "1e3", "+3", "0x10" or "012" read some other way), at most 2147483647.
// Raises CommandError (exit 2) naming `what` otherwise.
int32_t ParseId(std::string_view word, std::string_view what = "a company ID");

// The check every ID option of the commands carries, so that CLI11 never reads a word such as
// "1.5" or "010" as some other number: the same rule as ParseId.
CLI::Validator WholeNumberId();

// The CompanyID named by `words`: one word, a company ID (ParseId); two words, a symbol and an
// exchange (StudyIndex). Raises CommandError: exit 2 for words that name no study (not a
// whole number, a wrong count, a symbol shared by several studies), exit 1 when no such study
// is saved.
int32_t ResolveStudy(Context& ctx, const std::vector<std::string>& words);

// Loads the whole study named by `words` (ResolveStudy), always by its CompanyID, so that every
// series, the PMG and PERT rows included, is read. Prints the loader's error reports. Raises
// as ResolveStudy, and CommandError (exit 1) when the study cannot be loaded.
Company LoadStudy(Context& ctx, const std::vector<std::string>& words);

}  // namespace kwx::cli

#endif  // KWX_CLI_STUDY_LOOKUP_H_
