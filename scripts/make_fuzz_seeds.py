#!/usr/bin/env python3
"""Writes seeds for the fuzzers: small, valid and nearly valid inputs to start from.

    make_fuzz_seeds.py FOLDER

Each fuzzer fuzz_<name> has its seeds in FOLDER/<name>.
"""

import io
import json
import os
import struct
import sys
import zipfile
import zlib

LAYER = "3F2504E0-4F89-41D3-9A0C-0305E82C3301"
FOLDER = "6FA459EA-EE8A-4CA4-894E-DB77E160355E"
MASK = "16FD2706-8BAF-433B-82EB-8C7FADA847DA"
# Pixel format codes and bytes per pixel: two grey modes, two colour modes, masks.
FORMATS = {0: 2, 1: 4, 2: 4, 3: 8, 4: 2}


def layerdata(code, width, height, payload=None, magic=b"VKRM", version=1, stride=None):
    pixel_bytes = FORMATS.get(code, 8)
    stride = width * pixel_bytes if stride is None else stride
    header = struct.pack("<4sHHIIII", magic, version, code, width, height, stride, 0)
    if payload is None:
        payload = bytes((i * 37) & 255 for i in range(width * height * pixel_bytes))
    return header + payload


def layer(**changes):
    node = {
        "type": "layer",
        "id": LAYER,
        "name": "Layer",
        "opacity": 0.5,
        "blendMode": 1,
        "isVisible": True,
        "isLocked": False,
        "hasPixelData": True,
    }
    node.update(changes)
    return node


def folder(children, **changes):
    node = layer(type="folder", id=FOLDER, name="Folder", hasPixelData=False, isExpanded=True)
    node["children"] = children
    node.update(changes)
    return node


def manifest(nodes, mode=3, width=4, height=3, version=3, **document):
    values = {"name": "Seed", "canvasWidth": width, "canvasHeight": height, "colorMode": mode}
    values.update(document)
    moment = "2026-01-01T18:00:00Z"
    return {
        "formatVersion": version,
        "generator": "Orvanel 0.1",
        "metadata": {"createdAt": moment, "modifiedAt": moment},
        "document": values,
        "nodes": nodes,
    }


def text(value):
    return json.dumps(value, indent=2, sort_keys=True).encode()


def nested(depth):
    node = layer()
    for _ in range(depth):
        node = folder([node])
    return node


def archive(manifest_bytes, entries, method=zipfile.ZIP_DEFLATED, start=0):
    """`start` is the number of bytes that will stand before it in its file."""
    data = io.BytesIO(bytes(start))
    data.seek(start)
    with zipfile.ZipFile(data, "a" if start else "w", method) as out:
        for name, content in [("manifest.json", manifest_bytes), *entries]:
            out.writestr(zipfile.ZipInfo(name, (2026, 1, 1, 0, 0, 0)), content, method)
    return data.getvalue()[start:]


def manifests():
    masked = layer(mask={"id": MASK, "isEnabled": False})
    yield "empty", text(manifest([]))
    yield "layer", text(manifest([layer()], selectedNodeID=LAYER, foregroundColor="DD8163"))
    yield "tree", text(manifest([folder([masked, layer()]), layer(blendMode=99)], backgroundColor="+12345"))
    yield "deep", text(manifest([nested(12)]))
    yield "version", text(manifest([], version=2))
    yield "types", text(manifest([layer(opacity="1", blendMode=1.5, isVisible=1, id=None)], mode=-1))
    yield "numbers", text(manifest([layer(opacity=1e308)], width=2**63, height=-1))
    yield "escapes", b'{"formatVersion":3,"document":{"name":"\\ud800\\u0000\xff"},"nodes":[null]}'
    yield "nesting", b"[" * 600 + b"]" * 600
    yield "cut", text(manifest([layer()]))[:-9]


def layerdatas():
    for code in FORMATS:
        yield f"format{code}", layerdata(code, 3, 2)
    yield "unknown", layerdata(9, 3, 2)
    yield "magic", layerdata(3, 3, 2, magic=b"MRKV")
    yield "huge", layerdata(3, 0xFFFFFFFF, 0xFFFFFFFF, payload=b"", stride=0)
    yield "short", layerdata(2, 3, 2)[:-1]
    yield "header", layerdata(2, 3, 2)[:23]


def archives():
    name = f"layers/{LAYER}.layerdata"
    mask_name = f"layers/{LAYER}.mask.layerdata"
    masked = layer(mask={"id": MASK, "isEnabled": True})
    for mode in range(4):
        content = text(manifest([folder([masked])], mode=mode))
        entries = [(name, layerdata(mode, 4, 3)), (mask_name, layerdata(4, 4, 3))]
        yield f"mode{mode}", archive(content, entries)
    content = text(manifest([layer()], mode=0, width=130, height=129))
    yield "tiles", archive(content, [(name, layerdata(0, 130, 129))])
    content = text(manifest([layer()]))
    yield "stored", archive(content, [(name, layerdata(3, 4, 3))], zipfile.ZIP_STORED)
    yield "missing", archive(content, [])
    yield "other", archive(content, [(name, layerdata(2, 5, 3)), ("preview.png", b"\x89PNG")])
    yield "empty", archive(text(manifest([])), [])
    whole = archive(content, [(name, layerdata(3, 4, 3))])
    yield "cut", whole[: len(whole) // 2]


def png(width, height, claimed=None):
    def chunk(kind, content):
        return struct.pack(">I", len(content)) + kind + content + struct.pack(">I", zlib.crc32(kind + content))

    header = struct.pack(">IIBBBBB", *(claimed or (width, height)), 8, 6, 0, 0, 0)
    rows = zlib.compress((b"\0" + bytes(4 * width)) * height)
    return b"\x89PNG\r\n\x1a\n" + chunk(b"IHDR", header) + chunk(b"IDAT", rows) + chunk(b"IEND", b"")


def previews():
    content = text(manifest([]))
    yield "whole", archive(content, [("preview.png", png(9, 7))], zipfile.ZIP_STORED)
    yield "deflated", archive(content, [("preview.png", png(300, 2))])
    yield "bomb", archive(content, [("preview.png", png(2, 2, (60000, 60000)))])
    yield "cut", archive(content, [("preview.png", png(9, 7)[:-20])])
    yield "none", archive(content, [])


def scripts():
    """Every command, in runs that do something; what stands in one may be put in another."""
    def script(*steps):
        return json.dumps([{"do": name, **arguments} for name, arguments in steps]).encode()

    yield "empty", script()
    yield "tree", script(
        ("addLayer", {"name": "a"}), ("addFolder", {"name": "F"}), ("addLayer", {"name": "b"}),
        ("moveNode", {"node": "a", "into": "F"}), ("moveNode", {"node": "b", "parent": None, "index": 0}),
        ("moveNode", {"node": "a", "parent": "F", "index": 1}), ("select", {"node": "a"}),
        ("set", {"name": "c", "opacity": 0.5, "blendMode": 3, "isVisible": False, "isLocked": False}),
        ("duplicateNode", {}), ("removeNode", {}), ("undo", {"count": 3}), ("redo", {"count": 2}))
    yield "pixels", script(
        ("rectangle", {"x": 10, "y": 3, "width": 90, "height": 20, "feather": 2}),
        ("fill", {"color": [1, 0.5, 0, 0.8]}), ("copy", {}), ("paste", {}), ("cut", {}), ("paste", {}),
        ("invert", {}), ("levels", {"black": 10, "white": 240, "gamma": 1.5}), ("clear", {}), ("deselect", {}),
        ("move", {"dx": 130, "dy": -5}), ("rotate", {"angle": 30}), ("scale", {"to": [2, 3, 50, 20]}),
        ("transform", {"matrix": [1, 0.2, -0.1, 2, 5, -3]}))
    yield "masks", script(
        ("rectangle", {"x": 10, "y": 3, "width": 90, "height": 20}), ("addMask", {}), ("editMask", {"on": True}),
        ("fill", {"color": [0.5, 0.5, 0.5, 1]}), ("set", {"maskEnabled": False}), ("selectMask", {}),
        ("move", {"dx": 3, "dy": 3}), ("editMask", {"on": False}), ("move", {"dx": 300, "dy": 3}),
        ("applyMask", {}), ("addMask", {}), ("removeMask", {}))
    yield "selections", script(
        ("selectAll", {}), ("ellipse", {"cx": 60, "cy": 12, "rx": 40, "ry": 9.5, "mode": "subtract"}),
        ("polygon", {"points": [[0, 0], [130, 2], [70, 29.5]], "mode": "intersect"}), ("invertSelection", {}),
        ("wand", {"x": 5, "y": 5, "tolerance": 20, "contiguous": False, "antialiased": True,
                  "sampleAllLayers": True, "mode": "add"}),
        ("selectTransparency", {}), ("selectChannel", {"index": 3}), ("fill", {"color": [0, 0, 1, 1]}))
    yield "canvas", script(
        ("imageSize", {"width": 200, "height": 33, "method": 0}), ("undo", {}),
        ("canvasSize", {"width": 100, "height": 140, "anchorX": -1, "anchorY": 1}),
        ("rectangle", {"x": 10, "y": 3, "width": 50, "height": 20}), ("fill", {"color": [1, 1, 1, 0.5]}),
        ("crop", {}), ("trim", {}), ("colorMode", {"mode": 1}), ("colorMode", {"mode": 2}), ("undo", {"count": 4}))
    yield "wrong", script(("fill", {"color": [1, 2]}), ("nothing", {}), ("undo", {"count": 0}))


def tiff(entries, order="<"):
    """A directory of entries, each a tag, a type and values of 16 or 32 bits."""
    formats = {3: "H", 4: "I"}
    start = 8 + 2 + 12 * len(entries) + 4
    head = struct.pack(order + "2sHI", b"II" if order == "<" else b"MM", 42, 8)
    head += struct.pack(order + "H", len(entries))
    body = b""
    for tag, kind, values in entries:
        packed = struct.pack(f"{order}{len(values)}{formats[kind]}", *values)
        head += struct.pack(order + "HHI", tag, kind, len(values))
        if len(packed) <= 4:
            head += packed.ljust(4, b"\0")
        else:
            head += struct.pack(order + "I", start + len(body))
            body += packed
    return head + bytes(4) + body + bytes(64)


def image_headers():
    yield "png", png(9, 7)
    yield "tall", png(1, 1, (1, 0x7FFFFFFF))
    for order in "<>":
        grey = [(256, 4, [4]), (257, 4, [3]), (258, 3, [16]), (259, 3, [1]), (262, 3, [1]), (273, 4, [120]),
                (277, 3, [1]), (278, 4, [3]), (279, 4, [24])]
        colors = [(256, 3, [4]), (257, 3, [3]), (258, 3, [8, 8, 8, 8]), (262, 3, [2]), (277, 3, [4]),
                  (338, 3, [2]), (339, 3, [1, 1, 1, 1])]
        palette = [(256, 3, [4]), (257, 3, [3]), (258, 3, [8]), (262, 3, [3]), (320, 3, [0] * 768)]
        for name, entries in (("grey", grey), ("colors", colors), ("palette", palette)):
            yield f"tiff-{name}-{'little' if order == '<' else 'big'}", tiff(entries, order)
    yield "gif", (b"GIF89a" + struct.pack("<HHBBB", 4, 3, 0x80, 0, 0) + bytes(6) +
                  b"!\xF9\x04\x01\0\0\0\0" + b"," + struct.pack("<HHHHB", 0, 0, 4, 3, 0) +
                  b"\x02\x02\x84\x51\0;")
    yield "bmp", b"BM" + struct.pack("<IIIIiiHHIIiiII", 70, 0, 54, 40, 2, 2, 1, 24, 0, 16, 2835, 2835, 0, 0) + bytes(16)
    yield "jpeg", (b"\xFF\xD8\xFF\xE0\0\x10JFIF\0\1\1\1\0\x48\0\x48\0\0" +
                   b"\xFF\xC0\0\x0B\x08\0\3\0\4\1\1\x11\0" + b"\xFF\xDA\0\x08\1\1\0\0\x3F\0" + b"abc\xFF\0\xFF\xD9")
    yield "webp", b"RIFF" + struct.pack("<I", 20) + b"WEBPVP8L" + struct.pack("<I", 8) + b"\x2F" + bytes(7)
    yield "svg", (b'<?xml version="1.0"?><!DOCTYPE svg [<!ENTITY a "b">]><svg xmlns="http://www.w3.org/2000/svg" '
                  b'xmlns:xlink="http://www.w3.org/1999/xlink" width="9" height="9"><style>@import "a.css";</style>'
                  b'<image xlink:href="data:image/png;base64,iVBORw0KGgo="/><use xlink:href="#a"/>&a;</svg>')


def palettes():
    for bits in range(4):
        yield f"bits{bits}", bytes([11, 5, bits, 2, bits % 2]) + bytes((i * 29) & 255 for i in range(120))


def lz4(data):
    """One block of literals."""
    size = len(data)
    token, more = (size << 4, b"") if size < 15 else (15 << 4, b"\xff" * ((size - 15) // 255) + bytes([(size - 15) % 255]))
    return bytes([token]) + more + data


def sized(data):
    return struct.pack("<I", len(data)) + data


def journal_record(sequence, content, tiles=b"", name=b"Seed", base=b""):
    """A record whose contents are the given manifest, stored tiles and surfaces."""
    manifest_bytes, sizes, surfaces, gone = content
    contents = sized(name) + sized(b"") + struct.pack("<BIIB", 0, 4, 3, bool(base)) + base
    contents += struct.pack("<I", len(manifest_bytes)) + sized(lz4(manifest_bytes) if manifest_bytes else b"\0")
    contents += sized(png(9, 7) if sequence == 0 else b"")
    contents += struct.pack("<I", len(sizes)) + b"".join(struct.pack("<IB", *size) for size in sizes)
    contents += struct.pack("<I", len(surfaces))
    for path, pixel_format, is_new, runs in surfaces:
        contents += sized(path.encode()) + struct.pack("<HBI", pixel_format, is_new, len(runs))
        contents += b"".join(struct.pack("<IIBIQ", *run) for run in runs)
    contents += struct.pack("<I", len(gone)) + b"".join(sized(path.encode()) for path in gone)
    header = struct.pack("<4sHHQQqQIII", b"ORJR", 2, min(sequence, 1), 7, sequence, 1, len(tiles), len(contents),
                         zlib.crc32(tiles), zlib.crc32(contents)) + bytes(8)
    return header + struct.pack("<I", zlib.crc32(header)) + tiles + contents


def journal_base(path, start, data):
    """The document as the file that the journal itself is, `start` bytes behind its beginning."""
    with zipfile.ZipFile(io.BytesIO(data)) as read:
        entry = read.getinfo(path)
    at = entry.header_offset + 30 + len(entry.filename)
    packed = data[at : at + entry.compress_size]
    base = sized(b"/proc/self/fd/99") + struct.pack("<QQqqqI", 1, 2, 3, 4, 5, 1)
    base += struct.pack("<I", 1) + sized(path.encode()) + struct.pack("<HIII", 70, 4, 3, 1)
    return base + struct.pack("<QIIII", start + at, len(packed), entry.file_size, entry.CRC, zlib.crc32(packed))


def journal_with_base(path, content, surfaces):
    """A journal that leaves tiles to a document, and that document behind it."""
    entries = [(path, layerdata(2, 4, 3))]
    document = archive(content, entries)

    def journal(start):
        return journal_record(0, (content, [], surfaces, []), base=journal_base(path, start, document))

    start = len(journal(0))
    return journal(start) + archive(content, entries, start=start)


def journals():
    path = f"layers/{LAYER}.layerdata"
    mask_path = f"layers/{LAYER}.mask.layerdata"
    content = text(manifest([layer()], mode=2))
    masked = text(manifest([folder([layer(mask={"id": MASK, "isEnabled": True})])], mode=2))
    tile = lz4(bytes(128 * 128 * 4))
    stored = [(0, 1, 1, 0, 0)]
    uniform = [(0, 1, 0, 0, 0xFF00FF00)]
    first = journal_record(0, (content, [], [(path, 70, 1, uniform)], []))
    yield "uniform", first
    yield "stored", journal_record(0, (content, [(len(tile), 4)], [(path, 70, 1, stored)], []), tile)
    later = journal_record(1, (masked, [], [(mask_path, 25, 1, uniform)], []))
    last = journal_record(2, (content, [], [(path, 70, 0, uniform)], [mask_path]))
    yield "changes", first + later + last
    yield "cut", (first + later)[:-9]
    yield "missing", journal_record(0, (content, [], [], []))
    left = journal_with_base(path, content, [(path, 70, 1, [(0, 1, 2, 0, 0)])])
    yield "base", left
    # The chunk has another sum, so that the document has to stand in for it.
    at = left.index(struct.pack("<I", zlib.crc32(layerdata(2, 4, 3)))) + 4
    yield "later", left[:at] + bytes(4) + left[at + 4 :]


def main(root):
    fuzzers = {
        "manifest": manifests,
        "layerdata": layerdatas,
        "archive": archives,
        "preview": previews,
        "journal": journals,
        "script": scripts,
        "imageheader": image_headers,
        "palette": palettes,
    }
    for fuzzer, seeds in fuzzers.items():
        place = os.path.join(root, fuzzer)
        os.makedirs(place, exist_ok=True)
        for name, content in seeds():
            with open(os.path.join(place, name), "wb") as file:
                file.write(content)


if __name__ == "__main__":
    if len(sys.argv) != 2:
        sys.exit(__doc__)
    main(sys.argv[1])
