"""What the Python tests share: the test window, which logs what it receives;
scripts played by tarvoke-play; waits that poll for a real signal (a log
line, a window, a process's state) within a generous bound."""

import os
import subprocess
import tempfile
import time

PLAY = os.environ.get("TARVOKE_PLAY")
INPUT = ("ButtonPress", "ButtonRelease", "KeyPress", "KeyRelease")
# Modifiers that typing adds around a character (Shift, AltGr).
MODIFIERS = {"0xffe1", "0xffe2", "0xfe03", "0xff7e"}


def wait_until(condition, timeout=5):
    """condition()'s first true value, or its last value after timeout seconds."""
    deadline = time.monotonic() + timeout
    while not (value := condition()) and time.monotonic() < deadline:
        time.sleep(0.02)
    return value


def at_least(count, items, timeout=5):
    """items() once it holds count of them, or as it is after timeout seconds."""
    wait_until(lambda: len(items()) >= count, timeout)
    return items()


def xdotool(*args, check=True):
    return subprocess.run(["xdotool", *map(str, args)], capture_output=True, text=True, check=check).stdout


def windows_named(title):
    return xdotool("search", "--onlyvisible", "--name", "^%s$" % title, check=False).split()


def window_named(title, timeout=10):
    found = wait_until(lambda: windows_named(title), timeout)
    assert found, "no window %r" % title
    return found[0]


def answer(title):
    """Presses Return in the message box of that title. Not with --clearmodifiers:
    xdotool reads the buttons again when it restores them, and presses one that
    a window manager's synchronous grab still shows down after the run's click."""
    xdotool("windowactivate", "--sync", window_named(title), "key", "Return")


def pointer():
    fields = dict(line.split("=") for line in xdotool("getmouselocation", "--shell").split())
    return int(fields["X"]), int(fields["Y"])


def resident_mb(pid):
    try:
        with open("/proc/%d/status" % pid) as f:
            return int(next(line for line in f if line.startswith("VmRSS:")).split()[1]) // 1024
    except (OSError, StopIteration):
        return 0


def write_script(path, body):
    """A script at path whose Main has that body."""
    with open(path, "w") as out:
        out.write("Function(Main);\n%s\nEndFunction();\n" % body)
    return path


def log_lines(path):
    """The lines a program wrote to its log so far (none if it has not made it yet)."""
    try:
        with open(path) as log:
            return [line for line in log.read().splitlines() if line]
    except FileNotFoundError:
        return []


class Script:
    """The body of Main in a folder of its own, which is also its settings folder."""

    def __init__(self, body):
        self.folder = tempfile.TemporaryDirectory(prefix="tarvoke-play-")
        self.path = write_script(os.path.join(self.folder.name, "script.tk"), body)
        self.env = dict(os.environ, TARVOKE_SETTINGS_DIR=self.folder.name)

    def run(self, *options, timeout=20):
        """The standard output of a run that ended well."""
        result = subprocess.run([PLAY, *options, self.path], capture_output=True, text=True, timeout=timeout,
                                env=self.env)
        assert result.returncode == 0, "status %d: %s" % (result.returncode, result.stderr)
        return result.stdout

    def start(self):
        process = subprocess.Popen([PLAY, self.path], stdout=subprocess.PIPE, stderr=subprocess.PIPE, text=True,
                                   env=self.env)
        process.script = self  # the folder, and so the file, lives as long as the run
        return process


def parse_line(line):
    words = line.split()
    return dict([("type", words[0])] + [word.partition("=")[::2] for word in words[1:]])


class TestWindow:
    """The test window, once it is shown and has the focus (its log's first line)."""

    def __init__(self, *args):
        self.folder = tempfile.TemporaryDirectory(prefix="tarvoke-window-")
        self.log = os.path.join(self.folder.name, "events.log")
        self.args = [os.environ["TARVOKE_TESTWINDOW"], "--log", self.log, *args]

    def __enter__(self):
        self.process = subprocess.Popen(self.args)
        ready = lambda: [line for line in log_lines(self.log)[:1] if line.startswith("ready")]
        if not wait_until(lambda: ready() or self.process.poll() is not None, 10) or not ready():
            self.__exit__()
            raise RuntimeError("the test window did not become ready (status %s)" % self.process.poll())
        self.ready = parse_line(ready()[0])
        return self

    def __exit__(self, *exc):
        self.process.terminate()
        self.process.wait()
        self.folder.cleanup()

    def events(self, *types):
        """Logged events after the ready line, of the given types (all if none)."""
        events = [parse_line(line) for line in log_lines(self.log)[1:]]
        return [e for e in events if not types or e["type"] in types]

    def wait_for(self, count, *types, timeout=5):
        return at_least(count, lambda: self.events(*types), timeout)

    def typed(self, count):
        """Keysyms of the key presses, modifiers left out, once there are count of them."""
        return at_least(count, lambda: [e["keysym"] for e in self.events("KeyPress") if e["keysym"] not in MODIFIERS])

    def point(self, window, x, y):
        """Root position of (x, y) inside 'top' or 'child'."""
        prefix = "child" if window == "child" else ""
        return (int(self.ready[prefix + "x"]) + x, int(self.ready[prefix + "y"]) + y)
