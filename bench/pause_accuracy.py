#!/usr/bin/env python3
"""Pause accuracy beside its peers: runs tarvoke_pause_accuracy (the player's
Pause and a Qt single-shot timer) and a Python time.sleep loop of the same
lengths, and prints one table against the targets.

usage: pause_accuracy.py TARVOKE_PAUSE_ACCURACY [RUNS]
"""

import math
import subprocess
import sys
import time


def python_sleep(n, runs):
    errors = []
    for _ in range(runs):
        start = time.perf_counter()
        time.sleep(n / 1000)
        errors.append(abs((time.perf_counter() - start) * 1000 - n))
    errors.sort()
    p99 = errors[max(0, math.ceil(len(errors) * 0.99) - 1)]
    return sum(errors) / len(errors), p99, errors[-1]


def main():
    binary = sys.argv[1]
    runs = int(sys.argv[2]) if len(sys.argv) > 2 else 50
    rows = {}
    drift = None
    out = subprocess.run([binary, str(runs)], check=True, capture_output=True, text=True,
                         env={"PATH": "/usr/bin:/bin"}).stdout
    for line in out.splitlines():
        words = line.split()
        if words[0] == "drift":
            drift = (float(words[1]), float(words[2]))
        else:
            rows[(words[0], int(words[1]))] = tuple(float(w) for w in words[2:])
    for n in (1, 10, 100, 1000):
        rows[("python", n)] = python_sleep(n, runs)

    print("absolute error of the real length, ms (%d runs each)" % runs)
    print("%-16s %6s %9s %9s %9s" % ("method", "N", "mean", "p99", "max"))
    for method in ("tarvoke", "tarvoke-windows", "qt", "python"):
        for n in (1, 10, 100, 1000):
            mean, p99, worst = rows[(method, n)]
            print("%-16s %6d %9.3f %9.3f %9.3f" % (method, n, mean, p99, worst))
    ok = all(rows[("tarvoke", n)][0] < 0.1 and rows[("tarvoke", n)][1] < 0.5 for n in (1, 10, 100, 1000))
    print("target mean < 0.1 ms and p99 < 0.5 ms for Pause: %s" % ("ok" if ok else "MISSED"))
    if drift:
        print("1,000 consecutive Pause(10): mean error of the first 100 %.3f ms, of the last 100 %.3f ms (%s)" %
              (drift[0], drift[1], "no growth" if drift[1] <= drift[0] + 0.1 else "GROWS"))


if __name__ == "__main__":
    main()
