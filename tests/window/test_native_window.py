"""The native program on a screen with a window manager, under real clicks."""
import contextlib
import os
import shutil
import subprocess
import time

import launcher
from display import LIMIT, WindowGone, wait_until
from fixture import WindowTest
from game import Game

TITLE = "TolmiraMMO Patcher v26"
HOME = (160, 100, 1280, 800)
SCREEN = (0, 0, 1600, 1000)

# Places on the page at its start, from the window's left and top, or from its right and bottom.
DRAG_ZONE = (500, 30)
MINIMIZE, MAXIMIZE, CLOSE = (-115, 25), (-75, 25), (-29, 25)
PLAY = (-134, -57)


class NativeWindowTest(WindowTest):
    def start(self):
        process = subprocess.Popen([self.place.program], env=self.display.environment, cwd="/",
                                   stdin=subprocess.DEVNULL, stdout=subprocess.DEVNULL, stderr=subprocess.PIPE)
        self.addCleanup(self.end, process)
        return process

    @staticmethod
    def end(process):
        process.kill()
        process.communicate()

    def shown(self, game=None):
        """The program with its page at work: it has asked the server."""
        if game:
            game.publish(self.server)
        asked = self.server.requests["/patch/version.json"]
        self.process = self.start()
        self.window = self.display.window(TITLE)
        self.window.wait_for_place(*HOME)
        wait_until(lambda: self.server.requests["/patch/version.json"] > asked)
        return self.process

    def point(self, place):
        left, top, width, height = self.window.place()
        x, y = place
        return (left + (x if x >= 0 else width + x), top + (y if y >= 0 else height + y))

    def click(self, place, times=1):
        self.display.mouse("mousemove", *self.point(place), "click", "--repeat", times, "--delay", 90, 1)

    def click_until(self, place, expected, times=1):
        """The page follows the window's new size a moment later: a click that comes before meets nothing, and a player
        clicks again."""
        def stands_there():
            self.click(place, times)
            end = time.monotonic() + 5
            while time.monotonic() < end:
                if self.window.place() == expected:
                    return True
            return False
        wait_until(stands_there, lambda: f"the window stands at {self.window.place()}, not at {expected}")

    def closes(self):
        self.click(CLOSE)
        self.assertEqual(self.process.wait(LIMIT), 0)

    def test_it_appears_and_is_sized_by_its_edges(self):
        self.shown()
        self.assertEqual(self.window.title(), TITLE)
        self.assertEqual(self.pixel(163, 500), self.pixel(800, 897))
        self.assertEqual(self.pixel(163, 500), "srgb(13,20,38)")
        self.display.drag((1437, 500), (1400, 500), (1337, 500))
        self.window.wait_for_place(160, 100, 1180, 800)
        self.display.drag((162, 102), (220, 160), (900, 700))
        self.window.wait_for_place(340, 260, 1000, 640)
        self.closes()

    def pixel(self, x, y):
        return self.display.run("import", "-silent", "-window", "root", "-depth", "8", "-crop", f"1x1+{x}+{y}", "-format",
                                "%[pixel:p{0,0}]", "info:")

    def test_it_moves_maximizes_and_minimizes_by_its_page(self):
        self.shown()
        self.click_until(MAXIMIZE, SCREEN)
        self.click_until(MAXIMIZE, HOME)
        self.click_until(DRAG_ZONE, SCREEN, times=2)
        self.click_until(DRAG_ZONE, HOME, times=2)
        self.drag_until_it_moves()
        self.click(MINIMIZE)
        wait_until(lambda: "Iconic" in self.window.state())
        self.display.run("wmctrl", "-i", "-a", hex(int(self.window.number)))
        wait_until(lambda: "Normal" in self.window.state())
        self.closes()

    def drag_until_it_moves(self):
        self.display.mouse("mousemove", *self.point(DRAG_ZONE), "mousedown", 1)

        def follows():
            self.display.mouse("mousemove_relative", 20, 10)
            return self.window.place()[:2] != HOME[:2]
        wait_until(follows)
        self.display.mouse("mouseup", 1)
        self.assertEqual(self.window.place()[2:], HOME[2:])

    def test_it_installs_the_game_and_starts_it(self):
        game = Game(1, 40)
        process = self.shown(game)
        started = self.place.directory / "started"

        def played():
            # The launcher ends with the click that it takes: there may be no window for the next one.
            with contextlib.suppress(WindowGone):
                self.click(PLAY)
            return started.exists() and started.read_text().endswith("\n")
        wait_until(played)
        self.assertEqual(process.wait(LIMIT), 0)
        self.assertEqual(started.read_text(), f"{self.place.directory}|quantel|1\n")
        started.unlink()
        self.assertEqual(self.place.files(), game.files)

    def test_places_that_nothing_can_be_written_to(self):
        game = Game(5, 5)
        with self.subTest("patcher.ini"):
            self.make_read_only(self.place.directory / "patcher.ini")
            self.shown(game)
            wait_until(lambda: game.files.items() <= self.place.files().items())
            self.closes()
        with self.subTest("directory"):
            game.next_version()
            before = self.place.files()
            self.make_read_only(self.place.root)
            self.shown(game)
            self.closes()
            self.assertEqual(self.place.files(), before)

    def test_it_closes_at_any_moment_and_the_next_start_converges(self):
        game = Game(3, 200)
        for part in (0, 20, 50):
            game.next_version()
            fetched = sum(self.server.requests.values())
            self.shown(game)
            wait_until(lambda least=fetched + part: sum(self.server.requests.values()) > least)
            self.closes()
        self.shown(game)
        wait_until(lambda: self.place.files() == game.files)
        self.closes()

    def test_nothing_reaches_the_network_but_the_engine(self):
        """Two at once, neither of which writes a file of the web view's."""
        first = self.shown(Game(4, 5))
        second = self.start()
        wait_until(lambda: len(self.display.windows(TITLE)) == 2)
        wait_until(lambda: self.server.requests["/patch/version.json"] == 2)
        self.assertFalse((self.place.directory / "WebView2Data").exists())
        for process in (first, second):
            self.assertIsNone(process.poll())

    def test_a_hostile_page_stays_inside(self):
        """It has no policy of its own: the host alone keeps it from the network, other documents and windows."""
        shutil.copy2(launcher.beside_program("hostile-launcher"), self.place.program)
        self.server.content["/api/news.json"] = self.server.url().encode()
        process = self.start()
        wait_until(lambda: self.server.requests["/api/news.json"] == 2)
        self.assertEqual([path for path in self.server.requests if path.startswith("/leak")], [])
        self.assertEqual(len(self.display.windows(TITLE)), 1)
        self.server.content["/api/news.json"] = b"enough"
        # The page is still the page: it hears the answer to what it asks after its last attempt.
        self.display.mouse("mousemove", 800, 500, "click", 3)
        self.display.mouse("key", "Down", "Down", "Down", "Return")
        self.assertEqual(process.wait(LIMIT), 0)

    def test_no_screen(self):
        environment = {name: value for name, value in os.environ.items() if name not in ("DISPLAY", "WAYLAND_DISPLAY")}
        done = subprocess.run([self.place.program], env=environment, stdin=subprocess.DEVNULL, stdout=subprocess.PIPE,
                              stderr=subprocess.PIPE, timeout=LIMIT, check=False)
        self.assertEqual((done.returncode, done.stdout), (1, b""))
        self.assertIn(b"Impossible d'ouvrir la fenetre du patcher.", done.stderr)
        asked = subprocess.run([self.place.program, "a", "x--print-version"], env=environment, stdout=subprocess.PIPE,
                               check=True)
        self.assertEqual(asked.stdout, b"26\n")
