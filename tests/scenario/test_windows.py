"""The same runs with the Windows program under Wine, and what only Windows does. Wine is slow: a share of each."""
import os
import pathlib
import subprocess
import threading

import launcher
import test_archives
import test_kills
import test_news
import test_options
import test_self_update
import test_server
import test_update
from fault_server import FaultServer
from game import Game
from launcher import Installation, told
from scenario import ScenarioTest

HOLDER = "hold_file.exe"  # stands beside the launcher in the build


class WindowsUpdateTest(ScenarioTest):
    test_archives_are_taken_when_cheaper = test_update.UpdateTest.test_archives_are_taken_when_cheaper
    test_failed_archives_fall_back = test_update.UpdateTest.test_failed_archives_fall_back_file_by_file
    test_transfers_recover = test_update.UpdateTest.test_transfers_that_fail_and_recover
    test_a_file_that_cannot_be_had = test_update.UpdateTest.test_a_file_that_cannot_be_had_ends_the_run
    test_out_of_reach = test_update.UpdateTest.test_server_out_of_reach_and_documents_that_are_none
    test_paths_that_leave = test_server.ServerTest.test_paths_that_leave_are_refused_before_anything_is_touched
    test_wrong_bytes = test_server.ServerTest.test_wrong_bytes_and_how_often_they_are_asked_for
    test_what_was_on_disk_survives = test_server.ServerTest.test_what_was_on_disk_survives_a_failed_transfer
    install = test_archives.ArchiveTest.install
    test_entries_that_would_leave = test_archives.ArchiveTest.test_entries_that_would_leave_or_lead_elsewhere

    def test_fresh_install_then_nothing_to_do_then_a_lost_record(self):
        game = Game(1, 120)
        manifest = game.publish(self.server)
        self.assertEqual(self.told()[-3:], [(1, 1), "Pret a jouer.", True])
        self.assert_files(self.place, game.files)
        record = self.place.directory / "patch_manifest.json"
        self.assertEqual(record.read_bytes(), manifest)
        self.assertLessEqual(self.server.connections, 8, "connections are used again")
        record.unlink()
        self.assertEqual(self.told()[-3:], ["121 fichier(s) deja corrects retrouves sur le disque.", "A jour.", True])


class FilesInUseTest(ScenarioTest):
    def hold(self, program, *arguments):
        """A Windows process that has said that it runs."""
        process = subprocess.Popen(["wine", str(program), *arguments], stdin=subprocess.PIPE, stdout=subprocess.PIPE)
        self.addCleanup(process.stdout.close)
        self.addCleanup(process.communicate)
        self.assertEqual(process.stdout.readline(), b"holding\n")
        return process

    def test_a_running_program_steps_aside(self):
        holder = (launcher.PROGRAM.parent / HOLDER).read_bytes()
        self.put({"sub/game.exe": holder, "a": b"1"})
        self.told()
        self.put({"sub/game.exe": b"the next version", "a": b"2"})
        process = self.hold(self.place.directory / "sub" / "game.exe")
        self.assertEqual(self.told()[-2:], ["Pret a jouer.", True])
        self.assert_files(self.place, {"sub/game.exe": b"the next version", "sub/game.exe.old": holder, "a": b"2"})
        process.communicate()
        self.assertEqual(self.told()[-2:], ["A jour.", True])

    def test_a_file_that_nobody_may_touch_fails_clearly(self):
        self.put({"held.dat": b"old", "a": b"1"})
        self.told()
        self.put({"held.dat": b"the next version", "a": b"2"})
        process = self.hold(launcher.PROGRAM.parent / HOLDER, str(self.place.directory / "held.dat"))
        self.assertEqual(self.told()[-2:], ["Echec du telechargement: held.dat (transfert interrompu)", False])
        self.assert_files(self.place, {"held.dat": b"old", "a": b"2"})
        self.assertTrue([line for line in self.place.log() if line.startswith("rename+copy ")])
        process.communicate()
        self.assertEqual(self.told()[-2:], ["Pret a jouer.", True])
        self.assert_files(self.place, {"held.dat": b"the next version", "a": b"2"})

    def test_a_record_that_cannot_be_replaced_leaves_everything_as_it_is(self):
        self.put({"a": b"1"})
        self.told()
        self.put({"a": b"2"})
        process = self.hold(launcher.PROGRAM.parent / HOLDER, str(self.place.directory / "patch_manifest.json"))
        self.assertEqual(self.told()[-2:],
                         ["Impossible de mettre a jour patch_manifest.json, aucun fichier modifie.", False])
        self.assert_files(self.place, {"a": b"1"})
        process.communicate()
        self.assertEqual(self.told()[-2:], ["Pret a jouer.", True])

    def test_a_file_that_a_scanner_holds_is_waited_for(self):
        self.put({"held.dat": b"old"})
        self.told()
        self.put({"held.dat": b"new"})
        scanner = self.hold(launcher.PROGRAM.parent / HOLDER, str(self.place.directory / "held.dat"))
        session = launcher.Session(self.place, wait=False)
        self.addCleanup(session.kill)
        session.until("versions")
        # Longer than three attempts without patience take.
        threading.Timer(2.5, scanner.communicate).start()
        self.assertEqual(told(session.until("ready"))[-2:], ["Pret a jouer.", True])
        self.assertEqual(self.server.requests["/patch/f/held.dat"], 2, "one for each version")
        self.assert_files(self.place, {"held.dat": b"new"})

    def test_a_file_that_can_only_be_written_over_is(self):
        self.put({"held.dat": b"old and longer"})
        self.told()
        self.put({"held.dat": b"the next"})
        self.hold(launcher.PROGRAM.parent / HOLDER, str(self.place.directory / "held.dat"), "rw")
        self.assertEqual(self.told()[-2:], ["Pret a jouer.", True])
        self.assert_files(self.place, {"held.dat": b"the next"})

    def test_settings_in_use_are_saved_unless_a_holder_refuses_writing(self):
        settings = self.place.directory / "ostu.ini"
        save = test_options.request("saveOptions", values={"vsync": 1})
        for sharing, saves in (("", False), ("r", False), ("rd", False), ("rw", True), ("rwd", True)):
            with self.subTest(sharing=sharing):
                settings.write_bytes(b"mine 1\nvsync 0")
                process = self.hold(launcher.PROGRAM.parent / HOLDER, str(settings), sharing)
                self.assertIn({"type": "optionsSaved", "ok": saves}, self.place.run(save))
                process.communicate()
                text = b"mine 1\r\nvsync 1\r\n" if saves else b"mine 1\nvsync 0"
                self.assertEqual(self.place.files(), {"ostu.ini": text})


class MemoryTest(ScenarioTest):
    def test_verifications_keep_nothing(self):
        """Each pass has threads of its own, and what they leave adds up."""
        self.put({f"f{number}": b"x" * number for number in range(20)})
        session = launcher.Session(self.place)
        self.addCleanup(session.kill)

        def resident():
            pages = max(int(pathlib.Path(f"/proc/{number}/statm").read_text().split()[1])
                        for number in self.place.running())
            return pages * os.sysconf("SC_PAGE_SIZE") >> 20

        session.ask("verify")
        before = resident()
        for _ in range(60):
            session.ask("verify")
        self.assertLess(resident(), before + 12, "MiB")


class WindowsOptionsTest(test_options.OptionsTest):
    test_a_disk_that_fills_up_during_a_save = None  # the limit would end Wine itself
    test_owner_group_and_mode_stay = None


class WindowsNewsTest(test_news.NewsTest):
    pass


class WindowsSelfUpdateTest(test_self_update.SelfUpdateTest):
    test_death_at_every_step = None  # nothing can be put between a program and Wine


class LongPathTest(ScenarioTest):
    def test_paths_around_260_characters(self):
        """Each path arrives or is reported. (Deeper, Wine does not start the launcher itself.)"""
        for length in (200, 240):
            with self.subTest(length=length):
                server = FaultServer()
                self.addCleanup(server.close)
                self.server = server
                place = Installation(server, name="/".join(["d" * 39] * ((length - 40) // 40)))
                self.addCleanup(place.remove)
                room = 260 - len(str(place.directory)) - len("Z:/")
                files = {"a" * max(1, room + more): b"%d" % more for more in (-10, 0, 1, 10) if room + more < 200}
                self.put(files)
                lines = told(place.run())
                found = place.files()
                for name, data in files.items():
                    failed = any(str(line).startswith(f"Echec du telechargement: {name} (") for line in lines)
                    self.assertTrue(found.get(name) == data or failed or lines[-1] is False, name)
                self.assertTrue(lines[-1] is False or found == files)
                self.assertFalse([name for name in found if name not in files])


class WindowsKillTest(test_kills.KillTest):
    test_a_server_that_goes_back_is_believed = None

    def test_deaths_everywhere(self):
        self.deaths(20)
