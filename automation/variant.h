// Variant: the one value type of the late-bound object model.
#ifndef KWX_AUTOMATION_VARIANT_H_
#define KWX_AUTOMATION_VARIANT_H_

#include <cstdint>
#include <iosfwd>
#include <memory>
#include <string>
#include <string_view>
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

// A value of any VarType. Copies are deep (an array is copied with its elements), as values
// are in the object model; objects are shared references. Moving is cheap.
class Variant {
 public:
  Variant() noexcept;  // Empty
  Variant(int16_t v) noexcept;
  Variant(int32_t v) noexcept;
  Variant(float v) noexcept;
  Variant(double v) noexcept;
  Variant(bool v) noexcept;
  Variant(Date v) noexcept;
  Variant(Currency v) noexcept;
  Variant(Decimal v) noexcept;
  Variant(std::string v) noexcept;
  Variant(std::string_view v);
  Variant(const char* v);
  Variant(ObjectRef v) noexcept;  // a null reference makes an Object variant set to Nothing
  Variant(SafeArray v);
  static Variant Null() noexcept;
  static Variant Byte(uint8_t v) noexcept;

  Variant(const Variant& other);
  Variant(Variant&& other) noexcept;
  Variant& operator=(const Variant& other);
  Variant& operator=(Variant&& other) noexcept;
  ~Variant();

  VarType type() const noexcept;
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
  SafeArray& AsArray();

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
    std::unique_ptr<SafeArray> array;
  };
  using Storage = std::variant<std::monostate, NullTag, int16_t, int32_t, float, double, Currency,
                               Date, std::string, ObjectRef, bool, Decimal, ByteBox, ArrayBox>;
  Storage value_;
};

// Prints a Variant for diagnostics and test messages: `Single(12.5)`, `String("abc")`,
// `Array(0 to 2){...}`.
std::ostream& operator<<(std::ostream& os, const Variant& v);

}  // namespace kwx

#endif  // KWX_AUTOMATION_VARIANT_H_
