#include "export/kwx_export.h"

#include <gtest/gtest.h>

#include <string>

#include "automation/dates.h"
#include "automation/safe_array.h"
#include "automation/text.h"
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
      {168, ""},
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

TEST(KwxExport, AFreshStudyWritesEveryReadPosition) {
  Company c;
  Variant fields = BuildKwxFields(c);
  int written = 0;
  for (const Variant& v : fields.AsArray().elements()) written += v.IsEmpty() ? 0 : 1;
  // Positions 0 to 156 less the 27 unused ones, then the groups, options, PMG and PERT.
  EXPECT_EQ(written, 130 + 15 + 27 + 30 + 3 + 56 + 15 + 18 + 7 + 2);
  EXPECT_EQ(At(fields, 370), "0");
  EXPECT_EQ(At(fields, 371), "");
  EXPECT_EQ(At(fields, 124).size(), 71u + 72u);  // 72 zeros between 71 tabs
}

}  // namespace
}  // namespace kwx
