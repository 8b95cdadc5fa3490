#include "chart/cairo_library_internal.h"

namespace kwx::cairo_library {
namespace {

const char* Resolve(void* handle, Functions& functions) {
  KWX_CAIRO_FUNCTIONS(KWX_LAZY_RESOLVE)
  return nullptr;
}

}  // namespace

LazyLibrary<Functions> library("libcairo.so.2", "Drawing a PNG or PDF chart", &Resolve);

}  // namespace kwx::cairo_library
