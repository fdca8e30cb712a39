#!/usr/bin/env bash
# Installs what is missing, builds Tarvoke and starts it. Without a desktop
# (no DISPLAY), it says so and plays the demo script as a dry run instead.
set -euo pipefail
cd "$(dirname "$0")"
.ci/install-deps.sh
cmake -S . -B build -G Ninja -DCMAKE_BUILD_TYPE=RelWithDebInfo >/dev/null
cmake --build build
if [ -z "${DISPLAY:-}" ]; then
  echo "run.sh: no desktop (DISPLAY is not set); playing examples/demo.tk as a dry run instead" >&2
  exec build/bin/tarvoke-play --dry-run examples/demo.tk "$@"
fi
exec build/bin/tarvoke "$@"
