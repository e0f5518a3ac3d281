"""docs/messages.md, --help and the page know every action and message of the sources, with their members."""
import pathlib
import re
import subprocess
import unittest

import launcher

ROOT = pathlib.Path(__file__).resolve().parents[2]
# The name of a message or of a part of one; or a member.
TOKEN = re.compile(r'(?:\\"type\\":\\"|Member\("type", "\\"|string (?=TuneRow\(|Values\())(\w+)|(?:\\"|Member\(")(\w+)(?:\\":|",)')
PARTS = {"TuneRow": "tune", "Values": "values"}


def read(path):
    return (ROOT / path).read_text(encoding="utf-8")


def documented(heading):
    section = read("docs/messages.md").split(f"\n## {heading}\n")[1].split("\n## ")[0]
    return sorted(re.findall(r"`(\w+)`", "".join(row.split("|")[1:3])) for row in re.findall(r"^\| `.*", section, re.M)[1:])


class MessagesTest(unittest.TestCase):
    def test_actions(self):
        source = read("Patcher/control/dispatch.cpp")
        actions = [[name, *re.findall(r'request.Find\("(\w+)"', source.split(f"Dispatcher::{handler}(")[1].split("\n}")[0])]
                   for name, handler in re.findall(r'\{"(\w+)", &Dispatcher::(\w+)\}', source)]
        words = subprocess.run([launcher.PROGRAM, "--help"], stdout=subprocess.PIPE, text=True, check=True).stdout
        listed = [re.findall(r"\w+", row) for row in re.findall(r'^  (\w+(?: "\w+")*)  ', words, re.M)]
        self.assertEqual([sorted(actions), sorted(listed)], [documented("Requests")] * 2)

    def test_messages(self):
        messages = []
        for path in (ROOT / "Patcher").rglob("*.cpp"):
            found = [[]]
            for begin, member in TOKEN.findall(path.read_text(encoding="utf-8")):
                found += [[PARTS.get(begin, begin)]] if begin else []
                found[-1] += [member] if member else []
            messages += found[1:]
        options = re.findall(r'^    \{"(\w+)", "', read("Patcher/options/option_table.h"), re.M)
        messages = sorted(m + options if m[0] == "values" else m for m in messages)
        self.assertEqual(messages, documented("Messages"))
        received = re.findall(r'^  \["(\w+)", ', read("Patcher/page/launcher.html"), re.M)
        self.assertLessEqual({m[0] for m in messages}, {*received, *PARTS.values()})
