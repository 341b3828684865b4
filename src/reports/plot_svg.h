// Pictures of the results as a list of shapes (a scene) and its SVG text. The
// same scene is written to ".svg" files and painted by the desktop program, so
// both show one picture. Every data point carries its values as data-*
// attributes, so a reader of the SVG gets the numbers back.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <utility>
#include <variant>
#include <vector>

namespace varnoth::reports {

struct Rgb {
  std::uint8_t r = 0, g = 0, b = 0;
  friend bool operator==(const Rgb&, const Rgb&) = default;
};

// Attributes written as data-NAME="value" (NAME without the "data-").
using DataAttributes = std::vector<std::pair<std::string, std::string>>;

struct PlotPoint {
  double x = 0, y = 0;
};

struct LineShape {
  PlotPoint from, to;
  Rgb color;
  double width = 1;
  bool dashed = false;
};

struct PolylineShape {
  std::vector<PlotPoint> points;
  Rgb color;
  double width = 1.5;
  bool dashed = false;
  DataAttributes data;
};

struct RectShape {
  double x = 0, y = 0, width = 0, height = 0;
  bool filled = true;
  Rgb fill;
  bool stroked = false;
  Rgb stroke;
  double stroke_width = 1;
  std::string css_class;
  DataAttributes data;
};

// A data point: a filled circle.
struct CircleShape {
  PlotPoint center;
  double radius = 3;
  Rgb fill;
  std::string css_class;
  DataAttributes data;
};

enum class TextAnchor { Start, Middle, End };

// Text whose baseline starts, centres or ends at `at`; `rotate` turns it in
// degrees about `at`, clockwise as on screen.
struct TextShape {
  PlotPoint at;
  std::string text;  // UTF-8, or Latin-1 bytes as a file gave them
  double size = 12;  // pixels
  TextAnchor anchor = TextAnchor::Start;
  bool bold = false;
  double rotate = 0;
  Rgb color;
  std::string css_class;
};

// Shapes between a group's start and its end form one <g> element.
struct GroupStart {
  std::string css_class;
  DataAttributes data;
};
struct GroupEnd {};

using Shape =
    std::variant<LineShape, PolylineShape, RectShape, CircleShape, TextShape, GroupStart, GroupEnd>;

struct Scene {
  double width = 0, height = 0;
  std::string title;  // the <title> of the SVG
  std::vector<Shape> shapes;
};

// The font of every text of a scene, as SVG names it.
inline constexpr std::string_view kPlotFontFamily = "DejaVu Sans, Verdana, Arial, sans-serif";

// The scene as a standalone SVG document (UTF-8, line feeds).
std::string svg_text(const Scene& scene);

// Text for XML: UTF-8 as it is, or Latin-1 where the bytes are no valid UTF-8,
// with & < > " escaped and control characters other than tab replaced by "?".
std::string xml_escaped(std::string_view text);

// A coordinate or value for an attribute: the shortest text that reads back
// to the same double ("0.5", "12", "1e-05").
std::string shortest_number(double value);

}  // namespace varnoth::reports
