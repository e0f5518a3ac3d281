"""A launcher built with a key must refuse what an attacker on its server publishes."""
import shutil
import subprocess

import launcher
from game import MANIFEST
from launcher import summary
from scenario import CONNECT, INVALID, ScenarioTest
from test_check import REPAIR, VERIFY

# The key of RFC 6979, A.2.5, which patcher-stdio-keyed is built with.
KEY = ("patch-publish-key c9afa9d845ba75166b5c215767b1d6934e50c3db36e89b127b8a622b120f6721 "
       "60fed4ba255a9d31c961eb74c6356d68c049b8923b61fa6ce669622e60f29fb6"
       "7903fe1008b8bc99a41ae9e95628bc64f2f1b20c2d7e9f5177a3c294d4462299\n")


class SignedTest(ScenarioTest):
    def setUp(self):
        super().setUp()
        self.root = self.place.root
        (self.root / "client").mkdir()
        (self.root / "key").write_text(KEY)
        shutil.copy2(launcher.beside_program("patcher-stdio-keyed"), self.place.program)

    def publish(self, *arguments):
        """Puts a version on the server; returns the manifest's bytes."""
        subprocess.run([launcher.beside_program("patch-publish"), "--out", self.root / "www", "--sign", self.root / "key", "--quiet",
                        *arguments], check=True)
        for file in (self.root / "www/patch").rglob("*"):
            if file.is_file():
                self.server.content[f"/{file.relative_to(self.root / 'www').as_posix()}"] = file.read_bytes()
        return self.server.content[MANIFEST]

    def version(self, number):
        (self.root / "client/a").write_bytes(b"version %d" % number)
        return self.publish("--client", self.root / "client", "--version", str(number))

    def serve_and_run(self, document):
        self.server.content[MANIFEST] = document
        return self.update()

    def test_nothing_unsigned_and_nothing_replayed(self):
        first, second = self.version(1), self.version(2)
        record = self.place.record_file
        self.assertEqual(self.update()[-1], True)
        self.assertEqual(record.read_bytes(), second)
        third = self.version(3)
        for document in (third[:third.rindex(b"{")], third.replace(b'"version":3', b'"version":4'), first):
            self.assertEqual(self.serve_and_run(document), [CONNECT, "online", INVALID, False])
        self.assertEqual(self.place.log()[-3:], [
            "Manifest refused : no signature", "Manifest refused : not signed by a key of this launcher",
            "Manifest refused : sequence 1 is below 2, which was installed"])
        self.assertEqual(record.read_bytes(), second)

        contents, self.server.content = self.server.content, {}
        self.assertIn("a telecharger", self.serve_and_run(third)[-3], "a run that gets the manifest and nothing else")
        self.server.content = contents
        self.assertNotEqual(record.read_bytes(), second)
        self.assertEqual(self.serve_and_run(first)[-2:], [INVALID, False], "the end of an update is not needed for that")
        self.assertEqual(self.serve_and_run(third)[-2:], ["Pret a jouer.", True])
        self.assertEqual((record.read_bytes(), self.place.files()), (third, {"a": b"version 3"}))

        session = self.session()
        self.server.content[MANIFEST] = second
        for request, connect in (("verify", VERIFY), ("repair", REPAIR)):
            self.assertEqual(summary(session.ask(request)),
                             [connect, "Impossible de lire le manifeste de patch.", "offline", False])
        back = self.publish("--live", "2")
        self.assertEqual(self.update()[-1], True)
        self.assertEqual((record.read_bytes(), self.place.files()), (back, {"a": b"version 2"}))
        record.write_bytes(back.replace(b'"sequence":4', b'"sequence":9'))
        self.assertEqual(self.update()[-1], True, "only what is signed counts")
