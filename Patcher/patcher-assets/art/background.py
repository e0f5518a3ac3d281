"""The hero picture: a citadel in the evening sun, 1650 by 320.

The page covers a band of 200 pixels with it, so that a wide window shows only the rows from about 86 to 215: the
composition stands there. The logo lies at the left, veils darken both sides and the foot.
"""
import random
from math import cos, radians, sin

import citadel
import shore
from svg import document, element, gradient, mix, noise, number, path
from terrain import Range

WIDTH, HEIGHT = 1650, 320
HORIZON = 206
SUN = (742, 148)
CITADEL = (1082, 214)


def air(x):
    """The colour of the air at the horizon: warm under the sun, blue far from it."""
    distance = abs(x - SUN[0]) / 620
    return mix("#ffe2b0", "#a8c3e2", min(1.0, distance ** 1.1))


def sky():
    return element("rect", width=WIDTH, height=HORIZON + 6, fill="url(#sky)") + \
        element("rect", width=WIDTH, height=HORIZON + 6, fill="url(#glow)") + \
        element("rect", width=WIDTH, height=HORIZON, fill="#fff", filter="url(#cirrus)", mask="url(#high)")


def cloud(rng, cx, cy, width, height, count, opacity=1.0):
    """Puffs piled on a flat base, lit from the side of the sun, blue below, warm near the sun."""
    side = 1 if SUN[0] > cx else -1
    puffs = []
    for _ in range(count):
        t = rng.uniform(-1, 1)
        dome = max(0.0, 1 - abs(t) ** 1.8) * (0.5 + 0.95 * noise(t * 2.4 + cx, cy, 3))
        up = rng.random() ** 0.7 * dome
        radius = height * (0.10 + 0.22 * dome * (1 - 0.6 * up)) * rng.uniform(0.6, 1.2)
        puffs.append((up, t, cx + t * width / 2, cy - up * height, radius))
    puffs.sort(key=lambda p: -p[0] + .25 * rng.random())
    body = []
    for up, t, x, y, r in puffs:
        warm = max(0.0, 1 - abs(x - SUN[0]) / 520)
        lit = min(1.0, .30 + .75 * up + .28 * t * side)
        light = mix(mix("#b9cbe8", "#ffffff", lit), mix("#d9b9b4", "#fff0cc", lit), warm)
        dark = mix(mix("#7f9aca", "#c3d3ec", lit), mix("#a79bbd", "#efcfae", lit), warm)
        lx, ly = x + side * r * .34, y - r * .36
        body.append(element("ellipse", cx=number(x), cy=number(y), rx=number(r * 1.22), ry=number(r), fill=dark,
                            opacity=.75))
        body.append(element("ellipse", cx=number(lx), cy=number(ly), rx=number(r * .95), ry=number(r * .72),
                            fill=light, opacity=.8))
    base = element("ellipse", cx=cx, cy=cy + height * .06, rx=width * .5, ry=height * .1, fill="#86a0cf", opacity=.6)
    return element("g", base + "".join(body), opacity=opacity)


def clouds():
    rng = random.Random(11)
    far = [(150, 176, 260, 34, 90), (430, 184, 240, 26, 90), (610, 190, 200, 18, 60), (905, 186, 260, 22, 90),
           (1290, 178, 300, 34, 100), (1560, 184, 220, 30, 80)]
    near = [(330, 122, 430, 92, 330), (1000, 88, 330, 50, 190), (1420, 136, 450, 100, 360), (640, 62, 250, 30, 120),
            (50, 76, 300, 54, 150), (1260, 38, 250, 30, 110)]
    return element("g", "".join(cloud(rng, *c, opacity=.8) for c in far), filter="url(#puffFar)") + \
        element("g", "".join(cloud(rng, *c) for c in near), filter="url(#puff)")


def sun():
    x, y = SUN
    return element("circle", cx=x, cy=y, r=230, fill="url(#bloom)") + \
        element("circle", cx=x, cy=y, r=19, fill="#fff0bf", filter="url(#soft)") + \
        element("circle", cx=x, cy=y, r=12, fill="#fffbe6")


def mountains():
    snow = ("#fff3dc", "#a9bbdf")
    far = Range(21, HORIZON - 2, [(120, 96, 190), (420, 78, 150), (1020, 62, 150), (1330, 104, 170), (1600, 92, 140),
                                  (760, 22, 200)],
                5, .42, air, "#d6b79c", "#6480b8", snow, 44, scale=80)
    mid = Range(63, HORIZON + 1, [(300, 92, 120), (70, 70, 120), (1480, 88, 130), (1640, 74, 90), (1240, 30, 120),
                                  (540, 34, 90)],
                5, .2, air, "#c39f78", "#445f98", snow, 56, scale=70)
    low = Range(95, HORIZON + 3, [(190, 36, 150), (440, 22, 110), (1400, 34, 150), (1610, 40, 120)],
                5, .12, air, "#9aa862", "#36557a", snow, 300, scale=46)
    return painted(far) + mist(HORIZON - 26, 34, .5) + painted(mid) + mist(HORIZON - 14, 24, .55) + painted(low) + \
        mist(HORIZON - 5, 14, .6)


def painted(mountain_range):
    """The facets' straight edges are frayed into strokes."""
    return element("g", mountain_range.draw(), filter="url(#rock)")


def mist(y, height, opacity):
    return element("rect", x=-20, y=y, width=WIDTH + 40, height=height, fill="url(#mist)", opacity=opacity)


def sea():
    rng = random.Random(5)
    parts = [element("rect", y=HORIZON, width=WIDTH, height=HEIGHT - HORIZON, fill="url(#sea)"),
             element("rect", y=HORIZON, width=WIDTH, height=HEIGHT - HORIZON, fill="url(#seaGlow)")]
    streaks = []
    for _ in range(6500):
        t = rng.random() ** 1.7
        y = HORIZON + .6 + t * (HEIGHT - HORIZON)
        x = rng.uniform(0, WIDTH)
        spread = 26 + 230 * t
        gleam = 2.718 ** (-((x - SUN[0]) / spread) ** 2)
        length = (2.2 + 17 * t) * rng.uniform(.5, 1.6)
        thickness = (.25 + .85 * t) * rng.uniform(.5, 1.2)
        if rng.random() < gleam * .9:
            colour, opacity = mix("#ffd58a", "#fffaf0", rng.random()), .35 + .6 * gleam * rng.random()
        elif rng.random() < .55:
            colour, opacity = mix("#123a6b", "#0a2750", rng.random()), .10 + .2 * t
        else:
            colour, opacity = mix("#9cc6ea", "#d9ecfa", rng.random()), .06 + .14 * rng.random()
        streaks.append(element("ellipse", cx=number(x), cy=number(y), rx=number(length), ry=number(thickness),
                               fill=colour, opacity=number(opacity)))
    return "".join(parts) + "".join(streaks)


def shafts():
    rng = random.Random(8)
    x, y = SUN
    beams = []
    for angle in (-64, -49, -37, -22, -9, 7, 19, 33, 47, 62):
        angle += rng.uniform(-3, 3)
        spread = rng.uniform(2, 5)
        ends = [(x + 420 * sin(radians(angle + d)), y - 420 * cos(radians(angle + d))) for d in (-spread, spread)]
        beams.append(element("path", d=path([(x, y)] + ends), fill="url(#shaft)", opacity=number(rng.uniform(.3, .8))))
    return element("g", "".join(beams), filter="url(#veil)", style="mix-blend-mode:screen", opacity=.5)


def puff_filter(name, frequency, reach, blur, region):
    """Frays the outlines of smooth shapes."""
    return element("filter", element("feGaussianBlur", stdDeviation=blur, result="s") +
                   element("feTurbulence", type="fractalNoise", baseFrequency=frequency, numOctaves=5, seed=2,
                           result="n") +
                   element("feDisplacementMap", in_="s", in2="n", scale=reach, xChannelSelector="R",
                           yChannelSelector="G") + element("feGaussianBlur", stdDeviation=blur * .6), id=name, **region)


def city():
    x, y = CITADEL
    island = Range(140, y - 3, [(x, 46, 96), (x - 70, 20, 60), (x + 70, 20, 60), (x + 320, 40, 60)], 4, .08, air,
                   "#c7a983", "#5d6386", ("#ffffff", "#ffffff"), 900, step=2, scale=24)
    town = element("g", citadel.citadel(), id="citadel", transform=f"translate({x} {y}) scale(1.1 1.08)")
    image = element("use", href="#citadel", transform=f"translate(0 {y + y * .62}) scale(1 -.62)")
    reflection = element("g", element("g", image, filter="url(#ripple)", opacity=.5), mask="url(#reflected)")
    # The whole town turns from the evening light at its left to blue shade at its right.
    light = "".join(element("rect", x=x - 190, y=40, width=620, height=190, fill=fill, mask="url(#town)") for fill in (
        "url(#townShade)", "url(#townDepth)"))
    return reflection + island.draw(x - 160, x + 460, 14) + town + light + \
        element("ellipse", cx=x, cy=y + 3, rx=158, ry=1.3, fill="#fff3d6", opacity=.6)


def foreground():
    rng = random.Random(77)
    left = shore.headland(rng, [(-10, 196), (60, 205), (150, 226), (250, 250), (350, 274), (440, 300), (520, 330)],
                          ("#16304f", "#e0b878"), 1, 3, 1500, 20)
    right = shore.headland(rng, [(1290, 330), (1360, 296), (1440, 262), (1520, 232), (1590, 214), (1665, 204)],
                           ("#16304f", "#d9b078"), -1, 5, 1500, 20)
    return left + right


def definitions():
    everywhere = dict(filterUnits="userSpaceOnUse", x=-40, y=-40, width=WIDTH + 80, height=HEIGHT + 80,
                      color_interpolation_filters="sRGB")
    return [
        gradient("sky", [(0, "#1750a8"), (.3, "#2f7fd2"), (.58, "#7bb6ea"), (.82, "#cfe2f2"), (1, "#ffe6bb")],
                 x1=0, y1=0, x2=0, y2=1),
        gradient("glow", [(0, "#fff3c4", 1), (.2, "#ffd98a", .86), (.5, "#ffbf74", .36), (1, "#ffb877", 0)],
                 "radialGradient", gradientUnits="userSpaceOnUse", cx=SUN[0], cy=SUN[1] + 26, r=600,
                 gradientTransform=f"translate(0 {(SUN[1] + 26) * .54}) scale(1 .46)"),
        gradient("bloom", [(0, "#ffffff", .95), (.1, "#fff4d0", .75), (.35, "#ffdf9c", .3), (1, "#ffd080", 0)],
                 "radialGradient"),
        gradient("mist", [(0, "#ffeccb", 0), (.6, "#f4e4d0", .9), (1, "#f4e4d0", 0)], x1=0, y1=0, x2=0, y2=1),
        gradient("sea", [(0, "#bcd3e2"), (.06, "#7fb0d6"), (.3, "#3878b4"), (.65, "#1b4c86"), (1, "#0c2a56")],
                 x1=0, y1=0, x2=0, y2=1),
        gradient("seaGlow", [(0, "#ffe7b0", .95), (.3, "#ffd28a", .5), (1, "#ffd28a", 0)], "radialGradient",
                 gradientUnits="userSpaceOnUse", cx=SUN[0], cy=HORIZON, r=430,
                 gradientTransform=f"translate(0 {HORIZON * .7}) scale(1 .3)"),
        gradient("shaft", [(0, "#fff0c8", .9), (.5, "#ffe6b0", .4), (1, "#ffe6b0", 0)], "radialGradient",
                 gradientUnits="userSpaceOnUse", cx=SUN[0], cy=SUN[1], r=400),
        gradient("highFade", [(0, "#fff"), (.55, "#999"), (1, "#000")], x1=0, y1=0, x2=0, y2=1),
        element("mask", element("rect", width=WIDTH, height=HORIZON, fill="url(#highFade)"), id="high"),
        *citadel.definitions(),
        element("filter", element("feTurbulence", type="fractalNoise", baseFrequency=".0024 .021", numOctaves=5,
                                  seed=4, result="n") +
                element("feColorMatrix", type="matrix",
                        values="0 0 0 0 1  0 0 0 0 .985  0 0 0 0 .95  3.4 1.2 0 0 -2.1"), id="cirrus", **everywhere),
        puff_filter("puff", .028, 30, 1.1, everywhere),
        puff_filter("rock", .055, 9, .5, everywhere),
        gradient("slope", [(0, "#3f6079"), (.22, "#23435f"), (.6, "#10263f"), (1, "#081526")], x1=0, y1=0, x2=0, y2=1),
        puff_filter("puffFar", .06, 12, .8, everywhere),
        element("filter", element("feGaussianBlur", stdDeviation="1.1 .5") +
                element("feTurbulence", type="fractalNoise", baseFrequency=".02 .22", numOctaves=2, seed=6,
                        result="n") +
                element("feDisplacementMap", in_="SourceGraphic", in2="n", scale=9, xChannelSelector="R",
                        yChannelSelector="G") + element("feGaussianBlur", stdDeviation=".8 .4"), id="ripple"),
        element("filter", element("feColorMatrix", type="matrix",
                                  values="0 0 0 0 1  0 0 0 0 1  0 0 0 0 1  0 0 0 1 0"), id="white"),
        element("mask", element("g", element("use", href="#citadel"), filter="url(#white)"), id="town",
                maskUnits="userSpaceOnUse", x=800, y=20, width=760, height=220),
        gradient("townShade", [(0, "#ffc368", .44), (.2, "#ffc868", .2), (.34, "#ffd08a", .08),
                               (.37, "#4a4f96", .03), (.55, "#2c3c84", .36),
                               (.7, "#33488c", .4), (1, "#5c74ac", .3)], gradientUnits="userSpaceOnUse",
                 x1=CITADEL[0] - 150, x2=CITADEL[0] + 400, y1=120, y2=165),
        gradient("townDepth", [(0, "#2c3c84", 0), (.6, "#2c3c84", .03), (.9, "#28366f", .14), (1, "#28366f", .06)],
                 x1=0, y1=0, x2=0, y2=1),
        gradient("curtain", [(0, "#fff0d0", .85), (.5, "#d9c6b8", .2), (1, "#6f77a4", .75)]),
        gradient("sail", [(0, "#fff8e6"), (.55, "#f6e3c4"), (1, "#a9a6bd")]),
        gradient("hull", [(0, "#8a6038"), (.5, "#5b3c26"), (1, "#33252b")]),
        gradient("fade", [(0, "#fff"), (1, "#000")], x1=0, y1=0, x2=0, y2=1),
        element("mask", element("rect", x=800, y=CITADEL[1], width=700, height=74, fill="url(#fade)"), id="reflected",
                maskUnits="userSpaceOnUse", x=800, y=CITADEL[1], width=700, height=74),
        element("filter", element("feGaussianBlur", stdDeviation=6), id="soft", **everywhere),
        element("filter", element("feGaussianBlur", stdDeviation=5), id="veil", **everywhere),
    ]


if __name__ == "__main__":
    print(document(WIDTH, HEIGHT, definitions(), sky(), clouds(), sun(), mountains(), sea(), city(), shafts(),
                   shore.ship(893, 233, 1.0), shore.ship(560, 217, .5), shore.ship(1262, 222, .42, -1),
                   shore.birds(random.Random(3)), foreground()))
