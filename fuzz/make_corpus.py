#!/usr/bin/env python3
"""Writes the seed corpora of the fuzz targets from the bundled examples.

    python3 fuzz/make_corpus.py

fuzz/corpus/<target>/ is rewritten; the files are small and kept in the tree.
Each seed is laid out as its target reads its bytes (see the head of each
fuzz_*.cpp).
"""
import os
import struct

ROOT = os.path.dirname(os.path.dirname(os.path.abspath(__file__)))
CORPUS = os.path.join(ROOT, "fuzz", "corpus")

# fuzz_readers.cpp: kNames and kPreviousCounts.
NAMES = ["in.aln", "in.phy", "in.PHY", "in.Phy", "in.gde", "in.meg", "in.msf", "in.pir",
         "in.lwl", "in.txt", "in", "d.x/in.phy", "in.fa", "in.FASTA", "d.x/in"]
FORMATS = ["gde", "lwl", "mega", "pir", "clustal", "msf", "phylip", "fasta"]
NO_FORMAT = 31
PREVIOUS = [0, 1, 2, 3, 5, 10, 120, 0.5, 2.5, 99999, 100000, 1e18]
# fuzz_alignment.h: kLetters.
LETTERS = "ACGTACGTACGTACGTACGTacgt-N.?"


def write(target, name, data):
    folder = os.path.join(CORPUS, target)
    os.makedirs(folder, exist_ok=True)
    with open(os.path.join(folder, name), "wb") as f:
        f.write(data)


def examples():
    for kind in ("coding", "noncoding", "malformed"):
        folder = os.path.join(ROOT, "examples", kind)
        for name in sorted(os.listdir(folder)):
            with open(os.path.join(folder, name), "rb") as f:
                yield kind, name, f.read()


def reader_seeds():
    by_extension = {"aln": 0, "phy": 1, "gde": 4, "meg": 5, "msf": 6, "pir": 7, "lwl": 8,
                    "fa": 12, "fasta": 13, "fas": 12, "afa": 12}
    for kind, name, data in examples():
        ext = name.rsplit(".", 1)[-1]
        index = by_extension.get(ext, NAMES.index("in.txt"))
        # A fixed PHYLIP header reads the counts left from the file before.
        count = PREVIOUS.index(3) if name == "fixed_header.txt" else 0
        length = PREVIOUS.index(120) if name == "fixed_header.txt" else 0
        write("fuzz_readers", f"{kind}-{name}", bytes([index, count, length, NO_FORMAT]) + data)
    # The same PHYLIP file under the three spellings of its extension, and a
    # Windows copy with CRLF line ends and a UTF-8 byte order mark.
    with open(os.path.join(ROOT, "examples", "coding", "primates.phy"), "rb") as f:
        phy = f.read()
    for ext in ("in.PHY", "in.Phy", "d.x/in.phy"):
        write("fuzz_readers", f"coding-primates-{ext.replace('/', '_')}",
              bytes([NAMES.index(ext), 0, 0, NO_FORMAT]) + phy)
    with open(os.path.join(ROOT, "examples", "coding", "primates.meg"), "rb") as f:
        meg = f.read()
    write("fuzz_readers", "coding-primates-windows.meg",
          bytes([5, 0, 0, NO_FORMAT]) + b"\xef\xbb\xbf" + meg.replace(b"\n", b"\r\n"))
    # FASTA by extension and by name, and a file read as each named format.
    with open(os.path.join(ROOT, "examples", "malformed", "fasta_like.aln"), "rb") as f:
        fasta = f.read()
    for ext in ("in.fa", "in.FASTA"):
        write("fuzz_readers", f"fasta-{ext}", bytes([NAMES.index(ext), 0, 0, NO_FORMAT]) + fasta)
    for i, name in enumerate(FORMATS):
        write("fuzz_readers", f"named-{name}", bytes([NAMES.index("in.txt"), 0, 0, i]) + fasta)
        write("fuzz_readers", f"named-{name}-meg", bytes([NAMES.index("in.txt"), 0, 0, i]) + meg)


def sequences(data, limit=7, length=64):
    """The first sequences of an example MEGA file (sequential or interleaved)."""
    rows, current = {}, None
    for line in data.decode("latin-1").splitlines()[1:]:
        if line.startswith("#"):
            name, _, rest = line[1:].partition(" ")
            current = rows.setdefault(name, [])
            current.append(rest.replace(" ", ""))
        elif current is not None and not line.startswith("!"):
            current.append(line.replace(" ", ""))
    return ["".join(r)[:length] for r in list(rows.values())[:limit]]


def alignment_bytes(rows):
    length = min(len(r) for r in rows)
    out = bytes([len(rows) - 2, length - 1])
    for i, row in enumerate(rows):
        if i > 0:
            out += bytes([0])  # drawn whole
        for c in row[:length]:
            out += bytes([LETTERS.index(c) if c in LETTERS else LETTERS.index("N")])
    return out


def alignments():
    for kind in ("coding", "noncoding"):
        name = "primates.meg" if kind == "coding" else "introns.meg"
        with open(os.path.join(ROOT, "examples", kind, name), "rb") as f:
            rows = sequences(f.read())
        yield kind, alignment_bytes(rows)
        yield kind + "-three", alignment_bytes(rows[:3])
        yield kind + "-two-codons", alignment_bytes([r[:6] for r in rows[:2]])


def run_seeds():
    # noncoding flag, method bits, code, restriction, weight, range, first, second
    settings = {
        "coding-kimura": [0, 0, 0, 3, 9, 0, 0, 0],
        "coding-jc-max1": [0, 1, 0, 0, 9, 0, 0, 0],
        "coding-mito-weight": [0, 0, 1, 3, 3, 0, 0, 0],
        "coding-dromito-region": [0, 0, 2, 1, 9, 1, 4, 50],
        "coding-window": [0, 0, 0, 2, 9, 2, 19, 3],
        "noncoding-all": [1, 63, 0, 3, 9, 0, 0, 0],
        "noncoding-window": [1, 63, 0, 3, 9, 2, 9, 5],
        "noncoding-region": [1, 5, 0, 3, 9, 1, 2, 40],
    }
    for kind, align in alignments():
        for name, values in settings.items():
            if name.split("-")[0] != kind.split("-")[0]:
                continue
            write("fuzz_run", f"{kind}-{name}", bytes(values) + align)


def handler_seeds():
    # Each typed line is followed by a byte whose low bit says whether the
    # entry is accepted.
    scripts = {
        "run-matrix": [18, 19, 20, 0, 0, 1, 1],
        "noncoding-all-matrix": [1, 3, 18, 19, 20, 2, 0, 1, 1],
        "region": [15, 16] + list(b"10\n40\n") + [1, 18, 17, 1, 18],
        "windows": [11, 12] + list(b"30\n9\n") + [1, 18, 13, 18],
        "weight": [8, 9] + list(b"0.3\n") + [1, 18, 7, 8, 9] + list(b"0,75\n") + [1, 18],
        "options": [2, 0, 4, 1, 5, 0, 18, 6, 4, 2, 18, 1, 2, 3, 2, 5, 18, 0, 21],
        "bad-entries": [8, 9] + list(b"1.5\n") + [1, 11, 12] + list(b"5\n1\n") + [1, 15, 16]
        + list(b"0\n9999\n") + [1, 17, 0, 18],
        "huge-entries": [8, 9] + list(b"1e39\n") + [1, 8, 9] + list(b"-1e300\n") + [1, 11, 12]
        + list(b"1e300\n1e300\n") + [1, 15, 16] + list(b"1e-300\n1e300\n") + [1, 18, 21],
        # Accepted windows, then the boxes edited and the page cancelled: the
        # run reads the boxes.
        "edited-window-boxes": [11, 12] + list(b"30\n9\n") + [1, 11, 12] + list(b"5\n1\n")
        + [0, 14, 18],
    }
    for kind, align in alignments():
        for name, script in scripts.items():
            write("fuzz_handlers", f"{kind}-{name}", bytes([1]) + align + bytes(script))


def text_seeds():
    typed = ["0.5", "1,5", "1.234,5", "1E-07", "99999", "-0.00001", "2.675", "0.75", "12ab",
             "  7.5e+300", "1e999", "-0", ".5", "1D3", "abc", ""]
    raw = [0.0, -0.0, 1e-300, 5e-324, 1.7976931348623157e308, 0.1, 2.675, 99999.5, -123.456]
    for i, t in enumerate(typed):
        value = raw[i % len(raw)]
        write("fuzz_text", f"typed-{i:02d}", bytes([i % 16]) + t.encode() + b"\n" +
              struct.pack("<d", value))
    write("fuzz_text", "own-pattern", bytes([16]) + b"##0.0# x\n3.14159\n" + struct.pack("<d", 0.5))


def main():
    for target in ("fuzz_readers", "fuzz_run", "fuzz_handlers", "fuzz_text"):
        folder = os.path.join(CORPUS, target)
        if os.path.isdir(folder):
            for name in os.listdir(folder):
                os.remove(os.path.join(folder, name))
    reader_seeds()
    run_seeds()
    handler_seeds()
    text_seeds()


if __name__ == "__main__":
    main()
