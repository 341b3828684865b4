#include "state/options.h"

#include "state/summary.h"
#include "text/number_reading.h"

namespace varnoth {

namespace {

constexpr const char* kNoSequence = " No Sequence Information... ";

// What every option handler but `All` does first: the working panes come up.
void prologue(AnalysisRecord& rec) {
  Form& f = rec.form;
  f.Picture1.visible = false;
  f.SSTab2.visible = false;
  f.Label1.visible = false;
  f.Label2.visible = false;
  f.Text2.visible = true;
  f.SSTab1.visible = true;
  f.SSTab1Page = 0;
  f.SSTab3.visible = false;
  if (rec.seq.SeqLength == 0) f.Text1.text = kNoSequence;
}

void disable_coding_intervals(Menu& m) {
  m.CIcodingRegion.enabled = false;
  m.CIcodingRegionKaKs.enabled = false;
}

bool any_method_checked(const Menu& m) {
  for (auto method : kMethods)
    if ((m.*method).checked) return true;
  return false;
}

}  // namespace

void start_up(AnalysisRecord& rec) {
  rec.options.PathwayWeight = 0.5f;
  rec.menu.Unweighted.checked = true;
  rec.menu.Weighted.checked = false;
}

void show_empty_panes(AnalysisRecord& rec, SummaryTail tail) {
  Form& f = rec.form;
  f.Picture1.visible = false;
  f.SSTab2.visible = false;
  f.Label1.visible = false;
  f.Label2.visible = false;
  f.SSTab1.visible = true;
  f.Text1.visible = true;
  f.Text1.text = kNoSequence;
  f.Text2.visible = true;
  f.SSTab1Page = 1;
  rebuild_summary(rec, tail);
}

void title_page_click(AnalysisRecord& rec) {
  rec.menu.Confidence_Intervals_menu.enabled = true;
  show_empty_panes(rec, SummaryTail::WindowText);
}

void click_coding(AnalysisRecord& rec) {
  prologue(rec);
  Menu& m = rec.menu;
  if (m.Noncoding.checked) {
    disable_coding_intervals(m);
    m.Noncoding.checked = false;
    m.Coding.checked = true;
    m.Code.enabled = true;
    m.ComparRestrictions.enabled = true;
    m.weights.enabled = true;
    rec.options.PathwayWeight = 0.5f;
    m.Unweighted.checked = true;
    m.Weighted.checked = false;
  }
  m.JukesandCantor.enabled = false;
  m.Kimura2p.enabled = true;
  for (auto method : kMethods) {
    if (method == &Menu::Kimura2p || !(m.*method).checked) continue;
    (m.*method).checked = false;
    m.Kimura2p.checked = true;
  }
  m.TajimaandNei.enabled = false;
  m.Tajima1p.enabled = false;
  m.Tajima2p.enabled = false;
  m.Tajima4p.enabled = false;
  m.All.visible = false;
  rebuild_summary(rec);
}

void click_noncoding(AnalysisRecord& rec) {
  prologue(rec);
  Menu& m = rec.menu;
  m.RelatRate.enabled = false;
  if (m.Coding.checked) {
    disable_coding_intervals(m);
    m.Coding.checked = false;
    m.Noncoding.checked = true;
    m.Code.enabled = false;
    m.ComparRestrictions.enabled = false;
    m.weights.enabled = false;
    for (auto method : kMethods) (m.*method).enabled = true;
    m.All.caption = "Select all..";  // small "a", unlike the design caption
    m.All.visible = true;
    rec.last_noncoding = LastNoncodingEstimate{};
  }
  rebuild_summary(rec);
}

void click_method(AnalysisRecord& rec, MenuItem Menu::*method) {
  prologue(rec);
  Menu& m = rec.menu;
  MenuItem& item = m.*method;
  if (m.Noncoding.checked) {
    item.checked = !item.checked;
  } else {
    item.checked = true;
    m.Method.enabled = true;
    for (auto other : kMethods)
      if (other != method) (m.*other).checked = false;
  }
  // The last method cannot be turned off: Kimura-2p is the fallback.
  if (!any_method_checked(m)) m.Kimura2p.checked = true;
  rebuild_summary(rec);
}

void click_all_methods(AnalysisRecord& rec) {
  Menu& m = rec.menu;
  if (m.All.caption == "Reset..") {
    m.All.caption = "Select All..";
    for (auto method : kMethods) (m.*method).checked = false;
    m.Kimura2p.checked = true;
  } else {
    m.All.caption = "Reset..";
    for (auto method : kMethods) (m.*method).checked = true;
  }
  rebuild_summary(rec);
}

void click_code(AnalysisRecord& rec, MenuItem Menu::*code) {
  prologue(rec);
  Menu& m = rec.menu;
  for (auto other : {&Menu::universal, &Menu::Vermito, &Menu::Dromito}) {
    if (other == code || !(m.*other).checked) continue;
    (m.*other).checked = false;
    (m.*code).checked = true;
  }
  rebuild_summary(rec);
}

void click_restriction(AnalysisRecord& rec, Restriction restriction) {
  prologue(rec);
  Menu& m = rec.menu;
  OptionFields& o = rec.options;
  m.Max_One_Change.checked = false;
  m.No_3_diff.checked = false;
  m.Always_aa_change.checked = false;
  int* flag = restriction == Restriction::MaxOneChange ? &o.MaxOneChangeFlag
              : restriction == Restriction::No3Diff    ? &o.No3DiffFlag
                                                       : &o.OnlyAaChangeFlag;
  if (*flag == 1) {
    o.MaxOneChangeFlag = o.No3DiffFlag = o.OnlyAaChangeFlag = 0;
  } else {
    o.MaxOneChangeFlag = o.No3DiffFlag = o.OnlyAaChangeFlag = 0;
    *flag = 1;
    MenuItem& item = restriction == Restriction::MaxOneChange ? m.Max_One_Change
                     : restriction == Restriction::No3Diff    ? m.No_3_diff
                                                              : m.Always_aa_change;
    item.checked = true;
  }
  rebuild_summary(rec);
}

void click_no_restrictions(AnalysisRecord& rec) {
  prologue(rec);
  Menu& m = rec.menu;
  m.Max_One_Change.checked = false;
  m.No_3_diff.checked = false;
  m.Always_aa_change.checked = false;
  rec.options.MaxOneChangeFlag = rec.options.No3DiffFlag = rec.options.OnlyAaChangeFlag = 0;
  rebuild_summary(rec);
}

void click_unweighted(AnalysisRecord& rec) {
  prologue(rec);
  Menu& m = rec.menu;
  rec.options.PathwayWeight = 0.5f;
  if (m.Weighted.checked) disable_coding_intervals(m);
  m.Unweighted.checked = true;
  m.Weighted.checked = false;
  rebuild_summary(rec);
}

void click_weighted(AnalysisRecord& rec) {
  prologue(rec);
  rec.form.SSTab5.visible = true;
  rec.form.Label11.text = "Multiple-Pathways Weight";
  rec.options.PathwayWeightPrevious = rec.options.PathwayWeight;
  rebuild_summary(rec);
}

void accept_weight(AnalysisRecord& rec, Platform& platform) {
  prologue(rec);
  Menu& m = rec.menu;
  OptionFields& o = rec.options;
  rec.form.SSTab5.visible = false;
  o.PathwayWeight = static_cast<float>(text::read_field(rec.form.Text4.text));
  if (o.PathwayWeight < 0 || o.PathwayWeight > 1) {
    o.PathwayWeight = o.PathwayWeightPrevious;
    platform.message("Invalid weight (0<=Prob<=1)!", "  MULTIPLE-PATHWAYS ",
                     MessageIcon::Exclamation);
    return;
  }
  if (m.Unweighted.checked && o.PathwayWeight != 0.5f) disable_coding_intervals(m);
  const bool unweighted = o.PathwayWeight == 0.5f;
  m.Unweighted.checked = unweighted;
  m.Weighted.checked = !unweighted;
  update_region_text(rec);
  rebuild_summary(rec, SummaryTail::RegionText);
}

void cancel_weight(AnalysisRecord& rec) { rec.form.SSTab5.visible = false; }

}  // namespace varnoth
