#include "chart/cairo_library_internal.h"

namespace kwx::cairo_library {

KWX_LAZY_LIBRARY(library, "libcairo.so.2", "Drawing a PNG or PDF chart", KWX_CAIRO_FUNCTIONS);

}  // namespace kwx::cairo_library
