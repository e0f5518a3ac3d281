"""What a verification and a repair do and report, as the page would see it."""
import json
import subprocess

import mounts
from game import MANIFEST
from launcher import summary
from scenario import CONNECT, READY, UP_TO_DATE, ScenarioTest, failed

VERIFY = "Verification : connexion au serveur de patch..."
REPAIR = "Reparation : connexion au serveur de patch..."
FILES = {"a": b"1" * 10, "b": b"2" * 20}


def resumed(count):
    return f"Reprise du resultat de la verification ({count} fichier(s))."


def check(messages):
    """Returns the only `check` message."""
    found = [m for m in messages if m["type"] == "check"]
    assert len(found) == 1 and found[0]["done"] is True, found
    return found[0]


class CheckTest(ScenarioTest):
    def test_verify_then_repair_then_nothing_left(self):
        files = {f"d/f{i}": b"%d" % i * 100 for i in range(10)}
        session = self.installed(files)
        self.place.put({"d/f1": b"damaged", "d/f2": None, "d/f3": b"X" * 100})
        kept = (self.place / "d/f0").stat()
        messages = session.ask("verify")
        counts = "7 fichier(s) corrects, 1 manquant(s), 2 abime(s)."
        self.assertEqual(summary(messages), [VERIFY, "online", "Verification de 10 fichiers...", counts, False])
        outcome = {"type": "check", "mode": "verify", "done": True, "total": 10, "ok": 7, "missing": 1, "corrupt": 2,
                   "bytes": 300, "samples": ["d/f1", "d/f2", "d/f3"]}
        self.assertEqual(check(messages), outcome)
        self.assertEqual(set(self.server.requests), {MANIFEST})

        messages = session.ask("repair")
        self.assertEqual(summary(messages), [
            REPAIR, "online", resumed(3), counts, "Retelechargement de 3 fichier(s)...", CONNECT, "online", (3, 3),
            "3 fichier(s) a telecharger...", (3, 3), *READY])
        self.assertEqual(check(messages), {**outcome, "mode": "repair"})
        self.assert_files(self.place, files)
        self.assertEqual(set(self.server.requests), {MANIFEST, *(f"/patch/f/d/f{i}" for i in (1, 2, 3))})
        self.assertEqual((self.place / "d/f0").stat().st_ctime_ns, kept.st_ctime_ns, "no other file was touched")

        record = self.place.record_file.read_bytes()
        end = ["10 fichier(s) corrects.", "Rien a reparer.", False]
        self.assert_answers(session, "repair", "Verification de 10 fichiers...", *end)
        self.assert_answers(session, "repair", resumed(0), *end)
        self.assertEqual(self.place.record_file.read_bytes(), record)
        self.assertEqual(session.end(), (0, b"", b""))

    def test_a_list_serves_a_repair_of_the_same_version_once(self):
        session = self.installed({**FILES, "c": b"3" * 30})
        self.place.write("a", b"damaged")
        session.ask("verify")
        self.put({**FILES, "c": b"3" * 30}, version=4)
        self.assertIn("Verification de 3 fichiers...", summary(session.ask("repair")), "the list is of another version")
        self.place.put({"a": b"damaged", "b": b"damaged"})
        session.ask("verify")
        files = {"b": b"new" * 5, "c": b"3" * 30}
        self.put(files, version=4)
        self.server.faults["/patch/f/b"] = [404]
        messages = session.ask("repair")
        self.assertIn(resumed(2), summary(messages))
        self.assertEqual([check(messages)[name] for name in ("bytes", "total", "ok")], [15, 2, 0])
        self.assertEqual(summary(messages)[-2:], failed("b"))
        self.assertEqual(list(self.place.recorded()), ["c"])
        self.server.faults.clear()
        messages = session.ask("repair")
        self.assertEqual(summary(messages)[2:5], ["Verification de 2 fichiers...", "1 fichier(s) corrects, 1 manquant(s).",
                                                  "Retelechargement de 1 fichier(s)..."])
        self.assert_files(self.place, files)

    def test_a_server_that_fails_changes_nothing_and_the_list_stays(self):
        session = self.installed(FILES)
        self.place.write("a", b"damaged")
        before = self.place.files()
        session.ask("verify")
        good = self.server.content[MANIFEST]
        outside = json.dumps({"version": 3, "files": [{"path": "../x"}]}).encode()
        for fault, document in ((503, good), (None, b"<html>"), (None, outside)):
            self.server.faults[MANIFEST] = [fault]
            self.server.content[MANIFEST] = document
            for mode, first in (("verify", VERIFY), ("repair", REPAIR)):
                messages = session.ask(mode)
                self.assertEqual(summary(messages), [first, "Impossible de lire le manifeste de patch.", "offline", False])
                self.assertEqual(check(messages), {"type": "check", "mode": mode, "done": True,
                                                   "error": "manifeste illisible"})
        self.assert_files(self.place, before)
        self.server.faults.clear()
        self.server.content[MANIFEST] = good
        self.assertIn(resumed(1), summary(session.ask("repair")))
        self.assert_files(self.place, FILES)
        self.place.set_server("nonsense")
        messages = self.session().ask("repair")
        self.assertEqual(summary(messages), [REPAIR, "URL de patch invalide: nonsense", "offline", False])
        self.assertEqual(check(messages)["error"], "serveur injoignable")

    def test_counts_and_samples(self):
        files = {f"f{i:04}": b"" for i in range(1000)}
        session = self.installed(files)
        damaged = [f"f{i * 7:04}" for i in range(41)]
        self.place.put(dict.fromkeys(damaged, b"damaged"))
        for count in (1000, 51, 49, 0):
            self.put(dict(list(files.items())[:count]))
            messages = session.ask("verify")
            progress = sorted((m["fileIndex"], m["percent"]) for m in messages if m["type"] == "progress")
            self.assertEqual(progress, [(i, i * 100 // count) for i in range(1, count + 1) if i % 50 == 0 or i == count])
            steps = [f"Verification : {i} / 1000 fichiers..." for i in range(500, count + 1, 500)]
            self.assertEqual([text for text in summary(messages) if str(text).startswith("Verification : ")][1:], steps)
            found = check(messages)
            listed = [name for name in damaged if int(name[1:]) < count]
            self.assertEqual((found["total"], found["corrupt"], found["samples"]), (count, len(listed), listed[:40]))

    def test_without_a_digest_provider_nothing_is_deleted(self):
        self.put(FILES)
        self.update()
        record = self.place.record_file.read_bytes()
        settings = self.place.root / "openssl.cnf"
        settings.write_text("openssl_conf = c\n[c]\nalg_section = a\n[a]\ndefault_properties = provider=none\n")
        session = self.session(OPENSSL_CONF=str(settings))
        for request, end in (("verify", "0 fichier(s) corrects, 2 abime(s)."),
                             ("repair", "La reparation a rencontre une erreur inattendue.")):
            messages = session.ask(request)
            self.assertEqual(check(messages)["corrupt"], 2)
            self.assertEqual(summary(messages)[-2:], [end, False])
            self.assert_files(self.place, FILES)
            self.assertEqual(self.place.record_file.read_bytes(), record)

    def test_a_repair_that_cannot_change_the_record_deletes_nothing(self):
        mounts.require(self, "root", "user")
        session = self.installed(FILES)
        self.place.write("a", b"damaged")
        before = self.place.files()
        record = self.place.record_file
        subprocess.run(["mount", "--bind", record, record], check=True)  # it can be neither replaced nor removed
        self.addCleanup(subprocess.run, ["umount", record], check=True)
        self.assert_answers(session, "repair", "Impossible de mettre a jour patch_manifest.json, aucun fichier modifie.", False)
        self.assert_files(self.place, before)

    def test_a_second_launcher_waits_for_the_first(self):
        self.put(FILES)
        held = self.hold("/patch/f/a")
        first = self.session(wait=False)
        first.until("versions")
        second = self.session(wait=False)
        self.assertEqual(summary(second.until("status"))[-1], "Une autre instance du lanceur met le jeu a jour, attente...")
        held.set()
        self.assertEqual(summary(first.until("ready"))[-2:], READY)
        self.assertEqual(summary(second.until("ready"))[-2:], UP_TO_DATE)
        self.assertEqual(self.server.requests["/patch/f/a"], 1)
