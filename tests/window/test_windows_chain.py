"""The chain from the window to the loaded page, and what goes through it both ways."""
import os
import pathlib
import pty
import re
import struct
import subprocess
import threading

import fixture
import pe_resources
from fixture import WindowsTest
from game import Game

ROOT = pathlib.Path(__file__).resolve().parents[2]
ORIGIN = "https://assets.tolmira.example"
HANDLERS = ["WebResourceRequested", "WebMessageReceived", "NavigationCompleted", "NavigationStarting",
            "NewWindowRequested"]


class ChainTest(WindowsTest):
    def test_the_steps_in_their_order(self):
        program = self.start()
        page = program.load_page()
        data = "Z:" + str(self.place.directory / "WebView2Data").replace("/", "\\")
        self.assertEqual([line for line in program.told if line[0] != "navigate"], [
            ["environment", "(null)", data, "no options"],
            ["handler", "environment", "sound"],
            ["handler", "controller", "sound"],
            ["filter", ORIGIN + "/*", "0"],
            ["handler", "WebResourceRequested", "sound"],
            ["bounds", "6", "6", "1274", "794"],
            *[["handler", name, "sound"] for name in HANDLERS[1:]]])
        carried = (fixture.BUILD / "Patcher" / "generated" / "page" / "launcher.html").read_text(encoding="utf-8")
        self.assertEqual(page, carried)
        program.wait_message("ready")
        # The form's data come before anything else.
        self.assertEqual([message["type"] for message in program.messages()][:2], ["options", "status"])

    def test_a_runtime_that_answers_at_once(self):
        program = self.start("at-once")
        program.load_page()
        program.wait_message("ready")

    def test_every_failure_of_the_chain_is_silent(self):
        for mode in ("no-runtime", "no-environment", "no-controller", "null-controller", "no-view"):
            with self.subTest(mode=mode):
                program = self.start(mode)
                window = self.display.window("TolmiraMMO Patcher v26")
                window.close()
                self.assertEqual(program.exit_code(), 0)
                self.assertEqual([line for line in program.told if line[0] not in ("environment", "handler")], [])
                self.assertEqual(sum(self.server.requests.values()), 0)

    def test_images(self):
        program = self.start()
        program.load_page()
        folder = ROOT / "Patcher" / "patcher-assets"
        for name in ("background.jpg", "logo.png", "panel.png", "pill-play.png", "separator.png",
                     "nav-icon-sprite.png", "led-green.png", "led-red.png", "led-amber.png"):
            kind = "image/jpeg" if name.endswith(".jpg") else "image/png"
            headers = f"Content-Type: {kind}\r\nCache-Control: max-age=31536000"
            self.assertEqual(program.asset(f"{ORIGIN}/{name}"), (200, "OK", headers, (folder / name).read_bytes()))
        self.assertIsNotNone(program.asset(f"{ORIGIN}/no/such/folder/panel.png?a#b"))
        for address in (f"{ORIGIN}/LOGO.PNG", f"{ORIGIN}/", f"{ORIGIN}/launcher.html", ""):
            self.assertIsNone(program.asset(address), address)
        self.assert_nothing_is_held(program)

    def test_an_answer_that_cannot_be_made(self):
        program = self.start("no-response")
        program.load_page()
        self.assertIsNone(program.asset(f"{ORIGIN}/logo.png"))
        self.assert_nothing_is_held(program)

    def assert_nothing_is_held(self, program):
        program.tell("report")
        counts = dict(entry.split("=") for entry in program.wait("report"))
        kept = {"view": "1", "controller": "1", "environment": "1", **{name: "1" for name in HANDLERS}}
        self.assertEqual({name: count for name, count in counts.items() if count != "0"}, kept)

    def test_requests_that_are_none(self):
        program = self.start()
        program.load_page()
        program.wait_message("ready")
        before = len(program.messages())
        program.tell("send-other")
        program.tell("send-null")
        for text in ("", "{", "[]", "7", "{}", '{"action":7}', '{"action":"Play"}', '{"action":"play"}', "\U0001f409" * 9,
                     "[" * 100000, '{"action":"openUrl"}', '{"action":"openUrl","url":"file:///C:/windows/system32/calc.exe"}'):
            program.tell("send", text)
        program.request("getOptions")
        program.wait_message("options")
        self.assertEqual(len(program.messages()), before + 1)
        self.assert_nothing_is_held(program)

    def test_the_page_stays_the_page(self):
        program = self.start()
        program.wait("navigate")
        program.tell("go", "data:text/html;base64,PGh0bWw+")
        self.assertEqual(program.wait("go")[1], "let go")
        program.tell("complete")
        for address, outcome in (("about:blank", "let go"), ("https://tolmira.example/", "refused"),
                                 ("file:///C:/x.html", "refused"), ("http://127.0.0.1/", "refused")):
            program.tell("go", address)
            self.assertEqual(program.wait("go"), [address, outcome])
        program.tell("open", "https://tolmira.example/")
        self.assertEqual(program.wait("open")[1], "refused")

    def test_a_reload_starts_no_second_run_beside_the_first(self):
        Game(1, 30).publish(self.server)
        reloaded = threading.Event()
        self.server.faults["/patch/version.json"] = [("hold", reloaded)]
        program = self.start()
        program.load_page()
        for _ in range(5):
            program.tell("complete")
        for _ in range(6):
            program.wait_message("options")
        reloaded.set()
        program.wait_message("ready", canPlay=True)
        self.assertEqual(self.server.requests["/patch/version.json"], 1)


class ProgramFileTest(WindowsTest):
    def test_the_version_is_told_wherever_it_is_asked_for(self):
        (self.place.directory / "patcher.ini").unlink()
        for arguments in (["--print-version"], ["x", "y--print-versionz"], ["a", "--print-version", "b"]):
            self.assertEqual(self.wine.run(self.place.program, *arguments), (0, b"26\n"))
        odd = self.place.program.with_name("Patcher --print-version.exe")
        self.place.program.rename(odd)
        self.assertEqual(self.wine.run(odd), (0, b"26\n"))
        self.assertEqual(set(self.installed_files()), {odd.name})
        self.assertFalse((self.place.directory / "patcher.ini").exists())

    def test_the_version_reaches_the_console_it_is_asked_from(self):
        """Started by a console program whose output is a terminal: there is nothing to inherit."""
        ours, theirs = pty.openpty()
        script = self.place.directory / "ask.bat"
        script.write_bytes(b"@\"%~dp0Patcher.exe\" --print-version\r\n")
        process = self.wine.start("cmd", "/c", script, stdin=theirs, stdout=theirs, stderr=theirs)
        os.close(theirs)
        shown = b""
        while chunk := self.read(ours):
            shown += chunk
        os.close(ours)
        self.assertEqual(process.wait(), 0)
        self.assertRegex(re.sub(rb"\x1b\[[0-9;?]*[A-Za-z]", b"", shown).decode(errors="replace"), r"\b26\b")

    @staticmethod
    def read(terminal):
        try:
            return os.read(terminal, 4096)
        except OSError:  # the last one at the other end has gone
            return b""

    def test_what_the_program_needs_beside_the_system(self):
        listing = subprocess.run(["i686-w64-mingw32-objdump", "-p", self.place.program], stdout=subprocess.PIPE, text=True,
                                 check=True).stdout
        libraries = {name.lower() for name in re.findall(r"DLL Name: (\S+)", listing)}
        system = {"bcrypt.dll", "gdi32.dll", "kernel32.dll", "msvcrt.dll", "ole32.dll", "shell32.dll", "shlwapi.dll",
                  "user32.dll", "winhttp.dll"}
        self.assertEqual(libraries - system, {"webview2loader.dll"})
        self.assertRegex(listing, r"CreateCoreWebView2EnvironmentWithOptions\n")
        self.assertIn("(Windows GUI)", listing)

    def test_resources(self):
        found = pe_resources.read(self.place.program.read_bytes())
        version = found[pe_resources.VERSION, 1]
        fixed = version.index(struct.pack("<I", 0xFEEF04BD))
        self.assertEqual(struct.unpack_from("<4H", version, fixed + 8), (26, 1, 0, 0))
        self.assertIn("1.26.0.0".encode("utf-16-le"), version)
        for line in (b'level="asInvoker"', b"PerMonitorV2", b"supportedOS"):
            self.assertIn(line, found[pe_resources.MANIFEST, 1])
        group = next(data for (kind, _), data in found.items() if kind == pe_resources.GROUP_ICON)
        self.assertEqual(pe_resources.icon_sizes(group), [16, 32, 48, 64, 128, 256])
        carried = {number for kind, number in found if kind == pe_resources.RCDATA}
        self.assertEqual(carried, {100, *range(200, 209)})
