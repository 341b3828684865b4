// The analysis record: the one set of named fields that holds the state of a
// working session. Procedures read and leave its fields; sub-records group the
// fields of each subsystem so that each can be read on its own.
//
// Arrays are held 0-based: the record's "sequence i" is index i - 1.
#pragma once

#include <array>
#include <string>
#include <vector>

#include "state/menu.h"

namespace varnoth {

// A codon cell: exactly three characters, compared as text.
using CodonCell = std::array<char, 3>;

enum class GeneticCode { Universal, Vermito, Dromito };

// The loaded alignment, as the readers and the common clean-up leave it.
struct SequenceData {
  std::string InputFileName;    // path's part behind its last separator
  std::string InputFormatName;  // format label
  int SequenceLoaded = 0;
  double SeqCount = 0;      // may be fractional for LWL files
  double SeqCountCopy = 0;  // true number of sequences, kept at load
  double SeqLength = 0;     // nucleotide positions; 0 = nothing loaded
  double PairCount = 0;
  std::vector<std::string> SeqNames;                // [sequence]
  std::vector<std::vector<CodonCell>> SeqCodons;    // [sequence][cell], as read
  float CodonCellCount = 0;                         // cells per sequence
  std::vector<std::vector<CodonCell>> CleanCodons;  // [sequence][codon], upper case
  std::vector<std::string> CleanSites;              // [sequence], one char a site
  long CodonCount = 0;
  long CleanCodonTotal = 0;
  long NucleotideCount = 0;
};

// Analysis options that are fields of the record (the rest are menu checks).
struct OptionFields {
  int MaxOneChangeFlag = 0;
  int No3DiffFlag = 0;
  int OnlyAaChangeFlag = 0;
  float PathwayWeight = 0.5f;
  float PathwayWeightPrevious = 0.5f;
};

// Region and sliding-window state.
struct RegionFields {
  std::string RegionFirst;  // text: empty until first needed
  std::string RegionLast;
  std::string RegionText;
  std::string CodingWindowText;
  std::string NoncodingWindowText;
  int RegionMode = 0;
  int WindowMode = 0;
  double WindowSize = 0;
  double WindowStep = 0;
  double WindowIndex = 0;
};

// The last noncoding estimate: counts and the six K of the last comparison, read
// by the confidence intervals; zeroed when the analysis switches to noncoding.
struct LastNoncodingEstimate {
  double CountA1 = 0, CountG1 = 0, CountC1 = 0, CountT1 = 0;
  double CountA2 = 0, CountG2 = 0, CountC2 = 0, CountT2 = 0;
  double KJukesCantor = 0, KKimura = 0, KimuraA = 0, KimuraB = 0, KTajimaNei = 0,
         KTajima1p = 0;
  float KTajima2p = 0;
  double KTajima4p = 0;
};

// A cell of ComparisonStore: a value, or " N.A. " where the estimate is not
// applicable. Noncoding cells hold the value as printed with "0.0000".
struct StoreCell {
  double value = 0;
  bool not_applicable = false;
};
using ComparisonRow = std::array<StoreCell, 10>;  // columns 0..9, 1..9 used

// PairStore columns 1..14 of one comparison (column 0 unused).
using PairStoreRow = std::array<double, 15>;

// The values a coding comparison hands to the simulations.
struct CodingHandedOnFields {
  double Ks = 0, Ka = 0;
  int KsMethod = 1, KaMethod = 1;  // 1 Jukes and Cantor, 2 Kimura
  double As = 0, Bs = 0, Aa = 0, Ba = 0;
  double SES = 0;
  float NES = 0;
  float PairGCContent = 0;
};

// What a divergence run leaves behind.
struct RunResults {
  std::string ReportText;
  std::string WindowDataText;
  std::string LastPairLine;
  std::vector<ComparisonRow> ComparisonStore;  // rows 1..PairCount (row 0 unused)
  // Coding runs: one row per comparison, in comparison order (row 0 unused);
  // pair (a, b) is comparison (a - 1)(2n - a)/2 + (b - a).
  std::vector<PairStoreRow> PairStore;
  CodingHandedOnFields handed_on;
  int MethodNumber = 2;  // 1 JC, 2 Kimura, 3 Tajima-Nei, 4 T-1p, 5 T-2p, 6 T-4p
  int CodingMode = 1;
  int StopCodonFlag = 0;
  int NoncodingResultsReady = 0;
  int CodingResultsReady = 0;
};

struct AnalysisRecord {
  Menu menu;
  Form form;
  OptionFields options;
  SequenceData seq;
  RegionFields region;
  LastNoncodingEstimate last_noncoding;
  RunResults results;
  RegionDialog region_dialog;
  std::string ReportBuffer;

  GeneticCode active_code() const {
    if (menu.Vermito.checked) return GeneticCode::Vermito;
    if (menu.Dromito.checked) return GeneticCode::Dromito;
    return GeneticCode::Universal;
  }
  bool coding() const { return menu.Coding.checked; }
};

}  // namespace varnoth
