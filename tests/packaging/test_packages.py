#!/usr/bin/env python3
"""What players get: test_packages.py --linux BUILD --windows BUILD, both built."""
import argparse
import configparser
import os
import pathlib
import re
import subprocess
import sys
import tempfile
import unittest
import zipfile

LINUX = WINDOWS = None


class WindowsArchiveTest(unittest.TestCase):
    def test_the_archive_holds_the_program_its_guides_and_the_licences(self):
        subprocess.run(["cmake", "--build", WINDOWS, "--target", "package"], stdout=subprocess.DEVNULL, check=True)
        with zipfile.ZipFile(next(WINDOWS.glob("*.zip"))) as archive:
            contents = {name: archive.read(name) for name in archive.namelist() if not name.endswith("/")}
        self.assertEqual(set(contents), {"Patcher.exe", "patch-publish.exe", "patcher-stdio.exe", "docs/publishing.md",
                                         "docs/serving.md", "docs/manifest.md", "docs/security.md", "LISEZMOI.txt", "OPERATORS.md", "licences/miniz.txt",
                                         "licences/gcc-runtime.txt", "licences/mingw-w64.txt",
                                         "licences/zlib.txt"})
        program = contents["Patcher.exe"]
        self.assertTrue(program == (WINDOWS / "bin" / "Patcher.exe").read_bytes(), "what is built is what is published")
        guide = contents["LISEZMOI.txt"]
        self.assertEqual(guide.count(b"\n"), guide.count(b"\r\n"))
        guide.decode("ascii")
        self.assertNotIn(b"@", contents["OPERATORS.md"])
        for name, words in (("miniz", b"Permission is hereby granted"), ("gcc-runtime", b"Runtime Library Exception"),
                            ("mingw-w64", b"mingw-w64"), ("zlib", b"the origin of this software must not be misrepresented")):
            self.assertIn(words.lower(), contents[f"licences/{name}.txt"].lower())


class LinuxInstallTest(unittest.TestCase):
    @staticmethod
    def build_number():
        return re.search(r"^PATCHER_LAUNCHER_BUILD:\w+=(.*\n)", (LINUX / "CMakeCache.txt").read_text(), re.MULTILINE)[1].encode()

    def test_each_player_gets_a_copy_that_may_replace_itself(self):
        with tempfile.TemporaryDirectory(prefix="patcher-package-") as name:
            folder = pathlib.Path(name)
            subprocess.run(["cmake", "--install", LINUX, "--component", "launcher", "--prefix", folder / "usr"],
                           stdout=subprocess.DEVNULL, check=True)
            entry = configparser.ConfigParser(interpolation=None)
            entry.read(folder / "usr/share/applications/tolmira-patcher.desktop")
            command = folder / "usr/bin" / entry["Desktop Entry"]["Exec"]
            icon = folder / f"usr/share/icons/hicolor/256x256/apps/{entry['Desktop Entry']['Icon']}.png"
            self.assertTrue(icon.read_bytes().startswith(b"\x89PNG"))
            (folder / "usr/share/doc/tolmira/LISEZMOI.txt").read_text(encoding="ascii")
            environment = {**os.environ, "HOME": str(folder), "XDG_DATA_HOME": str(folder / "donn\u00e9es du joueur")}
            ask = [command, "--print-version"]
            self.assertEqual(subprocess.run(ask, env=environment, stdout=subprocess.PIPE, check=True).stdout, self.build_number())
            copy = folder / "donn\u00e9es du joueur/tolmira/Patcher"
            self.assertEqual([path.name for path in copy.parent.iterdir()], ["Patcher"])
            copy.write_text("#!/bin/sh\necho newer\n", encoding="ascii")
            self.assertEqual(subprocess.run(ask, env=environment, stdout=subprocess.PIPE, check=True).stdout, b"newer\n")


def main():
    global LINUX, WINDOWS  # pylint: disable=global-statement
    parser = argparse.ArgumentParser()
    parser.add_argument("--linux", required=True, type=pathlib.Path)
    parser.add_argument("--windows", required=True, type=pathlib.Path)
    options = parser.parse_args()
    LINUX, WINDOWS = options.linux.resolve(), options.windows.resolve()
    unittest.main(argv=sys.argv[:1], verbosity=2)


main()
