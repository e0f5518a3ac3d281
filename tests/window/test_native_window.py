"""The native program on a screen with a window manager, under real clicks."""
import shutil
import subprocess

import launcher
from display import NAVY, SCREEN
from fixture import WindowTest
from game import MANIFEST, Game
from launcher import LIMIT, wait_until

# Places on the page at its start, from the window's left and top, or from its right and bottom.
DRAG_ZONE = (500, 30)
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

    def shown(self):
        """Starts the program; its page is loaded, and its run waits for the manifest."""
        self.process = self.start()
        self.window = self.display.window()
        self.wait_for_request(MANIFEST)
        self.server.requests.clear()

    def wait_for_request(self, path, count=1):
        wait_until(lambda: self.server.requests[path] >= count)

    def point(self, place):
        left, top, width, height = self.window.place()
        x, y = place
        return (left + (x if x >= 0 else width + x), top + (y if y >= 0 else height + y))

    def click(self, place, times=1):
        wait_until(self.page_is_in_place)
        self.display.mouse("mousemove", *self.point(place), "click", "--repeat", times, "--delay", 50, 1)

    def page_is_in_place(self):
        """Waits until the page has the window's size, since an earlier click would hit nothing."""
        x, y = self.point(CLOSE)
        self.display.mouse("mousemove", x - 1, y, "mousemove", x, y)
        return self.display.pixel(x + 14, y - 8) == LIT_CLOSE

    def closes(self):
        self.click(CLOSE)
        self.assertEqual(self.process.wait(LIMIT), 0)

    def test_it_is_sized_by_its_edges_and_moves_maximizes_and_minimizes_by_its_page(self):
        self.shown()
        for x, y in ((163, 500), (800, 897)):
            wait_until(lambda x=x, y=y: self.display.pixel(x, y) == NAVY)
        self.window.drag((1437, 500), (1337, 500), (160, 100, 1180, 800))
        self.window.drag((162, 102), (900, 700), (340, 260, 1000, 640))
        for times, place in ((1, MAXIMIZE), (2, DRAG_ZONE)):
            before = self.window.place()
            self.click(place, times)
            self.window.wait_for_place(*SCREEN)
            self.click(MAXIMIZE)
            self.window.wait_for_place(*before)
        wait_until(self.page_is_in_place)
        x, y = self.point(DRAG_ZONE)
        self.display.mouse("mousemove", x, y, "mousedown", 1)
        self.window.follow(x, y)
        self.display.mouse("mouseup", 1)
        self.assertEqual(self.window.place()[2:], (1000, 640))
        self.click(MINIMIZE)
        state = ("xprop", "-id", self.window.number, "WM_STATE")
        wait_until(lambda: "Iconic" in self.display.run(*state))
        self.display.run("wmctrl", "-i", "-a", hex(int(self.window.number)))
        wait_until(lambda: "Normal" in self.display.run(*state))
        self.closes()

    def test_its_page_comes_back_when_the_page_s_process_dies(self):
        self.shown()
        self.display.run("pkill", "--parent", self.process.pid, "--signal", "KILL", "WebKitWebProces")
        self.wait_for_request(MANIFEST)
        self.closes()

    def test_it_installs_the_game_and_ends_with_it(self):
        Game(1, 40).publish(self.server)
        self.shown()
        started = self.place / "started"
        play = self.point(PLAY)

        def played():
            # The launcher ends with the first click that it gets; a later one hits the empty screen.
            self.display.mouse("mousemove", *play, "click", 1)
            return started.exists() and started.read_text().endswith("\n")
        wait_until(played)
        self.assertEqual(self.process.wait(LIMIT), 0)
        self.assertEqual(started.read_text(), f"{self.place.directory}|quantel|1\n")

    def test_a_hostile_page_stays_inside(self):
        """The page has no policy of its own: only the host stops its requests, navigations and new windows."""
        shutil.copy2(launcher.beside_program("hostile-launcher"), self.place.program)
        news = "/api/news.json"
        self.server.content[news] = self.server.url().encode()
        process = self.start()
        self.wait_for_request(news, 2)
        self.assertEqual(len(self.display.windows()), 1)
        self.assertEqual(self.server.requests[MANIFEST], 1, "a refused navigation is no loaded page")
        # The menu of the web view, which offers to go back and to reload.
        self.display.mouse("mousemove", 800, 500, "click", 3)
        self.display.mouse("key", "Down", "Down", "Down", "Return")
        # The page is still there: it gets the answer to its request after the last attempt.
        self.server.content[news] = b"enough"
        self.assertEqual(process.wait(LIMIT), 0)
        self.assertEqual([path for path in self.server.requests if path.startswith("/leak")], [])

    def test_no_screen(self):
        done = subprocess.run(["env", "-u", "DISPLAY", "-u", "WAYLAND_DISPLAY", self.place.program], timeout=LIMIT,
                              stdin=subprocess.DEVNULL, capture_output=True, check=False)
        self.assertEqual((done.returncode, done.stdout), (1, b""))
        self.assertIn(b"Impossible d'ouvrir la fenetre du patcher.", done.stderr)
