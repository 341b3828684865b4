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
export LC_ALL=C  # a "." in the times, for awk
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

# Best wall times in seconds of `varnoth run ARGS` on 2 threads and on 1,
# printed in that order: the two counts are run in turn, $runs times each
# (default $rounds) after one warm-up each, so that both meet the same moments
# of a shared host (its CPUs change speed from one minute to the next), and the
# report file is removed, untimed, before each run. The fastest run of each
# count is the one that tells the program's own speed: other tenants only ever
# add time.
best_threads() {
  local runs=${runs:-$rounds} i t start end
  for t in 2 1; do
    rm -f "$out"
    "$varnoth" run "$@" --threads "$t" -o "$out" >/dev/null || return 1
  done
  for i in $(seq "$runs"); do
    for t in 2 1; do
      rm -f "$out"
      start=$EPOCHREALTIME
      "$varnoth" run "$@" --threads "$t" -o "$out" >/dev/null || exit 1
      end=$EPOCHREALTIME
      echo "$t $start $end"
    done
  done | awk '{ d = $3 - $2; if (!($1 in best) || d < best[$1]) best[$1] = d }
    END { printf "%.4f %.4f", best[2], best[1] }'
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
ratio2() { awk -v a="$1" -v b="$2" 'BEGIN { printf "%.2fx", a / b }'; }
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
echo "| alignment | pairs | varnoth coding, 2 threads | 1 thread | 1 / 2 threads | seqinr kaks() | kaks / varnoth | yn00 | yn00 / varnoth | varnoth noncoding (six methods), 2 threads | 1 thread | 1 / 2 threads | ape JC69 | ape / varnoth |"
echo "| --- | ---: | ---: | ---: | ---: | ---: | ---: | ---: | ---: | ---: | ---: | ---: | ---: | ---: |"
seed=1
for size in 20x1500 100x1500 400x1500 50x30000; do
  n=${size%x*}
  len=${size#*x}
  phy="$work/a$n-$len.phy"
  fasta="$work/a$n-$len.fasta"
  "$build/make_alignment" "$n" "$len" 0.02 "$seed" "$phy" "$fasta"
  seed=$((seed + 1))
  coding=$(best_threads "$phy")
  noncoding=$(best_threads "$phy" --noncoding --method all)
  read -r c2 c1 <<<"$coding"
  read -r n2 n1 <<<"$noncoding"
  kaks=- jc=- yn=-
  [ $have_r = 1 ] && read -r kaks jc < <(Rscript "$work/r.R" "$fasta" "$rounds")
  if [ $have_yn00 = 1 ]; then
    mkdir -p "$work/yn"
    printf 'seqfile = %s\noutfile = %s\nverbose = 0\nicode = 0\nweighting = 0\ncommonf3x4 = 0\n' \
      "$phy" "$work/yn/out" >"$work/yn/yn00.ctl"
    yn=$(cd "$work/yn" && once_time yn00 yn00.ctl)
  fi
  echo "| $n x $len | $((n * (n - 1) / 2)) | $(seconds "$c2") | $(seconds "$c1") | $(ratio2 "$c1" "$c2") | $(seconds "$kaks") | $(ratio "$kaks" "$c2") | $(seconds "$yn") | $(ratio "$yn" "$c2") | $(seconds "$n2") | $(seconds "$n1") | $(ratio2 "$n1" "$n2") | $(seconds "$jc") | $(ratio "$jc" "$n2") |"
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
big=$(runs=3 best_threads "$work/big.phy")
read -r big2 big1 <<<"$big"
rm -f "$out"
/usr/bin/time -v "$varnoth" run "$work/big.phy" --threads 2 -o "$out" 2>"$work/time.txt" >/dev/null
peak=$(awk -F: '/Maximum resident set size/ { printf "%.0f", $2 / 1024 }' "$work/time.txt")
echo
echo "2000 x 1500 coding, 1999000 pairs, report to a file ($(du -m "$out" | cut -f1) MB), best of 3: $(seconds "$big2") s on 2 threads, $(seconds "$big1") s on 1 ($(ratio2 "$big1" "$big2")); peak resident memory $peak MB"
if command -v taskset >/dev/null; then
  echo
  echo "Before the 2000 x 1500 runs, $before."
  echo "After them, $(cpu_speeds)."
fi
