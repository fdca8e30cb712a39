#!/usr/bin/env python3
"""Times OpenCV's matchTemplate (TM_SQDIFF) on the benchmark pictures, in
colour and in grey, and prints one line per mode: mode, ms per search, where
the best match lies.

usage: opencv_match.py SCREEN.png SUB.png [RUNS]
"""
import sys
import time

import cv2


def timed(image, template, runs):
    best = None
    start = time.process_time()
    for _ in range(runs):
        result = cv2.matchTemplate(image, template, cv2.TM_SQDIFF)
        best = cv2.minMaxLoc(result)[2]
    return (time.process_time() - start) * 1000.0 / runs, best


def main():
    screen = cv2.imread(sys.argv[1], cv2.IMREAD_COLOR)
    sub = cv2.imread(sys.argv[2], cv2.IMREAD_COLOR)
    if screen is None or sub is None:
        sys.exit("opencv_match.py: cannot read the pictures")
    runs = int(sys.argv[3]) if len(sys.argv) > 3 else 10
    cv2.setNumThreads(1)
    for mode, image, template in (
            ("colour", screen, sub),
            ("grey", cv2.cvtColor(screen, cv2.COLOR_BGR2GRAY), cv2.cvtColor(sub, cv2.COLOR_BGR2GRAY))):
        ms, where = timed(image, template, runs)
        print(f"{mode} {ms:.2f} {where[0]},{where[1]}")


if __name__ == "__main__":
    main()
