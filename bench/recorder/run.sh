#!/usr/bin/env bash
# Record-then-replay fidelity of the recorder beside cnee, on a private X
# server. Usage: bench/recorder/run.sh [BUILD_DIR]   (default: build)
set -euo pipefail
cd "$(dirname "$0")/../.."
build=${1:-build}
if ! command -v cnee >/dev/null || ! command -v xte >/dev/null; then
  sudo=""; [ "$(id -u)" -ne 0 ] && sudo="sudo"
  DEBIAN_FRONTEND=noninteractive $sudo apt-get install -y -qq cnee xautomation >/dev/null
fi
cmake --build "$build" --target tarvoke-play tarvoke-testwindow >/dev/null
.ci/with-desktop.sh python3 bench/recorder/fidelity.py "$build/bin" 2>&1 | grep -v -e NOTIFICATION -e Workaround -e "can ignore"
