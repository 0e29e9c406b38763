#!/usr/bin/env python3
"""Packs the spinning cube: OUTDIR/demo.dpk from demo.xml beside this script.

    python3 build.py OUTDIR

Makes the meshes and the picture that demo.xml names. Needs nothing beyond Python 3.
"""
import os
import struct
import sys
import zlib

HERE = os.path.dirname(os.path.abspath(__file__))

LETTERS = {
    "a": (".###.", "#...#", "#...#", "#####", "#...#", "#...#", "#...#"),
    "b": ("####.", "#...#", "#...#", "####.", "#...#", "#...#", "####."),
    "c": (".####", "#....", "#....", "#....", "#....", "#....", ".####"),
    "e": ("#####", "#....", "#....", "####.", "#....", "#....", "#####"),
    "u": ("#...#", "#...#", "#...#", "#...#", "#...#", "#...#", ".###."),
}
DOT = (0.012, 0.016)  # one dot of a letter, in parts of a 4:3 screen


def envelope(content):
    """What documents and meshes lie in: their size, little-endian, and a zlib stream."""
    return struct.pack("<I", len(content)) + zlib.compress(content, 9)


def pack(entries):
    index, data, start = b"", b"", 3 + 40 * len(entries) + 32
    for name, content in entries.items():
        index += struct.pack(">32sII", name.encode(), start, start + len(content) - 1)
        data += content
        start += len(content)
    return b"DP\x01" + index + bytes(32) + data


def mesh(vertices, indices):
    """`vertices`: (position, texture coordinates, normal). One set of coordinates."""
    floats = [x for part in range(3) for vertex in vertices for x in vertex[part]]
    return envelope(struct.pack("<HH", len(vertices), 1) + struct.pack("<%df" % len(floats), *floats)
                    + struct.pack("<%dH" % len(indices), *indices))


def quads(corners):
    """Four vertices each, in turn; two triangles each."""
    indices = [4 * n + k for n in range(len(corners)) for k in (0, 1, 2, 0, 2, 3)]
    return mesh([vertex for four in corners for vertex in four], indices)


def cube():
    faces = []
    for normal, up in (((0, 0, 1), (0, 1, 0)), ((1, 0, 0), (0, 1, 0)), ((0, 0, -1), (0, 1, 0)),
                       ((-1, 0, 0), (0, 1, 0)), ((0, 1, 0), (0, 0, -1)), ((0, -1, 0), (0, 0, 1))):
        right = tuple(up[i - 2] * normal[i - 1] - up[i - 1] * normal[i - 2] for i in range(3))
        faces.append([(tuple(n + x * r + y * u for n, r, u in zip(normal, right, up)), ((1 + x) / 2, (1 - y) / 2), normal)
                      for x, y in ((-1, -1), (1, -1), (1, 1), (-1, 1))])
    return quads(faces)


def flat(left, top, right, bottom):
    """A rectangle for orthographic layers, where y grows downward."""
    return [((x, y, 0), uv, (0, 0, 1)) for x, y, uv in ((left, top, (0, 0)), (right, top, (1, 0)),
                                                        (right, bottom, (1, 1)), (left, bottom, (0, 1)))]


def letter(rows):
    (w, h) = DOT
    return quads([flat(x * w, y * h, (x + 1) * w, (y + 1) * h)
                  for y, row in enumerate(rows) for x, dot in enumerate(row) if dot == "#"])


def crate(size=128):
    """The side of a crate: a frame, planks, and a brace from the bottom left to the top right."""
    rows = b""
    for y in range(size):
        rows += b"\0"
        for x in range(size):
            edge = min(x, y, size - 1 - x, size - 1 - y)
            frame = edge < 14 or abs(x + y - size + 1) < 13
            light = 235 if frame else 190
            if edge in (0, 13) or abs(abs(x + y - size + 1) - 13) < 2 and edge > 13 or not frame and x % 20 < 2:
                light = 110
            light += (x * 7 + y // 9 * 31) % 11 - 5
            rows += bytes((light, light * 3 // 4, light // 2))

    def chunk(kind, content):
        return struct.pack(">I", len(content)) + kind + content + struct.pack(">I", zlib.crc32(kind + content))

    return (b"\x89PNG\r\n\x1a\n" + chunk(b"IHDR", struct.pack(">IIBBBBB", size, size, 8, 2, 0, 0, 0))
            + chunk(b"IDAT", zlib.compress(rows, 9)) + chunk(b"IEND", b""))


def main():
    if len(sys.argv) != 2:
        sys.exit("usage: build.py OUTDIR")
    with open(os.path.join(HERE, "demo.xml"), "rb") as file:
        entries = {"demo.xmlz": envelope(file.read())}
    entries.update({"cube.mesh": cube(), "screen.mesh": quads([flat(0, 0, 1, 1)]), "crate.png": crate()})
    entries.update({"letter_%s.mesh" % name: letter(rows) for name, rows in LETTERS.items()})
    os.makedirs(sys.argv[1], exist_ok=True)
    with open(os.path.join(sys.argv[1], "demo.dpk"), "wb") as file:
        file.write(pack(entries))


if __name__ == "__main__":
    main()
