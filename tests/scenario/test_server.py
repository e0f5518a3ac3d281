"""A server that is down, silent, or sends what it should not."""
import socket
import threading

from fault_server import FaultServer
from game import archive, digest, publish_manifest
from launcher import Installation, is_windows, told
from scenario import CONNECT, INVALID, ScenarioTest

UNREACHABLE = [CONNECT, "Serveur de patch injoignable.", "offline", False]


class ServerTest(ScenarioTest):
    def test_no_answer_or_none_that_counts(self):
        self.put({"a": b"1"})
        for fault in (404, 500, 206, 204, 304, ("reset",), ("redirect", "/patch/version.json"),
                      ("redirect", "http://127.0.0.1:1/"), ("redirect", "ftp://127.0.0.1/x"), ("redirect", "")):
            with self.subTest(fault=fault):
                self.server.faults = {"/patch/version.json": [fault]}
                self.assertEqual(self.told(), UNREACHABLE)
        with socket.create_server(("127.0.0.1", 0)) as listener:
            port = listener.getsockname()[1]
        self.place.set_server(f"http://127.0.0.1:{port}")
        self.assertEqual(self.told(), UNREACHABLE)
        self.assertTrue(self.place.log()[-1].startswith("SendRequest /patch/version.json err="))
        self.assert_files(self.place, {})

    def test_silence_ends(self):
        """All at once, since each waits for the launcher's own limit."""
        document = self.put({"a": b"1" * 100})
        cases = {
            "no head": ({"/patch/version.json": [("silent", None)]}, UNREACHABLE),
            "document": ({"/patch/version.json": [("silent", len(document) // 2)]}, [CONNECT, "online", INVALID, False]),
            "body": ({"/patch/f/a": [("silent", 50), None]},
                     [CONNECT, "online", (0, 3), "1 fichier(s) a telecharger...", (3, 3), "Pret a jouer.", True]),
        }
        results = {}

        def run(name, place):
            results[name] = told(place.run())

        threads = []
        for name, (faults, _) in cases.items():
            server = FaultServer()
            self.addCleanup(server.close)
            server.content, server.faults = dict(self.server.content), faults
            place = Installation(server)
            self.addCleanup(place.remove)
            threads.append(threading.Thread(target=run, args=(name, place)))
        # Only now: a process that one of them makes would hold a program open that is still being written.
        for thread in threads:
            thread.start()
        for thread in threads:
            thread.join()
        self.assertEqual(results, {name: expected for name, (_, expected) in cases.items()})

    def test_document_cut_at_any_byte(self):
        document = self.put({"a/b c.txt": b"1", "d": b""}, {"z": (b"x", ["d"])})
        for end in [*range(0, len(document), 9), len(document) - 1]:
            for fault in (("cut", end), ("chunked-cut", end)):
                self.server.faults = {"/patch/version.json": [fault]}
                self.assertEqual(self.told(), [CONNECT, "online", INVALID, False], fault)
        self.assert_files(self.place, {})

    def test_bodies_cut_at_any_byte(self):
        ends = [*range(0, 24), 8191, 8192, 8193, 65535, 65536, 65537, 131071, 131072, 199998, 199999]
        files = {f"cut at {end}": b"%d-" % end * 30000 for end in ends}
        files = {path: data[:200000] for path, data in files.items()}
        self.put(files)
        self.server.faults = {f"/patch/f/cut at {end}": [("chunked-cut" if end % 2 else "cut", end), None]
                              for end in ends}
        self.place.set_server(self.server.url(), connections=8)
        self.assertEqual(self.told()[-2:], ["Pret a jouer.", True])
        self.assert_files(self.place, files)

    def test_bodies_and_documents_without_end(self):
        files = {"endless": b"1" * 9, "announced": b"2"}
        self.put(files)
        self.server.faults = {"/patch/f/endless": [("endless",), None],
                              "/patch/f/announced": [("announced", 2**28 + 2), None]}
        self.assertEqual(self.told()[-2:], ["Pret a jouer.", True])
        self.assert_files(self.place, files)
        self.assertEqual(sorted(self.place.log()), [f"TooLarge /patch/f/announced limit={2**28 + 1}",
                                                    f"TooLarge /patch/f/endless limit={2**28 + 9}"])
        self.server.faults = {"/patch/version.json": [("endless",)]}
        self.assertEqual(self.told(), [CONNECT, "online", INVALID, False])

    def test_an_archive_that_recovers_is_used(self):
        game = {f"a{i}": b"%d" % i * 4000 for i in range(6)}
        whole = archive(game)
        for faults in ([("cut", 1), ("cut", len(whole) - 1), None], [("wrong",), None], [500, ("chunked",)]):
            with self.subTest(faults=faults):
                self.put(game, {"z": (whole, list(game))})
                self.server.faults = {"/patch/z": list(faults)}
                place = self.installation()
                self.assertEqual(told(place.run())[3:], ["6 fichier(s) via 1 archive(s)...", "Archive 1/1 : z",
                                                         (3, 3), "Pret a jouer.", True])
                self.assert_files(place, game)
        self.assertFalse([path for path in self.server.requests if path.startswith("/patch/f/")])

    def test_a_digest_in_capitals_is_another_one(self):
        entry = self.entry("a", b"abc")
        self.put({"a": b"abc"})
        publish_manifest(self.server, {"files": [{**entry, "sha256": entry["sha256"].upper()}]})
        self.assertEqual(self.told()[-2:], ["Echec du telechargement: a (contenu incorrect)", False])

    def test_wrong_bytes_and_how_often_they_are_asked_for(self):
        for wrong, asked, end in ((1, 2, True), (2, 3, True), (9, 3, False)):
            with self.subTest(wrong=wrong):
                path = f"file {wrong}"
                self.put({path: b"content" * 100})
                self.server.faults = {f"/patch/f/{path}": [("wrong",)] * wrong + [None]}
                self.assertEqual(self.told()[-1], end)
                self.assertEqual(self.server.requests[f"/patch/f/{path}"], asked)
        # The wrong bytes stand there, but nobody believes them.
        self.server.faults = {}
        self.assertEqual(self.told()[-2:], ["Pret a jouer.", True])
        self.assertEqual(self.place.files()["file 9"], b"content" * 100)

    def test_what_was_on_disk_survives_a_failed_transfer(self):
        self.put({"a": b"old"})
        self.told()
        self.put({"a": b"new content"})
        # On Windows a body that was cut may pass for one that ended, until its digest is compared.
        cuts = () if is_windows() else (("cut", 5), ("chunked-cut", 5))
        for fault in (404, 206, ("reset",), ("redirect", "/patch/f/a"), *cuts):
            with self.subTest(fault=fault):
                self.server.faults = {"/patch/f/a": [fault]}
                self.assertEqual(self.told()[-2:], ["Echec du telechargement: a (transfert interrompu)", False])
                self.assert_files(self.place, {"a": b"old"})
                self.assertEqual(self.place.record()["files"], [{"path": "a", "sha256": digest(b"old")}])
        self.server.faults = {"/patch/f/a": [("wrong",), ("wrong",), 404]}
        self.assertEqual(self.told()[-1], False)
        self.assertEqual(self.place.record()["files"], [], "nobody vouches for what was written over")

    def test_documents_that_make_no_sense(self):
        for document in (b"", b"<!DOCTYPE html><html>", b"[" * 300, b'{"files":[{"path":"a","size":1e999}]}',
                         b'{"version":1', b"nul", b"\xff\xfe{}", b'{"files":[{"path":"\\uD8'):
            with self.subTest(document=document):
                self.server.content["/patch/version.json"] = document
                self.assertEqual(self.told(), [CONNECT, "online", INVALID, False])
        for document in ([], 3, "text", {"files": 5, "bundles": "x"}, {"files": [], "version": "7"},
                         {"bundles": [{"name": "a"}, 7, {"sha256": "0"}]}):
            with self.subTest(document=document):
                publish_manifest(self.server, document)
                self.assertEqual(self.told()[-2:], ["A jour.", True])

    def test_absurd_numbers(self):
        files = {"a": b"a" * 50}
        for size in (-1, 2**63, 2**64, 1e300, "1", None):
            with self.subTest(size=size):
                publish_manifest(self.server, {"files": [{**self.entry("absent", b""), "size": size}]})
                self.assertEqual(self.told()[-2:], ["Echec du telechargement: absent (transfert interrompu)", False])
                self.put(files, version=size)
                publish_manifest(self.server, {
                    "version": size, "files": [self.entry("a", files["a"])],
                    "bundles": [{"name": "z", "size": size, "sha256": "0" * 64, "files": ["a", 7, None, {}]}]})
                place = self.installation()
                self.assertEqual(told(place.run())[-2:], ["Pret a jouer.", True])
                self.assert_files(place, files)

    def test_paths_that_leave_are_refused_before_anything_is_touched(self):
        before = {"mine.txt": b"kept", "sub/mine.txt": b"kept"}
        for path, data in before.items():
            self.place.write(path, data)
        for path in ("..", "../x", "a/../../x", "a/..", "/", "/tmp/x", "\\x", "\\\\host\\share\\x", "C:x", "C:/x",
                     "c:\\x", "a\\..\\..\\x", "a/... /x", ".. /x", "./../x"):
            with self.subTest(path=path):
                self.server.requests.clear()
                self.put({"mine.txt": b"new", path: b"2"})
                self.assertEqual(self.told(), [CONNECT, "online", INVALID, False])
                self.assertEqual(list(self.server.requests), ["/patch/version.json"])
                self.assert_files(self.place, before)
                self.assertEqual([entry.name for entry in self.place.root.iterdir()], [self.place.directory.name])
