#include "ui/simulation_dialogs.h"

#include <QAbstractButton>
#include <QCheckBox>
#include <QComboBox>
#include <QGroupBox>
#include <QLabel>
#include <QLineEdit>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QRadioButton>
#include <QSignalBlocker>
#include <QStringList>

#include "ui/confid_window.h"
#include "ui/kska_window.h"
#include "ui/main_window.h"
#include "ui/qt_platform.h"
#include "ui/rrtest_window.h"
#include "ui/text_convert.h"

namespace varnoth::ui {

namespace {

// Redraws a running dialog at most this often: a replicate costs far less.
constexpr qint64 kRefreshIntervalMs = 40;

}  // namespace

void push_combo(QComboBox* widget, const ComboBox& combo) {
  const QSignalBlocker quiet(widget);
  QStringList items;
  for (const std::string& item : combo.items) items << to_qstring(item);
  QStringList shown;
  for (int i = 0; i < widget->count(); ++i) shown << widget->itemText(i);
  if (items != shown) {
    widget->clear();
    widget->addItems(items);
  }
  widget->setCurrentIndex(widget->findText(to_qstring(combo.text)));
  widget->setEnabled(combo.enabled);
  widget->setVisible(combo.visible);
}

QPushButton* dialog_button(const char* name, QWidget* parent) {
  auto* button = new QPushButton(parent);
  button->setObjectName(QString::fromLatin1(name));
  button->setAutoDefault(false);
  return button;
}

QLineEdit* dialog_entry(const char* name, QWidget* parent, bool read_only) {
  auto* edit = new QLineEdit(parent);
  edit->setObjectName(QString::fromLatin1(name));
  if (read_only) {
    edit->setReadOnly(true);
    edit->setFocusPolicy(Qt::NoFocus);
  }
  return edit;
}

QPlainTextEdit* dialog_pane(const char* name, QWidget* parent) {
  auto* pane = new QPlainTextEdit(parent);
  pane->setObjectName(QString::fromLatin1(name));
  pane->setReadOnly(true);
  pane->setLineWrapMode(QPlainTextEdit::NoWrap);
  pane->setFont(fixed_pitch_font());
  return pane;
}

QLabel* dialog_label(const char* name, QWidget* parent, const QString& text) {
  auto* label = new QLabel(text, parent);
  label->setObjectName(QString::fromLatin1(name));
  return label;
}

// ---------------------------------------------------------------------------
// RunPlatform.

bool RunPlatform::message(std::string_view text, std::string_view title, MessageIcon icon,
                          bool yes_no) {
  if (refresh_) refresh_();
  return inner_.message(text, title, icon, yes_no);
}

void RunPlatform::yield() {
  if (refresh_ && (!since_refresh_.isValid() || since_refresh_.elapsed() >= kRefreshIntervalMs)) {
    since_refresh_.start();
    refresh_();
  }
  inner_.yield();
}

// ---------------------------------------------------------------------------
// SimulationDialogs.

SimulationDialogs::SimulationDialogs(MainWindow& main, AnalysisRecord& rec, Platform& platform)
    : QObject(&main), main_(main), rec_(rec), platform_(platform) {}

void SimulationDialogs::open_confid() {
  if (confid_ == nullptr) confid_ = new ConfidWindow(*this, rec_, platform_, &main_);
  confid_->open_dialog();
}

void SimulationDialogs::open_kska(int mode) {
  if (kska_ == nullptr) kska_ = new KsKaWindow(*this, rec_, platform_, &main_);
  kska_->open_dialog(mode);
}

void SimulationDialogs::open_rrtest() {
  if (rrtest_ == nullptr) rrtest_ = new RRtestWindow(*this, rec_, &main_);
  rrtest_->open_dialog();
}

void SimulationDialogs::divergence_ran() {
  session_.Seq1Index = 0;
  session_.Seq2Index = 0;
}

bool SimulationDialogs::simulation_running() const {
  return (confid_ != nullptr && confid_->running()) || (kska_ != nullptr && kska_->running());
}

void SimulationDialogs::refresh_main() {
  main_.sync();
  // The relative-rate window can be closed while a simulation yields: the main
  // window, with its menus, stays away until the run ends.
  const bool shown = rec_.form.Form1.visible && !simulation_running();
  if (main_.isVisible() != shown) main_.setVisible(shown);
}

namespace {

SimulationDialogs* dialogs_of(WindowCommands& window) {
  auto* main = dynamic_cast<MainWindow*>(&window);
  return main != nullptr ? &main->simulation_dialogs() : nullptr;
}

}  // namespace

void open_confid_window(WindowCommands& window) {
  if (SimulationDialogs* d = dialogs_of(window)) d->open_confid();
}

void open_kska_window(WindowCommands& window, int mode) {
  if (SimulationDialogs* d = dialogs_of(window)) d->open_kska(mode);
}

void open_rrtest_window(WindowCommands& window) {
  if (SimulationDialogs* d = dialogs_of(window)) d->open_rrtest();
}

}  // namespace varnoth::ui
