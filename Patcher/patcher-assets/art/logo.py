"""The game's name in gold, 428 by 151, with a sapphire under a star; its dark rim is visible on any background."""
from lettering import letter_at, placed
from svg import document, element, gradient, number

WIDTH, HEIGHT = 428, 151


def letters():
    """The strokes of the name: its first and last letter tall, the others small capitals between them."""
    strokes, x = [], 9
    for letter, height, base, gap in [("T", 92, 115, -3), ("O", 63, 103, 5), ("L", 64, 103, 3.5), ("M", 64, 103, 4),
                                      ("I", 64, 103, 6), ("R", 64, 103, 0.5), ("A", 92, 115, 0)]:
        paths, width = letter_at(letter, x, base, height, .848)
        strokes += paths
        x += width + gap
    return strokes


def flourish():
    """The rule below the name, mirrored at the middle."""
    half = ["M214 127C234 124 252 122 276 124C296 126 312 128 338 122C318 132 298 132 276 129C254 126 236 128 214 131Z",
            "M262 125C270 117 284 116 288 122C291 128 283 131 279 127C284 128 286 124 282 122C277 119 270 121 266 126Z",
            "M300 129C308 136 322 136 330 130C322 141 306 141 296 130Z"]
    return half + [placed(d, WIDTH, 0, -1, 1) for d in half]


def star():
    """Above the name: a star of eight rays, the long ones vertical and horizontal."""
    x, y = 214, 21
    return [f"M{x} {y - 17}L{x + 3} {y - 3}L{x + 22} {y}L{x + 3} {y + 3}L{x} {y + 13}L{x - 3} {y + 3}L{x - 22} {y}"
            f"L{x - 3} {y - 3}Z",
            f"M{x} {y - 4}L{x + 8} {y - 8}L{x + 4} {y}L{x + 8} {y + 8}L{x} {y + 4}L{x - 8} {y + 8}L{x - 4} {y}"
            f"L{x - 8} {y - 8}Z"]


def gem(cx, cy, rx, ry):
    """A cut sapphire in a gold setting, lit from the upper left."""
    facets = [("#d8efff", [(-1, 0), (-.45, -.4), (-.45, .4)]), ("#8cc8ff", [(-1, 0), (0, -1), (-.45, -.4)]),
              ("#5ba7f5", [(0, -1), (.45, -.4), (-.45, -.4)]), ("#2f7fe0", [(0, -1), (1, 0), (.45, -.4)]),
              ("#123f93", [(1, 0), (.45, .4), (.45, -.4)]), ("#0d2f74", [(1, 0), (0, 1), (.45, .4)]),
              ("#1c5cc0", [(0, 1), (-.45, .4), (.45, .4)]), ("#3c8dec", [(-1, 0), (-.45, .4), (0, 1)])]
    diamond = f"M{cx - rx - 3} {cy}L{cx} {cy - ry - 3}L{cx + rx + 3} {cy}L{cx} {cy + ry + 3}Z"
    parts = [element("path", d=diamond, fill="#2a1706", stroke="#2a1706", stroke_width=4, stroke_linejoin="round"),
             element("path", d=diamond, fill="url(#rim)")]
    for colour, corners in facets:
        parts.append(element("polygon", fill=colour, points=" ".join(
            f"{number(cx + x * rx)},{number(cy + y * ry)}" for x, y in corners)))
    parts.append(element("polygon", fill="url(#table)", points=" ".join(
        f"{number(cx + x * rx)},{number(cy + y * ry)}" for x, y in [(-.45, -.4), (.45, -.4), (.45, .4), (-.45, .4)])))
    return "".join(parts)


def shapes(strokes, **attributes):
    return element("g", "".join(element("path", d=d) for d in strokes), fill_rule="evenodd", stroke_linejoin="round",
                   **attributes)


def definitions():
    face = [(0, "#fff3c0"), (.22, "#fbdf94"), (.44, "#e7bb5c"), (.5, "#b98433"), (.56, "#8f5f22"), (.7, "#d9a94e"),
            (.88, "#ffe6a0"), (1, "#c99a48")]
    vertical = dict(gradientUnits="userSpaceOnUse", x1=0, x2=0)
    everywhere = dict(filterUnits="userSpaceOnUse", x=0, y=0, width=WIDTH, height=HEIGHT,
                      color_interpolation_filters="sRGB")
    bevel = (element("feGaussianBlur", in_="SourceAlpha", stdDeviation=1.5, result="b") +
             element("feSpecularLighting", element("feDistantLight", azimuth=232, elevation=42), in_="b",
                     surfaceScale=3.6, specularConstant=.95, specularExponent=16, lighting_color="#fff3cc",
                     result="l") +
             element("feComposite", in_="l", in2="SourceAlpha", operator="in", result="l") +
             element("feDiffuseLighting", element("feDistantLight", azimuth=232, elevation=50), in_="b",
                     surfaceScale=3, diffuseConstant=1.25, lighting_color="#ffffff", result="d") +
             element("feBlend", in_="SourceGraphic", in2="d", mode="multiply", result="m") +
             element("feComposite", in_="m", in2="SourceAlpha", operator="in", result="m") +
             element("feComposite", in_="l", in2="m", operator="arithmetic", k1=0, k2=.5, k3=1, k4=0, result="s") +
             element("feComposite", in_="s", in2="SourceAlpha", operator="in"))
    return [
        gradient("face", face, y1=36, y2=114, **vertical),
        gradient("rim", [(0, "#fff4c4"), (.45, "#d8af5a"), (1, "#6d4715")], y1=10, y2=130, **vertical),
        gradient("table", [(0, "#b5defd"), (.5, "#4d9df3"), (1, "#174fae")], x1=0, y1=0, x2=1, y2=1),
        element("filter", bevel, id="bevel", **everywhere),
        element("filter", element("feGaussianBlur", stdDeviation=3.2), id="soft", **everywhere),
    ]


if __name__ == "__main__":
    name, ornaments = letters(), flourish() + star()
    everything = name + ornaments
    print(document(WIDTH, HEIGHT, definitions(),
                   element("g", shapes(everything, fill="#05101f", stroke="#05101f", stroke_width=9),
                           filter="url(#soft)", opacity=.75),
                   shapes(everything, fill="#2a1706", stroke="#2a1706", stroke_width=6.4),
                   shapes(name, fill="url(#rim)", stroke="url(#rim)", stroke_width=2.8),
                   shapes(everything, fill="url(#face)", filter="url(#bevel)"), gem(214, 129, 13, 8)))
