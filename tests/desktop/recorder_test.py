"""Real input recorded by tarvoke-play --record and played back into a fresh
test window: the same buttons, keys and positions arrive in the same order."""

import os
import signal
import subprocess
import sys
import tempfile
import time
import unittest

from testwindow import INPUT, PLAY, TestWindow, xdotool

HOLD = 0.06  # a tap shorter than the sampler's tick could fall between two polls


def tap(*keys):
    """Presses the keys (a number: that button) in order, holds them, releases them in reverse order."""
    for step, order in (("down", keys), ("up", keys[::-1])):
        for key in order:
            xdotool(("mouse" if isinstance(key, int) else "key") + step, key)
            time.sleep(HOLD)


def xte(*commands, window=None, total=0):
    """Input with no hold at all: each press and its release leave together.
    With a window, waits until it has received total presses and releases:
    the window manager holds a click on a client window back until it has
    looked at it, so a burst of the other device waits, as a person's would."""
    subprocess.run(["xte", *commands], check=True)
    if window and len(window.wait_for(total, *INPUT)) < total:
        raise AssertionError("the window did not receive the input")


def keys(text):
    """KeyDown and KeyUp of each character, as the recorder writes a tap."""
    return [line % ord(c.upper()) for c in text for line in ("KeyDown(%d);", "KeyUp(%d);")]


def at(x, y, *lines):
    return [line + "(%d,%d);" % (x, y) for line in lines]


def played(window):
    """Buttons and keys the window received, with repeated modifier presses folded
    (a Shift recorded as 16 and 160 arrives as two presses of one key)."""
    seen = []
    for e in window.events(*INPUT):
        what = (e["type"], e.get("button") or e.get("keysym"), e.get("x"), e.get("y"))
        seen += [what] if not seen or what != seen[-1] else []
    return seen


def as_recorded(window):
    """What the window received as the recorder writes it (left clicks and letters), in the server's order."""
    up = lambda e: "Up" if e["type"].endswith("Release") else "Down"
    return ["Left%sEx(%s);" % (up(e), e["root"]) if "button" in e else
            "Key%s(%d);" % (up(e), ord(chr(int(e["keysym"], 16)).upper())) for e in window.events(*INPUT)]


class RecordThenPlay(unittest.TestCase):
    def setUp(self):
        self.folder = self.enterContext(tempfile.TemporaryDirectory(prefix="tarvoke-record-"))
        self.script = os.path.join(self.folder, "recorded.tk")
        self.env = dict(os.environ, TARVOKE_SETTINGS_DIR=os.path.join(self.folder, "settings"))

    def start(self, *extra):
        """tarvoke-play --record, once it says it records (it listens by then)."""
        self.recorder = subprocess.Popen([PLAY, "--record", self.script, *extra], stderr=subprocess.PIPE, text=True,
                                         env=self.env)
        line = self.recorder.stderr.readline()
        if "recording into" not in line:
            self.fail("the recorder did not start: " + line + self.recorder.stderr.read())

    def stop(self):
        """The recording, after Ctrl+0 ended it: its lines between the frame without the pauses."""
        tap("ctrl", "0")
        with self.recorder.stderr:
            self.assertEqual(self.recorder.wait(timeout=10), 0, self.recorder.stderr.read())
        with open(self.script) as f:
            return [line for line in f.read().split("\n")[4:-2] if line and not line.startswith("Pause(")]

    def play(self):
        """The recording checks clean, then plays."""
        check = subprocess.run([PLAY, "--check", self.script], capture_output=True, text=True, timeout=30)
        self.assertEqual((check.returncode, check.stdout), (0, ""))
        result = subprocess.run([PLAY, self.script], capture_output=True, text=True, timeout=30)
        self.assertEqual(result.returncode, 0, result.stderr)

    def test_held_and_unheld_input_is_recorded_and_played_back_alike(self):
        with TestWindow() as window:
            self.start()
            x, y = window.point("top", 40, 30)
            for position in ((x - 10, y - 10), (x, y)):
                xdotool("mousemove", *position)
                time.sleep(HOLD)
            tap(1)
            tap("a")
            tap("shift", "b")
            tap("ctrl", "c")
            # Then taps with no hold at all, a click where the pointer moved to,
            # a click after a warp by another program, and one that such a warp
            # follows before the recorder reads it (held stopped, as under load).
            xte("mouseclick 1", "mouseclick 1", window=window, total=16)
            xte("str xyz", window=window, total=22)
            xte("mousemove %d %d" % (x + 20, y + 25), "mouseclick 3", window=window, total=24)
            xdotool("mousemove", x + 30, y + 5, "click", 1)
            self.recorder.send_signal(signal.SIGSTOP)
            xte("mousemove %d %d" % (x + 35, y + 15), "mouseclick 1", window=window, total=28)
            xdotool("mousemove", x + 60, y + 40)
            self.recorder.send_signal(signal.SIGCONT)
            lines = self.stop()
            recorded = played(window)
        self.assertIn("MoveMouse(%d,%d);" % (x, y), lines)
        self.assertLess(lines.index("LeftDownEx(%d,%d);" % (x, y)), lines.index("LeftUpEx(%d,%d);" % (x, y)))
        self.assertEqual([line for line in lines if line.startswith("Key")], keys("a") + [
            "KeyDown(16);", "KeyDown(160);", "KeyDown(66);", "KeyUp(66);", "KeyUp(16);", "KeyUp(160);",
            "KeyDown(162);", "KeyDown(67);", "KeyUp(67);", "KeyUp(162);"] + keys("xyz"))
        with TestWindow() as window:
            self.play()
            replayed = played(window)
        # The recording ends with the Ctrl+0 that stopped it, which is not in it.
        self.assertEqual(replayed, recorded[:len(replayed)])
        self.assertGreaterEqual(len(replayed), 12 + 4 + 6 + 6)

    def test_input_with_no_hold_is_all_recorded_in_order(self):
        letters = "abcdefghijklmnopqrstuvwxyz0123456789"
        with TestWindow() as window:
            x, y = window.point("top", 40, 30)
            xdotool("mousemove", x, y)
            self.start("--no-mouse-move")
            xte(*["mouseclick 1"] * 20, window=window, total=40)
            xte("str " + letters, window=window, total=40 + 72)
            expected = at(x, y, "LeftDownEx", "LeftUpEx") * 20 + keys(letters)
            # What the window received, in the order the server delivered it.
            self.assertEqual(as_recorded(window), expected)
            self.assertEqual(self.stop(), expected)
        # A press and its release within one millisecond stand with a Pause of 0 between them.
        with open(self.script) as f:
            self.assertIn("LeftDownEx(%d,%d);\nPause(0);\nLeftUpEx" % (x, y), f.read())

    def test_the_hotkeys_flip_the_flags_select_the_window_and_sample_colours(self):
        with TestWindow() as window:
            (x1, y1), (x2, y2) = window.point("top", 20, 20), window.point("top", 60, 50)
            (cx, cy), white, black = window.point("child", 20, 20), window.point("top", 10, 10), window.point("child", 10, 10)
            self.start()
            xte("mousemove %d %d" % (x1, y1), "mouseclick 1")
            # Ctrl+6 turns the moves off, Ctrl+7 the positions of clicks, for the rest of the recording.
            tap("ctrl", "6")
            tap("ctrl", "7")
            xte("mousemove %d %d" % (x2, y2), "mouseclick 1")
            tap("ctrl", "7")
            xte("mouseclick 1")
            # Ctrl+4: the window under the pointer becomes the target of the clicks.
            xdotool("mousemove", cx, cy)
            tap("ctrl", "4")
            tap(1)
            # Ctrl+5: the colour under the pointer.
            for where in (white, black):
                xdotool("mousemove", *where)
                tap("ctrl", "5")
            lines = self.stop()
            self.assertEqual(lines, at(x1, y1, "MoveMouse", "LeftDownEx", "LeftUpEx") + ["LeftDown();", "LeftUp();"]
                             + at(x2, y2, "LeftDownEx", "LeftUpEx")
                             + ['SelectWindow("TarvokeTest", "Tarvoke Test Window");', 'SelectSubWindow("TarvokeChild");']
                             + at(cx, cy, "LeftDownEx", "LeftUpEx")
                             + [line for rgb in ("255, 255, 255, 255, 255, 255", "0, 0, 0, 0, 0, 0") for line in (
                                 "CaptureScreen(imagesave0);", "CreateColorRange(colorrange0, %s);" % rgb,
                                 "MoveMouseToColorRange(imagesave0, colorrange0);")])
        # The player keeps no settings.
        self.assertFalse(os.path.exists(self.env["TARVOKE_SETTINGS_DIR"]))

    def test_a_recording_is_never_lost(self):
        # A file is kept unless --force is given.
        with open(self.script, "w") as f:
            f.write("mine")
        refused = subprocess.run([PLAY, "--record", self.script], capture_output=True, text=True, timeout=10)
        self.assertEqual(refused.returncode, 2)
        self.assertIn("--force", refused.stderr)
        with open(self.script) as f:
            self.assertEqual(f.read(), "mine")
        # Neither the target (no file can be made in /proc) nor standard
        # output takes it: it is kept in the state folder.
        state = os.path.join(self.folder, "state")
        with open("/dev/full", "w") as full:
            recorder = subprocess.Popen([PLAY, "--record", "/proc/tarvoke-recorded.tk"], stdout=full,
                                        stderr=subprocess.PIPE, text=True, env=dict(os.environ, XDG_STATE_HOME=state))
            self.assertIn("recording into", recorder.stderr.readline())
            recorder.send_signal(signal.SIGINT)
            with recorder.stderr:
                errors = recorder.stderr.read()
            self.assertEqual(recorder.wait(timeout=10), 1, errors)
        kept = [os.path.join(state, "tarvoke", name) for name in os.listdir(os.path.join(state, "tarvoke"))]
        self.assertEqual(len(kept), 1)
        self.assertIn("the recording is kept in '%s'" % kept[0], errors)
        with open(kept[0]) as f:
            self.assertTrue(f.read().startswith("Function(Main);"))


if __name__ == "__main__":
    unittest.main(argv=sys.argv[:1])
