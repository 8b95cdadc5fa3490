#include "automation/safe_array.h"

#include <utility>

#include "automation/errors.h"

namespace kwx {
namespace {

int32_t CountOf(int32_t lower, int32_t upper) {
  int64_t n = static_cast<int64_t>(upper) - lower + 1;
  if (n < 0 || n > INT32_MAX) throw AutomationError(err::kOverflow);
  return static_cast<int32_t>(n);
}

}  // namespace

SafeArray SafeArray::Vector(int32_t lower, int32_t upper) {
  SafeArray a;
  a.dims_ = 1;
  a.lower_[0] = lower;
  a.count_[0] = CountOf(lower, upper);
  a.elements_.resize(static_cast<size_t>(a.count_[0]));
  return a;
}

SafeArray SafeArray::Matrix(int32_t lower1, int32_t upper1, int32_t lower2, int32_t upper2) {
  SafeArray a;
  a.dims_ = 2;
  a.lower_[0] = lower1;
  a.count_[0] = CountOf(lower1, upper1);
  a.lower_[1] = lower2;
  a.count_[1] = CountOf(lower2, upper2);
  a.elements_.resize(static_cast<size_t>(a.count_[0]) * static_cast<size_t>(a.count_[1]));
  return a;
}

SafeArray SafeArray::FromValues(std::vector<Variant> values) {
  SafeArray a;
  a.count_[0] = static_cast<int32_t>(values.size());
  a.elements_ = std::move(values);
  return a;
}

SafeArray SafeArray::FromRows(int32_t rows, int32_t columns, std::vector<Variant> values) {
  if (rows < 0 || columns < 0 ||
      values.size() != static_cast<size_t>(rows) * static_cast<size_t>(columns)) {
    throw AutomationError(err::kSubscript);
  }
  SafeArray a;
  a.dims_ = 2;
  a.count_[0] = rows;
  a.count_[1] = columns;
  a.elements_ = std::move(values);
  return a;
}

int32_t SafeArray::LBound(int dim) const {
  if (dim < 1 || dim > dims_) throw AutomationError(err::kSubscript);
  return lower_[dim - 1];
}

int32_t SafeArray::UBound(int dim) const {
  if (dim < 1 || dim > dims_) throw AutomationError(err::kSubscript);
  return lower_[dim - 1] + count_[dim - 1] - 1;
}

int32_t SafeArray::Count(int dim) const {
  if (dim < 1 || dim > dims_) throw AutomationError(err::kSubscript);
  return count_[dim - 1];
}

Variant& SafeArray::operator()(int32_t i) {
  return const_cast<Variant&>(std::as_const(*this)(i));
}

const Variant& SafeArray::operator()(int32_t i) const {
  int64_t k = static_cast<int64_t>(i) - lower_[0];
  if (dims_ != 1 || k < 0 || k >= count_[0]) throw AutomationError(err::kSubscript);
  return elements_[static_cast<size_t>(k)];
}

Variant& SafeArray::operator()(int32_t i, int32_t j) {
  return const_cast<Variant&>(std::as_const(*this)(i, j));
}

const Variant& SafeArray::operator()(int32_t i, int32_t j) const {
  int64_t r = static_cast<int64_t>(i) - lower_[0];
  int64_t c = static_cast<int64_t>(j) - lower_[1];
  if (dims_ != 2 || r < 0 || r >= count_[0] || c < 0 || c >= count_[1]) {
    throw AutomationError(err::kSubscript);
  }
  return elements_[static_cast<size_t>(r * count_[1] + c)];
}

void SafeArray::Redim(int32_t lower, int32_t upper, bool preserve) {
  int32_t count = CountOf(lower, upper);
  if (!preserve || dims_ != 1) {
    dims_ = 1;
    lower_[0] = lower;
    count_[0] = count;
    count_[1] = 0;
    elements_.assign(static_cast<size_t>(count), Variant());
    return;
  }
  // Elements keep their index: shift the kept ones when the lower bound moves.
  std::vector<Variant> next(static_cast<size_t>(count));
  for (int32_t k = 0; k < count_[0]; ++k) {
    int64_t index = static_cast<int64_t>(lower_[0]) + k;
    if (index >= lower && index <= upper) next[static_cast<size_t>(index - lower)] = std::move(elements_[k]);
  }
  lower_[0] = lower;
  count_[0] = count;
  elements_ = std::move(next);
}

}  // namespace kwx
