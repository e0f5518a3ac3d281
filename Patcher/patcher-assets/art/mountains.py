"""Mountains: height fields seen from the sea, with the light of the evening sun from the middle of the picture."""
import numpy as np

from raster import HEIGHT, TIMES, WIDTH, X, Y, bell, fractal, mix, noise, ramp, smooth
from sky import HORIZON, SUN

ROWS = 220


class Range:
    """One range. peaks: (x, height, half width); base: the row of its crest line's foot, front: that of its own foot.
    haze: how much of the air's colour it takes, 0..1; snow_line: the height where snow begins."""

    def __init__(self, seed, base, front, peaks, haze, snow_line, scale, wooded=0.0):
        self.seed, self.base, self.front, self.peaks = seed, base, front, peaks
        self.haze, self.snow_line, self.scale, self.wooded = haze, snow_line, scale, wooded
        self.row = np.linspace(0, 1, ROWS)[:, None]

    def heights(self):
        """The height above the range's foot, for ROWS rows from back to front and each column."""
        envelope = sum(height * bell((X - x) / width) for x, height, width in self.peaks)
        u, v = X / self.scale, self.row * 1.9
        bend = .5 * (fractal(u * 1.3, v * 1.3, self.seed + 50, 3) - .5)
        crest = fractal(u + bend, v + bend, self.seed, 7, .47, ridged=True)
        fall = np.sin(np.pi * np.minimum(1, .36 + self.row * .64)) ** .9
        return envelope * fall * (.2 + 1.15 * crest)

    def light(self, height, slopes):
        """The share of the sun's light, 0..1, with the shadows of the ridges."""
        dx, dz = slopes
        side = np.tanh((SUN[0] - X) / 120)
        facing = (-dx * side * .8 + dz * .16 + .42) / np.sqrt(dx * dx + dz * dz + 1)
        ray = .62
        from_left = np.maximum.accumulate(height + X * ray, axis=1) - X * ray
        from_right = np.maximum.accumulate((height - X * ray)[:, ::-1], axis=1)[:, ::-1] + X * ray
        shadow = np.where(X > SUN[0], from_left, from_right) - height
        return np.clip(facing * 1.25, 0, 1) * (1 - .8 * smooth(0, 5, shadow))

    def colours(self):
        height = self.heights()
        dx = np.gradient(height, 1 / TIMES, axis=1)
        dz = np.gradient(height, 1.9 * self.scale / ROWS, axis=0)
        light = self.light(height, (dx, dz))
        rough = fractal(X / 11, self.row * 1.9 * self.scale / 7, self.seed + 70, 4) - .5
        flat = 1 / np.sqrt(dx * dx + dz * dz + 1)
        snow = smooth(-3, 9, height + 30 * rough - self.snow_line) * smooth(.34, .62, flat + .25 * rough)
        wood = self.wooded * smooth(34, 14, height + 22 * rough) * smooth(.3, .6, flat)
        tone = np.clip(light + .35 * rough, 0, 1)
        rock = ramp([(0, "#34487f"), (.35, "#5d659a"), (.65, "#b98d82"), (1, "#f2be86")], tone)
        white = ramp([(0, "#7590cb"), (.35, "#a3b4dd"), (.65, "#f3d7c6"), (1, "#fff0d3")], tone)
        leaves = ramp([(0, "#1f3d60"), (.4, "#34595c"), (.7, "#76805a"), (1, "#d6b26c")],
                      np.clip(tone + .3 * (noise(X / 2.2, height / 1.6, self.seed + 90) - .5), 0, 1))
        colour = mix(mix(rock, leaves, wood), white, snow)
        low = smooth(70, 0, height) ** 1.5
        haze = np.minimum(1, self.haze + (1 - self.haze) * .62 * low * (1 - .5 * self.wooded))
        return height, mix(colour, air(), np.broadcast_to(haze, height.shape))

    def layer(self):
        """Painted from the back to the front; each row hides what is behind it."""
        height, colour = self.colours()
        tops = self.base + (self.front - self.base) * self.row - height
        nearest = np.full((HEIGHT * TIMES, WIDTH * TIMES), -1)
        cover = np.zeros(nearest.shape)
        window = slice(int(min(tops.min(), HEIGHT)) * TIMES, int(self.front + 1) * TIMES)
        for row in range(ROWS):
            hidden = np.clip((Y[window] - tops[row]) * TIMES + .5, 0, 1)
            np.copyto(nearest[window], row, where=hidden > .5)
            np.maximum(cover[window], hidden, out=cover[window])
        cover *= smooth(self.front + .5, self.front - .5, Y)
        seen = colour[np.maximum(nearest, 0), np.arange(WIDTH * TIMES)]
        return np.concatenate([seen, cover[..., None]], axis=-1)


def air():
    """The colour of the air at the horizon in each column: gold at the sun, blue far from it."""
    return ramp([(0, "#ffc987"), (.45, "#e9bfa2"), (1, "#9fb0d8"), (2, "#8ba3d2")], np.abs(X[0] - SUN[0]) / 520)


def ranges():
    """From the farthest to the nearest."""
    yield Range(21, HORIZON - 3, HORIZON, [(90, 70, 150), (330, 44, 120), (540, 22, 110), (930, 18, 120),
                                           (1180, 44, 130), (1420, 66, 140), (1640, 70, 120)], .52, 30, 120)
    yield Range(63, HORIZON - 3, HORIZON + 1, [(215, 84, 100), (40, 60, 90), (400, 36, 90), (1330, 52, 90),
                                               (1525, 84, 90), (1660, 70, 90)], .24, 40, 95)
    yield Range(95, HORIZON - 2, HORIZON + 3, [(120, 30, 130), (360, 26, 110), (520, 12, 90), (1270, 18, 90),
                                               (1420, 32, 110), (1600, 38, 110)], .22, 200, 60, wooded=1.0)
