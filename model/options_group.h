// The display and study options of a company (table Options).
#ifndef KWX_MODEL_OPTIONS_GROUP_H_
#define KWX_MODEL_OPTIONS_GROUP_H_

#include <span>

#include "model/column_lists.h"
#include "model/record.h"
#include "model/table_def.h"

namespace kwx {

// One member per column of table Options, named and typed as the column (strCurSymbol,
// intUnit, ..., blnEPSMinProjLine), all zero/empty by default. Reachable late-bound by column
// name through GetProperty/SetProperty.
class OptionsGroup : public RecordObject<OptionsGroup> {
 public:
  KWX_OPTIONS_COLUMNS(KWX_DECLARE_FIELD)

  // The declaration of table Options.
  static const TableDef& Table() noexcept;
  // One binding per column, in update order.
  static std::span<const FieldBinding<OptionsGroup>> Bindings() noexcept;
};

}  // namespace kwx

#endif  // KWX_MODEL_OPTIONS_GROUP_H_
