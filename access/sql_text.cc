#include "access/sql_text.h"

#include <charconv>

#include "automation/conversions.h"
#include "automation/errors.h"
#include "automation/format.h"
#include "automation/safe_array.h"
#include "automation/text.h"

namespace kwx {
namespace {

// The character that stands for an apostrophe inside stored text.
const std::string& Substitute() {
  static const std::string kSubstitute = ChrW(255);
  return kSubstitute;
}

// The number an ID entry stands for: numbers as they are, anything else by its leading
// number, so a cached "12abc" is row 12.
double NumericValue(const Variant& v) {
  if (v.IsNumberType() || v.type() == VarType::Boolean || v.type() == VarType::Date ||
      v.IsEmpty()) {
    return CDbl(v);
  }
  return Val(CStr(v));
}

bool BothArrays(const Variant& a, const Variant& b) { return a.IsArray() && b.IsArray(); }

}  // namespace

void AppendSqlText(std::string& out, std::string_view text) {
  // QuoteSQLText with the apostrophe after the substitution, composed in place: trimming
  // blanks and replacing apostrophes do not interfere, as the substitute is no blank.
  const size_t first = text.find_first_not_of(' ');
  text = first == std::string_view::npos
             ? std::string_view()
             : text.substr(first, text.find_last_not_of(' ') - first + 1);
  out.reserve(out.size() + text.size() + 2);
  out.push_back('\'');
  for (size_t at = 0;;) {
    const size_t apostrophe = text.find('\'', at);
    out.append(text.substr(at, apostrophe - at));
    if (apostrophe == std::string_view::npos) break;
    out.append(Substitute());
    at = apostrophe + 1;
  }
  out.push_back('\'');
}

std::string SqlText(const Variant& value) {
  std::string out;
  AppendSqlValue(out, value, ColumnType::Text);
  return out;
}

std::string SqlKeyText(const Variant& key) {
  std::string text = CStr(key);
  // sign? digits (. digits?)? (e sign? digits)?
  size_t i = 0;
  auto sign = [&] {
    if (i < text.size() && (text[i] == '-' || text[i] == '+')) ++i;
  };
  auto digits = [&] {
    const size_t from = i;
    while (i < text.size() && text[i] >= '0' && text[i] <= '9') ++i;
    return i > from;
  };
  sign();
  bool number = digits();
  if (number && i < text.size() && text[i] == '.') {
    ++i;
    digits();
  }
  if (number && i < text.size() && (text[i] == 'e' || text[i] == 'E')) {
    ++i;
    sign();
    number = digits();
  }
  if (text.empty() || (number && i == text.size())) return text;
  return std::string(1, kUnwritableValueMark) + text;
}

std::string SqlBoolean(const Variant& value) { return CBool(value) ? "True" : "False"; }

std::string SqlInteger(const Variant& value) { return std::to_string(CInt(value)); }

std::string SqlLong(const Variant& value) { return std::to_string(CLng(value)); }

std::string SqlSingle(const Variant& value) { return NumberText(CSng(value)); }

std::string SqlDouble(const Variant& value) { return NumberText(CDbl(value)); }

std::string FlagsText(const Variant& flags) {
  if (!flags.IsArray()) return {};
  const SafeArray& a = flags.AsArray();
  std::string out;
  // Element 0 is not part of the list; the struck-out items are numbered from 1.
  for (int32_t i = 1; i <= a.UBound(); ++i) out += CBool(a(i)) ? '1' : '0';
  return out;
}

std::string SqlFlags(const Variant& flags) {
  std::string out;
  AppendSqlText(out, FlagsText(flags));
  return out;
}

void AppendSqlInteger(std::string& out, int64_t value) {
  char digits[24];
  const auto written = std::to_chars(digits, digits + sizeof digits, value);
  out.append(digits, written.ptr);
}

void AppendSqlValue(std::string& out, const Variant& value, ColumnType type) {
  switch (type) {
    case ColumnType::Text:
    case ColumnType::Date:
    case ColumnType::Variant:
      break;
    case ColumnType::Flags:
      AppendSqlText(out, FlagsText(value));
      return;
    case ColumnType::Single:
      out.append(NumberText(CSng(value)));
      return;
    case ColumnType::Integer:
      AppendSqlInteger(out, CInt(value));
      return;
    case ColumnType::Long:
    case ColumnType::Reference:
      AppendSqlInteger(out, CLng(value));
      return;
    case ColumnType::Boolean:
      out.append(CBool(value) ? "True" : "False");
      return;
  }
  switch (value.type()) {
    case VarType::String:
      AppendSqlText(out, value.AsString());
      return;
    case VarType::Date: {
      // A date outside the formatter's calendar has no short form; it is written like any
      // other value the writer cannot take.
      std::string text;
      if (!ResumeNext([&] { text = Format(value, "Short Date"); })) text.clear();
      AppendSqlText(out, text);
      return;
    }
    default:
      out.append("''");
      return;
  }
}

std::string SqlValue(const Variant& value, ColumnType type) {
  std::string out;
  AppendSqlValue(out, value, type);
  return out;
}

std::string TextFromSql(const Variant& value) {
  if (value.IsNull() || value.IsEmpty()) return {};
  std::string text = CStr(value);
  ReplaceText(text, Substitute(), "'");
  return text;
}

Variant FieldValue(std::string_view name, const Variant& fields, const Variant& data, int32_t row) {
  if (!fields.IsArray()) return Variant();
  const SafeArray& names = fields.AsArray();
  for (int32_t i = names.LBound(); i <= names.UBound(); ++i) {
    const Variant& field = names(i);
    if (field.type() == VarType::String && EqualsNoCase(field.AsString(), name)) {
      if (!data.IsArray()) throw AutomationError(err::kTypeMismatch);
      return data.AsArray()(row, i);
    }
  }
  return Variant();
}

std::string NameOfIdSql(std::string_view name_field, std::string_view table,
                        std::string_view id_field, int32_t id) {
  std::string sql = "select ";
  sql.append(name_field).append("  from ").append(table).append(" where ").append(id_field);
  sql.append("=").append(std::to_string(id)).append(";");
  return sql;
}

std::string IdOfNameSql(std::string_view id_field, std::string_view table,
                        std::string_view name_field, std::string_view quoted_name) {
  std::string sql = "select ";
  sql.append(id_field).append("  from ").append(table).append(" where ").append(name_field);
  sql.append("=").append(quoted_name);
  return sql;
}

std::string LoadTableSql(std::string_view table) {
  return std::string("select * from ").append(table);
}

std::string DeleteRowsSql(std::string_view table, std::string_view field, std::string_view value) {
  std::string sql = "Delete * From ";
  sql.append(table).append(" Where ").append(field).append("=").append(value).append(";");
  return sql;
}

std::string UpdateFieldSql(std::string_view table, std::string_view field,
                           std::string_view quoted_value, std::string_view key_field,
                           std::string_view key) {
  std::string sql = "Update ";
  sql.append(table).append("   set ").append(field).append("=").append(quoted_value);
  sql.append(" Where ").append(key_field).append("=").append(key).append(";");
  return sql;
}

std::string InsertRowSql(std::string_view table, std::string_view field,
                         std::string_view quoted_value) {
  std::string sql = "Insert into ";
  sql.append(table).append("(").append(field).append(")").append("     select ");
  sql.append(quoted_value).append(";");
  return sql;
}

std::string DeleteWhereSql(std::string_view table, std::span<const std::string> conditions) {
  std::string where;
  for (const std::string& condition : conditions) {
    if (condition.empty()) continue;
    if (!where.empty()) where += " and ";
    where += condition;
  }
  std::string sql = "delete * from ";
  sql.append(table);
  if (!where.empty()) sql.append(" where ").append(where);
  return sql;
}

std::string LookupNameByID(int32_t id, std::string_view id_field, std::string_view name_field,
                           std::string_view table, const Variant& ids, const Variant& names,
                           IDatabase& db) {
  // A failed lookup reads as "no name"; the callers then add or rename as needed.
  try {
    if (!BothArrays(ids, names)) {
      Variant fields, data;
      if (!db.blnExecute(NameOfIdSql(name_field, table, id_field, id), fields, data)) return {};
      if (!BothArrays(fields, data)) return {};
      return CStr(data.AsArray()(0, 0));
    }
    const SafeArray& id_cache = ids.AsArray();
    for (int32_t i = id_cache.LBound(); i <= id_cache.UBound(); ++i) {
      if (Val(CStr(id_cache(i))) == static_cast<double>(id)) return CStr(names.AsArray()(i));
    }
  } catch (...) {
  }
  return {};
}

int32_t LookupIDByName(std::string_view name, std::string_view id_field,
                       std::string_view name_field, std::string_view table, const Variant& ids,
                       const Variant& names, IDatabase& db) {
  // A failed lookup reads as "not found"; the callers then add the name.
  try {
    if (BothArrays(ids, names)) {
      const SafeArray& name_cache = names.AsArray();
      const Variant wanted(name);
      for (int32_t i = name_cache.LBound(); i <= name_cache.UBound(); ++i) {
        if (Equals(name_cache(i), wanted, /*text_compare=*/true)) {
          return CLng(Variant(NumericValue(ids.AsArray()(i))));
        }
      }
      return 0;
    }
    Variant fields, data;
    const std::string sql = IdOfNameSql(id_field, table, name_field, QuoteSQLText(name, '\''));
    if (!db.blnExecute(sql, fields, data)) return 0;
    if (!data.IsArray()) return 0;
    return CLng(Variant(NumericValue(data.AsArray()(0, 0))));
  } catch (...) {
  }
  return 0;
}

}  // namespace kwx
