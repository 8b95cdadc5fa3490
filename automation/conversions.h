// Conversions between Variant types, with the object model's exact rules.
#ifndef KWX_AUTOMATION_CONVERSIONS_H_
#define KWX_AUTOMATION_CONVERSIONS_H_

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "automation/variant.h"

namespace kwx {

// The leading-number parse: the numeric prefix of the text as a double. Blanks, tabs and line
// feeds are skipped anywhere in the number; an optional sign, digits, one decimal point ".",
// and an exponent (E or D) are read; "&H1F" and "&O17" read hexadecimal and octal.
// "12.5x" gives 12.5; "", "x" and "." give 0. Never raises.
double Val(std::string_view text);

// True when the value can be converted to a number: the number types, Boolean, Empty, and
// text that is a whole number literal (blanks around it allowed). Dates, Null, objects and
// arrays are not numeric.
bool IsNumeric(const Variant& v);

// True when the value is a date, or text that ParseDate (dates.h) accepts.
bool IsDate(const Variant& v);

// Strict conversions. Empty converts to 0 / False / "" / the zero date; Null raises
// err::kInvalidUseOfNull; text that is not a number raises err::kTypeMismatch; a value out of
// the target's range raises err::kOverflow. Conversions to integers round half to even
// (2.5 gives 2, 3.5 gives 4). Booleans convert to -1 (True) and 0. Dates convert to their
// serial number.
int16_t CInt(const Variant& v);
int32_t CLng(const Variant& v);
uint8_t CByte(const Variant& v);
float CSng(const Variant& v);
double CDbl(const Variant& v);
Currency CCur(const Variant& v);
Decimal CDec(const Variant& v);
// Numbers: non-zero is True. Text: "True"/"False" (any case) or numeric text.
bool CBool(const Variant& v);
// Numbers are serials; text must parse as a date (ParseDate) or raise err::kTypeMismatch.
Date CDate(const Variant& v);
// Text of a value: numbers by NumberText, Booleans as "True"/"False", dates in the general
// date form ("11/22/2026", "11/22/2026 3:04:05 PM", "3:04:05 PM" for a bare time), Empty as "".
// Null raises err::kInvalidUseOfNull; objects and arrays raise err::kTypeMismatch.
std::string CStr(const Variant& v);

// Converts to the VarType `to` (Integer, Long, Single, Double, Currency, Date, String,
// Boolean, Decimal, Byte; Empty and Variant-like codes return the value unchanged). Raises as
// the conversions above.
Variant ConvertTo(const Variant& v, VarType to);

// Text of a number: a single with at most 7 significant digits, a double with at most 15,
// trailing zeros dropped, no leading blank. Exponent form when the decimal exponent is at
// least the digit count or below -4: 123456789f gives "1.234568E+08", 0.00001 gives "1E-05",
// 0.5 gives "0.5", -2 gives "-2".
std::string NumberText(float v);
// The seven digits NumberText(v) rounds a Single to: |v| is `n` times 10^(e - 6), `n` of seven
// digits (trailing zeros kept). False below 1E-4 or from 1E7 on (and for 0 and non-finite v).
bool SingleSevenDigits(float v, uint32_t& n, int& e);
std::string NumberText(double v);

// Rounds half to even to a whole number (the integer conversions' rounding).
double RoundHalfEven(double v);

// The object model's comparison of two values. Numbers (and Booleans, dates, Empty) compare
// numerically; text compares with text (binary, or case-insensitive with `text_compare`);
// Empty against text compares as ""; a number against numeric text compares numerically, and
// against other text the number is the smaller. Answers -1, 0 or 1, or nothing when either
// side is Null. Raises err::kTypeMismatch for arrays and objects.
std::optional<int> Compare(const Variant& a, const Variant& b, bool text_compare = false);
// Compare(a, b) == 0; false when either side is Null.
bool Equals(const Variant& a, const Variant& b, bool text_compare = false);

}  // namespace kwx

#endif  // KWX_AUTOMATION_CONVERSIONS_H_
