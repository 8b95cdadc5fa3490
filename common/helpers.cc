#include "common/helpers.h"

#include <cmath>
#include <limits>
#include <vector>

#include "automation/conversions.h"
#include "automation/dates.h"
#include "automation/errors.h"
#include "automation/format.h"
#include "automation/safe_array.h"
#include "automation/text.h"

namespace kwx {
namespace {

// Character positions and indexes of the splitting routines are 16-bit counters.
constexpr int32_t kMaxCounter = std::numeric_limits<int16_t>::max();

bool IsSmallInteger(VarType t) {
  return t == VarType::Integer || t == VarType::Byte || t == VarType::Boolean;
}

Variant FloatQuotient(const Variant& numerator, const Variant& divisor) {
  const VarType n = numerator.type();
  const VarType d = divisor.type();
  if (n == VarType::Decimal || d == VarType::Decimal) {
    return Variant(Decimal{CDec(numerator).value / CDec(divisor).value});
  }
  const bool single_like_n = n == VarType::Single || n == VarType::Integer || n == VarType::Byte;
  const bool single_like_d = d == VarType::Single || d == VarType::Integer || d == VarType::Byte;
  if (single_like_n && single_like_d && (n == VarType::Single || d == VarType::Single)) {
    return Variant(CSng(numerator) / CSng(divisor));
  }
  return Variant(CDbl(numerator) / CDbl(divisor));
}

Variant IntegerQuotient(const Variant& numerator, const Variant& divisor) {
  // CLng rounds half to even and raises err::kOverflow; the quotient truncates toward zero.
  const int32_t n = CLng(numerator);
  const int32_t d = CLng(divisor);
  if (d == 0) throw AutomationError(err::kDivisionByZero);
  const int64_t q = static_cast<int64_t>(n) / d;  // INT32_MIN / -1 fits in 64 bits
  if (IsSmallInteger(numerator.type()) && IsSmallInteger(divisor.type())) {
    if (q < std::numeric_limits<int16_t>::min() || q > kMaxCounter) {
      throw AutomationError(err::kOverflow);
    }
    return Variant(static_cast<int16_t>(q));
  }
  if (q > std::numeric_limits<int32_t>::max()) throw AutomationError(err::kOverflow);
  return Variant(static_cast<int32_t>(q));
}

bool IsBelowZero(const Variant& v) {
  const std::optional<int> c = Compare(v, Variant(int16_t{0}));
  return c.has_value() && *c < 0;
}

// Byte length of the character starting at byte `at`, counted the way Len and Mid count.
size_t CharBytesAt(std::string_view text, size_t at) { return Mid(text.substr(at), 1, 1).size(); }

// Cuts `text` at each `delimiter` the way the splitting routines do: the search restarts one
// character past where the delimiter began, and cutting stops once a position no longer fits
// the 16-bit counter (the position after the delimiter must fit). `piece` is called with each
// piece; answers the byte offset where the uncut rest starts.
template <class OnPiece>
size_t CutPieces(std::string_view delimiter, std::string_view text, OnPiece&& piece) {
  size_t start = 0;
  int32_t start_pos = 1;  // 1-based character position of `start`
  for (size_t found = text.find(delimiter); found != std::string_view::npos;
       found = text.find(delimiter, start)) {
    const int32_t pos = start_pos + static_cast<int32_t>(Len(text.substr(start, found - start)));
    if (pos + 1 > kMaxCounter) break;
    piece(text.substr(start, found - start));
    start = found + CharBytesAt(text, found);
    start_pos = pos + 1;
  }
  return start;
}

Variant ConvertPiece(std::string_view piece, int32_t type_code) {
  switch (type_code) {
    case 2:
    case 3:
    case 4:
    case 5:
    case 6:
    case 7:
    case 11:
    case 14:
    case 17:
      return ConvertTo(Variant(piece), static_cast<VarType>(type_code));
    default:
      return Variant(piece);
  }
}

int16_t To16(int32_t v) {
  if (v < std::numeric_limits<int16_t>::min() || v > kMaxCounter) {
    throw AutomationError(err::kOverflow);
  }
  return static_cast<int16_t>(v);
}

// The text an element contributes when appended to a text: Null and Empty add nothing.
std::string AppendedText(const Variant& v) {
  if (v.IsNull() || v.IsEmpty()) return {};
  return CStr(v);
}

std::string JoinedElement(const Variant& element, int32_t type_code) {
  switch (type_code) {
    case 7: {
      if (!IsDate(element)) return {};
      const Date d = CDate(element);
      return IsValidDate(d) ? FormatDate(d, "MMM/DD/YYYY") : std::string();
    }
    case 8:
      return AppendedText(element);
    case 11:
      if (!IsNumeric(element)) return "0";
      return CDbl(element) != 0 ? "-1" : "0";
    default:
      return IsNumeric(element) ? AppendedText(element) : "0";
  }
}

}  // namespace

Variant SafeDivide(Variant numerator, Variant divisor, const bool& use_float,
                   const Variant& value_if_zero, bool check_negative,
                   const Variant& value_if_negative) {
  if (check_negative && (IsBelowZero(numerator) || IsBelowZero(divisor))) {
    return value_if_negative;
  }
  if (Equals(divisor, Variant(int16_t{0}))) return value_if_zero;
  if (numerator.IsNull() || divisor.IsNull()) return Variant::Null();
  return use_float ? FloatQuotient(numerator, divisor) : IntegerQuotient(numerator, divisor);
}

bool IsValidDate(Date date) {
  // The day boundaries of DateDiff ignore the time of day; a serial outside the calendar
  // cannot be counted and is not a plausible date either.
  if (!std::isfinite(date.serial)) return false;
  // A serial at or after day 3 (1/1/1900 is day 2) counts whole days from 0, so a value well
  // inside the range is a valid date without counting (a save asks this of every quarter).
  static const double kLastDay = DateSerial(2999, 12, 1).serial;
  if (date.serial >= 3 && date.serial < kLastDay) return true;
  try {
    return DateDiff("d", DateSerial(1900, 1, 1), date) > 0 &&
           DateDiff("d", DateSerial(2999, 12, 1), date) < 0;
  } catch (const AutomationError&) {
    return false;
  }
}

std::string QuoteSQLText(std::string_view text, const uint8_t& quote_code) {
  std::string trimmed = Trim(text);
  char quote;
  if (quote_code == '"' || quote_code == '\'') {
    quote = static_cast<char>(quote_code);
  } else {
    quote = trimmed.find('\'') != std::string::npos ? '"' : '\'';
  }
  std::string out;
  out.reserve(trimmed.size() + 3);
  out += quote;
  if (trimmed.find(quote) != std::string::npos) out += kUnwritableValueMark;
  out += trimmed;
  out += quote;
  return out;
}

void ReplaceText(std::string& text, std::string_view search, std::string_view replacement) {
  if (search.empty()) return;
  size_t matched = 0;
  for (size_t at = FindNoCase(text, search, 0, &matched); at != std::string::npos;
       at = FindNoCase(text, search, at + replacement.size(), &matched)) {
    // The occurrence found may be longer or shorter in bytes than `search` (letters whose
    // cases differ in length), so its own length is replaced.
    text.replace(at, matched, replacement);
  }
}

Variant SplitText(std::string_view delimiter, std::string_view text) {
  if (delimiter.empty() || text.empty()) return Variant();
  std::vector<Variant> pieces;
  const size_t rest = CutPieces(
      delimiter, text, [&](std::string_view piece) { pieces.emplace_back(std::string(piece)); });
  // A text ending in the delimiter leaves an empty last piece; only that one is dropped.
  if (rest < text.size()) pieces.emplace_back(std::string(text.substr(rest)));
  return Variant(SafeArray::FromValues(std::move(pieces)));
}

Variant SplitToTypedArray(std::string_view delimiter, std::string_view text, int16_t count,
                          const Variant& default_value, int32_t type_code) {
  SafeArray out = count >= 1 ? SafeArray::Vector(0, count - 1) : SafeArray::Vector(0, -1);
  int32_t index = 0;
  if (!delimiter.empty() && !text.empty()) {
    // A delimiter appended to the text closes the last piece like every other one.
    std::string closed(text);
    closed += delimiter;
    CutPieces(delimiter, closed, [&](std::string_view piece) {
      if (index < count) {
        Variant value(piece);
        ResumeNext([&] { value = ConvertPiece(piece, type_code); });
        out(index) = std::move(value);
      }
      ++index;
    });
  }
  for (; index < count; ++index) out(index) = default_value;
  return Variant(std::move(out));
}

Variant FlagsFromText(std::string_view text, int16_t start_offset, int16_t count) {
  int32_t n = count;
  if (n == 0) {
    const size_t length = Len(text);
    // The length goes into the 16-bit count; a longer text leaves the count at 0.
    if (length <= static_cast<size_t>(kMaxCounter)) n = static_cast<int32_t>(length);
  }
  if (n < 1) return Variant();
  SafeArray flags = SafeArray::Vector(0, n - 1);
  for (int32_t i = 0; i < n; ++i) {
    const int32_t pos = i + start_offset;
    bool flag = false;
    if (pos >= 1 && pos <= kMaxCounter) {
      flag = Val(Mid(text, static_cast<size_t>(pos), 1)) == 1.0;
    }
    flags(i) = Variant(flag);
  }
  return Variant(std::move(flags));
}

std::string JoinArrayText(const Variant& array, std::string_view separator, int16_t& first,
                          int16_t& last, const int32_t& type_code) {
  if (!array.IsArray()) return {};
  const SafeArray& a = array.AsArray();
  const int32_t lower = a.LBound();
  const int32_t upper = a.UBound();
  if (last < lower || last > upper) last = To16(upper);
  if (first < lower) first = To16(lower);
  if (first > upper) return {};
  std::string out;
  for (int32_t i = first; i <= last; ++i) {
    if (i > first) out += separator;
    out += JoinedElement(a(i), type_code);
  }
  return out;
}

}  // namespace kwx
