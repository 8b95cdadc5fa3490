#include "services/value_object.h"

#include <gtest/gtest.h>

#include <memory>

#include "automation/errors.h"
#include "model/company.h"
#include "tests/support/test_util.h"

namespace kwx {
namespace {

TEST(ValueObject, CommonDividendPrefersTheLatestYearsPayout) {
  struct Case {
    float latest_dps;
    float older_dps;
    float cur_div;
    float expected;
  };
  const Case cases[] = {
      {0.80f, 0.70f, 0.95f, 0.80f}, {0.0f, 0.70f, 0.95f, 0.95f},  // an older year's payout is not
                                                                  // used
      {-0.1f, 0.0f, 0.95f, 0.95f},  {0.0f, 0.0f, 0.0f, 0.0f},    {0.0f, 0.0f, -1.0f, 0.0f},
  };
  ValueObject value;
  for (const Case& k : cases) {
    auto company = std::make_shared<Company>();
    company->Yearly[0].DPS = k.latest_dps;
    company->Yearly[1].DPS = k.older_dps;
    company->sngCurDiv = k.cur_div;
    Variant argument{ObjectRef(company)};
    EXPECT_EQ(value.sngCommonDiv(argument), k.expected) << k.latest_dps << " " << k.cur_div;
    EXPECT_EQ(argument.AsObject(), company) << "the reference is left as it was";
  }
  // A study with no yearly rows falls back on the current dividend.
  auto company = std::make_shared<Company>();
  company->Yearly.clear();
  company->sngCurDiv = 0.5f;
  Variant argument{ObjectRef(company)};
  EXPECT_EQ(value.sngCommonDiv(argument), 0.5f);
}

TEST(ValueObject, RejectsWhatIsNotACompany) {
  const std::pair<Variant, int32_t> cases[] = {
      {Variant(), err::kObjectNotSet},
      {Variant(ObjectRef()), err::kObjectNotSet},
      {Variant(2.5f), err::kTypeMismatch},
      {Variant(ObjectRef(std::make_shared<Object>())), err::kTypeMismatch},
  };
  ValueObject value;
  for (const auto& [argument, error] : cases) {
    Variant copy = argument;
    EXPECT_EQ(testing::ErrorOf([&] { value.sngCommonDiv(copy); }), error) << argument;
  }
}

}  // namespace
}  // namespace kwx
