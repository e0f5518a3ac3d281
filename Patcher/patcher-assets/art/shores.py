"""The wooded shores to the left and right of the bay, each in three distances."""
import numpy as np

from raster import HEIGHT
from woods import Wood, skyline

# Distance: seed, haze, outlines of the left and the right shore.
FAR = (41, .5, [(-10, 204), (110, 207), (240, 211), (320, 216), (352, 219)],
       [(1262, 201), (1284, 195), (1350, 197), (1460, 199), (1560, 202), (1660, 202)])
MIDDLE = (52, .2, [(-10, 220), (90, 233), (200, 255), (300, 281), (380, 306), (430, 335)],
          [(1235, 335), (1285, 306), (1365, 280), (1465, 254), (1560, 234), (1660, 221)])
NEAR = (63, 0, [(-10, 262), (80, 280), (160, 303), (235, 335)], [(1395, 335), (1480, 305), (1570, 283), (1660, 264)])
# The row of the water at the foot of the far shores.
FAR_WATER = (219, 206)
# The trees of the near shores: column, height, kind, how far below the outline (0 to 1).
NEAR_TREES = [
    [(4, 128, "fir", .2), (34, 104, "fir", 0), (62, 120, "fir", .5), (100, 70, "fir", .2), (128, 56, "leafy", .3),
     (165, 11, "bush", 0), (188, 9, "bush", .1), (20, 14, "bush", 1)],
    [(1652, 176, "leafy", 0), (1592, 148, "leafy", .3), (1534, 96, "fir", .1), (1508, 74, "fir", .4),
     (1476, 44, "leafy", .2), (1446, 11, "bush", .1), (1560, 14, "bush", .8), (1424, 8, "bush", 0)],
]


def grow(wood, line, trees, down):
    """trees: as in NEAR_TREES; the farther ones first, each up to down below the outline."""
    columns, rows = line
    placed = sorted((np.interp(x, columns, rows) + down * share, x, height, kind) for x, height, kind, share in trees)
    for base, x, height, kind in placed:
        getattr(wood, kind)(x, base, height)


def stand(wood, line, count, low, high, leafy):
    """A stand of trees along an outline: their heights from low to high, a share of them leafy."""
    rng, (columns, _) = wood.rng, line
    trees = []
    for i in range(count):
        x = columns[0] + (columns[-1] - columns[0]) * (i + rng.uniform(-.6, .6)) / count
        if rng.random_sample() < leafy:
            trees.append((x, rng.uniform(low, high) * .8, "leafy", rng.uniform(0, 1)))
        else:
            trees.append((x, rng.uniform(low, high), "fir", rng.uniform(0, 1)))
    return trees


def far():
    """The layers of the left and the right shore, each with the row of its water."""
    seed, haze, *outlines = FAR
    for i, (outline, water) in enumerate(zip(outlines, FAR_WATER)):
        wood = Wood(seed + i, haze, ("#9aa9cf", "#b3aecb")[i])
        line = skyline(outline, seed + i, 2)
        wood.ground(line, water)
        grow(wood, line, stand(wood, line, 100, 8, 18, .35), 4)
        yield wood.canvas.layer(), water


def middle():
    seed, haze, *outlines = MIDDLE
    wood = Wood(seed, haze, "#6f84b4")
    for i, outline in enumerate(outlines):
        line = skyline(outline, seed + i, 5)
        wood.ground(line, HEIGHT)
        grow(wood, line, stand(wood, line, 62, 20, 46, .3), 26)
    return wood.canvas.layer()


def near():
    seed, haze, *outlines = NEAR
    wood = Wood(seed, haze, "#6f84b4")
    for outline, trees in zip(outlines, NEAR_TREES):
        line = skyline(outline, seed, 5)
        wood.ground(line, HEIGHT)
        grow(wood, line, trees, 14)
    return wood.canvas.layer()
