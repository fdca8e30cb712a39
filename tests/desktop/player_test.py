"""tarvoke-play on the desktop: scripts act on the test window through the X
server in the script's order, and a run stops on Ctrl+0, SIGINT and SIGTERM
with no key left down; the next run lets go of what a killed one left. A
compiled program plays alone in a folder of its own and reads the pictures
beside it."""

import os
import shutil
import signal
import subprocess
import sys
import tempfile
import time
import unittest

from testwindow import (INPUT, PLAY, Script, TestWindow, answer, pointer, resident_mb, wait_until,
                        window_named, windows_named, xdotool)


def taps(where, *taps):
    """Press and release of each button (a number) or keysym, with no modifier, at where (window, sent, x, y)."""
    return ["%s%s %s %s 0x%x" % (kind, step, where, what, mask) for what in taps
            for kind, release in [("Button", 0x80 << int(what)) if len(what) == 1 else ("Key", 0)]
            for step, mask in (("Press", 0), ("Release", release))]


def logged(events):
    return [" ".join(e.get(k) or e.get("keysym") for k in ("type", "win", "sent", "x", "y", "button", "state"))
            for e in events]


class ActingOnTheDesktop(unittest.TestCase):
    def test_input_arrives_in_the_script_s_order_where_it_was_aimed(self):
        # The window manager holds a click back for a moment (it grabs it to
        # raise the window) while keys would pass: the player keeps the order.
        # Keys go to the focused window's child under the pointer.
        rows = [
            # 65 is "a" pressed alone; 190 the physical key of "."; 49 the key of "1".
            ("buttons and keys", [], "MoveMouse({cx}, {cy});\nLeftClick();\nRightDown();\nRightUp();\n"
             "KeyDown(65);\nKeyUp(65);\nKeyDown(190);\nKeyUp(190);\nKeyDown(49);\nKeyUp(49);\nKeyDown(13);\n"
             "KeyUp(13);\nMiddleClick();", False,
             taps("child 0 25 35", "1", "3", "0x61", "0x2e", "0x31", "0xff0d", "2")),
            ("keys, a click, keys", [], 'SendKeys("ab");\nMoveMouse({tx}, {ty});\nLeftClick();\nSendKeys("cd");', False,
             taps("top 0 30 30", "0x61", "0x62", "1", "0x63", "0x64")),
            ("a key after a shift-drag", [], "MoveMouse({tx}, {ty});\nKeyDown(16);\nLeftDown();\n"
             "MoveMouse({dx}, {dy});\nLeftUp();\nKeyUp(16);\nKeyDown(65);\nKeyUp(65);", False,
             ["KeyPress top 0 30 30 0xffe1 0x0", "ButtonPress top 0 30 30 1 0x1",
              # The drag ends where it was moved to.
              "ButtonRelease top 0 200 120 1 0x101", "KeyRelease child 0 150 70 0xffe1 0x1"]
             + taps("child 0 150 70", "0x61")),
            # A release the window manager still holds lands where the pointer
            # is when it lets it go: the move behind it waits.
            ("a move right after a click", [], "RightDownEx({cx}, {cy});\nRightUpEx({cx}, {cy});\n"
             "MoveMouse({tx}, {ty});\nLeftClick();", False, taps("child 0 25 35", "3") + taps("top 0 30 30", "1")),
            # A button held down while the window manager still holds the
            # clicks before it must not make the server drop them.
            ("clicks, then a button held", [], "MoveMouse({tx}, {ty});\nLeftClick();\nLeftClick();\nLeftDown();\n"
             "Pause(50);\nLeftUp();", False, taps("top 0 30 30", "1", "1", "1")),
            # Ex commands send events to the selected window and leave the
            # pointer alone; at 15 twips a pixel, 300 and 150 arrive as 20 and
            # 10, -30 as -2. Look-ups ignore case: unquoted names are
            # lower-cased at load.
            ("Ex commands", ["--class", "Target", "--title", "Target Window", "--child-class", "TargetChild"],
             'SelectWindow(target, "TARGET window");\nLeftDownEx(300, 150);\nLeftUpEx(300, 150);\n'
             'KeyDown(66);\nKeyUp(66);\nSelectSubWindow(targetchild);\nRightDownEx(45, 30);\nRightUpEx(-30, 30);',
             True, taps("top 1 20 10", "1") + taps("top 1 0 0", "0x62")
             + ["ButtonPress child 1 3 2 3 0x0", "ButtonRelease child 1 -2 2 3 0x400"]),
        ]
        for name, args, body, pointer_stays, expected in rows:
            with self.subTest(name), TestWindow(*args) as window:
                (cx, cy), (tx, ty), (dx, dy) = (window.point(*p) for p in
                                                (("child", 25, 35), ("top", 30, 30), ("top", 200, 120)))
                xdotool("mousemove", tx, ty)
                Script(body.format(cx=cx, cy=cy, tx=tx, ty=ty, dx=dx, dy=dy)).run()
                self.assertEqual(logged(window.wait_for(len(expected), *INPUT)), expected)
                if pointer_stays:
                    self.assertEqual(pointer(), (tx, ty))

    def test_a_plain_click_notes_where_it_happened(self):
        # Moved by xdotool's warp, which the server reports to no raw-event
        # listener: the position must come from the server itself.
        xdotool("mousemove", 321, 234)
        dump = Script("LeftClick();\nMoveMouse(5, 6);\nInt(a, 0);\nAdd(a, lx);\nInt(b, 0);\nAdd(b, ly);\n"
                      "MoveMouse(40000, -70000);").run("--dump")
        self.assertIn("Long: a, value: 321\nLong: b, value: 234\n", dump)
        # A position beyond the screen stops at its edge.
        self.assertEqual(pointer(), (1919, 0))

    def test_start_runs_a_program_whose_window_appears(self):
        # A program that names its process on its window, and one that does not.
        for name, extra in (("WithPid", ""), ("NoPid", " --pid no")):
            with self.subTest(name):
                # The message box keeps the run, and so its watch of the new window, alive.
                process = Script('StartEx("%s", "--class %s --title \'Launched Window\'%s", maximized);\n'
                                 'Message(Started, normal, Started);'
                                 % (os.environ["TARVOKE_TESTWINDOW"], name, extra)).start()
                window_named("Started")
                found = wait_until(lambda: xdotool("search", "--class", name, check=False).split())
                self.assertTrue(found)
                maximized = wait_until(lambda: "_NET_WM_STATE_MAXIMIZED_VERT" in subprocess.run(
                    ["xprop", "-id", found[0], "_NET_WM_STATE"], capture_output=True, text=True).stdout)
                answer("Started")
                process.communicate(timeout=10)
                for window in found:
                    xdotool("windowkill", window, check=False)
                self.assertTrue(maximized, "the window was not maximized")

    def test_keys_after_a_click_land_in_the_clicked_window(self):
        # The window manager holds a click on an unfocused window back until
        # it has focused it, while keys would pass: the keys still land behind it.
        qtkexz = ["0x71", "0x74", "0x6b", "0x65", "0x78", "0x7a", "0x31", "0x77", "0xff0d"]
        click, ex_click = "MoveMouse({x}, {y});\nLeftClick();\n", "LeftDownEx({x}, {y});\nLeftUpEx({x}, {y});\n"
        text = 'SendKeys("qtkexz1w~");'
        rows = [
            ("plain click, text", [], click + text, qtkexz),
            ("Ex click, text", [], ex_click + text, qtkexz),
            ("plain click, numbers", [], click + "KeyDown(81);\nKeyUp(81);\nKeyDown(84);\nKeyUp(84);",
             ["0x71", "0x74"]),
            ("Ex click, numbers", [], ex_click + "KeyDown(81);\nKeyUp(81);", ["0x71"]),
            # A window the window manager never focuses: it takes the focus itself after the click.
            ("plain click, late focus", ["--focus", "late"], click + text, qtkexz),
        ]
        for name, late, body, expected in rows:
            # The right window, shown last, has the focus.
            with self.subTest(name), TestWindow("--class", "Left", "--geometry", "500x300+20+40", *late) as left, \
                    TestWindow("--class", "Right", "--geometry", "500x300+700+40") as right:
                x, y = left.point("top", 30, 30)
                Script(body.format(x=x, y=y)).run()
                self.assertEqual(left.typed(len(expected)), expected)
                self.assertEqual(right.events("KeyPress", "KeyRelease"), [])

    def test_acting_needs_a_display_and_a_wayland_session_is_told_once(self):
        rows = [({"DISPLAY": None}, 2, "DISPLAY is not set"),
                ({"WAYLAND_DISPLAY": "wayland-test"}, 0, "acts on X11 windows only")]
        for change, status, words in rows:
            with self.subTest(words):
                env = {k: v for k, v in dict(os.environ, **change).items() if v is not None}
                result = subprocess.run([PLAY, "-"], input="Function(Main);\nEndFunction();\n", capture_output=True,
                                        text=True, env=env, timeout=10)
                self.assertEqual(result.returncode, status, result.stderr)
                self.assertEqual(result.stderr.count(words), 1)


def setxkbmap(layout):
    subprocess.run(["setxkbmap", layout], check=True)


class Layouts(unittest.TestCase):
    def tearDown(self):
        setxkbmap("us")

    def test_every_character_is_typed_whatever_level_it_is_on(self):
        # Text, a Shift group, named keys and characters outside the map; then AltGr
        # characters, and on the French map ß, which needs a spare key.
        # ("#" would start a comment of the script.)
        rows = [
            ("us", 'Hi You! 9{+}+(cd)\u00e9\u20ac~', ["0x48", "0x69", "0x20", "0x59", "0x6f", "0x75", "0x21", "0x20",
                                                    "0x39", "0x2b", "0x43", "0x44", "0xe9", "0x10020ac", "0xff0d"]),
            ("de", "@[]{{}{}}\\|{~}", ["0x40", "0x5b", "0x5d", "0x7b", "0x7d", "0x5c", "0x7c", "0x7e"]),
            ("fr", "@{^}[]{{}{}}\\|`\u00df", ["0x40", "0x5e", "0x5b", "0x5d", "0x7b", "0x7d", "0x5c",
                                              "0x7c", "0x60", "0xdf"]),
        ]
        for layout, keys, expected in rows:
            with self.subTest(layout), TestWindow() as window:
                setxkbmap(layout)
                Script('SendKeys("%s");' % keys).run()
                self.assertEqual(window.typed(len(expected)), expected)

    def test_a_map_switched_during_a_run_is_followed(self):
        with TestWindow() as window:
            x, y = window.point("top", 30, 30)
            process = Script('SendKeys("yz");\nMessage(Switch the map, normal, Switch);\nMoveMouse(%d, %d);\n'
                             'LeftClick();\nSendKeys("yz");' % (x, y)).start()
            window_named("Switch")
            setxkbmap("de")
            answer("Switch")
            _, errors = process.communicate(timeout=10)
            self.assertEqual(process.returncode, 0, errors)
            self.assertEqual(window.typed(4), ["0x79", "0x7a", "0x79", "0x7a"])


def ctrl_zero(process):
    xdotool("keydown", "ctrl", "keydown", "0", "sleep", "0.06", "keyup", "0", "keyup", "ctrl")


SIGINT, SIGTERM = (lambda p: p.send_signal(signal.SIGINT)), (lambda p: p.send_signal(signal.SIGTERM))


class StoppingARun(unittest.TestCase):
    def test_a_stop_ends_the_run_at_once_and_lets_go_of_what_it_pressed(self):
        loop, pause, typing = "While(1 = 1);\nEndWhile();", "Pause(60000);", 'SendKeys("%s");' % ("{a 9999}" * 20)
        # Copies of a text of 256 MB, each a long step of its own.
        huge = "String(x, a);\n" + "Combine(x, x);\n" * 28 + "While(1 = 1);\nString(y, x);\nString(y, b);\nEndWhile();"
        rows = [("Ctrl+0, loop", loop, ctrl_zero, 0), ("Ctrl+0, pause", pause, ctrl_zero, 0),
                ("SIGINT, loop", loop, SIGINT, 130), ("SIGINT, pause", pause, SIGINT, 130),
                ("SIGTERM, pause", pause, SIGTERM, 143), ("Ctrl+0, a step on a huge text", huge, ctrl_zero, 0),
                ("SIGINT, typing", typing, SIGINT, 130), ("SIGTERM, typing", typing, SIGTERM, 143),
                ("Ctrl+0, typing", typing, ctrl_zero, 0)]
        for name, body, stop, status in rows:
            with self.subTest(name), TestWindow() as window:
                xdotool("mousemove", *window.point("top", 10, 10))
                process = Script("KeyDown(160);\nLeftDown();\n" + body).start()
                # The run is under way once its Shift press (and some of its typing) has arrived.
                self.assertTrue(window.wait_for(200 if body is typing else 1, "KeyPress"), "the run did not start")
                if body is huge:
                    self.assertTrue(wait_until(lambda: resident_mb(process.pid) > 600, 20), "no huge text")
                started = time.monotonic()
                stop(process)
                # A click by another tool marks the server's time after the stop.
                xdotool("click", "2")
                _, errors = process.communicate(timeout=5)
                took = time.monotonic() - started
                print("%s: stop after %.0f ms" % (name, took * 1000), file=sys.stderr)
                self.assertLess(took, 1.5)
                self.assertEqual(process.returncode, status, errors)
                marks = wait_until(lambda: [e for e in window.events("ButtonPress") if e["button"] == "2"], 30)
                self.assertTrue(marks, "the mark did not arrive")
                presses = window.events("KeyPress")
                self.assertEqual([e for e in presses if int(e["time"]) > int(marks[0]["time"])], [],
                                 "keys arrived after the stop")
                # The stop key is the player's while it runs.
                self.assertEqual({e["keysym"] for e in presses} - {"0xffe1", "0xffe3", "0x61", "0x41"}, set())
                self.assertTrue(wait_until(lambda: "0xffe1" in [e["keysym"] for e in window.events("KeyRelease")]),
                                "the Shift the run pressed is released")
                self.assertEqual([e["type"] for e in window.events("ButtonPress", "ButtonRelease") if e["button"] == "1"],
                                 ["ButtonPress", "ButtonRelease"])

    def test_the_run_waits_while_the_box_is_open_and_a_stop_closes_it(self):
        for name, end, status, clicks in [("answered", lambda p: answer("Greeting"), 0, 2), ("stopped", SIGINT, 130, 0)]:
            with self.subTest(name), TestWindow() as window:
                process = Script("Message(Hello there, information, Greeting);\nMoveMouse(%d, %d);\nLeftClick();"
                                 % window.point("top", 30, 40)).start()
                window_named("Greeting")
                # Nothing shows a run that wrongly went on but its click: give it time to arrive.
                time.sleep(0.3)
                self.assertEqual(window.events("ButtonPress"), [], "the run went on past the open box")
                end(process)
                _, errors = process.communicate(timeout=10)
                self.assertEqual(process.returncode, status, errors)
                self.assertTrue(wait_until(lambda: not windows_named("Greeting")), "the box stayed open")
                self.assertEqual(len(window.wait_for(clicks, "ButtonPress", "ButtonRelease")), clicks)


def spare_keycodes():
    """The entries (owner window, keycode, keysym) that runs published on the root window."""
    found = subprocess.run(["xprop", "-root", "_TARVOKE_SPARE_KEYCODES"], capture_output=True, text=True).stdout
    return [int(n) for n in found.partition("=")[2].split(",") if n.strip()]


def euro_bound():
    """Whether a key of the map carries the Euro sign's Unicode keysym."""
    return "U20AC" in subprocess.run(["xkbcomp", "-xkb", os.environ["DISPLAY"], "-"], capture_output=True,
                                     text=True).stdout


class KilledRun(unittest.TestCase):
    def test_the_next_start_lets_go_of_what_a_killed_run_left_on_the_server(self):
        # A killed run leaves its keys and buttons down and the spare keycode
        # SendKeys bound for the Euro sign on the server.
        with TestWindow() as window:
            xdotool("mousemove", *window.point("top", 10, 10))
            self.assertFalse(euro_bound())
            process = Script('KeyDown(160);\nLeftDown();\nSendKeys("\u20ac");\nPause(60000);').start()
            self.assertTrue(window.typed(1), "the run did not type")
            self.assertTrue(euro_bound())
            owner = spare_keycodes()[0]
            process.kill()
            process.communicate()
            # The server destroys the run's windows, its mark in the list among them, once it has seen it go.
            self.assertTrue(wait_until(lambda: subprocess.run(["xprop", "-id", str(owner)],
                                                              capture_output=True).returncode), "the mark stayed")
            before = len(window.events(*INPUT))
            Script("").run()
            self.assertEqual(sorted(logged(window.wait_for(before + 2, *INPUT)[before:])),
                             ["ButtonRelease top 0 10 10 1 0x101", "KeyRelease top 0 10 10 0xffe1 0x1"])
            self.assertFalse(euro_bound(), "the spare keycode stayed bound")
            self.assertEqual(spare_keycodes(), [])


class CompiledProgram(unittest.TestCase):
    def setUp(self):
        self.folder = self.enterContext(tempfile.TemporaryDirectory(prefix="tarvoke-compiled-"))

    def start(self, body, *options):
        """The program compiled from Main's body into the folder, run from elsewhere with nothing of the
        build in reach."""
        script, program = Script(body), os.path.join(self.folder, "program.exe")
        there = os.listdir(self.folder)
        subprocess.run([PLAY, "--compile", script.path, program, *options], check=True, timeout=20)
        self.assertEqual(sorted(os.listdir(self.folder)), sorted(there + ["program.exe"]), "more than the program")
        libraries = subprocess.run(["ldd", program], capture_output=True, text=True, check=True).stdout
        self.assertNotIn("not found", libraries)
        self.assertNotIn(os.path.dirname(PLAY), libraries)
        return subprocess.Popen([program], cwd="/", stdout=subprocess.PIPE, stderr=subprocess.PIPE, text=True,
                                env={k: v for k, v in os.environ.items() if k != "LD_LIBRARY_PATH"})

    def test_alone_in_a_folder_it_plays_reads_pictures_and_shows_boxes(self):
        # Grey but for two pixels of red 200, green 100, blue 50 (a range takes red, blue, green), the first at (2, 1).
        shutil.copy(os.path.join(os.path.dirname(__file__), "..", "scripts", "screen", "screen.png"),
                    os.path.join(self.folder, "pic.png"))
        process = self.start("MoveMouse(300, 300);\nCreateColorRange(colorrange1, 195, 45, 95, 205, 55, 105);\n"
                             "LoadImage(imagesave1, pic.png);\nMoveMouseToColorRange(imagesave1, colorrange1);\n"
                             'Message("PNG Loaded", information, "Compiled Box");\nMoveMouse(12, 5);')
        # The quoted title keeps its capitals and blank.
        window_named("Compiled Box")
        self.assertEqual(pointer(), (2, 1), "the PNG was not read")
        answer("Compiled Box")
        _, errors = process.communicate(timeout=10)
        self.assertEqual(process.returncode, 0, errors)
        self.assertEqual(pointer(), (12, 5), "the run did not go on after the box")

    def test_a_repeating_program_runs_until_ctrl_zero(self):
        process = self.start("MoveMouse(5, 6);\nPause(20);\nMoveMouse(9, 8);\nPause(20);", "--repeat")
        # Round and round: both positions come, more than once.
        for _ in range(2):
            for spot in ((5, 6), (9, 8)):
                self.assertTrue(wait_until(lambda: pointer() == spot), "the body did not run again")
        ctrl_zero(process)
        _, errors = process.communicate(timeout=10)
        self.assertEqual(process.returncode, 0, errors)


if __name__ == "__main__":
    unittest.main(argv=sys.argv[:1])
