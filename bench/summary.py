#!/usr/bin/env python3
"""Prints the benchmark figures against their targets.

usage: summary.py MAIN.json PLAYER.time STATEMENTS
CPU times are used: on a shared machine the wall clock also counts the time
other programs held the processor.
"""
import json
import sys


def load(path):
    with open(path) as f:
        return {b["name"]: b for b in json.load(f)["benchmarks"] if b.get("run_type") == "iteration"}


def ms(b):
    scale = {"ns": 1e-6, "us": 1e-3, "ms": 1.0, "s": 1e3}[b["time_unit"]]
    return b["cpu_time"] * scale


def ns(b):
    scale = {"ns": 1.0, "us": 1e3, "ms": 1e6, "s": 1e9}[b["time_unit"]]
    return b["cpu_time"] * scale


def verdict(ok):
    return "ok" if ok else "MISSED"


def main():
    main_runs = load(sys.argv[1])
    with open(sys.argv[2]) as f:
        wall, user, system = (float(x) for x in f.read().split()[-3:])
    statements = int(sys.argv[3])

    print("\n== summary (CPU time)")
    loads = {mb: ms(main_runs[f"BM_LoadRecording/{mb}"]) for mb in (1, 4, 10)}
    print("Load of a recording:  " + ", ".join(f"{mb} MB {t:.0f} ms" for mb, t in loads.items()) +
          f"  ({loads[10] / 10:.1f} ms per MB at 10 MB, {loads[1]:.1f} at 1 MB)"
          f"  target < 1000 ms at 10 MB: {verdict(loads[10] < 1000)}")
    check = ms(main_runs["BM_CheckRecording/10"])
    print(f"Check of a recording: 10 MB {check:.0f} ms, {check / loads[10]:.2f}x the load"
          f"  target < 200 ms: {verdict(check < 200)}, <= 1.5x: {verdict(check <= 1.5 * loads[10])}")

    per = {name: main_runs[name]["per_statement"] * 1e9 for name in main_runs if "per_statement" in main_runs[name]}
    arithmetic = per["BM_ArithmeticLoop/100000"]
    print(f"Run loop, no yield:   {arithmetic:.0f} ns per statement (While/Add), mixed {per['BM_MixedLoop']:.0f} ns"
          f"  target < 100 ns: {verdict(arithmetic < 100)}")
    skips = [per[f"BM_IfSkip/{n}"] for n in (1, 100, 10000)] + [per[f"BM_WhileSkip/{n}"] for n in (1, 100, 10000)]
    print(f"Skips over 1/100/10000 statements: if {skips[0]:.0f}/{skips[1]:.0f}/{skips[2]:.0f} ns,"
          f" while {skips[3]:.0f}/{skips[4]:.0f}/{skips[5]:.0f} ns per statement (flat: no rescan)")

    for loop, name in (("PollLoop", "the player's poll loop"), ("QtLoop", "the windows' Qt loop")):
        every = per[f"BM_TurnEveryStatement<platform::{loop}>/100000"]
        clock_loop = per[f"BM_ClockYieldLoop<platform::{loop}>/100000"]
        turn = ns(main_runs[f"BM_Turn<platform::{loop}>"])
        print(f"Yield on {name}: a turn before every statement {every:.0f} ns per statement"
              f" (a turn alone {turn:.0f} ns)  target <= 2000 ns: {verdict(every <= 2000)};"
              f" the clock's yield (a turn at most every 0.1 ms) {clock_loop:.0f} ns per statement,"
              f" {1e9 / clock_loop:,.0f} statements/s")
    player_cpu = (user + system) / statements * 1e9
    print(f"tarvoke-play --dry-run, {statements:,} statements: {user + system:.2f} s CPU ({wall:.2f} s wall),"
          f" {player_cpu:.0f} ns per statement including start-up and load")

    lookups = [ns(main_runs[f"BM_GetVariable/{n}"]) for n in (10, 1000, 100000)]
    loops = [per[f"BM_LoopAmongVariables/{n}"] for n in (10, 1000, 100000)]
    print(f"Variable look-up with 10/1,000/100,000 variables: {lookups[0]:.0f}/{lookups[1]:.0f}/{lookups[2]:.0f} ns;"
          f" a loop among them {loops[0]:.0f}/{loops[1]:.0f}/{loops[2]:.0f} ns per statement")


if __name__ == "__main__":
    main()
