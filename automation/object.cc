#include "automation/object.h"

#include "automation/errors.h"
#include "automation/variant.h"

namespace kwx {

Variant Object::GetProperty(std::string_view) const { throw AutomationError(err::kNoSuchMember); }

void Object::SetProperty(std::string_view, const Variant&) {
  throw AutomationError(err::kNoSuchMember);
}

}  // namespace kwx
