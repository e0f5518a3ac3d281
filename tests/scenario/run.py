#!/usr/bin/env python3
"""Runs the launcher against servers and disks that misbehave: run.py --launcher PROGRAM [--seed N] [--kills N] [TEST...].

A Windows program runs under Wine, with the tests of test_windows and fewer kills. A TEST is a name, for example
ArchiveTest or ServerTest.test_silence_ends. Some tests mount small disks, which takes root or a user namespace."""
import argparse
import atexit
import os
import pathlib
import subprocess
import sys
import unittest

HERE = pathlib.Path(__file__).resolve().parent
sys.path[:0] = [str(HERE), str(HERE.parent / "support")]
import launcher  # noqa: E402
import mounts  # noqa: E402
import test_archives  # noqa: E402
import test_check  # noqa: E402
import test_disk  # noqa: E402
import test_kills  # noqa: E402
import test_messages  # noqa: E402
import test_news  # noqa: E402
import test_options  # noqa: E402
import test_requests  # noqa: E402
import test_self_update  # noqa: E402
import test_server  # noqa: E402
import test_signed  # noqa: E402
import test_update  # noqa: E402
import test_windows  # noqa: E402

NATIVE = (test_update, test_server, test_archives, test_disk, test_options, test_check, test_requests,
          test_messages, test_news, test_self_update, test_signed, test_kills)
PREFIX = pathlib.Path(__file__).resolve().parents[2] / "build" / "wineprefix"


def prepare_wine(programs):
    """Starts a Windows program that lives as long as this script, so that Wine need not start anew for each launcher."""
    os.environ.setdefault("WINEPREFIX", str(PREFIX))
    # UTF-8, so that Wine finds the names that Python writes.
    os.environ.update(WINEDEBUG="-all", LC_ALL="C.UTF-8")
    return subprocess.Popen(["wine", str(programs / test_windows.HOLDER)], stdin=subprocess.PIPE,
                            stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)


def main():
    parser = argparse.ArgumentParser()
    parser.add_argument("--launcher", required=True)
    parser.add_argument("--seed", type=int, default=20261124)
    parser.add_argument("--kills", type=int, default=200)
    parser.add_argument("tests", nargs="*")
    options = parser.parse_args()
    launcher.PROGRAM = pathlib.Path(options.launcher).resolve()
    test_kills.SEED, test_kills.KILLS = options.seed, options.kills
    test_requests.SEED = options.seed
    modules = NATIVE
    if launcher.is_windows():
        keeper = prepare_wine(launcher.PROGRAM.parent)
        atexit.register(keeper.communicate)
        modules = (test_windows,)
    else:
        mounts.acquire()
    loader = unittest.defaultTestLoader
    cases = {case.__name__: case for module in modules for case in vars(module).values()
             if isinstance(case, type) and issubclass(case, unittest.TestCase) and case.__module__ == module.__name__}
    suite = unittest.TestSuite()
    for name in options.tests or cases:
        case, _, test = name.partition(".")
        suite.addTest(cases[case](test) if test else loader.loadTestsFromTestCase(cases[case]))
    sys.exit(0 if unittest.TextTestRunner(verbosity=2).run(suite).wasSuccessful() else 1)


main()
