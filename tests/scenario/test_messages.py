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


def names(pattern, text):
    return re.findall(pattern, text if "\n" in text else (ROOT / text).read_text(encoding="utf-8"), re.M | re.S)


def documented(heading):
    rows = names(r"^\| `[^\n]*", names(rf"\n## {heading}\n(.*?)\n## ", "docs/messages.md")[0])[1:]
    return sorted(re.findall(r"`(\w+)`", "".join(row.split("|")[1:3])) for row in rows)


class MessagesTest(unittest.TestCase):
    def test_actions(self):
        handlers = dict(names(r"^void Dispatcher::(\w+)\([^\n]*\{(.*?)\}\n\n", "Patcher/control/dispatch.cpp"))
        actions = [[name, *re.findall(r'request.Find\("(\w+)"', handlers[handler])]
                   for name, handler in names(r'\{"(\w+)", &Dispatcher::(\w+)\}', "Patcher/control/dispatch.cpp")]
        words = subprocess.run([launcher.PROGRAM, "--help"], stdout=subprocess.PIPE, text=True, check=True).stdout
        listed = [re.findall(r"\w+", row) for row in names(r'^  (\w+(?: "\w+")*)  ', words)]
        self.assertEqual([sorted(actions), sorted(listed)], [documented("Requests")] * 2)

    def test_messages(self):
        messages = []
        for path in (ROOT / "Patcher").rglob("*.cpp"):
            found = [[]]
            for begin, member in TOKEN.findall(path.read_text(encoding="utf-8")):
                found += [[PARTS.get(begin, begin)]] if begin else []
                found[-1] += [member] if member else []
            messages += found[1:]
        next(m for m in messages if m[0] == "values").extend(names(r'^    \{"(\w+)", "', "Patcher/options/option_table.h"))
        self.assertEqual(sorted(messages), documented("Messages"))
        self.assertLessEqual({m[0] for m in messages}, {*names(r'^  \["(\w+)", ', "Patcher/page/launcher.html"), *PARTS.values()})
