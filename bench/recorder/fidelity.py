#!/usr/bin/env python3
"""Record-then-replay fidelity, beside cnee, on the private X server.

The same 30-second sequence of key taps and clicks (up to 50 key events per
second) is played into a test window by xdotool while a recorder records it;
the recording is then replayed into a fresh test window. Then a burst with
no hold at all: 30 clicks and 60 key taps sent by xte with no delay. For
each recorder the report gives the events lost, the events reordered and the
mean and worst timing error of the replay against the original (server
times, aligned on the first event). Last, the CPU use of our recorders (the
player's and the windows') over a minute while the user does nothing.

Run by bench/run.sh (or: .ci/with-desktop.sh bench/recorder/fidelity.py build/bin [idle]).
"""
import difflib
import os
import random
import re
import signal
import statistics
import subprocess
import sys
import tempfile
import time

HERE = os.path.dirname(os.path.abspath(__file__))
sys.path.insert(0, os.path.join(HERE, "..", "..", "tests", "desktop"))
from testwindow import TestWindow, wait_until, windows_named  # noqa: E402

BIN = os.path.abspath(sys.argv[1] if len(sys.argv) > 1 else "build/bin")
PLAY = os.path.join(BIN, "tarvoke-play")
os.environ.setdefault("TARVOKE_TESTWINDOW", os.path.join(BIN, "tarvoke-testwindow"))
SECONDS = 30
LEAD = 1.0
STOP_KEYSYMS = {"0xffe3", "0xffe4", "0x30"}  # Control_L, Control_R, 0: our stop hotkey


def sequence(window, seed=7):
    """xdotool commands for SECONDS seconds: bursts of typing at 25 taps (50
    key events) per second, quiet gaps, and a click now and then."""
    rng = random.Random(seed)
    commands, t = [], 0.0
    while t < SECONDS:
        if rng.random() < 0.15:
            x, y = window.point("child", rng.randint(5, 150), rng.randint(5, 80))
            commands += ["mousemove", x, y, "sleep", 0.05, "mousedown", 1, "sleep", 0.06, "mouseup", 1, "sleep", 0.1]
            t += 0.21
        for _ in range(rng.randint(5, 25)):
            key = rng.choice("abcdefghijklmnopqrstuvwxyz")
            commands += ["keydown", key, "sleep", 0.02, "keyup", key, "sleep", 0.02]
            t += 0.04
        gap = rng.uniform(0.1, 0.6)
        commands += ["sleep", round(gap, 3)]
        t += gap
    return [str(c) for c in commands]


BURST_CLICKS = 30
BURST_KEYS = 60
INPUT_TYPES = ("KeyPress", "KeyRelease", "ButtonPress", "ButtonRelease")


def burst(window):
    """30 clicks, then 60 key taps, each press and release sent together. The
    keys wait until the window has the clicks: the window manager holds a
    click on a client window back until it has looked at it."""
    x, y = window.point("child", 30, 30)
    subprocess.run(["xdotool", "mousemove", str(x), str(y)], check=True)
    subprocess.run(["xte"] + ["mouseclick 1"] * BURST_CLICKS, check=True)
    window.wait_for(2 * BURST_CLICKS, *INPUT_TYPES)
    rng = random.Random(3)
    letters = "".join(rng.choice("abcdefghijklmnopqrstuvwxyz") for _ in range(BURST_KEYS))
    subprocess.run(["xte", "str " + letters], check=True)
    window.wait_for(2 * (BURST_CLICKS + BURST_KEYS), *INPUT_TYPES)


def inputs(window):
    events = []
    for e in window.events("KeyPress", "KeyRelease", "ButtonPress", "ButtonRelease"):
        if e.get("keysym") in STOP_KEYSYMS:
            continue
        events.append(((e["type"], e.get("keysym") or e.get("button")), int(e["time"])))
    return events


def press_stop_hotkey():
    for step in (["keydown", "ctrl"], ["keydown", "0"], ["sleep", "0.08"], ["keyup", "0"], ["keyup", "ctrl"]):
        subprocess.run(["xdotool", *step], check=True)


class Tarvoke:
    name = "tarvoke"

    def record(self, path, drive):
        recorder = subprocess.Popen([PLAY, "--record", path, "--force"], stderr=subprocess.PIPE, text=True)
        # It listens once it says so (a loaded machine may take longer than the lead-in to start it).
        said = recorder.stderr.readline()
        if "recording into" not in said:
            raise RuntimeError("the recorder did not start: " + said)
        time.sleep(LEAD)
        drive()
        time.sleep(0.3)
        press_stop_hotkey()
        with recorder.stderr:
            recorder.stderr.read()
        recorder.wait(timeout=20)

    def replay(self, path):
        subprocess.run([PLAY, path], check=True, timeout=SECONDS * 10)


class Cnee:
    name = "cnee"

    def record(self, path, drive):
        recorder = subprocess.Popen(["cnee", "--record", "--keyboard", "--mouse", "-o", path,
                                     "--seconds-to-record", str(int(LEAD + SECONDS + 8)), "-e", os.devnull])
        time.sleep(LEAD)
        drive()
        time.sleep(0.3)
        recorder.send_signal(signal.SIGINT)
        try:
            recorder.wait(timeout=20)
        except subprocess.TimeoutExpired:
            recorder.kill()

    def replay(self, path):
        subprocess.run(["cnee", "--replay", "-f", path, "-e", os.devnull], timeout=SECONDS * 10)


def script_times(path):
    """The input lines of one of our recordings, each with the time the script
    gives it (the sum of the pauses before it)."""
    events, now = [], 0
    for line in open(path).read().split("\n"):
        pause = re.match(r"Pause\((\d+)\);", line)
        if pause:
            now += int(pause.group(1))
        elif re.match(r"(Key|Left|Right|Middle)(Down|Up)", line):
            events.append((line, now))
    return events


def recorded_error(path, original):
    """How far the times in our script stand from the server's times of the
    original input, aligned on the first event: the recorder's own error,
    apart from the player's."""
    script = script_times(path)
    if len(script) != len(original) or not script:
        print("  the script has %d input lines for %d events" % (len(script), len(original)))
        return float("nan"), float("nan")
    errors = [abs((script[i][1] - script[0][1]) - (original[i][1] - original[0][1])) for i in range(len(script))]
    return statistics.mean(errors), max(errors)


def compare(original, replayed):
    a = [what for what, _ in original]
    b = [what for what, _ in replayed]
    matcher = difflib.SequenceMatcher(a=a, b=b, autojunk=False)
    pairs = [(i + k, j + k) for i, j, n in matcher.get_matching_blocks() for k in range(n)]
    remaining = list(b)
    lost = []
    for what in a:
        if what in remaining:
            remaining.remove(what)
        else:
            lost.append(what)
    reordered = len(a) - len(lost) - len(pairs)
    errors = []
    if pairs:
        (i0, j0) = pairs[0]
        errors = [abs((replayed[j][1] - replayed[j0][1]) - (original[i][1] - original[i0][1])) for i, j in pairs]
    return {"events": len(a), "lost": len(lost), "reordered": reordered,
            "differs": "lost %s; replay only %s" % (lost[:10], remaining[:10]) if lost or remaining else "",
            "mean_ms": statistics.mean(errors) if errors else float("nan"),
            "worst_ms": max(errors) if errors else float("nan")}


def xdotool_sequence(window):
    subprocess.run(["xdotool", *sequence(window)], check=True)


def let_go():
    """Releases the keys and the button the input uses. A replay that loses a
    release leaves its key down, and the server's repeat of it would land in
    the next measurement's window."""
    subprocess.run(["xte", *("keyup " + k for k in "abcdefghijklmnopqrstuvwxyz0"), "keyup Control_L", "mouseup 1"],
                   check=True)


def measure(tool, folder, drive):
    path = os.path.join(folder, tool.name + ".rec")
    let_go()
    with TestWindow() as window:
        tool.record(path, lambda: drive(window))
        original = inputs(window)
    with TestWindow() as window:
        tool.replay(path)
        time.sleep(0.5)
        replayed = inputs(window)
    result = compare(original, replayed)
    if tool.name == "tarvoke":
        result["recorded_mean_ms"], result["recorded_worst_ms"] = recorded_error(path, original)
    return result


def cpu_seconds(pid):
    """The scheduler's own count of the time on a processor of all the
    process's threads, in s; the utime and stime of /proc/PID/stat come in
    10 ms ticks, too coarse for a process that runs a few microseconds every
    millisecond."""
    total = 0
    for task in os.listdir("/proc/%d/task" % pid):
        with open("/proc/%d/task/%s/schedstat" % (pid, task)) as f:
            total += int(f.read().split()[0])
    return total / 1e9


def idle_cpu_percent(pid, seconds=60):
    start, began = cpu_seconds(pid), time.monotonic()
    time.sleep(seconds)
    return 100.0 * (cpu_seconds(pid) - start) / (time.monotonic() - began)


def idle_player(folder):
    recorder = subprocess.Popen([PLAY, "--record", os.path.join(folder, "idle.tk"), "--force"], stderr=subprocess.DEVNULL)
    time.sleep(1)
    try:
        return idle_cpu_percent(recorder.pid)
    finally:
        recorder.send_signal(signal.SIGINT)
        recorder.wait(timeout=10)


def idle_windows():
    """The windows' program recording (Ctrl+8 in Advanced Mode), its window hidden."""
    sys.path.insert(0, os.path.join(HERE, "..", "..", "tests", "app"))
    from desktop_windows import Program, hold
    os.environ.setdefault("TARVOKE_APP", os.path.join(BIN, "tarvoke"))
    with Program() as program:
        program.enter_script("")
        hold("ctrl+8")
        assert wait_until(lambda: not windows_named("Tarvoke"), 2), "the recording did not start"
        time.sleep(1)
        return idle_cpu_percent(program.process.pid)


def report(title, results):
    print(title)
    print("%-8s %7s %5s %9s %8s %8s" % ("tool", "events", "lost", "reordered", "mean ms", "worst ms"))
    for name, r in results.items():
        print("%-8s %7d %5d %9d %8.2f %8.1f" % (name, r["events"], r["lost"], r["reordered"], r["mean_ms"], r["worst_ms"]))
    for name, r in results.items():
        if r["differs"]:
            print("  %s: %s" % (name, r["differs"]))
    ours, theirs = results["tarvoke"], results["cnee"]
    if theirs["mean_ms"] > 0:
        print("mean timing error, tarvoke / cnee: %.2f" % (ours["mean_ms"] / theirs["mean_ms"]))
    if theirs["worst_ms"] > 0:
        print("worst timing error, tarvoke / cnee: %.2f" % (ours["worst_ms"] / theirs["worst_ms"]))
    print("tarvoke's script against the server's times (the recorder alone): mean %.2f ms, worst %.1f ms"
          % (ours["recorded_mean_ms"], ours["recorded_worst_ms"]))


def main():
    if sys.argv[2:] == ["idle"]:  # the idle figures alone
        with tempfile.TemporaryDirectory(prefix="tarvoke-fidelity-") as folder:
            print("recorder CPU while idle for 60 s: %.3f%% of one core (tarvoke-play), %.3f%% (the windows)"
                  % (idle_player(folder), idle_windows()))
        return
    tools = (Tarvoke(), Cnee())
    with tempfile.TemporaryDirectory(prefix="tarvoke-fidelity-") as folder:
        sequenced = {tool.name: measure(tool, folder, xdotool_sequence) for tool in tools}
        bursts = {tool.name: measure(tool, folder, burst) for tool in tools}
        cpu = idle_player(folder)
    windows_cpu = idle_windows()
    report("record then replay, %d s, up to 50 key events/s:" % SECONDS, sequenced)
    report("record then replay, %d clicks and %d key taps with no hold and no delay:" % (BURST_CLICKS, BURST_KEYS),
           bursts)
    print("recorder CPU while idle for 60 s: %.3f%% of one core (tarvoke-play), %.3f%% (the windows)" % (cpu, windows_cpu))


if __name__ == "__main__":
    main()
