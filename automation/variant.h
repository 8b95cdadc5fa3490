// Variant: the one value type of the late-bound object model.
#ifndef KWX_AUTOMATION_VARIANT_H_
#define KWX_AUTOMATION_VARIANT_H_

#include <cstdint>
#include <iosfwd>
#include <iterator>
#include <memory>
#include <string>
#include <string_view>
#include <utility>
#include <variant>

#include "automation/object.h"
#include "automation/value_types.h"

namespace kwx {

class SafeArray;

// The tag of a Variant. The numbers are the object model's type codes; routines that take an
// "element type code" (2 = 16-bit integer, 4 = single, 7 = date, 8 = text, 11 = Boolean ...)
// use these values, so they must not change.
enum class VarType : uint16_t {
  Empty = 0,
  Null = 1,
  Integer = 2,   // 16-bit signed
  Long = 3,      // 32-bit signed
  Single = 4,    // float
  Double = 5,
  Currency = 6,
  Date = 7,
  String = 8,    // UTF-8 text
  Object = 9,
  Boolean = 11,
  Decimal = 14,
  Byte = 17,
  Array = 0x2000,  // an array of Variants, one or two dimensions
};

// A value of any VarType. Copies behave as deep copies, as values do in the object model:
// an array's elements are shared by the copies until one of them is changed through the
// non-const AsArray(), which then takes its own copy first. Objects are shared references.
// Moving is cheap.
class Variant {
 public:
  Variant() noexcept = default;  // Empty
  Variant(int16_t v) noexcept : value_(v) {}
  Variant(int32_t v) noexcept : value_(v) {}
  Variant(float v) noexcept : value_(v) {}
  Variant(double v) noexcept : value_(v) {}
  Variant(bool v) noexcept : value_(v) {}
  Variant(Date v) noexcept : value_(v) {}
  Variant(Currency v) noexcept : value_(v) {}
  Variant(Decimal v) noexcept : value_(v) {}
  Variant(std::string v) noexcept : value_(std::move(v)) {}
  Variant(std::string_view v) : value_(std::string(v)) {}
  Variant(const char* v) : value_(std::string(v ? v : "")) {}
  // A null reference makes an Object variant set to Nothing.
  Variant(ObjectRef v) noexcept : value_(std::move(v)) {}
  Variant(SafeArray v);
  static Variant Null() noexcept;
  static Variant Byte(uint8_t v) noexcept;

  Variant(const Variant& other) = default;
  Variant(Variant&& other) noexcept : value_(std::move(other.value_)) {
    other.value_.emplace<std::monostate>();
  }
  Variant& operator=(const Variant& other) = default;
  Variant& operator=(Variant&& other) noexcept {
    if (this != &other) {
      value_ = std::move(other.value_);
      other.value_.emplace<std::monostate>();
    }
    return *this;
  }
  ~Variant() = default;

  VarType type() const noexcept { return kTypes[value_.index()]; }
  bool IsEmpty() const noexcept { return type() == VarType::Empty; }
  bool IsNull() const noexcept { return type() == VarType::Null; }
  bool IsArray() const noexcept { return type() == VarType::Array; }
  bool IsObject() const noexcept { return type() == VarType::Object; }
  // True for Integer, Long, Single, Double, Currency, Decimal and Byte.
  bool IsNumberType() const noexcept;

  // Exact accessors: they return the held value and raise err::kTypeMismatch when the
  // Variant holds another type. Use the conversions (conversions.h) to convert.
  int16_t AsInteger() const;
  int32_t AsLong() const;
  float AsSingle() const;
  double AsDouble() const;
  bool AsBoolean() const;
  Date AsDate() const;
  Currency AsCurrency() const;
  Decimal AsDecimal() const;
  uint8_t AsByte() const;
  const std::string& AsString() const;
  const ObjectRef& AsObject() const;
  const SafeArray& AsArray() const;
  // The array for changing: first made this Variant's own when copies share it.
  SafeArray& AsArray();

  // The held value when it is exactly a T (int16_t, int32_t, float, double, bool, Date or
  // std::string), else nullptr: the fast path of the conversions.
  template <class T>
  const T* Peek() const noexcept {
    return std::get_if<T>(&value_);
  }

  // True when both hold an array and share its elements (one is an unchanged copy of the
  // other, or both are of a third).
  bool SharesArrayWith(const Variant& other) const noexcept {
    const auto* mine = std::get_if<ArrayBox>(&value_);
    const auto* theirs = std::get_if<ArrayBox>(&other.value_);
    return mine != nullptr && theirs != nullptr && mine->array == theirs->array;
  }

  // Structural identity: same type and same value (arrays element by element, objects by
  // reference). Not the object model's comparison, which converts (see conversions.h).
  bool SameAs(const Variant& other) const;

 private:
  struct NullTag {
    friend bool operator==(NullTag, NullTag) = default;
  };
  struct ByteBox {
    uint8_t value;
  };
  struct ArrayBox {
    std::shared_ptr<SafeArray> array;
  };
  using Storage = std::variant<std::monostate, NullTag, int16_t, int32_t, float, double, Currency,
                               Date, std::string, ObjectRef, bool, Decimal, ByteBox, ArrayBox>;
  // The type of each alternative of Storage, in its order.
  static constexpr VarType kTypes[] = {
      VarType::Empty,  VarType::Null,   VarType::Integer, VarType::Long,    VarType::Single,
      VarType::Double, VarType::Currency, VarType::Date,  VarType::String,  VarType::Object,
      VarType::Boolean, VarType::Decimal, VarType::Byte,  VarType::Array};
  static_assert(std::size(kTypes) == std::variant_size_v<Storage>);

  Storage value_;
};

// Prints a Variant for diagnostics and test messages: `Single(12.5)`, `String("abc")`,
// `Array(0 to 2){...}`.
std::ostream& operator<<(std::ostream& os, const Variant& v);

}  // namespace kwx

#endif  // KWX_AUTOMATION_VARIANT_H_
