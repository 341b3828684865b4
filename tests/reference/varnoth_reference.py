#!/usr/bin/env python3
"""Stand-alone reference computation of the Varnoth divergence report.

Written independently of the C++ sources, only to derive the golden files
under tests/golden.  Standard library only.  Python floats are IEEE doubles;
fields the program keeps as Single (32-bit float) are rounded with f32().

Library:   divergence_report(alignment, options) -> Result
Command:   varnoth_reference.py run INPUT.meg [flags] [--report F] [--table F]
                                   [--matrix ITEM --matrix-out F]
           varnoth_reference.py goldens DIR     (rewrites every golden folder)
"""

import argparse
import math
import os
import random
import struct
import sys
from decimal import Decimal, ROUND_HALF_UP

CRLF = "\r\n"
STAR_LINE = " " + "*" * 61
WINDOW_LINE = " " + "*" * 26

# Switches used only by the golden generator to check that a golden does not
# depend on number-type choices the program is free to make.
VARIANT = {
    "site_sums_single": False,     # per-sequence site sums accumulated in Single
    "work_sums_single": False,     # transition/transversion working sums in Single
    "counts_from_fractions": False,  # site-count table totals summed from Single fractions
    "singles_as_doubles": False,   # Single fields printed with 15 digits
    "no_single_rounding": False,   # NES, Q and the means kept in double
    "totals_single": False,        # Total/sum cells of the coding block summed in Single
    "kept_not_retruncated": False,  # kept Kimura A/B and Tajima 1-p/4-p not cut again
}


def f32(x):
    """Round a double to the nearest 32-bit float."""
    return struct.unpack("<f", struct.pack("<f", x))[0]


def sgl(x):
    """Store into a Single field (unless a variant keeps doubles)."""
    return x if VARIANT["no_single_rounding"] else f32(x)


# ---------------------------------------------------------------------------
# Number text
# ---------------------------------------------------------------------------

def _digits(x, single):
    sig = 7 if (single and not VARIANT["singles_as_doubles"]) else 15
    return Decimal("%.*e" % (sig - 1, x))


def fmt(x, pattern, single=False):
    """Format x with a pattern of '#', '0', '.' and literal characters."""
    i = 0
    while i < len(pattern) and pattern[i] not in "#0.":
        i += 1
    j = len(pattern)
    while j > i and pattern[j - 1] not in "#0.":
        j -= 1
    prefix, body, suffix = pattern[:i], pattern[i:j], pattern[j:]
    if "." in body:
        ipart, dpart = body.split(".", 1)
    else:
        ipart, dpart = body, ""
    ndec = len(dpart)
    d = _digits(x, single).quantize(Decimal(1).scaleb(-ndec), rounding=ROUND_HALF_UP)
    neg = d < 0
    d = abs(d)
    text = format(d, "f")
    if "." in text:
        si, sf = text.split(".")
    else:
        si, sf = text, ""
    si = si.lstrip("0")
    minint = ipart.count("0")
    if len(si) < minint:
        si = "0" * (minint - len(si)) + si
    # trailing '#' decimals print only digits the number has
    sf = list(sf)
    for k in range(ndec - 1, -1, -1):
        if dpart[k] == "#" and sf and sf[-1] == "0":
            sf.pop()
        else:
            break
    sf = "".join(sf)
    out = si + ("." + sf if ndec and (sf or "0" in dpart) else "")
    if neg and any(ch in "123456789" for ch in out):
        out = "-" + out
    return prefix + out + suffix


def cell(x, pattern, width, single=False):
    return fmt(x, pattern, single).rjust(width)


def plain(x, single=False, force=False):
    """Shortest plain text of a number (15 significant digits, 7 for a Single)."""
    if isinstance(x, int):
        return str(x)
    if x == 0:
        return "0"
    if float(x).is_integer() and abs(x) < 1e15:
        return str(int(x))
    d = Decimal("%.*e" % (6, x)) if (single and force) else _digits(x, single)
    ax = abs(d)
    if ax < Decimal("0.0001") or ax >= Decimal("1e15"):
        sig = 7 if (single and (force or not VARIANT["singles_as_doubles"])) else 15
        mant, exp = ("%.*e" % (sig - 1, x)).split("e")
        if "." in mant:
            mant = mant.rstrip("0").rstrip(".")
        e = int(exp)
        return "%sE%s%02d" % (mant, "-" if e < 0 else "+", abs(e))
    text = format(d.normalize(), "f")
    return text


# ---------------------------------------------------------------------------
# Genetic codes and codon tables
# ---------------------------------------------------------------------------

CODES = ("universal", "vertmito", "dromito")
CODE_TITLE = {"universal": "Universal", "vertmito": "Vertebrate Mitochondrial",
              "dromito": "Drosophila Mitochondrial"}
STOP_LIST = {"universal": ("TAA", "TAG", "TGA", "TGA"),
             "vertmito": ("TAA", "TAG", "AGA", "AGG"),
             "dromito": ("TAA", "TAG", "TAA", "TAA")}
# stops tested on the alignment's last codon column by the filter
LAST_COLUMN_STOPS = {"universal": ("TAA", "TAG", "TGA"),
                     "vertmito": ("TAA", "TAG", "AGA", "AGG"),
                     "dromito": ("TAA", "TAG")}

CLASS_KEYS = {"0": 0, "2S": 1, "2V": 2, "4": 3}

# codon, amino acid, position 1 classes, position 3 classes, listed site totals
UNIVERSAL_ROWS = """
TTT PHE 0 2S 2/1/0/0
TTC PHE 0 2S 2/1/0/0
TTA LEU 2S 2S 1/2/0/0
TTG LEU 2S 2S 1/2/0/0
TCT SER 0 4 2/0/0/1
TCC SER 0 4 2/0/0/1
TCA SER 0 4 2/0/0/1
TCG SER 0 4 2/0/0/1
TAT TYR 0 2S 2/0/0/1
TAC TYR 0 2S 2/0/0/1
TAA STOP - - -
TAG STOP - - -
TGT CYS 0 2S 2/1/0/0
TGC CYS 0 2S 2/1/0/0
TGA STOP - - -
TGG TRP 0 0 3/0/0/0
CTT LEU 0 4 2/0/0/1
CTC LEU 0 4 2/0/0/1
CTA LEU 2S 4 1/1/0/1
CTG LEU 2S 4 1/1/0/1
CCT PRO 0 4 2/0/0/1
CCC PRO 0 4 2/0/0/1
CCA PRO 0 4 2/0/0/1
CCG PRO 0 4 2/0/0/1
CAT HIS 0 2S 2/1/0/0
CAC HIS 0 2S 2/1/0/0
CAA GLN 0 2S 2/1/0/0
CAG GLN 0 2S 2/1/0/0
CGT ARG 0 4 2/0/0/1
CGC ARG 0 4 2/0/0/1
CGA ARG 0:0.5,2V:0.5 4 1.5/0/0.5/1
CGG ARG 0:0.6666,2V:0.3333 4 1.6666/0/0.3333/1
ATT ILE 0 0:0.3333,2S:0.3333,2V:0.3333 2.3333/0.3333/0.3333/0
ATC ILE 0 0:0.3333,2S:0.3333,2V:0.3333 2.3333/0.3333/0.3333/0
ATA ILE 0 2V 2/0/1/0
ATG MET 0 0 3/0/0/0
ACT THR 0 4 2/0/0/1
ACC THR 0 4 2/0/0/1
ACA THR 0 4 2/0/0/1
ACG THR 0 4 2/0/0/1
AAT ASN 0 2S 2/1/0/0
AAC ASN 0 2S 2/1/0/0
AAA LYS 0 2S 2/1/0/0
AAG LYS 0 2S 2/1/0/0
AGT SER 0 2S 2/1/0/0
AGC SER 0 2S 2/1/0/0
AGA ARG 2V 2S 1/1/1/0
AGG ARG 0:0.6666,2V:0.3333 2S 1.6666/1/0.3333/0
GTT VAL 0 4 2/0/0/1
GTC VAL 0 4 2/0/0/1
GTA VAL 0 4 2/0/0/1
GTG VAL 0 4 2/0/0/1
GCT ALA 0 4 2/0/0/1
GCC ALA 0 4 2/0/0/1
GCA ALA 0 4 2/0/0/1
GCG ALA 0 4 2/0/0/1
GAT ASP 0 2S 2/1/0/0
GAC ASP 0 2S 2/1/0/0
GAA GLU 0 2S 2/1/0/0
GAG GLU 0 2S 2/1/0/0
GGT GLY 0 4 2/0/0/1
GGC GLY 0 4 2/0/0/1
GGA GLY 0 4 2/0/0/1
GGG GLY 0 4 2/0/0/1
"""

# Mitochondrial rows after the overlay: amino acid, position 1, position 3
# fractions, and the replaced site-count row (position 3 in the listed class).
MITO_ROWS = """
TGA TRP 0 2S
ATA MET 0 2S:1,2V:1
TGG TRP 0 0:1,2S:1
ATG MET 0 0:1,2S:1
CGA ARG 0:1,2V:0.5 4
CGG ARG 0:1,2V:0.3333 4
AGC SER 0 2S:1,4:1
AGT SER 0 2S:1,4:1
"""
MITO_COUNTS = {"TGA": "2S", "ATA": "2S", "TGG": "2S", "ATG": "2S", "CGA": "4",
               "CGG": "4", "AGC": "4", "AGT": "4", "AGA": "4", "AGG": "4"}
DROMITO_ROWS = """
AGA SER 0:1,2V:1 2S:1,4:1
AGG SER 0:1,2V:0.3333 2S:1,4:1
"""


def _parse_classes(text):
    """'0' or '0:0.5,2V:0.5' -> {class index: Decimal fraction}."""
    out = {}
    for part in text.split(","):
        if ":" in part:
            key, val = part.split(":")
            out[CLASS_KEYS[key]] = Decimal(val)
        else:
            out[CLASS_KEYS[part]] = Decimal(1)
    return out


def _count_row(codon, pos_classes):
    """Twenty site numbers: totals per class, then groups A, G, C, T."""
    totals = [Decimal(0)] * 4
    groups = {b: [Decimal(0)] * 4 for b in "AGCT"}
    single_sum = [0.0] * 4
    single_groups = {b: [0.0] * 4 for b in "AGCT"}
    for p in range(3):
        for cls, frac in pos_classes[p].items():
            totals[cls] += frac
            groups[codon[p]][cls] += frac
            single_sum[cls] = f32(single_sum[cls] + f32(float(frac)))
            single_groups[codon[p]][cls] = f32(single_groups[codon[p]][cls] + f32(float(frac)))
    if VARIANT["counts_from_fractions"]:
        row = list(single_sum)
        for b in "AGCT":
            row += single_groups[b]
        return row
    row = [f32(float(v)) for v in totals]
    for b in "AGCT":
        row += [f32(float(v)) for v in groups[b]]
    return row


def build_tables(code):
    """Returns (amino acids, fractions per codon, site counts per codon or None)."""
    aa, frac, counts = {}, {}, {}
    for line in UNIVERSAL_ROWS.strip().splitlines():
        codon, amino, p1, p3, listed = line.split()
        aa[codon] = amino
        if amino == "STOP":
            counts[codon] = None
            continue
        c1, c3 = _parse_classes(p1), _parse_classes(p3)
        frac[codon] = [[f32(float(c1.get(k, 0))) for k in range(4)],
                       [1.0, 0.0, 0.0, 0.0],
                       [f32(float(c3.get(k, 0))) for k in range(4)]]
        count_p3 = {3: Decimal(1)} if codon in ("TAT", "TAC") else c3
        row = _count_row(codon, [c1, {0: Decimal(1)}, count_p3])
        want = [f32(float(Decimal(v))) for v in listed.split("/")]
        assert VARIANT["counts_from_fractions"] or row[:4] == want, codon
        counts[codon] = row
    if code == "universal":
        return aa, frac, counts
    rows = MITO_ROWS + (DROMITO_ROWS if code == "dromito" else "")
    for line in rows.split("\n"):
        if not line.strip():
            continue
        codon, amino, p1, p3 = line.split()
        aa[codon] = amino
        c1, c3 = _parse_classes(p1), _parse_classes(p3)
        frac[codon] = [[f32(float(c1.get(k, 0))) for k in range(4)],
                       [1.0, 0.0, 0.0, 0.0],
                       [f32(float(c3.get(k, 0))) for k in range(4)]]
    for codon, cls in MITO_COUNTS.items():
        if codon in ("AGA", "AGG") and code == "vertmito":
            continue
        counts[codon] = _count_row(codon, [{0: Decimal(1)}, {0: Decimal(1)},
                                           {CLASS_KEYS[cls]: Decimal(1)}])
    if code == "vertmito":
        aa["AGA"] = aa["AGG"] = "STOP"
        counts["AGA"] = counts["AGG"] = None
    return aa, frac, counts


class StopCodonError(Exception):
    """A pair holds a stop codon: the run ends with " There are STOP Codons !!"."""


class NoPathwayError(Exception):
    """A position with no open pathway (k = 0): the division has no guard."""


class EmptyClassError(Exception):
    pass


# ---------------------------------------------------------------------------
# Codon-pair change accounting
# ---------------------------------------------------------------------------

def account_changes(cod1, cod2, code, weight, tables):
    """Synonymous and nonsynonymous share of each position (Single values)."""
    aa = tables[0]
    stops = STOP_LIST[code]
    m = len(cod1)
    syn = [0.0] * (3 * m)
    non = [0.0] * (3 * m)
    sw = 2 * weight
    nw = 2 * (1 - weight)

    def tr(c):
        a = aa[c]
        if a == "STOP":
            raise StopCodonError(c)
        return a

    def close(s, n, k):
        if s * n != 0:
            t = s + n
            s = s * sw
            n = n * nw
            d = s + n
            s = t * s / d
            n = t * n / d
        if k == 0:
            raise NoPathwayError()
        return s / k, n / k

    for i in range(m):
        a, b = cod1[i], cod2[i]
        if a == b:
            continue
        a1, a2, a3 = a
        b1, b2, b3 = b
        diff = (100 if a1 != b1 else 0) + (10 if a2 != b2 else 0) + (1 if a3 != b3 else 0)
        base = 3 * i
        if diff in (100, 10, 1):
            pos = {100: 0, 10: 1, 1: 2}[diff]
            if tr(a) == tr(b):
                syn[base + pos] = f32(syn[base + pos] + 1)
            else:
                non[base + pos] = f32(non[base + pos] + 1)
            continue
        if diff in (110, 11, 101):
            if diff == 110:
                plan = [(0, [(a, b1 + a2 + a3), (b, a1 + b2 + a3)])]
            elif diff == 11:
                plan = [(2, [(b, a1 + b2 + a3), (a, a1 + a2 + b3)])]
            else:
                plan = [(0, [(a, b1 + a2 + a3), (b, a1 + a2 + b3)]),
                        (2, [(a, a1 + a2 + b3), (b, b1 + a2 + a3)])]
            for pos, steps in plan:
                s = n = 0.0
                k = 2
                for x, y in steps:
                    if y in stops:
                        k -= 1
                        continue
                    if tr(x) == tr(y):
                        s += 1
                    else:
                        n += 1
                s, n = close(s, n, k)
                syn[base + pos] = f32(syn[base + pos] + s)
                non[base + pos] = f32(non[base + pos] + n)
            if diff in (110, 11):
                non[base + 1] = f32(non[base + 1] + 1)
            continue
        # three differences
        table = {
            0: (b1 + a2 + a3, [(a1 + b2 + a3, b1 + b2 + a3, a1 + b2 + b3),
                               (a1 + a2 + b3, b1 + a2 + b3, a1 + b2 + b3)]),
            1: (a1 + b2 + a3, [(b1 + a2 + a3, b1 + b2 + a3, b1 + a2 + b3),
                               (a1 + a2 + b3, a1 + b2 + b3, b1 + a2 + b3)]),
            2: (a1 + a2 + b3, [(b1 + a2 + a3, b1 + a2 + b3, b1 + b2 + a3),
                               (a1 + b2 + a3, a1 + b2 + b3, b1 + b2 + a3)]),
        }
        for pos in range(3):
            first, blocks = table[pos]
            s = n = 0.0
            k = 6
            if first in stops:
                k -= 2
            else:
                if tr(a) == tr(first):
                    s += 2
                else:
                    n += 2
            for x, y, z in blocks:
                if x in stops:
                    k -= 2
                    continue
                if y in stops:
                    k -= 1
                else:
                    if tr(x) == tr(y):
                        s += 1
                    else:
                        n += 1
                if z in stops:
                    k -= 1
                else:
                    if tr(b) == tr(z):
                        s += 1
                    else:
                        n += 1
            s, n = close(s, n, k)
            syn[base + pos] = f32(syn[base + pos] + s)
            non[base + pos] = f32(non[base + pos] + n)
    return syn, non


# ---------------------------------------------------------------------------
# Site classes: counting sites and placing changes
# ---------------------------------------------------------------------------

TS_RULES = [
    ("zaza", [(1, "F2S"), (3, "F4S")]),
    ("azaz", [(0, "F1N"), (2, "F3N")]),
    ("nnzz", [(0, "N"), (1, "S")]),
    ("nzzn", [(0, "N"), (3, "S")]),
    ("znnz", [(1, "S"), (2, "N")]),
    ("zznn", [(2, "N"), (3, "S")]),
    ("nnnz", [(0, "hN"), (1, "S"), (2, "hN")]),
    ("nnzn", [(0, "N"), (1, "F2S"), (3, "F4S")]),
    ("nznn", [(0, "F1N"), (3, "S"), (2, "F3N")]),
    ("znnn", [(2, "N"), (1, "F2S"), (3, "F4S")]),
]
TV_RULES = [
    ("zzaa", [(2, "F3S"), (3, "F4S")]),
    ("aazz", [(0, "F1N"), (1, "F2N")]),
    ("nznz", [(0, "N"), (2, "S")]),
    ("nzzn", [(0, "N"), (3, "S")]),
    ("znnz", [(1, "N"), (2, "S")]),
    ("znzn", [(1, "N"), (3, "S")]),
    ("nnnz", [(0, "hN"), (1, "hN"), (2, "S")]),
    ("nnzn", [(0, "F1N"), (1, "F2N"), (3, "S")]),
    ("nznn", [(0, "N"), (2, "F3S"), (3, "F4S")]),
    ("znnn", [(1, "N"), (2, "F3S"), (3, "F4S")]),
]


def _amount(kind, f, s, n):
    if kind == "S":
        return s
    if kind == "N":
        return n
    if kind == "hN":
        return 0.5 * n
    k = int(kind[1]) - 1
    return f[k] * (s if kind[2] == "S" else n)


def _matches(pattern, f):
    for ch, v in zip(pattern, f):
        if ch == "z" and v != 0:
            return False
        if ch == "n" and v == 0:
            return False
    return True


# Corrective chain: groups of (kind, condition, target 'TS'/'TV', class, amount)
def _chain_groups(second_pass):
    ge_or_nz = (lambda v: v != 0) if second_pass else (lambda v: v >= 0)
    return [
        [("TV", lambda s, n, f: s != 0 and n != 0 and f[3] == 1, 0, "N"),
         ("TS", lambda s, n, f: s != 0 and n != 0 and f[3] == 1, 0, "N"),
         ("TV", lambda s, n, f: s != 0 and n != 0 and f[0] == 1, 3, "S"),
         ("TS", lambda s, n, f: s != 0 and n != 0 and f[0] == 1, 3, "S")],
        [("TV", lambda s, n, f: s != 0 and ge_or_nz(n) and f[1] == 1, 3, "S"),
         ("TS", lambda s, n, f: ge_or_nz(s) and n != 0 and f[1] == 1, 0, "N")],
        [("TV", lambda s, n, f: ge_or_nz(s) and n != 0 and f[2] == 1, 0, "N"),
         ("TS", lambda s, n, f: s != 0 and ge_or_nz(n) and f[2] == 1, 3, "S")],
        [("TV", lambda s, n, f: f[3] == 1 and s != 1, 0, "N"),
         ("TS", lambda s, n, f: f[3] == 1 and s != 1, 0, "N"),
         ("TV", lambda s, n, f: f[0] == 1 and n != 1, 3, "S"),
         ("TS", lambda s, n, f: f[0] == 1 and n != 1, 3, "S")],
        [("TV", lambda s, n, f: f[1] == 1 and s == 1, 3, "S"),
         ("TS", lambda s, n, f: f[2] == 1 and s == 1, 3, "S"),
         ("TS", lambda s, n, f: f[1] == 1 and n == 1, 0, "N"),
         ("TV", lambda s, n, f: f[2] == 1 and n == 1, 0, "S")],  # S, not N: kept as the method has it
        [("TV", lambda s, n, f: f[1] == 1 and s != 0, 3, "S"),
         ("TS", lambda s, n, f: f[2] == 1 and s != 0, 3, "S"),
         ("TS", lambda s, n, f: f[1] == 1 and n != 0, 0, "N"),
         ("TV", lambda s, n, f: f[2] == 1 and n != 0, 0, "N")],
        [("TV", lambda s, n, f: f[3] == 1 and n != 0, 0, "N"),
         ("TS", lambda s, n, f: f[3] == 1 and n != 0, 0, "N"),
         ("TV", lambda s, n, f: f[0] == 1 and s != 0, 3, "S"),
         ("TS", lambda s, n, f: f[0] == 1 and s != 0, 3, "S")],
        [("TS", lambda s, n, f: f[1] == 0 and f[3] == 0 and s != 0, 3, "S"),
         ("TV", lambda s, n, f: f[2] == 0 and f[3] == 0 and s != 0, 3, "S"),
         ("TS", lambda s, n, f: f[0] == 0 and f[2] == 0 and n != 0, 0, "N"),
         ("TV", lambda s, n, f: f[0] == 0 and f[1] == 0 and n != 0, 0, "N")],
    ]


TRANSITIONS = {("A", "G"), ("G", "A"), ("C", "T"), ("T", "C")}


def _place_pass(frac_codons, cod1, cod2, syn, non, fractions, second_pass):
    ts = [0.0] * 4
    tv = [0.0] * 4
    single = VARIANT["work_sums_single"]

    def add(arr, idx, amt):
        arr[idx] = f32(arr[idx] + amt) if single else arr[idx] + amt

    credited = 0.0
    groups = _chain_groups(second_pass)
    for i, fc in enumerate(frac_codons):
        fr = fractions[fc]
        for p in range(3):
            s = syn[3 * i + p]
            n = non[3 * i + p]
            if s == 0 and n == 0:
                continue
            f = fr[p]
            is_ts = (cod1[i][p], cod2[i][p]) in TRANSITIONS
            rules = TS_RULES if is_ts else TV_RULES
            arr = ts if is_ts else tv
            for pattern, actions in rules:
                if _matches(pattern, f):
                    for idx, kind in actions:
                        add(arr, idx, _amount(kind, f, s, n))
            credited += n
            credited += s
            placed = sum(ts) + sum(tv)
            if abs(credited - placed) < 0.01:
                continue
            kind = "TS" if is_ts else "TV"
            for group in groups:
                for rkind, cond, idx, amt in group:
                    if rkind != kind:
                        continue
                    placed = sum(ts) + sum(tv)
                    if credited != placed and cond(s, n, f):
                        add(ts if kind == "TS" else tv, idx, s if amt == "S" else n)
                placed = sum(ts) + sum(tv)
                if abs(credited - placed) < 0.01:
                    break
    return ts, tv


def site_classes(cod1, cod2, syn, non, tables):
    """Mean site numbers (20) and mean observed TS / TV per class."""
    fractions, counts = tables[1], tables[2]
    sum_a = [0.0] * 20
    sum_b = [0.0] * 20
    single = VARIANT["site_sums_single"]
    for i in range(len(cod1)):
        ra, rb = counts[cod1[i]], counts[cod2[i]]
        if ra is None or rb is None:
            raise StopCodonError(cod1[i] if ra is None else cod2[i])
        for k in range(20):
            if single:
                sum_a[k] = f32(sum_a[k] + ra[k])
                sum_b[k] = f32(sum_b[k] + rb[k])
            else:
                sum_a[k] += ra[k]
                sum_b[k] += rb[k]
    sites = [sgl((sum_a[k] + sum_b[k]) / 2) for k in range(20)]
    ts1, tv1 = _place_pass(cod1, cod1, cod2, syn, non, fractions, False)
    ts2, tv2 = _place_pass(cod2, cod1, cod2, syn, non, fractions, True)
    ts = [sgl(0.5 * (ts1[k] + ts2[k])) for k in range(4)]
    tv = [sgl(0.5 * (tv1[k] + tv2[k])) for k in range(4)]
    return sites, ts, tv


# ---------------------------------------------------------------------------
# Coding estimators
# ---------------------------------------------------------------------------

NA = "NO APPLICABLE"


class CodingState:
    """Values the program keeps from one pair to the next."""

    def __init__(self):
        self.ses = 0.0
        self.nes = 0.0


def coding_estimates(sites, ts, tv, st):
    l0, l2s, l2v, l4 = sites[0:4]
    ts0, ts2s, ts2v, ts4 = ts
    tv0, tv2s, tv2v, tv4 = tv
    r = {"ks_jc_note": "", "ka_jc_note": "", "ks_k_note": "", "ka_k_note": ""}
    log = math.log

    # Jukes and Cantor
    den = l2v + l2s + l4
    if den == 0:
        r["ks_jc_note"] = NA
        r["ks_jc"] = 0.0
    else:
        wv = (l2v + l4) / den
        ws = (l2s + l4) / den
        a = ws * (ts2s + ts4) / (l2s + l4) if l2s + l4 > 0 else 0.0
        c = wv * (tv4 + tv2v) / (l4 + l2v) if l4 + l2v > 0 else 0.0
        ps = a + c
        if ps >= 0.75:
            r["ks_jc_note"] = NA
            r["ks_jc"] = 0.0
        else:
            r["ks_jc"] = -0.75 * log(1 - 4 * ps / 3)
    if l0 + l2v == 0 or l0 + l2s == 0:
        r["ka_jc_note"] = NA
        r["ka_jc"] = 0.0
    else:
        pn = (ts0 + ts2v) / (l0 + l2v) + (tv0 + tv2s) / (l0 + l2s)
        if pn >= 0.75:
            r["ka_jc_note"] = NA
            r["ka_jc"] = 0.0
        else:
            r["ka_jc"] = -0.75 * log(1 - 4 * pn / 3)

    # Kimura, synonymous
    as_ = bs = 0.0

    def syn_part():
        nonlocal as_, bs
        q = (tv2v + tv4) / (l2v + l4) if l2v + l4 > 0 else 0.0
        q = sgl(q)
        if q >= 0.5:
            return False
        bs = -0.5 * log(1 - 2 * q)
        p2, q2 = (ts2s / l2s, tv2s / l2s) if l2s > 0 else (0.0, 0.0)
        p4, q4 = (ts4 / l4, tv4 / l4) if l4 > 0 else (0.0, 0.0)
        if q2 + 2 * p2 >= 1 or q4 + 2 * p4 >= 1 or q2 >= 0.5 or q4 >= 0.5:
            return False
        a4 = -0.5 * log(1 - 2 * p4 - q4) + 0.25 * log(1 - 2 * q4)
        if a4 < 0:
            a4 = 0.0
        if l0 + l2s == 0:
            return False
        rr = (tv0 + tv2s) / (l0 + l2s)
        if rr + 2 * p2 >= 1:
            return False
        if 1 - 2 * rr <= 0:
            raise EmptyClassError("log of a non-positive number (R)")
        a2 = -0.5 * log(1 - 2 * p2 - rr) + 0.25 * log(1 - 2 * rr)
        if a2 < 0:
            a2 = 0.0
        if l2s + l4 == 0:
            return False
        as_ = (l2s * a2 + l4 * a4) / (l2s + l4)
        return True

    if not syn_part():
        r["ks_k_note"] = NA

    aa_ = ba = 0.0

    def non_part():
        nonlocal aa_, ba
        pv = ts2v / l2v if l2v != 0 else 0.0
        p0, q0 = (ts0 / l0, tv0 / l0) if l0 != 0 else (0.0, 0.0)
        qv = (tv2v + tv4) / (l2v + l4) if l2v + l4 > 0 else 0.0
        if q0 + 2 * p0 >= 1 or q0 >= 0.5:
            return False
        if qv + 2 * pv >= 1 or qv >= 0.5:
            return False
        a0 = -0.5 * log(1 - 2 * p0 - q0) + 0.25 * log(1 - 2 * q0)
        av = -0.5 * log(1 - 2 * pv - qv) + 0.25 * log(1 - 2 * qv)
        if a0 < 0:
            a0 = 0.0
        if av < 0:
            av = 0.0
        if l2v + l0 == 0 or l0 + l2s == 0:
            return False
        aa_ = (l2v * av + l0 * a0) / (l2v + l0)
        f = (tv0 + tv2s) / (l0 + l2s)
        if f >= 0.5:
            return False
        ba = -0.5 * log(1 - 2 * f)
        return True

    if non_part():
        u = as_ * (l4 + l2s) + bs * (l4 + l2v)
        v = aa_ * (l0 + l2v) + ba * (l0 + l2s)
        st.ses = 0.0 if as_ + bs == 0 else u / (as_ + bs)
        st.nes = 0.0 if aa_ + ba == 0 else sgl(v / (aa_ + ba))
        total = l0 + l2s + l2v + l4
        if aa_ + ba == 0 and st.ses > 0:
            st.nes = sgl(total - st.ses)
        if as_ + bs == 0 and st.nes > 0:
            st.ses = total - st.nes
    else:
        r["ka_k_note"] = NA
    r.update(ks_k=as_ + bs, ka_k=aa_ + ba, As=as_, Bs=bs, Aa=aa_, Ba=ba,
             ses=st.ses, nes=st.nes)
    return r


# ---------------------------------------------------------------------------
# Noncoding estimators
# ---------------------------------------------------------------------------

class NoncodingState:
    """Fields that keep their value from the pair before where a guard says so."""

    def __init__(self):
        self.kim_a = 0.0
        self.kim_b = 0.0
        self.t1p = 0.0
        self.t4p = 0.0


def _trunc7(x):
    return math.floor(10000000 * x) / 10000000


def _fact(x):
    f = 1.0
    k = 1
    while k <= x:
        f *= k
        k += 1
    return f


def noncoding_estimates(s1, s2, st):
    n = len(s1)
    cnt1 = {b: s1.count(b) for b in "AGCT"}
    cnt2 = {b: s2.count(b) for b in "AGCT"}
    pairs = {"AG": 0, "AC": 0, "AT": 0, "GC": 0, "GT": 0, "CT": 0}
    for x, y in zip(s1, s2):
        if x != y:
            key = x + y if x + y in pairs else y + x
            pairs[key] += 1
    g = {b: (cnt1[b] + cnt2[b]) / (2 * n) for b in "AGCT"}
    x = {k: v / n for k, v in pairs.items()}
    P = x["AG"] + x["CT"]
    Q = x["AT"] + x["GC"] + x["GT"] + x["AC"]
    p = P + Q
    log = math.log
    jc = k2 = tn = t1 = t4 = 0.0
    t2 = 0.0  # Single
    kept_ab = kept_t = True
    if p > 0.7499 or p == 0:
        st.t1p = st.t4p = 0.0
        kept_t = False
    else:
        jc = -(3 / 4) * log(1 - 4 * p / 3)
        u1 = 1 - 2 * P - Q
        u2 = 1 - 2 * Q
        if u1 <= 0 or u2 <= 0:
            k2 = 0.0
        else:
            a = -(1 / 2) * log(u1) + (1 / 4) * log(u2)
            b = -(1 / 2) * log(u2)
            if a < 0:
                a = 0.0
            if b < 0:
                b = 0.0
            st.kim_a, st.kim_b = a, b
            kept_ab = False
            k2 = a + b
        gA, gG, gC, gT = g["A"], g["G"], g["C"], g["T"]
        if gA == 0 or gG == 0 or gC == 0 or gT == 0:
            tn = 0.0
            st.t4p = st.t1p = 0.0
            kept_t = False
        else:
            h = (x["AG"] ** 2 / (2 * gA * gG) + x["AC"] ** 2 / (2 * gA * gC)
                 + x["AT"] ** 2 / (2 * gA * gT) + x["GC"] ** 2 / (2 * gG * gC)
                 + x["GT"] ** 2 / (2 * gG * gT) + x["CT"] ** 2 / (2 * gC * gT))
            bb = (1 - (gA ** 2 + gG ** 2 + gC ** 2 + gT ** 2) + p ** 2 / h) / 2
            if p / bb >= 1:
                tn = 0.0
            else:
                tn = -bb * log(1 - p / bb)
                d = p * n
                for bvar, which in ((bb, "t4p"), (0.75, "t1p")):
                    tot = 0.0
                    i = 1
                    while i <= d:
                        tot += (d / (bvar * n)) ** i / (i / bvar)
                        i += 1
                    setattr(st, which, tot)
                kept_t = False
        # Tajima 2-p
        n1 = P * n
        n2 = Q * n
        d = n1 + n2
        i = 1
        while i <= d:
            L = i * log(n) + log(i)
            if not L > 88:
                w = 1 / math.exp(L)
                j0 = i - n2 if i - n2 > 0 else 0
                j1 = i if i < n1 else n1
                s = 0.0
                j = j0
                while j <= j1:
                    c = _fact(i) / (_fact(j) * _fact(i - j))
                    s += c * 2 ** (j - 1) * n1 ** j * n2 ** (i - j)
                    j += 1
                t2 = f32(t2 + w * s)
            i += 1
        t = 0.0
        i = 1
        while i <= n2:
            t += 2 ** (i - 2) * (n2 / n) ** i / i
            i += 1
        t2 = f32(t2 + t)
    t1, t4 = st.t1p, st.t4p
    # truncation to seven decimals (fields kept from the pair before are cut again)
    P, Q = _trunc7(P), _trunc7(Q)
    jc, k2, tn = (_trunc7(v) for v in (jc, k2, tn))
    if not (VARIANT["kept_not_retruncated"] and kept_t):
        t1, t4 = _trunc7(t1), _trunc7(t4)
    if not (VARIANT["kept_not_retruncated"] and kept_ab):
        st.kim_a, st.kim_b = _trunc7(st.kim_a), _trunc7(st.kim_b)
    t2 = f32(_trunc7(t2))
    vals = [jc, k2, tn, t1, t2, t4]
    vals = [0.0 if (v > 5 or v < 0) else v for v in vals]
    jc, k2, tn, t1, t2, t4 = vals
    if t2 == 0:
        t2 = 0.0
    st.t1p, st.t4p = t1, t4
    return {"counts1": cnt1, "counts2": cnt2, "P": P, "Q": Q,
            "K": {"jc": jc, "k2p": k2, "tn": tn, "t1p": t1, "t2p": t2, "t4p": t4},
            "A": st.kim_a, "B": st.kim_b}


# ---------------------------------------------------------------------------
# Alignment filter and driver
# ---------------------------------------------------------------------------

VALID = set("AGCTagct")
NONCODING_METHODS = ("jc", "k2p", "tn", "t1p", "t2p", "t4p")


class Options:
    def __init__(self, coding=True, methods=("k2p",), coding_method="kimura",
                 code="universal", restrict=None, weight=0.5, region=None,
                 window=None):
        self.coding = coding
        self.methods = [m for m in NONCODING_METHODS if m in methods]
        self.coding_method = coding_method
        self.code = code
        self.restrict = restrict
        self.weight = f32(weight)
        self.region = region
        self.window = window


class Result:
    def __init__(self):
        self.report = ""
        self.table = ""
        self.store = []        # one row per comparison: columns 1..9 (index 0 unused)
        self.seq_count = 0


def cut_cells(seq):
    cells = [seq[k:k + 3] for k in range(0, len(seq), 3)]
    if cells and len(cells[-1]) < 3:
        cells[-1] = cells[-1].ljust(3)
    return cells


def filter_alignment(cells, seqs, coding, code, first_codon, last_codon, region):
    """Complete deletion over codon columns first..last (1-based)."""
    nseq = len(cells)
    ncells = len(cells[0])
    codons = [[] for _ in range(nseq)]
    sites = [[] for _ in range(nseq)]
    for c in range(first_codon, last_codon + 1):
        col = [cells[s][c - 1] for s in range(nseq)]
        marks = [any(col[s][p] not in VALID for s in range(nseq)) for p in range(3)]
        marked = any(marks)
        drop = False
        if not marked and c == ncells and coding:
            stops = LAST_COLUMN_STOPS[code]
            drop = any(col[s].upper() in stops for s in range(nseq))
        if not marked and not drop:
            for s in range(nseq):
                codons[s].append(col[s].upper())
        for p in range(3):
            if not marks[p]:
                for s in range(nseq):
                    sites[s].append(col[s][p].upper())
    if region is not None:
        first, last = region
        joined = ["".join(cells[s]).replace(" ", "") for s in range(nseq)]
        sites = [[] for _ in range(nseq)]
        for k in range(first - 1, last):
            col = [joined[s][k] for s in range(nseq)]
            if all(ch in VALID for ch in col):
                for s in range(nseq):
                    sites[s].append(col[s].upper())
    return codons, ["".join(x) for x in sites]


def select_pair(codons, a, b, opt, aa):
    c1, c2 = codons[a], codons[b]
    out1, out2 = [], []
    for x, y in zip(c1, c2):
        nd = sum(1 for p in range(3) if x[p] != y[p])
        if opt.restrict == "max1":
            if nd <= 1:
                out1.append(x)
                out2.append(y)
        elif opt.restrict == "aa":
            if nd == 3:
                continue
            tx, ty = aa[x], aa[y]
            if tx == "STOP" or ty == "STOP":
                raise StopCodonError(x if tx == "STOP" else y)
            if tx == ty:
                continue
            out1.append(x)
            out2.append(y)
        elif opt.restrict == "no3":
            if nd < 3:
                out1.append(x)
                out2.append(y)
        else:
            out1.append(x)
            out2.append(y)
    return out1, out2


def _nc_method_line(method, est, applicable):
    labels = {"jc": " Jukes & Cantor    ", "k2p": " Kimura 2-p        ",
              "tn": " Tajima & Nei      ", "t1p": " Tajima 1-p        ",
              "t2p": " Tajima 2-p        ", "t4p": " Tajima 4-p        "}
    if not applicable:
        return labels[method] + NA
    k = est["K"][method]
    single = method == "t2p"
    line = labels[method] + "K=" + cell(k, "###0.00000 ", 10, single)
    if method == "k2p":
        line += "  (A=" + cell(est["A"], "###0.00000 ", 9) + " B=" + cell(est["B"], "###0.00000 ", 9) + ")"
    return line


def divergence_report(alignment, opt, region_text=None):
    """Runs the divergence analysis; returns a Result with report, table and store."""
    names = [nm for nm, _ in alignment]
    seqs = [sq for _, sq in alignment]
    res = Result()
    nseq = len(seqs)
    res.seq_count = nseq
    seq_length = len(seqs[0])
    pair_count = nseq * (nseq - 1) // 2
    cells = [cut_cells(s) for s in seqs]
    ncells = len(cells[0])
    tables = build_tables(opt.code)
    window = opt.window is not None
    region = opt.region if (opt.region and not window) else None
    if region is not None and region[1] - region[0] + 1 == seq_length:
        region = None
    if region_text is None:
        if region is None:
            region_text = ""
        else:
            region_text = CRLF + " Region to analyze:" + str(region[0]) + " -" + str(region[1]) + " nuc."
            if opt.coding:
                region_text += CRLF + " " * 19 + str(1 + (region[0] - 1) // 3) + " -" + str(region[1] // 3) + " codon"
    kimura_run = opt.coding and opt.coding_method == "kimura"
    out = []
    w = out.append
    table = []

    # head
    if opt.coding:
        head = " CODING DIVERGENCE ANALYSIS"
        if opt.restrict == "max1":
            head += "  * MAXIMUM ONE SUBSTITUTION PER CODON *"
        if opt.restrict == "aa":
            head += "  * ONLY AAs SUBSTITUTIONS *"
        if opt.restrict == "no3":
            head += "  * NO 3 DIFF. PER CODON *"
        w(head + CRLF)
        w(" Genetic Code: " + CODE_TITLE[opt.code] + CRLF)
    else:
        w(" NONCODING DIVERGENCE ANALYSIS" + CRLF)
    if pair_count == 1:
        w(CRLF)
    if opt.coding:
        if opt.weight == f32(0.5):
            w(" Multiple-pathways: Unweighted" + CRLF)
        else:
            w(" Multiple-pathways weight: Synonymous/Total =" + plain(opt.weight, single=True, force=True) + CRLF)
        if kimura_run:
            w(" Multiple-hits Correcting Method: Kimura-2p " + CRLF)
        else:
            w(" Multiple-hits Correcting Method: Jukes and Cantor-1p " + CRLF)
    else:
        w(" Multiple-hits Correcting Method:" + CRLF)
        titles = {"jc": "   Jukes and Cantor-1p ", "k2p": "   Kimura-2p ", "tn": "   Tajima and Nei ",
                  "t1p": "   Tajima-1p ", "t2p": "   Tajima-2p ", "t4p": "   Tajima-4p "}
        for m in opt.methods:
            w(titles[m] + CRLF)
        w(CRLF)

    if window:
        cols = ["Begin(bp)", "End(bp)", "Middle(bp)"]
        if opt.coding:
            cols += ["Ks K-2p", "Ka K-2p"] if kimura_run else ["Ks JC", "Ka JC"]
        else:
            cols += [{"jc": "JC", "k2p": "K-2p", "tn": "T-N", "t1p": "Taj-1p",
                      "t2p": "Taj-2p", "t4p": "Taj-4p"}[m] for m in opt.methods]
        table.append("\t".join(cols) + CRLF)

    nc_state = NoncodingState()
    c_state = CodingState()
    aa = tables[0]
    positions_written = False
    codons = sites = None
    comp = 0
    for a in range(nseq):
        for b in range(a + 1, nseq):
            comp += 1
            win = 0
            while True:
                if window:
                    win += 1
                    size, step = opt.window
                    rfirst = 1 + (win - 1) * step
                    rlast = size + (win - 1) * step
                    if rlast > seq_length:
                        rlast = seq_length
                    codons, sites = filter_alignment(cells, seqs, opt.coding, opt.code,
                                                     (rfirst - 1) // 3 + 1, rlast // 3, None)
                elif codons is None:
                    if region is None:
                        rfirst, rlast = 1, 3 * ncells
                        codons, sites = filter_alignment(cells, seqs, opt.coding, opt.code, 1, ncells, None)
                    else:
                        rfirst, rlast = region
                        codons, sites = filter_alignment(cells, seqs, opt.coding, opt.code,
                                                         (rfirst - 1) // 3 + 1, rlast // 3, region)
                clean_total = len(codons[0])
                nuc_count = len(sites[0])
                # positions block, once per run
                if not positions_written:
                    positions_written = True
                    if window:
                        w(" Number of Total Nucleotide positions: " + str(seq_length) + CRLF)
                    elif region is None:
                        w(" Number of Nucleotide positions: " + str(seq_length))
                    else:
                        w(" Number of Total Nucleotide positions: " + str(seq_length) + CRLF)
                        w(CRLF)
                        w(" Region analyzed :" + str(rfirst) + " -" + str(rlast) + " nuc." + CRLF)
                        if opt.coding:
                            c1, c2 = 1 + (rfirst - 1) // 3, rlast // 3
                            w(" " * 18 + str(c1) + " -" + str(c2) + " codon" + CRLF)
                            w(" Number of Codons in Region:     " + str(c2 - c1 + 1))
                        else:
                            w(" Number of Nucleotide positions in Region: " + str(rlast - rfirst + 1))
                    if not window:
                        w(region_text + CRLF)
                    else:
                        w(CRLF)
                    if not window and opt.restrict not in ("max1", "aa"):
                        count = 3 * clean_total if opt.coding else nuc_count
                        w(" Number of Analyzed positions:   " + str(count) + CRLF)
                first_window = (not window) or win == 1
                if window and first_window and pair_count > 1:
                    table.append(names[a] + CRLF + names[b] + CRLF)
                middle = plain(rfirst + (rlast - rfirst) / 2)

                if not opt.coding:
                    p1, p2 = sites[a], sites[b]
                    if pair_count > 1:
                        if comp == 1 and first_window:
                            w(CRLF)
                        if first_window:
                            w(" Comparison # " + str(comp) + CRLF)
                    elif not window:
                        w(CRLF)
                    if first_window:
                        w(STAR_LINE + CRLF + " Seq. A: " + names[a] + CRLF + " Seq. B: " + names[b] + CRLF)
                    if window:
                        w(WINDOW_LINE + CRLF + " WINDOW #" + str(win) + CRLF)
                        w(" Nuc:" + str(rfirst) + " -" + str(rlast) + CRLF)
                        w(" Number of Nucleotide positions in Region: " + str(rlast - rfirst + 1) + CRLF)
                        w(" Number of Analyzed positions:   " + str(nuc_count) + CRLF)
                    if nuc_count == 0:
                        w(CRLF + " " + NA + CRLF)
                        res.report = "".join(out)
                        res.table = "".join(table)
                        return res
                    w(CRLF)
                    est = noncoding_estimates(p1, p2, nc_state)
                    fd = est["P"] + est["Q"]
                    appl = {m: not (fd > 0 and est["K"][m] == 0) for m in NONCODING_METHODS}
                    if pair_count <= 40:
                        w("                 A         G         C         T" + CRLF)
                        c1, c2 = est["counts1"], est["counts2"]
                        w(" Seq. A : " + "".join(cell(c1[x], " ####0.00 ", 10) for x in "AGCT") + CRLF)
                        w(" Seq. B : " + "".join(cell(c2[x], " ####0.00 ", 10) for x in "AGCT") + CRLF)
                        w("  MEAN  : " + "".join(cell((c1[x] + c2[x]) / 2, " ####0.00 ", 10) for x in "AGCT") + CRLF)
                        w(CRLF)
                        w(" Obs.Subst.Frq.   Fd=" + cell(fd, "###0.00000 ", 10) + CRLF)
                    for m in opt.methods:
                        w(_nc_method_line(m, est, appl[m]) + CRLF)
                    if not window:
                        w(CRLF)
                    k = est["K"]
                    row = [None] * 10
                    for col, m in ((1, "jc"), (2, "k2p"), (5, "tn"), (6, "t1p"), (7, "t2p"), (8, "t4p")):
                        row[col] = fmt(k[m], "0.0000", m == "t2p") if appl[m] else " N.A. "
                    row[3] = fmt(est["A"], "0.0000") if appl["k2p"] else " N.A. "
                    row[4] = fmt(est["B"], "0.0000") if appl["k2p"] else " N.A. "
                    row[9] = fmt(fd, "0.0000")
                    if len(res.store) < comp:
                        res.store.append(row)
                    else:
                        res.store[comp - 1] = row
                    if window:
                        vals = [str(rfirst), str(rlast), middle]
                        for m in opt.methods:
                            vals.append(fmt(k[m], "###0.00000 ", m == "t2p") if appl[m] else "N.A.")
                        table.append("\t".join(vals) + CRLF)
                else:
                    pc1, pc2 = select_pair(codons, a, b, opt, aa)
                    codon_count = len(pc1)
                    if pair_count > 1:
                        if comp == 1 and first_window:
                            w(CRLF)
                        if first_window and (comp == 1 or window):
                            w(STAR_LINE + CRLF)
                        if first_window:
                            w(" Comparison # " + str(comp) + CRLF)
                    else:
                        w(CRLF)
                    if first_window:
                        w(" Seq. A: " + names[a] + CRLF + " Seq. B: " + names[b] + CRLF)
                    if opt.restrict in ("max1", "aa"):
                        w(" Number of Analyzed positions:   " + str(3 * codon_count) + CRLF)
                    if window:
                        cf, cl = 1 + (rfirst - 1) // 3, 1 + (rlast - 1) // 3
                        w(WINDOW_LINE + CRLF + " WINDOW #" + str(win) + CRLF)
                        w("     nuc:" + str(rfirst) + " -" + str(rlast) + CRLF)
                        w("   codon:" + str(cf) + " -" + str(cl) + CRLF)
                        w(" Number of Nucleotide positions in Region: " + str(3 * (1 + cl - cf)) + CRLF)
                        w(" Number of Analyzed positions:   " + str(3 * codon_count) + CRLF)
                    if codon_count == 0:
                        w(CRLF + " " + NA + CRLF + STAR_LINE + CRLF)
                        res.report = "".join(out)
                        res.table = "".join(table)
                        return res
                    syn, non = account_changes(pc1, pc2, opt.code, opt.weight, tables)
                    st_sites, ts, tv = site_classes(pc1, pc2, syn, non, tables)
                    if pair_count <= 40:
                        w(CRLF)
                        w("* MEAN        total        A         G         C         T" + CRLF)
                        labels = ["  0-fold : ", " 2S-fold : ", " 2V-fold : ", "  4-fold : "]
                        tot = [0.0] * 5
                        for cls in range(4):
                            vals = [st_sites[cls]] + [st_sites[4 + 4 * g + cls] for g in range(4)]
                            for k in range(5):
                                tot[k] = f32(tot[k] + vals[k]) if VARIANT["totals_single"] else tot[k] + vals[k]
                            w(labels[cls] + "".join(cell(v, " ####0.00 ", 10, True) for v in vals) + CRLF)
                        w("  Total  : " + "".join(cell(v, " ####0.00 ", 10, VARIANT["totals_single"]) for v in tot) + CRLF)
                        w(CRLF)
                        w("              total      0-fold   2S-fold   2V-fold    4-fold" + CRLF)
                        for lab, arr in ((" Obs.TRS : ", ts), (" Obs.TRV : ", tv)):
                            ssum = 0.0
                            for v in arr:
                                ssum = f32(ssum + v) if VARIANT["totals_single"] else ssum + v
                            w(lab + cell(ssum, " ####0.00 ", 10, VARIANT["totals_single"])
                              + "".join(cell(v, " ####0.00 ", 10, True) for v in arr) + CRLF)
                    w(CRLF)
                    e = coding_estimates(st_sites, ts, tv, c_state)
                    s_ses = fmt(e["ses"], "####0.00")
                    s_nes = fmt(e["nes"], "####0.00", True)
                    F5 = "###0.00000 "
                    if not kimura_run:
                        w("  Ks= " + fmt(e["ks_jc"], F5) + " " * (10 - len(s_ses)) + "(" + s_ses + " S.E.S." + ")" + e["ks_jc_note"] + CRLF)
                        if opt.restrict != "aa":
                            w("  Ka= " + fmt(e["ka_jc"], F5) + " " * (10 - len(s_nes)) + "(" + s_nes + " N.E.S." + ")" + e["ka_jc_note"] + CRLF)
                    else:
                        if not e["ks_k_note"]:
                            w(" Ks= " + fmt(e["ks_k"], F5) + " (As= " + fmt(e["As"], F5) + " Bs= " + fmt(e["Bs"], "###0.00000")
                              + ")  " + " " * (8 - len(s_ses)) + "(" + s_ses + " S.E.S." + ")" + e["ks_k_note"] + CRLF)
                        else:
                            w(" Ks= " + e["ks_k_note"] + CRLF)
                        if opt.restrict != "aa":
                            if not e["ka_k_note"]:
                                w(" Ka= " + fmt(e["ka_k"], F5) + " (Aa= " + fmt(e["Aa"], F5) + " Ba= " + fmt(e["Ba"], "###0.00000")
                                  + ")  " + " " * (8 - len(s_nes)) + "(" + s_nes + " N.E.S." + ")" + e["ka_k_note"] + CRLF)
                            else:
                                w(" Ka= " + e["ka_k_note"] + CRLF)
                        if e["ks_k_note"]:
                            w(CRLF + " M.-hits Correcting Method: Jukes and Cantor -1p" + CRLF)
                            w(" Ks= " + fmt(e["ks_jc"], F5) + e["ks_jc_note"] + CRLF)
                        if e["ka_k_note"] and opt.restrict != "aa":
                            w(CRLF + " M.-hits Correcting Method: Jukes and Cantor -1p" + CRLF)
                            w(" Ka= " + fmt(e["ka_jc"], F5) + e["ka_jc_note"] + CRLF)
                    if pair_count > 1 and not window:
                        w(STAR_LINE + CRLF)
                    if kimura_run:
                        row = [None] * 10
                        row[1] = " N.A. " if e["ks_jc_note"] else e["ks_jc"]
                        row[2] = " N.A. " if e["ka_jc_note"] else e["ka_jc"]
                        for col, key in ((3, "ks_k"), (5, "As"), (6, "Bs")):
                            row[col] = " N.A. " if e["ks_k_note"] else e[key]
                        for col, key in ((4, "ka_k"), (7, "Aa"), (8, "Ba")):
                            row[col] = " N.A. " if e["ka_k_note"] else e[key]
                        if len(res.store) < comp:
                            res.store.append(row)
                        else:
                            res.store[comp - 1] = row
                    if window:
                        if kimura_run:
                            ks = "N.A." if e["ks_k_note"] else fmt(e["ks_k"], " #0.00000 ")
                            ka = "N.A." if e["ka_k_note"] else fmt(e["ka_k"], " #0.00000 ")
                        else:
                            ks = "N.A." if e["ks_jc_note"] else fmt(e["ks_jc"], " #0.00000 ")
                            ka = "N.A." if e["ka_jc_note"] else fmt(e["ka_jc"], " #0.00000 ")
                        table.append("\t".join([str(rfirst), str(rlast), middle, ks, ka]) + CRLF)
                if window and rlast < seq_length:
                    continue
                break
    res.report = "".join(out)
    res.table = "".join(table)
    return res


MATRIX_ITEMS = {"fd": 9, "jc": 1, "k2p": 2, "k2p-trs": 3, "k2p-trv": 4, "tn": 5,
                "t1p": 6, "t2p": 7, "t4p": 8,
                "ks": 3, "ka": 4, "trss": 5, "trsa": 7, "trvs": 6, "trva": 8}


def matrix_rows(res, column):
    """Column line, blank line and the lower-left rows of the matrix file."""
    n = res.seq_count
    pair_count = n * (n - 1) // 2
    head = "   "
    for i in range(1, n):
        head += "#" + str(i) + (" " * 7 if i < 10 else " " * 6)
    rows = [""] * (n - 1)
    counter = 0
    c = 0
    while counter < pair_count:
        c += 1
        for r in range(1, n):
            rows[r - 1] += "  "
            if r < c:
                cell_text = " " * 6
            else:
                counter += 1
                v = res.store[counter - 1][column]
                if v == " N.A. ":
                    cell_text = v
                elif isinstance(v, str):
                    cell_text = fmt(float(v), "0.0000")
                else:
                    cell_text = fmt(v, "0.0000")
            rows[r - 1] += cell_text + " "
    text = head + CRLF + CRLF
    for r in range(1, n):
        text += rows[r - 1] + "    #" + str(r + 1) + CRLF
    return text + CRLF


# ---------------------------------------------------------------------------
# MEGA files
# ---------------------------------------------------------------------------

def write_mega(path, title, alignment):
    lines = ["#MEGA", "TITLE: " + title, ""]
    for name, seq in alignment:
        lines.append("#" + name)
        for k in range(0, len(seq), 60):
            lines.append(seq[k:k + 60])
    with open(path, "w", newline="") as fh:
        fh.write("\n".join(lines) + "\n")


def read_mega(path):
    """Reads the plain sequential MEGA files written by write_mega."""
    alignment = []
    started = False
    with open(path) as fh:
        lines = fh.read().splitlines()
    for line in lines[1:]:
        if line.startswith("#"):
            started = True
            parts = line[1:].split(None, 1)
            alignment.append([parts[0] if parts else "", parts[1].replace(" ", "") if len(parts) > 1 else ""])
        elif started:
            alignment[-1][1] += line.replace(" ", "").replace("\t", "")
    return [(n, s) for n, s in alignment]


# ---------------------------------------------------------------------------
# Golden data
# ---------------------------------------------------------------------------

TRANSITION_OF = {"A": "G", "G": "A", "C": "T", "T": "C"}


def _mutate_base(rng, base):
    if rng.random() < 2 / 3:
        return TRANSITION_OF[base]
    return rng.choice([x for x in "ACGT" if x != base and x != TRANSITION_OF[base]])


def _mutate_nc(rng, seq, rate):
    return "".join(_mutate_base(rng, ch) if rng.random() < rate else ch for ch in seq)


def _put_gap(seq, start, length, ch="-"):
    return seq[:start] + ch * length + seq[start + length:]


def make_noncoding_2(seed):
    rng = random.Random(seed)
    anc = "".join(rng.choice("ACGT") for _ in range(300))
    s1 = _mutate_nc(rng, anc, 0.05)
    s2 = _mutate_nc(rng, anc, 0.05)
    s1 = _put_gap(s1, 40, 3)
    s2 = _put_gap(s2, 121, 2)
    s2 = _put_gap(s2, 250, 1)
    return [("Alpha", s1), ("Beta", s2)]


def make_noncoding_5(seed):
    rng = random.Random(seed)
    anc = "".join(rng.choice("ACGT") for _ in range(600))
    out = []
    for k in range(5):
        out.append(_mutate_nc(rng, anc, 0.05 + 0.01 * k))
    out[2] = out[1]  # an identical pair: (2,3)
    out[0] = _put_gap(out[0], 100, 4)
    out[3] = _put_gap(out[3], 301, 2)
    out[4] = _put_gap(out[4], 455, 1, "N")
    out[1] = _put_gap(out[1], 520, 3)
    out[2] = _put_gap(out[2], 520, 3)
    return [("Seq%d" % (k + 1), s) for k, s in enumerate(out)]


def make_noncoding_10(seed):
    rng = random.Random(seed)
    anc = "".join(rng.choice("ACGT") for _ in range(200))
    out = [_mutate_nc(rng, anc, 0.03 + 0.01 * (k % 5)) for k in range(10)]
    out[6] = _put_gap(out[6], 77, 2)
    out[8] = _put_gap(out[8], 150, 1, "N")
    return [("Taxon_%d" % (k + 1), s) for k, s in enumerate(out)]


def _sense_codons(aa, exclude=()):
    return sorted(c for c, a in aa.items() if a != "STOP" and c not in exclude)


def _mutate_coding(rng, codons, aa, rate, syn_bias, stops):
    out = []
    for c in codons:
        if rng.random() < rate:
            for _ in range(20):
                p = rng.randrange(3)
                nb = _mutate_base(rng, c[p])
                nc = c[:p] + nb + c[p + 1:]
                if nc in stops or aa[nc] == "STOP":
                    continue
                if aa[nc] != aa[c] and rng.random() > syn_bias:
                    continue
                c = nc
                break
        out.append(c)
    return out


def make_coding_6(seed):
    rng = random.Random(seed)
    aa = build_tables("universal")[0]
    sense = _sense_codons(aa)
    anc = ["ATG"] + [rng.choice(sense) for _ in range(299)]
    seqs = []
    for k in range(6):
        s = _mutate_coding(rng, anc, aa, 0.10 + 0.02 * k, 0.15, STOP_LIST["universal"])
        s = _mutate_coding(rng, s, aa, 0.05, 0.3, STOP_LIST["universal"])
        seqs.append(s)
    seqs[0][0] = seqs[1][0] = seqs[2][0] = seqs[3][0] = seqs[4][0] = seqs[5][0] = "ATG"
    # codon pairs that differ at all three positions and at two positions
    seqs[0][57], seqs[5][57] = "TTT", "GAA"
    seqs[1][123], seqs[4][123] = "TTA", "GTT"
    seqs[2][200], seqs[3][200] = "CGA", "AGG"
    seqs[0][230], seqs[2][230] = "ATT", "ATA"
    seqs[5][250] = "TGG"
    seqs[1][250] = "TAT"
    stops = ["TAA", "TAG", "TGA", "TAA", "TGA", "TAG"]
    texts = []
    for k in range(6):
        s = seqs[k] + [stops[k]]
        t = "".join(s)
        texts.append(t)
    texts[1] = _put_gap(texts[1], 3 * 40, 3)
    texts[3] = _put_gap(texts[3], 3 * 172, 3)
    texts[4] = _put_gap(texts[4], 3 * 95 + 1, 1, "N")
    texts[0] = _put_gap(texts[0], 3 * 281, 3)
    return [("Seq%d" % (k + 1), t) for k, t in enumerate(texts)]


def make_mito(seed):
    rng = random.Random(seed)
    aa = build_tables("vertmito")[0]
    sense = _sense_codons(aa)
    anc = ["ATG"] + [rng.choice(sense) for _ in range(179)]
    for k, c in ((10, "TGA"), (20, "ATA"), (30, "AGC"), (40, "CGG"), (50, "ATT"), (60, "TGA")):
        anc[k] = c
    seqs = [_mutate_coding(rng, anc, aa, 0.12 + 0.03 * k, 0.2, STOP_LIST["vertmito"]) for k in range(4)]
    seqs[0][20], seqs[1][20], seqs[2][20], seqs[3][20] = "ATA", "ATG", "ATA", "ATT"
    seqs[0][30], seqs[1][30], seqs[2][30], seqs[3][30] = "AGC", "AGT", "AGC", "AGC"
    seqs[0][10], seqs[3][10] = "TGA", "TGG"
    seqs[1][40], seqs[2][40] = "CGG", "CGA"
    seqs[2][77], seqs[3][77] = "ATA", "GTG"
    stops = ["AGA", "TAA", "AGG", "TAG"]
    texts = ["".join(seqs[k] + [stops[k]]) for k in range(4)]
    texts[2] = _put_gap(texts[2], 3 * 99, 3)
    return [("Mito%d" % (k + 1), t) for k, t in enumerate(texts)]


def make_kept(seed):
    """Codons without 2V-fold sites but one ATA column; seq 4 has ATG there."""
    rng = random.Random(seed)
    aa = build_tables("universal")[0]
    sense = _sense_codons(aa, exclude=("ATT", "ATC", "ATA", "CGA", "CGG", "AGA", "AGG"))
    anc = ["ATG"] + [rng.choice(sense) for _ in range(149)]
    anc[70] = "ATA"
    seqs = []
    for k in range(4):
        s = anc
        for _ in range(4):
            s = _mutate_coding(rng, s, aa, 0.04, 0.15, STOP_LIST["universal"])
            s = [c if aa[c] not in ("ILE",) and c not in ("CGA", "CGG", "AGA", "AGG") else anc[i]
                 for i, c in enumerate(s)]
        s[70] = "ATA"
        seqs.append(s)
    seqs[3][70] = "ATG"
    texts = ["".join(s) for s in seqs]
    return [("Kept%d" % (k + 1), t) for k, t in enumerate(texts)]


def check_integral_counts(alignment, opt):
    """True when every pair's P*n, Q*n and p*n are whole numbers in doubles."""
    cells = [cut_cells(s) for _, s in alignment]
    ranges = []
    n = len(alignment[0][1])
    if opt.window:
        size, step = opt.window
        k = 1
        while True:
            f, l = 1 + (k - 1) * step, min(size + (k - 1) * step, n)
            ranges.append(((f - 1) // 3 + 1, l // 3, None))
            if l >= n:
                break
            k += 1
    elif opt.region:
        ranges.append(((opt.region[0] - 1) // 3 + 1, opt.region[1] // 3, opt.region))
    else:
        ranges.append((1, len(cells[0]), None))
    for fc, lc, reg in ranges:
        _, sites = filter_alignment(cells, None, False, "universal", fc, lc, reg)
        m = len(sites[0])
        for a in range(len(sites)):
            for b in range(a + 1, len(sites)):
                pr = {"AG": 0, "AC": 0, "AT": 0, "GC": 0, "GT": 0, "CT": 0}
                for x, y in zip(sites[a], sites[b]):
                    if x != y:
                        pr[x + y if x + y in pr else y + x] += 1
                P = pr["AG"] / m + pr["CT"] / m
                Q = pr["AT"] / m + pr["GC"] / m + pr["GT"] / m + pr["AC"] / m
                if not ((P * m).is_integer() and (Q * m).is_integer() and ((P + Q) * m).is_integer()
                        and (P * m + Q * m).is_integer()):
                    return False
    return True


def run_variants(alignment, opt, matrix_col=None, stop_at_difference=False):
    """Outputs under the main reading and under each number-type variant."""
    outs = []
    keys = list(VARIANT)
    for flip in [None] + keys:
        for k in keys:
            VARIANT[k] = (k == flip)
        try:
            r = divergence_report(alignment, opt)
            outs.append((r.report, r.table, matrix_rows(r, matrix_col) if matrix_col else ""))
        finally:
            for k in keys:
                VARIANT[k] = False
        if stop_at_difference and outs[-1] != outs[0]:
            break
    return outs


def robust(alignment, opt, matrix_col=None):
    outs = run_variants(alignment, opt, matrix_col, True)
    return all(o == outs[0] for o in outs)


def _write(path, text):
    with open(path, "w", newline="") as fh:
        fh.write(text)


def generate_goldens(root):
    def pick(maker, checks, start):
        seed = start
        while True:
            aln = maker(seed)
            ok = True
            for opt, col, need_integral, forbid_na in checks:
                try:
                    if need_integral and not check_integral_counts(aln, opt):
                        ok = False
                        break
                    if not robust(aln, opt, col):
                        ok = False
                        break
                    r = divergence_report(aln, opt)
                    if forbid_na and "NO APPLICABLE" in r.report:
                        ok = False
                        break
                except (StopCodonError, NoPathwayError, EmptyClassError, ValueError, ZeroDivisionError):
                    ok = False
                    break
            sys.stderr.write("%s seed %d: %s\n" % (maker.__name__, seed, "taken" if ok else "rejected"))
            if ok:
                return aln, seed
            seed += 1

    manifest = []
    all6 = NONCODING_METHODS

    def emit(folder, files, inputs=()):
        d = os.path.join(root, folder)
        os.makedirs(d, exist_ok=True)
        for name, title, aln in inputs:
            write_mega(os.path.join(d, name), title, aln)
        for name, text in files:
            _write(os.path.join(d, name), text)

    # noncoding, 2 sequences
    o_all = Options(coding=False, methods=all6)
    aln2, seed2 = pick(make_noncoding_2, [(o_all, None, True, True)], 1)
    in2 = ("input.meg", "noncoding pair", aln2)
    emit("noncoding_all_2seq", [("report.txt", divergence_report(aln2, o_all).report)], [in2])
    manifest.append(("noncoding_all_2seq", "input.meg", "--noncoding --method all",
                     [("report.txt", "report")]))

    # noncoding, 5 sequences (+ region and windows on the same input)
    o_reg = Options(coding=False, methods=all6, region=(31, 250))
    o_win = Options(coding=False, methods=("jc", "k2p"), window=(180, 60))
    aln5, seed5 = pick(make_noncoding_5, [(o_all, 2, True, True), (o_reg, None, True, True),
                                          (o_win, None, False, True)], 1)
    in5 = ("input.meg", "noncoding five", aln5)
    r5 = divergence_report(aln5, o_all)
    emit("noncoding_all_5seq", [("report.txt", r5.report), ("matrix_k2p.txt", matrix_rows(r5, 2))], [in5])
    manifest.append(("noncoding_all_5seq", "input.meg", "--noncoding --method all --matrix k2p",
                     [("report.txt", "report"),
                      ("matrix_k2p.txt", "matrix rows, item Kimura-2p K (store column 2)")]))

    # coding, 6 sequences
    o_k = Options(coding=True)
    o_max1 = Options(coding=True, restrict="max1")
    o_no3 = Options(coding=True, restrict="no3")
    o_aa = Options(coding=True, restrict="aa")
    o_w9 = Options(coding=True, weight=0.9)
    o_jc = Options(coding=True, coding_method="jc")
    o_creg = Options(coding=True, region=(31, 600))
    o_cwin = Options(coding=True, window=(450, 150))
    checks6 = [(o_aa, None, False, False), (o_k, 3, False, True), (o_max1, None, False, True),
               (o_no3, None, False, True), (o_w9, None, False, True), (o_jc, None, False, True),
               (o_creg, None, False, True), (o_cwin, None, False, True)]
    aln6, seed6 = pick(make_coding_6, checks6, 1)
    in6 = ("input.meg", "coding six", aln6)
    rk = divergence_report(aln6, o_k)
    emit("coding_kimura_6seq", [("report.txt", rk.report), ("matrix_ks.txt", matrix_rows(rk, 3))], [in6])
    manifest.append(("coding_kimura_6seq", "input.meg", "--code universal --matrix ks",
                     [("report.txt", "report"),
                      ("matrix_ks.txt", "matrix rows, item Kimura Ks (store column 3)")]))
    emit("coding_restrictions", [
        ("report_max1.txt", divergence_report(aln6, o_max1).report),
        ("report_no3.txt", divergence_report(aln6, o_no3).report),
        ("report_aa.txt", divergence_report(aln6, o_aa).report),
        ("report_w09.txt", divergence_report(aln6, o_w9).report)], [in6])
    for flag, name in (("max1", "report_max1.txt"), ("no3", "report_no3.txt"), ("aa", "report_aa.txt")):
        manifest.append(("coding_restrictions", "input.meg", "--code universal --restrict " + flag,
                         [(name, "report")]))
    manifest.append(("coding_restrictions", "input.meg", "--code universal --weight 0.9",
                     [("report_w09.txt", "report")]))
    emit("coding_jc", [("report.txt", divergence_report(aln6, o_jc).report)], [in6])
    manifest.append(("coding_jc", "input.meg", "--code universal --method jc", [("report.txt", "report")]))

    # region
    emit("region", [("report.txt", divergence_report(aln5, o_reg).report),
                    ("report_coding.txt", divergence_report(aln6, o_creg).report)],
         [in5, ("input_coding.meg", "coding six", aln6)])
    manifest.append(("region", "input.meg", "--noncoding --method all --region 31-250",
                     [("report.txt", "report")]))
    manifest.append(("region", "input_coding.meg", "--code universal --region 31-600",
                     [("report_coding.txt", "report")]))

    # windows
    rw = divergence_report(aln5, o_win)
    rcw = divergence_report(aln6, o_cwin)
    emit("window", [("report.txt", rw.report), ("table.win", rw.table),
                    ("report_coding.txt", rcw.report), ("table_coding.win", rcw.table)],
         [in5, ("input_coding.meg", "coding six", aln6)])
    manifest.append(("window", "input.meg", "--noncoding --method jc,k2p --window 180:60",
                     [("report.txt", "report"), ("table.win", "window table (WindowDataText)")]))
    manifest.append(("window", "input_coding.meg", "--code universal --window 450:150",
                     [("report_coding.txt", "report"), ("table_coding.win", "window table (WindowDataText)")]))

    # many sequences
    o_many = Options(coding=False, methods=("k2p",))
    aln10, seed10 = pick(make_noncoding_10, [(o_many, None, False, True)], 1)
    emit("many", [("report.txt", divergence_report(aln10, o_many).report)],
         [("input.meg", "ten taxa", aln10)])
    manifest.append(("many", "input.meg", "--noncoding --method k2p", [("report.txt", "report")]))

    # vertebrate mitochondrial code
    o_mito = Options(coding=True, code="vertmito")
    alnm, seedm = pick(make_mito, [(o_mito, None, False, True)], 1)
    emit("mito", [("report.txt", divergence_report(alnm, o_mito).report)],
         [("input.meg", "vertebrate mitochondrial", alnm)])
    manifest.append(("mito", "input.meg", "--code vertmito", [("report.txt", "report")]))

    # values kept from the previous pair after a nonsynonymous fail
    o_kept = Options(coding=True)
    seedk = 1
    while True:
        alnk = make_kept(seedk)
        try:
            rr = divergence_report(alnk, o_kept)
            if (rr.report.count(" Ka= NO APPLICABLE") == 3 and " Ks= NO APPLICABLE" not in rr.report
                    and robust(alnk, o_kept)):
                break
        except (StopCodonError, NoPathwayError, EmptyClassError, ValueError, ZeroDivisionError):
            pass
        seedk += 1
    emit("coding_kept", [("report.txt", rr.report)], [("input.meg", "kept values", alnk)])
    manifest.append(("coding_kept", "input.meg", "--code universal", [("report.txt", "report")]))

    lines = ["Golden outputs of the divergence run, derived by tests/reference/varnoth_reference.py",
             "(regenerate: python3 tests/reference/varnoth_reference.py goldens tests/golden).",
             "",
             "report*.txt  ReportText only: from the analysis title line to the end, without the",
             "             date head of the saved .out file.",
             "*.win        WindowDataText, as saved to the .win file.",
             "matrix_*.txt the .dis file from the column line on: column line, blank line, rows,",
             "             closing blank line (the head above it holds a date and a path).",
             "All line ends are CRLF. Flags not given are the start-up options: coding mode,",
             "universal code, Kimura-2p, no restriction, weight 0.5, whole sequence.",
             "",
             "Contents worth knowing:",
             "  noncoding_all_5seq: Seq2 and Seq3 are identical, so comparison 5 prints K = 0",
             "    with Kimura A and B kept from comparison 4.",
             "  coding inputs end with a stop-codon column (dropped by the filter); they hold",
             "    '---' codons, one N, codon pairs with two and three differences.",
             "  mito: TGA, ATA and AGC/AGT codons (placed amounts above the credited ones),",
             "    a last column of AGA/AGG/TAA/TAG stops.",
             "  coding_kept: Kept4 has ATG where the others have ATA (the only 2V-fold site),",
             "    so comparisons 3, 5, 6 fail Kimura Ka and print S.E.S. kept from the pair before.",
             ""]
    for folder, inp, flags, outs in manifest:
        lines.append("%s/ : varnoth run %s %s" % (folder, inp, flags))
        for name, what in outs:
            lines.append("    %-18s %s" % (name, what))
    lines.append("")
    lines.append("Generator seeds: 2seq %d, 5seq %d, 6seq %d, many %d, mito %d, kept %d"
                 % (seed2, seed5, seed6, seed10, seedm, seedk))
    _write(os.path.join(root, "MANIFEST.txt"), "\n".join(lines) + "\n")


# ---------------------------------------------------------------------------
# Command line
# ---------------------------------------------------------------------------

def _options_from_args(ns):
    coding = not ns.noncoding
    methods = ("k2p",)
    coding_method = "kimura"
    if ns.method:
        if ns.method == "all":
            methods = NONCODING_METHODS
        else:
            methods = tuple(ns.method.split(","))
        if coding:
            coding_method = "jc" if methods == ("jc",) else "kimura"
    region = tuple(int(v) for v in ns.region.split("-")) if ns.region else None
    window = tuple(int(v) for v in ns.window.split(":")) if ns.window else None
    return Options(coding=coding, methods=methods, coding_method=coding_method, code=ns.code,
                   restrict=ns.restrict, weight=ns.weight, region=region, window=window)


def main(argv=None):
    ap = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    sub = ap.add_subparsers(dest="cmd", required=True)
    r = sub.add_parser("run")
    r.add_argument("input")
    r.add_argument("--noncoding", action="store_true")
    r.add_argument("--method")
    r.add_argument("--code", default="universal", choices=CODES)
    r.add_argument("--restrict", choices=("max1", "no3", "aa"))
    r.add_argument("--weight", type=float, default=0.5)
    r.add_argument("--region")
    r.add_argument("--window")
    r.add_argument("--matrix")
    r.add_argument("--report")
    r.add_argument("--table")
    r.add_argument("--matrix-out")
    g = sub.add_parser("goldens")
    g.add_argument("dir")
    ns = ap.parse_args(argv)
    if ns.cmd == "goldens":
        generate_goldens(ns.dir)
        return 0
    opt = _options_from_args(ns)
    res = divergence_report(read_mega(ns.input), opt)
    if ns.report:
        _write(ns.report, res.report)
    else:
        sys.stdout.write(res.report.replace(CRLF, "\n"))
    if ns.table:
        _write(ns.table, res.table)
    if ns.matrix:
        text = matrix_rows(res, MATRIX_ITEMS[ns.matrix])
        if ns.matrix_out:
            _write(ns.matrix_out, text)
        else:
            sys.stdout.write(text.replace(CRLF, "\n"))
    return 0


if __name__ == "__main__":
    sys.exit(main())
