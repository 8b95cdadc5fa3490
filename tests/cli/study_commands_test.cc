#include <gtest/gtest.h>

#include <algorithm>
#include <nlohmann/json.hpp>
#include <string>
#include <vector>

#include "automation/dates.h"
#include "loader/kwx_loader.h"
#include "model/company.h"
#include "tests/support/cli_runner.h"
#include "tests/support/test_util.h"

namespace kwx {
namespace {

using testing::CliResult;

// A fresh database made by `kwx init`, with one study saved through the loader.
class StudyCommandsTest : public ::testing::Test {
 protected:
  void SetUp() override {
    path_ = dir_.Database("studies.db");
    if (path_.empty()) GTEST_SKIP() << "no PostgreSQL server to test on (KWX_TEST_PG)";
    ASSERT_EQ(Kwx({"init"}).code, 0);
    id_ = SaveStudy("ABC", "Abc's Widgets", 12.5f);
    ASSERT_GE(id_, 1);
  }

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
    c.Notes = "watch it";
    c.Yearly[0].Sales = 100.0f;
    c.JudgmentPMG[0].HiPE = 25.0f;
    c.JudgmentPERT = {{1, 0.5f, 2.0f}, {2, 0.25f, 4.0f}};
    loader.Access_Update(c);
    EXPECT_TRUE(loader.ErrorReports().empty());
    return c.CompanyID;
  }

  CliResult Kwx(std::vector<std::string> args) {
    args.insert(args.begin(), {"--db", path_});
    return testing::RunKwx(args);
  }
  nlohmann::json ShowJson(const std::string& id) {
    CliResult r = Kwx({"show", id, "--json"});
    EXPECT_EQ(r.code, 0) << r.err;
    return nlohmann::json::parse(r.out);
  }

  testing::TempDir dir_;
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
  const std::pair<const char*, size_t> series[] = {
      {"Yearly", 10}, {"Quarterly", 36}, {"Monthly", 72}, {"JudgmentPMG", 5}, {"JudgmentPERT", 2}};
  for (const auto& [name, rows] : series) EXPECT_EQ(j[name].size(), rows) << name;
  EXPECT_EQ(j["strName"], "Abc's Widgets");
  EXPECT_EQ(j["ExchangeID"], "NYSE");
  EXPECT_EQ(j["datLastFY"], "2023-12-31");
  EXPECT_EQ(j["Notes"], "watch it");
  EXPECT_EQ(j["Yearly"][0]["Sales"], 100.0);

  // The same study by symbol and exchange; one word that is no ID is bad usage.
  EXPECT_EQ(Kwx({"show", "ABC"}).code, 2);
  EXPECT_EQ(nlohmann::json::parse(Kwx({"show", "ABC", "NYSE", "--json"}).out)["CompanyID"], id_);
  EXPECT_NE(Kwx({"show", std::to_string(id_)}).out.find("Abc's Widgets (ABC on NYSE)"),
            std::string::npos);
}

// A symbol and an exchange find their study whatever the case, an apostrophe included, and the
// study is then loaded by its ID, so show, export and defaults see its PMG and PERT rows too.
TEST_F(StudyCommandsTest, ASymbolAndExchangeNameTheWholeStudy) {
  const int32_t quoted = SaveStudy("O'K", "Okay", 1.0f);
  struct Case {
    std::vector<std::string> words;
    int code;
    int32_t id;
  } cases[] = {
      {{"abc", "nyse"}, 0, id_}, {{"o'k", "Nyse"}, 0, quoted}, {{"ABC", "TSX"}, 1, 0}};
  for (const Case& c : cases) {
    CliResult r = Kwx({"show", c.words[0], c.words[1], "--json"});
    ASSERT_EQ(r.code, c.code) << c.words[0] << r.err;
    if (c.code != 0) continue;
    const nlohmann::json j = nlohmann::json::parse(r.out);
    EXPECT_EQ(j["CompanyID"], c.id) << c.words[0];
    EXPECT_EQ(j["JudgmentPMG"][0]["HiPE"], 25.0) << c.words[0];
    EXPECT_EQ(j["JudgmentPERT"].size(), 2u) << c.words[0];
  }

  const std::string out = dir_.File("abc.kwx");
  ASSERT_EQ(Kwx({"export", "abc", "NYSE", out}).code, 0);
  const nlohmann::json exported = nlohmann::json::parse(testing::RunKwx({"read", out, "--json"}).out);
  EXPECT_EQ(exported["JudgmentPMG"][0]["HiPE"], 25.0);
  EXPECT_EQ(exported["JudgmentPERT"].size(), 2u);

  CliResult defaults = Kwx({"defaults", "ABC", "nyse"});
  ASSERT_EQ(defaults.code, 0) << defaults.err;
  EXPECT_NE(defaults.out.find("saved study"), std::string::npos) << defaults.out;
  const nlohmann::json after = ShowJson(std::to_string(id_));
  EXPECT_EQ(after["JudgmentPMG"][0]["HiPE"], 25.0) << "the analyst's judgment is kept";
  EXPECT_EQ(after["JudgmentPERT"].size(), 2u);

  // A symbol saved twice names no one study.
  const int32_t twin = SaveStudy("ABC", "Abc again", 2.0f);
  CliResult both = Kwx({"show", "ABC", "NYSE"});
  EXPECT_EQ(both.code, 2);
  EXPECT_NE(both.err.find("IDs " + std::to_string(id_) + ", " + std::to_string(twin)),
            std::string::npos) << both.err;
}

// IDs are whole numbers in decimal: nothing else is read as some other ID.
TEST_F(StudyCommandsTest, IdsThatAreNoWholeNumbersAreRefused) {
  const std::vector<std::string> commands[] = {
      {"show", "1.5"},          {"delete", "1e3"},         {"price", "x", "1", "1/2/2024", "1", "1"},
      {"export", "0x1", "a.kwx"}, {"defaults", "1.0"},     {"comparison", "show", "1.5"},
      {"pert", "delete", "-1"}, {"comparison", "save", "n", "1", "2.5"},
      {"ref", "sector", "rename", "1e0", "Energy"}};
  for (const auto& args : commands) {
    CliResult r = Kwx(args);
    EXPECT_EQ(r.code, 2) << args[0] << " " << args[1];
    EXPECT_NE(r.err.find("is not a whole number"), std::string::npos) << r.err;
  }
  EXPECT_EQ(Kwx({"show", "1"}).code, 0) << "the study of ID 1 is still there";
}

TEST_F(StudyCommandsTest, AStudyThatIsNotFoundIsOneLineOnStderrAndExitOne) {
  const std::vector<std::string> commands[] = {
      {"show", "99"}, {"show", "XYZ", "NYSE", "--json"}, {"delete", "99"},
      {"price", "99", "1", "1/2/2024", "1", "1"}, {"comparison", "show", "5"},
      {"pert", "delete", "5"}};
  for (const auto& args : commands) {
    CliResult r = Kwx(args);
    EXPECT_EQ(r.code, 1) << args[0];
    EXPECT_EQ(r.out, "") << args[0];
    EXPECT_EQ(std::count(r.err.begin(), r.err.end(), '\n'), 1) << r.err;
    EXPECT_EQ(r.err.rfind("kwx: no ", 0), 0u) << r.err;
  }
}

TEST_F(StudyCommandsTest, ListPriceAndDelete) {
  const int32_t second = SaveStudy("ABD", "Abd", 3.0f);
  const std::string id = std::to_string(id_);
  CliResult text = Kwx({"list"});
  ASSERT_EQ(text.code, 0) << text.err;
  EXPECT_EQ(text.out,
            "ID  Symbol  Exchange  Name           Price  Updated\n"
            "--  ------  --------  -------------  -----  -------\n"
            " " + id + "  ABC     NYSE      Abc's Widgets  12.50\n"
            " " + std::to_string(second) + "  ABD     NYSE      Abd             3.00\n");
  const nlohmann::json rows = nlohmann::json::parse(Kwx({"list", "--json"}).out);
  ASSERT_EQ(rows.size(), 2u);
  EXPECT_EQ(rows[0], nlohmann::json({{"CompanyID", id_}, {"strSymbol", "ABC"}, {"Exchange", "NYSE"},
                                     {"strName", "Abc's Widgets"}, {"sngCurPrice", 12.5},
                                     {"datDataUpdated", "1899-12-30"}}));

  ASSERT_EQ(Kwx({"price", id, "15", "2024-03-15", "14", "9"}).code, 0);
  nlohmann::json j = ShowJson(id);
  EXPECT_EQ(j["sngCurPrice"], 15.0);
  EXPECT_EQ(j["sngHighPrice52W"], 15.0);
  EXPECT_EQ(j["sngCurPE"], 24.0);
  EXPECT_EQ(j["datDataUpdated"], "2024-03-15");
  EXPECT_EQ(Kwx({"price", id, "16", "3/15/2024", "14", "9"}).code, 0);
  EXPECT_EQ(ShowJson(id)["sngCurPrice"], 16.0);
  EXPECT_EQ(Kwx({"price", id, "16", "someday", "14", "9"}).code, 2);

  CliResult deleted = Kwx({"delete", id});
  ASSERT_EQ(deleted.code, 0) << deleted.err;
  EXPECT_EQ(deleted.out, "deleted study " + id + "\n");
  EXPECT_EQ(Kwx({"show", id}).code, 1);
  EXPECT_EQ(Kwx({"delete", id}).code, 1);
  EXPECT_EQ(Kwx({"list"}).out.find("ABC"), std::string::npos);
}

// `list --csv` and `series --csv` read back through an RFC 4180 reader whatever a name holds
// (a comma, quotes, a line break); the aligned forms round, group and keep a name on its line.
TEST_F(StudyCommandsTest, ListAndSeriesReadBackAsCsvAndLineUp) {
  const std::string odd = std::to_string(SaveStudy("SJ", "Smith, \"Jones\"\nand Co", 1234.5f));
  const std::vector<std::vector<std::string>> list = testing::ReadCsv(Kwx({"list", "--csv"}).out);
  ASSERT_EQ(list.size(), 3u);
  EXPECT_EQ(list[0], (std::vector<std::string>{"CompanyID", "strSymbol", "Exchange", "strName",
                                               "sngCurPrice", "datDataUpdated"}));
  EXPECT_EQ(list[2], (std::vector<std::string>{odd, "SJ", "NYSE", "Smith, \"Jones\"\nand Co",
                                               "1234.5", ""}));
  const std::string text = Kwx({"list"}).out;
  EXPECT_NE(text.find("  Smith, \"Jones\" and Co  1,234.50\n"), std::string::npos) << text;

  // One row per element, dated as a save dates it: fiscal years back from datLastFY, fiscal
  // quarters back from its last quarter, months back from the latest monthly data.
  struct Case {
    std::string series;
    size_t rows;
    std::vector<std::string> header_start;
    std::vector<std::string> first, second;
  } cases[] = {
      {"yearly", 10, {"Year", "HighPrice", "LowPrice", "Sales"}, {"2023", "0", "0", "100"},
       {"2022", "0", "0", "0"}},
      {"quarterly", 36, {"Quarter", "Year", "EPS"}, {"4", "2023", "0"}, {"3", "2023", "0"}},
      {"monthly", 72, {"Date", "Month", "ClosingPrice"}, {"2024-12-31", "0", "0"},
       {"2024-11-30", "1", "0"}},
      {"pmg", 5, {"Year", "HiPE", "LowPE"}, {"0", "25", "0"}, {"0", "0", "0"}},
  };
  for (const Case& c : cases) {
    const CliResult r = Kwx({"series", "SJ", "NYSE", c.series, "--csv"});
    ASSERT_EQ(r.code, 0) << c.series << r.err;
    const auto rows = testing::ReadCsv(r.out);
    ASSERT_EQ(rows.size(), c.rows + 1) << c.series;
    const auto start = [&](const std::vector<std::string>& row) {
      return std::vector<std::string>(row.begin(), row.begin() + c.first.size());
    };
    EXPECT_EQ(std::vector<std::string>(rows[0].begin(), rows[0].begin() + c.header_start.size()),
              c.header_start) << c.series;
    EXPECT_EQ(start(rows[1]), c.first) << c.series;
    EXPECT_EQ(start(rows[2]), c.second) << c.series;
  }
  const nlohmann::json monthly = nlohmann::json::parse(Kwx({"series", odd, "monthly", "--json"}).out);
  EXPECT_EQ(monthly[1], nlohmann::json({{"Date", "2024-11-30"}, {"Month", 1}, {"ClosingPrice", 0}}));
  const std::string yearly = Kwx({"series", odd, "yearly"}).out;
  EXPECT_EQ(yearly.substr(0, yearly.find('\n')),
            "Year  HighPrice  LowPrice   Sales  TaxRate  PretaxIncome  NetIncome  BookValue   EPS   DPS"
            "  LongTermDebt   CSO  CashFlow  CommonEquity");
  EXPECT_NE(Kwx({"show", odd}).out.find("\n2023       0.00      0.00  100.00"), std::string::npos);

  const CliResult wrong = Kwx({"series", odd, "weekly"});
  EXPECT_EQ(wrong.code, 2);
  EXPECT_NE(wrong.err.find("'weekly' names no series (yearly, quarterly, monthly, pmg)"),
            std::string::npos) << wrong.err;
}

// The saved comparisons and PERT reports list with their member counts; a comparison shows its
// members' key figures side by side.
TEST_F(StudyCommandsTest, ComparisonsAndPertReportsListAndShowSideBySide) {
  const std::string id = std::to_string(id_);
  const std::string other = std::to_string(SaveStudy("XYZ", "Xyz, \"Inc\"", 1234.5f));
  ASSERT_EQ(Kwx({"comparison", "save", "Picks", id, other}).code, 0);
  ASSERT_EQ(Kwx({"pert", "save", "Watch", id, other}).code, 0);

  EXPECT_EQ(Kwx({"comparison", "list"}).out,
            "ID  Name   Members\n--  -----  -------\n 1  Picks        2\n");
  EXPECT_EQ(nlohmann::json::parse(Kwx({"pert", "list", "--json"}).out),
            nlohmann::json::parse(R"([{"PERTReportID": 1, "Name": "Watch", "Members": 2}])"));
  const std::string shown = Kwx({"comparison", "show", "1"}).out;
  for (const std::string line : {"                                        ABC         XYZ\n",
                                 "\nName                          Abc's Widgets  Xyz, \"Inc\"\n",
                                 "\nPrice                                 12.50    1,234.50\n",
                                 "\nP/E                                    20.0        20.0\n"}) {
    EXPECT_NE(shown.find(line), std::string::npos) << line << "\n" << shown;
  }
  EXPECT_NE(Kwx({"pert", "show", "1"}).out.find("\nID  Name\n--  -------------\n " + id +
                                                 "  Abc's Widgets\n " + other + "  Xyz, \"Inc\"\n"),
            std::string::npos);
}

}  // namespace
}  // namespace kwx
