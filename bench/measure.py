"""Runs commands alternately and records the time, processor time and peak memory of each run."""

import os
import statistics
import subprocess
import tempfile
import time
from dataclasses import dataclass, field


@dataclass
class Command:
    """One command. `prepare` is called before each run and is not measured."""

    name: str
    argv: list
    prepare: callable = None
    runs: list = field(default_factory=list)

    def wall(self):
        """The fastest run, which other programs on the machine disturbed least."""
        return min(run[0] for run in self.runs)

    def median(self):
        return statistics.median(run[0] for run in self.runs)

    def cpu(self):
        return min(run[1] for run in self.runs)

    def peak_mib(self):
        return max(run[2] for run in self.runs) / 1024


def run_once(command):
    if command.prepare:
        command.prepare()
    with open(os.devnull, "r+b") as null, tempfile.NamedTemporaryFile("r") as peak:
        # Started by `time`, which is small, because a process inherits the peak memory of its parent.
        argv = ["/usr/bin/time", "-q", "-f", "%M", "-o", peak.name, *command.argv]
        start = time.perf_counter()
        process = subprocess.Popen(argv, stdin=null, stdout=null, stderr=subprocess.PIPE)
        errors = process.stderr.read()
        _, status, usage = os.wait4(process.pid, 0)
        wall = time.perf_counter() - start
        process.returncode = os.waitstatus_to_exitcode(status)
        kib = int(peak.read() or 0)
    process.stderr.close()
    if process.returncode != 0:
        raise RuntimeError(f"{command.name} ended with {process.returncode}: {errors.decode()[-500:]}")
    command.runs.append((wall, usage.ru_utime + usage.ru_stime, kib))


def alternate(commands, rounds):
    """Runs each command once per round, so that other load on the machine affects all commands."""
    for _ in range(rounds):
        for command in commands:
            run_once(command)


def table(title, commands, base=None, extra=None):
    """`base`: the peer for the ratios. `extra`: an additional column, a title and one text per command."""
    print(f"\n### {title}\n")
    heads = ["", "fastest s", "median s", "CPU s", "peak MiB"]
    if base:
        heads.append(f"ratio to {base.name}")
    if extra:
        heads.append(extra[0])
    print("| " + " | ".join(heads) + " |")
    print("|---" * len(heads) + "|")
    for command in commands:
        cells = [command.name, f"{command.wall():.3f}", f"{command.median():.3f}", f"{command.cpu():.2f}",
                 f"{command.peak_mib():.0f}"]
        if base:
            cells.append(f"{command.wall() / base.wall():.2f}")
        if extra:
            cells.append(extra[1](command))
        print("| " + " | ".join(cells) + " |", flush=True)
