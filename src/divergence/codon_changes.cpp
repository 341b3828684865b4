#include "divergence/codon_changes.h"

#include <algorithm>

namespace varnoth::divergence {
namespace {

// Bits of the codon index that hold positions 1, 2, 3.
constexpr int kPosBits[3] = {0b110000, 0b001100, 0b000011};

// The codon that takes the letters of b where mask is set, of a elsewhere.
inline int mix(int a, int b, int mask) { return (a & ~mask) | (b & mask); }

inline bool third_is_gc(int codon) {
  const int n = codon & 3;
  return n == kC || n == kG;
}

enum class Outcome { Ok, Stop, NoPathway };

class PairWalk {
 public:
  PairWalk(const CodeTables& tables, double syn_weight, double nonsyn_weight, float* syn,
           float* nonsyn)
      : t_(tables), syn_weight_(syn_weight), nonsyn_weight_(nonsyn_weight), syn_(syn),
        nonsyn_(nonsyn) {}

  Outcome compare(long i, int a, int b) {
    const int diff = a ^ b;
    const bool d1 = diff & kPosBits[0], d2 = diff & kPosBits[1], d3 = diff & kPosBits[2];
    base_ = 3 * i;
    a_ = a;
    b_ = b;
    const int count = d1 + d2 + d3;
    if (count == 1) return single(d1 ? 0 : d2 ? 1 : 2);
    if (count == 3) {
      for (int p = 0; p < 3; ++p)
        if (Outcome o = three_differences(p); o != Outcome::Ok) return o;
      return Outcome::Ok;
    }
    if (d1 && d2) {  // code 110
      nonsyn_[base_ + 1] = 1.0f;
      return two_differences(0, a, mix(a, b, kPosBits[0]), b, mix(a, b, kPosBits[1]));
    }
    if (d2) {  // code 11
      nonsyn_[base_ + 1] = 1.0f;
      return two_differences(2, b, mix(a, b, kPosBits[1]), a, mix(a, b, kPosBits[2]));
    }
    // code 101
    if (Outcome o = two_differences(0, a, mix(a, b, kPosBits[0]), b, mix(a, b, kPosBits[2]));
        o != Outcome::Ok)
      return o;
    return two_differences(2, a, mix(a, b, kPosBits[2]), b, mix(a, b, kPosBits[0]));
  }

 private:
  bool in_stop_list(int c) const { return t_.in_stop_list[c]; }

  // Translates x then y; adds the multiplicity to s when they agree, else to n.
  // False when either is a stop codon.
  bool evaluate(int x, int y, int multiplicity, double& s, double& n) const {
    const auto ax = t_.amino_acid[x];
    if (ax == kStop) return false;
    const auto ay = t_.amino_acid[y];
    if (ay == kStop) return false;
    (ax == ay ? s : n) += multiplicity;
    return true;
  }

  Outcome single(int p) {
    const auto aa = t_.amino_acid[a_];
    const auto ab = t_.amino_acid[b_];
    if (aa == kStop || ab == kStop) return Outcome::Stop;
    (aa == ab ? syn_ : nonsyn_)[base_ + p] = 1.0f;
    return Outcome::Ok;
  }

  // Two steps of multiplicity 1, each screened on its second codon.
  Outcome two_differences(int p, int x1, int y1, int x2, int y2) {
    double s = 0, n = 0;
    int k = 2;
    if (in_stop_list(y1)) --k;
    else if (!evaluate(x1, y1, 1, s, n)) return Outcome::Stop;
    if (in_stop_list(y2)) --k;
    else if (!evaluate(x2, y2, 1, s, n)) return Outcome::Stop;
    return close(p, s, n, k);
  }

  // The six orders of change, as seen from position p: the two that change p
  // first share one step; each other first step opens a block of two.
  Outcome three_differences(int p) {
    const int q = p == 0 ? 1 : 0;
    const int r = p == 2 ? 1 : 2;
    const int mp = kPosBits[p], mq = kPosBits[q], mr = kPosBits[r];
    double s = 0, n = 0;
    int k = 6;
    const int first = mix(a_, b_, mp);
    if (in_stop_list(first)) k -= 2;
    else if (!evaluate(a_, first, 2, s, n)) return Outcome::Stop;
    const int z = mix(a_, b_, mq | mr);
    for (const int mo : {mq, mr}) {
      const int x = mix(a_, b_, mo);
      if (in_stop_list(x)) {
        k -= 2;
        continue;
      }
      const int y = mix(a_, b_, mo | mp);
      if (in_stop_list(y)) --k;
      else if (!evaluate(x, y, 1, s, n)) return Outcome::Stop;
      if (in_stop_list(z)) --k;
      else if (!evaluate(b_, z, 1, s, n)) return Outcome::Stop;
    }
    return close(p, s, n, k);
  }

  // Weights the shares where both kinds of pathway exist (keeping their total),
  // then divides by the number of open pathways.
  Outcome close(int p, double s, double n, int k) {
    if (k == 0) return Outcome::NoPathway;
    if (s * n != 0) {
      const double total = s + n;
      s *= syn_weight_;
      n *= nonsyn_weight_;
      const double d = s + n;
      s = total * s / d;
      n = total * n / d;
    }
    s /= k;
    n /= k;
    syn_[base_ + p] += static_cast<float>(s);
    nonsyn_[base_ + p] += static_cast<float>(n);
    return Outcome::Ok;
  }

  const CodeTables& t_;
  double syn_weight_;
  double nonsyn_weight_;
  float* syn_;
  float* nonsyn_;
  long base_ = 0;
  int a_ = 0;
  int b_ = 0;
};

}  // namespace

CodonPairTable::CodonPairTable(GeneticCode code, float pathway_weight) {
  const double weight = pathway_weight;
  for (int a = 0; a < kCodons; ++a) {
    for (int b = 0; b < kCodons; ++b) {
      if (a == b) continue;  // equal codons are never walked
      CodonPairShares& out = shares_[static_cast<std::size_t>(64 * a + b)];
      PairWalk walk(code_tables(code), 2.0 * weight, 2.0 * (1.0 - weight), out.syn.data(),
                    out.nonsyn.data());
      const Outcome o = walk.compare(0, a, b);
      out.status = o == Outcome::Ok     ? ChangeStatus::Complete
                   : o == Outcome::Stop ? ChangeStatus::StopCodon
                                        : ChangeStatus::NoOpenPathway;
    }
  }
}

ChangeAccountingResult account_codon_changes(std::span<const Codon> codons1,
                                             std::span<const Codon> codons2,
                                             GeneticCode code, float pathway_weight,
                                             std::span<float> syn_changes,
                                             std::span<float> nonsyn_changes) {
  const long count = static_cast<long>(std::min(codons1.size(), codons2.size()));
  std::fill_n(syn_changes.begin(), 3 * count, 0.0f);
  std::fill_n(nonsyn_changes.begin(), 3 * count, 0.0f);

  const double weight = pathway_weight;
  PairWalk walk(code_tables(code), 2.0 * weight, 2.0 * (1.0 - weight), syn_changes.data(),
                nonsyn_changes.data());

  ChangeAccountingResult result;
  long gc = 0;
  for (long i = 0; i < count; ++i) {
    const int a = codons1[i];
    const int b = codons2[i];
    gc += third_is_gc(a) + third_is_gc(b);
    if (a == b) continue;  // equal codons: nothing credited, nothing translated
    const Outcome o = walk.compare(i, a, b);
    if (o == Outcome::Ok) continue;
    result.status = o == Outcome::Stop ? ChangeStatus::StopCodon : ChangeStatus::NoOpenPathway;
    result.StopCodonFlag = o == Outcome::Stop;
    result.codon_number = i + 1;
    result.codon1 = static_cast<Codon>(a);
    result.codon2 = static_cast<Codon>(b);
    return result;
  }
  if (count > 0)
    result.PairGCContent = static_cast<float>(static_cast<double>(gc) / (2.0 * count));
  return result;
}

}  // namespace varnoth::divergence
