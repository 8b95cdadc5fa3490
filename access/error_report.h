// The error report of the database store: what a store procedure composes when it traps an
// error, and where it hands the report.
#ifndef KWX_ACCESS_ERROR_REPORT_H_
#define KWX_ACCESS_ERROR_REPORT_H_

#include <cstdint>
#include <exception>
#include <string>
#include <vector>

namespace kwx {

// One trapped error: its number and description, the procedure it happened in (such as
// "mdlAccess_UpdateCompany") and the key argument as "name: value" (such as "lngCompanyID: 7").
struct ErrorReport {
  int32_t code = 0;
  std::string description;
  std::string location;   // empty when not given
  std::string parameter;  // empty when not given

  // The report as up to four lines, each ended by a carriage return (character 13):
  // "Code: <code>", "Error: <description>", "Location: <location>" only when a location is
  // given, "Parameter: <parameter>" only when a parameter is given.
  std::string Text() const;
};

// Builds the report of a caught error. An AutomationError gives its number and description;
// std::bad_alloc gives 7, "Out of memory"; any other std::exception gives 5 (invalid procedure
// call or argument, the object model's number for a call that could not be carried out) with
// its what() text; anything else gives 5 with that number's standard description.
// Call it from a catch block with std::current_exception(). Never raises.
ErrorReport ReportFromException(std::exception_ptr error, std::string location = {},
                                std::string parameter = {}) noexcept;

// Where store procedures deliver their error reports. The store never raises to its caller;
// the sink is how a host, a log or a test learns what went wrong.
class ErrorSink {
 public:
  virtual ~ErrorSink() = default;
  // Receives one report. Must not raise.
  virtual void Report(const ErrorReport& report) noexcept = 0;
};

// An ErrorSink that keeps every report in arrival order.
class ErrorCollector : public ErrorSink {
 public:
  void Report(const ErrorReport& report) noexcept override;
  // The reports received so far, oldest first.
  const std::vector<ErrorReport>& reports() const noexcept { return reports_; }
  // Forgets the reports received so far.
  void Clear() noexcept { reports_.clear(); }

 private:
  std::vector<ErrorReport> reports_;
};

}  // namespace kwx

#endif  // KWX_ACCESS_ERROR_REPORT_H_
