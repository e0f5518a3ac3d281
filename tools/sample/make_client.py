"""A sample game client: a few hundred files of many sizes, and the changes of its second version."""
import pathlib
import random
import shutil

ROOTS = ["Model", "World", "Icon", "Item", "Char", "SFX", "Client", "Musique d'ambiance", "Données/Éléments"]
SIZES = [0, 1, 40, 900, 4_000, 17_000, 66_000, 240_000]
COUNT = 360


def content(rng, size):
    """Text that compresses well or noise that does not, each for half of the files, like in a game."""
    if rng.random() < 0.5:
        line = rng.randbytes(24).hex().encode() + b"\r\n"
        return (line * (size // len(line) + 1))[:size]
    return rng.randbytes(size)


def names(rng):
    for number in range(COUNT):
        root = ROOTS[number % len(ROOTS)]
        folder = f"/zone {rng.randint(1, 9)}" if number % 3 == 0 else ""
        yield f"{root}{folder}/objet n° {number}.dat" if number % 5 == 0 else f"{root}{folder}/f{number:03}.bin"


def make_first_version(directory, client_program):
    """Writes the first version of the client."""
    rng = random.Random(1)
    for name in names(rng):
        path = pathlib.Path(directory, name)
        path.parent.mkdir(parents=True, exist_ok=True)
        path.write_bytes(content(rng, rng.choice(SIZES)))
    shutil.copy2(client_program, pathlib.Path(directory, "Tolmira.exe"))


def make_second_version(directory):
    """Changes a fifth of the files, removes some and adds some."""
    rng = random.Random(2)
    files = sorted(p for p in pathlib.Path(directory).rglob("*") if p.is_file() and p.name != "Tolmira.exe")
    for path in rng.sample(files, len(files) // 5):
        path.write_bytes(content(rng, rng.choice(SIZES)))
    for path in rng.sample(files, 6):
        path.unlink()
    for number in range(20):
        path = pathlib.Path(directory, "World", "île neuve", f"carte {number}.dat")
        path.parent.mkdir(parents=True, exist_ok=True)
        path.write_bytes(content(rng, rng.choice(SIZES)))
