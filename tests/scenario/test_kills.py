"""Kills the launcher at random moments and starts it again: it must finish, and keep what it has downloaded."""
import collections
import contextlib
import random
import signal
import subprocess
import time

from game import Game
from scenario import ScenarioTest

SEED = 0
KILLS = 0


class Life:
    """One start of the launcher, and the moment when it is killed."""

    def __init__(self, rng, place, game, server):
        self.rng, self.place, self.game, self.server = rng, place, game, server
        self.record = place.record_file
        self.process = None
        moments = {self.in_a_transfer: 8, self.after_messages: 1, self.at_a_time: 1,
                   self.at_extraction: 2 if game.bundles else 0, self.at_a_save: 2}
        self.moment = rng.choices(list(moments), moments.values())[0]

    def end(self):
        """Returns whether it was killed before its own end."""
        before = self.record_state()
        self.process = self.place.start(subprocess.DEVNULL)
        try:
            self.moment(before)
        finally:
            self.server.faults = {}
            self.place.kill(self.process)
        return self.process.returncode == -signal.SIGKILL

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

    def in_a_transfer(self, _):
        """In the middle of a body: the server sends only a part of it."""
        game = self.game
        path = "/patch/" + self.rng.choice(sorted(game.bundles) or sorted(f"{game.folder}/{name}" for name in game.files))
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


class KillTest(ScenarioTest):
    def publish_next(self):
        self.before = dict(self.game.files), dict(self.server.content), self.game.folder
        self.game.next_version()
        self.game.publish(self.server)

    def converge(self, seed):
        """Kills one installation several times; returns how often."""
        rng = random.Random(seed)
        archives = seed % 2 * 3
        self.server.content.clear()
        self.place = self.installation()
        self.before = None  # the files, the server's content and the folder of the version before
        self.game = Game(seed, 60, archives)
        self.game.publish(self.server)
        if rng.random() < 0.5:
            self.place.run()
            self.publish_next()
        if self.game.bundles and rng.random() < 0.3:
            del self.server.content["/patch/" + min(self.game.bundles)]
        kills = 0
        for _ in range(rng.randint(2, 6)):
            if rng.random() < 0.1:
                self.publish_next()
            elif self.before and not archives and rng.random() < 0.2:
                # The files of a version that was cut short must not be taken for those of the one before.
                files, content, self.game.folder = self.before
                self.game.files, self.server.content = dict(files), dict(content)
            with self.nothing_is_fetched_twice():
                kills += Life(rng, self.place, self.game, self.server).end()
            self.assertEqual(self.place.wrongly_recorded({}), [])
        with self.nothing_is_fetched_twice():
            self.assertEqual(self.place.run()[-1], {"type": "ready", "canPlay": True})
        found = self.place.files()
        if self.before:
            # The temporary file of a transfer that died stays until its own file is fetched again.
            found = {name: data for name, data in found.items() if name.startswith("_") or not name.endswith(".part")}
        self.assert_files(found, self.game.files)
        self.assertEqual(self.place.wrongly_recorded({}), [])
        return kills

    @contextlib.contextmanager
    def nothing_is_fetched_twice(self):
        """A file that was complete before a run must not be fetched again, alone or in an archive."""
        found = self.place.files()
        good = {name for name, data in self.game.files.items() if found.get(name) == data}
        self.server.requests = collections.Counter()
        yield
        needless = {f"/patch/{self.game.folder}/{name}" for name in good}
        needless |= {f"/patch/{name}" for name, members in self.game.bundles.items() if good.issuperset(members)}
        self.assertFalse(needless & self.server.requests.keys())

    def test_deaths_everywhere(self):
        total, seed = 0, SEED
        while total < KILLS:
            with self.subTest(seed=seed):
                total += self.converge(seed)
            seed += 1
        print(f"killed {total} times, seeds {SEED} to {seed - 1}")
