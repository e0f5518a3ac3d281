"""A thousand requests of all kinds, while the launcher works: none may end it, hang it or cost it the guard."""
import json
import queue
import random
import threading

from game import Game
from launcher import LIMIT, Session
from scenario import ScenarioTest

SEED = 0
REQUESTS = 1000
BUSY = "Une operation est deja en cours."

# None that ends the session, and none whose answer depends on what the network holds.
HARMLESS = ("windowDrag", "windowMinimize", "windowMaximize", "getOptions", "dance", "", "Verify", "verify ", "PLAY")


def any_value(rng, depth=0):
    kind = rng.randrange(9 if depth < 4 else 6)
    if kind == 0:
        return rng.choice([True, False, None])
    if kind == 1:
        return rng.choice([0, -1, 2**31, 2**63, 1e308, -1e-308, rng.random() * 1e6])
    if kind < 6:
        return "".join(chr(rng.choice([rng.randrange(32), rng.randrange(128), rng.randrange(0xD800)]))
                       for _ in range(rng.randrange(12)))
    if kind == 6:
        return [any_value(rng, depth + 1) for _ in range(rng.randrange(5))]
    return {str(any_value(rng, 5)): any_value(rng, depth + 1) for _ in range(rng.randrange(5))}


def harmless(rng):
    action = rng.choice(HARMLESS)
    if rng.random() < 0.2:
        return {"action": any_value(rng)}
    if rng.random() < 0.2:
        return {"action": "openUrl", "url": rng.choice(["", "file:///etc/passwd", "http://x", any_value(rng)])}
    if rng.random() < 0.2:
        return {"action": "saveOptions", "values": any_value(rng)}
    return {"action": action, "values": any_value(rng), "url": any_value(rng)}


def damaged(rng):
    data = bytearray(json.dumps(harmless(rng), ensure_ascii=rng.random() < 0.5).encode())
    for _ in range(rng.randint(1, 4)):
        at = rng.randrange(len(data))
        edit = rng.randrange(4)
        if edit == 0:
            data[at] = rng.randrange(256)
        elif edit == 1:
            del data[at:at + rng.randint(1, 5)]
        elif edit == 2:
            data[at:at] = rng.randbytes(rng.randint(1, 5))
        else:
            del data[at:]
        data = data or bytearray(b"{")
    return bytes(data)


def extreme(rng):
    size = rng.choice([300, 5000, 200000])
    return rng.choice([
        b"[" * size, b'{"a":' * size, b'{"action":' + b"[" * size + b"]" * size + b"}",
        b'{"action":"' + b"x" * size + b'"}', b'{"action":"openUrl","url":"' + b"\\u0000" * size + b'"}',
        b'{"action":"getOptions"' + b',"k":0' * size + b"}", b'{"action":"\\ud800"}', b'{"n":1e999999}',
        b'{"n":' + b"9" * size + b"}", b'{"action":"saveOptions","values":' + b"[" * 200 + b"]" * 200 + b"}",
        rng.randbytes(size), b"\xef\xbb\xbf{}", b'"' + b"\xff" * size])


class RequestsTest(ScenarioTest):
    def setUp(self):
        super().setUp()
        Game(7, 30).publish(self.server)

    def read_all(self, session):
        """A queue of all that the launcher writes; None at its end."""
        messages = queue.Queue()

        def read():
            for line in session.process.stdout:
                messages.put(json.loads(line))
            messages.put(None)

        threading.Thread(target=read, daemon=True).start()
        threading.Thread(target=session.process.stderr.read, daemon=True).start()
        return messages

    def test_a_thousand_requests(self):
        rng = random.Random(SEED)
        session = Session(self.place, wait=False)
        self.addCleanup(session.kill)
        messages = self.read_all(session)
        checks = 0
        for _ in range(REQUESTS):
            kind = rng.random()
            if kind < 0.05:
                checks += 1
                request = json.dumps({"action": rng.choice(["verify", "repair"]), "x": any_value(rng)}).encode()
            elif kind < 0.45:
                request = json.dumps(harmless(rng)).encode()
            elif kind < 0.9:
                request = damaged(rng).replace(b"\n", b" ")
            else:
                request = extreme(rng).replace(b"\n", b" ")
            session.send(request)
        answered, ready, begun = 0, 0, 1
        while answered < checks or ready < begun:
            message = messages.get(timeout=LIMIT)
            self.assertIsNotNone(message, "the launcher ended")
            if message["type"] == "check":
                answered += 1
                begun += 1
            answered += message.get("text") == BUSY
            ready += message["type"] == "ready"
        self.assertGreater(begun, 1, "some check ran")
        session.send("verify")
        while (message := messages.get(timeout=LIMIT)) and message["type"] != "check":
            self.assertNotEqual(message.get("text"), BUSY, "the guard was lost")
        self.assertEqual((message["total"], message["ok"]), (31, 31))
        session.process.stdin.close()
        while messages.get(timeout=LIMIT) is not None:
            pass
        self.assertEqual(session.process.wait(), 0)
