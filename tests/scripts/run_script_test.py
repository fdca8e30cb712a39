#!/usr/bin/env python3
"""Runs one .tk script test through tarvoke-play and checks its expectations.

A script test carries what it expects in comments of its own:

    # args: --dry-run --dump #        the player's options (default: --dry-run);
    #                                 {tmp} is a fresh folder, removed afterwards
    # status: 2 #                     the exit status (default: 0)
    # expect:
    SetCursorPos 10 20
    #                                 the exact standard output, line by line,
    #                                 with the script's folder written {dir}

The player runs in the script's own folder, so that options can name files
beside it (--screen-image picture.png). With --check the script is named by
its file name alone, as its findings print it (findings.tk:3:1: ...).
The expectation block starts on the line after "# expect:" and ends before
the line that holds only "#". Lines may end in blanks that matter.
"""
import difflib
import os
import re
import subprocess
import sys
import tempfile


def expectations(text):
    args = re.search(r"^# args:(.*?)#\s*$", text, re.M)
    status = re.search(r"^# status:\s*(\d+)\s*#\s*$", text, re.M)
    expect = re.search(r"^# expect:\n(.*?)^#\s*$", text, re.M | re.S)
    return (args.group(1).split() if args else ["--dry-run"],
            int(status.group(1)) if status else 0,
            expect.group(1) if expect else None)


def main():
    player, script = sys.argv[1], sys.argv[2]
    with open(script, encoding="utf-8", errors="surrogateescape") as f:
        text = f.read()
    args, want_status, want_output = expectations(text)
    name = os.path.basename(script) if "--check" in args else os.path.abspath(script)
    with tempfile.TemporaryDirectory() as tmp:
        run = subprocess.run([player, *(a.replace("{tmp}", tmp) for a in args), name],
                             capture_output=True, timeout=60, cwd=os.path.dirname(os.path.abspath(script)))
    output = run.stdout.decode("utf-8", errors="surrogateescape").replace(
        os.path.dirname(os.path.abspath(script)), "{dir}")
    failed = False
    if run.returncode != want_status:
        print(f"exit status {run.returncode}, expected {want_status}")
        failed = True
    if want_output is not None and output != want_output:
        print("standard output differs from the expectation:")
        sys.stdout.writelines(difflib.unified_diff(
            want_output.splitlines(keepends=True), output.splitlines(keepends=True), "expected", "got"))
        failed = True
    if run.stderr:
        print("standard error:\n" + run.stderr.decode("utf-8", errors="replace"))
    if failed:
        sys.exit(1)
    print("1 passed, 0 failed")


if __name__ == "__main__":
    main()
