#include <memory>
#include <variant>

#include "chart/cairo_library_internal.h"
#include "chart/cairo_renderer_internal.h"

namespace kwx::chart_internal {
namespace {

// Pixels per point of the PNG: sharp enough on a screen and for printing a page.
constexpr double kPngScale = 1.5;
constexpr const char* kFontFamily = "DejaVu Sans";

// cairo's functions. Every call comes after RenderWithCairo loaded them.
const cairo_library::Functions& Cairo() noexcept { return *cairo_library::library.Loaded(); }

struct SurfaceCloser {
  void operator()(cairo_surface_t* s) const { Cairo().cairo_surface_destroy(s); }
};
struct ContextCloser {
  void operator()(cairo_t* c) const { Cairo().cairo_destroy(c); }
};

void SetColor(cairo_t* cr, SceneColor c) { Cairo().cairo_set_source_rgb(cr, c.r, c.g, c.b); }

void Draw(cairo_t* cr, const ScenePath& path) {
  Cairo().cairo_new_path(cr);
  for (const auto& run : path.runs) {
    if (run.empty()) continue;
    Cairo().cairo_move_to(cr, run.front().x, run.front().y);
    for (size_t i = 1; i < run.size(); ++i) Cairo().cairo_line_to(cr, run[i].x, run[i].y);
    if (path.filled) Cairo().cairo_close_path(cr);
  }
  if (path.filled) {
    SetColor(cr, path.fill);
    if (path.width > 0) {
      Cairo().cairo_fill_preserve(cr);
    } else {
      Cairo().cairo_fill(cr);
      return;
    }
  }
  SetColor(cr, path.color);
  Cairo().cairo_set_line_width(cr, path.width);
  Cairo().cairo_set_dash(cr, path.dash.empty() ? nullptr : path.dash.data(),
                         static_cast<int>(path.dash.size()), 0);
  Cairo().cairo_stroke(cr);
}

void Draw(cairo_t* cr, const SceneDot& dot) {
  Cairo().cairo_new_path(cr);
  Cairo().cairo_arc(cr, dot.center.x, dot.center.y, dot.radius, 0, 2 * 3.14159265358979323846);
  SetColor(cr, dot.color);
  Cairo().cairo_fill(cr);
}

void Draw(cairo_t* cr, const SceneText& text) {
  Cairo().cairo_select_font_face(cr, kFontFamily, CAIRO_FONT_SLANT_NORMAL,
                                 text.bold ? CAIRO_FONT_WEIGHT_BOLD : CAIRO_FONT_WEIGHT_NORMAL);
  Cairo().cairo_set_font_size(cr, text.size);
  cairo_text_extents_t extents;
  Cairo().cairo_text_extents(cr, text.text.c_str(), &extents);
  double x = text.at.x;
  if (text.anchor == TextAnchor::kMiddle) x -= extents.x_advance / 2;
  if (text.anchor == TextAnchor::kEnd) x -= extents.x_advance;
  Cairo().cairo_new_path(cr);
  Cairo().cairo_move_to(cr, x, text.at.y);
  SetColor(cr, text.color);
  Cairo().cairo_show_text(cr, text.text.c_str());
}

bool Failed(cairo_status_t status, std::string* error) {
  if (status == CAIRO_STATUS_SUCCESS) return false;
  *error = Cairo().cairo_status_to_string(status);
  return true;
}

}  // namespace

bool RenderWithCairo(const ChartScene& scene, ChartFormat format, const std::string& path,
                     std::string* error) {
  if (cairo_library::library.Load(*error) == nullptr) return false;
  const bool png = format == ChartFormat::kPng;
  std::unique_ptr<cairo_surface_t, SurfaceCloser> surface(
      png ? Cairo().cairo_image_surface_create(CAIRO_FORMAT_RGB24,
                                               static_cast<int>(scene.width * kPngScale + 0.5),
                                               static_cast<int>(scene.height * kPngScale + 0.5))
          : Cairo().cairo_pdf_surface_create(path.c_str(), scene.width, scene.height));
  if (Failed(Cairo().cairo_surface_status(surface.get()), error)) return false;
  {
    std::unique_ptr<cairo_t, ContextCloser> cr(Cairo().cairo_create(surface.get()));
    if (png) Cairo().cairo_scale(cr.get(), kPngScale, kPngScale);
    Cairo().cairo_set_source_rgb(cr.get(), 1, 1, 1);
    Cairo().cairo_paint(cr.get());
    Cairo().cairo_set_line_join(cr.get(), CAIRO_LINE_JOIN_ROUND);
    Cairo().cairo_set_line_cap(cr.get(), CAIRO_LINE_CAP_BUTT);
    for (const SceneElement& element : scene.elements) {
      std::visit([&](const auto& e) { Draw(cr.get(), e); }, element);
    }
    if (Failed(Cairo().cairo_status(cr.get()), error)) return false;
  }
  if (png) {
    if (Failed(Cairo().cairo_surface_write_to_png(surface.get(), path.c_str()), error))
      return false;
  } else {
    Cairo().cairo_surface_finish(surface.get());
    if (Failed(Cairo().cairo_surface_status(surface.get()), error)) return false;
  }
  return true;
}

}  // namespace kwx::chart_internal
