// cairo, loaded the first time a chart is drawn as PNG or PDF (common/lazy_library_internal.h).
#ifndef KWX_CHART_CAIRO_LIBRARY_INTERNAL_H_
#define KWX_CHART_CAIRO_LIBRARY_INTERNAL_H_

#include <cairo-pdf.h>
#include <cairo.h>

#include "common/lazy_library_internal.h"

namespace kwx::cairo_library {

// The cairo functions the chart renderer calls, by their own names.
#define KWX_CAIRO_FUNCTIONS(X)                                                                 \
  X(cairo_arc) X(cairo_close_path) X(cairo_create) X(cairo_destroy) X(cairo_fill)              \
  X(cairo_fill_preserve) X(cairo_image_surface_create) X(cairo_line_to) X(cairo_move_to)       \
  X(cairo_new_path) X(cairo_paint) X(cairo_pdf_surface_create) X(cairo_scale)                  \
  X(cairo_select_font_face) X(cairo_set_dash) X(cairo_set_font_size) X(cairo_set_line_cap)     \
  X(cairo_set_line_join) X(cairo_set_line_width) X(cairo_set_source_rgb) X(cairo_show_text)    \
  X(cairo_status) X(cairo_status_to_string) X(cairo_stroke) X(cairo_surface_destroy)           \
  X(cairo_surface_finish) X(cairo_surface_status) X(cairo_surface_write_to_png)                \
  X(cairo_text_extents)

struct Functions {
  KWX_CAIRO_FUNCTIONS(KWX_LAZY_POINTER)
};

// libcairo.so.2, the soname of the cairo these headers describe.
extern LazyLibrary<Functions> library;

}  // namespace kwx::cairo_library

#endif  // KWX_CHART_CAIRO_LIBRARY_INTERNAL_H_
