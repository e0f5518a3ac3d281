"""Ships under sail and birds. The sun is behind them and to their left: it shines through the canvas."""
import math

from svg import element, gradient, number

# Mast, its height, half the width of its lowest sail.
MASTS = ((-14, 31, 6.5), (0, 43, 9), (13, 36, 7.5))


def definitions():
    return [
        gradient("sail", [(0, "#fff3cf"), (.35, "#ffdfa6"), (.7, "#cfa596"), (1, "#8b7a97")]),
        gradient("jib", [(0, "#ffe6b4"), (1, "#a98b98")]),
        gradient("hull", [(0, "#8a5a34"), (.45, "#5a3724"), (1, "#2a1c22")], x1=0, y1=0, x2=0, y2=1),
        gradient("hullShade", [(0, "#ffb765", .5), (.25, "#ffb765", .05), (1, "#141c3c", .45)]),
    ]


def square_sail(x, top, bottom, half, half_below):
    """Filled by a wind from the left; its foot hangs in an arc."""
    bulge = (bottom - top) * .3
    middle = (top + bottom) / 2
    cloth = (f"M{number(x - half)} {number(top)}H{number(x + half)}"
             f"Q{number(x + half_below + bulge)} {number(middle)} {number(x + half_below)} {number(bottom)}"
             f"Q{number(x + bulge * .5)} {number(bottom - bulge * .8)} {number(x - half_below)} {number(bottom)}"
             f"Q{number(x - half + bulge * .9)} {number(middle)} {number(x - half)} {number(top)}Z")
    seams = "".join(f"M{number(x + half * s)} {number(top)}Q{number(x + half_below * s + bulge * .8)} {number(middle)} "
                    f"{number(x + half_below * s)} {number(bottom - 1)}" for s in (-.45, .05, .55))
    return element("path", d=cloth, fill="url(#sail)") + \
        element("path", d=seams, fill="none", stroke="#8a6a66", stroke_width=.3, opacity=.5) + \
        element("path", d=f"M{number(x - half - 1)} {number(top)}H{number(x + half + 1)}", stroke="#4a3028",
                stroke_width=.8)


def mast(x, height, half):
    """Three sails one above the other, a pennant at the top."""
    parts = [element("path", d=f"M{x} -6V{-height - 3}", stroke="#4a3028", stroke_width=.9)]
    bottom, width = -10.5, half
    for share in (.36, .3, .2):
        top = bottom - share * (height - 8)
        parts.append(square_sail(x, top, bottom, width * .84, width))
        bottom, width = top - .8, width * .8
    parts.append(element("path", d=f"M{x} {-height - 3}q4 -1.8 7.500 .3q-3.500 .3 -7.500 2Z", fill="#d8483a"))
    return "".join(parts)


def hull():
    side = ("M-27 -9.500L-26.500 -15L-19.500 -13.500L-18.500 -9Q-2 -5.500 13 -8.200L22.500 -12"
            "Q20 -3.500 14.500 .6H-19Q-25 -2.500 -27 -9.500Z")
    parts = [element("path", d=side, fill="url(#hull)"), element("path", d=side, fill="url(#hullShade)"),
             element("path", d="M-26.800 -8.200Q-4 -3.500 14 -6L21.500 -9.500", fill="none", stroke="#e8b860",
                     stroke_width=.8),
             element("path", d="M-25.500 -5.500Q-4 -1.300 14.500 -3.600L19.500 -6", fill="none", stroke="#b98545",
                     stroke_width=.5, opacity=.8),
             element("path", d="M-26.800 -15.200L-19.500 -13.700", fill="none", stroke="#f2cd7c", stroke_width=.9)]
    for i in range(7):
        x = -14 + i * 4
        parts.append(element("rect", x=x, y=number(-4.600 + .1 * abs(i - 3)), width=1.3, height=1.3, fill="#1a1016"))
    parts += [element("rect", x=number(-25 + i * 2), y=-12, width=1.1, height=1.8, fill="#ffd66e") for i in range(3)]
    return "".join(parts)


def rigging():
    lines = "M21 -11.500L35 -19M35 -19L13 -38M29 -16L13 -29M35 -19L0 -45M-26 -14L-14 -33M0 -45L-14 -33"
    jibs = (element("path", d="M34 -18.600Q24 -22 14.500 -36Q18 -24 24 -14.500Z", fill="url(#jib)") +
            element("path", d="M29 -16Q22 -18 15 -27.500Q16.500 -19 20 -12.500Z", fill="url(#jib)") +
            element("path", d="M-15 -27L-28.500 -17Q-21 -14.500 -15 -12Z", fill="url(#jib)"))
    return element("path", d=lines, fill="none", stroke="#4a3028", stroke_width=.35, opacity=.8) + \
        element("path", d="M20 -11L35 -19", stroke="#4a3028", stroke_width=1) + jibs


def ship(x, y, size, flip=1):
    """A three-masted ship, 60 wide and 48 high; x, y: the middle of its waterline."""
    body = rigging() + "".join(mast(*m) for m in MASTS) + hull()
    return element("g", body, transform=f"translate({x} {y}) scale({number(size * flip)} {size})")


def wake(x, y, size):
    return element("ellipse", cx=x, cy=number(y + .8 * size), rx=number(27 * size), ry=number(.9 * size),
                   fill="#fff0cf", opacity=.55)


def bird(x, y, span, tilt, dip):
    wing = (f"M{number(-span)} {number(-dip)}Q{number(-span * .5)} {number(-span * .55)} 0 0"
            f"Q{number(span * .5)} {number(-span * .6)} {number(span)} {number(-dip * .4)}"
            f"Q{number(span * .5)} {number(-span * .36)} 0 {number(span * .2)}"
            f"Q{number(-span * .5)} {number(-span * .32)} {number(-span)} {number(-dip)}Z")
    return element("path", d=wing, transform=f"translate({number(x)} {number(y)}) rotate({number(tilt)})",
                   fill="#2a3560", opacity=.8)


def birds(rng):
    flock = []
    for i in range(9):
        t = i / 8
        flock.append(bird(836 + 80 * t + rng.uniform(-8, 8), 124 - 18 * math.sin(t * 2.4) + rng.uniform(-6, 6),
                          rng.uniform(2.2, 4), rng.uniform(-14, 10), rng.uniform(0, 1.4)))
    return "".join(flock)
