"""Writes shapes as named parts of one binary glTF file."""
import json
import struct

FLOAT, SHORT = 5126, 5123
VERTICES, TRIANGLES = 34962, 34963


def write(path, parts):
    """`parts`: name -> shape."""
    data, views, accessors, meshes = bytearray(), [], [], []

    def stored(values, kind, components, target, bounds=False):
        flat = [c for value in values for c in value]
        packed = struct.pack("<%d%s" % (len(flat), "f" if kind == FLOAT else "H"), *flat)
        views.append({"buffer": 0, "byteOffset": len(data), "byteLength": len(packed), "target": target})
        data.extend(packed + bytes(-len(packed) % 4))
        accessor = {"bufferView": len(views) - 1, "componentType": kind, "count": len(flat) // components,
                    "type": {1: "SCALAR", 2: "VEC2", 3: "VEC3"}[components]}
        if bounds:
            accessor["min"], accessor["max"] = ([f(axis) for axis in zip(*values)] for f in (min, max))
        accessors.append(accessor)
        return len(accessors) - 1

    for name, shape in parts.items():
        shape = shape.stored()
        attributes = {"POSITION": stored(shape.positions, FLOAT, 3, VERTICES, bounds=True),
                      "NORMAL": stored(shape.normals, FLOAT, 3, VERTICES)}
        for k, coordinates in enumerate(shape.sets):
            attributes["TEXCOORD_%d" % k] = stored(coordinates, FLOAT, 2, VERTICES)
        triangles = stored([(k,) for k in shape.indices], SHORT, 1, TRIANGLES)
        meshes.append({"name": name, "primitives": [{"attributes": attributes, "indices": triangles}]})
    names = list(parts)
    head = json.dumps({
        "asset": {"version": "2.0"}, "scene": 0, "scenes": [{"nodes": list(range(len(names)))}],
        "nodes": [{"name": name, "mesh": k} for k, name in enumerate(names)], "meshes": meshes,
        "accessors": accessors, "bufferViews": views, "buffers": [{"byteLength": len(data)}]},
        ensure_ascii=False, separators=(",", ":")).encode()
    head += b" " * (-len(head) % 4)
    with open(path, "wb") as file:
        file.write(struct.pack("<4sII", b"glTF", 2, 28 + len(head) + len(data)))
        file.write(struct.pack("<I4s", len(head), b"JSON") + head)
        file.write(struct.pack("<I4s", len(data), b"BIN\0") + data)
