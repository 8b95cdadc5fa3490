#include "automation/format.h"

#include <array>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <string>

#include "automation/conversions.h"
#include "automation/dates_internal.h"
#include "automation/errors.h"
#include "automation/text.h"

namespace kwx {

namespace {

using dates_internal::Parts;

enum class DateForm { kShort, kMedium, kGeneral, kMonthFirst, kIso, kNone };

DateForm DateFormOf(std::string_view format) {
  if (EqualsNoCase(format, "Short Date")) return DateForm::kShort;
  if (EqualsNoCase(format, "medium date")) return DateForm::kMedium;
  if (EqualsNoCase(format, "General Date")) return DateForm::kGeneral;
  if (EqualsNoCase(format, "MMM/DD/YYYY")) return DateForm::kMonthFirst;
  if (EqualsNoCase(format, "yyyy-mm-dd")) return DateForm::kIso;
  return DateForm::kNone;
}

std::string ShortMonth(int month) { return std::string(dates_internal::MonthName(month), 3); }

std::string Printf(const char* pattern, auto... args) {
  char buffer[64];
  std::snprintf(buffer, sizeof buffer, pattern, args...);
  return buffer;
}

// `value` in decimal, zero-padded to `width` characters at least, a sign included (as
// printf's "%0*d" writes it).
void AppendDigits(std::string& out, int value, int width) {
  if (value < 0) {
    out.push_back('-');
    --width;
  }
  unsigned magnitude = value < 0 ? 0u - static_cast<unsigned>(value) : static_cast<unsigned>(value);
  char digits[16];
  int n = 0;
  do {
    digits[n++] = static_cast<char>('0' + magnitude % 10);
    magnitude /= 10;
  } while (magnitude > 0);
  while (n < width) digits[n++] = '0';
  while (n > 0) out.push_back(digits[--n]);
}

// Three numbers with `separator` between them, each padded to its width in `widths`: the short
// and ISO date forms, which statements write many times over, without a format string to read.
std::string DateNumbers(int first, int second, int third, char separator,
                        const std::array<int, 3>& widths) {
  std::string out;
  out.reserve(10);
  AppendDigits(out, first, widths[0]);
  out.push_back(separator);
  AppendDigits(out, second, widths[1]);
  out.push_back(separator);
  AppendDigits(out, third, widths[2]);
  return out;
}

std::string TimeText(const Parts& p) {
  const int hour12 = p.hour % 12 == 0 ? 12 : p.hour % 12;
  return Printf("%d:%02d:%02d %s", hour12, p.minute, p.second, p.hour < 12 ? "AM" : "PM");
}

// The number with two decimals, rounded half away from zero on its decimal digits (the seven
// or fifteen significant digits the value is shown with), not on its binary value: 1.005 and
// the single 1.01 must come out as 1.01 although neither is exact in binary.
std::string FixedTwo(double v, int digits) {
  if (!std::isfinite(v)) return NumberText(v);
  const std::string sci = Printf("%.*e", digits - 1, std::fabs(v));
  std::string mantissa;
  for (const char c : sci.substr(0, sci.find('e'))) {
    if (c != '.') mantissa.push_back(c);
  }
  const int exponent = std::atoi(sci.c_str() + sci.find('e') + 1);
  // `hundredths` is the value times 100 as a decimal integer.
  std::string hundredths;
  const int shift = exponent - (digits - 1) + 2;
  if (shift >= 0) {
    hundredths = mantissa + std::string(shift, '0');
  } else {
    const int keep = digits + shift;
    if (keep < 0) {
      hundredths = "0";
    } else {
      hundredths = keep == 0 ? "0" : mantissa.substr(0, keep);
      if (mantissa[keep] >= '5') {
        int i = static_cast<int>(hundredths.size()) - 1;
        for (; i >= 0 && hundredths[i] == '9'; --i) hundredths[i] = '0';
        if (i < 0) {
          hundredths.insert(hundredths.begin(), '1');
        } else {
          ++hundredths[i];
        }
      }
    }
  }
  if (hundredths.size() < 3) hundredths.insert(0, 3 - hundredths.size(), '0');
  const bool zero = hundredths.find_first_not_of('0') == std::string::npos;
  std::string out = (v < 0 && !zero) ? "-" : "";
  out += hundredths.substr(0, hundredths.size() - 2);
  out += '.';
  out += hundredths.substr(hundredths.size() - 2);
  return out;
}

std::string FormatDateAs(Date d, DateForm form) {
  const Parts p = dates_internal::Split(d);
  switch (form) {
    case DateForm::kShort:
      return DateNumbers(p.month, p.day, p.year, '/', {1, 1, 4});
    case DateForm::kMedium:
      return Printf("%02d-%s-%04d", p.day, ShortMonth(p.month).c_str(), p.year);
    case DateForm::kMonthFirst:
      return Printf("%s/%02d/%04d", ShortMonth(p.month).c_str(), p.day, p.year);
    case DateForm::kIso:
      return DateNumbers(p.year, p.month, p.day, '-', {4, 2, 2});
    case DateForm::kGeneral: {
      const bool has_time = p.hour != 0 || p.minute != 0 || p.second != 0;
      // Day 0 carries no date: the value is a time of day alone.
      if (p.day_number == 0) return TimeText(p);
      std::string out = FormatDateAs(d, DateForm::kShort);
      if (has_time) out += ' ' + TimeText(p);
      return out;
    }
    case DateForm::kNone:
      break;
  }
  throw AutomationError(err::kInvalidCall);
}

}  // namespace

std::string Format(const Variant& value, std::string_view format) {
  if (value.IsEmpty() || value.IsNull()) return std::string();
  if (const DateForm form = DateFormOf(format); form != DateForm::kNone) {
    return FormatDateAs(CDate(value), form);
  }
  if (format == "0.00") return FixedTwo(CDbl(value), value.type() == VarType::Single ? 7 : 15);
  throw AutomationError(err::kInvalidCall);
}

std::string FormatDate(Date d, std::string_view format) {
  return FormatDateAs(d, DateFormOf(format));
}

}  // namespace kwx
