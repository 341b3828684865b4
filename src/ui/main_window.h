// The main window `Form1`: menus, title page, working panes and the pages shown in
// place of dialogs, plus the `region` dialog. The record is the only store: before
// a command the window copies what the user typed into the record, after it the
// window shows the whole record again (sync).
#pragma once

#include <QMainWindow>
#include <QString>
#include <array>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "reports/matrix.h"
#include "reports/plot_charts.h"
#include "reports/plot_data.h"

#include "state/platform.h"
#include "state/record.h"
#include "ui/actions.h"
#include "ui/control_bindings.h"

class QAction;
class QComboBox;
class QDialog;
class QGroupBox;
class QLabel;
class QLineEdit;
class QMenu;
class QPushButton;
class QRadioButton;
class QTabWidget;

namespace varnoth::ui {

class PlotView;
class SimulationDialogs;

inline constexpr const char* kAppTitle = "Varnoth";
// The page of SSTab3 beside Text3 that draws the window table.
inline constexpr const char* kWindowPlotCaption = "Window Plot";

class MainWindow : public QMainWindow, public WindowCommands {
 public:
  MainWindow(AnalysisRecord& rec, Platform& platform, QWidget* parent = nullptr);

  // Shows the record: menus, captions, texts, visibility, the region dialog.
  void sync();
  // Runs the command behind a control (see perform), between pull and sync.
  // A command that is already running takes no other.
  void run(std::string_view control);

  QDialog* region_dialog() const { return region_; }

  // Shows the window plot page of the results, where a window run left one.
  bool show_window_plot();
  // The matrix item the matrix page's controls choose now.
  MatrixItem shown_matrix_item() const;

  // The windows of the simulations and of the relative-rate test.
  SimulationDialogs& simulation_dialogs();

  // WindowCommands.
  void show_about() override;
  void quit() override;

 protected:
  bool eventFilter(QObject* watched, QEvent* event) override;
  // The window stays open while a command runs, unless the command is Exit.
  void closeEvent(QCloseEvent* event) override;

 private:
  using Kind = ControlBindings::Kind;

  void build_menus();
  QWidget* build_title_page();
  QWidget* build_panes();
  QWidget* build_results_page();
  QWidget* build_windows_page();
  QWidget* build_weight_page();
  QWidget* build_matrix_page();
  void build_region_dialog();
  void bind(QWidget* widget, Control& control, Kind kind);
  QPushButton* command_button(const QString& name, const QString& caption);
  QWidget* build_window_plot_page();
  QWidget* build_heat_map_panel();
  void pull();
  void push_menus();
  // The pictures follow the record: the window plot its window table, the heat
  // map the matrix page's choice.
  void refresh_window_plot();
  void show_chosen_comparison();
  void refresh_heat_map();
  // Saves the picture of `view` as the user names it: SVG text or a PNG image.
  void save_picture(PlotView* view, bool svg, std::string_view suffix);

  AnalysisRecord& rec_;
  Platform& platform_;
  bool running_ = false;
  bool quitting_ = false;

  std::vector<QAction*> actions_;  // one per menu entry, in tree order
  std::vector<QMenu*> menus_;      // the submenu of an entry, or null
  ControlBindings bindings_;
  std::vector<QWidget*> stacked_;  // the overlaid pages, bottom first

  QTabWidget* panes_ = nullptr;  // SSTab1
  QComboBox* combo_ = nullptr;   // Combo1
  std::array<QRadioButton*, 9> options_{};  // Option1..Option9

  QTabWidget* results_tabs_ = nullptr;  // SSTab3
  QComboBox* plot_chooser_ = nullptr;   // the comparison of the window plot
  PlotView* window_plot_ = nullptr;
  PlotView* heat_map_ = nullptr;
  std::string plotted_table_;  // the window table the plot was made from
  std::shared_ptr<const reports::WindowTable> window_table_;
  reports::ChartTitles window_titles_;
  QDialog* region_ = nullptr;
  QGroupBox* region_frame_ = nullptr;
  SimulationDialogs* simulation_dialogs_ = nullptr;  // a child, made when first asked for
};

}  // namespace varnoth::ui
