#!/usr/bin/env python3
"""Reports what the suites of one build did, from ctest's JUnit file: what failed, what could not run, and the counts."""
import re
import sys
import xml.etree.ElementTree

# As GoogleTest, unittest, the scripts and the node runner print them.
COUNTS = re.compile(r"\[  PASSED  \] (\d+)|^Ran (\d+)|^(\d+) passed|^# pass (\d+)", re.MULTILINE)
NOT_RUN = re.compile(r"^\[  SKIPPED \] .*|^.* \.\.\. skipped .*|^Wine did not start: .*|^.*# SKIP .*", re.MULTILINE)
SHOWN_LINES = 150

passed, failed, not_run = 0, [], []
suites = list(xml.etree.ElementTree.parse(sys.argv[1]).iter("testcase"))
for suite in suites:
    output = suite.findtext("system-out") or ""
    counts = [int(next(filter(None, found))) for found in COUNTS.findall(output)]
    passed += counts[-1] if counts else 0
    not_run += [f"  {suite.get('name')}: {line}" for line in NOT_RUN.findall(output)]
    if suite.get("status") == "fail":
        failed.append(suite.get("name"))
        print("\n".join([f"--- {failed[-1]}", *output.splitlines()[-SHOWN_LINES:]]))
if not_run:
    print("\n".join(["Could not run here, or ran twice:", *not_run]))
print(f"{len(suites)} suites, {passed} tests passed, {len(failed)} suites failed {' '.join(failed)}".rstrip())
