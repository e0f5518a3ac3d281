"""Drives Patcher.exe under Wine, through the loader that takes the place of the web view's."""
import contextlib
import json
import pathlib
import shutil
import subprocess
import threading

from launcher import LIMIT

ROOT = pathlib.Path(__file__).resolve().parents[2]
FIELD_END, LINE_FEED = "\x1f", "\x1e"


class Wine:
    """A Wine prefix for these tests only, connected to one screen while they run."""

    def __init__(self, display):
        prefix = ROOT / "build" / "wineprefix-window"
        if not prefix.exists():
            shutil.copytree(ROOT / "build" / "wineprefix", prefix, symlinks=True)
        self.environment = {**display.environment, "WINEPREFIX": str(prefix), "WINEDEBUG": "-all",
                            "WINEDLLOVERRIDES": "winedbg.exe=d"}  # a program that crashes ends at once
        self.end_programs()  # of earlier tests
        # One program stays, so that Wine's own background programs do too: they would hold what a test has started.
        self.keeper = self.start("cmd")
        # Moving, sizing and maximizing follow the rules of Windows, not those of a window manager.
        self.run("reg", "add", r"HKCU\Software\Wine\X11 Driver", "/v", "Managed", "/d", "N", "/f")

    def end_programs(self):
        for option in ("-k", "-w"):
            subprocess.run(["wineserver", option], env=self.environment, stderr=subprocess.DEVNULL, check=False)

    def close(self):
        self.end_programs()
        self.keeper.communicate()

    def start(self, program, **environment):
        return subprocess.Popen(["wine", program], env={**self.environment, **environment}, cwd="/",
                                stdin=subprocess.PIPE, stdout=subprocess.PIPE, stderr=subprocess.DEVNULL)

    def run(self, *command):
        """Returns the exit code and the output."""
        done = subprocess.run(["wine", *command], env=self.environment, cwd="/", stdin=subprocess.DEVNULL,
                              stdout=subprocess.PIPE, stderr=subprocess.DEVNULL, timeout=LIMIT, check=False)
        return done.returncode, done.stdout


class WindowsLauncher:
    """The program under Wine. `heard` holds everything that it has reported, as lists of fields."""

    def __init__(self, wine, program, mode):
        self.process = wine.start(program, WEB_VIEW_STAND_IN_MODE=mode)
        self.watchdog = threading.Timer(LIMIT, self.process.kill)
        self.watchdog.start()
        self.heard = []

    def next(self):
        """Returns the next line of the program; nothing if it has ended."""
        line = self.process.stdout.readline().decode().replace(LINE_FEED, "\n").split(FIELD_END)[:-1]
        if line:
            self.heard.append(line)
        return line

    def wait(self, verb, *fields):
        """Waits for a line with this verb and these first fields; returns all its fields."""
        wanted = [verb, *map(str, fields)]
        while line := self.next():
            if line[:len(wanted)] == wanted:
                return line[1:]
        raise AssertionError(f"the program ended after {self.heard[-5:]}, without {wanted}")

    def wait_message(self, kind, **members):
        """Waits until the page gets a message of this type with these members."""
        wanted = {"type": kind, **members}
        while not wanted.items() <= json.loads(self.wait("message")[0]).items():
            pass

    def messages(self):
        return [json.loads(line[1]) for line in self.heard if line[0] == "message"]

    def send(self, *fields):
        self.process.stdin.write("".join(f"{field}{FIELD_END}" for field in fields).encode() + b"\n")
        self.process.stdin.flush()

    def ask(self, *fields):
        """Sends a command and waits for its answer."""
        self.send(*fields)
        return self.wait(fields[0])

    def raise_event(self, event, text="", number=0, result=0):
        return self.ask(event, text, number, result)

    def request(self, action):
        self.send("WebMessageReceived", json.dumps({"action": action}), 0, 0)

    def load_page(self):
        """Waits for the page's text and lets its navigation complete; returns the text."""
        page = self.wait("navigate")[0]
        self.send("NavigationCompleted", "", 1, 0)
        return page

    def close(self):
        """Closes the window as the page's button does."""
        self.request("windowClose")
        return self.exit_code()

    def exit_code(self):
        while self.next():
            pass
        return self.process.wait()

    def end(self):
        """Ends the program in any state, by the end of its input."""
        with contextlib.suppress(OSError):
            self.process.stdin.close()
        self.exit_code()
        self.process.stdout.close()
        self.watchdog.cancel()
