#include "simulation/kska_dialog.h"

#include <gtest/gtest.h>

#include <string>

#include "simulation/kska_fixtures.h"
#include "simulation/kska_run.h"
#include "support/fake_platform.h"

namespace {

using namespace varnoth;
using namespace varnoth::simulation;
using varnoth::testing::coding_record;
using varnoth::testing::FakePlatform;

TEST(KsKaRatio, FromRates) {
  struct Case {
    double p, q;
    bool defined;
    double trs, trv;
  };
  const Case cases[] = {
      {0, 0.1, false, 1, 1},      {0.1, 0, false, 1, 1},
      {0.1, 0.07, true, 2.8, 1},   // a = 0.05, b = 0.0175: a = 0.1 Int(28.57)
      {0.02, 0.13, true, 1, 3.2},  // a = 0.01, b = 0.0325: b = 0.1 Int(32.5)
      {0.2, 0.4, true, 1, 1},      // a = b
      {0.333, 0.663, true, 1, 1},  // the Jukes and Cantor values
  };
  for (const Case& c : cases) {
    const RatioFields r = ratio_from_rates(c.p, c.q);
    EXPECT_EQ(r.defined, c.defined) << c.p << " " << c.q;
    if (!c.defined) continue;
    EXPECT_NEAR(r.trs, c.trs, 1e-12) << c.p << " " << c.q;
    EXPECT_NEAR(r.trv, c.trv, 1e-12) << c.p << " " << c.q;
  }
}

TEST(KsKaDialogOpening, FieldsFromTheLastPair) {
  AnalysisRecord rec = coding_record(2, 40);
  KsKaSession session;
  KsKaDialog d;
  open_kska_dialog(d, rec, session, 0);
  EXPECT_TRUE(d.loaded);
  EXPECT_FALSE(rec.form.Form1.visible);
  EXPECT_EQ(d.Text1.text, "0.1235");
  EXPECT_EQ(d.Text2.text, "201");  // Int(0.5 + 201.4)
  EXPECT_EQ(d.Text3.text, "0.0432");
  EXPECT_EQ(d.Text4.text, "699");  // Int(698.6 + 0.5)
  EXPECT_EQ(d.Text5.text, "40");   // CodonCount, then kept
  EXPECT_EQ(session.SimCodons, 40);
  EXPECT_EQ(d.Text6.text, "52.3");  // Int(523.7) x 0.1
  EXPECT_EQ(d.Text7.text, "1000");
  EXPECT_EQ(d.Text8.text, "2.8");
  EXPECT_EQ(d.Text9.text, "1");
  EXPECT_EQ(d.Text10.text, "1");
  EXPECT_EQ(d.Text11.text, "3.2");
  EXPECT_FALSE(d.Check1.value);
  EXPECT_FALSE(d.Check2.value);
  EXPECT_TRUE(d.Text8.enabled);
  EXPECT_TRUE(d.Check3.value);
  EXPECT_TRUE(d.Check4.value);
  EXPECT_FALSE(d.LabelKsJC.visible);
  EXPECT_FALSE(d.LabelKaJC.visible);
  // Two sequences: no combo boxes.
  EXPECT_FALSE(d.Combo1.visible);
  EXPECT_FALSE(d.Combo2.visible);
  EXPECT_TRUE(d.Text3.visible);

  // The last value of the codons is kept for the next opening.
  session.SimCodons = 123;
  open_kska_dialog(d, rec, session, 1);
  EXPECT_EQ(d.Text5.text, "123");
  EXPECT_EQ(d.KaEqualsKsMode, 1);
  EXPECT_FALSE(d.Text3.visible);
  EXPECT_FALSE(d.Label3.visible);
  EXPECT_FALSE(d.LabelKaJC.visible);
}

TEST(KsKaDialogOpening, RulesThatForceRandom) {
  struct Case {
    const char* what;
    bool jukes_cantor_method;
    int ks_method, ka_method;
    double as, ba;
    bool syn_random, nonsyn_random;
  };
  const Case cases[] = {
      {"Kimura, both estimated", false, 2, 2, 0.1, 0.13, false, false},
      {"Jukes and Cantor run", true, 1, 1, 0.1, 0.13, true, true},
      {"Ks fell back", false, 1, 2, 0.1, 0.13, true, false},
      {"Ka fell back", false, 2, 1, 0.1, 0.13, false, true},
      {"P = 0", false, 2, 2, 0, 0.13, true, false},
      {"Q = 0", false, 2, 2, 0.1, 0, false, true},
  };
  for (const Case& c : cases) {
    AnalysisRecord rec = coding_record(2, 10);
    rec.menu.JukesandCantor.checked = c.jukes_cantor_method;
    rec.menu.Kimura2p.checked = !c.jukes_cantor_method;
    rec.results.handed_on.KsMethod = c.ks_method;
    rec.results.handed_on.KaMethod = c.ka_method;
    rec.results.handed_on.As = c.as;
    rec.results.handed_on.Ba = c.ba;
    KsKaSession session;
    KsKaDialog d;
    open_kska_dialog(d, rec, session, 0);
    EXPECT_EQ(d.Check1.value, c.syn_random) << c.what;
    EXPECT_EQ(d.Check2.value, c.nonsyn_random) << c.what;
    if (c.syn_random) {
      EXPECT_EQ(d.Text8.text + ":" + d.Text9.text, "1:1") << c.what;
      EXPECT_FALSE(d.Text8.enabled || d.Text9.enabled) << c.what;
    }
    if (c.nonsyn_random) {
      EXPECT_EQ(d.Text10.text + ":" + d.Text11.text, "1:1") << c.what;
      EXPECT_FALSE(d.Text10.enabled || d.Text11.enabled) << c.what;
    }
    EXPECT_EQ(d.LabelKsJC.visible, c.ks_method == 1) << c.what;
    EXPECT_EQ(d.LabelKaJC.visible, c.ka_method == 1) << c.what;
  }
}

TEST(KsKaDialogOpening, NoCodingEstimateGivesTheResetValues) {
  AnalysisRecord rec = coding_record(2, 10);
  rec.menu.Coding.checked = false;
  rec.menu.Noncoding.checked = true;
  KsKaSession session;
  KsKaDialog d;
  open_kska_dialog(d, rec, session, 0);
  EXPECT_EQ(d.Text1.text, "0.000");
  EXPECT_EQ(d.Text2.text, "");
  EXPECT_EQ(d.Text5.text, "");
  EXPECT_EQ(d.Text7.text, "1000");
  EXPECT_TRUE(d.Check1.value && d.Check2.value && d.Check3.value && d.Check4.value);
}

TEST(KsKaDialogPairs, CombosAndAnotherPair) {
  AnalysisRecord rec = coding_record(3, 10);
  // Pair (1, 3) is comparison 2 of three sequences.
  PairStoreRow& row = rec.results.PairStore[2];
  row = {0, 1, 2, 0.25, 0.0123, 150, 30, 31, 0.333, 0.663, 0.02, 0.13, 180.6, 710.2, 0.41};
  KsKaSession session;
  KsKaDialog d;
  open_kska_dialog(d, rec, session, 0);
  ASSERT_TRUE(d.Combo1.visible && d.Combo2.visible);
  ASSERT_EQ(d.Combo1.items.size(), 3u);
  EXPECT_EQ(d.Combo1.items[0], " Sequence#1: alpha");
  EXPECT_EQ(d.Combo2.items[2], " Sequence#3: gamma");
  EXPECT_EQ(d.Combo1.text, " Sequence#2: beta");  // the last pair
  EXPECT_EQ(d.Combo2.text, " Sequence#3: gamma");

  choose_pair(d, rec, session, 1, 3);
  EXPECT_EQ(session.Seq1Index, 1);
  EXPECT_EQ(session.Seq2Index, 3);
  EXPECT_EQ(d.Combo1.text, " Sequence#1: alpha");
  const CodingHandedOnFields& h = rec.results.handed_on;
  EXPECT_EQ(h.KsMethod, 1);
  EXPECT_EQ(h.Ks, 0.25);
  EXPECT_EQ(h.Ka, 0.0123);
  EXPECT_EQ(h.SES, 180.6);
  EXPECT_FLOAT_EQ(h.NES, 710.2f);
  EXPECT_FLOAT_EQ(h.PairGCContent, 0.41f);
  EXPECT_EQ(d.Text1.text, "0.2500");
  EXPECT_EQ(d.Text2.text, "181");
  EXPECT_EQ(d.Text3.text, "0.0123");
  EXPECT_EQ(d.Text4.text, "710");
  EXPECT_EQ(d.Text6.text, "41");
  EXPECT_TRUE(d.LabelKsJC.visible);
  EXPECT_TRUE(d.Check1.value);  // Kimura run, Ks fell back
  EXPECT_EQ(d.Text11.text, "3.2");

  // The choice stands at the next opening.
  open_kska_dialog(d, rec, session, 0);
  EXPECT_EQ(d.Combo1.text, " Sequence#1: alpha");
  // An equal pair is ignored.
  choose_pair(d, rec, session, 2, 2);
  EXPECT_EQ(session.Seq2Index, 3);
}

TEST(KsKaDialogChecks, RandomOnAndOff) {
  AnalysisRecord rec = coding_record(2, 10);
  KsKaSession session;
  KsKaDialog d;
  open_kska_dialog(d, rec, session, 0);
  set_synonymous_random(d, rec, true);
  EXPECT_EQ(d.Text8.text + ":" + d.Text9.text, "1:1");
  EXPECT_FALSE(d.Text8.enabled);
  set_synonymous_random(d, rec, false);
  EXPECT_EQ(d.Text8.text + ":" + d.Text9.text, "2.8:1");
  EXPECT_TRUE(d.Text8.enabled && d.Text9.enabled);
  set_nonsynonymous_random(d, rec, true);
  EXPECT_EQ(d.Text10.text + ":" + d.Text11.text, "1:1");
  set_nonsynonymous_random(d, rec, false);
  EXPECT_EQ(d.Text10.text + ":" + d.Text11.text, "1:3.2");
  // An undefined ratio leaves the fields as they are, enabled.
  rec.results.handed_on.As = 0;
  set_synonymous_random(d, rec, true);
  set_synonymous_random(d, rec, false);
  EXPECT_EQ(d.Text8.text + ":" + d.Text9.text, "1:1");
  EXPECT_TRUE(d.Text8.enabled);
}

TEST(KsKaDialogCommands, ResetCancelClose) {
  AnalysisRecord rec = coding_record(2, 10);
  KsKaSession session;
  KsKaDialog d;
  open_kska_dialog(d, rec, session, 0);
  d.Check4.value = false;
  d.Text7.text = "77";
  reset_kska_dialog(d);
  EXPECT_EQ(d.Text1.text, "0.000");
  EXPECT_EQ(d.Text2.text, "");
  EXPECT_EQ(d.Text3.text, "0.000");
  EXPECT_EQ(d.Text4.text, "");
  EXPECT_EQ(d.Text5.text, "");
  EXPECT_EQ(d.Text6.text, "");
  EXPECT_EQ(d.Text7.text, "1000");
  for (const Control* t : {&d.Text8, &d.Text9, &d.Text10, &d.Text11}) {
    EXPECT_EQ(t->text, "1");
    EXPECT_FALSE(t->enabled);
  }
  EXPECT_TRUE(d.Check1.value && d.Check2.value && d.Check3.value);
  EXPECT_FALSE(d.Check4.value);  // unchanged

  rec.menu.AnalysisOptions.enabled = false;
  rec.menu.Diver.enabled = false;
  cancel_kska_dialog(d, rec);
  EXPECT_FALSE(d.loaded);
  EXPECT_TRUE(rec.form.Form1.visible);
  EXPECT_TRUE(rec.menu.AnalysisOptions.enabled);
  EXPECT_TRUE(rec.menu.Diver.enabled);

  open_kska_dialog(d, rec, session, 0);
  rec.menu.AnalysisOptions.enabled = false;
  close_kska_dialog(d, rec);
  EXPECT_FALSE(d.loaded);
  EXPECT_TRUE(rec.form.Form1.visible);
  EXPECT_FALSE(rec.menu.AnalysisOptions.enabled);  // the menus stay
}

TEST(KsKaDialogParameters, CommaFieldsAndPlainCounts) {
  KsKaDialog d;
  d.Text1.text = "0,25";
  d.Text2.text = "180,5";
  d.Text5.text = "300,5";
  d.Text7.text = "1000.9";
  d.Text8.text = "2,5";
  const KsKaParameters p = read_kska_parameters(d);
  EXPECT_EQ(p.ks, 0.25);
  EXPECT_EQ(p.ses, 180.5);
  EXPECT_EQ(p.codons, 300);  // plain reading stops at the comma
  EXPECT_EQ(p.replicates, 1000);
  EXPECT_EQ(p.syn_trs, 2.5);
}

// The checks at the start of a run, in their order, with their messages.
class KsKaDialogValidation : public ::testing::Test {
 protected:
  void SetUp() override {
    rec = coding_record(2, 30);
    open_kska_dialog(d, rec, session, 0);
    d.seed = 11;
  }
  AnalysisRecord rec;
  KsKaSession session;
  KsKaDialog d;
  FakePlatform platform;
};

const char* const kOnly200 = "      Only200 replicates ...     \r\n      Are you sure?";

TEST_F(KsKaDialogValidation, FewReplicatesAnsweredNoEndsAsAfterStop) {
  d.Text7.text = "200";
  rec.menu.AnalysisOptions.enabled = false;
  rec.menu.Diver.enabled = false;
  platform.yes_no_answers = {false};
  EXPECT_FALSE(run_kska_simulation(d, rec, session, platform));
  ASSERT_EQ(platform.messages.size(), 1u);
  EXPECT_EQ(platform.messages[0].text, kOnly200);
  EXPECT_TRUE(platform.messages[0].yes_no);
  EXPECT_FALSE(d.loaded);
  EXPECT_TRUE(rec.form.Form1.visible);
  EXPECT_TRUE(rec.menu.AnalysisOptions.enabled);
  EXPECT_TRUE(rec.menu.Diver.enabled);
  EXPECT_EQ(platform.yields, 0);
}

TEST_F(KsKaDialogValidation, FewReplicatesAnsweredYesGoesOnToTheChecks) {
  d.Text7.text = "200";
  d.Text1.text = "0";
  d.Text3.text = "6";
  platform.yes_no_answers = {true};
  EXPECT_FALSE(run_kska_simulation(d, rec, session, platform));
  ASSERT_EQ(platform.messages.size(), 2u);
  EXPECT_EQ(platform.messages[0].text, kOnly200);
  EXPECT_EQ(platform.messages[1].text, "Invalid Divergence Value !");
  EXPECT_EQ(platform.messages[1].title, "  SIMULATION PARAMETERS  ");
  EXPECT_EQ(platform.messages[1].icon, MessageIcon::Exclamation);
  EXPECT_TRUE(d.loaded);  // the dialog stays as it is
  EXPECT_EQ(d.Text7.text, "200");
}

TEST_F(KsKaDialogValidation, TenReplicatesOrFewerAreRefused) {
  d.Text7.text = "10";
  d.Text1.text = "0";  // also invalid, but the replicates are checked first
  d.Text3.text = "0";
  EXPECT_FALSE(run_kska_simulation(d, rec, session, platform));
  ASSERT_EQ(platform.messages.size(), 2u);
  EXPECT_EQ(platform.messages[0].text, "      Only10 replicates ...     \r\n      Are you sure?");
  EXPECT_EQ(platform.messages[1].text, "Invalid Number of Replicates !");
  EXPECT_EQ(platform.messages[1].title, "  SIMULATION PARAMETERS  ");
  EXPECT_EQ(d.Text7.text, "");
}

TEST_F(KsKaDialogValidation, FiveHundredReplicatesAskNothing) {
  d.Text7.text = "500";
  d.Text1.text = "5.5";
  d.Text3.text = "0";
  EXPECT_FALSE(run_kska_simulation(d, rec, session, platform));
  ASSERT_EQ(platform.messages.size(), 1u);
  EXPECT_EQ(platform.messages[0].text, "Invalid Divergence Value !");
}

TEST_F(KsKaDialogValidation, KaTakenFromKsIsCheckedAsKs) {
  // Ka = Ks in the Ka/Ks test: the hidden Ka field is not read.
  open_kska_dialog(d, rec, session, 1);
  d.Text1.text = "0";
  d.Text3.text = "0.2";
  EXPECT_FALSE(run_kska_simulation(d, rec, session, platform));
  ASSERT_EQ(platform.messages.size(), 1u);
  EXPECT_EQ(platform.messages[0].text, "Invalid Divergence Value !");
}

}  // namespace
