"""What the tests of both programs share: the screen, Wine, and an installation with a server."""
import shutil

from launcher import wait_until
from scenario import ScenarioTest
from stand_in import WindowsLauncher

BUILD = SCREEN = WINE = None  # set by run.py


class WindowTest(ScenarioTest):
    """No launcher is on the screen before the test."""

    def setUp(self):
        super().setUp()
        self.display = SCREEN
        wait_until(lambda: not self.display.windows())


class WindowsTest(WindowTest):
    """The Windows program with the loader that stands in for the web view."""

    def setUp(self):
        super().setUp()
        shutil.copy2(BUILD / "web_view_stand_in" / "WebView2Loader.dll", self.place.directory)

    def start(self, mode=""):
        """The program before it has its page."""
        program = WindowsLauncher(WINE, self.place.program, mode)
        self.addCleanup(program.end)
        return program

    def loaded(self, mode=""):
        """The program with its page, at the beginning of its run."""
        program = self.start(mode)
        program.load_page()
        return program
