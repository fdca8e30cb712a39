#!/usr/bin/env python3
"""Start-up of a compiled program to its first action, beside tarvoke-play on
the same script, rounds taken in turn in one run; and the size of a compiled
empty script. Runs on the desktop named by DISPLAY (bench/run.sh gives it a
private one).

The first action starts touch(1) on a marker file; the time is the marker's
modification time less the moment the command was started, so the probe
costs the same on both sides.

usage: compiled_start.py TARVOKE_PLAY [ROUNDS]"""

import os
import statistics
import struct
import subprocess
import sys
import tempfile
import time
import zlib


def png(width, height):
    raw = b"".join(b"\0" + b"\x20\x40\x60" * width for _ in range(height))
    chunk = lambda kind, data: struct.pack(">I", len(data)) + kind + data + struct.pack(">I", zlib.crc32(kind + data))
    return (b"\x89PNG\r\n\x1a\n" + chunk(b"IHDR", struct.pack(">IIBBBBB", width, height, 8, 2, 0, 0, 0))
            + chunk(b"IDAT", zlib.compress(raw)) + chunk(b"IEND", b""))


def first_action(command, marker):
    if os.path.exists(marker):
        os.unlink(marker)
    start = time.time()
    done = subprocess.run(command, capture_output=True, text=True)
    deadline = time.time() + 5
    while not os.path.exists(marker) and time.time() < deadline:
        time.sleep(0.001)
    if done.returncode != 0 or not os.path.exists(marker):
        sys.exit("failed: %s\n%s" % (" ".join(command), done.stderr))
    return (os.stat(marker).st_mtime - start) * 1000.0


def main():
    player = os.path.abspath(sys.argv[1])
    rounds = int(sys.argv[2]) if len(sys.argv) > 2 else 20
    with tempfile.TemporaryDirectory() as work:
        marker = os.path.join(work, "first-action")
        with open(os.path.join(work, "picture.png"), "wb") as out:
            out.write(png(640, 480))
        probe = 'StartEx("/usr/bin/touch", "%s", normal);' % marker
        bodies = {"empty body": probe, "one picture": "LoadImage(imagesave1, picture.png);\n" + probe}
        commands = {}
        for name, body in bodies.items():
            script = os.path.join(work, name.replace(" ", "-") + ".tk")
            with open(script, "w") as out:
                out.write("Function(Main);\n%s\nEndFunction();\n" % body)
            program = script[:-3] + ".exe"
            subprocess.run([player, "--compile", script, program], check=True)
            commands[name] = {"tarvoke-play": [player, script], "compiled": [program]}
        empty = os.path.join(work, "nothing.tk")
        with open(empty, "w") as out:
            out.write("Function(Main);\n\nEndFunction();")
        subprocess.run([player, "--compile", empty, empty[:-3] + ".exe"], check=True)
        size = os.path.getsize(empty[:-3] + ".exe")

        times = {(body, side): [] for body in commands for side in commands[body]}
        for _ in range(rounds):
            for body, sides in commands.items():
                for side, command in sides.items():
                    times[(body, side)].append(first_action(command, marker))

    print("%-28s %14s %14s" % ("to the first action", "median", "(best)"))
    for (body, side), values in times.items():
        print("%-28s %11.1f ms %11.1f ms" % (body + ", " + side, statistics.median(values), min(values)))
    for body in commands:
        ratio = statistics.median(times[(body, "compiled")]) / statistics.median(times[(body, "tarvoke-play")])
        print("%s: the compiled program takes %.2f of tarvoke-play's time (target: 1.5 at most; median of %d)"
              % (body, ratio, rounds))
    print("a compiled empty script: %d bytes (%.2f MB)" % (size, size / 1e6))


if __name__ == "__main__":
    main()
