// The windows of the simulations (Confid, KsKaCI1) and of the relative-rate test
// (RRtest), driven through their widgets on the offscreen platform after a real
// divergence run. Set VARNOTH_UI_SHOTS to a directory to also save pictures.
#include <gtest/gtest.h>

#include <QAction>
#include <QApplication>
#include <QCheckBox>
#include <QComboBox>
#include <QDialog>
#include <QLabel>
#include <QLineEdit>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QTabWidget>
#include <QTimer>
#include <cmath>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "input/sequence_file.h"
#include "state/options.h"
#include "state/record.h"
#include "ui/confid_window.h"
#include "ui/kska_window.h"
#include "ui/main_window.h"
#include "ui/qt_platform.h"
#include "ui/rrtest_window.h"
#include "ui/simulation_dialogs.h"

namespace varnoth::ui {
namespace {

struct Message {
  std::string text, title;
  MessageIcon icon;
  bool yes_no;
};

// Records what the windows ask of the machine; its yield can act as a user
// clicking while a run goes on.
class RecordingPlatform : public Platform {
 public:
  std::vector<Message> messages;
  std::vector<std::string> open_answers;  // taken in order; then "" (cancel)
  bool answer_yes = true;
  int yields = 0;
  std::function<void(int)> on_yield;  // called with the count of yields so far

  bool message(std::string_view text, std::string_view title, MessageIcon icon,
               bool yes_no) override {
    messages.push_back({std::string(text), std::string(title), icon, yes_no});
    return !yes_no || answer_yes;
  }
  std::string open_file(const FileDialogRequest&) override {
    if (open_answers.empty()) return {};
    std::string answer = open_answers.front();
    open_answers.erase(open_answers.begin());
    return answer;
  }
  std::string save_file(const FileDialogRequest&) override { return {}; }
  void print(std::string_view) override {}
  void beep() override {}
  void busy(bool) override {}
  void yield() override {
    ++yields;
    if (on_yield) on_yield(yields);
  }
  ClockReading clock() override { return {}; }
  std::string current_directory() override { return "."; }
};

class SimulationDialogsTest : public ::testing::Test {
 protected:
  SimulationDialogsTest() {
    start_up(rec);
    window = std::make_unique<MainWindow>(rec, platform);
    window->show();
  }

  QAction* action(const char* name) const {
    return window->findChild<QAction*>(QString::fromLatin1(name));
  }
  QDialog* dialog(const char* name) const {
    return window->findChild<QDialog*>(QString::fromLatin1(name));
  }
  template <typename T = QWidget>
  static T* in(QDialog* d, const char* name) {
    T* w = d->findChild<T*>(QString::fromLatin1(name));
    EXPECT_NE(w, nullptr) << name;
    return w;
  }
  static QString text(QDialog* d, const char* name) { return in<QLineEdit>(d, name)->text(); }
  static QString pane(QDialog* d, const char* name) {
    return in<QPlainTextEdit>(d, name)->toPlainText();
  }
  static void click(QDialog* d, const char* name) { in<QPushButton>(d, name)->click(); }
  static void choose(QDialog* d, const char* combo, int index) {
    auto* c = in<QComboBox>(d, combo);
    c->setCurrentIndex(index);
    emit c->activated(index);
  }

  // Opens an example and runs the divergence analysis on it.
  void analyse(const char* example, bool noncoding) {
    platform.open_answers = {std::string(VARNOTH_SOURCE_DIR "/examples/") + example};
    action("OpenFile")->trigger();
    if (noncoding) action("Noncoding")->trigger();
    action("Divergence")->trigger();
    ASSERT_TRUE(platform.messages.empty()) << platform.messages[0].text;
    platform.yields = 0;  // the run yields too: count those of the simulations alone
  }

  ConfidWindow& confid() { return *window->simulation_dialogs().confid(); }
  KsKaWindow& kska() { return *window->simulation_dialogs().kska(); }

  AnalysisRecord rec;
  RecordingPlatform platform;
  std::unique_ptr<MainWindow> window;
};

TEST_F(SimulationDialogsTest, ConfidOpensOnANoncodingRunChecksAndRuns) {
  analyse("noncoding/introns.meg", true);
  action("Confidence_intervals")->trigger();
  QDialog* d = dialog("Confid");
  ASSERT_NE(d, nullptr);
  ASSERT_TRUE(d->isVisible());
  EXPECT_FALSE(window->isVisible());

  // Defaults of the last comparison: its Kimura K, its sites, its G+C.
  const LastNoncodingEstimate& l = rec.last_noncoding;
  ASSERT_GT(l.KKimura, 0);
  EXPECT_EQ(text(d, "Text1"), QString::number(l.KKimura, 'f', 4) + QLatin1Char(' '));
  EXPECT_EQ(text(d, "Text2"), QString::number(rec.seq.NucleotideCount));
  const double gc = l.CountG1 + l.CountC1 + l.CountG2 + l.CountC2;
  const double all = gc + l.CountA1 + l.CountT1 + l.CountA2 + l.CountT2;
  EXPECT_NEAR(text(d, "Text3").toDouble(), 0.1 * std::floor(1000 * gc / all), 1e-9);
  EXPECT_EQ(text(d, "Text4"), QStringLiteral("1000"));
  EXPECT_EQ(in<QLabel>(d, "Label1")->text(),
            QStringLiteral("M.-Hits Correcting Method: Kimura\u00b4s 2-p"));
  EXPECT_EQ(in<QPushButton>(d, "Command1")->text(), QStringLiteral("Accept"));
  EXPECT_FALSE(in(d, "Command7")->isVisible());
  EXPECT_FALSE(in(d, "ToggleButton1")->isVisible());  // Ks/Ka toggles are for coding runs

  // A bad value is refused with its message, typed text read at the click.
  in<QLineEdit>(d, "Text1")->setText(QStringLiteral("2.5"));
  click(d, "Command1");
  ASSERT_EQ(platform.messages.size(), 1u);
  EXPECT_EQ(platform.messages[0].text, "Invalid Divergence Value !");
  EXPECT_EQ(platform.messages[0].title, "  SIMULATION PARAMETERS  ");
  EXPECT_TRUE(d->isVisible());

  // Reset puts its fixed values in the boxes.
  click(d, "Command2");
  EXPECT_EQ(text(d, "Text1"), QStringLiteral("0.0000"));
  EXPECT_EQ(text(d, "Text3"), QStringLiteral("70"));
  EXPECT_FALSE(in(d, "Text5")->isEnabled());

  // A small seeded run, with the scan first.
  confid().dialog().seed = 11;
  in<QLineEdit>(d, "Text1")->setText(QStringLiteral("0.05"));
  in<QLineEdit>(d, "Text4")->setText(QStringLiteral("100"));
  ASSERT_TRUE(in<QCheckBox>(d, "Check4")->isChecked());
  platform.messages.clear();
  click(d, "Command1");
  EXPECT_TRUE(platform.messages.empty());
  EXPECT_GE(platform.yields, 100);  // once a replicate, scan passes included
  const QString report = pane(d, "Text7");
  EXPECT_TRUE(report.startsWith(QStringLiteral(" *SIMULATION PARAMETERS*\n\n"
                                               "  Divergence :         0.0500 \n")))
      << report.toStdString();
  EXPECT_TRUE(report.contains(QStringLiteral("\n  N. Replicates   :   100\n")));
  EXPECT_TRUE(report.contains(QStringLiteral("\n  Multiple-hits Correcting Method : Kimura-2p\n")));
  EXPECT_TRUE(report.contains(QStringLiteral("\n *SIMULATION RESULTS*\n")));
  // The run's end shows the result commands and takes Cancel away.
  for (const char* name : {"Command4", "Command5", "Command6", "Command8", "Command10"})
    EXPECT_TRUE(in(d, name)->isVisible()) << name;
  for (const char* name : {"Command3", "Command7"}) EXPECT_FALSE(in(d, name)->isVisible()) << name;
  EXPECT_TRUE(in(d, "Command10")->isEnabled());
  EXPECT_FALSE(window->isVisible());

  in<QLineEdit>(d, "Text9")->setText(QStringLiteral("0.05"));
  click(d, "Command10");
  EXPECT_EQ(text(d, "Text9"), QStringLiteral("0.0500"));
  EXPECT_TRUE(pane(d, "Text10").contains(QStringLiteral(" Prob. [K > 0.05] = ")));
  EXPECT_TRUE(pane(d, "Text7").contains(QStringLiteral("\n *EXACT PROBABILITY:\n")));

  click(d, "Command6");
  EXPECT_FALSE(d->isVisible());
  EXPECT_TRUE(window->isVisible());
}

TEST_F(SimulationDialogsTest, ConfidStopClickedDuringTheRunEndsIt) {
  analyse("noncoding/introns.meg", true);
  action("Confidence_intervals")->trigger();
  QDialog* d = dialog("Confid");
  confid().dialog().seed = 3;
  in<QLineEdit>(d, "Text4")->setText(QStringLiteral("1000"));
  in<QCheckBox>(d, "Check4")->click();  // no scan
  bool stop_usable = false, others_locked = false;
  platform.on_yield = [&](int n) {
    if (n != 5) return;
    auto* stop = in<QPushButton>(d, "Command7");
    stop_usable = stop->isVisible() && stop->isEnabled();
    others_locked = !in(d, "Command1")->isEnabled() && !in(d, "Command3")->isEnabled() &&
                    !in(d, "Text1")->isEnabled() && !in(d, "OptionButton2")->isEnabled();
    stop->click();
  };
  click(d, "Command1");
  EXPECT_TRUE(stop_usable);
  EXPECT_TRUE(others_locked);
  EXPECT_EQ(platform.yields, 5);  // the run ends at the yield the click came in
  EXPECT_TRUE(pane(d, "Text7").isEmpty());
  EXPECT_FALSE(d->isVisible());
  EXPECT_TRUE(window->isVisible());
  EXPECT_FALSE(confid().running());
}

TEST_F(SimulationDialogsTest, ConfidAfterACodingRunTogglesBetweenKsAndKa) {
  analyse("coding/primates.meg", false);
  const CodingHandedOnFields& h = rec.results.handed_on;
  ASSERT_GT(h.Ks, 0);
  ASSERT_GT(h.Ka, 0);
  action("Confidence_intervals")->trigger();
  QDialog* d = dialog("Confid");
  auto* ks = in<QPushButton>(d, "ToggleButton1");
  auto* ka = in<QPushButton>(d, "ToggleButton2");
  ASSERT_TRUE(ks->isVisible() && ka->isVisible());
  EXPECT_FALSE(in(d, "ToggleButton3")->isVisible());
  EXPECT_TRUE(ks->isChecked());
  EXPECT_EQ(text(d, "Text1"), QString::number(h.Ks, 'f', 4) + QLatin1Char(' '));
  EXPECT_EQ(in<QLabel>(d, "Label4")->text(), QStringLiteral("Syn. Equivalent Sites"));
  EXPECT_EQ(text(d, "Text2"), QString::number(std::floor(0.5 + h.SES)));
  ka->click();
  EXPECT_TRUE(ka->isChecked());
  EXPECT_FALSE(ks->isChecked());
  EXPECT_EQ(text(d, "Text1"), QString::number(h.Ka, 'f', 4) + QLatin1Char(' '));
  EXPECT_EQ(in<QLabel>(d, "Label4")->text(), QStringLiteral("Nonsyn. Equivalent Sites"));
  EXPECT_EQ(text(d, "Text2"), QString::number(std::floor(0.5 + h.NES)));
  // A second click on the pressed toggle keeps it pressed.
  ka->click();
  EXPECT_TRUE(ka->isChecked());
  click(d, "Command3");
  EXPECT_FALSE(d->isVisible());
  EXPECT_TRUE(window->isVisible());
}

TEST_F(SimulationDialogsTest, KsKaOpensOnACodingRunChoosesAPairAndRuns) {
  analyse("coding/primates.meg", false);
  const CodingHandedOnFields last = rec.results.handed_on;
  action("CIcodingRegion")->trigger();
  QDialog* d = dialog("KsKaCI1");
  ASSERT_NE(d, nullptr);
  ASSERT_TRUE(d->isVisible());
  EXPECT_FALSE(window->isVisible());
  EXPECT_EQ(d->windowTitle(), QStringLiteral("Confidence Intervals for Coding Regions"));
  auto* tabs = in<QTabWidget>(d, "SSTab1");
  EXPECT_EQ(tabs->tabText(0),
            QStringLiteral("Confidence Intervals of Divergence Estimates: Coding Region"));
  EXPECT_FALSE(tabs->isTabVisible(1));
  EXPECT_EQ(text(d, "Text1"), QString::number(last.Ks, 'f', 4));
  EXPECT_EQ(text(d, "Text3"), QString::number(last.Ka, 'f', 4));
  EXPECT_EQ(text(d, "Text7"), QStringLiteral("1000"));
  EXPECT_TRUE(in<QCheckBox>(d, "Check3")->isChecked());

  // Six sequences: the pair boxes show the last pair, 5 and 6.
  auto* combo1 = in<QComboBox>(d, "Combo1");
  ASSERT_TRUE(combo1->isVisible());
  ASSERT_EQ(combo1->count(), 6);
  EXPECT_EQ(combo1->currentIndex(), 4);
  EXPECT_EQ(in<QComboBox>(d, "Combo2")->currentIndex(), 5);
  EXPECT_TRUE(combo1->itemText(0).startsWith(QStringLiteral(" Sequence#1: ")));

  // Choosing sequence 1 fills the fields from pair (1, 6), comparison 5.
  choose(d, "Combo1", 0);
  EXPECT_EQ(window->simulation_dialogs().session().Seq1Index, 1);
  EXPECT_EQ(text(d, "Text1"), QString::number(rec.results.PairStore[5][3], 'f', 4));
  // One sequence twice is no pair: the boxes go back.
  choose(d, "Combo2", 0);
  EXPECT_EQ(in<QComboBox>(d, "Combo2")->currentIndex(), 5);

  // Cancel; a new divergence run drops the chosen pair.
  click(d, "Command3");
  EXPECT_FALSE(d->isVisible());
  ASSERT_TRUE(window->isVisible());
  action("Divergence")->trigger();
  action("CIcodingRegion")->trigger();
  EXPECT_EQ(in<QComboBox>(d, "Combo1")->currentIndex(), 4);
  EXPECT_EQ(text(d, "Text1"), QString::number(last.Ks, 'f', 4));

  // A small seeded run without the scan; the question below 500 is answered yes.
  kska().dialog().seed = 5;
  in<QLineEdit>(d, "Text7")->setText(QStringLiteral("100"));
  in<QCheckBox>(d, "Check4")->click();
  click(d, "Command1");
  ASSERT_EQ(platform.messages.size(), 1u);
  EXPECT_EQ(platform.messages[0].text, "      Only100 replicates ...     \r\n      Are you sure?");
  EXPECT_TRUE(platform.messages[0].yes_no);
  EXPECT_GE(platform.yields, 100);
  EXPECT_TRUE(tabs->isTabVisible(1));
  EXPECT_EQ(tabs->currentIndex(), 1);
  EXPECT_EQ(tabs->tabText(1), QStringLiteral("Simulation Results"));
  const QString report = pane(d, "Text13");
  EXPECT_TRUE(report.startsWith(QStringLiteral("*SIMULATION PARAMETERS*\n\n"))) << report.toStdString();
  EXPECT_TRUE(report.contains(QStringLiteral("\n*SIMULATION RESULTS*\n")));
  EXPECT_TRUE(report.contains(QStringLiteral("\n Ks avg.:  ")));
  EXPECT_FALSE(report.contains(QStringLiteral("C.I.      Min.")));  // 100 replicates: no rows
  EXPECT_FALSE(in(d, "Command12")->isVisible());  // Ka/Ks only in the test of Ka/Ks

  in<QLineEdit>(d, "Text14")->setText(QStringLiteral("0.1"));
  click(d, "Command10");
  EXPECT_TRUE(pane(d, "Text16").contains(QStringLiteral(" Prob. [Ks > ")));

  rec.menu.AnalysisOptions.enabled = false;
  click(d, "Command9");
  EXPECT_FALSE(d->isVisible());
  EXPECT_TRUE(window->isVisible());
  EXPECT_TRUE(rec.menu.AnalysisOptions.enabled);

  // The test of Ka/Ks takes Ka from Ks: its field is not there.
  action("CIcodingRegionKaKs")->trigger();
  EXPECT_TRUE(d->isVisible());
  EXPECT_FALSE(in(d, "Text3")->isVisible());
  EXPECT_FALSE(in(d, "Label3")->isVisible());
  EXPECT_FALSE(in<QTabWidget>(d, "SSTab1")->isTabVisible(1));
  // Answering No to the question ends the run before it starts.
  platform.answer_yes = false;
  in<QLineEdit>(d, "Text7")->setText(QStringLiteral("200"));
  const int yields = platform.yields;
  click(d, "Command1");
  EXPECT_EQ(platform.yields, yields);
  EXPECT_FALSE(d->isVisible());
  EXPECT_TRUE(window->isVisible());
}

TEST_F(SimulationDialogsTest, KsKaStopClickedDuringTheRunEndsIt) {
  analyse("coding/primates.meg", false);
  action("CIcodingRegion")->trigger();
  QDialog* d = dialog("KsKaCI1");
  kska().dialog().seed = 9;
  in<QCheckBox>(d, "Check4")->click();
  bool stop_usable = false, others_locked = false;
  platform.on_yield = [&](int n) {
    if (n != 3) return;
    auto* stop = in<QPushButton>(d, "Command4");
    stop_usable = stop->isVisible() && stop->isEnabled();
    others_locked = !in(d, "Combo1")->isEnabled() && !in(d, "Text1")->isEnabled() &&
                    !in(d, "Check1")->isEnabled() && !in(d, "Command1")->isVisible();
    stop->click();
  };
  click(d, "Command1");  // 1000 replicates: no question
  EXPECT_TRUE(platform.messages.empty());
  EXPECT_TRUE(stop_usable);
  EXPECT_TRUE(others_locked);
  EXPECT_EQ(platform.yields, 3);
  EXPECT_FALSE(kska().dialog().results_ready);
  EXPECT_FALSE(d->isVisible());
  EXPECT_TRUE(window->isVisible());
  EXPECT_TRUE(rec.menu.Diver.enabled);
}

TEST_F(SimulationDialogsTest, RRtestOpensFromItsHiddenItemAndShowsTheDifferences) {
  analyse("coding/primates.meg", false);
  QAction* item = action("RelatRate");
  EXPECT_FALSE(item->isVisible());
  item->trigger();
  QDialog* d = dialog("RRtest");
  ASSERT_NE(d, nullptr);
  ASSERT_TRUE(d->isVisible());
  EXPECT_TRUE(window->isVisible());
  EXPECT_EQ(d->windowTitle(), QStringLiteral("Relative-Rate Test for Coding Regions"));
  ASSERT_EQ(in<QComboBox>(d, "Combo3")->count(), 6);

  // The last pair, (5, 6), is the only one with values: 5 and 1 paired, 6 outgroup.
  const std::string& line = rec.results.LastPairLine;
  ASSERT_GE(line.size(), 27u);
  ASSERT_EQ(std::stoi(line.substr(0, 4)), 5);
  ASSERT_EQ(std::stoi(line.substr(5, 4)), 6);
  const double ks = std::stod(line.substr(9, 9)), ka = std::stod(line.substr(19, 8));
  choose(d, "Combo1", 4);
  choose(d, "Combo2", 0);
  choose(d, "Combo3", 5);
  EXPECT_EQ(in<QLabel>(d, "Label11")->text(), QStringLiteral("0"));
  EXPECT_NEAR(in<QLabel>(d, "Label9")->text().toDouble(), ks, 1e-6);
  click(d, "Command1");
  EXPECT_EQ(text(d, "Text1"), QString::number(ks, 'f', 5));
  EXPECT_EQ(text(d, "Text2"), QString::number(ka, 'f', 5));

  // One sequence twice: that pair's labels read "??".
  choose(d, "Combo2", 4);
  EXPECT_EQ(in<QLabel>(d, "Label7")->text(), QStringLiteral("??"));
  EXPECT_EQ(in<QLabel>(d, "Label8")->text(), QStringLiteral("??"));

  click(d, "Command2");
  EXPECT_FALSE(d->isVisible());
  EXPECT_TRUE(window->isVisible());
}

// With the desktop program's own Platform, a click on Stop reaches the window
// through the event loop that the run yields to.
TEST(SimulationDialogsOnQt, StopTakesAClickWhileTheRunYields) {
  AnalysisRecord rec;
  start_up(rec);
  QtPlatform platform;
  MainWindow window(rec, platform);
  platform.set_parent(&window);
  platform.set_refresh([&window] { window.sync(); });
  window.show();
  window.run("SSTab2");
  ASSERT_TRUE(input::load_sequence_file(rec, platform,
                                        VARNOTH_SOURCE_DIR "/examples/noncoding/introns.meg")
                  .ok());
  window.run("Noncoding");
  window.run("Divergence");
  window.run("Confidence_intervals");
  ConfidWindow* confid = window.simulation_dialogs().confid();
  ASSERT_NE(confid, nullptr);
  confid->dialog().seed = 2;
  // Far more replicates than the wait before the click can finish.
  confid->findChild<QLineEdit*>(QStringLiteral("Text4"))->setText(QStringLiteral("200000"));
  confid->findChild<QCheckBox*>(QStringLiteral("Check4"))->click();
  auto* stop = confid->findChild<QPushButton*>(QStringLiteral("Command7"));
  bool clicked_while_running = false;
  QTimer::singleShot(150, stop, [&] {
    clicked_while_running = confid->running() && stop->isVisible() && stop->isEnabled();
    stop->click();
  });
  confid->findChild<QPushButton*>(QStringLiteral("Command1"))->click();
  EXPECT_TRUE(clicked_while_running);
  EXPECT_FALSE(confid->running());
  EXPECT_FALSE(confid->isVisible());
  EXPECT_TRUE(window.isVisible());
  EXPECT_TRUE(confid->dialog().Text7.text.empty());  // stopped, not finished
}

// Not a check: pictures of the three dialogs for a look at the layout, when asked for.
TEST_F(SimulationDialogsTest, PicturesOfTheDialogsWhenAskedFor) {
  const QString dir = qEnvironmentVariable("VARNOTH_UI_SHOTS");
  if (dir.isEmpty()) GTEST_SKIP() << "VARNOTH_UI_SHOTS not set";
  auto shot = [&](const char* name, QWidget* w) {
    QApplication::processEvents();
    EXPECT_TRUE(w->grab().save(dir + QLatin1Char('/') + QLatin1String(name) + ".png")) << name;
  };
  analyse("noncoding/introns.meg", true);
  action("Confidence_intervals")->trigger();
  QDialog* d = dialog("Confid");
  shot("confid", d);
  confid().dialog().seed = 1;
  in<QLineEdit>(d, "Text4")->setText(QStringLiteral("500"));
  platform.on_yield = [&](int n) {
    if (n == 600) shot("confid_running", d);
  };
  click(d, "Command1");
  in<QLineEdit>(d, "Text9")->setText(QStringLiteral("0.05"));
  click(d, "Command10");
  shot("confid_results", d);
  click(d, "Command6");

  action("Coding")->trigger();
  analyse("coding/primates.meg", false);
  action("CIcodingRegion")->trigger();
  d = dialog("KsKaCI1");
  shot("kska", d);
  kska().dialog().seed = 1;
  in<QLineEdit>(d, "Text7")->setText(QStringLiteral("500"));
  in<QCheckBox>(d, "Check4")->click();
  platform.yields = 0;
  platform.on_yield = [&](int n) {
    if (n == 50) shot("kska_running", d);
  };
  click(d, "Command1");
  platform.on_yield = nullptr;
  in<QLineEdit>(d, "Text14")->setText(QStringLiteral("0.1"));
  click(d, "Command10");
  shot("kska_results", d);
  click(d, "Command9");
  action("CIcodingRegionKaKs")->trigger();
  shot("kska_ratio", d);
  click(d, "Command3");

  action("RelatRate")->trigger();
  d = dialog("RRtest");
  click(d, "Command1");
  shot("rrtest", d);
}

}  // namespace
}  // namespace varnoth::ui

int main(int argc, char** argv) {
  if (qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM")) qputenv("QT_QPA_PLATFORM", "offscreen");
  QApplication app(argc, argv);
  ::testing::InitGoogleTest(&argc, argv);
  return RUN_ALL_TESTS();
}
