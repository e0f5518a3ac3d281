"""Mountains as a lit height field: small quads, far rows first."""
import math

from svg import element, fractal, mix, noise, path

# Towards the light: from the left, above, a little from the front.
LIGHT = (-0.74, 0.56, 0.36)


class Range:
    """One mountain range. peaks: (x, height in pixels, half width); haze: how much of the air's colour it takes."""

    def __init__(self, seed, base, peaks, depth, haze, air, rock, shade, snow, snow_line, step=3.0, scale=90.0):
        self.seed, self.base, self.peaks, self.depth = seed, base, peaks, depth
        self.haze, self.air = haze, air
        self.rock, self.shade, self.snow, self.snow_line = rock, shade, snow, snow_line
        self.step, self.scale = step, scale

    def height(self, x, row):
        """row: 0 at the back of the range, 1 at its foot."""
        envelope = max((h * math.exp(-((x - px) / w) ** 2) for px, h, w in self.peaks), default=0)
        z = row * 1.5
        warp = 0.35 * (noise(x / 50, row * 5, self.seed + 50) - 0.5)
        crest = fractal(x / self.scale + warp, z + warp, self.seed, 5, ridged=True)
        fall = math.sin(math.pi * min(1.0, 0.34 + row * 0.66)) ** 0.8
        return envelope * fall * (0.34 + 0.95 * crest)

    def colour(self, x, height, normal):
        light = max(0.0, sum(n * l for n, l in zip(normal, LIGHT)))
        jag = 22 * (fractal(x / 14, height / 14, self.seed + 9, 3) - 0.5)
        snow = max(0.0, min(1.0, (height + jag - self.snow_line) / 12)) * min(1.0, max(0.0, normal[1] * 3.2 - 0.55))
        lit = mix(self.rock, self.snow[0], snow)
        dark = mix(self.shade, self.snow[1], snow)
        colour = mix(dark, lit, (light - 0.16) * 1.9)
        low = max(0.0, 1 - height / 60) ** 1.4
        return mix(colour, self.air(x), min(1.0, self.haze + (1 - self.haze) * 0.72 * low))

    def draw(self, left=-10, right=1660, rows=34):
        columns = int((right - left) / self.step) + 2
        xs = [left + i * self.step for i in range(columns)]
        heights = [[self.height(x, r / (rows - 1)) for x in xs] for r in range(rows)]
        row_depth = 1.5 * self.scale / rows
        quads = []
        for r in range(rows - 1):
            y0 = self.base + self.depth * (r / (rows - 1))
            y1 = self.base + self.depth * ((r + 1) / (rows - 1))
            for i in range(columns - 1):
                a, b = heights[r][i], heights[r][i + 1]
                c, d = heights[r + 1][i], heights[r + 1][i + 1]
                # The slope over a wider stretch than one quad: facets, not columns.
                west, east = max(0, i - 2), min(columns - 1, i + 3)
                north, south = max(0, r - 1), min(rows - 1, r + 2)
                dx = (heights[r][east] - heights[r][west] + heights[r + 1][east] - heights[r + 1][west]) / 2 / \
                    (self.step * (east - west))
                dz = (heights[south][i] - heights[north][i]) / (row_depth * (south - north))
                length = math.sqrt(dx * dx + dz * dz + 1)
                colour = self.colour(xs[i], (a + b + c + d) / 4, (-dx / length, 1 / length, -dz / length))
                quads.append(element("path", d=path([
                    (xs[i], y0 - a), (xs[i + 1], y0 - b), (xs[i + 1], y1 - d), (xs[i], y1 - c)]),
                    fill=colour, stroke=colour))
        return f'<g stroke-width=".7" stroke-linejoin="round">{"".join(quads)}</g>'
