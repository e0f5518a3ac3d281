"""A made-up game: files, archives and the manifest that lists them."""
import hashlib
import io
import json
import random
import zipfile


def digest(data):
    return hashlib.sha256(data).hexdigest()


class Game:
    def __init__(self, seed, count, version=1, archives=0):
        self.random = random.Random(seed)
        self.version = version
        self.files = {}
        for i in range(count):
            size = self.random.choice([0, 1, 100, 5000, 70000])
            name = f"data/d{i % 5}/fichier {i} \u00e9.bin" if i % 3 else f"f{i}.dat"
            self.files[name] = (b"%d," % i + self.random.randbytes(50)) * (size // 50 + 1)
        self.files["Tolmira.exe"] = b'#!/bin/sh\necho "$PWD|$1|$#" >"$PWD/started"\n'
        self.archives = archives
        self.bundles = {}  # name of each published archive: its paths

    def next_version(self):
        self.version += 1
        for name in self.random.sample(sorted(self.files), len(self.files) // 3):
            if name != "Tolmira.exe":
                self.files[name] = self.files[name][::-1] + b"v%d" % self.version

    def publish(self, server, **extra):
        """Puts everything on the server; returns the manifest's bytes."""
        names = sorted(self.files, key=lambda name: name.encode())
        entries = []
        for name in names:
            data = self.files[name]
            url = f"files/{digest(data)}"
            server.content["/patch/" + url] = data
            entries.append({"path": name, "size": len(data), "sha256": digest(data), "url": url})
        bundles = []
        self.bundles = {}
        for number in range(self.archives):
            members = names[number::self.archives]
            data = archive({name: self.files[name] for name in members})
            name = f"archive {number}-v{self.version}.zip"
            self.bundles[name] = members
            server.content["/patch/" + name] = data
            bundles.append({"name": name, "size": len(data), "sha256": digest(data), "files": members})
        manifest = {"version": self.version, "files": entries, "bundles": bundles, **extra}
        return publish_manifest(server, manifest)


def publish_manifest(server, manifest):
    text = json.dumps(manifest, ensure_ascii=False).encode()
    server.content["/patch/version.json"] = text
    return text


def archive(members):
    out = io.BytesIO()
    with zipfile.ZipFile(out, "w", zipfile.ZIP_DEFLATED, compresslevel=1) as zip_file:
        for name, data in members.items():
            zip_file.writestr(name, data)
    return out.getvalue()
