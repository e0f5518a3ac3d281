"""Drives one launcher in its own installation: natively, or under Wine if it is a Windows program."""
import contextlib
import json
import os
import pathlib
import re
import shutil
import signal
import subprocess
import sys
import tempfile
import threading

from game import digest

sys.path.append(str(pathlib.Path(__file__).resolve().parents[2] / "tools" / "sample"))
from waiting import LIMIT, wait_until  # noqa: E402

PROGRAM = None  # set by run.py
OWN_FILES = {"Patcher", "Patcher.exe", "patcher.ini", "patcher_debug.txt", "patch_manifest.json"}


def is_windows():
    return PROGRAM.suffix == ".exe"


def beside_program(name):
    """Returns another program of the same build."""
    return PROGRAM.with_name(name + PROGRAM.suffix)


def command(program, *arguments):
    return [*(["wine"] if is_windows() else []), str(program), *map(str, arguments)]


def setting(name):
    """Returns a build option of the launcher, for example PATCHER_SITE_HOST."""
    cache = (PROGRAM.parents[1] / "CMakeCache.txt").read_text(encoding="utf-8")
    return re.search(rf"^{name}:\w+=(.*)$", cache, re.MULTILINE)[1]


def summary(messages):
    """Shortens the messages, without the progress, whose number differs from run to run."""
    kinds = {"status": lambda m: m["text"], "versions": lambda m: (m["current"], m["latest"]),
             "server": lambda m: "online" if m["online"] else "offline", "ready": lambda m: m["canPlay"]}
    return [kinds[m["type"]](m) for m in messages if m["type"] in kinds]


class Installation:
    def __init__(self, server, name="jeu \u00e9 \u65e5\u672c", parent=None):
        self.root = pathlib.Path(parent or tempfile.mkdtemp(prefix="patcher-scenario-"))
        self.directory = self.root / name
        self.directory.mkdir(parents=True)
        self.program = self / ("Patcher" + PROGRAM.suffix)
        self.record_file = self / "patch_manifest.json"
        shutil.copy2(PROGRAM, self.program)
        self.set_server(server.url())

    def __truediv__(self, path):
        return self.directory / path

    def set_server(self, url, connections=4):
        self.write("patcher.ini", f"BaseUrl={url}\r\nConnections={connections}\r\n".encode())

    def write(self, path, data=b""):
        (self / path).parent.mkdir(parents=True, exist_ok=True)
        (self / path).write_bytes(data)

    def put(self, files):
        """Writes these files, or deletes those that are None."""
        for path, data in files.items():
            (self / path).unlink(missing_ok=True)
            if data is not None:
                self.write(path, data)

    def remove(self):
        shutil.rmtree(self.root, ignore_errors=True)

    def command(self):
        return command(self.program)

    def running(self):
        """Returns the ids of the processes of this installation. Under Wine they are no children of the started process."""
        for folder in pathlib.Path("/proc").glob("[0-9]*"):
            with contextlib.suppress(OSError):
                if self.root.name.encode() in (folder / "cmdline").read_bytes():
                    yield int(folder.name)

    def start(self, stdin=subprocess.PIPE, **environment):
        return subprocess.Popen(self.command(), stdin=stdin, stdout=subprocess.PIPE, stderr=subprocess.PIPE, cwd="/",
                                env={**os.environ, **environment})

    def kill(self, process):
        """Kills a launcher and the launchers that it has started."""
        process.kill()
        for number in self.running():
            with contextlib.suppress(ProcessLookupError):
                os.kill(number, signal.SIGKILL)
        process.wait()
        process.stdout.close()
        process.stderr.close()

    def run_to_end(self, requests=b"", successors=True, user=None, **environment):
        """Runs one session to its end, with the launchers that it starts. Returns exit code, messages and standard error."""
        # Files, not pipes: background processes of Wine may hold a pipe open long after the launcher has ended.
        with tempfile.TemporaryFile() as out, tempfile.TemporaryFile() as errors:
            done = subprocess.run(self.command(), input=requests, stdout=out, stderr=errors, cwd="/", timeout=LIMIT,
                                  check=False, user=user, env={**os.environ, **environment})
            wait_until(lambda: not successors or not any(self.running()))
            out.seek(0)
            errors.seek(0)
            # Wine itself may complain about a thread that was still at work when its process ended.
            words = re.sub(r"wine client error:.*\n?", "", errors.read().decode(errors="replace"))
            return done.returncode, [json.loads(line) for line in out], words

    def run(self, requests=b"", **options):
        """Runs one session that must end without an error; returns its messages."""
        code, messages, words = self.run_to_end(requests, successors=False, **options)
        if code != 0 or words:
            raise AssertionError(f"exit code {code}: {words[-2000:]}")
        return messages

    def update(self):
        return summary(self.run())

    def files(self, left_out=OWN_FILES):
        """Returns the contents of all files of the directory but the launcher's own, by path as in the manifest."""
        found = {}
        for path in self.directory.rglob("*"):
            relative = path.relative_to(self.directory).as_posix()
            if path.is_file() and relative not in left_out:
                found[relative.encode("cp1252").decode() if is_windows() else relative] = path.read_bytes()
        return found

    def recorded(self):
        """Returns the digests of the record, by path. Accepts more texts than the launcher does."""
        try:
            text = self.record_file.read_bytes().decode(errors="surrogateescape")
            record, _ = json.JSONDecoder(strict=False).raw_decode(text)
            return {entry["path"]: entry["sha256"] for entry in record["files"]}
        except (OSError, ValueError, LookupError, TypeError):
            return {}

    def wrongly_recorded(self, damage):
        """Returns the paths whose files do not have the digest of the record. Those in `damage` may have that content, or be
        gone."""
        found = self.files()
        return [path for path, wanted in self.recorded().items() if digest(found.get(path, b"gone")) != wanted and
                (path not in damage or found.get(path) not in (None, damage[path]))]

    def log(self):
        path = self / "patcher_debug.txt"
        return path.read_text(encoding="utf-8", errors="replace").splitlines() if path.exists() else []


class Session:
    """A running launcher that gets requests one by one. Unless `wait` is false, its first run has ended."""

    def __init__(self, place, wait=True, **environment):
        self.place = place
        self.process = place.start(**environment)
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
        """Returns the messages up to the first of this type."""
        found = []
        while not found or found[-1]["type"] != kind:
            line = self.process.stdout.readline()
            if not line:
                raise AssertionError(f"ended with {self.process.wait()} before '{kind}': {found[-5:]}")
            found.append(json.loads(line))
        return found

    def ask(self, request):
        self.send(request)
        return self.until("ready")

    def kill(self):
        self.watchdog.cancel()
        self.place.kill(self.process)
        with contextlib.suppress(OSError):
            self.process.stdin.close()

    def end(self):
        """Returns the exit code, the rest of the output, and standard error."""
        out, err = self.process.communicate()
        self.watchdog.cancel()
        return self.process.returncode, out, err
