// The picture of the title page and the about box, drawn rather than loaded.
#pragma once

#include <QPixmap>
#include <QSize>

namespace varnoth::ui {

// Two strands of a double helix joined by base pairs, a few of them changed.
QPixmap helix_picture(QSize size);

}  // namespace varnoth::ui
