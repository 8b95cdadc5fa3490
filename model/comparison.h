// A named, saved side-by-side study of several companies (tables Comparison and
// ComparisonCompany).
#ifndef KWX_MODEL_COMPARISON_H_
#define KWX_MODEL_COMPARISON_H_

#include <cstdint>
#include <span>
#include <string_view>
#include <vector>

#include "automation/object.h"
#include "automation/variant.h"
#include "model/column_lists.h"
#include "model/record.h"
#include "model/table_def.h"

namespace kwx {

// One member company of a comparison, in member order.
struct ComparisonMember {
  // The member's company; members with an ID of 0 or less are not saved.
  int32_t CompanyID = 0;
  // Which fields are selected: a Boolean array, or Empty.
  Variant SelectedFields;
  // The member's field texts: an array of texts, or Empty.
  Variant FieldData;
};

class Comparison : public Object {
 public:
  // The database's ID of the comparison; 0 until it is first saved.
  int32_t ComparisonID = 0;
  // Name, Description, Field27, Field28, UpdatePerson, LastUpdate, StudiedSection, named and
  // typed as the columns of table Comparison.
  KWX_COMPARISON_COLUMNS(KWX_DECLARE_FIELD)
  // The member companies in member order.
  std::vector<ComparisonMember> Members;

  // The declaration of table Comparison.
  static const TableDef& Table() noexcept;
  // One binding per column of table Comparison, in update order.
  static std::span<const FieldBinding<Comparison>> Bindings() noexcept;

  // Reads ComparisonID or a header column by name (case-insensitive); other names raise
  // err::kNoSuchMember.
  Variant GetProperty(std::string_view name) const override;
  // Writes ComparisonID or a header column converted to its type; raises err::kNoSuchMember
  // for other names and the conversion's error (value unchanged) for a rejected value.
  void SetProperty(std::string_view name, const Variant& value) override;
};

}  // namespace kwx

#endif  // KWX_MODEL_COMPARISON_H_
