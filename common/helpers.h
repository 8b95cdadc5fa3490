// The small free routines every subsystem shares: division with substitutes, the date
// plausibility check, quoting text for SQL, replacing and splitting text, splitting into a typed
// array of fixed length, reading flags from a text of digits and joining part of an array.
// None of them keeps state.
#ifndef KWX_COMMON_HELPERS_H_
#define KWX_COMMON_HELPERS_H_

#include <cstdint>
#include <string>
#include <string_view>

#include "automation/value_types.h"
#include "automation/variant.h"

namespace kwx {

// Divides `numerator` by `divisor` with substitutes for the awkward cases:
//  - when `check_negative` is set and either operand is below 0, answers a copy of
//    `value_if_negative`;
//  - otherwise when `divisor` equals 0 (an Empty divisor counts as 0), a copy of
//    `value_if_zero`;
//  - otherwise the quotient: with `use_float` the floating quotient (Single when both operands
//    are Single, Integer or Byte and one is Single; Decimal when either is Decimal; Double
//    otherwise), without it the integer quotient of the operands rounded half to even,
//    truncated toward zero (Integer when both operands are Integer, Byte or Boolean, else Long).
// Comparisons are the object model's: a Null operand compares false, and then the division
// answers Null. Raises the conversion's error (err::kTypeMismatch for non-numeric text,
// err::kOverflow for an integer quotient out of range).
Variant SafeDivide(Variant numerator, Variant divisor, const bool& use_float,
                   const Variant& value_if_zero, bool check_negative,
                   const Variant& value_if_negative);

// True when `date` lies strictly after 1900-01-01 and strictly before 2999-12-01, counting
// calendar days and ignoring the time of day. Both limits are themselves invalid; the upper one
// is the first of December on purpose. Never raises.
bool IsValidDate(Date date);

// The byte no statement text may hold. A value that cannot be written as one literal is
// written with this mark right after its opening quote, and every database object refuses a
// statement holding it before any of the statement runs. An engine that reads statement text up
// to a NUL byte sees an unterminated literal there, so it refuses the statement as well.
inline constexpr char kUnwritableValueMark = '\0';

// The text trimmed of leading and trailing blanks and wrapped in quotes. `quote_code` 34 (") or
// 39 (') prescribes the quote; any other code, 0 when omitted, chooses " when the trimmed text
// holds an apostrophe and ' otherwise. Quotes inside the text are never doubled. A text that
// holds the quote its literal is wrapped in (both kinds, or the prescribed one) cannot be one
// literal: its quote would end the literal early and the rest would be read as SQL. Such a text
// is answered with kUnwritableValueMark after the opening quote, so the statement it goes into
// fails as a whole and nothing of it runs; callers rely on that. Well-formed texts are answered
// exactly as trimmed and wrapped. Never raises.
std::string QuoteSQLText(std::string_view text, const uint8_t& quote_code = 0);

// Replaces, in place, every case-insensitive occurrence of `search` in `text` with
// `replacement`. Searching resumes after the inserted replacement, so a replacement that holds
// the searched text is not replaced again. An empty `search` leaves `text` unchanged (it has no
// occurrence to replace that would let the search move on). Never raises.
void ReplaceText(std::string& text, std::string_view search, std::string_view replacement);

// Splits `text` at each occurrence of `delimiter` (binary comparison) into a zero-based array of
// texts held in the answered Variant. After each piece the search restarts one character past
// the delimiter's first character, so delimiters are meant to be one character long. Only one
// trailing empty piece is dropped: "a,b," gives a, b; "a,,b" gives a, "", b; "," gives one "".
// Answers Empty when `delimiter` or `text` is empty. Positions are 16-bit: the text is cut only
// at delimiters before character 32767, the rest becomes the last piece. Never raises.
Variant SplitText(std::string_view delimiter, std::string_view text);

// Splits `text` at `delimiter` into a zero-based array of exactly `count` Variants (none when
// `count` is below 1). Each piece is converted by `type_code` (2 Integer, 3 Long, 4 Single,
// 5 Double, 6 Currency, 7 Date, 11 Boolean, 14 Decimal, 17 Byte; any other code keeps the
// text); a piece that does not convert is stored as its text. Pieces beyond `count` are
// dropped, missing ones take `default_value`; with an empty `delimiter` or `text` every element
// takes `default_value`. Positions are 16-bit as in SplitText. Never raises.
Variant SplitToTypedArray(std::string_view delimiter, std::string_view text, int16_t count,
                          const Variant& default_value, int32_t type_code);

// A zero-based Boolean array of `count` flags read from `text` (`count` 0 means the text's
// length): flag i is True exactly when the character at 1-based position i + `start_offset`
// reads as the number 1; any other character, or a position outside the text, gives False.
// Answers Empty when the count is below 1 (also when a count of 0 would take the length of a
// text longer than 32767 characters, which a 16-bit count cannot hold). Never raises.
Variant FlagsFromText(std::string_view text, int16_t start_offset, int16_t count);

// Joins the elements `first` to `last` of the one-dimensional array in `array`, converted by
// `type_code`, with `separator` between them:
//   7  a date element (or date text) that IsValidDate accepts as "MMM/DD/YYYY", anything
//      else as "";
//   8  the element's text;
//   11 a numeric element as -1 when non-zero and 0 when zero, a non-numeric one as 0;
//   any other code: a numeric element's text, a non-numeric one as 0.
// `last` below the lower bound or above the upper bound becomes the upper bound; `first` below
// the lower bound becomes the lower bound; the adjusted indexes are written back. Answers ""
// when `array` holds no array or `first` lies above the upper bound. Raises err::kOverflow when
// a bound does not fit the 16-bit indexes and the conversion's error for an element it cannot
// write (an object, a nested array).
std::string JoinArrayText(const Variant& array, std::string_view separator, int16_t& first,
                          int16_t& last, const int32_t& type_code);

}  // namespace kwx

#endif  // KWX_COMMON_HELPERS_H_
