// The analysis options: start-up, the click handlers of the option menu and the
// weight page. Each handler keeps the menu consistent and rewrites the summary.
#pragma once

#include "state/platform.h"
#include "state/record.h"
#include "state/summary.h"

namespace varnoth {

enum class Restriction { MaxOneChange, No3Diff, OnlyAaChange };

void start_up(AnalysisRecord& rec);

// The working panes as they stand with nothing loaded: the title page gone,
// " No Sequence Information... " in Text1, the summary on page 1.
void show_empty_panes(AnalysisRecord& rec, SummaryTail tail);

// A click on the title page (any of its four controls).
void title_page_click(AnalysisRecord& rec);

void click_coding(AnalysisRecord& rec);
void click_noncoding(AnalysisRecord& rec);
// One of JukesandCantor, Kimura2p, TajimaandNei, Tajima1p, Tajima2p, Tajima4p.
void click_method(AnalysisRecord& rec, MenuItem Menu::*method);
void click_all_methods(AnalysisRecord& rec);
// One of universal, Vermito, Dromito.
void click_code(AnalysisRecord& rec, MenuItem Menu::*code);
void click_restriction(AnalysisRecord& rec, Restriction restriction);
void click_no_restrictions(AnalysisRecord& rec);
void click_unweighted(AnalysisRecord& rec);
void click_weighted(AnalysisRecord& rec);
// The weight page: Command1 "Accept" reads Text4; Command3 "Cancel".
void accept_weight(AnalysisRecord& rec, Platform& platform);
void cancel_weight(AnalysisRecord& rec);

// The six methods in their fixed order, for loops over them.
inline constexpr MenuItem Menu::*kMethods[6] = {&Menu::JukesandCantor, &Menu::Kimura2p,
                                                 &Menu::TajimaandNei,   &Menu::Tajima1p,
                                                 &Menu::Tajima2p,       &Menu::Tajima4p};

}  // namespace varnoth
