#include "ui/qt_platform.h"

#include <QApplication>
#include <QDateTime>
#include <QDir>
#include <QFileDialog>
#include <QFontDatabase>
#include <QMessageBox>
#include <QPrintDialog>
#include <QPrinter>
#include <QTextDocument>

#include "ui/text_convert.h"

namespace varnoth::ui {

namespace {

// Repaints at most this often inside a long command: the event loop costs more
// than a comparison.
constexpr qint64 kYieldIntervalMs = 40;

QMessageBox::Icon qt_icon(MessageIcon icon) {
  switch (icon) {
    case MessageIcon::Information: return QMessageBox::Information;
    case MessageIcon::Exclamation: return QMessageBox::Warning;
    case MessageIcon::Critical: return QMessageBox::Critical;
    case MessageIcon::Question: return QMessageBox::Question;
    case MessageIcon::None: break;
  }
  return QMessageBox::NoIcon;
}

// The filter the dialog opens with: the 1-based index, or the first.
QString chosen_filter(const QStringList& filters, int index) {
  if (filters.isEmpty()) return {};
  return index >= 1 && index <= filters.size() ? filters[index - 1] : filters.front();
}

std::string native_path(const QString& path) {
  return path.isEmpty() ? std::string() : QDir::toNativeSeparators(path).toStdString();
}

}  // namespace

QStringList qt_filters(std::string_view filter) {
  const QStringList parts = to_qstring(filter).split(QLatin1Char('|'));
  QStringList out;
  for (qsizetype i = 0; i + 1 < parts.size(); i += 2) {
    const QString description = parts[i].trimmed();
    QString patterns = parts[i + 1].trimmed();
    patterns.replace(QLatin1Char(';'), QLatin1Char(' '));
    const QString tail = QLatin1Char('(') + patterns + QLatin1Char(')');
    out << (description.endsWith(tail) ? description : description + QLatin1Char(' ') + tail);
  }
  return out;
}

ClockReading clock_now() {
  const QDateTime now = QDateTime::currentDateTime();
  const QTime t = now.time();
  return {now.date().toString(QStringLiteral("MM/dd/yyyy")).toStdString(),
          t.toString(QStringLiteral("HH:mm:ss")).toStdString(), t.msecsSinceStartOfDay() / 1000.0};
}

QFont fixed_pitch_font() {
  const QString courier = QStringLiteral("Courier New");
  if (QFontDatabase::families().contains(courier)) return QFont(courier, 10);
  return QFontDatabase::systemFont(QFontDatabase::FixedFont);
}

bool QtPlatform::message(std::string_view text, std::string_view title, MessageIcon icon,
                         bool yes_no) {
  if (refresh_) refresh_();
  QMessageBox box(qt_icon(icon), to_qstring(title), display_text(text),
                  yes_no ? QMessageBox::Yes | QMessageBox::No : QMessageBox::Ok, parent_);
  if (yes_no) box.setDefaultButton(QMessageBox::Yes);
  const int answer = box.exec();
  return !yes_no || answer == QMessageBox::Yes;
}

std::string QtPlatform::open_file(const FileDialogRequest& request) {
  const QStringList filters = qt_filters(request.filter);
  QString selected = chosen_filter(filters, request.filter_index);
  return native_path(QFileDialog::getOpenFileName(parent_, QString(), to_qstring(request.default_name),
                                                  filters.join(QStringLiteral(";;")), &selected));
}

std::string QtPlatform::save_file(const FileDialogRequest& request) {
  const QStringList filters = qt_filters(request.filter);
  QString selected = chosen_filter(filters, request.filter_index);
  return native_path(QFileDialog::getSaveFileName(parent_, QString(), to_qstring(request.default_name),
                                                  filters.join(QStringLiteral(";;")), &selected));
}

void QtPlatform::print(std::string_view text) {
  QPrinter printer;
  QPrintDialog dialog(&printer, parent_);
  if (dialog.exec() != QDialog::Accepted) return;
  QTextDocument document;
  document.setDefaultFont(fixed_pitch_font());
  document.setPlainText(display_text(text));
  document.print(&printer);
}

void QtPlatform::beep() { QApplication::beep(); }

void QtPlatform::busy(bool on) {
  if (on) {
    ++busy_depth_;
    QApplication::setOverrideCursor(Qt::WaitCursor);
    if (refresh_) refresh_();
    QCoreApplication::processEvents(QEventLoop::ExcludeUserInputEvents);
  } else if (busy_depth_ > 0) {
    --busy_depth_;
    QApplication::restoreOverrideCursor();
  }
}

void QtPlatform::yield() {
  if (since_yield_.isValid() && since_yield_.elapsed() < kYieldIntervalMs) return;
  since_yield_.start();
  if (refresh_) refresh_();
  QCoreApplication::processEvents();
}

std::string QtPlatform::current_directory() {
  return QDir::toNativeSeparators(QDir::currentPath()).toStdString();
}

}  // namespace varnoth::ui
