#include "chart/cairo_library_internal.h"

namespace kwx::cairo_library {

LazyLibrary<Functions> library("libcairo.so.2", "Drawing a PNG or PDF chart",
                               [](void* handle, Functions& functions) -> const char* {
                                 KWX_CAIRO_FUNCTIONS(KWX_LAZY_RESOLVE)
                                 return nullptr;
                               });

}  // namespace kwx::cairo_library
