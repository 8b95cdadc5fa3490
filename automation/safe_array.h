// SafeArray: an array of Variants with one or two dimensions, each with its own lower bound.
#ifndef KWX_AUTOMATION_SAFE_ARRAY_H_
#define KWX_AUTOMATION_SAFE_ARRAY_H_

#include <cstdint>
#include <vector>

#include "automation/variant.h"

namespace kwx {

class SafeArray {
 public:
  // A one-dimensional array with lower bound 0 and no elements.
  SafeArray() = default;
  // A one-dimensional array with bounds lower to upper inclusive (upper = lower - 1 gives an
  // array with no elements). Elements start Empty. Raises err::kOverflow when upper < lower - 1.
  static SafeArray Vector(int32_t lower, int32_t upper);
  // A two-dimensional array, (lower1..upper1, lower2..upper2). Elements start Empty.
  static SafeArray Matrix(int32_t lower1, int32_t upper1, int32_t lower2, int32_t upper2);
  // A zero-based one-dimensional array holding `values` in order.
  static SafeArray FromValues(std::vector<Variant> values);
  // A zero-based two-dimensional array of `rows` by `columns` taking `values` row by row.
  // Raises err::kSubscript unless values.size() == rows * columns.
  static SafeArray FromRows(int32_t rows, int32_t columns, std::vector<Variant> values);

  int dims() const noexcept { return dims_; }
  // Bounds of dimension `dim` (1 or 2); raises err::kSubscript for a dimension it lacks.
  int32_t LBound(int dim = 1) const;
  int32_t UBound(int dim = 1) const;
  // Number of elements in dimension `dim`.
  int32_t Count(int dim = 1) const;

  // Element access; raises err::kSubscript outside the bounds or with the wrong number of
  // subscripts.
  Variant& operator()(int32_t i);
  const Variant& operator()(int32_t i) const;
  Variant& operator()(int32_t i, int32_t j);
  const Variant& operator()(int32_t i, int32_t j) const;

  // Re-dimensions a one-dimensional array to lower..upper. With `preserve`, elements whose
  // index is kept keep their values; otherwise all become Empty.
  void Redim(int32_t lower, int32_t upper, bool preserve = false);

  // All elements; for two dimensions element (i, j) is at (i - LBound(1)) * Count(2) +
  // (j - LBound(2)).
  const std::vector<Variant>& elements() const noexcept { return elements_; }
  std::vector<Variant>& elements() noexcept { return elements_; }

 private:
  int dims_ = 1;
  int32_t lower_[2] = {0, 0};
  int32_t count_[2] = {0, 0};
  std::vector<Variant> elements_;
};

}  // namespace kwx

#endif  // KWX_AUTOMATION_SAFE_ARRAY_H_
