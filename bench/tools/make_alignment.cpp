// Writes a random alignment for the speed comparisons, the same sequences as a
// sequential PHYLIP file (read by varnoth) and a FASTA file (read by R).
//
//   make_alignment SEQUENCES LENGTH RATE SEED OUT.phy OUT.fasta
//
// LENGTH is in nucleotides (a multiple of 3). Every sequence is an ancestor
// with each nucleotide changed with probability RATE, and a few clades share
// changes of their own, so pairs differ by about 2 x RATE of their sites, as
// close sequences of real alignments do. No codon is a stop codon of any of
// the three genetic codes (TAA, TAG, TGA, AGA, AGG), so the same files serve
// coding and noncoding runs under every code.
#include <cstdio>
#include <cstdlib>
#include <random>
#include <string>
#include <vector>

namespace {

bool stop_anywhere(const char* c) {
  const std::string s(c, 3);
  return s == "TAA" || s == "TAG" || s == "TGA" || s == "AGA" || s == "AGG";
}

// Changes each nucleotide of `seq` with probability `rate`, keeping every
// codon free of stops.
void mutate(std::string& seq, double rate, std::mt19937_64& rng) {
  std::uniform_real_distribution<double> u(0, 1);
  static const char kLetters[] = "ACGT";
  for (std::size_t i = 0; i < seq.size(); ++i) {
    if (u(rng) >= rate) continue;
    const char old = seq[i];
    for (int attempt = 0; attempt < 8; ++attempt) {
      const char next = kLetters[rng() % 4];
      if (next == old) continue;
      seq[i] = next;
      if (!stop_anywhere(seq.data() + (i - i % 3))) break;
      seq[i] = old;
    }
  }
}

}  // namespace

int main(int argc, char** argv) {
  if (argc != 7) {
    std::fprintf(stderr, "usage: make_alignment SEQUENCES LENGTH RATE SEED OUT.phy OUT.fasta\n");
    return 2;
  }
  const long sequences = std::atol(argv[1]);
  const long length = std::atol(argv[2]) / 3 * 3;
  const double rate = std::atof(argv[3]);
  std::mt19937_64 rng(std::strtoull(argv[4], nullptr, 10));
  if (sequences < 2 || length < 3) return 2;

  std::string ancestor(static_cast<std::size_t>(length), 'A');
  static const char kLetters[] = "ACGT";
  for (long c = 0; c < length; c += 3) {
    do {
      for (int p = 0; p < 3; ++p) ancestor[static_cast<std::size_t>(c + p)] = kLetters[rng() % 4];
    } while (stop_anywhere(ancestor.data() + c));
  }
  // Eight clades, each with changes of its own; a sequence adds its own.
  std::vector<std::string> clades(8, ancestor);
  for (auto& clade : clades) mutate(clade, rate, rng);

  std::FILE* phy = std::fopen(argv[5], "wb");
  std::FILE* fasta = std::fopen(argv[6], "wb");
  if (!phy || !fasta) return 1;
  std::fprintf(phy, "%ld %ld\n", sequences, length);
  for (long s = 0; s < sequences; ++s) {
    std::string seq = clades[static_cast<std::size_t>(s % 8)];
    mutate(seq, rate / 2, rng);
    char name[32];
    std::snprintf(name, sizeof name, "S%05ld", s + 1);
    std::fprintf(phy, "%-10s%s\n", name, seq.c_str());
    std::fprintf(fasta, ">%s\n%s\n", name, seq.c_str());
  }
  return std::fclose(phy) == 0 && std::fclose(fasta) == 0 ? 0 : 1;
}
