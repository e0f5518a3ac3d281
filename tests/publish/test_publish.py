#!/usr/bin/env python3
"""Drives patch-publish as a publisher does: test_publish.py [--publisher PROGRAM] [unittest arguments], or
PATCH_PUBLISH=PROGRAM in the environment."""
import hashlib
import json
import os
import pathlib
import random
import shutil
import signal
import subprocess
import sys
import tempfile
import time
import unittest
import zipfile

PROGRAM = os.environ.get("PATCH_PUBLISH", "build/linux/bin/patch-publish")
SEED = 20261124


def run(*arguments):
    return subprocess.run([PROGRAM, *map(str, arguments)], capture_output=True, text=True, timeout=300)


def digest(data):
    return hashlib.sha256(data).hexdigest()


class PublishTest(unittest.TestCase):
    def setUp(self):
        folder = tempfile.TemporaryDirectory(prefix="patch-publish-")
        self.addCleanup(folder.cleanup)
        self.root = pathlib.Path(folder.name)
        self.client, self.www = self.root / "client", self.root / "www"
        self.patch = self.www / "patch"
        self.client.mkdir()

    def write(self, path, data):
        place = self.client / path
        place.parent.mkdir(parents=True, exist_ok=True)
        place.write_bytes(data)

    def make_game(self, count=120):
        chance = random.Random(SEED)
        for i in range(count):
            name = f"data/d{i % 4}/fichier \u00e9 {i}.bin" if i % 3 else f"f{i}.dat"
            size = chance.choice([0, 1, 3, 4, 900, 30000])
            self.write(name, chance.randbytes(size) if i % 2 else b"%d text " % i * (size // 8))
        self.write("Tolmira.exe", b"program")
        self.write("big.bin", b"large " * 300000)

    def publish(self, version, *more, ok=True):
        result = run("--client", self.client, "--out", self.www, "--version", version, *more)
        self.assertEqual(result.returncode, 0 if ok else 1, result.stderr)
        return result

    def manifest(self):
        return json.loads((self.patch / "version.json").read_bytes())

    def prove(self, manifest=None):
        """What the launcher relies on, by another implementation of ZIP, JSON and SHA-256."""
        manifest = manifest or self.manifest()
        wanted = {
            p.relative_to(self.client).as_posix(): digest(p.read_bytes()) for p in self.client.rglob("*") if p.is_file()
        }
        files = {f["path"]: f for f in manifest["files"]}
        self.assertEqual({path: f["sha256"] for path, f in files.items()}, wanted)
        self.assertEqual(len(files), len(manifest["files"]))
        self.assertEqual([f["path"] for f in manifest["files"]], sorted(files, key=str.encode))
        for f in manifest["files"]:
            data = (self.patch / f["url"]).read_bytes()
            self.assertEqual((len(data), digest(data)), (f["size"], f["sha256"]))
            self.assertEqual(f["url"], f"files/{f['sha256'][:2]}/{f['sha256']}")
        packed = [path for b in manifest["bundles"] for path in b["files"]]
        self.assertEqual(len(packed), len(set(packed)))
        for b in manifest["bundles"]:
            data = (self.patch / b["name"]).read_bytes()
            self.assertEqual((len(data), digest(data)), (b["size"], b["sha256"]))
            with zipfile.ZipFile(self.patch / b["name"]) as archive:
                self.assertEqual(archive.namelist(), b["files"])
                for path in b["files"]:
                    self.assertEqual(digest(archive.read(path)), files[path]["sha256"])
        return manifest, set(packed)

    def check(self, expected):
        result = run("--check", self.www, "--quiet")
        self.assertEqual(result.returncode, 1 if expected else 0, result.stdout)
        for text in expected:
            self.assertIn(text, result.stdout)


class Versions(PublishTest):
    def test_three_versions(self):
        self.make_game()
        self.write("copy of big.bin", (self.client / "big.bin").read_bytes())
        self.publish(1, "--archive-size", 1)
        first, packed = self.prove()
        self.assertEqual(packed, {f["path"] for f in first["files"]})
        self.assertIn(["big.bin"], [b["files"] for b in first["bundles"]], "above the limit: an archive of its own")

        changed, gone = "f3.dat", "f6.dat"
        self.write(changed, b"new content")
        self.write("new/dir/file.txt", b"new file")
        (self.client / gone).unlink()
        self.publish(2, "--archive-size", 1)
        second, packed = self.prove()
        self.assertEqual(packed, {f["path"] for f in second["files"]})
        groups = {b["since"]: b for b in second["bundles"]}
        self.assertEqual(groups[2]["files"], [changed, "new/dir/file.txt"])
        before = {b["name"]: b for b in first["bundles"]}
        for bundle in before.values():
            touched = {changed, gone} & set(bundle["files"])
            self.assertEqual(bundle["name"] in [b["name"] for b in second["bundles"]], not touched)

        self.write(changed, b"newest")
        text = self.publish(3, "--archive-size", 1).stdout
        third, _ = self.prove()
        self.assertEqual([b["files"] for b in third["bundles"] if b["since"] == 2], [["new/dir/file.txt"]])
        self.assertRegex(text, r"(?m)^  1 behind \(version 2\) +1 +0 +6 ")
        self.assertRegex(text, r"(?m)^  2 behind \(version 1\) +2 +0 +14 ")
        self.check([])
        self.assertEqual(json.loads((self.patch / "history/2.json").read_bytes()), second)

    def test_nothing_is_built_again_without_need(self):
        self.make_game()
        self.publish(1)
        stamps = {p: p.stat().st_mtime_ns for p in self.patch.rglob("*") if p.is_file()}
        self.publish(2)
        for place, stamp in stamps.items():
            if place.name != "version.json":
                self.assertEqual(place.stat().st_mtime_ns, stamp, place)

    def test_same_client_same_publication(self):
        self.make_game()
        self.publish(1)
        elsewhere = self.root / "elsewhere"
        copy = self.root / "copy"
        shutil.copytree(self.client, copy, copy_function=shutil.copyfile)
        run("--client", copy, "--out", elsewhere, "--version", 1)
        self.assertEqual((elsewhere / "patch/version.json").read_bytes(), (self.patch / "version.json").read_bytes())

    def test_launcher(self):
        self.make_game(3)
        new, newer = self.root / "a.exe", self.root / "b.exe"
        new.write_bytes(b"MZ launcher")
        newer.write_bytes(b"MZ newer launcher")
        self.publish(1)
        self.assertEqual((self.manifest()["patcherVersion"], self.manifest()["patcherUrl"]), (0, ""))
        self.publish(2, "--launcher", new, "--launcher-build", 27)
        url = f"launcher/{digest(new.read_bytes())}.exe"
        self.publish(3)
        self.assertEqual((self.manifest()["patcherVersion"], self.manifest()["patcherUrl"]), (27, url))
        self.assertEqual((self.patch / url).read_bytes(), new.read_bytes())
        self.publish(4, "--launcher", newer, "--launcher-build", 26, ok=False)
        self.publish(4, "--launcher", newer, "--launcher-build", 28)
        self.check([])
        (self.patch / self.manifest()["patcherUrl"]).write_bytes(b"MZ broken launcher")
        self.check(["launcher"])

    def test_prune(self):
        self.make_game(20)
        for version in range(1, 5):
            self.write("changing.txt", b"version %d" % version)
            self.publish(version)
        old = [self.patch / f"files/{digest(b'version %d' % v)[:2]}/{digest(b'version %d' % v)}" for v in range(1, 5)]
        self.write("changing.txt", b"version 5")
        self.publish(5, "--prune", "--keep", 3)
        self.assertEqual([p.exists() for p in old], [False, False, True, True])
        self.assertEqual(sorted(p.name for p in (self.patch / "history").iterdir()), ["3.json", "4.json", "5.json"])
        kept = {b["name"] for v in (3, 4, 5) for b in json.loads((self.patch / f"history/{v}.json").read_bytes())["bundles"]}
        self.assertEqual({f"archives/{p.name}" for p in (self.patch / "archives").iterdir()}, kept)
        self.prove()
        shutil.copy(self.patch / "history/3.json", self.patch / "version.json")
        self.check([])
        self.publish(5, ok=False)
        self.publish(6)
        self.prove()

    def test_names_that_archives_cannot_carry(self):
        self.write("a..b.txt", b"x" * 5000)
        self.write("plain.txt", b"y" * 5000)
        self.publish(1)
        _, packed = self.prove()
        self.assertEqual(packed, {"plain.txt"})
        self.check([])


class Refusals(PublishTest):
    def test_names(self):
        self.make_game(3)
        self.publish(1)
        before = (self.patch / "version.json").read_bytes()
        cases = [
            ("con", "device"), ("data/Aux.txt", "device"), ("lpt1.a.b", "device"), ("dot./x", "ends in a dot"),
            ("blank ", "ends in a dot"), ("a:b", "character :"), ("d:\\x", "character :"), ("back\\slash", "character \\"),
            ("tab\tname", "control"), ("what?", "character ?"), ("...", "ends in a dot"),
            ("F0.DAT", "differs only in case"), ("data/D1/FICHIER \u00c9 1.bin", "differs only in case"),
            ("f0.DAT/inner", "directory"), ("data/d1/FICHIER \u00e9 1.bin.old", "moves"), (b"data/\xff\xfe.bin", "UTF-8"),
        ]
        for name, reason in cases:
            place = os.path.join(os.fsencode(self.client), os.fsencode(name))
            os.makedirs(os.path.dirname(place), exist_ok=True)
            with open(place, "wb") as out:
                out.write(b"x")
            with self.subTest(name=name):
                self.assertIn(reason, self.publish(2, ok=False).stderr)
            os.remove(place)
            for empty in ("dot.", "f0.DAT", "data/D1"):
                shutil.rmtree(self.client / empty, ignore_errors=True)
        self.assertEqual((self.patch / "version.json").read_bytes(), before)

    def test_entries_that_are_no_files(self):
        self.make_game(3)
        (self.client / "link").symlink_to("f0.dat")
        os.mkfifo(self.client / "pipe")
        text = self.publish(1, ok=False).stderr
        self.assertIn("link is a symbolic link", text)
        self.assertIn("pipe is neither a file nor a directory", text)

    def test_what_belongs_to_an_installation_stays_out(self):
        self.write("Tolmira.exe", b"game")
        own = ["patcher.ini", "patch_manifest.json", "patcher_debug.txt", "Patcher.exe", "PATCHER.OLD.EXE", "OSTU.INI",
               "Patcher.new.exe", "_bundle0.part", "x.dll.old", "data/x.bin.part", "WebView2Data/cache/a"]
        for name in own:
            self.write(name, b"own")
        self.write("data/ostu.ini.txt", b"game")
        self.write("data/old.old", b"game")
        text = self.publish(1).stderr
        self.assertEqual([f["path"] for f in self.manifest()["files"]],
                         ["Tolmira.exe", "data/old.old", "data/ostu.ini.txt"])
        for name in own[:-1]:
            self.assertIn(name, text)

    def test_versions_and_folders(self):
        self.assertIn("no file to publish", self.publish(1, ok=False).stderr)
        self.make_game(3)
        self.publish(5)
        for version in (5, 4):
            self.assertIn("not above version 5", self.publish(version, ok=False).stderr)
        self.assertIn("lie in each other",
                      run("--client", self.client, "--out", self.client / "www", "--version", 6).stderr)
        self.assertIn("does not exist", run("--client", self.root / "none", "--out", self.www, "--version", 6).stderr)
        (self.patch / "version.json").write_text("<html>")
        self.assertIn("is no manifest", self.publish(6, ok=False).stderr)
        self.assertIn("nothing is published", run("--check", self.root).stderr)

    def test_usage(self):
        self.assertEqual(run("--help").returncode, 0)
        base = ["--client", "c", "--out", "w"]
        for arguments in ([], base, base + ["--version", "0"], base + ["--version", "2147483648"],
                          base + ["--version", "1x"], base + ["--version", "1", "--keep", "2"],
                          base + ["--version", "1", "--launcher", "x"], base + ["--version", "1", "--archive-size", "0"],
                          base + ["--version"], ["--check"], ["--check", "w", "--version", "1"], ["--nonsense"],
                          base + ["--version", "1", "--version", "2"]):
            result = run(*arguments)
            self.assertEqual((result.returncode, result.stdout), (2, ""), arguments)
            self.assertIn("--help", result.stderr)

    def test_a_full_disk(self):
        self.make_game()
        limit = ["bash", "-c", 'ulimit -f 500; trap "" XFSZ; exec "$@"', "-", PROGRAM]
        result = subprocess.run([*limit, "--client", self.client, "--out", self.www, "--version", "1"],
                                capture_output=True, text=True, timeout=60)
        self.assertEqual(result.returncode, 1)
        self.assertIn("cannot write", result.stderr)
        self.assertFalse((self.patch / "version.json").exists() or (self.patch / ".publish").exists())


class Check(PublishTest):
    def test_damage(self):
        self.make_game(30)
        self.publish(1, "--archive-size", 1)
        manifest = self.manifest()
        file = next(f for f in manifest["files"] if f["size"] == 30000)
        bundle = max(manifest["bundles"], key=lambda b: len(b["files"]))
        sound = self.root / "sound"
        shutil.copytree(self.www, sound)

        def flip(name):
            place = self.patch / name
            data = bytearray(place.read_bytes())
            data[len(data) // 2] ^= 1
            place.write_bytes(data)

        def repack(change):
            """Replaces the archive by another sound ZIP, with its right size and digest in the manifest."""
            with zipfile.ZipFile(self.patch / bundle["name"]) as archive:
                members = [(name, archive.read(name)) for name in archive.namelist()]
            with zipfile.ZipFile(self.patch / bundle["name"], "w") as archive:
                for name, data in change(members):
                    archive.writestr(name, data)
            data = (self.patch / bundle["name"]).read_bytes()
            edit(lambda m: next(b for b in m["bundles"] if b["name"] == bundle["name"]).update(
                size=len(data), sha256=digest(data)))

        def edit(change):
            value = self.manifest()
            change(value)
            (self.patch / "version.json").write_text(json.dumps(value), encoding="utf-8")

        cases = [
            (lambda: flip(file["url"]), "has another digest"),
            (lambda: (self.patch / file["url"]).unlink(), "is missing"),
            (lambda: (self.patch / file["url"]).write_bytes(b""), "has 0 bytes instead of 30000"),
            (lambda: flip(bundle["name"]), "archive " + bundle["name"]),
            (lambda: (self.patch / bundle["name"]).unlink(), "is missing"),
            (lambda: repack(lambda m: m[1:]), "lacks the entry " + bundle["files"][0]),
            (lambda: repack(lambda m: m + [("extra", b"")]), "holds the entry extra"),
            (lambda: repack(lambda m: [(m[0][0], b"other"), *m[1:]]), "with another content"),
            (lambda: edit(lambda m: m["files"].append(m["files"][0])), "stands there twice"),
            (lambda: edit(lambda m: m["files"][0].update(path="../x")), "its path"),
            (lambda: edit(lambda m: m["bundles"].append(m["bundles"][0])), "lists too"),
            (lambda: edit(lambda m: m["bundles"][0]["files"].append("nothing")), "is no file of the manifest"),
            (lambda: edit(lambda m: m["files"][0].update(sha256=m["files"][0]["sha256"].upper())), "lower-case"),
        ]
        for damage, finding in cases:
            shutil.rmtree(self.www)
            shutil.copytree(sound, self.www)
            self.check([])
            damage()
            with self.subTest(finding=finding):
                self.check([finding])


class Deaths(PublishTest):
    def test_the_old_version_stays_until_the_new_one_is_whole(self):
        chance = random.Random(SEED)
        self.make_game(200)
        self.publish(1)
        old = (self.patch / "version.json").read_bytes()
        interrupted = 0
        for version in range(2, 32):
            for i in chance.sample(range(200), 60):
                self.write(f"data/v/{i}.bin", chance.randbytes(20000) + b"%d" % version)
            process = subprocess.Popen([PROGRAM, "--client", str(self.client), "--out", str(self.www), "--version",
                                        str(version), "--archive-size", "1", "--quiet"])
            time.sleep(chance.uniform(0, 0.15))
            process.send_signal(signal.SIGKILL)
            process.wait()
            now = (self.patch / "version.json").read_bytes()
            if now == old:
                interrupted += 1
                for f in json.loads(old)["files"]:
                    self.assertTrue((self.patch / f["url"]).exists())
                self.publish(version, "--archive-size", 1)
                now = (self.patch / "version.json").read_bytes()
            self.check([])
            self.assertEqual(json.loads(now)["version"], version)
            old = now
        self.assertGreater(interrupted, 5)
        self.publish(99, "--prune", "--keep", 1)
        self.prove()
        self.assertFalse((self.patch / ".publish").exists())

    def test_a_client_that_changes_meanwhile(self):
        self.make_game(200)
        self.write("noise.bin", random.Random(SEED).randbytes(1 << 20) * 24)
        process = subprocess.Popen([PROGRAM, "--client", str(self.client), "--out", str(self.www), "--version", "1"],
                                   stderr=subprocess.PIPE, text=True)
        stored = self.patch / f"files/{digest(b'program')[:2]}/{digest(b'program')}"
        deadline = time.monotonic() + 30
        while not stored.exists() and time.monotonic() < deadline:
            time.sleep(0.002)
        self.write("Tolmira.exe", b"PROGRAM")  # its old content has been taken, and the size stays
        _, text = process.communicate(timeout=120)
        self.assertEqual(process.returncode, 1, text)
        self.assertIn("the client directory changed while it was being published: Tolmira.exe", text)
        self.assertFalse((self.patch / "version.json").exists())


if __name__ == "__main__":
    if "--publisher" in sys.argv:
        at = sys.argv.index("--publisher")
        PROGRAM = sys.argv[at + 1]
        del sys.argv[at:at + 2]
    PROGRAM = os.path.abspath(PROGRAM)
    unittest.main()
