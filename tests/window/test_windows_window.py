"""The window of the Windows program under real clicks, and a page that floods it."""
from display import HOME, NAVY, SCREEN
from fixture import WindowsTest
from game import Game
from launcher import beside_program, wait_until
from scenario import BUSY, MANIFEST


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
        Game(1, 10).publish(self.server)
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
        self.program.wait("loop ends")
        self.program.send("window", "TaskbarButtonCreated", 0)
        self.program.wait("taskbar state", "window", 4)
        self.program.wait("taskbar value", "window", 100, 100)
        self.put({"Tolmira.exe": beside_program("hold_file").read_bytes()})
        self.program.request("repair")
        for state in (2, 0):
            self.program.wait("taskbar state", "window", state)
        self.program.wait_message("ready", canPlay=True)
        self.program.request("play")
        self.assertEqual(self.program.exit_code(), 0)

    def test_a_page_that_floods_it(self):
        """Every refusal arrives, and the check's result after them, though they are more than the system's queue holds."""
        held = self.hold(MANIFEST)
        count = 12000
        for _ in range(1 + count):
            self.program.request("verify")
        self.program.request("getOptions")
        self.program.wait_message("options")  # overtakes what is queued: every request has been handled
        held.set()
        self.program.wait_message("check")
        refused = [message for message in self.program.messages() if message.get("text") == BUSY]
        self.assertEqual(len(refused), count)
