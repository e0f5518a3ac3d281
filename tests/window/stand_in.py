"""Drives Patcher.exe under Wine, through the loader that stands in for the web view."""
import json
import pathlib
import queue
import shutil
import socket
import subprocess
import threading

LIMIT = 120  # seconds
ROOT = pathlib.Path(__file__).resolve().parents[2]
BUILD = ROOT / "build"
ESCAPES = {"\\": "\\\\", "\t": "\\t", "\n": "\\n", "\r": "\\r"}


def escape(field):
    return "".join(ESCAPES.get(c, c) for c in field)


def unescape(field):
    parts = field.split("\\\\")
    for plain, escaped in list(ESCAPES.items())[1:]:
        parts = [part.replace(escaped, plain) for part in parts]
    return "\\".join(parts)


class Wine:
    """A Wine prefix of these tests' own, bound to one screen for as long as they run."""

    def __init__(self, display):
        prefix = BUILD / "wineprefix-window"
        if not prefix.exists():
            shutil.copytree(BUILD / "wineprefix", prefix, symlinks=True)
        self.environment = {**display.environment, "WINEPREFIX": str(prefix), "WINEDEBUG": "-all"}
        self.close()
        # Moving, sizing and maximizing follow the rules of Windows, not those of a window manager.
        self.run("reg", "add", r"HKCU\Software\Wine\X11 Driver", "/v", "Managed", "/d", "N", "/f")

    def close(self):
        """Ends what still runs in the prefix, of earlier tests too."""
        for option in ("-k", "-w"):
            subprocess.run(["wineserver", option], env=self.environment, stderr=subprocess.DEVNULL, check=False)

    def start(self, *command, **options):
        environment = {**self.environment, **options.pop("environment", {})}
        return subprocess.Popen(["wine", *map(str, command)], env=environment, cwd="/", **options)

    def run(self, *command):
        process = self.start(*command, stdin=subprocess.DEVNULL, stdout=subprocess.PIPE, stderr=subprocess.DEVNULL)
        output, _ = process.communicate(timeout=LIMIT)
        return process.returncode, output


class WindowsLauncher:
    """One run of the program. `told` holds everything that it has done so far, as lists of fields."""

    def __init__(self, listener, process=None):
        self.listener = listener
        self.process = process
        self.connection, _ = listener.accept()
        self.connection.setsockopt(socket.IPPROTO_TCP, socket.TCP_NODELAY, 1)
        self.lines = queue.Queue()
        self.told = []
        threading.Thread(target=self._read, daemon=True).start()

    @staticmethod
    def start(wine, program, mode=""):
        listener = socket.create_server(("127.0.0.1", 0))
        listener.settimeout(LIMIT)
        environment = {"WEB_VIEW_STAND_IN_PORT": str(listener.getsockname()[1]), "WEB_VIEW_STAND_IN_MODE": mode}
        return WindowsLauncher(listener, wine.start(program, environment=environment, stdin=subprocess.DEVNULL,
                                                    stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL))

    def successor(self):
        """The launcher that this one has started in its place."""
        return WindowsLauncher(self.listener)

    def _read(self):
        try:
            with self.connection.makefile("r", encoding="utf-8", newline="\n") as stream:
                for line in stream:
                    self.lines.put([unescape(field) for field in line[:-1].split("\t")])
        except OSError:
            pass
        self.lines.put(None)

    def next(self, limit=LIMIT):
        try:
            line = self.lines.get(timeout=limit)
        except queue.Empty:
            raise AssertionError(f"nothing more after {self.told[-5:]}") from None
        if line is None:
            raise AssertionError(f"the program ended after {self.told[-5:]}")
        self.told.append(line)
        return line

    def wait(self, verb, accept=lambda fields: True):
        """The fields of the next line of that kind that is accepted."""
        while True:
            line = self.next()
            if line[0] == verb and accept(line[1:]):
                return line[1:]

    def wait_message(self, kind, **members):
        """The next message for the page of that type with these members."""
        def fits(fields):
            message = json.loads(fields[0])
            return message["type"] == kind and all(message.get(name) == value for name, value in members.items())
        return json.loads(self.wait("message", fits)[0])

    def messages(self):
        return [json.loads(line[1]) for line in self.told if line[0] == "message"]

    def tell(self, *fields):
        self.connection.sendall("\t".join(map(escape, fields)).encode() + b"\n")

    def request(self, action, **members):
        self.tell("send", json.dumps({"action": action, **members}, ensure_ascii=False))

    def load_page(self):
        """Waits until the page has been handed over and lets its loading end; returns its text."""
        page = self.wait("navigate")[0]
        self.tell("complete")
        return page

    def asset(self, address):
        """Status, reason, headers and bytes with which a request of the page is answered; nothing if it is not."""
        self.tell("get", address)
        _, *answer = self.wait("asset", lambda fields: fields[0] == address)
        return (int(answer[0]), answer[1], answer[2], bytes.fromhex(answer[3])) if answer else None

    def exit_code(self):
        code = self.process.wait(LIMIT)
        self.wait_for_end()
        return code

    def wait_for_end(self):
        while self.lines.get(timeout=LIMIT) is not None:
            pass
        self.connection.close()

    def end(self):
        """For clean-up: whatever state it is in."""
        self.listener.close()
        self.connection.close()
        if self.process:
            self.process.kill()
            self.process.wait()
