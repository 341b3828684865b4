// Option menu rules and the option summary, byte for byte.
#include <gtest/gtest.h>

#include "state/options.h"
#include "state/summary.h"
#include "support/fake_platform.h"

namespace varnoth {
namespace {

const std::string kBlanks28(28, ' ');

struct Session {
  AnalysisRecord rec;
  testing::FakePlatform platform;
  Session() {
    start_up(rec);
    title_page_click(rec);
  }
  std::vector<std::string> checked_methods() const {
    static const char* names[6] = {"JC", "K2p", "TN", "T1p", "T2p", "T4p"};
    std::vector<std::string> out;
    for (int i = 0; i < 6; ++i)
      if ((rec.menu.*kMethods[i]).checked) out.push_back(names[i]);
    return out;
  }
  void weight(const std::string& typed) {
    click_weighted(rec);
    rec.form.Text4.text = typed;
    accept_weight(rec, platform);
  }
};

using Methods = std::vector<std::string>;

TEST(StartState, MenuAsDesigned) {
  Session s;
  const Menu& m = s.rec.menu;
  EXPECT_FALSE(m.Diver.enabled);
  EXPECT_FALSE(m.RelatRate.visible);
  EXPECT_FALSE(m.RelatRate.enabled);
  EXPECT_TRUE(m.Confidence_Intervals_menu.enabled);
  EXPECT_FALSE(m.CIcodingRegion.enabled);
  EXPECT_TRUE(m.Coding.checked);
  EXPECT_TRUE(m.universal.checked);
  EXPECT_EQ(s.checked_methods(), Methods{"K2p"});
  EXPECT_FALSE(m.JukesandCantor.enabled);
  EXPECT_FALSE(m.All.visible);
  EXPECT_EQ(s.rec.form.Text1.text, " No Sequence Information... ");
  EXPECT_EQ(s.rec.form.SSTab1Page, 1);
  EXPECT_FALSE(s.rec.form.SSTab2.visible);
  EXPECT_EQ(s.rec.form.Text2.text,
            " CODING DIVERGENCE ANALYSIS\r\n"
            " M.-Hits Correcting Method:  Kimura-2p\r\n"
            " Genetic Code:               Universal\r\n"
            " Multiple pathways method:   Unweighted\r\n"
            " Comparison Restrictions:    None\r\n");
}

TEST(Methods, NoncodingTogglesAndKimuraIsTheFallback) {
  Session s;
  click_noncoding(s.rec);
  EXPECT_EQ(s.rec.menu.All.caption, "Select all..");
  EXPECT_TRUE(s.rec.menu.All.visible);
  EXPECT_TRUE(s.rec.menu.Tajima4p.enabled);
  EXPECT_FALSE(s.rec.menu.Code.enabled);
  click_method(s.rec, &Menu::Tajima1p);
  EXPECT_EQ(s.checked_methods(), (Methods{"K2p", "T1p"}));
  click_method(s.rec, &Menu::Kimura2p);
  EXPECT_EQ(s.checked_methods(), Methods{"T1p"});
  // The last method cannot go: Kimura-2p takes its place, not the method clicked.
  click_method(s.rec, &Menu::Tajima1p);
  EXPECT_EQ(s.checked_methods(), Methods{"K2p"});
}

TEST(Methods, AllTogglesOnItsCaption) {
  Session s;
  click_noncoding(s.rec);
  click_all_methods(s.rec);  // "Select all.." is not "Reset..": all six on
  EXPECT_EQ(s.checked_methods().size(), 6u);
  EXPECT_EQ(s.rec.menu.All.caption, "Reset..");
  click_all_methods(s.rec);
  EXPECT_EQ(s.checked_methods(), Methods{"K2p"});
  EXPECT_EQ(s.rec.menu.All.caption, "Select All..");
}

TEST(Methods, CodingAlwaysComesBackToKimura) {
  Session s;
  click_noncoding(s.rec);
  click_all_methods(s.rec);
  click_coding(s.rec);
  EXPECT_EQ(s.checked_methods(), Methods{"K2p"});
  EXPECT_FALSE(s.rec.menu.JukesandCantor.enabled);
  EXPECT_FALSE(s.rec.menu.Tajima2p.enabled);
  EXPECT_FALSE(s.rec.menu.All.visible);
  EXPECT_NE(s.rec.form.Text2.text.find(" M.-Hits Correcting Method:  Kimura-2p\r\n"),
            std::string::npos);
  // A method click in coding mode checks it alone (reachable only by code).
  click_method(s.rec, &Menu::JukesandCantor);
  EXPECT_EQ(s.checked_methods(), Methods{"JC"});
  EXPECT_NE(s.rec.form.Text2.text.find(" M.-Hits Correcting Method:  Jukes and Cantor\r\n"),
            std::string::npos);
}

TEST(Summary, NoncodingLineBreaking) {
  Session s;
  click_noncoding(s.rec);
  EXPECT_EQ(s.rec.form.Text2.text,
            " NONCODING DIVERGENCE ANALYSIS\r\n\r\n"
            " M.-Hits Correcting Method: Kimura-2p        \r\n");
  click_all_methods(s.rec);
  EXPECT_EQ(s.rec.form.Text2.text,
            " NONCODING DIVERGENCE ANALYSIS\r\n"
            " M.-Hits Correcting Method: Jukes & Cantor   Kimura-2p        \r\n" +
                kBlanks28 + "Tajima & Nei     Tajima-1p        \r\n" + kBlanks28 +
                "Tajima-2p        Tajima-4p        \r\n");
  // Two names before the break leave a line of 28 blanks behind it.
  click_all_methods(s.rec);
  click_method(s.rec, &Menu::JukesandCantor);
  EXPECT_EQ(s.rec.form.Text2.text,
            " NONCODING DIVERGENCE ANALYSIS\r\n\r\n"
            " M.-Hits Correcting Method: Jukes & Cantor   Kimura-2p        \r\n" +
                kBlanks28 + "\r\n");
  // Five names: no empty line; the last name is never followed by a break.
  click_method(s.rec, &Menu::JukesandCantor);
  click_all_methods(s.rec);
  click_method(s.rec, &Menu::Kimura2p);
  EXPECT_EQ(s.rec.form.Text2.text,
            " NONCODING DIVERGENCE ANALYSIS\r\n"
            " M.-Hits Correcting Method: Jukes & Cantor   Tajima & Nei     \r\n" +
                kBlanks28 + "Tajima-1p        Tajima-2p        \r\n" + kBlanks28 +
                "Tajima-4p        \r\n");
}

TEST(Restrictions, ToggleAndSummaryOrder) {
  Session s;
  click_restriction(s.rec, Restriction::MaxOneChange);
  EXPECT_TRUE(s.rec.menu.Max_One_Change.checked);
  EXPECT_EQ(s.rec.options.MaxOneChangeFlag, 1);
  EXPECT_NE(s.rec.form.Text2.text.find(
                " Comparison Restrictions:    Max. One Substitution /Codon\r\n"),
            std::string::npos);
  click_restriction(s.rec, Restriction::MaxOneChange);
  EXPECT_FALSE(s.rec.menu.Max_One_Change.checked);
  EXPECT_EQ(s.rec.options.MaxOneChangeFlag, 0);
  EXPECT_NE(s.rec.form.Text2.text.find(" Comparison Restrictions:    None\r\n"),
            std::string::npos);
  click_restriction(s.rec, Restriction::No3Diff);
  EXPECT_NE(s.rec.form.Text2.text.find(
                " Comparison Restrictions:    No Codons with 3 diff. \r\n"),
            std::string::npos);
  click_restriction(s.rec, Restriction::OnlyAaChange);
  EXPECT_EQ(s.rec.options.No3DiffFlag, 0);
  EXPECT_EQ(s.rec.options.OnlyAaChangeFlag, 1);
  EXPECT_TRUE(s.rec.menu.Always_aa_change.checked);
  EXPECT_FALSE(s.rec.menu.No_3_diff.checked);
  click_no_restrictions(s.rec);
  EXPECT_EQ(s.rec.options.OnlyAaChangeFlag, 0);
  EXPECT_FALSE(s.rec.menu.Always_aa_change.checked);
}

TEST(Codes, OnlyAnotherCodeSwitches) {
  Session s;
  click_code(s.rec, &Menu::universal);
  EXPECT_TRUE(s.rec.menu.universal.checked);
  click_code(s.rec, &Menu::Dromito);
  EXPECT_TRUE(s.rec.menu.Dromito.checked);
  EXPECT_FALSE(s.rec.menu.universal.checked);
  EXPECT_EQ(s.rec.active_code(), GeneticCode::Dromito);
  EXPECT_NE(s.rec.form.Text2.text.find(" Genetic Code:               Drosophila Mitochondrial\r\n"),
            std::string::npos);
}

TEST(Weight, AcceptedRefusedAndHalf) {
  Session s;
  s.weight("0.9");
  EXPECT_FLOAT_EQ(s.rec.options.PathwayWeight, 0.9f);
  EXPECT_TRUE(s.rec.menu.Weighted.checked);
  EXPECT_FALSE(s.rec.menu.Unweighted.checked);
  EXPECT_FALSE(s.rec.form.SSTab5.visible);
  EXPECT_NE(s.rec.form.Text2.text.find(" Multiple pathways method:   Weighted [Prob.Syn =0.9]\r\n"),
            std::string::npos);
  const std::string before = s.rec.form.Text2.text;
  s.weight("1.5");
  ASSERT_EQ(s.platform.messages.size(), 1u);
  EXPECT_EQ(s.platform.messages[0].text, "Invalid weight (0<=Prob<=1)!");
  EXPECT_EQ(s.platform.messages[0].title, "  MULTIPLE-PATHWAYS ");
  EXPECT_EQ(s.platform.messages[0].icon, MessageIcon::Exclamation);
  EXPECT_FLOAT_EQ(s.rec.options.PathwayWeight, 0.9f);
  EXPECT_EQ(s.rec.form.Text2.text, before);
  s.weight("0,25");  // a comma goes through the comma reader
  EXPECT_FLOAT_EQ(s.rec.options.PathwayWeight, 0.25f);
  s.weight("0.5abc");  // the plain reader stops at the first non-number
  EXPECT_TRUE(s.rec.menu.Unweighted.checked);
  EXPECT_FALSE(s.rec.menu.Weighted.checked);
  EXPECT_NE(s.rec.form.Text2.text.find(" Multiple pathways method:   Unweighted\r\n"),
            std::string::npos);
  s.weight("-0.1");
  EXPECT_EQ(s.platform.messages.size(), 2u);
  EXPECT_FLOAT_EQ(s.rec.options.PathwayWeight, 0.5f);
}

TEST(Weight, SwitchingBackToCodingRestartsUnweighted) {
  Session s;
  s.weight("0.1");
  click_noncoding(s.rec);
  EXPECT_FALSE(s.rec.menu.weights.enabled);
  click_coding(s.rec);
  EXPECT_FLOAT_EQ(s.rec.options.PathwayWeight, 0.5f);
  EXPECT_TRUE(s.rec.menu.Unweighted.checked);
  EXPECT_FALSE(s.rec.menu.Weighted.checked);
}

TEST(Summary, RegionLinesOfTheWeightPage) {
  Session s;
  s.rec.seq.SeqCount = 4;
  s.rec.seq.SeqLength = 900;
  s.rec.region.RegionFirst = "10";
  s.rec.region.RegionLast = "101";
  s.weight("0.75");
  EXPECT_EQ(s.rec.form.Text2.text,
            " CODING DIVERGENCE ANALYSIS\r\n"
            " M.-Hits Correcting Method:  Kimura-2p\r\n"
            " Genetic Code:               Universal\r\n"
            " Multiple pathways method:   Weighted [Prob.Syn =0.75]\r\n"
            " Comparison Restrictions:    None\r\n"
            "\r\n Region to analyze:10 -101 nuc.\r\n"
            "                   4 -34 codon");
  // Empty range fields take the whole sequence, which reads "All".
  s.rec.region.RegionFirst.clear();
  s.rec.region.RegionLast.clear();
  s.weight("0.75");
  EXPECT_EQ(s.rec.region.RegionLast, "900");
  EXPECT_EQ(s.rec.region.RegionText, "\r\n Region to analyze: All");
}

}  // namespace
}  // namespace varnoth
