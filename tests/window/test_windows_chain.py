"""The chain from the window to the loaded page, what goes through it both ways, and the program's file."""
import re
import subprocess

import fixture
from fixture import WindowsTest
from game import MANIFEST, Game
from launcher import setting
from stand_in import ROOT

HANDLERS = ["WebResourceRequested", "WebMessageReceived", "NavigationCompleted", "NavigationStarting",
            "NewWindowRequested", "ProcessFailed"]


class ChainTest(WindowsTest):
    def test_the_steps_in_their_order(self):
        data = "Z:" + str(self.place / "WebView2Data").replace("/", "\\")
        carried = (fixture.BUILD / "Patcher" / "generated" / "page" / "launcher.html").read_text(encoding="utf-8")
        for mode in ("", "at-once"):
            program = self.start(mode)
            self.assertEqual(program.load_page(), carried)
            icons = [line for line in program.heard if line[0] == "icon"]
            self.assertEqual(icons, [["icon", "1"], ["icon", "0"]])  # the large one and the small one
            self.assertEqual([line for line in program.heard[:-1] if line not in icons], [
                ["environment", "(null)", data, "no options", "FF0D1426"],
                ["handler", "environment", "sound"],
                ["handler", "controller", "sound"],
                ["filter", setting("PATCHER_ASSET_ORIGIN") + "/*", "0"],
                ["handler", "WebResourceRequested", "sound"],
                ["bounds", "6", "6", "1274", "794"],
                *[["handler", name, "sound"] for name in HANDLERS[1:]]])
            program.wait_message("ready")
            # The page has the keyboard without a click.
            self.assertIn(["focus", "0"], program.heard)
            self.display.mouse("key", "a")
            program.wait("key")
            program.send("window", "7", "0")  # WM_SETFOCUS, as after another window was in front
            self.assertEqual(program.wait("focus"), ["0"])
            # The form's data come before anything else.
            self.assertEqual([message["type"] for message in program.messages()][:2], ["options", "status"])
            self.assertEqual(program.close(), 0)

    def test_every_failure_of_the_chain_is_silent(self):
        for mode in ("no-runtime", "no-environment", "no-controller", "null-controller", "no-view"):
            with self.subTest(mode=mode):
                program = self.start(mode)
                left, top, _, _ = self.display.window().place()
                # As a player does who sees no button for it.
                self.display.mouse("mousemove", left + 100, top + 100, "click", 1, "key", "alt+F4")
                self.assertEqual(program.exit_code(), 0)
                self.assertLessEqual({line[0] for line in program.heard}, {"environment", "handler", "icon"})
                self.assertEqual(sum(self.server.requests.values()), 0)

    def test_images(self):
        program = self.loaded()
        origin = setting("PATCHER_ASSET_ORIGIN")
        for name in ("background.jpg", "logo.png", "led-amber.png"):
            kind = "image/jpeg" if name.endswith(".jpg") else "image/png"
            headers = f"Content-Type: {kind}\r\nCache-Control: max-age=31536000"
            content = (ROOT / "Patcher" / "patcher-assets" / name).read_bytes()
            self.assertEqual(program.ask("get", f"{origin}/{name}"), ["done", "200", "OK", headers, content.hex()])
        for address in (f"{origin}/LOGO.PNG", f"{origin}/", f"{origin}/launcher.html", ""):
            self.assertEqual(program.ask("get", address), ["done"], address)
        self.assert_nothing_is_held(program)
        program = self.loaded("no-response")
        self.assertEqual(program.ask("get", f"{origin}/logo.png"), ["done"])
        self.assert_nothing_is_held(program)

    def assert_nothing_is_held(self, program):
        counts = dict(entry.split("=") for entry in program.ask("report"))
        kept = {"view": "1", "controller": "1", "environment": "1", **{name: "1" for name in HANDLERS}}
        self.assertEqual({name: count for name, count in counts.items() if count != "0"}, kept)

    def test_bad_requests_are_ignored_and_the_page_stays_the_page(self):
        program = self.start()
        program.wait("navigate")
        self.assertEqual(program.ask("go", "data:text/html;base64,PGh0bWw+"), ["done"])
        program.send("complete")
        self.assertEqual(program.ask("go", "about:blank"), ["done"])
        program.wait_message("ready")
        before = len(program.messages())
        for verb in ("go", "open"):
            self.assertEqual(program.ask(verb, setting("PATCHER_SITE_LINK")), ["refused"])
        program.send("send-other")
        program.send("send-null")
        for text in ("", "{", '{"action":"play"}', "\U0001f409" * 9, "[" * 100000):
            program.send("send", text)
        program.request("getOptions")
        program.wait_message("options")
        self.assertEqual(len(program.messages()), before + 1, "a refused navigation is no loaded page")
        self.assert_nothing_is_held(program)

    def test_a_page_whose_process_died_comes_back_three_times(self):
        Game(1, 30).publish(self.server)
        held = self.hold(MANIFEST)
        program = self.loaded()
        for harmless in "23456789":
            self.assertEqual(program.ask("fail", harmless), ["done"])
        for kind in "101":
            program.send("fail", kind)
            program.load_page()
            program.wait_message("options")
        self.assertEqual(program.ask("fail", "1"), ["done"])
        self.assert_nothing_is_held(program)
        held.set()
        program.wait_message("ready", canPlay=True)
        loads = [line[0] for line in program.heard if line[0] in ("environment", "navigate")]
        self.assertEqual(loads, ["environment", "navigate", "navigate", "environment", "navigate", "navigate"])
        self.assertEqual(self.server.requests[MANIFEST], 1, "no page started a second run beside the first")
        self.assertEqual(program.close(), 0)


class ProgramFileTest(WindowsTest):
    def test_the_version_is_printed_wherever_it_is_asked_for(self):
        (self.place / "patcher.ini").unlink()
        version = setting("PATCHER_LAUNCHER_BUILD")
        for arguments in (["--print-version"], ["x", "y--print-versionz"]):
            self.assertEqual(fixture.WINE.run(self.place.program, *arguments), (0, f"{version}\n".encode()))
        odd = self.place.program.with_name("Patcher --print-version.exe")
        self.place.program.rename(odd)
        self.assertEqual(fixture.WINE.run(odd), (0, f"{version}\n".encode()))
        self.assertEqual(set(self.installed_files()), {odd.name})
        self.assertFalse((self.place / "patcher.ini").exists())

    def test_the_version_reaches_the_console_it_is_asked_from(self):
        """Started by a console program whose output is a terminal: there is nothing to inherit."""
        ask = self.place / "ask.bat"
        ask.write_bytes(b"@\"%~dp0Patcher.exe\" --print-version\r\n")
        done = subprocess.run(["script", "--quiet", "--return", "--command", f"wine cmd /c '{ask}'", "/dev/null"],
                              env=fixture.WINE.environment, stdin=subprocess.DEVNULL, stdout=subprocess.PIPE, check=True)
        printed = re.sub(rb"\x1b\[[0-9;?]*[A-Za-z]", b"", done.stdout).decode(errors="replace")
        self.assertRegex(printed, rf"\b{setting('PATCHER_LAUNCHER_BUILD')}\b")
