#include "model/fiscal_dates.h"

#include "automation/dates.h"
#include "automation/errors.h"
#include "common/helpers.h"

namespace kwx {

Date LatestMonthlyDataFrom(Date datLastFY) {
  const int m = Month(datLastFY);
  const int months = (12 - m) + (m >= 6 ? 12 : 0);
  return DateAdd("m", months, datLastFY);
}

namespace {

// The fiscal quarter of calendar month `m` (1 to 12) of year `y`, for fiscal years ending in
// month `end_month`.
FiscalQuarter QuarterOfMonth(int m, int y, int end_month) {
  // Months since the fiscal year began (the month after the year-end month is month 0).
  const int into_year = ((m - end_month - 1) % 12 + 12) % 12;
  const int fiscal_year = m <= end_month ? y : y + 1;
  return FiscalQuarter{static_cast<int16_t>(into_year / 3 + 1), static_cast<int16_t>(fiscal_year)};
}

}  // namespace

FiscalQuarter FiscalQuarterOf(Date day, Date datLastFY) {
  const int end_month = Month(datLastFY);
  return QuarterOfMonth(Month(day), Year(day), end_month);
}

QuarterlyElements::QuarterlyElements(Date datLatestQEnding, Date datLastFY) {
  const Date latest = IsValidDate(datLatestQEnding) ? datLatestQEnding : datLastFY;
  latest_month_ = int64_t{Year(latest)} * 12 + (Month(latest) - 1);
  end_month_ = Month(datLastFY);
}

FiscalQuarter QuarterlyElements::Of(int i) const {
  // The month of DateAdd("m", -3 * i, latest), under the same bounds.
  const int64_t month = latest_month_ - int64_t{3} * i;
  if (month < 100 * 12 || month > 9999 * 12 + 11) throw AutomationError(err::kOverflow);
  return QuarterOfMonth(static_cast<int>(month % 12) + 1, static_cast<int>(month / 12), end_month_);
}

FiscalQuarter QuarterOfElement(int i, Date datLatestQEnding, Date datLastFY) {
  return QuarterlyElements(datLatestQEnding, datLastFY).Of(i);
}

}  // namespace kwx
