#!/usr/bin/env python3
"""tarvoke-play --check beside --load-only on one 10 MB recording.

usage: check_speed.py TARVOKE-PLAY [RUNS]
Both read, normalise and split the same file; the check also maps its
findings back to the file. Best of RUNS, CPU time (user + system) of the child.
"""
import os
import resource
import subprocess
import sys
import tempfile


def recording(size):
    # The pattern of bench/benchscripts.cpp: moves, pauses, clicks and keys.
    parts, total, i = ["Function(Main);\n"], 16, 0
    while total < size:
        x, y, key = (i * 37) % 1920, (i * 53) % 1080, 65 + i % 26
        piece = f"Pause({16 + i % 300});\nMoveMouse({x},{y});\n"
        if i % 4 == 0:
            piece += "LeftDown();\nPause(80);\nLeftUp();\n"
        if i % 3 == 0:
            piece += f"KeyDown({key});\nPause(40);\nKeyUp({key});\n"
        parts.append(piece)
        total += len(piece)
        i += 1
    return "".join(parts) + "EndFunction();\n"


def cpu_ms(command):
    before = resource.getrusage(resource.RUSAGE_CHILDREN)
    run = subprocess.run(command, stdout=subprocess.DEVNULL)
    after = resource.getrusage(resource.RUSAGE_CHILDREN)
    if run.returncode != 0:
        sys.exit(f"{' '.join(command)} exited with {run.returncode}")
    return 1000 * (after.ru_utime - before.ru_utime + after.ru_stime - before.ru_stime)


def main():
    player, runs = sys.argv[1], int(sys.argv[2]) if len(sys.argv) > 2 else 5
    with tempfile.TemporaryDirectory() as folder:
        path = os.path.join(folder, "recording.tk")
        with open(path, "w") as f:
            f.write(recording(10 << 20))
        load = min(cpu_ms([player, "--load-only", path]) for _ in range(runs))
        check = min(cpu_ms([player, "--check", path]) for _ in range(runs))
    ratio = check / load
    print(f"--check of a 10 MB recording: {check:.0f} ms, --load-only {load:.0f} ms, {ratio:.2f}x"
          f"  target < 200 ms: {'ok' if check < 200 else 'MISSED'}, <= 1.5x: {'ok' if ratio <= 1.5 else 'MISSED'}")


if __name__ == "__main__":
    main()
