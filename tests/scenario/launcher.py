"""Drives one launcher in an installation of its own, natively or, if it is a Windows program, under Wine."""
import contextlib
import json
import os
import pathlib
import re
import shutil
import signal
import subprocess
import tempfile
import threading
import time

PROGRAM = None  # set by run.py
LIMIT = 300  # seconds; generous, since sanitized builds are slow
OWN_FILES = {"Patcher", "Patcher.exe", "patcher.ini", "patcher_debug.txt", "patch_manifest.json"}


def is_windows():
    return PROGRAM.suffix == ".exe"


def manifest_path(name):
    """The path in the manifest that a name on disk comes from: Windows reads its bytes in the code page for file names."""
    return name.encode("cp1252").decode() if is_windows() else name


def disk_path(path):
    """The name on disk that a path in the manifest leads to."""
    return path.encode().decode("cp1252") if is_windows() else path


def assert_files(test, found, expected):
    """Compares contents by name, and says which names differ instead of how."""
    test.assertEqual(sorted(found), sorted(expected))
    test.assertEqual([name for name, data in expected.items() if found[name] != data], [])


def beside_program(name):
    """Another program of the same build."""
    return PROGRAM.with_name(name + PROGRAM.suffix)


def command(program):
    return ["wine", str(program)] if is_windows() else [str(program)]


def wait_until(condition, complaint=lambda: "it does not come"):
    """For what tells nobody when it happens: asks until it has."""
    end = time.monotonic() + LIMIT
    while time.monotonic() < end:
        if result := condition():
            return result
        time.sleep(0.02)
    raise AssertionError(complaint())


def messages(output):
    return [json.loads(line) for line in output.splitlines()]


class Installation:
    def __init__(self, server, name="jeu \u00e9 \u65e5\u672c", parent=None):
        self.root = pathlib.Path(parent or tempfile.mkdtemp(prefix="patcher-scenario-"))
        self.directory = self.root / name
        self.directory.mkdir(parents=True)
        self.program = self.directory / ("Patcher" + PROGRAM.suffix)
        shutil.copy2(PROGRAM, self.program)
        self.set_server(server.url())

    @staticmethod
    def program_size():
        return PROGRAM.stat().st_size

    def set_server(self, url, connections=4):
        text = f"BaseUrl={url}\r\nConnections={connections}\r\n"
        (self.directory / "patcher.ini").write_bytes(text.encode())

    def write(self, path, data):
        place = self.directory / path
        place.parent.mkdir(parents=True, exist_ok=True)
        place.write_bytes(data)

    def remove(self):
        shutil.rmtree(self.root, ignore_errors=True)

    def command(self):
        return command(self.program)

    def running(self):
        """Process ids of the Windows programs that run from here: Wine runs them beside the process that was started."""
        for folder in pathlib.Path("/proc").glob("[0-9]*"):
            with contextlib.suppress(OSError):
                if self.root.name.encode() in (folder / "cmdline").read_bytes():
                    yield int(folder.name)

    def wait_for_successors(self):
        """Until whatever the launcher has started has ended. On Linux that shares the launcher's standard output, whose
        end the caller has seen; Windows programs tell nobody."""
        wait_until(lambda: not is_windows() or not any(self.running()))

    def start(self, stdin=subprocess.PIPE):
        return subprocess.Popen(self.command(), stdin=stdin, stdout=subprocess.PIPE, stderr=subprocess.PIPE, cwd="/")

    def kill(self, process):
        """Ends a started launcher as a power cut would."""
        if is_windows():
            for number in self.running():
                with contextlib.suppress(ProcessLookupError):
                    os.kill(number, signal.SIGKILL)
        process.kill()
        process.wait()
        process.stdout.close()
        process.stderr.close()

    def run(self, requests=b""):
        """One session from start to end; returns its messages."""
        # Files, not pipes: background processes of Wine may hold a pipe open when the launcher has long ended.
        with tempfile.TemporaryFile() as out, tempfile.TemporaryFile() as errors:
            done = subprocess.run(self.command(), input=requests, stdout=out, stderr=errors, cwd="/", timeout=LIMIT,
                                  check=False)
            out.seek(0)
            errors.seek(0)
            # Wine itself may complain about a thread that was still talking when its process ended.
            words = re.sub(r"wine client error:.*\n?", "", errors.read().decode(errors="replace"))
            if done.returncode != 0 or words:
                raise AssertionError(f"exit code {done.returncode}: {words[-2000:]}")
            return messages(out.read())

    def files(self):
        """Everything below the directory that is not the launcher's own."""
        found = {}
        for folder, _, names in os.walk(self.directory):
            for name in names:
                path = pathlib.Path(folder, name)
                relative = manifest_path(path.relative_to(self.directory).as_posix())
                if relative not in OWN_FILES:
                    found[relative] = path.read_bytes()
        return found

    def record(self):
        return json.loads((self.directory / "patch_manifest.json").read_bytes())

    def log(self):
        path = self.directory / "patcher_debug.txt"
        return path.read_text(encoding="utf-8", errors="replace").splitlines() if path.exists() else []


class Session:
    """A launcher that stays: requests are asked one by one. Its start-up run is over unless `wait` says otherwise."""

    def __init__(self, place, wait=True):
        self.place = place
        self.process = place.start()
        self.watchdog = threading.Timer(LIMIT, self.process.kill)
        self.watchdog.start()
        if wait:
            self.start = self.until("ready")

    def send(self, *requests):
        for request in requests:
            line = request if isinstance(request, bytes) else json.dumps({"action": request}).encode()
            self.process.stdin.write(line + b"\n")
        self.process.stdin.flush()

    def until(self, kind):
        """The messages up to the first of this kind."""
        messages = []
        while not messages or messages[-1]["type"] != kind:
            line = self.process.stdout.readline()
            if not line:
                raise AssertionError(f"ended with {self.process.wait()} before '{kind}': {messages[-5:]}")
            messages.append(json.loads(line))
        return messages

    def ask(self, request):
        self.send(request)
        return self.until("ready")

    def kill(self):
        self.watchdog.cancel()
        self.place.kill(self.process)
        with contextlib.suppress(OSError):
            self.process.stdin.close()

    def end(self):
        """Exit code, rest of the output, standard error."""
        out, err = self.process.communicate()
        self.watchdog.cancel()
        return self.process.returncode, out, err


def told(messages):
    """The messages in short, without the progress of which nobody knows how much comes."""
    short = []
    for m in messages:
        if m["type"] == "status":
            short.append(m["text"])
        elif m["type"] == "versions":
            short.append((m["current"], m["latest"]))
        elif m["type"] == "server":
            short.append("online" if m["online"] else "offline")
        elif m["type"] == "ready":
            short.append(m["canPlay"])
    return short
