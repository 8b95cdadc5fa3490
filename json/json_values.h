// Variants as JSON values, the one conversion every command that prints JSON uses.
#ifndef KWX_JSON_JSON_VALUES_H_
#define KWX_JSON_JSON_VALUES_H_

#include <nlohmann/json.hpp>

#include "automation/variant.h"

namespace kwx {

// Dates as ISO "yyyy-mm-dd" (with "Thh:mm:ss" only when there is a time of day), numbers as
// JSON numbers (singles by their shortest round-trip text, so 12.5 stays 12.5 and 0.1 stays 0.1),
// Booleans as true/false, text as strings, Empty and Null as null, arrays as JSON arrays (a
// two-dimensional one as an array of rows), objects as null.
nlohmann::json ToJson(const Variant& v);

}  // namespace kwx

#endif  // KWX_JSON_JSON_VALUES_H_
