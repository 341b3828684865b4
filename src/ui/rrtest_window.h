// The window of `RRtest`: two paired sequences and an outgroup, with Ks and Ka
// of their three pairs from the comparison run before. Each control runs its
// handler of simulation/rrtest.h, then the window shows the dialog again (sync).
#pragma once

#include <QDialog>
#include <array>
#include <string_view>

#include "simulation/rrtest.h"
#include "state/record.h"
#include "ui/simulation_dialogs.h"

class QComboBox;

namespace varnoth::ui {

class RRtestWindow : public QDialog {
 public:
  RRtestWindow(SimulationDialogs& host, AnalysisRecord& rec, QWidget* parent);

  // The menu entry RelatRate: a new dialog over the last run.
  void open_dialog();
  void run(std::string_view control);
  void sync();

  simulation::RRtestDialog& dialog() { return d_; }

  // The window's close box and Esc: Cancel.
  void reject() override;

 private:
  void build();

  SimulationDialogs& host_;
  AnalysisRecord& rec_;
  simulation::RRtestDialog d_;
  ControlBindings bindings_;
  std::array<QComboBox*, 3> combos_{};
};

}  // namespace varnoth::ui
