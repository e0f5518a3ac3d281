"""The evening sky: from night blue above to gold at the horizon, cirrus, cumulus clouds, the sun."""
import numpy as np

from raster import HEIGHT, TIMES, WIDTH, X, Y, bell, blur, fractal, layer, mix, noise, over, ramp, sampled, shone, \
    smooth

HORIZON = 180
SUN = (722, 146)
NIGHT = [(0, "#0d2760"), (50, "#1a4791"), (95, "#3a74bd"), (130, "#7d9fd0"), (158, "#c3b3cb"), (180, "#e3bfae")]
EVENING = [(0, "#12326f"), (45, "#255fa8"), (85, "#6f97cd"), (115, "#c0abb9"), (145, "#f6b98a"), (180, "#ffae66")]


def towards_sun(reach):
    """1 under and above the sun, 0 far from it."""
    return bell((X - SUN[0]) / reach)


def ground():
    """The sky without clouds."""
    height = np.broadcast_to(Y, (HEIGHT * TIMES, WIDTH * TIMES))
    night, evening = ramp(NIGHT, height), ramp(EVENING, height)
    sky = mix(night, evening, np.broadcast_to(towards_sun(430), height.shape))
    distance = np.hypot((X - SUN[0]) / 1.5, Y - SUN[1])
    glow = .3 / (1 + (distance / 40) ** 2) + .16 / (1 + (distance / 130) ** 2)
    return shone(sky, glow, "#ffb592")


def cirrus():
    """High thin clouds, closer together towards the horizon and lit from below by the sun."""
    depth = 60 / (HORIZON + 26 - np.minimum(Y, HORIZON))
    u, v = (X - SUN[0]) / 80 * depth, depth * 9
    bend = fractal(u * .3, v * .4, 301, 3)
    body = fractal(u * .5 + 2.6 * bend, v * 1.3 + 3.4 * bend, 311, 7, .58)
    thin = fractal(u * 2.2 + 3 * bend, v * 5, 331, 4)
    cover = smooth(.42, .74, body + .3 * (thin - .5)) * smooth(HORIZON - 8, 118, Y) * smooth(-30, 24, Y)
    cover = cover * (.45 + .55 * bell((X - SUN[0]) / 620))
    warm = np.broadcast_to(towards_sun(560), cover.shape)
    # Thin parts are bright, thick parts are in shade.
    thick = smooth(.5, .74, body)
    lit = mix(mix("#a9c0ea", "#ffd2a4", warm), mix("#6d86c2", "#c08fa4", warm), thick)
    return layer(lit, cover * .78)


# Cumulus clouds: middle, base, width, height, seed.
HEAPS_FAR = [(200, 168, 330, 34, 3), (450, 171, 190, 20, 4), (905, 172, 220, 18, 5), (1190, 170, 300, 30, 6),
             (1520, 166, 320, 36, 7)]
HEAPS_NEAR = [(50, 154, 430, 96, 11), (318, 148, 300, 62, 12), (1350, 154, 350, 70, 13), (1620, 148, 340, 96, 14)]


class Heap:
    """A cumulus cloud: balls on a flat base, painted in the part of the picture that contains it."""

    def __init__(self, middle, base, width, height, seed):
        self.middle, self.base, self.width, self.height, self.seed = middle, base, width, height, seed
        left, right = middle - width * .5 - height * .5 - 12, middle + width * .5 + height * .5 + 12
        self.columns = slice(*(int(np.clip(x, 0, WIDTH)) * TIMES for x in (left, right)))
        self.rows = slice(max(0, int(base - height * 1.6)) * TIMES, int(base + 12) * TIMES)
        self.x, self.y = X[:, self.columns], Y[self.rows]

    def balls(self):
        """Their x, y, z and radius; small ones sit on the rims of large ones."""
        rng, height = np.random.RandomState(self.seed), self.height
        balls = []
        for _ in range(int(14 + self.width / 14)):
            t = rng.uniform(-1, 1)
            dome = max(.1, 1 - abs(t) ** 1.7) * rng.uniform(.55, 1.15)
            balls.append((self.middle + t * self.width / 2, self.base - rng.uniform(.1, .8) * height * dome,
                          rng.uniform(-.3, .3) * height, height * (.16 + .2 * dome)))
        newest = balls
        for share in (.54, .5):
            newest = [(x + radius * np.cos(angle) * .85, y - radius * abs(np.sin(angle)) * .8 + radius * .12,
                       z + radius * rng.uniform(.1, .5), radius * share * rng.uniform(.6, 1.15))
                      for x, y, z, radius in newest for angle in rng.uniform(-np.pi, np.pi, 4)]
            balls = balls + newest
        return balls

    def relief(self):
        """How far the surface comes towards us at each pixel, -1e3 where there is none."""
        surface = np.full((self.y.size, self.x.size), -1e3)
        for x, y, z, radius in self.balls():
            columns = slice(*np.searchsorted(self.x[0], (x - radius, x + radius)))
            rows = slice(*np.searchsorted(self.y[:, 0], (y - radius, y + radius)))
            rise = radius * radius - (self.x[:, columns] - x) ** 2 - (self.y[rows] - y) ** 2
            patch = surface[rows, columns]
            np.maximum(patch, np.where(rise > 0, z + np.sqrt(np.maximum(rise, 0)), -1e3), out=patch)
        return surface

    def light(self, fine, broad):
        """How much light of the sun each pixel gets, 0..1; fine and broad: the surface, smoothed."""
        side = np.tanh((SUN[0] - self.x) / 160)
        light = 0
        for form, weight in ((fine, .3), (broad, 1.1)):
            dy, dx = np.gradient(form, 1 / TIMES)
            light = light + weight * (-dx * side * .7 - dy * -.55 + .3) / np.sqrt(dx * dx + dy * dy + 1.1)
        crevice = np.clip((broad - fine) / self.height * 2.2, 0, 1)
        low = smooth(self.base - self.height * .7, self.base, self.y)
        return np.clip(.24 + .66 * light - .45 * crevice - .34 * low, 0, 1)

    def painted(self, haze):
        """The layer of the window; haze makes the cloud paler."""
        surface = self.relief()
        # Frayed edges: each pixel comes from a place near it.
        shakes = [fractal(self.x / 15, self.y / 15, self.seed + seed, 5) - .5 for seed in (400, 420)]
        place = [axis - axis.flat[0] + shake * 11 for axis, shake in zip((self.x, self.y), shakes)]
        solid = np.maximum(surface, -self.height * .4)
        fine, broad = (sampled(blur(solid, radius), *place) for radius in (1.9, 7))
        value = self.light(fine, broad)
        warm = np.broadcast_to(bell((self.x - SUN[0]) / 520), value.shape)
        cold = ramp([(0, "#4a5f9f"), (.3, "#7f92c8"), (.55, "#b9c2df"), (.78, "#f0d9cd"), (1, "#fff1d8")], value)
        hot = ramp([(0, "#7f78ae"), (.3, "#b394b4"), (.55, "#eab89c"), (.78, "#ffd699"), (1, "#fff0c4")], value)
        colour = mix(mix(cold, hot, warm), mix("#a3b1d6", "#ffd3a0", warm), haze)
        cover = blur(sampled((surface > -1e2) * 1.0, *place), 1.2)
        foot = smooth(self.base + 4, self.base - self.height * .3,
                      self.y + 8 * (noise(self.x / 30, self.y / 8, self.seed + 440) - .5))
        return np.concatenate([colour, (cover * foot * (1 - haze * .4))[..., None]], axis=-1)


def sun(picture):
    x, y = SUN
    distance = np.hypot(X - x, Y - y)
    angle = np.arctan2(Y - y, X - x)
    rays = fractal(angle * 5 + 40, distance / 500, 71, 4) * smooth(14, 70, distance)
    light = .5 * bell(distance / 24) + .16 * bell(distance / 70) + .5 * (rays - .38).clip(0) * bell(distance / 230)
    picture = shone(picture, light, "#ffd0a8")
    return over(picture, layer("#fffbe8", smooth(11.8, 10.4, distance)))


def sky():
    picture = over(ground(), cirrus())
    for heaps, haze in ((HEAPS_FAR, .45), (HEAPS_NEAR, .1)):
        for heap in (Heap(*heap) for heap in heaps):
            window = picture[heap.rows, heap.columns]
            window[:] = over(window, heap.painted(haze))
    return sun(picture)
