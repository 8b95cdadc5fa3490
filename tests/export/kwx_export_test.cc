#include "export/kwx_export.h"

#include <gtest/gtest.h>

#include <string>

#include "automation/dates.h"
#include "automation/safe_array.h"
#include "automation/text.h"
#include "import/kwx_import.h"
#include "model/company.h"

namespace kwx {
namespace {

std::string At(const Variant& fields, int32_t position) {
  const Variant& v = fields.AsArray()(position);
  return v.IsEmpty() ? "<empty>" : v.AsString();
}

TEST(KwxExport, WritesEachKindOfPosition) {
  Company c;
  c.datDataUpdated = DateSerial(2026, 11, 22);
  c.datDataCreated = DateSerial(1899, 12, 30);  // the zero date: fails the date check
  c.datLastFY = DateSerial(2999, 12, 1);        // the first rejected date
  c.datLatestMData = Date{};                    // 103 is written without the check
  c.strName = "Acme";
  c.sngCurPrice = 12.5f;
  c.intLatestPMGFY = 2027;
  c.sngKWXExtra = 0.25f;
  c.SectorID = "Energy";
  c.Notes = "one\r\ntwo\rthree\nfour";
  for (int i = 0; i < 10; ++i) c.Yearly[i].EPS = static_cast<float>(i) / 2;
  c.JudgmentCheckList.SetProperty("strSCLStrike", Variant("101"));
  c.JudgmentCheckList.blnSCLPEContinue = true;
  c.JudgmentStockReport.strSSR0GAP = "5\t6";
  c.JudgmentStockReport.datSSR8g = DateSerial(2020, 3, 1);
  c.Options.intUnit = 3;
  c.JudgmentPMG[0].HiPE = 20;
  c.JudgmentPERT.resize(2);
  c.JudgmentPERT[0] = {1, 0.5f, 0.25f};
  c.JudgmentPERT[1] = {4, 1.5f, 2.0f};

  Variant fields = BuildKwxFields(c);
  ASSERT_TRUE(fields.IsArray());
  EXPECT_EQ(fields.AsArray().LBound(), 0);
  EXPECT_EQ(fields.AsArray().UBound(), 371);

  struct Expect {
    int position;
    std::string text;
  };
  const std::string brk = ChrW(254);
  const Expect expects[] = {
      {0, "1.01"},
      {1, "Nov/22/2026"},
      {106, ""},
      {6, ""},
      {103, "Dec/30/1899"},
      {3, "Acme"},
      {10, "Energy"},
      {13, "12.5"},
      {104, "2027"},
      {101, "0.25"},
      {100, "one" + brk + "two" + brk + "threefour"},
      {144, "0\t0.5\t1\t1.5\t2\t2.5\t3\t3.5\t4\t4.5"},
      {160, "-1\t0\t-1"},
      {165, "True"},
      {168, ""},  // an empty list is an empty position
      {250, "5\t6\t0\t0\t0\t0\t0\t0\t0\t0\t0\t0\t0"},
      {303, "Mar/01/2020"},
      {320, "3"},
      {359, "20\t0\t0\t0\t0"},
      {370, "2"},
      {371, "1\t0.25\t0.5\t4\t2\t1.5"},
  };
  for (const Expect& e : expects) EXPECT_EQ(At(fields, e.position), e.text) << e.position;
  // Positions the import does not read stay empty.
  for (int p : {107, 123, 125, 138, 157, 158, 174, 206, 242, 248, 305, 327, 354, 366, 369}) {
    EXPECT_EQ(At(fields, p), "<empty>") << p;
  }
}

// The lists the database does not keep travel through the file: each at its own position,
// written as tabs between -1/0 and read back as the same list.
TEST(KwxExport, StruckOutListsTheTablesDoNotKeepRoundTrip) {
  struct ListCase {
    int position;
    const char* group;
    const char* name;
    const char* items;  // as the database would keep a list: one 1/0 per item
    std::string text;
  };
  const ListCase cases[] = {
      {168, "JudgmentCheckList", "vntSCLRevStrike", "10000", "-1\t0\t0\t0\t0"},
      {169, "JudgmentCheckList", "vntSCLEPSStrike", "01000", "0\t-1\t0\t0\t0"},
      {227, "JudgmentAnalysis", "vntStrikeD2Eq", "00100", "0\t0\t-1\t0\t0"},
      {228, "JudgmentAnalysis", "vntStrikePTI", "00010", "0\t0\t0\t-1\t0"},
      {229, "JudgmentAnalysis", "vntStrikeROE", "00001", "0\t0\t0\t0\t-1"},
      {230, "JudgmentAnalysis", "vntStrikeLowPrice", "11000", "-1\t-1\t0\t0\t0"},
      {231, "JudgmentAnalysis", "vntStrikePayout", "00011", "0\t0\t0\t-1\t-1"},
      // Their neighbours, which the tables keep, stay where they were.
      {225, "JudgmentAnalysis", "strPart2Strike", "10100", "-1\t0\t-1\t0\t0"},
      {226, "JudgmentAnalysis", "strPart3Strike", "01010", "0\t-1\t0\t-1\t0"},
  };
  auto group_of = [](Company& c, std::string_view group) -> Object& {
    if (group == "JudgmentCheckList") return c.JudgmentCheckList;
    return c.JudgmentAnalysis;
  };
  Company original;
  for (const ListCase& k : cases) group_of(original, k.group).SetProperty(k.name, Variant(k.items));

  Variant fields = BuildKwxFields(original);
  for (const ListCase& k : cases) EXPECT_EQ(At(fields, k.position), k.text) << k.name;

  Company back;
  ASSERT_TRUE(ValidateKwxFields(fields));
  MapKwxCompany(back, fields, 0);
  MapKwxJudgment(back, fields, 0);
  for (const ListCase& k : cases) {
    EXPECT_TRUE(group_of(back, k.group)
                    .GetProperty(k.name)
                    .SameAs(group_of(original, k.group).GetProperty(k.name)))
        << k.name;
  }
}

}  // namespace
}  // namespace kwx
