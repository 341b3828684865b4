#include "ui/kska_window.h"

#include <QCheckBox>
#include <QComboBox>
#include <QGridLayout>
#include <QGroupBox>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QTabWidget>
#include <QVBoxLayout>

#include "simulation/kska_exact.h"
#include "simulation/kska_run.h"
#include "ui/text_convert.h"

namespace varnoth::ui {

using Kind = ControlBindings::Kind;
namespace sim = simulation;

namespace {

// A transition : transversion pair of fields with its Random check.
QGroupBox* ratio_frame(const char* title_name, const char* class_name, const char* trs,
                       const char* trv, const char* check, Control& title, Control& kind,
                       Control& trs_control, Control& trv_control, Control& check_control,
                       ControlBindings& b, QWidget* parent) {
  auto* frame = new QGroupBox(parent);
  frame->setObjectName(QStringLiteral("Frame_%1").arg(QString::fromLatin1(trs)));
  QLabel* heading = dialog_label(title_name, frame);
  QLabel* which = dialog_label(class_name, frame);
  QLineEdit* a = dialog_entry(trs, frame);
  QLineEdit* c = dialog_entry(trv, frame);
  for (QLineEdit* e : {a, c}) {
    e->setMinimumWidth(50);
    e->setMaximumWidth(60);
  }
  auto* random = new QCheckBox(frame);
  random->setObjectName(QString::fromLatin1(check));
  b.bind(heading, title, Kind::Label);
  b.bind(which, kind, Kind::Label);
  b.bind(a, trs_control, Kind::Entry);
  b.bind(c, trv_control, Kind::Entry);
  b.bind(random, check_control, Kind::Check);

  auto* fields = new QHBoxLayout;
  fields->addWidget(which);
  fields->addStretch(1);
  fields->addWidget(a);
  fields->addWidget(new QLabel(QStringLiteral(":"), frame));
  fields->addWidget(c);
  fields->addSpacing(8);
  fields->addWidget(random);
  auto* layout = new QVBoxLayout(frame);
  layout->addWidget(heading);
  layout->addLayout(fields);
  return frame;
}

}  // namespace

KsKaWindow::KsKaWindow(SimulationDialogs& host, AnalysisRecord& rec, Platform& platform,
                       QWidget* parent)
    : QDialog(parent), host_(host), rec_(rec), platform_(platform) {
  setObjectName(QStringLiteral("KsKaCI1"));
  setModal(false);
  build();
}

QPushButton* KsKaWindow::command(const char* name, Control& control, QWidget* parent) {
  QPushButton* button = dialog_button(name, parent);
  bindings_.bind(button, control, Kind::Button);
  connect(button, &QPushButton::clicked, this, [this, name] { run(name); });
  return button;
}

void KsKaWindow::build() {
  tabs_ = new QTabWidget(this);
  tabs_->setObjectName(QStringLiteral("SSTab1"));
  tabs_->addTab(build_parameters_page(), QString());
  tabs_->addTab(build_results_page(), QString());
  auto* layout = new QVBoxLayout(this);
  layout->addWidget(tabs_);
}

QWidget* KsKaWindow::build_parameters_page() {
  sim::KsKaDialog& d = d_;
  auto& b = bindings_;
  auto* page = new QWidget;
  page->setObjectName(QStringLiteral("ParametersPage"));

  // The estimates and their sites.
  auto* grid = new QGridLayout;
  const struct {
    const char* label;
    const char* text;
    Control sim::KsKaDialog::*label_control;
    Control sim::KsKaDialog::*text_control;
    int row, column;
  } kFields[] = {
      {"Label1", "Text1", &sim::KsKaDialog::Label1, &sim::KsKaDialog::Text1, 0, 0},
      {"Label2", "Text2", &sim::KsKaDialog::Label2, &sim::KsKaDialog::Text2, 0, 3},
      {"Label3", "Text3", &sim::KsKaDialog::Label3, &sim::KsKaDialog::Text3, 1, 0},
      {"Label4", "Text4", &sim::KsKaDialog::Label4, &sim::KsKaDialog::Text4, 1, 3},
      {"Label5", "Text5", &sim::KsKaDialog::Label5, &sim::KsKaDialog::Text5, 2, 0},
      {"Label6", "Text6", &sim::KsKaDialog::Label6, &sim::KsKaDialog::Text6, 2, 3},
      {"Label7", "Text7", &sim::KsKaDialog::Label7, &sim::KsKaDialog::Text7, 3, 0},
  };
  for (const auto& f : kFields) {
    QLabel* caption = dialog_label(f.label, page);
    QLineEdit* entry = dialog_entry(f.text, page);
    entry->setMinimumWidth(80);
    entry->setMaximumWidth(100);
    b.bind(caption, d.*f.label_control, Kind::Label);
    b.bind(entry, d.*f.text_control, Kind::Entry);
    grid->addWidget(caption, f.row, f.column);
    grid->addWidget(entry, f.row, f.column + 1);
  }
  QLabel* ks_jc = dialog_label("LabelKsJC", page);
  QLabel* ka_jc = dialog_label("LabelKaJC", page);
  b.bind(ks_jc, d.LabelKsJC, Kind::Label);
  b.bind(ka_jc, d.LabelKaJC, Kind::Label);
  grid->addWidget(ks_jc, 0, 2);
  grid->addWidget(ka_jc, 1, 2);
  grid->setColumnMinimumWidth(2, 36);
  grid->setColumnStretch(5, 1);

  // The pair whose estimates fill the fields.
  pair_row_ = new QWidget(page);
  pair_row_->setObjectName(QStringLiteral("PairRow"));
  combo1_ = new QComboBox(pair_row_);
  combo1_->setObjectName(QStringLiteral("Combo1"));
  combo2_ = new QComboBox(pair_row_);
  combo2_->setObjectName(QStringLiteral("Combo2"));
  for (QComboBox* c : {combo1_, combo2_}) {
    c->setSizeAdjustPolicy(QComboBox::AdjustToContents);
    connect(c, &QComboBox::activated, this, [this, c] { run(c == combo1_ ? "Combo1" : "Combo2"); });
  }
  auto* pair = new QHBoxLayout(pair_row_);
  pair->setContentsMargins(0, 0, 0, 0);
  pair->addWidget(new QLabel(QStringLiteral("Pair of sequences:"), pair_row_));
  pair->addWidget(combo1_);
  pair->addWidget(combo2_);
  pair->addStretch(1);

  // The ratios of the two classes.
  auto* ratios = new QHBoxLayout;
  ratios->addWidget(ratio_frame("Label8", "Label9", "Text8", "Text9", "Check1", d.Label8, d.Label9,
                                d.Text8, d.Text9, d.Check1, b, page));
  ratios->addWidget(ratio_frame("Label10", "Label11", "Text10", "Text11", "Check2", d.Label10,
                                d.Label11, d.Text10, d.Text11, d.Check2, b, page));
  for (const char* name : {"Check1", "Check2"})
    connect(page->findChild<QCheckBox*>(QString::fromLatin1(name)), &QCheckBox::clicked, this,
            [this, name] { run(name); });

  auto* poisson = new QCheckBox(page);
  poisson->setObjectName(QStringLiteral("Check3"));
  auto* scan = new QCheckBox(page);
  scan->setObjectName(QStringLiteral("Check4"));
  b.bind(poisson, d.Check3, Kind::Check);
  b.bind(scan, d.Check4, Kind::Check);

  QLineEdit* progress = dialog_entry("Text12", page, true);
  b.bind(progress, d.Text12, Kind::Progress);

  auto* buttons = new QHBoxLayout;
  buttons->addWidget(command("Command1", d.Command1, page));
  buttons->addWidget(command("Command2", d.Command2, page));
  buttons->addWidget(command("Command3", d.Command3, page));
  stop_ = command("Command4", d.Command4, page);
  buttons->addWidget(stop_);
  buttons->addStretch(1);
  buttons->addWidget(command("Command7", d.Command7, page));

  auto* layout = new QVBoxLayout(page);
  layout->addWidget(pair_row_);
  layout->addLayout(grid);
  layout->addLayout(ratios);
  layout->addWidget(poisson);
  layout->addWidget(scan);
  layout->addStretch(1);
  layout->addWidget(progress);
  layout->addLayout(buttons);
  return page;
}

QWidget* KsKaWindow::build_results_page() {
  sim::KsKaDialog& d = d_;
  auto& b = bindings_;
  auto* page = new QWidget;
  page->setObjectName(QStringLiteral("ResultsTab"));

  QPlainTextEdit* report = dialog_pane("Text13", page);
  report->setMinimumSize(560, 330);
  b.bind(report, d.Text13, Kind::Pane);

  // Exact probabilities: a value box and its button for Ks, Ka and Ka/Ks.
  auto* exact = new QGridLayout;
  const struct {
    const char* label;
    const char* text;
    const char* button;
    Control sim::KsKaDialog::*label_control;
    Control sim::KsKaDialog::*text_control;
    Control sim::KsKaDialog::*button_control;
  } kRows[] = {
      {"Label14", "Text14", "Command10", &sim::KsKaDialog::Label14, &sim::KsKaDialog::Text14,
       &sim::KsKaDialog::Command10},
      {"Label15", "Text15", "Command11", &sim::KsKaDialog::Label15, &sim::KsKaDialog::Text15,
       &sim::KsKaDialog::Command11},
      {"Label18", "Text18", "Command12", &sim::KsKaDialog::Label18, &sim::KsKaDialog::Text18,
       &sim::KsKaDialog::Command12},
  };
  int row = 0;
  for (const auto& r : kRows) {
    QLabel* caption = dialog_label(r.label, page);
    QLineEdit* value = dialog_entry(r.text, page);
    value->setMaximumWidth(90);
    b.bind(caption, d.*r.label_control, Kind::Label);
    b.bind(value, d.*r.text_control, Kind::Entry);
    exact->addWidget(caption, row, 0);
    exact->addWidget(value, row, 1);
    exact->addWidget(command(r.button, d.*r.button_control, page), row, 2);
    ++row;
  }
  QPlainTextEdit* answer = dialog_pane("Text16", page);
  answer->setMinimumWidth(290);
  b.bind(answer, d.Text16, Kind::Pane);
  auto* side = new QVBoxLayout;
  side->addLayout(exact);
  side->addWidget(answer, 1);

  auto* panes = new QHBoxLayout;
  panes->addWidget(report, 1);
  panes->addLayout(side);

  auto* buttons = new QHBoxLayout;
  buttons->addWidget(command("Command5", d.Command5, page));
  buttons->addWidget(command("Command6", d.Command6, page));
  buttons->addWidget(command("Command8", d.Command8, page));
  buttons->addStretch(1);
  buttons->addWidget(command("Command9", d.Command9, page));

  auto* layout = new QVBoxLayout(page);
  layout->addLayout(panes, 1);
  layout->addLayout(buttons);
  return page;
}

void KsKaWindow::open_dialog(int mode) {
  sim::open_kska_dialog(d_, rec_, host_.session(), mode);
  sync();
  raise();
  activateWindow();
  host_.refresh_main();
}

void KsKaWindow::pull() {
  bindings_.pull();
  d_.SSTab1Page = tabs_->currentIndex();
  // The pair boxes are not copied: choose_pair takes the new pair, or refuses it
  // and the boxes go back to the pair in force.
}

void KsKaWindow::sync() {
  setWindowTitle(to_qstring(d_.KsKaCI1.text));
  bindings_.push();
  push_combo(combo1_, d_.Combo1);
  push_combo(combo2_, d_.Combo2);
  pair_row_->setVisible(d_.Combo1.visible || d_.Combo2.visible);
  tabs_->setTabText(0, to_qstring(d_.SSTab1.text));
  tabs_->setTabText(1, to_qstring(d_.ResultsTab.text));
  tabs_->setTabVisible(1, d_.ResultsTab.visible);
  if (tabs_->currentIndex() != d_.SSTab1Page) tabs_->setCurrentIndex(d_.SSTab1Page);
  if (running_) {
    bindings_.lock_all_but(stop_);
    combo1_->setEnabled(false);
    combo2_->setEnabled(false);
  }
  if (d_.loaded != isVisible()) setVisible(d_.loaded);
}

void KsKaWindow::run(std::string_view control) {
  if (running_) {
    // Clicks come in while the run yields: only Stop Simulation is heard.
    if (control == "Command4") sim::stop_simulation(d_);
    return;
  }
  if (control == "Command1") {
    accept_run();
    return;
  }
  pull();
  if (control == "Command2")
    sim::reset_kska_dialog(d_);
  else if (control == "Command3")
    sim::cancel_kska_dialog(d_, rec_);
  else if (control == "Command4")
    sim::stop_simulation(d_);
  else if (control == "Command5")
    sim::print_kska_results(d_, platform_);
  else if (control == "Command6")
    sim::save_kska_results(rec_, platform_);
  else if (control == "Command7")
    sim::close_kska_dialog(d_, rec_);
  else if (control == "Command8")
    sim::save_null_distribution(d_, rec_, platform_);
  else if (control == "Command9")
    sim::close_kska_results(d_, rec_);
  else if (control == "Command10")
    sim::exact_probability_ks(d_);
  else if (control == "Command11")
    sim::exact_probability_ka(d_);
  else if (control == "Command12")
    sim::exact_probability_ratio(d_);
  else if (control == "Check1")
    sim::set_synonymous_random(d_, rec_, d_.Check1.value);
  else if (control == "Check2")
    sim::set_nonsynonymous_random(d_, rec_, d_.Check2.value);
  else if (control == "Combo1" || control == "Combo2")
    sim::choose_pair(d_, rec_, host_.session(), combo1_->currentIndex() + 1,
                     combo2_->currentIndex() + 1);
  sync();
  host_.refresh_main();
}

void KsKaWindow::accept_run() {
  pull();
  running_ = true;
  sync();
  RunPlatform platform(platform_, [this] { sync(); });
  sim::run_kska_simulation(d_, rec_, host_.session(), platform);
  running_ = false;
  sync();
  host_.refresh_main();
}

void KsKaWindow::reject() {
  if (running_)
    sim::stop_simulation(d_);
  else if (d_.Command9.visible)
    run("Command9");
  else if (d_.Command3.visible)
    run("Command3");
  else
    run("Command7");
}

}  // namespace varnoth::ui
