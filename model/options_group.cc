#include "model/options_group.h"

#include "model/schema.h"

namespace kwx {

const TableDef& OptionsGroup::Table() noexcept { return GetTable(TableId::Options); }

std::span<const FieldBinding<OptionsGroup>> OptionsGroup::Bindings() noexcept {
  using BoundRecord = OptionsGroup;
  static constexpr FieldBinding<BoundRecord> kBindings[] = {
      KWX_OPTIONS_COLUMNS(KWX_BIND_FIELD)};
  return kBindings;
}

}  // namespace kwx
