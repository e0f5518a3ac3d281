#!/usr/bin/env python3
"""Lets every call of the launcher on its own files and connections fail: run_faults.py --launcher PROGRAM
[KIND...].

A session updates a small game, verifies and repairs it and saves the settings. For each N that it reaches, the N-th use
of one kind of call fails, then all from the N-th on. What is on the disk is looked at after each operation, and a
session without faults must then make everything whole. A KIND is a name from fault_at_call.cpp; default: all."""
import argparse
import concurrent.futures
import contextlib
import itertools
import json
import os
import pathlib
import random
import shutil
import sys
import tempfile
import unittest.mock

sys.path.insert(0, str(pathlib.Path(__file__).parent))
import launcher  # noqa: E402
from fault_server import FaultServer  # noqa: E402
from game import digest, publish  # noqa: E402
from scenario import BUSY  # noqa: E402

MEMORY = "/dev/shm"
LIMIT = 60  # seconds for a session that takes a tenth of one
# If a session without faults uses none of these, the calls are not seen.
EXPECTED = {"open", "openat", "fopen64", "read", "fread", "writev", "fwrite", "close", "rename", "remove", "mkdir", "stat",
            "connect", "send", "recv", "pthread_create", "malloc"}
SETTINGS = b"; mine\r\nvsync 0\r\nfpslimit 90\r\nKey = value\r\n"
PLAYER = {"Capture/shot.jpg": b"a picture" * 50, "notes.txt": b"mine", "Model/log/trace.txt": b"mine",
          "data/d0/save.dat": b"mine"}
OBSOLETE = {"x64/a.dll": b"old", "x64/sub/b.dll": b"old", "Model/left.o3d": b"old"}
# What goes wrong between the update and the verification; None: the file goes.
DAMAGE = {"data/d3/f7": b"damaged", "data/d2/f10": None}
PACKED = [f"data/d{i % 4}/f{i}" for i in range(5)]


def game():
    """Its files in two versions: some of those that change come in an archive, some do not, and two are new."""
    rng = random.Random(9)
    old = {f"data/d{i % 4}/f{i}": rng.randbytes([100, 3000, 0, 20000][i % 4]) for i in range(15)}
    old |= {"Model/a.o3d": rng.randbytes(500), "Tolmira.exe": b"#!/bin/sh\n", "big": rng.randbytes(150000)}
    new = old | {path: old[path][::-1] + rng.randbytes(80) for path in PACKED + ["big", "Model/a.o3d", "data/d1/f5"]}
    return old, new | {"new/dir/f18": rng.randbytes(2000), "new/f19": rng.randbytes(2000)}


class Lane:
    """A server and an installation, which is set back for each fault."""

    def __init__(self):
        self.server = FaultServer()
        self.place = launcher.Installation(self.server)
        self.report = self.place.root / "report"
        self.old, self.new = game()
        publish(self.server, 1, self.old, {"packed.zip": PACKED})
        self.place.run()
        for path, data in {**PLAYER, **OBSOLETE, "ostu.ini": SETTINGS}.items():
            self.place.write(path, data)
        self.place.write("new/f19", self.new["new/f19"])  # as a launcher that died may leave it: right, not recorded
        publish(self.server, 2, self.new, {"packed.zip": PACKED})
        self.start = self.files()
        self.saved = None
        self.calls, self.wrong = self.try_fault()
        self.saved = self.files()["ostu.ini"]
        self.wrong += ["no setting is saved"] * (b"vsync 1" not in self.saved)

    def close(self):
        self.server.close()
        self.place.remove()

    def files(self):
        return {str(path.relative_to(self.place.directory)): path.read_bytes() for path in self.place.directory.rglob("*")
                if path.is_file() and path != self.place.program}

    def set_back(self):
        found = self.files()
        for path in found.keys() - self.start.keys():
            (self.place / path).unlink()
        for path, data in self.start.items():
            if found.get(path) != data:
                self.place.write(path, data)
        shutil.rmtree(self.place / "new/dir", ignore_errors=True)

    def try_fault(self, kind="", use=0, stays=False):
        """The calls that the library reports, and what went wrong."""
        self.set_back()
        self.report.write_bytes(b"")
        trial = Trial(self, kind)
        trial.session(trial.with_faults, FAULT_REPORT=str(self.report), FAULT_CALL=kind, FAULT_AT=str(use),
                      FAULT_STAYS="1" if stays else "")
        trial.session(trial.without_faults, FAULT_REPORT="/dev/null", FAULT_AT="1")
        return self.report.read_text(errors="replace").splitlines(), list(dict.fromkeys(trial.wrong))


class Trial:
    """A session with a fault and one without, and what is wrong with them."""

    def __init__(self, lane, kind):
        self.lane, self.place, self.kind = lane, lane.place, kind
        self.wrong = []
        self.player = {**PLAYER, "ostu.ini": SETTINGS, "patcher.ini": lane.start["patcher.ini"]}
        self.damage = {}
        self.right = set()  # paths of the game's files that were right at the last look and must stay so
        self.options = None

    def expect(self, condition, text):
        if not condition:
            self.wrong.append(text)

    def session(self, steps, **faults):
        faults["LD_PRELOAD"] = str(launcher.PROGRAM.with_name("fault-at-call.so"))
        with unittest.mock.patch.dict(os.environ, faults):
            session = launcher.Session(self.place, wait=False)
        try:
            steps(session)
            code, out, _ = session.end()
            self.expect(code == 0, f"exit code {code}")
            self.expect(b'"ready"' not in out, "a second ready")
        except (AssertionError, BrokenPipeError):
            code, words = session.process.wait(), session.process.stderr.read().decode(errors="replace")
            # Without the thread that reads its requests the launcher can only say so.
            self.expect(self.kind == "pthread_create" and code > 0 and words, f"ended with {code}: {words[-200:]}")
        finally:
            session.kill()

    def with_faults(self, session):
        self.operation(session, "update")
        for path, data in DAMAGE.items():
            self.place.write(path, data or b"")
            if data is None:
                (self.place / path).unlink()
        self.damage = DAMAGE
        for name in ("verify", "repair"):
            self.operation(session, name)
        self.save(session)
        self.operation(session, "verify")

    def without_faults(self, session):
        self.right = self.lane.new.keys()
        self.expect(self.operation(session, "update")["canPlay"], "the next update fails")
        self.damage, self.right = {}, self.lane.new.keys()
        self.operation(session, "repair")
        # A file that could not be written to is moved aside.
        known = {*self.lane.start, *self.lane.new, "patcher_debug.txt", *(path + ".old" for path in self.lane.new)}
        self.expect(known.issuperset(self.lane.files()), f"stays: {sorted(self.lane.files().keys() - known)}")

    def operation(self, session, name):
        """Runs it to its `ready`, which it returns."""
        if name != "update":
            session.send(name)
        found = session.until("ready")
        checks = [m for m in found if m["type"] == "check"]
        words = {m["text"] for m in found if m["type"] == "status"}
        self.options = next((m for m in found if m["type"] == "options"), self.options)
        self.expect(len(checks) == (name != "update"), f"{name}: {len(checks)} check messages")
        self.expect(BUSY not in words, f"{name}: refused")
        files = self.look(name)
        right = {path for path, data in self.lane.new.items() if files.get(path) == data}
        complete = words & {"A jour.", "Pret a jouer."}
        self.expect(not complete or right >= self.lane.new.keys() - self.damage.keys(), f"{name}: not {complete}")
        self.expect(not checks or checks[0].get("ok", 0) <= len(right), f"{name}: {checks} of {len(right)}")
        return found[-1]

    def save(self, session):
        """As the page does it: all values as they were shown, one of them changed."""
        values = {**self.options["values"], "vsync": 1}
        session.send(json.dumps({"action": "saveOptions", "values": values}).encode())
        done = session.until("optionsSaved")[-1]["ok"]
        if done:
            self.player["ostu.ini"] = self.lane.saved or self.lane.files()["ostu.ini"]
        self.look(f"settings, ok {done}")

    def look(self, when):
        """At the player's files, at the record, and at the game's files that were right. Returns all."""
        found = self.lane.files()
        for path, data in self.player.items():
            self.expect(found.get(path) == data, f"{when}: {path} is {found.get(path, b'gone')[:40]}")
        with contextlib.suppress(KeyError, ValueError):
            for entry in json.loads(found["patch_manifest.json"])["files"]:
                path, data = entry["path"], found.get(entry["path"])
                good = data is None or digest(data) == entry["sha256"] or data == self.damage.get(path)
                self.expect(good, f"{when}: {path} is recorded")
        spoilt = [path for path in self.right - self.damage.keys() if found.get(path) != self.lane.new[path]]
        self.expect(not spoilt, f"{when}: {len(spoilt)} right files are spoilt or gone: {sorted(spoilt)[:1]}")
        self.right = {path for path, data in self.lane.new.items() if found.get(path) == data}
        return found


def work(number, lanes, kinds):
    """Tries every `lanes`-th use of each kind: how many faults, and the failures among them."""
    lane = Lane()
    tried, failures = 0, []
    for kind, stays in itertools.product(kinds, (False, True)):
        for use in itertools.count(1 + number, lanes):
            hits, wrong = lane.try_fault(kind, use, stays)
            if not hits:
                break
            tried += 1
            if wrong:
                failures.append(f"{kind} {use}{' and on' if stays else ''} ({hits[0]}): {'; '.join(wrong)}")
    lane.close()
    return tried, failures


def main():
    parser = argparse.ArgumentParser()
    parser.add_argument("--launcher", required=True)
    parser.add_argument("kinds", nargs="*")
    options = parser.parse_args()
    launcher.PROGRAM = pathlib.Path(options.launcher).resolve()
    launcher.LIMIT = LIMIT
    # In memory, if programs may start there: nothing is flushed to a disk anyway.
    if os.path.isdir(MEMORY) and not os.statvfs(MEMORY).f_flag & os.ST_NOEXEC:
        tempfile.tempdir = MEMORY
    # The default server, which a configuration that cannot be read leads to, is out of reach.
    os.environ["https_proxy"] = "http://127.0.0.1:1"
    lane = Lane()
    lane.close()
    kinds = {line.split()[0] for line in lane.calls}
    if lane.wrong or EXPECTED - kinds:
        sys.exit(f"without faults: {lane.wrong}, not seen: {EXPECTED - kinds}")
    lanes = (os.cpu_count() or 1) + 1
    with concurrent.futures.ProcessPoolExecutor(lanes) as pool:
        results = list(pool.map(work, range(lanes), [lanes] * lanes, [options.kinds or sorted(kinds)] * lanes))
    tried = sum(result[0] for result in results)
    failures = [failure for result in results for failure in result[1]]
    print(*failures, f"tried {tried} faults", f"{tried - len(failures)} passed, {len(failures)} failed", sep="\n")
    sys.exit(1 if failures else 0)


main()
