"""Display capitals with flared serifs, drawn for the logo. Cap height 100, baseline at y = 0, up is negative.

Each letter is (advance width, [path]); overlapping paths are one shape.
"""
import re

from svg import number


def n(*values):
    return " ".join(number(v) for v in values)


def stem(x, width, top=-100, bottom=0, serif_top=11, serif_bottom=12, lean=0):
    """An upright with bracketed serifs and a slight waist; lean moves its top sideways."""
    h, w = width / 2, width / 2 - 1.2
    t, mid = x + lean, x + lean / 2
    return (f"M{n(t - h - serif_top, top)}L{n(t + h + serif_top, top)}L{n(t + h + serif_top - 2, top + 4)}"
            f"Q{n(t + h, top + 6, t + h - .5, top + 22)}Q{n(mid + w, (top + bottom) / 2, x + h - .5, bottom - 22)}"
            f"Q{n(x + h, bottom - 6, x + h + serif_bottom - 2, bottom - 4)}L{n(x + h + serif_bottom, bottom)}"
            f"L{n(x - h - serif_bottom, bottom)}L{n(x - h - serif_bottom + 2, bottom - 4)}"
            f"Q{n(x - h, bottom - 6, x - h + .5, bottom - 22)}Q{n(mid - w, (top + bottom) / 2, t - h + .5, top + 22)}"
            f"Q{n(t - h, top + 6, t - h - serif_top + 2, top + 4)}Z")


def bar(points):
    return "M" + "L".join(n(x, y) for x, y in points) + "Z"


T = (86, [stem(43, 19, -96, 0, 0, 14),
          "M0 -72Q3 -92 1 -105Q8 -100 18 -100H68Q78 -100 85 -105Q83 -92 86 -75L82 -75Q78 -86 66 -89Q55 -91 43 -91"
          "Q31 -91 21 -89Q8 -86 4 -72Z"])
O = (100, ["M50 -103C80 -103 100 -80 100 -50C100 -19 79 3 50 3C21 3 0 -19 0 -50C0 -80 20 -103 50 -103Z"
           "M48 -95C31 -95 21 -77 21 -52C21 -24 34 -5 52 -5C69 -5 79 -22 79 -48C79 -76 66 -95 48 -95Z"])
L = (74, [stem(25, 19, -100, 0, 12, 13),
          "M22 0L22 -8Q50 -6 58 -11Q66 -17 70 -31L74 -31Q72 -14 75 0Z"])
M = (120, [stem(17, 10, -100, 0, 9, 12, 4), stem(100, 19, -100, 0, 10, 12, -5),
           bar([(8, -100), (32, -100), (67, -22), (58, 4)]), bar([(88, -100), (98, -96), (62, 4), (56, -8)])])
I = (42, [stem(21, 19, -100, 0, 12, 12)])
R = (96, [stem(25, 19, -100, 0, 12, 12),
          "M25 -100L44 -101C74 -102 88 -91 88 -73C88 -55 74 -46 50 -45L30 -45L30 -52L43 -52C60 -53 68 -60 68 -73"
          "C68 -87 59 -94 42 -93L30 -93L25 -94Z",
          "M40 -49L58 -51Q72 -22 84 -9Q94 2 110 1L110 5Q90 10 75 -2Q62 -13 40 -49Z"])
A = (112, ["M49 -104L63 -107L99 -18Q103 -7 112 -4L113 0H72L73 -4Q81 -6 78 -15L50 -87Z",
           "M52 -100L59 -88L24 -15Q20 -6 32 -4L33 0H-1L0 -4Q9 -6 14 -16Z",
           bar([(28, -36), (75, -36), (77, -30), (26, -30)])])

LETTERS = {"T": T, "O": O, "L": L, "M": M, "I": I, "R": R, "A": A}


def placed(path, x, y, scale_x, scale_y):
    """The path with every coordinate moved to its place, so that gradients and rims need no transform."""
    out = []
    for command, values in re.findall(r"([MLQCHVZ])([^A-Z]*)", path):
        numbers = [float(v) for v in re.findall(r"-?[\d.]+", values)]
        if command == "H":
            numbers = [x + v * scale_x for v in numbers]
        elif command == "V":
            numbers = [y + v * scale_y for v in numbers]
        else:
            numbers = [x + v * scale_x if i % 2 == 0 else y + v * scale_y for i, v in enumerate(numbers)]
        out.append(command + n(*numbers))
    return "".join(out)


def letter_at(letter, x, y, height, stretch=1.0):
    """The strokes of one letter at a place, and its width."""
    width, paths = LETTERS[letter]
    scale = height / 100
    return [placed(d, x, y, scale * stretch, scale) for d in paths], width * scale * stretch
