// varnoth-gui: the desktop program. With --screenshot FILE it draws the window as
// it opens into a PNG and ends, without waiting for the user. Before the
// picture it can open a file and go where a user would:
//   --open FILE         load an alignment
//   --noncoding         noncoding analysis with all six methods
//   --window SIZE:STEP  sliding windows
//   --page results|plot|matrix
//                       run the analysis and show its results, the window
//                       plot, or the matrix page with its heat map
#include <QApplication>
#include <QLineEdit>
#include <QPixmap>
#include <QStringList>
#include <clocale>
#include <cstdio>

#include "input/sequence_file.h"
#include "state/options.h"
#include "state/record.h"
#include "ui/main_window.h"
#include "ui/qt_platform.h"

namespace {

QString argument(const QStringList& args, const QString& name) {
  const qsizetype at = args.indexOf(name);
  return at >= 0 && at + 1 < args.size() ? args[at + 1] : QString();
}

// Goes through the steps a user would take for the picture; false where one fails.
bool prepare_picture(const QStringList& args, varnoth::AnalysisRecord& rec,
                     varnoth::Platform& platform, varnoth::ui::MainWindow& window) {
  const QString file = argument(args, QStringLiteral("--open"));
  if (file.isEmpty()) return true;
  if (rec.form.SSTab2.visible) window.run("SSTab2");  // the title page's click
  if (!varnoth::input::load_sequence_file(rec, platform, file.toStdString()).ok()) return false;
  window.sync();
  if (args.contains(QStringLiteral("--noncoding"))) {
    window.run("Noncoding");
    if (rec.menu.All.caption == "Reset..") window.run("All");
    window.run("All");
  }
  const QString windows = argument(args, QStringLiteral("--window"));
  if (!windows.isEmpty()) {
    window.run("Sliding_Window");
    window.findChild<QLineEdit*>(QStringLiteral("TextWinSize"))->setText(windows.section(':', 0, 0));
    window.findChild<QLineEdit*>(QStringLiteral("TextMovement"))->setText(windows.section(':', 1, 1));
    window.run("AcceptSliWindows");
    if (rec.region.WindowMode != 1) return false;
  }
  const QString page = argument(args, QStringLiteral("--page"));
  if (page.isEmpty()) return true;
  window.run("Divergence");
  if (!rec.form.SSTab3.visible) return false;
  if (page == QLatin1String("plot")) return window.show_window_plot();
  if (page == QLatin1String("matrix")) {
    if (!rec.form.MatrixBoton.visible) return false;  // a window run has no matrix
    window.run("MatrixBoton");
    return rec.form.MatrixTab.visible;
  }
  return page == QLatin1String("results");
}

}  // namespace

int main(int argc, char** argv) {
  QApplication app(argc, argv);
  QApplication::setApplicationName(QString::fromLatin1(varnoth::ui::kAppTitle));
  // Numbers in the record are read and written with "." whatever the user's locale.
  std::setlocale(LC_NUMERIC, "C");

  varnoth::AnalysisRecord rec;
  varnoth::start_up(rec);
  varnoth::ui::QtPlatform platform;
  varnoth::ui::MainWindow window(rec, platform);
  platform.set_parent(&window);
  platform.set_refresh([&window] { window.sync(); });
  window.show();

  const QStringList args = QApplication::arguments();
  const qsizetype shot = args.indexOf(QStringLiteral("--screenshot"));
  if (shot >= 0) {
    if (shot + 1 >= args.size()) {
      std::fprintf(stderr,
                   "usage: varnoth-gui [--screenshot FILE.png [--open FILE] [--noncoding] "
                   "[--window SIZE:STEP] [--page results|plot|matrix]]\n");
      return 2;
    }
    if (!prepare_picture(args, rec, platform, window)) {
      std::fprintf(stderr, "cannot show the page asked for\n");
      return 1;
    }
    QApplication::processEvents();
    if (!window.grab().save(args[shot + 1])) {
      std::fprintf(stderr, "cannot write %s\n", args[shot + 1].toLocal8Bit().constData());
      return 1;
    }
    return 0;
  }
  return QApplication::exec();
}
