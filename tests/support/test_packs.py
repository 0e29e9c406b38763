#!/usr/bin/env python3
"""The bytes that packs.py makes, against bytes that were written down by hand."""
import sys
import unittest
import zlib

sys.dont_write_bytecode = True
from packs import in_envelope, mesh_bytes, pack_bytes, plate, png, quad, sphere  # noqa: E402


def bytes_of(text):
    return bytes.fromhex(text)


class PackTest(unittest.TestCase):
    def test_an_empty_pack_is_its_beginning_and_an_empty_slot(self):
        self.assertEqual(pack_bytes({}), b'DP\x01' + bytes(32))

    def test_slots_name_the_first_and_the_last_byte_of_every_entry(self):
        first = b'a' + bytes(31) + bytes_of('00000073 00000075')   # 115 = 3 + 2 x 40 + 32, three bytes
        second = b'bc' + bytes(30) + bytes_of('00000076 00000076')
        self.assertEqual(pack_bytes({'a': b'123', 'bc': b'4'}), b'DP\x01' + first + second + bytes(32) + b'1234')

    def test_an_empty_entry_ends_before_it_begins(self):
        self.assertEqual(pack_bytes({'a': b''})[35:43], bytes_of('0000004b 0000004a'))

    def test_pairs_keep_their_order_and_may_repeat_a_name(self):
        pack = pack_bytes([('b', b'1'), (b'\xff', b'2'), ('b', b'3')])
        self.assertEqual((pack[3:5], pack[43:45], pack[83:85]), (b'b\0', b'\xff\0', b'b\0'))
        self.assertEqual(pack[-3:], b'123')

    def test_a_name_is_cut_at_32_bytes(self):
        self.assertEqual(pack_bytes({'n' * 33: b''})[3:39], b'n' * 32 + bytes_of('0000004b'))


class EnvelopeTest(unittest.TestCase):
    def test_an_envelope_is_a_size_and_a_stream(self):
        entry = in_envelope(b'sea' * 100)
        self.assertEqual(entry[:4], bytes_of('2c010000'))
        self.assertEqual(zlib.decompress(entry[4:]), b'sea' * 100)

    def test_a_wrong_size_changes_the_size_alone(self):
        self.assertEqual(in_envelope(b'sea', 0x10000001), bytes_of('01000010') + in_envelope(b'sea')[4:])


class MeshTest(unittest.TestCase):
    ONE, TWO, HALF = bytes_of('0000803f'), bytes_of('00000040'), bytes_of('0000003f')

    def test_a_mesh_is_counts_positions_coordinates_normals_indices(self):
        self.assertEqual(mesh_bytes([(1, 2, 0.5)], [(0.5, 1)], [0, 0, 0x102]),
                         bytes_of('0100 0100') + self.ONE + self.TWO + self.HALF + self.HALF + self.ONE
                         + bytes(8) + self.ONE + bytes_of('0000 0000 0201'))

    def test_every_set_has_the_coordinates_and_normals_are_those_given(self):
        self.assertEqual(mesh_bytes([(0, 0, 0)], [(1, 2)], [], normals=[(2, 1, 0)], sets=3),
                         bytes_of('0100 0300') + bytes(12) + 3 * (self.ONE + self.TWO) + self.TWO + self.ONE + bytes(4))

    def test_shapes_have_their_counts_and_point_at_their_own_vertices(self):
        for name, mesh, vertices, triangles in (('quad', quad(), 4, 2), ('plate', plate(3), 16, 18),
                                                ('sphere', sphere(2, 3), 12, 12)):
            with self.subTest(name):
                self.assertEqual(mesh[:4], bytes((vertices, 0, 1, 0)))
                self.assertEqual(len(mesh), 4 + 32 * vertices + 6 * triangles)
                indices = mesh[-6 * triangles::2]
                self.assertEqual((min(indices), max(indices)), (0, vertices - 1))

    def test_a_quad_goes_round_from_its_corner_on_the_left_and_top(self):
        corners = [quad(1, 2, 2, 1, 0.5)[4 + 12 * n:16 + 12 * n] for n in range(4)]
        self.assertEqual(corners, [self.ONE + self.TWO + self.HALF, self.TWO + self.TWO + self.HALF,
                                   self.TWO + self.ONE + self.HALF, self.ONE + self.ONE + self.HALF])


class PictureTest(unittest.TestCase):
    def test_a_picture_is_three_chunks_and_rows_without_a_filter(self):
        for given, row in (((1, 2, 3), bytes_of('010203 010203')), (bytes_of('010203 040506') * 2,
                                                                    bytes_of('010203 040506'))):
            picture = png(2, 2, given)
            self.assertEqual(picture[:8], b'\x89PNG\r\n\x1a\n')
            self.assertEqual(picture[8:33], bytes_of('0000000d') + b'IHDR'
                             + bytes_of('00000002 00000002 08 02 00 00 00 fdd49a73'))
            size = int.from_bytes(picture[33:37], 'big')
            self.assertEqual(zlib.decompress(picture[41:41 + size]), (b'\0' + row) * 2)
            self.assertEqual(picture[-12:], bytes(4) + b'IEND' + bytes_of('ae426082'))


if __name__ == '__main__':
    unittest.main()
