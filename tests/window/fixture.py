"""What the tests of both programs share."""
from launcher import wait_until
from scenario import ScenarioTest

BUILD = SCREEN = WINE = None  # set by run.py


class WindowTest(ScenarioTest):
    """Waits until the launcher of the test before has left the screen."""

    def setUp(self):
        super().setUp()
        self.display = SCREEN
        wait_until(lambda: not self.display.windows())
