// Filling a study's default analysis values: growth rates, the revenue and EPS trend and
// projection lines of the judgment graph, the plot factors, the common dividend and the
// potential dilution.
#ifndef KWX_COMPUTE_COMPUTE_DEFAULTS_H_
#define KWX_COMPUTE_COMPUTE_DEFAULTS_H_

#include <cstdint>

#include "model/company.h"

namespace kwx {

// Fills the values of `company` the analyst has left at zero through the compute object and
// the value object of `platform` (1: "iKWX_SP_Compute.KWXCompute" and
// "iKWX_SP_Values.KWXValue"; any other value: the plain ProgIDs; never the other platform's).
// Four values are replaced on every call whatever they held: the graph's sngFactorEPS,
// sngFactorPTI and sngFactorPrice52W, and sngPotDilution (a fraction: (ACS - CSO) / CSO).
//
// Every step that fails is skipped and the next one runs. When no compute object can be
// created the study is left untouched; when no value object can be created the common
// dividend and the dilution are left as they were. Never raises.
//
// The value object receives the company as an object reference: the caller's own shared
// ownership when `company` is held by a std::shared_ptr, otherwise a non-owning reference
// valid only for that call. When it hands back a different Company, that study's values are
// copied into `company`.
void ComputeDefaults(Company& company, int32_t platform) noexcept;

}  // namespace kwx

#endif  // KWX_COMPUTE_COMPUTE_DEFAULTS_H_
