#!/usr/bin/env bash
# Renders the screenshots of the windows on a private desktop:
#   docs/screenshots/make.sh [BUILD_DIR]
set -euo pipefail
cd "$(dirname "$0")/../.."
build=${1:-build}
cmake --build "$build" --target tarvoke-screenshots
unset QT_QPA_PLATFORM
.ci/with-desktop.sh "$build/bin/tarvoke-screenshots" docs/screenshots
