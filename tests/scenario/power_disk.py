"""Small file systems in image files, whose power can be cut."""
import ctypes
import fcntl
import os
import pathlib
import struct
import subprocess
import tempfile

from launcher import wait_until

SIZE = 400 << 20  # mkfs.xfs takes 300 MiB at least
MAKE = {"ext4": ["mkfs.ext4", "-q", "-F"], "xfs": ["mkfs.xfs", "-q"]}
SHUTDOWN, FLUSH_NOTHING = 0x8004587D, struct.pack("I", 2)  # FS_IOC_SHUTDOWN, as `xfs_io -x -c shutdown` calls it
libc = ctypes.CDLL(None)


def run(*command):
    subprocess.run(command, stdout=subprocess.DEVNULL, check=True)


class Disk:
    """A new file system in a file below the folder, mounted at `root`."""

    def __init__(self, folder, kind):
        self.root = pathlib.Path(tempfile.mkdtemp(prefix="disk-", dir=folder))
        self.image = self.root.with_suffix(".img")
        self.image.touch()
        os.truncate(self.image, SIZE)
        run(*MAKE[kind], self.image)
        self.mount()

    def mount(self):
        run("mount", "-o", "loop", self.image, self.root)
        self.descriptor = os.open(self.root, os.O_RDONLY)

    def unmount(self):
        os.close(self.descriptor)
        # A process that was killed may still be ending.
        wait_until(lambda: subprocess.run(["umount", self.root], stderr=subprocess.DEVNULL, check=False).returncode == 0)

    def remount(self):
        self.unmount()
        self.mount()

    def remove(self):
        self.unmount()
        self.image.unlink()

    def cut_power(self):
        fcntl.ioctl(self.descriptor, SHUTDOWN, FLUSH_NOTHING)

    def flush_journal(self):
        """Flushes the file system's metadata, and no file contents."""
        with open(self.root / "flushed", "wb") as file:
            os.fsync(file.fileno())


def flush_pages(path, rng, share):
    """Flushes this share of a file's pages, like a system that has begun to write them."""
    with open(path, "rb") as file:
        for page in range(0, os.fstat(file.fileno()).st_size, 4096):
            if rng.random() < share:
                libc.sync_file_range(file.fileno(), ctypes.c_int64(page), ctypes.c_int64(4096), 7)  # and waits for it
