"""Ends the launcher at random moments and starts it again: it must converge, and keep what had arrived."""
import collections
import random
import subprocess
import time
import unittest

from fault_server import FaultServer
from game import Game, digest
from launcher import Installation, Session

SEED = 0
KILLS = 0


class KillTest(unittest.TestCase):
    def converge(self, seed, archives):
        rng = random.Random(seed)
        server = FaultServer()
        self.addCleanup(server.close)
        game = Game(seed, 60, archives=archives)
        game.publish(server)
        place = Installation(server)
        self.addCleanup(place.remove)
        if rng.random() < 0.5:
            place.run()
            game.next_version()
            game.publish(server)
        kills = rng.randint(2, 6)
        for _ in range(kills):
            self.one_death(rng, place, game, server)
        place.run()
        self.assertEqual(place.files(), game.files)
        self.record_is_true(place, game)
        return kills

    def one_death(self, rng, place, game, server):
        good = {name for name, data in game.files.items() if place.files().get(name) == data}
        server.requests = collections.Counter()
        process = place.start(subprocess.DEVNULL)
        try:
            if rng.random() < 0.7:
                for _ in range(rng.randint(0, 40)):
                    if not process.stdout.readline():
                        break
            else:
                time.sleep(rng.random() * 0.05)  # the moment of death is the point, not a wait for something
        finally:
            process.kill()
            process.communicate()
        contents = collections.Counter(digest(data) for data in game.files.values())
        for name in good:
            url = "/patch/files/" + digest(game.files[name])
            if contents[digest(game.files[name])] == 1:
                self.assertEqual(server.requests[url], 0, f"{name} had arrived and was fetched again")
        self.record_is_true(place, game)

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
                self.assertEqual(files.get(entry["path"]), data, entry["path"])

    def test_deaths_everywhere(self):
        total, seed = 0, SEED
        while total < KILLS:
            with self.subTest(seed=seed):
                total += self.converge(seed, archives=seed % 2 * 3)
            seed += 1
        print(f"killed {total} times, seeds {SEED} to {seed - 1}")

    def test_deaths_during_a_repair(self):
        """Whatever moment it dies at, the next verification and repair make it whole, and nothing else is fetched."""
        for seed in range(SEED, SEED + max(KILLS // 8, 3)):
            with self.subTest(seed=seed):
                self.repair_after_death(seed)

    def repair_after_death(self, seed):
        rng = random.Random(seed)
        server = FaultServer()
        self.addCleanup(server.close)
        game = Game(seed, 60, archives=seed % 2 * 3)
        game.publish(server)
        place = Installation(server)
        self.addCleanup(place.remove)
        place.run()
        damaged = rng.sample(sorted(game.files), 20)
        for name in damaged:
            if rng.random() < 0.3:
                (place.directory / name).unlink()
            else:
                (place.directory / name).write_bytes(rng.randbytes(rng.choice([0, len(game.files[name])]) or 1))
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
            server = FaultServer()
            self.addCleanup(server.close)
            game = Game(seed, 60)
            old = game.publish(server)
            place = Installation(server)
            self.addCleanup(place.remove)
            place.run()
            before = dict(game.files)
            game.next_version()
            game.publish(server)
            process = place.start(subprocess.DEVNULL)
            for _ in range(rng.randint(5, 15)):
                process.stdout.readline()
            process.kill()
            process.communicate()
            server.content["/patch/version.json"] = old
            place.run()
            # A temporary file of a transfer that died stays until its own file is fetched again.
            found = {name: data for name, data in place.files().items() if not name.endswith(".part")}
            self.assertEqual({name for name in before if found.pop(name, None) != before[name]}, set())
            self.assertEqual(set(found), set())
