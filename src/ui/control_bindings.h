// Controls of the record mirrored into Qt widgets: the windows bind each widget
// to its Control once, then copy typed texts and ticks in and show the
// controls' state.
#pragma once

#include <QString>
#include <vector>

#include "state/menu.h"

class QWidget;

namespace varnoth::ui {

// Controls of a window or dialog bound to their widgets: pull() copies what the user typed
// or ticked into the controls, push() shows the controls.
class ControlBindings {
 public:
  enum class Kind {
    Panel,     // any widget: shown or hidden, enabled or not
    Tabs,      // QTabWidget: caption of its first tab
    Label,     // QLabel: caption
    Button,    // QPushButton: caption
    Toggle,    // checkable QPushButton: caption, value
    Entry,     // QLineEdit typed by the user
    Progress,  // read-only QLineEdit
    Pane,      // read-only QPlainTextEdit, fixed pitch
    Check,     // QCheckBox: caption, value
    Option,    // QRadioButton: caption, value
    Frame,     // QGroupBox: title
  };

  void bind(QWidget* widget, Control& control, Kind kind);
  void pull();
  void push();
  // While a run goes on, every control the user could act on is disabled but
  // `keep` (the Stop button).
  void lock_all_but(const QWidget* keep);

 private:
  struct Binding {
    QWidget* widget;
    Control* control;
    Kind kind;
    QString shown;  // the last text put in a pane, so unchanged ones are skipped
  };
  std::vector<Binding> bindings_;
};

}  // namespace varnoth::ui
