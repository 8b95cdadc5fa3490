#include "chart/chart_writer.h"

#include <cstdio>
#include <filesystem>
#include <fstream>
#include <string>
#include <system_error>
#include <variant>

#include "chart/cairo_renderer_internal.h"

namespace kwx {
namespace {

// cairo's own SVG surface would be the shortest way to an SVG, but it writes anonymous glyphs
// and paths: nothing in its output says which path is the sales line, and a reader (or a test)
// could not find the series. So the SVG is written here from the same scene cairo draws for
// the PNG and PDF; the geometry stays in one place (BuildChartScene) and only the drawing
// calls differ.

std::string Number(double v) {
  char buffer[32];
  std::snprintf(buffer, sizeof buffer, "%.2f", v);
  std::string s = buffer;
  // "12.50" -> "12.5", "12.00" -> "12": shorter files, same points.
  while (s.back() == '0') s.pop_back();
  if (s.back() == '.') s.pop_back();
  return s == "-0" ? "0" : s;
}

std::string Color(SceneColor c) {
  char buffer[8];
  std::snprintf(buffer, sizeof buffer, "#%02x%02x%02x", static_cast<int>(c.r * 255 + 0.5),
                static_cast<int>(c.g * 255 + 0.5), static_cast<int>(c.b * 255 + 0.5));
  return buffer;
}

std::string Escaped(std::string_view text) {
  std::string out;
  for (char c : text) {
    switch (c) {
      case '&':
        out += "&amp;";
        break;
      case '<':
        out += "&lt;";
        break;
      case '>':
        out += "&gt;";
        break;
      case '"':
        out += "&quot;";
        break;
      default:
        out += c;
    }
  }
  return out;
}

void Write(std::string& out, const ScenePath& path) {
  std::string d;
  for (const auto& run : path.runs) {
    for (size_t i = 0; i < run.size(); ++i) {
      if (!d.empty()) d += ' ';
      d += (i == 0 ? "M" : "L") + Number(run[i].x) + "," + Number(run[i].y);
    }
    if (path.filled && !run.empty()) d += " Z";
  }
  out += "<path";
  if (!path.tag.empty()) out += " " + path.tag + "=\"" + Escaped(path.name) + "\"";
  out += " d=\"" + d + "\"";
  out += path.filled ? " fill=\"" + Color(path.fill) + "\"" : std::string(" fill=\"none\"");
  if (path.width > 0) {
    out += " stroke=\"" + Color(path.color) + "\" stroke-width=\"" + Number(path.width) + "\"";
    if (!path.dash.empty()) {
      out += " stroke-dasharray=\"";
      for (size_t i = 0; i < path.dash.size(); ++i) out += (i ? "," : "") + Number(path.dash[i]);
      out += "\"";
    }
  }
  out += "/>\n";
}

void Write(std::string& out, const SceneDot& dot) {
  out += "<circle cx=\"" + Number(dot.center.x) + "\" cy=\"" + Number(dot.center.y) + "\" r=\"" +
         Number(dot.radius) + "\" fill=\"" + Color(dot.color) + "\"/>\n";
}

void Write(std::string& out, const SceneText& text) {
  static constexpr const char* kAnchors[] = {"start", "middle", "end"};
  out += "<text x=\"" + Number(text.at.x) + "\" y=\"" + Number(text.at.y) + "\" font-size=\"" +
         Number(text.size) + "\" fill=\"" + Color(text.color) + "\" text-anchor=\"" +
         kAnchors[static_cast<int>(text.anchor)] + "\"";
  if (text.bold) out += " font-weight=\"bold\"";
  if (!text.role.empty()) out += " class=\"" + Escaped(text.role) + "\"";
  out += ">" + Escaped(text.text) + "</text>\n";
}

}  // namespace

std::optional<ChartFormat> ChartFormatOf(std::string_view path) {
  std::string extension = std::filesystem::path(path).extension().string();
  for (char& c : extension) c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
  if (extension == ".svg") return ChartFormat::kSvg;
  if (extension == ".png") return ChartFormat::kPng;
  if (extension == ".pdf") return ChartFormat::kPdf;
  return std::nullopt;
}

std::string ChartSvg(const ChartScene& scene) {
  std::string out = "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n";
  out += "<svg xmlns=\"http://www.w3.org/2000/svg\" width=\"" + Number(scene.width) +
         "pt\" height=\"" + Number(scene.height) + "pt\" viewBox=\"0 0 " + Number(scene.width) +
         " " + Number(scene.height) + "\">\n";
  out += "<rect width=\"100%\" height=\"100%\" fill=\"#ffffff\"/>\n";
  out += "<g font-family=\"DejaVu Sans, Verdana, Arial, sans-serif\" stroke-linejoin=\"round\">\n";
  for (const SceneElement& element : scene.elements) {
    std::visit([&](const auto& e) { Write(out, e); }, element);
  }
  out += "</g>\n</svg>\n";
  return out;
}

bool WriteChart(const ChartScene& scene, ChartFormat format, const std::string& path,
                std::string* error) {
  // cairo reports a missing folder only as "error while writing to output stream".
  const std::filesystem::path folder = std::filesystem::path(path).parent_path();
  std::error_code ec;
  if (!folder.empty() && !std::filesystem::is_directory(folder, ec)) {
    *error = "no such folder: " + folder.string();
    return false;
  }
  const std::string partial = path + ".partial";
  bool written = false;
  if (format == ChartFormat::kSvg) {
    std::ofstream file(partial, std::ios::binary | std::ios::trunc);
    file << ChartSvg(scene);
    file.close();
    written = static_cast<bool>(file);
    if (!written) *error = "cannot write " + partial;
  } else {
    written = chart_internal::RenderWithCairo(scene, format, partial, error);
  }
  if (written) {
    std::filesystem::rename(partial, path, ec);
    if (!ec) return true;
    *error = ec.message();
  }
  std::filesystem::remove(partial, ec);
  return false;
}

}  // namespace kwx
