"""The rig itself: the test window logs what a peer tool (xdotool) does on the
desktop, so the other desktop tests can trust its log."""

import subprocess
import sys
import unittest

from testwindow import TestWindow


def xdotool(*args):
    subprocess.run(["xdotool"] + [str(a) for a in args], check=True)


class TestWindowLog(unittest.TestCase):
    def test_clicks_and_keys_are_logged_with_positions(self):
        with TestWindow() as window:
            x, y = window.point("child", 20, 30)
            xdotool("mousemove", x, y, "click", "3")
            xdotool("key", "--delay", "0", "a", "shift+b")
            buttons = window.wait_for(2, "ButtonPress", "ButtonRelease")
            keys = window.wait_for(3, "KeyPress")
        self.assertEqual([(b["type"], b["win"], b["button"], b["x"], b["y"], b["sent"]) for b in buttons],
                         [("ButtonPress", "child", "3", "20", "30", "0"),
                          ("ButtonRelease", "child", "3", "20", "30", "0")])
        self.assertEqual([k["keysym"] for k in keys if k["keysym"] != "0xffe1"], ["0x61", "0x42"])

    def test_window_names_are_readable(self):
        with TestWindow("--class", "RigClass", "--title", "Rig Title") as window:
            top = window.ready["top"]
            out = subprocess.run(["xprop", "-id", top, "WM_CLASS", "_NET_WM_NAME"], capture_output=True,
                                 text=True, check=True).stdout
        self.assertIn('"RigClass", "RigClass"', out)
        self.assertIn('"Rig Title"', out)


if __name__ == "__main__":
    unittest.main(argv=sys.argv[:1])
