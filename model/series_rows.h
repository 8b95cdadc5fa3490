// The rows of the five series of a company. Each row holds the value columns of its table
// only; the row key and the CompanyID column exist in the database alone, and a row's place in
// its series stands for its key order. The five types differ only in their column lists, so
// they are declared together from one pattern.
#ifndef KWX_MODEL_SERIES_ROWS_H_
#define KWX_MODEL_SERIES_ROWS_H_

#include <span>

#include "model/column_lists.h"
#include "model/record.h"
#include "model/table_def.h"

namespace kwx {

// Declares a row type: one member per value column, named and typed as the column and zero by
// default; `Table()` the table's declaration (with its load order); `Bindings()` one binding
// per value column in statement order, for by-name access (GetByName/SetByName).
#define KWX_DECLARE_ROW(Class, COLUMNS)                               \
  struct Class {                                                      \
    COLUMNS(KWX_DECLARE_FIELD)                                        \
    static const TableDef& Table() noexcept;                          \
    static std::span<const FieldBinding<Class>> Bindings() noexcept;  \
  };

// One fiscal year of history (table Yearly).
KWX_DECLARE_ROW(YearlyRow, KWX_YEARLY_COLUMNS)
// One quarter (table Quarterly).
KWX_DECLARE_ROW(QuarterlyRow, KWX_QUARTERLY_COLUMNS)
// One month's closing price (table Monthly).
KWX_DECLARE_ROW(MonthlyRow, KWX_MONTHLY_COLUMNS)
// One year of the price-multiple graph (table JudgmentPMG).
KWX_DECLARE_ROW(JudgmentPMGRow, KWX_JUDGMENT_PMG_COLUMNS)
// The scale factors of one PERT graph type (table JudgmentPERT).
KWX_DECLARE_ROW(JudgmentPERTRow, KWX_JUDGMENT_PERT_COLUMNS)

#undef KWX_DECLARE_ROW

}  // namespace kwx

#endif  // KWX_MODEL_SERIES_ROWS_H_
