// The series lengths a data file carries, shared by the SSG and KWX readers.
#ifndef KWX_IMPORT_SERIES_SHAPE_H_
#define KWX_IMPORT_SERIES_SHAPE_H_

#include "model/company.h"

namespace kwx {

// Gives the company's yearly, quarterly, monthly and PMG series exactly the lengths an
// imported study has (10, 36, 72 and 5 elements). A reused Company may hold more elements
// (from a load) or fewer: the ones past those lengths are dropped, so none of them outlives
// the import as a stale row; missing ones are added as zeros. The elements kept are then
// overwritten position by position by the reader.
inline void ShapeSeriesForImport(Company& company) {
  company.Yearly.resize(Company::kYearlyRows);
  company.Quarterly.resize(Company::kQuarterlyRows);
  company.Monthly.resize(Company::kMonthlyRows);
  company.JudgmentPMG.resize(Company::kJudgmentPMGRows);
}

}  // namespace kwx

#endif  // KWX_IMPORT_SERIES_SHAPE_H_
