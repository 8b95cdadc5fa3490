// The six judgment groups of a company, each stored as one row of the table of the same name
// keyed by CompanyID. The six classes differ only in their column lists, so they are declared
// together from one pattern rather than in six near-identical files.
#ifndef KWX_MODEL_JUDGMENT_GROUPS_H_
#define KWX_MODEL_JUDGMENT_GROUPS_H_

#include <span>

#include "model/column_lists.h"
#include "model/record.h"
#include "model/table_def.h"

namespace kwx {

// Declares a group class: one member per column of its table, named and typed as the column
// and zero/empty by default; `Table()` the table's declaration; `Bindings()` one binding per
// column in statement order. Each group is reachable late-bound by column name through
// GetProperty/SetProperty (unknown names raise err::kNoSuchMember).
#define KWX_DECLARE_GROUP(Class, COLUMNS)                              \
  class Class : public RecordObject<Class> {                           \
   public:                                                             \
    COLUMNS(KWX_DECLARE_FIELD)                                         \
    static const TableDef& Table() noexcept;                           \
    static std::span<const FieldBinding<Class>> Bindings() noexcept;   \
  };

// Trend lines, projection lines, their labels, the plot factors and the struck-out years of
// the study graph (table JudgmentGraph).
KWX_DECLARE_GROUP(JudgmentGraphGroup, KWX_JUDGMENT_GRAPH_COLUMNS)
// The analysis judgments: trends, averages, estimates and struck-out items (JudgmentAnalysis).
KWX_DECLARE_GROUP(JudgmentAnalysisGroup, KWX_JUDGMENT_ANALYSIS_COLUMNS)
// The study check list, plain platform only (JudgmentCheckList).
KWX_DECLARE_GROUP(JudgmentCheckListGroup, KWX_JUDGMENT_CHECK_LIST_COLUMNS)
// The preferred-procedure calculation (JudgmentPrefProc).
KWX_DECLARE_GROUP(JudgmentPrefProcGroup, KWX_JUDGMENT_PREF_PROC_COLUMNS)
// The assessment, SP platform only (JudgmentAssessment).
KWX_DECLARE_GROUP(JudgmentAssessmentGroup, KWX_JUDGMENT_ASSESSMENT_COLUMNS)
// The answers of the stock study report, plain platform only (JudgmentStockReport).
KWX_DECLARE_GROUP(JudgmentStockReportGroup, KWX_JUDGMENT_STOCK_REPORT_COLUMNS)

#undef KWX_DECLARE_GROUP

}  // namespace kwx

#endif  // KWX_MODEL_JUDGMENT_GROUPS_H_
