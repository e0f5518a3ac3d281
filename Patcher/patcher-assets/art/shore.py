"""What stands near us: headlands with pines, ships, birds."""
import math

from svg import element, fractal, mix, noise, number, path


def pine(rng, x, y, height, lit_side, tone):
    """A fir: ragged tiers, a rim of light on the side of the sun."""
    dark, light = tone
    left, right = [], []
    tiers = max(5, int(height / 3.2))
    for i in range(tiers):
        t = i / (tiers - 1)
        reach = height * .25 * t ** .85 * rng.uniform(.75, 1.2) + .3
        ty = y - height * (1 - t * .93)
        left += [(x - reach, ty + height * .035), (x - reach * .45, ty + height * .012)]
        right += [(x + reach, ty + height * .035), (x + reach * .45, ty + height * .012)]
    outline = [(x, y - height)] + right + [(x + .8, y), (x - .8, y)] + left[::-1]
    rim = [(x, y - height)] + (right if lit_side > 0 else left) + [(x + .12 * lit_side * height, y - height * .08),
                                                                  (x, y - height * .4)]
    return element("path", d=path(outline), fill=dark) + element("path", d=path(rim), fill=light, opacity=.42)


def headland(rng, points, tone, lit_side, seed, pines, size):
    """points: the skyline from left to right; below it everything is land."""
    skyline = []
    for (x0, y0), (x1, y1) in zip(points, points[1:]):
        steps = max(2, int((x1 - x0) / 5))
        for i in range(steps):
            t = i / steps
            x = x0 + (x1 - x0) * t
            skyline.append((x, y0 + (y1 - y0) * (t * t * (3 - 2 * t)) + 5 * (fractal(x / 17, 0, seed, 4) - .5)))
    skyline.append(points[-1])
    dark, light = tone
    foot = points[-1][0], points[0][0]
    parts = [element("path", d=path(skyline + [(foot[0], 330), (foot[1], 330)]), fill="url(#slope)"),
             element("path", d=path(skyline, False), fill="none", stroke=light, stroke_width=1.2, opacity=.5)]
    trees = []
    for _ in range(pines):
        x, y = rng.choice(skyline)
        down = rng.random() ** 1.3 * 80 - 3
        trees.append((y + down, x + rng.uniform(-5, 5), down))
    # Far trees are small and take the colour of the air, near ones are tall and dark.
    for y, x, down in sorted(trees):
        near = (down + 3) / 80
        grove = noise(x / 34, y / 20, seed + 40)
        if grove < .22:
            continue
        height = size * (.55 + .75 * near) * rng.uniform(.6, 1.2) * (.6 + .6 * grove)
        needles = mix(mix(dark, "#5f7f9a", .42), mix(dark, "#040a16", .6), near * 1.5)
        parts.append(pine(rng, x, y, height, lit_side, (needles, mix(light, dark, near * .8))))
    return "".join(parts)


def ship(x, y, size, flip=1):
    """A three-masted ship under sail; the light comes from its left."""
    sails = ""
    for mast, height, width in ((-10, 22, 9), (0, 28, 11), (10, 20, 8)):
        sails += element("path", d=f"M{mast} -3V{-height - 3}", stroke="#5b4634", stroke_width=.8)
        for row in range(3):
            top = -height + row * height * .3
            low = top + height * .26
            half = width * (.34 + .1 * row)
            sails += element("path", d=f"M{number(mast - half)} {number(top)}H{number(mast + half)}Q"
                             f"{number(mast + half + 2.4)} {number((top + low) / 2)} {number(mast + half)} "
                             f"{number(low)}"
                             f"Q{mast} {number(low - 2)} {number(mast - half)} {number(low)}Q{number(mast - half + 2)} "
                             f"{number((top + low) / 2)} {number(mast - half)} {number(top)}Z", fill="url(#sail)")
        sails += element("path", d=f"M{mast} {-height - 3}q3 -1.2 6 .2q-3 .4 -6 1.6Z", fill="#e0b04c")
    hull = element("path", d="M-19 -5Q-17 3 -13 3H13Q18 1 21 -7L15 -4H-13Z", fill="url(#hull)")
    hull += element("path", d="M-18.5 -3.4L-13 -2.2H15L20 -5", fill="none", stroke="#e2b65a", stroke_width=.7)
    hull += element("path", d="M19 -6L30 -11M30 -11L10 -20M24 -8L0 -28", stroke="#5b4634", stroke_width=.5)
    wake = element("ellipse", cx=-2, cy=3.4, rx=26, ry=1.3, fill="#fff4da", opacity=.6)
    reflection = element("path", d="M-16 4H16L9 18L4 12L-3 22L-8 13Z", fill="#3a4d74", opacity=.35,
                         filter="url(#ripple)")
    return element("g", reflection + wake + hull + sails, transform=f"translate({x} {y}) scale({size * flip} {size})")


def bird(x, y, span, tilt, dip):
    wing = (f"M{number(-span)} {number(-dip)}Q{number(-span * .5)} {number(-span * .55)} 0 0"
            f"Q{number(span * .5)} {number(-span * .6)} {number(span)} {number(-dip * .4)}"
            f"Q{number(span * .5)} {number(-span * .36)} 0 {number(span * .2)}"
            f"Q{number(-span * .5)} {number(-span * .32)} {number(-span)} {number(-dip)}Z")
    return element("path", d=wing, transform=f"translate({number(x)} {number(y)}) rotate({number(tilt)})",
                   fill="#27406f", opacity=.8)


def birds(rng):
    flock = []
    for i in range(9):
        t = i / 8
        flock.append(bird(880 + 84 * t + rng.uniform(-8, 8), 128 - 26 * math.sin(t * 2.4) + rng.uniform(-7, 7),
                          rng.uniform(2.6, 5), rng.uniform(-14, 10), rng.uniform(0, 1.4)))
    return "".join(flock)
