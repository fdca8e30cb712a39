"""A compiled program on the desktop, alone in a folder of its own: it plays
its body, reads PNG and BMP pictures beside it, shows its message boxes, and
a repeating one stops on Ctrl+0."""

import os
import struct
import subprocess
import sys
import tempfile
import unittest
import zlib

from player_test import ctrl_zero
from testwindow import PLAY, Script, answer, pointer, wait_until, window_named


def picture(red_at):
    """Rows of (r, g, b), 20x10, black but for one pure red pixel."""
    return [[(255, 0, 0) if (x, y) == red_at else (0, 0, 0) for x in range(20)] for y in range(10)]


def png(rows):
    raw = b"".join(b"\0" + bytes(c for pixel in row for c in pixel) for row in rows)
    chunk = lambda kind, data: struct.pack(">I", len(data)) + kind + data + struct.pack(">I", zlib.crc32(kind + data))
    return (b"\x89PNG\r\n\x1a\n" + chunk(b"IHDR", struct.pack(">IIBBBBB", len(rows[0]), len(rows), 8, 2, 0, 0, 0))
            + chunk(b"IDAT", zlib.compress(raw)) + chunk(b"IEND", b""))


def bmp(rows):
    width, height = len(rows[0]), len(rows)
    stride = (width * 3 + 3) & ~3
    data = b"".join(bytes(c for r, g, b in row for c in (b, g, r)).ljust(stride, b"\0") for row in reversed(rows))
    return (b"BM" + struct.pack("<IHHI", 54 + len(data), 0, 0, 54)
            + struct.pack("<IiiHHIIiiII", 40, width, height, 1, 24, 0, len(data), 2835, 2835, 0, 0) + data)


def compiled(folder, body, *options):
    """The program compiled from Main's body, alone in folder."""
    script, program = Script(body), os.path.join(folder, "program.exe")
    subprocess.run([PLAY, "--compile", script.path, program, *options], check=True, timeout=20)
    return program


class CompiledProgram(unittest.TestCase):
    def setUp(self):
        self.folder = tempfile.TemporaryDirectory(prefix="tarvoke-compiled-")
        self.addCleanup(self.folder.cleanup)

    def start(self, program):
        # Run from elsewhere, with nothing of the build in reach.
        return subprocess.Popen([program], cwd="/", stdout=subprocess.PIPE, stderr=subprocess.PIPE, text=True,
                                env={k: v for k, v in os.environ.items() if k != "LD_LIBRARY_PATH"})

    def test_alone_in_a_folder_it_plays_reads_pictures_and_shows_boxes(self):
        for name, data in (("pic.png", png(picture((7, 3)))), ("pic.bmp", bmp(picture((12, 5))))):
            with open(os.path.join(self.folder.name, name), "wb") as out:
                out.write(data)
        program = compiled(self.folder.name,
                           "MoveMouse(300, 300);\nCreateColorRange(colorrange1, 250, 0, 0, 255, 5, 5);\n"
                           "LoadImage(imagesave1, pic.png);\nMoveMouseToColorRange(imagesave1, colorrange1);\n"
                           'Message("PNG Loaded", information, "Compiled Box");\n'
                           "LoadImage(imagesave2, pic.bmp);\nMoveMouseToColorRange(imagesave2, colorrange1);")
        self.assertEqual(sorted(os.listdir(self.folder.name)), ["pic.bmp", "pic.png", "program.exe"])
        libraries = subprocess.run(["ldd", program], capture_output=True, text=True, check=True).stdout
        self.assertNotIn("not found", libraries)
        self.assertNotIn(os.path.dirname(PLAY), libraries)

        process = self.start(program)
        # The quoted title keeps its capitals and blank.
        window_named("Compiled Box")
        self.assertEqual(pointer(), (7, 3), "the PNG was not read")
        answer("Compiled Box")
        _, errors = process.communicate(timeout=10)
        self.assertEqual(process.returncode, 0, errors)
        self.assertEqual(pointer(), (12, 5), "the BMP was not read")

    def test_a_repeating_program_runs_until_ctrl_zero(self):
        program = compiled(self.folder.name, "MoveMouse(5, 6);\nPause(20);\nMoveMouse(9, 8);\nPause(20);", "--repeat")
        process = self.start(program)
        # Round and round: both positions come, more than once.
        for _ in range(2):
            for spot in ((5, 6), (9, 8)):
                self.assertTrue(wait_until(lambda: pointer() == spot), "the body did not run again")
        ctrl_zero(process)
        _, errors = process.communicate(timeout=10)
        self.assertEqual(process.returncode, 0, errors)


if __name__ == "__main__":
    unittest.main(argv=sys.argv[:1])
