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


INPUT_TYPES = ("ButtonPress", "ButtonRelease", "KeyPress", "KeyRelease")


def xte(*commands, window=None, total=0):
    """Input with no hold at all: each press and its release leave together.
    With a window, waits until it has received total presses and releases:
    the window manager holds a click on a client window back until it has
    looked at it, so a burst of the other device waits, as a person's would."""
    subprocess.run(["xte", *commands], check=True)
    if window and len(window.wait_for(total, *INPUT_TYPES)) < total:
        raise AssertionError("the window did not receive the input")


def click(button):
    xdotool("mousedown", button)
    time.sleep(HOLD)
    xdotool("mouseup", button)
    time.sleep(HOLD)


def start_recorder(script, *extra, env=None):
    """tarvoke-play --record, once it says it records (it listens by then)."""
    recorder = subprocess.Popen([PLAY, "--record", script, *extra], stderr=subprocess.PIPE, text=True, env=env)
    line = recorder.stderr.readline()
    if "recording into" not in line:
        raise AssertionError("the recorder did not start: " + line + recorder.stderr.read())
    return recorder


def stop_recorder(test, recorder, script):
    tap("ctrl", "0")
    test.assertEqual(recorder.wait(timeout=10), 0, recorder.stderr.read())
    recorder.stderr.close()
    with open(script) as f:
        return f.read()


def body(text):
    """The recorded lines between the frame, without the pauses."""
    return [line for line in text.split("\n")[4:-2] if line and not line.startswith("Pause(")]


def key_lines(text):
    """KeyDown and KeyUp of each character, as the recorder writes a tap."""
    lines = []
    for c in text:
        lines += ["KeyDown(%d);" % ord(c.upper()), "KeyUp(%d);" % ord(c.upper())]
    return lines


BUTTON_NAMES = {"1": "Left", "2": "Middle", "3": "Right"}


def lines_seen(window):
    """What the window received, as the recorder writes it: clicks with their
    place, letters and digits as their keys, in the order the server
    delivered them (a window manager may hold a click back behind keys)."""
    lines = []
    for e in window.events("ButtonPress", "ButtonRelease", "KeyPress", "KeyRelease"):
        down = e["type"].endswith("Press")
        if e["type"].startswith("Button"):
            lines.append("%s%sEx(%s);" % (BUTTON_NAMES[e["button"]], "Down" if down else "Up", e["root"]))
        else:
            lines.append("Key%s(%d);" % ("Down" if down else "Up", ord(chr(int(e["keysym"], 16)).upper())))
    return lines


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
        # Then taps with no hold at all, a click where the pointer moved to,
        # and a click after a warp.
        xte("mouseclick 1", "mouseclick 1", window=window, total=16)
        xte("str xyz", window=window, total=22)
        xte("mousemove %d %d" % (x + 20, y + 25), "mouseclick 3", window=window, total=24)
        xdotool("mousemove", x + 30, y + 5, "click", 1)
        return stop_recorder(self, recorder, self.script)

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
                                "KeyDown(162);", "KeyDown(67);", "KeyUp(67);", "KeyUp(162);"] + key_lines("xyz"))
        self.assertTrue(all(line.endswith(");") for line in lines[4:-2] if line))

    def test_input_with_no_hold_is_all_recorded_in_order(self):
        with TestWindow() as window:
            x, y = window.point("top", 40, 30)
            xdotool("mousemove", x, y)
            recorder = start_recorder(self.script, "--no-mouse-move")
            letters = "abcdefghijklmnopqrstuvwxyz0123456789"
            xte(*["mouseclick 1"] * 20, window=window, total=40)
            xte("str " + letters, window=window, total=40 + 72)
            seen = lines_seen(window)
            text = stop_recorder(self, recorder, self.script)
        expected = ["LeftDownEx(%d,%d);" % (x, y), "LeftUpEx(%d,%d);" % (x, y)] * 20 + key_lines(letters)
        self.assertEqual(seen, expected)
        self.assertEqual(body(text), expected)
        # A press and its release within one millisecond stand with a Pause of 0 between them.
        self.assertIn("LeftDownEx(%d,%d);\nPause(0);\nLeftUpEx" % (x, y), text)

    def test_a_click_right_after_a_move_or_a_warp_is_recorded_where_it_happened(self):
        with TestWindow() as window:
            points = [window.point("top", 20 + 17 * i, 15 + 9 * i) for i in range(8)]
            recorder = start_recorder(self.script)
            for i, (x, y) in enumerate(points):
                if i % 2:
                    xte("mousemove %d %d" % (x, y), "mouseclick 1")  # a move of the XTest pointer
                else:
                    xdotool("mousemove", x, y, "click", 1)  # a warp, which makes no raw motion
            lines = body(stop_recorder(self, recorder, self.script))
        expected = []
        for x, y in points:
            expected += ["MoveMouse(%d,%d);" % (x, y), "LeftDownEx(%d,%d);" % (x, y), "LeftUpEx(%d,%d);" % (x, y)]
        self.assertEqual(lines, expected)

    def test_ctrl_six_and_seven_flip_the_flags_for_the_rest_of_the_recording(self):
        env = dict(os.environ, TARVOKE_SETTINGS_DIR=os.path.join(self.folder.name, "settings"))
        with TestWindow() as window:
            (x1, y1), (x2, y2) = window.point("top", 20, 20), window.point("top", 60, 50)
            recorder = start_recorder(self.script, env=env)
            xte("mousemove %d %d" % (x1, y1), "mouseclick 1")
            tap("ctrl", "6")
            tap("ctrl", "7")
            xte("mousemove %d %d" % (x2, y2), "mouseclick 1")
            tap("ctrl", "7")
            xte("mouseclick 1")
            lines = body(stop_recorder(self, recorder, self.script))
        self.assertEqual(lines, ["MoveMouse(%d,%d);" % (x1, y1), "LeftDownEx(%d,%d);" % (x1, y1),
                                 "LeftUpEx(%d,%d);" % (x1, y1), "LeftDown();", "LeftUp();",
                                 "LeftDownEx(%d,%d);" % (x2, y2), "LeftUpEx(%d,%d);" % (x2, y2)])
        # The player keeps no settings.
        self.assertFalse(os.path.exists(env["TARVOKE_SETTINGS_DIR"]))

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
        self.assertGreaterEqual(len(replayed), 12 + 4 + 6 + 4)

    def test_after_ctrl_four_clicks_go_to_the_window_as_sent_events(self):
        with TestWindow() as window:
            recorder = start_recorder(self.script, "--no-mouse-move")
            x, y = window.point("child", 20, 20)
            xdotool("mousemove", x, y)
            tap("ctrl", "4")
            click(1)
            text = stop_recorder(self, recorder, self.script)
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
            text = stop_recorder(self, recorder, self.script)
            body = [line for line in text.split("\n") if line and not line.startswith("Pause(")]
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
