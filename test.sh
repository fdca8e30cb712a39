#!/usr/bin/env bash
# Installs what is missing, builds Tarvoke and runs every test: the logic and
# script tests in parallel, a sanitizer pass over the core and the player, a
# bounded fuzzing run of the script loader and of the dry-run player,
# and the desktop tests one at a time on a private X server.
set -euo pipefail
cd "$(dirname "$0")"
.ci/install-deps.sh

jobs=$(nproc)
export QT_QPA_PLATFORM=offscreen

echo "== build"
cmake -S . -B build -G Ninja -DCMAKE_BUILD_TYPE=RelWithDebInfo >/dev/null
cmake --build build -j "$jobs"

echo "== tests"
ctest --test-dir build -j "$jobs" -LE desktop --output-on-failure

echo "== sanitizer pass (AddressSanitizer, UndefinedBehaviorSanitizer)"
cmake -S . -B build-asan -G Ninja -DCMAKE_BUILD_TYPE=Debug -DTARVOKE_SANITIZE=ON -DTARVOKE_CORE_ONLY=ON \
  -DTARVOKE_BENCHMARKS=OFF >/dev/null
cmake --build build-asan -j "$jobs"
ctest --test-dir build-asan -j "$jobs" -LE desktop --output-on-failure

echo "== fuzzing the script loader (libFuzzer, 25 s)"
tests/fuzz/run.sh 25 loader
echo "== fuzzing the dry-run player (libFuzzer, 25 s)"
tests/fuzz/run.sh 25 player
echo "== fuzzing what the network reads (libFuzzer, 15 s)"
tests/fuzz/run.sh 15 net

if ctest --test-dir build -N -L desktop | grep -q "Total Tests: [1-9]"; then
  echo "== desktop tests"
  .ci/with-desktop.sh ctest --test-dir build -L desktop --output-on-failure
fi
