// The three market averages of one day (table DJAverages), saved with a company's judgments.
#ifndef KWX_MODEL_MARKET_AVERAGES_H_
#define KWX_MODEL_MARKET_AVERAGES_H_

#include <span>

#include "model/column_lists.h"
#include "model/record.h"
#include "model/table_def.h"

namespace kwx {

// DJDate (the day), sngUtilities, sngTransportation, sngIndustrials; all zero by default.
struct MarketAverages {
  KWX_DJ_AVERAGES_COLUMNS(KWX_DECLARE_FIELD)

  // The declaration of table DJAverages.
  static const TableDef& Table() noexcept;
  // One binding per column, in statement order, for by-name access.
  static std::span<const FieldBinding<MarketAverages>> Bindings() noexcept;
};

}  // namespace kwx

#endif  // KWX_MODEL_MARKET_AVERAGES_H_
