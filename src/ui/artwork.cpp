#include "ui/artwork.h"

#include <QPainter>
#include <QPainterPath>
#include <cmath>
#include <numbers>

namespace varnoth::ui {

QPixmap helix_picture(QSize size) {
  QPixmap pixmap(size);
  pixmap.fill(Qt::transparent);
  QPainter painter(&pixmap);
  painter.setRenderHint(QPainter::Antialiasing);
  const double w = size.width(), h = size.height();
  const double mid = h / 2, amplitude = h * 0.38;
  const double turns = 2.5;
  auto y_of = [&](double x, double phase) {
    return mid + amplitude * std::sin(2 * std::numbers::pi * turns * x / w + phase);
  };
  // Base pairs first, so that the strands lie over them; every fifth one differs.
  for (int k = 1; k < 30; ++k) {
    const double x = w * k / 30.0;
    painter.setPen(QPen(k % 5 == 2 ? QColor(214, 96, 40) : QColor(150, 160, 175), 2.0));
    painter.drawLine(QPointF(x, y_of(x, 0)), QPointF(x, y_of(x, std::numbers::pi)));
  }
  const QColor strand[2] = {QColor(32, 84, 160), QColor(40, 140, 110)};
  for (int s = 0; s < 2; ++s) {
    QPainterPath path;
    path.moveTo(0, y_of(0, s * std::numbers::pi));
    for (int x = 1; x <= size.width(); ++x) path.lineTo(x, y_of(x, s * std::numbers::pi));
    painter.setPen(QPen(strand[s], 4.0, Qt::SolidLine, Qt::RoundCap));
    painter.drawPath(path);
  }
  return pixmap;
}

}  // namespace varnoth::ui
