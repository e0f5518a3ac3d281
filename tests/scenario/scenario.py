"""What the scenario tests have in common."""
import threading
import unittest

from fault_server import FaultServer
from game import digest, publish_manifest
from launcher import Installation, Session, assert_files, summary

CONNECT = "Connexion au serveur de patch..."
INVALID = "Manifest de patch invalide."
BUSY = "Une operation est deja en cours."
MANIFEST = "/patch/version.json"
READY, UP_TO_DATE = ["Pret a jouer.", True], ["A jour.", True]


def failed(path, reason="transfert interrompu"):
    """How a run ends that does not get this file."""
    return [f"Echec du telechargement: {path} ({reason})", False]


class ScenarioTest(unittest.TestCase):
    """One server and one installation for each test."""

    def setUp(self):
        self.server = FaultServer()
        self.addCleanup(self.server.close)
        self.place = self.installation()

    def installation(self, **options):
        place = Installation(self.server, **options)
        self.addCleanup(place.remove)
        return place

    def session(self, wait=True):
        session = Session(self.place, wait)
        self.addCleanup(session.kill)
        return session

    def installed(self, files):
        """A session in an installation that has these files."""
        self.put(files)
        session = self.session()
        self.server.requests.clear()
        return session

    def hold(self, path):
        """Requests for this path wait until the returned event is set, at the latest at the end of the test."""
        held = threading.Event()
        self.addCleanup(held.set)
        self.server.faults[path] = [("hold", held)]
        return held

    def assert_files(self, place, expected):
        assert_files(self, place.files(), expected)

    def update(self):
        return self.place.update()

    def assert_ends(self, end, place=None):
        self.assertEqual((place or self.place).update()[-2:], end)

    def assert_answers(self, session, request, *end):
        """How the messages after the request end."""
        self.assertEqual(summary(session.ask(request))[-len(end):], list(end))

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
