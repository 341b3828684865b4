#!/usr/bin/env bash
# Times whole `varnoth run` processes against the tools users compare it with,
# on the same generated alignments, and prints one Markdown table of seconds
# and ratios, then the time and peak memory of a 2000 x 1500 coding run.
#
#   bash bench/compare.sh [ROUNDS]      (default 5; the best of the rounds is reported)
#
# Peers, each where installed (bash scripts/setup --bench installs them):
# R's seqinr::kaks() and ape::dist.dna(model = "JC69"), timed inside R on
# alignments already read (R's start-up and reading left out), and PAML's yn00
# as a whole process, timed once (it is slow). varnoth is timed as a whole
# process that reads the file and writes its report to a new file: the report
# of the run before is removed, untimed, before each run (replacing a large old
# file makes the run wait for the file system to free it: 0.18 s for the
# 480 MB report of the 2000 x 1500 run on this machine's ext4 with discard).
# Alignments: 20, 100 and 400 sequences of 1500 nt, and 50 of 30000 nt; every
# nucleotide changed with probability 2 % from an ancestor (pairs about 5 %
# apart), no stop codon.
set -euo pipefail
cd "$(dirname "$0")/.."
rounds=${1:-5}
build=${VARNOTH_BENCH_BUILD:-build-bench}

cmake -S . -B "$build" -G Ninja -DCMAKE_BUILD_TYPE=Release -DVARNOTH_BENCH=ON \
  -DVARNOTH_TESTS=OFF -DVARNOTH_GUI=OFF >/dev/null
cmake --build "$build" --target varnoth make_alignment varnoth_bench >/dev/null
varnoth=$(realpath "$build/varnoth")
have_r=0
Rscript -e 'suppressMessages({library(seqinr); library(ape)})' >/dev/null 2>&1 && have_r=1
have_yn00=0
command -v yn00 >/dev/null && have_yn00=1

# No "." in the folder: the extension is read behind the first "." of the path.
work=$(mktemp -d /tmp/varnoth-bench-XXXXXX)
trap 'rm -rf "$work"' EXIT
out="$work/report.out"

# Best wall time in seconds of a command, over $runs runs (default $rounds)
# after one warm-up, with the report file removed before each: on a shared
# machine the other tenants only ever add time, so the fastest run is the one
# that tells the program's own speed.
best_time() {
  local runs=${runs:-$rounds}
  if command -v hyperfine >/dev/null; then
    hyperfine -N --warmup 1 --runs "$runs" --prepare "rm -f $out" --export-csv "$work/h.csv" \
      "$*" >"$work/h.log" 2>&1 || { cat "$work/h.log" >&2; exit 1; }
    awk -F, 'NR == 2 { printf "%.4f", $7 }' "$work/h.csv"  # command,mean,stddev,median,user,system,min,max
  else
    "$@" >/dev/null 2>&1
    for _ in $(seq "$runs"); do
      local start end
      rm -f "$out"
      start=$(date +%s.%N)
      "$@" >/dev/null 2>&1
      end=$(date +%s.%N)
      echo "$end - $start" | bc -l
    done | sort -g | awk 'NR == 1 { printf "%.4f", $1 }'
  fi
}

# Seconds of one run of a command.
once_time() {
  local start end
  start=$(date +%s.%N)
  "$@" >/dev/null 2>&1
  end=$(date +%s.%N)
  echo "$end - $start" | bc -l | awk '{ printf "%.3f", $1 }'
}

ratio() { [ "$1" = "-" ] && { echo "-"; return; }; awk -v a="$1" -v b="$2" 'BEGIN { printf "%.1fx", a / b }'; }
seconds() { [ "$1" = "-" ] && echo "-" || awk -v a="$1" 'BEGIN { printf "%.3f", a }'; }

cat >"$work/r.R" <<'EOF'
suppressMessages({ library(seqinr); library(ape) })
args <- commandArgs(TRUE)
rounds <- as.integer(args[2])
aln <- read.alignment(args[1], format = "fasta")
dna <- read.dna(args[1], format = "fasta")
kaks_times <- replicate(rounds, system.time(kaks(aln))[["elapsed"]])
jc_times <- replicate(rounds, system.time(dist.dna(dna, model = "JC69"))[["elapsed"]])
cat(sprintf("%.4f %.4f\n", min(kaks_times), min(jc_times)))
EOF

echo "$(date +%Y-%m-%d), $(nproc) cores, $(grep -m1 'model name' /proc/cpuinfo | cut -d: -f2 | sed 's/^ *//'); best of $rounds runs (yn00: one run)"
echo
echo "| alignment | pairs | varnoth coding, 2 threads | 1 thread | seqinr kaks() | kaks / varnoth | yn00 | yn00 / varnoth | varnoth noncoding (six methods), 2 threads | 1 thread | ape JC69 | ape / varnoth |"
echo "| --- | ---: | ---: | ---: | ---: | ---: | ---: | ---: | ---: | ---: | ---: | ---: |"
seed=1
for size in 20x1500 100x1500 400x1500 50x30000; do
  n=${size%x*}
  len=${size#*x}
  phy="$work/a$n-$len.phy"
  fasta="$work/a$n-$len.fasta"
  "$build/make_alignment" "$n" "$len" 0.02 "$seed" "$phy" "$fasta"
  seed=$((seed + 1))
  c2=$(best_time "$varnoth" run "$phy" --threads 2 -o "$out")
  c1=$(best_time "$varnoth" run "$phy" --threads 1 -o "$out")
  n2=$(best_time "$varnoth" run "$phy" --noncoding --method all --threads 2 -o "$out")
  n1=$(best_time "$varnoth" run "$phy" --noncoding --method all --threads 1 -o "$out")
  kaks=- jc=- yn=-
  [ $have_r = 1 ] && read -r kaks jc < <(Rscript "$work/r.R" "$fasta" "$rounds")
  if [ $have_yn00 = 1 ]; then
    mkdir -p "$work/yn"
    printf 'seqfile = %s\noutfile = %s\nverbose = 0\nicode = 0\nweighting = 0\ncommonf3x4 = 0\n' \
      "$phy" "$work/yn/out" >"$work/yn/yn00.ctl"
    yn=$(cd "$work/yn" && once_time yn00 yn00.ctl)
  fi
  echo "| $n x $len | $((n * (n - 1) / 2)) | $(seconds "$c2") | $(seconds "$c1") | $(seconds "$kaks") | $(ratio "$kaks" "$c2") | $(seconds "$yn") | $(ratio "$yn" "$c2") | $(seconds "$n2") | $(seconds "$n1") | $(seconds "$jc") | $(ratio "$jc" "$n2") |"
done

# How fast each virtual CPU computes on its own just now: the coding benchmark
# (100 x 500 codons, report to memory) on one thread pinned to each CPU, best
# of three. On a shared host they differ from one minute to the next, and two
# threads can be at most (sum of the speeds) / (the fastest) times faster than
# one thread on the fastest CPU.
cpu_speeds() {
  local c speeds=""
  for c in $(seq 0 $(($(nproc) - 1))); do
    speeds="$speeds $(for _ in 1 2 3; do
      taskset -c "$c" "$build/varnoth_bench" --benchmark_filter='^Coding/100/500/1/8$' \
        --benchmark_min_time=0.3 --benchmark_format=csv 2>/dev/null |
        awk -F, '/^"Coding/ { print $11 }'
    done | sort -g | tail -1)"
  done
  echo "$speeds" | awk '{ sum = 0; max = 0; line = ""
    for (i = 1; i <= NF; i++) { sum += $i; if ($i > max) max = $i
      line = line sprintf("%scpu%d %.0fk", i > 1 ? ", " : "", i - 1, $i / 1000) }
    printf "pairs/s one thread on each virtual CPU: %s; so two threads at most %.2fx one thread on the fastest", line, sum / max }'
}
command -v taskset >/dev/null && before=$(cpu_speeds)

"$build/make_alignment" 2000 1500 0.02 9 "$work/big.phy" "$work/big.fasta"
# Best of three: each run takes seconds.
big2=$(runs=3 best_time "$varnoth" run "$work/big.phy" --threads 2 -o "$out")
big1=$(runs=3 best_time "$varnoth" run "$work/big.phy" --threads 1 -o "$out")
rm -f "$out"
/usr/bin/time -v "$varnoth" run "$work/big.phy" --threads 2 -o "$out" 2>"$work/time.txt" >/dev/null
peak=$(awk -F: '/Maximum resident set size/ { printf "%.0f", $2 / 1024 }' "$work/time.txt")
echo
echo "2000 x 1500 coding, 1999000 pairs, report to a file ($(du -m "$out" | cut -f1) MB), best of 3: $(seconds "$big2") s on 2 threads, $(seconds "$big1") s on 1 ($(ratio "$big1" "$big2")); peak resident memory $peak MB"
if command -v taskset >/dev/null; then
  echo
  echo "Before the 2000 x 1500 runs, $before."
  echo "After them, $(cpu_speeds)."
fi
