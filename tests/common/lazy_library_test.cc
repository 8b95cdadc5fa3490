// A library loaded on first use: its functions once it loads, and a reason that names it when
// it cannot, on every call.
#include "common/lazy_library_internal.h"

#include <gtest/gtest.h>

#include <cmath>
#include <string>

namespace kwx {
namespace {

struct MathFunctions {
  decltype(&::cos) cos = nullptr;
};

const char* ResolveCos(void* handle, MathFunctions& functions) {
  functions.cos = reinterpret_cast<decltype(&::cos)>(dlsym(handle, "cos"));
  return functions.cos == nullptr ? "cos" : nullptr;
}

const char* ResolveMissing(void* handle, MathFunctions& functions) {
  functions.cos = reinterpret_cast<decltype(&::cos)>(dlsym(handle, "kwx_no_such_function"));
  return functions.cos == nullptr ? "kwx_no_such_function" : nullptr;
}

TEST(LazyLibrary, LoadsOnceOrSaysWhyNot) {
  LazyLibrary<MathFunctions> math("libm.so.6", "Counting", &ResolveCos);
  EXPECT_EQ(math.Loaded(), nullptr) << "nothing is loaded before it is asked for";
  std::string error;
  const MathFunctions* functions = math.Load(error);
  ASSERT_NE(functions, nullptr) << error;
  EXPECT_EQ(functions->cos(0.0), 1.0);
  EXPECT_EQ(math.Load(error), functions);
  EXPECT_EQ(math.Loaded(), functions);
  EXPECT_EQ(error, "");

  LazyLibrary<MathFunctions> absent("libkwx-no-such-library.so.1", "Counting", &ResolveCos);
  for (int attempt = 0; attempt < 2; ++attempt) {
    error.clear();
    EXPECT_EQ(absent.Load(error), nullptr);
    EXPECT_EQ(error.rfind("Counting needs libkwx-no-such-library.so.1, which cannot be loaded", 0),
              0u)
        << error;
  }
  EXPECT_EQ(absent.Loaded(), nullptr);

  LazyLibrary<MathFunctions> lacking("libm.so.6", "Counting", &ResolveMissing);
  error.clear();
  EXPECT_EQ(lacking.Load(error), nullptr);
  EXPECT_EQ(error, "libm.so.6 lacks kwx_no_such_function");
}

}  // namespace
}  // namespace kwx
