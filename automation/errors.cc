#include "automation/errors.h"

namespace kwx {

AutomationError::AutomationError(int32_t number)
    : std::runtime_error(ErrorDescription(number)), number_(number) {}

const char* ErrorDescription(int32_t number) noexcept {
  switch (number) {
    case err::kInvalidCall: return "Invalid procedure call or argument";
    case err::kOverflow: return "Overflow";
    case err::kSubscript: return "Subscript out of range";
    case err::kDivisionByZero: return "Division by zero";
    case err::kTypeMismatch: return "Type mismatch";
    case err::kObjectNotSet: return "Object variable or With block variable not set";
    case err::kInvalidUseOfNull: return "Invalid use of Null";
    case err::kCannotCreate: return "ActiveX component can't create object";
    case err::kNoSuchMember: return "Object doesn't support this property or method";
    default: return "Application-defined or object-defined error";
  }
}

}  // namespace kwx
