"""The roads of an update run, as the page would see them."""
import subprocess

from game import Game, archive, digest, publish_manifest
from launcher import Session, is_windows, wait_until
from scenario import CONNECT, ScenarioTest


class UpdateTest(ScenarioTest):
    def test_fresh_install_then_nothing_to_do_then_repair_of_the_record(self):
        game = Game(1, 120)
        manifest = game.publish(self.server)
        self.assertEqual(self.told(), [CONNECT, "online", (0, 1), "121 fichier(s) a telecharger...", (1, 1),
                                       "Pret a jouer.", True])
        self.assert_files(self.place, game.files)
        record = self.place.directory / "patch_manifest.json"
        self.assertEqual(record.read_bytes(), manifest)
        self.assertLessEqual(self.server.connections, 6, "connections are used again")
        self.assertEqual(self.told(), [CONNECT, "online", (1, 1), "A jour.", True])
        record.unlink()
        messages = self.told()
        self.assertEqual(messages[3:5], ["Verification des fichiers deja presents (1)...",
                                         "Verification des fichiers deja presents (26)..."])
        self.assertEqual(messages[-3:], ["121 fichier(s) deja corrects retrouves sur le disque.", "A jour.", True])
        self.assertEqual(self.place.record()["version"], 0)
        self.assertFalse(self.place.log())

    def test_archives_are_taken_when_cheaper(self):
        game = Game(2, 60, archives=2)
        game.publish(self.server)
        lines = self.told()
        self.assertEqual(lines[3], "61 fichier(s) via 2 archive(s)...")
        # Two workers begin at the same time.
        self.assertEqual(sorted(line[:12] for line in lines[4:6]), ["Archive 1/2 ", "Archive 2/2 "])
        self.assert_files(self.place, game.files)
        self.assertFalse([path for path in self.server.requests if "files/" in path])

    def test_failed_archives_fall_back_file_by_file(self):
        files = {f"a{i}": b"%d" % i * 4000 for i in range(6)}
        good = archive({name: files[name] for name in ("a0", "a1")})
        bad_crc = bytearray(archive({"a3": files["a3"]}))
        bad_crc[bad_crc.rfind(b"PK\x01\x02") + 16] ^= 1
        self.put(files, {"good": (good, ["a0", "a1"]), "gone": (b"x", ["a2"]), "crc": (bytes(bad_crc), ["a3"]),
                         "page": (b"<html>", ["a4"])})
        del self.server.content["/patch/gone"]
        lines = self.told()
        for line in ("Archive indisponible: gone (transfert interrompu) - ses fichiers seront pris un par un.",
                     "Archive illisible: crc (a3) - ses fichiers seront pris un par un.",
                     "Archive illisible: page (archive illisible) - ses fichiers seront pris un par un.",
                     "Archive 1/4 : good", "3 fichier(s) d archive(s) manquante(s) seront pris un par un."):
            self.assertIn(line, lines)
        self.assertEqual(lines[-2:], ["Pret a jouer.", True])
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
        self.assertEqual(self.told()[-2:], ["Pret a jouer.", True])
        self.assert_files(self.place, files)
        self.assertIn("Status 500 /patch/f/reset", self.place.log())
        self.assertIn("OpenGet-null /patch/f/reset", self.place.log())
        if not is_windows():  # there a body that was cut may pass for one that ended, until its digest is compared
            self.assertTrue([line for line in self.place.log() if line.startswith("QueryDataAvailable /patch/f/cut err=")])

    def test_a_file_that_cannot_be_had_ends_the_run(self):
        for fault, reason in ((404, "transfert interrompu"), (206, "transfert interrompu"),
                              (("wrong",), "contenu incorrect")):
            with self.subTest(fault=fault):
                self.put({"a": b"1", "b": b"2" * 100})
                self.server.faults = {"/patch/f/b": [fault]}
                lines = self.told()
                self.assertEqual(lines[-2:], [f"Echec du telechargement: b ({reason})", False])
                self.assertEqual([entry["path"] for entry in self.place.record()["files"]], ["a"])
        (self.place.directory / "Tolmira.exe").write_bytes(b"")
        self.assertEqual(self.told()[-1], True)

    def test_server_out_of_reach_and_documents_that_are_none(self):
        self.server.content["/patch/version.json"] = b"<html>"
        self.assertEqual(self.told(), [CONNECT, "online", "Manifest de patch invalide.", False])
        self.server.faults = {"/patch/version.json": [404]}
        self.assertEqual(self.told(), [CONNECT, "Serveur de patch injoignable.", "offline", False])
        (self.place.directory / "Tolmira.exe").write_bytes(b"")
        self.assertEqual(self.told(), [CONNECT, "Serveur de patch injoignable.", "offline",
                                       "Hors ligne : utilisation des fichiers deja installes.", True])
        self.place.set_server("nonsense")
        self.assertEqual(self.told(), [CONNECT, "URL de patch invalide: nonsense", "offline", True])

    def test_a_run_whose_reader_goes_away_is_finished(self):
        game = Game(4, 30)
        game.publish(self.server)
        process = self.place.start(subprocess.DEVNULL)
        self.assertIn(b'"options"', process.stdout.readline())
        process.stdout.close()
        self.assertEqual((process.stderr.read(), process.wait()), (b"", 0))
        process.stderr.close()
        self.assert_files(self.place, game.files)

    def test_a_hundred_thousand_files_with_nothing_to_do(self):
        data = b"same"
        for i in range(50):
            (self.place.directory / f"f{i}").write_bytes(data)
        entries = [{"path": f"f{i % 50}", "size": 4, "sha256": digest(data), "url": "f"} for i in range(100000)]
        publish_manifest(self.server, {"files": entries})
        self.assertEqual(self.told()[-2:], ["A jour.", True])

    def test_another_spelling_of_a_changed_file_is_not_vouched_for(self):
        old = {"./Data": b"one", "game.dll.old": b"old", "kept": b"same"}
        self.put(old)
        self.told()
        self.put({"Data": b"two", "game.dll": b"new", "kept": b"same", "z": b"never"})
        self.server.faults["/patch/f/z"] = [404]
        self.assertIs(self.told()[-1], False)
        self.assertEqual({entry["path"] for entry in self.place.record()["files"]}, {"Data", "game.dll", "kept"})
        self.put(old)
        self.assertEqual(self.told()[-2:], ["Pret a jouer.", True])
        self.assertEqual((self.place.directory / "Data").read_bytes(), b"one")

    def test_bad_requests_are_silence_and_play_starts_the_client_with_its_token(self):
        game = Game(3, 5)
        game.publish(self.server)
        client = self.place.directory / "Tolmira.exe"
        client.write_bytes(game.files["Tolmira.exe"])
        client.chmod(0o755)
        session = Session(self.place, wait=False)
        self.addCleanup(session.kill)
        session.send(b"", b"{", b"[[[[", b'{"action":7}', b'{"action":"Play"}', b'{"action":"windowMinimize"}')
        session.until("ready")
        session.send("play", "play")
        self.assertEqual(session.end(), (0, b"", b"window: minimize\n"))
        started = self.place.directory / "started"
        wait_until(lambda: started.exists() and started.read_text().endswith("\n"))
        self.assertEqual(started.read_text(), f"{self.place.directory}|quantel|1\n")
