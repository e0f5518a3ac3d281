"""A made-up game: files, archives and the manifest that lists them."""
import hashlib
import io
import json
import random
import zipfile

MANIFEST = "/patch/version.json"


def digest(data):
    return hashlib.sha256(data).hexdigest()


class Game:
    def __init__(self, seed, count, archives=0):
        self.random = random.Random(seed)
        self.version = 1
        self.folder = "f1"  # on the server, for single files: a late request of a dead launcher names its own version
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
        self.folder = f"f{self.version}"
        for name in self.random.sample(sorted(self.files), len(self.files) // 3):
            if name != "Tolmira.exe":
                self.files[name] = self.files[name][::-1] + b"v%d" % self.version

    def publish(self, server, **extra):
        names = sorted(self.files, key=lambda name: name.encode())
        self.bundles = {f"archive {number}-v{self.version}.zip": names[number::self.archives]
                        for number in range(self.archives)}
        return publish(server, {name: self.files[name] for name in names}, self.bundles, self.version, self.folder, **extra)


def publish(server, files, bundles=(), version=3, folder="f", **extra):
    """Puts the files on the server, and an archive for each name (name: its paths, or its bytes and the paths that the
    manifest lists). Returns the manifest's bytes."""
    entries, archives = [], []
    for path, data in files.items():
        server.content[f"/patch/{folder}/{path}"] = data
        entries.append({"path": path, "size": len(data), "sha256": digest(data), "url": f"{folder}/{path}"})
    for name, members in dict(bundles).items():
        data, paths = members if isinstance(members, tuple) else (archive({path: files[path] for path in members}), members)
        server.content[f"/patch/{name}"] = data
        archives.append({"name": name, "size": len(data), "sha256": digest(data), "files": paths})
    manifest = {"version": version, "files": entries, "bundles": archives, **extra}
    server.content[MANIFEST] = json.dumps(manifest, ensure_ascii=False).encode()
    return server.content[MANIFEST]


def archive(members):
    out = io.BytesIO()
    with zipfile.ZipFile(out, "w", zipfile.ZIP_DEFLATED, compresslevel=1) as zip_file:
        for name, data in members.items():
            zip_file.writestr(name, data)
    return out.getvalue()
