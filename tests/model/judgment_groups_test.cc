#include "model/judgment_groups.h"

#include <gtest/gtest.h>

#include <string>

#include "automation/safe_array.h"
#include "model/company.h"
#include "model/schema.h"

namespace kwx {
namespace {

// The lists a study carries in its files and the database does not keep, by group.
struct UnstoredCase {
  const char* group;
  const char* name;
};
const UnstoredCase kUnstored[] = {
    {"JudgmentAnalysis", "vntStrikeD2Eq"},     {"JudgmentAnalysis", "vntStrikePTI"},
    {"JudgmentAnalysis", "vntStrikeROE"},      {"JudgmentAnalysis", "vntStrikeLowPrice"},
    {"JudgmentAnalysis", "vntStrikePayout"},   {"JudgmentCheckList", "vntSCLRevStrike"},
    {"JudgmentCheckList", "vntSCLEPSStrike"},
};

Object& GroupOf(Company& c, std::string_view group) {
  if (group == "JudgmentAnalysis") return c.JudgmentAnalysis;
  return c.JudgmentCheckList;
}

TEST(JudgmentGroups, UnstoredListsTakeTheFlagsShapeByName) {
  SafeArray zero_based = SafeArray::Vector(0, 4);
  for (int32_t i = 0; i <= 4; ++i) zero_based(i) = Variant(i == 1 || i == 4);
  for (const UnstoredCase& u : kUnstored) {
    SCOPED_TRACE(u.name);
    Company c;
    Object& group = GroupOf(c, u.group);
    EXPECT_TRUE(group.GetProperty(u.name).IsEmpty());

    // A file's zero-based list and the digit text both become a list whose element 1 is the
    // first item; the name is found whatever its case.
    group.SetProperty(u.name, Variant(zero_based));
    const Variant from_list = group.GetProperty(std::string(u.name));
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
  }
}

TEST(JudgmentGroups, UnstoredListsAreInNoTableButInTheComparison) {
  for (const UnstoredCase& u : kUnstored) {
    SCOPED_TRACE(u.name);
    // The statements, the schema and the loads go over the tables' columns and the bindings.
    for (const TableDef& table : AllTables()) EXPECT_EQ(FindColumn(table, u.name), nullptr);
    EXPECT_EQ(FindField(JudgmentAnalysisGroup::Bindings(), u.name), nullptr);
    EXPECT_EQ(FindField(JudgmentCheckListGroup::Bindings(), u.name), nullptr);

    Company a;
    Company b;
    GroupOf(b, u.group).SetProperty(u.name, Variant("1"));
    EXPECT_FALSE(SameStudy(a, b));
    EXPECT_EQ(DescribeDifferences(a, b),
              std::string(u.group) + "." + u.name + ": Empty vs Array(1 to 1){True}\n");
    Company copy = b;
    EXPECT_TRUE(SameStudy(copy, b));
  }
  EXPECT_EQ(JudgmentAnalysisGroup::Bindings().size(),
            JudgmentAnalysisGroup::Table().columns.size());
  EXPECT_EQ(JudgmentCheckListGroup::Bindings().size(),
            JudgmentCheckListGroup::Table().columns.size());
  EXPECT_EQ(JudgmentAnalysisGroup::Unstored().size(), 5u);
  EXPECT_EQ(JudgmentCheckListGroup::Unstored().size(), 2u);
  EXPECT_TRUE(JudgmentGraphGroup::Unstored().empty());
}

}  // namespace
}  // namespace kwx
