// Genetic codes and their codon tables: translation, the stop list, and the
// degeneracy classes of each codon position.
//
// Codons are small integers: index = 16 * b1 + 4 * b2 + b3 with A = 0, C = 1,
// G = 2, T = 3. Every table is fixed data built at compile time; nothing is
// derived from the amino-acid assignment at run time.
#pragma once

#include <array>
#include <cstdint>
#include <string_view>

#include "state/record.h"

namespace varnoth::divergence {

using Codon = std::uint8_t;  // 0..63

inline constexpr int kCodons = 64;

// Nucleotide indices.
inline constexpr int kA = 0, kC = 1, kG = 2, kT = 3;

// Degeneracy classes, in report order.
inline constexpr int kClass0Fold = 0, kClass2SFold = 1, kClass2VFold = 2, kClass4Fold = 3;
inline constexpr int kClassCount = 4;

// Groups of a site-count row: all sites, then split by the letter at the site.
inline constexpr int kGroupTotal = 0, kGroupA = 1, kGroupG = 2, kGroupC = 3, kGroupT = 4;
inline constexpr int kGroupCount = 5;

// Index of a letter (upper case A, C, G, T), or -1.
constexpr int nucleotide_index(char c) {
  switch (c) {
    case 'A': return kA;
    case 'C': return kC;
    case 'G': return kG;
    case 'T': return kT;
    default: return -1;
  }
}

constexpr char nucleotide_letter(int n) { return "ACGT"[n & 3]; }

// Letter index at position p (0, 1, 2) of a codon.
constexpr int nucleotide_at(int codon, int p) { return (codon >> (2 * (2 - p))) & 3; }

// Site-count group of a nucleotide index (A, G, C, T order of the groups).
constexpr int group_of_nucleotide(int n) {
  constexpr int groups[4] = {kGroupA, kGroupC, kGroupG, kGroupT};
  return groups[n & 3];
}

// Codon index of a cell or text over A, C, G, T (upper case); -1 otherwise.
int encode_codon(const CodonCell& cell);
int encode_codon(std::string_view text);
CodonCell decode_codon(int codon);

// Fractions of each class at positions 1..3 (index 0..2) of a codon.
using PositionFractions = std::array<float, kClassCount>;
using CodonFractions = std::array<PositionFractions, 3>;

// Site-count row: [group][class].
using SiteCountRow = std::array<std::array<float, kClassCount>, kGroupCount>;

// The site-count table of a code. A codon without a row (a stop codon) repeats
// the row of the previous look-up and marks a stop.
struct SiteCountTable {
  std::array<SiteCountRow, kCodons> rows{};
  std::array<bool, kCodons> has_row{};
  // The row clears a stop mark left by the other codon of the pair (deliberate:
  // the row of "TGA" under the mitochondrial codes does this).
  std::array<bool, kCodons> clears_stop_mark{};
};

// Amino-acid identifiers; kStop is "STOP".
inline constexpr std::uint8_t kStop = 0;

struct CodeTables {
  std::array<std::uint8_t, kCodons> amino_acid{};
  std::array<bool, kCodons> translates_to_stop{};
  std::array<bool, kCodons> in_stop_list{};   // membership of the four-row stop list
  std::array<CodonCell, 4> stop_list{};        // rows 1..4 as held, repeats included
  std::array<CodonFractions, kCodons> fractions{};
  SiteCountTable counts{};
};

// The tables of a code (static data, valid for the life of the program).
const CodeTables& code_tables(GeneticCode code);

// The three-letter text of an amino-acid identifier ("PHE", ..., "STOP").
std::string_view amino_acid_name(std::uint8_t id);

// Translation of a codon as text ("PHE", "STOP", ...).
std::string_view amino_acid_text(GeneticCode code, int codon);

// The four rows of the stop list of a code, as texts.
std::array<std::string_view, 4> stop_list_texts(GeneticCode code);

}  // namespace varnoth::divergence
