"""What a player does, with the Windows program from its start to its end."""
import fixture
from display import wait_until
from fixture import WindowsTest
from game import Game
from launcher import name_on_disk


class JourneyTest(WindowsTest):
    def publish(self, game):
        game.files["Tolmira.exe"] = (fixture.BUILD / "bin" / "sample-client.exe").read_bytes()
        game.publish(self.server)
        return {name_on_disk(name): data for name, data in game.files.items()}

    def ready(self):
        program = self.start()
        program.load_page()
        program.wait_message("ready", canPlay=True)
        return program

    def test_install_play(self):
        files = self.publish(Game(1, 60, archives=2))
        program = self.ready()
        self.assertEqual(self.installed_files(), files)
        self.assertTrue(any(message.get("text", "").startswith("Archive 1/2") for message in program.messages()))
        program.request("play")
        self.assertEqual(program.exit_code(), 0)
        started = self.place.directory / "client_started.txt"
        report = wait_until(lambda: started.exists() and started.read_text(encoding="utf-8"))
        directory = "Z:" + str(self.place.directory).replace("/", "\\")
        self.assertEqual(report.splitlines(),
                         [f"program: {directory}\\Tolmira.exe", f"directory: {directory}", "argument: quantel"])

    def test_verify_and_repair(self):
        files = self.publish(Game(2, 30))
        program = self.ready()
        (self.place.directory / "f0.dat").unlink()
        (self.place.directory / "f3.dat").write_bytes(b"damaged")
        program.request("verify")
        check = program.wait_message("check", mode="verify")
        self.assertEqual((check["total"], check["missing"], check["corrupt"], check["samples"]),
                         (31, 1, 1, ["f0.dat", "f3.dat"]))
        program.wait_message("ready", canPlay=True)
        program.request("repair")
        program.wait_message("ready", canPlay=True)
        self.assertEqual(self.installed_files(), files)

    def test_options(self):
        settings = self.place.directory / "ostu.ini"
        settings.write_bytes(b"; mine\r\nfpslimit 90\r\n")
        self.publish(Game(3, 3))
        program = self.ready()
        values = program.messages()[0]["values"]
        self.assertEqual(values["fpsLimit"], 90)
        program.request("saveOptions", values={**values, "fpsLimit": 120})
        program.wait_message("optionsSaved", ok=True)
        self.assertEqual(program.wait_message("options")["values"], {**values, "fpsLimit": 120})
        self.assertIn(b"; mine\r\nfpslimit 120\r\n", settings.read_bytes())

    def test_news_without_a_site(self):
        self.publish(Game(3, 3))
        program = self.ready()
        program.request("getNews")
        self.assertEqual(program.wait_message("news"), {"type": "news", "ok": False})
