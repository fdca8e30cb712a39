#!/usr/bin/env bash
# Installs what is missing, builds Tarvoke and starts it.
set -euo pipefail
cd "$(dirname "$0")"
.ci/install-deps.sh
cmake -S . -B build -G Ninja -DCMAKE_BUILD_TYPE=RelWithDebInfo >/dev/null
cmake --build build
exec build/bin/tarvoke-play --dry-run examples/demo.tk "$@"
