#!/usr/bin/env python3
"""Tests the programs with a window on a virtual screen: run.py --build BUILD [TEST...].

BUILD is the folder of a build. Windows programs run under Wine, with a loader that replaces the web view's. TEST is the
name of a test, for example test_windows_window.PageTest.test_images."""
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
    tests = options.tests or ["test_windows_window" if windows else "test_native_window"]
    fixture.WINE = Wine(fixture.SCREEN) if windows else None
    try:
        result = unittest.main(module=None, argv=[sys.argv[0], "--verbose", *tests], exit=False).result
    finally:
        for shared in filter(None, (fixture.WINE, fixture.SCREEN)):
            shared.close()
    sys.exit(0 if result.wasSuccessful() else 1)


main()
