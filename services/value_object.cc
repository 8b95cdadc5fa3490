#include "services/value_object.h"

#include "automation/errors.h"
#include "model/company.h"

namespace kwx {

float ValueObject::sngCommonDiv(Variant& company) {
  if (!company.IsObject() || company.AsObject() == nullptr) {
    if (company.IsObject() || company.IsEmpty()) throw AutomationError(err::kObjectNotSet);
    throw AutomationError(err::kTypeMismatch);
  }
  const auto* study = dynamic_cast<const Company*>(company.AsObject().get());
  if (study == nullptr) throw AutomationError(err::kTypeMismatch);
  // The latest year's payout is what the company actually paid; the current dividend is the
  // fallback for a study whose yearly history has no dividend yet.
  if (!study->Yearly.empty() && study->Yearly.front().DPS > 0) return study->Yearly.front().DPS;
  if (study->sngCurDiv > 0) return study->sngCurDiv;
  return 0;
}

}  // namespace kwx
