"""The bytes of packs and of what lies in them, for all tests that are written in Python.

Written with struct and zlib alone: what a program of ours reads or writes is compared with the format,
not with another program of ours. production.py makes whole shows of it.
"""
import math
import struct
import zlib


def pack_bytes(entries):
    """A pack of these entries in their order: name -> content, or pairs, which may repeat a name.

    Names are texts, or bytes where a test wants them odd; what is longer than 32 bytes is cut.
    """
    pairs = list(entries.items() if isinstance(entries, dict) else entries)
    at = 3 + 40 * len(pairs) + 32
    index, data = b'', b''
    for name, content in pairs:
        name = name if isinstance(name, bytes) else name.encode()
        index += struct.pack('>32sII', name, at, at + len(content) - 1)  # an empty one ends before it begins
        data += content
        at += len(content)
    return b'DP\x01' + index + bytes(32) + data


def in_envelope(content, size=None):
    """What documents and meshes lie in: their size, and a zlib stream. `size` is one that is not theirs."""
    return struct.pack('<I', len(content) if size is None else size) + zlib.compress(content, 9)


# ---- meshes, without their envelope ---------------------------------------------------------------

def mesh_bytes(positions, coordinates, indices, normals=None, sets=1):
    """Points are (x, y, z), coordinates (u, v), the same for every set; without normals all look along z."""
    floats = [c for p in positions for c in p] + [c for uv in coordinates for c in uv] * sets
    floats += [c for n in normals or [(0, 0, 1)] * len(positions) for c in n]
    return (struct.pack('<HH', len(positions), sets) + struct.pack('<%df' % len(floats), *floats)
            + struct.pack('<%dH' % len(indices), *indices))


def quad(left=0, top=0, right=1, bottom=1, z=0):
    """The whole target of an orthographic layer, whose y grows downward, or a part of it."""
    return mesh_bytes([(left, top, z), (right, top, z), (right, bottom, z), (left, bottom, z)],
                      [(0, 0), (1, 0), (1, 1), (0, 1)], [0, 1, 2, 0, 2, 3])


def plate(side):
    """Triangles on a grid of side x side squares, from -1 to 1 in x and y."""
    step = 2 / side
    positions = [(-1 + x * step, -1 + y * step, 0) for y in range(side + 1) for x in range(side + 1)]
    indices = []
    for y in range(side):
        for x in range(side):
            k = y * (side + 1) + x
            indices += [k, k + 1, k + side + 2, k, k + side + 2, k + side + 1]
    return mesh_bytes(positions, [(0, 0)] * len(positions), indices)


def sphere(rings=12, sectors=24, sets=1):
    """Of radius 1; u goes round, v from the top down."""
    points = [(math.sin(math.pi * r / rings) * math.cos(2 * math.pi * s / sectors), math.cos(math.pi * r / rings),
               math.sin(math.pi * r / rings) * math.sin(2 * math.pi * s / sectors))
              for r in range(rings + 1) for s in range(sectors + 1)]
    coordinates = [(s / sectors, r / rings) for r in range(rings + 1) for s in range(sectors + 1)]
    indices = []
    for r in range(rings):
        for s in range(sectors):
            a, b = r * (sectors + 1) + s, (r + 1) * (sectors + 1) + s
            indices += [a, a + 1, b, a + 1, b + 1, b]
    return mesh_bytes(points, coordinates, indices, normals=points, sets=sets)


# ---- pictures -------------------------------------------------------------------------------------

def png(width, height, rgb=(255, 255, 255), level=1):
    """A picture of one colour, or of `rgb` as packed rows."""
    rows = bytes(rgb) * (width * height) if len(rgb) == 3 else rgb
    raw = b''.join(b'\0' + rows[3 * width * y:3 * width * (y + 1)] for y in range(height))

    def chunk(kind, content):
        return struct.pack('>I', len(content)) + kind + content + struct.pack('>I', zlib.crc32(kind + content))

    return (b'\x89PNG\r\n\x1a\n' + chunk(b'IHDR', struct.pack('>IIBBBBB', width, height, 8, 2, 0, 0, 0))
            + chunk(b'IDAT', zlib.compress(raw, level)) + chunk(b'IEND', b''))
