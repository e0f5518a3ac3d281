#!/usr/bin/env python3
"""Runs the launcher against a server that misbehaves: run.py --launcher PROGRAM [--seed N] [--kills N]."""
import argparse
import pathlib
import sys
import unittest

sys.path.insert(0, str(pathlib.Path(__file__).parent))
import launcher  # noqa: E402
import test_kills  # noqa: E402
import test_options  # noqa: E402
import test_update  # noqa: E402


def main():
    parser = argparse.ArgumentParser()
    parser.add_argument("--launcher", required=True)
    parser.add_argument("--seed", type=int, default=20261124)
    parser.add_argument("--kills", type=int, default=200)
    options = parser.parse_args()
    launcher.PROGRAM = pathlib.Path(options.launcher).resolve()
    test_kills.SEED, test_kills.KILLS = options.seed, options.kills
    suite = unittest.TestSuite(unittest.defaultTestLoader.loadTestsFromModule(m) for m in
                               (test_update, test_options, test_kills))
    sys.exit(0 if unittest.TextTestRunner(verbosity=2).run(suite).wasSuccessful() else 1)


main()
