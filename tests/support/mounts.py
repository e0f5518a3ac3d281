"""The right to mount, which some tests need: root's, or that of a user namespace. An ordinary container has neither;
there these tests are skipped, unless PATCHER_EVERY_TEST is set, as in .ci/run."""
import os
import subprocess
import sys

EVERY_TEST = "PATCHER_EVERY_TEST" in os.environ


def _can(*command):
    return subprocess.run([*command, "true"], stderr=subprocess.DEVNULL, check=False).returncode == 0


def acquire():
    """Starts this script again as the root of a user namespace if that is what it takes."""
    namespace = ("unshare", "--map-root-user", "--mount")
    if not _can("unshare", "--mount") and (_can(*namespace) or EVERY_TEST):
        os.execvp(namespace[0], [*namespace, sys.executable, *sys.argv])


def require(test):
    """Skips a test that is about to mount and cannot."""
    if not EVERY_TEST and not _can("unshare", "--mount"):
        test.skipTest("no right to mount here")
