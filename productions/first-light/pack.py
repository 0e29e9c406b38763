"""The pack: an index of 40-byte slots, then the entries back to back."""
import struct
import zlib


def compressed(data):
    """The envelope of documents and meshes: the size before compression, then a zlib stream."""
    return struct.pack("<I", len(data)) + zlib.compress(data, 9)


def write_pack(path, entries):
    index, data, at = b"", b"", 3 + 40 * len(entries) + 32
    for name, content in entries.items():
        index += name.encode().ljust(32, b"\0") + struct.pack(">II", at, at + len(content) - 1)
        data += content
        at += len(content)
    with open(path, "wb") as file:
        file.write(b"DP\x01" + index + bytes(32) + data)
