#include "ui/rrtest_window.h"

#include <QComboBox>
#include <QGridLayout>
#include <QGroupBox>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QVBoxLayout>

#include "ui/text_convert.h"

namespace varnoth::ui {

using Kind = ControlBindings::Kind;
namespace sim = simulation;

RRtestWindow::RRtestWindow(SimulationDialogs& host, AnalysisRecord& rec, QWidget* parent)
    : QDialog(parent), host_(host), rec_(rec) {
  setObjectName(QStringLiteral("RRtest"));
  setModal(false);
  build();
}

void RRtestWindow::build() {
  sim::RRtestDialog& d = d_;
  auto& b = bindings_;

  const char* const kCombos[3] = {"Combo1", "Combo2", "Combo3"};
  for (std::size_t i = 0; i < 3; ++i) {
    auto* combo = new QComboBox(this);
    combo->setObjectName(QString::fromLatin1(kCombos[i]));
    combo->setMinimumWidth(280);
    connect(combo, &QComboBox::activated, this, [this, name = kCombos[i]] { run(name); });
    combos_[i] = combo;
  }
  auto* paired = new QGroupBox(this);
  paired->setObjectName(QStringLiteral("Frame1"));
  auto* paired_layout = new QVBoxLayout(paired);
  paired_layout->addWidget(combos_[0]);
  paired_layout->addWidget(combos_[1]);
  auto* outgroup = new QGroupBox(this);
  outgroup->setObjectName(QStringLiteral("Frame2"));
  auto* outgroup_layout = new QVBoxLayout(outgroup);
  outgroup_layout->addWidget(combos_[2]);
  outgroup_layout->addStretch(1);
  b.bind(paired, d.Frame1, Kind::Frame);
  b.bind(outgroup, d.Frame2, Kind::Frame);

  // Ks and Ka of the three pairs, and their differences after Accept.
  auto* table = new QGridLayout;
  table->addWidget(new QLabel(QStringLiteral("<b>Ks</b>"), this), 0, 1);
  table->addWidget(new QLabel(QStringLiteral("<b>Ka</b>"), this), 0, 2);
  const struct {
    const char* caption;
    const char* ks;
    const char* ka;
    Control sim::RRtestDialog::*ks_control;
    Control sim::RRtestDialog::*ka_control;
  } kRows[] = {
      {"Paired sequences", "Label7", "Label8", &sim::RRtestDialog::Label7,
       &sim::RRtestDialog::Label8},
      {"1st paired - Outgroup", "Label9", "Label10", &sim::RRtestDialog::Label9,
       &sim::RRtestDialog::Label10},
      {"2nd paired - Outgroup", "Label11", "Label12", &sim::RRtestDialog::Label11,
       &sim::RRtestDialog::Label12},
  };
  int row = 1;
  for (const auto& r : kRows) {
    QLabel* ks = dialog_label(r.ks, this);
    QLabel* ka = dialog_label(r.ka, this);
    for (QLabel* l : {ks, ka}) {
      l->setFrameShape(QFrame::StyledPanel);
      l->setMinimumWidth(100);
      l->setTextInteractionFlags(Qt::TextSelectableByMouse);
    }
    b.bind(ks, d.*r.ks_control, Kind::Label);
    b.bind(ka, d.*r.ka_control, Kind::Label);
    table->addWidget(new QLabel(QString::fromLatin1(r.caption), this), row, 0);
    table->addWidget(ks, row, 1);
    table->addWidget(ka, row, 2);
    ++row;
  }
  QLineEdit* ks_difference = dialog_entry("Text1", this, true);
  QLineEdit* ka_difference = dialog_entry("Text2", this, true);
  b.bind(ks_difference, d.Text1, Kind::Progress);
  b.bind(ka_difference, d.Text2, Kind::Progress);
  table->addWidget(new QLabel(QStringLiteral("Difference (1st - 2nd)"), this), row, 0);
  table->addWidget(ks_difference, row, 1);
  table->addWidget(ka_difference, row, 2);
  table->setColumnStretch(3, 1);

  auto* buttons = new QHBoxLayout;
  const std::pair<const char*, Control sim::RRtestDialog::*> kButtons[] = {
      {"Command1", &sim::RRtestDialog::Command1},
      {"Command2", &sim::RRtestDialog::Command2},
      {"Command3", &sim::RRtestDialog::Command3}};
  for (const auto& [name, member] : kButtons) {
    QPushButton* button = dialog_button(name, this);
    b.bind(button, d.*member, Kind::Button);
    connect(button, &QPushButton::clicked, this, [this, name] { run(name); });
    buttons->addWidget(button);
  }
  buttons->addStretch(1);

  auto* frames = new QHBoxLayout;
  frames->addWidget(paired, 2);
  frames->addWidget(outgroup, 1);
  auto* layout = new QVBoxLayout(this);
  layout->addLayout(frames);
  layout->addSpacing(6);
  layout->addLayout(table);
  layout->addStretch(1);
  layout->addLayout(buttons);
}

void RRtestWindow::open_dialog() {
  d_ = sim::open_rrtest(rec_);
  sync();
  raise();
  activateWindow();
  host_.refresh_main();
}

void RRtestWindow::sync() {
  setWindowTitle(to_qstring(d_.RRtest.text));
  bindings_.push();
  push_combo(combos_[0], d_.Combo1);
  push_combo(combos_[1], d_.Combo2);
  push_combo(combos_[2], d_.Combo3);
  if (d_.visible != isVisible()) setVisible(d_.visible);
}

void RRtestWindow::run(std::string_view control) {
  bindings_.pull();
  d_.Combo1.text = to_std(combos_[0]->currentText());
  d_.Combo2.text = to_std(combos_[1]->currentText());
  d_.Combo3.text = to_std(combos_[2]->currentText());
  if (control == "Combo1" || control == "Combo2" || control == "Combo3")
    sim::rrtest_selection_changed(d_);
  else if (control == "Command1")
    sim::rrtest_accept(d_);
  else if (control == "Command2")
    sim::rrtest_cancel(rec_, d_);
  // Command3 ("Stop Simulations") has no action: nothing is simulated here.
  sync();
  host_.refresh_main();
}

void RRtestWindow::reject() { run("Command2"); }

}  // namespace varnoth::ui
