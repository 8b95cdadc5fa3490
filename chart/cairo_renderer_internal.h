// Drawing a chart scene through cairo, for the PNG and PDF files.
#ifndef KWX_CHART_CAIRO_RENDERER_INTERNAL_H_
#define KWX_CHART_CAIRO_RENDERER_INTERNAL_H_

#include <string>

#include "chart/chart_scene.h"
#include "chart/chart_writer.h"

namespace kwx::chart_internal {

// Draws `scene` into a new file at `path` as a PNG (at 1.5 pixels per point) or a PDF (one
// page of the scene's size). REQUIRES: `format` is kPng or kPdf. Answers false with cairo's
// reason in `*error` when the file cannot be made.
bool RenderWithCairo(const ChartScene& scene, ChartFormat format, const std::string& path,
                     std::string* error);

}  // namespace kwx::chart_internal

#endif  // KWX_CHART_CAIRO_RENDERER_INTERNAL_H_
