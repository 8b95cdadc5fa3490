#include "model/fiscal_dates.h"

#include "automation/dates.h"
#include "common/helpers.h"

namespace kwx {

Date LatestMonthlyDataFrom(Date datLastFY) {
  const int m = Month(datLastFY);
  const int months = (12 - m) + (m >= 6 ? 12 : 0);
  return DateAdd("m", months, datLastFY);
}

FiscalQuarter FiscalQuarterOf(Date day, Date datLastFY) {
  const int end_month = Month(datLastFY);
  const int m = Month(day);
  const int y = Year(day);
  // Months since the fiscal year began (the month after the year-end month is month 0).
  const int into_year = ((m - end_month - 1) % 12 + 12) % 12;
  const int fiscal_year = m <= end_month ? y : y + 1;
  return FiscalQuarter{static_cast<int16_t>(into_year / 3 + 1), static_cast<int16_t>(fiscal_year)};
}

FiscalQuarter QuarterOfElement(int i, Date datLatestQEnding, Date datLastFY) {
  const Date latest = IsValidDate(datLatestQEnding) ? datLatestQEnding : datLastFY;
  return FiscalQuarterOf(DateAdd("m", -3.0 * i, latest), datLastFY);
}

}  // namespace kwx
