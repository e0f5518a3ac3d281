"""Shared by the drawings: numbers, colours, seeded noise, SVG elements."""
import math


def number(value):
    return f"{value:.2f}".rstrip("0").rstrip(".") or "0"


def path(points, closed=True):
    text = "M" + "L".join(f"{number(x)} {number(y)}" for x, y in points)
    return text + "Z" if closed else text


def mix(a, b, t):
    """The colour between #rrggbb a (t = 0) and b (t = 1)."""
    t = max(0.0, min(1.0, t))
    return "#" + "".join(
        f"{round(int(a[i:i + 2], 16) * (1 - t) + int(b[i:i + 2], 16) * t):02x}" for i in (1, 3, 5))


def lattice(x, y, seed):
    """A fixed random value in 0..1 for a lattice point, the same on every machine."""
    h = (x * 374761393 + y * 668265263 + seed * 2147483647) & 0xFFFFFFFF
    h = ((h ^ (h >> 13)) * 1274126177) & 0xFFFFFFFF
    h = ((h ^ (h >> 15)) * 2246822519) & 0xFFFFFFFF
    return ((h ^ (h >> 16)) & 0xFFFFFF) / 0xFFFFFF


def noise(x, y=0.0, seed=0):
    """Smooth value noise in 0..1."""
    ix, iy = math.floor(x), math.floor(y)
    fx, fy = x - ix, y - iy
    fx, fy = fx * fx * fx * (fx * (fx * 6 - 15) + 10), fy * fy * fy * (fy * (fy * 6 - 15) + 10)
    top = lattice(ix, iy, seed) * (1 - fx) + lattice(ix + 1, iy, seed) * fx
    bottom = lattice(ix, iy + 1, seed) * (1 - fx) + lattice(ix + 1, iy + 1, seed) * fx
    return top * (1 - fy) + bottom * fy


def gradient(name, stops, kind="linearGradient", **attributes):
    """stops: (offset, colour, opacity) or (offset, colour)."""
    text = "".join(
        f'<stop offset="{s[0]}" stop-color="{s[1]}" stop-opacity="{s[2] if len(s) > 2 else 1}"/>' for s in stops)
    return f'<{kind} id="{name}" {attribute_text(attributes)}>{text}</{kind}>'


def attribute_text(attributes):
    return " ".join(f'{key.rstrip("_").replace("_", "-")}="{value}"' for key, value in attributes.items())


def element(name, content="", **attributes):
    return f"<{name} {attribute_text(attributes)}>{content}</{name}>" if content else \
        f"<{name} {attribute_text(attributes)}/>"


def document(width, height, definitions, *content):
    return (f'<svg xmlns="http://www.w3.org/2000/svg" xmlns:xlink="http://www.w3.org/1999/xlink" '
            f'width="{width}" height="{height}" viewBox="0 0 {width} {height}">'
            f'<defs>{"".join(definitions)}</defs>{"".join(content)}</svg>')
