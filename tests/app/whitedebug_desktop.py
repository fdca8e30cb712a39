"""White Debug mode on a real desktop: Correct Time from Basic Mode answered
Yes covers the screen with the white overlay and its counters, keeps it above
a window that asks to be raised, and gives the calling window back."""

import os
import struct
import subprocess
import unittest

from desktop_windows import Program
from testwindow import TestWindow, wait_until, window_named, windows_named, xdotool


def screenshot():
    """The root window as a function of (x, y) to 0xRRGGBB."""
    data = subprocess.run(["xwd", "-root", "-silent"], capture_output=True, check=True).stdout
    header = struct.unpack(">25I", data[:100])
    size, byte_order, bits, line, colours = header[0], header[7], header[11], header[12], header[19]
    assert bits == 32, "a screen of %d bits a pixel" % bits
    start = size + colours * 12
    order = "<I" if byte_order == 0 else ">I"
    return lambda x, y: struct.unpack_from(order, data, start + y * line + x * 4)[0] & 0xFFFFFF


def stacking():
    out = subprocess.run(["xprop", "-root", "_NET_CLIENT_LIST_STACKING"], capture_output=True, text=True).stdout
    return [int(w, 16) for w in out.split("#")[-1].replace(",", " ").split()]


def full_screen_windows(pid):
    found = []
    for window in xdotool("search", "--onlyvisible", "--pid", pid, check=False).split():
        state = subprocess.run(["xprop", "-id", window, "_NET_WM_STATE"], capture_output=True, text=True).stdout
        if "_NET_WM_STATE_FULLSCREEN" in state and "_NET_WM_STATE_ABOVE" in state:
            found.append(int(window))
    return found


class WhiteDebug(unittest.TestCase):
    def test_overlay_counts_stays_above_and_gives_the_window_back(self):
        with TestWindow() as target, Program() as program:
            program.enter_script("Function(Main);\nOrigionalPlayTime(1.0);\nSetPausePercent(100);\n"
                                 "Pause(6000);\nEndFunction();")
            program.to_basic_mode()
            # From Record, four Tabs pass Save, Open... and Advanced Mode to
            # Correct Time.
            xdotool("key", *["Tab"] * 4, "space")
            xdotool("windowactivate", "--sync", window_named(r"White Debug mode\?"), "key", "Return")
            overlay = wait_until(lambda: full_screen_windows(program.process.pid), 5)
            self.assertTrue(overlay, "no overlay above the others, full screen")
            self.assertFalse(windows_named("Tarvoke Basic Mode"))

            top = int(target.ready["top"], 16)
            xdotool("windowactivate", top, check=False)
            xdotool("windowraise", top)
            # The target's own request has been handled once it stands in the
            # stacking list again; the overlay stays above it.
            wait_until(lambda: top in stacking() and stacking().index(top) > 0, 2)
            order = stacking()
            self.assertGreater(order.index(overlay[0]), order.index(top))
            # SetPausePercent counts twice: Function(Main), the two statements
            # and the pause in hand make 5, drawn under "Line:".
            pixel = screenshot()
            child = target.point("child", 100, 50)
            self.assertEqual(pixel(*child), 0xFFFFFF, "the black child window shows through")
            for name, (x0, y0, x1, y1) in [("Time (seconds):", (8, 8, 120, 24)), ("the line count", (8, 88, 40, 104))]:
                dark = [(x, y) for x in range(x0, x1) for y in range(y0, y1) if pixel(x, y) < 0x808080]
                self.assertTrue(dark, "nothing drawn for " + name)

            # The report, then the calling window and no overlay.
            report = wait_until(lambda: program.windows("DIALOG"), 15)
            self.assertTrue(report, "no report")
            xdotool("windowactivate", "--sync", report[0], "key", "Return")
            self.assertTrue(wait_until(lambda: windows_named("Tarvoke Basic Mode"), 2))
            self.assertFalse(full_screen_windows(program.process.pid))


if __name__ == "__main__":
    unittest.main()
