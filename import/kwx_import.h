// Reading a KWX field array (import/kwx_layout.h) into a Company. The loader's import dispatch
// runs the three steps in order: ValidateKwxFields, then, when it answers true, MapKwxCompany
// and MapKwxJudgment.
#ifndef KWX_IMPORT_KWX_IMPORT_H_
#define KWX_IMPORT_KWX_IMPORT_H_

#include <cstdint>

#include "automation/variant.h"
#include "model/company.h"

namespace kwx {

// Checks the layout version at position 0 (its leading number). Version 0, which includes a
// non-numeric or missing position 0, answers false. Version 1.0 answers true after filling
// the positions that layout lacks with their defaults (in `fields`, which must be an array
// reaching position 326 for all of them to be filled). Any other version answers true and
// leaves the array as it is. Never raises.
bool ValidateKwxFields(Variant& fields);

// The layout version position 0 of `fields` gives; 0 when it gives none (or `fields` is no
// array). Never raises.
float KwxFieldsVersion(const Variant& fields);

// Stores positions 0 to 156 into `company`: CompanyID becomes 0 (an imported study is a new
// one), then, unless the version is 0, the record properties, the notes, the value at 101 and
// the yearly, quarterly and monthly series. Every position is stored on its own: one that is
// missing, does not convert or is rejected by its property leaves that property as it was.
// `platform` is the loader's (the layout is the same on both). Never raises.
void MapKwxCompany(Company& company, const Variant& fields, int32_t platform);

// Fills fresh judgment groups, options, PMG rows and PERT rows from positions 159 to 371 and
// puts them in place of the company's. A position that fails leaves that property at its zero
// value, except the PERT rows, which stay as they were when position 370 or 371 cannot be
// read. Never raises.
void MapKwxJudgment(Company& company, const Variant& fields, int32_t platform);

}  // namespace kwx

#endif  // KWX_IMPORT_KWX_IMPORT_H_
