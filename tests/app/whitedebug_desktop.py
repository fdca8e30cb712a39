"""White Debug mode on a real desktop: Correct Time from Basic Mode answered
Yes covers the screen with the white overlay and its counters, keeps it above
a window that asks to be raised, and gives the calling window back."""

import struct
import subprocess
import unittest

from desktop_windows import Program
from testwindow import TestWindow, wait_until, window_named, windows_named, xdotool


def screenshot():
    """The root window as a function of (x, y) to 0xRRGGBB (32 bits a pixel)."""
    data = subprocess.run(["xwd", "-root", "-silent"], capture_output=True, check=True).stdout
    size, order, line, colours = (struct.unpack_from(">I", data, 4 * i)[0] for i in (0, 7, 12, 19))
    start = size + colours * 12
    return lambda x, y: struct.unpack_from("<I" if order == 0 else ">I", data, start + y * line + x * 4)[0] & 0xFFFFFF


def stacking():
    return [int(w, 16) for w in xprop("-root", "_NET_CLIENT_LIST_STACKING").split("#")[-1].replace(",", " ").split()]


def xprop(*args):
    return subprocess.run(["xprop", *args], capture_output=True, text=True).stdout


def overlays(pid):
    """The program's windows that are full screen and above the others."""
    return [int(w) for w in xdotool("search", "--onlyvisible", "--pid", pid, check=False).split()
            if {"_NET_WM_STATE_FULLSCREEN", "_NET_WM_STATE_ABOVE"} <= set(xprop("-id", w, "_NET_WM_STATE").replace(",", " ").split())]


class WhiteDebug(unittest.TestCase):
    def test_overlay_counts_stays_above_and_gives_the_window_back(self):
        with TestWindow() as target, Program() as program:
            program.enter_script("Function(Main);\nOrigionalPlayTime(1.0);\nSetPausePercent(100);\n"
                                 "Pause(6000);\nEndFunction();")
            program.to_basic_mode()
            # From Record, four Tabs pass Save, Open... and Advanced Mode to Correct Time.
            xdotool("key", *["Tab"] * 4, "space")
            xdotool("windowactivate", "--sync", window_named(r"White Debug mode\?"), "key", "Return")
            overlay = wait_until(lambda: overlays(program.process.pid), 5)
            self.assertTrue(overlay and not windows_named("Tarvoke Basic Mode"))

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
            self.assertTrue(wait_until(lambda: windows_named("Tarvoke Basic Mode"), 2))
            self.assertFalse(overlays(program.process.pid))


if __name__ == "__main__":
    unittest.main()
