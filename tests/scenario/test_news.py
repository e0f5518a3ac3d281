"""The site's news, and the links that may leave the launcher."""
import json
import os

from launcher import setting, wait_until
from scenario import ScenarioTest

NEWS = "/api/news.json"
GET = b'{"action":"getNews"}\n'


class NewsTest(ScenarioTest):
    def news(self, requests=GET):
        return [m for m in self.place.run(requests) if m["type"] == "news"]

    def test_only_a_document_that_fits_arrives(self):
        accents = "\u00e9\u65e5\U0001f409\"\\\n\t\r\x08\x0c\x01/</script>"
        for text in ('{"items":[]}', "no JSON {", accents * 5000, "a" * 262144):
            self.server.content[NEWS] = text.encode()
            self.assertEqual(self.news(GET + GET), [{"type": "news", "ok": True, "body": text}] * 2)
        failed = [{"type": "news", "ok": False}]
        for body, fault in ((None, None), (b"", None), (b"a" * 262145, None), (b"x", 206), (b"x", ("reset",))):
            self.server.content[NEWS], self.server.faults[NEWS] = body, [fault]
            self.assertEqual(self.news(), failed)
        self.place.set_server("nonsense")
        self.assertEqual(self.news(), failed)

    def test_only_the_sites_links_leave(self):
        opened, program = self.place.root / "opened", self.place.root / "xdg-open"
        program.write_text(f"#!/bin/sh\necho noise\nprintf '%s|' \"$#\" \"$@\" >>'{opened}'\n")
        program.chmod(0o755)
        host = setting("PATCHER_SITE_HOST")
        good = f"https://www.{host.upper()}:443/a?b=$(id)&c='`;#\u00e9"
        urls = [7, "", "--help", f"http://{host}/", f"https://evil.example\0.{host}/", good]
        requests = [{"action": "openUrl"}, *({"action": "openUrl", "url": url} for url in urls)]
        self.place.run("".join(json.dumps(request, ensure_ascii=False) + "\n" for request in requests).encode(),
                       PATH=f"{self.place.root}:{os.environ['PATH']}")
        wait_until(lambda: opened.exists() and f"{good}|" in opened.read_text(encoding="utf-8"))
        self.assertEqual(opened.read_text(encoding="utf-8"), f"1|{good}|")
