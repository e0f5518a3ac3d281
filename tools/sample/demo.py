#!/usr/bin/env python3
"""Demonstrates the launcher with a sample game: publishes it, installs it, publishes a second version and
updates, damages some files and repairs them, changes a setting, and starts the game. This runs first as text with
patcher-stdio, then in the launcher's window. With a display the user operates the window; without one a tour runs
and saves pictures.

    demo.py --programs BUILD/bin --work DIRECTORY
"""
import argparse
import json
import os
import pathlib
import random
import shutil
import subprocess

from make_client import make_first_version, make_second_version
from patch_server import patch_server
from session import Session
from tour import take_tour

NEWS = {"items": [
    {"date": "2026-11-24", "tag": "contenu", "title": "L'ile neuve est ouverte",
     "summary": "Vingt cartes a explorer, et un port pour y aborder.", "url": "https://tolmira.example/actus/2"},
    {"date": "2026-11-10", "tag": "correctif", "title": "Correctifs de novembre",
     "summary": "Les portes de la citadelle s'ouvrent de nouveau."},
]}


def say(text):
    print(f"\n== {text}", flush=True)


def publish(programs, client, web, version):
    subprocess.run([programs / "patch-publish", "--client", client, "--out", web, "--version", str(version)], check=True)


def update(install):
    session = Session(install / "patcher-stdio")
    session.end()


def tree(directory):
    return {p.relative_to(directory).as_posix(): p.read_bytes() for p in directory.rglob("*") if p.is_file()}


def check_installed(client, install):
    wanted, found = tree(client), tree(install)
    wrong = [name for name, data in wanted.items() if found.get(name) != data]
    if wrong:
        raise SystemExit(f"the installation differs from the client: {wrong[:5]}")
    print(f"  {len(wanted)} files are exactly as published")


def damage(install, client):
    """Flips a byte in some files and deletes others."""
    rng = random.Random(3)
    names = sorted(name for name, data in tree(client).items() if data and name != "Tolmira.exe")
    chosen = rng.sample(names, 8)
    for name in chosen[:5]:
        path = install / name
        data = bytearray(path.read_bytes())
        data[len(data) // 2] ^= 0xFF
        path.write_bytes(data)
        print(f"  damaged {name}")
    for name in chosen[5:]:
        (install / name).unlink()
        print(f"  deleted {name}")


def verify_and_repair(install):
    session = Session(install / "patcher-stdio")
    session.wait_for("ready to play", "cannot play")
    session.request('{"action":"verify"}')
    session.wait_for("ready to play", "cannot play")
    session.request('{"action":"repair"}')
    session.wait_for("ready to play", "cannot play")
    session.end()


def read_news(install):
    session = Session(install / "patcher-stdio")
    session.request('{"action":"getNews"}')
    session.wait_for("news", "no news")
    session.end()


def change_settings(install):
    (install / "ostu.ini").write_bytes(b"; mes reglages\r\nfpslimit 90\r\nClientSecret  garde-moi\r\nvsync 0\r\n")
    session = Session(install / "patcher-stdio")
    session.wait_for("ready to play", "cannot play")
    session.request('{"action":"saveOptions","values":{"vsync":1,"exposure":1.25,"resWidth":1280,"resHeight":720}}')
    session.wait_for("settings saved", "settings could not")
    session.end()
    print("  ostu.ini now:")
    for line in (install / "ostu.ini").read_text(encoding="utf-8").splitlines():
        print("    " + line)


def play(install):
    session = Session(install / "patcher-stdio")
    session.wait_for("ready to play", "cannot play")
    session.request('{"action":"play"}')
    session.end()


def show_window(programs, client, work, url):
    """Makes a second installation with the launcher's window."""
    install = work / "jeu avec fenêtre"
    install.mkdir()
    shutil.copy2(programs / "Patcher", install)
    (install / "patcher.ini").write_bytes(f"BaseUrl={url}\r\nConnections=4\r\n".encode())
    if os.environ.get("DISPLAY") or os.environ.get("WAYLAND_DISPLAY"):
        say("The launcher's window is open; close it to end the demonstration")
        subprocess.run([install / "Patcher"], check=True)
        return
    say("The same in the launcher's window, on a virtual screen; pictures:")
    wanted = tree(client)

    def is_installed():
        found = tree(install)
        return all(found.get(name) == data for name, data in wanted.items())

    names = sorted(name for name in wanted if name != "Tolmira.exe")
    take_tour(install, work / "pictures", names, is_installed)


def main():
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("--programs", type=pathlib.Path, required=True)
    parser.add_argument("--work", type=pathlib.Path, required=True)
    options = parser.parse_args()
    programs, work = options.programs.resolve(), options.work.resolve()
    client, web, install = work / "client", work / "www", work / "jeu installé"
    shutil.rmtree(work, ignore_errors=True)
    for directory in (client, web / "api", install):
        directory.mkdir(parents=True)
    (web / "api" / "news.json").write_text(json.dumps(NEWS), encoding="utf-8")

    with patch_server(web, work / "server") as url:
        shutil.copy2(programs / "patcher-stdio", install)
        (install / "patcher.ini").write_bytes(f"BaseUrl={url}\r\nConnections=4\r\n".encode())

        say("The publisher publishes version 1")
        make_first_version(client, programs / "sample-client")
        publish(programs, client, web, 1)
        say("A player installs the game")
        update(install)
        check_installed(client, install)

        say("The publisher publishes version 2")
        make_second_version(client)
        publish(programs, client, web, 2)
        say("The player starts the launcher again")
        update(install)
        check_installed(client, install)

        say("Some files are damaged or deleted; the player verifies and repairs")
        damage(install, client)
        verify_and_repair(install)
        check_installed(client, install)

        say("The player changes settings; lines that the launcher does not know stay")
        change_settings(install)

        say("The player reads the news")
        read_news(install)

        say("The player starts the game")
        play(install)
        print((install / "client_started.txt").read_text(encoding="utf-8"))
        show_window(programs, client, work, url)
    say(f"The installation is in {install}")


main()
