"""Tarvoke installed: into a scratch prefix (cmake --install), as a Debian
package (cpack -G DEB, unpacked with dpkg-deb -x), and as a container image
that plays a script headless. The installed programs run through their links
in bin/ and find what they load in the program folder; settings go to
$XDG_CONFIG_HOME when that folder cannot be written.

usage: install_test.py BUILD_FOLDER SOURCE_FOLDER [TEST CLASSES...]"""

import glob
import os
import re
import shutil
import subprocess
import sys
import tempfile
import time
import unittest

BUILD = SOURCE = VERSION = None

PROGRAM_FOLDER = ["readme.txt", "tarvoke", "tarvoke-message", "tarvoke-pictures.so", "tarvoke-play"]
# Under the prefix, beside lib/tarvoke/ and the links in bin/.
SHARED = ["share/applications/tarvoke.desktop",
          "share/bash-completion/completions/tarvoke-play",
          "share/doc/tarvoke/changelog.gz",
          "share/doc/tarvoke/copyright",
          "share/icons/hicolor/48x48/apps/tarvoke.png",
          "share/icons/hicolor/256x256/apps/tarvoke.png",
          "share/icons/hicolor/scalable/apps/tarvoke.svg",
          "share/lintian/overrides/tarvoke",
          "share/man/man1/tarvoke-play.1.gz",
          "share/man/man1/tarvoke.1.gz",
          "share/man/man5/tarvoke.5.gz",
          "share/metainfo/org.tarvoke.Tarvoke.metainfo.xml"]

# A dry run that needs the picture module: found only if the player finds
# its program folder through the link it was started by.
SCRIPT = "Function(Main);\nMoveMouseToCenterScreen();\nMessage(hi, normal, t);\nEndFunction();\n"


def run(*command, **options):
    return subprocess.run(command, capture_output=True, text=True, timeout=300, **options)


def png_size(path):
    with open(path, "rb") as f:
        head = f.read(24)
    return int.from_bytes(head[16:20], "big"), int.from_bytes(head[20:24], "big")


class Layout:
    def check_layout(self, prefix):
        """The files of an installation under prefix, and its programs run through the links."""
        files = sorted(os.path.relpath(os.path.join(d, f), prefix)
                       for d, _, names in os.walk(prefix) for f in names)
        expected = sorted(["bin/tarvoke", "bin/tarvoke-play"] + ["lib/tarvoke/" + f for f in PROGRAM_FOLDER] + SHARED)
        self.assertEqual(files, expected)
        for program in ["tarvoke", "tarvoke-play"]:
            self.assertEqual(os.readlink(os.path.join(prefix, "bin", program)), "../lib/tarvoke/" + program)
            out = run(os.path.join(prefix, "bin", program), "--version")
            self.assertEqual((out.returncode, out.stdout), (0, "%s %s\n" % (program, VERSION)), out.stderr)

        with tempfile.TemporaryDirectory() as work:
            script = os.path.join(work, "script.tk")
            with open(script, "w") as f:
                f.write(SCRIPT)
            picture = os.path.join(SOURCE, "tests/scripts/screen/screen.png")
            width, height = png_size(picture)
            out = run(os.path.join(prefix, "bin/tarvoke-play"), "--dry-run", "--screen-image", picture, script)
            self.assertEqual(out.returncode, 0, out.stderr)
            self.assertEqual(out.stdout, 'SetCursorPos %d %d\nMessageBox 0 "t" "hi"\n' % (width // 2, height // 2))

        for page, words in [("man1/tarvoke-play.1.gz", ["--headless", "--screenshot", "EXIT STATUS"]),
                            ("man1/tarvoke.1.gz", ["settings.dat"]),
                            ("man5/tarvoke.5.gz", ["SendKeys", "EndWhile", "HOST COMMANDS"])]:
            out = run("man", "--warnings", "-l", os.path.join(prefix, "share/man", page),
                      env=dict(os.environ, MANPAGER="cat", MANWIDTH="80", LC_ALL="C.UTF-8"))
            self.assertEqual((out.returncode, out.stderr), (0, ""), page)
            for word in words:
                self.assertIn(word, out.stdout, page)


class InstallTest(unittest.TestCase, Layout):
    def test_install_into_a_prefix(self):
        with tempfile.TemporaryDirectory() as prefix:
            out = run("cmake", "--install", BUILD, "--prefix", prefix)
            self.assertEqual(out.returncode, 0, out.stderr)
            self.check_layout(prefix)

            out = run("desktop-file-validate", os.path.join(prefix, "share/applications/tarvoke.desktop"))
            self.assertEqual((out.returncode, out.stdout + out.stderr), (0, ""))
            out = run("appstreamcli", "validate", "--no-net",
                      os.path.join(prefix, "share/metainfo/org.tarvoke.Tarvoke.metainfo.xml"))
            self.assertEqual(out.returncode, 0, out.stdout + out.stderr)
            for size in [48, 256]:
                self.assertEqual(png_size(os.path.join(prefix, "share/icons/hicolor/%dx%d/apps/tarvoke.png" % (size, size))),
                                 (size, size))

            # Tab after "--sc", after "--screenshot " and after "--headless=1".
            completion = os.path.join(prefix, "share/bash-completion/completions/tarvoke-play")
            cases = [(["--sc"], ["--screen", "--screen-image", "--screenshot"]), (["--screenshot", ""], ["end.png"]),
                     (["--headless=1"], ["1024x768", "1280x1024", "1920x1080"])]
            shots = os.path.join(prefix, "shots")
            os.mkdir(shots)
            for name in ["end.png", "notes.txt"]:
                open(os.path.join(shots, name), "w").close()
            for words, expected in cases:
                line = "tarvoke-play " + " ".join(words)
                shell = ('source /usr/share/bash-completion/bash_completion; source "%s"; '
                         'COMP_WORDS=(tarvoke-play %s); COMP_CWORD=%d; COMP_LINE="%s"; COMP_POINT=${#COMP_LINE}; '
                         '_tarvoke_play tarvoke-play "${COMP_WORDS[-1]}" "${COMP_WORDS[-2]}"; '
                         'printf "%%s\\n" "${COMPREPLY[@]}"' % (completion, " ".join('"%s"' % w for w in words),
                                                              len(words), line))
                out = run("bash", "-c", shell, cwd=shots,
                          env=dict(os.environ, PATH=os.path.join(prefix, "bin") + ":" + os.environ["PATH"]))
                self.assertEqual(sorted(out.stdout.split()), expected, (words, out.stderr))


class PackageTest(unittest.TestCase, Layout):
    def test_debian_package(self):
        with tempfile.TemporaryDirectory() as work:
            out = run("cpack", "-G", "DEB", "--config", os.path.join(BUILD, "CPackConfig.cmake"), "-B", work)
            self.assertEqual(out.returncode, 0, out.stdout + out.stderr)
            package = os.path.join(work, "tarvoke_%s_amd64.deb" % VERSION)
            self.assertTrue(os.path.exists(package), os.listdir(work))

            depends = run("dpkg-deb", "-f", package, "Depends").stdout
            for library in ["libc6", "libqt6widgets6", "libqt6gui6", "libx11-6", "libxi6", "zlib1g"]:
                self.assertRegex(depends, r"(^|, )%s( \(|,|$)" % library)

            tree = os.path.join(work, "tree")
            self.assertEqual(run("dpkg-deb", "-x", package, tree).returncode, 0)
            self.assertEqual(sorted(os.listdir(tree)), ["usr"])
            self.check_layout(os.path.join(tree, "usr"))
            for name in ["tarvoke", "tarvoke-play", "tarvoke-message", "tarvoke-pictures.so"]:
                sections = run("readelf", "-S", os.path.join(tree, "usr/lib/tarvoke", name)).stdout
                self.assertNotIn(".debug_info", sections, name)
                self.assertNotIn(".symtab", sections, name)

            if not shutil.which("lintian"):
                print("lintian not installed: the package was not checked by it")
                return
            out = run("lintian", "--fail-on", "error,warning", package)
            self.assertEqual(out.returncode, 0, out.stdout + out.stderr)


class SettingsTest(unittest.TestCase):
    """On the desktop: the installed windows with a program folder they cannot write."""

    def test_settings_go_to_the_config_folder(self):
        with tempfile.TemporaryDirectory() as work:
            prefix = os.path.join(work, "usr")
            self.assertEqual(run("cmake", "--install", BUILD, "--prefix", prefix).returncode, 0)
            folder = os.path.join(prefix, "lib/tarvoke")
            config = os.path.join(work, "config")
            # Root writes anywhere but into an immutable folder.
            lock = ["chattr", "+i", folder] if os.geteuid() == 0 else ["chmod", "a-w", folder]
            unlock = ["chattr", "-i", folder] if os.geteuid() == 0 else ["chmod", "u+w", folder]
            self.assertEqual(run(*lock).returncode, 0)
            env = dict(os.environ, XDG_CONFIG_HOME=config, HOME=work)
            env.pop("TARVOKE_SETTINGS_DIR", None)
            env.pop("QT_QPA_PLATFORM", None)
            program = subprocess.Popen([os.path.join(prefix, "bin/tarvoke")], env=env)
            try:
                # The splash writes the settings when it gives way to the first window.
                settings = os.path.join(config, "tarvoke/settings.dat")
                deadline = time.monotonic() + 30
                while not os.path.exists(settings) and time.monotonic() < deadline and program.poll() is None:
                    time.sleep(0.02)
                self.assertTrue(os.path.exists(settings), "no settings.dat in %s" % config)
                self.assertEqual(sorted(os.listdir(folder)), PROGRAM_FOLDER)
            finally:
                program.kill()
                program.wait()
                run(*unlock)


class ContainerTest(unittest.TestCase):
    """The image of the Containerfile plays a script headless, where podman works."""

    BASE = "docker.io/library/debian:12"

    def podman_options(self):
        """The options podman needs to run a container here; skips the test, saying why, where it cannot."""
        if not shutil.which("podman"):
            self.skipTest("podman is not installed")
        tries = [[]]
        if shutil.which("runc"):
            # crun refuses cgroups v1 and v2 mixed, and raising limits without
            # the right to: runc, within the limits the machine allows.
            tries.append(["--runtime", "runc", "--ulimit", "nofile=1024:1024", "--ulimit", "nproc=1024:1024"])
        for options in tries:
            out = run("podman", "run", *options, "--rm", "--network=none", self.BASE, "true")
            if out.returncode == 0:
                return options
        reason = (out.stderr.strip().splitlines() or ["no reason given"])[-1]
        self.skipTest("podman cannot run the Debian 12 base image here: " + reason)

    def test_image_plays_a_script(self):
        options = self.podman_options()
        with tempfile.TemporaryDirectory() as context:
            out = run("cpack", "-G", "DEB", "--config", os.path.join(BUILD, "CPackConfig.cmake"), "-B", context)
            self.assertEqual(out.returncode, 0, out.stderr)
            shutil.copy(os.path.join(SOURCE, "Containerfile"), context)
            shutil.rmtree(os.path.join(context, "_CPack_Packages"))
            tag = "localhost/tarvoke-test:%d" % os.getpid()
            # The build installs the package and Xvfb from the Debian archive.
            out = subprocess.run(["podman", "build", *options, "--network=host", "-t", tag, context],
                                 capture_output=True, text=True, timeout=900)
            self.assertEqual(out.returncode, 0, out.stdout[-3000:] + out.stderr[-3000:])
            try:
                with open(os.path.join(context, "move.tk"), "w") as f:
                    f.write("Function(Main);\nMoveMouse(10, 20);\nEndFunction();\n")
                out = run("podman", "run", *options, "--rm", "--network=none", "-v", context + ":/work", tag,
                          "--wm", "openbox", "--screenshot", "end.png", "move.tk")
                self.assertEqual(out.returncode, 0, out.stderr)
                self.assertEqual(png_size(os.path.join(context, "end.png")), (1920, 1080))
            finally:
                run("podman", "rmi", "-f", tag)


if __name__ == "__main__":
    BUILD, SOURCE = sys.argv[1:3]
    with open(os.path.join(BUILD, "CMakeCache.txt")) as cache:
        VERSION = re.search(r"^CMAKE_PROJECT_VERSION:\w+=(.*)$", cache.read(), re.M).group(1)
    unittest.main(argv=sys.argv[:1] + sys.argv[3:], verbosity=2)
