#include <gtest/gtest.h>
#include <unistd.h>

#include <algorithm>
#include <filesystem>
#include <nlohmann/json.hpp>
#include <sstream>
#include <string>
#include <vector>

#include "automation/dates.h"
#include "cli/app.h"
#include "loader/kwx_loader.h"
#include "model/company.h"
#include "model/comparison.h"

namespace kwx {
namespace {

struct Result {
  int code = 0;
  std::string out;
  std::string err;
};

// A fresh database made by `kwx init` in a folder of its own, with one study saved through the
// loader.
class StudyCommandsTest : public ::testing::Test {
 protected:
  void SetUp() override {
    const auto* info = ::testing::UnitTest::GetInstance()->current_test_info();
    dir_ = std::filesystem::temp_directory_path() /
           ("kwx_cli_maint_" + std::to_string(::getpid()) + "_" + info->name());
    std::filesystem::remove_all(dir_);
    std::filesystem::create_directories(dir_);
    path_ = (dir_ / "studies.db").string();
    ASSERT_EQ(Kwx({"init"}).code, 0);
    id_ = SaveStudy("ABC", "Abc's Widgets", 12.5f);
    ASSERT_GE(id_, 1);
  }
  void TearDown() override { std::filesystem::remove_all(dir_); }

  int32_t SaveStudy(const std::string& symbol, const std::string& name, float price) {
    kwxLoader loader;
    EXPECT_TRUE(loader.Access_blnOpenDatabase(path_));
    loader.Access_AddExchange("NYSE");
    Company c;
    c.strSymbol = symbol;
    c.strName = name;
    c.ExchangeID = "NYSE";
    c.sngCurPrice = price;
    c.sngHighPrice52W = 14.0f;
    c.sngLowPrice52W = 9.0f;
    c.sngCurPE = 20.0f;
    c.datLastFY = DateSerial(2023, 12, 31);
    c.datLatestMData = DateSerial(2024, 6, 30);
    c.Notes = "watch it";
    c.Yearly[0].Sales = 100.0f;
    loader.Access_Update(c);
    EXPECT_TRUE(loader.ErrorReports().empty())
        << (loader.ErrorReports().empty() ? "" : loader.ErrorReports()[0].Text());
    return c.CompanyID;
  }

  Result Kwx(std::vector<std::string> args) {
    args.insert(args.begin(), {"--db", path_});
    std::istringstream in;
    std::ostringstream out;
    std::ostringstream err;
    Result r;
    r.code = cli::Run(args, in, out, err);
    r.out = out.str();
    r.err = err.str();
    return r;
  }

  nlohmann::json ShowJson(const std::string& id) {
    Result r = Kwx({"show", id, "--json"});
    EXPECT_EQ(r.code, 0) << r.err;
    return nlohmann::json::parse(r.out);
  }

  std::filesystem::path dir_;
  std::string path_;
  int32_t id_ = 0;
};

TEST_F(StudyCommandsTest, ShowJsonListsEveryProperty) {
  const nlohmann::json j = ShowJson(std::to_string(id_));
  EXPECT_EQ(j["CompanyID"], id_);
  for (const auto& b : Company::Bindings()) EXPECT_TRUE(j.contains(b.column.name)) << b.column.name;
  for (const auto& b : OptionsGroup::Bindings()) {
    EXPECT_TRUE(j["Options"].contains(b.column.name)) << b.column.name;
  }
  for (const char* group : {"JudgmentGraph", "JudgmentAnalysis", "JudgmentCheckList",
                            "JudgmentPrefProc", "JudgmentAssessment", "JudgmentStockReport"}) {
    EXPECT_TRUE(j[group].is_object()) << group;
  }
  EXPECT_TRUE(j["JudgmentGraph"]["strYearStrike"].is_null() ||
              j["JudgmentGraph"]["strYearStrike"].is_array());
  const std::pair<const char*, size_t> series[] = {
      {"Yearly", 10}, {"Quarterly", 36}, {"Monthly", 72}, {"JudgmentPMG", 5}, {"JudgmentPERT", 0}};
  for (const auto& [name, rows] : series) EXPECT_EQ(j[name].size(), rows) << name;

  EXPECT_EQ(j["strName"], "Abc's Widgets");
  EXPECT_EQ(j["ExchangeID"], "NYSE");
  EXPECT_EQ(j["sngCurPrice"], 12.5);
  EXPECT_EQ(j["datLastFY"], "2023-12-31");
  EXPECT_EQ(j["Notes"], "watch it");
  EXPECT_EQ(j["Yearly"][0]["Sales"], 100.0);

  // The same study by symbol and exchange, and the readable summary.
  EXPECT_EQ(Kwx({"show", "ABC"}).code, 2);  // one word that is no ID is bad usage
  Result by_symbol = Kwx({"show", "ABC", "NYSE", "--json"});
  ASSERT_EQ(by_symbol.code, 0) << by_symbol.err;
  EXPECT_EQ(nlohmann::json::parse(by_symbol.out)["CompanyID"], id_);
  Result text = Kwx({"show", std::to_string(id_)});
  EXPECT_EQ(text.code, 0);
  EXPECT_NE(text.out.find("Abc's Widgets (ABC on NYSE)"), std::string::npos) << text.out;
}

TEST_F(StudyCommandsTest, AStudyThatIsNotFoundIsOneLineOnStderrAndExitOne) {
  const std::vector<std::string> commands[] = {
      {"show", "99"}, {"show", "XYZ", "NYSE", "--json"}, {"delete", "99"},
      {"price", "99", "1", "1/2/2024", "1", "1"}, {"comparison", "show", "5"},
      {"pert", "delete", "5"}};
  for (const auto& args : commands) {
    Result r = Kwx(args);
    EXPECT_EQ(r.code, 1) << args[0];
    EXPECT_EQ(r.out, "") << args[0];
    EXPECT_EQ(std::count(r.err.begin(), r.err.end(), '\n'), 1) << r.err;
    EXPECT_EQ(r.err.rfind("kwx: no ", 0), 0u) << r.err;
  }
}

TEST_F(StudyCommandsTest, ListShowsEveryStudy) {
  const int32_t second = SaveStudy("ABD", "Abd", 3.0f);
  Result text = Kwx({"list"});
  ASSERT_EQ(text.code, 0) << text.err;
  EXPECT_EQ(text.out, "CompanyID\tSymbol\tExchange\tName\tPrice\tUpdated\n" +
                          std::to_string(id_) + "\tABC\tNYSE\tAbc's Widgets\t12.5\t\n" +
                          std::to_string(second) + "\tABD\tNYSE\tAbd\t3\t\n");

  Result json = Kwx({"list", "--json"});
  ASSERT_EQ(json.code, 0) << json.err;
  const nlohmann::json rows = nlohmann::json::parse(json.out);
  ASSERT_EQ(rows.size(), 2u);
  EXPECT_EQ(rows[0], nlohmann::json({{"CompanyID", id_}, {"strSymbol", "ABC"}, {"Exchange", "NYSE"},
                                     {"strName", "Abc's Widgets"}, {"sngCurPrice", 12.5},
                                     {"datDataUpdated", "1899-12-30"}}));  // a study saved without one
}

TEST_F(StudyCommandsTest, PriceUpdatesTheStudyInPlace) {
  const std::string id = std::to_string(id_);
  Result r = Kwx({"price", id, "15", "2024-03-15", "14", "9"});
  ASSERT_EQ(r.code, 0) << r.err;
  nlohmann::json j = ShowJson(id);
  EXPECT_EQ(j["sngCurPrice"], 15.0);
  EXPECT_EQ(j["sngHighPrice52W"], 15.0);
  EXPECT_EQ(j["sngCurPE"], 24.0);
  EXPECT_EQ(j["datDataUpdated"], "2024-03-15");

  EXPECT_EQ(Kwx({"price", id, "16", "3/15/2024", "14", "9"}).code, 0);
  EXPECT_EQ(ShowJson(id)["sngCurPrice"], 16.0);
  EXPECT_EQ(Kwx({"price", id, "16", "someday", "14", "9"}).code, 2);
}

TEST_F(StudyCommandsTest, DeleteRemovesTheStudyAndItsMemberships) {
  const int32_t other = SaveStudy("XYZ", "Xyz", 1.0f);
  const std::string id = std::to_string(id_);
  ASSERT_EQ(Kwx({"comparison", "save", "both", id, std::to_string(other)}).out, "saved comparison 1\n");
  ASSERT_EQ(Kwx({"pert", "save", "both", id, std::to_string(other)}).out, "saved PERT report 1\n");

  Result r = Kwx({"delete", id});
  ASSERT_EQ(r.code, 0) << r.err;
  EXPECT_EQ(r.out, "deleted study " + id + "\n");
  EXPECT_EQ(Kwx({"show", id}).code, 1);
  EXPECT_EQ(Kwx({"delete", id}).code, 1);

  const nlohmann::json c = nlohmann::json::parse(Kwx({"comparison", "show", "1", "--json"}).out);
  ASSERT_EQ(c["Members"].size(), 1u);
  EXPECT_EQ(c["Members"][0]["CompanyID"], other);
  const nlohmann::json p = nlohmann::json::parse(Kwx({"pert", "show", "1", "--json"}).out);
  ASSERT_EQ(p["Members"].size(), 1u);
  EXPECT_EQ(p["Members"][0]["strName"], "Xyz");
}

TEST_F(StudyCommandsTest, ComparisonsAndPERTReportsSaveShowAndDelete) {
  const int32_t other = SaveStudy("XYZ", "Xyz", 1.0f);
  const std::string a = std::to_string(id_);
  const std::string b = std::to_string(other);
  ASSERT_EQ(Kwx({"comparison", "save", "Tom's", a, b, "--description", "it's"}).out,
            "saved comparison 1\n");
  ASSERT_EQ(Kwx({"comparison", "save", "second", b}).out, "saved comparison 2\n");
  // Saving under --id updates the header in place.
  ASSERT_EQ(Kwx({"comparison", "save", "Tom's", a, b, "--id", "1", "--section", "3"}).out,
            "saved comparison 1\n");

  nlohmann::json c = nlohmann::json::parse(Kwx({"comparison", "show", "1", "--json"}).out);
  EXPECT_EQ(c["Name"], "Tom's");
  EXPECT_EQ(c["Description"], "");
  EXPECT_EQ(c["StudiedSection"], 3);
  ASSERT_EQ(c["Members"].size(), 2u);

  // A member is removed by company from every comparison.
  Result r = Kwx({"comparison", "delete", "1", "--company", b});
  ASSERT_EQ(r.code, 0) << r.err;
  EXPECT_EQ(r.out, "removed study " + b + " from every comparison\n");
  c = nlohmann::json::parse(Kwx({"comparison", "show", "1", "--json"}).out);
  ASSERT_EQ(c["Members"].size(), 1u);
  EXPECT_EQ(Kwx({"comparison", "show", "2"}).code, 1);  // its only member is gone

  EXPECT_EQ(Kwx({"comparison", "delete", "1"}).out, "deleted comparison 1\n");
  EXPECT_EQ(Kwx({"comparison", "show", "1"}).code, 1);

  ASSERT_EQ(Kwx({"pert", "save", "P", b, a}).out, "saved PERT report 1\n");
  Result text = Kwx({"pert", "show", "1"});
  EXPECT_NE(text.out.find("  " + b + "\tXyz\n  " + a + "\tAbc's Widgets\n"), std::string::npos)
      << text.out;
  EXPECT_EQ(Kwx({"pert", "delete", "1"}).code, 0);
  EXPECT_EQ(Kwx({"pert", "show", "1"}).code, 1);
}

}  // namespace
}  // namespace kwx
