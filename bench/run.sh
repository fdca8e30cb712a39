#!/usr/bin/env bash
# Builds the benchmarks in Release and runs them, then prints a summary
# against the targets: load, run loop without and with the real yield,
# variable look-up. Usage: bench/run.sh [extra Google Benchmark options]
set -euo pipefail
cd "$(dirname "$0")/.."
.ci/install-deps.sh

build=build-bench
cmake -S . -B "$build" -G Ninja -DCMAKE_BUILD_TYPE=Release -DTARVOKE_BENCHMARKS=ON >/dev/null
cmake --build "$build" -j "$(nproc)" --target tarvoke_bench tarvoke-play

out=$(mktemp -d)
trap 'rm -rf "$out"' EXIT
echo "== benchmarks"
"$build/bin/tarvoke_bench" --benchmark_out="$out/main.json" --benchmark_out_format=json "$@"

echo "== the player end to end: tarvoke-play --dry-run on a loop of 300,001 statements"
passes=100000
printf 'Function(Main);\nInt(i, 0);\nWhile(i < %d);\n  Add(i, 1);\nEndWhile();\nEndFunction();\n' $passes >"$out/loop.tk"
/usr/bin/env time -f '%e %U %S' -o "$out/player.time" "$build/bin/tarvoke-play" --dry-run "$out/loop.tk"

python3 bench/summary.py "$out/main.json" "$out/player.time" $((3 * passes + 3))
echo "== the checker: tarvoke-play --check beside --load-only on a 10 MB recording"
python3 bench/check_speed.py "$build/bin/tarvoke-play"

echo "== the desktop: pause accuracy, injection rate"
bench/desktop.sh "$build"
echo "== screen analysis"
bench/screen/run.sh
echo "== the recorder: record then replay, beside cnee"
cmake --build "$build" --target tarvoke-testwindow >/dev/null
bench/recorder/run.sh "$build"
echo "== headless runs: from tarvoke-play --headless to the first action, beside xvfb-run"
if ! command -v xauth >/dev/null; then  # xvfb-run needs it
  sudo=""
  [ "$(id -u)" -ne 0 ] && sudo="sudo"
  $sudo apt-get install -y -qq --no-install-recommends xauth
fi
python3 bench/headless_start.py "$build/bin/tarvoke-play" 20
echo "== compiled programs: from the start to the first action, beside tarvoke-play; the size"
.ci/with-desktop.sh --no-wm python3 bench/compiled_start.py "$build/bin/tarvoke-play" 20
echo "== the windows: play start, editor keystroke, hotkey"
cmake --build "$build" --target app_bench >/dev/null
.ci/with-desktop.sh "$build/bin/app_bench"
echo "== the network: loopback throughput of the socket class, beside socat"
cmake --build "$build" --target tarvoke_net_bench >/dev/null
bench/net/run.sh "$build"
