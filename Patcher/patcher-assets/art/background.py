"""The hero picture: a citadel in the evening sun, 1650 by 320, as a PNG of twice that size.

The page covers a band of 200 pixels with it, so that a wide window shows only the rows from about 86 to 215: the scene
is between them. The page puts the logo at the left and darkens both sides and the bottom.
"""
import random
import sys

import numpy as np

import citadel
import mountains
import ships
import shores
from raster import HEIGHT, WIDTH, X, Y, bell, blur, drawn, fractal, layer, mix, over, png, rgb, sampled, shone, \
    smooth
from sea import TOP, sea
from sky import HORIZON, sky
from svg import document, element

CITADEL = (1004, 198)
# Middle, waterline, size, direction.
SHIPS = [(846, 208, 1.02, 1), (612, 192, .42, 1), (1296, 211, .46, -1)]


def mist(row, height, opacity, seed, reach=(0, WIDTH), colour="#ffe9cf"):
    """A bank of mist, thinner in places; reach: where it begins and ends."""
    body = fractal(X / 90, Y / 9, seed, 4)
    cover = bell((Y - row) / height) * smooth(.25, .75, body) * opacity
    cover = cover * smooth(reach[0] - 60, reach[0] + 60, X) * smooth(reach[1] + 60, reach[1] - 60, X)
    return layer(mountains.air() * .5 + rgb(colour) * .5, cover)


def town():
    """Draws the citadel, then paints the evening light and the grain of the stone on it."""
    x, y = CITADEL
    body = drawn(document(WIDTH, HEIGHT, citadel.definitions(), element(
        "g", citadel.citadel(), transform=f"translate({x} {y}) scale(.88 .8)")))
    cover, across = body[..., 3], (X - x) / 150
    spots = .5 * (fractal(X / 14, Y / 14, 905) - .5)
    colour = body[..., :3] * mix("#fff4e0", "#868bc6", smooth(-.5, 1, across + spots))
    colour = colour * (.84 + .32 * fractal(X / 3, Y / 3, 901, 4))[..., None]
    colour = colour * mix("#ffffff", "#a79cbc", smooth(y - 26, y + 1, Y) * .6 + 0 * cover)
    # The side towards the sun glows at the edge.
    rim = np.clip(cover - sampled(cover, X - 1.8, Y - .4), 0, 1) * smooth(1.2, -.6, across)
    light = .34 * smooth(.35, -.9, across) * smooth(y + 30, y - 80, Y)
    colour = shone(colour, rim * .9 + light, "#ffbf74")
    return np.concatenate([colour, cover[..., None]], axis=-1)


def ship_layer(x, y, size, flip):
    return drawn(document(WIDTH, HEIGHT, ships.definitions(), ships.wake(x, y, size), ships.ship(x, y, size, flip)))


def finished(canvas):
    """Adds a glow around bright parts, and makes the picture lighter and richer, because the page darkens it."""
    canvas = canvas + .5 * blur(np.clip(canvas - .72, 0, 1), 7) * rgb("#ffdcae")
    canvas = np.clip(canvas, 0, 1) ** .9
    grey = canvas.mean(axis=-1, keepdims=True)
    canvas = np.clip(grey + (canvas - grey) * 1.14, 0, 1)
    return mix(canvas, "#0a1428", .6 * smooth(300, 326, Y) + 0 * X)


def picture():
    canvas = sky()
    far, middle, near = mountains.ranges()
    canvas = over(canvas, far.layer())
    canvas = over(canvas, mist(HORIZON - 18, 13, .5, 31))
    canvas = over(canvas, middle.layer())
    canvas = over(canvas, mist(HORIZON - 10, 9, .55, 35))
    canvas = over(canvas, near.layer())
    canvas = over(canvas, mist(HORIZON - 2, 6, .8, 39))
    # From the farthest to the nearest, each with the row of its waterline.
    left, right = shores.far()
    floating = [(town(), CITADEL[1]), right] + [(ship_layer(*ship), ship[1]) for ship in SHIPS[::-1]] + [left]
    canvas[TOP:] = sea(canvas, floating)
    for image, _ in floating:
        canvas = over(canvas, image)
    canvas = over(canvas, drawn(document(WIDTH, HEIGHT, [], ships.birds(random.Random(3)))))
    canvas = over(canvas, mist(218, 5, .4, 43, (-100, 380), "#c9d2f2"))
    canvas = over(canvas, mist(206, 5, .4, 44, (1230, 1750), "#c9d2f2"))
    canvas = over(canvas, shores.middle())
    canvas = over(canvas, mist(258, 14, .22, 45, (-100, 330), "#9fb4ec"))
    canvas = over(canvas, mist(258, 14, .22, 46, (1330, 1750), "#9fb4ec"))
    canvas = over(canvas, shores.near())
    return finished(canvas)


if __name__ == "__main__":
    sys.stdout.buffer.write(png(picture()))
