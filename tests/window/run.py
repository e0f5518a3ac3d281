#!/usr/bin/env python3
"""Tests of the programs with a window, on a screen of their own: run.py --build BUILD [TEST...].

BUILD is the folder of a build: the tests of its kind run, natively or, for Windows programs, under Wine with a loader
that stands in for the web view. A TEST is a name, for example ChainTest or ChainTest.test_images. One test mounts a
directory read-only, which takes root or a user namespace."""
import argparse
import os
import pathlib
import subprocess
import sys
import unittest

HERE = pathlib.Path(__file__).resolve().parent
sys.path[:0] = [str(HERE), str(HERE.parent / "scenario")]
import launcher  # noqa: E402
import fixture  # noqa: E402
import test_native_window  # noqa: E402
import test_windows_chain  # noqa: E402
import test_windows_journeys  # noqa: E402
import test_windows_page  # noqa: E402
import test_windows_window  # noqa: E402


def become_able_to_mount():
    """Starts this script again as the root of a user namespace, unless it may mount already."""
    if subprocess.run(["unshare", "--mount", "true"], stderr=subprocess.DEVNULL, check=False).returncode != 0:
        os.execvp("unshare", ["unshare", "--map-root-user", "--mount", sys.executable, *sys.argv])


def main():
    become_able_to_mount()
    parser = argparse.ArgumentParser()
    parser.add_argument("--build", required=True, type=pathlib.Path)
    parser.add_argument("tests", nargs="*")
    options = parser.parse_args()
    windows = (options.build / "bin" / "Patcher.exe").exists()
    fixture.BUILD = options.build.resolve()
    launcher.PROGRAM = fixture.BUILD / "bin" / ("Patcher.exe" if windows else "Patcher")
    modules = (test_windows_chain, test_windows_window, test_windows_journeys, test_windows_page) if windows else (test_native_window,)
    cases = {case.__name__: case for module in modules for case in vars(module).values()
             if isinstance(case, type) and issubclass(case, unittest.TestCase) and case.__module__ == module.__name__}
    suite = unittest.TestSuite()
    for name in options.tests or cases:
        case, _, test = name.partition(".")
        suite.addTest(cases[case](test) if test else unittest.defaultTestLoader.loadTestsFromTestCase(cases[case]))
    try:
        result = unittest.TextTestRunner(verbosity=2).run(suite)
    finally:
        fixture.close()
    sys.exit(0 if result.wasSuccessful() else 1)


main()
