#include "model/series_rows.h"

#include "model/schema.h"

namespace kwx {

#define KWX_DEFINE_ROW(Class, COLUMNS, TABLE)                                          \
  const TableDef& Class::Table() noexcept { return GetTable(TableId::TABLE); }         \
  std::span<const FieldBinding<Class>> Class::Bindings() noexcept {                    \
    using BoundRecord = Class;                                                          \
    static constexpr FieldBinding<BoundRecord> kBindings[] = {COLUMNS(KWX_BIND_FIELD)}; \
    return kBindings;                                                                   \
  }

KWX_DEFINE_ROW(YearlyRow, KWX_YEARLY_COLUMNS, Yearly)
KWX_DEFINE_ROW(QuarterlyRow, KWX_QUARTERLY_COLUMNS, Quarterly)
KWX_DEFINE_ROW(MonthlyRow, KWX_MONTHLY_COLUMNS, Monthly)
KWX_DEFINE_ROW(JudgmentPMGRow, KWX_JUDGMENT_PMG_COLUMNS, JudgmentPMG)
KWX_DEFINE_ROW(JudgmentPERTRow, KWX_JUDGMENT_PERT_COLUMNS, JudgmentPERT)

#undef KWX_DEFINE_ROW

}  // namespace kwx
