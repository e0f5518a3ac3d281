"""What the scenario tests have in common."""
import unittest

from fault_server import FaultServer
from game import digest, publish_manifest
from launcher import Installation, assert_files, told

CONNECT = "Connexion au serveur de patch..."
INVALID = "Manifest de patch invalide."


class ScenarioTest(unittest.TestCase):
    """One server and one installation for each test."""

    def setUp(self):
        self.server = FaultServer()
        self.addCleanup(self.server.close)
        self.place = self.installation()

    def installation(self):
        """Another one, beside that of the test."""
        place = Installation(self.server)
        self.addCleanup(place.remove)
        return place

    def assert_files(self, place, expected):
        assert_files(self, place.files(), expected)

    def told(self, requests=b""):
        return told(self.place.run(requests))

    @staticmethod
    def entry(path, data):
        return {"path": path, "size": len(data), "sha256": digest(data), "url": f"f/{path}"}

    def put(self, files, bundles=(), version=3, **extra):
        """Publishes these files one by one, and these archives (name: (zip bytes, listed paths))."""
        entries = []
        for path, data in files.items():
            self.server.content[f"/patch/f/{path}"] = data
            entries.append(self.entry(path, data))
        listed = []
        for name, (data, paths) in dict(bundles).items():
            self.server.content[f"/patch/{name}"] = data
            listed.append({"name": name, "size": 1, "sha256": digest(data), "files": paths})
        return publish_manifest(self.server, {"version": version, "files": entries, "bundles": listed, **extra})
