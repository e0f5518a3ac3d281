"""Shared by the painted parts of the hero picture: the canvas, seeded noise, colours, layers, PNG.

The picture is painted at twice its size. Places and lengths are in units of the finished picture; X is a row and Y a
column of them, so that a function of both gives a whole picture. A picture is height x width x 3 (red, green, blue in
0..1; light is above 1), a layer has a fourth plane: its cover, 0..1.
"""
import functools
import struct
import subprocess
import tempfile
import zlib
from pathlib import Path

import numpy as np

WIDTH, HEIGHT, TIMES = 1650, 320, 2
X = ((np.arange(WIDTH * TIMES) + .5) / TIMES)[None, :]
Y = ((np.arange(HEIGHT * TIMES) + .5) / TIMES)[:, None]


@functools.lru_cache(None)
def lattice(seed):
    """Random values in 0..1 for a lattice of 256 by 256 points that repeats."""
    return np.random.RandomState(seed).random_sample((256, 256))


def noise(x, y, seed):
    """Smooth value noise in 0..1."""
    x, y = np.broadcast_arrays(np.asarray(x, float), np.asarray(y, float))
    ix, iy = np.floor(x), np.floor(y)
    fx, fy = x - ix, y - iy
    fx, fy = fx * fx * fx * (fx * (fx * 6 - 15) + 10), fy * fy * fy * (fy * (fy * 6 - 15) + 10)
    ix, iy = ix.astype(np.int64) & 255, iy.astype(np.int64) & 255
    right, below = (ix + 1) & 255, (iy + 1) & 255
    values = lattice(seed)
    top = values[iy, ix] * (1 - fx) + values[iy, right] * fx
    bottom = values[below, ix] * (1 - fx) + values[below, right] * fx
    return top * (1 - fy) + bottom * fy


def fractal(x, y, seed, octaves=5, gain=.5, ridged=False):
    """Sum of octaves in 0..1; ridged gives the sharp crests of mountains."""
    total, weight, weights = 0.0, 1.0, 0.0
    for octave in range(octaves):
        value = noise(x, y, seed + octave)
        if ridged:
            value = (1 - np.abs(2 * value - 1)) ** 2
        total = total + value * weight
        weights += weight
        weight *= gain
        # Turned by 36.87 degrees, so that the lattices of the octaves are not visible.
        x, y = (x * .8 - y * .6) * 2.03 + 17.1, (x * .6 + y * .8) * 2.03 + 9.7
    return total / weights


def smooth(low, high, value):
    """0 up to low, 1 from high on, smooth between them; low may be above high."""
    t = np.clip((value - low) / (high - low), 0, 1)
    return t * t * (3 - 2 * t)


def bell(distance):
    return np.exp(-distance * distance)


def rgb(colour):
    """#rrggbb as three numbers in 0..1."""
    return np.array([int(colour[i:i + 2], 16) / 255 for i in (1, 3, 5)])


def mix(a, b, t):
    """Between the colours or pictures a (t = 0) and b (t = 1)."""
    a, b = (rgb(c) if isinstance(c, str) else c for c in (a, b))
    t = np.asarray(t)[..., None]
    return a * (1 - t) + b * t


def ramp(stops, value):
    """The colour at value of a row of stops (place, #rrggbb)."""
    places = [place for place, _ in stops]
    colours = np.array([rgb(colour) for _, colour in stops])
    return np.stack([np.interp(value, places, colours[:, i]) for i in range(3)], axis=-1)


def blur(picture, radius):
    """Nearly Gaussian: three box blurs along each axis; radius in units of the picture."""
    half = max(1, round(radius * TIMES))
    for _ in range(3):
        for axis in (0, 1):
            padding = [(0, 0)] * picture.ndim
            padding[axis] = (half + 1, half)
            sums = np.cumsum(np.pad(picture, padding, mode="edge"), axis=axis)
            length = sums.shape[axis]
            high = np.take(sums, np.arange(2 * half + 1, length), axis=axis)
            low = np.take(sums, np.arange(length - 2 * half - 1), axis=axis)
            picture = (high - low) / (2 * half + 1)
    return picture


def sampled(picture, x, y):
    """The picture's values at the places x, y, which may lie outside; linear between pixels."""
    height, width = picture.shape[:2]
    px, py = np.clip(x * TIMES - .5, 0, width - 1.001), np.clip(y * TIMES - .5, 0, height - 1.001)
    ix, iy = px.astype(np.int64), py.astype(np.int64)
    fx, fy = px - ix, py - iy
    if picture.ndim == 3:
        fx, fy = fx[..., None], fy[..., None]
    top = picture[iy, ix] * (1 - fx) + picture[iy, ix + 1] * fx
    bottom = picture[iy + 1, ix] * (1 - fx) + picture[iy + 1, ix + 1] * fx
    return top * (1 - fy) + bottom * fy


def layer(colour, cover):
    """A layer of one colour or picture; cover in 0..1 for each pixel."""
    cover = np.broadcast_to(cover, (HEIGHT * TIMES, WIDTH * TIMES))
    colour = np.broadcast_to(rgb(colour) if isinstance(colour, str) else colour, cover.shape + (3,))
    return np.concatenate([colour, cover[..., None]], axis=-1)


def over(picture, top, opacity=1.0):
    """The picture with a layer on it."""
    cover = top[..., 3:] * opacity
    return picture * (1 - cover) + top[..., :3] * cover


def shone(picture, light, colour):
    """The picture with light of a colour added; bright parts change less."""
    light = light[..., None] * rgb(colour)
    return picture + light * np.clip(1 - picture * .92, 0, 1)


def drawn(svg):
    """An SVG of the picture's size as a layer."""
    with tempfile.TemporaryDirectory() as scratch:
        source, image = Path(scratch) / "drawing.svg", Path(scratch) / "drawing.png"
        source.write_text(svg)
        width, height = str(WIDTH * TIMES), str(HEIGHT * TIMES)
        subprocess.run(["rsvg-convert", "-w", width, "-h", height, source, "-o", image], check=True)
        pixels = subprocess.run(["convert", image, "-depth", "8", "rgba:-"], check=True, stdout=subprocess.PIPE).stdout
    return np.frombuffer(pixels, np.uint8).reshape(HEIGHT * TIMES, WIDTH * TIMES, 4) / 255


def png(picture):
    """The bytes of a PNG file."""
    height, width = picture.shape[:2]
    pixels = (np.clip(picture, 0, 1) * 255 + .5).astype(np.uint8).reshape(height, width * 3)
    rows = np.concatenate([np.zeros((height, 1), np.uint8), pixels], axis=1).tobytes()

    def chunk(kind, data):
        return struct.pack(">I", len(data)) + kind + data + struct.pack(">I", zlib.crc32(kind + data))

    return b"\x89PNG\r\n\x1a\n" + chunk(b"IHDR", struct.pack(">IIBBBBB", width, height, 8, 2, 0, 0, 0)) + \
        chunk(b"IDAT", zlib.compress(rows, 1)) + chunk(b"IEND", b"")
