// The about box `frmAbout`: title, version and how to cite the program.
#pragma once

class QDialog;
class QWidget;

namespace varnoth::ui {

// A modal box captioned "About " + the application title, closed by `cmdOK`.
QDialog* make_about_box(QWidget* parent);

}  // namespace varnoth::ui
