#!/usr/bin/env python3
"""Cuts the power of disks while the launcher works on them: run.py --launcher PROGRAM [--seed N] [--cuts N].

Takes root, loop devices, ext4 and XFS. The cuts have seeds from N on: `--seed N --cuts 1` repeats one."""
import argparse
import os
import pathlib
import signal
import sys
import tempfile

sys.path[:0] = [str(pathlib.Path(__file__).parent), str(pathlib.Path(__file__).parents[1] / "scenario"),
                str(pathlib.Path(__file__).parents[1] / "support")]
import disk  # noqa: E402
import launcher  # noqa: E402
from power_cut import PowerCut  # noqa: E402


def cut_power(seeds, folder):
    """Returns the number of cuts that left or led to something wrong."""
    blanks = [disk.make_blank(folder, kind) for kind in disk.MAKE]
    failed = 0
    for seed in seeds:
        cut, phase = PowerCut(seed, blanks), "not cut"
        try:
            cut.prepare()
            phase = cut.cut()
            cut.check()
        except Exception as error:  # a launcher that cannot be started, a file that is gone
            cut.faults.append(repr(error))
        finally:
            cut.remove()
        if cut.faults:
            failed += 1
            name = f"{blanks[seed % len(blanks)].stem}, {cut.operation}, {phase}, {cut.ahead} ahead"
            print(f"seed {seed} ({name}): {'; '.join(cut.faults)}", flush=True)
    return failed


def main():
    parser = argparse.ArgumentParser()
    parser.add_argument("--launcher", required=True)
    parser.add_argument("--seed", type=int, default=1)
    parser.add_argument("--cuts", type=int, default=72)
    options = parser.parse_args()
    launcher.PROGRAM = pathlib.Path(options.launcher).resolve()
    # The default server is out of reach without a look at the network.
    os.environ["https_proxy"] = "http://127.0.0.1:1"
    signal.signal(signal.SIGTERM, lambda *_: sys.exit(1))
    sys.setswitchinterval(0.0001)  # or the threads of the server would delay the cuts
    disk.hide_mounts()
    seeds = range(options.seed, options.seed + options.cuts)
    with tempfile.TemporaryDirectory(prefix="patcher-power-") as folder:
        # In memory: it ends with this process, and flushes wait for no real disk.
        disk.run("mount", "-t", "tmpfs", "tmpfs", folder)
        try:
            failed = cut_power(seeds, pathlib.Path(folder))
        finally:
            disk.run("umount", "--recursive", "--lazy", folder)
    print(f"{len(seeds) - failed} passed, {failed} failed")
    sys.exit(1 if failed else 0)


main()
