#!/usr/bin/env python3
"""Writes MATROX.PAL, the colour map of the item "Normal color".

    tools/color_map.py > src/resources/defaults/MATROX.PAL

Lightness rises in equal steps of CIELAB L* from dark violet over magenta and orange to a pale yellow, so that equal
steps of counts look equally large everywhere and no false edge appears. Hue turns one way, chroma is as large as the
screen's colours (sRGB, D65) allow up to a limit.
"""
import math

ENTRIES = 256
LIGHTNESS = (4.0, 97.0)
# (place, hue in degrees, chroma): straight lines between them, rounded off by a mean over SMOOTHING either side.
PATH = ((0.0, 298.0, 22.0), (0.25, 320.0, 60.0), (0.45, 353.0, 72.0), (0.7, 410.0, 70.0), (0.88, 445.0, 66.0),
        (1.0, 465.0, 18.0))
SMOOTHING = 0.1
WHITE = (0.95047, 1.0, 1.08883)


def to_linear(lightness, chroma, hue):
    fy = (lightness + 16) / 116
    f = (fy + chroma * math.cos(math.radians(hue)) / 500, fy, fy - chroma * math.sin(math.radians(hue)) / 200)
    x, y, z = (w * (v ** 3 if v > 6 / 29 else 3 * (6 / 29) ** 2 * (v - 4 / 29)) for v, w in zip(f, WHITE))
    return (3.2404542 * x - 1.5371385 * y - 0.4985314 * z,
            -0.9692660 * x + 1.8760108 * y + 0.0415560 * z,
            0.0556434 * x - 0.2040259 * y + 1.0572252 * z)


def to_bytes(linear):
    def encode(v):
        v = min(max(v, 0.0), 1.0)
        return 255 * (12.92 * v if v <= 0.0031308 else 1.055 * v ** (1 / 2.4) - 0.055)
    return tuple(round(encode(v)) for v in linear)


def lightness_of(rgb):
    def decode(c):
        c /= 255
        return c / 12.92 if c <= 0.04045 else ((c + 0.055) / 1.055) ** 2.4
    y = sum(k * decode(c) for k, c in zip((0.2126729, 0.7151522, 0.0721750), rgb))
    return 116 * (y ** (1 / 3) if y > (6 / 29) ** 3 else y / (3 * (6 / 29) ** 2) + 4 / 29) - 16


def on_line(place):
    place = min(max(place, 0.0), 1.0)
    for (p0, h0, c0), (p1, h1, c1) in zip(PATH, PATH[1:]):
        if place <= p1:
            t = (place - p0) / (p1 - p0)
            return h0 + (h1 - h0) * t, c0 + (c1 - c0) * t
    raise AssertionError("PATH ends before 1")


def on_path(place):
    reach = min(SMOOTHING, place, 1 - place)  # the ends stay where they are
    around = [on_line(place + reach * k / 20) for k in range(-20, 21)]
    return tuple(sum(values) / len(around) for values in zip(*around))


def in_gamut(linear):
    return all(-1e-4 <= v <= 1.0001 for v in linear)


def color(index):
    place = index / (ENTRIES - 1)
    lightness = LIGHTNESS[0] + (LIGHTNESS[1] - LIGHTNESS[0]) * place
    hue, chroma = on_path(place)
    low, high = 0.0, chroma
    if in_gamut(to_linear(lightness, chroma, hue)):
        low = chroma
    for _ in range(40):
        middle = (low + high) / 2
        low, high = (middle, high) if in_gamut(to_linear(lightness, middle, hue)) else (low, middle)
    rounded = to_bytes(to_linear(lightness, low, hue))
    # Of the bytes around it the one whose lightness fits best.
    steps = [(r, g, b) for r in (-1, 0, 1) for g in (-1, 0, 1) for b in (-1, 0, 1)]
    near = [tuple(c + s for c, s in zip(rounded, step)) for step in steps]
    near = [rgb for rgb in near if all(0 <= c <= 255 for c in rgb)]
    return min(near, key=lambda rgb: abs(lightness_of(rgb) - lightness))


def main():
    print("; red green blue, even in lightness")
    for index in range(ENTRIES):
        print("%d %d %d" % color(index))


if __name__ == "__main__":
    main()
