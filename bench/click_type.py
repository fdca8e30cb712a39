#!/usr/bin/env python3
"""Click into a window, then type: 100 pairs of `LeftClick(); SendKeys("a");`
by tarvoke-play, beside one xdotool process doing `click 1` and `type a`
as often, on a desktop with a window manager (run under .ci/with-desktop.sh).
The pointer stands in a test window that does not have the focus when the
run starts, so the first click must focus it before its key leaves; every
key must land in that window and none in the other one. Each tool is timed
over its whole run, start-up included, per pair.

usage: click_type.py TARVOKE_PLAY TESTWINDOW [PAIRS [ROUNDS]]
"""

import os
import statistics
import subprocess
import sys
import tempfile
import time

sys.path.insert(0, os.path.join(os.path.dirname(os.path.abspath(__file__)), "..", "tests", "desktop"))
from testwindow import TestWindow  # noqa: E402


def measure(name, send, pairs):
    """Seconds per pair, or None when a key went astray."""
    with TestWindow("--class", "Left", "--geometry", "600x400+20+40") as left, \
            TestWindow("--class", "Right", "--geometry", "600x400+700+40") as right:
        subprocess.run(["xdotool", "mousemove", *map(str, left.point("top", 300, 200))], check=True)
        started = time.monotonic()
        send()
        took = time.monotonic() - started
        keys = left.wait_for(pairs, "KeyPress")
        stray = right.events("KeyPress")
    ok = len(keys) == pairs and not stray and all(k["keysym"] == "0x61" for k in keys)
    print("%-14s %7.3f s   %6.2f ms per pair   %s" % (name, took, took / pairs * 1000,
                                                       "every key in the clicked window" if ok else
                                                       "%d keys in the clicked window, %d in the other" %
                                                       (len(keys), len(stray))))
    return took / pairs if ok else None


def main():
    play = sys.argv[1]
    os.environ["TARVOKE_TESTWINDOW"] = sys.argv[2]
    pairs = int(sys.argv[3]) if len(sys.argv) > 3 else 100
    rounds = int(sys.argv[4]) if len(sys.argv) > 4 else 3
    folder = tempfile.mkdtemp(prefix="tarvoke-bench-")
    script = os.path.join(folder, "clicktype.tk")
    with open(script, "w") as out:
        out.write("Function(Main);\nIgnorePauses(true);\n" + 'LeftClick();\nSendKeys("a");\n' * pairs +
                  "EndFunction();\n")
    env = dict(os.environ, TARVOKE_SETTINGS_DIR=folder)

    def tarvoke():
        subprocess.run([play, script], check=True, env=env, stderr=subprocess.DEVNULL)

    # One xdotool process reads the pairs from a script file of its own
    # language (on the command line "type" would take every word after it).
    commands = os.path.join(folder, "clicktype.xdo")
    with open(commands, "w") as out:
        out.write("click 1\ntype a\n" * pairs)

    def xdotool():
        subprocess.run(["xdotool", commands], check=True)

    senders = (("tarvoke-play", tarvoke), ("xdotool", xdotool))
    measured = {name: [] for name, _ in senders}
    for _ in range(rounds):
        for name, send in senders:
            measured[name].append(measure(name, send, pairs))
    print("medians of %d rounds (ms per pair; a round with a stray key counts as missed):" % rounds)
    medians = {}
    for name, _ in senders:
        good = [r for r in measured[name] if r is not None]
        medians[name] = statistics.median(good) if good else None
        print("%-14s %s   rounds with every key right: %d of %d" %
              (name, "%.2f" % (medians[name] * 1000) if good else "-", len(good), rounds))
    if medians["tarvoke-play"] and medians["xdotool"]:
        print("xdotool / tarvoke-play time per pair: %.1fx" % (medians["xdotool"] / medians["tarvoke-play"]))


if __name__ == "__main__":
    main()
