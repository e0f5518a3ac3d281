"""Cuts the power of disks while the launcher works on them: one operation for each disk, then checks what is left."""
import contextlib
import random
import re
import sys
import time
import unittest

import launcher
import mounts
import power_disk
import test_kills
from fault_server import FaultServer
from game import MANIFEST, Game, digest
from launcher import Installation, Session, summary
from test_kills import Life
from test_self_update import NEW, OLD, URL

FILES, ARCHIVES, DAMAGED = 150, 4, 60
SETTINGS, FIRST_LIMIT = b"mine 1\r\n" * 40000 + b"fpslimit %d\r\n", 100
RUN = ("after_messages", "after_messages", "at_a_save", "at_a_save", "after_ready")
# For each operation: the moments at which it may lose its power, how many files, archives or lines of hashing its
# messages count, and how often it saves the record.
OPERATIONS = {
    "fresh install": (RUN, FILES, 4),
    "update": (RUN, FILES // 3, 2),
    "withdrawn update": (RUN, FILES // 3, 2),
    "archives": ((*RUN, "in_a_transfer", "at_extraction"), ARCHIVES, 5),
    "files found good": (("after_messages", "at_a_save", "after_ready"), FILES // 25, 1),
    "repair": (RUN, DAMAGED, 2),
    "settings": (("at_saved_settings",), 0, 0),
    "first start": (("at_configuration",), 0, 0),
    "self-update": (("at_the_swap", "after_messages", "after_ready"), FILES, 4),
}
# What else reaches the disk just before the cut: the journal (most faults appear when the contents of the files do not
# reach the disk), and a share of the pages of the document that the operation writes.
AHEAD = {"nothing": None, "journal": 0, "journal and document": 1, "journal and half a document": 0.5}


class PowerCut(Life):
    def __init__(self, seed, folder):
        rng = random.Random(seed)
        self.kind = list(power_disk.MAKE)[seed % 2]
        self.disk = power_disk.Disk(folder, self.kind)
        self.operation = list(OPERATIONS)[seed // 2 % len(OPERATIONS)]
        game = Game(seed, FILES, archives=ARCHIVES if self.operation == "archives" else 0)
        server = FaultServer()
        super().__init__(rng, Installation(server, parent=self.disk.root), game, server)
        moments, self.items, self.saves = OPERATIONS[self.operation]
        self.moment = getattr(self, rng.choice(moments))
        self.ahead = rng.choice(list(AHEAD))
        self.document = self.place / ({"settings": "ostu.ini", "first start": "patcher.ini"}.get(self.operation, self.record))
        self.configuration = re.escape((self.place / "patcher.ini").read_bytes())
        self.launchers = [launcher.PROGRAM.read_bytes()]
        self.limit = FIRST_LIMIT
        self.damaged = {}
        self.session = None

    def close(self):
        if self.session:
            self.session.kill()
        self.server.close()
        self.disk.remove()

    # Before the operation

    def prepare(self):
        operation = self.operation
        updates = "update" in operation.split() or operation == "archives" and self.rng.random() < 0.5
        self.place.write("ostu.ini", SETTINGS % self.limit)
        record = self.game.publish(self.server)
        if updates or operation in ("repair", "settings"):
            self.place.put(self.game.files)
            self.record.write_bytes(record)
        if operation == "repair":
            self.damaged = {path: self.rng.choice((None, b"damaged " + self.game.files[path][8:]))
                            for path in self.rng.sample(sorted(self.game.files), DAMAGED)}
            self.place.put(self.damaged)
        elif operation == "first start":
            self.document.unlink()
            self.configuration = rb"gone|BaseUrl=\S+\r\nConnections=4\r\n"
        elif operation == "self-update":
            self.launchers.append(launcher.beside_program("patcher-stdio-next").read_bytes())
            self.server.content[URL] = self.launchers[1]
            self.game.publish(self.server, patcherVersion=1 << 30, patcherUrl=URL.removeprefix("/patch/"))
        self.disk.remount()  # which flushes all this
        self.old = dict(self.game.files), dict(self.server.content)
        if updates:
            self.game.next_version()
            self.game.publish(self.server)
        elif operation == "files found good":
            self.place.put(self.game.files)

    def cut(self):
        """Starts the operation and cuts the power at the moment."""
        self.session = Session(self.place, wait=self.operation in ("repair", "settings"))
        self.process = self.session.process
        if self.operation == "repair":
            self.session.send("repair")
        if self.operation != "settings":
            self.process.stdin.close()
        self.moment(self.record_state())
        share = AHEAD[self.ahead]
        if share is not None:
            with contextlib.suppress(FileNotFoundError):
                power_disk.flush_pages(self.document, self.rng, share)
            self.disk.flush_journal()
        self.disk.cut_power()
        self.session.kill()
        self.server.faults = {}
        self.disk.remount()

    # Moments

    def after_messages(self, _):
        for _ in range(self.rng.randint(5, 5 + self.items)):  # the first five come before any file
            self.process.stdout.readline()
        self.linger(0.003)

    def at_a_save(self, before):
        for _ in range(self.rng.randint(1, self.saves)):
            self.wait_until(lambda: self.record_state() != before)
            before = self.record_state()
        self.linger(0.002)

    def after_ready(self, _):
        self.session.until("ready")
        time.sleep(2 * self.rng.random() ** 2)

    def at_saved_settings(self, _):
        for number in range(self.rng.randint(1, 15)):
            if number > 0:
                self.session.until("optionsSaved")
            self.limit += 1
            self.session.send(b'{"action":"saveOptions","values":{"fpsLimit":%d}}' % self.limit)
        self.linger(0.01)

    def at_configuration(self, _):
        self.wait_until(self.document.exists)
        self.linger(0.003)

    def at_the_swap(self, _):
        name, longest = self.rng.choice(((NEW, 0.06), (OLD, 0.005)))
        self.wait_until((self.place / name).exists)
        self.linger(longest)

    # What the cut left, and the start after it

    def check(self):
        self.check_record()
        self.check_launcher()
        self.check_settings()
        configuration = self.place.files(left_out=()).get("patcher.ini", b"gone")
        assert re.fullmatch(self.configuration, configuration), configuration
        self.place.set_server(self.server.url())
        if self.operation == "withdrawn update":
            self.game.files, self.server.content = self.old
        self.check_next_start()

    def check_record(self):
        wrong = self.place.wrongly_recorded(self.damaged)
        assert not wrong, f"{len(wrong)} files that the record names are wrong"

    def check_launcher(self):
        program, old, new = self.place.program, (self.place / OLD), (self.place / NEW)
        if not program.exists() and old.exists() and new.exists():
            # Between the two moves of the swap: the player starts the old one.
            assert new.read_bytes() == self.launchers[-1], "Patcher.new.exe is not whole"
            self.place.program = program = old
        assert program.exists() and program.read_bytes() in self.launchers, "no launcher is left"

    def check_settings(self):
        saved = {SETTINGS % limit for limit in range(FIRST_LIMIT, self.limit + 1)}
        assert (self.place / "ostu.ini").read_bytes() in saved, "the settings are neither old nor new"

    def check_next_start(self):
        code, messages, words = self.place.run_to_end()
        assert (code, words) == (0, ""), f"exit code {code}: {words[-500:]}"
        end, ready = summary(messages)[-2:]
        assert end in ("Pret a jouer.", "A jour.") and ready is True, f"the next start ended with '{end}', {ready}"
        assert self.place.program.read_bytes() == self.launchers[-1], "the launcher is not the newest"
        assert end == "A jour." or self.record.read_bytes() == self.server.content[MANIFEST], "a wrong record"
        self.check_record()
        promised = self.place.recorded()
        if self.damaged:
            session = Session(self.place)
            session.ask("repair")
            session.end()
        found = self.place.files()
        wrong = [path for path, data in self.game.files.items()
                 if found.get(path) != data or promised.get(path) != digest(data)]
        assert not wrong, f"after '{end}' {len(wrong)} files are wrong or not recorded"
        self.check_settings()


class PowerTest(unittest.TestCase):
    def setUp(self):
        mounts.require(self, "root")
        self.folder = mounts.memory_disk(self, "50%")  # there flushes wait for no real disk
        self.addCleanup(sys.setswitchinterval, sys.getswitchinterval())
        sys.setswitchinterval(0.0001)  # or the threads of the server would delay the cuts

    def test_power_cuts(self):
        for seed in range(test_kills.SEED, test_kills.SEED + test_kills.KILLS):
            with contextlib.closing(PowerCut(seed, self.folder)) as cut:
                moment = cut.moment.__name__
                with self.subTest(seed=seed, disk=cut.kind, operation=cut.operation, moment=moment, ahead=cut.ahead):
                    cut.prepare()
                    cut.cut()
                    cut.check()
