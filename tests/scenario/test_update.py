"""What an update run does and reports, as the page would see it."""
import subprocess

from game import MANIFEST, Game, archive, digest
from launcher import is_windows, wait_until
from scenario import CONNECT, INVALID, READY, UP_TO_DATE, ScenarioTest, failed


class UpdateTest(ScenarioTest):
    def test_fresh_install_then_nothing_to_do_then_a_record_that_is_lost_or_torn(self):
        separator = "\\" if is_windows() else "/"
        game = Game(1, 120)
        manifest = game.publish(self.server)
        self.place.put(dict.fromkeys(("Model/old.o3d", "x64/log/a.txt", "top.txt"), b""))
        self.assertEqual(self.update(), [
            CONNECT, "online", (0, 1), "121 fichier(s) a telecharger...",
            f"1 fichier(s) residuel(s) supprime(s) (hors manifeste) : Model{separator}old.o3d; ",
            "1 element(s) obsolete(s) supprime(s) : x64 (doublon du client 64 bits, desormais a la racine); ",
            (1, 1), *READY])
        self.place.write("Model/again.o3d")
        self.assertEqual(self.place.record_file.read_bytes(), manifest)
        self.assertLessEqual(self.server.connections, 8, "connections are used again")
        self.assertEqual(self.update(), [CONNECT, "online", (1, 1), *UP_TO_DATE])
        hashing = [f"Verification des fichiers deja presents ({i})..." for i in (1, 26, 51, 76, 101)]
        for torn in (b"", manifest[:len(manifest) // 2], bytes(len(manifest)), None):
            self.place.put({"patch_manifest.json": torn})
            self.server.requests.clear()
            self.assertEqual(self.update(), [CONNECT, "online", (0, 1), *hashing,
                                             "121 fichier(s) deja corrects retrouves sur le disque.", *UP_TO_DATE])
            self.assertEqual(set(self.server.requests), {MANIFEST})
        self.assertIn(b'"version": 0', self.place.record_file.read_bytes())
        self.assert_files(self.place, {**game.files, "top.txt": b"", "Model/again.o3d": b""})
        self.assertFalse(self.place.log())

    def test_archives_are_taken_when_cheaper(self):
        game = Game(2, 60, archives=2)
        game.publish(self.server)
        self.server.faults["/patch/archive 0-v1.zip"] = [("cut", 100), ("wrong",), ("chunked",)]
        texts = self.update()
        self.assertEqual(texts[3], "61 fichier(s) via 2 archive(s)...")
        # Two workers begin at the same time.
        self.assertEqual(sorted(line[:12] for line in texts[4:6]), ["Archive 1/2 ", "Archive 2/2 "])
        self.assertEqual(texts[-2:], READY)
        self.assert_files(self.place, game.files)
        self.assertFalse([path for path in self.server.requests if path.startswith("/patch/f1/")])

    def test_failed_archives_fall_back_to_single_files(self):
        files = {f"a{i}": b"%d" % i * 4000 for i in range(7)}
        bad_crc = bytearray(archive({"a3": files["a3"]}))
        bad_crc[bad_crc.rfind(b"PK\x01\x02") + 16] ^= 1
        self.put(files, {"good": ["a0", "a1"], "gone": (b"x", ["a2"]), "crc": (bytes(bad_crc), ["a3"]),
                         "page": (b"<html>", ["a4"]), "poor": (archive({"a6": b"short"}), ["a5", "a6"]),
                         # Only the first archive of a path may write it, even if that archive fails.
                         "late": (archive({name: b"x" * 4000 for name in ("a0", "a2")}), ["a0", "a2"])})
        del self.server.content["/patch/gone"]
        self.place.set_server(self.server.url(), connections=1)
        texts = self.update()
        for text in ("Archive indisponible: gone (transfert interrompu) - ses fichiers seront pris un par un.",
                     "Archive illisible: crc (a3) - ses fichiers seront pris un par un.",
                     "Archive illisible: page (archive illisible) - ses fichiers seront pris un par un.",
                     "Anomalie: a5 absent apres extraction de poor, sera repris.",
                     "Anomalie: a6 absent apres extraction de poor, sera repris.",
                     "3 fichier(s) d archive(s) manquante(s) seront pris un par un."):
            self.assertIn(text, texts)
        self.assertEqual(texts[-2:], READY)
        self.assert_files(self.place, {**{name: files[name] for name in sorted(files)[:5]}, "a6": b"short"})
        self.assertEqual(self.server.requests["/patch/page"], 1, "a good digest is not fetched again")
        self.put(files)
        self.assert_ends(READY)
        self.assert_files(self.place, files)

    def test_transfers_that_fail_and_recover(self):
        files = {"wrong twice": b"a" * 70000, "cut": b"b" * 70000, "chunked": b"c" * 70000, "moved": b"d" * 70000,
                 "empty": b"", "reset": b"e"}
        self.put(files)
        self.server.content["/patch/elsewhere"] = files["moved"]
        self.server.faults = {"/patch/f/wrong twice": [("wrong",), ("wrong",), None],
                              "/patch/f/cut": [("cut", 65537), None], "/patch/f/chunked": [("chunked",)],
                              "/patch/f/moved": [("redirect", "/patch/elsewhere")],
                              "/patch/f/reset": [("reset",), 500, None]}
        messages = self.place.run()
        self.assertEqual(messages[-1], {"type": "ready", "canPlay": True})
        last = [m for m in messages if m["type"] == "progress"][-1]
        self.assertEqual((last["downloadedBytes"], last["percent"]), (280001, 100), "failed attempts do not count")
        self.assert_files(self.place, files)
        self.assertEqual(self.server.requests["/patch/f/wrong twice"], 3)
        self.assertIn("Status 500 /patch/f/reset", self.place.log())
        if not is_windows():  # there a body that was cut may pass for one that ended, until its digest is compared
            self.assertTrue([line for line in self.place.log() if line.startswith("QueryDataAvailable /patch/f/cut err=")])

    def test_a_file_that_cannot_be_fetched_ends_the_run(self):
        """The disk and the record keep what was there before."""
        self.put({"a": b"1", "b": b"old"})
        self.update()
        self.put({"a": b"1", "b": b"new content"})
        # On Windows a body that was cut may pass for one that ended, until its digest is compared.
        cuts = () if is_windows() else (("cut", 5), ("chunked-cut", 5))
        for fault in (404, 206, ("reset",), ("redirect", "/patch/f/b"), *cuts):
            with self.subTest(fault=fault):
                self.server.faults = {"/patch/f/b": [fault]}
                self.assert_ends(failed("b"))
                self.assert_files(self.place, {"a": b"1", "b": b"old"})
                self.assertEqual(self.place.recorded(), {"a": digest(b"1"), "b": digest(b"old")})
        self.server.faults = {"/patch/f/b": [("wrong",), ("wrong",), 404]}
        self.assert_ends(failed("b"))
        self.assertEqual(list(self.place.recorded()), ["a"], "what was overwritten is not recorded")
        self.server.requests.clear()
        self.server.faults = {"/patch/f/b": [("wrong",)]}
        self.assert_ends(failed("b", "contenu incorrect"))
        self.assertEqual(self.server.requests["/patch/f/b"], 3)
        self.place.write("Tolmira.exe")
        self.assertEqual(self.update()[-1], True)

    def test_a_server_out_of_reach_or_without_a_usable_document(self):
        self.place.write("Tolmira.exe")  # which may not be played with an unusable document
        document = self.put({"a": b""})
        unusable = [(document, (kind, end)) for kind in ("cut", "chunked-cut") for end in (0, len(document) - 1)]
        unusable += [(b"<html>", None), (b'{"files":[{"path":"../x","url":"x"}]}', None), (b"{", ("endless",))]
        for document, fault in unusable:
            self.server.content[MANIFEST], self.server.faults[MANIFEST] = document, [fault]
            self.assertEqual(self.update(), [CONNECT, "online", INVALID, False], fault)
            self.assertEqual(list(self.server.requests), [MANIFEST])
        self.place.put({"Tolmira.exe": None})
        unreachable = [CONNECT, "Serveur de patch injoignable.", "offline", False]
        for fault in (404, 500, 206, 204, ("reset",), ("redirect", MANIFEST), ("redirect", "http://127.0.0.1:1/"),
                      ("redirect", "ftp://127.0.0.1/x"), ("redirect", "")):
            with self.subTest(fault=fault):
                self.server.faults = {MANIFEST: [fault]}
                self.assertEqual(self.update(), unreachable)
        self.place.set_server("http://127.0.0.1:1")
        self.assertEqual(self.update(), unreachable)
        self.assertTrue(self.place.log()[-1].startswith(f"SendRequest {MANIFEST} err="))
        self.place.write("Tolmira.exe")
        self.assertEqual(self.update(), [*unreachable[:3], "Hors ligne : utilisation des fichiers deja installes.", True])
        self.place.set_server("non\tsense")  # a raw tab would make the page refuse the message
        self.assertEqual(self.update(), [CONNECT, "URL de patch invalide: non sense", "offline", True])

    def test_a_run_whose_reader_goes_away_is_finished(self):
        self.put({"a": b"1"})
        process = self.place.start(subprocess.DEVNULL)
        self.assertIn(b'"options"', process.stdout.readline())
        process.stdout.close()
        self.assertEqual((process.stderr.read(), process.wait()), (b"", 0))
        process.stderr.close()
        self.assert_files(self.place, {"a": b"1"})

    def test_another_spelling_of_a_changed_file_is_not_recorded(self):
        old = {"./Data": b"one", "game.dll.old": b"old", "kept": b"same"}
        self.put(old)
        self.update()
        self.put({"Data": b"two", "game.dll": b"new", "kept": b"same", "z": b"never"})
        self.server.faults["/patch/f/z"] = [404]
        self.assertIs(self.update()[-1], False)
        self.assertEqual(set(self.place.recorded()), {"Data", "game.dll", "kept"})
        self.put(old)
        self.assert_ends(READY)
        self.assertEqual((self.place / "Data").read_bytes(), b"one")

    def test_play_starts_the_client_with_its_token(self):
        session = self.installed(Game(3, 0).files)
        session.send(b"", b"{", "windowMinimize", "play", "play")
        self.assertEqual(session.end(), (0, b"", b"window: minimize\n"))
        started = self.place / "started"
        wait_until(lambda: started.exists() and started.read_text().endswith("\n"))
        self.assertEqual(started.read_text(), f"{self.place.directory}|quantel|1\n")
