#!/usr/bin/env python3
"""Tests of the programs with a window, on a screen of their own: run.py --build BUILD [TEST...].

BUILD is the folder of a build: the tests of its kind run, natively or, for Windows programs, under Wine with a loader
that stands in for the web view. A TEST is a name, for example test_windows_chain.ChainTest.test_images."""
import argparse
import pathlib
import sys
import unittest

HERE = pathlib.Path(__file__).resolve().parent
sys.path[:0] = [str(HERE), str(HERE.parent / "scenario"), str(HERE.parent / "support")]
import launcher  # noqa: E402
import fixture  # noqa: E402
from display import Display  # noqa: E402
from stand_in import Wine  # noqa: E402


def main():
    parser = argparse.ArgumentParser()
    parser.add_argument("--build", required=True, type=pathlib.Path)
    parser.add_argument("tests", nargs="*")
    options = parser.parse_args()
    windows = (options.build / "bin" / "Patcher.exe").exists()
    fixture.BUILD = options.build.resolve()
    launcher.PROGRAM = fixture.BUILD / "bin" / ("Patcher.exe" if windows else "Patcher")
    # Wine moves and sizes windows by the rules of Windows if no window manager does.
    fixture.SCREEN = Display(managed=not windows)
    fixture.WINE = Wine(fixture.SCREEN) if windows else None
    suites = options.tests or [path.stem for path in HERE.glob("test_windows_*.py" if windows else "test_native_*.py")]
    try:
        result = unittest.main(module=None, argv=[sys.argv[0], "--verbose", *sorted(suites)], exit=False).result
    finally:
        for shared in filter(None, (fixture.WINE, fixture.SCREEN)):
            shared.close()
    sys.exit(0 if result.wasSuccessful() else 1)


main()
