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
        self.bundles = {f"archive {number}-v{self.version}.zip": names[number::self.archives]
                        for number in range(self.archives)}
        return publish(server, self.version, {name: self.files[name] for name in names}, self.bundles, **extra)


def publish(server, version, files, bundles, **extra):
    """Puts the files on the server, each under its digest, and an archive for each name (name: paths)."""
    entries, archives = [], []
    for name, data in files.items():
        url = f"files/{digest(data)}"
        server.content["/patch/" + url] = data
        entries.append({"path": name, "size": len(data), "sha256": digest(data), "url": url})
    for name, members in bundles.items():
        data = server.content["/patch/" + name] = archive({path: files[path] for path in members})
        archives.append({"name": name, "size": len(data), "sha256": digest(data), "files": members})
    return publish_manifest(server, {"version": version, "files": entries, "bundles": archives, **extra})


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
