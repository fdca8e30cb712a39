#!/usr/bin/env python3
"""SIGINT and SIGTERM stop a dry run of an endless loop: the yield before
every statement lets the player's signal handling run.

usage: stop_signal_test.py TARVOKE_PLAY
"""
import os
import signal
import subprocess
import sys
import tempfile
import time

SCRIPT = "Function(Main);\nWhile(1=1);\nEndWhile();\nEndFunction();\n"


def catches(pid, number):
    """Whether the process has a handler of its own for the signal."""
    try:
        with open(f"/proc/{pid}/status") as f:
            caught = next(line for line in f if line.startswith("SigCgt:"))
    except (OSError, StopIteration):
        return False
    return bool(int(caught.split()[1], 16) >> (number - 1) & 1)


def stop_with(player, script, number, want_status):
    run = subprocess.Popen([player, "--dry-run", script], stdout=subprocess.PIPE, stderr=subprocess.PIPE)
    # A slow start (sanitizers, a busy machine) must not meet the signal
    # before the player handles it; then the loop runs a little.
    deadline = time.monotonic() + 30
    while not catches(run.pid, number) and run.poll() is None and time.monotonic() < deadline:
        time.sleep(0.01)
    time.sleep(0.3)
    if run.poll() is not None:
        return f"the loop ended by itself with status {run.returncode}"
    run.send_signal(number)
    try:
        run.communicate(timeout=10)
    except subprocess.TimeoutExpired:
        run.kill()
        run.communicate()
        return f"{signal.Signals(number).name} did not stop the loop within 10 s"
    if run.returncode != want_status:
        return f"{signal.Signals(number).name}: exit status {run.returncode}, expected {want_status}"
    return None


def main():
    player = sys.argv[1]
    with tempfile.TemporaryDirectory() as folder:
        script = os.path.join(folder, "endless.tk")
        with open(script, "w") as f:
            f.write(SCRIPT)
        failures = [failure for failure in (stop_with(player, script, signal.SIGINT, 130),
                                            stop_with(player, script, signal.SIGTERM, 143)) if failure]
    for failure in failures:
        print(failure)
    if failures:
        sys.exit(1)
    print("2 passed, 0 failed")


if __name__ == "__main__":
    main()
