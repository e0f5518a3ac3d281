"""Sample games on disk, their manifests, and the server that serves both."""

import hashlib
import json
import os
import random
import shutil
import socket
import subprocess
import time
import urllib.request
import zipfile
from pathlib import Path

NGINX_CONFIG = """
daemon off; master_process off; pid {folder}/nginx.pid; error_log {folder}/error.log;
{user}
events {{ worker_connections 256; }}
http {{
  access_log off; sendfile on; tcp_nopush on; keepalive_requests 1000000;
  client_body_temp_path {folder}/t1; proxy_temp_path {folder}/t2; fastcgi_temp_path {folder}/t3;
  uwsgi_temp_path {folder}/t4; scgi_temp_path {folder}/t5;
  server {{ listen 127.0.0.1:{port}; location / {{ root {root}; }} }}
}}
"""


class Server:
    """nginx on a loopback port, serving a folder."""

    def __init__(self, folder, root):
        folder.mkdir()
        with socket.socket() as probe:
            probe.bind(("127.0.0.1", 0))
            self.url = f"http://127.0.0.1:{probe.getsockname()[1]}"
            port = probe.getsockname()[1]
        user = "user root;" if os.getuid() == 0 else ""
        config = folder / "nginx.conf"
        config.write_text(NGINX_CONFIG.format(folder=folder, root=root, port=port, user=user))
        self.process = subprocess.Popen(["/usr/sbin/nginx", "-c", str(config), "-e", str(folder / "error.log")])
        for _ in range(200):
            try:
                urllib.request.urlopen(self.url + "/").close()
                return
            except urllib.error.HTTPError:
                return
            except OSError:
                time.sleep(0.05)
        raise RuntimeError("nginx does not answer")

    def stop(self):
        self.process.terminate()
        self.process.wait()


class Game:
    """`count` files below `folder`/patch; entry `url` equals `path`."""

    def __init__(self, folder, sizes, shuffled=False, compressible=False):
        self.folder = folder
        self.files = []
        source = random.Random(1)
        pool = source.randbytes(1 << 20)
        for number, size in enumerate(sizes):
            path = f"data/zone{number // 500:03d}/object_{number:06d}.bin"
            content = self._content(source, pool, number, size, compressible)
            place = folder / "patch" / path
            if number % 500 == 0:
                place.parent.mkdir(parents=True)
            with open(place, "wb") as out:
                digest = hashlib.sha256()
                for block in content:
                    out.write(block)
                    digest.update(block)
            self.files.append({"path": path, "url": path, "size": size, "sha256": digest.hexdigest()})
        if shuffled:
            source.shuffle(self.files)
        self.manifest = folder / "patch" / "version.json"
        self.manifest.write_text(json.dumps({"version": 1, "files": self.files}, indent=2))

    @staticmethod
    def _content(source, pool, number, size, compressible):
        head = number.to_bytes(8, "little")[:size]
        yield head
        left = size - len(head)
        while left > 0:
            start = source.randrange(len(pool) // 2)
            block = pool[start : start + left]
            if compressible:  # hexadecimal digits compress to half their size
                block = block[:50_000].hex().encode()[:left]
            yield block
            left -= len(block)

    def total(self):
        return sum(file["size"] for file in self.files)

    def zip_to(self, archive, files):
        with zipfile.ZipFile(archive, "w", zipfile.ZIP_DEFLATED, compresslevel=6) as out:
            for file in files:
                out.write(self.folder / "patch" / file["path"], file["path"])


def sizes_around(count, mean):
    """Sizes as in a game, with a large variance and the given mean."""
    source = random.Random(2)
    raw = [source.lognormvariate(0, 1.3) for _ in range(count)]
    scale = mean * count / sum(raw)
    return [int(value * scale) for value in raw]


def fresh_folder(folder):
    def prepare():
        shutil.rmtree(folder, ignore_errors=True)
        Path(folder).mkdir(parents=True)

    return prepare
