"""The native program on a screen with a window manager, under real clicks."""
import os
import shutil
import subprocess

import launcher
from display import HOME, NAVY, SCREEN
from fixture import WindowTest
from game import Game
from launcher import LIMIT, wait_until
from scenario import MANIFEST

# Places on the page at its start, from the window's left and top, or from its right and bottom.
DRAG_ZONE, DRAG_ZONE_TOO = (500, 30), (400, 30)
MINIMIZE, MAXIMIZE, CLOSE = (-115, 25), (-75, 25), (-29, 25)
PLAY = (-134, -57)
LIT_CLOSE = "srgb(192,57,43)"  # the button to close under the pointer


class NativeWindowTest(WindowTest):
    def start(self):
        process = subprocess.Popen([self.place.program], env=self.display.environment, cwd="/",
                                   stdin=subprocess.DEVNULL, stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)
        self.addCleanup(process.wait)
        self.addCleanup(process.kill)
        return process

    def shown(self, path=MANIFEST):
        """The program with its page, and its run as far as a request for this path."""
        self.process = self.start()
        self.window = self.display.window()
        self.wait_for_request(path)
        self.server.requests.clear()

    def point(self, place):
        left, top, width, height = self.window.place()
        x, y = place
        return (left + (x if x >= 0 else width + x), top + (y if y >= 0 else height + y))

    def click(self, place, times=1):
        wait_until(self.page_is_in_place)
        self.display.mouse("mousemove", *self.point(place), "click", "--repeat", times, "--delay", 50, 1)

    def page_is_in_place(self):
        """The page follows the window's size a moment later: a click that came before would meet nothing."""
        x, y = self.point(CLOSE)
        self.display.mouse("mousemove", x - 1, y, "mousemove", x, y)
        return self.display.pixel(x + 14, y - 8) == LIT_CLOSE

    def closes(self):
        self.click(CLOSE)
        self.assertEqual(self.process.wait(LIMIT), 0)

    def test_it_appears_and_is_sized_by_its_edges(self):
        self.shown()
        for x, y in ((163, 500), (800, 897)):
            wait_until(lambda x=x, y=y: self.display.pixel(x, y) == NAVY)
        self.window.drag((1437, 500), (1337, 500), (160, 100, 1180, 800))
        self.window.drag((162, 102), (900, 700), (340, 260, 1000, 640))
        self.closes()

    def test_it_moves_maximizes_and_minimizes_by_its_page(self):
        self.shown()
        for place, times, expected in ((MAXIMIZE, 1, SCREEN), (MAXIMIZE, 1, HOME), (DRAG_ZONE, 2, SCREEN),
                                       (DRAG_ZONE_TOO, 2, HOME)):
            self.click(place, times)
            self.window.wait_for_place(*expected)
        wait_until(self.page_is_in_place)
        self.window.grasp(*self.point(DRAG_ZONE))
        self.display.mouse("mouseup", 1)
        self.assertEqual(self.window.place()[2:], HOME[2:])
        self.click(MAXIMIZE)
        self.window.wait_for_place(*SCREEN)
        wait_until(self.page_is_in_place)
        self.window.grasp(400, 20)
        self.display.mouse("mousemove", 600, 150)
        wait_until(self.is_held_as_before)
        self.display.mouse("mouseup", 1)
        self.click(MINIMIZE)
        wait_until(lambda: "Iconic" in self.state())
        self.display.run("wmctrl", "-i", "-a", hex(int(self.window.number)))
        wait_until(lambda: "Normal" in self.state())
        self.closes()

    def is_held_as_before(self):
        """A maximized window, grasped at a quarter of its width, is restored and follows the pointer at 600, 150."""
        left, top, *size = self.window.place()
        return tuple(size) == HOME[2:] and 300 < 600 - left < 350 and 10 < 150 - top < 60

    def state(self):
        return self.display.run("xprop", "-id", self.window.number, "WM_STATE")

    def test_its_page_comes_back_when_the_page_s_process_dies(self):
        self.shown()
        self.display.run("pkill", "--parent", self.process.pid, "--signal", "KILL", "WebKitWebProces")
        self.wait_for_request(MANIFEST)
        self.closes()

    def test_it_closes_in_the_middle_of_a_run_and_the_next_one_ends_with_the_game(self):
        game = Game(1, 40)
        path, held = self.hold_a_file_of(game)
        self.shown(path)
        self.closes()
        held.set()
        self.shown(path)
        started = self.place.directory / "started"
        play = self.point(PLAY)

        def played():
            # The launcher ends with the click that it takes: the next one meets the empty screen.
            self.display.mouse("mousemove", *play, "click", 1)
            return started.exists() and started.read_text().endswith("\n")
        wait_until(played)
        self.assertEqual(self.process.wait(LIMIT), 0)
        self.assertEqual(started.read_text(), f"{self.place.directory}|quantel|1\n")
        started.unlink()
        self.assertEqual(self.place.files(), game.files)

    def test_a_hostile_page_stays_inside(self):
        """It has no policy of its own: the host alone keeps it from the network, other documents and windows."""
        shutil.copy2(launcher.beside_program("hostile-launcher"), self.place.program)
        news = "/api/news.json"
        self.server.content[news] = self.server.url().encode()
        process = self.start()
        self.wait_for_request(news, 2)
        self.assertEqual(len(self.display.windows()), 1)
        self.assertEqual(self.server.requests[MANIFEST], 1, "a refused navigation is no loaded page")
        # The menu of the web view, with its way back and its reload.
        self.display.mouse("mousemove", 800, 500, "click", 3)
        self.display.mouse("key", "Down", "Down", "Down", "Return")
        # The page is still the page: it hears the answer to what it asks after its last attempt.
        self.server.content[news] = b"enough"
        self.assertEqual(process.wait(LIMIT), 0)
        self.assertEqual([path for path in self.server.requests if path.startswith("/leak")], [])

    def test_no_screen(self):
        environment = {name: value for name, value in os.environ.items() if name not in ("DISPLAY", "WAYLAND_DISPLAY")}
        done = subprocess.run([self.place.program], env=environment, stdin=subprocess.DEVNULL, capture_output=True,
                              timeout=LIMIT, check=False)
        self.assertEqual((done.returncode, done.stdout), (1, b""))
        self.assertIn(b"Impossible d'ouvrir la fenetre du patcher.", done.stderr)
