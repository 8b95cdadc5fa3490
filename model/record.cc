#include "model/record.h"

#include <sstream>

#include "automation/conversions.h"
#include "automation/safe_array.h"
#include "automation/text.h"

namespace kwx {

// Each conversion finishes before the assignment, so a rejected value leaves the member as it
// was.
void ConvertOtherInto(const Variant& value, std::string& out) { out = CStr(value); }
void ConvertOtherInto(const Variant& value, float& out) { out = CSng(value); }
void ConvertOtherInto(const Variant& value, int16_t& out) { out = CInt(value); }
void ConvertOtherInto(const Variant& value, int32_t& out) { out = CLng(value); }
void ConvertOtherInto(const Variant& value, bool& out) { out = CBool(value); }
void ConvertOtherInto(const Variant& value, Date& out) { out = CDate(value); }

Variant FlagsFrom(const Variant& value) {
  switch (value.type()) {
    case VarType::Empty:
    case VarType::Null:
      return Variant();
    case VarType::String: {
      const std::string& text = value.AsString();
      if (text.empty()) return Variant();
      const auto count = static_cast<int32_t>(Len(text));
      SafeArray flags = SafeArray::Vector(1, count);
      // With one byte per character (the digit texts the database keeps) the characters are
      // read in place.
      const bool bytes = static_cast<size_t>(count) == text.size();
      for (int32_t k = 1; k <= count; ++k) {
        const auto at = static_cast<size_t>(k);
        flags(k) = Variant(bytes ? text[at - 1] == '1' : Mid(text, at, 1) == "1");
      }
      return Variant(std::move(flags));
    }
    case VarType::Array: {
      const SafeArray& items = value.AsArray();
      if (items.dims() != 1) throw AutomationError(err::kTypeMismatch);
      SafeArray flags = SafeArray::Vector(1, items.Count());
      for (int32_t k = 0; k < items.Count(); ++k) {
        flags(k + 1) = Variant(CBool(items(items.LBound() + k)));
      }
      return Variant(std::move(flags));
    }
    default:
      throw AutomationError(err::kTypeMismatch);
  }
}

uint64_t FieldNameHash(std::string_view name) noexcept {
  // FNV-1a over the names folded as SameFieldName folds them (ASCII letters).
  uint64_t hash = 0xcbf29ce484222325ull;
  for (char c : name) {
    if (c >= 'A' && c <= 'Z') c = static_cast<char>(c - 'A' + 'a');
    hash = (hash ^ static_cast<unsigned char>(c)) * 0x100000001b3ull;
  }
  return hash ^ (hash >> 29);
}

bool SameFieldName(std::string_view column, std::string_view name) noexcept {
  // Column names are ASCII, so a byte-wise ASCII fold is exact and cannot throw.
  if (column.size() != name.size()) return false;
  for (size_t i = 0; i < column.size(); ++i) {
    char a = column[i];
    char b = name[i];
    if (a >= 'A' && a <= 'Z') a = static_cast<char>(a - 'A' + 'a');
    if (b >= 'A' && b <= 'Z') b = static_cast<char>(b - 'A' + 'a');
    if (a != b) return false;
  }
  return true;
}

bool SameValue(const Variant& a, const Variant& b) { return a.SameAs(b); }

void AppendDifference(std::string& out, std::string_view prefix, std::string_view column,
                      const Variant& a, const Variant& b) {
  std::ostringstream line;
  line << prefix << column << ": " << a << " vs " << b << "\n";
  out += line.str();
}

}  // namespace kwx
