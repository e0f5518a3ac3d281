"""The window of the Windows program under real clicks, and what it withstands."""
import subprocess

import fixture
from display import HOME, SCREEN
from fixture import VERSION, WindowsTest
from game import Game
from stand_in import ROOT


class WindowTest(WindowsTest):
    def setUp(self):
        super().setUp()
        self.program = self.loaded()
        self.program.wait_message("ready")
        self.window = self.display.window()

    def wait_for_bounds(self, *bounds):
        self.program.wait("bounds", lambda fields: fields == list(map(str, bounds)))

    def test_it_is_sized_by_the_page_and_by_its_edges(self):
        self.program.request("windowMaximize")
        self.program.wait_message("window", maximized=True)
        self.window.wait_for_place(*SCREEN)
        before = len(self.program.messages())
        self.program.request("windowMinimize")
        self.program.request("getOptions")
        self.program.wait_message("options")
        self.assertEqual(len(self.program.messages()), before + 1, "a minimize tells the page nothing")
        for maximized in (True, False):
            self.program.request("windowMaximize")
            self.program.wait_message("window", maximized=maximized)
        self.wait_for_bounds(6, 6, 1274, 794)
        self.window.wait_for_place(*HOME)
        # Last, since nobody tells when the system's own loop for it has ended.
        self.window.drag((1437, 500), (1337, 500), (160, 100, 1180, 800))
        self.wait_for_bounds(6, 6, 1174, 794)
        self.window.drag((1337, 897), (400, 300), (160, 100, 1000, 640))

    def test_it_moves_with_the_mouse_and_goes_on_reporting(self):
        Game(1, 10).publish(self.server)
        held = self.hold(VERSION)
        self.program.request("verify")
        self.program.wait_message("status")
        self.program.request("windowDrag")
        self.window.grasp(500, 150)
        held.set()
        self.program.wait_message("check")  # while the button is held, in the system's own loop
        self.display.mouse("mousemove", 600, 200, "mouseup", 1)
        self.program.wait("send")  # the move has ended; in the midst of one, Wine forgets a request to quit
        self.assertEqual(self.window.place()[2:], HOME[2:])
        self.assertEqual(self.program.close(), 0)


class EnduranceTest(WindowsTest):
    def test_a_page_that_floods_the_host(self):
        """Every refusal comes, and `ready` behind them, though they are more than the system's queue holds."""
        Game(2, 20).publish(self.server)
        held = self.hold(VERSION)
        program = self.loaded()
        program.wait_message("status")
        count = 12000
        for _ in range(count):
            program.request("verify")
        program.request("getOptions")
        program.wait_message("options")  # overtakes what is queued: every request has been dealt with
        held.set()
        program.wait_message("ready", canPlay=True)
        refused = [m for m in program.messages() if m.get("text") == "Une operation est deja en cours."]
        self.assertEqual(len(refused), count)

    def test_a_page_that_wants_the_news_without_end(self):
        Game(2, 5).publish(self.server)
        program = self.loaded()
        program.wait_message("ready", canPlay=True)
        held = self.hold("/api/news.json")
        for _ in range(3000):
            program.request("getNews")
        program.wait_message("news", ok=False)  # more than there can be threads
        held.set()
        program.request("verify")
        program.wait_message("check")
        self.assertEqual(program.close(), 0)

    def test_it_closes_in_the_middle_of_a_run_and_the_next_start_completes_it(self):
        game = Game(3, 80)
        path, held = self.hold_a_file_of(game)
        program = self.loaded()
        self.wait_for_request(path)
        self.assertEqual(program.close(), 0)
        held.set()
        self.loaded().wait_message("ready", canPlay=True)
        self.assertEqual(self.installed_files(), game.files)

    def test_a_directory_in_which_nothing_can_be_written(self):
        """Not even by root."""
        root = self.place.root
        Game(5, 5).publish(self.server)
        subprocess.run(["mount", "--bind", root, root], check=True)
        # Wine still holds the place for a moment when the program in it has ended.
        self.addCleanup(subprocess.run, ["umount", "--lazy", root], check=True)
        subprocess.run(["mount", "-o", "remount,ro,bind", root], check=True)
        program = self.loaded()
        program.wait_message("ready", canPlay=False)
        program.request("saveOptions", values=program.messages()[0]["values"])
        program.wait_message("optionsSaved", ok=False)
        self.assertEqual(program.close(), 0)

    def test_the_launcher_replaces_itself(self):
        # The same program with bytes behind its end that no loader looks at: another file, that can be told apart.
        successor = self.place.program.read_bytes() + b"the next launcher"
        self.server.content["/patch/Patcher.exe"] = successor
        game = Game(4, 10)
        game.publish(self.server, patcherVersion=27, patcherUrl="Patcher.exe")
        program = self.loaded()
        program.wait_message("status", text="Mise a jour du patcher...")
        program.wait("navigate")  # the successor's
        self.assertEqual(program.process.wait(), 0)  # so that nobody else reads what the successor is told
        program.tell("complete")
        self.assertNotIn("ready", [message["type"] for message in program.messages()])
        program.wait_message("ready", canPlay=True)
        found = self.installed_files()
        self.assertEqual(self.place.program.read_bytes(), successor)
        self.assertEqual({name: data for name, data in found.items() if not name.startswith("Patcher.")}, game.files)
        self.assertNotIn("Patcher.new.exe", found)


class PageTest(WindowsTest):
    def test_journeys(self):
        """The tests of the page in a real browser that need an engine, with the Windows program for one."""
        journeys = [f"tests/page/{name}.test.mjs" for name in ("install_and_play", "check", "options")]
        done = subprocess.run(["node", "--test", "--test-concurrency=2", "--test-reporter=tap", *journeys], cwd=ROOT,
                              env={**fixture.WINE.environment, "PAGE_TEST_WINDOWS": str(fixture.BUILD)},
                              stdout=subprocess.PIPE, text=True, check=False)
        self.assertEqual(done.returncode, 0, done.stdout)
