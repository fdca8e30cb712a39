#!/usr/bin/env bash
# Builds a fuzz target with clang (libFuzzer, AddressSanitizer,
# UndefinedBehaviorSanitizer) and fuzzes it for a bounded time, starting from
# the scripts of the tests and the examples and the inputs kept in
# tests/fuzz/corpus (scripts that once hung, aborted or ran out of memory).
# Any crash, leak, sanitizer report or input slower than the timeout fails
# the run; the input is left in build-fuzz/findings-TARGET.
# Usage: tests/fuzz/run.sh [SECONDS] [loader|player|net]
set -euo pipefail
cd "$(dirname "$0")/../.."
seconds=${1:-25}
target=${2:-loader}
build=build-fuzz

CC=clang-14 CXX=clang++-14 cmake -S . -B "$build" -G Ninja -DCMAKE_BUILD_TYPE=RelWithDebInfo \
  -DTARVOKE_FUZZ=ON -DTARVOKE_CORE_ONLY=ON -DTARVOKE_BENCHMARKS=OFF >/dev/null
cmake --build "$build" -j "$(nproc)" --target "tarvoke_${target}_fuzz"

corpus="$build/corpus-$target"
findings="$build/findings-$target"
rm -rf "$findings"
mkdir -p "$corpus" "$findings"
find tests/scripts examples tests/fuzz/corpus -name '*.tk' -exec cp {} "$corpus/" \;

# -timeout bounds one input; -max_total_time the whole run; the outer timeout
# guards against the fuzzer itself hanging.
timeout --kill-after=10 $((seconds + 60)) "$build/bin/tarvoke_${target}_fuzz" "$corpus" \
  -max_total_time="$seconds" -timeout=10 -rss_limit_mb=2048 -max_len=4096 \
  -artifact_prefix="$findings/" -print_final_stats=1 2>"$build/fuzz-$target.log" || {
  tail -n 60 "$build/fuzz-$target.log"
  echo "fuzzing the $target failed; the input is in $findings" >&2
  exit 1
}
grep -E '^(Done|stat::number_of_executed_units)' "$build/fuzz-$target.log" || true
