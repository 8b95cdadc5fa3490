#include "json/company_json.h"

#include <gtest/gtest.h>

#include <stdexcept>
#include <string>
#include <utility>

#include "automation/dates.h"
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

// Reading the shape back gives the study that was written, every group and series included; a
// key the shape lacks or a value its field rejects is refused by name.
TEST(CompanyJson, ReadingTheShapeBackGivesTheSameStudy) {
  Company c;
  c.CompanyID = 7;
  c.strSymbol = "ACM";
  c.datLastFY = DateSerial(2024, 6, 30);
  c.Notes = "first\r\nsecond";
  c.JudgmentAnalysis.SetProperty("vntStrikeROE", Variant("01001"));
  c.Options.SetProperty(std::string(OptionsGroup::Bindings()[0].column.name), Variant(1.5f));
  c.Yearly[3].Sales = 12.5f;
  c.JudgmentPERT = {{1, -0.5f, 1.5f}, {2, -1, 2}};
  Company back;
  CompanyFromJson(CompanyJson(c), back);
  EXPECT_EQ(DescribeDifferences(c, back), "");
  EXPECT_EQ(CompanyJson(back), CompanyJson(c));

  const std::pair<nlohmann::json, std::string> refused[] = {
      {{{"noSuchField", 1}}, "noSuchField"},
      {{{"Yearly", {{{"Nope", 1}}}}}, "Yearly[0].Nope"},
      {{{"datLastFY", "June"}}, "datLastFY"},
      {{{"Options", 3}}, "Options"},
      {{{"strSymbol", {{"a", 1}}}}, "strSymbol"},
  };
  for (const auto& [json, key] : refused) {
    try {
      CompanyFromJson(json, back);
      ADD_FAILURE() << json.dump();
    } catch (const std::invalid_argument& e) {
      EXPECT_NE(std::string(e.what()).find(key), std::string::npos) << e.what();
    }
  }
  EXPECT_EQ(StudyFieldType("", "datLastFY"), ColumnType::Date);
  EXPECT_EQ(StudyFieldType("Yearly", "Sales"), ColumnType::Single);
  EXPECT_EQ(StudyFieldType("Yearly", "datLastFY"), std::nullopt);
}

}  // namespace
}  // namespace kwx
