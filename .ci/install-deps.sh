#!/usr/bin/env bash
# Installs the Debian packages Tarvoke needs to build, test and run, and only
# those that are missing. Safe to run again and again.
set -euo pipefail

packages=(
  cmake ninja-build g++ pkg-config python3
  qt6-base-dev libgl-dev
  libx11-dev libx11-xcb-dev libxcb1-dev libxcb-xtest0-dev libxtst-dev libxi-dev libxext-dev
  libgtest-dev libgmock-dev libbenchmark-dev
  clang-14 libclang-rt-14-dev
  xvfb openbox x11-utils xdotool xautomation
  zlib1g-dev librsvg2-bin dpkg-dev file man-db bash-completion desktop-file-utils appstream lintian
)

missing=()
for package in "${packages[@]}"; do
  dpkg-query -W -f='${Status}' "$package" 2>/dev/null | grep -q "install ok installed" || missing+=("$package")
done
[ ${#missing[@]} -eq 0 ] && exit 0

echo "Installing: ${missing[*]}"
sudo=""
[ "$(id -u)" -ne 0 ] && sudo="sudo"
export DEBIAN_FRONTEND=noninteractive
$sudo apt-get update -qq
$sudo apt-get install -y -qq --no-install-recommends "${missing[@]}"
