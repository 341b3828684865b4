#include "reports/plot_svg.h"

#include <charconv>
#include <cmath>
#include <cstdio>

namespace varnoth::reports {

namespace {

// Length of the valid UTF-8 sequence at `at`, or 0 when the bytes there are
// none (overlong forms, surrogates and values past U+10FFFF are refused).
std::size_t utf8_length(std::string_view s, std::size_t at, char32_t& code) {
  const auto byte = [&](std::size_t i) { return static_cast<unsigned char>(s[i]); };
  const unsigned char lead = byte(at);
  std::size_t n = 0;
  if (lead < 0x80) {
    code = lead;
    return 1;
  }
  if (lead >= 0xC2 && lead <= 0xDF) {
    n = 2;
    code = lead & 0x1Fu;
  } else if (lead >= 0xE0 && lead <= 0xEF) {
    n = 3;
    code = lead & 0x0Fu;
  } else if (lead >= 0xF0 && lead <= 0xF4) {
    n = 4;
    code = lead & 0x07u;
  } else {
    return 0;
  }
  if (at + n > s.size()) return 0;
  for (std::size_t i = 1; i < n; ++i) {
    const unsigned char c = byte(at + i);
    if ((c & 0xC0u) != 0x80u) return 0;
    code = (code << 6) | (c & 0x3Fu);
  }
  if ((n == 3 && code < 0x800) || (n == 4 && code < 0x10000) || code > 0x10FFFF ||
      (code >= 0xD800 && code <= 0xDFFF))
    return 0;
  return n;
}

bool valid_utf8(std::string_view s) {
  char32_t code = 0;
  for (std::size_t i = 0; i < s.size();) {
    const std::size_t n = utf8_length(s, i, code);
    if (n == 0) return false;
    i += n;
  }
  return true;
}

void append_escaped_ascii(std::string& out, char ch) {
  switch (ch) {
    case '&': out += "&amp;"; break;
    case '<': out += "&lt;"; break;
    case '>': out += "&gt;"; break;
    case '"': out += "&quot;"; break;
    case '\t': out += "&#9;"; break;
    default:
      // Control characters are not allowed in XML 1.0 text.
      if (static_cast<unsigned char>(ch) < 0x20)
        out += '?';
      else
        out += ch;
  }
}

// A coordinate, to the hundredth of a pixel.
std::string coordinate(double v) { return shortest_number(std::round(v * 100) / 100); }

std::string hex(const Rgb& c) {
  char buf[8];
  std::snprintf(buf, sizeof buf, "#%02x%02x%02x", c.r, c.g, c.b);
  return buf;
}

class Writer {
 public:
  explicit Writer(std::string& out) : out_(out) {}

  void attr(std::string_view name, std::string_view value) {
    out_ += ' ';
    out_ += name;
    out_ += "=\"";
    out_ += value;
    out_ += '"';
  }
  void attr(std::string_view name, double value) { attr(name, coordinate(value)); }
  void text_attr(std::string_view name, std::string_view value) {
    attr(name, xml_escaped(value));
  }
  void klass(const std::string& css_class) {
    if (!css_class.empty()) text_attr("class", css_class);
  }
  void data(const DataAttributes& data) {
    for (const auto& [name, value] : data) text_attr("data-" + name, value);
  }

  void operator()(const LineShape& s) {
    out_ += "<line";
    attr("x1", s.from.x);
    attr("y1", s.from.y);
    attr("x2", s.to.x);
    attr("y2", s.to.y);
    attr("stroke", hex(s.color));
    attr("stroke-width", s.width);
    if (s.dashed) attr("stroke-dasharray", "5 4");
    out_ += "/>\n";
  }
  void operator()(const PolylineShape& s) {
    out_ += "<polyline";
    std::string points;
    for (const PlotPoint& p : s.points) {
      if (!points.empty()) points += ' ';
      points += coordinate(p.x);
      points += ',';
      points += coordinate(p.y);
    }
    attr("points", points);
    attr("fill", "none");
    attr("stroke", hex(s.color));
    attr("stroke-width", s.width);
    attr("stroke-linejoin", "round");
    if (s.dashed) attr("stroke-dasharray", "6 4");
    data(s.data);
    out_ += "/>\n";
  }
  void operator()(const RectShape& s) {
    out_ += "<rect";
    klass(s.css_class);
    attr("x", s.x);
    attr("y", s.y);
    attr("width", s.width);
    attr("height", s.height);
    attr("fill", s.filled ? hex(s.fill) : std::string("none"));
    if (s.stroked) {
      attr("stroke", hex(s.stroke));
      attr("stroke-width", s.stroke_width);
    }
    data(s.data);
    out_ += "/>\n";
  }
  void operator()(const CircleShape& s) {
    out_ += "<circle";
    klass(s.css_class);
    attr("cx", s.center.x);
    attr("cy", s.center.y);
    attr("r", s.radius);
    attr("fill", hex(s.fill));
    data(s.data);
    out_ += "/>\n";
  }
  void operator()(const TextShape& s) {
    out_ += "<text";
    klass(s.css_class);
    attr("x", s.at.x);
    attr("y", s.at.y);
    attr("font-size", s.size);
    if (s.anchor != TextAnchor::Start)
      attr("text-anchor", s.anchor == TextAnchor::Middle ? "middle" : "end");
    if (s.bold) attr("font-weight", "bold");
    if (s.color != Rgb{}) attr("fill", hex(s.color));
    if (s.rotate != 0)
      attr("transform", "rotate(" + coordinate(s.rotate) + ' ' + coordinate(s.at.x) + ' ' +
                            coordinate(s.at.y) + ')');
    out_ += '>';
    out_ += xml_escaped(s.text);
    out_ += "</text>\n";
  }
  void operator()(const GroupStart& s) {
    out_ += "<g";
    klass(s.css_class);
    data(s.data);
    out_ += ">\n";
  }
  void operator()(const GroupEnd&) { out_ += "</g>\n"; }

 private:
  std::string& out_;
};

}  // namespace

std::string shortest_number(double value) {
  if (value == 0) return "0";  // also for -0
  char buf[32];
  const auto result = std::to_chars(buf, buf + sizeof buf, value);
  return std::string(buf, result.ptr);
}

std::string xml_escaped(std::string_view text) {
  std::string out;
  out.reserve(text.size());
  if (valid_utf8(text)) {
    char32_t code = 0;
    for (std::size_t i = 0; i < text.size();) {
      const std::size_t n = utf8_length(text, i, code);
      if (n == 1)
        append_escaped_ascii(out, text[i]);
      else if (code == 0xFFFE || code == 0xFFFF)
        out += '?';  // not characters of XML
      else
        out.append(text.substr(i, n));
      i += n;
    }
    return out;
  }
  for (const char ch : text) {
    const auto c = static_cast<unsigned char>(ch);
    if (c < 0x80) {
      append_escaped_ascii(out, ch);
    } else {
      out += static_cast<char>(0xC0 | (c >> 6));
      out += static_cast<char>(0x80 | (c & 0x3F));
    }
  }
  return out;
}

std::string svg_text(const Scene& scene) {
  std::string out;
  out += "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n";
  out += "<svg xmlns=\"http://www.w3.org/2000/svg\" version=\"1.1\"";
  Writer w(out);
  w.attr("width", scene.width);
  w.attr("height", scene.height);
  w.attr("viewBox", "0 0 " + coordinate(scene.width) + ' ' + coordinate(scene.height));
  w.attr("font-family", kPlotFontFamily);
  out += ">\n";
  out += "<title>";
  out += xml_escaped(scene.title);
  out += "</title>\n";
  // A white ground, so the picture reads the same on a dark page.
  w(RectShape{0, 0, scene.width, scene.height, true, {255, 255, 255}, false, {}, 1, "background", {}});
  for (const Shape& shape : scene.shapes) std::visit(w, shape);
  out += "</svg>\n";
  return out;
}

}  // namespace varnoth::reports
