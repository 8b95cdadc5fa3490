// The scalar value types that a Variant holds besides the built-in ones.
#ifndef KWX_AUTOMATION_VALUE_TYPES_H_
#define KWX_AUTOMATION_VALUE_TYPES_H_

#include <cstdint>

namespace kwx {

// A date: days since 1899-12-30, the time of day as the fraction. Negative values count back
// from that day with the time still added (-1.25 is 1899-12-29 06:00).
struct Date {
  double serial = 0.0;
  friend bool operator==(Date, Date) = default;
};

// A fixed-point amount with four decimals, held as the amount times 10,000.
struct Currency {
  int64_t scaled = 0;
  friend bool operator==(Currency, Currency) = default;
};

// A decimal number. Held as a long double: 18 or more significant digits, enough for every
// value this system moves; arithmetic is never done in it.
struct Decimal {
  long double value = 0;
  friend bool operator==(Decimal, Decimal) = default;
};

}  // namespace kwx

#endif  // KWX_AUTOMATION_VALUE_TYPES_H_
