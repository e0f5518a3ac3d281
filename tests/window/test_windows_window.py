"""The window of the Windows program under real clicks, and what it withstands."""
from display import HOME, NAVY, SCREEN
from fixture import WindowsTest
from game import MANIFEST, Game
from launcher import setting, wait_until


class WindowTest(WindowsTest):
    def setUp(self):
        super().setUp()
        self.addCleanup(self.display.mouse, "mouseup", 1)
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
        self.assertEqual(len(self.program.messages()), before + 1, "a minimize sends nothing to the page")
        for maximized in (True, False):
            self.program.request("windowMaximize")
            self.program.wait_message("window", maximized=maximized)
        self.wait_for_bounds(6, 6, 1274, 794)
        self.window.wait_for_place(*HOME)
        # Last, since the end of the system's own loop for it is reported nowhere.
        self.window.drag((1437, 500), (1337, 500), (160, 100, 1180, 800))
        self.wait_for_bounds(6, 6, 1174, 794)
        self.window.drag((1337, 897), (400, 300), (160, 100, 1000, 640))

    def press(self, x, y):
        """The button goes down on the page's band, and the page asks for a move as it does then."""
        self.display.mouse("mousemove", x, y, "mousedown", 1)
        where = self.program.wait("press")
        self.assertEqual(self.program.ask("send", '{"action":"windowDrag"}'), ["done"])
        return where

    def test_it_moves_with_the_mouse_and_goes_on_reporting(self):
        Game(1, 10).publish(self.server)
        held = self.hold(MANIFEST)
        self.program.request("verify")
        self.program.wait_message("status")
        self.press(500, 150)  # answered while the button is held: the move is not made within the page's event
        self.window.follow(500, 150)
        self.program.wait("moved")
        held.set()
        self.program.wait_message("check")  # while the button is held, in the system's own loop
        self.display.mouse("mousemove", 600, 200, "mouseup", 1)
        self.program.wait("loop", lambda fields: fields == ["ends"])  # in the midst of one, Wine forgets a request to quit
        self.assertEqual(self.window.place()[2:], HOME[2:])
        self.assertEqual(self.program.close(), 0)

    def test_clicks_on_the_band_do_not_move_it_and_two_maximize_it(self):
        for _ in range(2):
            self.press(500, 150)
            self.display.mouse("mouseup", 1)
            self.program.wait("release")  # the page sees both halves of both clicks
        self.program.ask("send", '{"action":"windowDrag"}')  # a tap: its button is up again when the page gets it
        self.display.mouse("mousemove", 700, 300)
        self.assertEqual(self.press(500, 150), ["334", "44"])
        self.display.mouse("mouseup", 1)
        self.program.wait("release")
        self.program.request("windowMaximize")
        self.program.wait_message("window", maximized=True)
        self.window.wait_for_place(*SCREEN)
        # The frame that the system lays out around a maximized window looks like the page's edge.
        for _ in range(2):
            wait_until(lambda: {self.display.pixel(x, y) for x, y in ((1, 500), (800, 1), (1598, 500), (800, 998))} == {NAVY})
            self.program.ask("window", "134", "0")  # WM_NCACTIVATE: another window is in front
        self.press(400, 20)
        self.window.follow(400, 20)
        self.program.wait_message("window", maximized=False)
        self.display.mouse("mousemove", 800, 300, "mouseup", 1)
        self.program.wait("loop", lambda fields: fields == ["ends"])
        left, top, *size = self.window.place()
        self.assertEqual(tuple(size), HOME[2:])
        # The pointer was a quarter of the way along the band.
        self.assertTrue(310 < 800 - left < 350 and 10 < 300 - top < 50, (left, top))

    def test_what_the_system_shows_of_it(self):
        self.program.ask("window", "736", "9437328", "100", "50", "1500", "900")  # WM_DPICHANGED, with a place
        self.window.wait_for_place(100, 50, 1400, 850)
        self.program.send("window", "TaskbarButtonCreated", "0")
        self.assertEqual([self.program.wait("taskbar") for _ in range(2)], [["state", "4"], ["value", "100", "100"]])
        Game(1, 10).publish(self.server)
        self.program.request("repair")
        for state in "20":
            self.program.wait("taskbar", lambda fields, state=state: fields == ["state", state])
        self.program.wait_message("ready", canPlay=True)


class EnduranceTest(WindowsTest):
    def test_a_page_that_floods_the_host(self):
        """Every refusal arrives, and `ready` after them, though they are more than the system's queue holds."""
        Game(2, 20).publish(self.server)
        held = self.hold(MANIFEST)
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
        game.publish(self.server)
        path = "/patch/f/f0.dat"
        held = self.hold(path)
        program = self.loaded()
        self.wait_for_request(path)
        self.assertEqual(program.close(), 0)
        held.set()
        self.loaded().wait_message("ready", canPlay=True)
        self.assertEqual(self.installed_files(), game.files)

    def test_the_launcher_replaces_itself(self):
        # The same program with bytes after its end that no loader looks at: another file, which can be recognised.
        successor = self.place.program.read_bytes() + b"the next launcher"
        self.server.content["/patch/Patcher.exe"] = successor
        game = Game(4, 10)
        game.publish(self.server, patcherVersion=int(setting("PATCHER_LAUNCHER_BUILD")) + 1, patcherUrl="Patcher.exe")
        program = self.loaded()
        program.wait_message("status", text="Mise a jour du patcher...")
        program.wait("navigate")  # the successor's
        self.assertEqual(program.process.wait(), 0)  # so that only the successor reads what is sent
        program.send("complete")
        self.assertNotIn("ready", [message["type"] for message in program.messages()])
        program.wait_message("ready", canPlay=True)
        found = self.installed_files()
        self.assertEqual(self.place.program.read_bytes(), successor)
        self.assertEqual({name: data for name, data in found.items() if not name.startswith("Patcher.")}, game.files)
        self.assertNotIn("Patcher.new.exe", found)
