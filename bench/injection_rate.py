#!/usr/bin/env python3
"""Injection rate on the desktop: 1,000 left clicks made by tarvoke-play
(LeftClick() with IgnorePauses(true)), by a loop of 1,000 `xdotool click 1`
processes and by one `xte` run of 1,000 clicks, each into a fresh test window
that must receive every click, in order. Run under .ci/with-desktop.sh --no-wm.

usage: injection_rate.py TARVOKE_PLAY TESTWINDOW [CLICKS]
"""

import os
import subprocess
import sys
import tempfile
import time

sys.path.insert(0, os.path.join(os.path.dirname(os.path.abspath(__file__)), "..", "tests", "desktop"))
from testwindow import TestWindow  # noqa: E402


def received_in_order(window, clicks):
    """Waits until the window has every click; the seconds that took, or None."""
    started = time.monotonic()
    received = -1
    while time.monotonic() - started < 60:
        events = window.events("ButtonPress", "ButtonRelease")
        if len(events) >= 2 * clicks:
            expected = ["ButtonPress", "ButtonRelease"] * clicks
            ok = [e["type"] for e in events] == expected and all(e["button"] == "1" for e in events)
            return time.monotonic() - started if ok else None
        if time.monotonic() - started > 5 and len(events) == received:
            print("  only %d of %d button events arrived" % (len(events), 2 * clicks))
            return None
        received = len(events)
        time.sleep(0.5)
    return None


def measure(name, send, binary, clicks):
    with TestWindow("--geometry", "800x600+100+100", binary=binary) as window:
        x, y = window.point("top", 400, 300)
        subprocess.run(["xdotool", "mousemove", str(x), str(y)], check=True)
        started = time.monotonic()
        send()
        sent = time.monotonic() - started
        settle = received_in_order(window, clicks)
    complete = settle is not None
    total = sent + (settle or 0)
    print("%-14s sent in %8.3f s  (%9.0f clicks/s)  all received in order: %s" %
          (name, sent, clicks / sent, "yes" if complete else "NO"))
    return clicks / sent if complete else 0.0, total


def main():
    play, testwindow = sys.argv[1], sys.argv[2]
    clicks = int(sys.argv[3]) if len(sys.argv) > 3 else 1000
    folder = tempfile.mkdtemp(prefix="tarvoke-bench-")
    script = os.path.join(folder, "clicks.tk")
    with open(script, "w") as out:
        out.write("Function(Main);\nIgnorePauses(true);\n" + "LeftClick();\n" * clicks + "EndFunction();\n")
    env = dict(os.environ, TARVOKE_SETTINGS_DIR=folder)

    def tarvoke():
        subprocess.run([play, script], check=True, env=env, stderr=subprocess.DEVNULL)

    def xdotool_loop():
        for _ in range(clicks):
            subprocess.run(["xdotool", "click", "1"], check=True)

    def xte():
        subprocess.run(["xte"] + ["mouseclick 1"] * clicks, check=True)

    empty = os.path.join(folder, "empty.tk")
    with open(empty, "w") as out:
        out.write("Function(Main);\nIgnorePauses(true);\nEndFunction();\n")
    startups = []
    for _ in range(5):
        started = time.monotonic()
        subprocess.run([play, empty], check=True, env=env, stderr=subprocess.DEVNULL)
        startups.append(time.monotonic() - started)
    startup = sorted(startups)[len(startups) // 2]

    rates = {}
    rates["tarvoke-play"], _ = measure("tarvoke-play", tarvoke, testwindow, clicks)
    print("%-14s start-up of the player alone %.3f s: the clicks themselves take about %.3f s (%.0f clicks/s)" %
          ("", startup, max(0.0, clicks / rates["tarvoke-play"] - startup) if rates["tarvoke-play"] else 0,
           clicks / max(1e-6, clicks / rates["tarvoke-play"] - startup) if rates["tarvoke-play"] else 0))
    rates["xdotool loop"], _ = measure("xdotool loop", xdotool_loop, testwindow, clicks)
    rates["xte"], _ = measure("xte", xte, testwindow, clicks)
    ratio = rates["tarvoke-play"] / rates["xdotool loop"] if rates["xdotool loop"] else float("inf")
    print("tarvoke-play / xdotool loop: %.0fx (target 100x) %s" % (ratio, "ok" if ratio >= 100 else "MISSED"))
    above = rates["tarvoke-play"] > rates["xte"]
    print("tarvoke-play above xte: %s" % ("ok" if above else "MISSED"))
    print("(the tarvoke-play time includes its start-up and the loading of the script)")


if __name__ == "__main__":
    main()
