// A widget that shows a picture of the results: the scene of the reports
// library, laid out anew for the widget's size and painted with QPainter, so
// the screen shows what the saved SVG shows.
#pragma once

#include <QImage>
#include <QPainter>
#include <QWidget>
#include <functional>

#include "reports/plot_svg.h"

namespace varnoth::ui {

// Paints every shape of `scene` in scene coordinates.
void paint_scene(QPainter& painter, const reports::Scene& scene);

// The scene as an image, `scale` pixels per scene unit.
QImage scene_image(const reports::Scene& scene, double scale = 2);

class PlotView : public QWidget {
 public:
  // Builds the scene for a size; an empty function shows nothing.
  using Builder = std::function<reports::Scene(double width, double height)>;

  explicit PlotView(QWidget* parent = nullptr);
  void set_builder(Builder builder);
  bool has_picture() const { return static_cast<bool>(builder_); }
  // The scene at the widget's present size.
  const reports::Scene& scene();

 protected:
  void paintEvent(QPaintEvent* event) override;

 private:
  Builder builder_;
  // The scene last laid out, kept until the size or the builder changes.
  reports::Scene scene_;
  QSize laid_out_;
};

}  // namespace varnoth::ui
