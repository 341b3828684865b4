// The main window `Form1`: menus, title page, working panes and the pages shown in
// place of dialogs, plus the `region` dialog. The record is the only store: before
// a command the window copies what the user typed into the record, after it the
// window shows the whole record again (sync).
#pragma once

#include <QMainWindow>
#include <QString>
#include <string_view>
#include <vector>

#include "state/platform.h"
#include "state/record.h"
#include "ui/actions.h"

class QAction;
class QComboBox;
class QDialog;
class QGroupBox;
class QLabel;
class QLineEdit;
class QMenu;
class QPushButton;
class QTabWidget;

namespace varnoth::ui {

inline constexpr const char* kAppTitle = "Varnoth";

class MainWindow : public QMainWindow, public WindowCommands {
 public:
  MainWindow(AnalysisRecord& rec, Platform& platform, QWidget* parent = nullptr);

  // Shows the record: menus, captions, texts, visibility, the region dialog.
  void sync();
  // Runs the command behind a control (see perform), between pull and sync.
  // A command that is already running takes no other.
  void run(std::string_view control);

  QDialog* region_dialog() const { return region_; }

  // WindowCommands.
  void show_about() override;
  void quit() override;

 protected:
  bool eventFilter(QObject* watched, QEvent* event) override;
  // The window stays open while a command runs, unless the command is Exit.
  void closeEvent(QCloseEvent* event) override;

 private:
  enum class Kind { Panel, Tabs, Label, Button, Entry, Pane, Progress, Option };
  struct Binding {
    QWidget* widget;
    Control* control;
    Kind kind;
    QString shown;  // the last text written to a pane, to skip unchanged ones
  };

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
  void pull();
  void push_menus();
  void push_bindings();

  AnalysisRecord& rec_;
  Platform& platform_;
  bool running_ = false;
  bool quitting_ = false;

  std::vector<QAction*> actions_;  // one per menu entry, in tree order
  std::vector<QMenu*> menus_;      // the submenu of an entry, or null
  std::vector<Binding> bindings_;
  std::vector<QWidget*> stacked_;  // the overlaid pages, bottom first

  QTabWidget* panes_ = nullptr;  // SSTab1
  QComboBox* combo_ = nullptr;   // Combo1
  QDialog* region_ = nullptr;
  QGroupBox* region_frame_ = nullptr;
};

}  // namespace varnoth::ui
