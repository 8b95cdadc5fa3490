#include "model/pert_report.h"

#include "model/schema.h"

namespace kwx {
namespace {

// Not a column: the report object carries it, the table does not.
constexpr std::string_view kUpdatePerson = "UpdatePerson";

}  // namespace

const TableDef& PERTReport::Table() noexcept { return GetTable(TableId::PERTReport); }

std::span<const FieldBinding<PERTReport>> PERTReport::Bindings() noexcept {
  using BoundRecord = PERTReport;
  static constexpr FieldBinding<BoundRecord> kBindings[] = {
      KWX_PERT_REPORT_COLUMNS(KWX_BIND_FIELD)};
  return kBindings;
}

Variant PERTReport::GetProperty(std::string_view name) const {
  if (SameFieldName(Table().key, name)) return Variant(PERTReportID);
  if (SameFieldName(kUpdatePerson, name)) return Variant(UpdatePerson);
  return GetByName(*this, name);
}

void PERTReport::SetProperty(std::string_view name, const Variant& value) {
  if (SameFieldName(Table().key, name)) {
    ConvertInto(value, PERTReportID);
  } else if (SameFieldName(kUpdatePerson, name)) {
    ConvertInto(value, UpdatePerson);
  } else {
    SetByName(*this, name, value);
  }
}

}  // namespace kwx
