#!/usr/bin/env python3
"""tarvoke-play --compile, and the compiled program without its tail, follow
the player's error rules: one line on standard error and exit status 2.

usage: compile_test.py TARVOKE_PLAY"""
import os
import subprocess
import sys
import tempfile
import unittest

PLAY = sys.argv[1]


class Compile(unittest.TestCase):
    def test_failures_say_one_line_and_exit_2(self):
        with tempfile.TemporaryDirectory() as folder:
            script = os.path.join(folder, "s.tk")
            with open(script, "w") as out:
                out.write("Function(Main);\nEndFunction();\n")
            rows = [("missing script", [PLAY, "--compile", "/nonexistent.tk", os.path.join(folder, "x")], "cannot read"),
                    ("no folder for it", [PLAY, "--compile", script, "/nonexistent/x.exe"], "cannot write"),
                    ("no program named", [PLAY, "--compile", script], "--compile needs"),
                    ("the runtime alone", [os.path.join(os.path.dirname(PLAY), "Compiler.dll")],
                     "this file holds no compiled script")]
            for name, command, words in rows:
                with self.subTest(name):
                    result = subprocess.run(command, capture_output=True, text=True, timeout=20,
                                            env=dict(os.environ, TARVOKE_RUNTIME_DRY_RUN="1"))
                    self.assertEqual(result.returncode, 2)
                    self.assertEqual(len(result.stderr.splitlines()), 1, result.stderr)
                    self.assertIn(words, result.stderr)


if __name__ == "__main__":
    unittest.main(argv=sys.argv[:1])
