#include "automation/variant.h"

#include <gtest/gtest.h>

#include "automation/errors.h"
#include "automation/safe_array.h"

namespace kwx {
namespace {

// Copies of an array share its elements until one is changed; every holder must still see
// the values it had, as with a copy taken element by element.
TEST(Variant, ArrayCopiesKeepTheirOwnValuesWhicheverHolderChanges) {
  Variant original(SafeArray::FromValues({Variant(int16_t{1}), Variant("a")}));
  Variant copy = original;
  EXPECT_TRUE(copy.SharesArrayWith(original));

  copy.AsArray()(0) = Variant(int16_t{2});
  EXPECT_FALSE(copy.SharesArrayWith(original));
  EXPECT_EQ(original.AsArray()(0).AsInteger(), 1);
  EXPECT_EQ(copy.AsArray()(0).AsInteger(), 2);

  // The original changed after its copy was copied again: neither copy sees it.
  Variant second = copy;
  Variant third = second;
  second.AsArray().Redim(0, 2, true);
  EXPECT_EQ(second.AsArray().UBound(), 2);
  EXPECT_EQ(third.AsArray().UBound(), 1);
  EXPECT_EQ(copy.AsArray().UBound(), 1);

  // An array inside an array is a value too.
  Variant outer(SafeArray::FromValues({third}));
  Variant outer_copy = outer;
  outer_copy.AsArray()(0).AsArray()(1) = Variant("b");
  EXPECT_EQ(outer.AsArray()(0).AsArray()(1).AsString(), "a");
  EXPECT_EQ(third.AsArray()(1).AsString(), "a");

  // A moved-from Variant is Empty; an assigned one shares until changed.
  Variant moved = std::move(outer_copy);
  EXPECT_TRUE(outer_copy.IsEmpty());
  outer_copy = moved;
  EXPECT_TRUE(outer_copy.SharesArrayWith(moved));
  EXPECT_FALSE(Variant(int16_t{1}).SharesArrayWith(Variant(int16_t{1})));
}

TEST(Variant, TwoDimensionalArraysFromRowsCheckTheirSize) {
  const SafeArray rows = SafeArray::FromRows(2, 3, std::vector<Variant>(6, Variant(1.5)));
  EXPECT_EQ(rows.dims(), 2);
  EXPECT_EQ(rows.UBound(1), 1);
  EXPECT_EQ(rows.UBound(2), 2);
  EXPECT_THROW(SafeArray::FromRows(2, 3, std::vector<Variant>(5)), AutomationError);
  EXPECT_EQ(SafeArray::FromRows(0, 4, {}).Count(1), 0);
}

}  // namespace
}  // namespace kwx
