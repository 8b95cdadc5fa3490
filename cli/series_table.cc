#include "cli/series_table.h"

#include "automation/dates.h"
#include "automation/text.h"
#include "cli/context.h"
#include "common/helpers.h"

namespace kwx::cli {
namespace {

template <class Row>
ValueTable RowsTable(const std::vector<Row>& rows) {
  ValueTable table;
  for (const auto& b : Row::Bindings()) table.columns.emplace_back(b.column.name);
  for (const Row& row : rows) {
    std::vector<Variant>& values = table.rows.emplace_back();
    for (const auto& b : Row::Bindings()) values.push_back(GetField(row, b));
  }
  return table;
}

ValueTable MonthlyTable(const Company& c) {
  ValueTable table = RowsTable(c.Monthly);
  table.columns.insert(table.columns.begin(), "Date");
  const bool dated = IsValidDate(c.datLatestMData);
  // The series is positional: element i is the month a save stores as Month i.
  for (size_t i = 0; i < table.rows.size(); ++i) {
    const Variant date =
        dated ? Variant(DateAdd("m", -static_cast<double>(i), c.datLatestMData)) : Variant();
    table.rows[i].insert(table.rows[i].begin(), date);
  }
  return table;
}

struct SeriesKind {
  const char* word;
  ValueTable (*build)(const Company&);
};

const SeriesKind kSeries[] = {
    {"yearly", [](const Company& c) { return RowsTable(c.Yearly); }},
    {"quarterly", [](const Company& c) { return RowsTable(c.Quarterly); }},
    {"monthly", &MonthlyTable},
    {"pmg", [](const Company& c) { return RowsTable(c.JudgmentPMG); }},
};

const SeriesKind& FindSeries(std::string_view word) {
  for (const SeriesKind& k : kSeries) {
    if (EqualsNoCase(word, k.word)) return k;
  }
  std::string known;
  for (const SeriesKind& k : kSeries) known.append(known.empty() ? "" : ", ").append(k.word);
  throw CommandError("'" + std::string(word) + "' names no series (" + known + ")", 2);
}

}  // namespace

std::vector<std::string> SeriesWords() {
  std::vector<std::string> words;
  for (const SeriesKind& k : kSeries) words.emplace_back(k.word);
  return words;
}

void CheckSeriesWord(std::string_view word) { FindSeries(word); }

ValueTable SeriesTable(const Company& company, std::string_view word) {
  return FindSeries(word).build(company);
}

}  // namespace kwx::cli
