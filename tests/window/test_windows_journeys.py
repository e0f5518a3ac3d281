"""What a player does, with the Windows program from its start to its end."""
import fixture
from display import wait_until
from fixture import WindowsTest
from game import Game


class JourneyTest(WindowsTest):
    def publish(self, game, **extra):
        game.files["Tolmira.exe"] = (fixture.BUILD / "bin" / "sample-client.exe").read_bytes()
        game.publish(self.server, **extra)
        return game.files

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

    def test_news(self):
        self.publish(Game(3, 3))
        self.server.content["/api/news.json"] = '{"news":["\u00e9t\u00e9\t<b>"]}'.encode()
        program = self.ready()
        program.request("getNews")
        self.assertEqual(program.wait_message("news")["body"], '{"news":["\u00e9t\u00e9\t<b>"]}')
        self.server.faults["/api/news.json"] = [404]
        program.request("getNews")
        program.wait_message("news", ok=False)

    def test_the_launcher_replaces_itself(self):
        # The same program with bytes behind its end that no loader looks at: another file, that can be told apart.
        successor = self.place.program.read_bytes() + b"the next launcher"
        self.server.content["/patch/Patcher.exe"] = successor
        files = self.publish(Game(4, 10), patcherVersion=27, patcherUrl="Patcher.exe")
        program = self.start()
        program.load_page()
        program.wait_message("status", text="Mise a jour du patcher...")
        self.assertEqual(program.exit_code(), 0)
        self.assertNotIn("ready", [message["type"] for message in program.messages()])
        second = program.successor()
        second.load_page()
        second.wait_message("ready", canPlay=True)
        found = self.installed_files()
        self.assertEqual(self.place.program.read_bytes(), successor)
        self.assertEqual({name: data for name, data in found.items() if not name.startswith("Patcher.")}, files)
        self.assertNotIn("Patcher.new.exe", found)
        second.request("cancel")
        second.wait_for_end()
