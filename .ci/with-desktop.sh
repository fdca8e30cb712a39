#!/usr/bin/env bash
# Runs a command on a private X desktop: one Xvfb at 1920x1080 on a free
# display, with openbox as the window manager. The command starts once the
# window manager has announced itself on the root window, with DISPLAY set,
# and the desktop goes away again whatever happens to the command.
# Usage: .ci/with-desktop.sh [--no-wm] COMMAND [ARGUMENTS...]
# --no-wm leaves out the window manager (benchmarks: openbox grabs every click
# on a client window to raise it, which sets the pace of a flood of clicks).
set -euo pipefail

with_wm=1
if [ "${1:-}" = "--no-wm" ]; then
  with_wm=""
  shift
fi

if [ $# -eq 0 ]; then
  echo "usage: $0 COMMAND [ARGUMENTS...]" >&2
  exit 2
fi

workdir=$(mktemp -d "${TMPDIR:-/tmp}/tarvoke-desktop.XXXXXX")
xvfb_pid=""
wm_pid=""

cleanup() {
  set +e
  if [ -n "$wm_pid" ]; then kill "$wm_pid" 2>/dev/null; wait "$wm_pid" 2>/dev/null; fi
  if [ -n "$xvfb_pid" ]; then kill "$xvfb_pid" 2>/dev/null; wait "$xvfb_pid" 2>/dev/null; fi
  rm -rf "$workdir"
}
trap cleanup EXIT
trap 'exit 130' INT
trap 'exit 143' TERM

# Xvfb picks a free display itself and writes its number to fd 3.
Xvfb -displayfd 3 -screen 0 1920x1080x24 -noreset -nolisten tcp \
  3>"$workdir/display" 2>"$workdir/xvfb.log" &
xvfb_pid=$!

for _ in $(seq 100); do
  [ -s "$workdir/display" ] && break
  kill -0 "$xvfb_pid" 2>/dev/null || { echo "with-desktop: Xvfb did not start:" >&2; cat "$workdir/xvfb.log" >&2; exit 1; }
  sleep 0.05
done
[ -s "$workdir/display" ] || { echo "with-desktop: Xvfb gave no display number" >&2; exit 1; }
export DISPLAY=":$(head -n1 "$workdir/display")"
unset WAYLAND_DISPLAY

if [ -z "$with_wm" ]; then
  status=0
  "$@" || status=$?
  exit "$status"
fi

openbox --sm-disable >"$workdir/openbox.log" 2>&1 &
wm_pid=$!

# openbox is ready once it has set _NET_SUPPORTING_WM_CHECK on the root.
for _ in $(seq 200); do
  if xprop -root _NET_SUPPORTING_WM_CHECK 2>/dev/null | grep -q 'window id'; then
    ready=1
    break
  fi
  kill -0 "$wm_pid" 2>/dev/null || { echo "with-desktop: openbox did not start:" >&2; cat "$workdir/openbox.log" >&2; exit 1; }
  sleep 0.05
done
[ -n "${ready:-}" ] || { echo "with-desktop: openbox did not become ready" >&2; exit 1; }

status=0
"$@" || status=$?
exit "$status"
