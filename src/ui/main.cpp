// varnoth-gui: the desktop program. With --screenshot FILE it draws the window as
// it opens into a PNG and ends, without waiting for the user.
#include <QApplication>
#include <QPixmap>
#include <QStringList>
#include <clocale>
#include <cstdio>

#include "state/options.h"
#include "state/record.h"
#include "ui/main_window.h"
#include "ui/qt_platform.h"

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
      std::fprintf(stderr, "usage: varnoth-gui [--screenshot FILE.png]\n");
      return 2;
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
