// Records as a coding divergence run leaves them, for the tests of the coding
// simulation.
#pragma once

#include <random>
#include <string>
#include <utility>
#include <vector>

#include "state/record.h"
#include "support/alignment_builder.h"

namespace varnoth::testing {

// `sequences` random coding sequences of `codons` codons with no stop codon,
// named "alpha", "beta", "gamma", ... and the values a Kimura run hands on.
inline AnalysisRecord coding_record(int sequences, int codons, unsigned seed = 7) {
  static const char* const kNames[] = {"alpha", "beta", "gamma", "delta", "epsilon"};
  std::mt19937 rng(seed);
  std::vector<std::pair<std::string, std::string>> named;
  for (int s = 0; s < sequences; ++s) {
    std::string letters;
    for (int i = 0; i < codons; ++i) {
      std::string c;
      do {
        c.clear();
        for (int j = 0; j < 3; ++j) c += "ACGT"[rng() % 4];
      } while (c == "TAA" || c == "TAG" || c == "TGA");
      letters += c;
    }
    named.emplace_back(kNames[s % 5], letters);
  }
  AnalysisRecord rec;
  load_alignment(rec, named);
  rec.seq.CodonCount = codons;
  rec.results.CodingResultsReady = 1;
  rec.results.PairStore.assign(static_cast<std::size_t>(rec.seq.PairCount) + 1, PairStoreRow{});
  CodingHandedOnFields& h = rec.results.handed_on;
  h.Ks = 0.12346;
  h.Ka = 0.0432;
  h.KsMethod = 2;
  h.KaMethod = 2;
  h.As = 0.1;
  h.Bs = 0.07;
  h.Aa = 0.02;
  h.Ba = 0.13;
  h.SES = 201.4;
  h.NES = 698.6f;
  h.PairGCContent = 0.5237f;
  return rec;
}

}  // namespace varnoth::testing
