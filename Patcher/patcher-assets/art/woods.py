"""The near shores: firs, leafy trees, bushes and grass, painted dab by dab against the evening sun."""
import numpy as np

from brush import Canvas
from raster import bell, fractal, mix, ramp, rgb
from sky import SUN

# From leaves in the shade to leaves that the sun shines through.
LEAVES = [(0, "#0a1f33"), (.28, "#14394a"), (.46, "#275a4c"), (.62, "#5f8244"), (.78, "#c2a548"), (1, "#ffd880")]
NEEDLES = [(0, "#081b30"), (.28, "#113447"), (.46, "#1f544d"), (.62, "#4f7848"), (.78, "#b89d50"), (1, "#ffd88e")]
BARK = [(0, "#0a0f1c"), (.6, "#33261f"), (1, "#d99a55")]


class Wood:
    """A canvas with trees at one distance; haze: how much of the air lies before them, 0..1."""

    def __init__(self, seed, haze, air):
        self.rng, self.canvas = np.random.RandomState(seed), Canvas()
        self.haze, self.air = haze, rgb(air)

    def towards_sun(self, x, y):
        away = np.array([SUN[0] - x, SUN[1] - y])
        return away / np.hypot(*away)

    def dab(self, x, y, length, width, angle, light, stops=LEAVES, opacity=.92):
        light = np.clip(light, 0, 1)
        colour = mix(ramp(stops, light), self.air, self.haze * (1 - .55 * light))
        self.canvas.dabs(np.asarray(x), np.asarray(y), length, width, angle, colour, opacity)

    def stem(self, x, base, height, width, lean=0.0):
        """A trunk, with the sun on one of its sides."""
        count = max(6, int(height * 1.2))
        t = np.linspace(0, 1, count)
        side = np.sign(SUN[0] - x)
        middle = x + lean * height * t * t
        half = width * (1 - .75 * t) + .25
        self.dab(middle, base - t * height, height / count * 2, half, np.pi / 2, .18 + 0 * t, BARK)
        self.dab(middle + side * half * .7, base - t * height, height / count * 2, half * .3 + .2, np.pi / 2,
                 .55 + .2 * self.rng.random_sample(count), BARK, .5)

    def fir(self, x, base, height):
        """Boughs from the lowest to the top, those that come towards us over the others."""
        rng, lean = self.rng, self.rng.uniform(-.02, .02)
        self.stem(x, base, height * .95, height * .016 + .3)
        y, top = base - height * .1, base - height
        while y < base and y > top + height * .02:
            t = (base - y) / height
            reach = height * .21 * (1 - t) ** .8 * rng.uniform(.75, 1.15) + .4
            turns = np.sort(np.sin(rng.uniform(-.6, 1.57, 7)))
            sides = np.sign(rng.uniform(-1, 1, 7)) * np.sqrt(1 - turns ** 2)
            for towards, out in zip(turns, sides):
                self.bough(x + lean * height * t, y + rng.uniform(-.4, .4), reach, out, towards, height)
            y -= height * (.05 - .028 * t) * rng.uniform(.8, 1.2) + .25
        self.dab([x + lean * height] * 3, [top + height * s for s in (0, .02, .04)], height * .02 + .3,
                 height * .004 + .2, np.pi / 2, np.array([.62, .5, .4]), NEEDLES)

    def bough(self, x, y, reach, out, towards, height):
        """Hangs, and rises again at its tip; needles hang from it. out: how far to the right, towards: to us."""
        rng, (sun_x, _) = self.rng, self.towards_sun(x, y)
        count = max(4, int(reach * 1.5))
        along = (np.arange(count) + rng.random_sample(count)) / count
        px = x + out * reach * along
        py = y + reach * (.5 * along - .14 * along ** 3 + .22 * towards * along)
        size = height * .0085 + .42
        angle = np.arctan2(.42, out) if abs(out) > .2 else np.pi / 2
        facing = out * sun_x
        light = .2 + .12 * towards + .28 * facing * along + .1 * rng.standard_normal(count) + .1 * along
        for drop in (1.5, .7):
            self.dab(px + rng.uniform(-.5, .5, count) * size, py + size * drop, size * 1.3, size * .55,
                     np.pi / 2 - .5 * out, light * (.25 if drop > 1 else .6), NEEDLES, .9)
        self.dab(px, py, size * 1.2, size * .42, angle, light + .12, NEEDLES, .9)
        tip = along > .62
        if facing > .3:
            self.dab(px[tip], py[tip] - size * .2, size * .9, size * .3, angle, light[tip] + .42 * facing, NEEDLES, .9)

    def cluster(self, x, y, radius, crown):
        """A ball of leaves; crown: the middle and the radius of the tree's whole crown, which shades it."""
        rng = self.rng
        count = int(16 + radius * radius * .95)
        angle, distance = rng.uniform(0, 2 * np.pi, count), np.sqrt(rng.random_sample(count)) * 1.04
        nx, ny = np.cos(angle) * distance, np.sin(angle) * distance
        px, py = x + nx * radius, y + ny * radius * .78
        sun_x, sun_y = self.towards_sun(x, y)
        cx, cy, whole = crown
        broad = ((px - cx) * sun_x + (py - cy) * sun_y) / whole
        local = nx * sun_x + ny * sun_y
        light = .3 + .27 * local + .24 * broad - .15 * ny + .11 * rng.standard_normal(count)
        # Leaves at the rim let sunlight through, so they are brighter.
        light = light + .3 * np.clip(distance - .72, 0, 1) * 3 * np.clip(local, 0, 1) * (broad > .25)
        order = np.argsort(light + .25 * rng.random_sample(count))
        leaf = (.75 + .055 * radius) * rng.uniform(.6, 1.25, count)
        turn = rng.uniform(-.9, .9, count)
        self.dab(px[order], py[order], leaf, leaf * .55, turn, light[order], LEAVES, .9)

    def leafy(self, x, base, height, spread=.42):
        """An old tree: a trunk that forks, balls of leaves around the ends of its branches."""
        rng = self.rng
        lean = rng.uniform(-.06, .06)
        cx, cy, whole = x + lean * height, base - height * .64, height * spread
        self.stem(x, base, height * .62, height * .028 + .4, lean)
        for _ in range(5):
            side = rng.uniform(-1, 1)
            t = np.linspace(0, 1, 14)
            self.dab(x + side * whole * .7 * t, base - height * (.3 + .34 * t), height * .03, height * .011 * (1.2 - t),
                     np.arctan2(-height * .34, side * whole * .7), .2 + .3 * t, BARK)
        balls = []
        for i in range(26):
            # Turned by the golden angle each time, so that the crown is filled evenly.
            angle, distance = 2.4 * i + rng.uniform(-.4, .4), np.sqrt((i + .5) / 26) * rng.uniform(.75, .95)
            balls.append((cy + np.sin(angle) * distance * whole * .8, cx + np.cos(angle) * distance * whole,
                          whole * rng.uniform(.24, .36)))
        for y, px, radius in sorted(balls, reverse=True):
            self.cluster(px, y, radius, (cx, cy, whole))

    def bush(self, x, base, radius):
        for _ in range(4):
            self.cluster(x + self.rng.uniform(-.8, .8) * radius, base - self.rng.uniform(.1, .6) * radius,
                         radius * self.rng.uniform(.4, .65), (x, base - radius * .4, radius))

    def ground(self, line, foot):
        """Land between an outline (columns, rows) and the row foot: earth, patches of grass, a crest in the light."""
        rng, (columns, rows) = self.rng, line
        area = int(np.sum(np.maximum(foot - rows, 0)))
        x = rng.uniform(columns[0], columns[-1], area)
        top, bottom = np.interp(x, columns, rows), foot
        down = rng.random_sample(area) * np.maximum(bottom - top, 0)
        order = np.argsort(-down)
        x, y, down = x[order], (top + down)[order], down[order]
        self.dab(x, y + .8, 2.6, 1.6, 0, .12 + 0 * x, LEAVES, 1)
        patch = fractal(x / 22, y / 7, 640, 4)
        light = .34 * bell((x - SUN[0]) / 900) * np.exp(-down / 9) + .5 * np.clip(patch - .34, 0, 1) * \
            np.exp(-down / 70) + .12 + .08 * rng.standard_normal(area)
        self.dab(x, y, rng.uniform(1.1, 2.8, area), .5, rng.uniform(-.5, .3, area), light, LEAVES, .8)
        count = int((columns[-1] - columns[0]) * 2)
        x = rng.uniform(columns[0], columns[-1], count)
        thick = foot - np.interp(x, columns, rows) > 1
        self.dab(x[thick], np.interp(x, columns, rows)[thick] - .4, rng.uniform(.7, 1.8, count)[thick], .28,
                 (np.pi / 2 + rng.uniform(-.5, .5, count))[thick], rng.uniform(.3, .9, count)[thick], LEAVES, .8)


def skyline(points, seed, rough):
    """Columns and rows of a hill's outline through the points, with the bumps of a natural ground."""
    columns = np.arange(points[0][0], points[-1][0], 1.0)
    rows = np.interp(columns, *zip(*points))
    kernel = np.ones(25) / 25
    rows = np.convolve(np.pad(rows, 12, mode="edge"), kernel, mode="valid")
    return columns, rows + rough * (fractal(columns / 30, 0 * columns, seed, 4) - .5)
