#!/usr/bin/env python3
"""Time from starting a headless run to the first action of its script:
`tarvoke-play --headless` beside `xvfb-run -a tarvoke-play`, the same script,
rounds taken in turn in one run.

The script's first action starts touch(1) on a marker file; the time is the
marker's modification time less the moment the command was started (both on
the system clock), so the same probe costs the same in both.

usage: headless_start.py TARVOKE_PLAY [ROUNDS]"""

import os
import statistics
import subprocess
import sys
import tempfile
import time


def first_action(command, marker):
    if os.path.exists(marker):
        os.unlink(marker)
    start = time.time()
    done = subprocess.run(command, capture_output=True, text=True)
    end = time.time()
    # touch runs detached from the player, and may come after its end.
    deadline = end + 5
    while not os.path.exists(marker) and time.time() < deadline:
        time.sleep(0.001)
    if done.returncode != 0 or not os.path.exists(marker):
        sys.exit("failed: %s\n%s" % (" ".join(command), done.stderr))
    return (os.stat(marker).st_mtime - start) * 1000.0, (end - start) * 1000.0


def main():
    player = os.path.abspath(sys.argv[1])
    rounds = int(sys.argv[2]) if len(sys.argv) > 2 else 10
    with tempfile.TemporaryDirectory() as work:
        marker = os.path.join(work, "first-action")
        script = os.path.join(work, "probe.tk")
        with open(script, "w") as f:
            f.write('Function(Main);\nStartEx("/usr/bin/touch", "%s", normal);\nEndFunction();\n' % marker)
        commands = {
            "tarvoke-play --headless": [player, "--headless", script],
            "xvfb-run -a tarvoke-play": ["xvfb-run", "-a", "-s", "-screen 0 1920x1080x24", player, script],
            "tarvoke-play --headless --wm openbox": [player, "--headless", "--wm", "openbox", script],
        }
        times = {name: [] for name in commands}
        for _ in range(rounds):
            for name, command in commands.items():
                times[name].append(first_action(command, marker))

    print("%-38s %14s %14s %14s" % ("", "first action", "(best)", "whole run"))
    for name, values in times.items():
        firsts = [first for first, _ in values]
        print("%-38s %11.1f ms %11.1f ms %11.1f ms" % (name, statistics.median(firsts), min(firsts),
                                                        statistics.median(whole for _, whole in values)))
    ours = statistics.median(first for first, _ in times["tarvoke-play --headless"])
    theirs = statistics.median(first for first, _ in times["xvfb-run -a tarvoke-play"])
    print("tarvoke-play --headless reaches the first action in %.2f of the time xvfb-run takes (median of %d)"
          % (ours / theirs, rounds))


if __name__ == "__main__":
    main()
