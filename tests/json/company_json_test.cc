#include "json/company_json.h"

#include <gtest/gtest.h>

#include <string>

#include "model/company.h"

namespace kwx {
namespace {

// A group's object holds its columns and then the lists its table does not keep, nothing else;
// a list shows as its items, an empty one as null.
TEST(CompanyJson, GroupsShowTheListsTheirTablesDoNotKeep) {
  Company c;
  c.JudgmentAnalysis.SetProperty("vntStrikeROE", Variant("01001"));
  c.JudgmentCheckList.SetProperty("vntSCLEPSStrike", Variant("1"));
  const nlohmann::json j = CompanyJson(c);

  const nlohmann::json& analysis = j["JudgmentAnalysis"];
  EXPECT_EQ(analysis.size(), JudgmentAnalysisGroup::Bindings().size() + 5);
  EXPECT_EQ(analysis["vntStrikeROE"], nlohmann::json({false, true, false, false, true}));
  for (const char* empty : {"vntStrikeD2Eq", "vntStrikePTI", "vntStrikeLowPrice",
                            "vntStrikePayout", "strPart2Strike"}) {
    ASSERT_TRUE(analysis.contains(empty)) << empty;
    EXPECT_TRUE(analysis[empty].is_null()) << empty;
  }
  const nlohmann::json& check_list = j["JudgmentCheckList"];
  EXPECT_EQ(check_list.size(), JudgmentCheckListGroup::Bindings().size() + 2);
  EXPECT_EQ(check_list["vntSCLEPSStrike"], nlohmann::json({true}));
  EXPECT_TRUE(check_list["vntSCLRevStrike"].is_null());
  // The other groups and the company record keep their shape.
  EXPECT_EQ(j["JudgmentGraph"].size(), JudgmentGraphGroup::Bindings().size());
  EXPECT_EQ(j["JudgmentAssessment"].size(), JudgmentAssessmentGroup::Bindings().size());
  EXPECT_FALSE(j.contains("vntStrikeROE"));
}

}  // namespace
}  // namespace kwx
