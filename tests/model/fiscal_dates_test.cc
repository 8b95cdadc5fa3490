#include "model/fiscal_dates.h"

#include <gtest/gtest.h>

#include "automation/dates.h"
#include "automation/errors.h"
#include "common/helpers.h"

namespace kwx {
namespace {

// A quarterly element is the fiscal quarter of the latest quarter's date moved back 3 * i
// calendar months: the month arithmetic must land where DateAdd does, month ends and the
// calendar's ends included.
TEST(FiscalDates, QuarterlyElementsAreTheQuartersOfTheCalendarMonthsBefore) {
  const Date year_ends[] = {DateSerial(2024, 12, 31), DateSerial(2024, 6, 30),
                            DateSerial(2023, 2, 28), DateSerial(2024, 9, 30)};
  const Date latest[] = {DateSerial(2025, 3, 31), DateSerial(2024, 8, 31),
                         Date{DateSerial(2024, 11, 30).serial + 0.75}, DateSerial(2023, 1, 31), Date{}};
  for (Date year_end : year_ends) {
    for (Date q : latest) {
      const QuarterlyElements elements(q, year_end);
      const Date from = IsValidDate(q) ? q : year_end;
      for (int i = 0; i < 48; ++i) {
        const FiscalQuarter expected = FiscalQuarterOf(DateAdd("m", -3.0 * i, from), year_end);
        EXPECT_EQ(elements.Of(i), expected) << "element " << i << " of " << q.serial;
        EXPECT_EQ(QuarterOfElement(i, q, year_end), expected);
      }
    }
  }
  // Going back past the calendar's first year raises as DateAdd does. (A latest quarter that
  // early is no plausible date: the year-end stands for it.)
  const Date first_year_end = DateSerial(100, 12, 31);
  const QuarterlyElements early(DateSerial(100, 9, 30), first_year_end);
  EXPECT_EQ(early.Of(3), FiscalQuarterOf(DateSerial(100, 3, 31), first_year_end));
  EXPECT_THROW(DateAdd("m", -3.0 * 4, first_year_end), AutomationError);
  EXPECT_THROW(early.Of(4), AutomationError);
}

}  // namespace
}  // namespace kwx
