#include "model/schema.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <vector>

// The column orders themselves are checked in the statements they shape (access tests).
namespace kwx {
namespace {

TEST(Schema, InsertPositionsArePermutations) {
  for (const TableDef& table : AllTables()) {
    std::vector<int> positions;
    for (const ColumnDef& c : table.columns) positions.push_back(c.insert_position);
    std::sort(positions.begin(), positions.end());
    for (size_t i = 0; i < positions.size(); ++i) {
      EXPECT_EQ(positions[i], static_cast<int>(i) + 1) << table.name;
    }
  }
}

TEST(Schema, LookupIsCaseInsensitive) {
  EXPECT_EQ(FindTable("judgmentpmg"), &GetTable(TableId::JudgmentPMG));
  EXPECT_EQ(FindTable("COMPANY"), &GetTable(TableId::Company));
  EXPECT_EQ(FindTable("Judgment"), nullptr);
  EXPECT_EQ(FindTable(""), nullptr);
  EXPECT_NE(FindColumn(GetTable(TableId::Company), "STRNAME"), nullptr);
  EXPECT_EQ(FindColumn(GetTable(TableId::Company), "CompanyID"), nullptr);
}

}  // namespace
}  // namespace kwx
