// Calendar arithmetic shared by the date routines, the formats and the conversions. Not part of
// the public interface.
#ifndef KWX_AUTOMATION_DATES_INTERNAL_H_
#define KWX_AUTOMATION_DATES_INTERNAL_H_

#include <cstdint>

#include "automation/value_types.h"

namespace kwx::dates_internal {

// A date taken apart: its day number (whole days since 1899-12-30, the day it falls on) and
// its calendar fields, the time rounded to the second.
struct Parts {
  int64_t day_number = 0;
  int year = 1899;
  int month = 12;
  int day = 30;
  int hour = 0;
  int minute = 0;
  int second = 0;
};

Parts Split(Date d);

// The date as a number that grows with time (the day number plus the time fraction); serials
// of days before 1899-12-30 do not, as their time fraction is subtracted.
double Linear(Date d);
// The date of a linear number. Raises err::kOverflow outside years 100 to 9999.
Date FromLinear(double linear);
// The date `seconds` after the start of day `day_number` (either may be negative or carry).
// Raises err::kOverflow outside years 100 to 9999.
Date FromParts(int64_t day_number, int64_t seconds);
// The day number of year, month, day with months and days rolling over.
int64_t DayNumber(int64_t year, int64_t month, int64_t day);

// REQUIRES: 1 <= month <= 12.
int DaysInMonth(int year, int month);
// The English name of the month in full ("November"). REQUIRES: 1 <= month <= 12.
const char* MonthName(int month);

}  // namespace kwx::dates_internal

#endif  // KWX_AUTOMATION_DATES_INTERNAL_H_
