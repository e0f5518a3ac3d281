"""Archives whose digest is right and whose content is not."""
import io
import stat
import zipfile

from game import archive
from launcher import told
from scenario import ScenarioTest


def with_links(links, files):
    """A ZIP with symbolic-link entries (name: target) in front of ordinary ones."""
    out = io.BytesIO()
    with zipfile.ZipFile(out, "w", zipfile.ZIP_DEFLATED) as zip_file:
        for name, target in links.items():
            info = zipfile.ZipInfo(name)
            info.create_system = 3
            info.external_attr = (stat.S_IFLNK | 0o777) << 16
            zip_file.writestr(info, target)
        for name, data in files.items():
            zip_file.writestr(name, data)
    return out.getvalue()


class ArchiveTest(ScenarioTest):
    def install(self, files, bundles):
        self.put(files, bundles)
        place = self.installation()
        return place, told(place.run())

    def test_archives_that_cannot_be_read_hand_over_their_files(self):
        files = {"a": bytes(range(256)) * 40, "b/c d": b"text " * 2000}
        whole = archive(files)
        damaged = bytearray(whole)
        damaged[whole.rfind(b"PK\x01\x02") + 42] ^= 0x7f  # where the last entry's data begins
        false_crc = bytearray(whole)
        false_crc[whole.find(b"PK\x01\x02") + 16] ^= 1
        unreadable = {"empty": b"", "page": b"<html>", "cut in the data": whole[:500], "cut at the end": whole[:-1],
                      "cut in the directory": whole[:whole.rfind(b"PK\x01\x02") + 20], "offset": bytes(damaged),
                      "false CRC": bytes(false_crc)}
        for name, data in unreadable.items():
            with self.subTest(archive=name):
                place, lines = self.install(files, {"z": (data, list(files))})
                failed = [line for line in lines if str(line).startswith("Archive illisible: z (")]
                self.assertEqual(len(failed), 1, lines)
                self.assertIn("2 fichier(s) d archive(s) manquante(s) seront pris un par un.", lines)
                self.assertEqual(lines[-2:], ["Pret a jouer.", True])
                self.assert_files(place, files)
                self.assertEqual(self.server.requests["/patch/z"], 1, "a good digest is not fetched again")
                self.server.requests.clear()

    def test_entries_that_would_leave_or_lead_elsewhere(self):
        files = {"inside": b"i" * 9000, "link": b"l" * 9000, "folder/x": b"x" * 9000}
        hostile = {"../outside": "x", "/absolute": "x", "\\root": "x", "C:drive": "x", "c:/drive": "x", "a/../../y": "x",
                   "folder/../../z": "x", "n" * 2000: "x", "unwanted": "x", "inside/../../w": "x"}
        data = with_links({"folder": "/tmp", "link": "../link-target"},
                          {name: data for name, data in {**hostile, **files}.items() if name != "link"})
        place, lines = self.install(files, {"z": (data, list(files))})
        self.assertIn("Anomalie: link absent apres extraction de z, sera repris.", lines)
        self.assertEqual(lines[-2:], ["Pret a jouer.", True])
        self.assert_files(place, {**files, "link": b"../link-target"})
        self.assertFalse([path for path in place.directory.rglob("*") if path.is_symlink()])
        self.assertEqual([entry.name for entry in place.root.iterdir()], [place.directory.name])

    def test_entries_that_are_missing_or_of_the_wrong_size(self):
        files = {"good": b"g" * 9000, "lacking": b"l" * 9000, "short": b"s" * 9000}
        data = archive({"good": files["good"], "short": b"s"})
        place, lines = self.install(files, {"z": (data, list(files))})
        for path in ("lacking", "short"):
            self.assertIn(f"Anomalie: {path} absent apres extraction de z, sera repris.", lines)
        self.assertEqual(lines[-2:], ["Pret a jouer.", True])
        self.put(files)
        self.assertEqual(told(place.run())[-1], True)
        self.assertEqual(place.files()["lacking"], files["lacking"])

    def test_a_path_in_two_archives_is_written_by_one(self):
        files = {f"f{i}": b"%d" % i * 5000 for i in range(8)}
        everything = archive(files)
        for first in (everything, b"no archive"):
            place, lines = self.install(files, {"y": (first, list(files)), "z": (everything, list(files))})
            self.assertEqual(lines[-2:], ["Pret a jouer.", True])
            self.assert_files(place, files)
