#!/usr/bin/env python3
"""Draws strip.bmp, the images of toolbar_strip: draw_strip.py strip.bmp

Eight images of 24 pixels side by side, of 32 bits. Shapes are painted one over the other in units of a pixel, each
pixel by 8 x 8 points; alpha is how many of them are covered.
"""
import math
import struct
import sys

SIZE, POINTS = 24, 8

STEEL, DARK, LIGHT = (132, 146, 166), (74, 85, 104), (203, 213, 225)
GOLD, BRONZE = (234, 179, 8), (161, 98, 7)
RED, BLUE, GREEN, ORANGE = (220, 38, 38), (37, 99, 235), (22, 163, 74), (234, 88, 12)


def box(left, top, right, bottom):
    return lambda x, y: left <= x < right and top <= y < bottom


def disc(cx, cy, radius):
    return lambda x, y: math.hypot(x - cx, y - cy) < radius


def polygon(*corners):
    def inside(x, y):
        odd = False
        for (x1, y1), (x2, y2) in zip(corners, corners[1:] + corners[:1]):
            if (y1 > y) != (y2 > y) and x < (x2 - x1) * (y - y1) / (y2 - y1) + x1:
                odd = not odd
        return odd

    return inside


def line(x1, y1, x2, y2, width):
    length = math.hypot(x2 - x1, y2 - y1)

    def near(x, y):
        along = max(0, min(1, ((x - x1) * (x2 - x1) + (y - y1) * (y2 - y1)) / length**2))
        return math.hypot(x - x1 - along * (x2 - x1), y - y1 - along * (y2 - y1)) < width / 2

    return near


def within(outer, *others):
    return lambda x, y: outer(x, y) and any(other(x, y) for other in others)


def without(outer, *others):
    return lambda x, y: outer(x, y) and not any(other(x, y) for other in others)


def flutes(left, right, top, bottom, step):
    """Slanted lines, as the edges of a tool that turns have."""
    return [line(left - 1, at + 4, right + 1, at, 1.3) for at in range(top - 4, bottom + 4, step)]


def end_mill():
    body = box(7.5, 10, 16.5, 22)
    return [(box(9, 1, 15, 10), STEEL), (box(9, 1, 11, 10), LIGHT), (body, DARK),
            (within(body, *flutes(7, 17, 10, 22, 4)), LIGHT)]


def drill():
    body = polygon((8.5, 8), (15.5, 8), (15.5, 18.5), (12, 23), (8.5, 18.5))
    return [(box(9.5, 1, 14.5, 8), STEEL), (box(9.5, 1, 11.2, 8), LIGHT), (body, GOLD),
            (within(body, *flutes(8, 16, 8, 22, 4)), BRONZE)]


def lathe_tool():
    return [(disc(7.5, 8, 6.5), STEEL), (disc(7.5, 8, 4.8), LIGHT), (disc(7.5, 8, 0.9), DARK),
            (polygon((14.5, 14.5), (18, 11), (23.5, 17), (18.5, 22.5)), DARK),
            (polygon((11.5, 12), (18.3, 10.7), (14.6, 17.6)), GOLD), (disc(14.9, 13.4, 1.1), BRONZE)]


def face_mill():
    body = polygon((5, 10), (19, 10), (22, 17), (2, 17))
    inserts = [polygon((x, 15), (x + 3.6, 15), (x + 2.6, 21), (x + 1, 21)) for x in (2.6, 7.8, 13, 18.0)]
    return [(box(8.5, 2, 15.5, 10), STEEL), (box(8.5, 2, 10.5, 10), LIGHT), (body, DARK), *[(each, GOLD) for each in inserts]]


def probe():
    return [(polygon((7, 1), (17, 1), (17, 7), (14.5, 10), (9.5, 10), (7, 7)), DARK), (box(7, 3.4, 17, 4.8), GREEN),
            (box(11.2, 10, 12.8, 18), LIGHT), (disc(12, 19.2, 3.2), RED), (disc(11, 18.2, 0.9), (254, 202, 202))]


def tap():
    body = polygon((8.6, 10), (15.4, 10), (15.4, 18), (13.6, 22.6), (10.4, 22.6), (8.6, 18))
    threads = [line(7.4, at + 1.0, 16.6, at - 0.4, 1.1) for at in range(11, 24, 2)]
    return [(box(10, 1, 14, 10), STEEL), (box(9.4, 1, 14.6, 3.6), DARK), (box(10, 3.6, 11.3, 10), LIGHT),
            *[(within(box(7.3, 10, 16.7, 19.4), each), STEEL) for each in threads], (body, STEEL),
            *[(within(body, each), DARK) for each in threads]]


def saw():
    teeth = [polygon(*[(12 + radius * math.cos(angle + turn), 12 + radius * math.sin(angle + turn))
                       for radius, turn in ((9.2, -0.24), (11.4, 0.2), (9.2, 0.24))])
             for angle in (math.tau * i / 14 for i in range(14))]
    slots = [line(12 + 5.2 * math.cos(a), 12 + 5.2 * math.sin(a), 12 + 7.2 * math.cos(a + 0.35), 12 + 7.2 * math.sin(a + 0.35),
                  0.9) for a in (math.tau * i / 4 + 0.4 for i in range(4))]
    plate = without(disc(12, 12, 9.5), disc(12, 12, 1.7), *slots)
    return [*[(each, DARK) for each in teeth], (plate, STEEL), (without(disc(12, 12, 4), disc(12, 12, 1.7)), LIGHT)]


def tool_path():
    path = [(3, 20), (8, 20), (8, 6), (13, 6), (13, 17), (18.6, 17), (18.6, 8.5)]
    lines = [line(*a, *b, 1.8) for a, b in zip(path, path[1:])]
    return [*[(each, BLUE) for each in lines], (polygon((15.4, 9), (21.8, 9), (18.6, 3.2)), BLUE), (disc(3.6, 20, 2.6), ORANGE)]


def pixel(shapes, x, y):
    total, covered = [0, 0, 0], 0
    for i in range(POINTS * POINTS):
        px, py = x + (i % POINTS + 0.5) / POINTS, y + (i // POINTS + 0.5) / POINTS
        colour = next((colour for shape, colour in reversed(shapes) if shape(px, py)), None)
        if colour:
            covered += 1
            total = [a + b for a, b in zip(total, colour)]
    if not covered:
        return bytes(4)
    red, green, blue = (round(channel / covered) for channel in total)
    return bytes((blue, green, red, round(255 * covered / POINTS**2)))


def main():
    images = [end_mill(), drill(), lathe_tool(), face_mill(), probe(), tap(), saw(), tool_path()]
    rows = [b"".join(pixel(shapes, x, y) for shapes in images for x in range(SIZE)) for y in range(SIZE)]
    bits = b"".join(reversed(rows))
    header = struct.pack("<IiiHHIIiiII", 40, SIZE * len(images), SIZE, 1, 32, 0, len(bits), 0, 0, 0, 0)
    with open(sys.argv[1], "wb") as file:
        file.write(struct.pack("<2sIHHI", b"BM", 14 + len(header) + len(bits), 0, 0, 14 + len(header)) + header + bits)


main()
