"""Record real input with tarvoke-play --record, then play the recording back
into a fresh test window: the same buttons, keys and positions arrive in the
same order."""

import os
import signal
import subprocess
import sys
import tempfile
import time
import unittest

from testwindow import TestWindow

PLAY = os.environ.get("TARVOKE_PLAY", "tarvoke-play")
HOLD = 0.06  # a tap shorter than the sampler's tick could fall between two polls


def xdotool(*args):
    subprocess.run(["xdotool"] + [str(a) for a in args], check=True)


def tap(*keys):
    """Presses the keys in order, holds them, releases them in reverse order."""
    for key in keys:
        xdotool("keydown", key)
        time.sleep(HOLD)
    for key in reversed(keys):
        xdotool("keyup", key)
        time.sleep(HOLD)


def click(button):
    xdotool("mousedown", button)
    time.sleep(HOLD)
    xdotool("mouseup", button)
    time.sleep(HOLD)


def start_recorder(*args):
    """tarvoke-play --record, once it says that it records."""
    recorder = subprocess.Popen([PLAY, "--record", *args], stderr=subprocess.PIPE, text=True)
    line = recorder.stderr.readline()
    if "press Ctrl+0 to stop" not in line:
        raise RuntimeError("the recorder did not start: " + line + recorder.stderr.read())
    return recorder


def inputs(window):
    """Buttons and keys the window received, with repeated modifier presses folded."""
    seen = []
    for e in window.events("ButtonPress", "ButtonRelease", "KeyPress", "KeyRelease"):
        what = (e["type"], e.get("button") or e.get("keysym"), e.get("x"), e.get("y"))
        if seen and what == seen[-1]:
            continue  # a Shift recorded as 16 and 160 arrives as two presses of one key
        seen.append(what)
    return seen


class RecordThenPlay(unittest.TestCase):
    def setUp(self):
        self.folder = tempfile.TemporaryDirectory(prefix="tarvoke-record-")
        self.script = os.path.join(self.folder.name, "recorded.tk")

    def tearDown(self):
        self.folder.cleanup()

    def record(self, window, *extra):
        recorder = start_recorder(self.script, *extra)
        x, y = window.point("top", 40, 30)
        xdotool("mousemove", x - 10, y - 10)
        time.sleep(HOLD)
        xdotool("mousemove", x, y)
        time.sleep(HOLD)
        click(1)
        tap("a")
        tap("shift", "b")
        tap("ctrl", "c")
        time.sleep(0.2)
        tap("ctrl", "0")
        self.assertEqual(recorder.wait(timeout=10), 0, recorder.stderr.read())
        with open(self.script) as f:
            return f.read()

    def test_recording_has_the_frame_and_the_lines_done(self):
        with TestWindow() as window:
            text = self.record(window)
            x, y = window.point("top", 40, 30)
        lines = text.split("\n")
        self.assertEqual(lines[0], "Function(Main);")
        self.assertRegex(lines[1], r"^OrigionalPlayTime\(\d+\.\d+\);$")
        self.assertEqual(lines[2:4], ["SetPausePercent(100);", ""])
        self.assertEqual(lines[-2:], ["", "EndFunction();"])
        body = [line for line in lines[4:-2] if not line.startswith("Pause(")]
        self.assertIn("MoveMouse(%d,%d);" % (x, y), body)
        self.assertLess(body.index("LeftDownEx(%d,%d);" % (x, y)), body.index("LeftUpEx(%d,%d);" % (x, y)))
        keys = [line for line in body if line.startswith("Key")]
        self.assertEqual(keys, ["KeyDown(65);", "KeyUp(65);",
                                "KeyDown(16);", "KeyDown(160);", "KeyDown(66);", "KeyUp(66);", "KeyUp(16);", "KeyUp(160);",
                                "KeyDown(162);", "KeyDown(67);", "KeyUp(67);", "KeyUp(162);"])
        self.assertTrue(all(line.endswith(");") for line in lines[4:-2] if line))

    def test_playing_the_recording_repeats_the_input(self):
        with TestWindow() as window:
            self.record(window, "--no-mouse-move")
            recorded = inputs(window)
        with TestWindow() as window:
            played = subprocess.run([PLAY, self.script], capture_output=True, text=True, timeout=30)
            self.assertEqual(played.returncode, 0, played.stderr)
            replayed = inputs(window)
        # The recording ends with the Ctrl+0 that stopped it, which is not in it.
        self.assertEqual(replayed, recorded[:len(replayed)])
        self.assertGreaterEqual(len(replayed), 12)

    def test_after_ctrl_four_clicks_go_to_the_window_as_sent_events(self):
        with TestWindow() as window:
            recorder = start_recorder(self.script, "--no-mouse-move")
            x, y = window.point("child", 20, 20)
            xdotool("mousemove", x, y)
            tap("ctrl", "4")
            click(1)
            tap("ctrl", "0")
            self.assertEqual(recorder.wait(timeout=10), 0)
        with open(self.script) as f:
            text = f.read()
        self.assertIn('SelectWindow("TarvokeTest", "Tarvoke Test Window");\nSelectSubWindow("TarvokeChild");\n', text)
        self.assertNotIn("KeyDown(52)", text)
        self.assertNotIn("KeyDown(162)", text)
        with TestWindow() as window:
            played = subprocess.run([PLAY, self.script], capture_output=True, text=True, timeout=30)
            self.assertEqual(played.returncode, 0, played.stderr)
            buttons = window.wait_for(2, "ButtonPress", "ButtonRelease")
        # The target window gets the script's position divided by 15 twips per pixel.
        self.assertEqual([(b["type"], b["win"], b["x"], b["y"], b["sent"]) for b in buttons],
                         [("ButtonPress", "child", str(x // 15), str(y // 15), "1"),
                          ("ButtonRelease", "child", str(x // 15), str(y // 15), "1")])

    def test_ctrl_five_samples_the_colour_under_the_cursor(self):
        with TestWindow() as window:
            recorder = start_recorder(self.script, "--no-mouse-move")
            xdotool("mousemove", *window.point("top", 10, 10))  # the top window is white
            tap("ctrl", "5")
            xdotool("mousemove", *window.point("child", 10, 10))  # the child is black
            tap("ctrl", "5")
            tap("ctrl", "0")
            self.assertEqual(recorder.wait(timeout=10), 0)
            with open(self.script) as f:
                body = [line for line in f.read().split("\n") if line and not line.startswith("Pause(")]
            self.assertEqual(body[3:], [
                "CaptureScreen(imagesave0);", "CreateColorRange(colorrange0, 255, 255, 255, 255, 255, 255);",
                "MoveMouseToColorRange(imagesave0, colorrange0);",
                "CaptureScreen(imagesave0);", "CreateColorRange(colorrange0, 0, 0, 0, 0, 0, 0);",
                "MoveMouseToColorRange(imagesave0, colorrange0);", "EndFunction();"])
            # Played back, the last block moves the pointer to the first black pixel of the screen.
            xdotool("mousemove", *window.point("top", 10, 10))
            played = subprocess.run([PLAY, self.script], capture_output=True, text=True, timeout=30)
            self.assertEqual(played.returncode, 0, played.stderr)
            where = subprocess.run(["xdotool", "getmouselocation", "--shell"], capture_output=True, text=True).stdout
            self.assertNotIn("X=%d\nY=%d\n" % window.point("top", 10, 10), where)

    def test_an_existing_file_is_kept_without_force(self):
        with open(self.script, "w") as f:
            f.write("mine")
        refused = subprocess.run([PLAY, "--record", self.script], capture_output=True, text=True, timeout=10)
        self.assertEqual(refused.returncode, 2)
        self.assertIn("--force", refused.stderr)
        with open(self.script) as f:
            self.assertEqual(f.read(), "mine")

    def test_a_recording_that_nothing_takes_is_kept_in_the_state_folder(self):
        # Neither the target (no file can be made in /proc) nor standard output takes it.
        state = os.path.join(self.folder.name, "state")
        with open("/dev/full", "w") as full:
            recorder = subprocess.Popen([PLAY, "--record", "/proc/tarvoke-recorded.tk"], stdout=full,
                                        stderr=subprocess.PIPE, text=True, env=dict(os.environ, XDG_STATE_HOME=state))
            self.assertIn("recording into", recorder.stderr.readline())
            recorder.send_signal(signal.SIGINT)
            errors = recorder.stderr.read()
            self.assertEqual(recorder.wait(timeout=10), 1, errors)
        kept = os.listdir(os.path.join(state, "tarvoke"))
        self.assertEqual(len(kept), 1)
        path = os.path.join(state, "tarvoke", kept[0])
        self.assertIn("the recording is kept in '%s'" % path, errors)
        with open(path) as f:
            self.assertTrue(f.read().startswith("Function(Main);"))


if __name__ == "__main__":
    unittest.main(argv=sys.argv[:1])
