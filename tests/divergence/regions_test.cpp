#include "divergence/regions.h"

#include <gtest/gtest.h>

#include <string>

#include "support/fake_platform.h"

namespace varnoth {
namespace {

using testing::FakePlatform;

// A loaded file of 3 sequences and 300 positions, coding mode.
AnalysisRecord loaded(double seq_length = 300) {
  AnalysisRecord rec;
  rec.seq.SeqCount = 3;
  rec.seq.SeqLength = seq_length;
  rec.menu.CIcodingRegion.enabled = true;
  rec.menu.CIcodingRegionKaKs.enabled = true;
  return rec;
}

bool ends_with(const std::string& text, const std::string& tail) {
  return text.size() >= tail.size() &&
         text.compare(text.size() - tail.size(), tail.size(), tail) == 0;
}

TEST(WindowDefaults, FollowTheSequenceLength) {
  struct Case {
    double length;
    const char* size;
    const char* movement;
  };
  for (const Case& c : {Case{1000, "450", "150"}, Case{500, "450", "150"}, Case{499, "180", "60"},
                        Case{200, "180", "60"}, Case{199, "60", "20"}, Case{80, "60", "20"},
                        Case{79, "0", "0"}, Case{0, "0", "0"}}) {
    AnalysisRecord rec = loaded(c.length);
    rec.form.SSTab3.visible = true;
    rec.form.TextWinSize.text = "999";
    open_sliding_windows(rec);
    EXPECT_EQ(rec.form.TextWinSize.text, c.size) << c.length;
    EXPECT_EQ(rec.form.TextMovement.text, c.movement) << c.length;
    EXPECT_FALSE(rec.form.SSTab3.visible);
    EXPECT_TRUE(rec.form.SSTab4.visible);
  }
}

TEST(SlidingWindows, RefusedEntriesGiveTheirMessageAndTheDefaults) {
  struct Case {
    const char* size;
    const char* movement;
    const char* message;
  };
  for (const Case& c :
       {Case{"10", "3", "Window Size Too small !"}, Case{"5", "1", "Window Size Too small !"},
        Case{"0.5", "30", "Window Size Too small !"}, Case{"150", "2", "Invalid Information !"},
        Case{"150", "2.9", "Invalid Information !"}, Case{"", "150", "Invalid Information !"},
        Case{"-20", "5", "Invalid Information !"}, Case{"abc", "5", "Invalid Information !"}}) {
    AnalysisRecord rec = loaded(600);
    open_sliding_windows(rec);
    rec.form.TextWinSize.text = c.size;
    rec.form.TextMovement.text = c.movement;
    FakePlatform p;
    EXPECT_FALSE(accept_sliding_windows(rec, p));
    ASSERT_EQ(p.messages.size(), 1u) << c.size << "/" << c.movement;
    EXPECT_EQ(p.messages[0].text, c.message) << c.size << "/" << c.movement;
    EXPECT_EQ(p.messages[0].title, "");
    EXPECT_EQ(p.messages[0].icon, MessageIcon::Exclamation);
    EXPECT_EQ(rec.form.TextWinSize.text, "450");
    EXPECT_EQ(rec.form.TextMovement.text, "150");
    EXPECT_EQ(rec.region.WindowMode, 0);
    EXPECT_TRUE(rec.form.SSTab4.visible);
    EXPECT_FALSE(rec.menu.CIcodingRegion.enabled);
    EXPECT_FALSE(rec.menu.CIcodingRegionKaKs.enabled);
  }
}

TEST(SlidingWindows, AcceptedWindowWritesBothSummaryLines) {
  AnalysisRecord rec = loaded(600);
  rec.region.RegionMode = 1;
  rec.form.MatrixBoton.visible = true;
  open_sliding_windows(rec);  // 450 and 150
  FakePlatform p;
  ASSERT_TRUE(accept_sliding_windows(rec, p));
  EXPECT_TRUE(p.messages.empty());
  EXPECT_EQ(rec.region.WindowSize, 450);
  EXPECT_EQ(rec.region.WindowMode, 1);
  EXPECT_EQ(rec.region.RegionMode, 0);
  EXPECT_FALSE(rec.form.SSTab4.visible);
  EXPECT_FALSE(rec.form.MatrixBoton.visible);
  EXPECT_EQ(rec.region.CodingWindowText,
            "\r\n Sliding Window Analysis:  Win. Size : 450 nuc.    150 cod."
            "\r\n                           Win. Mov. : 150 nuc.    50 cod.");
  EXPECT_EQ(rec.region.NoncodingWindowText,
            "\r\n Sliding Window Analysis:  Win. Size : 450 nuc."
            "\r\n                           Win. Mov. : 150 nuc.");
  EXPECT_TRUE(ends_with(rec.form.Text2.text, rec.region.CodingWindowText));
  EXPECT_TRUE(rec.form.Text2.text.starts_with(" CODING DIVERGENCE ANALYSIS"));
}

TEST(SlidingWindows, SummaryFigures) {
  // 11 is the smallest size taken; 3 the smallest movement.
  AnalysisRecord rec = loaded(600);
  rec.menu.Coding.checked = false;
  rec.menu.Noncoding.checked = true;
  rec.form.TextWinSize.text = "11";
  rec.form.TextMovement.text = "3";
  FakePlatform p;
  ASSERT_TRUE(accept_sliding_windows(rec, p));
  EXPECT_EQ(rec.region.CodingWindowText,
            "\r\n Sliding Window Analysis:  Win. Size : 11 nuc.     3 cod."
            "\r\n                           Win. Mov. : 3 nuc.      1 cod.");
  EXPECT_TRUE(ends_with(rec.form.Text2.text, rec.region.NoncodingWindowText));
  // A figure longer than its 7 places gets no blanks, fractions keep their point.
  EXPECT_EQ(coding_window_text(12345678, 100.5),
            "\r\n Sliding Window Analysis:  Win. Size : 12345678 nuc.4115226 cod."
            "\r\n                           Win. Mov. : 100.5 nuc.  33 cod.");
}

TEST(SlidingWindows, WholeSequence) {
  AnalysisRecord rec = loaded(300);
  rec.region.WindowMode = 1;
  rec.region.RegionMode = 1;
  rec.region.RegionFirst = "10";
  rec.region.RegionLast = "100";
  rec.form.SSTab4.visible = true;
  whole_sliding_windows(rec);
  EXPECT_EQ(rec.region.WindowMode, 0);
  EXPECT_EQ(rec.region.RegionMode, 0);
  EXPECT_EQ(rec.region.RegionFirst, "1");
  EXPECT_EQ(rec.region.RegionLast, "300");
  EXPECT_EQ(rec.region.CodingWindowText, "\r\n Region to analyze: All");
  EXPECT_EQ(rec.region.NoncodingWindowText, "\r\n Region to analyze: All");
  EXPECT_EQ(rec.region.RegionText, "\r\n Region to analyze: All");
  EXPECT_FALSE(rec.form.SSTab4.visible);
  EXPECT_TRUE(ends_with(rec.form.Text2.text, "\r\n Region to analyze: All"));
}

TEST(RegionDialog, OpensWithStoredRangeOrWholeSequence) {
  AnalysisRecord rec = loaded(300);
  rec.form.SSTab3.visible = true;
  rec.form.SSTab4.visible = true;
  open_region_dialog(rec);
  EXPECT_EQ(rec.region_dialog.Text1.text, "1");
  EXPECT_EQ(rec.region_dialog.Text2.text, "300");
  EXPECT_TRUE(rec.region_dialog.loaded);
  EXPECT_TRUE(rec.region_dialog.region.visible);
  EXPECT_FALSE(rec.form.SSTab3.visible);
  EXPECT_FALSE(rec.form.SSTab4.visible);

  rec.region.RegionFirst = "10";
  rec.region.RegionLast = "100";
  open_region_dialog(rec);
  EXPECT_EQ(rec.region_dialog.Text1.text, "10");
  EXPECT_EQ(rec.region_dialog.Text2.text, "100");
}

TEST(RegionDialog, ChecksInOrderEachBeepsAndEmptiesItsBox) {
  struct Case {
    const char* first;
    const char* last;
    bool first_emptied;
    bool last_emptied;
  };
  // SeqLength 300. Where two checks fail, the earlier one decides.
  for (const Case& c : {Case{"5", "0", false, true},      // 1 last is 0
                        Case{"0", "0", false, true},      // 1 before 2
                        Case{"0", "50", true, false},     // 2 first is 0
                        Case{"", "50", true, false},      // empty reads as 0
                        Case{"400", "301", false, true},  // 3 before 4
                        Case{"301", "300", true, false},  // 4 first beyond
                        Case{"-5", "50", true, false},    // 5 first negative
                        Case{"50", "50", true, true},     // 6 first = last
                        Case{"60", "50", true, true},     // 6 first > last
                        Case{"10", "-3", true, true}}) {  // 6 (a negative last)
    AnalysisRecord rec = loaded(300);
    rec.region.RegionFirst = "2";
    rec.region.RegionLast = "200";
    rec.region.RegionMode = 1;
    open_region_dialog(rec);
    rec.region_dialog.Text1.text = c.first;
    rec.region_dialog.Text2.text = c.last;
    FakePlatform p;
    EXPECT_FALSE(accept_region(rec, p));
    EXPECT_EQ(p.beeps, 1);
    EXPECT_TRUE(p.messages.empty());
    EXPECT_EQ(rec.region_dialog.Text1.text, c.first_emptied ? "" : c.first)
        << c.first << ".." << c.last;
    EXPECT_EQ(rec.region_dialog.Text2.text, c.last_emptied ? "" : c.last)
        << c.first << ".." << c.last;
    EXPECT_TRUE(rec.region_dialog.region.visible);
    EXPECT_EQ(rec.region.RegionFirst, "2");
    EXPECT_EQ(rec.region.RegionLast, "200");
    EXPECT_EQ(rec.region.RegionMode, 1);
    EXPECT_FALSE(rec.menu.CIcodingRegion.enabled);
    EXPECT_FALSE(rec.menu.CIcodingRegionKaKs.enabled);
  }
}

TEST(RegionDialog, AcceptedRegionWritesItsLines) {
  AnalysisRecord rec = loaded(300);
  rec.region.WindowMode = 1;
  open_region_dialog(rec);
  rec.region_dialog.Text1.text = "10";
  rec.region_dialog.Text2.text = "100";
  FakePlatform p;
  ASSERT_TRUE(accept_region(rec, p));
  EXPECT_EQ(p.beeps, 0);
  EXPECT_EQ(rec.region.RegionMode, 1);
  EXPECT_EQ(rec.region.WindowMode, 0);
  EXPECT_EQ(rec.region.RegionFirst, "10");
  EXPECT_EQ(rec.region.RegionLast, "100");
  EXPECT_EQ(rec.region.NoncodingWindowText, "\r\n Region to analyze:10 -100 nuc.");
  // The dialog's codon line ends at Int(100/3) = 33, RegionText's at 1 + Int(99/3) = 34.
  EXPECT_EQ(rec.region.CodingWindowText,
            "\r\n Region to analyze:10 -100 nuc.\r\n                   4 -33 codon");
  EXPECT_EQ(rec.region.RegionText,
            "\r\n Region to analyze:10 -100 nuc.\r\n                   4 -34 codon");
  EXPECT_TRUE(ends_with(rec.form.Text2.text, rec.region.CodingWindowText));
  EXPECT_FALSE(rec.region_dialog.region.visible);
  EXPECT_FALSE(rec.menu.CIcodingRegion.enabled);
}

TEST(RegionDialog, WholeRangeCountsAsWholeSequence) {
  AnalysisRecord rec = loaded(300);
  open_region_dialog(rec);
  rec.region_dialog.Text1.text = "1";
  rec.region_dialog.Text2.text = "300";
  FakePlatform p;
  ASSERT_TRUE(accept_region(rec, p));
  EXPECT_EQ(rec.region.RegionMode, 0);
  EXPECT_EQ(rec.region.CodingWindowText, "\r\n Region to analyze: All");
  EXPECT_EQ(rec.region.NoncodingWindowText, "\r\n Region to analyze: All");
  EXPECT_EQ(rec.region.RegionText, "\r\n Region to analyze: All");

  // 2..300 is not the whole sequence.
  open_region_dialog(rec);
  rec.region_dialog.Text1.text = "2";
  ASSERT_TRUE(accept_region(rec, p));
  EXPECT_EQ(rec.region.RegionMode, 1);
  EXPECT_EQ(rec.region.NoncodingWindowText, "\r\n Region to analyze:2 -300 nuc.");
}

TEST(RegionDialog, WholeSequenceButtonAndCancel) {
  AnalysisRecord rec = loaded(300);
  rec.region.RegionFirst = "10";
  rec.region.RegionLast = "100";
  rec.region.RegionMode = 1;
  open_region_dialog(rec);
  whole_region(rec);
  EXPECT_EQ(rec.region.RegionMode, 0);
  EXPECT_EQ(rec.region.WindowMode, 0);
  EXPECT_EQ(rec.region.RegionFirst, "1");
  EXPECT_EQ(rec.region.RegionLast, "300");
  EXPECT_EQ(rec.region_dialog.Text1.text, "1");
  EXPECT_EQ(rec.region_dialog.Text2.text, "300");
  EXPECT_EQ(rec.region.RegionText, "\r\n Region to analyze: All");
  EXPECT_EQ(rec.region.CodingWindowText, "\r\n Region to analyze: All");
  EXPECT_FALSE(rec.region_dialog.region.visible);
  EXPECT_FALSE(rec.menu.CIcodingRegion.enabled);

  rec.region.RegionFirst = "7";
  rec.region.RegionLast = "70";
  open_region_dialog(rec);
  rec.region_dialog.Text1.text = "50";
  rec.region_dialog.Text2.text = "";
  cancel_region(rec);
  EXPECT_EQ(rec.region_dialog.Text1.text, "7");
  EXPECT_EQ(rec.region_dialog.Text2.text, "70");
  EXPECT_FALSE(rec.region_dialog.region.visible);
  EXPECT_FALSE(rec.region_dialog.loaded);
  EXPECT_EQ(rec.region.RegionFirst, "7");
}

TEST(RegionConversions, NucleotidesAndCodons) {
  EXPECT_EQ(nucleotides_to_codons({10, 100}), (PositionRange{4, 34}));
  EXPECT_EQ(nucleotides_to_codons({1, 3}), (PositionRange{1, 1}));
  EXPECT_EQ(nucleotides_to_codons({4, 7}), (PositionRange{2, 3}));
  EXPECT_EQ(codons_to_nucleotides({4, 34}), (PositionRange{10, 102}));
  EXPECT_EQ(codons_to_nucleotides({1, 1}), (PositionRange{1, 3}));
}

}  // namespace
}  // namespace varnoth
