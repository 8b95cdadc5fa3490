// The compute object: fits the default growth lines of a study's yearly series and scales
// series onto the study graph.
#ifndef KWX_SERVICES_COMPUTE_OBJECT_H_
#define KWX_SERVICES_COMPUTE_OBJECT_H_

#include <array>
#include <cstdint>

#include "automation/services.h"
#include "automation/variant.h"

namespace kwx {

// Serves both platform builds ("iKWX_Compute.KWXCompute" and "iKWX_SP_Compute.KWXCompute").
//
// Conventions shared by both members:
//  - A yearly series is a 1-D array indexed by year: the element at index y is the value of
//    year y, so the latest year is the upper bound. A study hands its series indexed by fiscal
//    year (Company::YearlyByFiscalYear), which puts every X this object answers on the fiscal
//    years of the study graph.
//  - An element counts as a value when it is numeric, finite and above 0; Empty, zero,
//    negative and non-numeric elements are skipped (a ratio-scale graph cannot show them).
//  - `kind` is 0 EPS, 1 revenue, 2 pre-tax income, 3 high price; it does not change the
//    arithmetic. Another kind raises err::kInvalidCall; a series that is not a 1-D array
//    raises err::kTypeMismatch.
// Holds no state; every call stands alone.
class ComputeObject final : public ICompute {
 public:
  // The power of ten that brings the largest value of `series` into [1, 10): 0.001 for a
  // largest value of 4500, 10 for 0.45. A series with no value answers 1, and so does any
  // series when `flag` is false (no scaling asked for).
  float sngNormalize(const Variant& series, int32_t kind, bool flag) override;

  // Fits ln(value) = a + b * year by least squares over the values of `series` and describes
  // the fitted growth line. Outputs by argument position (outputs[p - 4]):
  //   4  default projected growth rate: output 5 capped at 20 percent; 0 for a declining
  //      history, which gets no projection at all (outputs 9 to 14 stay 0)
  //   5  historical growth rate, percent a year: 100 * (e^b - 1)
  //   6  R-squared of the fit over the latest five years (the upper bound and the four years
  //      before it; 0 when fewer than three of them hold values)
  //   7  a, the natural log of the fitted value at year 0 (unscaled)
  //   8  b, the fitted slope in natural log per year
  //   9, 10   label 1 (Y, X): the projection's start
  //   11, 12  label 2 (Y, X): the projection's end
  //   13, 14  projection Y1, Y2: from the fitted value at the latest year of the series (its
  //           upper bound, even when that year holds no value), grown at output 4 for five
  //           years
  //   15..18  trend X1, Y1, X2, Y2: the fitted line from the oldest to the latest value
  // Every Y is a value multiplied by `factor` (not changed by the call); every X a year.
  // R-squared is 1 when the values fitted are all equal (the flat line fits exactly); that is
  // decided from the values themselves. Fewer than three values: all outputs 0.
  void DefaultGrowthLine(float& factor, int32_t kind, const Variant& series,
                         std::array<float, 15>& outputs) override;
};

}  // namespace kwx

#endif  // KWX_SERVICES_COMPUTE_OBJECT_H_
