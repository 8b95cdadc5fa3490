#include "model/comparison.h"

#include "model/schema.h"

namespace kwx {

const TableDef& Comparison::Table() noexcept { return GetTable(TableId::Comparison); }

std::span<const FieldBinding<Comparison>> Comparison::Bindings() noexcept {
  using BoundRecord = Comparison;
  static constexpr FieldBinding<BoundRecord> kBindings[] = {
      KWX_COMPARISON_COLUMNS(KWX_BIND_FIELD)};
  return kBindings;
}

Variant Comparison::GetProperty(std::string_view name) const {
  if (SameFieldName(Table().key, name)) return Variant(ComparisonID);
  return GetByName(*this, name);
}

void Comparison::SetProperty(std::string_view name, const Variant& value) {
  if (SameFieldName(Table().key, name)) {
    ConvertInto(value, ComparisonID);
  } else {
    SetByName(*this, name, value);
  }
}

}  // namespace kwx
