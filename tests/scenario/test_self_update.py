"""A launcher that replaces itself by the next build while it runs, and everything that may come in between."""
import os
import subprocess

import launcher
from game import Game, digest
from launcher import told
from scenario import CONNECT, ScenarioTest

FETCH = "Mise a jour du patcher..."
FAILED = "Echec de la mise a jour du patcher, poursuite avec la version actuelle."
LOCKED = "Impossible de remplacer le patcher (fichier verrouille)."
INCOMPLETE = "Mise a jour du patcher incomplete, relance annulee."
URL = "/patch/launcher/next.exe"
NEW, OLD = "Patcher.new.exe", "Patcher.old.exe"


class SelfUpdateTest(ScenarioTest):
    def setUp(self):
        super().setUp()
        self.game = Game(11, 8)
        # Names are bytes in the system's code page: plain ones read the same everywhere.
        self.game.files = {name.replace("\u00e9", "e"): data for name, data in self.game.files.items()}
        self.next = launcher.beside_program("patcher-stdio-next").read_bytes()
        self.present = launcher.PROGRAM.read_bytes()
        self.server.content[URL] = self.next
        self.build = int(subprocess.run(launcher.command(launcher.PROGRAM) + ["--print-version"],
                                        stdout=subprocess.PIPE, stderr=subprocess.DEVNULL, check=True).stdout)
        self.announce(self.build + 1)

    def announce(self, build, url="launcher/next.exe", **extra):
        self.game.publish(self.server, patcherVersion=build, patcherUrl=url, **extra)

    def run_both(self, place, successor=True, **environment):
        """One unattended start until the launcher and the one that it starts have ended; the second one
        writes to the same streams. Returns exit code, messages in short and standard error."""
        done = subprocess.run(launcher.command(place.program), stdin=subprocess.DEVNULL,
                              stdout=subprocess.PIPE, stderr=subprocess.PIPE, cwd="/", timeout=launcher.LIMIT,
                              check=False,
                              env={**os.environ, "ASAN_OPTIONS": "verify_asan_link_order=0", **environment})
        if successor:
            place.wait_for_successors()
        return done.returncode, told(launcher.messages(done.stdout)), done.stderr.decode(errors="replace")

    def game_is_whole(self, place):
        files = place.files()
        self.assertEqual({name: files.get(name) for name in self.game.files}, self.game.files)

    def launcher_is(self, place, content, leftovers=()):
        self.assertEqual(place.program.read_bytes(), content)
        names = {path.name for path in place.directory.iterdir() if path.name.startswith("Patcher.")}
        self.assertEqual(names - {place.program.name, OLD + ".old"}, set(leftovers))

    def test_the_new_launcher_takes_over(self):
        self.announce(self.build + 1, patcherSha256=digest(self.next))
        self.server.faults[URL] = [("chunked",)]
        place = self.place
        place.program = place.program.rename(place.directory / ("Mon jeu" + place.program.suffix))
        place.program.chmod(0o750)
        code, short, error = self.run_both(place)
        self.assertEqual((code, error), (0, ""))
        first = [CONNECT, "online", FETCH]
        self.assertEqual(short[:3], first)
        self.assertEqual(short[3:6] + short[-2:], [CONNECT, "online", (0, 1), "Pret a jouer.", True])
        if launcher.is_windows():
            self.run_both(place)  # the first sweep may have met a launcher that was still ending
        else:
            self.assertEqual(place.program.stat().st_mode & 0o777, 0o750)
        self.launcher_is(place, self.next)
        self.game_is_whole(place)
        self.assertEqual(self.server.requests[URL], 1)

    def test_what_is_not_newer_is_not_fetched(self):
        for build, url in ((self.build, "launcher/next.exe"), (self.build - 1, "launcher/next.exe"),
                           (-1, "launcher/next.exe"), (self.build + 1, "")):
            self.announce(build, url)
            self.assertNotIn(FETCH, self.run_both(self.place)[1])
        self.assertEqual(self.server.requests[URL], 0)
        self.launcher_is(self.place, self.present)

    def test_a_launcher_that_cannot_be_had(self):
        size = len(self.next)
        page = b"<html>bonjour</html>"
        cases = [(404, None), (206, None), (("cut", 100000), None), (("reset",), None), (("announced", 2**28 + 1), None),
                 (("until-close", 100000), None), (("until-close", size - 1), None), (("chunked-cut", size - 1), None),
                 (None, b""), (("chunked",), page), (("until-close", 0), None), (None, self.next[:-1])]
        for fault, body in cases:
            with self.subTest(fault=fault, body=body and len(body)):
                self.server.content[URL] = self.next if body is None else body
                self.server.faults[URL] = [fault]
                self.fails_to_fetch()
        self.server.content[URL], self.server.faults = self.next, {}
        for wrong in (digest(self.present), digest(self.next).upper(), 5, None):
            with self.subTest(digest=wrong):
                self.announce(self.build + 1, patcherSha256=wrong)
                self.fails_to_fetch()

    def fails_to_fetch(self):
        place = self.installation()
        (place.directory / NEW).write_bytes(b"of an earlier time")
        code, short, error = self.run_both(place)
        self.assertEqual((code, error), (0, ""))
        self.assertEqual(short[:5], [CONNECT, "online", FETCH, FAILED, (0, 1)])
        self.assertEqual(short[-2:], ["Pret a jouer.", True])
        self.game_is_whole(place)
        self.launcher_is(place, self.present, [NEW])
        self.assertEqual((place.directory / NEW).read_bytes(), b"of an earlier time")

    def test_a_new_launcher_that_cannot_be_started(self):
        self.server.content[URL] = b"no program"
        code, short, error = self.run_both(self.place, successor=False)
        self.assertEqual((code, short), (0, [CONNECT, "online", FETCH]))
        self.assertIn(INCOMPLETE, error)
        self.launcher_is(self.place, self.present, [NEW])
        self.assertEqual((self.place.directory / NEW).read_bytes(), b"no program")
        self.server.content[URL] = self.next
        self.run_both(self.place)
        self.run_both(self.place)
        self.launcher_is(self.place, self.next)
        self.game_is_whole(self.place)

    def test_a_number_above_the_files_own_restarts_once_at_most(self):
        self.announce(self.build + 70)
        self.run_both(self.place)
        self.run_both(self.place)
        self.launcher_is(self.place, self.next)
        self.game_is_whole(self.place)
        self.assertEqual(self.server.requests[URL], 3)

    def test_a_target_that_is_locked(self):
        if launcher.is_windows():
            holder = self.hold(self.place.program)
        else:
            (self.place.directory / OLD).mkdir()
            (self.place.directory / OLD / "mine").write_bytes(b"")
        code, short, error = self.run_both(self.place, successor=False)
        self.assertEqual((code, short), (0, [CONNECT, "online", FETCH]))
        self.assertIn(LOCKED, error)
        self.assertEqual(self.place.program.read_bytes(), self.present)
        self.assertEqual((self.place.directory / NEW).read_bytes(), self.next)
        if launcher.is_windows():
            holder.communicate(timeout=launcher.LIMIT)
            self.run_both(self.place)
            self.run_both(self.place)
            self.launcher_is(self.place, self.next)
            self.game_is_whole(self.place)

    def hold(self, file):
        """Opens the file as a program does that lets others read and write it, but not move it."""
        holder = subprocess.Popen(launcher.command(launcher.beside_program("hold_file")) + [str(file), "rw"],
                                  stdin=subprocess.PIPE, stdout=subprocess.PIPE, stderr=subprocess.DEVNULL)
        self.addCleanup(holder.communicate)
        self.assertEqual(holder.stdout.readline().strip(), b"holding")
        return holder

    def test_a_new_launcher_that_cannot_be_moved(self):
        faults = {}
        if launcher.is_windows():
            (self.place.directory / NEW).write_bytes(b"held")
            holder = self.hold(self.place.directory / NEW)
        else:
            faults = {"LD_PRELOAD": str(launcher.PROGRAM.with_name("fault-at-step.so")), "FAULT_REFUSE": NEW}
        code, short, error = self.run_both(self.place, successor=False, **faults)
        self.assertEqual((code, short), (0, [CONNECT, "online", FETCH]))
        self.assertIn(INCOMPLETE, error)
        self.launcher_is(self.place, self.present, [NEW])
        if launcher.is_windows():
            holder.communicate(timeout=launcher.LIMIT)
        self.run_both(self.place)
        self.run_both(self.place)
        self.launcher_is(self.place, self.next)
        self.game_is_whole(self.place)

    def test_an_old_launcher_that_still_runs(self):
        """Windows lets nobody replace it; Linux does not mind."""
        place = self.place
        (place.directory / OLD).write_bytes(self.present)
        (place.directory / OLD).chmod(0o755)
        running = subprocess.Popen(launcher.command(place.directory / OLD), stdin=subprocess.PIPE,
                                   stdout=subprocess.PIPE, stderr=subprocess.DEVNULL, cwd="/")
        self.addCleanup(running.communicate)
        self.server.faults[URL] = [404, None]
        while b'"ready"' not in running.stdout.readline():
            pass
        error = subprocess.run(launcher.command(place.program), stdin=subprocess.DEVNULL, stdout=subprocess.PIPE,
                               stderr=subprocess.PIPE, timeout=launcher.LIMIT, check=True).stderr.decode()
        self.assertEqual(LOCKED in error, launcher.is_windows())
        running.communicate(timeout=launcher.LIMIT)
        place.wait_for_successors()
        self.run_both(place)
        self.run_both(place)
        self.launcher_is(place, self.next)
        self.game_is_whole(place)

    def test_either_file_of_a_swap_that_died_half_way_works(self):
        for name, content in ((OLD, self.present), (NEW, self.next)):
            with self.subTest(name=name):
                place = self.installation()
                (place.directory / OLD).write_bytes(self.present)
                (place.directory / NEW).write_bytes(self.next)
                place.program.unlink()
                place.program = place.directory / name
                place.program.chmod(0o755)
                for _ in range(2):
                    self.assertEqual(self.run_both(place)[2], "")
                self.launcher_is(place, self.next)
                self.game_is_whole(place)

    def test_death_at_every_step(self):
        """Of the old launcher and of the new one that it starts. Only without hard links is there a time without a
        launcher under its name: before the flush of the first move, and before the second."""
        self.assertEqual(self.deaths(), 0)
        self.assertEqual(self.deaths(FAULT_NO_LINKS="1"), 2)

    def deaths(self, **environment):
        """Returns how many of the deaths left no launcher under its name."""
        shim = str(launcher.PROGRAM.with_name("fault-at-step.so"))
        step, deaths, without = 0, 0, 0
        alive = False
        while not alive:
            step += 1
            place = self.installation()
            code, short, _ = self.run_both(place, LD_PRELOAD=shim, FAULT_KILL_AT=str(step), **environment)
            alive = code == 0 and short[-1:] == [True]
            deaths += not alive
            with self.subTest(step=step, **environment):
                if not place.program.exists():
                    without += 1
                    for name, content in ((OLD, self.present), (NEW, self.next)):
                        self.assertEqual((place.directory / name).read_bytes(), content)
                    place.program = place.directory / OLD
                self.assertIn(place.program.read_bytes(), (self.present, self.next))
                self.run_both(place)
                self.launcher_is(place, self.next)
                self.game_is_whole(place)
        print(f"{deaths} deaths")
        return without
