// Tables as the commands print them: aligned columns for a person at a terminal, and CSV
// (RFC 4180) for a spreadsheet or a script.
//
// Rounding in the aligned form, the same in every command:
//   whole numbers (IDs, years, quarters, counts)  as they are              2023
//   other numbers (prices, money, per-share)      two decimals, grouped    1,234,567.50
//   percentages (growth, yield, return)           one decimal and "%"      12.5%
//   ratios (P/E, up/down)                         one decimal              18.2
//   dates                                         ISO, a date never set blank
// The CSV form rounds nothing: numbers by their shortest exact text, dates ISO.
#ifndef KWX_CLI_TABLE_OUTPUT_H_
#define KWX_CLI_TABLE_OUTPUT_H_

#include <nlohmann/json.hpp>
#include <ostream>
#include <string>
#include <string_view>
#include <vector>

#include "automation/variant.h"

namespace kwx::cli {

struct Context;

enum class Align { kLeft, kRight };

// One cell of a TextTable: its text and which side it keeps to.
struct TableCell {
  std::string text;
  Align align = Align::kLeft;
};

// Columns of text cells printed aligned: each column as wide as its widest cell (counted in
// characters, UTF-8 aware), two blanks between columns, a header line and a rule of dashes
// under it, no blanks at the end of a line. A line break or tab inside a cell shows as a blank.
class TextTable {
 public:
  // One column per header. A header keeps to the side of its column's `align`.
  struct Column {
    std::string header;
    Align align = Align::kLeft;
  };
  explicit TextTable(std::vector<Column> columns);

  // Appends a row of plain texts, each aligned as its column says. Missing cells print blank;
  // cells beyond the columns are dropped.
  void AddRow(std::vector<std::string> cells);
  // Appends a row of cells that carry their own alignment.
  void AddCells(std::vector<TableCell> cells);

  // Prints the header, the rule and the rows. A table with no rows still prints its header.
  void Print(std::ostream& out) const;

 private:
  std::vector<Column> columns_;
  std::vector<std::vector<TableCell>> rows_;
};

// A grid of values under named columns: what `list`, `sql` and `series` print in each form.
struct ValueTable {
  std::vector<std::string> columns;
  // Each row holds one value per column.
  std::vector<std::vector<Variant>> rows;
};

// A row set as the database object answers it (a 1-D array of field names, a 2-D array of
// values by row and column) as a table, values as given; no rows when `data` is no array.
ValueTable RowSetTable(const Variant& fields, const Variant& data);

// Runs the listing query `sql` through the loader of `ctx` (Access_GetCompanies), prints the
// loader's error reports on ctx.err and answers the rows, stored texts turned back into what
// the user wrote (TextFromSql). Raises CommandError "cannot read the <what>" when the query
// answers no field names.
ValueTable QueryList(Context& ctx, const char* sql, std::string_view what);

// Prints `table` aligned (TextTable), each value by DisplayText, numbers to the right; the
// headers are `headers` when given (one per column), else the column names.
void PrintAligned(std::ostream& out, const ValueTable& table,
                  const std::vector<std::string>& headers = {});

// Writes `table` as CSV: a header row of the column names, then one record per row, values by
// CsvText; lines end in CRLF as RFC 4180 asks.
void PrintCsv(std::ostream& out, const ValueTable& table);

// The rows of `table` as a JSON array of objects, each value under its column name by ToJson.
nlohmann::json JsonRows(const ValueTable& table);

// One CSV field: the text as it is, or in double quotes (inner quotes doubled) when it holds a
// comma, a double quote, a line break or a blank at either end.
std::string CsvField(std::string_view text);

// A value as the aligned tables show it (see the rounding table at the top); Empty, Null,
// arrays and objects blank.
std::string DisplayText(const Variant& v);

// A value as a CSV field's text: numbers by their shortest exact text, dates ISO
// ("yyyy-mm-dd", with "Thh:mm:ss" when there is a time), Booleans true/false; Empty, Null, a
// date never set, arrays and objects empty.
std::string CsvText(const Variant& v);

// A number with two decimals and thousands separators: "1,234.50", "-0.25".
std::string Grouped(double value);
// A percentage with one decimal: "12.5%".
std::string Percent(double value);
// A ratio with one decimal: "18.2".
std::string Ratio(double value);

}  // namespace kwx::cli

#endif  // KWX_CLI_TABLE_OUTPUT_H_
