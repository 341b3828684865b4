// The window of `Confid`: confidence intervals of a divergence estimate by
// simulation. Each button runs its handler of simulation/confid.h on the
// dialog's state, then the window shows that state again (sync).
#pragma once

#include <QDialog>
#include <string_view>

#include "simulation/confid.h"
#include "state/platform.h"
#include "state/record.h"
#include "ui/simulation_dialogs.h"

class QPushButton;

namespace varnoth::ui {

class ConfidWindow : public QDialog {
 public:
  ConfidWindow(SimulationDialogs& host, AnalysisRecord& rec, Platform& platform, QWidget* parent);

  // The menu entry: a new dialog with the defaults of the last run.
  void open_dialog();
  // Runs the handler of a control by its name, between pull and sync. While a
  // run goes on only the Stop button (Command7) is taken.
  void run(std::string_view control);
  void sync();

  simulation::ConfidDialog& dialog() { return dlg_; }
  bool running() const { return running_; }

  // The window's close box and Esc: Stop during a run, else Cancel.
  void reject() override;

 private:
  void build();
  QPushButton* command(const char* name, Control& control);
  void accept_run();

  SimulationDialogs& host_;
  AnalysisRecord& rec_;
  Platform& platform_;
  simulation::ConfidDialog dlg_;
  ControlBindings bindings_;
  QPushButton* stop_ = nullptr;
  bool running_ = false;
};

}  // namespace varnoth::ui
