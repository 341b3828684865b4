#include "divergence/genetic_code.h"

namespace varnoth::divergence {
namespace {

enum Amino : std::uint8_t {
  STOP = kStop, PHE, LEU, SER, TYR, CYS, TRP, PRO, HIS, GLN, ARG,
  ILE, MET, THR, ASN, LYS, VAL, ALA, ASP, GLU, GLY, kAminoCount
};

constexpr std::string_view kAminoNames[kAminoCount] = {
    "STOP", "PHE", "LEU", "SER", "TYR", "CYS", "TRP", "PRO", "HIS", "GLN", "ARG",
    "ILE", "MET", "THR", "ASN", "LYS", "VAL", "ALA", "ASP", "GLU", "GLY"};

// A class mixture of one position, in decimal (0.3333 and 0.6666 are the held
// values, not thirds).
struct Mix {
  double f[kClassCount];
};

constexpr Mix kNone{{0, 0, 0, 0}};
constexpr Mix k0{{1, 0, 0, 0}};
constexpr Mix k2S{{0, 1, 0, 0}};
constexpr Mix k2V{{0, 0, 1, 0}};
constexpr Mix k4{{0, 0, 0, 1}};
constexpr Mix kHalf0Half2V{{0.5, 0, 0.5, 0}};         // CGA position 1
constexpr Mix kTwoThirds0Third2V{{0.6666, 0, 0.3333, 0}};  // CGG, AGG position 1
constexpr Mix kThirds0_2S_2V{{0.3333, 0.3333, 0.3333, 0}};  // ATT, ATC position 3

// Universal code: amino acid, position 1 and 3 classes of the fraction table,
// and position 3 of the site-count table where it differs.
struct UniversalRow {
  const char* codon;
  Amino aa;
  Mix pos1;
  Mix pos3;
  bool count3_four_fold = false;  // site counts take position 3 as 4-fold
};

constexpr UniversalRow kUniversal[kCodons] = {
    {"TTT", PHE, k0, k2S}, {"TTC", PHE, k0, k2S}, {"TTA", LEU, k2S, k2S}, {"TTG", LEU, k2S, k2S},
    {"TCT", SER, k0, k4}, {"TCC", SER, k0, k4}, {"TCA", SER, k0, k4}, {"TCG", SER, k0, k4},
    // Deliberate: the site counts of TAT and TAC take position 3 as 4-fold.
    {"TAT", TYR, k0, k2S, true}, {"TAC", TYR, k0, k2S, true},
    {"TAA", STOP, kNone, kNone}, {"TAG", STOP, kNone, kNone},
    {"TGT", CYS, k0, k2S}, {"TGC", CYS, k0, k2S}, {"TGA", STOP, kNone, kNone}, {"TGG", TRP, k0, k0},
    {"CTT", LEU, k0, k4}, {"CTC", LEU, k0, k4}, {"CTA", LEU, k2S, k4}, {"CTG", LEU, k2S, k4},
    {"CCT", PRO, k0, k4}, {"CCC", PRO, k0, k4}, {"CCA", PRO, k0, k4}, {"CCG", PRO, k0, k4},
    {"CAT", HIS, k0, k2S}, {"CAC", HIS, k0, k2S}, {"CAA", GLN, k0, k2S}, {"CAG", GLN, k0, k2S},
    {"CGT", ARG, k0, k4}, {"CGC", ARG, k0, k4},
    {"CGA", ARG, kHalf0Half2V, k4}, {"CGG", ARG, kTwoThirds0Third2V, k4},
    {"ATT", ILE, k0, kThirds0_2S_2V}, {"ATC", ILE, k0, kThirds0_2S_2V},
    {"ATA", ILE, k0, k2V}, {"ATG", MET, k0, k0},
    {"ACT", THR, k0, k4}, {"ACC", THR, k0, k4}, {"ACA", THR, k0, k4}, {"ACG", THR, k0, k4},
    {"AAT", ASN, k0, k2S}, {"AAC", ASN, k0, k2S}, {"AAA", LYS, k0, k2S}, {"AAG", LYS, k0, k2S},
    {"AGT", SER, k0, k2S}, {"AGC", SER, k0, k2S},
    {"AGA", ARG, k2V, k2S}, {"AGG", ARG, kTwoThirds0Third2V, k2S},
    {"GTT", VAL, k0, k4}, {"GTC", VAL, k0, k4}, {"GTA", VAL, k0, k4}, {"GTG", VAL, k0, k4},
    {"GCT", ALA, k0, k4}, {"GCC", ALA, k0, k4}, {"GCA", ALA, k0, k4}, {"GCG", ALA, k0, k4},
    {"GAT", ASP, k0, k2S}, {"GAC", ASP, k0, k2S}, {"GAA", GLU, k0, k2S}, {"GAG", GLU, k0, k2S},
    {"GGT", GLY, k0, k4}, {"GGC", GLY, k0, k4}, {"GGA", GLY, k0, k4}, {"GGG", GLY, k0, k4},
};

// Class bits of a mitochondrial change to the fraction table.
constexpr unsigned b0 = 1u << kClass0Fold, b2S = 1u << kClass2SFold, b2V = 1u << kClass2VFold,
                   b4 = 1u << kClass4Fold;

// A mitochondrial change: the new amino acid, the fractions written to 1 at
// positions 1 and 3 (over the Universal row, without clearing), and the class
// of position 3 in the replacing site-count row (positions 1 and 2 0-fold);
// no count row for a stop codon.
struct MitoRow {
  const char* codon;
  Amino aa;
  unsigned pos1_ones;
  unsigned pos3_ones;
  int count3_class;
};

constexpr MitoRow kMitoShared[] = {
    {"TGA", TRP, b0, b2S, kClass2SFold},
    {"ATA", MET, b0, b2S | b2V, kClass2SFold},
    {"TGG", TRP, b0, b0 | b2S, kClass2SFold},
    {"ATG", MET, b0, b0 | b2S, kClass2SFold},
    {"CGA", ARG, b0, b4, kClass4Fold},
    {"CGG", ARG, b0, b4, kClass4Fold},
    {"AGC", SER, b0, b2S | b4, kClass4Fold},
    {"AGT", SER, b0, b2S | b4, kClass4Fold},
};
constexpr MitoRow kVermitoOwn[] = {
    {"AGA", STOP, 0, 0, -1},
    {"AGG", STOP, 0, 0, -1},
};
constexpr MitoRow kDromitoOwn[] = {
    {"AGA", SER, b0 | b2V, b2S | b4, kClass4Fold},
    {"AGG", SER, b0, b2S | b4, kClass4Fold},
};

constexpr int text_index(const char* t) {
  return 16 * nucleotide_index(t[0]) + 4 * nucleotide_index(t[1]) + nucleotide_index(t[2]);
}

// A site-count row from the class mixtures of the three positions: each
// position's share goes to the total and to the group of its letter. Summed in
// double so that the held values are the decimal sums (2.3333, 1.6666).
constexpr SiteCountRow count_row(int codon, const Mix (&pos)[3]) {
  double sums[kGroupCount][kClassCount] = {};
  for (int p = 0; p < 3; ++p) {
    const int g = group_of_nucleotide(nucleotide_at(codon, p));
    for (int c = 0; c < kClassCount; ++c) {
      sums[kGroupTotal][c] += pos[p].f[c];
      sums[g][c] += pos[p].f[c];
    }
  }
  SiteCountRow row{};
  for (int g = 0; g < kGroupCount; ++g)
    for (int c = 0; c < kClassCount; ++c) row[g][c] = static_cast<float>(sums[g][c]);
  return row;
}

constexpr PositionFractions to_fractions(const Mix& m) {
  PositionFractions f{};
  for (int c = 0; c < kClassCount; ++c) f[c] = static_cast<float>(m.f[c]);
  return f;
}

constexpr void apply_mito(CodeTables& t, const MitoRow& m) {
  const int i = text_index(m.codon);
  t.amino_acid[i] = m.aa;
  for (int c = 0; c < kClassCount; ++c) {
    if (m.pos1_ones & (1u << c)) t.fractions[i][0][c] = 1.0f;
    if (m.pos3_ones & (1u << c)) t.fractions[i][2][c] = 1.0f;
  }
  if (m.count3_class < 0) {
    t.counts.rows[i] = SiteCountRow{};
    t.counts.has_row[i] = false;
  } else {
    Mix pos3 = kNone;
    pos3.f[m.count3_class] = 1;
    const Mix pos[3] = {k0, k0, pos3};
    t.counts.rows[i] = count_row(i, pos);
    t.counts.has_row[i] = true;
  }
}

constexpr CodeTables build(GeneticCode code) {
  CodeTables t{};
  for (const UniversalRow& r : kUniversal) {
    const int i = text_index(r.codon);
    t.amino_acid[i] = r.aa;
    t.fractions[i][0] = to_fractions(r.pos1);
    t.fractions[i][1] = to_fractions(k0);  // position 2 is always 0-fold
    t.fractions[i][2] = to_fractions(r.pos3);
    if (r.aa != STOP) {
      const Mix pos[3] = {r.pos1, k0, r.count3_four_fold ? k4 : r.pos3};
      t.counts.rows[i] = count_row(i, pos);
      t.counts.has_row[i] = true;
    }
  }
  const char* stops[4] = {"TAA", "TAG", "TGA", "TGA"};
  if (code != GeneticCode::Universal) {
    for (const MitoRow& m : kMitoShared) apply_mito(t, m);
    // Deliberate: under these codes the row of TGA clears a stop mark.
    t.counts.clears_stop_mark[text_index("TGA")] = true;
    if (code == GeneticCode::Vermito) {
      for (const MitoRow& m : kVermitoOwn) apply_mito(t, m);
      stops[2] = "AGA";
      stops[3] = "AGG";
    } else {
      for (const MitoRow& m : kDromitoOwn) apply_mito(t, m);
      stops[2] = "TAA";  // deliberate repeats: the list always has four rows
      stops[3] = "TAA";
    }
  }
  for (int r = 0; r < 4; ++r) {
    t.stop_list[r] = CodonCell{stops[r][0], stops[r][1], stops[r][2]};
    t.in_stop_list[text_index(stops[r])] = true;
  }
  for (int i = 0; i < kCodons; ++i) t.translates_to_stop[i] = t.amino_acid[i] == STOP;
  return t;
}

constexpr CodeTables kUniversalTables = build(GeneticCode::Universal);
constexpr CodeTables kVermitoTables = build(GeneticCode::Vermito);
constexpr CodeTables kDromitoTables = build(GeneticCode::Dromito);

}  // namespace

int encode_codon(const CodonCell& cell) {
  const int a = nucleotide_index(cell[0]), b = nucleotide_index(cell[1]),
            c = nucleotide_index(cell[2]);
  if (a < 0 || b < 0 || c < 0) return -1;
  return 16 * a + 4 * b + c;
}

int encode_codon(std::string_view text) {
  if (text.size() != 3) return -1;
  return encode_codon(CodonCell{text[0], text[1], text[2]});
}

CodonCell decode_codon(int codon) {
  return CodonCell{nucleotide_letter(nucleotide_at(codon, 0)),
                   nucleotide_letter(nucleotide_at(codon, 1)),
                   nucleotide_letter(nucleotide_at(codon, 2))};
}

const CodeTables& code_tables(GeneticCode code) {
  switch (code) {
    case GeneticCode::Vermito: return kVermitoTables;
    case GeneticCode::Dromito: return kDromitoTables;
    case GeneticCode::Universal: break;
  }
  return kUniversalTables;
}

std::string_view amino_acid_name(std::uint8_t id) {
  return id < kAminoCount ? kAminoNames[id] : std::string_view{};
}

std::string_view amino_acid_text(GeneticCode code, int codon) {
  return amino_acid_name(code_tables(code).amino_acid[codon & 63]);
}

std::array<std::string_view, 4> stop_list_texts(GeneticCode code) {
  const auto& list = code_tables(code).stop_list;
  std::array<std::string_view, 4> out;
  for (int r = 0; r < 4; ++r) out[r] = std::string_view(list[r].data(), 3);
  return out;
}

}  // namespace varnoth::divergence
