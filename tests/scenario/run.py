#!/usr/bin/env python3
"""Runs the launcher against servers and disks that misbehave: run.py --launcher PROGRAM [--kills N] [--seed N] [TEST...].

A Windows program runs under Wine, with the tests of test_windows. A TEST is a name, for example test_check or
test_server.ServerTest.test_silence_ends; test_faults and test_power run only by name. N kills or power cuts have seeds
from --seed on: `--kills 1 --seed N` repeats one. Some tests mount small disks, which takes root or a user namespace, and
test_power takes root, loop devices, ext4 and XFS."""
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
import test_kills  # noqa: E402

BY_NAME_ONLY = {"test_faults", "test_power", "test_windows"}


def prepare_wine():
    """Starts a Windows program that runs as long as this script, so that Wine does not start again for each launcher."""
    os.environ.setdefault("WINEPREFIX", str(HERE.parents[1] / "build" / "wineprefix"))
    # UTF-8, so that Wine finds the names that Python writes.
    os.environ.update(WINEDEBUG="-all", LC_ALL="C.UTF-8")
    keeper = subprocess.Popen(launcher.command(launcher.beside_program("hold_file")), stdin=subprocess.PIPE,
                              stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)
    atexit.register(keeper.communicate)


def main():
    parser = argparse.ArgumentParser()
    parser.add_argument("--launcher", required=True)
    parser.add_argument("--seed", type=int, default=20261124)
    parser.add_argument("--kills", type=int, default=200)
    parser.add_argument("tests", nargs="*")
    options = parser.parse_args()
    launcher.PROGRAM = pathlib.Path(options.launcher).resolve()
    test_kills.SEED, test_kills.KILLS = options.seed, options.kills
    if launcher.is_windows():
        prepare_wine()
    else:
        mounts.acquire()
    # The default server is unreachable, and no network is used. Sanitizers accept the library with the faults.
    os.environ.update(https_proxy="http://127.0.0.1:1", ASAN_OPTIONS="verify_asan_link_order=0")
    names = {"test_windows"} if launcher.is_windows() else {path.stem for path in HERE.glob("test_*.py")} - BY_NAME_ONLY
    unittest.main(module=None, argv=[sys.argv[0], "--verbose", *(options.tests or sorted(names))])


main()
