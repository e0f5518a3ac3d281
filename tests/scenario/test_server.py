"""A server that is silent, sends bad bodies, or has archives with the right digest and bad content."""
import concurrent.futures
import io
import stat
import zipfile

from fault_server import FaultServer
from game import MANIFEST
from launcher import Installation
from scenario import CONNECT, INVALID, READY, ScenarioTest


class ServerTest(ScenarioTest):
    def test_silence_ends(self):
        document = self.put({"a": b"1" * 100})
        cases = [({MANIFEST: [("silent", None)]}, [CONNECT, "Serveur de patch injoignable.", "offline", False]),
                 ({MANIFEST: [("silent", len(document) // 2)]}, [CONNECT, "online", INVALID, False]),
                 ({"/patch/f/a": [("silent", 50), None]},
                  [CONNECT, "online", (0, 3), "1 fichier(s) a telecharger...", (3, 3), *READY])]
        places = [self.installation_with(faults) for faults, _ in cases]
        # All at once, since each waits for the launcher's own limit.
        with concurrent.futures.ThreadPoolExecutor() as pool:
            self.assertEqual(list(pool.map(Installation.update, places)), [end for _, end in cases])

    def installation_with(self, faults):
        server = FaultServer()
        self.addCleanup(server.close)
        server.content, server.faults = self.server.content, faults
        return self.installation(server)

    def test_bodies_that_are_cut_or_without_end(self):
        ends = [0, 1, 2, 3, 8191, 8192, 65535, 65536, 131071, 131072, 199998, 199999]
        files = {f"cut at {end}": (b"%d-" % end * 100000)[:200000] for end in ends}
        files |= {"endless": b"1" * 9, "announced": b"2"}
        self.put(files)
        self.server.faults = {f"/patch/f/cut at {end}": [("chunked-cut" if end % 2 else "cut", end), None]
                              for end in ends}
        self.server.faults |= {"/patch/f/endless": [("endless",), None],
                               "/patch/f/announced": [("announced", 2**28 + 2), None]}
        self.place.set_server(self.server.url(), connections=8)
        self.assert_ends(READY)
        self.assert_files(self.place, files)
        self.assertLessEqual({f"TooLarge /patch/f/announced limit={2**28 + 1}",
                              f"TooLarge /patch/f/endless limit={2**28 + 9}"}, set(self.place.log()))

    def test_archive_entries_that_leave_or_lead_elsewhere(self):
        files = {"inside": b"i" * 9000, "folder/x": b"x" * 9000}
        hostile = ["../outside", "/absolute", "\\root", "C:drive", "folder/../../z", "n" * 2000, "unwanted", "inside/../../w"]
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
        self.put(files, {"z": (out.getvalue(), list(files))})
        self.assert_ends(READY)
        self.assert_files(self.place, {**files, "link": b"../link-target"})
        self.assertFalse([path for path in self.place.directory.rglob("*") if path.is_symlink()])
        self.assertEqual(list(self.place.root.iterdir()), [self.place.directory])
