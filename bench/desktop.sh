#!/usr/bin/env bash
# The desktop benchmarks: pause accuracy beside Python and Qt, the
# injection rate beside xdotool and xte on a private Xvfb, and click-then-type
# beside xdotool. Called by
# bench/run.sh after the engine benchmarks, or alone.
# usage: bench/desktop.sh [BUILD_FOLDER]
set -euo pipefail
cd "$(dirname "$0")/.."
build=${1:-build-bench}

if ! dpkg-query -W -f='${Status}' xautomation 2>/dev/null | grep -q "install ok installed"; then
  sudo=""
  [ "$(id -u)" -ne 0 ] && sudo="sudo"
  $sudo apt-get install -y -qq --no-install-recommends xautomation
fi

cmake -S . -B "$build" -G Ninja -DCMAKE_BUILD_TYPE=Release -DTARVOKE_BENCHMARKS=ON >/dev/null
cmake --build "$build" -j "$(nproc)" --target tarvoke_pause_accuracy tarvoke-play tarvoke-testwindow

echo "== pause accuracy"
python3 bench/pause_accuracy.py "$build/bin/tarvoke_pause_accuracy" 50
# Without a window manager: the senders and the X server alone.
echo "== injection rate (Xvfb, no window manager)"
.ci/with-desktop.sh --no-wm python3 bench/injection_rate.py "$build/bin/tarvoke-play" "$build/bin/tarvoke-testwindow" 1000
# With openbox, whose grab holds every click on a client window until it has
# raised the window: every click must still arrive.
echo "== injection rate (Xvfb with openbox)"
.ci/with-desktop.sh python3 bench/injection_rate.py "$build/bin/tarvoke-play" "$build/bin/tarvoke-testwindow" 1000 5 xte
echo "== click, then type into the clicked window (Xvfb with openbox)"
.ci/with-desktop.sh python3 bench/click_type.py "$build/bin/tarvoke-play" "$build/bin/tarvoke-testwindow" 100 3
