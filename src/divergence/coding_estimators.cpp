#include "divergence/coding_estimators.h"

#include <cmath>

namespace varnoth::divergence {
namespace {

using S = CodingClassSums;

// Estimates of no difference come out of the logarithms as -0; they are kept as 0.
double positive_zero(double v) { return v == 0 ? 0.0 : v; }

// -0.75 ln(1 - 4p/3), the Jukes and Cantor correction; p below 0.75.
double jukes_cantor(double p) { return positive_zero(-0.75 * std::log(1 - 4 * p / 3)); }

// -0.5 ln(1 - 2q), the Kimura transversion term.
double kimura_b(double q) { return positive_zero(-0.5 * std::log(1 - 2 * q)); }

// The Kimura transition term of a class; a negative one becomes 0.
double kimura_a(double p, double q) {
  const double a = -0.5 * std::log(1 - 2 * p - q) + 0.25 * std::log(1 - 2 * q);
  return a <= 0 ? 0 : a;
}

// Synonymous Kimura steps: As and Bs; false on a failure (Bs may already be set).
bool synonymous_kimura(double L0, double L2S, double L2V, double L4, const S& s,
                       double& as, double& bs) {
  const double ts2s = s.obs_ts[S::k2SFold], ts4 = s.obs_ts[S::k4Fold];
  const double tv0 = s.obs_tv[S::k0Fold], tv2s = s.obs_tv[S::k2SFold];
  const double tv2v = s.obs_tv[S::k2VFold], tv4 = s.obs_tv[S::k4Fold];

  // Q is a Single.
  const float q = L2V + L4 > 0 ? static_cast<float>((tv2v + tv4) / (L2V + L4)) : 0.0f;
  if (q >= 0.5f) return false;
  bs = kimura_b(q);

  double p2 = 0, q2 = 0, p4 = 0, q4 = 0;
  if (L2S > 0) {
    p2 = ts2s / L2S;
    q2 = tv2s / L2S;
  }
  if (L4 > 0) {
    p4 = ts4 / L4;
    q4 = tv4 / L4;
  }
  if (q2 + 2 * p2 >= 1 || q4 + 2 * p4 >= 1 || q2 >= 0.5 || q4 >= 0.5) return false;
  const double a4 = kimura_a(p4, q4);

  // R pools the transversions of the 0-fold and 2S classes; no such sites: fail.
  if (!(L0 + L2S > 0)) return false;
  const double r = (tv0 + tv2s) / (L0 + L2S);
  if (r + 2 * p2 >= 1) return false;
  // ln(1 - 2R) needs R below 0.5: otherwise the estimate is not applicable.
  if (r >= 0.5) return false;
  const double a2 = kimura_a(p2, r);  // with R in place of Q2, deliberately

  // No 2S- or 4-fold sites: As cannot be weighted, not applicable.
  if (!(L2S + L4 > 0)) return false;
  as = (L2S * a2 + L4 * a4) / (L2S + L4);
  return true;
}

// Nonsynonymous Kimura steps: Aa and Ba; false on a failure.
bool nonsynonymous_kimura(double L0, double L2S, double L2V, double L4, const S& s,
                          double& aa, double& ba) {
  const double ts0 = s.obs_ts[S::k0Fold], ts2v = s.obs_ts[S::k2VFold];
  const double tv0 = s.obs_tv[S::k0Fold], tv2s = s.obs_tv[S::k2SFold];
  const double tv2v = s.obs_tv[S::k2VFold], tv4 = s.obs_tv[S::k4Fold];

  const double pv = L2V != 0 ? ts2v / L2V : 0;
  double p0 = 0, q0 = 0;
  if (L0 != 0) {
    p0 = ts0 / L0;
    q0 = tv0 / L0;
  }
  const double qv = L2V + L4 > 0 ? (tv2v + tv4) / (L2V + L4) : 0;  // not rounded here
  if (q0 + 2 * p0 >= 1 || q0 >= 0.5) return false;
  if (qv + 2 * pv >= 1 || qv >= 0.5) return false;
  const double a0 = kimura_a(p0, q0);
  const double av = kimura_a(pv, qv);

  // No 0-fold or 2V-fold sites: Aa cannot be weighted, not applicable.
  if (!(L2V + L0 > 0)) return false;
  aa = (L2V * av + L0 * a0) / (L2V + L0);

  // No 0-fold or 2S-fold sites: F is undefined, not applicable.
  if (!(L0 + L2S > 0)) return false;
  const double f = (tv0 + tv2s) / (L0 + L2S);
  if (f >= 0.5) return false;
  ba = kimura_b(f);
  return true;
}

}  // namespace

CodingResult estimate_coding(const CodingClassSums& s) {
  CodingResult result;
  CodingEstimates& e = result.values;
  const double L0 = s.sites[S::k0Fold], L2S = s.sites[S::k2SFold];
  const double L2V = s.sites[S::k2VFold], L4 = s.sites[S::k4Fold];
  const double ts0 = s.obs_ts[S::k0Fold], ts2s = s.obs_ts[S::k2SFold];
  const double ts2v = s.obs_ts[S::k2VFold], ts4 = s.obs_ts[S::k4Fold];
  const double tv0 = s.obs_tv[S::k0Fold], tv2s = s.obs_tv[S::k2SFold];
  const double tv2v = s.obs_tv[S::k2VFold], tv4 = s.obs_tv[S::k4Fold];

  // Jukes and Cantor, synonymous. No degenerate sites at all: not applicable.
  const double degenerate = L2V + L2S + L4;
  if (degenerate > 0) {
    const double wv = (L2V + L4) / degenerate;
    const double ws = (L2S + L4) / degenerate;
    const double a = L2S + L4 > 0 ? ws * (ts2s + ts4) / (L2S + L4) : 0;
    const double c = L4 + L2V > 0 ? wv * (tv4 + tv2v) / (L4 + L2V) : 0;
    const double ps = a + c;
    if (ps >= 0.75)
      e.ks_jc_note = kNoApplicable;
    else
      e.ks_jc = jukes_cantor(ps);
  } else {
    e.ks_jc_note = kNoApplicable;
  }

  // Jukes and Cantor, nonsynonymous. An empty class pair: not applicable.
  if (L0 + L2V > 0 && L0 + L2S > 0) {
    const double pn = (ts0 + ts2v) / (L0 + L2V) + (tv0 + tv2s) / (L0 + L2S);
    if (pn >= 0.75)
      e.ka_jc_note = kNoApplicable;
    else
      e.ka_jc = jukes_cantor(pn);
  } else {
    e.ka_jc_note = kNoApplicable;
  }

  if (!synonymous_kimura(L0, L2S, L2V, L4, s, e.as, e.bs)) e.ks_kimura_note = kNoApplicable;

  if (nonsynonymous_kimura(L0, L2S, L2V, L4, s, e.aa, e.ba)) {
    const double u = e.as * (L4 + L2S) + e.bs * (L4 + L2V);
    const double v = e.aa * (L0 + L2V) + e.ba * (L0 + L2S);
    e.ses = e.as + e.bs == 0 ? 0 : u / (e.as + e.bs);
    e.nes = e.aa + e.ba == 0 ? 0.0f : static_cast<float>(v / (e.aa + e.ba));
    const double total = L0 + L2S + L2V + L4;
    if (e.aa + e.ba == 0 && e.ses > 0) e.nes = static_cast<float>(total - e.ses);
    if (e.as + e.bs == 0 && e.nes > 0) e.ses = total - e.nes;
  } else {
    e.ka_kimura_note = kNoApplicable;
    result.effective_sites_written = false;
  }

  e.ks_kimura = e.as + e.bs;
  e.ka_kimura = e.aa + e.ba;
  return result;
}

CodingEstimates apply_carry(const CodingCarry& previous, const CodingResult& result) {
  CodingEstimates e = result.values;
  if (!result.effective_sites_written) {
    e.ses = previous.ses;
    e.nes = previous.nes;
  }
  return e;
}

CodingCarry carry_of(const CodingEstimates& estimates) {
  return {estimates.ses, estimates.nes};
}

CodingHandedOn handed_on_kimura(const CodingEstimates& e) {
  CodingHandedOn h{e.ks_kimura, e.ka_kimura, 2, 2, e.as, e.bs, e.aa, e.ba};
  if (!e.ks_kimura_note.empty()) {
    h.ks = e.ks_jc;
    h.ks_method = 1;
    h.as = 0.333;
    h.bs = 0.663;  // differs from the 0.666 used elsewhere; kept deliberately
  }
  if (!e.ka_kimura_note.empty()) {
    h.ka = e.ka_jc;
    h.ka_method = 1;
    h.aa = 0.333;
    h.ba = 0.666;
  }
  return h;
}

CodingHandedOn handed_on_jukes_cantor(const CodingEstimates& e) {
  return {e.ks_jc, e.ka_jc, 1, 1, 0.333, 0.666, 0.333, 0.666};
}

}  // namespace varnoth::divergence
