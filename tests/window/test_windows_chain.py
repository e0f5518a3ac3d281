"""The steps from the window to the loaded page, what passes between them, and the program's version."""
import re
import shutil
import subprocess

import fixture
from fixture import WindowsTest
from game import Game
from launcher import setting
from scenario import MANIFEST
from stand_in import ROOT

HANDLERS = ["WebResourceRequested", "WebMessageReceived", "NavigationCompleted", "NavigationStarting",
            "NewWindowRequested", "ProcessFailed"]
INVALID_ARGUMENT, NOTHING = 0x80070057, 1  # results of the getter of a message that is not a string, or null


class ChainTest(WindowsTest):
    def test_the_steps_and_their_order(self):
        data = "Z:" + str(self.place / "WebView2Data").replace("/", "\\")
        carried = (fixture.BUILD / "Patcher" / "generated" / "page" / "launcher.html").read_text(encoding="utf-8")
        for mode in ("", "at-once"):
            held = self.hold(MANIFEST)
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
            program.wait_message("status")
            # The page has the keyboard without a click.
            self.assertIn(["focus", "0"], program.heard)
            self.display.mouse("key", "a")
            program.wait("key")
            program.send("window", 7, 0)  # WM_SETFOCUS, as when the window comes to the front again
            program.wait("focus", 0)
            self.assertEqual([message["type"] for message in program.messages()][:2], ["options", "status"])
            self.assertEqual(program.close(), 0, "the window closes in the middle of a run")
            held.set()

    def test_a_failed_step_leaves_an_empty_window_that_can_be_closed(self):
        for mode in ("no-runtime", "no-environment", "no-controller", "null-controller", "no-view"):
            with self.subTest(mode=mode):
                program = self.start(mode)
                left, top, _, _ = self.display.window().place()
                self.display.mouse("mousemove", left + 100, top + 100, "click", 1, "key", "alt+F4")
                self.assertEqual(program.exit_code(), 0)
                self.assertLessEqual({line[0] for line in program.heard}, {"environment", "handler", "icon"})
                self.assertEqual(sum(self.server.requests.values()), 0)

    def test_images(self):
        origin = setting("PATCHER_ASSET_ORIGIN")
        for mode in ("", "no-response"):
            program = self.loaded(mode)
            for name, kind in (("background.jpg", "image/jpeg"), ("logo.png", "image/png")):
                content = (ROOT / "Patcher" / "patcher-assets" / name).read_bytes()
                headers = f"Content-Type: {kind}\r\nCache-Control: max-age=31536000"
                response = [] if mode else ["200", "OK", headers, content.hex()]
                answer = program.raise_event("WebResourceRequested", f"{origin}/{name}")
                self.assertEqual(answer, ["done", *response])
            self.assertEqual(program.raise_event("WebResourceRequested", f"{origin}/launcher.html"), ["done"])
            self.assert_nothing_is_held(program)

    def assert_nothing_is_held(self, program):
        """No object or handler is alive that the program no longer uses, and the game does not inherit the colour."""
        counts = dict(entry.split("=") for entry in program.ask("report"))
        kept = dict.fromkeys(["view", "controller", "environment", "taskbar factory", *HANDLERS], "1")
        self.assertEqual({name: count for name, count in counts.items() if count != "0"}, kept)

    def test_bad_requests_are_ignored_and_the_page_stays_the_page(self):
        program = self.start()
        program.wait("navigate")
        for number, own in ((1, "data:text/html;base64,PGh0bWw+"), (2, "about:blank")):
            self.assertEqual(program.raise_event("NavigationStarting", own, number), ["done"])
            program.raise_event("NavigationCompleted", "", number)
        program.wait_message("ready")
        before = len(program.messages())
        for event in ("NavigationStarting", "NewWindowRequested"):
            self.assertEqual(program.raise_event(event, setting("PATCHER_SITE_LINK"), 3), ["refused"])
        program.raise_event("NavigationCompleted", "", 3)
        for text, result in (("", INVALID_ARGUMENT), ("", NOTHING), ("", 0), ("{", 0), ('{"action":"play"}', 0),
                             ("\U0001f409" * 9, 0), ("[" * 100000, 0)):
            program.raise_event("WebMessageReceived", text, 0, result)
        program.request("getOptions")
        program.wait_message("options")
        self.assertEqual(len(program.messages()), before + 1, "a refused navigation is not a loaded page")
        self.assert_nothing_is_held(program)

    def test_a_page_whose_process_died_comes_back_three_times(self):
        Game(1, 30).publish(self.server)
        held = self.hold(MANIFEST)
        program = self.loaded()
        # Numbers of navigations begin again with a new web view.
        program.raise_event("NavigationStarting", setting("PATCHER_SITE_LINK"), 1)
        for harmless in range(2, 10):
            program.raise_event("ProcessFailed", "", harmless)
        for kind in (0, 1, 0):
            program.raise_event("ProcessFailed", "", kind)
            program.load_page()
            program.wait_message("options")
        program.raise_event("ProcessFailed", "", 1)
        self.assert_nothing_is_held(program)
        held.set()
        program.wait_message("ready", canPlay=True)
        loads = [line[0] for line in program.heard if line[0] in ("environment", "navigate")]
        self.assertEqual(loads, ["environment", "navigate"] * 2 + ["navigate"] + ["environment", "navigate"])
        self.assertEqual(self.server.requests[MANIFEST], 1, "no page started a second run beside the first")


class VersionTest(WindowsTest):
    def test_it_is_printed_when_the_command_line_contains_the_option(self):
        (self.place / "patcher.ini").unlink()
        program = self.place.program
        odd = shutil.copy2(program, program.with_name("Patcher --print-version.exe"))
        for command in ((program, "x", "y--print-versionz"), (odd,)):
            self.assertEqual(fixture.WINE.run(*command), (0, setting("PATCHER_LAUNCHER_BUILD").encode() + b"\n"))
        names = {path.name for path in self.place.directory.iterdir()}
        self.assertEqual(names, {program.name, odd.name, "WebView2Loader.dll"})

    def test_it_is_printed_to_the_console_of_the_parent(self):
        """A console program starts it whose output is a terminal, so it inherits no output."""
        ask = self.place / "ask.bat"
        ask.write_bytes(b"@\"%~dp0Patcher.exe\" --print-version\r\n")
        done = subprocess.run(["script", "--quiet", "--return", "--command", f"wine cmd /c '{ask}'", "/dev/null"],
                              env=fixture.WINE.environment, stdin=subprocess.DEVNULL, stdout=subprocess.PIPE, check=True)
        printed = re.sub(rb"\x1b\[[0-9;?]*[A-Za-z]", b"", done.stdout).decode(errors="replace")
        self.assertRegex(printed, rf"\b{setting('PATCHER_LAUNCHER_BUILD')}\b")
