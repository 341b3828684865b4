#include "ui/confid_window.h"

#include <QCheckBox>
#include <QGridLayout>
#include <QGroupBox>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QRadioButton>
#include <QVBoxLayout>

namespace varnoth::ui {

using Kind = ControlBindings::Kind;
namespace sim = simulation;

ConfidWindow::ConfidWindow(SimulationDialogs& host, AnalysisRecord& rec, Platform& platform,
                           QWidget* parent)
    : QDialog(parent), host_(host), rec_(rec), platform_(platform) {
  setObjectName(QStringLiteral("Confid"));
  setWindowTitle(QStringLiteral("Confidence Intervals of Divergence Estimates"));
  setModal(false);
  build();
}

QPushButton* ConfidWindow::command(const char* name, Control& control) {
  QPushButton* button = dialog_button(name, this);
  bindings_.bind(button, control, Kind::Button);
  connect(button, &QPushButton::clicked, this, [this, name] { run(name); });
  return button;
}

void ConfidWindow::build() {
  sim::ConfidDialog& d = dlg_;
  auto& b = bindings_;

  // Parameters.
  auto* parameters = new QGroupBox(QStringLiteral("Simulation Parameters"), this);
  parameters->setObjectName(QStringLiteral("FrameParameters"));
  auto* grid = new QGridLayout(parameters);
  QLineEdit* text1 = dialog_entry("Text1", parameters);
  QLineEdit* text2 = dialog_entry("Text2", parameters);
  QLineEdit* text3 = dialog_entry("Text3", parameters);
  QLineEdit* text4 = dialog_entry("Text4", parameters);
  for (QLineEdit* e : {text1, text2, text3, text4}) {
    e->setMinimumWidth(90);
    e->setMaximumWidth(110);
  }
  b.bind(text1, d.Text1, Kind::Entry);
  b.bind(text2, d.Text2, Kind::Entry);
  b.bind(text3, d.Text3, Kind::Entry);
  b.bind(text4, d.Text4, Kind::Entry);

  auto* toggles = new QHBoxLayout;
  const std::pair<const char*, Control sim::ConfidDialog::*> kToggles[] = {
      {"ToggleButton1", &sim::ConfidDialog::ToggleButton1},
      {"ToggleButton2", &sim::ConfidDialog::ToggleButton2},
      {"ToggleButton3", &sim::ConfidDialog::ToggleButton3},
      {"ToggleButton4", &sim::ConfidDialog::ToggleButton4}};
  for (const auto& [name, member] : kToggles) {
    QPushButton* toggle = dialog_button(name, parameters);
    toggle->setCheckable(true);
    toggle->setMaximumWidth(48);
    b.bind(toggle, d.*member, Kind::Toggle);
    connect(toggle, &QPushButton::clicked, this, [this, name] { run(name); });
    toggles->addWidget(toggle);
  }
  toggles->addStretch(1);

  QLabel* label2 = dialog_label("Label2", parameters);
  QLabel* label4 = dialog_label("Label4", parameters);
  b.bind(label2, d.Label2, Kind::Label);
  b.bind(label4, d.Label4, Kind::Label);

  grid->addWidget(dialog_label("LabelDivergence", parameters, QStringLiteral("Divergence")), 0, 0);
  grid->addWidget(text1, 0, 1);
  grid->addLayout(toggles, 0, 2);
  grid->addWidget(label2, 1, 0);
  grid->addWidget(text2, 1, 1);
  grid->addWidget(label4, 1, 2);
  grid->addWidget(dialog_label("LabelGC", parameters, QStringLiteral("G+C Percentage")), 2, 0);
  grid->addWidget(text3, 2, 1);
  grid->addWidget(
      dialog_label("LabelReplicates", parameters, QStringLiteral("Number of Replicates")), 3, 0);
  grid->addWidget(text4, 3, 1);
  QLabel* method = dialog_label("Label1", parameters);
  b.bind(method, d.Label1, Kind::Label);
  grid->addWidget(method, 4, 0, 1, 3);
  grid->setColumnStretch(2, 1);

  // Substitution model.
  auto* model = new QGroupBox(QStringLiteral("Nucleotide Substitution"), this);
  model->setObjectName(QStringLiteral("FrameSubstitution"));
  auto* random = new QRadioButton(model);
  random->setObjectName(QStringLiteral("OptionButton2"));
  auto* ratio = new QRadioButton(model);
  ratio->setObjectName(QStringLiteral("OptionButton3"));
  b.bind(random, d.OptionButton2, Kind::Option);
  b.bind(ratio, d.OptionButton3, Kind::Option);
  connect(random, &QRadioButton::clicked, this, [this] { run("OptionButton2"); });
  connect(ratio, &QRadioButton::clicked, this, [this] { run("OptionButton3"); });
  QLineEdit* text5 = dialog_entry("Text5", model);
  QLineEdit* text6 = dialog_entry("Text6", model);
  for (QLineEdit* e : {text5, text6}) {
    e->setMinimumWidth(50);
    e->setMaximumWidth(70);
  }
  b.bind(text5, d.Text5, Kind::Entry);
  b.bind(text6, d.Text6, Kind::Entry);
  auto* ratio_row = new QHBoxLayout;
  ratio_row->addSpacing(24);
  ratio_row->addWidget(new QLabel(QStringLiteral("TRS"), model));
  ratio_row->addWidget(text5);
  ratio_row->addWidget(new QLabel(QStringLiteral(":"), model));
  ratio_row->addWidget(text6);
  ratio_row->addWidget(new QLabel(QStringLiteral("TRV"), model));
  ratio_row->addStretch(1);
  auto* model_layout = new QVBoxLayout(model);
  model_layout->addWidget(random);
  model_layout->addWidget(ratio);
  model_layout->addLayout(ratio_row);

  auto* scan = new QCheckBox(this);
  scan->setObjectName(QStringLiteral("Check4"));
  b.bind(scan, d.Check4, Kind::Check);

  auto* run_buttons = new QHBoxLayout;
  run_buttons->addWidget(command("Command1", d.Command1));
  run_buttons->addWidget(command("Command2", d.Command2));
  run_buttons->addWidget(command("Command3", d.Command3));
  stop_ = command("Command7", d.Command7);
  run_buttons->addWidget(stop_);
  run_buttons->addStretch(1);

  auto* left = new QVBoxLayout;
  left->addWidget(parameters);
  left->addWidget(model);
  left->addWidget(scan);
  left->addStretch(1);
  left->addLayout(run_buttons);

  // Report, progress, exact probabilities.
  QPlainTextEdit* report = dialog_pane("Text7", this);
  report->setMinimumSize(470, 300);
  b.bind(report, d.Text7, Kind::Pane);
  QLineEdit* progress = dialog_entry("Text8", this, true);
  b.bind(progress, d.Text8, Kind::Progress);

  QLabel* label3 = dialog_label("Label3", this);
  b.bind(label3, d.Label3, Kind::Label);
  QLineEdit* text9 = dialog_entry("Text9", this);
  text9->setMaximumWidth(100);
  b.bind(text9, d.Text9, Kind::Entry);
  auto* exact_row = new QHBoxLayout;
  exact_row->addWidget(label3);
  exact_row->addWidget(text9);
  exact_row->addWidget(command("Command10", d.Command10));
  exact_row->addStretch(1);
  QPlainTextEdit* answer = dialog_pane("Text10", this);
  answer->setFixedHeight(84);
  b.bind(answer, d.Text10, Kind::Pane);

  auto* result_buttons = new QHBoxLayout;
  result_buttons->addWidget(command("Command4", d.Command4));
  result_buttons->addWidget(command("Command5", d.Command5));
  result_buttons->addWidget(command("Command8", d.Command8));
  result_buttons->addStretch(1);
  result_buttons->addWidget(command("Command6", d.Command6));
  result_buttons->addWidget(command("Command9", d.Command9));

  auto* right = new QVBoxLayout;
  right->addWidget(report, 1);
  right->addWidget(progress);
  right->addLayout(exact_row);
  right->addWidget(answer);
  right->addLayout(result_buttons);

  auto* layout = new QHBoxLayout(this);
  layout->addLayout(left);
  layout->addLayout(right, 1);
  resize(880, 500);
}

void ConfidWindow::open_dialog() {
  dlg_ = sim::open_confid(rec_);
  sync();
  raise();
  activateWindow();
  host_.refresh_main();
}

void ConfidWindow::sync() {
  bindings_.push();
  if (running_) bindings_.lock_all_but(stop_);
  if (dlg_.visible != isVisible()) setVisible(dlg_.visible);
}

void ConfidWindow::run(std::string_view control) {
  if (running_) {
    // Clicks come in while the run yields: only Stop is heard.
    if (control == "Command7") dlg_.stop_requested = true;
    return;
  }
  if (control == "Command1") {
    accept_run();
    return;
  }
  bindings_.pull();
  if (control == "Command2")
    sim::confid_reset(dlg_);
  else if (control == "Command3" || control == "Command6" || control == "Command9")
    sim::confid_close(rec_, dlg_);
  else if (control == "Command4")
    sim::confid_print(dlg_, platform_);
  else if (control == "Command5")
    sim::confid_save_report(rec_, dlg_, platform_);
  else if (control == "Command8")
    sim::confid_save_null_distribution(dlg_, platform_);
  else if (control == "Command10")
    sim::confid_exact_probability(dlg_);
  else if (control == "ToggleButton1")
    sim::confid_toggle(rec_, dlg_, false);
  else if (control == "ToggleButton2")
    sim::confid_toggle(rec_, dlg_, true);
  else if (control == "OptionButton2")
    sim::confid_choose_random(dlg_);
  else if (control == "OptionButton3")
    sim::confid_choose_ratio(dlg_);
  sync();
  host_.refresh_main();
}

void ConfidWindow::accept_run() {
  bindings_.pull();
  running_ = true;
  sync();
  RunPlatform platform(platform_, [this] { sync(); });
  sim::confid_accept(rec_, dlg_, platform);
  running_ = false;
  sync();
  host_.refresh_main();
}

void ConfidWindow::reject() {
  if (running_)
    dlg_.stop_requested = true;
  else if (dlg_.Command6.visible)
    run("Command6");
  else
    run("Command3");
}

}  // namespace varnoth::ui
