"""Some tests need the right to mount: as root, or for small disks in a user namespace. Ordinary containers have neither;
there these tests are skipped, unless PATCHER_EVERY_TEST is set, as in .ci/run."""
import os
import pathlib
import subprocess
import sys
import tempfile

RIGHT = "PATCHER_TEST_MOUNTS"  # in the environment of a script with mounts of its own: root or user


def acquire():
    """Starts this script again with private mounts, which end with it, if the system allows that."""
    if RIGHT in os.environ:
        return
    for right, namespace in (("root", ["unshare", "--mount"]), ("user", ["unshare", "--map-root-user", "--mount"])):
        if subprocess.run([*namespace, "true"], stderr=subprocess.DEVNULL, check=False).returncode == 0:
            os.execvpe(namespace[0], [*namespace, sys.executable, *sys.argv], {**os.environ, RIGHT: right})


def require(test, *rights):
    """Skips a test that needs a mount that is not possible here."""
    if os.environ.get(RIGHT) not in rights:
        (test.fail if "PATCHER_EVERY_TEST" in os.environ else test.skipTest)("no right to mount here")


def memory_disk(test, size):
    """The folder of a file system in memory, which ends with the test."""
    folder = pathlib.Path(tempfile.mkdtemp(prefix="patcher-disk-"))
    test.addCleanup(folder.rmdir)
    subprocess.run(["mount", "-t", "tmpfs", "-o", f"size={size}", "tmpfs", folder], check=True)
    test.addCleanup(subprocess.run, ["umount", "--recursive", folder], check=True)
    return folder
