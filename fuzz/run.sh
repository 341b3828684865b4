#!/usr/bin/env bash
# Builds the fuzz targets with libFuzzer, AddressSanitizer and
# UndefinedBehaviorSanitizer (clang++-14, build dir build-fuzz) and runs each
# for SECONDS, one after the other.
#
#   bash fuzz/run.sh SECONDS [TARGET...]
#
# The seeds in fuzz/corpus/<target>/ and the inputs in fuzz/regressions/<target>/
# are read; new inputs go to build-fuzz/corpus/<target>/, a failing input to
# build-fuzz/artifacts/<target>/ and the log to build-fuzz/logs/<target>.log.
# Exits 1 if any target found a failure.
set -euo pipefail
cd "$(dirname "$0")/.."
seconds=${1:?usage: fuzz/run.sh SECONDS [TARGET...]}
shift
targets=("$@")
[ ${#targets[@]} -eq 0 ] && targets=(fuzz_readers fuzz_text fuzz_handlers fuzz_run)
build=${VARNOTH_FUZZ_BUILD_DIR:-build-fuzz}

command -v clang++-14 >/dev/null || {
  echo "fuzz/run.sh: clang++-14 is needed (apt-get install clang-14 libclang-rt-14-dev)" >&2
  exit 2
}
CXX=clang++-14 cmake -S . -B "$build" -G Ninja -DCMAKE_BUILD_TYPE=RelWithDebInfo \
  -DVARNOTH_FUZZ=ON -DVARNOTH_TESTS=OFF -DVARNOTH_GUI=OFF -DVARNOTH_BENCH=OFF >/dev/null
cmake --build "$build" -j "$(nproc)" --target "${targets[@]}"

export ASAN_OPTIONS=${ASAN_OPTIONS:-detect_leaks=1:abort_on_error=1}
export UBSAN_OPTIONS=${UBSAN_OPTIONS:-print_stacktrace=1:halt_on_error=1}
failed=0
for t in "${targets[@]}"; do
  mkdir -p "$build/corpus/$t" "$build/artifacts/$t" "$build/logs" "fuzz/regressions/$t"
  log="$build/logs/$t.log"
  extra=()
  [ "$t" = fuzz_readers ] && extra+=(-max_len=65536)
  echo "== $t for ${seconds}s (log: $log)"
  if "$build/$t" -max_total_time="$seconds" -timeout=10 -rss_limit_mb=2048 \
      -print_final_stats=1 -artifact_prefix="$build/artifacts/$t/" "${extra[@]}" \
      "$build/corpus/$t" "fuzz/corpus/$t" "fuzz/regressions/$t" >"$log" 2>&1; then
    result=ok
  else
    result=FAILED
    failed=1
  fi
  # The last status line: executions, coverage, features, corpus.
  status=$(grep -E '^#[0-9]+' "$log" | tail -n 1 || true)
  execs=$(grep -E '^stat::number_of_executed_units' "$log" | awk '{print $2}' || true)
  echo "   $result: ${execs:-?} executions; last: ${status:-none}"
  [ "$result" = FAILED ] && grep -E 'ERROR|INVARIANT|SUMMARY|Test unit written' "$log" | head -n 5
done
exit $failed
