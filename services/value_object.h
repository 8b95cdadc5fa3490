// The value object: the dividend figures of a study.
#ifndef KWX_SERVICES_VALUE_OBJECT_H_
#define KWX_SERVICES_VALUE_OBJECT_H_

#include "automation/services.h"
#include "automation/variant.h"

namespace kwx {

// Serves both platform builds ("iKWX_Values.KWXValue" and "iKWX_SP_Values.KWXValue"). Holds
// no state.
class ValueObject final : public IValue {
 public:
  // The default common dividend of the Company held in `company`: the latest fiscal year's
  // dividend per share (Yearly row 0, DPS) when above 0, else the current dividend sngCurDiv
  // when above 0, else 0. Leaves the reference in `company` as it is. Raises
  // err::kObjectNotSet when `company` holds no object (Empty or Nothing) and
  // err::kTypeMismatch when it holds something other than a Company.
  float sngCommonDiv(Variant& company) override;
};

}  // namespace kwx

#endif  // KWX_SERVICES_VALUE_OBJECT_H_
