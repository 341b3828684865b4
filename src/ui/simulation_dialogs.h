// The windows of the simulations (`Confid`, `KsKaCI1`) and of the relative-rate
// test (`RRtest`): thin views over the dialogs of simulation/. This header holds
// what the three share: the mirroring of Controls into widgets, the Platform a
// run sees, and the owner of the three windows that the main window keeps.
#pragma once

#include <QElapsedTimer>
#include <QObject>
#include <QString>
#include <functional>
#include <string>
#include <string_view>
#include <vector>

#include "simulation/kska_dialog.h"
#include "state/menu.h"
#include "state/platform.h"
#include "state/record.h"
#include "ui/control_bindings.h"

class QComboBox;
class QLabel;
class QLineEdit;
class QPlainTextEdit;
class QPushButton;
class QWidget;

namespace varnoth::ui {

class ConfidWindow;
class KsKaWindow;
class MainWindow;
class RRtestWindow;
class WindowCommands;

// Fills a combo box from a ComboBox control without sending its change signal.
void push_combo(QComboBox* widget, const ComboBox& combo);

// Widgets of the dialogs, named as the dialogs name their controls. Buttons take
// no Enter key: a run starts only by its own button.
QPushButton* dialog_button(const char* name, QWidget* parent);
QLineEdit* dialog_entry(const char* name, QWidget* parent, bool read_only = false);
QPlainTextEdit* dialog_pane(const char* name, QWidget* parent);
QLabel* dialog_label(const char* name, QWidget* parent, const QString& text = QString());

// The Platform a run sees: the dialog's own Platform, with the dialog redrawn
// before a message and, at most every 40 ms, before the yield that lets its
// Stop button take a click.
class RunPlatform : public Platform {
 public:
  RunPlatform(Platform& inner, std::function<void()> refresh)
      : inner_(inner), refresh_(std::move(refresh)) {}

  bool message(std::string_view text, std::string_view title, MessageIcon icon,
               bool yes_no = false) override;
  std::string open_file(const FileDialogRequest& request) override {
    return inner_.open_file(request);
  }
  std::string save_file(const FileDialogRequest& request) override {
    return inner_.save_file(request);
  }
  void print(std::string_view text) override { inner_.print(text); }
  void beep() override { inner_.beep(); }
  void busy(bool on) override { inner_.busy(on); }
  void yield() override;
  ClockReading clock() override { return inner_.clock(); }
  std::string current_directory() override { return inner_.current_directory(); }

 private:
  Platform& inner_;
  std::function<void()> refresh_;
  QElapsedTimer since_refresh_;
};

// The three windows, made when first opened and kept for the life of the main
// window, with what the coding simulation keeps between its openings.
class SimulationDialogs : public QObject {
 public:
  SimulationDialogs(MainWindow& main, AnalysisRecord& rec, Platform& platform);

  // The menu entries: Confidence_intervals, CIcodingRegion (mode 0) and
  // CIcodingRegionKaKs (mode 1), RelatRate.
  void open_confid();
  void open_kska(int mode);
  void open_rrtest();

  // A divergence run has new pairs: the pair chosen in KsKaCI1 no longer holds.
  void divergence_ran();

  // Shows the main window as the record says (hidden while a simulation's
  // dialog is open), with its menus; never while a simulation runs.
  void refresh_main();
  bool simulation_running() const;

  // The windows, null until first opened.
  ConfidWindow* confid() const { return confid_; }
  KsKaWindow* kska() const { return kska_; }
  RRtestWindow* rrtest() const { return rrtest_; }
  simulation::KsKaSession& session() { return session_; }

 private:
  MainWindow& main_;
  AnalysisRecord& rec_;
  Platform& platform_;
  simulation::KsKaSession session_;
  // Children of the main window, as this owner is.
  ConfidWindow* confid_ = nullptr;
  KsKaWindow* kska_ = nullptr;
  RRtestWindow* rrtest_ = nullptr;
};

// The menu entries through the window that runs the command; nothing where that
// window is not the main window of the desktop program.
void open_confid_window(WindowCommands& window);
void open_kska_window(WindowCommands& window, int mode);
void open_rrtest_window(WindowCommands& window);

}  // namespace varnoth::ui
