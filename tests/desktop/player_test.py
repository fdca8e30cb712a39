"""tarvoke-play on the desktop: scripts act on the test window through the X
server, and a run stops on Ctrl+0, SIGINT and SIGTERM with no key left down."""

import os
import signal
import subprocess
import sys
import tempfile
import time
import unittest

from testwindow import TestWindow

PLAY = os.environ["TARVOKE_PLAY"]


def xdotool(*args):
    return subprocess.run(["xdotool"] + [str(a) for a in args], check=True, capture_output=True, text=True).stdout


def pointer():
    out = xdotool("getmouselocation", "--shell")
    fields = dict(line.split("=") for line in out.split())
    return int(fields["X"]), int(fields["Y"])


class Script:
    """A script in a file of its own, played by tarvoke-play."""

    def __init__(self, text):
        self.folder = tempfile.TemporaryDirectory(prefix="tarvoke-play-")
        self.path = os.path.join(self.folder.name, "script.tk")
        with open(self.path, "w") as out:
            out.write("Function(Main);\n" + text + "\nEndFunction();\n")

    def run(self, *options, timeout=20):
        return subprocess.run([PLAY, *options, self.path], capture_output=True, text=True, timeout=timeout,
                              env=dict(os.environ, TARVOKE_SETTINGS_DIR=self.folder.name))

    def start(self):
        return subprocess.Popen([PLAY, self.path], stdout=subprocess.PIPE, stderr=subprocess.PIPE, text=True,
                                env=dict(os.environ, TARVOKE_SETTINGS_DIR=self.folder.name))


def describe(events, *keys):
    return [" ".join([e["type"]] + ["%s=%s" % (k, e.get(k, "")) for k in keys]) for e in events]


class ActingOnTheDesktop(unittest.TestCase):
    def test_clicks_and_keys_arrive_in_order(self):
        with TestWindow() as window:
            x, y = window.point("child", 25, 35)
            result = Script("MoveMouse(%d, %d);\nLeftClick();\nRightDown();\nRightUp();\n"
                            "KeyDown(65);\nKeyUp(65);\nKeyDown(190);\nKeyUp(190);\nMiddleClick();" % (x, y)).run()
            self.assertEqual(result.returncode, 0, result.stderr)
            # The window manager holds clicks back for a moment (it grabs
            # them to raise windows), so keys may overtake them: the order
            # is checked among the buttons and among the keys.
            buttons = window.wait_for(6, "ButtonPress", "ButtonRelease")
            keys = window.wait_for(4, "KeyPress", "KeyRelease")
        self.assertEqual(describe(buttons, "win", "sent", "button", "x", "y"), [
            "ButtonPress win=child sent=0 button=1 x=25 y=35",
            "ButtonRelease win=child sent=0 button=1 x=25 y=35",
            "ButtonPress win=child sent=0 button=3 x=25 y=35",
            "ButtonRelease win=child sent=0 button=3 x=25 y=35",
            "ButtonPress win=child sent=0 button=2 x=25 y=35",
            "ButtonRelease win=child sent=0 button=2 x=25 y=35",
        ])
        # Keys go to the focused window's child under the pointer.
        self.assertEqual(describe(keys, "win", "sent", "keysym"), [
            "KeyPress win=child sent=0 keysym=0x61", "KeyRelease win=child sent=0 keysym=0x61",
            "KeyPress win=child sent=0 keysym=0x2e", "KeyRelease win=child sent=0 keysym=0x2e",
        ])

    def test_sendkeys_types_character_for_character(self):
        with TestWindow() as window:
            result = Script('SendKeys("Hi You! 9{+}\u00e9\u20ac~");').run()
            self.assertEqual(result.returncode, 0, result.stderr)
            expected = ["0x48", "0x69", "0x20", "0x59", "0x6f", "0x75", "0x21", "0x20", "0x39", "0x2b",
                        "0xe9", "0x10020ac", "0xff0d"]
            deadline = time.monotonic() + 5
            while True:
                typed = [e["keysym"] for e in window.events("KeyPress") if e["keysym"] not in ("0xffe1", "0xffe2")]
                if len(typed) >= len(expected) or time.monotonic() > deadline:
                    break
                time.sleep(0.02)
        self.assertEqual(typed, expected)

    def test_ex_commands_reach_the_selected_window_by_sent_events(self):
        with TestWindow("--class", "Target", "--title", "Target Window", "--child-class", "TargetChild") as window:
            xdotool("mousemove", 3, 3)
            # At 15 twips a pixel, 300 and 150 arrive as 20 and 10.
            # Look-ups ignore case: unquoted names are lower-cased at load.
            result = Script('SelectWindow(target, "TARGET window");\nLeftDownEx(300, 150);\nLeftUpEx(300, 150);\n'
                            'KeyDown(66);\nKeyUp(66);\nSelectSubWindow(targetchild);\nRightDownEx(45, 30);\n'
                            'RightUpEx(45, 30);\nDeselectWindow();\nMoveMouse(7, 8);').run()
            self.assertEqual(result.returncode, 0, result.stderr)
            events = window.wait_for(6, "ButtonPress", "ButtonRelease", "KeyPress", "KeyRelease")
            self.assertEqual(pointer(), (7, 8), "the pointer moves only with MoveMouse")
        self.assertEqual(describe(events, "win", "sent", "button", "x", "y", "keysym"), [
            "ButtonPress win=top sent=1 button=1 x=20 y=10 keysym=",
            "ButtonRelease win=top sent=1 button=1 x=20 y=10 keysym=",
            "KeyPress win=top sent=1 button= x=0 y=0 keysym=0x62",
            "KeyRelease win=top sent=1 button= x=0 y=0 keysym=0x62",
            "ButtonPress win=child sent=1 button=3 x=3 y=2 keysym=",
            "ButtonRelease win=child sent=1 button=3 x=3 y=2 keysym=",
        ])

    def test_a_plain_click_notes_where_it_happened(self):
        # Moved by xdotool's warp, which the server reports to no raw-event
        # listener: the position must come from the server itself.
        xdotool("mousemove", 321, 234)
        result = Script("LeftClick();\nMoveMouse(5, 6);\nInt(a, 0);\nAdd(a, lx);\nInt(b, 0);\nAdd(b, ly);\n"
                        "MoveMouse(40000, -70000);").run("--dump")
        self.assertEqual(result.returncode, 0, result.stderr)
        self.assertIn("Long: a, value: 321\n", result.stdout)
        self.assertIn("Long: b, value: 234\n", result.stdout)
        # A position beyond the screen stops at its edge.
        self.assertEqual(pointer(), (1919, 0))

    def test_start_runs_a_program_whose_window_appears(self):
        testwindow = os.environ["TARVOKE_TESTWINDOW"]
        # A program that names its process on its window, and one that does not.
        for name, extra in (("WithPid", ""), ("NoPid", " --pid no")):
            with self.subTest(name):
                # The message box keeps the run, and so its watch of the new window, alive.
                script = Script('StartEx("%s", "--class %s --title \'Launched Window\'%s", maximized);\n'
                                'Message(Started, normal, Started);' % (testwindow, name, extra))
                process = script.start()
                self.assertTrue(wait_until(lambda: windows_named("Started")), "no message box appeared")
                found = []
                wait_until(lambda: found.extend(subprocess.run(["xdotool", "search", "--class", name],
                                                               capture_output=True, text=True).stdout.split())
                           or found)
                self.assertTrue(found)
                maximized = wait_until(lambda: "_NET_WM_STATE_MAXIMIZED_VERT" in subprocess.run(
                    ["xprop", "-id", found[0], "_NET_WM_STATE"], capture_output=True, text=True).stdout)
                xdotool("windowactivate", "--sync", windows_named("Started")[0], "key", "--clearmodifiers", "Return")
                process.communicate(timeout=10)
                for window in found:
                    subprocess.run(["xdotool", "windowkill", window], capture_output=True)
                self.assertTrue(maximized, "the window was not maximized")


# Modifiers that typing adds around a character (Shift, AltGr).
MODIFIER_KEYSYMS = {"0xffe1", "0xffe2", "0xfe03", "0xff7e"}


def typed(window, count):
    """The keysyms of the window's key presses, modifiers left out, once there are count of them."""
    deadline = time.monotonic() + 5
    while True:
        keys = [e["keysym"] for e in window.events("KeyPress") if e["keysym"] not in MODIFIER_KEYSYMS]
        if len(keys) >= count or time.monotonic() > deadline:
            return keys
        time.sleep(0.02)


class TwoWindows:
    """Two test windows side by side; the right one, shown last, has the focus."""

    def __enter__(self):
        self.left = TestWindow("--class", "Left", "--geometry", "500x300+20+40").__enter__()
        self.right = TestWindow("--class", "Right", "--geometry", "500x300+700+40").__enter__()
        return self.left, self.right

    def __exit__(self, *exc):
        self.right.__exit__(*exc)
        self.left.__exit__(*exc)


class OrderAcrossDevices(unittest.TestCase):
    """The window manager holds a click on an unfocused window back until it
    has focused it, while keys would pass: the keys still land behind it."""

    QTKEXZ = ["0x71", "0x74", "0x6b", "0x65", "0x78", "0x7a", "0x31", "0x77", "0xff0d"]

    def test_keys_after_a_click_land_in_the_clicked_window(self):
        rows = [
            ("plain click, text", "MoveMouse({x}, {y});\nLeftClick();\nSendKeys(\"qtkexz1w~\");", self.QTKEXZ),
            ("Ex click, text", "LeftDownEx({x}, {y});\nLeftUpEx({x}, {y});\nSendKeys(\"qtkexz1w~\");",
             self.QTKEXZ),
            ("plain click, numbers", "MoveMouse({x}, {y});\nLeftClick();\nKeyDown(81);\nKeyUp(81);\nKeyDown(84);\n"
             "KeyUp(84);", ["0x71", "0x74"]),
            ("Ex click, numbers", "LeftDownEx({x}, {y});\nLeftUpEx({x}, {y});\nKeyDown(81);\nKeyUp(81);", ["0x71"]),
        ]
        for name, body, expected in rows:
            with self.subTest(name), TwoWindows() as (left, right):
                x, y = left.point("top", 30, 30)
                result = Script(body.format(x=x, y=y)).run()
                self.assertEqual(result.returncode, 0, result.stderr)
                self.assertEqual(typed(left, len(expected)), expected)
                self.assertEqual(right.events("KeyPress", "KeyRelease"), [])

    def test_keys_a_click_and_keys_keep_their_order(self):
        with TestWindow() as window:
            x, y = window.point("top", 30, 30)
            result = Script('SendKeys("ab");\nMoveMouse(%d, %d);\nLeftClick();\nSendKeys("cd");' % (x, y)).run()
            self.assertEqual(result.returncode, 0, result.stderr)
            events = window.wait_for(10, "KeyPress", "KeyRelease", "ButtonPress", "ButtonRelease")
        self.assertEqual(describe(events, "keysym", "button"), [
            "KeyPress keysym=0x61 button=", "KeyRelease keysym=0x61 button=",
            "KeyPress keysym=0x62 button=", "KeyRelease keysym=0x62 button=",
            "ButtonPress keysym= button=1", "ButtonRelease keysym= button=1",
            "KeyPress keysym=0x63 button=", "KeyRelease keysym=0x63 button=",
            "KeyPress keysym=0x64 button=", "KeyRelease keysym=0x64 button=",
        ])

    def test_a_key_after_a_shift_drag_follows_it(self):
        with TestWindow() as window:
            (x1, y1), (x2, y2) = window.point("top", 30, 30), window.point("top", 200, 120)
            result = Script("MoveMouse(%d, %d);\nKeyDown(16);\nLeftDown();\nMoveMouse(%d, %d);\nLeftUp();\n"
                            "KeyUp(16);\nKeyDown(65);\nKeyUp(65);" % (x1, y1, x2, y2)).run()
            self.assertEqual(result.returncode, 0, result.stderr)
            events = window.wait_for(6, "ButtonPress", "ButtonRelease", "KeyPress", "KeyRelease")
        self.assertEqual(describe(events, "keysym", "button", "state"), [
            "KeyPress keysym=0xffe1 button= state=0x0", "ButtonPress keysym= button=1 state=0x1",
            "ButtonRelease keysym= button=1 state=0x101", "KeyRelease keysym=0xffe1 button= state=0x1",
            "KeyPress keysym=0x61 button= state=0x0", "KeyRelease keysym=0x61 button= state=0x0",
        ])
        self.assertEqual((events[1]["x"], events[2]["x"]), ("30", "200"), "the drag ends where it was moved to")


def setxkbmap(layout):
    subprocess.run(["setxkbmap", layout], check=True)


class Layouts(unittest.TestCase):
    def tearDown(self):
        setxkbmap("us")

    def test_every_character_of_the_map_is_typed_at_its_level(self):
        # AltGr characters, and on the French map ß, which needs a spare key.
        # ("#" would start a comment of the script.)
        rows = [
            ("de", "@[]{{}{}}\\|{~}", ["0x40", "0x5b", "0x5d", "0x7b", "0x7d", "0x5c", "0x7c", "0x7e"]),
            ("fr", "@{^}[]{{}{}}\\|`\u00df", ["0x40", "0x5e", "0x5b", "0x5d", "0x7b", "0x7d", "0x5c",
                                              "0x7c", "0x60", "0xdf"]),
        ]
        for layout, keys, expected in rows:
            with self.subTest(layout), TestWindow() as window:
                setxkbmap(layout)
                result = Script('SendKeys("%s");' % keys).run()
                self.assertEqual(result.returncode, 0, result.stderr)
                self.assertEqual(typed(window, len(expected)), expected)

    def test_a_map_switched_during_a_run_is_followed(self):
        with TestWindow() as window:
            x, y = window.point("top", 30, 30)
            script = Script('SendKeys("yz");\nMessage(Switch the map, normal, Switch);\nMoveMouse(%d, %d);\n'
                            'LeftClick();\nSendKeys("yz");' % (x, y))
            process = script.start()
            self.assertTrue(wait_until(lambda: windows_named("Switch")), "no message box appeared")
            setxkbmap("de")
            xdotool("windowactivate", "--sync", windows_named("Switch")[0], "key", "--clearmodifiers", "Return")
            _, errors = process.communicate(timeout=10)
            self.assertEqual(process.returncode, 0, errors)
            self.assertEqual(typed(window, 4), ["0x79", "0x7a", "0x79", "0x7a"])


class StoppingARun(unittest.TestCase):
    LOOP = "KeyDown(160);\nLeftDown();\nWhile(1 = 1);\nEndWhile();"
    PAUSE = "KeyDown(160);\nLeftDown();\nPause(60000);"
    # Copies of a text of 256 MB, each a long step of its own.
    HUGE = "KeyDown(160);\nLeftDown();\nString(x, a);\n" + "Combine(x, x);\n" * 28 + \
        "While(1 = 1);\nString(y, x);\nString(y, b);\nEndWhile();"

    def stop_within_a_second(self, body, stop, status, busy=lambda process: True):
        with TestWindow() as window:
            xdotool("mousemove", *window.point("top", 10, 10))
            script = Script(body)  # kept: its folder goes with it
            process = script.start()
            # The run is under way once its Shift press has arrived.
            self.assertTrue(window.wait_for(1, "KeyPress"), "the run did not start")
            self.assertTrue(wait_until(lambda: busy(process), timeout=20), "the run did not get busy")
            started = time.monotonic()
            stop(process)
            _, errors = process.communicate(timeout=5)
            took = time.monotonic() - started
            print("stop after %.0f ms" % (took * 1000), file=sys.stderr)
            self.assertLess(took, 1.5)
            self.assertEqual(process.returncode, status, errors)
            deadline = time.monotonic() + 5
            released = []
            while time.monotonic() < deadline and "0xffe1" not in [e["keysym"] for e in released]:
                released = window.events("KeyRelease")
                time.sleep(0.02)
            buttons = window.wait_for(2, "ButtonPress", "ButtonRelease")
        self.assertIn("0xffe1", [e["keysym"] for e in released], "the Shift the run pressed is released")
        self.assertEqual([e["type"] for e in buttons], ["ButtonPress", "ButtonRelease"])

    def ctrl_zero(self, process):
        xdotool("keydown", "ctrl", "keydown", "0", "sleep", "0.06", "keyup", "0", "keyup", "ctrl")

    def test_ctrl_zero_stops_a_loop(self):
        self.stop_within_a_second(self.LOOP, self.ctrl_zero, 0)

    def test_ctrl_zero_stops_a_pause(self):
        self.stop_within_a_second(self.PAUSE, self.ctrl_zero, 0)

    def test_sigint_stops_a_loop(self):
        self.stop_within_a_second(self.LOOP, lambda p: p.send_signal(signal.SIGINT), 130)

    def test_sigint_stops_a_pause(self):
        self.stop_within_a_second(self.PAUSE, lambda p: p.send_signal(signal.SIGINT), 130)

    def test_sigterm_stops_a_pause(self):
        self.stop_within_a_second(self.PAUSE, lambda p: p.send_signal(signal.SIGTERM), 143)

    def test_a_stop_ends_a_long_typing_at_once(self):
        # 20 times 9,999 characters.
        body = 'SendKeys("%s");' % ("{a 9999}" * 20)
        rows = [("SIGINT", lambda p: p.send_signal(signal.SIGINT), 130),
                ("SIGTERM", lambda p: p.send_signal(signal.SIGTERM), 143), ("Ctrl+0", self.ctrl_zero, 0)]
        for name, stop, status in rows:
            with self.subTest(name), TestWindow() as window:
                xdotool("mousemove", *window.point("top", 10, 10))
                script = Script(body)
                process = script.start()
                self.assertTrue(window.wait_for(200, "KeyPress"), "the typing did not start")
                started = time.monotonic()
                stop(process)
                # A click by another tool marks the server's time after the stop.
                xdotool("click", "2")
                _, errors = process.communicate(timeout=5)
                self.assertLess(time.monotonic() - started, 1.5)
                self.assertEqual(process.returncode, status, errors)
                marks = window.wait_for(1, "ButtonPress", timeout=30)
                self.assertTrue(marks, "the mark did not arrive")
                late = [e for e in window.events("KeyPress") if int(e["time"]) > int(marks[0]["time"])]
                self.assertEqual(late, [], "keys arrived after the stop")
                # The stop key is the player's while it runs.
                self.assertNotIn("0x30", [e["keysym"] for e in window.events("KeyPress")])

    def test_ctrl_zero_stops_a_step_on_a_huge_text(self):
        self.stop_within_a_second(self.HUGE, self.ctrl_zero, 0, busy=lambda p: resident_mb(p.pid) > 600)


def resident_mb(pid):
    with open("/proc/%d/status" % pid) as f:
        return int(next(line for line in f if line.startswith("VmRSS:")).split()[1]) // 1024


def windows_named(title):
    return subprocess.run(["xdotool", "search", "--onlyvisible", "--name", "^%s$" % title], capture_output=True,
                          text=True).stdout.split()


def wait_until(condition, timeout=5):
    deadline = time.monotonic() + timeout
    while not condition() and time.monotonic() < deadline:
        time.sleep(0.02)
    return condition()


class MessageBoxes(unittest.TestCase):
    def test_the_run_waits_until_the_box_is_closed(self):
        with TestWindow() as window:
            x, y = window.point("top", 30, 40)
            script = Script("Message(Hello there, information, Greeting);\nMoveMouse(%d, %d);\nLeftClick();" % (x, y))
            process = script.start()
            self.assertTrue(wait_until(lambda: windows_named("Greeting")), "no message box appeared")
            time.sleep(0.3)
            self.assertEqual(window.events("ButtonPress"), [], "the run went on past the open box")
            box = windows_named("Greeting")[0]
            xdotool("windowactivate", "--sync", box, "key", "--clearmodifiers", "Return")
            _, errors = process.communicate(timeout=10)
            self.assertEqual(process.returncode, 0, errors)
            buttons = window.wait_for(2, "ButtonPress", "ButtonRelease")
            self.assertEqual(len(buttons), 2, buttons)

    def test_a_stop_closes_the_open_box(self):
        script = Script("Message(Still here, normal, Unanswered);\nPause(60000);")
        process = script.start()
        self.assertTrue(wait_until(lambda: windows_named("Unanswered")), "no message box appeared")
        process.send_signal(signal.SIGINT)
        _, errors = process.communicate(timeout=5)
        self.assertEqual(process.returncode, 130, errors)
        self.assertTrue(wait_until(lambda: not windows_named("Unanswered")), "the box stayed open")


class WithoutADisplay(unittest.TestCase):
    def test_acting_needs_a_display(self):
        env = {k: v for k, v in os.environ.items() if k != "DISPLAY"}
        result = subprocess.run([PLAY, "-"], input="Function(Main);\nEndFunction();\n", capture_output=True,
                                text=True, env=env, timeout=10)
        self.assertEqual(result.returncode, 2)
        self.assertIn("DISPLAY is not set", result.stderr)

    def test_a_wayland_session_is_told_once(self):
        env = dict(os.environ, WAYLAND_DISPLAY="wayland-test")
        result = subprocess.run([PLAY, "-"], input="Function(Main);\nEndFunction();\n", capture_output=True,
                                text=True, env=env, timeout=10)
        self.assertEqual(result.returncode, 0, result.stderr)
        self.assertEqual(result.stderr.count("acts on X11 windows only"), 1)


if __name__ == "__main__":
    unittest.main(argv=sys.argv[:1])
