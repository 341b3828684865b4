// The main window over the record, driven through its widgets on the offscreen
// platform. Set VARNOTH_UI_SHOTS to a directory to also save pictures of the pages.
#include <gtest/gtest.h>

#include <QAction>
#include <QApplication>
#include <QComboBox>
#include <QDialog>
#include <QLabel>
#include <QLineEdit>
#include <QMenu>
#include <QMenuBar>
#include <QMouseEvent>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QRadioButton>
#include <QRegularExpression>
#include <QTabWidget>
#include <QTimer>
#include <QDir>
#include <QFile>
#include <map>
#include <memory>
#include <variant>
#include <string>
#include <vector>

#include "state/options.h"
#include "state/record.h"
#include "ui/about_box.h"
#include "ui/actions.h"
#include "ui/main_window.h"
#include "ui/plot_view.h"
#include "ui/qt_platform.h"

namespace varnoth::ui {
namespace {

struct Message {
  std::string text, title;
  MessageIcon icon;
};

// Records what the window asks of the machine instead of showing it.
class RecordingPlatform : public Platform {
 public:
  std::vector<Message> messages;
  std::vector<std::string> open_answers;  // taken in order; then "" (cancel)
  std::vector<std::string> save_answers;  // the same for the save dialog
  int beeps = 0;
  bool message(std::string_view text, std::string_view title, MessageIcon icon, bool) override {
    messages.push_back({std::string(text), std::string(title), icon});
    return true;
  }
  std::string open_file(const FileDialogRequest&) override {
    if (open_answers.empty()) return {};
    std::string answer = open_answers.front();
    open_answers.erase(open_answers.begin());
    return answer;
  }
  std::string save_file(const FileDialogRequest&) override {
    if (save_answers.empty()) return {};
    std::string answer = save_answers.front();
    save_answers.erase(save_answers.begin());
    return answer;
  }
  void print(std::string_view) override {}
  void beep() override { ++beeps; }
  void busy(bool) override {}
  void yield() override {}
  ClockReading clock() override { return {}; }
  std::string current_directory() override { return "."; }
};

class MainWindowTest : public ::testing::Test {
 protected:
  MainWindowTest() {
    start_up(rec);
    window = std::make_unique<MainWindow>(rec, platform);
    window->show();
  }

  template <typename T = QWidget>
  T* find(const char* name) const {
    return window->findChild<T*>(QString::fromLatin1(name));
  }
  QAction* action(const char* name) const { return find<QAction>(name); }
  QString pane(const char* name) const { return find<QPlainTextEdit>(name)->toPlainText(); }
  bool shown(const char* name) const { return find(name)->isVisible(); }

  static void click(QWidget* w) {
    const QPointF at(2, 2);
    QMouseEvent press(QEvent::MouseButtonPress, at, w->mapToGlobal(at), Qt::LeftButton,
                      Qt::LeftButton, Qt::NoModifier);
    QMouseEvent release(QEvent::MouseButtonRelease, at, w->mapToGlobal(at), Qt::LeftButton,
                        Qt::NoButton, Qt::NoModifier);
    QApplication::sendEvent(w, &press);
    QApplication::sendEvent(w, &release);
  }

  AnalysisRecord rec;
  RecordingPlatform platform;
  std::unique_ptr<MainWindow> window;
};

TEST_F(MainWindowTest, MenuTreeHasEveryItemByNameInOrder) {
  for (const MenuEntry& e : kMenuTree)
    EXPECT_NE(action(std::string(e.name).c_str()), nullptr) << e.name;
  // The menu bar holds the five top menus in their order.
  QStringList top;
  for (QAction* a : window->menuBar()->actions()) top << a->objectName();
  EXPECT_EQ(top, QStringList({"FileOpen", "Diver", "Confidence_Intervals_menu", "RelatRate",
                              "mnuHelp"}));
  // Items sit under their parents, in order.
  QStringList file;
  for (QAction* a : find<QMenu>("FileOpen")->actions()) file << a->objectName();
  EXPECT_EQ(file, QStringList({"OpenFile", "ratll", "Sortir"}));
  QStringList diver;
  for (QAction* a : find<QMenu>("Diver")->actions()) diver << a->objectName();
  EXPECT_EQ(diver, QStringList({"Divergence", "AnalysisOptions", "Region_analysis",
                                "Sliding_Window"}));
  EXPECT_TRUE(action("ratll")->isSeparator());
  EXPECT_EQ(action("nothing")->text(), QString(8, QLatin1Char(' ')));
  EXPECT_EQ(action("Sortir")->text(), QStringLiteral("E&xit"));
  EXPECT_EQ(find<QMenu>("weights")->title(), QStringLiteral("Multiple-Pathways"));
}

TEST_F(MainWindowTest, StartStateOfTheMenu) {
  struct Row {
    const char* name;
    bool enabled, visible, checked;
  };
  const Row rows[] = {
      {"FileOpen", true, true, false},         {"OpenFile", true, true, false},
      {"Diver", false, true, false},           {"Region_analysis", false, true, false},
      {"Sliding_Window", false, true, false},  {"Confidence_Intervals_menu", true, true, false},
      {"CIcodingRegion", false, true, false},  {"CIcodingRegionKaKs", false, true, false},
      {"Confidence_intervals", true, true, false}, {"RelatRate", false, false, false},
      {"mnuHelp", true, true, false},          {"Coding", true, true, true},
      {"Noncoding", true, true, false},        {"JukesandCantor", false, true, false},
      {"Kimura2p", true, true, true},          {"Tajima4p", false, true, false},
      {"All", true, false, false},             {"universal", true, true, true},
      {"Unweighted", true, true, true},        {"Weighted", true, true, false},
  };
  for (const Row& r : rows) {
    QAction* a = action(r.name);
    ASSERT_NE(a, nullptr) << r.name;
    EXPECT_EQ(a->isVisible(), r.visible) << r.name;
    // Qt reads a hidden action as disabled.
    EXPECT_EQ(a->isEnabled(), r.enabled && r.visible) << r.name;
    EXPECT_EQ(a->isChecked(), r.checked) << r.name;
  }
  EXPECT_EQ(window->windowTitle(), QStringLiteral("Varnoth"));
  EXPECT_TRUE(shown("SSTab2"));
  EXPECT_FALSE(shown("SSTab1"));
  EXPECT_FALSE(shown("SSTab3"));
  EXPECT_FALSE(shown("Label3"));
}

TEST_F(MainWindowTest, EveryControlIsFoundByName) {
  for (const char* name :
       {"SSTab2", "Picture1", "Label1", "Label2", "Label14", "SSTab1", "Text1", "Text2", "Label3",
        "SSTab3", "Text3", "Text33", "Boto1", "Boto2", "BotoData", "MatrixBoton", "Boto3",
        "CloseBotton", "SSTab4", "TextWinSize", "TextMovement", "AcceptSliWindows",
        "CancelSliwindows", "WholeSliWindows", "SSTab5", "Label11", "Label12", "Text4", "Label13",
        "Command1", "Command3", "MatrixTab", "Combo1", "Option1", "Option5", "Option9",
        "SaveMatrix", "Command2"})
    EXPECT_NE(find(name), nullptr) << name;
  QDialog* region = window->region_dialog();
  EXPECT_EQ(region->objectName(), QStringLiteral("region"));
  for (const char* name : {"Text1", "Text2", "Command1", "Command2", "Command3"})
    EXPECT_NE(region->findChild<QWidget*>(QString::fromLatin1(name)), nullptr) << name;

  const std::pair<const char*, const char*> captions[] = {
      {"Boto1", "Print"},           {"Boto2", "Save Results"},
      {"BotoData", "Save Data (Tab-del.)"}, {"MatrixBoton", "Matrix Output"},
      {"Boto3", "Main Window"},     {"CloseBotton", "Close"},
      {"AcceptSliWindows", "Accept"}, {"CancelSliwindows", "Cancel"},
      {"WholeSliWindows", "Whole Sequence"}, {"Command1", "Accept"},
      {"Command3", "Cancel"},       {"SaveMatrix", "Save Matrix"},
      {"Command2", "Cancel"}};
  for (const auto& [name, caption] : captions)
    EXPECT_EQ(find<QPushButton>(name)->text(), QString::fromLatin1(caption)) << name;
  EXPECT_EQ(find<QLabel>("Label12")->text(),
            QStringLiteral("Probability of pathway with synonymous change"));
  EXPECT_EQ(find<QLabel>("Label13")->text(),
            QStringLiteral("In codons with two or three changes (with pathways with synonymous "
                           "changes and pathways with nonsynonymous changes), probability of "
                           "pathways with synonymous changes. For instance, 0.5 indicates an "
                           "unweighted method, 0.9 indicates a high preference for synonymous "
                           "over nonsynonymous changes, and 0.1  indicates a high preference "
                           "for nonsyn. changes."));
  auto* panes = find<QTabWidget>("SSTab1");
  EXPECT_EQ(panes->tabText(0), QStringLiteral("Input Sequence Information"));
  EXPECT_EQ(panes->tabText(1), QStringLiteral("Divergence Analysis Options"));
  EXPECT_EQ(find<QTabWidget>("SSTab3")->tabText(0), QStringLiteral("Divergence Results"));
  EXPECT_EQ(find<QTabWidget>("SSTab4")->tabText(0), QStringLiteral("Sliding Windows Analysis"));
  EXPECT_EQ(find<QTabWidget>("MatrixTab")->tabText(0), QStringLiteral("Divergence Matrix Output"));
  EXPECT_FALSE(find("Boto3")->isVisibleTo(window.get()));
  EXPECT_FALSE(find("Option7")->isVisibleTo(window.get()));
}

TEST_F(MainWindowTest, EachTitlePageControlButLabel14OpensTheOptionsPage) {
  click(find("Label14"));
  EXPECT_TRUE(shown("SSTab2"));
  for (const char* name : {"Label1", "Label2", "Picture1", "SSTab2"}) {
    AnalysisRecord fresh;
    start_up(fresh);
    MainWindow w(fresh, platform);
    w.show();
    click(w.findChild<QWidget*>(QString::fromLatin1(name)));
    EXPECT_FALSE(w.findChild<QWidget*>(QStringLiteral("SSTab2"))->isVisible()) << name;
    EXPECT_TRUE(w.findChild<QWidget*>(QStringLiteral("SSTab1"))->isVisible()) << name;
  }
  click(find("Label1"));
  EXPECT_EQ(pane("Text1"), QStringLiteral(" No Sequence Information... "));
  EXPECT_EQ(find<QTabWidget>("SSTab1")->currentIndex(), 1);
  EXPECT_TRUE(shown("Text2"));
  EXPECT_EQ(pane("Text2"), QStringLiteral(" CODING DIVERGENCE ANALYSIS\n"
                                          " M.-Hits Correcting Method:  Kimura-2p\n"
                                          " Genetic Code:               Universal\n"
                                          " Multiple pathways method:   Unweighted\n"
                                          " Comparison Restrictions:    None\n"));
}

TEST_F(MainWindowTest, NoncodingThroughTheMenuUpdatesChecksAndSummary) {
  click(find("Label1"));
  action("Noncoding")->trigger();
  EXPECT_TRUE(action("Noncoding")->isChecked());
  EXPECT_FALSE(action("Coding")->isChecked());
  EXPECT_FALSE(action("Code")->isEnabled());
  EXPECT_FALSE(action("weights")->isEnabled());
  EXPECT_TRUE(action("JukesandCantor")->isEnabled());
  EXPECT_TRUE(action("All")->isVisible());
  EXPECT_TRUE(action("All")->isEnabled());
  EXPECT_EQ(action("All")->text(), QStringLiteral("Select all.."));
  EXPECT_EQ(find<QTabWidget>("SSTab1")->currentIndex(), 0);
  EXPECT_EQ(pane("Text2"), QStringLiteral(" NONCODING DIVERGENCE ANALYSIS\n"
                                          "\n"
                                          " M.-Hits Correcting Method: Kimura-2p        \n"));

  // A checked item triggered from the menu goes through the rule, not Qt's toggle:
  // the last method stays on.
  action("Kimura2p")->trigger();
  EXPECT_TRUE(action("Kimura2p")->isChecked());
  action("Tajima1p")->trigger();
  EXPECT_TRUE(action("Tajima1p")->isChecked());
  EXPECT_TRUE(action("Kimura2p")->isChecked());
}

TEST_F(MainWindowTest, WeightPageRefusesOutOfRangeAndTakesAGoodWeight) {
  click(find("Label1"));
  const QString before = pane("Text2");
  action("Weighted")->trigger();
  ASSERT_TRUE(shown("SSTab5"));
  EXPECT_EQ(find<QLabel>("Label11")->text(), QStringLiteral("Multiple-Pathways Weight"));

  find<QLineEdit>("Text4")->setText(QStringLiteral("1.5"));
  find<QPushButton>("Command1")->click();
  ASSERT_EQ(platform.messages.size(), 1u);
  EXPECT_EQ(platform.messages[0].text, "Invalid weight (0<=Prob<=1)!");
  EXPECT_EQ(platform.messages[0].title, "  MULTIPLE-PATHWAYS ");
  EXPECT_EQ(platform.messages[0].icon, MessageIcon::Exclamation);
  EXPECT_FALSE(shown("SSTab5"));
  EXPECT_EQ(pane("Text2"), before);
  EXPECT_TRUE(action("Unweighted")->isChecked());
  EXPECT_EQ(rec.options.PathwayWeight, 0.5f);

  action("Weighted")->trigger();
  find<QLineEdit>("Text4")->setText(QStringLiteral("0.25"));
  find<QPushButton>("Command1")->click();
  EXPECT_EQ(platform.messages.size(), 1u);
  EXPECT_TRUE(action("Weighted")->isChecked());
  EXPECT_FALSE(action("Unweighted")->isChecked());
  EXPECT_EQ(rec.options.PathwayWeight, 0.25f);
  EXPECT_TRUE(pane("Text2").contains(QStringLiteral(" Multiple pathways method:   Weighted [Prob.Syn =")));
  // What was typed stays in the box after the command.
  EXPECT_EQ(find<QLineEdit>("Text4")->text(), QStringLiteral("0.25"));

  action("Weighted")->trigger();
  find<QPushButton>("Command3")->click();
  EXPECT_FALSE(shown("SSTab5"));
  EXPECT_TRUE(action("Weighted")->isChecked());
}

TEST_F(MainWindowTest, HelpItemsSayThereIsNoHelp) {
  for (const char* item : {"mnuHelpContents", "mnuHelpSearch"}) action(item)->trigger();
  ASSERT_EQ(platform.messages.size(), 2u);
  for (const Message& m : platform.messages) {
    EXPECT_EQ(m.text,
              "Unable to display Help Contents. There is no Help associated with this project.");
    EXPECT_EQ(m.title, "Varnoth");
    EXPECT_EQ(m.icon, MessageIcon::Information);
  }
}

TEST_F(MainWindowTest, AboutBoxIsModalWithItsCaptionAndExitCloses) {
  QString caption, seen;
  QTimer::singleShot(0, [&] {
    QWidget* box = QApplication::activeModalWidget();
    ASSERT_NE(box, nullptr);
    seen = box->objectName();
    caption = box->windowTitle();
    box->findChild<QPushButton*>(QStringLiteral("cmdOK"))->click();
  });
  action("about")->trigger();
  EXPECT_EQ(seen, QStringLiteral("frmAbout"));
  EXPECT_EQ(caption, QStringLiteral("About Varnoth"));
  EXPECT_EQ(QApplication::activeModalWidget(), nullptr);

  rec.results.LastPairLine = "last pair";
  action("Sortir")->trigger();
  EXPECT_FALSE(window->isVisible());
  EXPECT_TRUE(rec.results.LastPairLine.empty());
}

TEST_F(MainWindowTest, PagesFollowTheRecord) {
  click(find("Label1"));
  rec.form.SSTab3.visible = true;
  rec.form.Text3.text = "line 1\r\nline 2";
  rec.form.Boto2.text = "Save ALL Results";
  rec.form.Boto2.visible = true;
  window->sync();
  EXPECT_TRUE(shown("SSTab3"));
  EXPECT_EQ(pane("Text3"), QStringLiteral("line 1\nline 2"));
  EXPECT_EQ(find<QPushButton>("Boto2")->text(), QStringLiteral("Save ALL Results"));
  find<QPushButton>("CloseBotton")->click();
  EXPECT_FALSE(shown("SSTab3"));
  EXPECT_FALSE(rec.form.SSTab3.visible);

  rec.form.MatrixTab.visible = true;
  rec.form.Combo1.items = {" Obs. Frequency", " Jukes & Cantor"};
  rec.form.Combo1.text = " Obs. Frequency";
  window->sync();
  auto* combo = find<QComboBox>("Combo1");
  ASSERT_EQ(combo->count(), 2);
  combo->setCurrentIndex(1);
  find<QRadioButton>("Option2")->setChecked(true);
  find<QPushButton>("Command2")->click();  // the matrix page's Cancel
  EXPECT_EQ(rec.form.Combo1.text, " Jukes & Cantor");
  EXPECT_TRUE(rec.form.Option2.value);
  EXPECT_FALSE(rec.form.Option1.value);
  EXPECT_FALSE(shown("MatrixTab"));
  EXPECT_TRUE(shown("SSTab3"));

  rec.form.SSTab4.visible = true;
  window->sync();
  find<QPushButton>("CancelSliwindows")->click();
  EXPECT_FALSE(shown("SSTab4"));
}

TEST_F(MainWindowTest, RegionDialogFollowsTheRecordAndClosingItCancels) {
  QDialog* region = window->region_dialog();
  EXPECT_FALSE(region->isVisible());
  rec.region_dialog.region.visible = true;
  rec.region_dialog.Text1.text = "1";
  rec.region_dialog.Text2.text = "300";
  window->sync();
  ASSERT_TRUE(region->isVisible());
  EXPECT_EQ(region->findChild<QLineEdit*>(QStringLiteral("Text2"))->text(), QStringLiteral("300"));
  region->reject();
  EXPECT_FALSE(rec.region_dialog.region.visible);
  EXPECT_FALSE(region->isVisible());
}

TEST_F(MainWindowTest, OpenRunAndChooseStretchesThroughTheWidgets) {
  action("OpenFile")->trigger();  // cancelled: nothing changes, not even the panes
  EXPECT_TRUE(shown("SSTab2"));
  EXPECT_FALSE(action("Diver")->isEnabled());

  platform.open_answers = {VARNOTH_SOURCE_DIR "/examples/coding/primates.aln"};
  action("OpenFile")->trigger();
  ASSERT_TRUE(platform.messages.empty()) << platform.messages[0].text;
  EXPECT_TRUE(action("Diver")->isEnabled());
  EXPECT_TRUE(action("Region_analysis")->isEnabled());
  EXPECT_FALSE(shown("SSTab2"));
  EXPECT_FALSE(shown("Label3"));
  EXPECT_EQ(find<QTabWidget>("SSTab1")->currentIndex(), 0);
  EXPECT_TRUE(pane("Text1").startsWith(QStringLiteral(" Input File Name:   primates.aln\n")));
  EXPECT_TRUE(pane("Text2").endsWith(QStringLiteral("\n Region to analyze: All")));

  action("Divergence")->trigger();
  EXPECT_TRUE(shown("SSTab3"));
  EXPECT_FALSE(pane("Text3").isEmpty());
  find<QPushButton>("CloseBotton")->click();
  EXPECT_FALSE(shown("SSTab3"));

  // Sliding windows: a size of 10 is refused with its message.
  action("Sliding_Window")->trigger();
  ASSERT_TRUE(shown("SSTab4"));
  EXPECT_FALSE(find<QLineEdit>("TextWinSize")->text().isEmpty());
  find<QLineEdit>("TextWinSize")->setText(QStringLiteral("10"));
  find<QPushButton>("AcceptSliWindows")->click();
  ASSERT_EQ(platform.messages.size(), 1u);
  EXPECT_EQ(platform.messages[0].text, "Window Size Too small !");
  find<QPushButton>("CancelSliwindows")->click();
  EXPECT_FALSE(shown("SSTab4"));

  // Region: the boxes open on the whole sequence; first equal to last beeps and
  // leaves the dialog open; Whole Sequence closes it.
  action("Region_analysis")->trigger();
  QDialog* region = window->region_dialog();
  ASSERT_TRUE(region->isVisible());
  auto* first = region->findChild<QLineEdit*>(QStringLiteral("Text1"));
  auto* last = region->findChild<QLineEdit*>(QStringLiteral("Text2"));
  EXPECT_EQ(first->text(), QStringLiteral("1"));
  EXPECT_EQ(last->text(), QString::number(rec.seq.SeqLength));
  first->setText(QStringLiteral("30"));
  last->setText(QStringLiteral("30"));
  region->findChild<QPushButton*>(QStringLiteral("Command1"))->click();
  EXPECT_EQ(platform.beeps, 1);
  EXPECT_TRUE(region->isVisible());
  region->findChild<QPushButton*>(QStringLiteral("Command3"))->click();
  EXPECT_FALSE(region->isVisible());
  EXPECT_TRUE(pane("Text2").endsWith(QStringLiteral("\n Region to analyze: All")));
}

// What a picture shows, read from its scene: the comparison of each panel,
// the number of points of a series, the cells, the title.
struct SceneSummary {
  std::vector<std::string> panels;
  std::map<std::string, int> points;  // by data-series
  int cells = 0;
  std::string title;
};

SceneSummary summary(const reports::Scene& scene) {
  SceneSummary out;
  auto attribute = [](const reports::DataAttributes& data, const std::string& name) {
    for (const auto& [key, value] : data)
      if (key == name) return value;
    return std::string();
  };
  for (const reports::Shape& shape : scene.shapes) {
    if (const auto* g = std::get_if<reports::GroupStart>(&shape); g && g->css_class == "panel")
      out.panels.push_back(attribute(g->data, "comparison"));
    if (const auto* c = std::get_if<reports::CircleShape>(&shape); c && c->css_class == "point")
      ++out.points[attribute(c->data, "series")];
    if (const auto* r = std::get_if<reports::RectShape>(&shape); r && r->css_class == "cell")
      ++out.cells;
    if (const auto* t = std::get_if<reports::TextShape>(&shape); t && t->css_class == "title")
      out.title += t->text + " ";
  }
  return out;
}

TEST_F(MainWindowTest, WindowPlotPageAndHeatMapFollowTheRun) {
  platform.open_answers = {VARNOTH_SOURCE_DIR "/examples/coding/primates.aln"};
  action("OpenFile")->trigger();
  action("Divergence")->trigger();
  auto* tabs = find<QTabWidget>("SSTab3");
  EXPECT_FALSE(tabs->isTabVisible(1));  // a whole run has no window plot
  EXPECT_FALSE(window->show_window_plot());

  // The heat map draws the item the page chooses: 6 sequences, 15 cells.
  find<QPushButton>("MatrixBoton")->click();
  auto* heat = find<PlotView>("HeatMapView");
  ASSERT_TRUE(heat->has_picture());
  SceneSummary map = summary(heat->scene());
  EXPECT_EQ(map.cells, 15);
  EXPECT_NE(map.title.find("matrix: Ks, Kimura 2-p"), std::string::npos) << map.title;
  find<QRadioButton>("Option2")->setChecked(true);
  map = summary(heat->scene());
  EXPECT_NE(map.title.find("matrix: Ka, Kimura 2-p"), std::string::npos) << map.title;
  find<QPushButton>("Command2")->click();
  find<QPushButton>("CloseBotton")->click();

  // A window run: the page appears, one comparison at a time by the chooser.
  action("Sliding_Window")->trigger();
  find<QPushButton>("AcceptSliWindows")->click();
  action("Divergence")->trigger();
  ASSERT_TRUE(tabs->isTabVisible(1));
  EXPECT_EQ(tabs->tabText(1), QString::fromLatin1(kWindowPlotCaption));
  ASSERT_TRUE(window->show_window_plot());
  EXPECT_EQ(tabs->currentIndex(), 1);
  auto* chooser = find<QComboBox>("PlotComparison");
  ASSERT_EQ(chooser->count(), 15);
  EXPECT_TRUE(chooser->isVisible());
  chooser->setCurrentIndex(4);
  auto* plot = find<PlotView>("WindowPlotView");
  const SceneSummary chart = summary(plot->scene());
  EXPECT_EQ(chart.panels, std::vector<std::string>{"5"});
  // 900 positions, windows of 450 moving 150: four windows, Ks and Ka in each.
  EXPECT_EQ(chart.points.at("Ks K-2p"), 4);
  EXPECT_EQ(chart.points.at("Ka K-2p"), 4);
  EXPECT_NE(chart.title.find("Ks, Ka and Ka/Ks"), std::string::npos) << chart.title;

  // Saved as SVG, the file holds the panel shown; a cancelled dialog saves nothing.
  const QString path = QDir::temp().filePath(QStringLiteral("varnoth_uitest_plot.svg"));
  QFile::remove(path);
  platform.save_answers = {path.toStdString()};
  find<QPushButton>("SavePlotSvg")->click();
  QFile file(path);
  ASSERT_TRUE(file.open(QIODevice::ReadOnly));
  const QByteArray svg = file.readAll();
  EXPECT_TRUE(svg.startsWith("<?xml"));
  EXPECT_TRUE(svg.contains("data-comparison=\"5\""));
  file.close();
  QFile::remove(path);
  find<QPushButton>("SavePlotPng")->click();

  // A whole run again: the page goes.
  action("Sliding_Window")->trigger();
  find<QPushButton>("WholeSliWindows")->click();
  action("Divergence")->trigger();
  EXPECT_FALSE(tabs->isTabVisible(1));
  EXPECT_EQ(tabs->currentIndex(), 0);
}

// Not a check: pictures of the pages for a look at the layout, when asked for.
TEST_F(MainWindowTest, PicturesOfThePagesWhenAskedFor) {
  const QString dir = qEnvironmentVariable("VARNOTH_UI_SHOTS");
  if (dir.isEmpty()) GTEST_SKIP() << "VARNOTH_UI_SHOTS not set";
  auto shot = [&](const char* name, QWidget* w) {
    QApplication::processEvents();
    EXPECT_TRUE(w->grab().save(dir + QLatin1Char('/') + QLatin1String(name) + ".png")) << name;
  };
  shot("title", window.get());
  click(find("Label1"));
  shot("options", window.get());
  platform.open_answers = {VARNOTH_SOURCE_DIR "/examples/noncoding/introns.aln"};
  action("OpenFile")->trigger();
  shot("loaded", window.get());
  action("Noncoding")->trigger();
  action("All")->trigger();
  action("Divergence")->trigger();
  EXPECT_TRUE(platform.messages.empty());
  shot("results", window.get());
  find<QPushButton>("MatrixBoton")->click();
  shot("matrix", window.get());
  find<QPushButton>("Command2")->click();
  find<QPushButton>("CloseBotton")->click();
  action("Sliding_Window")->trigger();
  shot("windows", window.get());
  find<QPushButton>("CancelSliwindows")->click();
  action("Coding")->trigger();
  action("Weighted")->trigger();
  shot("weight", window.get());
  find<QPushButton>("Command3")->click();
  action("Region_analysis")->trigger();
  shot("region", window->region_dialog());
  QDialog* about = make_about_box(window.get());
  about->show();
  shot("about", about);
  delete about;

  // The pictures of a coding window run and of a coding matrix.
  platform.open_answers = {VARNOTH_SOURCE_DIR "/examples/coding/primates.aln"};
  action("OpenFile")->trigger();
  action("Divergence")->trigger();
  find<QPushButton>("MatrixBoton")->click();
  shot("heat_map", window.get());
  find<QPushButton>("Command2")->click();
  action("Sliding_Window")->trigger();
  find<QPushButton>("AcceptSliWindows")->click();
  action("Divergence")->trigger();
  EXPECT_TRUE(window->show_window_plot());
  shot("window_plot", window.get());
}

TEST(QtFilters, DialogFiltersInQtForm) {
  const std::pair<const char*, QStringList> cases[] = {
      {"Sequence Files |*.gde;*.lwl;*.meg;*.pir;*.aln;*.msf;*.phy|All files (*.*)|*.*",
       {"Sequence Files (*.gde *.lwl *.meg *.pir *.aln *.msf *.phy)", "All files (*.*)"}},
      {"Output files (*.out)|*.out|All files (*.*)|*.*", {"Output files (*.out)", "All files (*.*)"}},
      {"Text|*.txt", {"Text (*.txt)"}},
      {"", {}},
  };
  for (const auto& [filter, expected] : cases) EXPECT_EQ(qt_filters(filter), expected) << filter;
}

TEST(QtClock, ReadsAsTheReportHeadsPrintIt) {
  const ClockReading now = clock_now();
  EXPECT_TRUE(QRegularExpression(QStringLiteral("^\\d\\d/\\d\\d/\\d{4}$"))
                  .match(QString::fromStdString(now.date)).hasMatch()) << now.date;
  EXPECT_TRUE(QRegularExpression(QStringLiteral("^\\d\\d:\\d\\d:\\d\\d$"))
                  .match(QString::fromStdString(now.time)).hasMatch()) << now.time;
  EXPECT_GE(now.seconds_since_midnight, 0);
  EXPECT_LT(now.seconds_since_midnight, 86400);
}

TEST(PendingCommands, AreKnownControlsAndTheRestRun) {
  // Every pending name is a control of the window, so wiring it needs no new widget.
  AnalysisRecord rec;
  RecordingPlatform platform;
  MainWindow window(rec, platform);
  for (std::string_view name : pending_commands()) {
    const QString n = QString::fromUtf8(name.data(), static_cast<qsizetype>(name.size()));
    const bool in_region = n.startsWith(QStringLiteral("region."));
    QObject* owner = in_region ? static_cast<QObject*>(window.region_dialog()) : &window;
    EXPECT_NE(owner->findChild<QObject*>(in_region ? n.mid(7) : n), nullptr) << name;
  }
}

}  // namespace
}  // namespace varnoth::ui

int main(int argc, char** argv) {
  if (qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM")) qputenv("QT_QPA_PLATFORM", "offscreen");
  QApplication app(argc, argv);
  ::testing::InitGoogleTest(&argc, argv);
  return RUN_ALL_TESTS();
}
