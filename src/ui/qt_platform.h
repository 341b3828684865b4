// The Platform of the desktop program: message boxes, file dialogs, the printer,
// the busy pointer and the event loop of Qt.
#pragma once

#include <QElapsedTimer>
#include <QFont>
#include <QPointer>
#include <QString>
#include <QStringList>
#include <functional>
#include <string>
#include <string_view>

#include "state/platform.h"

class QWidget;

namespace varnoth::ui {

// A dialog filter "Desc|*.a;*.b|All files (*.*)|*.*" in Qt's form, one entry a
// filter: "Desc (*.a *.b)", "All files (*.*)". A description that already ends in
// its patterns keeps its text as it is.
QStringList qt_filters(std::string_view filter);

// Date and time as the report heads print them: "mm/dd/yyyy" and "hh:mm:ss".
ClockReading clock_now();

// The fixed-pitch font of the text panes: Courier New where installed.
QFont fixed_pitch_font();

class QtPlatform : public Platform {
 public:
  // The widget the dialogs are centred on.
  void set_parent(QWidget* parent) { parent_ = parent; }
  // Called before the event loop runs inside a long command, so that the window
  // shows what the logic has written to the record so far.
  void set_refresh(std::function<void()> refresh) { refresh_ = std::move(refresh); }

  bool message(std::string_view text, std::string_view title, MessageIcon icon,
               bool yes_no = false) override;
  std::string open_file(const FileDialogRequest& request) override;
  std::string save_file(const FileDialogRequest& request) override;
  void print(std::string_view text) override;
  void beep() override;
  void busy(bool on) override;
  void yield() override;
  ClockReading clock() override { return clock_now(); }
  std::string current_directory() override;

 private:
  QPointer<QWidget> parent_;
  std::function<void()> refresh_;
  int busy_depth_ = 0;
  QElapsedTimer since_yield_;
};

}  // namespace varnoth::ui
