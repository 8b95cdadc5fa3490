#include "automation/dates.h"

#include <algorithm>
#include <array>
#include <cctype>
#include <chrono>
#include <cmath>
#include <ctime>
#include <string>

#include "automation/dates_internal.h"
#include "automation/errors.h"
#include "automation/text.h"

namespace kwx {

namespace {

constexpr int64_t kSecondsPerDay = 86400;

// Division rounding toward minus infinity, for day and second counts before day 0.
int64_t FloorDiv(int64_t x, int64_t n) { return x >= 0 ? x / n : -((-x + n - 1) / n); }

// Days since 1970-01-01 of a proleptic Gregorian date (month 1-12); valid for any year.
int64_t DaysFromCivil(int64_t y, int m, int d) {
  y -= m <= 2;
  const int64_t era = (y >= 0 ? y : y - 399) / 400;
  const int64_t yoe = y - era * 400;
  const int64_t doy = (153 * (m + (m > 2 ? -3 : 9)) + 2) / 5 + d - 1;
  const int64_t doe = yoe * 365 + yoe / 4 - yoe / 100 + doy;
  return era * 146097 + doe - 719468;
}

void CivilFromDays(int64_t z, int& year, int& month, int& day) {
  z += 719468;
  const int64_t era = (z >= 0 ? z : z - 146096) / 146097;
  const int64_t doe = z - era * 146097;
  const int64_t yoe = (doe - doe / 1460 + doe / 36524 - doe / 146096) / 365;
  const int64_t doy = doe - (365 * yoe + yoe / 4 - yoe / 100);
  const int64_t mp = (5 * doy + 2) / 153;
  day = static_cast<int>(doy - (153 * mp + 2) / 5 + 1);
  month = static_cast<int>(mp < 10 ? mp + 3 : mp - 9);
  year = static_cast<int>(yoe + era * 400 + (month <= 2));
}

// Serial day 0 (1899-12-30) counted from 1970-01-01.
constexpr int64_t kSerialEpoch = -25569;

// The first and last days a date may have: 100-01-01 and 9999-12-31.
const int64_t kFirstDay = DaysFromCivil(100, 1, 1) - kSerialEpoch;
const int64_t kLastDay = DaysFromCivil(9999, 12, 31) - kSerialEpoch;

bool IsLeap(int y) { return (y % 4 == 0 && y % 100 != 0) || y % 400 == 0; }

constexpr std::array<const char*, 12> kMonthNames = {
    "January", "February", "March",     "April",   "May",      "June",
    "July",    "August",   "September", "October", "November", "December"};

}  // namespace

namespace dates_internal {

int DaysInMonth(int year, int month) {
  static constexpr int kDays[] = {31, 28, 31, 30, 31, 30, 31, 31, 30, 31, 30, 31};
  return month == 2 && IsLeap(year) ? 29 : kDays[month - 1];
}

const char* MonthName(int month) { return kMonthNames[month - 1]; }

Parts Split(Date d) {
  // The whole part of a serial is the day and the fraction's magnitude the time, on both sides
  // of day 0: -1.25 is the day before 1899-12-30 at 06:00.
  double whole = std::trunc(d.serial);
  // A serial past the calendar (or no number at all) has no day to count from, and would not
  // even fit the integer the day is counted in.
  if (!(whole >= static_cast<double>(kFirstDay) && whole <= static_cast<double>(kLastDay))) {
    throw AutomationError(err::kOverflow);
  }
  int64_t seconds = std::llround(std::fabs(d.serial - whole) * kSecondsPerDay);
  int64_t day = static_cast<int64_t>(whole);
  if (seconds >= kSecondsPerDay) {
    seconds -= kSecondsPerDay;
    ++day;
  }
  Parts p;
  p.day_number = day;
  CivilFromDays(day + kSerialEpoch, p.year, p.month, p.day);
  p.hour = static_cast<int>(seconds / 3600);
  p.minute = static_cast<int>(seconds / 60 % 60);
  p.second = static_cast<int>(seconds % 60);
  return p;
}

double Linear(Date d) {
  const double whole = std::trunc(d.serial);
  return whole + std::fabs(d.serial - whole);
}

Date FromLinear(double linear) {
  const double day = std::floor(linear);
  const double time = linear - day;
  if (day < kFirstDay || day > kLastDay) throw AutomationError(err::kOverflow);
  return Date{day >= 0 ? day + time : day - time};
}

Date FromParts(int64_t day_number, int64_t seconds) {
  const int64_t carry = FloorDiv(seconds, kSecondsPerDay);
  day_number += carry;
  seconds -= carry * kSecondsPerDay;
  return FromLinear(static_cast<double>(day_number) + static_cast<double>(seconds) / kSecondsPerDay);
}

int64_t DayNumber(int64_t year, int64_t month, int64_t day) {
  // Months out of 1-12 carry into the year; days out of the month carry by plain addition.
  const int64_t months = year * 12 + (month - 1);
  const int64_t y = FloorDiv(months, 12);
  const int m = static_cast<int>(months - y * 12) + 1;
  return DaysFromCivil(y, m, 1) - kSerialEpoch + (day - 1);
}

}  // namespace dates_internal

using namespace dates_internal;

Date DateSerial(int year, int month, int day) {
  return FromParts(DayNumber(year, month, day), 0);
}

Date DateTimeSerial(int year, int month, int day, int hour, int minute, int second) {
  return FromParts(DayNumber(year, month, day),
                   int64_t{hour} * 3600 + int64_t{minute} * 60 + int64_t{second});
}

int Year(Date d) { return Split(d).year; }
int Month(Date d) { return Split(d).month; }
int Day(Date d) { return Split(d).day; }
int Hour(Date d) { return Split(d).hour; }
int Minute(Date d) { return Split(d).minute; }
int Second(Date d) { return Split(d).second; }

bool HasTime(Date d) {
  const Parts p = Split(d);
  return p.hour != 0 || p.minute != 0 || p.second != 0;
}

Date DateAdd(std::string_view interval, double number, Date d) {
  const std::string unit = FoldCase(interval);
  // Calendar intervals take whole numbers only; the fraction is dropped.
  const double whole = std::trunc(number);
  if (!std::isfinite(number) || std::fabs(number) > 1e12) throw AutomationError(err::kOverflow);
  int64_t months = 0;
  if (unit == "yyyy") {
    months = static_cast<int64_t>(whole) * 12;
  } else if (unit == "q") {
    months = static_cast<int64_t>(whole) * 3;
  } else if (unit == "m") {
    months = static_cast<int64_t>(whole);
  } else if (unit == "d" || unit == "y" || unit == "w") {
    return FromLinear(Linear(d) + whole);
  } else if (unit == "ww") {
    return FromLinear(Linear(d) + whole * 7);
  } else if (unit == "h" || unit == "n" || unit == "s") {
    const double per_day = unit == "h" ? 24.0 : unit == "n" ? 1440.0 : 86400.0;
    const double seconds = std::round(Linear(d) * kSecondsPerDay + number * kSecondsPerDay / per_day);
    return FromLinear(seconds / kSecondsPerDay);
  } else {
    throw AutomationError(err::kInvalidCall);
  }
  const Parts p = Split(d);
  const int64_t total = int64_t{p.year} * 12 + (p.month - 1) + months;
  if (total < 100 * 12 || total > 9999 * 12 + 11) throw AutomationError(err::kOverflow);
  const int year = static_cast<int>(total / 12);
  const int month = static_cast<int>(total % 12) + 1;
  const int day = std::min(p.day, DaysInMonth(year, month));
  return FromParts(DayNumber(year, month, day),
                   int64_t{p.hour} * 3600 + int64_t{p.minute} * 60 + p.second);
}

int64_t DateDiff(std::string_view interval, Date from, Date to) {
  const std::string unit = FoldCase(interval);
  const Parts a = Split(from);
  const Parts b = Split(to);
  if (unit == "d" || unit == "y") return b.day_number - a.day_number;
  if (unit == "m") return (int64_t{b.year} * 12 + b.month) - (int64_t{a.year} * 12 + a.month);
  if (unit == "yyyy") return int64_t{b.year} - a.year;
  if (unit == "q") {
    return (int64_t{b.year} * 4 + (b.month - 1) / 3) - (int64_t{a.year} * 4 + (a.month - 1) / 3);
  }
  if (unit == "ww") {
    // Day 1 (1899-12-31) is a Sunday; a week boundary is crossed on entering each Sunday.
    return FloorDiv(b.day_number - 1, 7) - FloorDiv(a.day_number - 1, 7);
  }
  auto seconds = [](const Parts& p) {
    return p.day_number * kSecondsPerDay + p.hour * 3600 + p.minute * 60 + p.second;
  };
  if (unit == "h") return FloorDiv(seconds(b), 3600) - FloorDiv(seconds(a), 3600);
  if (unit == "n") return FloorDiv(seconds(b), 60) - FloorDiv(seconds(a), 60);
  if (unit == "s") return seconds(b) - seconds(a);
  throw AutomationError(err::kInvalidCall);
}

namespace {

// A cursor over the text being parsed; every reader leaves it untouched on failure.
class Scanner {
 public:
  explicit Scanner(std::string_view text) : text_(text) {}

  bool AtEnd() const { return pos_ == text_.size(); }
  size_t pos() const { return pos_; }
  void Reset(size_t pos) { pos_ = pos; }

  void SkipBlanks() {
    while (pos_ < text_.size() && text_[pos_] == ' ') ++pos_;
  }
  bool Take(char c) {
    if (pos_ < text_.size() && text_[pos_] == c) {
      ++pos_;
      return true;
    }
    return false;
  }
  // Between `min` and `max` decimal digits; answers their value, or -1.
  int Digits(int min, int max, int* count = nullptr) {
    int value = 0;
    int n = 0;
    while (n < max && pos_ + n < text_.size() && text_[pos_ + n] >= '0' && text_[pos_ + n] <= '9') {
      value = value * 10 + (text_[pos_ + n] - '0');
      ++n;
    }
    if (n < min) return -1;
    pos_ += n;
    if (count) *count = n;
    return value;
  }
  // An English month name, three letters or in full, any case; answers 1-12 or 0.
  int MonthName() {
    size_t n = 0;
    while (pos_ + n < text_.size() && std::isalpha(static_cast<unsigned char>(text_[pos_ + n]))) ++n;
    const std::string word = FoldCase(text_.substr(pos_, n));
    for (int m = 1; m <= 12; ++m) {
      const std::string full = FoldCase(dates_internal::MonthName(m));
      if (word == full || (n == 3 && word == full.substr(0, 3))) {
        pos_ += n;
        return m;
      }
    }
    return 0;
  }
  // "AM" or "PM" in any case: answers 'A', 'P' or 0.
  char Meridiem() {
    if (pos_ + 2 > text_.size()) return 0;
    const std::string word = FoldCase(text_.substr(pos_, 2));
    if (word != "am" && word != "pm") return 0;
    pos_ += 2;
    return word[0] == 'a' ? 'A' : 'P';
  }

 private:
  std::string_view text_;
  size_t pos_ = 0;
};

// Years written with two digits: 30-99 are in the 1900s, 00-29 in the 2000s.
int WidenYear(int year, int digits) {
  if (digits != 2) return year;
  return year < 30 ? 2000 + year : 1900 + year;
}

// A four-digit year, or a two-digit one widened.
bool ReadYear(Scanner& s, int& year) {
  int digits = 0;
  const int value = s.Digits(2, 4, &digits);
  if (value < 0 || digits == 3) return false;
  year = WidenYear(value, digits);
  return true;
}

// Reads one of the date forms; `iso` tells whether it was yyyy-mm-dd, which alone may be
// joined to its time by "T".
bool ReadDate(Scanner& s, int& year, int& month, int& day, bool& iso) {
  const size_t start = s.pos();
  iso = false;
  if (const int y = s.Digits(4, 4); y >= 0 && s.Take('-')) {
    month = s.Digits(1, 2);
    if (month >= 0 && s.Take('-') && (day = s.Digits(1, 2)) >= 0) {
      year = y;
      iso = true;
      return true;
    }
  }
  s.Reset(start);
  // M/d/yyyy and dd-MMM-yyyy
  if (const int first = s.Digits(1, 2); first >= 0) {
    if (s.Take('/')) {
      month = first;
      if ((day = s.Digits(1, 2)) >= 0 && s.Take('/') && ReadYear(s, year)) return true;
    } else if (s.Take('-')) {
      day = first;
      if ((month = s.MonthName()) > 0 && s.Take('-') && ReadYear(s, year)) return true;
    }
  }
  s.Reset(start);
  // MMM/DD/YYYY
  if ((month = s.MonthName()) > 0 && s.Take('/') && (day = s.Digits(1, 2)) >= 0 && s.Take('/') &&
      ReadYear(s, year)) {
    return true;
  }
  s.Reset(start);
  return false;
}

// h:mm or h:mm:ss, then an optional AM/PM; answers the seconds into the day or -1.
int64_t ReadTime(Scanner& s) {
  const size_t start = s.pos();
  int hour = s.Digits(1, 2);
  int minute = -1;
  int second = 0;
  if (hour >= 0 && s.Take(':') && (minute = s.Digits(2, 2)) >= 0) {
    const size_t after_minutes = s.pos();
    if (!(s.Take(':') && (second = s.Digits(2, 2)) >= 0)) {
      s.Reset(after_minutes);
      second = 0;
    }
    const size_t before_meridiem = s.pos();
    s.SkipBlanks();
    const char meridiem = s.Meridiem();
    if (meridiem == 0) s.Reset(before_meridiem);
    const bool ok = minute <= 59 && second <= 59 &&
                    (meridiem == 0 ? hour <= 23 : hour >= 1 && hour <= 12);
    if (ok) {
      if (meridiem != 0) hour = hour % 12 + (meridiem == 'P' ? 12 : 0);
      return int64_t{hour} * 3600 + minute * 60 + second;
    }
  }
  s.Reset(start);
  return -1;
}

}  // namespace

std::optional<Date> ParseDate(std::string_view text) {
  Scanner s(text);
  s.SkipBlanks();
  int year = 0, month = 0, day = 0;
  bool iso = false;
  const bool has_date = ReadDate(s, year, month, day, iso);
  int64_t seconds = 0;
  if (has_date) {
    const size_t after_date = s.pos();
    bool separated = iso && s.Take('T');
    if (!separated) {
      s.SkipBlanks();
      separated = s.pos() > after_date;
    }
    if (separated && !s.AtEnd()) {
      seconds = ReadTime(s);
      if (seconds < 0) return std::nullopt;
    } else {
      s.Reset(after_date);
    }
    if (month < 1 || month > 12 || day < 1 || year < 100 || day > DaysInMonth(year, month)) {
      return std::nullopt;
    }
  } else {
    // A bare time is that time on day 0, the form a time-only value is written in.
    seconds = ReadTime(s);
    if (seconds < 0) return std::nullopt;
  }
  s.SkipBlanks();
  if (!s.AtEnd()) return std::nullopt;
  if (!has_date) return FromParts(0, seconds);
  return FromParts(DayNumber(year, month, day), seconds);
}

Date Now() {
  const std::time_t t = std::time(nullptr);
  std::tm local{};
  localtime_r(&t, &local);
  return DateTimeSerial(local.tm_year + 1900, local.tm_mon + 1, local.tm_mday, local.tm_hour,
                        local.tm_min, local.tm_sec);
}

}  // namespace kwx
