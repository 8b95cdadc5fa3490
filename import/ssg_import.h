// Mapping the field array of an SSG data file onto a study.
#ifndef KWX_IMPORT_SSG_IMPORT_H_
#define KWX_IMPORT_SSG_IMPORT_H_

#include <cstdint>

#include "automation/variant.h"
#include "model/company.h"

namespace kwx {

// Sets the properties, options, judgment values and series of `company` from `fields`, a
// zero-based array of texts in the SSG layout (import/ssg_layout_internal.h), in four steps:
// the company and per-share data, the judgment values, the yearly series, the quarterly and
// monthly series. `platform` is the loader's platform value (1 the SP platform, which also
// takes the assessment's struck-out lists).
// Continues past errors assignment by assignment: a position beyond the end of the array or
// a field its conversion rejects leaves that property as it was. Does nothing when `fields`
// holds no array. Never raises.
void MapSsgFields(Company& company, const Variant& fields, int32_t platform);

}  // namespace kwx

#endif  // KWX_IMPORT_SSG_IMPORT_H_
