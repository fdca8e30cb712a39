"""tarvoke-play --headless: a script plays on a private Xvfb of its own and
moves the pointer there; the screenshot shows that screen; eight runs at once
do not disturb each other; however the run ends, the screen and the window
manager end with it; a missing Xvfb or window manager is said clearly.

The script starts the test window with its log on a FIFO: the test's read of
the FIFO waits for the window's first line, and its end of file comes when
the window has gone with its screen.

usage: headless_test.py TARVOKE_PLAY TESTWINDOW"""

import os
import select
import signal
import struct
import subprocess
import sys
import tempfile
import threading
import unittest
import zlib

PLAY = TESTWINDOW = None

# The test window's inside is at (100, 100), 400x300, white; its black child
# at (150, 150), 200x100. The script waits until the window is drawn, moves
# the pointer into the child, and waits to be stopped: the test stops it once
# the window has logged the move (a window whose screen ends under it may
# not have logged what it got).
SCRIPT = """Function(Main);
  StartEx("{window}", "--geometry 400x300+100+100 --log {log}", normal);
  CreateColorRange(colorrange1, 250, 250, 250, 255, 255, 255);
  Int(missing, 1);
  While(missing = 1);
    Pause(10);
    CaptureScreen(imagesave1);
    IsPixel(missing, imagesave1, 120, 120, colorrange1);
  EndWhile();
  MoveMouse(300, 200);
  PauseS(600);
EndFunction();
"""
MOVED = "MotionNotify win=child"


def png_pixels(path):
    """(width, height, rows of RGB bytes) of a PNG of 8-bit RGB rows without filters."""
    with open(path, "rb") as f:
        data = f.read()
    assert data[:8] == b"\x89PNG\r\n\x1a\n", "not a PNG file"
    pos, packed, width, height = 8, b"", 0, 0
    while pos < len(data):
        length, kind = struct.unpack(">I4s", data[pos:pos + 8])
        body = data[pos + 8:pos + 8 + length]
        assert zlib.crc32(kind + body) == struct.unpack(">I", data[pos + 8 + length:pos + 12 + length])[0]
        if kind == b"IHDR":
            width, height, depth, colour = struct.unpack(">IIBB", body[:10])
            assert (depth, colour) == (8, 2), "not 8-bit RGB"
        elif kind == b"IDAT":
            packed += body
        pos += 12 + length
    raw = zlib.decompress(packed)
    stride = 1 + 3 * width
    rows = [raw[y * stride:(y + 1) * stride] for y in range(height)]
    assert all(row[0] == 0 for row in rows), "a row with a filter"
    return width, height, [row[1:] for row in rows]


def pixel(picture, x, y):
    rows = picture[2]
    return tuple(rows[y][3 * x:3 * x + 3])


class Run:
    """One headless run of a script that starts the test window."""

    def __init__(self, extra=()):
        self.dir = tempfile.TemporaryDirectory(prefix="tarvoke-headless-")
        self.log = os.path.join(self.dir.name, "window.log")
        self.shot = os.path.join(self.dir.name, "end.png")
        os.mkfifo(self.log)
        script = os.path.join(self.dir.name, "script.tk")
        with open(script, "w") as f:
            f.write(SCRIPT.format(window=TESTWINDOW, log=self.log))
        self.lines = []
        self.changed = threading.Condition()
        self.window_gone = threading.Event()
        self.reader = threading.Thread(target=self._read, daemon=True)
        self.reader.start()
        self.process = subprocess.Popen(
            [PLAY, "--headless=640x480", "--screenshot", self.shot, *extra, script],
            stderr=subprocess.PIPE, text=True)

    def _read(self):
        with open(self.log) as log:  # waits for the window to open it
            for line in log:
                with self.changed:
                    self.lines.append(line.strip())
                    self.changed.notify_all()
        self.window_gone.set()
        with self.changed:
            self.changed.notify_all()

    def wait_for(self, start, timeout=120):
        """Whether the window logs a line that starts so while it lives."""
        with self.changed:
            return self.changed.wait_for(
                lambda: any(line.startswith(start) for line in self.lines) or self.window_gone.is_set(), timeout) \
                and any(line.startswith(start) for line in self.lines)

    def stop(self, number=signal.SIGTERM, timeout=120):
        """The player's status and standard error, once it and the window have ended."""
        self.process.send_signal(number)
        _, err = self.process.communicate(timeout=timeout)
        if not self.lines:
            # The window never opened its log: open the other end so the reader ends.
            os.close(os.open(self.log, os.O_RDWR))
        assert self.window_gone.wait(timeout), "the test window outlived its screen"
        return self.process.returncode, err

    def helpers(self):
        """Process ids of the player's children: Xvfb, the window manager, the guard."""
        children = []
        for entry in os.listdir("/proc"):
            if not entry.isdigit():
                continue
            try:
                with open("/proc/%s/stat" % entry) as f:
                    stat = f.read()
                with open("/proc/%s/comm" % entry) as f:
                    comm = f.read().strip()
            except OSError:
                continue
            if int(stat.rsplit(")", 1)[1].split()[1]) == self.process.pid:
                children.append((int(entry), comm))
        return children

    def close(self):
        if self.process.poll() is None:
            self.process.kill()
            self.process.wait()
        self.dir.cleanup()


def wait_gone(pids, timeout=15):
    """The pids of the list still running after timeout seconds."""
    fds = []
    for pid in pids:
        try:
            fds.append((pid, os.pidfd_open(pid)))
        except ProcessLookupError:
            pass
    left = []
    for pid, fd in fds:
        if not select.select([fd], [], [], timeout)[0]:
            left.append(pid)
        os.close(fd)
    return left


class HeadlessTest(unittest.TestCase):
    def check_played(self, run):
        self.assertTrue(run.wait_for(MOVED), run.lines)
        helpers = run.helpers()
        status, err = run.stop()
        self.assertEqual(status, 143, err)
        self.assertIn("root=300,200", [line for line in run.lines if line.startswith(MOVED)][-1])
        picture = png_pixels(run.shot)
        self.assertEqual(picture[:2], (640, 480))
        for (x, y), colour in {(120, 120): (255, 255, 255), (480, 380): (255, 255, 255),
                               (300, 200): (0, 0, 0), (600, 450): (0, 0, 0), (20, 20): (0, 0, 0)}.items():
            self.assertEqual(pixel(picture, x, y), colour, (x, y))
        self.assertEqual(wait_gone([pid for pid, _ in helpers]), [], helpers)

    def test_a_script_plays_on_a_screen_of_its_own(self):
        run = Run()
        try:
            self.check_played(run)
        finally:
            run.close()

    def test_eight_runs_at_once(self):
        runs = [Run() for _ in range(8)]
        try:
            for run in runs:
                self.check_played(run)
        finally:
            for run in runs:
                run.close()

    def test_the_screen_ends_with_the_run(self):
        # (signal to the player, the player's status, a screenshot expected)
        cases = [(signal.SIGINT, 130, True), (signal.SIGKILL, -9, False)]
        for number, status, shot in cases:
            with self.subTest(signal=number.name):
                run = Run(extra=["--wm", "openbox"])
                try:
                    self.assertTrue(run.wait_for("ready "), "the test window never got the focus")
                    helpers = run.helpers()
                    self.assertEqual(sorted(name for _, name in helpers), ["Xvfb", "openbox", "tarvoke-play"])
                    self.assertEqual(run.stop(number)[0], status)
                    self.assertEqual(wait_gone([pid for pid, _ in helpers]), [], helpers)
                    self.assertEqual(os.path.exists(run.shot), shot)
                finally:
                    run.close()

    def test_the_script_s_status_and_what_is_missing(self):
        empty = tempfile.TemporaryDirectory()
        script = os.path.join(empty.name, "nothing.tk")
        with open(script, "w") as f:
            f.write("Function(Main);\nEndFunction();\n")
        shot = os.path.join(empty.name, "end.png")
        out = subprocess.run([PLAY, "--headless=320x200", "--screenshot", shot, script], capture_output=True,
                             text=True, timeout=120)
        self.assertEqual((out.returncode, out.stderr), (0, ""))
        self.assertEqual(png_pixels(shot)[:2], (320, 200))
        # (environment, options, the words of the one line on standard error)
        cases = [({"PATH": empty.name}, [], "Xvfb is not installed (on Debian: apt install xvfb)"),
                 ({}, ["--wm", "no-such-window-manager"],
                  "cannot start the window manager 'no-such-window-manager': it is not installed"),
                 ({}, ["--wm", "false"], "the window manager 'false' ended before it was ready")]
        for env, options, words in cases:
            with self.subTest(words=words):
                out = subprocess.run([PLAY, "--headless=320x200", *options, script], capture_output=True,
                                     text=True, env=dict(os.environ, **env), timeout=60)
                self.assertEqual(out.returncode, 2)
                self.assertEqual(len(out.stderr.splitlines()), 1, out.stderr)
                self.assertIn(words, out.stderr)
        empty.cleanup()


if __name__ == "__main__":
    PLAY, TESTWINDOW = sys.argv[1:3]
    unittest.main(argv=sys.argv[:1] + sys.argv[3:], verbosity=2)
