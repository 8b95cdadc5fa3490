// Writing a Company as a KWX field array (import/kwx_layout.h), the mirror of what the KWX
// import reads.
#ifndef KWX_EXPORT_KWX_EXPORT_H_
#define KWX_EXPORT_KWX_EXPORT_H_

#include "automation/variant.h"
#include "model/company.h"

namespace kwx {

// The company as a zero-based array of 372 texts (positions 0 to 371): version "1.01", dates
// as "MMM/DD/YYYY" (empty when the date check rejects them; position 103 unchecked), numbers
// as their text, notes with each line break as character 254, series and lists joined by
// tabs, the PERT rows as their count (370) and their values (371). Positions the import does
// not read are Empty. A value that cannot be written leaves its position Empty. Never raises.
Variant BuildKwxFields(const Company& company);

}  // namespace kwx

#endif  // KWX_EXPORT_KWX_EXPORT_H_
