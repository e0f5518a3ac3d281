"""Lets every call of the launcher on its own files and connections fail.

A session updates a small game, verifies and repairs it and saves the settings. For each N that it reaches, the N-th use
of one kind of call fails, then all from the N-th on. What is on the disk is examined after each operation, and a session
without faults must then restore everything."""
import concurrent.futures
import itertools
import json
import os
import random
import shutil
import unittest

import launcher
from fault_server import FaultServer
from game import publish
from scenario import BUSY

SETTINGS = b"; mine\r\nvsync 0\r\nfpslimit 90\r\nKey = value\r\n"
PLAYER = {"Capture/shot.jpg": b"a picture" * 50, "notes.txt": b"mine", "Model/log/trace.txt": b"mine",
          "data/d0/save.dat": b"mine"}
OBSOLETE = {"x64/a.dll": b"old", "x64/sub/b.dll": b"old", "Model/left.o3d": b"old"}
# The damage between the update and the verification; None: the file is deleted.
DAMAGE = {"data/d3/f7": b"damaged", "data/d2/f10": None}
PACKED = {"packed.zip": [f"data/d{i % 4}/f{i}" for i in range(5)]}


def game():
    """A game in two versions. Some changed files are in an archive, some are not, and two files are new."""
    rng = random.Random(9)
    old = {f"data/d{i % 4}/f{i}": rng.randbytes([100, 3000, 0, 20000][i % 4]) for i in range(15)}
    old |= {"Model/a.o3d": rng.randbytes(500), "Tolmira.exe": b"#!/bin/sh\n", "big": rng.randbytes(150000)}
    changing = PACKED["packed.zip"] + ["big", "Model/a.o3d", "data/d1/f5"]
    new = old | {path: old[path][::-1] + rng.randbytes(80) for path in changing}
    return old, new | {"new/dir/f18": rng.randbytes(2000), "new/f19": rng.randbytes(2000)}


class Lane:
    """A server and an installation that is reset for each fault, and the checks after it."""

    def __init__(self):
        self.server = FaultServer()
        self.place = launcher.Installation(self.server)
        self.report = self.place.root / "report"
        old, self.new = game()
        publish(self.server, old, PACKED, version=1)
        self.place.run()
        # One of the new files is on the disk but not in the record, as after a death.
        self.place.put({**PLAYER, **OBSOLETE, "ostu.ini": SETTINGS, "new/f19": self.new["new/f19"]})
        publish(self.server, self.new, PACKED, version=2)
        self.start = self.files()
        self.saved = None
        self.calls = self.try_fault()
        self.saved = self.files()["ostu.ini"]
        self.expect(b"vsync 1" in self.saved, "no setting is saved")

    def close(self):
        self.server.close()
        self.place.remove()

    def files(self):
        return self.place.files(left_out=[self.place.program.name])

    def reset(self):
        found = self.files()
        changed = [path for path in found.keys() | self.start.keys() if found.get(path) != self.start.get(path)]
        self.place.put({path: self.start.get(path) for path in changed})
        shutil.rmtree(self.place / "new/dir", ignore_errors=True)

    def try_fault(self, kind="", use=0, stays=False):
        """Returns the calls that the library has reported."""
        self.reset()
        self.report.write_bytes(b"")
        self.kind = kind
        self.wrong = []
        self.player = {**PLAYER, "ostu.ini": SETTINGS, "patcher.ini": self.start["patcher.ini"]}
        self.damage = {}
        self.right = set()  # paths of the game's files that were right at the last examination and must stay so
        self.options = None
        self.session(self.with_faults, FAULT_REPORT=str(self.report), FAULT_CALL=kind, FAULT_AT=str(use),
                     FAULT_STAYS="1" if stays else "")
        self.session(self.without_faults, FAULT_REPORT="/dev/null", FAULT_AT="1")
        return self.report.read_text(errors="replace").splitlines()

    def expect(self, condition, text):
        if not condition and text not in self.wrong:
            self.wrong.append(text)

    def session(self, steps, **faults):
        session = launcher.Session(self.place, wait=False, LD_PRELOAD=launcher.beside_program("fault-at-call.so"), **faults)
        try:
            steps(session)
            code, out, _ = session.end()
            self.expect(code == 0, f"exit code {code}")
            self.expect(b'"ready"' not in out, "a second ready")
        except (AssertionError, BrokenPipeError):
            code, words = session.process.wait(), session.process.stderr.read().decode(errors="replace")
            # If the thread that reads requests cannot start, the launcher prints an error.
            self.expect(self.kind == "pthread_create" and code > 0 and words, f"ended with {code}: {words[-200:]}")
        finally:
            session.kill()

    def with_faults(self, session):
        self.operation(session, "update")
        self.place.put(DAMAGE)
        self.damage = DAMAGE
        for name in ("verify", "repair"):
            self.operation(session, name)
        self.save(session)
        self.operation(session, "verify")

    def without_faults(self, session):
        self.right = self.new.keys()
        self.expect(self.operation(session, "update")["canPlay"], "the next update fails")
        self.damage, self.right = {}, self.new.keys()
        self.operation(session, "repair")
        # A file that could not be written to is moved aside.
        known = {*self.start, *self.new, "patcher_debug.txt", *(path + ".old" for path in self.new)}
        self.expect(known.issuperset(self.files()), f"left over: {sorted(self.files().keys() - known)}")

    def operation(self, session, name):
        """Runs the launcher until its `ready`, and returns that."""
        if name != "update":
            session.send(name)
        found = session.until("ready")
        checks = [m for m in found if m["type"] == "check"]
        words = {m["text"] for m in found if m["type"] == "status"}
        self.options = next((m for m in found if m["type"] == "options"), self.options)
        self.expect(len(checks) == (name != "update"), f"{name}: {len(checks)} check messages")
        self.expect(BUSY not in words, f"{name}: refused")
        self.examine(name)
        complete = words & {"A jour.", "Pret a jouer."}
        self.expect(not complete or self.right >= self.new.keys() - self.damage.keys(), f"{name}: not {complete}")
        self.expect(not checks or checks[0].get("ok", 0) <= len(self.right), f"{name}: {checks} of {len(self.right)}")
        return found[-1]

    def save(self, session):
        """Saves like the page: all values as they were shown, with one change."""
        values = {**self.options["values"], "vsync": 1}
        session.send(json.dumps({"action": "saveOptions", "values": values}).encode())
        done = session.until("optionsSaved")[-1]["ok"]
        if done:
            self.player["ostu.ini"] = self.saved or self.files()["ostu.ini"]
        self.examine(f"settings, ok {done}")

    def examine(self, when):
        """Examines the player's files, the record, and the game's files that were right."""
        found = self.files()
        for path, data in self.player.items():
            self.expect(found.get(path) == data, f"{when}: {path} is {found.get(path, b'gone')[:40]}")
        self.expect(not (wrong := self.place.wrongly_recorded(self.damage)), f"{when}: {wrong} are recorded")
        damaged = [path for path in self.right - self.damage.keys() if found.get(path) != self.new[path]]
        self.expect(not damaged, f"{when}: {len(damaged)} right files are damaged or gone: {sorted(damaged)[:1]}")
        self.right = {path for path, data in self.new.items() if found.get(path) == data}


def try_every(number, lanes, kinds):
    """Tries every `lanes`-th use of each kind: how many faults, and the failures among them."""
    lane = Lane()
    tried, failures = 0, []
    for kind, stays in itertools.product(kinds, (False, True)):
        for use in itertools.count(1 + number, lanes):
            hits = lane.try_fault(kind, use, stays)
            if not hits:
                break
            tried += 1
            if lane.wrong:
                failures.append(f"{kind} {use}{' and on' if stays else ''} ({hits[0]}): {'; '.join(lane.wrong)}")
    lane.close()
    return tried, failures


class FaultTest(unittest.TestCase):
    def test_every_call(self):
        lane = Lane()
        lane.close()
        kinds = {line.split()[0] for line in lane.calls}
        self.assertEqual(lane.wrong, [], "without faults")
        self.assertGreater(len(kinds), 20, "not all calls are seen")
        lanes = (os.cpu_count() or 1) + 1
        with concurrent.futures.ProcessPoolExecutor(lanes) as pool:
            results = list(pool.map(try_every, range(lanes), [lanes] * lanes, [sorted(kinds)] * lanes))
        print(f"tried {sum(tried for tried, _ in results)} faults")
        failures = [failure for _, found in results for failure in found]
        self.assertFalse(failures, "\n".join(failures))
