"""The window of the Windows program under real clicks, and what it withstands."""
import threading

from display import wait_until
from fixture import WindowsTest
from game import Game

TITLE = "TolmiraMMO Patcher v26"
HOME = (160, 100, 1280, 800)
SCREEN = (0, 0, 1600, 1000)


class WindowTest(WindowsTest):
    def setUp(self):
        super().setUp()
        self.program = self.start()
        self.program.load_page()
        self.program.wait_message("ready")
        self.window = self.display.window(TITLE)
        self.window.wait_for_place(*HOME)

    def test_it_is_sized_by_its_edges_and_not_below_its_minimum(self):
        self.display.drag((1437, 500), (1400, 500), (1337, 500))
        self.window.wait_for_place(160, 100, 1180, 800)
        self.program.wait("bounds", lambda fields: fields == ["6", "6", "1174", "794"])
        self.display.drag((1337, 897), (1200, 800), (400, 300))
        self.window.wait_for_place(160, 100, 1000, 640)

    def test_it_maximizes_and_restores_at_the_pages_request(self):
        self.program.request("windowMaximize")
        self.program.wait_message("window", maximized=True)
        self.window.wait_for_place(*SCREEN)
        self.program.request("windowMaximize")
        self.program.wait_message("window", maximized=False)
        self.program.wait("bounds", lambda fields: fields == ["6", "6", "1274", "794"])
        self.window.wait_for_place(*HOME)

    def test_a_minimize_sends_the_page_nothing(self):
        before = len(self.program.messages())
        self.program.request("windowMinimize")
        self.program.wait("bounds")
        self.program.request("getOptions")
        self.program.wait_message("options")
        self.assertEqual(len(self.program.messages()), before + 1)
        self.program.request("windowMaximize")
        self.assertEqual(self.program.wait_message("window")["maximized"], True)

    def test_it_moves_with_the_mouse_and_goes_on_reporting(self):
        held = threading.Event()
        self.addCleanup(held.set)
        Game(1, 10).publish(self.server)
        self.server.faults = {"/patch/version.json": [("hold", held), None]}
        self.program.request("verify")
        self.program.wait_message("status")
        self.display.mouse("mousemove", 500, 150, "mousedown", 1)
        self.program.request("windowDrag")
        self.display.mouse("mousemove", 520, 160)
        self.display.mouse("mousemove", 560, 180)
        wait_until(lambda: self.window.place() != HOME)
        held.set()
        self.program.wait_message("check")  # while the button is held, in the system's own loop
        self.display.mouse("mousemove", 600, 200, "mouseup", 1)
        self.program.wait("handled")  # the move has ended; in the midst of one, Wine forgets a request to quit
        self.assertEqual(self.window.place()[2:], HOME[2:])
        self.program.request("windowClose")
        self.assertEqual(self.program.exit_code(), 0)


class EnduranceTest(WindowsTest):
    def test_a_page_that_floods_the_host(self):
        """Every refusal comes, and `ready` behind them, though they are more than the system's queue holds."""
        Game(2, 20).publish(self.server)
        held = threading.Event()
        self.addCleanup(held.set)
        self.server.faults = {"/patch/version.json": [("hold", held), None]}
        program = self.start()
        program.load_page()
        program.wait_message("status")
        count = 12000
        flood = b"".join(b'send\t{"action":"verify"}\nsend\t{"action":"%d"}\n' % i for i in range(count))
        program.connection.sendall(flood)
        program.request("getOptions")
        program.wait_message("options")  # overtakes what is queued: every request has been dealt with
        held.set()
        program.wait_message("ready", canPlay=True)
        refused = [m for m in program.messages() if m.get("text") == "Une operation est deja en cours."]
        self.assertEqual(len(refused), count)

    def test_a_page_that_wants_ten_thousand_news(self):
        Game(2, 5).publish(self.server)
        program = self.start()
        program.load_page()
        program.wait_message("ready", canPlay=True)
        program.connection.sendall(b'send\t{"action":"getNews"}\n' * 10000)
        program.request("verify")
        program.wait_message("check")
        program.request("windowClose")
        self.assertEqual(program.exit_code(), 0)

    def test_it_closes_at_any_moment_and_the_next_start_converges(self):
        game = Game(3, 80, archives=2)
        for messages in (1, 3, 5, 8, 12):
            game.next_version()
            game.publish(self.server)
            program = self.start()
            program.load_page()
            for _ in range(messages):
                program.wait("message")
            program.request("windowClose")
            self.assertEqual(program.exit_code(), 0)
        program = self.start()
        program.load_page()
        program.wait_message("ready", canPlay=True)
        self.assert_installed(game)

    def assert_installed(self, game):
        self.assertEqual(self.installed_files(), game.files)

    def test_two_at_once(self):
        game = Game(4, 60)
        game.publish(self.server)
        programs = [self.start(), self.start()]
        for program in programs:
            program.load_page()
        ready = [program.wait_message("ready")["canPlay"] for program in programs]
        self.assertIn(True, ready)
        for program in programs:
            program.request("verify")
            check = program.wait_message("check")
            self.assertEqual((check["missing"], check["corrupt"]), (0, 0))
        self.assert_installed(game)

    def test_a_directory_in_which_nothing_can_be_written(self):
        self.make_read_only(self.place.root)
        Game(5, 5).publish(self.server)
        program = self.start()
        program.load_page()
        program.wait_message("ready", canPlay=False)
        program.request("saveOptions", values=program.messages()[0]["values"])
        program.wait_message("optionsSaved", ok=False)
        program.request("windowClose")
        self.assertEqual(program.exit_code(), 0)

    def test_a_configuration_that_is_none(self):
        for content in (b"\xff\xfe\x00garbage", b"BaseUrl=nonsense\r\nConnections=999\r\n", b"=" * 100000):
            (self.place.directory / "patcher.ini").write_bytes(content)
            program = self.start()
            program.load_page()
            program.wait_message("ready", canPlay=False)
            program.request("windowClose")
            self.assertEqual(program.exit_code(), 0)
            self.assertEqual((self.place.directory / "patcher.ini").read_bytes(), content)
