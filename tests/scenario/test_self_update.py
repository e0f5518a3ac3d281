"""A launcher replaces itself by the next build while it runs; failures and deaths at each step."""
import pathlib

import launcher
from game import digest
from launcher import setting, summary
from scenario import CONNECT, READ, READY, WRITE, ScenarioTest

FETCH = "Mise a jour du patcher..."
FAILED = "Echec de la mise a jour du patcher, poursuite avec la version actuelle."
LOCKED = "Impossible de remplacer le patcher (fichier verrouille)."
INCOMPLETE = "Mise a jour du patcher incomplete, relance annulee."
URL = "/patch/launcher/next.exe"
NEW, OLD = "Patcher.new.exe", "Patcher.old.exe"


class SelfUpdateTest(ScenarioTest):
    def setUp(self):
        super().setUp()
        self.files = {"Tolmira.exe": b"", "data/a": b"1" * 70000}
        self.injector = launcher.beside_program("fault-at-call.so")
        self.next = launcher.beside_program("patcher-stdio-next").read_bytes()
        self.present = launcher.PROGRAM.read_bytes()
        self.server.content[URL] = self.next
        self.build = int(setting("PATCHER_LAUNCHER_BUILD"))
        self.announce(self.build + 1)

    def announce(self, build, url="launcher/next.exe", **extra):
        self.put(self.files, patcherVersion=build, patcherUrl=url, **extra)

    def assert_launcher(self, place, content, leftovers=()):
        self.assertEqual(place.program.read_bytes(), content)
        names = {path.name for path in place.directory.iterdir() if path.name.startswith("Patcher.")}
        self.assertEqual(names - {place.program.name, OLD + ".old"}, set(leftovers))

    def assert_next_start_completes(self, place):
        """Starts it twice, since the first start may find the old launcher still running."""
        place.run_to_end()
        place.run_to_end()
        self.assert_launcher(place, self.next)
        self.assertLessEqual(self.files.items(), place.files().items())

    def assert_swap_fails(self, words, **environment):
        code, messages, error = self.place.run_to_end(successors=False, **environment)
        self.assertEqual((code, summary(messages)), (0, [CONNECT, "online", FETCH]))
        self.assertIn(words, error)

    def test_the_new_launcher_takes_over(self):
        self.announce(self.build + 1, patcherSha256=digest(self.next))
        self.server.faults[URL] = [("chunked",)]
        place = self.place
        place.program = place.program.rename(place / ("Mon jeu" + place.program.suffix))
        place.program.chmod(0o750)
        code, messages, error = place.run_to_end()
        texts = summary(messages)
        self.assertEqual((code, error), (0, ""))
        self.assertEqual(texts[:6], [CONNECT, "online", FETCH, CONNECT, "online", (0, 3)])
        self.assertEqual(texts[-2:], READY)
        if not launcher.is_windows():
            self.assertEqual(place.program.stat().st_mode & 0o777, 0o750)
        self.assert_next_start_completes(place)
        self.assertEqual(self.server.requests[URL], 1)

    def test_what_is_not_newer_is_not_fetched(self):
        for build, url in ((self.build, "launcher/next.exe"), (-1, "launcher/next.exe"), (self.build + 1, "")):
            self.announce(build, url)
            self.assertNotIn(FETCH, self.update())
        self.assertEqual(self.server.requests[URL], 0)
        self.assert_launcher(self.place, self.present)

    def test_a_launcher_that_cannot_be_fetched(self):
        size = len(self.next)
        page = b"<html>bonjour</html>"
        programs = pathlib.Path(__file__).parents[2] / "fuzz/corpus/program"
        other_system = (programs / ("linux_64" if launcher.is_windows() else "windows")).read_bytes()
        cases = [(404, None), (206, None), (("cut", 100000), None), (("reset",), None), (("announced", 2**28 + 1), None),
                 (("until-close", size - 1), None), (("chunked-cut", size - 1), None), (None, b""), (("chunked",), page),
                 (("until-close", 0), None), (None, self.next[:-1]),
                 (None, other_system)]
        for fault, body in cases:
            with self.subTest(fault=fault, body=body and len(body)):
                self.server.content[URL] = self.next if body is None else body
                self.server.faults[URL] = [fault]
                self.assert_fetch_fails()
        self.server.content[URL], self.server.faults = self.next, {}
        for wrong in (digest(self.present), digest(self.next).upper(), 5, None):
            with self.subTest(digest=wrong):
                self.announce(self.build + 1, patcherSha256=wrong)
                self.assert_fetch_fails()

    def assert_fetch_fails(self):
        place = self.installation()
        place.write(NEW, b"of an earlier time")
        texts = place.update()
        self.assertEqual(texts[:5] + texts[-2:], [CONNECT, "online", FETCH, FAILED, (0, 3), *READY])
        self.assertLessEqual(self.files.items(), place.files().items())
        self.assert_launcher(place, self.present, [NEW])
        self.assertEqual((place / NEW).read_bytes(), b"of an earlier time")

    def test_a_new_launcher_that_cannot_be_started(self):
        self.server.content[URL] = b"no program"
        self.assert_swap_fails(INCOMPLETE)
        self.assert_launcher(self.place, self.present, [NEW])
        self.assertEqual((self.place / NEW).read_bytes(), b"no program")
        self.server.content[URL] = self.next
        self.assert_next_start_completes(self.place)

    def test_a_number_above_the_files_own_restarts_once_at_most(self):
        self.announce(self.build + 70)
        self.assert_next_start_completes(self.place)
        self.assertEqual(self.server.requests[URL], 3)
        self.place.write(NEW, b"of an earlier time")
        self.update()
        self.assert_launcher(self.place, self.next)

    def test_a_launcher_that_cannot_be_moved(self):
        """First the present launcher cannot be moved, then the new one."""
        place, faults = self.place, {"LD_PRELOAD": self.injector, "FAULT_CALL": "rename", "FAULT_AT": "2"}
        if launcher.is_windows():
            holder, faults = self.hold_file(place.program, READ | WRITE), {}
        else:
            place.write(OLD + "/mine")
        self.assert_swap_fails(LOCKED)
        self.assertEqual((place.program.read_bytes(), (place / NEW).read_bytes()), (self.present, self.next))
        if launcher.is_windows():
            holder.communicate()
            holder = self.hold_file(place / NEW, READ | WRITE)
        else:
            (place / OLD / "mine").unlink()
        self.assert_swap_fails(INCOMPLETE, **faults)
        self.assert_launcher(place, self.present, [NEW])
        if launcher.is_windows():
            holder.communicate()
        self.assert_next_start_completes(place)

    def test_either_file_of_a_swap_that_died_half_way_works(self):
        for name, new in ((OLD, self.next), (NEW, self.next), (NEW, self.present)):
            with self.subTest(name=name, new=len(new)):
                place = self.installation()
                place.put({OLD: self.present, NEW: new})
                place.program.unlink()
                place.program = place / name
                place.program.chmod(0o755)
                self.assert_next_start_completes(place)

    def test_death_at_every_step(self):
        """The old launcher dies, or the new one that it starts. Only without hard links can a death leave no launcher
        under its name: before the flush of the first move, and before the second."""
        self.assertEqual(self.deaths(), 0)
        self.assertEqual(self.deaths(FAULT_CALL="link", FAULT_AT="1", FAULT_STAYS="1"), 2)

    def deaths(self, **environment):
        """Returns how many of the deaths left no launcher under its name."""
        step, without, alive = 0, 0, False
        while not alive:
            step += 1
            place = self.installation()
            code, messages, _ = place.run_to_end(LD_PRELOAD=self.injector, FAULT_KILL_AT=str(step), **environment)
            alive = code == 0 and summary(messages)[-1:] == [True]
            with self.subTest(step=step, **environment):
                if not place.program.exists():
                    without += 1
                    for name, content in ((OLD, self.present), (NEW, self.next)):
                        self.assertEqual((place / name).read_bytes(), content)
                    place.program = place / OLD
                self.assertIn(place.program.read_bytes(), (self.present, self.next))
                self.assert_next_start_completes(place)
        return without
