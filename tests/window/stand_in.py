"""Drives Patcher.exe under Wine, through the loader that stands in for the web view."""
import contextlib
import json
import pathlib
import queue
import shutil
import subprocess
import threading

LIMIT = 300  # seconds
ROOT = pathlib.Path(__file__).resolve().parents[2]
FIELD_END, LINE_END = "\x1f", b"\x1e"


class Wine:
    """A Wine prefix of these tests' own, bound to one screen for as long as they run."""

    def __init__(self, display):
        prefix = ROOT / "build" / "wineprefix-window"
        if not prefix.exists():
            shutil.copytree(ROOT / "build" / "wineprefix", prefix, symlinks=True)
        self.environment = {**display.environment, "WINEPREFIX": str(prefix), "WINEDEBUG": "-all"}
        self.server("-k", "-w")  # what still runs of earlier tests
        # One program stays, so that Wine's own background programs do too: they would hold what a test has started.
        self.keeper = self.start("cmd", stdin=subprocess.PIPE)
        # Moving, sizing and maximizing follow the rules of Windows, not those of a window manager.
        self.run("reg", "add", r"HKCU\Software\Wine\X11 Driver", "/v", "Managed", "/d", "N", "/f")

    def server(self, *options):
        for option in options:
            subprocess.run(["wineserver", option], env=self.environment, stderr=subprocess.DEVNULL, check=False)

    def close(self):
        self.server("-k", "-w")
        self.keeper.communicate()

    def start(self, *command, stdin=subprocess.DEVNULL, stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL, **environment):
        return subprocess.Popen(["wine", *map(str, command)], env={**self.environment, **environment}, cwd="/", stdin=stdin,
                                stdout=stdout, stderr=stderr)

    def run(self, *command):
        process = self.start(*command, stdout=subprocess.PIPE)
        output, _ = process.communicate(timeout=LIMIT)
        return process.returncode, output


class WindowsLauncher:
    """The program under Wine, and its successor if it replaces itself: that has the same standard input and output.
    `heard` holds everything that it has reported, as lists of fields."""

    def __init__(self, wine, program, mode=""):
        self.process = wine.start(program, stdin=subprocess.PIPE, stdout=subprocess.PIPE, WEB_VIEW_STAND_IN_MODE=mode)
        self.lines = queue.Queue()
        self.heard = []
        self.reader = threading.Thread(target=self._read, daemon=True)
        self.reader.start()

    def _read(self):
        rest = b""
        while piece := self.process.stdout.read1():
            *lines, rest = (rest + piece).split(LINE_END)
            for line in lines:
                self.lines.put(line.decode().split(FIELD_END))
        self.lines.put(None)

    def next(self):
        """What the program does next; nothing if it has ended."""
        try:
            line = self.lines.get(timeout=LIMIT)
        except queue.Empty:
            raise AssertionError(f"nothing more after {self.heard[-5:]}") from None
        if line:
            self.heard.append(line)
            if line[0] == "trap" or "failed" in line[1:2]:
                raise AssertionError(f"{self.heard[-5:]}")
        return line

    def wait(self, verb, accept=lambda fields: True):
        """The fields of the next line of that kind that is accepted."""
        while line := self.next():
            if line[0] == verb and accept(line[1:]):
                return line[1:]
        raise AssertionError(f"the program ended after {self.heard[-5:]}")

    def wait_message(self, kind, **members):
        """The next message for the page of that type with these members."""
        def fits(fields):
            message = json.loads(fields[0])
            return message["type"] == kind and all(message.get(name) == value for name, value in members.items())
        return json.loads(self.wait("message", fits)[0])

    def messages(self):
        return [json.loads(line[1]) for line in self.heard if line[0] == "message"]

    def send(self, *fields):
        self.process.stdin.write(FIELD_END.join(fields).encode() + LINE_END)
        self.process.stdin.flush()

    def ask(self, *fields):
        """Sends and waits for the answer."""
        self.send(*fields)
        return self.wait(fields[0])

    def request(self, action, **members):
        self.send("send", json.dumps({"action": action, **members}, ensure_ascii=False))

    def load_page(self):
        """Waits until the page has been handed over and lets its loading end; returns its text."""
        page = self.wait("navigate")[0]
        self.send("complete")
        return page

    def close(self):
        """As the page's button does."""
        self.request("windowClose")
        return self.exit_code()

    def exit_code(self):
        while self.next():
            pass
        return self.process.wait(LIMIT)

    def end(self):
        """For clean-up, whatever state it is in: the program ends with its input."""
        with contextlib.suppress(OSError):
            self.process.stdin.close()
        self.reader.join(LIMIT)
        self.process.stdout.close()
        self.process.wait(LIMIT)
