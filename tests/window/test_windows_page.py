"""The tests of the page in a real browser, with the Windows program behind it."""
import subprocess
import unittest

import fixture
from stand_in import ROOT


class PageTest(unittest.TestCase):
    def test_journeys(self):
        environment = {**fixture.wine().environment, "PAGE_TEST_WINDOWS": str(fixture.BUILD)}
        journeys = [f"tests/page/{name}.test.mjs" for name in ("install_and_play", "check", "options", "news")]
        done = subprocess.run(["node", "--test", "--test-concurrency=1", "--test-reporter=tap", *journeys], cwd=ROOT,
                              env=environment, stdout=subprocess.PIPE, text=True, check=False)
        self.assertEqual(done.returncode, 0, done.stdout)
