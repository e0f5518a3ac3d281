#!/usr/bin/env python3
"""What players and publishers get: test_packages.py LINUX WINDOWS, the build directories of both."""
import configparser
import os
import pathlib
import re
import subprocess
import sys
import tempfile
import unittest
import zipfile

LINUX, WINDOWS = (pathlib.Path(build).resolve() for build in sys.argv[1:3])


class PackagesTest(unittest.TestCase):
    def test_the_windows_archive_holds_the_programs_the_guides_and_the_licences(self):
        subprocess.run(["cmake", "--build", WINDOWS, "--target", "package"], stdout=subprocess.DEVNULL, check=True)
        with zipfile.ZipFile(next(WINDOWS.glob("*.zip"))) as archive:
            contents = {name: archive.read(name) for name in archive.namelist() if not name.endswith("/")}
        licences = {"licences/miniz.txt": b"permission is hereby granted", "licences/gcc-runtime.txt": b"runtime library exception",
                    "licences/mingw-w64.txt": b"mingw-w64",
                    "licences/zlib.txt": b"the origin of this software must not be misrepresented"}
        guides = {f"docs/{name}.md" for name in ("publishing", "serving", "manifest", "security")} | {"LISEZMOI.txt", "OPERATORS.md"}
        programs = {"Patcher.exe", "patch-publish.exe", "patcher-stdio.exe"}
        self.assertEqual(set(contents), programs | guides | set(licences))
        for name in programs:
            self.assertTrue(contents[name] == (WINDOWS / "bin" / name).read_bytes(), name)
        self.assertNotRegex(contents["LISEZMOI.txt"], rb"[^\r]\n|[^\x00-\x7f]")
        self.assertNotIn(b"@", contents["OPERATORS.md"])
        for name, words in licences.items():
            self.assertIn(words, contents[name].lower())

    def test_each_linux_player_gets_a_copy_that_may_replace_itself(self):
        build = re.search(r"(?m)^PATCHER_LAUNCHER_BUILD:\w+=(.*\n)", (LINUX / "CMakeCache.txt").read_text())[1].encode()
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
            self.assertEqual(subprocess.check_output(ask, env=environment), build)
            copy = folder / "donn\u00e9es du joueur/tolmira/Patcher"
            self.assertEqual([path.name for path in copy.parent.iterdir()], ["Patcher"])
            copy.write_text("#!/bin/sh\necho newer\n", encoding="ascii")
            self.assertEqual(subprocess.check_output(ask, env=environment), b"newer\n")


if __name__ == "__main__":
    unittest.main(argv=sys.argv[:1], verbosity=2)
