// The main window's menu and controls as plain data. The desktop program mirrors
// these into widgets of the same objectName; every rule works on them alone.
#pragma once

#include <array>
#include <string>
#include <string_view>
#include <vector>

namespace varnoth {

struct MenuItem {
  std::string caption;
  bool checked = false;
  bool enabled = true;
  bool visible = true;
};

// One field per menu item, named as the item. The start state is the design state.
struct Menu {
  MenuItem FileOpen{"&File"};
  MenuItem OpenFile{"Open Sequence File"};
  MenuItem ratll{"-"};
  MenuItem Sortir{"E&xit"};

  MenuItem Diver{"&Divergence", false, false, true};
  MenuItem Divergence{"&Divergence Analysis"};
  MenuItem AnalysisOptions{"Analysis &Options"};
  MenuItem Region_analysis{"Region Analysis", false, false, true};
  MenuItem Sliding_Window{"Sliding Window Analysis", false, false, true};

  MenuItem CodingNoncoding{"Coding/Noncoding"};
  MenuItem Coding{"Coding", true};
  MenuItem Noncoding{"Noncoding"};

  MenuItem Method{"Multiple-hits Correction Method"};
  MenuItem JukesandCantor{"Jukes-Cantor", false, false, true};
  MenuItem Kimura2p{"Kimura-2p", true};
  MenuItem TajimaandNei{"Tajima-Nei", false, false, true};
  MenuItem Tajima1p{"Tajima-1p", false, false, true};
  MenuItem Tajima2p{"Tajima-2p", false, false, true};
  MenuItem Tajima4p{"Tajima-4p", false, false, true};
  MenuItem All{"Select All..", false, true, false};

  MenuItem Code{"Genetic Code"};
  MenuItem universal{"Universal", true};
  MenuItem Vermito{"Vertebrate mitochondrial"};
  MenuItem Dromito{"Drosophila mitochondrial"};

  MenuItem ComparRestrictions{"Comparison Restrictions"};
  MenuItem Max_One_Change{"Max. One Subst. /Codon"};
  MenuItem No_3_diff{"No 3 Subt. /Codon"};
  MenuItem Always_aa_change{"Only AAs Change"};
  MenuItem NoCompRest{"None..."};

  MenuItem weights{"Multiple-Pathways"};
  MenuItem Unweighted{"Unweighted", true};
  MenuItem Weighted{"Weighted"};

  MenuItem Confidence_Intervals_menu{"&Confidence Intervals"};
  MenuItem CIcodingRegion{"C.I. for Ks and Ka", false, false, true};
  MenuItem CIcodingRegionKaKs{"Test Ka/Ks >1", false, false, true};
  MenuItem Confidence_intervals{"C.I. Divergence Estimates"};

  MenuItem RelatRate{"&Relative-Rate test", false, false, false};

  MenuItem mnuHelp{"&Help"};
  MenuItem mnuHelpContents{"&Contents"};
  MenuItem mnuHelpSearch{"&Search"};
  MenuItem nothing{"        "};
  MenuItem about{"About Varnoth/Citation"};
};

// The menu tree: each entry names an item, its parent (empty for the menu bar)
// and the member that holds it, in display order.
struct MenuEntry {
  std::string_view name;
  std::string_view parent;
  MenuItem Menu::*item;
};
extern const std::array<MenuEntry, 42> kMenuTree;

// A control of a window or page: its text (or caption), visibility and state.
struct Control {
  std::string text;
  bool visible = true;
  bool enabled = true;
  bool value = false;  // option buttons and check boxes
};

struct ComboBox {
  std::vector<std::string> items;
  std::string text;  // the text shown (the chosen item)
  bool visible = true;
  bool enabled = true;
};

// The region dialog (`region`), a window of its own.
struct RegionDialog {
  Control region{"Region Analysis", false};
  Control Text1{};  // "From nuc. :"
  Control Text2{};  // "to :"
  bool loaded = false;
};

// The controls of the main window and its pages that the logic reads or sets.
struct Form {
  Control Form1{"Varnoth"};
  // Title page.
  Control SSTab2{};
  Control Picture1{};
  Control Label1{};
  Control Label2{};
  Control Label14{};
  // Working panes: SSTab1 page 0 holds Text1, page 1 holds Text2.
  Control SSTab1{"", false};
  int SSTab1Page = 0;
  Control Text1{"", false};
  Control Text2{"", false};
  Control Label3{"Wait a moment...", false};
  // Results page.
  Control SSTab3{"Divergence Results", false};
  Control Text3{};
  Control Text33{"", false};
  Control Boto1{"Print", false};
  Control Boto2{"Save Results", false};
  Control BotoData{"Save Data (Tab-del.)", false};
  Control MatrixBoton{"Matrix Output", false};
  Control Boto3{"Main Window", false};
  Control CloseBotton{"Close"};
  // Sliding windows page.
  Control SSTab4{"Sliding Windows Analysis", false};
  Control TextWinSize{};
  Control TextMovement{};
  // Weight page.
  Control SSTab5{"", false};
  Control Label11{"Multiple-Pathways Weight"};
  Control Text4{};
  Control AcceptSliWindows{"Accept"};
  Control CancelSliwindows{"Cancel"};
  Control WholeSliWindows{"Whole Sequence"};
  // Matrix page.
  Control MatrixTab{"Divergence Matrix Output", false};
  ComboBox Combo1{};
  Control Option1{"Ks"}, Option2{"Ka"}, Option3{"TRSs"}, Option4{"TRSa"}, Option5{"TRVs"},
      Option6{"TRVa"}, Option7{"K", false}, Option8{"TRS", false}, Option9{"TRV", false};
  Control SaveMatrix{"Save Matrix"};
  // Hidden path field.
  Control Fichero1{"", false};
};

}  // namespace varnoth
