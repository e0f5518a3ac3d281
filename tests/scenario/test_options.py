"""The game's settings, as the page would read and write them."""
import json
import os

from scenario import ScenarioTest

SETTINGS = b"; mine\nfpslimit 90\n\xff\x00\x1a bytes\nlast"


def save(**values):
    return json.dumps({"action": "saveOptions", "values": values}).encode() + b"\n"


class OptionsTest(ScenarioTest):
    def setUp(self):
        super().setUp()
        self.settings = self.place / "ostu.ini"

    def test_only_a_form_with_the_files_values_is_saved(self):
        self.settings.write_bytes(SETTINGS)
        os.truncate(self.settings, (16 << 20) + 1)  # too large to be read
        session = self.session(wait=False)
        shown = session.until("options")[-1]
        os.truncate(self.settings, len(SETTINGS))
        request = save(**{**shown["values"], "vsync": 1}).rstrip()
        session.send(request, request)  # two clicks
        for _ in range(2):
            self.assertFalse(session.until("optionsSaved")[-1]["ok"])
            fresh = session.until("options")[-1]
        self.assertEqual(self.settings.read_bytes(), SETTINGS)
        self.assertEqual((fresh["iniExists"], fresh["values"]["fpsLimit"]), (True, 90))
        changed = {**fresh["values"], "vsync": 1, "shadowbias": 0.0021, "spellSfx": 0}
        session.send(save(**changed).rstrip(), "getOptions")
        self.assertTrue(session.until("optionsSaved")[-1]["ok"])
        self.assertEqual([session.until("options")[-1]["values"] for _ in range(2)], [changed] * 2)

    def test_owner_group_and_mode_stay(self):
        """The file may belong to another user, if the player may write to it."""
        self.place.root.chmod(0o755)
        self.place.directory.chmod(0o777)
        for mode, user in ((0o640, None), (0o666, 65534)):
            self.settings.write_bytes(b"mine 1\n")
            try:
                os.chown(self.settings, 1234, 4321)
            except OSError:
                self.skipTest("a user namespace with one user")
            self.settings.chmod(mode)
            self.assertIn({"type": "optionsSaved", "ok": True}, self.place.run(save(vsync=1), user=user))
            status = self.settings.stat()
            self.assertEqual((status.st_uid, status.st_gid, status.st_mode & 0o7777), (1234, 4321, mode))
            self.assertEqual(self.place.files(), {"ostu.ini": b"mine 1\r\nvsync 1\r\n"})
