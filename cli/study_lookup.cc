#include "cli/study_lookup.h"

#include "automation/conversions.h"
#include "cli/company_json.h"

namespace kwx::cli {

Company LoadStudy(Context& ctx, const std::vector<std::string>& words) {
  const bool by_id = words.size() == 1 && IsNumeric(Variant(words[0]));
  if (!by_id && words.size() != 2) {
    throw CommandError("give a company ID, or a symbol and an exchange", 2);
  }
  kwxLoader& loader = ctx.OpenLoader();
  Company company;
  if (by_id) {
    loader.Access_Get(CLng(Variant(words[0])), "", "", company);
  } else {
    loader.Access_Get(0, words[0], words[1], company);
  }
  PrintErrorReports(loader, *ctx.err);
  // Loading leaves the object untouched when nothing matched, so its ID stays 0.
  if (company.CompanyID < 1) {
    throw CommandError("no study found for " +
                       (by_id ? "ID " + words[0] : words[0] + " on " + words[1]));
  }
  return company;
}

}  // namespace kwx::cli
