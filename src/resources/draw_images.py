#!/usr/bin/env python3
"""Draws the style sheet's images into images/, at 1x and @2x.

Run from anywhere: python3 src/resources/draw_images.py. The output is
deterministic, so rerunning it leaves the committed PNGs unchanged.

Shapes are stroked polylines with round ends, anti-aliased by sampling each
pixel on a grid. Only the stroke is drawn: the boxes around the marks come
from the style sheet, in the theme's colours.
"""

import math
import os
import struct
import zlib

HERE = os.path.dirname(os.path.abspath(__file__))
OUT = os.path.join(HERE, "images")

# Mark colours per icon variant: light marks for dark themes and the reverse.
# Check marks sit on SelectedItemColor, arrows on input and button colours.
VARIANTS = {
    "Dark": {"mark": (0xFF, 0xFF, 0xFF), "arrow": (0xD6, 0xD6, 0xD6)},
    "Light": {"mark": (0x26, 0x26, 0x26), "arrow": (0x4F, 0x4F, 0x4F)},
}

SAMPLES = 8  # per axis, per pixel


def segment_distance(px, py, ax, ay, bx, by):
    dx, dy = bx - ax, by - ay
    length2 = dx * dx + dy * dy
    t = 0.0 if length2 == 0 else max(0.0, min(1.0, ((px - ax) * dx + (py - ay) * dy) / length2))
    return math.hypot(px - (ax + t * dx), py - (ay + t * dy))


def stroke(width, height, points, line_width, scale):
    """Coverage 0..1 per pixel of a polyline given in 1x units."""
    pts = [(x * scale, y * scale) for x, y in points]
    half = line_width * scale / 2
    segments = list(zip(pts, pts[1:]))
    coverage = []
    for y in range(height * scale):
        row = []
        for x in range(width * scale):
            inside = 0
            for sy in range(SAMPLES):
                for sx in range(SAMPLES):
                    px = x + (sx + 0.5) / SAMPLES
                    py = y + (sy + 0.5) / SAMPLES
                    if any(segment_distance(px, py, *a, *b) <= half for a, b in segments):
                        inside += 1
            row.append(inside / (SAMPLES * SAMPLES))
        coverage.append(row)
    return coverage


def png(coverage, rgb):
    height, width = len(coverage), len(coverage[0])
    raw = bytearray()
    for row in coverage:
        raw.append(0)  # no filter
        for c in row:
            raw += bytes(rgb) + bytes([round(c * 255)])

    def chunk(kind, data):
        body = kind + data
        return struct.pack(">I", len(data)) + body + struct.pack(">I", zlib.crc32(body))

    header = struct.pack(">IIBBBBB", width, height, 8, 6, 0, 0, 0)  # 8-bit RGBA
    return (b"\x89PNG\r\n\x1a\n" + chunk(b"IHDR", header)
            + chunk(b"IDAT", zlib.compress(bytes(raw), 9)) + chunk(b"IEND", b""))


# Name pattern, colour key, size at 1x, polyline, line width. The check box
# indicator is 15 px with a 1 px border, leaving 13 px for the mark.
SHAPES = [
    ("Check Box- {} Checked", "mark", (13, 13), [(3.0, 6.8), (5.5, 9.3), (10.0, 3.8)], 1.8),
    ("Check Box- {} Indeterminate", "mark", (13, 13), [(3.5, 6.5), (9.5, 6.5)], 1.8),
    ("ComboBox- {}", "arrow", (10, 6), [(1.5, 1.2), (5.0, 4.7), (8.5, 1.2)], 1.5),
    ("SpinBox Up- {}", "arrow", (8, 5), [(1.2, 3.8), (4.0, 1.0), (6.8, 3.8)], 1.4),
    ("SpinBox Down- {}", "arrow", (8, 5), [(1.2, 1.2), (4.0, 4.0), (6.8, 1.2)], 1.4),
]


def main():
    os.makedirs(OUT, exist_ok=True)
    for pattern, colour_key, (width, height), points, line_width in SHAPES:
        for scale in (1, 2):
            coverage = stroke(width, height, points, line_width, scale)
            for variant, colours in VARIANTS.items():
                suffix = "" if scale == 1 else "@2x"
                path = os.path.join(OUT, pattern.format(variant) + suffix + ".png")
                with open(path, "wb") as f:
                    f.write(png(coverage, colours[colour_key]))


if __name__ == "__main__":
    main()
