#include "ui/plot_view.h"

#include <QFontMetricsF>
#include <QPainterPath>
#include <QPen>
#include <QPolygonF>
#include <cmath>
#include <variant>

#include "ui/text_convert.h"

namespace varnoth::ui {

namespace {

QColor color(const reports::Rgb& c) { return QColor(c.r, c.g, c.b); }

// The dashes of the SVG ("5 4", "6 4"), in Qt's units of the pen width.
QPen pen(const reports::Rgb& c, double width, bool dashed, double dash) {
  QPen p(color(c), width, Qt::SolidLine, Qt::FlatCap, Qt::RoundJoin);
  if (dashed) p.setDashPattern({dash / width, 4 / width});
  return p;
}

QFont plot_font(double size, bool bold) {
  QFont font(QStringLiteral("DejaVu Sans"));
  font.setStyleHint(QFont::SansSerif);
  font.setPixelSize(std::max(1, static_cast<int>(std::lround(size))));
  font.setBold(bold);
  return font;
}

struct Painter {
  QPainter& p;

  void operator()(const reports::LineShape& s) {
    p.setPen(pen(s.color, s.width, s.dashed, 5));
    p.drawLine(QPointF(s.from.x, s.from.y), QPointF(s.to.x, s.to.y));
  }
  void operator()(const reports::PolylineShape& s) {
    QPolygonF points;
    for (const reports::PlotPoint& pt : s.points) points << QPointF(pt.x, pt.y);
    p.setPen(pen(s.color, s.width, s.dashed, 6));
    p.setBrush(Qt::NoBrush);
    p.drawPolyline(points);
  }
  void operator()(const reports::RectShape& s) {
    p.setPen(s.stroked ? QPen(color(s.stroke), s.stroke_width) : QPen(Qt::NoPen));
    p.setBrush(s.filled ? QBrush(color(s.fill)) : QBrush(Qt::NoBrush));
    p.drawRect(QRectF(s.x, s.y, s.width, s.height));
  }
  void operator()(const reports::CircleShape& s) {
    p.setPen(Qt::NoPen);
    p.setBrush(color(s.fill));
    p.drawEllipse(QPointF(s.center.x, s.center.y), s.radius, s.radius);
  }
  void operator()(const reports::TextShape& s) {
    const QFont font = plot_font(s.size, s.bold);
    const QString text = to_qstring(s.text);
    const double width = QFontMetricsF(font).horizontalAdvance(text);
    const double dx = s.anchor == reports::TextAnchor::Start    ? 0
                      : s.anchor == reports::TextAnchor::Middle ? -width / 2
                                                                : -width;
    p.save();
    p.setFont(font);
    p.setPen(color(s.color));
    p.translate(s.at.x, s.at.y);
    if (s.rotate != 0) p.rotate(s.rotate);
    p.drawText(QPointF(dx, 0), text);
    p.restore();
  }
  void operator()(const reports::GroupStart&) {}
  void operator()(const reports::GroupEnd&) {}
};

}  // namespace

void paint_scene(QPainter& painter, const reports::Scene& scene) {
  painter.setRenderHint(QPainter::Antialiasing);
  painter.setRenderHint(QPainter::TextAntialiasing);
  painter.fillRect(QRectF(0, 0, scene.width, scene.height), Qt::white);
  Painter draw{painter};
  for (const reports::Shape& shape : scene.shapes) std::visit(draw, shape);
}

QImage scene_image(const reports::Scene& scene, double scale) {
  QImage image(static_cast<int>(std::ceil(scene.width * scale)),
               static_cast<int>(std::ceil(scene.height * scale)), QImage::Format_RGB32);
  image.fill(Qt::white);
  QPainter painter(&image);
  painter.scale(scale, scale);
  paint_scene(painter, scene);
  return image;
}

PlotView::PlotView(QWidget* parent) : QWidget(parent) {
  setMinimumSize(320, 220);
  setAutoFillBackground(true);
  QPalette palette = this->palette();
  palette.setColor(QPalette::Window, Qt::white);
  setPalette(palette);
}

void PlotView::set_builder(Builder builder) {
  builder_ = std::move(builder);
  laid_out_ = QSize();
  scene_ = {};
  update();
}

const reports::Scene& PlotView::scene() {
  if (builder_ && laid_out_ != size()) {
    scene_ = builder_(width(), height());
    laid_out_ = size();
  }
  return scene_;
}

void PlotView::paintEvent(QPaintEvent*) {
  if (!builder_) return;
  QPainter painter(this);
  paint_scene(painter, scene());
}

}  // namespace varnoth::ui
