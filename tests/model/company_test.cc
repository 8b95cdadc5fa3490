#include "model/company.h"

#include <gtest/gtest.h>

#include <functional>
#include <memory>

#include "automation/safe_array.h"
#include "model/schema.h"
#include "tests/support/test_util.h"

namespace kwx {
namespace {

using testing::ErrorOf;

TEST(Company, PropertiesByName) {
  Company c;
  struct Case {
    const char* name;
    Variant value;
    Variant read_back;
  };
  const Case cases[] = {
      {"CompanyID", Variant("42"), Variant(int32_t{42})},
      {"Notes", Variant("first line"), Variant("first line")},
      {"NOTES", Variant(1.5), Variant("1.5")},
      {"exchangeid", Variant(int32_t{7}), Variant("7")},
      {"sngCurPrice", Variant("12.25"), Variant(12.25f)},
      {"intLastFY", Variant(2004.5), Variant(int16_t{2004})},
      {"datLastFY", Variant("6/30/2005"), Variant(Date{38533})},
  };
  for (const Case& k : cases) {
    SCOPED_TRACE(k.name);
    c.SetProperty(k.name, k.value);
    EXPECT_TRUE(c.GetProperty(k.name).SameAs(k.read_back)) << c.GetProperty(k.name);
  }
  EXPECT_EQ(c.ExchangeID, "7");

  struct Bad {
    const char* name;
    Variant value;
    int error;
  };
  const Bad bad[] = {
      {"CompanyID", Variant("abc"), err::kTypeMismatch},
      {"intLastFY", Variant(int32_t{99999}), err::kOverflow},
      {"datLastFY", Variant("someday"), err::kTypeMismatch},
      {"Yearly", Variant(1.0), err::kNoSuchMember},
      {"sngKWXExtra", Variant(1.0), err::kNoSuchMember},
  };
  Company before = c;
  for (const Bad& k : bad) {
    EXPECT_EQ(ErrorOf([&] { c.SetProperty(k.name, k.value); }), k.error) << k.name;
  }
  EXPECT_EQ(DescribeDifferences(before, c), "");
  EXPECT_EQ(ErrorOf([&] { c.GetProperty("NoSuch"); }), err::kNoSuchMember);
}

TEST(Company, GroupsByNameWhenShared) {
  Company unshared;
  EXPECT_EQ(ErrorOf([&] { unshared.GetProperty("JudgmentGraph"); }), err::kObjectNotSet);

  auto c = std::make_shared<Company>();
  Variant graph = c->GetProperty("judgmentgraph");
  ASSERT_TRUE(graph.IsObject());
  graph.AsObject()->SetProperty("sngFactorEPS", Variant(2.0));
  EXPECT_EQ(c->JudgmentGraph.sngFactorEPS, 2.0f);
  c->GetProperty("Options").AsObject()->SetProperty("intUnit", Variant(int16_t{1}));
  EXPECT_EQ(c->Options.intUnit, 1);

  // The group reference keeps the company alive.
  std::weak_ptr<Company> weak = c;
  c.reset();
  EXPECT_FALSE(weak.expired());
  graph = Variant();
  EXPECT_TRUE(weak.expired());
}

TEST(Company, SeriesColumns) {
  Company c;
  for (size_t i = 0; i < c.Yearly.size(); ++i) c.Yearly[i].Sales = static_cast<float>(i) * 10;
  Variant sales = c.SeriesColumn("yearly", "SALES");
  ASSERT_TRUE(sales.IsArray());
  EXPECT_EQ(sales.AsArray().LBound(), 0);
  EXPECT_EQ(sales.AsArray().UBound(), 9);
  EXPECT_TRUE(sales.AsArray()(3).SameAs(Variant(30.0f)));
  EXPECT_EQ(c.SeriesColumn("JudgmentPERT", "GraphType").AsArray().Count(), 0);

  // Element i comes from values(LBound + i); the shorter length wins.
  SafeArray three = SafeArray::Vector(1, 3);
  three(1) = Variant("1.5");
  three(2) = Variant(int16_t{2});
  three(3) = Variant(3.0);
  c.SetSeriesColumn("Yearly", "EPS", Variant(three));
  EXPECT_EQ(c.Yearly[0].EPS, 1.5f);
  EXPECT_EQ(c.Yearly[2].EPS, 3.0f);
  EXPECT_EQ(c.Yearly[3].EPS, 0.0f);

  SafeArray many = SafeArray::Vector(0, 99);
  for (int32_t i = 0; i <= 99; ++i) many(i) = Variant(i);
  c.SetSeriesColumn("Monthly", "Month", Variant(many));
  EXPECT_EQ(c.Monthly.size(), 72u);
  EXPECT_EQ(c.Monthly[71].Month, 71);

  // A rejected element leaves the whole series as it was.
  SafeArray bad = SafeArray::FromValues({Variant(9.0), Variant("nine")});
  Company before = c;
  EXPECT_EQ(ErrorOf([&] { c.SetSeriesColumn("Yearly", "EPS", Variant(bad)); }),
            err::kTypeMismatch);
  EXPECT_EQ(DescribeDifferences(before, c), "");

  struct Unknown {
    const char* table;
    const char* column;
  };
  for (const Unknown& u : {Unknown{"Yearly", "Month"}, Unknown{"Weekly", "Sales"},
                           Unknown{"Company", "strName"}}) {
    EXPECT_EQ(ErrorOf([&] { c.SeriesColumn(u.table, u.column); }), err::kNoSuchMember)
        << u.table << "." << u.column;
    EXPECT_EQ(ErrorOf([&] { c.SetSeriesColumn(u.table, u.column, Variant(many)); }),
              err::kNoSuchMember)
        << u.table << "." << u.column;
  }
}

TEST(Company, DescribeDifferencesNamesEveryPart) {
  Company a;
  Company b;
  EXPECT_TRUE(SameStudy(a, b));
  EXPECT_EQ(DescribeDifferences(a, b), "");

  b.CompanyID = 5;
  b.strName = "B";
  b.Options.intUnit = 2;
  b.Notes = "n";
  b.Yearly[3].Sales = 1;
  b.Quarterly.pop_back();
  b.JudgmentPERT.push_back(JudgmentPERTRow{});
  b.JudgmentGraph.sngFactorEPS = 1;
  b.JudgmentAssessment.vntStrikePELow = Variant(true);
  b.DJAverages.sngIndustrials = 1;
  b.sngKWXExtra = 3;
  EXPECT_FALSE(SameStudy(a, b));
  EXPECT_EQ(DescribeDifferences(a, b),
            "CompanyID: Long(0) vs Long(5)\n"
            "strName: String(\"\") vs String(\"B\")\n"
            "Options.intUnit: Integer(0) vs Integer(2)\n"
            "Notes: String(\"\") vs String(\"n\")\n"
            "Yearly(3).Sales: Single(0) vs Single(1)\n"
            "Quarterly.Count: Long(36) vs Long(35)\n"
            "JudgmentPERT.Count: Long(0) vs Long(1)\n"
            "JudgmentGraph.sngFactorEPS: Single(0) vs Single(1)\n"
            "JudgmentAssessment.vntStrikePELow: Empty vs True\n"
            "DJAverages.sngIndustrials: Single(0) vs Single(1)\n"
            "sngKWXExtra: Single(0) vs Single(3)\n");
}

}  // namespace
}  // namespace kwx
