#!/usr/bin/env bash
# Renders the pictures of the README's screen commands: a calculator drawn
# in SVG, its "=" key, what each kind of picture search compares, and the
# picture --explain writes for a search that misses.
#   docs/screen/make.sh [BUILD_DIR]
set -euo pipefail
cd "$(dirname "$0")/../.."
build=${1:-build}
cmake --build "$build" --target tarvoke-play
rsvg-convert docs/screen/calculator.svg -o docs/screen/calculator.png
python3 docs/screen/pictures.py docs/screen/calculator.png docs/screen
out=$(mktemp -d)
trap 'rm -rf "$out"' EXIT
(cd docs/screen && "../../$build/bin/tarvoke-play" --dry-run --screen-image calculator.png --explain "$out" explain.tk)
cp "$out/explain-2.png" docs/screen/explain.png
