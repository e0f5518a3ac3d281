"""The behaviour of Windows only: files in use. The other scenarios also run with the Windows program, under Wine."""
import threading

import launcher
import test_kills
import test_news
import test_options
import test_self_update
import test_server
import test_update
from launcher import summary
from scenario import DELETE, READ, WRITE, READY, UP_TO_DATE, ScenarioTest, failed


class WindowsUpdateTest(test_update.UpdateTest):
    test_archive_entries = test_server.ServerTest.test_archive_entries_that_leave_or_lead_elsewhere
    test_a_run_whose_reader_goes_away_is_finished = None
    test_another_spelling_of_a_changed_file_is_not_recorded = None
    test_play_starts_the_client_with_its_token = None


class FilesInUseTest(ScenarioTest):
    def change(self, path, old, new, **others):
        """Installs the first version and publishes the next one."""
        self.put({path: old, **others})
        self.update()
        self.put({path: new, **others})

    def test_a_running_program_is_moved_aside(self):
        holder = launcher.beside_program("hold_file").read_bytes()
        self.change("sub/game.exe", holder, b"the next version")
        process = self.hold_file(program=self.place / "sub" / "game.exe")
        self.assert_ends(READY)
        self.assert_files(self.place, {"sub/game.exe": b"the next version", "sub/game.exe.old": holder})
        process.communicate()
        self.assert_ends(UP_TO_DATE)

    def test_a_held_file_fails_clearly(self):
        for path, end in (("held.dat", failed("held.dat")), ("patch_manifest.json", [
                "Impossible de mettre a jour patch_manifest.json, aucun fichier modifie.", False])):
            with self.subTest(path=path):
                self.change("held.dat", b"old", b"the next version", a=b"1")
                process = self.hold_file(self.place / path)
                self.assert_ends(end)
                self.assert_files(self.place, {"held.dat": b"old", "a": b"1"})
                process.communicate()
                self.assert_ends(READY)
                self.assert_files(self.place, {"held.dat": b"the next version", "a": b"1"})
        self.assertTrue([line for line in self.place.log() if line.startswith("rename+copy ")])

    def test_a_file_that_a_scanner_holds_is_waited_for(self):
        self.change("held.dat", b"old", b"new")
        scanner = self.hold_file(self.place / "held.dat")
        session = self.session(wait=False)
        session.until("versions")
        # Longer than three immediate attempts take.
        threading.Timer(2.5, scanner.communicate).start()
        self.assertEqual(summary(session.until("ready"))[-2:], READY)
        self.assertEqual(self.server.requests["/patch/f/held.dat"], 2, "one for each version")
        self.assert_files(self.place, {"held.dat": b"new"})

    def test_a_file_that_can_only_be_overwritten_is(self):
        self.change("held.dat", b"old and longer", b"the next")
        self.hold_file(self.place / "held.dat", READ | WRITE)
        self.assert_ends(READY)
        self.assert_files(self.place, {"held.dat": b"the next"})

    def test_settings_in_use_are_saved_unless_the_holder_refuses_writing(self):
        for sharing, saves in ((0, False), (READ | DELETE, False), (READ | WRITE, True)):
            with self.subTest(sharing=sharing):
                self.place.write("ostu.ini", b"mine 1\nvsync 0")
                process = self.hold_file(self.place / "ostu.ini", sharing)
                self.assertIn({"type": "optionsSaved", "ok": saves}, self.place.run(test_options.save(vsync=1)))
                process.communicate()
                text = b"mine 1\r\nvsync 1\r\n" if saves else b"mine 1\nvsync 0"
                self.assertEqual(self.place.files(), {"ostu.ini": text})


class WindowsOptionsTest(test_options.OptionsTest):
    test_owner_group_and_mode_stay = None


class WindowsNewsTest(test_news.NewsTest):
    test_only_the_sites_links_leave = None  # the pipe and the program are Linux's


class WindowsSelfUpdateTest(test_self_update.SelfUpdateTest):
    test_death_at_every_step = None  # nothing can be put between a program and Wine


class WindowsKillTest(test_kills.KillTest):
    pass
