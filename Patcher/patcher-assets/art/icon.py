"""The program's icon, 256 by 256: the gold T of the name on a cut sapphire in a gold setting. With the argument
"small", a simpler icon for 16 to 48 pixels: a thinner rim, a larger letter, no facets."""
import sys
from math import cos, pi, sin

from lettering import letter_at
from svg import document, element, gradient, mix, path


def ring(radius, turn=pi / 8):
    return [(128 + radius * cos(2 * pi * i / 8 + turn), 128 + radius * sin(2 * pi * i / 8 + turn)) for i in range(8)]


def rounded(radius, width, **attributes):
    """An octagon whose corners are softened by a stroke of its own colour."""
    fill = attributes["fill"]
    return element("path", d=path(ring(radius)), stroke=fill, stroke_width=width, stroke_linejoin="round", **attributes)


def stone(radius):
    outer, table = ring(radius), ring(radius * .66)
    parts = []
    for i in range(8):
        shine = cos(2 * pi * (i + .5) / 8 + pi / 8 + .75 * pi)
        colour = mix("#2874d6", "#b9e0ff", shine) if shine > 0 else mix("#2874d6", "#08225a", -shine)
        parts.append(element("path", d=path([outer[i], outer[(i + 1) % 8], table[(i + 1) % 8], table[i]]), fill=colour,
                             stroke=colour, stroke_width=.6))
    return "".join(parts) + element("path", d=path(table), fill="url(#table)")


def letter(height, width):
    strokes, advance = letter_at("T", 0, 0, height, width)
    strokes, _ = letter_at("T", 128 - advance / 2, 128 + height * .5, height, width)
    return strokes


def drawn(strokes, **attributes):
    return element("g", "".join(element("path", d=d) for d in strokes), stroke_linejoin="round", **attributes)


def definitions(small):
    bevel = (element("feGaussianBlur", in_="SourceAlpha", stdDeviation=3, result="b") +
             element("feSpecularLighting", element("feDistantLight", azimuth=232, elevation=42), in_="b",
                     surfaceScale=6, specularConstant=.8, specularExponent=16, lighting_color="#fff3cc", result="l") +
             element("feComposite", in_="l", in2="SourceAlpha", operator="in", result="l") +
             element("feComposite", in_="l", in2="SourceGraphic", operator="arithmetic", k1=0, k2=.6, k3=1, k4=0) +
             element("feComposite", in2="SourceAlpha", operator="in"))
    face = [(0, "#fffbe6"), (.5, "#ffe28f"), (1, "#f0b34a")] if small else \
        [(0, "#fff3c0"), (.24, "#fbdf94"), (.46, "#e7bb5c"), (.54, "#a8742b"), (.7, "#d9a94e"), (.9, "#ffe6a0"),
         (1, "#c99a48")]
    return [
        gradient("rim", [(0, "#fff6d0"), (.4, "#e3bb62"), (1, "#7a531c")], gradientUnits="userSpaceOnUse", x1=40, y1=20,
                 x2=216, y2=236),
        gradient("inside", [(0, "#5d3f12"), (.5, "#a87a35"), (1, "#ffedb4")], gradientUnits="userSpaceOnUse", x1=40,
                 y1=20, x2=216, y2=236),
        gradient("table", [(0, "#4f9ff2"), (.5, "#1f63c4"), (1, "#0c3681")], x1=.2, y1=0, x2=.8, y2=1),
        gradient("face", face, gradientUnits="userSpaceOnUse", x1=0, x2=0, y1=66, y2=190),
        element("filter", bevel, id="bevel", color_interpolation_filters="sRGB"),
        element("filter", element("feGaussianBlur", stdDeviation=5), id="soft", x=-.3, y=-.3, width=1.6, height=1.6),
    ]


def icon():
    t = letter(124, 1.06)
    return document(256, 256, definitions(False), rounded(122, 10, fill="#1d1004"), rounded(119, 8, fill="url(#rim)"),
                    rounded(103, 6, fill="url(#inside)"), rounded(96, 4, fill="#071a3d"), stone(95),
                    element("path", d="M62 92Q84 44 150 42Q96 62 84 110Q68 116 62 92Z", fill="#ffffff", opacity=.22),
                    drawn(t, fill="#04122e", stroke="#04122e", stroke_width=22, filter="url(#soft)", opacity=.6),
                    drawn(t, fill="#2a1706", stroke="#2a1706", stroke_width=14),
                    drawn(t, fill="url(#rim)", stroke="url(#rim)", stroke_width=6),
                    drawn(t, fill="url(#face)", filter="url(#bevel)"))


def small_icon():
    """On a grid of 16: every edge of the letter is on a whole pixel."""
    t = "M64 64H192V112H176V96H144V176H160V192H96V176H112V96H80V112H64Z"
    return document(256, 256, definitions(True), rounded(124, 8, fill="url(#rim)"), rounded(106, 4, fill="#06173a"),
                    element("path", d=path(ring(104)), fill="url(#table)"),
                    element("path", d=t, fill="#06173a", stroke="#06173a", stroke_width=14, opacity=.7),
                    element("path", d=t, fill="url(#face)"))


if __name__ == "__main__":
    print(small_icon() if sys.argv[1:] == ["small"] else icon())
