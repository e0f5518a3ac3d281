"""The cards' frame, 400 by 400, cut into nine with slices of 56 pixels and stretched: parchment in a gold moulding.

Between the corners nothing changes along an edge, and everything is mirrored both ways, so that stretching shows
nowhere. The page draws 56 pixels as 34, and once more below that with a cut at 70: nothing changes between the two, so
that both cuts give the same picture. Text is on the middle part: it is nowhere darker than PARCHMENT with the cloud on
it, which the text's lightest ink needs.
"""
from svg import document, element, gradient

SIZE = 400
PARCHMENT, CLOUD = "#fef8e4", "#fcf4dc"
# The parchment's edge and the shadow of the moulding on it: distance from the moulding, opacity.
AGED = [(0, .95), (5, .82), (11, .58), (18, .32), (25, .13), (31, .03), (35, 0)]
SHADOW = [(0, .62), (2.5, .42), (6, .2), (11, .07), (16, .015), (20, 0)]
INNER = 20
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
    size = SIZE - 2 * INNER
    box = dict(x=INNER, y=INNER, width=size, height=size)
    return (element("rect", fill=PARCHMENT, **box) +
            element("rect", fill="#fff", filter="url(#clouds)", mask="url(#middle)", **box) +
            "".join(element("rect", fill=f"url(#{kind}{side})", **box) for kind in ("aged", "shadow")
                    for side in ("Top", "Left")))


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


def edge(name, colour, steps):
    """Used for the upper and the left edge; the quarter that is mirrored has no other edges."""
    size = SIZE - 2 * INNER
    stops = [(round(distance / size, 4), colour, opacity) for distance, opacity in steps]
    return [gradient(name + "Top", stops, x1=0, y1=0, x2=0, y2=1), gradient(name + "Left", stops, x1=0, y1=0, x2=1, y2=0)]


def definitions():
    red, green, blue = (int(CLOUD[i:i + 2], 16) / 255 for i in (1, 3, 5))
    clouds = (element("feTurbulence", type="fractalNoise", baseFrequency=".012", numOctaves=4, seed=9) +
              element("feColorMatrix", type="matrix",
                      values=f"0 0 0 0 {red:.4f}  0 0 0 0 {green:.4f}  0 0 0 0 {blue:.4f}  0 4 0 0 -1.6"))
    fade = [(0, "#000"), (.37, "#000"), (.56, "#fff"), (1, "#fff")]
    return [
        *edge("aged", "#e0bd7c", AGED), *edge("shadow", "#5a3a10", SHADOW),
        gradient("fadeX", fade, gradientUnits="userSpaceOnUse", x1=0, x2=SIZE / 2, y1=0, y2=0),
        gradient("fadeY", [(o, "#000", 1 - (c == "#fff")) for o, c in fade], gradientUnits="userSpaceOnUse", x1=0, x2=0,
                 y1=0, y2=SIZE / 2),
        element("mask", "".join(element("rect", width=SIZE, height=SIZE, fill=f"url(#fade{axis})") for axis in "XY"),
                id="middle", maskUnits="userSpaceOnUse", x=0, y=0, width=SIZE, height=SIZE),
        gradient("leaf", [(0, "#fff0b6"), (.5, "#dcb25a"), (1, "#9a6e2c")], gradientUnits="userSpaceOnUse",
                 x1=20, y1=20, x2=54, y2=54),
        gradient("setting", [(0, "#fff4c8"), (.45, "#d8af5a"), (1, "#8a6027")], x1=0, y1=0, x2=1, y2=1),
        gradient("sapphire", [(0, "#b9e0ff"), (.35, "#4a9bf4"), (.8, "#154a9f"), (1, "#0c2c66")], "radialGradient",
                 cx=.36, cy=.3, r=.8),
        element("filter", clouds, id="clouds", x=0, y=0, width=1, height=1, color_interpolation_filters="sRGB"),
        element("clipPath", element("rect", width=SIZE / 2, height=SIZE / 2), id="quarter"),
    ]


if __name__ == "__main__":
    quarter = element("g", parchment() + moulding() + corner_ornament(), clip_path="url(#quarter)")
    mirrored = "".join(element("g", quarter, transform=t) for t in (
        "scale(1)", f"matrix(-1 0 0 1 {SIZE} 0)", f"matrix(1 0 0 -1 0 {SIZE})", f"matrix(-1 0 0 -1 {SIZE} {SIZE})"))
    print(document(SIZE, SIZE, definitions(), mirrored))
