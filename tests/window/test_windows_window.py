"""The Windows program: the steps from its window to the loaded page, the messages between both, and the window under
real clicks. A loader that takes the place of the web view's reports what the program does."""
import shutil

import fixture
from display import HOME, NAVY, SCREEN
from game import MANIFEST
from launcher import beside_program, setting, wait_until
from stand_in import ROOT, WindowsLauncher

LOADER = "WebView2Loader.dll"
HANDLERS = ["WebResourceRequested", "WebMessageReceived", "NavigationCompleted", "NavigationStarting",
            "NewWindowRequested", "ProcessFailed"]
INVALID_ARGUMENT, NOTHING = 0x80070057, 1  # results of the getter for a message that is not a string, or is null


class WindowsTest(fixture.WindowTest):
    def setUp(self):
        super().setUp()
        shutil.copy2(fixture.BUILD / "web_view_stand_in" / LOADER, self.place.directory)

    def start(self, mode=""):
        """The program before it has its page."""
        program = WindowsLauncher(fixture.WINE, self.place.program, mode)
        self.addCleanup(program.end)
        return program

    def loaded(self, mode=""):
        """The program with its page, at the beginning of its run."""
        program = self.start(mode)
        program.load_page()
        return program


class PageTest(WindowsTest):
    def test_the_steps_and_their_order(self):
        data = "Z:" + str(self.place / "WebView2Data").replace("/", "\\")
        carried = (fixture.BUILD / "Patcher" / "generated" / "page" / "launcher.html").read_text(encoding="utf-8")
        for mode in ("", "at-once"):
            held = self.hold(MANIFEST)
            program = self.start(mode)
            self.assertEqual(program.load_page(), carried)
            icons = [line for line in program.heard if line[0] == "icon"]
            self.assertEqual(icons, [["icon", "1"], ["icon", "0"]])  # the large one and the small one
            self.assertEqual([line for line in program.heard[:-1] if line not in icons], [
                ["environment", "(null)", data, "no options", "FF0D1426"],
                ["handler", "environment", "sound"],
                ["handler", "controller", "sound"],
                ["filter", setting("PATCHER_ASSET_ORIGIN") + "/*", "0"],
                ["handler", "WebResourceRequested", "sound"],
                ["bounds", "6", "6", "1274", "794"],
                *[["handler", name, "sound"] for name in HANDLERS[1:]]])
            program.wait_message("status")
            # The page has the keyboard without a click.
            self.assertIn(["focus", "0"], program.heard)
            program.send("window", 7, 0)  # WM_SETFOCUS, as when the window comes to the front again
            program.wait("focus", 0)
            self.assertEqual([message["type"] for message in program.messages()][:2], ["options", "status"])
            self.assertEqual(program.close(), 0, "the window closes in the middle of a run")
            held.set()

    def test_a_failed_step_leaves_an_empty_window_that_can_be_closed(self):
        for mode in ("no-runtime", "no-environment", "no-controller", "null-controller", "no-view"):
            with self.subTest(mode=mode):
                program = self.start(mode)
                left, top, _, _ = self.display.window().place()
                self.display.mouse("mousemove", left + 100, top + 100, "click", 1, "key", "alt+F4")
                self.assertEqual(program.exit_code(), 0)
                self.assertLessEqual({line[0] for line in program.heard}, {"environment", "handler", "icon"})
                self.assertEqual(sum(self.server.requests.values()), 0)

    def test_images(self):
        origin = setting("PATCHER_ASSET_ORIGIN")
        for mode in ("", "no-response"):
            program = self.loaded(mode)
            for name, kind in (("background.jpg", "image/jpeg"), ("logo.png", "image/png")):
                content = (ROOT / "Patcher" / "patcher-assets" / name).read_bytes()
                headers = f"Content-Type: {kind}\r\nCache-Control: max-age=31536000"
                response = [] if mode else ["200", "OK", headers, content.hex()]
                answer = program.raise_event("WebResourceRequested", f"{origin}/{name}")
                self.assertEqual(answer, ["done", *response])
            self.assertEqual(program.raise_event("WebResourceRequested", f"{origin}/launcher.html"), ["done"])
            self.assert_nothing_is_held(program)

    def assert_nothing_is_held(self, program):
        """The program has released all objects, and the game does not inherit the colour variable."""
        counts = dict(entry.split("=") for entry in program.ask("report"))
        kept = dict.fromkeys(["view", "controller", "environment", "taskbar", "taskbar factory", *HANDLERS], "1")
        self.assertEqual({name: count for name, count in counts.items() if count != "0"}, kept)

    def test_bad_requests_are_ignored_and_the_page_stays_the_page(self):
        program = self.start()
        program.wait("navigate")
        for number, own in ((1, "data:text/html;base64,PGh0bWw+"), (2, "about:blank")):
            self.assertEqual(program.raise_event("NavigationStarting", own, number), ["done"])
            program.raise_event("NavigationCompleted", "", number)
        program.wait_message("ready")
        before = len(program.messages())
        for event in ("NavigationStarting", "NewWindowRequested"):
            self.assertEqual(program.raise_event(event, setting("PATCHER_SITE_LINK"), 3), ["refused"])
        program.raise_event("NavigationCompleted", "", 3)
        for text, result in (("", INVALID_ARGUMENT), ("", NOTHING), ("{", 0), ('{"action":"play"}', 0), ("[" * 100000, 0)):
            program.raise_event("WebMessageReceived", text, 0, result)
        program.request("getOptions")
        program.wait_message("options")
        self.assertEqual(len(program.messages()), before + 1, "a refused navigation is not a loaded page")
        self.assert_nothing_is_held(program)

    def test_a_page_whose_process_died_comes_back_three_times(self):
        self.put({"Tolmira.exe": b""})
        held = self.hold(MANIFEST)
        program = self.loaded()
        # The numbers of navigations begin again with a new web view.
        program.raise_event("NavigationStarting", setting("PATCHER_SITE_LINK"), 1)
        for harmless in range(2, 10):
            program.raise_event("ProcessFailed", "", harmless)
        for kind in (0, 1, 0):
            program.raise_event("ProcessFailed", "", kind)
            program.load_page()
            program.wait_message("options")
        program.raise_event("ProcessFailed", "", 1)
        self.assert_nothing_is_held(program)
        held.set()
        program.wait_message("ready", canPlay=True)
        loads = [line[0] for line in program.heard if line[0] in ("environment", "navigate")]
        self.assertEqual(loads, ["environment", "navigate", "environment", "navigate", "navigate", "environment", "navigate"])
        self.assertEqual(self.server.requests[MANIFEST], 1, "no page started a second run beside the first")


class VersionTest(WindowsTest):
    def test_the_version_is_printed_when_the_command_line_contains_the_option(self):
        (self.place / "patcher.ini").unlink()
        program = self.place.program
        odd = shutil.copy2(program, self.place / "Patcher --print-version.exe")
        for command in ((program, "x", "y--print-versionz"), (odd,)):
            self.assertEqual(fixture.WINE.run(*command), (0, setting("PATCHER_LAUNCHER_BUILD").encode() + b"\n"))
        self.assertEqual({path.name for path in self.place.directory.iterdir()}, {program.name, odd.name, LOADER})


class WindowTest(WindowsTest):
    def setUp(self):
        super().setUp()
        self.addCleanup(self.display.mouse, "mouseup", 1)
        self.program = self.loaded()
        self.program.wait_message("ready")
        self.window = self.display.window()

    def press(self, x, y):
        """The button goes down on the page's title band, and the page asks for a move."""
        self.display.mouse("mousemove", x, y, "mousedown", 1)
        self.program.wait("press")
        self.assertEqual(self.program.raise_event("WebMessageReceived", '{"action":"windowDrag"}'), ["done"])

    def click(self):
        self.press(500, 150)
        self.display.mouse("mouseup", 1)
        self.program.wait("release")

    def drop(self, x, y):
        self.display.mouse("mousemove", x, y, "mouseup", 1)
        self.program.wait("loop ends")

    def toggle_maximized(self, expected):
        self.program.request("windowMaximize")
        self.program.wait_message("window", maximized=expected)

    def test_it_moves_with_the_mouse_and_goes_on_reporting(self):
        held = self.hold(MANIFEST)
        self.program.request("verify")
        self.program.wait_message("status")
        self.press(500, 150)
        self.window.follow(500, 150)
        self.program.wait("moved")
        held.set()
        self.program.wait_message("check")  # while the button is held, in the system's own loop
        self.drop(600, 200)
        self.assertEqual(self.window.place()[2:], HOME[2:])
        self.assertEqual(self.program.close(), 0)

    def test_clicks_on_the_title_band_leave_it_in_place_and_a_drag_restores_it(self):
        for _ in range(2):
            self.click()
        self.program.request("windowDrag")  # a tap: the button is up again when the page gets it
        self.display.mouse("mousemove", 700, 300)
        self.click()
        self.assertEqual(self.window.place(), HOME)
        self.toggle_maximized(True)
        self.window.wait_for_place(*SCREEN)
        before = len(self.program.messages())
        self.program.request("windowMinimize")
        self.program.request("getOptions")
        self.program.wait_message("options")
        self.assertEqual(len(self.program.messages()), before + 1, "a minimize sends nothing to the page")
        self.toggle_maximized(True)
        # The frame that the system lays out around a maximized window looks like the page's edge.
        for _ in range(2):
            wait_until(lambda: {self.display.pixel(x, y) for x, y in ((1, 500), (800, 1), (1598, 500), (800, 998))} == {NAVY})
            self.program.ask("window", 134, 0)  # WM_NCACTIVATE: another window is in front
        self.press(400, 20)
        self.window.follow(400, 20)
        self.program.wait_message("window", maximized=False)
        self.drop(800, 300)
        left, top, *size = self.window.place()
        self.assertEqual(tuple(size), HOME[2:])
        # The pointer was a quarter of the way along the band.
        self.assertTrue(310 < 800 - left < 350 and 10 < 300 - top < 50, (left, top))

    def test_its_size_and_its_button_on_the_task_bar(self):
        self.program.ask("window", 736, 0x900090, 100, 50, 1500, 900)  # WM_DPICHANGED, with a place
        for maximized in (True, False):
            self.toggle_maximized(maximized)
        self.window.wait_for_place(100, 50, 1400, 850)
        self.window.drag((1497, 400), (1397, 400), (100, 50, 1300, 850))
        self.program.wait("bounds", 6, 6, 1294, 844)
        self.program.wait("loop ends")
        self.window.drag((1397, 897), (400, 300), (100, 50, 1000, 640))
        self.program.wait("loop ends")  # inside that loop, Wine forgets a request to quit
        self.put({"Tolmira.exe": beside_program("hold_file").read_bytes()})
        self.program.request("repair")
        self.program.wait_message("ready", canPlay=True)
        self.program.request("play")
        self.assertEqual(self.program.exit_code(), 0)
        shown = [line[1:] for line in self.program.heard if line[0].startswith("taskbar")]
        self.assertEqual(shown[:5] + shown[-1:], [[], ["window", "0"], ["window", "4"], ["window", "100", "100"],
                                                  ["window", "2"], ["window", "0"]])
