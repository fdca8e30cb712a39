"""Tarvoke installed into a scratch prefix, as a Debian package and as a
container image; the built player's headless runs on private X servers.

usage: install_test.py BUILD_FOLDER SOURCE_FOLDER [TEST CLASSES...]"""

import contextlib
import os
import re
import select
import shutil
import signal
import struct
import subprocess
import sys
import tempfile
import unittest
import zlib

sys.path.insert(0, os.path.join(os.path.dirname(os.path.abspath(__file__)), "..", "desktop"))
from testwindow import log_lines, wait_until, write_script  # noqa: E402

BUILD = SOURCE = VERSION = None
PROGRAM_FOLDER = ["Compiler.dll", "readme.txt", "tarvoke", "tarvoke-message", "tarvoke-pictures.so", "tarvoke-play"]
# Under the prefix, beside lib/tarvoke/ and the links in bin/.
SHARED = ["applications/tarvoke.desktop", "bash-completion/completions/tarvoke-play", "doc/tarvoke/changelog.gz",
          "doc/tarvoke/copyright", "icons/hicolor/48x48/apps/tarvoke.png", "icons/hicolor/256x256/apps/tarvoke.png",
          "icons/hicolor/scalable/apps/tarvoke.svg", "lintian/overrides/tarvoke", "man/man1/tarvoke-play.1.gz",
          "man/man1/tarvoke.1.gz", "man/man5/tarvoke.5.gz", "metainfo/org.tarvoke.Tarvoke.metainfo.xml"]


def run(*command, **options):
    return subprocess.run(command, capture_output=True, text=True, timeout=options.pop("timeout", 300), **options)


def png(path):
    """(width, height, rows of RGB bytes) of a PNG; the rows only for 8-bit RGB rows without filters."""
    with open(path, "rb") as f:
        data = f.read()
    assert data[:8] == b"\x89PNG\r\n\x1a\n", "not a PNG file"
    pos, packed, rows = 8, b"", []
    while pos < len(data):
        length, kind = struct.unpack(">I4s", data[pos:pos + 8])
        body = data[pos + 8:pos + 8 + length]
        assert zlib.crc32(kind + body) == struct.unpack(">I", data[pos + 8 + length:pos + 12 + length])[0]
        if kind == b"IHDR":
            width, height, depth, colour = struct.unpack(">IIBB", body[:10])
        packed, pos = packed + (body if kind == b"IDAT" else b""), pos + 12 + length
    if (depth, colour) == (8, 2):
        raw, stride = zlib.decompress(packed), 1 + 3 * width
        rows = [raw[y * stride:(y + 1) * stride] for y in range(height)]
        assert all(row[0] == 0 for row in rows), "a row with a filter"
    return width, height, [row[1:] for row in rows]


def build_package(folder):
    out = run("cpack", "-G", "DEB", "--config", os.path.join(BUILD, "CPackConfig.cmake"), "-B", folder)
    assert out.returncode == 0, out.stdout + out.stderr
    return os.path.join(folder, "tarvoke_%s_amd64.deb" % VERSION)


class Installed(unittest.TestCase):
    def check_layout(self, prefix):
        """The files of an installation under prefix, and its programs run through the links."""
        files = sorted(os.path.relpath(os.path.join(d, f), prefix) for d, _, names in os.walk(prefix) for f in names)
        self.assertEqual(files, sorted(["bin/tarvoke", "bin/tarvoke-play"] + ["lib/tarvoke/" + f for f in PROGRAM_FOLDER]
                                       + ["share/" + f for f in SHARED]))
        for program in ["tarvoke", "tarvoke-play"]:
            self.assertEqual(os.readlink(os.path.join(prefix, "bin", program)), "../lib/tarvoke/" + program)
            out = run(os.path.join(prefix, "bin", program), "--version")
            self.assertEqual((out.returncode, out.stdout), (0, "%s %s\n" % (program, VERSION)), out.stderr)
        # The picture module is found only if the player finds its program
        # folder through the link it was started by.
        picture = os.path.join(SOURCE, "tests/scripts/screen/screen.png")
        out = run(os.path.join(prefix, "bin/tarvoke-play"), "--dry-run", "--screen-image", picture, "-",
                  input="Function(Main);\nMoveMouseToCenterScreen();\nMessage(hi, normal, t);\nEndFunction();\n")
        self.assertEqual((out.returncode, out.stdout), (0, 'SetCursorPos %d %d\nMessageBox 0 "t" "hi"\n'
                                                        % tuple(n // 2 for n in png(picture)[:2])), out.stderr)
        for page, words in [("man1/tarvoke-play.1.gz", ["--headless", "--screenshot", "EXIT STATUS"]),
                            ("man1/tarvoke.1.gz", ["settings.dat"]),
                            ("man5/tarvoke.5.gz", ["SendKeys", "EndWhile", "HOST COMMANDS"])]:
            out = run("man", "--warnings", "-l", os.path.join(prefix, "share/man", page),
                      env=dict(os.environ, MANPAGER="cat", MANWIDTH="80", LC_ALL="C.UTF-8"))
            self.assertEqual((out.returncode, out.stderr), (0, ""), page)
            self.assertEqual([word for word in words if word not in out.stdout], [], page)

    def test_install_into_a_prefix(self):
        with tempfile.TemporaryDirectory() as prefix:
            self.assertEqual(run("cmake", "--install", BUILD, "--prefix", prefix).returncode, 0)
            self.check_layout(prefix)
            share = os.path.join(prefix, "share")
            out = run("desktop-file-validate", os.path.join(share, SHARED[0]))
            self.assertEqual((out.returncode, out.stdout + out.stderr), (0, ""))
            out = run("appstreamcli", "validate", "--no-net", os.path.join(share, SHARED[-1]))
            self.assertEqual(out.returncode, 0, out.stdout + out.stderr)
            for size in [48, 256]:
                self.assertEqual(png(os.path.join(share, "icons/hicolor/%dx%d/apps/tarvoke.png" % (size, size)))[:2],
                                 (size, size))
            # Tab after "--sc", after "--screenshot " and after "--headless=1".
            shots = os.path.join(prefix, "shots")
            os.mkdir(shots)
            for name in ["end.png", "notes.txt"]:
                open(os.path.join(shots, name), "w").close()
            for words, expected in [(["--sc"], ["--screen", "--screen-image", "--screenshot"]),
                                    (["--screenshot", ""], ["end.png"]),
                                    (["--headless=1"], ["1024x768", "1280x1024", "1920x1080"])]:
                shell = ('source /usr/share/bash-completion/bash_completion; source "%s"; COMP_WORDS=(tarvoke-play %s); '
                         'COMP_CWORD=%d; COMP_LINE="%s"; COMP_POINT=${#COMP_LINE}; _tarvoke_play tarvoke-play '
                         '"${COMP_WORDS[-1]}" "${COMP_WORDS[-2]}"; printf "%%s\\n" "${COMPREPLY[@]}"'
                         % (os.path.join(share, SHARED[1]), " ".join('"%s"' % w for w in words), len(words),
                            "tarvoke-play " + " ".join(words)))
                out = run("bash", "-c", shell, cwd=shots,
                          env=dict(os.environ, PATH=os.path.join(prefix, "bin") + ":" + os.environ["PATH"]))
                self.assertEqual(sorted(out.stdout.split()), expected, (words, out.stderr))

    def test_debian_package(self):
        with tempfile.TemporaryDirectory() as work:
            package = build_package(work)
            depends = run("dpkg-deb", "-f", package, "Depends").stdout
            for library in ["libc6", "libqt6widgets6", "libqt6gui6", "libx11-6", "libxi6", "zlib1g"]:
                self.assertRegex(depends, r"(^|, )%s( \(|,|$)" % library)
            tree = os.path.join(work, "tree")
            self.assertEqual(run("dpkg-deb", "-x", package, tree).returncode, 0)
            self.assertEqual(os.listdir(tree), ["usr"])
            self.check_layout(os.path.join(tree, "usr"))
            for name in [n for n in PROGRAM_FOLDER if n != "readme.txt"]:
                sections = run("readelf", "-S", os.path.join(tree, "usr/lib/tarvoke", name)).stdout
                self.assertNotRegex(sections, r"\.debug_info|\.symtab", name)
            if not shutil.which("lintian"):
                print("lintian not installed: the package was not checked by it")
                return
            out = run("lintian", "--fail-on", "error,warning", package)
            self.assertEqual(out.returncode, 0, out.stdout + out.stderr)


class ContainerTest(unittest.TestCase):
    """The image of the Containerfile plays a script headless, where podman works."""

    def test_image_plays_a_script(self):
        if not shutil.which("podman"):
            self.skipTest("podman is not installed")
        # crun refuses cgroups v1 and v2 mixed, and raising limits without the
        # right to: then runc, within the limits the machine allows.
        tries = [[]] + [["--runtime", "runc", "--ulimit", "nofile=1024:1024", "--ulimit", "nproc=1024:1024"]] * bool(
            shutil.which("runc"))
        podman = lambda *args, **kw: run("podman", args[0], *options, *args[1:], **kw)
        for options in tries:
            out = podman("run", "--rm", "--network=none", "docker.io/library/debian:12", "true")
            if out.returncode == 0:
                break
        else:
            self.skipTest("podman cannot run the Debian 12 base image here: " +
                          (out.stderr.strip().splitlines() or ["no reason given"])[-1])
        with tempfile.TemporaryDirectory() as context:
            build_package(context)
            shutil.copy(os.path.join(SOURCE, "Containerfile"), context)
            shutil.rmtree(os.path.join(context, "_CPack_Packages"))
            tag = "localhost/tarvoke-test:%d" % os.getpid()
            # The build installs the package and Xvfb from the Debian archive.
            out = podman("build", "--network=host", "-t", tag, context, timeout=900)
            self.assertEqual(out.returncode, 0, out.stdout[-3000:] + out.stderr[-3000:])
            try:
                write_script(os.path.join(context, "move.tk"), "MoveMouse(10, 20);")
                out = podman("run", "--rm", "--network=none", "-v", context + ":/work", tag,
                             "--wm", "openbox", "--screenshot", "end.png", "move.tk")
                self.assertEqual(out.returncode, 0, out.stderr)
                self.assertEqual(png(os.path.join(context, "end.png"))[:2], (1920, 1080))
            finally:
                run("podman", "rmi", "-f", tag)


# The test window's inside is at (100, 100), 400x300, white; its black child
# at (150, 150), 200x100. The script waits until the window is drawn, moves
# the pointer into the child, and waits to be stopped: the test stops it once
# the window has logged the move (a window whose screen ends under it may
# not have logged what it got).
HEADLESS_SCRIPT = """\
  StartEx("{window}", "--geometry 400x300+100+100 --log {log}", normal);
  CreateColorRange(colorrange1, 250, 250, 250, 255, 255, 255);
  Int(missing, 1);
  While(missing = 1);
    Pause(10);
    CaptureScreen(imagesave1);
    IsPixel(missing, imagesave1, 120, 120, colorrange1);
  EndWhile();
  MoveMouse(300, 200);
  PauseS(600);"""


class Headless:
    """One run of tarvoke-play --headless with the script above."""

    def __init__(self, extra=()):
        self.dir = tempfile.TemporaryDirectory(prefix="tarvoke-headless-")
        self.log, self.shot, script = (os.path.join(self.dir.name, n) for n in ("window.log", "end.png", "script.tk"))
        write_script(script, HEADLESS_SCRIPT.format(window=os.path.join(BUILD, "bin/tarvoke-testwindow"), log=self.log))
        self.process = subprocess.Popen([os.path.join(BUILD, "bin/tarvoke-play"), "--headless=640x480", "--screenshot",
                                         self.shot, *extra, script], stderr=subprocess.PIPE, text=True)

    def moves(self):
        """The window's log lines of the pointer's move into the child, once there is one."""
        return wait_until(lambda: [line for line in log_lines(self.log) if line.startswith("MotionNotify win=child")],
                          120)

    def processes(self):
        """(pid, name) of the player's children (Xvfb, the window manager, the guard) and of the test window."""
        listed = run("pgrep", "-a", "-P", str(self.process.pid)).stdout + run("pgrep", "-a", "-f", self.log).stdout
        found = {int(line.split()[0]): os.path.basename((line.split() + [""])[1]) for line in listed.splitlines()}
        return list(found.items())

    def close(self):
        if self.process.poll() is None:
            self.process.kill()
            self.process.wait()
        self.dir.cleanup()


def still_running(pids, timeout=15):
    """The pids of the list still running after timeout seconds."""
    left = []
    for pid in pids:
        with contextlib.suppress(ProcessLookupError):
            fd = os.pidfd_open(pid)
            left += [] if select.select([fd], [], [], timeout)[0] else [pid]
            os.close(fd)
    return left


class HeadlessTest(unittest.TestCase):
    def test_eight_runs_at_once_each_on_a_screen_that_ends_with_it(self):
        # Six end as asked to, by SIGTERM; two with a window manager, by
        # SIGINT, which still takes the screenshot, and by SIGKILL, which
        # cannot: their guard ends the screen and the window manager.
        rows = [([], signal.SIGTERM, 143)] * 6 + [(["--wm", "openbox"], signal.SIGINT, 130),
                                                  (["--wm", "openbox"], signal.SIGKILL, -9)]
        runs = [Headless(extra) for extra, _, _ in rows]
        try:
            for run, (extra, number, status) in zip(runs, rows):
                with self.subTest(number=number.name, wm=extra):
                    moves = run.moves()
                    self.assertIn("root=300,200", moves[-1] if moves else "no move")
                    helpers = run.processes()
                    self.assertEqual(sorted(name for _, name in helpers),
                                     sorted(["Xvfb", "tarvoke-play", "tarvoke-testwindow"] + extra[1:]))
                    run.process.send_signal(number)
                    _, errors = run.process.communicate(timeout=120)
                    self.assertEqual(run.process.returncode, status, errors)
                    # The screen, the window manager, the guard and the window on the screen end with the run.
                    self.assertEqual(still_running([pid for pid, _ in helpers]), [], helpers)
                    if number == signal.SIGKILL:
                        self.assertFalse(os.path.exists(run.shot))
                        continue
                    width, height, pixels = png(run.shot)
                    self.assertEqual((width, height), (640, 480))
                    for (x, y), colour in {(120, 120): 255, (480, 380): 255, (300, 200): 0, (600, 450): 0,
                                           (20, 20): 0}.items():
                        self.assertEqual(tuple(pixels[y][3 * x:3 * x + 3]), (colour,) * 3, (x, y))
        finally:
            for run in runs:
                run.close()

    def test_the_script_s_status_and_what_is_missing(self):
        with tempfile.TemporaryDirectory() as empty:
            play, script, shot = (os.path.join(BUILD, "bin/tarvoke-play"), os.path.join(empty, "nothing.tk"),
                                  os.path.join(empty, "end.png"))
            write_script(script, "")
            out = run(play, "--headless=320x200", "--screenshot", shot, script, timeout=120)
            self.assertEqual((out.returncode, out.stderr, png(shot)[:2]), (0, "", (320, 200)))
            # (environment, options, the words of the one line on standard error)
            for env, options, words in [({"PATH": empty}, [], "Xvfb is not installed (on Debian: apt install xvfb)"),
                                        ({}, ["--wm", "no-such-window-manager"],
                                         "cannot start the window manager 'no-such-window-manager': it is not installed"),
                                        ({}, ["--wm", "false"], "the window manager 'false' ended before it was ready")]:
                with self.subTest(words=words):
                    out = run(play, "--headless=320x200", *options, script, env=dict(os.environ, **env), timeout=60)
                    self.assertEqual((out.returncode, out.stderr.splitlines()), (2, [out.stderr.strip()]))
                    self.assertIn(words, out.stderr)


if __name__ == "__main__":
    BUILD, SOURCE = sys.argv[1:3]
    with open(os.path.join(BUILD, "CMakeCache.txt")) as cache:
        VERSION = re.search(r"^CMAKE_PROJECT_VERSION:\w+=(.*)$", cache.read(), re.M).group(1)
    unittest.main(argv=sys.argv[:1] + sys.argv[3:], verbosity=2)
