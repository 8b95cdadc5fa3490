#include "model/judgment_groups.h"

#include "model/schema.h"

namespace kwx {

#define KWX_DEFINE_GROUP(Class, COLUMNS, TABLE)                                        \
  const TableDef& Class::Table() noexcept { return GetTable(TableId::TABLE); }         \
  std::span<const FieldBinding<Class>> Class::Bindings() noexcept {                    \
    using BoundRecord = Class;                                                          \
    static constexpr FieldBinding<BoundRecord> kBindings[] = {COLUMNS(KWX_BIND_FIELD)}; \
    return kBindings;                                                                   \
  }

KWX_DEFINE_GROUP(JudgmentGraphGroup, KWX_JUDGMENT_GRAPH_COLUMNS, JudgmentGraph)
KWX_DEFINE_GROUP(JudgmentAnalysisGroup, KWX_JUDGMENT_ANALYSIS_COLUMNS, JudgmentAnalysis)
KWX_DEFINE_GROUP(JudgmentCheckListGroup, KWX_JUDGMENT_CHECK_LIST_COLUMNS, JudgmentCheckList)
KWX_DEFINE_GROUP(JudgmentPrefProcGroup, KWX_JUDGMENT_PREF_PROC_COLUMNS, JudgmentPrefProc)
KWX_DEFINE_GROUP(JudgmentAssessmentGroup, KWX_JUDGMENT_ASSESSMENT_COLUMNS, JudgmentAssessment)
KWX_DEFINE_GROUP(JudgmentStockReportGroup, KWX_JUDGMENT_STOCK_REPORT_COLUMNS,
                 JudgmentStockReport)

#undef KWX_DEFINE_GROUP

}  // namespace kwx
