#!/usr/bin/env python3
"""What no script, file or stop may do to tarvoke-play: hang, abort, write
in a dry run, or grow without bound. One table per area; each gives the
failures it found.

usage: safety_test.py TARVOKE_PLAY [--sanitized] [AREA...]
(compile_failures, which needs the compiled programs' runtime, runs only when named)
--sanitized: the player is built with AddressSanitizer, which cannot run
under an address-space limit; the memory cases then run without one.
"""
import os
import resource
import signal
import subprocess
import sys
import tempfile
import time

sys.path.insert(0, os.path.join(os.path.dirname(os.path.abspath(__file__)), "..", "desktop"))
from testwindow import resident_mb, wait_until, write_script  # noqa: E402

PLAY = sys.argv[1]
MEMORY_LIMIT = 1536 << 20  # 1.5 GB of address space
DOUBLING = "String(x, a);\n" + "Combine(x, x);\n" * 29


def script(folder, name, body):
    return write_script(os.path.join(folder, name), body)


def limited():
    if "--sanitized" not in sys.argv:
        resource.setrlimit(resource.RLIMIT_AS, (MEMORY_LIMIT, MEMORY_LIMIT))


def catches(pid, number):
    """Whether the process has a handler of its own for the signal."""
    try:
        with open(f"/proc/{pid}/status") as f:
            caught = next(line for line in f if line.startswith("SigCgt:"))
    except (OSError, StopIteration):
        return False
    return bool(int(caught.split()[1], 16) >> (number - 1) & 1)


def stops(folder):
    """Each stop ends the run at once, whatever it is doing: the time from
    the signal to the exit is printed."""
    failures = []
    # name, script, options, what shows the run is busy
    for name, body, options, busy in [
            ("endless loop", "While(1=1);\nEndWhile();", [], lambda p: True),
            ("deep calls", "Call(main);\nWhile(1=1);\nEndWhile();", [], lambda p: True),
            ("growing texts", DOUBLING + "While(1=1);\nReplace(x, a, bb);\nReplace(x, bb, a);\nEndWhile();",
             ["--max-text-memory", "3G"], lambda p: resident_mb(p.pid) > 200)]:
        path = script(folder, "stop.tk", body)
        for number, status in ((signal.SIGINT, 130), (signal.SIGTERM, 143)):
            what = f"{name}, {signal.Signals(number).name}"
            run = subprocess.Popen([PLAY, "--dry-run", *options, path], stdout=subprocess.DEVNULL)
            wait_until(lambda: (catches(run.pid, number) and busy(run)) or run.poll() is not None, 30)
            if run.poll() is not None:
                failures.append(f"{name}: ended by itself with status {run.returncode}")
                continue
            sent = time.monotonic()
            run.send_signal(number)
            try:
                run.wait(timeout=10)
            except subprocess.TimeoutExpired:
                run.kill()
                run.wait()
            took = (time.monotonic() - sent) * 1000
            print(f"{what}: exit {run.returncode} after {took:.0f} ms")
            if run.returncode != status or took > 2000:
                failures.append(f"{what}: status {run.returncode} after {took:.0f} ms")
    return failures


def bad_files(folder):
    """Every file that is no script is one line on standard error and status 2."""
    fifo = os.path.join(folder, "fifo")
    os.mkfifo(fifo)
    large = os.path.join(folder, "large.tk")
    with open(large, "wb") as f:
        f.truncate((256 << 20) + 1)
    failures = []
    # name, arguments, standard input (a shell redirection)
    for name, args, stdin in [("a FIFO", [fifo], ""), ("a folder", [folder], ""), ("a device", ["/dev/zero"], ""),
                              ("a read error", ["/proc/self/mem"], ""), ("a file beyond 256 MB", [large], ""),
                              ("a folder as standard input", ["-"], f"< '{folder}'"),
                              ("a closed standard input", ["-"], "<&-")]:
        command = " ".join(f"'{a}'" for a in [PLAY, "--dry-run", *args]) + " " + stdin
        result = subprocess.run(["sh", "-c", command], capture_output=True, text=True, timeout=10, preexec_fn=limited)
        lines = result.stderr.splitlines()
        if result.returncode != 2 or len(lines) != 1 or not lines[0].startswith("tarvoke-play: cannot read"):
            failures.append(f"{name}: status {result.returncode}, {result.stderr!r}")
    # A picture that is no regular file is a picture that cannot be read.
    # Loading Qt's image module leaves a few bytes that LeakSanitizer counts; not ours.
    result = subprocess.run([PLAY, "--dry-run", script(folder, "fifo.tk", f'LoadImage(imagesave1, "{fifo}");\n'
                                                       'Message(done, normal, t);')],
                            capture_output=True, text=True, timeout=10, env=dict(os.environ, ASAN_OPTIONS="detect_leaks=0"))
    if result.returncode != 0 or 'MessageBox 0 "t" "done"' not in result.stdout:
        failures.append(f"LoadImage of a FIFO: status {result.returncode}, {result.stdout!r} {result.stderr!r}")
    return failures


def memory(folder):
    """Runaway scripts stay within 1.5 GB of address space and end."""
    failures = []
    for name, body, options, want in [
            ("a Call without end", "Call(main);", [], "Function: main, line: 1\n"),
            ("doubling a text", DOUBLING + "Int(n, 1);", [], "Long: n, value: 1\n"),
            ("a text beyond a smaller limit", DOUBLING + "Int(n, 1);", ["--max-text-memory", "1M"],
             "String: x, value: " + "a" * 262144 + "\n")]:
        result = subprocess.run([PLAY, "--dry-run", "--dump", *options, script(folder, "memory.tk", body)],
                                capture_output=True, timeout=120, preexec_fn=limited)
        peak = resource.getrusage(resource.RUSAGE_CHILDREN).ru_maxrss // 1024
        print(f"{name}: exit {result.returncode}, largest peak so far {peak} MB")
        if result.returncode != 0 or want.encode() not in result.stdout:
            failures.append(f"{name}: status {result.returncode}, {result.stderr[-300:]!r}")
    return failures


def dry_run_writes(folder):
    """A dry run writes no picture unless --write-pictures allows it."""
    target = os.path.join(folder, "notes.txt")
    path = script(folder, "save.tk", f'CaptureScreen(imagesave1);\nSaveImage(imagesave1, "{target}");')
    failures = []
    for options, written in (([], False), (["--write-pictures"], True)):
        with open(target, "w") as f:
            f.write("my notes\n")
        result = subprocess.run([PLAY, "--dry-run", "--screen", "4x2", *options, path],
                                capture_output=True, text=True, timeout=10)
        with open(target, "rb") as f:
            kept = f.read() == b"my notes\n"
        if result.returncode != 0 or f'SavePicture "{target}"' not in result.stdout or kept == written:
            failures.append(f"{options}: status {result.returncode}, file {'kept' if kept else 'replaced'}")
    return failures


def compile_failures(folder):
    """--compile, and the compiled program without its tail, fail as the player does."""
    path = script(folder, "s.tk", "")
    failures = []
    for name, command, words in [
            ("missing script", [PLAY, "--compile", "/nonexistent.tk", os.path.join(folder, "x")], "cannot read"),
            ("no folder for it", [PLAY, "--compile", path, "/nonexistent/x.exe"], "cannot write"),
            ("no program named", [PLAY, "--compile", path], "--compile needs"),
            ("the runtime alone", [os.path.join(os.path.dirname(PLAY), "Compiler.dll")],
             "this file holds no compiled script")]:
        result = subprocess.run(command, capture_output=True, text=True, timeout=20,
                                env=dict(os.environ, TARVOKE_RUNTIME_DRY_RUN="1"))
        if result.returncode != 2 or len(result.stderr.splitlines()) != 1 or words not in result.stderr:
            failures.append(f"{name}: status {result.returncode}, {result.stderr!r}")
    return failures


if __name__ == "__main__":
    areas = [a for a in sys.argv[2:] if a and a != "--sanitized"] or ["stops", "bad_files", "memory", "dry_run_writes"]
    with tempfile.TemporaryDirectory() as folder:
        failures = [f"{area}: {failure}" for area in areas for failure in globals()[area](folder)]
    print("\n".join(failures) or f"{len(areas)} areas passed")
    sys.exit(1 if failures else 0)
