"""The citadel on its island: terraces of houses, curtain walls, the palace with its spires. Light from the left."""
import random

from svg import element, gradient, mix, noise, number, path

LIT, HALF, DARK = "#fff0d2", "#d9c3ae", "#7f86b0"
# The height of the ground in the middle of the island.
HILL = 42
ROOFS = [("#7fa9dc", "#33528f"), ("#6b95cf", "#2c4780"), ("#8fb2dd", "#3d5c97")]
TILES = ("#e0a585", "#8b5a67")


def definitions():
    return [
        gradient("wall", [(0, "#ffe9bf"), (.22, LIT), (.55, HALF), (.8, "#9d97b3"), (1, DARK)]),
        gradient("wallCool", [(0, "#f6dcb8"), (.25, "#d5bfb3"), (.6, "#9f97b6"), (1, "#666fa3")]),
        gradient("wallFar", [(0, "#fbe4c4"), (.3, "#f4e1cb"), (.65, "#c3b6bb"), (1, "#959abd")]),
        gradient("dome", [(0, "#bfe0ff"), (.3, "#7fb4ec"), (.7, "#3a62a8"), (1, "#22407c")]),
        gradient("curtain", [(0, "#fff0d0", .85), (.5, "#d9c6b8", .2), (1, "#6f77a4", .75)]),
        gradient("foot", [(0, "#f2dfc4", 0), (1, "#f0dcc2", .5)], x1=0, y1=0, x2=0, y2=1),
        element("filter", element("feGaussianBlur", stdDeviation="5 3"), id="shadow", x=-.2, y=-.6, width=1.4,
                height=2.2),
    ]


def wall_at(rng, x):
    """The side away from the sun is cooler."""
    return "wallCool" if x + rng.uniform(-50, 50) > 34 else "wall"


def shadow(y, width, height, opacity):
    """A shadow at the foot of what was drawn before, so that the next row is visible. y is a share of the hill."""
    return element("ellipse", cx=8, cy=number(-y * HILL), rx=width, ry=height, fill="#33417c", opacity=opacity,
                   filter="url(#shadow)")


def windows(rng, x, y, width, height):
    spots = []
    for row in range(max(1, int(height / 6))):
        for column in range(max(1, int(width / 4))):
            if rng.random() < .62:
                wx = x - width / 2 + (column + .5) * width / max(1, int(width / 4))
                wy = y - height + 2.6 + row * 6
                colour = "#ffd676" if rng.random() < .42 else "#4d5580"
                spots.append(element("rect", x=number(wx - .5), y=number(wy), width=1, height=2, fill=colour,
                                     opacity=.85))
    return "".join(spots)


def house(rng, x, y, width, height):
    """A gabled house, its ridge along the picture or its gable towards us."""
    left, right, top = x - width / 2, x + width / 2, y - height
    lit, dark = rng.choice(ROOFS + [TILES])
    parts = [element("rect", x=number(left), y=number(top), width=number(width), height=number(height),
                     fill=f"url(#{wall_at(rng, x)})"), windows(rng, x, y, width, height)]
    rise = width * rng.uniform(.34, .55)
    if rng.random() < .5:
        parts.append(element("path", d=path([(left - .8, top), (x, top - rise * 1.3), (x, top)]), fill=lit))
        parts.append(element("path", d=path([(right + .8, top), (x, top - rise * 1.3), (x, top)]), fill=dark))
    else:
        parts.append(element("path", d=path([(left - .8, top), (left + 1.2, top - rise), (right - 1.2, top - rise),
                                             (right + .8, top)]), fill=mix(lit, dark, .35)))
        parts.append(element("path", d=path([(left - .8, top), (left + 1.2, top - rise), (x - 1, top - rise),
                                             (x - 1, top)]), fill=lit, opacity=.7))
    return "".join(parts)


def tower(rng, x, y, width, height, roof=None, flag=False, wall=None):
    """A round tower; roof is the height of its cone; without one it has battlements."""
    left, top, wall = x - width / 2, y - height, wall or wall_at(rng, x)
    parts = [element("rect", x=number(left), y=number(top), width=number(width), height=number(height),
                     fill=f"url(#{wall})"),
             element("rect", x=number(left - .9), y=number(top), width=number(width + 1.8), height=2.4,
                     fill=f"url(#{wall})"),
             element("rect", x=number(left), y=number(top + 2.4), width=number(width), height=1.1, fill="#5f6690",
                     opacity=.45),
             windows(rng, x, y - 2, width, height - 4)]
    if roof:
        lit, dark = rng.choice(ROOFS)
        flare = width / 2 + 1.4
        tip = top - roof
        parts.append(element("path", d=f"M{number(x - flare)} {number(top)}Q{number(x - width * .16)} "
                             f"{number(top - roof * .42)} {number(x)} {number(tip)}L{number(x + .8)} {number(top)}Z",
                             fill=lit))
        parts.append(element("path", d=f"M{number(x + flare)} {number(top)}Q{number(x + width * .16)} "
                             f"{number(top - roof * .42)} {number(x)} {number(tip)}L{number(x - width * .12)} "
                             f"{number(top)}Z", fill=dark))
        parts.append(element("path", d=path([(x - .5, tip + 2), (x, tip - 4.5), (x + .5, tip + 2)]), fill="#f6d27a"))
        top = tip - 4
    else:
        count = max(3, int(width / 2.4))
        for i in range(count):
            bx = left - .6 + i * (width + 1.2) / count
            parts.append(element("rect", x=number(bx), y=number(top - 1.8), width=number(width / count * .6),
                                 height=2, fill=LIT if i < count / 2 else DARK))
    if flag:
        parts.append(element("path", d=f"M{number(x)} {number(top)}v-5", stroke="#6a5330", stroke_width=.6))
        parts.append(element("path", d=f"M{number(x)} {number(top - 5)}q4 -1.6 8 .4q-3 .8 -2 2.2q-3 -.6 -6 .8Z",
                             fill="#e8b64a"))
    return "".join(parts)


def curtain(rng, left, right, y, height, profile, towers):
    """A wall with battlements that follows the hill; profile gives the rise at x."""
    top = [(x, y - profile(x) - height) for x in range(left, right + 1, 4)]
    foot = [(x, y - profile(x) * .55 + 5) for x in range(right, left - 1, -4)]
    parts = [element("path", d=path(top + foot), fill="#cdb9aa"),
             element("path", d=path(top + foot), fill="url(#curtain)")]
    for x, ty in top:
        parts.append(element("rect", x=x - 1, y=number(ty - 1.8), width=2.1, height=2.2, fill="#ecd9c0"))
    parts.append(element("path", d=path(top, False), fill="none", stroke="#fff3d8", stroke_width=.8))
    for x in towers:
        parts.append(tower(rng, x, y - profile(x) * .6 + 5, 10, height + profile(x) * .4 + 11, roof=None))
    return "".join(parts)


def hill(x):
    """The height of the ground above the water, x from the middle of the island."""
    t = abs(x) / 142
    return HILL * max(0.0, 1 - t ** 1.35) + 5 * (noise(x / 17, 0, 4) - .5)


def trees(rng, x, y, count):
    parts = []
    for _ in range(count):
        tx, ty, r = x + rng.uniform(-7, 7), y + rng.uniform(-2, 2), rng.uniform(1.6, 3)
        parts.append(element("ellipse", cx=number(tx), cy=number(ty), rx=number(r), ry=number(r * 1.25),
                             fill="#31543f"))
        parts.append(element("ellipse", cx=number(tx - r * .3), cy=number(ty - r * .4), rx=number(r * .55),
                             ry=number(r * .7), fill="#8fae63"))
    return "".join(parts)


def terrace(rng, share, left, right, size):
    """One row of houses at a share of the hill's height."""
    parts, x = [], left
    while x < right:
        width = rng.uniform(7, 11.5) * size
        y = -hill(x) * share + rng.uniform(-1.5, 1.5)
        kind = rng.random()
        if kind < .16:
            parts.append(tower(rng, x, y + 4, width * .62, rng.uniform(18, 28) * size, roof=rng.uniform(11, 16) * size))
        elif kind < .27:
            parts.append(trees(rng, x, y + 1, 5))
        else:
            parts.append(house(rng, x, y + 5, width, rng.uniform(9, 15) * size))
        x += width * rng.uniform(.62, .95)
    return "".join(parts)


def palace(rng):
    y = -HILL * .83
    parts = []
    for x, width, height, roof in [(-46, 8, 26, 16), (46, 8, 24, 16), (-33, 9, 36, 20), (35, 9, 33, 19)]:
        parts.append(tower(rng, x, y + 6, width, height, roof, wall="wallFar"))
    parts.append(tower(rng, -13, y, 9, 58, 24, wall="wallFar"))
    parts.append(tower(rng, 17, y, 9, 52, 22, wall="wallFar"))
    parts.append(tower(rng, 3, y, 15, 52, None))
    parts.append(tower(rng, 3, y - 50, 10, 12, 27, flag=True))
    # The great hall with its dome.
    parts.append(element("rect", x=-27, y=y - 20, width=57, height=28, fill="url(#wall)"))
    parts.append(element("path", d=f"M-27 {y - 20}L-23 {y - 28}H26L30 {y - 20}Z", fill="#5c86c2"))
    parts.append(element("path", d=f"M-27 {y - 20}L-23 {y - 28}H-2L-4 {y - 20}Z", fill="#8db7e6"))
    for i in range(7):
        wx = -22 + i * 8
        parts.append(element("path", d=f"M{wx} {y - 4}v-8q1.6 -4 3.2 0v8Z", fill="#ffd98a" if i in (1, 2, 4) else
                             "#555d8a", opacity=.9))
    parts.append(element("path", d=f"M-24 {y - 12}v-7h14v7Z", fill="url(#wall)"))
    parts.append(element("path", d=f"M-25 {y - 19}q0 -11 8 -13q8 2 8 13Z", fill="url(#dome)"))
    parts.append(element("path", d=f"M-17 {y - 31}v-6", stroke="#f6d27a", stroke_width=1))
    for x in (-29, 31):
        parts.append(tower(rng, x, y + 10, 8, 34, 15))
    return "".join(parts)


def bridge():
    """Arches from the island to the right mainland."""
    left, right, top, water = 120, 330, -13, 2
    parts = [element("path", d=path([(left, top), (right, top - 3), (right, top + 2), (left, top + 5)]),
                     fill="#d9c6b4")]
    span = 15
    for i in range(int((right - left) / span)):
        x = left + i * span
        deck = top - 3 * i * span / (right - left)
        parts.append(element("path", fill="#b6a6a8", fill_rule="evenodd",
                             d=f"M{x} {number(deck + 3)}h{span}V{water}h-{span}ZM{x + 3} {water}V{number(deck + 11)}"
                             f"q{(span - 3) / 2} -11 {span - 3} 0V{water}Z"))
        parts.append(element("rect", x=x, y=number(deck + 4), width=3, height=number(water - deck - 4), fill="#efdcc0"))
    parts.append(element("path", d=f"M{left} {top}L{right} {top - 3}", stroke="#fff2d8", stroke_width=1))
    return "".join(parts)


def rocks(rng, low=0):
    """Boulders between the wall and the water: a lit and a shaded facet each."""
    parts = []
    for i in range(64):
        x = -140 + 280 * i / 63 + rng.uniform(-4, 4)
        if low and abs(x) < 17:
            continue
        size = rng.uniform(3, 8) * (1.15 - .45 * abs(x) / 140)
        height = size * rng.uniform(.6, 1.5) + (0 if low else 5 * max(0, 1 - (abs(x) / 138) ** 2))
        tip, base = x + rng.uniform(-1.5, 1.5), 3
        height = height * (.55 if low else 1)
        lit = [(x - size, base), (tip - size * .4, base - height * .8), (tip, base - height), (x + size * .2, base)]
        shaded = [(x + size, base), (tip + size * .5, base - height * .7), (tip, base - height), (x - size * .1, base)]
        parts.append(element("path", d=path(lit), fill=mix("#e3c7a0", "#a98f80", rng.random())))
        parts.append(element("path", d=path(shaded), fill=mix("#6d6a8c", "#4b5280", rng.random())))
    return "".join(parts)


def citadel():
    """The middle of its foot on the water is the origin."""
    rng = random.Random(31)
    def low(x):
        return 2 + 6 * max(0.0, 1 - (abs(x) / 128) ** 2)

    parts = [bridge(), terrace(rng, 1.0, -62, 66, .8), palace(rng), shadow(.77, 40, 7, .5),
             terrace(rng, .86, -84, 88, .9), shadow(.63, 58, 7, .42),
             curtain(rng, -84, 84, 0, 9, lambda x: hill(x) * .66, (-82, -44, 0, 42, 80)), shadow(.45, 76, 7, .45),
             terrace(rng, .52, -106, 110, 1), shadow(.33, 92, 5, .4), terrace(rng, .36, -112, 116, 1.05),
             shadow(.25, 112, 4, .35),
             terrace(rng, .24, -114, 116, 1.0), shadow(.15, 112, 4, .4), rocks(rng),
             curtain(rng, -120, 120, -2, 8, low, (-118, -84, -48, 48, 84, 118)), rocks(rng, 8)]
    # The gate and its two towers.
    for x in (-13, 13):
        parts.append(tower(rng, x, 2, 11, 26, 12))
    parts.append(element("rect", x=-9, y=-20, width=18, height=22, fill="#d8c4b0"))
    parts.append(element("path", d="M-5 2v-9q5 -8 10 0v9Z", fill="#3c3a5c"))
    parts.append(element("rect", x=-150, y=-12, width=300, height=14, fill="url(#foot)"))
    return "".join(parts)
