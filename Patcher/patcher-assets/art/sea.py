"""The sea: waves in perspective that mirror the sky and floating things, and the sun's path."""
import numpy as np

from raster import TIMES, X, Y, bell, fractal, mix, noise, ramp, sampled, shone, smooth
from sky import HORIZON, SUN

TOP = HORIZON * TIMES
# How far below the horizon each row of the sea is.
BELOW = Y[TOP:] - HORIZON
NEARNESS = 1 / (BELOW + .6)


def waves():
    """The tilt of the water along the picture and towards us, about -1..1; waves too small to be seen fade out."""
    across, away = (X - SUN[0]) * 100 * NEARNESS, 7e4 * NEARNESS
    footprint = 7e4 * NEARNESS ** 2 / TIMES
    tilt_x = tilt_z = 0
    for octave in range(11):
        length = 3.0 * 2 ** octave
        seen = smooth(.7, 2.6, length / footprint) * length ** -.16
        bend = (fractal(across / length / 3, away / length / 3, 500 + octave, 2) - .5) * 2
        tilt_z = tilt_z + seen * (noise(across / length / 2.3 + bend, away / length + bend, 520 + octave) * 2 - 1)
        tilt_x = tilt_x + seen * (noise(across / length / 1.8 - bend, away / length + bend, 540 + octave) * 2 - 1)
    return tilt_x * .55, tilt_z * .55


def mirrored(layer, base, tilt_x, tilt_z):
    """The reflection, in the waves, of a layer whose foot is on the water at row base."""
    depth = Y[TOP:] - base
    place_y = base - depth * 1.08 - 3.2 * tilt_z * smooth(-1, 14, depth)
    image = sampled(layer, X + 3.5 * tilt_x * smooth(-1, 14, depth), place_y)
    image[..., 3] *= (depth > 0) * smooth(118, 8, depth) * (.74 - .3 * np.clip(tilt_z, 0, 1))
    return image


def sea(sky, floating):
    """The picture's rows below the horizon. sky: all above it; floating: layers with the row of their waterline."""
    tilt_x, tilt_z = waves()
    place_y = HORIZON - np.maximum(1.5, BELOW * .82 + 10 + 30 * tilt_z)
    image = sampled(sky, X + 16 * tilt_x, place_y)
    for layer, base in floating:
        lower = mirrored(layer, base, tilt_x, tilt_z)
        image = image * (1 - lower[..., 3:]) + lower[..., :3] * lower[..., 3:]
    share = np.clip(.9 - .46 * smooth(0, 120, BELOW) - .3 * np.clip(tilt_z, -.3, 1), .18, .95)
    body = ramp([(0, "#2f66a3"), (22, "#1d5290"), (60, "#103a73"), (110, "#0a2552"), (140, "#081c42")],
                np.broadcast_to(BELOW, tilt_z.shape))
    body = mix(body, "#2a6a86", .5 * bell((X - SUN[0]) / (60 + BELOW)) * smooth(130, 20, BELOW))
    water = mix(body, image, share)
    return glitter(water, tilt_x, tilt_z)


def glitter(water, tilt_x, tilt_z):
    """The sun's path: sparks where a wave faces it, a glow between them."""
    grain = noise(X / (1.6 + BELOW * .05), Y[TOP:] / (.5 + BELOW * .008), 590) - .5
    reach = 10 + BELOW * .22
    off_x = (X - SUN[0]) / reach + 1.5 * tilt_x + 1.2 * grain
    off_y = (BELOW - 30) / 90 + 1.1 * tilt_z + 1.3 * grain - .2
    sparks = smooth(.5, 1, bell(off_x * .8) * bell(off_y))
    glow = .4 * bell((X - SUN[0]) / (34 + BELOW * .6)) * smooth(140, 0, BELOW)
    return shone(shone(water, glow, "#ffb65c"), sparks * (1.1 - .5 * smooth(20, 130, BELOW)), "#ffe2a6")
