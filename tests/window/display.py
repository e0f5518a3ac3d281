"""A screen of the tests' own, with the mouse on it and, if wanted, a small window manager."""
import os
import subprocess
import time

LIMIT = 60  # seconds until something on the screen counts as never coming


class Display:
    def __init__(self, managed, width=1600, height=1000):
        reader, writer = os.pipe()
        self.processes = []
        self.start(["Xvfb", "-displayfd", str(writer), "-screen", "0", f"{width}x{height}x24"],
                   pass_fds=[writer])
        os.close(writer)
        with os.fdopen(reader) as stream:
            self.name = f":{stream.readline().strip()}"
        self.environment = {**os.environ, "DISPLAY": self.name, "LC_ALL": "C.UTF-8"}
        if managed:
            self.start(["openbox", "--sm-disable"], env=self.environment)
            wait_until(lambda: "window id" in self.run("xprop", "-root", "_NET_SUPPORTING_WM_CHECK"))

    def start(self, command, **options):
        self.processes.append(subprocess.Popen(command, stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL, **options))

    def close(self):
        for process in reversed(self.processes):
            process.terminate()
            process.wait()

    def run(self, *command):
        done = subprocess.run(command, env=self.environment, stdout=subprocess.PIPE, stderr=subprocess.DEVNULL,
                              text=True, check=False)
        return done.stdout

    def mouse(self, *arguments):
        self.run("xdotool", *map(str, arguments))

    def drag(self, start, *stops):
        self.mouse("mousemove", *start, "mousedown", 1)
        for x, y in stops:
            self.mouse("mousemove", x, y)
        self.mouse("mouseup", 1)

    def windows(self, title):
        return self.run("xdotool", "search", "--onlyvisible", "--name", title).split()

    def window(self, title):
        """The one window of that title, as soon as it shows."""
        return Window(self, wait_until(lambda: self.windows(title))[0])


class WindowGone(Exception):
    """There is no such window any more."""


class Window:
    def __init__(self, display, number):
        self.display = display
        self.number = number

    def place(self):
        """Left, top, width, height."""
        text = self.display.run("xdotool", "getwindowgeometry", "--shell", self.number)
        if not text:
            raise WindowGone
        values = dict(line.split("=") for line in text.split())
        return tuple(int(values[name]) for name in ("X", "Y", "WIDTH", "HEIGHT"))

    def wait_for_place(self, *place):
        wait_until(lambda: self.place() == place, lambda: f"the window stands at {self.place()}, not at {place}")

    def title(self):
        return self.display.run("xdotool", "getwindowname", self.number).strip()

    def close(self):
        """As a player does who sees no button for it."""
        left, top, _, _ = self.place()
        self.display.mouse("mousemove", left + 100, top + 100, "click", 1, "key", "alt+F4")

    def state(self):
        return self.display.run("xprop", "-id", self.number, "WM_STATE", "_NET_WM_STATE")


def wait_until(condition, complaint=lambda: "it does not come"):
    """What the screen shows is told by nobody: it is asked until it is there."""
    end = time.monotonic() + LIMIT
    while time.monotonic() < end:
        if result := condition():
            return result
        time.sleep(0.02)
    raise AssertionError(complaint())
