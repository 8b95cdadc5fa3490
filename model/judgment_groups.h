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
// and zero/empty by default, then one per property of UNSTORED (the lists the data files carry
// and the table does not); `Table()` the table's declaration; `Bindings()` one binding per
// column in statement order, which is all the database reads and writes; `Unstored()` one
// binding per UNSTORED property. Each group is reachable late-bound by the name of a column or
// an unstored property through GetProperty/SetProperty (unknown names raise
// err::kNoSuchMember), and SameStudy/DescribeDifferences compare both kinds.
#define KWX_DECLARE_GROUP(Class, COLUMNS, UNSTORED)                    \
  class Class : public RecordObject<Class> {                           \
   public:                                                             \
    COLUMNS(KWX_DECLARE_FIELD)                                         \
    UNSTORED(KWX_DECLARE_FIELD)                                        \
    static const TableDef& Table() noexcept;                           \
    static std::span<const FieldBinding<Class>> Bindings() noexcept;   \
    static std::span<const FieldBinding<Class>> Unstored() noexcept;   \
  };

// Trend lines, projection lines, their labels, the plot factors and the struck-out years of
// the study graph (table JudgmentGraph).
KWX_DECLARE_GROUP(JudgmentGraphGroup, KWX_JUDGMENT_GRAPH_COLUMNS, KWX_NO_UNSTORED)
// The analysis judgments: trends, averages, estimates and struck-out items (JudgmentAnalysis);
// five of its struck-out lists are not kept by the table.
KWX_DECLARE_GROUP(JudgmentAnalysisGroup, KWX_JUDGMENT_ANALYSIS_COLUMNS,
                  KWX_JUDGMENT_ANALYSIS_UNSTORED)
// The study check list, plain platform only (JudgmentCheckList); the struck-out items of its
// revenue and EPS objectives are not kept by the table.
KWX_DECLARE_GROUP(JudgmentCheckListGroup, KWX_JUDGMENT_CHECK_LIST_COLUMNS,
                  KWX_JUDGMENT_CHECK_LIST_UNSTORED)
// The preferred-procedure calculation (JudgmentPrefProc).
KWX_DECLARE_GROUP(JudgmentPrefProcGroup, KWX_JUDGMENT_PREF_PROC_COLUMNS, KWX_NO_UNSTORED)
// The assessment, SP platform only (JudgmentAssessment).
KWX_DECLARE_GROUP(JudgmentAssessmentGroup, KWX_JUDGMENT_ASSESSMENT_COLUMNS,
                  KWX_NO_UNSTORED)
// The answers of the stock study report, plain platform only (JudgmentStockReport).
KWX_DECLARE_GROUP(JudgmentStockReportGroup, KWX_JUDGMENT_STOCK_REPORT_COLUMNS,
                  KWX_NO_UNSTORED)

#undef KWX_DECLARE_GROUP

}  // namespace kwx

#endif  // KWX_MODEL_JUDGMENT_GROUPS_H_
