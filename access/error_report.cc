#include "access/error_report.h"

#include <new>
#include <stdexcept>
#include <utility>

#include "automation/errors.h"

namespace kwx {

std::string ErrorReport::Text() const {
  constexpr char kEnd = '\r';
  std::string out = "Code: " + std::to_string(code) + kEnd;
  out += "Error: " + description + kEnd;
  if (!location.empty()) out += "Location: " + location + kEnd;
  if (!parameter.empty()) out += "Parameter: " + parameter + kEnd;
  return out;
}

ErrorReport ReportFromException(std::exception_ptr error, std::string location,
                                std::string parameter) noexcept {
  ErrorReport report;
  try {
    report.location = std::move(location);
    report.parameter = std::move(parameter);
    report.code = err::kInvalidCall;
    report.description = ErrorDescription(err::kInvalidCall);
    if (error) std::rethrow_exception(error);
  } catch (const AutomationError& e) {
    report.code = e.number();
    report.description = e.description();
  } catch (const std::bad_alloc&) {
    report.code = 7;
    report.description = "Out of memory";
  } catch (const std::exception& e) {
    report.code = err::kInvalidCall;
    report.description = e.what();
  } catch (...) {
    // Keeps the invalid-call number and description set above.
  }
  return report;
}

void ErrorCollector::Report(const ErrorReport& report) noexcept {
  // Losing a report under memory exhaustion is better than terminating the store's caller.
  try {
    reports_.push_back(report);
  } catch (...) {
  }
}

}  // namespace kwx
