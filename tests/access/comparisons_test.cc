#include "access/comparisons.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "access/maintenance.h"
#include "automation/conversions.h"
#include "automation/dates.h"
#include "automation/safe_array.h"
#include "tests/services/test_database.h"
#include "tests/support/recording_database.h"

namespace kwx {
namespace {

using testing::QueryResult;
using testing::RecordingDatabase;
using testing::ScriptedResult;

constexpr const char* kSub = "\xC3\xBF";  // what an apostrophe becomes inside a statement

Variant List(std::vector<Variant> values) { return Variant(SafeArray::FromValues(std::move(values))); }

Variant Flags(std::vector<bool> flags) {
  SafeArray a = SafeArray::Vector(1, static_cast<int32_t>(flags.size()));
  for (size_t i = 0; i < flags.size(); ++i) a(static_cast<int32_t>(i) + 1) = Variant(bool{flags[i]});
  return Variant(std::move(a));
}

Comparison SampleComparison() {
  Comparison c;
  c.ComparisonID = 9;
  c.Name = "Tom's picks";
  c.Description = "d";
  c.Field27 = "f27";
  c.Field28 = "f28";
  c.UpdatePerson = "me";
  c.LastUpdate = DateSerial(2024, 3, 5);
  c.StudiedSection = 2;
  c.Members = {{12, Flags({true, false, true}), List({Variant("a"), Variant("b'c")})},
               {0, Variant(), Variant()},
               {13, Variant(), List({Variant("x")})}};
  return c;
}

PERTReport SampleReport() {
  PERTReport p;
  p.PERTReportID = 4;
  p.Name = "P'x";
  p.Description = "x";
  p.LastUpdate = DateSerial(2024, 3, 5);
  p.Members = {{12, ""}, {-1, ""}, {13, ""}};
  return p;
}

TEST(ComparisonStatements, BuildBothFormsToTheCharacter) {
  const Comparison c = SampleComparison();
  const PERTReport p = SampleReport();
  const std::string s = kSub;
  const std::pair<std::string, std::string> cases[] = {
      {m_strComparison(c, true),
       "Update Comparison   set Name = 'Tom" + s + "s picks',       Description = 'd',"
       "       Field27 = 'f27',       Field28 = 'f28',       UpdatePerson = 'me',"
       "       LastUpdate = '3/5/2024',       StudiedSection = 2 where ComparisonID = 9"},
      {m_strComparison(c, false),
       "Insert into Comparison (Name, Description, Field27, Field28, UpdatePerson, "
       "StudiedSection, LastUpdate) select 'Tom" + s + "s picks','d','f27','f28','me',2,"
       "'3/5/2024'"},
      {m_strPERTReport(p, true),
       "Update PERTReport   set Name = 'P" + s + "x',       Description = 'x',"
       "       LastUpdate = '3/5/2024' where PERTReportID = 4"},
      {m_strPERTReport(p, false),
       "Insert into PERTReport (Name, Description, LastUpdate) select 'P" + s + "x','x',"
       "'3/5/2024'"},
      {m_strComparisonCompany(9, c.Members[0], true),
       "Update ComparisonCompany   set SelectedFields = '101',       FieldData = 'a,b" + s +
           "c' where ComparisonID = 9   and CompanyID = 12"},
      {m_strComparisonCompany(9, c.Members[0], false),
       "insert into ComparisonCompany (ComparisonID, CompanyID, SelectedFields, FieldData) "
       "select 9,12,'101','a,b" + s + "c'"},
      {m_strComparisonCompany(9, c.Members[1], false),
       "insert into ComparisonCompany (ComparisonID, CompanyID, SelectedFields, FieldData) "
       "select 9,0,'',''"},
      {m_strPERTReportCompany(4, 12, true),
       "Update PERTReportCompany   set CompanyID = 12 where PERTReportID = 4   and CompanyID = 12"},
      {m_strPERTReportCompany(4, 12, false),
       "insert into PERTReportCompany (PERTReportID, CompanyID) select 4,12"},
  };
  for (const auto& [actual, expected] : cases) EXPECT_EQ(actual, expected);
}

TEST(ComparisonStatements, ABuilderThatCannotWriteAValueReportsAndAnswersNothing) {
  ComparisonMember m{12, List({Variant(true), Variant::Null()}), Variant()};
  ErrorCollector errors;
  EXPECT_EQ(m_strComparisonCompany(9, m, true, &errors), "");
  ASSERT_EQ(errors.reports().size(), 1u);
  EXPECT_EQ(errors.reports()[0].location, "m_strComparisonCompany");
}

struct Recorded {
  RecordingDatabase db;
  ReferenceCaches caches;
  ErrorCollector errors;
  StoreContext store{&db, 0, &caches, &errors};
};

TEST(SaveComparison, InsertsWhatNoUpdateChangedAndReadsTheIDBackByName) {
  Recorded r;
  r.db.Answer("select ComparisonID", QueryResult({"ComparisonID"}, {{Variant(int32_t{5})}}));
  // Member 12 (the one with flags 101) exists already, member 13 does not.
  r.db.Answer("Update ComparisonCompany   set SelectedFields = '101'", ScriptedResult{true, 1});
  Comparison c = SampleComparison();
  UpdateComparison(r.store, c);
  EXPECT_EQ(c.ComparisonID, 5);
  const std::vector<std::string>& st = r.db.statements;
  ASSERT_EQ(st.size(), 6u);
  EXPECT_EQ(st[0].rfind("Update Comparison   set", 0), 0u);
  EXPECT_EQ(st[1].rfind("Insert into Comparison", 0), 0u);
  EXPECT_EQ(st[2], "select ComparisonID  from Comparison where Name = 'Tom" + std::string(kSub) +
                       "s picks'");
  // Members are written under the ID read back; the member with ID 0 is skipped.
  EXPECT_EQ(st[3].rfind("Update ComparisonCompany", 0), 0u);
  EXPECT_NE(st[3].find("where ComparisonID = 5   and CompanyID = 12"), std::string::npos);
  EXPECT_NE(st[4].find("and CompanyID = 13"), std::string::npos);
  EXPECT_EQ(st[5].rfind("insert into ComparisonCompany", 0), 0u);
  EXPECT_TRUE(r.errors.reports().empty());
}

TEST(SavePERTReport, UpdatesAnExistingHeaderAndSkipsMembersWithoutID) {
  Recorded r;
  r.db.Answer("Update PERTReport ", ScriptedResult{true, 1});
  r.db.Answer("select PERTReportID", QueryResult({"PERTReportID"}, {{Variant(int32_t{4})}}));
  PERTReport p = SampleReport();
  UpdatePERTReport(r.store, p);
  EXPECT_EQ(p.PERTReportID, 4);
  const std::vector<std::string> expected{
      m_strPERTReport(SampleReport(), true),
      "select PERTReportID  from PERTReport where Name = 'P" + std::string(kSub) + "x'",
      m_strPERTReportCompany(4, 12, true), m_strPERTReportCompany(4, 12, false),
      m_strPERTReportCompany(4, 13, true), m_strPERTReportCompany(4, 13, false)};
  EXPECT_EQ(r.db.statements, expected);
}

TEST(LoadComparison, RunsTheJoinedSelectsAndParsesEveryRow) {
  EXPECT_EQ(QueryComparisonSql(5),
            "select C.ComparisonID, C.Name, C.StudiedSection, C.Description, C.Field27, "
            "C.Field28, C.UpdatePerson, C.LastUpdate, CC.CompanyID, CC.SelectedFields, "
            "CC.FieldData  from Comparison C, ComparisonCompany CC where C.ComparisonID = 5"
            "   and CC.ComparisonID = C.ComparisonID order by ComparisonCompanyID asc");
  EXPECT_EQ(QueryPERTReportSql(4),
            "SELECT P.Name, P.Description, P.LastUpdate, P.PERTReportID, C.strName, C.CompanyID "
            "FROM (PERTReport AS P INNER JOIN PERTReportCompany AS PRC ON P.PERTReportID = "
            "PRC.PERTReportID) INNER JOIN Company AS C ON PRC.CompanyID = C.CompanyID WHERE "
            "P.PERTReportID = 4 ORDER BY PRC.PERTReportCompanyID ASC;");

  Recorded r;
  const std::string name = "Tom" + std::string(kSub) + "s";
  r.db.Answer("select C.ComparisonID",
              QueryResult({"ComparisonID", "Name", "StudiedSection", "Description", "Field27",
                           "Field28", "UpdatePerson", "LastUpdate", "CompanyID", "SelectedFields",
                           "FieldData"},
                          {{Variant(int32_t{5}), Variant(name), Variant(int16_t{3}), Variant::Null(),
                            Variant("f"), Variant("g"), Variant("u"), Variant(DateSerial(2024, 1, 2)),
                            Variant(int32_t{12}), Variant("0110"), Variant("a,b" + std::string(kSub))},
                           {}}));
  Comparison c;
  c.ComparisonID = 5;
  c.Description = "kept";
  c.Members = {{99, Variant(), Variant()}};
  QueryComparison(r.store, c);
  EXPECT_EQ(r.db.statements, std::vector<std::string>{QueryComparisonSql(5)});
  EXPECT_EQ(c.Name, "Tom's");
  EXPECT_EQ(c.Description, "kept");  // Null leaves it as it was
  EXPECT_EQ(c.StudiedSection, 3);
  EXPECT_EQ(c.LastUpdate, DateSerial(2024, 1, 2));
  ASSERT_EQ(c.Members.size(), 2u);
  EXPECT_EQ(c.Members[0].CompanyID, 12);
  EXPECT_TRUE(c.Members[0].SelectedFields.SameAs(Flags({false, true, true, false})))
      << c.Members[0].SelectedFields;
  EXPECT_TRUE(c.Members[0].FieldData.SameAs(List({Variant("a"), Variant("b'")})));
  // The second row is all Empty: a member of ID 0 with nothing selected.
  EXPECT_EQ(c.Members[1].CompanyID, 0);
  EXPECT_TRUE(c.Members[1].SelectedFields.IsEmpty());
  EXPECT_TRUE(r.errors.reports().empty());
}

// ---- Against a real database -------------------------------------------------------------

class ComparisonDatabaseTest : public DatabaseTest {
 protected:
  int32_t AddCompany(const std::string& name) {
    EXPECT_TRUE(Exec("insert into Company (strSymbol, strName) select 'S','" + name + "'"));
    return CLng(Scalar("select max(CompanyID) from Company"));
  }
  std::string Members(const std::string& table, const std::string& key, int32_t id) {
    Variant data = Query("select CompanyID from " + table + " where " + key + " = " +
                         std::to_string(id) + " order by " + table + "ID");
    std::string out;
    if (!data.IsArray()) return out;
    for (int32_t i = 0; i <= data.AsArray().UBound(1); ++i) out += CStr(data.AsArray()(i, 0)) + ";";
    return out;
  }

  ReferenceCaches caches_;
  ErrorCollector errors_;
  StoreContext store_{&db_, 0, &caches_, &errors_};
};

TEST_F(ComparisonDatabaseTest, SavesAndLoadsAComparisonWithApostrophes) {
  const int32_t a = AddCompany("A");
  const int32_t b = AddCompany("B");
  Comparison saved = SampleComparison();
  saved.ComparisonID = 0;
  saved.Description = "O'Neil's \"best\"";
  saved.Members = {{a, Flags({true, false, true}), List({Variant("it's"), Variant("2")})},
                   {0, Flags({true}), Variant()},
                   {b, Flags({false, false}), List({Variant("x")})}};
  UpdateComparison(store_, saved);
  ASSERT_GE(saved.ComparisonID, 1);

  // Saving again updates in place: same ID, no second member row.
  UpdateComparison(store_, saved);
  EXPECT_EQ(Members("ComparisonCompany", "ComparisonID", saved.ComparisonID),
            std::to_string(a) + ";" + std::to_string(b) + ";");

  Comparison loaded;
  loaded.ComparisonID = saved.ComparisonID;
  QueryComparison(store_, loaded);
  EXPECT_EQ(loaded.Name, "Tom's picks");
  EXPECT_EQ(loaded.Description, "O'Neil's \"best\"");
  EXPECT_EQ(loaded.StudiedSection, 2);
  EXPECT_EQ(loaded.LastUpdate, DateSerial(2024, 3, 5));
  ASSERT_EQ(loaded.Members.size(), 2u);
  EXPECT_EQ(loaded.Members[0].CompanyID, a);
  EXPECT_TRUE(loaded.Members[0].SelectedFields.SameAs(saved.Members[0].SelectedFields));
  EXPECT_TRUE(loaded.Members[0].FieldData.SameAs(List({Variant("it's"), Variant("2")})));
  EXPECT_TRUE(loaded.Members[1].SelectedFields.SameAs(saved.Members[2].SelectedFields));
  EXPECT_TRUE(errors_.reports().empty());

  // A comparison without member rows loads nothing, not even its header.
  Comparison empty;
  empty.Name = "none";
  UpdateComparison(store_, empty);
  Comparison probe;
  probe.ComparisonID = empty.ComparisonID;
  QueryComparison(store_, probe);
  EXPECT_EQ(probe.Name, "");
}

TEST_F(ComparisonDatabaseTest, SavesAndLoadsAPERTReportOfLivingCompanies) {
  const int32_t a = AddCompany("Ann" + std::string(kSub) + "s");
  const int32_t b = AddCompany("Bob");
  PERTReport saved = SampleReport();
  saved.PERTReportID = 0;
  saved.Members = {{b, ""}, {0, ""}, {a, ""}};
  UpdatePERTReport(store_, saved);
  ASSERT_GE(saved.PERTReportID, 1);

  PERTReport loaded;
  loaded.PERTReportID = saved.PERTReportID;
  QueryPERTReport(store_, loaded);
  EXPECT_EQ(loaded.Name, "P'x");
  EXPECT_EQ(loaded.LastUpdate, DateSerial(2024, 3, 5));
  ASSERT_EQ(loaded.Members.size(), 2u);
  EXPECT_EQ(loaded.Members[0].CompanyID, b);
  EXPECT_EQ(loaded.Members[1].CompanyName, "Ann's");

  DeleteCompany(store_, b);
  PERTReport after;
  after.PERTReportID = saved.PERTReportID;
  QueryPERTReport(store_, after);
  ASSERT_EQ(after.Members.size(), 1u);
  EXPECT_EQ(after.Members[0].CompanyID, a);
  EXPECT_TRUE(errors_.reports().empty());
}

TEST_F(ComparisonDatabaseTest, DeletingOneMemberRemovesTheCompanyFromEveryComparison) {
  const int32_t a = AddCompany("A");
  const int32_t b = AddCompany("B");
  Comparison first;
  first.Name = "first";
  first.Members = {{a, Variant(), Variant()}, {b, Variant(), Variant()}};
  Comparison second = first;
  second.Name = "second";
  UpdateComparison(store_, first);
  UpdateComparison(store_, second);
  ASSERT_NE(first.ComparisonID, second.ComparisonID);

  mdlAccess_Delete(store_, "ComparisonCompany",
                   List({Variant("ComparisonID"), Variant("CompanyID")}),
                   List({Variant(first.ComparisonID), Variant(a)}));
  EXPECT_EQ(Members("ComparisonCompany", "ComparisonID", first.ComparisonID), std::to_string(b) + ";");
  EXPECT_EQ(Members("ComparisonCompany", "ComparisonID", second.ComparisonID), std::to_string(b) + ";");

  // Deleting the header takes its member rows with it.
  mdlAccess_Delete(store_, "Comparison", Variant("ComparisonID"), Variant(first.ComparisonID));
  EXPECT_EQ(Members("ComparisonCompany", "ComparisonID", first.ComparisonID), "");
  EXPECT_EQ(Members("ComparisonCompany", "ComparisonID", second.ComparisonID), std::to_string(b) + ";");
}

}  // namespace
}  // namespace kwx
