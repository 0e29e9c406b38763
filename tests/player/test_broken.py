#!/usr/bin/env python3
"""Broken packs and the real player: one line and status 1, never a crash, never a hang.

The shows are played with the dialog's defaults on a screen of 320 x 240, which asks for one click; a
few displays at once, since a run is mostly waiting.
"""
import concurrent.futures
import os
import queue
import random
import struct
import tempfile
import unittest

import cases
from cases import BENCHMARK, found, report
from driver import Display, Player
from packs import in_envelope, mesh_bytes, pack_bytes, png, quad
from production import (CUBE, CUBE_MAPS, DYNAMIC, DYNAMIC_TEXTURES, EFFECTS, FONTS, FUNCTIONS, GENERATED,
                        GENERATED_IMAGES, GENMESH, IMAGE, IMAGES, MATERIALS, MESHES, OBJECTS, SCENES, TEXT,
                        TEXTURE_NODES, TIMELINE, VALUES, Element, Production, animated, dynamic, manipulator,
                        numbers, placed)

PLAYERS_AT_ONCE = 3
SCREEN = (320, 240)
LIMIT_RECORDS = 4096


def full_show(length=12):
    """At least one record in every section, each of them used, over and over drawn."""
    show = Production()
    rise = show.function((1, 100, 0.01, 0.2))
    curve = show.function((4, 50, 0, 1, 25, 3, 50, 1), (3, 50, 0.1, 2, 0, 0.5), loop=1, end=100)
    light = show.values(0.2, 0.2, 0.2, 1, dynamic(rise), 1, 0, 2, 3)
    show.generated_image(1, 255, 128, 64, 3, 4)
    show.generated_image(5, 200, 200, 200, 7)
    added = show.texture_node(101, 0, 0.5, 0.5, image=1, outputs=[2])
    blurred = show.texture_node(205, added, 4, 2)
    show.texture_node(255, blurred, filtering=2)
    board = show.mesh(quad(-1, -1, 1, 1))
    letter = show.mesh(mesh_bytes([(0, 0, 0), (1, 0, 0), (0, 1, 0)], [(0, 0), (1, 0), (0, 1)], [0, 1, 2], sets=2))
    show.dynamic_texture(1, rise)
    show.dynamic_texture(0, rise, rise, resolution='128x128', bpp='8', form=2)
    stone = show.image(png(16, 16, (200, 150, 100)), 'stone.png', filtering=2)
    show.entries['stone_mm1.png'] = png(8, 8, (20, 15, 10))
    target = show.image(png(64, 64), 'target.png')
    show.entries['face.png'] = png(8, 8, (10, 90, 200))
    show.cube_map(*['face.png'] * 6, filtering=2)
    references = [show.reference(*r) for r in ((GENERATED, 3), (IMAGE, stone), (DYNAMIC, 1), (CUBE, 1), (DYNAMIC, 2),
                                               (IMAGE, target), (GENMESH, 1), (GENMESH, 2))]
    plain = show.material((1, dynamic(curve), 1, 0.5), [references[1], (references[0], 2)], blend=0, light1=light,
                          depth_test=1, fogtype=1, fogcolor=light, fogstart=animated('fogstart', 1),
                          fogend=animated('fogend', 9))
    shiny = show.material((1, 1, 1), [references[2], references[4]], blend=1, wireframe=1, backface_culling=1)
    reflected = Element('texture1', value=references[3], wrapmode=0, cgenmode=2, rotation=0, function=1)
    shiny_cube = show.material((1, 1, 1), reflected=reflected)
    mirror = show.material((1, 1, 1), [references[5]])
    show.font(letter, plain)
    show.effect(0, rise)
    show.effect(3, rise)
    copies = [manipulator(0, 2, 2, 1, *[0.3] * 9), manipulator(2, dynamic(rise), 0.1, 2),
              manipulator(3, *[0.5] * 9, model=(0, letter))]
    world = show.scene(
        placed(board, plain, manipulators=copies, turned=(0, dynamic(curve), 0)), placed(board, shiny, at=(1, 0, 0)),
        placed(board, shiny_cube, facing=1),
        placed(references[6], plain, GENMESH), placed(references[7], plain, GENMESH),
        placed(0, plain, TEXT, 1, 'HELLO 1!', visibility=rise, time_offset=3))
    mirrored = show.scene(placed(board, mirror))
    camera = (0, dynamic(rise), -4, 5, 10, 0)
    show.layer(world, length, mode=5, rtex=target, camera=camera, fov=60)
    show.layer(mirrored, length, track=2, camera=camera, fov=dynamic(curve), clearcolor=light)
    show.layer(world, length, track=3, mode=8, camera=camera, fov=70)
    return show


# ---- running many ------------------------------------------------------------------------------

class Result:
    def __init__(self, status, lines, errors):
        self.status, self.lines, self.errors = status, lines, errors

    def __repr__(self):
        return 'status %r, %r, %r' % (self.status, self.lines, self.errors)


class ManyPlayers(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        cls.displays = queue.SimpleQueue()
        for _ in range(PLAYERS_AT_ONCE):
            cls.displays.put(cls.enterClassContext(Display(*SCREEN)))

    def play_all(self, packs, fixed_path=lambda number: False):
        """The result of every pack (bytes), in their order."""
        with concurrent.futures.ThreadPoolExecutor(PLAYERS_AT_ONCE) as pool:
            return list(pool.map(self.play, packs, map(fixed_path, range(len(packs)))))

    def play(self, pack, fixed_path):
        display = self.displays.get()
        try:
            with tempfile.TemporaryDirectory(prefix='brimlow_') as folder:
                with open(os.path.join(folder, 'demo.dpk'), 'wb') as file:
                    file.write(pack)
                with open(os.path.join(cases.HERE, 'tone.ogg'), 'rb') as tone:
                    with open(os.path.join(folder, 'tone.ogg'), 'wb') as file:
                        file.write(tone.read())
                with Player(display, cases.exe, folder) as player:
                    if fixed_path:
                        player.choose(row=0, fullscreen=True, antialiasing=True, shaders=False)
                    player.start()
                    status = player.wait(4)
                    if status is None:  # it may have become a long show: that is none of our business
                        player.press('Escape')
                        status = player.wait()
                    return Result(status, player.lines, player.errors)
        finally:
            self.displays.put(display)


# ---- what is fatal -------------------------------------------------------------------------------

def changed(section, record, change):
    """The change of a record of the show, as a function of the show."""
    return lambda show: change(show.sections[section][record - 1])


def without(section, record, attribute):
    return changed(section, record, lambda element: element.attributes.pop(attribute))


def with_attribute(section, record, **attributes):
    return changed(section, record, lambda element: element.attributes.update(attributes))


def children_cut(section, record, count):
    return changed(section, record, lambda element: element.children.__delitem__(slice(count, None)))


def entry(name, content):
    return lambda show: show.entries.update({name: content})


def envelope(name, content):
    return entry(name, in_envelope(content))


def many(section, count):
    """So many records of a section in all."""
    return lambda show: show.sections[section].extend([show.sections[section][-1]]
                                                      * (count - len(show.sections[section])))


def many_in(section, record, count):
    return changed(section, record, lambda element: element.children.extend(
        [element.children[-1]] * (count - len(element.children))))


def missing_entry(name):
    return lambda show: show.entries.pop(name)


def first_object(change):
    return changed(SCENES, 1, lambda scene: change(scene.children[0]))


def clip(track, change):
    return changed(TIMELINE, track, lambda element: change(element.children[0]))


def no_envelope(show):
    show.entries['demo.xmlz'] = b'abc'


def too_large(show):
    show.entries['demo.xmlz'] = in_envelope(b'x', (256 << 20) + 1)


def thirteen_sections(show):
    show.entries['demo.xmlz'] = in_envelope(
        b'<production>' + b''.join(b'<s%d/>' % n for n in range(1, 14)) + b'</production>')


def lost_tag(show):
    show.entries['demo.xmlz'] = in_envelope(show.text().replace('</generated_images>', '').encode())


def single_quotes(show):
    show.entries['demo.xmlz'] = in_envelope(show.text().replace('<image type="1">', "<image type='1'>").encode())


OBJECT_1 = 'section 13 (scenes), record 1, object 1'

# (what stands behind "Error: demo.xmlz: ", the change that brings it about)
FATAL = [
    # A document that is none.
    ('the document is damaged.', no_envelope),
    ('the document declares more than 256 MiB.', too_large),
    ('the document is damaged.', lambda show: show.entries.update(
        {'demo.xmlz': in_envelope(show.text().encode())[:-1]})),
    ('the document is not compressed (no envelope).', lambda show: show.entries.update(
        {'demo.xmlz': show.text().encode()})),
    ('too few sections: 13 of 14.', thirteen_sections),
    ('too few sections: 1 of 14; <generated_images> of line 2 is not closed.', lost_tag),
    ('section 1 (generated images), record 1: attribute "type" is missing; the value of "type" in line 3 has no double'
     ' quotes.', single_quotes),
    # An attribute or a number that is missing, in every section.
    ('section 1 (generated images), record 2: attribute "type" is missing.', without(GENERATED_IMAGES, 2, 'type')),
    ('section 1 (generated images), record 1, parameter 2: the number is missing.',
     changed(GENERATED_IMAGES, 1, lambda e: setattr(e.children[1], 'content', None))),
    ('section 2 (texture nodes), record 1: attribute "layer_id" is missing.', without(TEXTURE_NODES, 1, 'layer_id')),
    ('section 3 (meshes), record 2: attribute "filename" is missing.', without(MESHES, 2, 'filename')),
    ('section 4 (functions), record 1: attribute "loop_end" is missing.', without(FUNCTIONS, 1, 'loop_end')),
    ('section 4 (functions), record 2, segment 2: attribute "length" is missing.',
     changed(FUNCTIONS, 2, lambda e: e.children[1].attributes.pop('length'))),
    ('section 5 (values), record 1, value 3: attribute "value" is missing.',
     changed(VALUES, 1, lambda e: e.children[0].children[2].attributes.pop('value'))),
    ('section 6 (dynamic textures), record 2: attribute "bpp" is missing.', without(DYNAMIC_TEXTURES, 2, 'bpp')),
    ('section 7 (image textures), record 1: attribute "texture_filter" is missing.',
     without(IMAGES, 1, 'texture_filter')),
    ('section 8 (cube maps), record 1: attribute "zn" is missing.', without(CUBE_MAPS, 1, 'zn')),
    ('section 9 (fonts), record 1, glyph 87: attribute "width" is missing.',
     changed(FONTS, 1, lambda e: e.children[86].attributes.pop('width'))),
    ('section 10 (objects), record 8: attribute "id" is missing.', without(OBJECTS, 8, 'id')),
    ('section 11 (materials), record 2, blue: attribute "type" is missing.',
     changed(MATERIALS, 2, lambda e: e.children[3].attributes.pop('type'))),
    ('section 12 (mesh effects), record 1, p 1: the number is missing.',
     changed(EFFECTS, 1, lambda e: setattr(e.children[0], 'content', None))),
    (OBJECT_1 + ': attribute "material" is missing.', first_object(lambda o: o.attributes.pop('material'))),
    ('section 14 (timeline), record 1, clip 1: attribute "rtex" is missing.',
     clip(1, lambda c: c.attributes.pop('rtex'))),
    # Too few children.
    ('section 2 (texture nodes), record 3: too few children: 0 of 1.', children_cut(TEXTURE_NODES, 3, 0)),
    ('section 5 (values), record 1, wrapper: too few children: 8 of 9.',
     changed(VALUES, 1, lambda e: e.children[0].children.pop())),
    ('section 9 (fonts), record 1: too few children: 86 of 87.', children_cut(FONTS, 1, 86)),
    (OBJECT_1 + ': too few children: 12 of 13.', first_object(lambda o: o.children.pop())),
    ('section 14 (timeline), record 2, clip 1: too few children: 7 of 8.',
     clip(2, lambda c: c.children.__delitem__(slice(7, None)))),
    # Too many of anything.
    ('section 10 (objects), record 4097: more than 4096 records.', many(OBJECTS, LIMIT_RECORDS + 1)),
    ('section 1 (generated images), record 1: more than 24 parameters.', many_in(GENERATED_IMAGES, 1, 25)),
    ('section 4 (functions), record 1, segment 17: more than 16 segments.', many_in(FUNCTIONS, 1, 17)),
    ('section 4 (functions), record 1, segment 1: more than 24 parameters.',
     changed(FUNCTIONS, 1, lambda e: e.children[0].children.extend(numbers('p', range(23))))),
    ('section 2 (texture nodes), record 1: more than 255 outputs.',
     changed(TEXTURE_NODES, 1, lambda e: e.children.__setitem__(slice(1, None), numbers('output', [2] * 256)))),
    ('section 13 (scenes), record 2: more than 128 objects.', many_in(SCENES, 2, 129)),
    (OBJECT_1 + ', manipulator 8: more than 7 manipulators.',
     first_object(lambda o: o.children[-1].children.extend([manipulator(1, 1)] * 5))),
    ('section 14 (timeline), record 2, clip 257: more than 256 clips.', many_in(TIMELINE, 2, 257)),
    # Numbers that cannot be.
    ('section 14 (timeline), record 3, clip 1: ends at 25601 ticks, beyond 25600.',
     clip(3, lambda c: c.attributes.update(space_before=25000, length=601))),
    ('section 14 (timeline), record 1, clip 1: length -1 is negative.',
     clip(1, lambda c: c.attributes.update(length=-1))),
    ('section 14 (timeline), record 1, clip 1: space_before -9 is negative.',
     clip(1, lambda c: c.attributes.update(space_before=-9))),
    ('section 7 (image textures), record 2: texture_format 9 is outside 0..8.',
     with_attribute(IMAGES, 2, texture_format=9)),
    ('section 12 (mesh effects), record 2: type 5 is no effect.', with_attribute(EFFECTS, 2, type=5)),
    ('section 6 (dynamic textures), record 1: type 5 is no 2-D effect.', with_attribute(DYNAMIC_TEXTURES, 1, type=5)),
    (OBJECT_1 + ', manipulator 2: type 4 is no manipulator.',
     first_object(lambda o: o.children[-1].children[1].attributes.update(type=4))),
    # Entries.
    ('section 3 (meshes), record 1: entry "mesh1" is missing.', missing_entry('mesh1')),
    ('section 3 (meshes), record 1: "%s" is longer than the 31 bytes of an entry\'s name.' % ('m' * 32),
     with_attribute(MESHES, 1, filename='m' * 32)),
    ('section 3 (meshes), record 1: entry "fél\\x1B[2J.mesh" is missing.',
     with_attribute(MESHES, 1, filename='fél\x1b[2J.mesh')),
    ('section 3 (meshes), record 1: entry "mesh1" is damaged.', entry('mesh1', in_envelope(quad())[:-1])),
    ('section 3 (meshes), record 1: entry "mesh1" is not compressed (no envelope).',
     entry('mesh1', b'v 0.5 1.25 -3\nv 1 2 3\n')),
    ('section 3 (meshes), record 1: "mesh1" is not a mesh: 44 bytes are too few for 4 vertices.',
     envelope('mesh1', quad()[:44])),
    ('section 3 (meshes), record 2: "mesh2" is not a mesh: index 3 passes its 3 vertices.',
     envelope('mesh2', mesh_bytes([(0, 0, 0)] * 3, [(0, 0)] * 3, [0, 1, 3]))),
    ('section 3 (meshes), record 2: "mesh2" is not a mesh: 4 coordinate sets instead of 1 to 3.',
     envelope('mesh2', mesh_bytes([(0, 0, 0)] * 3, [(0, 0)] * 3, [0, 1, 2], sets=4))),
    ('section 7 (image textures), record 1: entry "stone.png" is missing.', missing_entry('stone.png')),
    ('section 7 (image textures), record 2: cannot decode "target.png".', entry('target.png', b'no picture')),
    ('section 8 (cube maps), record 1, xp: entry "face.png" is missing.', missing_entry('face.png')),
    ('section 8 (cube maps), record 1, xp: "face.png" is 8 x 4, not a square.', entry('face.png', png(8, 4))),
]


class FatalTest(ManyPlayers):
    def test_what_is_broken_for_good_gives_one_line_and_status_1_before_any_sound(self):
        packs = []
        for _, change in FATAL:
            show = full_show()
            show.music = 'tone.ogg'
            change(show)
            packs.append(pack_bytes(show.all_entries()))
        for (line, _), result in zip(FATAL, self.play_all(packs)):
            with self.subTest(line):
                self.assertEqual(result.status, 1, result)
                self.assertEqual(result.lines, [*found(), *report(), 'Error: demo.xmlz: ' + line])
                self.assertEqual([text for text in result.errors if not text.startswith('Warning: demo.xmlz: ')], [])

    def test_entries_that_leave_the_pack_are_damaged(self):
        show = full_show()
        pack = pack_bytes(show.all_entries())
        slot = 3 + 40 * list(show.all_entries()).index('stone.png')
        past_the_end = pack[:slot + 36] + struct.pack('>I', len(pack)) + pack[slot + 40:]
        backwards = pack[:slot + 32] + struct.pack('>II', 2000, 1000) + pack[slot + 40:]
        for result in self.play_all([past_the_end, backwards]):
            self.assertEqual(result.lines[-1],
                             'Error: demo.xmlz: section 7 (image textures), record 1: entry "stone.png" is damaged.')
            self.assertEqual(result.status, 1)


class SurvivalTest(ManyPlayers):
    """Whatever the bytes are, the player ends as it always ends: with its last word, or with one line."""

    def assert_ended_well(self, result, hint):
        self.assertIsNotNone(result.status, '%s: it hangs: %r' % (hint, result))
        self.assertIn(result.status, (0, 1), '%s: %r' % (hint, result))
        last = result.lines[-1]
        if result.status == 0:
            self.assertEqual(last, 'Bye!', '%s: %r' % (hint, result))
        else:
            self.assertTrue(last.startswith(('Error: demo.xmlz: ', 'Sux...')), '%s: %r' % (hint, result))

    def test_the_whole_show_plays_on_both_paths(self):
        pack = pack_bytes(full_show().all_entries())
        for result in self.play_all([pack, pack], lambda number: number == 1):
            self.assertEqual((result.status, result.errors), (0, []), result)
            self.assertRegex(result.lines[-2], BENCHMARK)

    def test_truncated_packs(self):
        pack = pack_bytes(full_show(2).all_entries())
        index = 3 + 40 * len(full_show().all_entries())
        cuts = [0, 1, 3, 34, 35, 43, 75, index - 7, index, index + 31, index + 32, index + 33, len(pack) - 1]
        cuts += [index + 32 + (len(pack) - index) * i // 12 for i in range(1, 12)]
        for cut, result in zip(cuts, self.play_all([pack[:cut] for cut in cuts])):
            self.assert_ended_well(result, 'cut at %d of %d' % (cut, len(pack)))

    def test_flipped_bytes(self):
        chance = random.Random(20)
        variants = []
        for number in range(44):
            show = full_show(4)
            entries = show.all_entries()
            if number % 4 == 0:
                pack = flip(pack_bytes(entries), chance, 1 + number // 8)
            elif number % 4 == 1:
                name = chance.choice([n for n in entries if not n.endswith('.xmlz')])
                entries[name] = flip(entries[name], chance, 2)
                pack = pack_bytes(entries)
            else:
                entries['demo.xmlz'] = in_envelope(scramble(show.text().encode(), chance, 1 + number // 8))
                pack = pack_bytes(entries)
            variants.append(pack)
        played = 0
        for number, result in enumerate(self.play_all(variants, lambda number: number % 5 == 0)):
            self.assert_ended_well(result, 'variant %d' % number)
            played += result.status == 0
        self.assertGreater(played, 5)  # they are not all refused at the door

    def test_numbers_that_are_none(self):
        chance = random.Random(7)
        variants = []
        for number in ('nan', 'inf', '-inf', '1e39', '-1', '4294967295', '99999999999999999999', '', '0'):
            text = full_show(4).text()
            for _ in range(12):
                text = replace_a_number(text, number, chance)
            variants.append(pack_bytes({**full_show(4).all_entries(), 'demo.xmlz': in_envelope(text.encode())}))
        for number, result in enumerate(self.play_all(variants)):
            self.assert_ended_well(result, 'variant %d' % number)


class WarningTest(ManyPlayers):
    """What a document says and the show will not do is said, and the show goes on."""

    def unknown_settings(self, count, show=None):
        show = show or Production()
        show.colour((1, 0, 0), 12)
        show.sections[MATERIALS][0].children.extend([Element('shininess', value=1)] * count)
        return show

    def line(self, document='demo.xmlz'):
        return 'Warning: %s: section 11 (materials), record 1: setting "shininess" is unknown.' % document

    def test_the_first_twenty_are_printed_and_the_others_counted(self):
        packs = [pack_bytes(self.unknown_settings(count).all_entries()) for count in (20, 21, 25)]
        for count, result in zip((20, 21, 25), self.play_all(packs)):
            rest = {20: [], 21: ['Warning: demo.xmlz: 1 more warning.'], 25: ['Warning: demo.xmlz: 5 more warnings.']}
            self.assertEqual(result.errors, [self.line()] * 20 + rest[count])
            self.assertEqual((result.status, result.lines[-1]), (0, 'Bye!'))

    def test_each_document_has_its_own_twenty(self):
        show = self.unknown_settings(22)
        show.loading = self.unknown_settings(23, Production('loading_'))
        result, = self.play_all([pack_bytes(show.all_entries())])
        self.assertEqual(result.errors,
                         [self.line('loading.xmlz')] * 20 + ['Warning: loading.xmlz: 3 more warnings.']
                         + [self.line()] * 20 + ['Warning: demo.xmlz: 2 more warnings.'])
        self.assertEqual(result.status, 0)

    def test_a_document_that_is_refused_has_its_rest_counted_too(self):
        show = self.unknown_settings(30)
        show.sections[SCENES][0].children[0].attributes.pop('material')
        result, = self.play_all([pack_bytes(show.all_entries())])
        self.assertEqual(result.errors, [self.line()] * 20 + ['Warning: demo.xmlz: 10 more warnings.'])
        self.assertEqual(result.lines[-1], 'Error: demo.xmlz: ' + OBJECT_1 + ': attribute "material" is missing.')
        self.assertEqual(result.status, 1)


def flip(content, chance, count):
    content = bytearray(content)
    for _ in range(count if content else 0):
        content[chance.randrange(len(content))] ^= 1 << chance.randrange(8)
    return bytes(content)


def scramble(text, chance, count):
    """Some digits of a document become others, and now and then a byte becomes anything."""
    text = bytearray(text)
    digits = [i for i, byte in enumerate(text) if chr(byte).isdigit()]
    for _ in range(count):
        text[chance.choice(digits)] = ord(chance.choice('0123456789-.'))
        if chance.random() < 0.2:
            text[chance.randrange(len(text))] = chance.randrange(1, 256)
    return bytes(text)


def replace_a_number(text, number, chance):
    """One value="..." of a placement, a camera or a colour, or a parameter, becomes another."""
    starts = [i for i in range(len(text)) if text.startswith((' value="', '<p>'), i)]
    start = chance.choice(starts)
    begin = start + (8 if text[start] == ' ' else 3)
    end = text.index('"' if text[start] == ' ' else '<', begin)
    return text[:begin] + number + text[end:]


if __name__ == '__main__':
    cases.main()
