#include "ui/control_bindings.h"

#include <QAbstractButton>
#include <QGroupBox>
#include <QLabel>
#include <QLineEdit>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QRadioButton>
#include <QTabWidget>

#include "ui/text_convert.h"

namespace varnoth::ui {

void ControlBindings::bind(QWidget* widget, Control& control, Kind kind) {
  bindings_.push_back({widget, &control, kind, QString()});
}

void ControlBindings::pull() {
  for (Binding& b : bindings_) {
    switch (b.kind) {
      case Kind::Entry: b.control->text = to_std(static_cast<QLineEdit*>(b.widget)->text()); break;
      case Kind::Check:
      case Kind::Option:
      case Kind::Toggle:
        b.control->value = static_cast<QAbstractButton*>(b.widget)->isChecked();
        break;
      default: break;
    }
  }
}

void ControlBindings::push() {
  for (Binding& b : bindings_) {
    const Control& c = *b.control;
    switch (b.kind) {
      case Kind::Panel: break;
      case Kind::Tabs:
        static_cast<QTabWidget*>(b.widget)->setTabText(0, to_qstring(c.text));
        break;
      case Kind::Label: static_cast<QLabel*>(b.widget)->setText(to_qstring(c.text)); break;
      case Kind::Frame: static_cast<QGroupBox*>(b.widget)->setTitle(to_qstring(c.text)); break;
      case Kind::Button: static_cast<QPushButton*>(b.widget)->setText(to_qstring(c.text)); break;
      case Kind::Toggle:
      case Kind::Check: {
        auto* button = static_cast<QAbstractButton*>(b.widget);
        button->setText(to_qstring(c.text));
        button->setChecked(c.value);
        break;
      }
      case Kind::Option: {
        auto* option = static_cast<QRadioButton*>(b.widget);
        option->setText(to_qstring(c.text));
        // As the dialog says, even where that leaves none chosen.
        option->setAutoExclusive(false);
        option->setChecked(c.value);
        option->setAutoExclusive(true);
        break;
      }
      case Kind::Entry:
      case Kind::Progress: {
        auto* edit = static_cast<QLineEdit*>(b.widget);
        const QString text = to_qstring(c.text);
        if (edit->text() != text) edit->setText(text);
        break;
      }
      case Kind::Pane: {
        const QString text = display_text(c.text);
        if (text != b.shown) {
          static_cast<QPlainTextEdit*>(b.widget)->setPlainText(text);
          b.shown = text;
        }
        break;
      }
    }
    b.widget->setEnabled(c.enabled);
    b.widget->setVisible(c.visible);
  }
}

void ControlBindings::lock_all_but(const QWidget* keep) {
  for (Binding& b : bindings_) {
    if (b.widget == keep) continue;
    switch (b.kind) {
      case Kind::Button:
      case Kind::Toggle:
      case Kind::Entry:
      case Kind::Check:
      case Kind::Option: b.widget->setEnabled(false); break;
      default: break;
    }
  }
}

}  // namespace varnoth::ui
