#!/bin/bash
# Record then replay in real editors: a session in xedit or FeatherPad
# (click, type two lines, type with no delay, drag-select, type over, undo,
# click, taps with no hold, save) is driven by xdotool and xte while
# tarvoke-play records it; the recording is replayed into a fresh editor on a
# fresh file, which the replay saves; the two documents are compared.
# Usage: .ci/with-desktop.sh bench/recorder/editors.sh xedit|featherpad [BUILD_DIR]
# (needs the Debian packages x11-apps, featherpad, xdotool, xautomation)
set -u
cd "$(dirname "$0")/../.."
B=$(realpath "${2:-build}")/bin
app=$1
W=$(mktemp -d "${TMPDIR:-/tmp}/tarvoke-editors.XXXXXX")/$app; mkdir -p $W/orig $W/replay
start_app() {  # $1 folder
  : > $1/doc.txt
  cd $1
  if [ $app = xedit ]; then xedit doc.txt & else featherpad --standalone doc.txt & fi
  APP=$!
  cd - >/dev/null
  cls=$([ $app = xedit ] && echo Xedit || echo FeatherPad)
  WID=$(xdotool search --sync --onlyvisible --class $cls | head -1)
  sleep 1.5
  eval $(xdotool getwindowgeometry --shell $WID)
  echo "window $WID at $X,$Y ${WIDTH}x$HEIGHT" >&2
}
save() {
  if [ $app = xedit ]; then xdotool key ctrl+x; sleep 0.1; xdotool key ctrl+s; else xdotool key ctrl+s; fi
  sleep 1
}
quit() { kill $APP; wait $APP 2>/dev/null; }
session() {
  # text area: lower part of the window
  tx=$((X + 60)); ty=$((Y + HEIGHT / 2))
  xdotool mousemove $tx $ty; sleep 0.2; xdotool click 1; sleep 0.3
  xdotool type --delay 40 "the first line of text"; xdotool key Return
  xdotool type --delay 40 "and a second one here"; xdotool key Return; sleep 0.3
  xdotool type --delay 0 "fast words typed at once"; sleep 0.3
  # drag-select, then type over the selection (or at the caret), undo
  xdotool mousemove $((tx - 40)) $ty; sleep 0.2
  xdotool mousedown 1; sleep 0.1
  for s in 10 20 30 40 60 80; do xdotool mousemove $((tx - 40 + s)) $ty; sleep 0.03; done
  xdotool mouseup 1; sleep 0.3
  xdotool type --delay 40 "NEW"; sleep 0.3
  xdotool key ctrl+z; sleep 0.3
  xdotool click 1; sleep 0.1; xte "str zz"; sleep 0.3
  xdotool mousemove $((tx + 100)) $((ty + 40)) click 1; sleep 0.2
  xdotool type --delay 30 "end"; sleep 0.5
  save
}
start_app $W/orig
$B/tarvoke-play --record $W/session.tk --force 2>$W/rec.err &
REC=$!
sleep 1
session
xdotool keydown ctrl keydown 0; sleep 0.06; xdotool keyup 0 keyup ctrl
wait $REC
quit
sleep 0.5
start_app $W/replay
$B/tarvoke-play $W/session.tk
sleep 0.5
quit
echo "--- original"; cat -A $W/orig/doc.txt; echo; echo "--- replayed"; cat -A $W/replay/doc.txt; echo
if cmp -s $W/orig/doc.txt $W/replay/doc.txt && [ -s $W/orig/doc.txt ]; then
  echo "SAME ($app)"; rm -rf "$(dirname $W)"
else
  echo "DIFFERENT ($app): see $W"; exit 1
fi
