#!/usr/bin/env python3
"""Injection rate on the desktop: 1,000 left clicks made by tarvoke-play
(LeftClick() with IgnorePauses(true)), by a loop of 1,000 `xdotool click 1`
processes and by one `xte` run of 1,000 clicks, each into a fresh test window
that must receive every click, in order. Run under .ci/with-desktop.sh --no-wm.
Each is rated by the time from its start until the window has read the last
click (its log's `at`), start-up included: a sender that exits as soon as its
requests are written (xte) is not done until the server and the window
manager have let them through.

With a window manager (.ci/with-desktop.sh without --no-wm) every click
goes through its click-to-raise grab; "xte" as the last argument leaves the
slow xdotool loop out.

usage: injection_rate.py TARVOKE_PLAY TESTWINDOW [CLICKS [ROUNDS [xte]]]
"""

import os
import statistics
import subprocess
import sys
import tempfile
import time

sys.path.insert(0, os.path.join(os.path.dirname(os.path.abspath(__file__)), "..", "tests", "desktop"))
from testwindow import TestWindow  # noqa: E402


def received_in_order(window, clicks):
    """Waits until the window has every click; their events in order, or None."""
    started = time.monotonic()
    received = -1
    while time.monotonic() - started < 60:
        events = window.events("ButtonPress", "ButtonRelease")
        if len(events) >= 2 * clicks:
            expected = ["ButtonPress", "ButtonRelease"] * clicks
            ok = [e["type"] for e in events] == expected and all(e["button"] == "1" for e in events)
            return events if ok else None
        if time.monotonic() - started > 5 and len(events) == received:
            print("  only %d of %d button events arrived" % (len(events), 2 * clicks))
            return None
        received = len(events)
        time.sleep(0.5)
    return None


def measure(name, send, clicks):
    """Two rates, both from the sender's start: clicks until the sender
    exited, and clicks until the window read the last of them."""
    with TestWindow("--geometry", "800x600+100+100") as window:
        x, y = window.point("top", 400, 300)
        subprocess.run(["xdotool", "mousemove", str(x), str(y)], check=True)
        started = time.monotonic()
        send()
        sent = time.monotonic() - started
        events = received_in_order(window, clicks)
    if events is None:
        print("%-14s exit %8.3f s (%9.0f clicks/s)   NOT every click arrived in order" % (name, sent, clicks / sent))
        return 0.0, 0.0
    read = float(events[-1]["at"]) - started
    print("%-14s exit %8.3f s (%9.0f clicks/s)   all read %7.3f s (%9.0f clicks/s)   in order" %
          (name, sent, clicks / sent, read, clicks / read))
    return clicks / sent, clicks / read


def main():
    play = sys.argv[1]
    os.environ["TARVOKE_TESTWINDOW"] = sys.argv[2]
    clicks = int(sys.argv[3]) if len(sys.argv) > 3 else 1000
    rounds = int(sys.argv[4]) if len(sys.argv) > 4 else 5
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

    # Rounds take the tools in turn, so that a disturbance of the machine
    # falls on all of them; each rate is the median of its rounds.
    senders = (("tarvoke-play", tarvoke), ("xdotool loop", xdotool_loop), ("xte", xte))
    if len(sys.argv) > 5 and sys.argv[5] == "xte":
        senders = (("tarvoke-play", tarvoke), ("xte", xte))
    measured = {name: [] for name, _ in senders}
    for _ in range(rounds):
        for name, send in senders:
            measured[name].append(measure(name, send, clicks))
    # Rated over the rounds where every click arrived; the others are counted.
    def median(rates):
        complete = [rate for rate in rates if rate > 0]
        return statistics.median(complete) if complete else 0.0
    runs = {name: median(r for r, _ in results) for name, results in measured.items()}
    reads = {name: median(s for _, s in results) for name, results in measured.items()}
    print("medians of %d rounds:" % rounds)
    for name, _ in senders:
        lost = sum(1 for r, _ in measured[name] if r == 0)
        print("%-14s until exit %9.0f clicks/s   until all read %9.0f clicks/s   rounds with a click lost: %d" %
              (name, runs[name], reads[name], lost))
    print("%-14s start-up of the player alone (an empty script): %.3f s" % ("", startup))
    for label, rates in (("until exit", runs), ("until read", reads)):
        ours, loop, theirs = rates["tarvoke-play"], rates.get("xdotool loop", 0), rates["xte"]
        ratio = ours / loop if loop else float("inf")
        print("%-12s tarvoke-play / xdotool loop: %6.0fx (target 100x) %-6s tarvoke-play / xte: %5.2fx (target above 1) %s" %
              (label, ratio, "ok" if ratio >= 100 else "MISSED", ours / theirs if theirs else 0,
               "ok" if ours > theirs else "MISSED"))


if __name__ == "__main__":
    main()
