#!/usr/bin/env python3
"""Prints the screen benchmark figures beside their peers and targets.

usage: summary.py FOLDER  (screen.json, import.time, scrot.time,
visgrep.time, visgrep.out, opencv.out as bench/screen/run.sh leaves them)
CPU times are used: on a shared machine the wall clock also counts the time
other programs held the processor.
"""
import json
import os
import sys


def medians(path):
    with open(path) as f:
        runs = json.load(f)["benchmarks"]
    scale = {"ns": 1e-6, "us": 1e-3, "ms": 1.0, "s": 1e3}
    return {b["run_name"]: b for b in runs if b.get("aggregate_name") == "median"}, scale


def process_ms(path):
    """Median CPU time (user + system) of the runs in a /usr/bin/time file, in ms."""
    times = []
    with open(path) as f:
        for line in f:  # /usr/bin/time also writes "Command exited with non-zero status N"
            fields = line.split()
            try:
                times.append((float(fields[1]) + float(fields[2])) * 1000)
            except (IndexError, ValueError):
                continue
    times.sort()
    return times[len(times) // 2]


def verdict(ok):
    return "ok" if ok else "MISSED"


def main():
    folder = sys.argv[1]
    runs, scale = medians(os.path.join(folder, "screen.json"))

    def ms(name, field="cpu_time"):
        b = runs[name]
        return b[field] * scale[b["time_unit"]]

    print("\n== screen analysis (median CPU time unless said)")
    capture = ms("BM_CaptureXShm/real_time", "real_time")
    print(f"Capture 1920x1080 into a reused grid: {capture:.2f} ms wall [target < 5 ms: {verdict(capture < 5)}]"
          f"; import -window root {process_ms(os.path.join(folder, 'import.time')):.0f} ms"
          f", scrot {process_ms(os.path.join(folder, 'scrot.time')):.0f} ms (whole process, to a file)")

    search, memchr = ms("BM_MoveMouseToColorRangeAbsent"), ms("BM_MemchrSameBytes")
    pixels = 1920 * 1080
    print(f"MoveMouseToColorRange, colour absent: {search * 1e6 / pixels:.3f} ns/pixel ({search:.2f} ms)"
          f"; memchr over the same 8 MB {memchr * 1e6 / pixels:.3f} ns/pixel"
          f" = {search / memchr:.2f}x [target <= 2x: {verdict(search <= 2 * memchr)}]")

    match = ms("BM_IsImageInAreaEx")
    visgrep = process_ms(os.path.join(folder, "visgrep.time"))
    with open(os.path.join(folder, "visgrep.out")) as f:
        visgrep_found = f.read().split()
    opencv = {}
    with open(os.path.join(folder, "opencv.out")) as f:
        for line in f:
            mode, t, where = line.split()
            opencv[mode] = (float(t), where)
    print(f"isimageinareaex 48x48, tolerance 2, first find: {match:.2f} ms"
          f"; visgrep {visgrep:.0f} ms (found {' '.join(visgrep_found[:1]) or 'nothing'})"
          f" = {visgrep / match:.0f}x slower [target >= 10x: {verdict(visgrep >= 10 * match)}]")
    for mode, (t, where) in opencv.items():
        print(f"  OpenCV matchTemplate TM_SQDIFF {mode}: {t:.1f} ms (best at {where})"
              f" [target faster: {verdict(match < t)}]")

    locate, absent = ms("BM_LocateImage/absent:0"), ms("BM_LocateImage/absent:1")
    grey = opencv["grey"][0]
    print(f"LocateImage 48x48 over the whole screen, tolerance 2, one true match near the end: {locate:.2f} ms"
          f" [target < 5 ms: {verdict(locate < 5)}]; visgrep {visgrep / locate:.0f}x, OpenCV grey {grey / locate:.0f}x"
          f" as long; absent {absent:.2f} ms; the first search after a capture adds"
          f" {ms('BM_SumPlane'):.2f} ms for the colour sums")
    plain, explained = ms("BM_LocateImageStatement/explain:0"), ms("BM_LocateImageStatement/explain:1")
    change = explained / plain - 1
    print(f"A LocateImage statement that finds: {plain:.3f} ms, with --explain {explained:.3f} ms"
          f" ({change * 100:+.1f}%) [target within noise, 10%: {verdict(abs(change) < 0.1)}]")
    print(f"A whole-screen LocateImage that misses, with its explanation: {ms('BM_ExplainMiss/noise:0'):.1f} ms"
          f" (almost there), {ms('BM_ExplainMiss/noise:1'):.1f} ms (noise)")

    saturation = ms("BM_GetSaturationInWholeScreen")
    print(f"getsaturationin over the whole screen: {saturation:.2f} ms [target < 2 ms: {verdict(saturation < 2)}]")


if __name__ == "__main__":
    main()
