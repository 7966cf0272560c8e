#!/usr/bin/env python3
"""Draws the images of the window shell: the tab close marks, the side bar's
file and folder icons (images/, at 1x and @2x, one per icon variant) and the
program icon (icon/Icon.png).

Run from anywhere: python3 src/resources/draw_shell_images.py. The output is
deterministic, so rerunning it leaves the committed PNGs unchanged.

Each image is a stack of filled shapes given in 1x units. A pixel's coverage
of a shape is sampled on a grid, so edges are anti-aliased at any scale.
"""

import math
import os
import struct
import zlib

HERE = os.path.dirname(os.path.abspath(__file__))
IMAGES = os.path.join(HERE, "images")
ICON = os.path.join(HERE, "icon")

SAMPLES = 6  # per axis, per pixel

# Light marks for dark themes and the reverse. The tab marks sit on the tab
# colours, the side bar icons on the tree's background.
VARIANTS = {
    "Dark": {"mark": (0xD6, 0xD6, 0xD6), "unsaved": (0xE8, 0xB0, 0x40),
             "line": (0xC8, 0xC8, 0xC8), "paper": (0x3A, 0x3A, 0x3A),
             "folder": (0xD9, 0xA4, 0x41), "folder_back": (0xB0, 0x80, 0x2C)},
    "Light": {"mark": (0x4F, 0x4F, 0x4F), "unsaved": (0xC0, 0x70, 0x10),
              "line": (0x60, 0x60, 0x60), "paper": (0xFF, 0xFF, 0xFF),
              "folder": (0xE8, 0xB8, 0x50), "folder_back": (0xC8, 0x94, 0x30)},
}


# Shapes: functions of a point (1x units) that say whether it is inside.

def segment_distance(px, py, ax, ay, bx, by):
    dx, dy = bx - ax, by - ay
    length2 = dx * dx + dy * dy
    t = 0.0 if length2 == 0 else max(0.0, min(1.0, ((px - ax) * dx + (py - ay) * dy) / length2))
    return math.hypot(px - (ax + t * dx), py - (ay + t * dy))


def stroke(points, width, closed=False):
    pts = list(points) + ([points[0]] if closed else [])
    segments = list(zip(pts, pts[1:]))
    half = width / 2
    return lambda x, y: any(segment_distance(x, y, *a, *b) <= half for a, b in segments)


def circle(cx, cy, r):
    return lambda x, y: (x - cx) ** 2 + (y - cy) ** 2 <= r * r


def rounded_rect(x0, y0, x1, y1, r):
    def inside(x, y):
        if not (x0 <= x <= x1 and y0 <= y <= y1):
            return False
        nx = min(max(x, x0 + r), x1 - r)
        ny = min(max(y, y0 + r), y1 - r)
        return (x - nx) ** 2 + (y - ny) ** 2 <= r * r
    return inside


def polygon(points):
    def inside(x, y):
        result = False
        j = len(points) - 1
        for i, (xi, yi) in enumerate(points):
            xj, yj = points[j]
            if (yi > y) != (yj > y) and x < (xj - xi) * (y - yi) / (yj - yi) + xi:
                result = not result
            j = i
        return result
    return inside


def render(width, height, scale, layers):
    """layers: (shape, (r, g, b), alpha 0..1), painted in order."""
    w, h = width * scale, height * scale
    pixels = [[(0.0, 0.0, 0.0, 0.0)] * w for _ in range(h)]
    offsets = [(i + 0.5) / SAMPLES for i in range(SAMPLES)]
    for shape, rgb, alpha in layers:
        for y in range(h):
            row = pixels[y]
            for x in range(w):
                hits = sum(1 for sy in offsets for sx in offsets
                           if shape((x + sx) / scale, (y + sy) / scale))
                if not hits:
                    continue
                a = alpha * hits / (SAMPLES * SAMPLES)
                r0, g0, b0, a0 = row[x]
                out = a + a0 * (1 - a)
                mix = [(c * a + c0 * a0 * (1 - a)) / out for c, c0 in zip(rgb, (r0, g0, b0))]
                row[x] = (mix[0], mix[1], mix[2], out)
    return pixels


def png(pixels):
    height, width = len(pixels), len(pixels[0])
    raw = bytearray()
    for row in pixels:
        raw.append(0)  # no filter
        for r, g, b, a in row:
            raw += bytes([round(r), round(g), round(b), round(a * 255)])

    def chunk(kind, data):
        body = kind + data
        return struct.pack(">I", len(data)) + body + struct.pack(">I", zlib.crc32(body))

    header = struct.pack(">IIBBBBB", width, height, 8, 6, 0, 0, 0)  # 8-bit RGBA
    return (b"\x89PNG\r\n\x1a\n" + chunk(b"IHDR", header)
            + chunk(b"IDAT", zlib.compress(bytes(raw), 9)) + chunk(b"IEND", b""))


# The images, 16 by 16 at 1x.

def close_x(c):
    return [(stroke([(4.5, 4.5), (11.5, 11.5)], 1.5), c["mark"], 1.0),
            (stroke([(11.5, 4.5), (4.5, 11.5)], 1.5), c["mark"], 1.0)]


def close_o(c):
    # A dot says "unsaved" until the pointer is on the button.
    return [(circle(8, 8, 3.6), c["unsaved"], 1.0)]


def file_icon(c):
    outline = [(3.5, 1.5), (9.5, 1.5), (12.5, 4.5), (12.5, 14.5), (3.5, 14.5)]
    return [(polygon(outline), c["paper"], 1.0),
            (stroke(outline, 1.0, closed=True), c["line"], 1.0),
            (stroke([(9.5, 1.5), (9.5, 4.5), (12.5, 4.5)], 1.0), c["line"], 1.0),
            (stroke([(5.5, 7.5), (10.5, 7.5)], 1.0), c["line"], 0.7),
            (stroke([(5.5, 10.0), (10.5, 10.0)], 1.0), c["line"], 0.7),
            (stroke([(5.5, 12.5), (8.5, 12.5)], 1.0), c["line"], 0.7)]


def folder_icon(c):
    return [(polygon([(1, 3), (6, 3), (7.5, 4.5), (15, 4.5), (15, 13.5), (1, 13.5)]),
             c["folder_back"], 1.0),
            (rounded_rect(1, 6, 15, 13.5, 0.8), c["folder"], 1.0)]


def folder_opened_icon(c):
    return [(polygon([(1, 3), (6, 3), (7.5, 4.5), (13.5, 4.5), (13.5, 7), (1, 7)]),
             c["folder_back"], 1.0),
            (polygon([(1, 3.5), (2, 3.5), (2, 13.5), (1, 13.5)]), c["folder_back"], 1.0),
            (polygon([(3.6, 7), (15.6, 7), (13.2, 13.5), (1, 13.5)]), c["folder"], 1.0)]


SHAPES = [
    ("Close File X- Windows- {}", close_x),
    ("Close File O- {}", close_o),
    ("File - {}", file_icon),
    ("Folder - {}", folder_icon),
    ("Folder Opened - {}", folder_opened_icon),
]


def program_icon():
    """A table of three columns under a blue header row, on a rounded tile."""
    size = 64
    layers = [(rounded_rect(2, 2, 62, 62, 12), (0x1F, 0x5F, 0x8F), 1.0),
              (rounded_rect(11, 13, 53, 51, 3), (0xF4, 0xF7, 0xFA), 1.0),
              (rounded_rect(11, 13, 53, 23, 3), (0x5C, 0xC8, 0xE8), 1.0),
              (polygon([(11, 19), (53, 19), (53, 23), (11, 23)]), (0x5C, 0xC8, 0xE8), 1.0)]
    grid = (0x1F, 0x5F, 0x8F)
    for x in (25, 39):
        layers.append((stroke([(x, 23.8), (x, 51)], 1.6), grid, 0.8))
    for y in (32.3, 41.6):
        layers.append((stroke([(11, y), (53, y)], 1.6), grid, 0.8))
    return size, layers


def write(path, data):
    with open(path, "wb") as f:
        f.write(data)


def main():
    os.makedirs(IMAGES, exist_ok=True)
    os.makedirs(ICON, exist_ok=True)
    for pattern, draw in SHAPES:
        for variant, colours in VARIANTS.items():
            for scale in (1, 2):
                suffix = "" if scale == 1 else "@2x"
                pixels = render(16, 16, scale, draw(colours))
                write(os.path.join(IMAGES, pattern.format(variant) + suffix + ".png"), png(pixels))
    size, layers = program_icon()
    write(os.path.join(ICON, "Icon.png"), png(render(size, size, 4, layers)))


if __name__ == "__main__":
    main()
