// Finding the saved study a command names.
#ifndef KWX_CLI_STUDY_LOOKUP_H_
#define KWX_CLI_STUDY_LOOKUP_H_

#include <string>
#include <vector>

#include "cli/context.h"
#include "model/company.h"

namespace kwx::cli {

// Loads the study named by `words`: one word, a company ID; two words, a symbol and an exchange.
// Prints the loader's error reports. Raises CommandError: exit 2 for words that name no study
// (a non-numeric ID, a wrong count), exit 1 when no such study is saved.
Company LoadStudy(Context& ctx, const std::vector<std::string>& words);

}  // namespace kwx::cli

#endif  // KWX_CLI_STUDY_LOOKUP_H_
