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

// An array cannot be empty, so the groups without unstored lists answer an empty span.
#define KWX_DEFINE_NO_UNSTORED(Class) \
  std::span<const FieldBinding<Class>> Class::Unstored() noexcept { return {}; }

#define KWX_DEFINE_UNSTORED(Class, UNSTORED)                                              \
  std::span<const FieldBinding<Class>> Class::Unstored() noexcept {                      \
    using BoundRecord = Class;                                                            \
    static constexpr FieldBinding<BoundRecord> kUnstored[] = {UNSTORED(KWX_BIND_FIELD)};  \
    return kUnstored;                                                                     \
  }

KWX_DEFINE_GROUP(JudgmentGraphGroup, KWX_JUDGMENT_GRAPH_COLUMNS, JudgmentGraph)
KWX_DEFINE_GROUP(JudgmentAnalysisGroup, KWX_JUDGMENT_ANALYSIS_COLUMNS, JudgmentAnalysis)
KWX_DEFINE_GROUP(JudgmentCheckListGroup, KWX_JUDGMENT_CHECK_LIST_COLUMNS, JudgmentCheckList)
KWX_DEFINE_GROUP(JudgmentPrefProcGroup, KWX_JUDGMENT_PREF_PROC_COLUMNS, JudgmentPrefProc)
KWX_DEFINE_GROUP(JudgmentAssessmentGroup, KWX_JUDGMENT_ASSESSMENT_COLUMNS, JudgmentAssessment)
KWX_DEFINE_GROUP(JudgmentStockReportGroup, KWX_JUDGMENT_STOCK_REPORT_COLUMNS,
                 JudgmentStockReport)

KWX_DEFINE_NO_UNSTORED(JudgmentGraphGroup)
KWX_DEFINE_UNSTORED(JudgmentAnalysisGroup, KWX_JUDGMENT_ANALYSIS_UNSTORED)
KWX_DEFINE_UNSTORED(JudgmentCheckListGroup, KWX_JUDGMENT_CHECK_LIST_UNSTORED)
KWX_DEFINE_NO_UNSTORED(JudgmentPrefProcGroup)
KWX_DEFINE_NO_UNSTORED(JudgmentAssessmentGroup)
KWX_DEFINE_NO_UNSTORED(JudgmentStockReportGroup)

#undef KWX_DEFINE_UNSTORED
#undef KWX_DEFINE_NO_UNSTORED
#undef KWX_DEFINE_GROUP

}  // namespace kwx
