#include "model/market_averages.h"

#include "model/schema.h"

namespace kwx {

const TableDef& MarketAverages::Table() noexcept { return GetTable(TableId::DJAverages); }

std::span<const FieldBinding<MarketAverages>> MarketAverages::Bindings() noexcept {
  using BoundRecord = MarketAverages;
  static constexpr FieldBinding<BoundRecord> kBindings[] = {
      KWX_DJ_AVERAGES_COLUMNS(KWX_BIND_FIELD)};
  return kBindings;
}

}  // namespace kwx
