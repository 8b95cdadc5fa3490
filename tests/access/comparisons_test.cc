#include "access/comparisons.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "access/maintenance.h"
#include "automation/conversions.h"
#include "automation/dates.h"
#include "automation/safe_array.h"
#include "tests/support/test_database.h"
#include "tests/support/test_util.h"

namespace kwx {
namespace {


constexpr const char* kSub = "\xC3\xBF";  // what an apostrophe becomes inside a statement

using testing::Flags;

Variant List(std::vector<Variant> values) { return testing::Array(std::move(values)); }

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

TEST(ComparisonStatements, LoadsAreJoinedSelects) {
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
}

// ---- Against a real database -------------------------------------------------------------

class ComparisonDatabaseTest : public DatabaseTest {
 protected:
  int32_t AddCompany(const std::string& name) {
    EXPECT_TRUE(Exec("insert into Company (strSymbol, strName) select 'S','" + name + "'"));
    return CLng(Scalar("select max(CompanyID) from Company"));
  }
  std::string Members(const std::string& table, const std::string& key, int32_t id) {
    return Column("select CompanyID from " + table + " where " + key + " = " +
                  std::to_string(id) + " order by " + table + "ID");
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
