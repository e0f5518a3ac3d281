"""The site's news, and the links that may leave the launcher."""
import json
import os
import subprocess

import launcher
from game import Game
from scenario import ScenarioTest

NEWS = "/api/news.json"
GET = b'{"action":"getNews"}\n'


class NewsTest(ScenarioTest):
    def setUp(self):
        super().setUp()
        Game(5, 30).publish(self.server)

    def news(self, requests=GET):
        return [m for m in self.place.run(requests) if m["type"] == "news"]

    def test_a_document_comes_through_as_it_is(self):
        accents = "\u00e9\u65e5\U0001f409\"\\\n\t\r\x08\x0c\x01/</script>"
        large = accents * (200000 // len(accents.encode()))
        for text in ("x", '{"items":[]}', "no JSON {", large, "a" * 262144):
            self.server.content[NEWS] = text.encode()
            self.assertEqual(self.news(), [{"type": "news", "ok": True, "body": text}])

    def test_what_cannot_be_shown(self):
        failed = [{"type": "news", "ok": False}]
        self.assertEqual(self.news(), failed)
        for body in (b"", b"a" * 262145, b"a" * 5000000):
            self.server.content[NEWS] = body
            self.assertEqual(self.news(), failed)
        self.server.content[NEWS] = b"x"
        for fault in (500, 206, ("reset",)):
            self.server.faults[NEWS] = [fault]
            self.assertEqual(self.news(), failed)
        for url in ("http://127.0.0.1:1", "nonsense"):
            self.place.set_server(url)
            self.assertEqual(self.news(), failed)

    def test_two_at_once_during_the_update(self):
        self.server.content[NEWS] = b"news"
        messages = self.place.run(GET + GET)
        self.assertEqual([m["body"] for m in messages if m["type"] == "news"], ["news", "news"])
        self.assertEqual([m["canPlay"] for m in messages if m["type"] == "ready"], [True])


class LinkTest(ScenarioTest):
    def opened(self, urls):
        """What the system was asked to open, in the order of the calls."""
        place = self.place
        pipe = place.root / "opened"
        os.mkfifo(pipe)
        reader = os.open(pipe, os.O_RDWR)
        self.addCleanup(os.close, reader)
        program = place.root / "xdg-open"
        program.write_text(f"#!/bin/sh\necho noise\nprintf '%s|' \"$#\" \"$@\" >'{pipe}'\n")
        program.chmod(0o755)
        requests = "".join(json.dumps({"action": "openUrl", **({"url": u} if u is not None else {})},
                                      ensure_ascii=False) + "\n"
                           for u in urls)
        done = subprocess.run(launcher.command(place.program), input=requests.encode(), stdout=subprocess.PIPE,
                              stderr=subprocess.PIPE, check=True, timeout=launcher.LIMIT,
                              env={**os.environ, "PATH": f"{place.root}:{os.environ['PATH']}"})
        self.assertNotIn(b"noise", done.stdout)
        self.assertEqual(done.stderr, b"")
        return os.read(reader, 65536).decode()

    def test_only_the_sites_links_leave(self):
        good = "https://www.TOLMIRA.example:443/a?b=$(id)&c='`;#\u00e9"
        self.assertEqual(self.opened([None, 7, "", "--help", "http://tolmira.example/",
                                      "https://evil.example\0.tolmira.example/", good]), f"1|{good}|")
