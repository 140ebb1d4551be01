#!/usr/bin/env python3
"""Draws the start picture: the name as a warm object before a cold wall, the way an infrared camera sees it.

    tools/start_picture.py src/resources/defaults/kelvo220.bmp

The letters are strokes with a temperature of their own. From the left, where the detector's elements show as blocks,
the scene becomes finer until it is smooth. Eight bits a pixel through a palette of 256 colours.
"""

import math
import random
import struct
import sys

WIDTH, HEIGHT = 640, 360

# Black body colours from cold to hot: position, red, green, blue.
COLORS = [(0.00, 6, 7, 22), (0.22, 34, 20, 74), (0.42, 104, 26, 110), (0.60, 190, 50, 84),
          (0.76, 240, 106, 48), (0.90, 253, 190, 76), (1.00, 255, 248, 214)]


def palette():
    entries = []
    for i in range(256):
        t = i / 255
        for (t0, *low), (t1, *high) in zip(COLORS, COLORS[1:]):
            if t <= t1:
                f = (t - t0) / (t1 - t0)
                entries.append(tuple(round(a + (b - a) * f) for a, b in zip(low, high)))
                break
    return entries


def arc(cx, cy, radius, start, end, steps=40):
    """Points of an arc; degrees, clockwise from the right as the picture's rows run down."""
    angles = [math.radians(start + (end - start) * i / steps) for i in range(steps + 1)]
    return [(cx + radius * math.cos(a), cy + radius * math.sin(a)) for a in angles]


BASE, TOP, MIDDLE, RADIUS = 236, 106, 191, 45
LETTERS = [
    [(88, TOP), (88, BASE)], [(160, TOP), (88, 178)], [(110, 158), (166, BASE)],
    [(194, MIDDLE), (284, MIDDLE)], arc(239, MIDDLE, RADIUS, 0, -318),
    [(324, TOP), (324, BASE)],
    [(360, 146), (399, BASE)], [(399, BASE), (438, 146)],
    arc(507, MIDDLE, RADIUS, 0, 360),
]
STROKE = 9.5  # half the width of a stroke


def distance_to_segment(x, y, a, b):
    dx, dy = b[0] - a[0], b[1] - a[1]
    t = ((x - a[0]) * dx + (y - a[1]) * dy) / (dx * dx + dy * dy)
    t = min(1.0, max(0.0, t))
    return math.hypot(x - a[0] - t * dx, y - a[1] - t * dy)


def distance_to_letters(x, y):
    best = 1e9
    for line in LETTERS:
        left = min(p[0] for p in line) - 70
        right = max(p[0] for p in line) + 70
        if left <= x <= right:
            best = min(best, min(distance_to_segment(x, y, a, b) for a, b in zip(line, line[1:])))
    return best


def temperature(x, y):
    """0 to 1: a wall that is a little warmer below, the letters, and the warmth that they give to the wall."""
    wall = 0.07 + 0.09 * y / HEIGHT + 0.05 * math.exp(-((x - 500) ** 2 + (y - 330) ** 2) / 26000)
    d = distance_to_letters(x, y) - STROKE
    glow = 0.34 * math.exp(-max(d, 0.0) / 17)
    body = 0.80 + 0.17 * (y - TOP) / (BASE - TOP) - 0.10 * max(0.0, 1 + d / STROKE) ** 2
    edge = min(1.0, max(0.0, 0.5 - d))
    return (wall + glow) * (1 - edge) + body * edge


def block_at(x):
    """The side of a detector element in pixels, which falls from left to right."""
    return 8 if x < 128 else 4 if x < 256 else 2 if x < 384 else 1


def pixels():
    noise = random.Random(220)
    rows = [bytearray(WIDTH) for _ in range(HEIGHT)]
    cells = {}
    for y in range(HEIGHT):
        for x in range(WIDTH):
            side = block_at(x)
            cell = (x // side, y // side, side)
            if cell not in cells:
                cx, cy = (cell[0] + 0.5) * side, (cell[1] + 0.5) * side
                value = temperature(cx, cy) + noise.gauss(0, 0.004 + 0.0022 * side)
                cells[cell] = min(255, max(0, round(255 * value)))
            rows[y][x] = cells[cell]
    return rows


def bitmap(rows, colors):
    table = b"".join(struct.pack("<4B", b, g, r, 0) for r, g, b in colors)
    data = b"".join(bytes(row) for row in reversed(rows))  # rows of 640 bytes need no filling up to four
    offset = 14 + 40 + len(table)
    file_header = struct.pack("<2sIHHI", b"BM", offset + len(data), 0, 0, offset)
    info_header = struct.pack("<IiiHHIIiiII", 40, WIDTH, HEIGHT, 1, 8, 0, len(data), 2835, 2835, 256, 0)
    return file_header + info_header + table + data


def main():
    if len(sys.argv) != 2:
        sys.exit(__doc__)
    with open(sys.argv[1], "wb") as output:
        output.write(bitmap(pixels(), palette()))


if __name__ == "__main__":
    main()
