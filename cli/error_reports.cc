#include "cli/error_reports.h"

namespace kwx::cli {

void PrintErrorReports(kwxLoader& loader, std::ostream& err) {
  for (const ErrorReport& r : loader.ErrorReports()) {
    err << "kwx: error " << r.code << " (" << r.description << ")";
    if (!r.location.empty()) err << " in " << r.location;
    if (!r.parameter.empty()) err << ", " << r.parameter;
    err << "\n";
  }
  loader.ClearErrorReports();
}

}  // namespace kwx::cli
