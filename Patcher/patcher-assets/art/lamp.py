"""The server lamps: a cut gem that glows in a gold setting, 64 by 64, shown at 17. The argument names the stone."""
import sys
from math import cos, pi, sin

from svg import document, element, gradient, mix, path

# Glow, light, body, depth.
STONES = {
    "green": ("#d9ffe9", "#6cf0a6", "#22a45a", "#06452a"),
    "red": ("#ffe3dc", "#ff7d6b", "#d6261f", "#560910"),
    "amber": ("#fff6cf", "#ffcf5c", "#ee8f0c", "#6b3605"),
}
LIGHT = -0.75 * pi


def ring(radius, count, turn=0.0):
    return [(32 + radius * cos(2 * pi * i / count + turn), 32 + radius * sin(2 * pi * i / count + turn))
            for i in range(count)]


def facet(corners, shine, stone):
    glow, light, body, depth = stone
    colour = mix(body, glow, shine * 1.1) if shine > 0 else mix(body, depth, -shine)
    return element("path", d=path(corners), fill=colour, stroke=colour, stroke_width=.3)


def lamp(stone):
    glow, light, body, depth = stone
    definitions = [
        gradient("setting", [(0, "#fff6d0"), (.42, "#d8af5a"), (1, "#6d4816")], x1=.1, y1=.05, x2=.9, y2=.95),
        gradient("inside", [(0, "#5d3f12"), (.55, "#a87a35"), (1, "#ffedb4")], x1=.1, y1=.05, x2=.9, y2=.95),
        gradient("core", [(0, glow, .95), (.3, light, .7), (1, light, 0)], "radialGradient"),
    ]
    outer, middle, table = ring(24.6, 8, pi / 8), ring(18.5, 8, 0), ring(11.5, 8, pi / 8)
    facets = []
    for i in range(8):
        at = 2 * pi * i / 8
        facets.append(facet([outer[i], outer[(i + 1) % 8], middle[(i + 1) % 8]], .55 * cos(at + pi / 4 - LIGHT) - .25,
                            stone))
        facets.append(facet([middle[i], outer[i], middle[(i + 1) % 8]], .5 * cos(at + pi / 8 - LIGHT) - .1, stone))
        facets.append(facet([middle[i], table[i], table[i - 1]], .6 * cos(at - LIGHT) + .1, stone))
        facets.append(facet([table[i], middle[i], middle[(i + 1) % 8]], .5 * cos(at + pi / 8 - LIGHT) + .05, stone))
    claws = "".join(element("circle", cx=round(x, 2), cy=round(y, 2), r=3.4, fill="url(#setting)", stroke="#2a1706",
                            stroke_width=1.2) for x, y in ring(27.2, 4, pi / 4))
    return document(64, 64, definitions,
                    element("circle", cx=32, cy=32, r=31.5, fill="#1d1004"),
                    element("circle", cx=32, cy=32, r=30, fill="url(#setting)"),
                    element("circle", cx=32, cy=32, r=26.6, fill="url(#inside)"),
                    element("circle", cx=32, cy=32, r=25, fill=depth), *facets,
                    element("path", d=path(table), fill=light, opacity=.75),
                    element("circle", cx=32, cy=33, r=22, fill="url(#core)"),
                    element("path", d="M21 27Q25 18.500 35 17.500Q28.500 22 26 28.500Q23 30 21 27Z", fill="#ffffff",
                            opacity=.9),
                    element("circle", cx=39.500, cy=39.500, r=1.800, fill="#ffffff", opacity=.7), claws)


if __name__ == "__main__":
    print(lamp(STONES[sys.argv[1]]))
