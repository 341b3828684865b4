#include "simulation/kska_replicate.h"

#include <algorithm>
#include <charconv>

#include "divergence/codon_changes.h"

namespace varnoth::simulation {

namespace dv = divergence;

const dv::SiteCountTable& replicate_site_counts() {
  static const dv::SiteCountTable table = [] {
    dv::SiteCountTable t = dv::code_tables(GeneticCode::Universal).counts;
    // Nothing reads the 0-fold sites of the letter A in a simulation.
    for (auto& row : t.rows) row[dv::kGroupA][dv::kClass0Fold] = 0;
    // Deliberate: the C share of the 2S-fold site of "AGC" stands in "AGT".
    const int agc = dv::encode_codon(std::string_view("AGC"));
    const int agt = dv::encode_codon(std::string_view("AGT"));
    t.rows[agt][dv::kGroupC][dv::kClass2SFold] = t.rows[agc][dv::kGroupC][dv::kClass2SFold];
    t.rows[agc][dv::kGroupC][dv::kClass2SFold] = 0;
    return t;
  }();
  return table;
}

void ReplicateWorkspace::reserve(std::size_t codons) {
  if (SimChanges.size() < 6 * codons) SimChanges.resize(6 * codons);
  if (hidden_surface.capacity() < 2 + kHiddenStopWarning.size())
    hidden_surface.reserve(2 + kHiddenStopWarning.size());
}

std::span<float> ReplicateWorkspace::synonymous_row(std::size_t codons) {
  return {SimChanges.data(), 3 * codons};
}

std::span<float> ReplicateWorkspace::nonsynonymous_row(std::size_t codons) {
  return {SimChanges.data() + 3 * codons, 3 * codons};
}

ReplicateEstimate estimate_replicate(std::span<const Codon> codons1, std::span<const Codon> codons2,
                                     float pathway_weight, ReplicateMethods methods,
                                     ReplicateWorkspace& workspace) {
  const std::size_t count = std::min(codons1.size(), codons2.size());
  codons1 = codons1.first(count);
  codons2 = codons2.first(count);
  workspace.reserve(count);
  const std::span<float> syn = workspace.synonymous_row(count);
  const std::span<float> nonsyn = workspace.nonsynonymous_row(count);

  // A stop codon met in the walk ends it with the shares reached so far; the
  // replicate is estimated from them all the same.
  (void)dv::account_codon_changes(codons1, codons2, GeneticCode::Universal, pathway_weight, syn,
                                  nonsyn);

  ReplicateEstimate r;
  double total = 0;
  for (const float s : syn) total += s;
  for (const float n : nonsyn) total += n;
  r.share_total = total;

  dv::SiteClassOptions options;
  options.stop_ends_run = false;
  options.site_counts = &replicate_site_counts();
  r.classes =
      dv::account_site_classes(codons1, codons2, syn, nonsyn, GeneticCode::Universal, options);
  if (r.classes.StopCodonFlag) {
    workspace.hidden_surface.assign("\r\n");
    workspace.hidden_surface.append(kHiddenStopWarning);
    r.stop_codon = true;
  }

  r.estimates = dv::estimate_coding(dv::coding_sums(r.classes)).values;
  const dv::CodingEstimates& e = r.estimates;
  if (methods.ks == 2) {
    if (e.ks_kimura_note.empty()) r.ks = e.ks_kimura;
  } else if (e.ks_jc_note.empty()) {
    r.ks = e.ks_jc;
  }
  if (methods.ka == 2) {
    if (e.ka_kimura_note.empty()) r.ka = e.ka_kimura;
  } else if (e.ka_jc_note.empty()) {
    r.ka = e.ka_jc;
  }
  return r;
}

bool decide_replicate(double ks, double target_ks, BalanceState& b) {
  b.GotLowKs = false;
  b.GotHighKs = false;
  if ((b.WantHighKs || b.WantLowKs) && ks >= kNotApplicableEstimate) return false;
  if (b.WantHighKs && ks < target_ks) return false;
  if (b.WantLowKs && ks > target_ks) return false;
  if (b.WantHighKs) b.GotHighKs = true;
  if (b.WantLowKs) b.GotLowKs = true;
  if (ks < kNotApplicableEstimate) {
    b.RunKsSum += ks;
    b.RunKsCount += 1;
  }
  return true;
}

namespace {

// Four decimals into `buf`; returns the length.
std::size_t four_decimals(double value, char (&buf)[64]) {
  if (value == 0) value = 0;  // no "-0.0000"
  const auto res = std::to_chars(buf, buf + sizeof buf, value, std::chars_format::fixed, 4);
  return static_cast<std::size_t>(res.ptr - buf);
}

}  // namespace

void append_data_field(std::string& out, double value) {
  char buf[64];
  const std::size_t len = four_decimals(value, buf);
  if (len < kDataFieldWidth) out.append(kDataFieldWidth - len, ' ');
  out.append(buf, len);
}

double data_field_value(double value) {
  char buf[64];
  const std::size_t len = four_decimals(value, buf);
  double read = 0;
  std::from_chars(buf, buf + len, read);
  return read;
}

ReplicateLine data_line(double ks, double ka) {
  return {data_field_value(ks), data_field_value(ka)};
}

}  // namespace varnoth::simulation
