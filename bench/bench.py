"""The benchmarks of bench/run. Our programs and their peers run alternately on the same files."""

import argparse
import json
import os
import shlex
import shutil
import subprocess
import tempfile
from pathlib import Path

from measure import Command, alternate, run_once, table
from sample_game import Game, Server, fresh_folder, sizes_around

MIB = 1 << 20


class Bench:
    def __init__(self, options, scratch):
        self.bin = Path(options.bin).resolve()
        self.rounds = options.rounds
        self.scratch = scratch
        self.count = 0
        self.servers = []

    def folder(self):
        self.count += 1
        folder = self.scratch / f"{self.count:02d}"
        folder.mkdir()
        return folder

    def game(self, sizes, **how):
        return Game(self.folder(), sizes, **how)

    def serve(self, game):
        server = Server(game.folder / "nginx", game.folder)
        self.servers.append(server)
        return server.url

    def close(self):
        for server in self.servers:
            server.stop()

    def launcher(self, url, name="patcher-stdio", keep=False, connections=4):
        """Installs the game anew before each run; with `keep` only once."""
        install = self.folder() / "install"

        def prepare():
            if keep and install.exists():
                return
            fresh_folder(install)()
            shutil.copy(self.bin / "bin" / "patcher-stdio", install)
            (install / "patcher.ini").write_text(f"BaseUrl={url}\nConnections={connections}\n")

        return Command(name, [str(install / "patcher-stdio")], prepare)

    def tool(self, name):
        return str(self.bin / "bin" / name)


def installed(command):
    return Path(command.argv[0]).parent


def check_install(command, game):
    """Raises an error if a run did not install the game completely."""
    record = installed(command) / "patch_manifest.json"
    if record.read_bytes() != game.manifest.read_bytes():
        raise RuntimeError("the installation is not complete")


def shell(name, script, prepare=None):
    return Command(name, ["bash", "-o", "pipefail", "-ec", script], prepare)


def manifest_text(bench):
    out = subprocess.run(
        [bench.tool("engine_bench"), "--benchmark_format=json", f"--benchmark_repetitions={bench.rounds}",
         "--benchmark_enable_random_interleaving=true", "--benchmark_min_time=0.2", "--benchmark_filter=Parse|Whole"],
        check=True, capture_output=True).stdout
    fastest = fastest_of(json.loads(out), "cpu_time")
    print("\n### Reading a manifest of 50,000 files (CPU time, fastest)\n")
    print("| | ms | MB/s | ratio to nlohmann-json |\n|---|---|---|---|")
    for label, name in (("nlohmann-json parse", "NlohmannParse"), ("MiniJson::Parse", "MiniJsonParse"),
                        ("ParsePatchManifest", "WholeManifest")):
        time, rate = fastest[name]
        print(f"| {label} | {time:.1f} | {rate / 1e6:.0f} | {time / fastest['NlohmannParse'][0]:.2f} |")


def record_saves(bench):
    out = subprocess.run(
        [bench.tool("engine_bench"), "--benchmark_format=json", f"--benchmark_repetitions={bench.rounds}",
         "--benchmark_enable_random_interleaving=true", "--benchmark_min_time=0.05", "--benchmark_filter=Record"],
        check=True, capture_output=True).stdout
    fastest = fastest_of(json.loads(out), "real_time")
    print("\n### Saves of the local record, one every 50 files, alone (fastest)\n")
    print("| files | manifest sorted by path, ms | us a file | manifest in random order, ms | us a file |")
    print("|---|---|---|---|---|")
    for files in (10000, 20000, 40000):
        cells = [f"{files:,}"]
        for order in ("sorted", "shuffled"):
            time = fastest[f"RecordSaves/{order}/{files}/real_time"][0]
            cells += [f"{time:.0f}", f"{time * 1000 / files:.1f}"]
        print("| " + " | ".join(cells) + " |")


def fastest_of(document, field):
    fastest = {}
    for run in document["benchmarks"]:
        if run["run_type"] != "iteration":
            continue
        entry = (run[field], run.get("bytes_per_second", 0))
        fastest[run["run_name"]] = min(entry, fastest.get(run["run_name"], entry))
    return fastest


def curl_list(game, url, target):
    lines = []
    for file in game.files:
        lines.append(f'url = "{url}/patch/{file["url"]}"\noutput = "{target}/{file["path"]}"\n')
    listed = game.folder / "curl.txt"
    listed.write_text("".join(lines))
    return listed


def aria2_list(game, url):
    lines = []
    for file in game.files:
        lines.append(f'{url}/patch/{file["url"]}\n  out={file["path"]}\n  checksum=sha-256={file["sha256"]}\n')
    listed = game.folder / "aria2.txt"
    listed.write_text("".join(lines))
    return listed


def fresh_install(bench):
    game = bench.game(sizes_around(5000, 20_000))
    url = bench.serve(game)
    target = bench.folder() / "out"
    curl = Command("curl --parallel-max 4", ["curl", "-s", "--fail", "--parallel", "--parallel-max", "4",
                                             "--create-dirs", "-K", str(curl_list(game, url, target))],
                   fresh_folder(target))
    synced = shell("curl, then sync", f"{shlex.join(curl.argv)}; sync -f {target}", fresh_folder(target))
    aria2 = Command("aria2 -j4, checksums", ["aria2c", "-q", "-j4", "-x1", "--file-allocation=none", "--no-conf",
                                             f"--dir={target}", "-i", str(aria2_list(game, url))],
                    fresh_folder(target))
    ours = bench.launcher(url)
    # Unwritten data of one program must not slow down the next one.
    for command in (ours, curl, synced, aria2):
        command.prepare = settled(command.prepare)
    alternate([ours, synced, curl, aria2], bench.rounds)
    check_install(ours, game)
    # Our program flushes its files, so the ratio refers to the peer that also does.
    table(f"Fresh install of 5,000 files, {game.total() / 1e6:.0f} MB, 4 connections", [synced, ours, curl, aria2],
          synced)


def settled(prepare):
    def prepare_and_sync():
        prepare()
        os.sync()

    return prepare_and_sync


def one_large_file(bench):
    game = bench.game([1 << 30])
    small = bench.game([100 << 20])
    url = bench.serve(game)
    target = bench.folder() / "out"
    file = game.files[0]["path"]
    peer = shell("curl, then openssl dgst",
                 f"curl -sf --create-dirs -o {target}/{file} {url}/patch/{file}; openssl dgst -sha256 {target}/{file}",
                 fresh_folder(target))
    ours = bench.launcher(url)
    ours_small = bench.launcher(bench.serve(small), "patcher-stdio, 100 MiB file")
    alternate([ours, peer], bench.rounds)
    check_install(ours, game)
    alternate([ours_small], 3)
    check_install(ours_small, small)
    table("One file of 1 GiB", [peer, ours, ours_small], peer)


def nothing_to_do(bench):
    for count in (50_000, 200_000):
        game = bench.game([2048 if count == 50_000 else 64] * count)
        ours = bench.launcher(bench.serve(game), keep=True)
        fill_installation(bench, ours, game)
        floor = Command("parse + existence loop", [bench.tool("start_floor"), str(game.manifest), str(installed(ours))])
        rsync = Command("rsync -an", ["rsync", "-an", f"{game.folder}/patch/data/", f"{installed(ours)}/data/"])
        alternate([ours, floor, rsync], bench.rounds + 2)
        medians = ("median to ours", lambda command: f"{command.median() / ours.median():.2f}")
        table(f"Start with nothing to do, {count:,} files", [floor, rsync, ours], floor, medians)


def fill_installation(bench, command, game):
    command.prepare()
    shutil.copytree(game.folder / "patch" / "data", installed(command) / "data", copy_function=os.link)
    shutil.copy(game.manifest, installed(command) / "patch_manifest.json")


def growth(bench):
    print("\n### Growth with the number of files (64 bytes each; fastest, us a file)\n")
    print("| files | fresh install | the same, manifest in random order | start with nothing to do |\n|---|---|---|---|")
    for count in (10_000, 20_000, 40_000):
        commands = []
        for shuffled in (False, True):
            game = bench.game([64] * count, shuffled=shuffled)
            commands.append(bench.launcher(bench.serve(game)))
        start = bench.launcher(bench.servers[-1].url, keep=True)
        fill_installation(bench, start, game)
        alternate(commands + [start], min(bench.rounds, 3))
        check_install(commands[1], game)
        cells = [f"{command.wall() * 1e6 / count:.1f}" for command in commands + [start]]
        print(f"| {count:,} | " + " | ".join(cells) + " |", flush=True)


def archives(bench):
    extract(bench, bench.game([100_000] * 2000, compressible=True), 1)
    extract(bench, bench.game([100_000] * 2000, compressible=True), 4)
    extract(bench, bench.game([2048] * 50_000, compressible=True), 1)


def extract(bench, game, count):
    """Several archives, one per core at a time; one process per archive for the peers."""
    packed = [game.folder / f"game{number}.zip" for number in range(count)]
    for number, archive in enumerate(packed):
        game.zip_to(archive, game.files[number::count])
    target = bench.folder() / "out"
    at_a_time = min(count, len(os.sched_getaffinity(0)))

    def peer(program, command):
        # Extract each archive into its own folder: processes that create the same folders can fail.
        each = [f"mkdir {target}/{number} && {command.format(archive=archive, folder=f'{target}/{number}')}"
                for number, archive in enumerate(packed)]
        return shell(program if count == 1 else f"{program}, {at_a_time} at a time",
                     f"printf '%s\\0' {shlex.join(each)} | xargs -0 -n1 -P{at_a_time} sh -c", fresh_folder(target))

    unzip = peer("unzip", "unzip -q {archive} -d {folder}")
    bsdtar = peer("bsdtar", "bsdtar -x -f {archive} -C {folder}")
    ours = Command("ExtractArchive", [bench.tool("extract_archive"), "4", str(target), *map(str, packed)],
                   fresh_folder(target))
    alternate([ours, unzip, bsdtar], bench.rounds)
    table(f"Extracting {count} archive(s), together {len(game.files):,} files, {game.total() / 1e6:.0f} MB",
          [unzip, bsdtar, ours], bsdtar,
          ("ratio to unzip", lambda command: f"{command.wall() / unzip.wall():.2f}"))


def hashing(bench):
    for title, game, batch in (("2,000 files of 1 MiB", bench.game([MIB] * 2000), 100),
                               ("50,000 files of 2 KB", bench.game([2048] * 50_000), 1000)):
        names = game.folder / "names"
        names.write_text("".join(f"{game.folder}/patch/{file['path']}\n" for file in game.files))
        openssl, sha256sum = (shell(f"xargs -P2 {tool}", f"xargs -a {names} -P2 -n{batch} {tool}")
                              for tool in ("openssl dgst -sha256", "sha256sum"))
        ours = Command("verification, 2 workers", [bench.tool("verify_tree"), str(game.manifest),
                                             str(game.folder / "patch"), "2"])
        run_once(shell("warm up", f"xargs -a {names} cat >/dev/null"))
        alternate([ours, openssl, sha256sum], bench.rounds)
        medians = ("median to ours", lambda command: f"{command.median() / ours.median():.2f}")
        table(f"Hashing {title}, in the page cache", [openssl, sha256sum, ours], openssl, medians)


BENCHMARKS = {"manifest": manifest_text, "install": fresh_install, "large": one_large_file, "start": nothing_to_do,
              "growth": growth, "record": record_saves, "archive": archives, "hash": hashing}


def main():
    parser = argparse.ArgumentParser(prog="bench/run", description="Measures the programs and their peers.")
    parser.add_argument("--bin", required=True, help=argparse.SUPPRESS)
    parser.add_argument("--rounds", type=int, default=5, help="runs of each program (default 5)")
    parser.add_argument("--scratch", help="folder for samples and installations (needs 8 GB)")
    parser.add_argument("benchmark", nargs="*", help="any of: " + ", ".join(BENCHMARKS) + " (default all)")
    options = parser.parse_args()
    for name in options.benchmark:
        if name not in BENCHMARKS:
            parser.error(f"no such benchmark: {name}")
    if options.scratch:
        os.makedirs(options.scratch, exist_ok=True)
    for name in options.benchmark or BENCHMARKS:
        with tempfile.TemporaryDirectory(prefix="bench-", dir=options.scratch) as scratch:
            bench = Bench(options, Path(scratch))
            try:
                BENCHMARKS[name](bench)
            finally:
                bench.close()


if __name__ == "__main__":
    main()
