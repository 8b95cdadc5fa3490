// Named and pattern formats for dates and numbers.
#ifndef KWX_AUTOMATION_FORMAT_H_
#define KWX_AUTOMATION_FORMAT_H_

#include <string>
#include <string_view>

#include "automation/value_types.h"
#include "automation/variant.h"

namespace kwx {

// Formats a value. Formats (names compared case-insensitively):
//   "Short Date"   M/d/yyyy        11/22/2026
//   "medium date"  dd-MMM-yyyy     22-Nov-2026 (four-digit year: a two-digit one would turn
//                                  2030 into 1930 when read back)
//   "General Date" the date, and the time when there is one (as CStr)
//   "MMM/DD/YYYY"  Nov/22/2026
//   "yyyy-mm-dd"   2026-11-22
//   "0.00"         a number rounded half away from zero to two decimals: 1.01
// A date format applied to a non-date converts it with CDate; a number format applied to text
// converts it with CDbl; Empty formats as "" and Null as "". Raises the conversion's error for
// a value it cannot convert and err::kInvalidCall for a format it does not know.
std::string Format(const Variant& value, std::string_view format);
std::string FormatDate(Date d, std::string_view format);

}  // namespace kwx

#endif  // KWX_AUTOMATION_FORMAT_H_
