#!/usr/bin/env python3
"""tarvoke-play --compile and the program it writes, played against the dry
run (TARVOKE_RUNTIME_DRY_RUN=1): the body as compiled, once or until a stop,
and the player's error rules.

usage: compile_test.py TARVOKE_PLAY"""
import os
import signal
import subprocess
import sys
import tempfile
import unittest

PLAY = sys.argv[1]
DRY_RUN = dict(os.environ, TARVOKE_RUNTIME_DRY_RUN="1")


def run(*command, **options):
    return subprocess.run(command, capture_output=True, text=True, timeout=20, **options)


class Compile(unittest.TestCase):
    def setUp(self):
        self.folder = tempfile.TemporaryDirectory()
        self.addCleanup(self.folder.cleanup)
        self.script = os.path.join(self.folder.name, "s.tk")
        with open(self.script, "w") as out:
            out.write('Function(Main);\n  MoveMouse(3, 4);\n  Message("Hi  There", normal, "My Title");\n'
                      '  #Comment Here#\tPause(2);\nEndFunction();\n')

    def compiled(self, *options):
        program = os.path.join(self.folder.name, "p.exe")
        result = run(PLAY, "--compile", self.script, program, *options)
        self.assertEqual((result.returncode, result.stderr), (0, ""))
        return program

    def test_the_program_plays_its_body_as_it_was_quoted(self):
        result = run(self.compiled(), env=DRY_RUN, cwd="/")
        self.assertEqual((result.returncode, result.stderr), (0, ""))
        self.assertEqual(result.stdout.splitlines(),
                         ["SetCursorPos 3 4", 'MessageBox 0 "My Title" "Hi  There"', "Wait 2"])

    def test_a_repeating_program_runs_until_a_signal(self):
        process = subprocess.Popen([self.compiled("--repeat")], env=DRY_RUN, stdout=subprocess.PIPE, text=True)
        # Played again: its first line a second time.
        lines = [process.stdout.readline() for _ in range(4)]
        self.assertEqual(lines[3], "SetCursorPos 3 4\n")
        process.send_signal(signal.SIGTERM)
        process.communicate(timeout=10)
        self.assertEqual(process.returncode, 143)

    def test_failures_say_one_line_and_exit_2(self):
        runtime = os.path.join(os.path.dirname(PLAY), "Compiler.dll")
        rows = [("missing script", [PLAY, "--compile", "/nonexistent.tk", os.path.join(self.folder.name, "x")],
                 "cannot read"),
                ("no folder for it", [PLAY, "--compile", self.script, "/nonexistent/x.exe"], "cannot write"),
                ("no program named", [PLAY, "--compile", self.script], "--compile needs"),
                ("the runtime alone", [runtime], "this file holds no compiled script")]
        for name, command, words in rows:
            with self.subTest(name):
                result = run(*command, env=DRY_RUN)
                self.assertEqual(result.returncode, 2)
                self.assertEqual(len(result.stderr.splitlines()), 1, result.stderr)
                self.assertIn(words, result.stderr)


if __name__ == "__main__":
    unittest.main(argv=sys.argv[:1])
