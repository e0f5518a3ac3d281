"""A virtual screen with a mouse and an optional window manager."""
import itertools
import os
import pathlib
import subprocess
import tempfile

from waiting import wait_until

TITLE = "TolmiraMMO Patcher v"
SCREEN = (0, 0, 1600, 1000)
NAVY = "srgb(13,20,38)"
HOME = (160, 100, 1280, 800)  # where the launcher's window opens on this screen


class Display:
    def __init__(self, managed):
        reader, writer = os.pipe()
        self.processes = []
        size = "x".join(map(str, SCREEN[2:]))
        self.start(["Xvfb", "-displayfd", str(writer), "-screen", "0", f"{size}x24"], pass_fds=[writer])
        os.close(writer)
        with os.fdopen(reader) as stream:
            name = f":{stream.readline().strip()}"
        self.settings = tempfile.TemporaryDirectory(prefix="patcher-display-")
        # Two clicks are a double click even if a busy machine delays the second one.
        toolkit = pathlib.Path(self.settings.name, "gtk-3.0")
        toolkit.mkdir()
        (toolkit / "settings.ini").write_text("[Settings]\ngtk-double-click-time=60000\n", encoding="ascii")
        self.environment = {**os.environ, "DISPLAY": name, "LC_ALL": "fr_FR.UTF-8", "XDG_CONFIG_HOME": self.settings.name}
        if managed:
            self.start(["openbox", "--sm-disable"], env=self.environment)
            wait_until(lambda: "window id" in self.run("xprop", "-root", "_NET_SUPPORTING_WM_CHECK"))

    def start(self, command, **options):
        self.processes.append(subprocess.Popen(command, stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL, **options))

    def close(self):
        for process in reversed(self.processes):
            process.terminate()
            process.wait()
        self.settings.cleanup()

    def run(self, *command):
        done = subprocess.run(list(map(str, command)), env=self.environment, stdout=subprocess.PIPE,
                              stderr=subprocess.DEVNULL, text=True, check=False)
        return done.stdout

    def mouse(self, *arguments):
        self.run("xdotool", *arguments)

    def pixel(self, x, y):
        return self.run("import", "-silent", "-window", "root", "-depth", "8", "-crop", f"1x1+{x}+{y}", "-format",
                        "%[pixel:p{0,0}]", "info:")

    def windows(self):
        """The numbers of the launchers' windows."""
        return self.run("xdotool", "search", "--onlyvisible", "--name", TITLE).split()

    def window(self):
        """Waits for a launcher's window to be in its place, and returns it."""
        window = Window(self, wait_until(self.windows)[0])
        window.wait_for_place(*HOME)
        return window


class Window:
    def __init__(self, display, number):
        self.display = display
        self.number = number

    def place(self):
        """Returns left, top, width and height."""
        text = self.display.run("xdotool", "getwindowgeometry", "--shell", self.number)
        values = dict(line.split("=") for line in text.split())
        return tuple(int(values[name]) for name in ("X", "Y", "WIDTH", "HEIGHT"))

    def wait_for_place(self, *place):
        wait_until(lambda: self.place() == place, lambda: f"the window is at {self.place()}, not at {place}")

    def follow(self, x, y):
        """Moves the pointer near x, y with the button down until the window follows: a program notices this with a delay."""
        before = self.place()
        steps = itertools.cycle((10, 20))

        def follows():
            step = next(steps)
            self.display.mouse("mousemove", x + step, y + step)
            return self.place() != before
        wait_until(follows)

    def drag(self, start, stop, expected):
        self.display.mouse("mousemove", *start, "mousedown", 1)
        self.follow(*start)
        self.display.mouse("mousemove", *stop, "mouseup", 1)
        self.wait_for_place(*expected)
