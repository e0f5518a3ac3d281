#!/usr/bin/env python3
"""Runs the launcher against a server that misbehaves: run.py --launcher PROGRAM [--seed N] [--kills N]."""
import argparse
import pathlib
import sys
import unittest

sys.path.insert(0, str(pathlib.Path(__file__).parent))
import launcher  # noqa: E402
import test_kills  # noqa: E402
import test_news  # noqa: E402
import test_self_update  # noqa: E402
import test_update  # noqa: E402


def main():
    parser = argparse.ArgumentParser()
    parser.add_argument("--launcher", required=True)
    parser.add_argument("--seed", type=int, default=20261124)
    parser.add_argument("--kills", type=int, default=200)
    parser.add_argument("--wine", action="store_true", help="the launcher is a Windows program")
    options = parser.parse_args()
    launcher.PROGRAM = pathlib.Path(options.launcher).resolve()
    test_kills.SEED, test_kills.KILLS = options.seed, options.kills
    launcher.NEXT_PROGRAM = launcher.PROGRAM.with_name("patcher-stdio-next" + launcher.PROGRAM.suffix)
    launcher.WINE = options.wine
    modules = [test_news, test_self_update]
    if not options.wine:
        modules += [test_update, test_kills]
    suite = unittest.TestSuite(unittest.defaultTestLoader.loadTestsFromModule(m) for m in modules)
    if not options.wine:
        suite.addTest(test_news.LinkTest("only_the_sites_links_leave"))
        suite.addTest(test_self_update.SelfUpdateTest("death_at_every_step"))
    sys.exit(0 if unittest.TextTestRunner(verbosity=2).run(suite).wasSuccessful() else 1)


main()
