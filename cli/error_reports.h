// The loader's error reports as the study commands print them.
#ifndef KWX_CLI_ERROR_REPORTS_H_
#define KWX_CLI_ERROR_REPORTS_H_

#include <ostream>

#include "loader/kwx_loader.h"

namespace kwx::cli {

// Prints each error report the loader collected as one line on `err` ("kwx: error 13 (Type
// mismatch) in m_ParseCompany, lngCompanyID: 7"), oldest first, then forgets them. The study
// commands call it after every loader call whose failures are only reported.
void PrintErrorReports(kwxLoader& loader, std::ostream& err);

}  // namespace kwx::cli

#endif  // KWX_CLI_ERROR_REPORTS_H_
