#!/usr/bin/env bash
# The screen benchmarks beside their peers, on one private 1920x1080 Xvfb:
# capture (ImageMagick's import and scrot to a file), the colour search
# (one memchr pass over the same bytes), image matching and LocateImage
# (xautomation's visgrep and OpenCV's matchTemplate on the same pictures),
# a finding search with and without --explain, saturation.
# Usage: bench/screen/run.sh [extra Google Benchmark options]
set -euo pipefail
cd "$(dirname "$0")/../.."
.ci/install-deps.sh

peers=(imagemagick scrot xautomation python3-opencv time)
missing=()
for package in "${peers[@]}"; do
  dpkg-query -W -f='${Status}' "$package" 2>/dev/null | grep -q "install ok installed" || missing+=("$package")
done
if [ ${#missing[@]} -gt 0 ]; then
  sudo=""
  [ "$(id -u)" -ne 0 ] && sudo="sudo"
  DEBIAN_FRONTEND=noninteractive $sudo apt-get install -y -qq --no-install-recommends "${missing[@]}"
fi

build=${TARVOKE_BENCH_BUILD:-build-bench}
cmake -S . -B "$build" -G Ninja -DCMAKE_BUILD_TYPE=Release -DTARVOKE_BENCHMARKS=ON >/dev/null
cmake --build "$build" -j "$(nproc)" --target tarvoke_screen_bench

out=$(mktemp -d)
trap 'rm -rf "$out"' EXIT
[ -n "${TARVOKE_BENCH_KEEP:-}" ] && trap - EXIT && echo "results in $out"
"$build/bin/tarvoke_screen_bench" --write-pictures "$out"
.ci/with-desktop.sh bash -c '
  set -euo pipefail
  out=$1; shift
  "$@" --benchmark_repetitions=5 --benchmark_report_aggregates_only=true \
    --benchmark_out="$out/screen.json" --benchmark_out_format=json
  # Peers, each ten times, CPU time of the whole process as /usr/bin/time gives it.
  for tool in import scrot; do
    : >"$out/$tool.time"
    for i in $(seq 10); do
      case $tool in
        import) /usr/bin/time -a -o "$out/$tool.time" -f "%e %U %S" import -window root "$out/shot.bmp" ;;
        scrot) /usr/bin/time -a -o "$out/$tool.time" -f "%e %U %S" scrot -o "$out/shot.png" ;;
      esac
    done
  done
' _ "$out" "$build/bin/tarvoke_screen_bench" "$@"

: >"$out/visgrep.time"
for i in 1 2 3; do
  /usr/bin/time -a -o "$out/visgrep.time" -f "%e %U %S" visgrep -t 2 "$out/screen.png" "$out/sub.png" "$out/sub.png" \
    >"$out/visgrep.out" || true
done
# Debian's own Python, which holds the python3-opencv bindings.
/usr/bin/python3 bench/screen/opencv_match.py "$out/screen.png" "$out/sub.png" 10 >"$out/opencv.out"
python3 bench/screen/summary.py "$out"
