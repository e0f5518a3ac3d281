"""Disks that are full or read-only, and things that stand in the way."""
import os
import pathlib
import shutil
import subprocess
import tempfile
import unittest.mock

import mounts
from game import Game, archive, digest
from launcher import Installation, told
from scenario import CONNECT, ScenarioTest


class DiskTest(ScenarioTest):
    def small_disk(self, kilobytes):
        """An installation on a file system of its own."""
        mounts.require(self)
        folder = pathlib.Path(tempfile.mkdtemp(prefix="patcher-disk-"))
        self.addCleanup(shutil.rmtree, folder, ignore_errors=True)
        self.remount(folder, f"size={kilobytes}k")
        self.addCleanup(subprocess.run, ["umount", folder], check=True)
        return Installation(self.server, parent=folder)

    @staticmethod
    def remount(folder, options):
        subprocess.run(["mount", "-t", "tmpfs", "-o", options, "tmpfs", folder], check=True)

    def roomy(self, kilobytes):
        """The same on a disk that holds the launcher and this much more."""
        return self.small_disk(Installation.program_size() // 1024 + 64 + kilobytes)

    def test_temporary_files_do_not_follow_links(self):
        self.put({"a": b"1" * 10, "d/b": b"2" * 10})
        other = self.place.root / "other"
        other.write_bytes(b"the player's")
        (self.place.directory / "d").mkdir()
        for name in ("a.part", "d/b.part"):
            (self.place.directory / name).symlink_to(other)
        self.assertIs(self.told()[-1], True)
        self.assertEqual(other.read_bytes(), b"the player's")
        self.assertFalse((self.place.directory / "a").is_symlink())

    def test_full_disk_loses_nothing_and_recovers(self):
        files = {f"f{i}": b"%d" % i * 20000 for i in range(10)}
        for bundles in ({}, {"z": (archive(files), list(files))}):
            with self.subTest(archives=len(bundles)):
                self.put(files, bundles)
                place = self.roomy(110)
                lines = told(place.run())
                self.assertRegex(lines[-2], r"Echec du telechargement: f\d \(transfert interrompu\)")
                self.assertIs(lines[-1], False)
                self.assert_only_right_files(place, files)
                # The player makes room.
                self.remount_larger(place)
                self.server.requests.clear()
                arrived = {name for name, data in files.items() if place.files().get(name) == data}
                self.assertEqual(told(place.run())[-2:], ["Pret a jouer.", True])
                self.assert_files(place, files)
                self.assertFalse([name for name in arrived if self.server.requests[f"/patch/f/{name}"]])

    def remount_larger(self, place):
        kilobytes = Installation.program_size() // 1024 + 20480
        subprocess.run(["mount", "-o", f"remount,size={kilobytes}k", place.root], check=True)

    def assert_only_right_files(self, place, files):
        """What the record vouches for is right, and nothing temporary stays."""
        found = place.files()
        try:
            entries = place.record()["files"]
        except ValueError:
            entries = []
        for entry in entries:
            self.assertEqual(digest(found[entry["path"]]), entry["sha256"], entry["path"])
        self.assertFalse([name for name in found if name.endswith(".part")])

    def test_read_only_directory(self):
        self.put({"a": b"1", "sub/b": b"2"})
        place = self.roomy(200)
        place.write("a", b"old")
        place.write("left.old", b"")
        subprocess.run(["mount", "-o", "remount,ro", place.root], check=True)
        lines = told(place.run())
        self.assertEqual(lines[:4][-1], "2 fichier(s) a telecharger...")
        self.assertRegex(lines[-2], r"Echec du telechargement: (a|sub/b) \(transfert interrompu\)")
        self.assert_files(place, {"a": b"old", "left.old": b""})

    def test_things_in_the_way(self):
        self.place.write("file/mine", b"kept")
        self.place.write("left.old", b"")
        self.place.write("_bundle7.part", b"")
        self.place.write("sub/left.old", b"kept")
        (self.place.directory / "folder.old").mkdir()
        self.put({"file": b"new"})
        self.assertEqual(self.told()[-1], True)
        self.place.write("patch_manifest.json.part", b"cut")
        self.assertEqual(self.told()[-1], True)
        self.assert_files(self.place, {"file": b"new", "file.old/mine": b"kept", "sub/left.old": b"kept"})
        self.assertTrue((self.place.directory / "folder.old").is_dir())
        self.put({"file/below": b"x"})
        self.assertEqual(self.told()[-2:], ["Echec du telechargement: file/below (transfert interrompu)", False])
        self.assertTrue([line for line in self.place.log() if line.startswith("ofstream ") and " mkdir_ec=" in line])
        self.assertEqual(self.place.files()["file"], b"new")

    def test_directories_where_archives_want_files(self):
        files = {"a": b"a" * 5000, "b": b"b" * 5000}
        self.place.write("a/mine", b"kept")
        self.put(files, {"z": (archive(files), ["a", "b"])})
        self.assertEqual(self.told()[-2:], ["Pret a jouer.", True])
        self.assert_files(self.place, {**files, "a.old/mine": b"kept"})

    def test_own_files_that_cannot_be_written(self):
        self.put({"a": b"1"})
        good, bad = ["Pret a jouer.", True], ["Echec du telechargement: a (transfert interrompu)", False]
        for name, end in (("patch_manifest.json", good), ("patcher_debug.txt", good), ("a.part", bad)):
            with self.subTest(name=name):
                place = self.installation()
                (place.directory / name / "in the way").mkdir(parents=True)
                self.assertEqual(told(place.run())[-2:], end)
                self.assert_files(place, {"a": b"1"} if end == good else {})

    def test_a_configuration_that_cannot_be_read_gives_the_defaults(self):
        ini = self.place.directory / "patcher.ini"
        ini.unlink()
        ini.mkdir()
        # The default server is out of reach without a look at the network.
        with unittest.mock.patch.dict(os.environ, https_proxy="http://127.0.0.1:1"):
            self.assertEqual(self.told(), [CONNECT, "Serveur de patch injoignable.", "offline", False])
        self.assertTrue(ini.is_dir())

    def test_a_record_cut_at_any_byte_costs_no_download(self):
        game = Game(7, 12)
        game.publish(self.server)
        self.told()
        record = self.place.directory / "patch_manifest.json"
        whole = record.read_bytes()
        record.unlink()
        self.told()  # the record in the launcher's own form
        for text in (whole, record.read_bytes()):
            for end in range(0, len(text), len(text) // 25):
                for torn in (text[:end], text[:end] + b"\0" * (len(text) - end)):
                    record.write_bytes(torn)
                    self.server.requests.clear()
                    self.assertEqual(self.told()[-2:], ["A jour.", True])
                    self.assertEqual(list(self.server.requests), ["/patch/version.json"])
        self.assert_files(self.place, game.files)
