"""The game's settings, as the page would read and write them."""
import json
import os
import random
import resource
import signal
import subprocess
import time

import launcher
from launcher import Session
from scenario import ScenarioTest

FOREIGN = b"; mine\n\nKey = value\r\nfpslimit\t 90  \nfpslimit 30\n\xff\x00\x1a bytes\nlast"
KEPT = b"; mine\r\n\r\nKey = value\r\nfpslimit 90\r\nfpslimit 30\r\n\xff\x00\x1a bytes\r\nlast\r\n"


def request(action, **members):
    return json.dumps({"action": action, **members}).encode() + b"\n"


class OptionsTest(ScenarioTest):
    def setUp(self):
        super().setUp()
        self.settings = self.place.directory / "ostu.ini"

    def answers(self, *requests):
        """What the page is told about options, without the push at the start."""
        messages = [m for m in self.place.run(b"".join(requests)) if m["type"] in ("options", "optionsSaved")]
        self.assertEqual(messages[0]["type"], "options")
        return messages[1:]

    def test_the_page_sends_back_what_it_was_shown(self):
        self.settings.write_bytes(FOREIGN)
        shown = self.answers(request("getOptions"))[0]
        self.assertTrue(shown["iniExists"])
        self.assertEqual(shown["values"]["fpsLimit"], 90)
        self.assertEqual(len(shown["tune"]), 61)
        self.assertIn([shown["values"]["resWidth"], shown["values"]["resHeight"]], shown["resolutions"])
        self.assertIn("0.0001", [repr(row["step"]) for row in shown["tune"]])
        changed = {**shown["values"], "shadowbias": 0.0021, "spellSfx": 0}
        saved, again = self.answers(request("saveOptions", values=changed))
        self.assertEqual(saved, {"type": "optionsSaved", "ok": True})
        self.assertEqual(again["values"], changed)
        text = self.settings.read_bytes()
        self.assertTrue(text.startswith(KEPT), text)
        self.assertIn(b"\r\nSFXRenderOff 1\r\n", text)
        self.assertIn(b"\r\nshadowbias 0.0021\r\n", text)
        self.assertEqual(text.count(b"\r\n"), KEPT.count(b"\r\n") + 79)

    def test_a_first_save_creates_the_file(self):
        shown = self.answers(request("getOptions"))[0]
        self.assertFalse(shown["iniExists"])
        saved, again = self.answers(request("saveOptions", values=shown["values"]))
        self.assertTrue(saved["ok"] and again["iniExists"])
        self.assertEqual(self.settings.read_bytes().count(b"\r\n"), 80)

    def test_refused_saves_leave_everything_as_it_was(self):
        refused = [{"type": "optionsSaved", "ok": False}]
        self.assertEqual(self.answers(request("saveOptions")), refused)
        self.settings.write_bytes(FOREIGN)
        self.settings.chmod(0o444)
        self.assertEqual(self.answers(request("saveOptions", values={"vsync": 1})), refused)
        self.assertEqual(self.settings.read_bytes(), FOREIGN)
        self.settings.unlink()
        self.settings.mkdir()
        self.assertEqual(self.answers(request("saveOptions", values={"vsync": 1})), refused)
        self.assertEqual(set(self.place.files()), set())

    def test_a_form_filled_blind_is_not_saved(self):
        self.settings.write_bytes(FOREIGN)
        os.truncate(self.settings, (16 << 20) + 1)  # too large to be read
        session = Session(self.place, wait=False)
        self.addCleanup(session.kill)
        shown = session.until("options")[-1]
        os.truncate(self.settings, len(FOREIGN))
        save = request("saveOptions", values={**shown["values"], "vsync": 1}).rstrip()
        session.send(save, save)  # two clicks
        for _ in range(2):
            self.assertFalse(session.until("optionsSaved")[-1]["ok"])
            fresh = session.until("options")[-1]["values"]
        self.assertEqual(self.settings.read_bytes(), FOREIGN)
        self.assertEqual(fresh["fpsLimit"], 90)
        session.send(request("saveOptions", values={**fresh, "vsync": 1}).rstrip())
        self.assertTrue(session.until("optionsSaved")[-1]["ok"])
        self.assertTrue(self.settings.read_bytes().startswith(KEPT))

    def test_owner_group_and_mode_stay(self):
        """Also of a file that belongs to somebody else, who lets the player write it."""
        self.place.root.chmod(0o755)
        self.place.directory.chmod(0o777)
        save = request("saveOptions", values={"vsync": 1})
        for mode, user in ((0o640, None), (0o666, 65534)):
            self.settings.write_bytes(b"mine 1\n")
            try:
                os.chown(self.settings, 1234, 4321)
            except OSError:
                return  # a user namespace with one user
            self.settings.chmod(mode)
            done = subprocess.run(self.place.command(), input=save, capture_output=True, timeout=launcher.LIMIT,
                                  check=True, user=user, cwd="/")
            self.assertIn(b'{"type":"optionsSaved","ok":true}', done.stdout.splitlines())
            status = self.settings.stat()
            self.assertEqual((status.st_uid, status.st_gid, status.st_mode & 0o7777), (1234, 4321, mode))
            self.assertEqual(self.place.files(), {"ostu.ini": b"mine 1\r\nvsync 1\r\n"})

    def test_a_disk_that_fills_up_during_a_save(self):
        """No file of the launcher may grow above 16 KiB."""
        def fill_disk():
            signal.signal(signal.SIGXFSZ, signal.SIG_IGN)
            resource.setrlimit(resource.RLIMIT_FSIZE, (16384, 16384))

        foreign = b"mine 1\n" * 4000
        self.settings.write_bytes(foreign)
        done = subprocess.run(self.place.command(), input=request("saveOptions", values={"vsync": 1}),
                              capture_output=True, timeout=launcher.LIMIT, check=True, preexec_fn=fill_disk)
        self.assertIn(b'{"type":"optionsSaved","ok":false}', done.stdout.splitlines())
        self.assertEqual(self.place.files(), {"ostu.ini": foreign})

    def test_deaths_during_a_save(self):
        rng = random.Random(7)
        foreign = b"mine %d\r\n" % 1 * 400000
        allowed = {foreign + b"vsync 0\r\n", foreign + b"vsync 1\r\n"}
        self.settings.write_bytes(foreign + b"vsync 0\r\n")
        for death in range(8):
            process = self.place.start()
            self.assertIn(b'"options"', process.stdout.readline())
            process.stdin.write(request("saveOptions", values={"vsync": death % 2}))
            process.stdin.flush()
            time.sleep(rng.random() * 0.2)  # the moment of death is the point, not a wait for something
            process.kill()
            process.communicate()
            self.assertIn(self.settings.read_bytes(), allowed)
        others = {name for name in self.place.files() if not (name.startswith("ostu.ini.") and name.endswith(".part"))}
        self.assertEqual(others, {"ostu.ini"})
