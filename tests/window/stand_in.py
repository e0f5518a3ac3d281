"""Drives Patcher.exe under Wine, through the loader that stands in for the web view."""
import contextlib
import json
import pathlib
import queue
import shutil
import socket
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
        self.close()
        # Moving, sizing and maximizing follow the rules of Windows, not those of a window manager.
        self.run("reg", "add", r"HKCU\Software\Wine\X11 Driver", "/v", "Managed", "/d", "N", "/f")

    def close(self):
        """Ends what still runs in the prefix, of earlier tests too."""
        for option in ("-k", "-w"):
            subprocess.run(["wineserver", option], env=self.environment, stderr=subprocess.DEVNULL, check=False)

    def start(self, *command, stdin=subprocess.DEVNULL, stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL, **environment):
        return subprocess.Popen(["wine", *map(str, command)], env={**self.environment, **environment}, cwd="/", stdin=stdin,
                                stdout=stdout, stderr=stderr)

    def run(self, *command):
        process = self.start(*command, stdout=subprocess.PIPE)
        output, _ = process.communicate(timeout=LIMIT)
        return process.returncode, output


class WindowsLauncher:
    """One run of the program. `told` holds everything that it has been heard to do, as lists of fields."""

    def __init__(self, listener, process=None):
        self.listener = listener
        self.process = process
        self.connection, _ = listener.accept()
        self.lines = queue.Queue()
        self.told = []
        self.reader = threading.Thread(target=self._read, daemon=True)
        self.reader.start()

    @staticmethod
    def start(wine, program, mode):
        listener = socket.create_server(("127.0.0.1", 0))
        listener.settimeout(LIMIT)
        port = str(listener.getsockname()[1])
        process = wine.start(program, WEB_VIEW_STAND_IN_PORT=port, WEB_VIEW_STAND_IN_MODE=mode)
        return WindowsLauncher(listener, process)

    def successor(self):
        """The launcher that this one has started in its place."""
        return WindowsLauncher(self.listener)

    def _read(self):
        rest = b""
        with contextlib.suppress(OSError):
            while piece := self.connection.recv(1 << 20):
                *lines, rest = (rest + piece).split(LINE_END)
                for line in lines:
                    self.lines.put(line.decode().split(FIELD_END))
        self.lines.put(None)

    def next(self):
        """What the program does next; nothing if it has ended."""
        try:
            line = self.lines.get(timeout=LIMIT)
        except queue.Empty:
            raise AssertionError(f"nothing more after {self.told[-5:]}") from None
        if line:
            self.told.append(line)
            if line[0] == "trap" or line[1] == "failed":
                raise AssertionError(f"{self.told[-5:]}")
        return line

    def wait(self, verb, accept=lambda fields: True):
        """The fields of the next line of that kind that is accepted."""
        while line := self.next():
            if line[0] == verb and accept(line[1:]):
                return line[1:]
        raise AssertionError(f"the program ended after {self.told[-5:]}")

    def wait_message(self, kind, **members):
        """The next message for the page of that type with these members."""
        def fits(fields):
            message = json.loads(fields[0])
            return message["type"] == kind and all(message.get(name) == value for name, value in members.items())
        return json.loads(self.wait("message", fits)[0])

    def messages(self):
        return [json.loads(line[1]) for line in self.told if line[0] == "message"]

    def tell(self, *fields):
        self.connection.sendall(FIELD_END.join(fields).encode() + LINE_END)

    def ask(self, *fields):
        """Tells and waits for what came of it."""
        self.tell(*fields)
        return self.wait(fields[0])

    def request(self, action, **members):
        self.tell("send", json.dumps({"action": action, **members}, ensure_ascii=False))

    def load_page(self):
        """Waits until the page has been handed over and lets its loading end; returns its text."""
        page = self.wait("navigate")[0]
        self.tell("complete")
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
        """For clean-up, whatever state it is in: the program ends with its connection."""
        self.listener.close()
        with contextlib.suppress(OSError):
            self.connection.shutdown(socket.SHUT_WR)
        self.reader.join(LIMIT)
        self.connection.close()
        if self.process:
            self.process.wait(LIMIT)
