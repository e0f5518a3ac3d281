"""Ends the launcher at random moments of every stage and starts it again: it must converge, and keep what had arrived."""
import collections
import random
import signal
import subprocess
import threading
import time
import unittest

from fault_server import FaultServer
from game import Game, digest
from launcher import Installation, Session, assert_files, disk_path

SEED = 0
KILLS = 0
STAGES = {"start", "decision", "archive download", "extraction", "file download", "save"}
ENOUGH_FOR_ALL_STAGES = 100  # kills


class Life:
    """One start of the launcher, with a moment at which it is to die."""

    def __init__(self, rng, place, game, server):
        self.rng, self.place, self.game, self.server = rng, place, game, server
        self.record = place.directory / "patch_manifest.json"
        self.process = None
        moments = {self.in_a_transfer: 5, self.after_bytes: 3, self.after_messages: 1, self.at_a_time: 1,
                   self.at_extraction: 2 if game.bundles else 0, self.at_a_save: 2}
        self.moment = rng.choices(list(moments), moments.values())[0]

    def end(self):
        """The stage in which it died, or None if it came to its own end first."""
        before = self.record_state()
        self.process = self.place.start(subprocess.DEVNULL)
        try:
            self.moment(before)
        finally:
            self.server.on_bytes, self.server.faults = None, {}
            self.place.kill(self.process)
        return self.stage(before) if self.process.returncode == -signal.SIGKILL else None

    def record_state(self):
        try:
            status = self.record.stat()
            return status.st_mtime_ns, status.st_size
        except FileNotFoundError:
            return None

    def wait_until(self, condition):
        while self.process.poll() is None and not condition():
            pass

    def linger(self, longest):
        end = time.monotonic() + self.rng.random() * longest
        self.wait_until(lambda: time.monotonic() > end)

    def after_messages(self, _):
        for _ in range(self.rng.randint(0, 12)):
            if not self.process.stdout.readline():
                break

    def after_bytes(self, _):
        end = self.server.sent + self.rng.randint(1, 250000)
        reached = threading.Event()
        self.server.on_bytes = lambda sent: reached.set() if sent >= end else None
        self.wait_until(reached.is_set)

    def in_a_transfer(self, _):
        """In the middle of one body, which the server holds back from there on."""
        names = sorted(self.game.bundles) or ["files/" + digest(data) for _, data in sorted(self.game.files.items())]
        path = "/patch/" + self.rng.choice(names)
        size = len(self.server.content.get(path, b""))
        self.server.faults = {path: [("silent", self.rng.randint(0, size))]}
        silences = self.server.silences
        self.wait_until(lambda: self.server.silences > silences)

    def at_a_time(self, _):
        self.linger(0.02)

    def at_extraction(self, _):
        self.wait_until(lambda: any(path.name.count(".part") == 1 for path in self.place.directory.glob("_bundle*")))
        self.linger(0.004)

    def at_a_save(self, before):
        self.wait_until(lambda: self.record_state() != before)
        self.linger(0.0005)

    def stage(self, before):
        names = [path.name for path in self.place.directory.rglob("*.part")]
        asked = set(self.server.requests) - {"/patch/version.json"}
        try:
            self.place.record()
            torn = False
        except FileNotFoundError:
            torn = False
        except ValueError:
            torn = True
        if torn or (self.moment == self.at_a_save and self.record_state() != before):
            return "save"
        if any(name.endswith(".part.part") for name in names):
            return "archive download"
        if any(name.startswith("_bundle") for name in names):
            return "extraction"
        if names:
            return "file download"
        if asked:
            return "between files"
        return "decision" if self.server.requests else "start"


class KillTest(unittest.TestCase):
    def published(self, seed, archives=0):
        """A game on a server, and an installation without it."""
        server = FaultServer()
        self.addCleanup(server.close)
        game = Game(seed, 60, archives=archives)
        game.publish(server)
        place = Installation(server)
        self.addCleanup(place.remove)
        return server, game, place

    def converge(self, seed, stages):
        """Kills one installation several times; returns how often."""
        rng = random.Random(seed)
        server, game, place = self.published(seed, archives=seed % 2 * 3)
        if rng.random() < 0.5:
            place.run()
            game.next_version()
            game.publish(server)
        if game.bundles and rng.random() < 0.3:
            del server.content["/patch/" + min(game.bundles)]
        kills, versions = 0, 1
        for _ in range(rng.randint(2, 6)):
            if rng.random() < 0.1:
                game.next_version()
                game.publish(server)
                versions += 1
            with self.nothing_is_fetched_twice(place, game, server):
                stage = Life(rng, place, game, server).end()
            stages[stage] += 1
            kills += stage is not None
            self.record_is_true(place, game)
        with self.nothing_is_fetched_twice(place, game, server):
            self.assertEqual(place.run()[-1], {"type": "ready", "canPlay": True})
        found = place.files()
        if versions > 1:
            # The temporary file of a transfer that died stays until its own file is fetched again.
            found = {name: data for name, data in found.items() if name.startswith("_") or not name.endswith(".part")}
        assert_files(self, found, game.files)
        self.record_is_true(place, game)
        return kills

    def nothing_is_fetched_twice(self, place, game, server):
        return Thrift(self, place, game, server)

    def record_is_true(self, place, game):
        """No file is vouched for with the digest that the server wants, unless it has that content."""
        try:
            entries = place.record()["files"]
        except (OSError, ValueError):
            return
        files = place.files()
        for entry in entries:
            data = game.files.get(entry["path"])
            if data is not None and entry["sha256"] == digest(data):
                self.assertTrue(files.get(entry["path"]) == data, entry["path"])

    def deaths(self, wanted):
        total, seed, stages = 0, SEED, collections.Counter()
        while total < wanted:
            with self.subTest(seed=seed):
                total += self.converge(seed, stages)
            seed += 1
        survived = stages.pop(None, 0)
        print(f"killed {total} times ({', '.join(f'{stage} {n}' for stage, n in sorted(stages.items()))}; "
              f"{survived} runs were over before), seeds {SEED} to {seed - 1}")
        return stages

    def test_deaths_everywhere(self):
        stages = self.deaths(KILLS)
        if KILLS >= ENOUGH_FOR_ALL_STAGES:
            self.assertEqual(STAGES - set(stages), set(), "stages that no death reached")

    def test_deaths_during_a_repair(self):
        """Whatever moment it dies at, the next verification and repair make it whole, and nothing else is fetched."""
        for seed in range(SEED, SEED + max(KILLS // 8, 3)):
            with self.subTest(seed=seed):
                self.repair_after_death(seed)

    def repair_after_death(self, seed):
        rng = random.Random(seed)
        server, game, place = self.published(seed, archives=seed % 2 * 3)
        place.run()
        damaged = rng.sample(sorted(game.files), 20)
        for name in damaged:
            file = place.directory / disk_path(name)
            if rng.random() < 0.3:
                file.unlink()
            else:
                file.write_bytes(rng.randbytes(rng.choice([0, len(game.files[name])]) or 1))
        mine = {"ostu.ini": b"mine", "Capture/shot.jpg": b"mine"}
        (place.directory / "Capture").mkdir()
        for name, data in mine.items():
            (place.directory / name).write_bytes(data)
        server.requests.clear()

        session = Session(place)
        if rng.random() < 0.5:
            session.ask("verify")
        session.send("repair")
        for _ in range(rng.randint(0, 60)):
            if b'"ready"' in session.process.stdout.readline():
                break
        session.kill()
        session = Session(place)
        session.ask("verify")
        session.ask("repair")
        found = next(m for m in session.ask("verify") if m["type"] == "check")
        session.end()
        self.assertEqual((found["ok"], found["total"]), (61, 61))
        self.assertEqual(place.files(), {**game.files, **mine})
        wanted = {"/patch/files/" + digest(game.files[name]) for name in damaged}
        asked = {path for path in server.requests if "/files/" in path}
        self.assertLessEqual(asked, wanted)

    def test_a_server_that_goes_back_is_believed(self):
        """A version that was cut short and then withdrawn must not leave its files behind as those of the old one."""
        for seed in range(SEED, SEED + 5):
            rng = random.Random(seed)
            server, game, place = self.published(seed)
            old = server.content["/patch/version.json"]
            place.run()
            before = dict(game.files)
            game.next_version()
            game.publish(server)
            process = place.start(subprocess.DEVNULL)
            for _ in range(rng.randint(5, 15)):
                process.stdout.readline()
            place.kill(process)
            server.content["/patch/version.json"] = old
            place.run()
            # A temporary file of a transfer that died stays until its own file is fetched again.
            found = {name: data for name, data in place.files().items() if not name.endswith(".part")}
            self.assertEqual({name for name in before if found.pop(name, None) != before[name]}, set())
            self.assertEqual(set(found), set())


class Thrift:
    """Watches one run: what had arrived whole before it is not asked for, neither by itself nor in an archive."""

    def __init__(self, test, place, game, server):
        self.test, self.game, self.server = test, game, server
        found = place.files()
        self.good = {name for name, data in game.files.items() if found.get(name) == data}

    def __enter__(self):
        self.server.requests = collections.Counter()

    def __exit__(self, kind, value, trace):
        if kind is not None:
            return
        contents = collections.Counter(digest(data) for data in self.game.files.values())
        for name in self.good:
            own = digest(self.game.files[name])
            if contents[own] == 1:
                self.test.assertEqual(self.server.requests["/patch/files/" + own], 0, f"{name} was fetched again")
        for name, members in self.game.bundles.items():
            if self.good.issuperset(members):
                self.test.assertEqual(self.server.requests["/patch/" + name], 0, f"{name} was fetched for nothing")
