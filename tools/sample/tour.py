"""A player's tour of the launcher's window on a virtual screen: update, news, settings, repair, play, with a
picture of each step."""
import hashlib
import random
import subprocess
import time

from display import Display
from waiting import wait_until

# Points in the window, relative to its left and top edges; negative: to its right and bottom edges.
TABS = {"accueil": (90, 228), "nouveautes": (195, 228), "parametres": (325, 228), "reparation": (450, 228)}
FULL_SCREEN_SWITCH = (-105, 427)
RIGHT_BUTTON = (-110, -55)  # the main button of each page: ENREGISTRER, VERIFIER, REPARER, JOUER
NOTHING = (640, 120)  # the picture at the top


class Tour:
    def __init__(self, install, pictures):
        self.install = install
        self.pictures = pictures
        self.display = Display(managed=True)
        self.process = subprocess.Popen([install / "Patcher"], env=self.display.environment, cwd="/",
                                        stdin=subprocess.DEVNULL)
        self.window = self.display.window()

    def close(self):
        self.process.kill()
        self.process.wait()
        self.display.close()

    def point(self, place, *then):
        left, top, width, height = self.window.place()
        x, y = place
        self.display.mouse("mousemove", left + x % width, top + y % height, *then)

    def click(self, place):
        self.point(place, "click", 1)

    def capture(self, path):
        self.display.run("import", "-silent", "-window", self.window.number, str(path))

    def settled(self, name):
        """Saves a picture of the page when it no longer changes."""
        self.point(NOTHING)
        path = self.pictures / f"{name}.png"
        before = None
        while True:
            self.capture(path)
            now = hashlib.sha256(path.read_bytes()).digest()
            if now == before:
                break
            before = now
            time.sleep(0.3)
        print(f"  {path}", flush=True)

    def open_tab(self, name):
        self.click(TABS[name])

    def update(self, is_installed):
        wait_until(is_installed)
        self.settled("1-accueil")

    def read_news(self):
        self.open_tab("nouveautes")
        self.settled("2-nouveautes")

    def change_settings(self):
        settings = self.install / "ostu.ini"
        self.open_tab("parametres")
        self.settled("3-parametres")
        self.click(FULL_SCREEN_SWITCH)
        self.click(RIGHT_BUTTON)
        wait_until(lambda: settings.exists() and b"fullscreen 0\r\n" in settings.read_bytes())
        self.settled("4-parametres-enregistres")

    def repair(self, names, is_installed):
        rng = random.Random(4)
        for name in rng.sample(names, 6):
            (self.install / name).write_bytes(b"abime")
        self.open_tab("reparation")
        self.settled("5-reparation")
        self.click(RIGHT_BUTTON)
        self.settled("6-verification")
        self.click(RIGHT_BUTTON)
        wait_until(is_installed)
        self.settled("7-fichiers-remis-en-place")

    def play(self):
        started = self.install / "client_started.txt"
        started.unlink(missing_ok=True)
        self.open_tab("accueil")
        self.settled("8-pret-a-jouer")
        self.click(RIGHT_BUTTON)
        wait_until(lambda: started.exists() and b"quantel" in started.read_bytes())
        if self.process.wait() != 0:
            raise RuntimeError("the launcher ended with an error")


def take_tour(install, pictures, names, is_installed):
    """`names`: files that may be damaged. `is_installed` returns whether every file of the game is correct."""
    pictures.mkdir(parents=True, exist_ok=True)
    tour = Tour(install, pictures)
    try:
        tour.update(is_installed)
        tour.read_news()
        tour.change_settings()
        tour.repair(names, is_installed)
        tour.play()
    finally:
        tour.close()
