"""Disks that are full or read-only, and things in the way."""
import json
import os

import mounts
from game import archive
from launcher import Installation
from scenario import READY, UP_TO_DATE, ScenarioTest, failed


class DiskTest(ScenarioTest):
    def small_disk(self, kilobytes):
        """Makes an installation on its own file system, with this much room until the file `filler` is removed."""
        mounts.require(self, "root", "user")
        place = Installation(self.server, parent=mounts.memory_disk(self, "200m"))
        status = os.statvfs(place.root)
        (place.root / "filler").write_bytes(bytes(status.f_bavail * status.f_bsize - kilobytes * 1024))
        return place

    def test_full_disk_loses_nothing_and_recovers(self):
        files = {f"f{i}": b"%d" % i * 20000 for i in range(10)}
        for bundles in ({}, {"z": (archive(files), list(files))}):
            with self.subTest(archives=len(bundles)):
                self.put(files, bundles)
                place = self.small_disk(170)
                texts = place.update()
                self.assertRegex(texts[-2], r"Echec du telechargement: f\d \(transfert interrompu\)")
                self.assertIs(texts[-1], False)
                found = place.files()
                self.assertEqual(place.wrongly_recorded({}), [])
                self.assertFalse([name for name in found if name.endswith(".part")])
                (place.root / "filler").unlink()
                self.server.requests.clear()
                self.assert_ends(READY, place)
                self.assert_files(place, files)
                self.assertFalse([name for name in found if self.server.requests[f"/patch/f/{name}"]])
                record = json.loads(place.record_file.read_bytes())
                record["files"].pop()
                place.record_file.write_text(json.dumps(record), encoding="ascii")
                status = os.statvfs(place.root)
                (place.root / "filler").write_bytes(bytes(status.f_bavail * status.f_bsize))
                self.assert_ends(UP_TO_DATE, place)
                self.put({**files, "more": bytes(50000)})
                self.assertIs(place.update()[-1], False)
                self.assertEqual(len(place.recorded()), len(files) - 1, "a record that cannot be replaced stays")

    def test_things_in_the_way(self):
        packed = {"packed": b"a" * 5000, "too": b"b" * 5000}
        self.place.put(dict.fromkeys(("file/mine", "packed/mine", "sub/left.old", "left.old", "_bundle7.part"), b"kept"))
        (self.place / "folder.old").mkdir()
        other = self.place.root / "other"
        other.mkdir()
        (other / "mine").write_bytes(b"the player's")
        for name in ("new.part", "link"):
            (self.place / name).symlink_to(other / "mine")
        (self.place / "moved").symlink_to(other)
        self.place.write("too", b"the player's")
        os.link(self.place / "too", other / "backup")
        files = {"file": b"new", "new": b"1", "link": b"2", "moved/a": b"3", **packed}
        self.put(files, {"z": (archive(packed), list(packed))})
        self.assertEqual(self.update()[-1], True)
        self.place.write("patch_manifest.json.part", b"cut")
        self.assertEqual(self.update()[-1], True)
        self.assertEqual([(other / name).read_bytes() for name in ("a", "mine", "backup")],
                         [files.pop("moved/a"), b"the player's", b"the player's"])
        kept = dict.fromkeys(("file.old/mine", "packed.old/mine", "sub/left.old"), b"kept")
        self.assert_files(self.place, {**files, **kept})
        self.assertTrue((self.place / "folder.old").is_dir())
        self.assertFalse((self.place / "new").is_symlink() or (self.place / "link").is_symlink())
        self.put({"file/below": b"x"})
        self.assert_ends(failed("file/below"))
        self.assertTrue([line for line in self.place.log() if line.startswith("ofstream ") and " mkdir_ec=" in line])
        self.assertEqual(self.place.files()["file"], b"new")

    def test_own_files_that_are_directories(self):
        """Without a configuration the launcher asks the default server, which cannot be reached."""
        self.put({"a": b"1"})
        unreachable = ["Serveur de patch injoignable.", "offline", False]
        for name, end in {"patch_manifest.json": READY, "patcher_debug.txt": READY, "a.part": failed("a"),
                          "patcher.ini": unreachable}.items():
            with self.subTest(name=name):
                place = self.installation()
                (place / name).unlink(missing_ok=True)
                (place / name / "in the way").mkdir(parents=True)
                self.assertEqual(place.update()[-len(end):], end)
                self.assert_files(place, {"a": b"1"} if end == READY else {})
