"""Drives the test window from Python desktop tests: starts it, waits until it
is shown and has the focus, and reads back the events it logged."""

import os
import subprocess
import tempfile
import time


def parse_line(line):
    """One log line as a dict: 'type' and every key=value field."""
    words = line.split()
    event = {"type": words[0]}
    for word in words[1:]:
        key, _, value = word.partition("=")
        event[key] = value
    return event


class TestWindow:
    def __init__(self, *args, binary=None):
        self.binary = binary or os.environ["TARVOKE_TESTWINDOW"]
        self.args = list(args)
        self.folder = tempfile.TemporaryDirectory(prefix="tarvoke-window-")
        self.log = os.path.join(self.folder.name, "events.log")
        self.process = None
        self.ready = None

    def __enter__(self):
        self.process = subprocess.Popen([self.binary, "--log", self.log] + self.args)
        deadline = time.monotonic() + 10
        while time.monotonic() < deadline:
            lines = self.lines()
            if lines and lines[0].startswith("ready"):
                self.ready = parse_line(lines[0])
                return self
            if self.process.poll() is not None:
                raise RuntimeError("the test window ended with status %d" % self.process.returncode)
            time.sleep(0.02)
        raise RuntimeError("the test window did not become ready")

    def __exit__(self, *exc):
        self.process.terminate()
        self.process.wait()
        self.folder.cleanup()

    def lines(self):
        try:
            with open(self.log) as log:
                return [line for line in log.read().splitlines() if line]
        except FileNotFoundError:
            return []

    def events(self, *types):
        """Logged events after the ready line, of the given types (all if none)."""
        events = [parse_line(line) for line in self.lines()[1:]]
        return [e for e in events if not types or e["type"] in types]

    def wait_for(self, count, *types, timeout=5.0):
        """The events of the given types once there are at least count of them."""
        deadline = time.monotonic() + timeout
        while True:
            events = self.events(*types)
            if len(events) >= count or time.monotonic() > deadline:
                return events
            time.sleep(0.02)

    def point(self, window, x, y):
        """Root position of (x, y) inside 'top' or 'child'."""
        prefix = "child" if window == "child" else ""
        return (int(self.ready[prefix + "x"]) + x, int(self.ready[prefix + "y"]) + y)
