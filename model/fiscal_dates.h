// Fiscal-calendar rules shared by loading, saving and importing a study.
#ifndef KWX_MODEL_FISCAL_DATES_H_
#define KWX_MODEL_FISCAL_DATES_H_

#include <cstdint>

#include "automation/value_types.h"

namespace kwx {

// The date of the latest monthly price when a study does not carry one: with M the month of
// the last fiscal year-end `datLastFY`, that date plus (12 - M) months, plus 12 more when M is
// June or later. Always a December: of the year-end's own year for a January-May year-end, of
// the next year for a June-December one (30 June 2005 gives 30 December 2006).
Date LatestMonthlyDataFrom(Date datLastFY);

// A fiscal quarter: `quarter` 1 to 4 within fiscal `year` (the calendar year in which that
// fiscal year ends).
struct FiscalQuarter {
  int16_t quarter;
  int16_t year;
  friend bool operator==(FiscalQuarter, FiscalQuarter) = default;
};

// The fiscal quarter that contains `day`, for fiscal years ending in the month of `datLastFY`.
FiscalQuarter FiscalQuarterOf(Date day, Date datLastFY);

// Element `i` of the quarterly series: the quarter `i` quarters before the latest one. The
// latest quarter is the one holding `datLatestQEnding`, or, when that is no plausible date,
// the last quarter of the fiscal year ending `datLastFY`. Raises what DateAdd raises going
// back `3 * i` months from there.
FiscalQuarter QuarterOfElement(int i, Date datLatestQEnding, Date datLastFY);

// QuarterOfElement for every element of one study, its dates read once (a save asks for each
// quarterly row).
class QuarterlyElements {
 public:
  // Raises what reading the two dates raises.
  QuarterlyElements(Date datLatestQEnding, Date datLastFY);
  FiscalQuarter Of(int i) const;

 private:
  int64_t latest_month_;  // the latest quarter's year * 12 + its month - 1
  int end_month_;         // the month the fiscal year ends in
};

}  // namespace kwx

#endif  // KWX_MODEL_FISCAL_DATES_H_
