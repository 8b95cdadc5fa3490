// Errors of the late-bound object model, and the "continue past this statement" idiom.
#ifndef KWX_AUTOMATION_ERRORS_H_
#define KWX_AUTOMATION_ERRORS_H_

#include <cstdint>
#include <stdexcept>
#include <string>
#include <utility>

namespace kwx {

// Error numbers as the object model reports them; the texts go with them.
namespace err {
inline constexpr int32_t kInvalidCall = 5;         // "Invalid procedure call or argument"
inline constexpr int32_t kOverflow = 6;            // "Overflow"
inline constexpr int32_t kSubscript = 9;           // "Subscript out of range"
inline constexpr int32_t kDivisionByZero = 11;     // "Division by zero"
inline constexpr int32_t kTypeMismatch = 13;       // "Type mismatch"
inline constexpr int32_t kObjectNotSet = 91;       // "Object variable or With block variable not set"
inline constexpr int32_t kInvalidUseOfNull = 94;   // "Invalid use of Null"
inline constexpr int32_t kCannotCreate = 429;      // "ActiveX component can't create object"
inline constexpr int32_t kNoSuchMember = 438;      // "Object doesn't support this property or method"
}  // namespace err

// The one error type of the object model: a number and a description. Conversions, array
// subscripts and late-bound calls raise it; callers that "continue past errors" catch it.
class AutomationError : public std::runtime_error {
 public:
  AutomationError(int32_t number, std::string description)
      : std::runtime_error(std::move(description)), number_(number) {}
  // Builds the error with its standard description.
  explicit AutomationError(int32_t number);

  int32_t number() const noexcept { return number_; }
  const char* description() const noexcept { return what(); }

 private:
  int32_t number_;
};

// The standard description of an error number ("Type mismatch" for 13); "Application-defined
// or object-defined error" for numbers it does not know.
const char* ErrorDescription(int32_t number) noexcept;

// Runs one statement and swallows any error it raises, so the caller goes on with the next
// statement. Returns true when the statement completed.
template <class F>
bool ResumeNext(F&& statement) noexcept {
  try {
    std::forward<F>(statement)();
    return true;
  } catch (...) {
    return false;
  }
}

}  // namespace kwx

#endif  // KWX_AUTOMATION_ERRORS_H_
