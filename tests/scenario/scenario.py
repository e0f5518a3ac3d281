"""The base of the scenario tests, and texts that several of them use."""
import subprocess
import threading
import unittest

from fault_server import FaultServer
from game import publish
from launcher import Installation, Session, beside_program, command, summary

CONNECT = "Connexion au serveur de patch..."
INVALID = "Manifest de patch invalide."
BUSY = "Une operation est deja en cours."
READ, WRITE, DELETE = 1, 2, 4  # what hold_file lets others do with its file
READY, UP_TO_DATE = ["Pret a jouer.", True], ["A jour.", True]


def failed(path, reason="transfert interrompu"):
    """Returns the end of a run that cannot fetch this file."""
    return [f"Echec du telechargement: {path} ({reason})", False]


class ScenarioTest(unittest.TestCase):
    """One server and one installation for each test."""

    def setUp(self):
        self.server = FaultServer()
        self.addCleanup(self.server.close)
        self.place = self.installation()

    def installation(self, server=None):
        place = Installation(server or self.server)
        self.addCleanup(place.remove)
        return place

    def session(self, wait=True, **environment):
        session = Session(self.place, wait, **environment)
        self.addCleanup(session.kill)
        return session

    def hold_file(self, *arguments, program=None):
        """Starts a Windows process that has the file open; returns when it runs."""
        program = program or beside_program("hold_file")
        process = subprocess.Popen(command(program, *arguments), stdin=subprocess.PIPE, stdout=subprocess.PIPE)
        self.addCleanup(process.stdout.close)
        self.addCleanup(process.communicate)
        self.assertEqual(process.stdout.readline(), b"holding\n")
        return process

    def installed(self, files):
        """Starts a session in an installation that has these files."""
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

    def assert_files(self, found, expected):
        """Compares contents by name. Reports only the names that differ."""
        found = found if isinstance(found, dict) else found.files()
        self.assertEqual(sorted(found), sorted(expected))
        self.assertEqual([name for name, data in expected.items() if found[name] != data], [])

    def update(self):
        return self.place.update()

    def assert_ends(self, end, place=None):
        self.assertEqual((place or self.place).update()[-2:], end)

    def assert_answers(self, session, request, *end):
        """Asserts the last messages after a request."""
        self.assertEqual(summary(session.ask(request))[-len(end):], list(end))

    def put(self, files, bundles=(), **extra):
        return publish(self.server, files, bundles, **extra)
