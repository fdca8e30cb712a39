"""The program on a real desktop: a play that hides the window and clicks the
test window, the hotkeys Ctrl+0, Ctrl+8 and Ctrl+9, Open and Save, and White
Debug mode's overlay above the other windows."""

import os
import pathlib
import struct
import subprocess
import sys
import tempfile
import time
import unittest

from testwindow import TestWindow, wait_until, window_named, windows_named, xdotool


def xprop(*args):
    return subprocess.run(["xprop", *args], capture_output=True, text=True).stdout


# The captions once load_script has opened script.tk.
MAIN, BASIC = "Tarvoke - script.tk", "Tarvoke Basic Mode - script.tk"


def hold(keys, ms=100):
    """Holds a chord long enough for a poll every millisecond to see it."""
    xdotool("keydown", keys)
    time.sleep(ms / 1000.0)
    xdotool("keyup", keys)


class Program:
    """tarvoke started with its own settings folder."""

    def __enter__(self):
        self.folder = tempfile.TemporaryDirectory(prefix="tarvoke-app-")
        pathlib.Path(self.folder.name, "settings.dat").write_text("1,1,1,0,0,")
        env = dict(os.environ, TARVOKE_SETTINGS_DIR=self.folder.name)
        env.pop("QT_QPA_PLATFORM", None)
        self.process = subprocess.Popen([os.environ["TARVOKE_APP"]], env=env)
        return self

    def __exit__(self, *exc):
        self.process.kill()
        self.process.wait()
        self.folder.cleanup()

    def visible(self):
        return xdotool("search", "--onlyvisible", "--pid", self.process.pid, check=False).split()

    def windows(self, kind, title=None):
        """Its visible windows whose _NET_WM_WINDOW_TYPE includes kind (DIALOG,
        DROPDOWN_MENU ...), and whose title is title when one is given."""
        props = lambda window: xprop("-id", window, "_NET_WM_WINDOW_TYPE", "_NET_WM_NAME")
        return [window for window in self.visible() if "_NET_WM_WINDOW_TYPE_" + kind in props(window)
                and (title is None or '_NET_WM_NAME(UTF8_STRING) = "%s"' % title in props(window).splitlines())]

    def overlays(self):
        """Its visible windows that are full screen and above the others."""
        state = lambda window: set(xprop("-id", window, "_NET_WM_STATE").replace(",", " ").split())
        return [int(w) for w in self.visible() if {"_NET_WM_STATE_FULLSCREEN", "_NET_WM_STATE_ABOVE"} <= state(w)]

    def load_script(self, text):
        """Writes text to script.tk in the program's folder and opens it by File,
        Open (Ctrl+O) in Advanced Mode, the path typed into the dialog; the caption
        that names the file shows the script is in the editor. Returns the path."""
        path = os.path.join(self.folder.name, "script.tk")
        pathlib.Path(path).write_text(text)
        xdotool("windowactivate", "--sync", window_named("Tarvoke"))
        xdotool("key", "--clearmodifiers", "ctrl+o")
        xdotool("windowactivate", "--sync", window_named("Open Tarvoke script file"))
        xdotool("type", "--delay", "1", path)
        xdotool("key", "Return")
        window_named(MAIN)
        return path

    def to_basic_mode(self):
        """File, Basic Mode in Advanced Mode: the editor's script goes along."""
        window = window_named(MAIN)
        xdotool("windowactivate", "--sync", window)
        # The menu bar's first title, File; from the foot of the menu, Up
        # passes Exit and Settings.
        xdotool("mousemove", "--window", window, 20, 10, "click", 1)
        assert wait_until(lambda: self.windows("DROPDOWN_MENU")), "no File menu"
        xdotool("key", "Up", "Up", "Up", "Return")
        xdotool("windowactivate", "--sync", window_named(BASIC))


def click_script(target, tail=""):
    return "Function(Main);\nMoveMouse(%d, %d);\nLeftClick();\n%sEndFunction();" % (*target.point("top", 30, 30), tail)


def settled(target):
    """The target's clicks, once another tool's click has marked the server's
    time after a run: whatever the run sent came before it."""
    marks = lambda: [p for p in target.events("ButtonPress") if p["button"] == "2"]
    count = len(marks()) + 1
    xdotool("mousemove", *target.point("top", 5, 5), "click", 2)
    assert wait_until(lambda: len(marks()) >= count), "the mark did not arrive"
    return [(p["win"], p["x"], p["y"]) for p in target.events("ButtonPress") if p["button"] == "1"]


class Play(unittest.TestCase):
    def test_advanced_mode_hides_plays_and_comes_back(self):
        counter = ("If(done = 1);\nElse();\nInt(n, 0);\nInt(done, 1);\nEndIf();\nAdd(n, 1);\n"
                   "If(n = 3);\nDisableRepeat();\nEndIf();\n")
        # The script's tail; how often Ctrl+9 starts it while the window is
        # hidden; whether Ctrl+0 must stop it; the clicks it makes.
        rows = [("DisableRepeat();\n", 1, False, 1), (counter, 1, False, 3),
                ("While(1 = 1);\nEndWhile();\n", 1, True, 1), ("Pause(60000);\n", 2, True, 2)]
        for tail, plays, stop, count in rows:
            with self.subTest(tail), TestWindow() as target, Program() as program:
                program.load_script(click_script(target, tail))
                for played in range(1, plays + 1):
                    hold("ctrl+9")
                    target.wait_for(played, "ButtonPress")
                if stop:
                    # A run that goes on keeps the window hidden.
                    self.assertTrue(wait_until(lambda: not windows_named(MAIN), 2), "not hidden")
                    hold("ctrl+0")
                self.assertTrue(wait_until(lambda: windows_named(MAIN), 1 if stop else 5))
                self.assertEqual(settled(target), [("top", "30", "30")] * count)


class Files(unittest.TestCase):
    def test_a_script_opened_by_the_file_dialog_is_saved_there_by_ctrl_s(self):
        # A save that the folder refuses: windows_test (the box, drawn
        # here as the White Debug report is).
        # xdotool types a line end as Linefeed, which the editor does not take.
        new = "Function(Main); MsgBox(new); EndFunction();"
        with Program() as program:
            path = program.load_script("Function(Main);\nMsgBox(old);\nEndFunction();\n")
            # Typed: the editor takes the keys in order, so it has them all when Ctrl+S comes.
            xdotool("key", "--clearmodifiers", "ctrl+a", "Delete", "type", "--delay", "1", new)
            xdotool("key", "--clearmodifiers", "ctrl+s")
            self.assertTrue(wait_until(lambda: pathlib.Path(path).read_bytes() == new.encode()))
            self.assertEqual(sorted(os.listdir(program.folder.name)), ["script.tk", "settings.dat"])
            self.assertFalse(program.windows("DIALOG", "Tarvoke") or windows_named("Save Tarvoke script file"))

    def test_ctrl8_records_until_ctrl0_and_the_editor_plays_it_back(self):
        # The Ctrl+0 that ends the playback can fall between the KeyDown and
        # the KeyUp of the a. The program lets go of such a key when it exits,
        # which a kill skips, and a key left down swallows the next press of
        # it in later tests.
        self.addCleanup(xdotool, "keyup", "a")
        a_presses = lambda: [e for e in target.events("KeyPress") if e["keysym"] == "0x61"]
        with TestWindow() as target, Program() as program:
            # An empty editor: a recording would replace no text, so nobody is asked.
            program.load_script("")
            hold("ctrl+8")
            self.assertTrue(wait_until(lambda: not windows_named(MAIN), 2))
            # Each step held for longer than the recorder's tick.
            xdotool("mousemove", *target.point("top", 40, 40))
            for step in (("mousedown", 1), ("mouseup", 1)):
                time.sleep(0.1)
                xdotool(*step)
            time.sleep(0.1)
            hold("a", 80)
            hold("ctrl+0")
            # The recording is the editor's unsaved script.
            window_named("Tarvoke - Untitled", timeout=2)
            pressed, typed = len(target.events("ButtonPress")), len(a_presses())
            xdotool("mousemove", 5, 5)
            hold("ctrl+9")
            presses = target.wait_for(pressed + 1, "ButtonPress")[pressed:]
            self.assertEqual([(p["win"], p["x"], p["y"]) for p in presses[:1]], [("top", "40", "40")])
            self.assertTrue(wait_until(lambda: len(a_presses()) > typed))
            hold("ctrl+0")
            self.assertTrue(wait_until(lambda: windows_named("Tarvoke - Untitled"), 1.0))


def screenshot():
    """The root window as a function of (x, y) to 0xRRGGBB (32 bits a pixel)."""
    data = subprocess.run(["xwd", "-root", "-silent"], capture_output=True, check=True).stdout
    size, order, line, colours = (struct.unpack_from(">I", data, 4 * i)[0] for i in (0, 7, 12, 19))
    start = size + colours * 12
    return lambda x, y: struct.unpack_from("<I" if order == 0 else ">I", data, start + y * line + x * 4)[0] & 0xFFFFFF


def stacking():
    return [int(w, 16) for w in xprop("-root", "_NET_CLIENT_LIST_STACKING").split("#")[-1].replace(",", " ").split()]


class WhiteDebug(unittest.TestCase):
    def test_overlay_counts_stays_above_and_gives_the_window_back(self):
        """Correct Time from Basic Mode answered Yes covers the screen with the
        white overlay and its counters, keeps it above a window that asks to
        be raised, and gives the calling window back."""
        with TestWindow() as target, Program() as program:
            program.load_script("Function(Main);\nOrigionalPlayTime(1.0);\nSetPausePercent(100);\n"
                                 "Pause(6000);\nEndFunction();")
            program.to_basic_mode()
            # From Record, four Tabs pass Save, Open... and Advanced Mode to Correct Time.
            xdotool("key", *["Tab"] * 4, "space")
            xdotool("windowactivate", "--sync", window_named(r"White Debug mode\?"), "key", "Return")
            overlay = wait_until(program.overlays, 5)
            self.assertTrue(overlay and not windows_named(BASIC))

            top = int(target.ready["top"], 16)
            xdotool("windowactivate", top, check=False)
            xdotool("windowraise", top)
            wait_until(lambda: stacking().index(top) > 0, 2)
            self.assertGreater(stacking().index(overlay[0]), stacking().index(top))
            pixel = screenshot()
            self.assertEqual(pixel(*target.point("child", 100, 50)), 0xFFFFFF, "the black child shows through")
            # "Time (seconds):" and the statement count under "Line:" are drawn.
            for x0, y0, x1, y1 in [(8, 8, 120, 24), (8, 88, 40, 104)]:
                self.assertTrue(any(pixel(x, y) < 0x808080 for x in range(x0, x1) for y in range(y0, y1)))

            report = wait_until(lambda: program.windows("DIALOG"), 15)
            xdotool("windowactivate", "--sync", report[0], "key", "Return")
            self.assertTrue(wait_until(lambda: windows_named(BASIC), 2))
            self.assertFalse(program.overlays())


if __name__ == "__main__":
    unittest.main(argv=sys.argv[:1])
