"""What the tests of both programs share."""
from launcher import wait_until
from scenario import ScenarioTest

BUILD = SCREEN = WINE = None  # set by run.py


class WindowTest(ScenarioTest):
    """No launcher is on the screen before the test."""

    def setUp(self):
        super().setUp()
        self.display = SCREEN
        wait_until(lambda: not self.display.windows())
