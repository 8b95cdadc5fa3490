#include "services/series_keys_internal.h"

#include <limits>
#include <span>

#include "automation/safe_array.h"
#include "automation/text.h"
#include "automation/variant.h"
#include "model/schema.h"
#include "services/jet_dialect.h"
#include "services/schema_ddl_internal.h"

namespace kwx {
namespace {

bool IsBlank(char c) { return c == ' ' || c == '\t' || c == '\r' || c == '\n'; }

// Consumes `word` (without regard to case) and the blanks after it from the front of `s`.
bool Take(std::string_view& s, std::string_view word) {
  if (s.size() < word.size() || !EqualsNoCase(s.substr(0, word.size()), word)) return false;
  s.remove_prefix(word.size());
  while (!s.empty() && IsBlank(s.front())) s.remove_prefix(1);
  return true;
}

std::string_view Trimmed(std::string_view s) {
  while (!s.empty() && IsBlank(s.front())) s.remove_prefix(1);
  while (!s.empty() && IsBlank(s.back())) s.remove_suffix(1);
  if (s.size() >= 2 && s.front() == '"' && s.back() == '"') s = s.substr(1, s.size() - 2);
  return s;
}

// The table named at the front of `s` (taken off it), a Series table unless `any_kind`, or -1.
int TakeTable(std::string_view& s, bool any_kind = false) {
  size_t end = 0;
  while (end < s.size() && !IsBlank(s[end]) && s[end] != '(') ++end;
  const std::string_view name = Trimmed(s.substr(0, end));
  const std::span<const TableDef> tables = AllTables();
  for (size_t t = 0; t < tables.size(); ++t) {
    if ((any_kind || tables[t].kind == TableKind::Series) && EqualsNoCase(tables[t].name, name)) {
      s.remove_prefix(end);
      while (!s.empty() && IsBlank(s.front())) s.remove_prefix(1);
      return static_cast<int>(t);
    }
  }
  return -1;
}

}  // namespace

bool HasStudyBlock(int64_t company_id) {
  return company_id >= 0 &&
         company_id < std::numeric_limits<int64_t>::max() / kSeriesKeyBlock - 1;
}

bool InStudyBlock(int64_t key, int64_t company_id) {
  return HasStudyBlock(company_id) && key >= company_id * kSeriesKeyBlock &&
         key < (company_id + 1) * kSeriesKeyBlock;
}

std::optional<int64_t> SeriesKeyMemo::KeyFor(const std::optional<Known>& known, int table,
                                             const SqlParameter& company) {
  if (known && known->table == table && company.kind == SqlParameter::Kind::Integer &&
      InStudyBlock(known->key, company.integer)) {
    return known->key;
  }
  return std::nullopt;
}

void SeriesKeyMemo::Inserted(const std::optional<Known>& before, int table, int64_t company,
                             int64_t key, bool in_transaction) noexcept {
  // A hole filled may have a row right after it; a row after the block's highest has none.
  const bool filled_hole = before && !before->run && before->key == key;
  if (in_transaction && !filled_hole && InStudyBlock(key + 1, company)) {
    known_ = Known{table, key + 1, true};
  }
}

void SeriesKeyMemo::FoundNoRowAt(int table, int64_t key) noexcept {
  known_ = Known{table, key, false};
}

void SeriesKeyMemo::FoundNoRowsOf(int table, int64_t company, bool in_transaction) noexcept {
  // The study's rows of a series are the rows of its block, so its block is empty.
  if (in_transaction && HasStudyBlock(company)) {
    known_ = Known{table, company * kSeriesKeyBlock, true};
  }
}

void SeriesKeyMemo::Learn(const SeriesShape& series, const std::optional<Known>& known,
                          const std::vector<SqlParameter>& values, std::optional<int64_t> key,
                          int32_t rows, const Variant& data, bool in_transaction) {
  switch (series.role) {
    case SeriesShape::Role::kInsert:
      if (key) Inserted(known, series.table, values.front().integer, *key, in_transaction);
      break;
    case SeriesShape::Role::kKeyedUpdate:
      if (rows == 0 && values.back().kind == SqlParameter::Kind::Integer) {
        FoundNoRowAt(series.table, values.back().integer);
      }
      break;
    case SeriesShape::Role::kFirstKey:
      // One row, whose least key is Null: the study has no row in the series.
      if (values.front().kind == SqlParameter::Kind::Integer && rows == 1 && data.IsArray() &&
          data.AsArray()(0, 0).IsNull()) {
        FoundNoRowsOf(series.table, values.front().integer, in_transaction);
      }
      break;
    case SeriesShape::Role::kNone:
    case SeriesShape::Role::kRowInsert:
      break;
  }
}

std::string HighestKeySql(int table) {
  const TableDef& t = AllTables()[table];
  return "SELECT max(" + Quoted(t.key) + ") FROM " + Quoted(t.name) + " WHERE " + Quoted(t.key) +
         " BETWEEN ?1 * " + std::to_string(kSeriesKeyBlock) + " AND ?1 * " +
         std::to_string(kSeriesKeyBlock) + " + " + std::to_string(kSeriesKeyBlock - 1);
}

SeriesShape ClassifySeriesShape(std::string_view shape, size_t value_count) {
  SeriesShape result;
  std::string_view s = shape;
  while (!s.empty() && IsBlank(s.front())) s.remove_prefix(1);
  if (Take(s, "insert") && Take(s, "into")) {
    const int table = TakeTable(s, /*any_kind=*/true);
    if (table < 0 || s.empty() || s.front() != '(') return result;
    const size_t close = s.find(')');
    if (close == std::string_view::npos) return result;
    const bool series = AllTables()[table].kind == TableKind::Series;
    const std::string_view columns = s.substr(1, close - 1);
    const std::string_view company = GetTable(TableId::Company).key;
    if (series && !EqualsNoCase(Trimmed(columns.substr(0, columns.find(','))), company)) {
      return result;
    }
    std::string_view values = s.substr(close + 1);
    while (!values.empty() && IsBlank(values.front())) values.remove_prefix(1);
    if (!Take(values, "select")) return result;
    // Every value lifted, the company's first: then the row's key can follow as one more.
    size_t marks = 0;
    for (char c : values) {
      if (c == '?') {
        ++marks;
      } else if (c != ',' && c != '-' && c != '+' && !IsBlank(c)) {
        return result;
      }
    }
    if (marks != value_count || values.empty() || (series && values.front() != '?')) {
      return result;
    }
    // Compiled as a row of values, which stores the same row: SQLite writes the rows of an
    // insert's select into a temporary table first when the table has a row trigger, as
    // series tables do, and runs an insert by select under a statement journal of its own.
    const std::string head(shape.substr(0, shape.size() - s.size() + close));
    result.table = table;
    if (series) {
      result.role = SeriesShape::Role::kInsert;
      result.compiled =
          head + "," + Quoted(AllTables()[table].key) + ") values (" + std::string(values) + ",?)";
    } else {
      result.role = SeriesShape::Role::kRowInsert;
      result.compiled = head + ") values (" + std::string(values) + ")";
    }
    return result;
  }
  s = shape;
  while (!s.empty() && IsBlank(s.front())) s.remove_prefix(1);
  if (Take(s, "select") && value_count == 1 && Take(s, "min(")) {
    // "select min(KEY) from T where CompanyID = ?"
    const size_t close = s.find(')');
    if (close == std::string_view::npos) return result;
    const std::string_view key = Trimmed(s.substr(0, close));
    s.remove_prefix(close + 1);
    while (!s.empty() && IsBlank(s.front())) s.remove_prefix(1);
    if (!Take(s, "from")) return result;
    const int table = TakeTable(s);
    if (table < 0 || !EqualsNoCase(key, AllTables()[table].key) || !Take(s, "where")) {
      return result;
    }
    const size_t equals = s.find('=');
    if (equals == std::string_view::npos ||
        !EqualsNoCase(Trimmed(s.substr(0, equals)), GetTable(TableId::Company).key) ||
        Trimmed(s.substr(equals + 1)) != "?") {
      return result;
    }
    result.role = SeriesShape::Role::kFirstKey;
    result.table = table;
    return result;
  }
  s = shape;
  while (!s.empty() && IsBlank(s.front())) s.remove_prefix(1);
  if (Take(s, "update")) {
    const int table = TakeTable(s);
    if (table < 0 || !Take(s, "set")) return result;
    // "... where KEY = ?" at the end, the key the last value.
    const size_t where = FindNoCase(s, " where ");
    if (where == std::string_view::npos || value_count == 0) return result;
    size_t last = where;
    for (size_t next = FindNoCase(s, " where ", last + 1); next != std::string_view::npos;
         next = FindNoCase(s, " where ", next + 1)) {
      last = next;
    }
    std::string_view condition = s.substr(last + 7);
    const size_t equals = condition.find('=');
    if (equals == std::string_view::npos ||
        !EqualsNoCase(Trimmed(condition.substr(0, equals)), AllTables()[table].key) ||
        Trimmed(condition.substr(equals + 1)) != "?") {
      return result;
    }
    result.role = SeriesShape::Role::kKeyedUpdate;
    result.table = table;
  }
  return result;
}

}  // namespace kwx
