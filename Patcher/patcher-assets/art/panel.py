"""The cards' frame, 400 by 400, cut into nine with slices of 56 pixels and stretched: parchment in a gold moulding.

Between the corners nothing changes along an edge, and everything is mirrored both ways, so that stretching shows
nowhere. The page draws 56 pixels as 34.
"""
from svg import document, element, gradient

SIZE = 400
# The moulding from the outside to the inside: inset of the line's middle, width, colour.
MOULDING = [(1.5, 3, "#241505"), (4, 2.6, "#b98a3c"), (6, 2.6, "#f6dc97"), (8.6, 3.4, "#d8af5a"),
            (11.6, 3.4, "#9a6d2b"), (14.2, 2.6, "#7a531c"), (16.4, 2.8, "#e9c777"),
            (18.4, 1.8, "#fff0bd"), (20.2, 2.6, "#3a2409")]
CORNER = [
    # A leaf that fills the corner, and two tendrils that run along the edges and end before the slice.
    "M23 23H43C40 25 37 28 36.5 32C34.5 34 34 34.5 32 36.5C28 37 25 40 23 43Z",
    "M38 27C45 24.5 52 26 52.5 30.5C52.8 34 48.5 35.6 46.6 33.2C45.6 31.6 46.6 30 48 30.2C46.4 28.6 42.6 29 40.5 31.6Z",
    "M27 38C24.5 45 26 52 30.5 52.5C34 52.8 35.6 48.5 33.2 46.6C31.6 45.6 30 46.6 30.2 48C28.6 46.4 29 42.6 31.6 40.5Z",
]


def parchment():
    inner = 20
    size = SIZE - 2 * inner
    box = dict(x=inner, y=inner, width=size, height=size)
    return (element("rect", fill="#efe0ba", **box) + element("rect", fill="#fff", filter="url(#fibre)", **box) +
            element("rect", fill="url(#warmth)", **box) +
            "".join(element("rect", fill=f"url(#{side})", **box) for side in ("top", "bottom", "left", "right")))


def moulding():
    parts = []
    for inset, width, colour in MOULDING:
        size = SIZE - 2 * inset
        parts.append(element("rect", x=inset, y=inset, width=size, height=size, rx=max(2, 12 - inset * .55),
                             fill="none", stroke=colour, stroke_width=width))
    return "".join(parts)


def jewel(x, y):
    facets = "".join(element("path", d=f"M0 0L{a} {b}L{c} {d}Z", fill=colour, opacity=.5) for a, b, c, d, colour in (
        (-7, -3, -3, -7, "#e6f5ff"), (-3, -7, 3, -7, "#a9d8ff"), (-7, -3, -7, 3, "#a9d8ff"), (3, -7, 7, -3, "#2c6fcb"),
        (-7, 3, -3, 7, "#2c6fcb"), (7, -3, 7, 3, "#0d3274"), (-3, 7, 3, 7, "#0d3274"), (7, 3, 3, 7, "#071f4e")))
    circles = ((13.6, "#241505"), (12.3, "url(#setting)"), (8.8, "#3a2409"), (7.9, "url(#sapphire)"))
    return element("g", "".join(element("circle", r=r, fill=fill) for r, fill in circles) + facets +
                   element("circle", r=3.1, fill="url(#sapphire)") +
                   element("circle", cx=-1.2, cy=-1.2, r=1.3, fill="#ffffff", opacity=.9),
                   transform=f"translate({x} {y})")


def corner_ornament():
    leaf = "".join(element("path", d=d) for d in CORNER)
    return element("g", leaf, fill="#5d3f12", opacity=.35, transform="translate(.9 .9)") + \
        element("g", leaf, fill="url(#leaf)", stroke="#5d3f12", stroke_width=.9) + jewel(15.5, 15.5)


def edge_shade(name, x1, y1, x2, y2):
    return gradient(name, [(0, "#4a300f", .62), (.028, "#6b4a1c", .34), (.075, "#8a6330", .13), (.16, "#8a6330", 0)],
                    x1=x1, y1=y1, x2=x2, y2=y2)


def definitions():
    fibre = (element("feTurbulence", type="fractalNoise", baseFrequency=".011", numOctaves=3, seed=9,
                     stitchTiles="stitch") +
             element("feColorMatrix", type="matrix", values="0 0 0 0 .62  0 0 0 0 .47  0 0 0 0 .25  0 .62 0 0 -.25"))
    return [
        gradient("warmth", [(0, "#fff8e2", .75), (.6, "#fff3d2", .25), (1, "#e7cf9c", .35)], "radialGradient"),
        edge_shade("top", 0, 0, 0, 1), edge_shade("bottom", 0, 1, 0, 0),
        edge_shade("left", 0, 0, 1, 0), edge_shade("right", 1, 0, 0, 0),
        gradient("leaf", [(0, "#fff0b6"), (.5, "#dcb25a"), (1, "#9a6e2c")], gradientUnits="userSpaceOnUse",
                 x1=20, y1=20, x2=54, y2=54),
        gradient("setting", [(0, "#fff4c8"), (.45, "#d8af5a"), (1, "#8a6027")], x1=0, y1=0, x2=1, y2=1),
        gradient("sapphire", [(0, "#b9e0ff"), (.35, "#4a9bf4"), (.8, "#154a9f"), (1, "#0c2c66")], "radialGradient",
                 cx=.36, cy=.3, r=.8),
        element("filter", fibre, id="fibre", x=0, y=0, width=1, height=1, color_interpolation_filters="sRGB"),
        element("clipPath", element("rect", width=SIZE / 2, height=SIZE / 2), id="quarter"),
    ]


if __name__ == "__main__":
    quarter = element("g", parchment() + moulding() + corner_ornament(), clip_path="url(#quarter)")
    mirrored = "".join(element("g", quarter, transform=t) for t in (
        "scale(1)", f"matrix(-1 0 0 1 {SIZE} 0)", f"matrix(1 0 0 -1 0 {SIZE})", f"matrix(-1 0 0 -1 {SIZE} {SIZE})"))
    print(document(SIZE, SIZE, definitions(), mirrored))
