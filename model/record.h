// Generic by-name access to the typed records of the model. Every record type (the company
// record, the options and judgment groups, the series rows, the market averages, the
// comparison and PERT-report headers) declares its members from the X-macro of its table
// (model/column_lists.h) and binds each column name to its member with a FieldBinding; reading,
// writing, comparing and describing a record by name are loops over those bindings.
#ifndef KWX_MODEL_RECORD_H_
#define KWX_MODEL_RECORD_H_

#include <cmath>
#include <cstdint>
#include <initializer_list>
#include <span>
#include <string>
#include <string_view>
#include <type_traits>
#include <variant>
#include <vector>

#include "automation/errors.h"
#include "automation/object.h"
#include "automation/value_types.h"
#include "automation/variant.h"
#include "model/table_def.h"

namespace kwx {

// The in-memory type of a column of each ColumnType. A Reference column holds the referenced
// row's name; a Flags column holds a Boolean array (or Empty) as a Variant.
template <ColumnType T> struct MemberTypeOf;
template <> struct MemberTypeOf<ColumnType::Text> { using type = std::string; };
template <> struct MemberTypeOf<ColumnType::Single> { using type = float; };
template <> struct MemberTypeOf<ColumnType::Integer> { using type = int16_t; };
template <> struct MemberTypeOf<ColumnType::Long> { using type = int32_t; };
template <> struct MemberTypeOf<ColumnType::Boolean> { using type = bool; };
template <> struct MemberTypeOf<ColumnType::Date> { using type = Date; };
template <> struct MemberTypeOf<ColumnType::Variant> { using type = Variant; };
template <> struct MemberTypeOf<ColumnType::Flags> { using type = Variant; };
template <> struct MemberTypeOf<ColumnType::Reference> { using type = std::string; };
template <ColumnType T>
using MemberType = typename MemberTypeOf<T>::type;

// One column of record type `Rec`: its declaration and the member that holds its value.
template <class Rec>
struct FieldBinding {
  ColumnDef column;
  std::variant<std::string Rec::*, float Rec::*, int16_t Rec::*, int32_t Rec::*, bool Rec::*,
               Date Rec::*, Variant Rec::*>
      member;
};

// Converts `value` for a member of the given memory type with the strict conversions (CStr,
// CSng, CInt, CLng, CBool, CDate); a Variant member takes the value as given. Raises the
// conversion's AutomationError and leaves `out` unchanged when the value is rejected.
// A value already of the member's type is taken as it is (a load sets thousands of members
// from values of their own type); any other goes through the conversion.
void ConvertOtherInto(const Variant& value, std::string& out);
void ConvertOtherInto(const Variant& value, float& out);
void ConvertOtherInto(const Variant& value, int16_t& out);
void ConvertOtherInto(const Variant& value, int32_t& out);
void ConvertOtherInto(const Variant& value, bool& out);
void ConvertOtherInto(const Variant& value, Date& out);
template <class T>
void ConvertInto(const Variant& value, T& out) {
  if (const T* same = value.Peek<T>()) {
    // An infinite Single overflows CSng, so it takes the conversion's path to its error.
    if constexpr (std::is_floating_point_v<T>) {
      if (std::isinf(*same)) return ConvertOtherInto(value, out);
    }
    out = *same;
  } else {
    ConvertOtherInto(value, out);
  }
}
inline void ConvertInto(const Variant& value, Variant& out) { out = value; }

// A struck-out item list in its one in-memory shape: a Boolean array whose element 1 is the
// first item. Accepts such an array, an array of any lower bound (the first element becomes
// element 1; elements converted by CBool), or a text of digits as the database keeps it ("0110":
// an element per character, True for "1"). Empty, Null and "" give Empty. Raises
// err::kTypeMismatch for other values and the conversion's error for an element that is no
// Boolean.
Variant FlagsFrom(const Variant& value);

// The value of one field as a Variant of the member's type (String, Single, Integer, Long,
// Boolean, Date, or the held Variant itself).
template <class Rec>
Variant GetField(const Rec& rec, const FieldBinding<Rec>& binding) {
  return std::visit([&](auto member) { return Variant(rec.*member); }, binding.member);
}

// Sets one field from `value`, converted by the member's type. Raises the conversion's error
// and leaves the field unchanged when the value is rejected.
template <class Rec>
void SetField(Rec& rec, const FieldBinding<Rec>& binding, const Variant& value) {
  if (binding.column.type == ColumnType::Flags) {
    // Every way into a struck-out list (a file's zero-based list, the database's digit text)
    // ends in the one shape, so saving writes every item and loading gives back the same list.
    std::visit(
        [&](auto member) {
          if constexpr (std::is_same_v<decltype(rec.*member), Variant&>) {
            rec.*member = FlagsFrom(value);
          } else {
            ConvertInto(value, rec.*member);
          }
        },
        binding.member);
    return;
  }
  std::visit([&](auto member) { ConvertInto(value, rec.*member); }, binding.member);
}

// Case-insensitive match of a column name against a property name.
bool SameFieldName(std::string_view column, std::string_view name) noexcept;

// The binding named `name` (case-insensitive), or nullptr when there is none.
template <class Rec>
const FieldBinding<Rec>* FindField(std::span<const FieldBinding<Rec>> bindings,
                                   std::string_view name) noexcept {
  for (const auto& b : bindings) {
    if (SameFieldName(b.column.name, name)) return &b;
  }
  return nullptr;
}

// The bindings of the properties `Rec` carries that no table keeps: Rec::Unstored() when the
// record declares it, else none. By-name access and comparison include them; the SQL, schema
// and load loops go over Rec::Bindings() only and never see them.
template <class Rec>
std::span<const FieldBinding<Rec>> UnstoredBindings() noexcept {
  if constexpr (requires { Rec::Unstored(); }) {
    return Rec::Unstored();
  } else {
    return {};
  }
}

// A hash of a property name that names equal under SameFieldName share.
uint64_t FieldNameHash(std::string_view name) noexcept;

// The bindings of `Rec` (its columns, then its unstored properties) by name, for lookups by
// name that run by the thousand (an import sets every property by name).
template <class Rec>
class PropertyIndex {
 public:
  PropertyIndex() {
    for (std::span<const FieldBinding<Rec>> list : {Rec::Bindings(), UnstoredBindings<Rec>()}) {
      for (const auto& b : list) {
        // The first of two bindings of one name wins, as a walk over the lists finds it.
        if (Find(b.column.name) == nullptr) Put(&b);
      }
    }
  }
  const FieldBinding<Rec>* Find(std::string_view name) const noexcept {
    if (slots_.empty()) return nullptr;
    for (size_t i = FieldNameHash(name) & (slots_.size() - 1);; i = (i + 1) & (slots_.size() - 1)) {
      const FieldBinding<Rec>* b = slots_[i];
      if (b == nullptr) return nullptr;
      if (SameFieldName(b->column.name, name)) return b;
    }
  }

 private:
  void Put(const FieldBinding<Rec>* b) {
    if ((count_ + 1) * 2 > slots_.size()) {
      std::vector<const FieldBinding<Rec>*> old(slots_.empty() ? 64 : slots_.size() * 2, nullptr);
      old.swap(slots_);
      count_ = 0;
      for (const FieldBinding<Rec>* kept : old) {
        if (kept != nullptr) Put(kept);
      }
    }
    size_t i = FieldNameHash(b->column.name) & (slots_.size() - 1);
    while (slots_[i] != nullptr) i = (i + 1) & (slots_.size() - 1);
    slots_[i] = b;
    ++count_;
  }

  std::vector<const FieldBinding<Rec>*> slots_;  // open addressing, a power of two
  size_t count_ = 0;
};

// The binding of the column or unstored property `name` (case-insensitive), or nullptr.
template <class Rec>
const FieldBinding<Rec>* FindProperty(std::string_view name) noexcept {
  static const PropertyIndex<Rec> index;
  return index.Find(name);
}

// Reads the field `name` of `rec` (a column or an unstored property); raises
// err::kNoSuchMember for an unknown name.
template <class Rec>
Variant GetByName(const Rec& rec, std::string_view name) {
  const FieldBinding<Rec>* b = FindProperty<Rec>(name);
  if (b == nullptr) throw AutomationError(err::kNoSuchMember);
  return GetField(rec, *b);
}

// Writes the field `name` of `rec` (a column or an unstored property); raises
// err::kNoSuchMember for an unknown name and the conversion's error (field unchanged) for a
// value it rejects.
template <class Rec>
void SetByName(Rec& rec, std::string_view name, const Variant& value) {
  const FieldBinding<Rec>* b = FindProperty<Rec>(name);
  if (b == nullptr) throw AutomationError(err::kNoSuchMember);
  SetField(rec, *b, value);
}

// True when two field values are the same: same type and value (Variant::SameAs, under which
// a NaN equals a NaN, so a study with a NaN still equals its copy).
bool SameValue(const Variant& a, const Variant& b);

// Appends the line "<prefix><column>: <a> vs <b>\n" describing one differing value.
void AppendDifference(std::string& out, std::string_view prefix, std::string_view column,
                      const Variant& a, const Variant& b);

// Appends one AppendDifference line per bound field (columns, then unstored properties) that
// differs between `a` and `b`, each prefixed with `prefix` (such as "Options." or
// "Yearly(3)."). Answers true when none differs.
template <class Rec>
bool AppendRecordDifferences(std::string& out, std::string_view prefix, const Rec& a,
                             const Rec& b) {
  bool same = true;
  for (auto bindings : {Rec::Bindings(), UnstoredBindings<Rec>()}) {
    for (const auto& binding : bindings) {
      Variant va = GetField(a, binding);
      Variant vb = GetField(b, binding);
      if (!SameValue(va, vb)) {
        AppendDifference(out, prefix, binding.column.name, va, vb);
        same = false;
      }
    }
  }
  return same;
}

// True when every bound field (columns and unstored properties) of `a` and `b` holds the same
// value.
template <class Rec>
bool SameRecord(const Rec& a, const Rec& b) {
  for (auto bindings : {Rec::Bindings(), UnstoredBindings<Rec>()}) {
    for (const auto& binding : bindings) {
      if (!SameValue(GetField(a, binding), GetField(b, binding))) return false;
    }
  }
  return true;
}

// Base of the group objects: late-bound GetProperty/SetProperty over the bindings of
// `Derived`, which provides `static std::span<const FieldBinding<Derived>> Bindings()` and
// may provide `Unstored()` likewise.
template <class Derived>
class RecordObject : public Object {
 public:
  // Reads the column or unstored property `name` (case-insensitive); raises
  // err::kNoSuchMember when the group has no such property.
  Variant GetProperty(std::string_view name) const override {
    return GetByName(static_cast<const Derived&>(*this), name);
  }
  // Writes the column or unstored property `name` converted to its type; raises
  // err::kNoSuchMember for an unknown name and the conversion's error, leaving the property
  // unchanged, for a rejected value.
  void SetProperty(std::string_view name, const Variant& value) override {
    SetByName(static_cast<Derived&>(*this), name, value);
  }
};

}  // namespace kwx

// Expands one entry of a column list into a typed member initialised to its zero value.
#define KWX_DECLARE_FIELD(name, type, insert_position, ...) \
  ::kwx::MemberType<::kwx::ColumnType::type> name{};

// Expands one entry of a column list into its ColumnDef.
#define KWX_COLUMN_DEF(name, type, insert_position, ...)                          \
  ::kwx::ColumnDef{#name, ::kwx::ColumnType::type, insert_position        \
                       __VA_OPT__(, ::kwx::__VA_ARGS__)},

// Expands one entry of a column list into the binding of member `name` of the record type
// that the expanding scope names `BoundRecord`.
#define KWX_BIND_FIELD(name, type, insert_position, ...)                                   \
  ::kwx::FieldBinding<BoundRecord>{                                                         \
      ::kwx::ColumnDef{#name, ::kwx::ColumnType::type, insert_position                      \
                           __VA_OPT__(, ::kwx::__VA_ARGS__)},                               \
      &BoundRecord::name},

#endif  // KWX_MODEL_RECORD_H_
