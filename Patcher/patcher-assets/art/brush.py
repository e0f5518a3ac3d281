"""A brush: dabs of paint, each a soft ellipse, painted one over the other on a transparent canvas."""
import functools

import numpy as np

from raster import HEIGHT, TIMES, WIDTH, smooth

ANGLES = 16


@functools.lru_cache(None)
def stamp(length, width, turn):
    """The cover of one dab; half length and half width in half pixels, turn in ANGLES steps of half a circle."""
    length, width, angle = length / 2, width / 2, turn * np.pi / ANGLES
    reach = int(np.ceil(max(length, width))) + 1
    v, u = np.mgrid[-reach:reach + 1, -reach:reach + 1]
    along, aside = u * np.cos(angle) + v * np.sin(angle), v * np.cos(angle) - u * np.sin(angle)
    distance = np.hypot(along / max(length, .7), aside / max(width, .7))
    return (smooth(1.25, .6, distance) * min(1, length / .7) * min(1, width / .7))[..., None]


class Canvas:
    def __init__(self):
        # Red, green and blue, each multiplied by the cover, and the cover.
        self.paint = np.zeros((HEIGHT * TIMES, WIDTH * TIMES, 4))

    def dabs(self, x, y, length, width, angle, colour, opacity):
        """Arrays, one entry for each dab, painted in their order; length and width are half axes."""
        count = len(x)
        columns, rows = (np.rint(place * TIMES - .5).astype(int) for place in (x, y))
        lengths, widths = (np.maximum(1, np.rint(np.broadcast_to(size, count) * TIMES * 2)).astype(int)
                           for size in (length, width))
        turns = np.rint(np.broadcast_to(angle, count) * ANGLES / np.pi).astype(int) % ANGLES
        paint = np.concatenate([colour, np.ones((count, 1))], axis=1)
        opacity = np.broadcast_to(opacity, count)
        for i in range(count):
            mask = stamp(lengths[i], widths[i], turns[i])
            reach = mask.shape[0] // 2
            top, left = rows[i] - reach, columns[i] - reach
            cut_top, cut_left = max(0, -top), max(0, -left)
            patch = self.paint[top + cut_top:max(0, top + mask.shape[0]), left + cut_left:max(0, left + mask.shape[1])]
            if patch.size:
                cover = mask[cut_top:cut_top + patch.shape[0], cut_left:cut_left + patch.shape[1]] * opacity[i]
                patch *= 1 - cover
                patch += cover * paint[i]

    def layer(self):
        cover = self.paint[..., 3:]
        return np.concatenate([self.paint[..., :3] / np.maximum(cover, 1e-6), cover], axis=-1)
