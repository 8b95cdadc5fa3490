#include "model/record.h"

#include <gtest/gtest.h>

#include <string>

#include "automation/safe_array.h"
#include "automation/text.h"
#include "model/judgment_groups.h"
#include "model/market_averages.h"
#include "model/options_group.h"
#include "model/series_rows.h"
#include "tests/support/test_util.h"

namespace kwx {
namespace {

using testing::ErrorOf;

// A value each column type accepts, what it reads back as, and a value it rejects (Empty when
// the type takes anything).
struct TypeCase {
  Variant input;
  Variant stored;
  Variant rejected;
  int rejected_error;
};

TypeCase CaseFor(ColumnType type) {
  SafeArray flags = SafeArray::FromValues({Variant(true), Variant(false)});
  switch (type) {
    case ColumnType::Text:
    case ColumnType::Reference:
      return {Variant(12.5f), Variant("12.5"), Variant::Null(), err::kInvalidUseOfNull};
    case ColumnType::Single:
      return {Variant("2.5"), Variant(2.5f), Variant("abc"), err::kTypeMismatch};
    case ColumnType::Integer:
      return {Variant(2.5), Variant(int16_t{2}), Variant(int32_t{40000}), err::kOverflow};
    case ColumnType::Long:
      return {Variant("70000"), Variant(int32_t{70000}), Variant("x1"), err::kTypeMismatch};
    case ColumnType::Boolean:
      return {Variant("True"), Variant(true), Variant("maybe"), err::kTypeMismatch};
    case ColumnType::Date:
      return {Variant(45000.5), Variant(Date{45000.5}), Variant("not a date"),
              err::kTypeMismatch};
    case ColumnType::Variant:
      return {Variant(flags), Variant(flags), Variant(), 0};
    case ColumnType::Flags: {
      SafeArray from_one = SafeArray::Vector(1, 2);
      from_one(1) = Variant(true);
      from_one(2) = Variant(false);
      return {Variant(flags), Variant(from_one), Variant(2.5), err::kTypeMismatch};
    }
  }
  return {};
}

// Sets every column through `set` under its lower-case name, reads it back through `get` under
// its declared name, then checks that a rejected value raises and leaves the column, and
// that unknown names raise err::kNoSuchMember.
template <class Rec, class Get, class Set>
void ExerciseEveryColumn(const char* what, Get get, Set set) {
  for (const FieldBinding<Rec>& binding : Rec::Bindings()) {
    SCOPED_TRACE(std::string(what) + "." + std::string(binding.column.name));
    TypeCase c = CaseFor(binding.column.type);
    set(FoldCase(binding.column.name), c.input);
    EXPECT_TRUE(get(std::string(binding.column.name)).SameAs(c.stored))
        << get(std::string(binding.column.name)) << " expected " << c.stored;
    if (c.rejected_error != 0) {
      EXPECT_EQ(ErrorOf([&] { set(std::string(binding.column.name), c.rejected); }),
                c.rejected_error);
      EXPECT_TRUE(get(std::string(binding.column.name)).SameAs(c.stored));
    }
  }
  EXPECT_EQ(ErrorOf([&] { get("NoSuchColumn"); }), err::kNoSuchMember) << what;
  EXPECT_EQ(ErrorOf([&] { set("NoSuchColumn", Variant(1.0)); }), err::kNoSuchMember) << what;
  EXPECT_EQ(ErrorOf([&] { set("", Variant(1.0)); }), err::kNoSuchMember) << what;
}

template <class Group>
void ExerciseGroup(const char* what) {
  Group group;
  Object& object = group;  // reached late-bound, as the importers reach it
  ExerciseEveryColumn<Group>(
      what, [&](const std::string& n) { return object.GetProperty(n); },
      [&](const std::string& n, const Variant& v) { object.SetProperty(n, v); });
}

template <class Row>
void ExerciseRow(const char* what) {
  Row row;
  ExerciseEveryColumn<Row>(
      what, [&](const std::string& n) { return GetByName(row, n); },
      [&](const std::string& n, const Variant& v) { SetByName(row, n, v); });
}

TEST(Record, EveryGroupColumnIsReachableByName) {
  ExerciseGroup<OptionsGroup>("Options");
  ExerciseGroup<JudgmentGraphGroup>("JudgmentGraph");
  ExerciseGroup<JudgmentAnalysisGroup>("JudgmentAnalysis");
  ExerciseGroup<JudgmentCheckListGroup>("JudgmentCheckList");
  ExerciseGroup<JudgmentPrefProcGroup>("JudgmentPrefProc");
  ExerciseGroup<JudgmentAssessmentGroup>("JudgmentAssessment");
  ExerciseGroup<JudgmentStockReportGroup>("JudgmentStockReport");
}

TEST(Record, EveryRowColumnIsReachableByName) {
  ExerciseRow<YearlyRow>("Yearly");
  ExerciseRow<QuarterlyRow>("Quarterly");
  ExerciseRow<MonthlyRow>("Monthly");
  ExerciseRow<JudgmentPMGRow>("JudgmentPMG");
  ExerciseRow<JudgmentPERTRow>("JudgmentPERT");
  ExerciseRow<MarketAverages>("DJAverages");
}

}  // namespace
}  // namespace kwx
