// Date arithmetic, parsing and the parts of a date.
#ifndef KWX_AUTOMATION_DATES_H_
#define KWX_AUTOMATION_DATES_H_

#include <cstdint>
#include <optional>
#include <string_view>

#include "automation/value_types.h"

namespace kwx {

// The date of year, month, day. Months and days out of range roll over as the object model
// does (month 13 is January of the next year, day 0 the last day of the previous month).
// Raises err::kOverflow outside years 100 to 9999.
Date DateSerial(int year, int month, int day);
// A date with a time of day.
Date DateTimeSerial(int year, int month, int day, int hour, int minute, int second);

int Year(Date d);
int Month(Date d);
int Day(Date d);
int Hour(Date d);
int Minute(Date d);
int Second(Date d);
// True when the date carries a time of day other than midnight.
bool HasTime(Date d);

// Adds `number` intervals: "yyyy" years, "q" quarters, "m" months, "d"/"y"/"w" days,
// "ww" weeks, "h" hours, "n" minutes, "s" seconds (any case). Adding months keeps the day and
// clamps it to the target month's last day (31 March + 1 "m" is 30 April). Raises
// err::kInvalidCall for another interval.
Date DateAdd(std::string_view interval, double number, Date d);

// Counts the interval boundaries crossed from `from` to `to` (negative when `to` is earlier):
// "d"/"y" day boundaries (times ignored), "m" month boundaries, "yyyy" year boundaries, "q"
// quarter boundaries, "ww" week boundaries (Sundays), "h", "n", "s". Raises err::kInvalidCall
// for another interval.
int64_t DateDiff(std::string_view interval, Date from, Date to);

// Parses the date forms this system writes and reads: "M/d/yyyy" (and "M/d/yy", two-digit years
// 30-99 in the 1900s, 00-29 in the 2000s), "dd-MMM-yyyy", "MMM/DD/YYYY", ISO "yyyy-mm-dd",
// each optionally followed by a time ("h:mm", "h:mm:ss", with AM/PM or 24-hour; ISO also with
// "T"). Month names are English, three letters or full, any case. Blanks around are allowed.
// Answers nothing for anything else, including impossible dates (2/30/2020).
std::optional<Date> ParseDate(std::string_view text);

// The current date and time of the machine's clock, in local time.
Date Now();

}  // namespace kwx

#endif  // KWX_AUTOMATION_DATES_H_
