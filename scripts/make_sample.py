#!/usr/bin/env python3
"""Writes the sample document: a landscape at dusk, painted by arithmetic.

It shows what a document can hold: a pass-through folder, an isolated one that multiplies, masks (one
of them switched off), six blend modes, a hidden layer. The same bytes come out on every machine.

    make_sample.py OUT.tessel
"""

import json
import math
import os
import random
import struct
import sys
import uuid
import zipfile

WIDTH, HEIGHT = 960, 640
RGB16 = 3
NORMAL, MULTIPLY, SCREEN, OVERLAY, LIGHTEN, EXCLUSION = 0, 1, 2, 3, 5, 7
LAYER_FORMAT, MASK_FORMAT = 3, 4  # rgba16Float, r16Float
SUN_X, SUN_Y = 640, 318


def pixel(color, alpha=1.0):
    """A pixel's bytes: straight alpha, four half floats."""
    return struct.pack("<4e", *color, alpha)


def rgb(text):
    return tuple(int(text[i : i + 2], 16) / 255 for i in (0, 2, 4))


def mix(a, b, t):
    return tuple(x + (y - x) * t for x, y in zip(a, b))


def smooth(t):
    t = min(max(t, 0.0), 1.0)
    return t * t * (3 - 2 * t)


def gradient(stops, t):
    """The colour at `t` of a list of (position, colour), eased between neighbours."""
    for (p0, c0), (p1, c1) in zip(stops, stops[1:]):
        if t <= p1:
            return mix(c0, c1, smooth((t - p0) / (p1 - p0)))
    return stops[-1][1]


# Pictures are bytes, `HEIGHT` rows of `WIDTH` pixels. They are put together from whole rows and runs,
# because a loop over every pixel would take seconds.


def rows(pixel_of_row):
    return b"".join(pixel_of_row(y) * WIDTH for y in range(HEIGHT))


def radial(center_x, center_y, radius_x, radius_y, pixel_at):
    """`pixel_at(distance)` for distances from 0 at the centre to 1 on the ellipse, and beyond."""
    steps = 400
    far = math.hypot(max(center_x, WIDTH - center_x) / radius_x, max(center_y, HEIGHT - center_y) / radius_y)
    table = [pixel_at(i / steps) for i in range(int(far * steps) + 2)]
    squares = [((x + 0.5 - center_x) / radius_x) ** 2 for x in range(WIDTH)]
    sqrt = math.sqrt
    picture = []
    for y in range(HEIGHT):
        dy = ((y + 0.5 - center_y) / radius_y) ** 2
        picture.append(b"".join([table[int(sqrt(dx + dy) * steps)] for dx in squares]))
    return b"".join(picture)


def silhouette(ridge, color_at):
    """Everything below `ridge(x)`, in the colour of its row, with an antialiased edge."""
    heights = [ridge(x + 0.5) for x in range(WIDTH)]
    picture = bytearray(WIDTH * HEIGHT * 8)
    for y in range(max(0, int(min(heights)) - 1), HEIGHT):
        color = color_at(y)
        solid = pixel(color)
        row = []
        for height in heights:
            cover = y + 1 - height
            if cover >= 1:
                row.append(solid)
            elif cover <= 0:
                row.append(bytes(8))
            else:
                row.append(pixel(color, cover))
        picture[y * WIDTH * 8 : (y + 1) * WIDTH * 8] = b"".join(row)
        if y > max(heights) + 1:
            for below in range(y + 1, HEIGHT):
                picture[below * WIDTH * 8 : (below + 1) * WIDTH * 8] = pixel(color_at(below)) * WIDTH
            break
    return bytes(picture)


def waves(base, *parts):
    """A ridge line: a sum of sines given as (height, length, phase)."""
    return lambda x: base + sum(h * math.sin(x / length * 2 * math.pi + phase) for h, length, phase in parts)


def forest(ground, seed):
    """A ridge line with firs on it."""
    chance = random.Random(seed)
    trees = []
    x = -10.0
    while x < WIDTH + 10:
        trees.append((x, chance.uniform(16, 58), chance.uniform(0.13, 0.2)))
        x += chance.uniform(5, 17)

    def ridge(x):
        height = ground(x)
        top = height
        for place, size, slimness in trees:
            offset = abs(x - place)
            if offset < size * slimness:
                # Boughs: the crown widens in steps towards the ground.
                fall = offset / slimness
                top = min(top, height - size + fall + 2.2 * math.sin(fall * 0.9))
        return top

    return ridge


def stars(seed):
    chance = random.Random(seed)
    picture = bytearray(WIDTH * HEIGHT * 8)
    for _ in range(220):
        x, y = chance.randrange(1, WIDTH - 1), int(chance.random() ** 1.6 * 330) + 1
        light = chance.random() ** 3
        color = mix(rgb("ffe9c9"), rgb("d6e4ff"), chance.random())
        for dx, dy, share in ((0, 0, 1), (1, 0, 0.35), (-1, 0, 0.35), (0, 1, 0.35), (0, -1, 0.35)):
            at = ((y + dy) * WIDTH + x + dx) * 8
            picture[at : at + 8] = pixel(color, share * (0.25 + 0.75 * light))
    return bytes(picture)


def mosaic():
    """Squares of light, the hidden layer."""
    side = 80
    bright, dark = pixel(rgb("ffffff"), 0.5), bytes(8)
    even = (bright * side + dark * side) * (WIDTH // side // 2)
    odd = (dark * side + bright * side) * (WIDTH // side // 2)
    return b"".join((even if y // side % 2 == 0 else odd) for y in range(HEIGHT))


class Archive:
    """A document in the making: the nodes of the manifest and the pictures behind them."""

    def __init__(self):
        self.pictures = []

    def identity(self, name):
        return str(uuid.uuid5(uuid.NAMESPACE_DNS, "sample.orvanel/" + name)).upper()

    def node(self, kind, name, blend, opacity):
        return {
            "type": kind,
            "id": self.identity(name),
            "name": name,
            "opacity": opacity,
            "blendMode": blend,
            "isVisible": True,
            "isLocked": False,
            "hasPixelData": kind == "layer",
        }

    def layer(self, name, picture, blend=NORMAL, opacity=1.0, mask=None, mask_enabled=True, visible=True):
        node = self.node("layer", name, blend, opacity)
        node["isVisible"] = visible
        self.pictures.append((f"layers/{node['id']}.layerdata", LAYER_FORMAT, 8, picture))
        if mask is not None:
            node["mask"] = {"id": self.identity(name + " mask"), "isEnabled": mask_enabled}
            self.pictures.append((f"layers/{node['id']}.mask.layerdata", MASK_FORMAT, 2, mask))
        return node

    def folder(self, name, children, blend=NORMAL, opacity=1.0):
        node = self.node("folder", name, blend, opacity)
        node.update(isExpanded=True, children=children)
        return node

    def write(self, path, nodes, selected):
        moment = "2026-01-01T18:00:00Z"
        manifest = {
            "formatVersion": 3,
            "generator": "Orvanel 0.1",
            "metadata": {"createdAt": moment, "modifiedAt": moment},
            "document": {
                "name": "Dusk",
                "canvasWidth": WIDTH,
                "canvasHeight": HEIGHT,
                "colorMode": RGB16,
                "selectedNodeID": selected["id"],
                "foregroundColor": "DD8163",
                "backgroundColor": "FFFFFF",
            },
            "nodes": nodes,
        }
        os.makedirs(os.path.dirname(os.path.abspath(path)), exist_ok=True)
        temporary = path + ".part"
        with zipfile.ZipFile(temporary, "w", zipfile.ZIP_DEFLATED, compresslevel=4) as archive:

            def add(name, data):
                entry = zipfile.ZipInfo(name, (2026, 1, 1, 18, 0, 0))
                entry.compress_type = zipfile.ZIP_DEFLATED
                archive.writestr(entry, data)

            add("manifest.json", json.dumps(manifest, indent=2, sort_keys=True))
            for name, pixel_format, pixel_bytes, picture in self.pictures:
                header = struct.pack(
                    "<4sHHIIII", b"VKRM", 1, pixel_format, WIDTH, HEIGHT, WIDTH * pixel_bytes, 0
                )
                add(name, header + picture)
        os.replace(temporary, path)


def paint(path):
    document = Archive()

    sky = [
        (0.00, rgb("1d2750")),
        (0.22, rgb("3f3f77")),
        (0.42, rgb("94628f")),
        (0.58, rgb("dd8a80")),
        (0.72, rgb("f7c98c")),
        (1.00, rgb("fff0c9")),
    ]

    def mask_value(value):
        return struct.pack("<e", min(max(value, 0.0), 1.0))

    below_sun = rows(lambda y: mask_value(1.15 - y / 380))
    nodes = [
        document.layer("Sky", rows(lambda y: pixel(gradient(sky, y / HEIGHT)))),
        document.folder(
            "Light",
            [
                document.layer("Stars", stars(7), SCREEN, 0.9, mask=below_sun),
                document.layer(
                    "Glow",
                    radial(
                        SUN_X, SUN_Y, 430, 330, lambda d: pixel(rgb("ffb873"), 0.8 * smooth(1 - d) ** 1.6)
                    ),
                    SCREEN,
                ),
                document.layer(
                    "Sun",
                    radial(
                        SUN_X, SUN_Y, 62, 62, lambda d: pixel(rgb("fff3d6"), min(max((1 - d) * 62, 0), 1))
                    ),
                    # Clouds hide stripes of the disc.
                    mask=rows(
                        lambda y: mask_value(1 - 0.55 * smooth(math.sin(y / 7.5) * 2 - 0.6) * smooth((y - 310) / 60))
                    ),
                ),
            ],
        ),
        document.folder(
            "Ridges",
            [
                document.layer(
                    "Far ridge",
                    silhouette(
                        waves(402, (26, 520, 0.4), (11, 173, 1.9), (4, 61, 0.3)),
                        lambda y: mix(rgb("c8a3b4"), rgb("f6d9c2"), smooth((y - 370) / 120)),
                    ),
                ),
                document.layer(
                    "Middle ridge",
                    silhouette(
                        waves(452, (34, 690, 2.6), (13, 211, 0.2), (4, 47, 2.2)),
                        lambda y: mix(rgb("866f97"), rgb("d9b3ae"), smooth((y - 410) / 130)),
                    ),
                ),
                document.layer(
                    "Haze",
                    rows(lambda y: pixel(rgb("ffd9b8"), 0.55 * smooth((y - 400) / 70) * smooth((560 - y) / 90))),
                    LIGHTEN,
                    mask=radial(SUN_X, 470, 620, 260, lambda d: mask_value(smooth(1 - d))),
                ),
                document.layer(
                    "Near ridge",
                    silhouette(
                        waves(505, (24, 830, 4.4), (12, 257, 3.0), (3, 71, 1.0)),
                        lambda y: mix(rgb("50466f"), rgb("8d6f88"), smooth((y - 480) / 130)),
                    ),
                ),
            ],
            MULTIPLY,
            0.96,
        ),
        document.layer(
            "Forest",
            silhouette(
                forest(waves(585, (20, 1100, 1.2), (7, 340, 0.0)), 12),
                lambda y: mix(rgb("1a1c36"), rgb("0d1024"), smooth((y - 540) / 100)),
            ),
        ),
        document.layer(
            "Warmth",
            rows(lambda y: pixel(mix(rgb("7a6a9c"), rgb("f2a65e"), smooth(y / 420)))),
            OVERLAY,
            0.28,
            mask=radial(SUN_X, SUN_Y, 760, 620, lambda d: mask_value(1 - 0.8 * smooth(d))),
        ),
        document.layer(
            "Vignette",
            rows(lambda y: pixel(rgb("2a2340"))),
            MULTIPLY,
            0.5,
            mask=radial(WIDTH / 2, HEIGHT / 2, 660, 470, lambda d: mask_value(smooth((d - 0.45) / 0.6))),
        ),
        document.layer(
            "Mosaic",
            mosaic(),
            EXCLUSION,
            0.4,
            mask=rows(lambda y: mask_value(y / HEIGHT)),
            mask_enabled=False,
            visible=False,
        ),
    ]
    document.write(path, nodes, selected=nodes[3])


if __name__ == "__main__":
    if len(sys.argv) != 2:
        sys.exit(__doc__)
    paint(sys.argv[1])
