#include "automation/variant.h"

#include <ostream>
#include <utility>

#include "automation/errors.h"
#include "automation/safe_array.h"

namespace kwx {

Variant::Variant(SafeArray v) : value_(ArrayBox{std::make_shared<SafeArray>(std::move(v))}) {}

Variant Variant::Null() noexcept {
  Variant v;
  v.value_ = NullTag{};
  return v;
}

Variant Variant::Byte(uint8_t b) noexcept {
  Variant v;
  v.value_ = ByteBox{b};
  return v;
}

bool Variant::IsNumberType() const noexcept {
  switch (type()) {
    case VarType::Integer:
    case VarType::Long:
    case VarType::Single:
    case VarType::Double:
    case VarType::Currency:
    case VarType::Decimal:
    case VarType::Byte:
      return true;
    default:
      return false;
  }
}

namespace {
template <class T, class S>
const T& Get(const S& storage) {
  if (auto* p = std::get_if<T>(&storage)) return *p;
  throw AutomationError(err::kTypeMismatch);
}
}  // namespace

int16_t Variant::AsInteger() const { return Get<int16_t>(value_); }
int32_t Variant::AsLong() const { return Get<int32_t>(value_); }
float Variant::AsSingle() const { return Get<float>(value_); }
double Variant::AsDouble() const { return Get<double>(value_); }
bool Variant::AsBoolean() const { return Get<bool>(value_); }
Date Variant::AsDate() const { return Get<Date>(value_); }
Currency Variant::AsCurrency() const { return Get<Currency>(value_); }
Decimal Variant::AsDecimal() const { return Get<Decimal>(value_); }
uint8_t Variant::AsByte() const { return Get<ByteBox>(value_).value; }
const std::string& Variant::AsString() const { return Get<std::string>(value_); }
const ObjectRef& Variant::AsObject() const { return Get<ObjectRef>(value_); }
const SafeArray& Variant::AsArray() const { return *Get<ArrayBox>(value_).array; }
SafeArray& Variant::AsArray() {
  auto* box = std::get_if<ArrayBox>(&value_);
  if (box == nullptr) throw AutomationError(err::kTypeMismatch);
  if (box->array.use_count() > 1) box->array = std::make_shared<SafeArray>(*box->array);
  return *box->array;
}

bool Variant::SameAs(const Variant& other) const {
  if (value_.index() != other.value_.index()) return false;
  return std::visit(
      [&](const auto& x) -> bool {
        using T = std::decay_t<decltype(x)>;
        const T& y = std::get<T>(other.value_);
        if constexpr (std::is_same_v<T, std::monostate>) {
          return true;
        } else if constexpr (std::is_same_v<T, ByteBox>) {
          return x.value == y.value;
        } else if constexpr (std::is_same_v<T, ArrayBox>) {
          const SafeArray& a = *x.array;
          const SafeArray& b = *y.array;
          if (a.dims() != b.dims()) return false;
          for (int d = 1; d <= a.dims(); ++d) {
            if (a.LBound(d) != b.LBound(d) || a.Count(d) != b.Count(d)) return false;
          }
          for (size_t k = 0; k < a.elements().size(); ++k) {
            if (!a.elements()[k].SameAs(b.elements()[k])) return false;
          }
          return true;
        } else if constexpr (std::is_same_v<T, float> || std::is_same_v<T, double>) {
          return x == y || (x != x && y != y);  // NaN is the same as NaN here
        } else {
          return x == y;
        }
      },
      value_);
}

std::ostream& operator<<(std::ostream& os, const Variant& v) {
  switch (v.type()) {
    case VarType::Empty: return os << "Empty";
    case VarType::Null: return os << "Null";
    case VarType::Integer: return os << "Integer(" << v.AsInteger() << ")";
    case VarType::Long: return os << "Long(" << v.AsLong() << ")";
    case VarType::Single: return os << "Single(" << v.AsSingle() << ")";
    case VarType::Double: return os << "Double(" << v.AsDouble() << ")";
    case VarType::Currency: return os << "Currency(" << v.AsCurrency().scaled << "e-4)";
    case VarType::Date: return os << "Date(" << v.AsDate().serial << ")";
    case VarType::String: return os << "String(\"" << v.AsString() << "\")";
    case VarType::Object: return os << (v.AsObject() ? "Object" : "Nothing");
    case VarType::Boolean: return os << (v.AsBoolean() ? "True" : "False");
    case VarType::Decimal: return os << "Decimal(" << static_cast<double>(v.AsDecimal().value) << ")";
    case VarType::Byte: return os << "Byte(" << static_cast<int>(v.AsByte()) << ")";
    case VarType::Array: {
      const SafeArray& a = v.AsArray();
      os << "Array(";
      for (int d = 1; d <= a.dims(); ++d) {
        if (d > 1) os << ", ";
        os << a.LBound(d) << " to " << a.UBound(d);
      }
      os << "){";
      for (size_t k = 0; k < a.elements().size(); ++k) {
        if (k) os << ", ";
        os << a.elements()[k];
      }
      return os << "}";
    }
  }
  return os;
}

}  // namespace kwx
