"""Archives whose digest is right and whose content is not."""
import io
import stat
import zipfile

from game import archive
from scenario import READY, ScenarioTest


class ArchiveTest(ScenarioTest):
    def install(self, files, bundles):
        self.put(files, bundles)
        return self.update()

    def test_entries_that_leave_or_lead_elsewhere(self):
        files = {"inside": b"i" * 9000, "folder/x": b"x" * 9000}
        hostile = ["../outside", "/absolute", "\\root", "C:drive", "c:/drive", "a/../../y", "folder/../../z", "n" * 2000,
                   "unwanted", "inside/../../w"]
        out = io.BytesIO()
        with zipfile.ZipFile(out, "w", zipfile.ZIP_DEFLATED) as zip_file:
            for name, target in {"folder": "/tmp", "link": "../link-target"}.items():
                info = zipfile.ZipInfo(name)
                info.create_system = 3
                info.external_attr = (stat.S_IFLNK | 0o777) << 16
                zip_file.writestr(info, target)
            for name, data in {**dict.fromkeys(hostile, b"x"), **files}.items():
                zip_file.writestr(name, data)
        files["link"] = b"l" * 9000
        texts = self.install(files, {"z": (out.getvalue(), list(files))})
        self.assertIn("Anomalie: link absent apres extraction de z, sera repris.", texts)
        self.assertEqual(texts[-2:], READY)
        self.assert_files(self.place, {**files, "link": b"../link-target"})
        self.assertFalse([path for path in self.place.directory.rglob("*") if path.is_symlink()])
        self.assertEqual(list(self.place.root.iterdir()), [self.place.directory])

    def test_entries_that_are_missing_or_of_the_wrong_size(self):
        files = {"good": b"g" * 9000, "lacking": b"l" * 9000, "short": b"s" * 9000}
        texts = self.install(files, {"z": (archive({"good": files["good"], "short": b"s"}), list(files))})
        for path in ("lacking", "short"):
            self.assertIn(f"Anomalie: {path} absent apres extraction de z, sera repris.", texts)
        self.assertEqual(texts[-2:], READY)
        self.put(files)
        self.assertEqual(self.update()[-1], True)
        self.assert_files(self.place, files)

    def test_a_path_in_two_archives_is_written_by_one(self):
        files = {f"f{i}": b"%d" % i * 5000 for i in range(8)}
        everything = archive(files)
        for first in (everything, b"no archive"):
            self.place = self.installation()
            texts = self.install(files, {"y": (first, list(files)), "z": (everything, list(files))})
            self.assertEqual(texts[-2:], READY)
            self.assert_files(self.place, files)
