#include "model/judgment_groups.h"

#include <gtest/gtest.h>

#include <string>

#include "automation/safe_array.h"
#include "model/company.h"
#include "model/schema.h"

namespace kwx {
namespace {

Object& GroupOf(Company& c, std::string_view group) {
  if (group == "JudgmentAnalysis") return c.JudgmentAnalysis;
  if (group == "JudgmentGraph") return c.JudgmentGraph;
  return c.JudgmentCheckList;
}

// Struck-out lists take one shape however they arrive: a file's zero-based list and the
// database's digit text both become a list whose element 1 is the first item. The lists the
// tables do not keep behave the same, are in no table, and still count in the comparison.
TEST(JudgmentGroups, StruckOutListsTakeOneShapeByName) {
  struct Case {
    const char* group;
    const char* name;
    bool stored;
  } cases[] = {
      {"JudgmentGraph", "strYearStrike", true},       {"JudgmentAnalysis", "vntStrikeD2Eq", false},
      {"JudgmentAnalysis", "vntStrikePTI", false},    {"JudgmentAnalysis", "vntStrikeROE", false},
      {"JudgmentAnalysis", "vntStrikeLowPrice", false}, {"JudgmentAnalysis", "vntStrikePayout", false},
      {"JudgmentCheckList", "vntSCLRevStrike", false}, {"JudgmentCheckList", "vntSCLEPSStrike", false},
  };
  SafeArray zero_based = SafeArray::Vector(0, 4);
  for (int32_t i = 0; i <= 4; ++i) zero_based(i) = Variant(i == 1 || i == 4);
  for (const Case& u : cases) {
    SCOPED_TRACE(u.name);
    Company c;
    Object& group = GroupOf(c, u.group);
    EXPECT_TRUE(group.GetProperty(u.name).IsEmpty());
    group.SetProperty(u.name, Variant(zero_based));
    const Variant from_list = group.GetProperty(u.name);
    ASSERT_TRUE(from_list.IsArray());
    EXPECT_EQ(from_list.AsArray().LBound(), 1);
    EXPECT_EQ(from_list.AsArray().Count(), 5);
    group.SetProperty(u.name, Variant("01001"));
    EXPECT_TRUE(group.GetProperty(u.name).SameAs(from_list));
    // A value that is no list is refused and the list stays.
    EXPECT_THROW(group.SetProperty(u.name, Variant(2.5)), AutomationError);
    EXPECT_TRUE(group.GetProperty(u.name).SameAs(from_list));
    group.SetProperty(u.name, Variant(""));
    EXPECT_TRUE(group.GetProperty(u.name).IsEmpty());

    bool in_a_table = false;
    for (const TableDef& table : AllTables()) in_a_table |= FindColumn(table, u.name) != nullptr;
    EXPECT_EQ(in_a_table, u.stored);
    Company a;
    Company b;
    GroupOf(b, u.group).SetProperty(u.name, Variant("1"));
    EXPECT_EQ(DescribeDifferences(a, b),
              std::string(u.group) + "." + u.name + ": Empty vs Array(1 to 1){True}\n");
  }
}

}  // namespace
}  // namespace kwx
