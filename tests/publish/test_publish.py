#!/usr/bin/env python3
"""Drives patch-publish as a publisher does: test_publish.py [--publisher PROGRAM] [unittest arguments]."""
import contextlib
import hashlib
import http.server
import json
import os
import pathlib
import random
import re
import shutil
import signal
import socket
import subprocess
import sys
import tempfile
import threading
import time
import unittest
import zipfile

PROGRAM = os.path.abspath("build/linux/bin/patch-publish")
SEED = 20261124


def run(*arguments, under=(), **environment):
    """Runs the publisher, as an argument of the command `under` if there is one."""
    return subprocess.run([*under, PROGRAM, *map(str, arguments)], capture_output=True, text=True, timeout=300,
                          env={**os.environ, **environment})


def digest(data):
    return hashlib.sha256(data).hexdigest()


def content_name(hexadecimal):
    return f"f/{hexadecimal[:2]}/{hexadecimal[2:16]}"


def make_launcher(place, build=27, name="Patcher", version="1,%d,0,0"):
    """Makes a Windows program that only has a version, with the tools that also build the launcher."""
    source, resource = place.with_suffix(".rc"), place.with_suffix(".o")
    source.write_text(f'1 VERSIONINFO FILEVERSION {version.replace("%d", str(build))} BEGIN BLOCK "StringFileInfo" BEGIN '
                      f'BLOCK "040C04B0" BEGIN VALUE "CompanyName", "x" VALUE "InternalName", "{name}" END END END\n')
    subprocess.run(["i686-w64-mingw32-windres", source, "-O", "coff", resource], check=True)
    subprocess.run(["i686-w64-mingw32-ld", "--strip-all", "-e", "0", resource, "-o", place], check=True)
    return place


class PublishTest(unittest.TestCase):
    def setUp(self):
        folder = tempfile.TemporaryDirectory(prefix="patch-publish-")
        self.addCleanup(folder.cleanup)
        self.addCleanup(os.umask, os.umask(0o077))
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

    def publish(self, version, *more, **how):
        return self.command("--client", self.client, "--version", version, *more, **how)

    def report(self, *arguments, code=0):
        """Runs a command and returns its JSON object."""
        report = json.loads(self.command(*arguments, "--json", "--quiet", code=code).stdout)
        self.assertEqual((report["done"], "error" in report), (code in (0, 3), code != 0))
        return report

    def tree(self):
        return {p: (p.stat().st_mtime_ns, p.stat().st_size) for p in self.root.rglob("*")}

    def command(self, *arguments, code=0, under=()):
        result = run("--out", self.www, *arguments, under=under)
        self.assertEqual(result.returncode, code, result.stderr)
        return result

    def start(self, version):
        """Starts a publisher and does not wait for it."""
        arguments = ["--client", self.client, "--out", self.www, "--version", str(version), "--archive-size", "1"]
        process = subprocess.Popen([PROGRAM, *arguments, "--quiet"], stderr=subprocess.PIPE, text=True)
        self.addCleanup(process.communicate)
        self.addCleanup(process.kill)
        return process

    def content(self, data):
        return self.patch / content_name(digest(data))

    def copies(self):
        """Returns the versions in the history."""
        return sorted(int(place.stem) for place in (self.patch / "history").iterdir())

    def damage(self, place):
        data = bytearray(place.read_bytes())
        data[len(data) // 2] ^= 1
        place.write_bytes(data)

    def manifest(self):
        return json.JSONDecoder().raw_decode((self.patch / "version.json").read_text())[0]

    def prove(self):
        """Verifies what launchers rely on, with another implementation of ZIP, JSON and SHA-256; returns the manifest."""
        manifest = self.manifest()
        wanted = {p.relative_to(self.client).as_posix(): digest(p.read_bytes()) for p in self.client.rglob("*") if p.is_file()}
        self.assertEqual([(f["path"], f["sha256"]) for f in manifest["files"]],
                         sorted(wanted.items(), key=lambda item: item[0].encode()))
        for entry in manifest["files"] + manifest["bundles"]:
            data = (self.patch / (entry.get("url") or entry["name"])).read_bytes()
            self.assertEqual((len(data), digest(data)), (entry["size"], entry["sha256"]))
        self.deflated = set()
        for b in manifest["bundles"]:
            with zipfile.ZipFile(self.patch / b["name"]) as archive:
                self.assertEqual(archive.namelist(), b["files"])
                for entry in archive.infolist():
                    self.assertEqual(digest(archive.read(entry)), wanted.pop(entry.filename, "in no other archive"))
                    if entry.compress_type == zipfile.ZIP_DEFLATED:
                        self.deflated.add(entry.filename)
        self.unpacked = set(wanted)
        return manifest

    def check(self, *findings, place=None, **environment):
        """Checks the folder, or a server, which must have exactly these findings."""
        result = run("--check", place or self.www, "--quiet", *(["--all"] if place else []), **environment)
        self.assertEqual((result.returncode, result.stderr), (1 if findings else 0, ""), result.stdout)
        missing = [finding for finding in findings if finding not in result.stdout]
        self.assertEqual((missing, result.stdout.count("\n")), ([], len(findings)), result.stdout)


class Versions(PublishTest):
    def test_three_versions(self):
        self.make_game()
        (self.patch / "f").mkdir(parents=True)
        self.publish(1, "--archive-size", 1)
        first = self.prove()
        elsewhere, copy = self.root / "elsewhere", self.root / "copy"
        shutil.copytree(self.client, copy, copy_function=shutil.copyfile)
        run("--client", copy, "--out", elsewhere, "--version", 1, "--archive-size", 1)
        self.assertEqual((elsewhere / "patch/version.json").read_bytes(), (self.patch / "version.json").read_bytes())
        self.assertIn(["big.bin"], [b["files"] for b in first["bundles"]], "above the limit: an archive of its own")

        changed, gone = "f3.dat", "f6.dat"
        self.write(changed, b"new content")
        self.write("new/dir/file.txt", b"new file")
        (self.client / gone).unlink()
        self.content(b"program").chmod(0o600)
        self.publish(2, "--archive-size", 1)
        second = self.prove()
        self.assertEqual(self.unpacked, set())
        groups = {b["since"]: b for b in second["bundles"]}
        self.assertEqual(groups[2]["files"], [changed, "new/dir/file.txt"])
        for bundle in first["bundles"]:
            self.assertEqual(bundle in second["bundles"], not {changed, gone} & set(bundle["files"]))

        self.write(changed, b"newest")
        text = self.publish(3, "--archive-size", 1).stdout
        third = self.prove()
        self.assertEqual([b["files"] for b in third["bundles"] if b["since"] == 2], [["new/dir/file.txt"]])
        self.assertRegex(text, r"\n  from version 2 +1 +0 +6  .*\n  from version 1 +2 +0 +14  ")
        self.check()
        before = self.tree()
        self.publish(4)
        after = self.tree()
        self.assertEqual([p.name for p in before if p.is_file() and after[p] != before[p]], ["version.json"])
        for place in self.patch.rglob("*"):
            self.assertEqual(place.stat().st_mode & 0o777, 0o755 if place.is_dir() else 0o644, place)

    def test_launcher(self):
        self.make_game(3)
        self.publish(1)
        new, newer = make_launcher(self.root / "a.exe"), make_launcher(self.root / "b.exe", 28)
        cut, native = self.root / "c", pathlib.Path(shutil.which("true"))
        cut.write_bytes(new.read_bytes()[:-1])
        for arguments, reason in [
                ([new, "--launcher-build", 99], "is build 27, not 99"), ([cut], "not a complete program"), ([self.root / "g"], "No such file"),
                ([make_launcher(self.root / "e.exe", name="Other")], "'Other'"), ([native], "--launcher-build"),
                ([make_launcher(self.root / "f.exe", version="2,%d,0,0")], "2.27.0.0")]:
            self.assertIn(reason, self.publish(2, "--launcher", *arguments, code=1).stderr)
        self.publish(2, "--launcher", new)
        self.assertIn("other contents", self.publish(2, "--launcher", newer, code=1).stderr)
        self.assertNotIn("another launcher", self.publish(3, "--launcher", new).stderr)
        name = digest(new.read_bytes())
        self.assertEqual([self.manifest()[key] for key in ("patcherVersion", "patcherUrl", "patcherSha256")],
                         [27, f"launcher/{name}.exe", name])
        self.publish(4, "--launcher", newer, "--launcher-build", 28)
        self.check()
        for _ in ("live", "in the history"):
            self.assertIn("never go back", self.publish(5, "--launcher", new, code=1).stderr)
            shutil.copy(self.patch / "history/3.json", self.patch / "version.json")
        self.publish(5)
        self.assertEqual(self.manifest()["patcherVersion"], 28)
        self.publish(6, "--launcher", new, "--allow-older-launcher")
        self.assertEqual(self.manifest()["patcherVersion"], 27)
        shutil.copy(newer, self.patch / self.manifest()["patcherUrl"])
        self.check("has another digest", "launcher: it is build 28, the manifest says 27",
                   *[f"version {version}, launcher: it is build 28" for version in (2, 3, 6)])
        self.assertIn("with --launcher", self.publish(7, "--allow-older-launcher", code=1).stderr)
        self.publish(7, "--launcher", native, "--launcher-build", 29)

    def test_prune(self):
        self.make_game(3)
        contents = [b"version %d" % version for version in range(1, 6)]
        for version, data in enumerate(contents, 1):
            self.write("changing.txt", data)
            self.publish(version, *(["--prune", "--keep", 3] if version == 5 else []))

        def left():
            return [version for version, data in enumerate(contents, 1) if self.content(data).exists()]

        self.assertEqual((left(), self.copies()), ([3, 4, 5], [3, 4, 5]))
        kept = {b["name"] for v in (3, 4, 5) for b in json.loads((self.patch / f"history/{v}.json").read_bytes())["bundles"]}
        self.assertEqual({f"archives/{p.name}" for p in (self.patch / "archives").iterdir()}, kept)
        self.prove()
        shutil.copy(self.patch / "history/3.json", self.patch / "version.json")
        self.check()
        self.assertIn("not above version 5", self.publish(5, code=1).stderr)
        self.publish(6, "--prune", "--keep", 2)
        self.assertEqual(left(), [3, 5], "what was live stays")

        stored = set(self.patch.rglob("*"))
        history = self.patch / "history"
        history.chmod(0o555)
        without_rights = ["setpriv", "--bounding-set=-dac_override"] if os.getuid() == 0 else []
        self.assertIn("cannot delete", self.command("--prune", "--keep", 1, code=1, under=without_rights).stderr)
        history.chmod(0o755)
        broken = history / "3.json"
        whole = broken.read_bytes()
        broken.unlink()
        broken.mkdir()
        self.assertIn("Is a directory", self.command("--prune", "--keep", 1, code=1).stderr)
        self.write("changing.txt", b"version 7")
        failed = self.report("--client", self.client, "--version", 7, "--prune", "--keep", 1, code=3)
        self.assertIn("published version 7, but", failed["error"])
        self.assertLessEqual(stored, set(self.patch.rglob("*")), "nothing is deleted")
        self.assertGreater(self.manifest()["sequence"], 1000, "above what the unreadable copy may have had")
        broken.rmdir()
        broken.write_bytes(whole)
        self.assertIn("already published", self.publish(7, "--prune", "--keep", 1).stdout)
        self.assertEqual(self.copies(), [7])
        self.check()

    def test_hold_and_go_live(self):
        self.make_game(20)
        live = self.patch / "version.json"
        launcher = make_launcher(self.root / "a.exe")
        for version in (1, 2, 3):
            self.write("changing.txt", b"version %d" % version)
            self.publish(version, *(["--hold"] if version != 2 else ["--launcher", launcher]))
            self.assertEqual(live.exists(), version > 1)
        self.assertIn("already published", self.publish(3, "--hold").stdout)
        self.assertIn("--live 3", self.publish(3, code=1).stderr)
        self.assertIn("launcher build 27", self.command("--live", 1).stdout)  # it was held before there was a launcher
        self.command("--live", 2)
        self.publish(4, "--hold", "--prune", "--keep", 1)
        self.assertIn("it has 4, 3, 2", self.command("--live", 1, code=1).stderr)
        self.assertIn("version 3 is live: launcher build 27", self.command("--live", 3).stdout)
        self.check()
        self.damage(self.content(b"version 2"))
        self.check("version 2, file changing.txt")
        self.assertIn("another digest", self.command("--live", 2, code=1).stderr)
        self.content(b"version 2").write_bytes(b"version 2")
        live.write_text("<html>")
        self.command("--live", 2, "--prune", "--keep", 2)
        self.write("changing.txt", b"version 2")
        manifest = self.prove()
        self.assertEqual((manifest["version"], manifest["patcherVersion"]), (2, 27))
        self.assertEqual(self.copies(), [2, 3, 4])

        # The live manifest is lost.
        self.publish(5, "--hold")
        text = live.read_bytes()
        live.unlink()
        self.assertIn("--live 2", run("--check", self.www).stderr)
        self.assertIn("version 2 is live again", self.publish(2, "--hold", code=1).stderr)
        self.assertEqual(live.read_bytes(), text)
        live.unlink()
        self.content(b"version 2").unlink()
        self.assertIn("so are contents of version 2", self.publish(3, code=1).stderr)
        self.assertFalse(live.exists())
        (self.patch / "history/3.json").write_text("{")
        self.assertIn("history/3.json", self.publish(6, code=1).stderr)

    def test_signatures(self):
        key, damaged = self.root / "key", self.root / "damaged"
        public = run("keygen", key).stdout.strip()
        line = key.read_text()
        self.assertEqual((key.stat().st_mode & 0o777, line.split()[2]), (0o600, public))
        self.assertEqual((run("keygen", key).returncode, key.read_text()), (1, line))

        def is_signed(by=public):
            return run("--check", self.www, "--signed-by", by).returncode == 0

        self.write("a", b"1")
        self.publish(1, "--sign", key)
        self.assertEqual((is_signed(), is_signed(by=run("keygen", self.root / "other").stdout.strip())), (True, False))
        self.assertIn("already published", self.publish(1, "--sign", key).stdout)
        self.assertIn("--sign", self.publish(2, code=1).stderr)
        self.publish(2, "--hold")
        self.assertIn("--sign", self.command("--live", 2, code=1).stderr)
        for arguments, done, signed in [(["--sign", key], "is live:", True), (["--sign", key], "live already", True),
                                        (["--unsigned"], "is live:", False), (["--sign", key], "is live:", True)]:
            self.assertIn(done, self.command("--live", 2, *arguments).stdout)
            self.assertEqual(is_signed(), signed)
            if not signed:
                self.assertIn("--live 2", self.publish(2, "--sign", key, code=1).stderr)
        self.assertEqual(self.manifest()["sequence"], 5)
        for text in ("", line.replace("key", "kex"), line[:-2], line.replace(line.split()[1], "1" * 64)):
            damaged.write_text(text)
            self.publish(3, "--sign", damaged, code=1)
        for place in (self.client, self.www):
            shutil.copy(key, place / "key")
            self.assertIn("private key", self.publish(3, "--sign", place / "key", code=1).stderr)
        self.assertIn("signed by another key", self.publish(3, "--sign", self.root / "other").stderr)
        self.publish(4, "--unsigned")
        self.publish(5, "--hold", "--sign", key)
        self.assertIn("--sign", self.command("--live", 5, code=1).stderr)  # the copy of 5 is signed
        self.command("--live", 5, "--sign", key)
        (self.patch / "version.json").unlink()
        self.assertIn("--sign", self.command("--live", 4, code=1).stderr)  # 5 was live last

    def test_a_damaged_store(self):
        self.make_game(20)
        self.write("changing", b"first" * 1000)
        self.publish(1)
        self.write("changing", b"other" * 1000)
        self.publish(2)
        self.write("changing", b"first" * 1000)
        archive = self.patch / self.manifest()["bundles"][0]["name"]
        sound = archive.read_bytes()
        for place in (self.content(b"first" * 1000), self.content(b"program"), archive):
            self.damage(place)
        self.check("version 1, file changing", "file Tolmira.exe", "archive archives/")
        text = self.publish(3).stderr
        self.assertEqual(text.count("was damaged"), 3, text)
        self.check()
        manifest = self.prove()
        self.assertEqual(archive.read_bytes(), sound)
        # Two archives list the same path.
        manifest["bundles"].append({**manifest["bundles"][0], "since": 2})
        (self.patch / "version.json").write_text(json.dumps(manifest))
        self.publish(4)
        self.prove()
        (self.patch / "f/00").mkdir(exist_ok=True)
        (self.patch / f"f/00/{'0' * 14}").write_bytes(b"nothing uses this")
        self.check("unused: f/00/")

    def test_a_store_with_other_names(self):
        """Some contents have names of an earlier release, and one has the name that a new content would get."""
        self.make_game(20)
        self.write("first", b"1")
        self.publish(1)
        names = {f["url"]: f"files/{f['sha256'][:2]}/{f['sha256']}" for f in self.manifest()["files"]}
        taken = content_name(digest(b"new"))
        names[content_name(digest(b"1"))] = taken
        documents = [self.patch / name for name in ("version.json", "history/1.json")]
        for name, other in names.items():
            (self.patch / other).parent.mkdir(parents=True, exist_ok=True)
            (self.patch / name).rename(self.patch / other)
            for place in documents:
                place.write_text(place.read_text().replace(f'"{name}"', f'"{other}"'))
        for place in documents:
            place.write_text(json.dumps(json.loads(place.read_text()), indent=2, ensure_ascii=False))
        self.check()
        self.assertIn("live already", self.command("--live", 1).stdout)
        self.damage(self.patch / names[content_name(digest(b"program"))])
        self.write("new.txt", b"new")
        forecast = self.report("--client", self.client, "--version", 2, "--dry-run")["upload"]
        self.assertEqual((forecast["contents"]["files"], forecast["renamed"]["files"]), (len(names) + 1, len(names) - 1))
        self.publish(2)
        urls = {f["path"]: f["url"] for f in self.prove()["files"]}
        self.assertEqual([urls["first"], urls["new.txt"]], [content_name(digest(b"1")), f"f/{digest(b'new')[:2]}/{digest(b'new')[2:]}"])
        self.assertEqual({(self.patch / name).stat().st_nlink for name in names.values()}, {1, 2}, "not stored twice")
        self.check("version 1, file Tolmira.exe: files/")
        self.command("--prune", "--keep", 1)
        self.assertFalse([p for p in (self.patch / "files").rglob("*") if p.is_file()])
        self.check()

    def test_forecasts_reports_and_upload_lists(self):
        self.make_game()
        publish = ["--client", self.client, "--version=next"]
        launcher = make_launcher(self.root / "l.exe")

        def forecast(*arguments):
            before = self.tree()
            report = self.report(*arguments)
            self.assertEqual(self.tree(), before, "nothing is written")
            return report

        expected = forecast(*publish, "--dry-run")
        first = self.report(*publish)
        self.assertAlmostEqual(expected["upload"]["manifestBytes"], first["manifestBytes"], delta=5)
        (self.client / "f0.dat").unlink()
        self.write("f3.dat", b"changed" * 5)
        for name in ("new", "same content"):
            self.write(name, b"new content" * 5000)
        expected = forecast(*publish, "--dry-run", "--launcher", launcher)
        self.assertIn("\n  changed           1 files                 35  35 bytes\n", self.command(*publish, "--dry-run").stdout)
        self.assertEqual([f["path"] for f in expected["largest"]], ["new", "same content", "f3.dat"])
        upload = expected["upload"]
        second = self.report(*publish, "--launcher", launcher)
        self.assertEqual([upload["contents"], upload["launcherBytes"], upload["archives"]["files"], expected["changes"]],
                         [{"files": 2, "bytes": 55035}, launcher.stat().st_size, second["archivesBuilt"], second["changes"]])

        lines = [line.split("\t") for line in self.command("--list-upload", 0).stdout.splitlines()]
        self.assertEqual([*dict.fromkeys(p.split("/")[1] for p, *_ in lines)], ["f", "archives", "launcher", "version.json"])
        manifest = self.manifest()
        names = {e.get("url") or e["name"] for e in manifest["files"] + manifest["bundles"]} | {manifest["patcherUrl"], "version.json"}
        self.assertEqual({path: int(size) for path, size, *_ in lines},
                         {f"patch/{name}": (self.patch / name).stat().st_size for name in names})
        self.assertEqual([lines[0][3], *lines[-1][2:]], ["public, max-age=31536000, immutable", "application/json", "no-store"])
        new = {self.www / line.split("\t")[0] for line in self.command("--list-upload", 1).stdout.splitlines()}
        self.assertEqual(len(new), 3 + second["archivesBuilt"] + 1)
        self.assertIn(self.content(b"new content" * 5000), new)
        self.assertIn("no version 7; --list-upload 0", self.command("--list-upload", 7, code=1).stderr)

        self.publish(7, "--hold")
        self.assertEqual(self.report(*publish, "--dry-run")["version"], 8)
        status = self.report("--status")
        self.assertEqual((status["downloads"], status["live"]["version"]), (second["downloads"], 2))
        self.assertIn("\nheld:      7\nhistory:   2 1\n", self.command("--status").stdout)
        self.assertEqual(self.report("--live", 1)["downloads"][0]["version"], 2)
        self.assertIn("launcher/", self.command("--list-upload", 1).stdout)  # a server of version 1 may lack it
        self.assertEqual([row["version"] for row in self.report("--status")["downloads"]], [0, 2])
        with open("/dev/full", "w", encoding="ascii") as full:
            self.assertEqual(subprocess.run([PROGRAM, "--help"], stdout=full, stderr=subprocess.DEVNULL, check=False).returncode, 1)
        status = forecast("--status", "--keep", 1)
        self.assertEqual({**self.report("--prune", "--keep", 1)["pruned"], "keep": 1}, status["pruning"])
        self.assertIn("see --help", self.report("--nonsense", code=2)["error"])
        self.damage(self.content(b"program"))
        check = run("--check", self.www, "--json")
        self.assertEqual((check.returncode, len(json.loads(check.stdout)["findings"])), (1, 1))

    def test_what_is_deflated(self):
        """Above 64 MiB samples decide, below that the packed size. Noise at both ends and in the middle does not matter."""
        noise, text = random.Random(SEED).randbytes(1 << 20), b"a line of text\n" * 100000
        for name, data in {"hollow.bin": (noise[:150000] + text) * 2 + noise[:150000], "hardly.bin": noise[:9000] + bytes(150),
                           "some.bin": noise[:9000] + bytes(999), "tiny.bin": b"abc", "large.noise.bin": noise * 65,
                           "large.hollow.bin": noise * 33 + text * 20 + noise * 3}.items():
            self.write(name, data)
        self.publish(1, "--archive-size", 1)
        manifest = self.prove()
        self.assertEqual(self.deflated, {"hollow.bin", "some.bin", "large.hollow.bin"})
        self.assertIn(["hardly.bin", "some.bin", "tiny.bin"], [b["files"] for b in manifest["bundles"]])


class Refusals(PublishTest):
    def test_names(self):
        self.make_game(3)
        for name in ("con", "data/Aux.txt", "lpt1.a.b", "dot./x", "blank ", "a:b", "back\\slash", "tab\tname", "F0.DAT",
                     "data/D1/FICHIER \u00c9 1.bin", "f0.DAT/inner", "data/\udcff\udcfe.bin"):
            self.write(name, b"x")
        (self.client / "link").symlink_to("f0.dat")
        os.mkfifo(self.client / "pipe")
        text = self.publish(1, code=1).stderr
        for reason, count in {"link is a link": 1, "pipe is neither": 1, "device's name": 3, "ends in a dot or a blank": 2,
                              "the character :": 1, "the character \\": 1, "control": 1, "data/\ufffd\ufffd.bin is not UTF-8": 1,
                              "differs only in case": 2, "a directory of f0.DAT/inner": 2, "\n  ": 15}.items():
            self.assertEqual(text.count(reason), count, text)
        self.assertFalse((self.patch / "version.json").exists())

    def test_what_belongs_to_an_installation_stays_out(self):
        own = ["patcher.ini", "patch_manifest.json", "patcher_debug.txt", "Patcher.exe", "PATCHER.OLD.EXE", "OSTU.INI",
               "Patcher.new.exe", "_bundle0.part", "x.dll.old", "data/x.bin.part", "WebView2Data/cache/a", "patcher-stdio/x"]
        stray = ["data/old.old", ".git/config", "data/.DS_Store", "data/THUMBS.DB"]
        excluded = ["data/deep/x.pdb", "tmp/x", "data/a1.log", "notes/b", "sound/x.wav", "sound/deep/x.wav"]
        kept = ["Tolmira.exe", "a" * 201, "b" * 200, "data/a/.log", "data/a12.log", "data/notes/b", "data/ostu.ini.txt", "data/tmp",
                "no/s", "x.pdb.txt", "\u00e9"]
        for name in own + stray + excluded + kept:
            self.write(name, b"")
        self.write(".publishignore", b"\xef\xbb\xbf/no*s \r\n# notes\r\n\r\n*.PDB\r\nnothing*\r\nsound/**.wav\r\n")
        text = self.publish(1, "--exclude", "tmp/", "--exclude", "data\\a?.log").stderr
        self.assertEqual([f["path"] for f in self.manifest()["files"]], kept)
        for name in own[:-2] + stray[2:] + [".publishignore: nothing* matches nothing", "--exclude tmp/", "\n  .git\n",
                                            "too long on Windows:\n  " + "a" * 201 + "\nnotice",
                                            "not ASCII: on Windows they depend on the player's code page:\n  \u00e9\n"]:
            self.assertIn(name, text)
        self.assertEqual(text.count("matches nothing"), 1)
        self.write(".publishignore", b"!x")
        self.assertIn("not supported", self.publish(2, code=1).stderr)

    def test_versions_folders_and_disks_without_room(self):
        self.assertIn("no file to publish", self.publish(1, code=1).stderr)
        self.make_game(3)
        self.publish(5)
        self.assertIn("already published", self.publish(5).stdout)
        self.assertIn("not above version 5", self.publish(4, code=1).stderr)
        self.write("f0.dat", b"another content" * 100000)
        self.assertIn("with other contents", self.publish(5, code=1).stderr)
        self.assertIn("contain each other",
                      run("--client", self.client, "--out", self.client / "www", "--version", 6).stderr)
        self.assertIn("none is not a directory", run("--client", self.root / "none", "--out", self.www, "--version", 6).stderr)
        (self.patch / "version.json").write_text("<html>")
        self.assertIn("is not a manifest", self.publish(6, code=1).stderr)
        self.assertIn("nothing is published", run("--check", self.root).stderr)
        (self.patch / "version.json").unlink()
        limit = ["bash", "-c", 'ulimit -f 500; trap "" XFSZ; exec "$@"', "-"]
        self.assertRegex(self.publish(6, code=1, under=limit).stderr, "cannot write .*: File too large")
        self.assertEqual((self.manifest()["version"], (self.patch / ".publish").exists()), (5, False))
        os.truncate(self.client / "f0.dat", 8 << 40)
        text = self.publish(6, code=1).stderr
        self.assertIn("there is not enough space: 8.8 TB", text)
        self.assertNotIn("hashing", text)

    def test_usage(self):
        help_text = run("-h").stdout
        self.assertEqual(help_text, run("--help", "--json").stdout)
        options = set(re.findall(r"(?m)^  (?:-h, )?(--[a-z-]+)", help_text))
        manual = (pathlib.Path(__file__).parents[2] / "packaging/patch-publish.1").read_text().replace("\\-", "-")
        self.assertEqual(options, set(re.findall(r'(?m)^\.TP\n\.\w+ (?:-h ", " )?(--[a-z-]+)', manual)))
        base = ["--client", "c", "--out", "w"]
        full = base + ["--version", "1"]
        cases = [
            ([], "--client is missing"), (base, "--version is missing"), (base + ["--version", "0"], "1 to 2147483647, not '0'"),
            (base + ["--version", "1x"], "'1x'"), (base + ["--version", "2147483648"], "'2147483648'"),
            (full + ["--exclude", ""], "needs a value"), (full + ["--keep", "2"], "--keep needs --prune"),
            (full + ["--prune", "--keep", "0"], "--keep takes"), (full + ["--launcher-build", "1"], "needs --launcher"),
            (full + ["--archive-size", "2048"], "from 1 to 2047"), (full + ["--version", "2"], "is given twice"),
            (full + ["--live", "1"], "--client does not go together with --live"), (["--prune"], "--out is missing"),
            (["--check"], "needs a value"), (["--check", "w", "--version", "1"], "--version does not go"),
            (["--verison"], "(did you mean --version?)"), (["--client", "--out", "w"], "--client needs a value; --out is an option"),
            (["--hold=1"], "--hold takes no value"), (["--check", "http://h/x"], "ignore a path"),
            (full + ["--sign", "k", "--unsigned"], "--unsigned does not go together with --sign"),
            (full + ["--all"], "--all does not go together with publishing"), (full + ["--dry-run", "--prune"], "--prune does not go"),
            (["--check", "https://"], "not the address"), (["--check", "w", "--signed-by", "ab"], "128 hexadecimal digits"),
        ]
        for arguments, reason in cases:
            result = run(*arguments)
            self.assertEqual((result.returncode, result.stdout), (2, ""), arguments)
            self.assertIn(reason, result.stderr)
            self.assertIn("--help", result.stderr)
        self.assertIn("c is not a directory", run(*base, "--version", 2147483647, "--archive-size", 2047).stderr)


class Check(PublishTest):
    def test_damage(self):
        for version in range(1, 6):
            for name in ("a", "b"):
                self.write(f"{name}{version}", f"{name}{version}".encode() * 100)
            self.write("not..packed", b"")
            self.publish(version)
        for copy in (self.patch / "history").iterdir():
            copy.unlink()
        manifest = self.manifest()
        files, bundles = {f["path"]: f for f in manifest["files"]}, manifest["bundles"]
        self.damage(self.patch / files["a1"]["url"])
        (self.patch / files["b1"]["url"]).unlink()
        (self.patch / files["a2"]["url"]).write_bytes(b"")
        self.damage(self.patch / bundles[0]["name"])
        (self.patch / bundles[1]["name"]).unlink()
        bundles[0]["files"] += ["a5", "nothing"]
        bundles[2]["files"].append("not..packed")
        bundles[3]["files"].remove("b4")
        files["b1"]["path"] = "../x"
        files["b2"]["sha256"] = files["b2"]["sha256"].upper()
        files["b3"]["url"] = files["a3"]["url"]
        files["b5"].update(url=files["a5"]["url"], sha256=files["a5"]["sha256"])
        manifest["files"].append(files["a4"])
        manifest["patcherVersion"] = 3
        (self.patch / "version.json").write_text(json.dumps(manifest))
        self.check(
            "file ../x: its path", f"file ../x: {files['b1']['url']} is missing", "file a1: f/", f"{files['a2']['url']} has 0 bytes instead of 200",
            "file a4 is listed twice", "file b2: its digest is not a lower-case", "file b2: f/", "cannot be the content of file a3 too",
            "launcher: it has a build number and no name", "files are not sorted by path", "it lists b1, which is not in the manifest",
            "it lists nothing, which is not in", f"it lists a5, which {bundles[0]['name']} lists too",
            f"{bundles[0]['name']} has another digest", f"{bundles[1]['name']} is missing", "it does not contain the entry not..packed",
            "launchers do not extract not..packed", "it contains the entry b4, which is not listed", "it contains the entry b5 with another content")
        shutil.copy(self.patch / "version.json", self.patch / "history/5.json")
        self.assertIn("cannot go live, 16 findings", self.command("--live", 5, code=1).stderr)


class LiveServer(PublishTest):
    def serve(self):
        """Serves the folder; `self.change` may give another answer: status, headers, blocks of the body."""
        class Handler(http.server.BaseHTTPRequestHandler):
            def do_GET(request):
                place = self.www / request.path[1:]
                found = place.is_file() and "history" not in request.path
                body = place.read_bytes() if found else b"nothing"
                cache = "no-store" if place.name == "version.json" else "public, max-age=31536000, immutable"
                headers = {"Content-Length": len(body), "Cache-Control": cache}
                status, headers, blocks = self.change(request.path, headers, body) or (200 if found else 404, headers, [body])
                head = "".join(f"{name}: {value}\r\n" for name, value in headers.items())
                with contextlib.suppress(OSError):
                    request.wfile.write(f"HTTP/1.1 {status} x\r\n{head}\r\n".encode())
                    request.wfile.writelines(blocks)

        server = http.server.ThreadingHTTPServer(("127.0.0.1", 0), Handler)
        self.addCleanup(server.server_close)
        threading.Thread(target=server.serve_forever, daemon=True).start()
        return f"http://127.0.0.1:{server.server_port}"

    def test_servers_that_lie(self):
        self.make_game(12)
        self.publish(1, "--launcher", make_launcher(self.root / "a.exe"))
        file = self.content(b"program").name
        endless = iter(lambda: bytes(1 << 20), None)
        closing = {"Cache-Control": "public, immutable, max-age=86400"}
        cases = [
            ("none", None, []),
            (file, lambda h, b: (404, h, [b]), [file + ": the status is 404"]),
            (file, lambda h, b: (200, h, [b[:-1], b"#"]), [file + ": it has another digest"]),
            (file, lambda h, b: (200, h, [b[:-1]]), [file + ": the transfer was interrupted after"]),
            (file, lambda h, b: (200, closing, endless), ["it has more than 7", "neither its length nor chunks"]),
            (file, lambda h, b: (200, {**h, "Content-Encoding": "gzip"}, [b]), [file + ": its body is encoded (gzip)"]),
            (".exe", lambda h, b: (200, h, [b[:-1], b"#"]), ["launcher/"]),
            ("version.json", lambda h, b: (200, closing, endless), ["more than 100663296", "neither its", '"no-store"']),
            ("version.json", lambda h, b: (200, {**h, "Age": 60}, [b]), ["comes from a cache"]),
            ("1.json", lambda h, b: (200, h, [b]), ["history/1.json: it is served"]),
            ("", lambda h, b: (404 if b == b"nothing" else 200, {**h, "Cache-Control": "no-store"}, [b]), [" others "]),
            (file, lambda h, b: (200, {**h, "Content-Length": 9}, [b]), [file + ": it announces 9 bytes instead of 7"]),
        ] + [(file, lambda h, b, v=value: (200, {**h, "Cache-Control": v}, [b]), [f'its Cache-Control is "{shown or value}"'])
             for value, shown in [("public, max-age=86399, immutable", ""), ("no-cache, public, max-age=86400, immutable", ""),
                                  ("\x1b[2J", "?[2J")]]
        url = self.serve()
        for end, answer, findings in cases:
            self.change = lambda path, h, b: answer(h, b) if path.endswith(end) else None
            with self.subTest(findings=findings):
                self.check(*findings, place=url)

    def test_the_configuration_of_the_guide(self):
        self.make_game(12)
        self.publish(1)
        text = (pathlib.Path(__file__).parents[2] / "docs/serving.md").read_text().split("```nginx\n")[1].split("```")[0]
        key, trust, config = self.root / "key.pem", self.root / "cert.pem", self.root / "nginx.conf"
        subprocess.run(["openssl", "req", "-x509", "-newkey", "rsa:2048", "-nodes", "-keyout", key, "-out", trust, "-subj",
                        "/CN=x", "-addext", "subjectAltName=DNS:localhost"], check=True, capture_output=True)
        with socket.create_server(("127.0.0.1", 0)) as one, socket.create_server(("127.0.0.1", 0)) as other:
            plain, secure = (s.getsockname()[1] for s in (one, other))
        own = "/etc/letsencrypt/live/patch.example.org/"
        for old, new in [("listen 443", f"listen {secure}"), ("listen 80", f"listen {plain}"), ("/srv/game", self.www),
                         ("user www-data", f"daemon off; pid {self.root}/pid; user root"), (own + "fullchain.pem", trust),
                         (own + "privkey.pem", key)]:
            text = text.replace(old, str(new), 1)
        moved = text.replace("/archives/ {", "/archives/ { return 302 http://localhost/;")
        for content, findings in [(text, []), (moved, ["launchers never go from https to http"])]:
            config.write_text(content)
            command = ["/usr/sbin/nginx", "-e", self.root / "errors", "-c", config]
            with subprocess.Popen(command) as server, contextlib.ExitStack() as stop:
                stop.callback(server.terminate)
                while server.poll() is None and not (self.root / "pid").exists():
                    time.sleep(0.01)
                self.check(*findings, place=f"https://localhost:{secure}", SSL_CERT_FILE=str(trust))
                self.check("version.json: no response: SSL", place=f"https://localhost:{secure}")
                self.check("plain http", "the status is 403", place=f"http://0.0.0.0:{plain}")

class Deaths(PublishTest):
    def test_the_old_version_stays_until_the_new_one_is_whole(self):
        chance = random.Random(SEED)
        self.make_game(60)
        self.publish(1)
        interrupted = 0
        for version in range(2, 32):
            for i in range(60):
                self.write(f"data/v/{i}.bin", chance.randbytes(20000))
            process = self.start(version)
            time.sleep(chance.uniform(0, 0.15))
            process.kill()
            process.wait()
            self.check()
            interrupted += self.manifest()["version"] != version
            self.publish(version, "--archive-size", 1, "--prune", "--keep", 1)
        self.assertGreater(interrupted, 5)
        self.prove()
        self.assertFalse((self.patch / ".publish").exists())

    def test_what_happens_while_a_publisher_works(self):
        """The publisher is stopped when it has stored zz and still reads the large file, so it has packed nothing."""
        self.make_game(3)
        self.write("large.bin", bytes(192 << 20))
        self.publish(1)
        live = self.patch / "version.json"
        for number, (change, reason) in enumerate([
                (lambda stored: self.write("zz", b"CONTENT0"), "client directory changed while it was being published: zz"),
                (self.damage, "a new archive contains the entry zz with another content"),
                (lambda stored: live.write_text(live.read_text() + " "), "version.json was replaced by another program"),
                (lambda stored: None, "")]):
            self.write("zz", b"content%d" % number)
            process = self.start(2)
            stored = self.content(b"content%d" % number)
            while not stored.exists() and process.poll() is None:
                time.sleep(0.002)
            process.send_signal(signal.SIGSTOP)
            for arguments in (["--client", self.client, "--version", 2], ["--live", 1], ["--prune"]):
                self.assertIn("another patch-publish is using", self.command(*arguments, code=1).stderr)
            change(stored)
            process.send_signal(signal.SIGCONT)
            self.assertIn(reason, process.communicate(timeout=120)[1])
            self.assertEqual((process.returncode, self.manifest()["version"]), (1, 1) if reason else (0, 2))
        self.prove()


if __name__ == "__main__":
    if sys.argv[1:2] == ["--publisher"]:
        PROGRAM = os.path.abspath(sys.argv[2])
        del sys.argv[1:3]
    unittest.main()
