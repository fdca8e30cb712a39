#!/usr/bin/env bash
# Builds the loader's fuzz target with clang (libFuzzer, AddressSanitizer,
# UndefinedBehaviorSanitizer) and fuzzes it for a bounded time, starting from
# the scripts of the tests and the examples. Any crash, leak, sanitizer report
# or input slower than the timeout fails the run; the input is left in
# build-fuzz/findings. Usage: tests/fuzz/run.sh [SECONDS]
set -euo pipefail
cd "$(dirname "$0")/../.."
seconds=${1:-25}
build=build-fuzz

CC=clang-14 CXX=clang++-14 cmake -S . -B "$build" -G Ninja -DCMAKE_BUILD_TYPE=RelWithDebInfo \
  -DTARVOKE_FUZZ=ON -DTARVOKE_CORE_ONLY=ON -DTARVOKE_BENCHMARKS=OFF >/dev/null
cmake --build "$build" -j "$(nproc)" --target tarvoke_loader_fuzz

corpus="$build/corpus"
findings="$build/findings"
rm -rf "$findings"
mkdir -p "$corpus" "$findings"
find tests/scripts examples -name '*.tk' -exec cp {} "$corpus/" \;

# -timeout bounds one input; -max_total_time the whole run; the outer timeout
# guards against the fuzzer itself hanging.
timeout --kill-after=10 $((seconds + 60)) "$build/bin/tarvoke_loader_fuzz" "$corpus" \
  -max_total_time="$seconds" -timeout=10 -rss_limit_mb=2048 -max_len=4096 \
  -artifact_prefix="$findings/" -print_final_stats=1 2>"$build/fuzz.log" || {
  tail -n 60 "$build/fuzz.log"
  echo "fuzzing the loader failed; the input is in $findings" >&2
  exit 1
}
grep -E '^(Done|stat::number_of_executed_units)' "$build/fuzz.log" || true
