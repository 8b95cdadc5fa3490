#include "json/json_values.h"

#include <charconv>
#include <cstdlib>
#include <string>

#include "automation/dates.h"
#include "automation/format.h"
#include "automation/safe_array.h"

namespace kwx {
namespace {

nlohmann::json ShortestSingle(float f) {
  char buf[32];
  auto [end, ec] = std::to_chars(buf, buf + sizeof buf, f);
  if (ec != std::errc()) return static_cast<double>(f);
  // The shortest text that reads back as this single, held as the double nearest to it.
  return std::strtod(std::string(buf, end).c_str(), nullptr);
}

std::string IsoDate(Date d) {
  std::string text = FormatDate(d, "yyyy-mm-dd");
  if (HasTime(d)) {
    char buf[16];
    std::snprintf(buf, sizeof buf, "T%02d:%02d:%02d", Hour(d), Minute(d), Second(d));
    text += buf;
  }
  return text;
}

}  // namespace

nlohmann::json ToJson(const Variant& v) {
  switch (v.type()) {
    case VarType::Empty:
    case VarType::Null:
    case VarType::Object:
      return nullptr;
    case VarType::Integer: return v.AsInteger();
    case VarType::Long: return v.AsLong();
    case VarType::Byte: return v.AsByte();
    case VarType::Single: return ShortestSingle(v.AsSingle());
    case VarType::Double: return v.AsDouble();
    case VarType::Currency: return static_cast<double>(v.AsCurrency().scaled) / 10000.0;
    case VarType::Decimal: return static_cast<double>(v.AsDecimal().value);
    case VarType::Boolean: return v.AsBoolean();
    case VarType::String: return v.AsString();
    case VarType::Date: return IsoDate(v.AsDate());
    case VarType::Array: {
      const SafeArray& a = v.AsArray();
      nlohmann::json out = nlohmann::json::array();
      if (a.dims() == 1) {
        for (const Variant& e : a.elements()) out.push_back(ToJson(e));
      } else {
        for (int32_t r = a.LBound(1); r <= a.UBound(1); ++r) {
          nlohmann::json row = nlohmann::json::array();
          for (int32_t c = a.LBound(2); c <= a.UBound(2); ++c) row.push_back(ToJson(a(r, c)));
          out.push_back(std::move(row));
        }
      }
      return out;
    }
  }
  return nullptr;
}

}  // namespace kwx
