"""Runs commands in turn and keeps time, processor time and peak memory of each run."""

import os
import statistics
import subprocess
import tempfile
import time
from dataclasses import dataclass, field


@dataclass
class Command:
    """One contestant. `prepare` runs before each run, outside the measured time."""

    name: str
    argv: list
    prepare: callable = None
    runs: list = field(default_factory=list)

    def wall(self):
        """The fastest run: what other programs on the machine disturbed least."""
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
        # Through `time`, which is small: a process inherits the peak memory of the one that started it.
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
    """One run of each command a round, so that what disturbs the machine disturbs all of them."""
    for _ in range(rounds):
        for command in commands:
            run_once(command)


def table(title, commands, base=None, extra=None):
    """`base`: the peer that ratios refer to. `extra`: a further column, title and text per command."""
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
