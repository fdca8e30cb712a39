#!/usr/bin/env python3
"""What no script, file or stop may do to tarvoke-play: hang, abort, write
in a dry run, or grow without bound. One table per area.

usage: safety_test.py TARVOKE_PLAY [--sanitized] [AREA...]
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

# Memory cases run under this address-space limit (1.5 GB).
MEMORY_LIMIT = 1536 << 20
DOUBLING = "String(x, a);\n" + "Combine(x, x);\n" * 29


def main_of(body):
    return "Function(Main);\n" + body + "\nEndFunction();\n"


def catches(pid, number):
    """Whether the process has a handler of its own for the signal."""
    try:
        with open(f"/proc/{pid}/status") as f:
            caught = next(line for line in f if line.startswith("SigCgt:"))
    except (OSError, StopIteration):
        return False
    return bool(int(caught.split()[1], 16) >> (number - 1) & 1)


def resident_mb(pid):
    try:
        with open(f"/proc/{pid}/status") as f:
            return int(next(line for line in f if line.startswith("VmRSS:")).split()[1]) // 1024
    except (OSError, StopIteration):
        return 0


SANITIZED = "--sanitized" in sys.argv


def limited():
    if not SANITIZED:
        resource.setrlimit(resource.RLIMIT_AS, (MEMORY_LIMIT, MEMORY_LIMIT))


class Run:
    def __init__(self, player, folder):
        self.player = player
        self.folder = folder

    def script(self, name, text):
        path = os.path.join(self.folder, name)
        with open(path, "w") as f:
            f.write(text)
        return path

    def stops(self):
        """Each stop ends the run at once, whatever it is doing: the time from
        the signal to the exit is printed."""
        # name, script, options, what shows the run is busy
        cases = [
            ("endless loop", main_of("While(1=1);\nEndWhile();"), [], lambda p: True),
            ("deep calls", main_of("Call(main);\nWhile(1=1);\nEndWhile();"), [], lambda p: True),
            ("growing texts", main_of(DOUBLING + "While(1=1);\nReplace(x, a, bb);\nReplace(x, bb, a);\nEndWhile();"),
             ["--max-text-memory", "3G"], lambda p: resident_mb(p.pid) > 200),
        ]
        failures = []
        for name, text, options, busy in cases:
            path = self.script("stop.tk", text)
            for number, status in ((signal.SIGINT, 130), (signal.SIGTERM, 143)):
                run = subprocess.Popen([self.player, "--dry-run", *options, path], stdout=subprocess.DEVNULL,
                                       stderr=subprocess.PIPE)
                deadline = time.monotonic() + 30
                while not (catches(run.pid, number) and busy(run)) and run.poll() is None \
                        and time.monotonic() < deadline:
                    time.sleep(0.01)
                if run.poll() is not None:
                    failures.append(f"{name}: ended by itself with status {run.returncode}")
                    continue
                sent = time.monotonic()
                run.send_signal(number)
                try:
                    run.communicate(timeout=10)
                except subprocess.TimeoutExpired:
                    run.kill()
                    run.communicate()
                    failures.append(f"{name}: {signal.Signals(number).name} did not stop it within 10 s")
                    continue
                took = (time.monotonic() - sent) * 1000
                print(f"{name}, {signal.Signals(number).name}: exit {run.returncode} after {took:.0f} ms")
                if run.returncode != status:
                    failures.append(f"{name}: {signal.Signals(number).name} gave status {run.returncode}")
                if took > 2000:
                    failures.append(f"{name}: {signal.Signals(number).name} took {took:.0f} ms")
        return failures

    def bad_files(self):
        """Every file that is no script is one line on standard error and status 2."""
        fifo = os.path.join(self.folder, "fifo")
        os.mkfifo(fifo)
        large = os.path.join(self.folder, "large.tk")
        with open(large, "wb") as f:
            f.truncate((256 << 20) + 1)
        # name, arguments, standard input (a shell redirection)
        cases = [
            ("a FIFO", [fifo], ""),
            ("a folder", [self.folder], ""),
            ("a device", ["/dev/zero"], ""),
            ("a read error", ["/proc/self/mem"], ""),
            ("a file beyond 256 MB", [large], ""),
            ("a folder as standard input", ["-"], f"< '{self.folder}'"),
            ("a closed standard input", ["-"], "<&-"),
        ]
        failures = []
        for name, args, stdin in cases:
            command = " ".join(f"'{a}'" for a in [self.player, "--dry-run", *args]) + " " + stdin
            result = subprocess.run(["sh", "-c", command], capture_output=True, text=True, timeout=10,
                                    preexec_fn=limited)
            lines = result.stderr.splitlines()
            if result.returncode != 2 or len(lines) != 1 or not lines[0].startswith("tarvoke-play: cannot read"):
                failures.append(f"{name}: status {result.returncode}, {result.stderr!r}")
        # A picture that is no regular file is a picture that cannot be read.
        path = self.script("fifo.tk", main_of(f'LoadImage(imagesave1, "{fifo}");\nMessage(done, normal, t);'))
        # Loading Qt's image module leaves a few bytes that LeakSanitizer counts; not ours.
        result = subprocess.run([self.player, "--dry-run", path], capture_output=True, text=True, timeout=10,
                                env=dict(os.environ, ASAN_OPTIONS="detect_leaks=0"))
        if result.returncode != 0 or 'MessageBox 0 "t" "done"' not in result.stdout:
            failures.append(f"LoadImage of a FIFO: status {result.returncode}, {result.stdout!r} {result.stderr!r}")
        return failures

    def memory(self):
        """Runaway scripts stay within 1.5 GB of address space and end."""
        cases = [
            ("a Call without end", main_of("Call(main);"), [], "Function: main, line: 1\n"),
            ("doubling a text", main_of(DOUBLING + "Int(n, 1);"), ["--dump"], "Long: n, value: 1\n"),
            ("a text beyond a smaller limit", main_of(DOUBLING + "Int(n, 1);"), ["--max-text-memory", "1M"],
             "String: x, value: " + "a" * 262144 + "\n"),
        ]
        failures = []
        for name, text, options, want in cases:
            path = self.script("memory.tk", text)
            options = options + ["--dump"] if "--dump" not in options else options
            result = subprocess.run([self.player, "--dry-run", *options, path], capture_output=True, timeout=120,
                                    preexec_fn=limited)
            peak = resource.getrusage(resource.RUSAGE_CHILDREN).ru_maxrss // 1024
            print(f"{name}: exit {result.returncode}, largest peak so far {peak} MB")
            if result.returncode != 0 or want.encode() not in result.stdout:
                failures.append(f"{name}: status {result.returncode}, {result.stderr[-300:]!r}")
        return failures

    def dry_run_writes(self):
        """A dry run writes no picture unless --write-pictures allows it."""
        target = os.path.join(self.folder, "notes.txt")
        path = self.script("save.tk", main_of(f'CaptureScreen(imagesave1);\nSaveImage(imagesave1, "{target}");'))
        failures = []
        for options, written in (([], False), (["--write-pictures"], True)):
            with open(target, "w") as f:
                f.write("my notes\n")
            result = subprocess.run([self.player, "--dry-run", "--screen", "4x2", *options, path],
                                    capture_output=True, text=True, timeout=10)
            with open(target, "rb") as f:
                kept = f.read() == b"my notes\n"
            if result.returncode != 0 or f'SavePicture "{target}"' not in result.stdout or kept == written:
                failures.append(f"{options}: status {result.returncode}, file {'kept' if kept else 'replaced'}")
        return failures


def main():
    player = sys.argv[1]
    areas = [a for a in sys.argv[2:] if a and a != "--sanitized"] or ["stops", "bad_files", "memory", "dry_run_writes"]
    failures = []
    with tempfile.TemporaryDirectory() as folder:
        run = Run(player, folder)
        for area in areas:
            failures += [f"{area}: {failure}" for failure in getattr(run, area)()]
    for failure in failures:
        print(failure)
    if failures:
        sys.exit(1)
    print(f"{len(areas)} areas passed")


if __name__ == "__main__":
    main()
