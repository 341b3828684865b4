#include "ui/main_window.h"

#include <QAction>
#include <QApplication>
#include <QCloseEvent>
#include <QComboBox>
#include <QDialog>
#include <QEvent>
#include <QFormLayout>
#include <QFrame>
#include <QGridLayout>
#include <QGroupBox>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QMenu>
#include <QMenuBar>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QRadioButton>
#include <QSignalBlocker>
#include <QTabWidget>
#include <QVBoxLayout>
#include <algorithm>
#include <map>
#include <optional>
#include <set>
#include <string>

#include "reports/plot_files.h"
#include "reports/plot_svg.h"
#include "reports/saving.h"
#include "ui/about_box.h"
#include "ui/artwork.h"
#include "ui/plot_view.h"
#include "ui/qt_platform.h"
#include "ui/simulation_dialogs.h"
#include "ui/text_convert.h"

namespace varnoth::ui {

namespace {

// The panes of the option summary and the reports: fixed pitch, no wrapping,
// read-only, since the reports line up in columns.
QPlainTextEdit* report_pane(const QString& name, QWidget* parent) {
  auto* pane = new QPlainTextEdit(parent);
  pane->setObjectName(name);
  pane->setReadOnly(true);
  pane->setLineWrapMode(QPlainTextEdit::NoWrap);
  pane->setFont(fixed_pitch_font());
  return pane;
}

QLabel* label(const QString& name, const QString& text, QWidget* parent) {
  auto* l = new QLabel(text, parent);
  if (!name.isEmpty()) l->setObjectName(name);
  return l;
}

QLineEdit* entry(const QString& name, QWidget* parent) {
  auto* e = new QLineEdit(parent);
  e->setObjectName(name);
  return e;
}

// A one-page tab control, as the pages of the window are drawn.
QTabWidget* tab_page(const QString& name, QWidget* page, QWidget* parent) {
  auto* tabs = new QTabWidget(parent);
  tabs->setObjectName(name);
  tabs->addTab(page, QString());
  tabs->setAutoFillBackground(true);
  return tabs;
}

// Texts of the title page, where the record has none of its own.
void default_title_texts(Form& f) {
  if (f.Label1.text.empty()) f.Label1.text = kAppTitle;
  if (f.Label2.text.empty())
    f.Label2.text =
        "Divergence of aligned nucleotide sequences in coding and noncoding regions";
  if (f.Label14.text.empty()) f.Label14.text = "Version 6.0";
}

}  // namespace

MainWindow::MainWindow(AnalysisRecord& rec, Platform& platform, QWidget* parent)
    : QMainWindow(parent), rec_(rec), platform_(platform) {
  setObjectName(QStringLiteral("Form1"));
  default_title_texts(rec_.form);
  build_menus();

  auto* central = new QWidget(this);
  auto* column = new QVBoxLayout(central);
  auto* reading = label(QStringLiteral("Label3"), QString(), central);
  QFont bold = reading->font();
  bold.setBold(true);
  reading->setFont(bold);
  bind(reading, rec_.form.Label3, Kind::Label);
  column->addWidget(reading);

  // The pages lie on top of one another; the later ones are raised over the panes.
  auto* stage = new QWidget(central);
  auto* grid = new QGridLayout(stage);
  grid->setContentsMargins(0, 0, 0, 0);
  grid->addWidget(build_title_page(), 0, 0);
  grid->addWidget(build_panes(), 0, 0);
  grid->addWidget(build_results_page(), 0, 0);
  grid->addWidget(build_windows_page(), 0, 0, Qt::AlignCenter);
  grid->addWidget(build_weight_page(), 0, 0, Qt::AlignCenter);
  grid->addWidget(build_matrix_page(), 0, 0);
  column->addWidget(stage, 1);
  setCentralWidget(central);

  build_region_dialog();
  resize(800, 580);
  sync();
}

// ---------------------------------------------------------------------------
// Building.

void MainWindow::build_menus() {
  std::set<std::string_view> parents;
  for (const MenuEntry& e : kMenuTree) parents.insert(e.parent);
  std::map<std::string_view, QMenu*> by_name;
  for (const MenuEntry& e : kMenuTree) {
    const QString name = to_qstring(e.name);
    const QString caption = to_qstring((rec_.menu.*e.item).caption);
    QMenu* owner = e.parent.empty() ? nullptr : by_name.at(e.parent);
    QMenu* submenu = nullptr;
    QAction* action = nullptr;
    if (parents.count(e.name)) {
      submenu = owner ? owner->addMenu(caption) : menuBar()->addMenu(caption);
      submenu->setObjectName(name);
      by_name[e.name] = submenu;
      action = submenu->menuAction();
    } else if (e.name == "ratll") {
      action = owner->addSeparator();
    } else {
      action = owner ? owner->addAction(caption) : menuBar()->addAction(caption);
      connect(action, &QAction::triggered, this, [this, n = e.name] { run(n); });
    }
    action->setObjectName(name);
    actions_.push_back(action);
    menus_.push_back(submenu);
  }
}

QWidget* MainWindow::build_title_page() {
  Form& f = rec_.form;
  auto* page = new QFrame(this);
  page->setObjectName(QStringLiteral("SSTab2"));
  page->setFrameShape(QFrame::StyledPanel);
  page->setAutoFillBackground(true);
  page->setCursor(Qt::PointingHandCursor);

  auto* picture = label(QStringLiteral("Picture1"), QString(), page);
  picture->setPixmap(helix_picture(QSize(360, 140)));
  picture->setAlignment(Qt::AlignCenter);
  auto* title = label(QStringLiteral("Label1"), QString(), page);
  QFont big = title->font();
  big.setPointSizeF(big.pointSizeF() * 3);
  big.setBold(true);
  title->setFont(big);
  title->setAlignment(Qt::AlignCenter);
  auto* line = label(QStringLiteral("Label2"), QString(), page);
  line->setAlignment(Qt::AlignCenter);
  line->setWordWrap(true);
  auto* version = label(QStringLiteral("Label14"), QString(), page);
  version->setAlignment(Qt::AlignCenter);

  auto* layout = new QVBoxLayout(page);
  layout->addStretch(2);
  layout->addWidget(picture);
  layout->addSpacing(12);
  layout->addWidget(title);
  layout->addWidget(line);
  layout->addSpacing(8);
  layout->addWidget(version);
  layout->addStretch(3);

  bind(page, f.SSTab2, Kind::Panel);
  bind(picture, f.Picture1, Kind::Panel);
  bind(title, f.Label1, Kind::Label);
  bind(line, f.Label2, Kind::Label);
  bind(version, f.Label14, Kind::Label);
  for (QWidget* w : {static_cast<QWidget*>(page), static_cast<QWidget*>(picture),
                     static_cast<QWidget*>(title), static_cast<QWidget*>(line),
                     static_cast<QWidget*>(version)})
    w->installEventFilter(this);
  stacked_.push_back(page);
  return page;
}

QWidget* MainWindow::build_panes() {
  Form& f = rec_.form;
  panes_ = new QTabWidget(this);
  panes_->setObjectName(QStringLiteral("SSTab1"));
  panes_->setAutoFillBackground(true);
  // Each pane sits in a page of its own, so that its visibility is the record's
  // and the page's the tab control's.
  QPlainTextEdit* panes[2] = {};
  const char* const kPages[2][2] = {{"Text1", "Input Sequence Information"},
                                    {"Text2", "Divergence Analysis Options"}};
  for (int i = 0; i < 2; ++i) {
    auto* page = new QWidget;
    panes[i] = report_pane(QString::fromLatin1(kPages[i][0]), page);
    auto* layout = new QVBoxLayout(page);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->addWidget(panes[i]);
    panes_->addTab(page, QString::fromLatin1(kPages[i][1]));
  }
  QPlainTextEdit* text1 = panes[0];
  QPlainTextEdit* text2 = panes[1];
  bind(panes_, f.SSTab1, Kind::Panel);
  bind(text1, f.Text1, Kind::Pane);
  bind(text2, f.Text2, Kind::Pane);
  stacked_.push_back(panes_);
  return panes_;
}

QPushButton* MainWindow::command_button(const QString& name, const QString& caption) {
  auto* button = new QPushButton(caption, this);
  button->setObjectName(name);
  connect(button, &QPushButton::clicked, this, [this, n = name.toStdString()] { run(n); });
  return button;
}

QWidget* MainWindow::build_results_page() {
  Form& f = rec_.form;
  auto* page = new QWidget;
  auto* text3 = report_pane(QStringLiteral("Text3"), page);
  auto* progress = entry(QStringLiteral("Text33"), page);
  progress->setReadOnly(true);
  progress->setFocusPolicy(Qt::NoFocus);

  auto* buttons = new QHBoxLayout;
  const std::pair<const char*, Control Form::*> kButtons[] = {
      {"Boto1", &Form::Boto1},          {"Boto2", &Form::Boto2},
      {"BotoData", &Form::BotoData},    {"MatrixBoton", &Form::MatrixBoton},
      {"Boto3", &Form::Boto3},          {"CloseBotton", &Form::CloseBotton}};
  for (const auto& [name, member] : kButtons) {
    QPushButton* b = command_button(QString::fromLatin1(name), QString());
    bind(b, f.*member, Kind::Button);
    if (std::string_view(name) == "CloseBotton") buttons->addStretch(1);
    buttons->addWidget(b);
  }

  auto* layout = new QVBoxLayout(page);
  layout->addWidget(text3, 1);
  layout->addWidget(progress);
  layout->addLayout(buttons);

  QTabWidget* tabs = tab_page(QStringLiteral("SSTab3"), page, this);
  tabs->addTab(build_window_plot_page(), QString::fromLatin1(kWindowPlotCaption));
  tabs->setTabVisible(1, false);
  results_tabs_ = tabs;
  bind(tabs, f.SSTab3, Kind::Tabs);
  bind(text3, f.Text3, Kind::Pane);
  bind(progress, f.Text33, Kind::Progress);
  stacked_.push_back(tabs);
  return tabs;
}

QWidget* MainWindow::build_windows_page() {
  Form& f = rec_.form;
  auto* page = new QWidget;
  auto* size = entry(QStringLiteral("TextWinSize"), page);
  auto* movement = entry(QStringLiteral("TextMovement"), page);
  auto* form = new QFormLayout;
  form->addRow(label(QStringLiteral("LabelWinSize"), QStringLiteral("Window Size (bp)"), page),
               size);
  form->addRow(label(QStringLiteral("LabelMovement"), QStringLiteral("Movement (bp)"), page),
               movement);

  auto* accept = command_button(QStringLiteral("AcceptSliWindows"), QString());
  auto* cancel = command_button(QStringLiteral("CancelSliwindows"), QString());
  auto* whole = command_button(QStringLiteral("WholeSliWindows"), QString());
  auto* buttons = new QHBoxLayout;
  buttons->addWidget(accept);
  buttons->addWidget(cancel);
  buttons->addWidget(whole);

  auto* layout = new QVBoxLayout(page);
  layout->addLayout(form);
  layout->addSpacing(6);
  layout->addLayout(buttons);

  QTabWidget* tabs = tab_page(QStringLiteral("SSTab4"), page, this);
  tabs->setMinimumWidth(380);
  bind(tabs, f.SSTab4, Kind::Tabs);
  bind(size, f.TextWinSize, Kind::Entry);
  bind(movement, f.TextMovement, Kind::Entry);
  bind(accept, f.AcceptSliWindows, Kind::Button);
  bind(cancel, f.CancelSliwindows, Kind::Button);
  bind(whole, f.WholeSliWindows, Kind::Button);
  stacked_.push_back(tabs);
  return tabs;
}

QWidget* MainWindow::build_weight_page() {
  Form& f = rec_.form;
  auto* page = new QFrame(this);
  page->setObjectName(QStringLiteral("SSTab5"));
  page->setFrameShape(QFrame::StyledPanel);
  page->setAutoFillBackground(true);
  page->setFixedWidth(440);

  auto* caption = label(QStringLiteral("Label11"), QString(), page);
  QFont bold = caption->font();
  bold.setBold(true);
  caption->setFont(bold);
  auto* prompt = label(QStringLiteral("Label12"),
                       QStringLiteral("Probability of pathway with synonymous change"), page);
  auto* weight = entry(QStringLiteral("Text4"), page);
  weight->setMaximumWidth(100);
  auto* explanation = label(
      QStringLiteral("Label13"),
      QStringLiteral("In codons with two or three changes (with pathways with synonymous changes "
                     "and pathways with nonsynonymous changes), probability of pathways with "
                     "synonymous changes. For instance, 0.5 indicates an unweighted method, 0.9 "
                     "indicates a high preference for synonymous over nonsynonymous changes, and "
                     "0.1  indicates a high preference for nonsyn. changes."),
      page);
  explanation->setWordWrap(true);
  auto* accept = command_button(QStringLiteral("Command1"), QStringLiteral("Accept"));
  auto* cancel = command_button(QStringLiteral("Command3"), QStringLiteral("Cancel"));

  auto* entry_row = new QHBoxLayout;
  entry_row->addWidget(prompt);
  entry_row->addWidget(weight);
  auto* buttons = new QHBoxLayout;
  buttons->addStretch(1);
  buttons->addWidget(accept);
  buttons->addWidget(cancel);

  auto* layout = new QVBoxLayout(page);
  layout->addWidget(caption);
  layout->addLayout(entry_row);
  layout->addWidget(explanation);
  layout->addLayout(buttons);

  bind(page, f.SSTab5, Kind::Panel);
  bind(caption, f.Label11, Kind::Label);
  bind(weight, f.Text4, Kind::Entry);
  stacked_.push_back(page);
  return page;
}

QWidget* MainWindow::build_matrix_page() {
  Form& f = rec_.form;
  auto* page = new QWidget;
  combo_ = new QComboBox(page);
  combo_->setObjectName(QStringLiteral("Combo1"));
  combo_->setMinimumWidth(200);
  auto* lower_left = label(QStringLiteral("LabelMatrix"), QStringLiteral("Lower-Left Matrix"), page);

  auto* options = new QGridLayout;
  Control Form::* const kOptions[9] = {&Form::Option1, &Form::Option2, &Form::Option3,
                                       &Form::Option4, &Form::Option5, &Form::Option6,
                                       &Form::Option7, &Form::Option8, &Form::Option9};
  for (int i = 0; i < 9; ++i) {
    auto* option = new QRadioButton(page);
    option->setObjectName(QStringLiteral("Option%1").arg(i + 1));
    options->addWidget(option, i / 3, i % 3);
    bind(option, f.*kOptions[i], Kind::Option);
    options_[static_cast<std::size_t>(i)] = option;
    connect(option, &QRadioButton::toggled, this, [this] { refresh_heat_map(); });
  }

  auto* save = command_button(QStringLiteral("SaveMatrix"), QString());
  auto* cancel = command_button(QStringLiteral("Command2"), QStringLiteral("Cancel"));
  auto* buttons = new QHBoxLayout;
  buttons->addStretch(1);
  buttons->addWidget(save);
  buttons->addWidget(cancel);

  auto* controls = new QVBoxLayout;
  controls->addWidget(lower_left);
  controls->addWidget(combo_);
  controls->addLayout(options);
  controls->addSpacing(6);
  controls->addLayout(buttons);
  controls->addStretch(1);
  connect(combo_, &QComboBox::currentIndexChanged, this, [this] { refresh_heat_map(); });

  auto* layout = new QHBoxLayout(page);
  layout->addLayout(controls);
  layout->addWidget(build_heat_map_panel(), 1);

  QTabWidget* tabs = tab_page(QStringLiteral("MatrixTab"), page, this);
  tabs->setMinimumWidth(380);
  bind(tabs, f.MatrixTab, Kind::Tabs);
  bind(save, f.SaveMatrix, Kind::Button);
  stacked_.push_back(tabs);
  return tabs;
}

QWidget* MainWindow::build_window_plot_page() {
  auto* page = new QWidget;
  page->setObjectName(QStringLiteral("WindowPlot"));
  plot_chooser_ = new QComboBox(page);
  plot_chooser_->setObjectName(QStringLiteral("PlotComparison"));
  plot_chooser_->setMinimumWidth(260);
  plot_chooser_->setSizeAdjustPolicy(QComboBox::AdjustToContents);
  connect(plot_chooser_, &QComboBox::currentIndexChanged, this,
          [this] { show_chosen_comparison(); });
  auto* chooser_label =
      label(QStringLiteral("PlotComparisonLabel"), QStringLiteral("Comparison:"), page);
  chooser_label->setBuddy(plot_chooser_);
  window_plot_ = new PlotView(page);
  window_plot_->setObjectName(QStringLiteral("WindowPlotView"));

  auto* png = new QPushButton(QStringLiteral("Save Picture (PNG)"), page);
  png->setObjectName(QStringLiteral("SavePlotPng"));
  auto* svg = new QPushButton(QStringLiteral("Save Picture (SVG)"), page);
  svg->setObjectName(QStringLiteral("SavePlotSvg"));
  connect(png, &QPushButton::clicked, this,
          [this] { save_picture(window_plot_, false, reports::kWindowPictureSuffix); });
  connect(svg, &QPushButton::clicked, this,
          [this] { save_picture(window_plot_, true, reports::kWindowPictureSuffix); });

  auto* top = new QHBoxLayout;
  top->addWidget(chooser_label);
  top->addWidget(plot_chooser_);
  top->addStretch(1);
  top->addWidget(png);
  top->addWidget(svg);
  auto* layout = new QVBoxLayout(page);
  layout->addLayout(top);
  layout->addWidget(window_plot_, 1);
  return page;
}

QWidget* MainWindow::build_heat_map_panel() {
  auto* panel = new QWidget;
  heat_map_ = new PlotView(panel);
  heat_map_->setObjectName(QStringLiteral("HeatMapView"));
  heat_map_->setMinimumSize(420, 300);
  auto* png = new QPushButton(QStringLiteral("Save Picture (PNG)"), panel);
  png->setObjectName(QStringLiteral("SaveHeatMapPng"));
  auto* svg = new QPushButton(QStringLiteral("Save Picture (SVG)"), panel);
  svg->setObjectName(QStringLiteral("SaveHeatMapSvg"));
  connect(png, &QPushButton::clicked, this,
          [this] { save_picture(heat_map_, false, reports::kMatrixPictureSuffix); });
  connect(svg, &QPushButton::clicked, this,
          [this] { save_picture(heat_map_, true, reports::kMatrixPictureSuffix); });
  auto* buttons = new QHBoxLayout;
  buttons->addStretch(1);
  buttons->addWidget(png);
  buttons->addWidget(svg);
  auto* layout = new QVBoxLayout(panel);
  layout->setContentsMargins(0, 0, 0, 0);
  layout->addWidget(heat_map_, 1);
  layout->addLayout(buttons);
  return panel;
}

void MainWindow::build_region_dialog() {
  RegionDialog& r = rec_.region_dialog;
  region_ = new QDialog(this);
  region_->setObjectName(QStringLiteral("region"));
  region_->setWindowTitle(QStringLiteral("Region Analysis"));
  region_->setModal(false);

  region_frame_ = new QGroupBox(region_);
  region_frame_->setObjectName(QStringLiteral("Frame1"));
  auto* first = entry(QStringLiteral("Text1"), region_frame_);
  auto* last = entry(QStringLiteral("Text2"), region_frame_);
  auto* boxes = new QGridLayout(region_frame_);
  boxes->addWidget(label(QString(), QStringLiteral("From nuc. :"), region_frame_), 0, 0);
  boxes->addWidget(label(QString(), QStringLiteral("to :"), region_frame_), 0, 1);
  boxes->addWidget(first, 1, 0);
  boxes->addWidget(last, 1, 1);

  auto* buttons = new QHBoxLayout;
  const char* const kButtons[3][2] = {
      {"Command1", "Accept"}, {"Command2", "Cancel"}, {"Command3", "Whole Sequence"}};
  for (const auto& [name, caption] : kButtons) {
    auto* b = new QPushButton(QString::fromLatin1(caption), region_);
    b->setObjectName(QString::fromLatin1(name));
    b->setAutoDefault(false);
    connect(b, &QPushButton::clicked, this,
            [this, n = std::string("region.") + name] { run(n); });
    buttons->addWidget(b);
  }

  auto* layout = new QVBoxLayout(region_);
  layout->addWidget(region_frame_);
  layout->addLayout(buttons);

  // Closing the dialog by its window box or Esc is its Cancel.
  connect(region_, &QDialog::rejected, this, [this] {
    run("region.Command2");
    rec_.region_dialog.region.visible = false;
    sync();
  });
  bind(first, r.Text1, Kind::Entry);
  bind(last, r.Text2, Kind::Entry);
}

void MainWindow::bind(QWidget* widget, Control& control, Kind kind) {
  bindings_.bind(widget, control, kind);
}

// ---------------------------------------------------------------------------
// Record <-> widgets.

void MainWindow::pull() {
  bindings_.pull();
  rec_.form.SSTab1Page = panes_->currentIndex();
  rec_.form.Combo1.text = to_std(combo_->currentText());
}

void MainWindow::push_menus() {
  for (std::size_t i = 0; i < kMenuTree.size(); ++i) {
    const MenuItem& item = rec_.menu.*kMenuTree[i].item;
    QAction* action = actions_[i];
    if (menus_[i] != nullptr)
      menus_[i]->setTitle(to_qstring(item.caption));
    else if (!action->isSeparator())
      action->setText(to_qstring(item.caption));
    // Visibility first: Qt reads a hidden action as disabled whatever was set.
    action->setVisible(item.visible);
    action->setEnabled(item.enabled);
    // Only a checked item draws as checkable, so unchecked ones show no box.
    action->setCheckable(item.checked);
    action->setChecked(item.checked);
  }
}

void MainWindow::sync() {
  Form& f = rec_.form;
  setWindowTitle(to_qstring(f.Form1.text));
  push_menus();
  bindings_.push();
  if (panes_->currentIndex() != f.SSTab1Page) panes_->setCurrentIndex(f.SSTab1Page);

  const ComboBox& combo = f.Combo1;
  QStringList items;
  for (const std::string& item : combo.items) items << to_qstring(item);
  QStringList shown;
  for (int i = 0; i < combo_->count(); ++i) shown << combo_->itemText(i);
  if (items != shown) {
    combo_->clear();
    combo_->addItems(items);
  }
  const int chosen = combo_->findText(to_qstring(combo.text));
  if (chosen >= 0) combo_->setCurrentIndex(chosen);
  combo_->setEnabled(combo.enabled);
  combo_->setVisible(combo.visible);

  refresh_window_plot();
  if (f.MatrixTab.visible) refresh_heat_map();

  for (QWidget* page : stacked_) page->raise();

  const RegionDialog& r = rec_.region_dialog;
  region_frame_->setTitle(to_qstring(r.region.text));
  region_->setEnabled(r.region.enabled);
  if (r.region.visible != region_->isVisible()) region_->setVisible(r.region.visible);
}

void MainWindow::run(std::string_view control) {
  if (running_) return;
  running_ = true;
  pull();
  perform(control, rec_, platform_, *this);
  if (control == "Divergence" && simulation_dialogs_ != nullptr)
    simulation_dialogs_->divergence_ran();
  running_ = false;
  sync();
}

SimulationDialogs& MainWindow::simulation_dialogs() {
  if (simulation_dialogs_ == nullptr)
    simulation_dialogs_ = new SimulationDialogs(*this, rec_, platform_);
  return *simulation_dialogs_;
}

// ---------------------------------------------------------------------------
// Pictures.

void MainWindow::refresh_window_plot() {
  const std::string& text = rec_.results.WindowDataText;
  if (text != plotted_table_) {
    plotted_table_ = text;
    std::optional<reports::WindowTable> table = reports::window_table_of(rec_, text);
    window_table_.reset();
    if (table && !table->comparisons.empty()) {
      window_titles_ = reports::window_chart_titles(rec_, *table);
      window_table_ = std::make_shared<const reports::WindowTable>(std::move(*table));
    }
    const QSignalBlocker quiet(plot_chooser_);
    plot_chooser_->clear();
    if (window_table_) {
      const auto& comparisons = window_table_->comparisons;
      for (std::size_t c = 0; c < comparisons.size(); ++c)
        plot_chooser_->addItem(QStringLiteral("%1: ").arg(c + 1) +
                               to_qstring(comparisons[c].name_a) + QStringLiteral("  vs  ") +
                               to_qstring(comparisons[c].name_b));
    }
    show_chosen_comparison();
  }
  // The page is there while the results are those of a window run.
  const bool shown = window_table_ != nullptr && rec_.form.BotoData.visible;
  if (!shown && results_tabs_->currentIndex() == 1) results_tabs_->setCurrentIndex(0);
  results_tabs_->setTabVisible(1, shown);
  const bool many = window_table_ && window_table_->comparisons.size() > 1;
  plot_chooser_->setVisible(many);
  findChild<QLabel*>(QStringLiteral("PlotComparisonLabel"))->setVisible(many);
}

void MainWindow::show_chosen_comparison() {
  if (!window_table_) {
    window_plot_->set_builder({});
    return;
  }
  const std::size_t chosen =
      static_cast<std::size_t>(std::max(0, plot_chooser_->currentIndex()));
  window_plot_->set_builder(
      [table = window_table_, titles = window_titles_, chosen](double width, double height) {
        reports::WindowChartOptions options;
        options.width = width;
        options.height = height;
        options.comparison = chosen;
        return reports::window_chart(*table, titles, options);
      });
}

bool MainWindow::show_window_plot() {
  refresh_window_plot();
  if (!results_tabs_->isTabVisible(1)) return false;
  results_tabs_->setCurrentIndex(1);
  return true;
}

MatrixItem MainWindow::shown_matrix_item() const {
  if (!rec_.coding()) {
    const std::string text = to_std(combo_->currentText());
    for (std::size_t i = 0; i < kMatrixComboItems.size(); ++i)
      if (text == kMatrixComboItems[i]) return noncoding_matrix_item(static_cast<int>(i));
    return noncoding_matrix_item(0);
  }
  int option = 1;
  for (int i = 0; i < 6; ++i)
    if (options_[static_cast<std::size_t>(i)]->isChecked()) {
      option = i + 1;
      break;
    }
  return coding_matrix_item(option, rec_.menu.JukesandCantor.checked);
}

void MainWindow::refresh_heat_map() {
  if (heat_map_ == nullptr || !rec_.form.MatrixTab.visible) return;
  const MatrixItem item = shown_matrix_item();
  auto cells = std::make_shared<const reports::HeatMapData>(reports::heat_map_data(rec_, item));
  heat_map_->set_builder(
      [cells, titles = reports::heat_map_titles(rec_, item)](double width, double height) {
        return reports::heat_map(*cells, titles, {width, height});
      });
}

void MainWindow::save_picture(PlotView* view, bool svg, std::string_view suffix) {
  if (running_ || !view->has_picture()) return;
  running_ = true;
  const std::string path =
      reports::ask_picture_path(rec_, platform_, svg ? reports::kSvgFilter : reports::kPngFilter,
                                suffix, svg ? ".svg" : ".png");
  // Like the other saves, a cancel or a failed write ends silently.
  if (!path.empty()) {
    const reports::Scene scene = view->scene();
    if (svg)
      write_text_file(path, reports::svg_text(scene));
    else
      scene_image(scene).save(to_qstring(path), "PNG");
  }
  running_ = false;
}

// ---------------------------------------------------------------------------
// Events.

bool MainWindow::eventFilter(QObject* watched, QEvent* event) {
  const QEvent::Type type = event->type();
  if (type != QEvent::MouseButtonPress && type != QEvent::MouseButtonRelease &&
      type != QEvent::MouseButtonDblClick)
    return QMainWindow::eventFilter(watched, event);
  // The title page, its picture and its two first labels each take a click;
  // Label14 takes none, so a click on it does nothing.
  const QString name = watched->objectName();
  if (type == QEvent::MouseButtonRelease && name != QLatin1String("Label14"))
    run(name.toStdString());
  return true;
}

void MainWindow::show_about() {
  QDialog* box = make_about_box(this);
  box->exec();
  delete box;
}

void MainWindow::closeEvent(QCloseEvent* event) {
  if (running_ && !quitting_) {
    event->ignore();
    return;
  }
  QMainWindow::closeEvent(event);
}

void MainWindow::quit() {
  quitting_ = true;
  close();
  QCoreApplication::quit();
}

}  // namespace varnoth::ui
