#include "export/field_text.h"

#include <charconv>
#include <cmath>
#include <cstdio>

#include "automation/conversions.h"
#include "automation/text.h"

namespace kwx {

std::string OneLineText(std::string_view text) {
  const std::string mark = ChrW(kFieldLineBreak);
  std::string out;
  out.reserve(text.size());
  for (char c : text) {
    if (c == '\n') continue;
    if (c == '\r') {
      out += mark;
    } else {
      out += c;
    }
  }
  return out;
}

std::string ShortestSingleText(float value) {
  if (!std::isfinite(value)) return NumberText(value);
  char buffer[64];
  const auto result = std::to_chars(buffer, buffer + sizeof buffer, value);
  std::string text(buffer, result.ptr);
  // The readers parse a double and round it to a single; a text that sits on the edge of the
  // single's interval could round the other way, and nine digits always come back.
  if (static_cast<float>(Val(text)) != value) {
    std::snprintf(buffer, sizeof buffer, "%.9g", static_cast<double>(value));
    text = buffer;
  }
  return text;
}

}  // namespace kwx
