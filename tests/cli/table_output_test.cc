#include "cli/table_output.h"

#include <gtest/gtest.h>

#include <sstream>
#include <string>

#include "automation/dates.h"

namespace kwx::cli {
namespace {

// One rounding for every table, and CSV fields a reader takes back as they were.
TEST(TableOutput, RoundsGroupsAndQuotesAsDocumented) {
  const struct {
    Variant value;
    const char* shown;
    const char* csv;
  } values[] = {
      {Variant(1234567.5f), "1,234,567.50", "1234567.5"},
      {Variant(-1234.5), "-1,234.50", "-1234.5"},
      {Variant(-0.001), "0.00", "-0.001"},
      {Variant(0.1f), "0.10", "0.1"},
      {Variant(static_cast<int16_t>(2023)), "2023", "2023"},
      {Variant(DateSerial(2024, 2, 29)), "2024-02-29", "2024-02-29"},
      {Variant(Date{}), "", ""},
      {Variant(), "", ""},
      {Variant(true), "True", "true"},
  };
  for (const auto& v : values) {
    EXPECT_EQ(DisplayText(v.value), v.shown) << v.shown;
    EXPECT_EQ(CsvText(v.value), v.csv) << v.csv;
  }
  EXPECT_EQ(Percent(12.345), "12.3%");
  EXPECT_EQ(Ratio(18.25f), "18.2");

  const struct {
    const char* text;
    const char* field;
  } fields[] = {{"plain", "plain"},
                {"a,b", "\"a,b\""},
                {"say \"hi\"", "\"say \"\"hi\"\"\""},
                {"two\nlines", "\"two\nlines\""},
                {" padded", "\" padded\""},
                {"", ""}};
  for (const auto& f : fields) EXPECT_EQ(CsvField(f.text), f.field) << f.text;

  // Widths count characters, not bytes; a line break in a cell stays on its line.
  TextTable table({{"Name", Align::kLeft}, {"N", Align::kRight}});
  table.AddRow({"Zürich", "1"});
  table.AddRow({"a\nb", "10"});
  std::ostringstream out;
  table.Print(out);
  EXPECT_EQ(out.str(), "Name     N\n------  --\nZürich   1\na b     10\n");
}

}  // namespace
}  // namespace kwx::cli
