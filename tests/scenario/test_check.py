"""The roads of a verification and of a repair, as the page would see them."""
import json
import os
import subprocess
import threading
import unittest.mock

import mounts
from game import Game, digest
from launcher import Session, told
from scenario import CONNECT, ScenarioTest

VERIFY = "Verification : connexion au serveur de patch..."
REPAIR = "Reparation : connexion au serveur de patch..."
BUSY = "Une operation est deja en cours."


def check(messages):
    """The one `check` message."""
    found = [m for m in messages if m["type"] == "check"]
    assert len(found) == 1 and found[0]["done"] is True, found
    return found[0]


def identity(path):
    """What changes if a file is replaced or written to."""
    status = os.stat(path)
    return status.st_ino, status.st_size, status.st_mtime_ns, status.st_ctime_ns


class CheckTest(ScenarioTest):
    def installed(self, files, **extra):
        """A session in an installation that has these files."""
        self.put(files, **extra)
        session = Session(self.place)
        self.addCleanup(session.kill)
        self.server.requests.clear()
        return session

    def damage(self, path, data=None):
        file = self.place.directory / path
        content = file.read_bytes()
        file.write_bytes(bytes(b ^ 1 for b in content) if data is None else data)

    def fetched(self):
        return sorted(path for path in self.server.requests if "version.json" not in path)

    def test_verify_then_repair_then_nothing_left(self):
        files = {f"d/f{i}": b"%d" % i * 100 for i in range(10)}
        session = self.installed(files)
        self.damage("d/f3")
        self.damage("d/f1", b"short")
        (self.place.directory / "d/f2").unlink()
        kept = identity(self.place.directory / "d/f0")
        messages = session.ask("verify")
        self.assertEqual(told(messages), [VERIFY, "online", "Verification de 10 fichiers...",
                                          "7 fichier(s) corrects, 1 manquant(s), 2 abime(s).", False])
        outcome = {"type": "check", "mode": "verify", "done": True, "total": 10, "ok": 7, "missing": 1, "corrupt": 2,
                   "bytes": 300, "samples": ["d/f1", "d/f2", "d/f3"]}
        self.assertEqual(check(messages), outcome)
        self.assertEqual(self.fetched(), [])

        messages = session.ask("repair")
        self.assertEqual(told(messages), [
            REPAIR, "online", "Reprise du resultat de la verification (3 fichier(s)).",
            "7 fichier(s) corrects, 1 manquant(s), 2 abime(s).", "Retelechargement de 3 fichier(s)...",
            CONNECT, "online", (3, 3), "3 fichier(s) a telecharger...", (3, 3), "Pret a jouer.", True])
        self.assertEqual(check(messages), {**outcome, "mode": "repair"})
        kinds = [m["type"] for m in messages]
        self.assertLess(kinds.index("check"), kinds.index("versions"))
        self.assertEqual(self.place.files(), files)
        self.assertEqual(self.fetched(), ["/patch/f/d/f1", "/patch/f/d/f2", "/patch/f/d/f3"])
        self.assertEqual(identity(self.place.directory / "d/f0"), kept, "no other file was touched")

        record = (self.place.directory / "patch_manifest.json").read_bytes()
        self.assertEqual(told(session.ask("repair"))[2:], ["Verification de 10 fichiers...",
                                                           "10 fichier(s) corrects.", "Rien a reparer.", False])
        self.assertEqual(told(session.ask("repair"))[2:], [
            "Reprise du resultat de la verification (0 fichier(s)).", "10 fichier(s) corrects.", "Rien a reparer.",
            False])
        self.assertEqual((self.place.directory / "patch_manifest.json").read_bytes(), record)
        self.assertEqual(session.end(), (0, b"", b""))

    def test_a_repair_with_no_usable_list_verifies_first(self):
        files = {"a": b"1" * 10, "b": b"2" * 20, "c": b"3" * 30}
        session = self.installed(files)
        self.damage("a")
        messages = session.ask("repair")
        self.assertEqual(told(messages)[2:5], ["Verification de 3 fichiers...", "2 fichier(s) corrects, 1 abime(s).",
                                               "Retelechargement de 1 fichier(s)..."])
        self.assertEqual((check(messages)["mode"], check(messages)["bytes"]), ("repair", 10))
        self.damage("b")
        session.ask("verify")
        self.put(files, version=4)
        messages = session.ask("repair")
        self.assertIn("Verification de 3 fichiers...", told(messages))
        self.assertEqual(self.place.files(), files)

    def test_a_list_of_the_same_version_is_told_by_the_present_manifest(self):
        files = {"a": b"1" * 10, "b": b"2" * 20, "c": b"3" * 30}
        session = self.installed(files)
        self.damage("a")
        self.damage("b")
        session.ask("verify")
        del files["a"]
        files["b"] = b"new" * 5
        self.put(files)
        messages = session.ask("repair")
        self.assertIn("Reprise du resultat de la verification (2 fichier(s)).", told(messages))
        self.assertEqual(check(messages)["bytes"], 15)
        self.assertEqual((check(messages)["total"], check(messages)["ok"]), (2, 0))
        self.assertEqual(self.place.files(), files)
        self.assertEqual(self.fetched(), ["/patch/f/b"])

    def test_a_server_that_fails_changes_nothing_and_the_list_stays(self):
        files = {"a": b"1" * 10, "b": b"2" * 20}
        session = self.installed(files)
        self.damage("a")
        before = self.place.files()
        session.ask("verify")
        failure = ["Impossible de lire le manifeste de patch.", "offline", False]
        good = self.server.content["/patch/version.json"]
        outside = json.dumps({"version": 3, "files": [{"path": "../x"}]}).encode()
        for fault, document in ((503, good), (None, b"<html>"), (None, outside)):
            self.server.faults["/patch/version.json"] = [fault]
            self.server.content["/patch/version.json"] = document
            for mode, first in (("verify", VERIFY), ("repair", REPAIR)):
                messages = session.ask(mode)
                self.assertEqual(told(messages), [first] + failure)
                self.assertEqual(check(messages), {"type": "check", "mode": mode, "done": True,
                                                   "error": "manifeste illisible"})
        self.assertEqual(self.place.files(), before)
        self.server.faults.clear()
        self.server.content["/patch/version.json"] = good
        self.assertIn("Reprise du resultat de la verification (1 fichier(s)).", told(session.ask("repair")))
        self.assertEqual(self.place.files(), files)

    def test_an_address_that_is_none(self):
        (self.place.directory / "Tolmira.exe").write_bytes(b"")
        self.place.set_server("nonsense")
        session = Session(self.place)
        self.addCleanup(session.kill)
        messages = session.ask("repair")
        self.assertEqual(told(messages), [REPAIR, "URL de patch invalide: nonsense", "offline", True])
        self.assertEqual(check(messages)["error"], "serveur injoignable")

    def test_a_fetch_that_fails_uses_the_list_up(self):
        files = {"a": b"1" * 10, "b": b"2" * 20}
        session = self.installed(files)
        self.damage("a")
        session.ask("verify")
        self.server.faults["/patch/f/a"] = [404]
        self.assertEqual(told(session.ask("repair"))[-2:],
                         ["Echec du telechargement: a (transfert interrompu)", False])
        self.assertEqual([entry["path"] for entry in self.place.record()["files"]], ["b"])
        self.server.faults.clear()
        messages = session.ask("repair")
        self.assertEqual(told(messages)[2:4], ["Verification de 2 fichiers...", "1 fichier(s) corrects, 1 manquant(s)."])
        self.assertEqual(self.place.files(), files)

    def test_counts_and_samples(self):
        files = {f"f{i:04}": b"" for i in range(1000)}
        session = self.installed(files)
        for i in range(41):
            self.damage(f"f{i * 7:04}", b"x")
        messages = session.ask("verify")
        progress = [m for m in messages if m["type"] == "progress"]
        self.assertEqual(sorted(m["fileIndex"] for m in progress), list(range(50, 1001, 50)))
        for m in progress:
            self.assertEqual((m["percent"], m["fileCount"], m["totalBytes"]), (m["fileIndex"] // 10, 1000, 0))
            self.assertIn(m["currentFile"], files)
        self.assertEqual([line for line in told(messages) if str(line).startswith("Verification : ")],
                         [VERIFY, "Verification : 500 / 1000 fichiers...", "Verification : 1000 / 1000 fichiers..."])
        self.assertEqual(check(messages)["corrupt"], 41)
        self.assertEqual(check(messages)["samples"], [f"f{i * 7:04}" for i in range(40)])
        for count, indices in ((0, []), (49, [49]), (50, [50]), (51, [50, 51])):
            self.put(dict(list(files.items())[:count]))
            messages = session.ask("verify")
            self.assertEqual(sorted(m["fileIndex"] for m in messages if m["type"] == "progress"), indices)
            self.assertEqual(check(messages)["total"], count)

    def test_things_in_the_way(self):
        files = {"folder": b"1" * 10, "empty": b"2" * 10, "linked/a": b"3" * 10, "link": b"4" * 10}
        session = self.installed(files)
        outside = self.place.root / "outside"
        outside.mkdir()
        (outside / "a").write_bytes(b"mine")
        for name in ("folder", "empty", "link", "linked/a"):
            (self.place.directory / name).unlink()
        (self.place.directory / "folder").mkdir()
        (self.place.directory / "folder/mine").write_bytes(b"kept")
        (self.place.directory / "empty").mkdir()
        (self.place.directory / "link").symlink_to(outside / "a")
        self.assertEqual(check(session.ask("verify"))["samples"], ["empty", "folder", "link", "linked/a"])
        self.assertEqual(told(session.ask("repair"))[-2:], ["Pret a jouer.", True])
        self.assertEqual(self.place.files(), {**files, "folder.old/mine": b"kept"})
        self.assertEqual((outside / "a").read_bytes(), b"mine")

    def test_without_a_digest_provider_nothing_is_deleted(self):
        files = {"a": b"1" * 10, "b": b"2" * 20}
        self.put(files)
        self.told()
        record = (self.place.directory / "patch_manifest.json").read_bytes()
        settings = self.place.root / "openssl.cnf"
        settings.write_text("openssl_conf = c\n[c]\nalg_section = a\n[a]\ndefault_properties = provider=none\n")
        with unittest.mock.patch.dict(os.environ, OPENSSL_CONF=str(settings)):
            session = Session(self.place)
        self.addCleanup(session.kill)
        for request, end in (("verify", "0 fichier(s) corrects, 2 abime(s)."),
                             ("repair", "La reparation a rencontre une erreur inattendue.")):
            self.assertEqual(told(session.ask(request))[-2:], [end, False])
            self.assertEqual(self.place.files(), files)
            self.assertEqual((self.place.directory / "patch_manifest.json").read_bytes(), record)

    def test_a_repair_that_cannot_change_the_record_deletes_nothing(self):
        mounts.require(self)
        files = {"a": b"1" * 10, "b": b"2" * 20}
        session = self.installed(files)
        self.damage("a")
        session.ask("verify")
        before = self.place.files()
        record = self.place.directory / "patch_manifest.json"
        subprocess.run(["mount", "--bind", record, record], check=True)  # it can be neither replaced nor removed
        self.addCleanup(subprocess.run, ["umount", record], check=True)
        self.assertEqual(told(session.ask("repair"))[-2:],
                         ["Impossible de mettre a jour patch_manifest.json, aucun fichier modifie.", False])
        self.assertEqual(self.place.files(), before)

    def test_behind_a_link_nothing_is_deleted(self):
        session = self.installed({"linked/a": b"3" * 10})
        elsewhere = self.place.root / "elsewhere"
        (self.place.directory / "linked").rename(elsewhere)
        (self.place.directory / "linked").symlink_to(elsewhere)
        (elsewhere / "a").write_bytes(b"damaged")
        session.ask("verify")
        self.server.faults["/patch/f/linked/a"] = [404]
        session.ask("repair")
        self.assertEqual((elsewhere / "a").read_bytes(), b"damaged")
        self.server.faults.clear()
        self.assertEqual(told(session.ask("repair"))[-1], True)
        self.assertEqual((elsewhere / "a").read_bytes(), b"3" * 10, "a directory that the player moved is kept up")

    def test_one_operation_at_a_time(self):
        release = threading.Event()
        self.addCleanup(release.set)
        self.put({"a": b"1" * 10})
        self.server.faults["/patch/f/a"] = [("hold", release)]
        session = Session(self.place, wait=False)
        self.addCleanup(session.kill)
        session.until("versions")
        session.send("verify", "repair")
        self.assertEqual([m["text"] for m in session.until("status") + session.until("status")
                          if m["type"] == "status"][-1], BUSY)
        release.set()
        self.assertEqual(told(session.until("ready"))[-1], True)
        for _ in range(50):  # at once behind `ready`, before the worker has ended
            self.assertEqual(told(session.ask("verify"))[0], VERIFY)

    def test_a_second_launcher_waits_for_the_first(self):
        release = threading.Event()
        self.addCleanup(release.set)
        self.put({"a": b"1" * 10})
        self.server.faults["/patch/f/a"] = [("hold", release)]
        first = Session(self.place, wait=False)
        self.addCleanup(first.kill)
        first.until("versions")
        second = Session(self.place, wait=False)
        self.addCleanup(second.kill)
        self.assertEqual(told(second.until("status"))[-1], "Une autre instance du lanceur met le jeu a jour, attente...")
        release.set()
        self.assertEqual(told(first.until("ready"))[-2:], ["Pret a jouer.", True])
        self.assertEqual(told(second.until("ready"))[-2:], ["A jour.", True])
        self.assertEqual(self.server.requests["/patch/f/a"], 1)

    def test_play_during_a_repair(self):
        game = Game(5, 20)
        game.publish(self.server)
        session = Session(self.place)
        self.addCleanup(session.kill)
        client = self.place.directory / "Tolmira.exe"
        client.chmod(0o755)
        self.damage("f0.dat", b"x")
        session.ask("verify")
        release = threading.Event()
        self.addCleanup(release.set)
        self.server.faults["/patch/files/" + digest(game.files["f0.dat"])] = [("hold", release)]
        session.send("repair")
        session.until("versions")
        session.send("play")
        self.assertEqual(session.process.wait(), 0)
        release.set()
        self.server.faults.clear()
        self.place.run()
        files = self.place.files()
        files.pop("started", None)
        files.pop("f0.dat.part", None)
        self.assertEqual(files, game.files)

    def test_cleanup_ends_a_run_that_fetched_something(self):
        loose = {"Model/old.o3d": b"", "World/log/trace.txt": b"", "Client/ostu.ini": b"", "Icon/a.res": b"",
                 "top.txt": b"", "x64/log/a.txt": b""}
        for path in loose:
            (self.place.directory / path).parent.mkdir(parents=True, exist_ok=True)
            (self.place.directory / path).write_bytes(b"")
        session = self.installed({"Model/a": b"1"})
        self.assertEqual(told(session.start)[-5:], [
            "1 fichier(s) residuel(s) supprime(s) (hors manifeste) : Model/old.o3d; ",
            "1 element(s) obsolete(s) supprime(s) : x64 (doublon du client 64 bits, desormais a la racine); ",
            (3, 3), "Pret a jouer.", True])
        kept = {"Model/a", "World/log/trace.txt", "Client/ostu.ini", "Icon/a.res", "top.txt"}
        self.assertEqual(set(self.place.files()), kept)
        (self.place.directory / "Model/again.o3d").write_bytes(b"")
        session.ask("verify")
        session.ask("repair")
        self.assertIn("Model/again.o3d", self.place.files(), "nothing was fetched, nothing is cleaned")
