// The window of `KsKaCI1`: confidence intervals of Ks and Ka, and the test of
// Ka/Ks, by coding-region simulation. Each button runs its handler of
// simulation/kska_*.h on the dialog's state, then the window shows that state
// again (sync). The session of the simulation (its pair and scan) is the
// owner's, kept for the life of the program.
#pragma once

#include <QDialog>
#include <string_view>

#include "simulation/kska_dialog.h"
#include "state/platform.h"
#include "state/record.h"
#include "ui/simulation_dialogs.h"

class QComboBox;
class QPushButton;
class QTabWidget;

namespace varnoth::ui {

class KsKaWindow : public QDialog {
 public:
  KsKaWindow(SimulationDialogs& host, AnalysisRecord& rec, Platform& platform, QWidget* parent);

  // The menu entries: mode 0 "C.I. for Ks and Ka", mode 1 "Test Ka/Ks >1".
  void open_dialog(int mode);
  // Runs the handler of a control by its name, between pull and sync. While a
  // run goes on only Stop Simulation (Command4) is taken.
  void run(std::string_view control);
  void sync();

  simulation::KsKaDialog& dialog() { return d_; }
  bool running() const { return running_; }

  // The window's close box and Esc: Stop during a run, else the results'
  // Close or Cancel, whichever the dialog shows.
  void reject() override;

 private:
  void build();
  QWidget* build_parameters_page();
  QWidget* build_results_page();
  QPushButton* command(const char* name, Control& control, QWidget* parent);
  void pull();
  void accept_run();

  SimulationDialogs& host_;
  AnalysisRecord& rec_;
  Platform& platform_;
  simulation::KsKaDialog d_;
  ControlBindings bindings_;
  QTabWidget* tabs_ = nullptr;
  QComboBox* combo1_ = nullptr;
  QComboBox* combo2_ = nullptr;
  QWidget* pair_row_ = nullptr;
  QPushButton* stop_ = nullptr;
  bool running_ = false;
};

}  // namespace varnoth::ui
