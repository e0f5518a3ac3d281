"""Drives one launcher in an installation of its own."""
import json
import os
import pathlib
import shutil
import subprocess
import tempfile

PROGRAM = None  # set by run.py
NEXT_PROGRAM = None  # the same launcher as the next build
WINE = False  # the programs are Windows programs
LIMIT = 300  # seconds; generous, since sanitized builds are slow


def command(program):
    return ["wine", str(program)] if WINE else [str(program)]


def messages(output):
    return [json.loads(line) for line in output.splitlines()]


def wait_for_successors():
    """Until whatever a launcher has started has ended. On Linux it shares the launcher's standard output, whose end
    the caller has seen."""
    if WINE:
        subprocess.run(["wineserver", "--wait"], check=True, timeout=LIMIT)


class Installation:
    def __init__(self, server, name="jeu \u00e9 \u65e5\u672c"):
        self.root = pathlib.Path(tempfile.mkdtemp(prefix="patcher-scenario-"))
        self.directory = self.root / name
        self.directory.mkdir()
        self.program = self.directory / ("Patcher.exe" if WINE else "Patcher")
        shutil.copy2(PROGRAM, self.program)
        self.set_server(server.url())

    def set_server(self, url):
        (self.directory / "patcher.ini").write_bytes(f"BaseUrl={url}\r\nConnections=4\r\n".encode())

    def remove(self):
        shutil.rmtree(self.root, ignore_errors=True)

    def start(self, stdin=subprocess.PIPE):
        return subprocess.Popen(command(self.program), stdin=stdin, stdout=subprocess.PIPE, stderr=subprocess.PIPE,
                                cwd="/")

    def run(self, requests=b""):
        """One session from start to end; returns its messages."""
        done = subprocess.run(command(self.program), input=requests, stdout=subprocess.PIPE, stderr=subprocess.PIPE, cwd="/",
                              timeout=LIMIT, check=False)
        if done.returncode != 0 or done.stderr:
            raise AssertionError(f"exit code {done.returncode}: {done.stderr.decode(errors='replace')[-2000:]}")
        return messages(done.stdout)

    def files(self):
        """Everything below the directory that is not the launcher's own."""
        own = {"Patcher", "patcher.ini", "patcher_debug.txt", "patch_manifest.json"}
        found = {}
        for folder, _, names in os.walk(self.directory):
            for name in names:
                path = pathlib.Path(folder, name)
                relative = path.relative_to(self.directory).as_posix()
                if relative not in own:
                    found[relative] = path.read_bytes()
        return found

    def record(self):
        return json.loads((self.directory / "patch_manifest.json").read_bytes())

    def log(self):
        path = self.directory / "patcher_debug.txt"
        return path.read_text(encoding="utf-8").splitlines() if path.exists() else []


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
