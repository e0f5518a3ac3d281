"""What the tests of both programs share: the screen, Wine, and an installation with a server."""
import shutil
import subprocess
import unittest

import launcher
from display import Display
from fault_server import FaultServer
from stand_in import WindowsLauncher, Wine

BUILD = None  # set by run.py
_shared = {}


def display():
    if "display" not in _shared:
        # Wine moves and sizes windows by the rules of Windows if no window manager does.
        _shared["display"] = Display(managed=not launcher.is_windows())
    return _shared["display"]


def wine():
    if "wine" not in _shared:
        _shared["wine"] = Wine(display())
    return _shared["wine"]


def close():
    for name in ("wine", "display"):
        if name in _shared:
            _shared.pop(name).close()


class WindowTest(unittest.TestCase):
    """One server and one installation for each test."""

    def setUp(self):
        self.server = FaultServer()
        self.addCleanup(self.server.close)
        self.place = launcher.Installation(self.server)
        self.addCleanup(self.place.remove)
        self.display = display()

    def make_read_only(self, path):
        """A file or a directory with all that is below it, also for root."""
        subprocess.run(["mount", "--bind", path, path], check=True)
        # Wine still holds the place for a moment when the program in it has ended.
        self.addCleanup(subprocess.run, ["umount", "--lazy", path], check=True)
        subprocess.run(["mount", "-o", "remount,ro,bind", path], check=True)


class WindowsTest(WindowTest):
    """The Windows program with the loader that stands in for the web view."""

    def setUp(self):
        super().setUp()
        shutil.copy2(BUILD / "web_view_stand_in" / "WebView2Loader.dll", self.place.directory)
        self.wine = wine()

    def start(self, mode=""):
        program = WindowsLauncher.start(self.wine, self.place.program, mode)
        self.addCleanup(program.end)
        return program

    def installed_files(self):
        files = self.place.files()
        del files["WebView2Loader.dll"]
        return files
