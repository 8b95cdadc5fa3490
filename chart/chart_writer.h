// Writing the study chart as an SVG, PNG or PDF file.
#ifndef KWX_CHART_CHART_WRITER_H_
#define KWX_CHART_CHART_WRITER_H_

#include <optional>
#include <string>
#include <string_view>

#include "chart/chart_scene.h"

namespace kwx {

enum class ChartFormat { kSvg, kPng, kPdf };

// The format a file name asks for by its extension, ".svg", ".png" or ".pdf" in any case;
// nothing for another extension or none.
std::optional<ChartFormat> ChartFormatOf(std::string_view path);

// The scene as an SVG document. Each path that draws a series or a growth line carries its
// tag and name as an attribute (data-series="Sales", data-line="SalesTrend") and its points,
// in page coordinates, in its `d` attribute.
std::string ChartSvg(const ChartScene& scene);

// Writes the scene to `path` in `format`. The file appears whole or not at all: the chart is
// written beside it under a temporary name and renamed over it. Answers false, with the reason
// in `*error`, when the file cannot be written; an existing file is then left as it was.
bool WriteChart(const ChartScene& scene, ChartFormat format, const std::string& path,
                std::string* error);

}  // namespace kwx

#endif  // KWX_CHART_CHART_WRITER_H_
