#include "cli/table_output.h"

#include <fmt/format.h>

#include <algorithm>
#include <charconv>
#include <cmath>

#include "access/sql_text.h"
#include "automation/conversions.h"
#include "automation/safe_array.h"
#include "cli/context.h"
#include "cli/error_reports.h"
#include "json/json_values.h"

namespace kwx::cli {
namespace {

// Characters, not bytes: a UTF-8 continuation byte does not start one. A stored byte that is
// not UTF-8 counts as one character, as a terminal shows it as one replacement sign.
size_t Width(std::string_view text) {
  return static_cast<size_t>(std::count_if(text.begin(), text.end(), [](char c) {
    return (static_cast<unsigned char>(c) & 0xC0) != 0x80;
  }));
}

void Pad(fmt::memory_buffer& line, size_t n) {
  for (size_t i = 0; i < n; ++i) line.push_back(' ');
}

// A value's line breaks and tabs would break the table's lines and columns: each shows as a
// blank.
std::string OneLine(std::string text) {
  std::replace_if(
      text.begin(), text.end(), [](char c) { return c == '\n' || c == '\r' || c == '\t'; }, ' ');
  return text;
}

bool IsWholeNumber(const Variant& v) {
  const VarType t = v.type();
  return t == VarType::Integer || t == VarType::Long || t == VarType::Byte;
}

bool IsNeverSetDate(const Variant& v) {
  return v.type() == VarType::Date && v.AsDate().serial == 0;
}

}  // namespace

TextTable::TextTable(std::vector<Column> columns) : columns_(std::move(columns)) {}

void TextTable::AddRow(std::vector<std::string> cells) {
  std::vector<TableCell> row;
  row.reserve(cells.size());
  for (size_t i = 0; i < cells.size() && i < columns_.size(); ++i) {
    row.push_back({OneLine(std::move(cells[i])), columns_[i].align});
  }
  rows_.push_back(std::move(row));
}

void TextTable::AddCells(std::vector<TableCell> cells) {
  if (cells.size() > columns_.size()) cells.resize(columns_.size());
  for (TableCell& cell : cells) cell.text = OneLine(std::move(cell.text));
  rows_.push_back(std::move(cells));
}

void TextTable::Print(std::ostream& out) const {
  std::vector<size_t> widths(columns_.size());
  for (size_t c = 0; c < columns_.size(); ++c) widths[c] = Width(columns_[c].header);
  for (const auto& row : rows_) {
    for (size_t c = 0; c < row.size(); ++c) widths[c] = std::max(widths[c], Width(row[c].text));
  }
  auto print_line = [&](auto cell_of) {
    fmt::memory_buffer line;
    for (size_t c = 0; c < columns_.size(); ++c) {
      const TableCell cell = cell_of(c);
      const size_t gap = widths[c] - Width(cell.text);
      if (c > 0) Pad(line, 2);
      if (cell.align == Align::kRight) Pad(line, gap);
      line.append(cell.text);
      if (cell.align == Align::kLeft) Pad(line, gap);
    }
    // Blanks that only pad the last columns end no line.
    size_t end = line.size();
    while (end > 0 && line[end - 1] == ' ') --end;
    out.write(line.data(), static_cast<std::streamsize>(end));
    out << '\n';
  };
  print_line([&](size_t c) { return TableCell{columns_[c].header, columns_[c].align}; });
  print_line([&](size_t c) { return TableCell{std::string(widths[c], '-'), Align::kLeft}; });
  for (const auto& row : rows_) {
    print_line([&](size_t c) { return c < row.size() ? row[c] : TableCell{}; });
  }
}

ValueTable RowSetTable(const Variant& fields, const Variant& data) {
  ValueTable table;
  if (fields.IsArray()) {
    for (const Variant& name : fields.AsArray().elements()) {
      table.columns.push_back(name.type() == VarType::String ? name.AsString() : CsvText(name));
    }
  }
  if (!data.IsArray()) return table;
  const SafeArray& rows = data.AsArray();
  for (int32_t r = rows.LBound(1); r <= rows.UBound(1); ++r) {
    std::vector<Variant>& row = table.rows.emplace_back();
    for (int32_t c = rows.LBound(2); c <= rows.UBound(2); ++c) row.push_back(rows(r, c));
  }
  return table;
}

ValueTable QueryList(Context& ctx, const char* sql, std::string_view what) {
  kwxLoader& loader = ctx.OpenLoader();
  Variant data;
  Variant fields;
  loader.Access_GetCompanies(sql, data, fields);
  PrintErrorReports(loader, *ctx.err);
  if (!fields.IsArray()) throw CommandError("cannot read the " + std::string(what));
  ValueTable table = RowSetTable(fields, data);
  for (auto& row : table.rows) {
    for (Variant& v : row) {
      if (v.type() == VarType::String) v = Variant(TextFromSql(v));
    }
  }
  return table;
}

void PrintAligned(std::ostream& out, const ValueTable& table,
                  const std::vector<std::string>& headers) {
  // A column keeps to the right when its values are numbers.
  std::vector<TextTable::Column> columns;
  for (size_t c = 0; c < table.columns.size(); ++c) {
    const bool numbers = std::any_of(table.rows.begin(), table.rows.end(), [&](const auto& row) {
      return c < row.size() && row[c].IsNumberType();
    });
    columns.push_back({c < headers.size() ? headers[c] : table.columns[c],
                       numbers ? Align::kRight : Align::kLeft});
  }
  TextTable text(std::move(columns));
  for (const auto& row : table.rows) {
    std::vector<TableCell> cells;
    for (const Variant& v : row) {
      cells.push_back({DisplayText(v), v.IsNumberType() ? Align::kRight : Align::kLeft});
    }
    text.AddCells(std::move(cells));
  }
  text.Print(out);
}

std::string CsvField(std::string_view text) {
  const bool quote = text.find_first_of(",\"\r\n") != std::string_view::npos ||
                     (!text.empty() && (text.front() == ' ' || text.back() == ' '));
  if (!quote) return std::string(text);
  std::string out = "\"";
  for (char c : text) {
    if (c == '"') out += '"';
    out += c;
  }
  out += '"';
  return out;
}

void PrintCsv(std::ostream& out, const ValueTable& table) {
  auto record = [&](const auto& fields, auto text_of) {
    bool first = true;
    for (const auto& f : fields) {
      out << (first ? "" : ",") << CsvField(text_of(f));
      first = false;
    }
    out << "\r\n";
  };
  record(table.columns, [](const std::string& name) { return name; });
  for (const auto& row : table.rows) record(row, CsvText);
}

nlohmann::json JsonRows(const ValueTable& table) {
  nlohmann::json rows = nlohmann::json::array();
  for (const auto& row : table.rows) {
    nlohmann::json item = nlohmann::json::object();
    for (size_t c = 0; c < table.columns.size() && c < row.size(); ++c) {
      item[table.columns[c]] = ToJson(row[c]);
    }
    rows.push_back(std::move(item));
  }
  return rows;
}

std::string Grouped(double value) {
  if (!std::isfinite(value)) return fmt::format("{}", value);
  std::string text = fmt::format("{:.2f}", value);
  if (text == "-0.00") text = "0.00";
  const size_t begin = text.front() == '-' ? 1 : 0;
  const size_t point = text.find('.');
  for (size_t i = point; i > begin + 3; i -= 3) text.insert(i - 3, 1, ',');
  return text;
}

std::string Percent(double value) { return fmt::format("{:.1f}%", value); }

std::string Ratio(double value) { return fmt::format("{:.1f}", value); }

std::string DisplayText(const Variant& v) {
  if (v.IsEmpty() || v.IsNull() || v.IsArray() || v.IsObject() || IsNeverSetDate(v)) return "";
  if (IsWholeNumber(v)) return CStr(v);
  if (v.IsNumberType()) return Grouped(CDbl(v));
  if (v.type() == VarType::Date) return ToJson(v).get<std::string>();
  return CStr(v);
}

std::string CsvText(const Variant& v) {
  if (v.IsEmpty() || v.IsNull() || v.IsArray() || v.IsObject() || IsNeverSetDate(v)) return "";
  if (v.type() == VarType::String) return v.AsString();
  const nlohmann::json j = ToJson(v);
  if (j.is_number_float()) {
    // The shortest text that reads back as the value: 100 rather than JSON's 100.0.
    char buf[32];
    const auto [end, ec] = std::to_chars(buf, buf + sizeof buf, j.get<double>());
    if (ec == std::errc()) return std::string(buf, end);
  }
  return j.is_string() ? j.get<std::string>() : j.dump();
}

}  // namespace kwx::cli
