#include "automation/conversions.h"

#include <algorithm>
#include <bit>
#include <charconv>
#include <cstdint>
#include <cmath>
#include <cstdlib>
#include <limits>
#include <string>

#include "automation/dates.h"
#include "automation/dates_internal.h"
#include "automation/errors.h"
#include "automation/format.h"
#include "automation/text.h"

namespace kwx {

namespace {

bool IsDigit(char c) { return c >= '0' && c <= '9'; }

int HexDigit(char c) {
  if (IsDigit(c)) return c - '0';
  if (c >= 'a' && c <= 'f') return c - 'a' + 10;
  if (c >= 'A' && c <= 'F') return c - 'A' + 10;
  return -1;
}

// Reads "&H..." or "&O..." digits starting after the letter; answers the digit count.
size_t ReadRadix(std::string_view digits, int radix, bool skip_blanks, double& value) {
  value = 0;
  size_t count = 0;
  for (const char c : digits) {
    if (skip_blanks && (c == ' ' || c == '\t' || c == '\n')) continue;
    const int d = HexDigit(c);
    if (d < 0 || d >= radix) break;
    value = value * radix + d;
    ++count;
  }
  return count;
}

// Converts a normalised literal ("-012.5e-3": optional minus, digits, point, exponent) to a
// number. A value too large for a double answers an infinity, one too small zero.
template <class T>
T FromLiteral(const std::string& literal) {
  T value{};
  const auto [end, ec] = std::from_chars(literal.data(), literal.data() + literal.size(), value);
  if (ec == std::errc::result_out_of_range) {
    const size_t e = literal.find('e');
    const bool tiny = e != std::string::npos && literal.compare(e, 2, "e-") == 0;
    value = tiny ? T{0} : std::numeric_limits<T>::infinity();
    if (literal[0] == '-') value = -value;
  }
  return value;
}

// The normalised literal of text that is wholly a decimal number (blanks and tabs around it
// allowed), or "" when it is not one. Hexadecimal and octal forms are handled by the caller.
std::string DecimalLiteral(std::string_view text) {
  size_t i = 0;
  size_t end = text.size();
  while (i < end && (text[i] == ' ' || text[i] == '\t')) ++i;
  while (end > i && (text[end - 1] == ' ' || text[end - 1] == '\t')) --end;
  std::string literal = "0";
  if (i < end && (text[i] == '+' || text[i] == '-')) {
    if (text[i] == '-') literal.insert(0, 1, '-');
    ++i;
  }
  size_t digits = 0;
  while (i < end && IsDigit(text[i])) literal.push_back(text[i++]), ++digits;
  if (i < end && text[i] == '.') {
    literal.push_back(text[i++]);
    while (i < end && IsDigit(text[i])) literal.push_back(text[i++]), ++digits;
  }
  if (digits == 0) return std::string();
  if (i < end && (text[i] == 'e' || text[i] == 'E' || text[i] == 'd' || text[i] == 'D')) {
    literal.push_back('e');
    ++i;
    if (i < end && (text[i] == '+' || text[i] == '-')) {
      if (text[i] == '-') literal.push_back('-');
      ++i;
    }
    size_t exponent_digits = 0;
    while (i < end && IsDigit(text[i])) literal.push_back(text[i++]), ++exponent_digits;
    if (exponent_digits == 0) return std::string();
  }
  return i == end ? literal : std::string();
}

// Text that is wholly a number, as a double (infinite when out of range); nothing otherwise.
std::optional<double> NumberFromText(std::string_view text) {
  const std::string trimmed = Trim(text);
  if (trimmed.size() > 2 && trimmed[0] == '&') {
    const char kind = trimmed[1];
    const int radix = kind == 'H' || kind == 'h' ? 16 : kind == 'O' || kind == 'o' ? 8 : 0;
    double value = 0;
    if (radix != 0 && ReadRadix(trimmed.substr(2), radix, false, value) == trimmed.size() - 2) {
      return value;
    }
    return std::nullopt;
  }
  const std::string literal = DecimalLiteral(text);
  if (literal.empty()) return std::nullopt;
  return FromLiteral<double>(literal);
}

[[noreturn]] void Raise(int32_t number) { throw AutomationError(number); }

// The value of a plain decimal text ("-12.50", blanks and tabs around allowed) of at most 18
// digits, read without building its literal: the digits as one whole number and the power of
// ten below them are both exact in a long double, so their one correctly rounded quotient is
// exactly what reading the literal gives. Nothing for any other text. Imports read numbers
// by the thousand, nearly all of them of this form.
std::optional<long double> ShortDecimalOf(std::string_view text) {
  static constexpr long double kPowers[] = {1e0L,  1e1L,  1e2L,  1e3L,  1e4L,  1e5L,  1e6L,
                                            1e7L,  1e8L,  1e9L,  1e10L, 1e11L, 1e12L, 1e13L,
                                            1e14L, 1e15L, 1e16L, 1e17L, 1e18L};
  size_t i = 0;
  size_t end = text.size();
  while (i < end && (text[i] == ' ' || text[i] == '\t')) ++i;
  while (end > i && (text[end - 1] == ' ' || text[end - 1] == '\t')) --end;
  const bool negative = i < end && text[i] == '-';
  if (i < end && (text[i] == '-' || text[i] == '+')) ++i;
  uint64_t digits = 0;
  int count = 0;
  int after_point = -1;
  for (; i < end; ++i) {
    const char ch = text[i];
    if (ch == '.' && after_point < 0) {
      after_point = 0;
    } else if (IsDigit(ch)) {
      if (++count > 18) return std::nullopt;
      digits = digits * 10 + static_cast<uint64_t>(ch - '0');
      if (after_point >= 0) ++after_point;
    } else {
      return std::nullopt;
    }
  }
  if (count == 0) return std::nullopt;
  const long double value =
      static_cast<long double>(digits) / kPowers[after_point < 0 ? 0 : after_point];
  return negative ? -value : value;
}

// The numeric value of a scalar for the strict conversions. Null, objects, arrays and
// non-numeric text raise.
long double NumberOf(const Variant& v) {
  switch (v.type()) {
    case VarType::Empty:
      return 0;
    case VarType::Null:
      Raise(err::kInvalidUseOfNull);
    case VarType::Integer:
      return v.AsInteger();
    case VarType::Long:
      return v.AsLong();
    case VarType::Single:
      return v.AsSingle();
    case VarType::Double:
      return v.AsDouble();
    case VarType::Currency:
      return static_cast<long double>(v.AsCurrency().scaled) / 10000;
    case VarType::Decimal:
      return v.AsDecimal().value;
    case VarType::Byte:
      return v.AsByte();
    case VarType::Boolean:
      return v.AsBoolean() ? -1 : 0;
    case VarType::Date:
      return v.AsDate().serial;
    case VarType::String: {
      const std::string& text = v.AsString();
      if (const auto n = ShortDecimalOf(text)) return *n;
      if (const auto n = NumberFromText(text)) {
        if (std::isinf(*n)) Raise(err::kOverflow);
        // Decimals keep the digits a double would drop.
        const std::string literal = DecimalLiteral(text);
        return literal.empty() ? *n : FromLiteral<long double>(literal);
      }
      Raise(err::kTypeMismatch);
    }
    default:
      Raise(err::kTypeMismatch);
  }
}

long double RoundHalfEvenLong(long double v) {
  const long double down = std::floor(v);
  const long double fraction = v - down;
  if (fraction > 0.5L) return down + 1;
  if (fraction < 0.5L) return down;
  return std::fmod(down, 2.0L) == 0 ? down : down + 1;
}

template <class T>
T ToInteger(const Variant& v) {
  const long double rounded = RoundHalfEvenLong(NumberOf(v));
  if (!(rounded >= std::numeric_limits<T>::min() && rounded <= std::numeric_limits<T>::max())) {
    Raise(err::kOverflow);
  }
  return static_cast<T>(rounded);
}

// Significant decimal digits of |v| (trailing zeros dropped) and the decimal exponent of the
// first one: 0.00125 gives "125" and -3. At most 18 digits are asked for.
struct Digits {
  char digits[24];
  size_t count = 0;
  int exponent = 0;

  std::string_view view() const { return {digits, count}; }
};

template <class T>
Digits SignificantDigits(T v, int precision) {
  // to_chars rounds the exact binary value half to even, as printf does, without the locale
  // and formatting machinery; this runs for every number a statement carries.
  char buffer[64];
  const auto [end, ec] = std::to_chars(buffer, buffer + sizeof buffer, std::fabs(v),
                                       std::chars_format::scientific, precision - 1);
  Digits d;
  const char* p = buffer;
  for (; p != end && *p != 'e'; ++p) {
    if (*p != '.') d.digits[d.count++] = *p;
  }
  // The exponent is written as e+NN or e-NNN.
  int exponent = 0;
  std::from_chars(p + 1 + (p[1] == '+'), end, exponent);
  d.exponent = exponent;
  while (d.count > 1 && d.digits[d.count - 1] == '0') --d.count;
  return d;
}

// SignificantDigits(v, 7) for a Single, in integer arithmetic for the usual magnitudes
// (1E-4 up to 1E7): there v times 10^(6 - e), e its decimal exponent, has at most 24 + 24
// significant bits (10^k is 2^k 5^k and 5^10 < 2^24), so a double holds it exactly and its
// rounding half to even is the exact value's. False outside those magnitudes; else |v| is
// `n` (seven digits) times 10^(e - 6).
bool SevenDigits(float v, uint32_t& n, int& e) {
  static constexpr double kDecades[] = {1e-4, 1e-3, 1e-2, 1e-1, 1e0, 1e1, 1e2,
                                        1e3,  1e4,  1e5,  1e6,  1e7};
  static constexpr double kScales[] = {1e0, 1e1, 1e2, 1e3, 1e4, 1e5,
                                       1e6, 1e7, 1e8, 1e9, 1e10};
  const double magnitude = std::fabs(static_cast<double>(v));
  if (!(magnitude >= kDecades[0] && magnitude < 1e7)) return false;
  // The decimal exponent from the binary one: magnitude is at least 2^(b - 1), so its
  // exponent is floor((b - 1) log10 2) (1233 / 4096 is log10 2 closely enough for these
  // magnitudes) or one more. Saves a loop whose length the values decide.
  // b as frexp gives it, read from the (normal) double's exponent bits.
  const int b = static_cast<int>((std::bit_cast<uint64_t>(magnitude) >> 52) & 0x7FF) - 1022;
  e = std::max(-4, ((b - 1) * 1233) >> 12);
  if (magnitude >= kDecades[e + 5]) ++e;
  const double scaled = magnitude * kScales[6 - e];
  const double whole = std::floor(scaled);
  const double fraction = scaled - whole;
  n = static_cast<uint32_t>(whole);
  // Without branches: the fraction is as good as random, and a mispredicted branch here cost
  // more than the rest of the function.
  n += static_cast<uint32_t>(fraction > 0.5) |
       (static_cast<uint32_t>(fraction == 0.5) & (n & 1U));
  if (n == 10'000'000) {
    n = 1'000'000;
    ++e;
  }
  return true;
}

Digits SingleDigits(float v) {
  uint32_t n = 0;
  int e = 0;
  if (!SevenDigits(v, n, e)) return SignificantDigits(std::fabs(static_cast<double>(v)), 7);
  Digits d;
  d.count = 7;
  for (size_t k = 7; k-- > 0; n /= 10) d.digits[k] = static_cast<char>('0' + n % 10);
  while (d.count > 1 && d.digits[d.count - 1] == '0') --d.count;
  d.exponent = e;
  return d;
}

// Digits laid out without an exponent: 125 at exponent -3 is "0.00125", at 4 "12500".
void AppendPlainText(const Digits& d, std::string& out) {
  const std::string_view digits = d.view();
  if (d.exponent < 0) {
    out.append("0.").append(static_cast<size_t>(-d.exponent - 1), '0').append(digits);
  } else if (static_cast<size_t>(d.exponent) + 1 >= digits.size()) {
    out.append(digits).append(d.exponent + 1 - digits.size(), '0');
  } else {
    out.append(digits.substr(0, d.exponent + 1)).append(1, '.');
    out.append(digits.substr(d.exponent + 1));
  }
}

std::string NumberTextOf(double v, int precision, bool single) {
  if (std::isnan(v)) return "NaN";
  if (std::isinf(v)) return v < 0 ? "-Infinity" : "Infinity";
  if (v == 0) return "0";
  const Digits d =
      single ? SingleDigits(static_cast<float>(v)) : SignificantDigits(v, precision);
  // No reserve: the usual number fits the string's own buffer, and a reserve past it would
  // cost an allocation for every number written.
  std::string out;
  if (v < 0) out.push_back('-');
  if (d.exponent >= precision || d.exponent < -4) {
    out.push_back(d.digits[0]);
    if (d.count > 1) out.append(1, '.').append(d.view().substr(1));
    const int magnitude = std::abs(d.exponent);
    out.append(d.exponent < 0 ? "E-" : "E+");
    if (magnitude < 10) out.push_back('0');
    char exponent[8];
    const auto written = std::to_chars(exponent, exponent + sizeof exponent, magnitude);
    out.append(exponent, written.ptr);
  } else {
    AppendPlainText(d, out);
  }
  return out;
}

std::string CurrencyText(Currency c) {
  // The magnitude as unsigned, so the most negative amount has one too.
  const uint64_t magnitude = c.scaled < 0 ? uint64_t{0} - static_cast<uint64_t>(c.scaled)
                                          : static_cast<uint64_t>(c.scaled);
  std::string out = c.scaled < 0 ? "-" : "";
  out += std::to_string(magnitude / 10000);
  std::string fraction = std::to_string(10000 + magnitude % 10000).substr(1);
  fraction.erase(fraction.find_last_not_of('0') + 1);
  if (!fraction.empty()) out += '.' + fraction;
  return out;
}

std::string DecimalText(long double v) {
  if (v == 0) return "0";
  // A value that came from a double shows the double's digits, not its binary tail.
  const bool from_double = static_cast<long double>(static_cast<double>(v)) == v;
  const Digits d = SignificantDigits(v, from_double ? 15 : 18);
  std::string out = v < 0 ? "-" : "";
  AppendPlainText(d, out);
  return out;
}

// The first and last serials a date may have (100-01-01 and 9999-12-31).
bool InDateRange(double serial) {
  static const double first = static_cast<double>(dates_internal::DayNumber(100, 1, 1));
  static const double last = static_cast<double>(dates_internal::DayNumber(9999, 12, 31));
  const double day = std::trunc(serial);
  return day >= first && day <= last;
}

bool IsNumberLike(const Variant& v) {
  switch (v.type()) {
    case VarType::Empty:
    case VarType::Boolean:
    case VarType::Date:
      return true;
    default:
      return v.IsNumberType();
  }
}

int Sign(long double a, long double b) { return (a > b) - (a < b); }

}  // namespace

double Val(std::string_view text) {
  size_t i = 0;
  auto skip_blanks = [&] {
    while (i < text.size() && (text[i] == ' ' || text[i] == '\t' || text[i] == '\n')) ++i;
  };
  skip_blanks();
  if (i + 1 < text.size() && text[i] == '&') {
    const char kind = text[i + 1];
    const int radix = kind == 'H' || kind == 'h' ? 16 : kind == 'O' || kind == 'o' ? 8 : 0;
    if (radix == 0) return 0;
    double value = 0;
    ReadRadix(text.substr(i + 2), radix, true, value);
    return value;
  }
  std::string literal = "0";
  if (i < text.size() && (text[i] == '+' || text[i] == '-')) {
    if (text[i] == '-') literal.insert(0, 1, '-');
    ++i;
  }
  bool point = false;
  size_t digits = 0;
  for (; i < text.size(); ++i) {
    const char c = text[i];
    if (c == ' ' || c == '\t' || c == '\n') continue;
    if (IsDigit(c)) {
      literal.push_back(c);
      ++digits;
    } else if (c == '.' && !point) {
      literal.push_back(c);
      point = true;
    } else {
      break;
    }
  }
  if (digits == 0) return 0;
  if (i < text.size() && (text[i] == 'e' || text[i] == 'E' || text[i] == 'd' || text[i] == 'D')) {
    // The exponent counts only when digits follow its letter (and sign).
    ++i;
    std::string exponent = "e";
    skip_blanks();
    if (i < text.size() && (text[i] == '+' || text[i] == '-')) {
      if (text[i] == '-') exponent.push_back('-');
      ++i;
    }
    size_t exponent_digits = 0;
    for (; i < text.size(); ++i) {
      if (text[i] == ' ' || text[i] == '\t' || text[i] == '\n') continue;
      if (!IsDigit(text[i])) break;
      exponent.push_back(text[i]);
      ++exponent_digits;
    }
    if (exponent_digits > 0) literal += exponent;
  }
  return FromLiteral<double>(literal);
}

bool IsNumeric(const Variant& v) {
  if (v.type() == VarType::String) return NumberFromText(v.AsString()).has_value();
  return v.IsEmpty() || v.type() == VarType::Boolean || v.IsNumberType();
}

bool IsDate(const Variant& v) {
  if (v.type() == VarType::Date) return true;
  return v.type() == VarType::String && ParseDate(v.AsString()).has_value();
}

int16_t CInt(const Variant& v) { return ToInteger<int16_t>(v); }
int32_t CLng(const Variant& v) { return ToInteger<int32_t>(v); }
uint8_t CByte(const Variant& v) { return ToInteger<uint8_t>(v); }

float CSng(const Variant& v) {
  const long double n = NumberOf(v);
  if (std::fabs(n) > std::numeric_limits<float>::max()) Raise(err::kOverflow);
  return static_cast<float>(n);
}

double CDbl(const Variant& v) {
  const long double n = NumberOf(v);
  if (std::fabs(n) > std::numeric_limits<double>::max()) Raise(err::kOverflow);
  return static_cast<double>(n);
}

Currency CCur(const Variant& v) {
  if (v.type() == VarType::Currency) return v.AsCurrency();
  const long double scaled = RoundHalfEvenLong(NumberOf(v) * 10000);
  // 2^63 is exactly representable; anything from there up does not fit.
  if (!(scaled >= -9223372036854775808.0L && scaled < 9223372036854775808.0L)) {
    Raise(err::kOverflow);
  }
  return Currency{static_cast<int64_t>(scaled)};
}

Decimal CDec(const Variant& v) { return Decimal{NumberOf(v)}; }

bool CBool(const Variant& v) {
  if (v.type() == VarType::String) {
    const std::string& text = v.AsString();
    const std::string trimmed = Trim(text);
    if (EqualsNoCase(trimmed, "True")) return true;
    if (EqualsNoCase(trimmed, "False")) return false;
  }
  return NumberOf(v) != 0;
}

Date CDate(const Variant& v) {
  switch (v.type()) {
    case VarType::Date:
      return v.AsDate();
    case VarType::String:
      if (const auto d = ParseDate(v.AsString())) return *d;
      Raise(err::kTypeMismatch);
    default: {
      const long double serial = NumberOf(v);
      if (!InDateRange(static_cast<double>(serial))) Raise(err::kOverflow);
      return Date{static_cast<double>(serial)};
    }
  }
}

std::string CStr(const Variant& v) {
  switch (v.type()) {
    case VarType::Empty:
      return std::string();
    case VarType::Null:
      Raise(err::kInvalidUseOfNull);
    case VarType::String:
      return v.AsString();
    case VarType::Integer:
      return std::to_string(v.AsInteger());
    case VarType::Long:
      return std::to_string(v.AsLong());
    case VarType::Byte:
      return std::to_string(v.AsByte());
    case VarType::Single:
      return NumberText(v.AsSingle());
    case VarType::Double:
      return NumberText(v.AsDouble());
    case VarType::Currency:
      return CurrencyText(v.AsCurrency());
    case VarType::Decimal:
      return DecimalText(v.AsDecimal().value);
    case VarType::Boolean:
      return v.AsBoolean() ? "True" : "False";
    case VarType::Date:
      return FormatDate(v.AsDate(), "General Date");
    default:
      Raise(err::kTypeMismatch);
  }
}

Variant ConvertTo(const Variant& v, VarType to) {
  switch (to) {
    case VarType::Integer:
      return Variant(CInt(v));
    case VarType::Long:
      return Variant(CLng(v));
    case VarType::Single:
      return Variant(CSng(v));
    case VarType::Double:
      return Variant(CDbl(v));
    case VarType::Currency:
      return Variant(CCur(v));
    case VarType::Date:
      return Variant(CDate(v));
    case VarType::String:
      return Variant(CStr(v));
    case VarType::Boolean:
      return Variant(CBool(v));
    case VarType::Decimal:
      return Variant(CDec(v));
    case VarType::Byte:
      return Variant::Byte(CByte(v));
    default:
      return v;
  }
}

std::string NumberText(float v) { return NumberTextOf(v, 7, true); }

bool SingleSevenDigits(float v, uint32_t& n, int& e) { return SevenDigits(v, n, e); }

std::string NumberText(double v) { return NumberTextOf(v, 15, false); }

double RoundHalfEven(double v) { return static_cast<double>(RoundHalfEvenLong(v)); }

std::optional<int> Compare(const Variant& a, const Variant& b, bool text_compare) {
  for (const Variant* side : {&a, &b}) {
    if (side->IsArray() || side->IsObject()) Raise(err::kTypeMismatch);
  }
  if (a.IsNull() || b.IsNull()) return std::nullopt;
  const bool a_text = a.type() == VarType::String;
  const bool b_text = b.type() == VarType::String;
  if (a_text || b_text) {
    // Empty stands for "" against text.
    if ((a_text || a.IsEmpty()) && (b_text || b.IsEmpty())) {
      const std::string_view x = a_text ? std::string_view(a.AsString()) : std::string_view();
      const std::string_view y = b_text ? std::string_view(b.AsString()) : std::string_view();
      if (text_compare) return CompareNoCase(x, y);
      const int c = x.compare(y);
      return (c > 0) - (c < 0);
    }
    const std::string& text = a_text ? a.AsString() : b.AsString();
    const Variant& number = a_text ? b : a;
    const auto parsed = NumberFromText(text);
    if (!parsed) return a_text ? 1 : -1;
    const int c = Sign(NumberOf(number), *parsed);
    return a_text ? -c : c;
  }
  if (a.type() == VarType::Currency && b.type() == VarType::Currency) {
    return Sign(a.AsCurrency().scaled, b.AsCurrency().scaled);
  }
  if (IsNumberLike(a) && IsNumberLike(b)) return Sign(NumberOf(a), NumberOf(b));
  Raise(err::kTypeMismatch);
}

bool Equals(const Variant& a, const Variant& b, bool text_compare) {
  const auto c = Compare(a, b, text_compare);
  return c.has_value() && *c == 0;
}

}  // namespace kwx
