"""Builds small productions for the tests, in the documents' own format.

    show = Production()
    red = show.material((1, 0, 0))
    show.layer(show.scene(placed(show.mesh(quad()), red)), length=20)
    show.write(folder)                                       # folder/demo.dpk

Every method that adds a record gives its handle, counted from 1. Records are Elements: a test
that wants a broken one takes it from show.sections and changes it. `loading` may be another
Production('loading_'), the loading screen; `entries` is what else goes into the pack. Times are
in ticks of 1/100 s; an animated number is a constant, or dynamic(FUNCTION).
"""
import os

from packs import in_envelope, pack_bytes, quad

(GENERATED_IMAGES, TEXTURE_NODES, MESHES, FUNCTIONS, VALUES, DYNAMIC_TEXTURES, IMAGES, CUBE_MAPS, FONTS, OBJECTS,
 MATERIALS, EFFECTS, SCENES, TIMELINE) = range(1, 15)
SECTION_NAMES = ('', 'generated_images', 'texture_nodes', 'meshes', 'functions', 'values', 'dynamic_textures',
                 'images', 'cube_maps', 'fonts', 'objects', 'materials', 'effects', 'scenes', 'timeline')

MODEL, GENMESH, TEXT = range(3)                             # kinds of placed objects
ALPHA, ADD, REPLACE, ADD_ALPHA, SUBTRACT_ALPHA = range(5)   # blend functions
GENERATED, IMAGE, DYNAMIC, CUBE = range(4)                  # kinds of textures
GLYPHS = 87


# ---- the document's text ----------------------------------------------------------------------

class Element:
    """An element with children, or with `content` between its tags, or with neither."""

    def __init__(self, name, /, *children, content=None, **attributes):
        self.name, self.children, self.content, self.attributes = name, list(children), content, attributes

    def write(self, depth=0):
        head = '  ' * depth + '<' + self.name + ''.join(' %s="%s"' % pair for pair in self.attributes.items())
        if self.children:
            return '%s>\n%s%s</%s>\n' % (head, ''.join(c.write(depth + 1) for c in self.children), '  ' * depth,
                                         self.name)
        if self.content is not None:
            return '%s>%s</%s>\n' % (head, self.content, self.name)
        return head + '/>\n'


class dynamic:
    """A number that follows an animation function."""

    def __init__(self, function):
        self.function = function


def animated(name, value, constant='static'):
    if isinstance(value, dynamic):
        return Element(name, type='dynamic', value=value.function)
    return Element(name, type=constant, value=value)


def numbers(name, values):
    return [Element(name, content=value) for value in values]


def placed(mesh, material, kind=MODEL, font=0, text='', at=(0, 0, 0), turned=(0, 0, 0), scaled=(1, 1, 1), visibility=0,
           time_offset=0, facing=0, manipulators=()):
    """An object of a scene."""
    return Element('object', *(animated('value', v) for v in (*at, *turned, *scaled)),
                   Element('visibility', value=visibility), Element('offset', value=time_offset),
                   Element('facing', value=facing), Element('manipulators', *manipulators),
                   type=kind, object=mesh, material=material, font=font, text=text)


def manipulator(kind, *values, model=None):
    head = [Element('manipulator', type=model[0], model=model[1])] if model else []
    return Element('m', *head, *(animated('value', v) for v in values), type=kind)


# ---- productions --------------------------------------------------------------------------------

class Production:
    def __init__(self, prefix=''):
        self.prefix = prefix                         # of the names of its entries
        self.sections = [[] for _ in SECTION_NAMES]  # [0] is not used
        self.entries = {}
        self.music = None                            # the name of its file, or the element
        self.loading = None
        self.coloured_scenes = {}

    def add(self, section, element):
        self.sections[section].append(element)
        return len(self.sections[section])

    # ---- records

    def generated_image(self, kind, *values):
        return self.add(GENERATED_IMAGES, Element('image', *numbers('p', values), type=kind))

    def texture_node(self, kind, input1=0, *values, input2=None, outputs=(), image=0, name='node', form=0, filtering=1):
        children = [Element('first', content=input1)]
        children += [Element('input', content=input2)] if input2 is not None else []
        children += numbers('output', outputs) + numbers('p', values)
        more = {'layer_id': image} if kind < 201 else {}
        return self.add(TEXTURE_NODES, Element('node', *children, name=name, type=kind, texture_format=form,
                                               texture_filter=filtering, **more))

    def mesh(self, content, filename=None):
        """The bytes of a mesh become an entry, in its envelope."""
        filename = filename or '%smesh%d' % (self.prefix, len(self.sections[MESHES]) + 1)
        self.entries[filename] = in_envelope(content)
        return self.add(MESHES, Element('mesh', filename=filename))

    def function(self, *segments, loop=0, begin=0, end=0):
        """Segments are (type, length, parameters...)."""
        return self.add(FUNCTIONS, Element(
            'function', *(Element('segment', *numbers('p', s[2:]), type=s[0], length=s[1]) for s in segments),
            type=0, loop_type=loop, loop_begin=begin, loop_end=end))

    def values(self, *nine):
        """A light or a colour (values 3, 4, 5)."""
        return self.add(VALUES, Element('record', Element('values', *(animated('value', v) for v in nine))))

    def dynamic_texture(self, kind, *functions, resolution='64x64', bpp='24', form=0, filtering=1, name='surface'):
        return self.add(DYNAMIC_TEXTURES, Element('texture', *numbers('p', functions), name=name, type=kind,
                                                  texture_format=form, texture_filter=filtering,
                                                  resolution=resolution, bpp=bpp))

    def image(self, content, filename=None, form=0, filtering=1):
        """The bytes of a picture become an entry."""
        filename = filename or '%simage%d.png' % (self.prefix, len(self.sections[IMAGES]) + 1)
        self.entries[filename] = content
        return self.add(IMAGES, Element('image', filename=filename, texture_format=form, texture_filter=filtering))

    def cube_map(self, *faces, form=0, filtering=1):
        """Six names of entries: +X, -X, +Y, -Y, +Z, -Z."""
        return self.add(CUBE_MAPS, Element('cube', **dict(zip(('xp', 'xn', 'yp', 'yn', 'zp', 'zn'), faces)),
                                           texture_format=form, texture_filter=filtering))

    def font(self, mesh, material, offset=0, width=1):
        return self.add(FONTS, Element('font', *(Element('glyph', model=mesh, material=material, bitmap=0,
                                                         offset=offset, width=width) for _ in range(GLYPHS))))

    def reference(self, kind, record):
        return self.add(OBJECTS, Element('object', type=kind, id=record))

    def material(self, color=(1, 1, 1), textures=(), blend=REPLACE, **settings):
        """Textures are handles of references, or (handle, combine mode). A setting that is an Element
        stands as it is."""
        rgba = (*color, 1)[:4]
        children = [Element('blend_function', value=blend)]
        children += [animated(name, value) for name, value in zip(('red', 'green', 'blue', 'alpha'), rgba)]
        for number, unit in enumerate(textures, 1):
            handle, mode = unit if isinstance(unit, tuple) else (unit, 1)
            children.append(Element('texture%d' % number, value=handle, wrapmode=0, cgenmode=0, rotation=0,
                                    function=mode))
        children += [value if isinstance(value, Element) else Element(name, value=value)
                     for name, value in settings.items()]
        return self.add(MATERIALS, Element('material', *children))

    def effect(self, kind, *functions):
        return self.add(EFFECTS, Element('effect', *numbers('p', functions), type=kind))

    def scene(self, *objects):
        return self.add(SCENES, Element('scene', *objects, name='scene'))

    def layer(self, scene=0, length=20, track=1, space_before=0, mode=0, rtex=0, offset=0, clearcolor=0,
              camera=(0, 0, 0, 0, 0, 0), fov='ortographic', far=100):
        """Behind the layers that its track (from 1) has; `fov` is "ortographic" or animated."""
        while len(self.sections[TIMELINE]) < track:
            self.add(TIMELINE, Element('track'))
        lens = Element('fov', type='ortographic', value=0) if fov == 'ortographic' else animated('fov', fov)
        more = {'rtex': rtex} if mode in (1, 4, 5, 6, 7) else {}
        self.sections[TIMELINE][track - 1].children.append(Element(
            'clip', *(animated('value', v) for v in camera), lens, animated('value', far), animated('value', 0),
            id=scene, space_before=space_before, length=length, offset=offset, type=mode, clearcolor=clearcolor,
            **more))

    def colour(self, rgb, length=20, **layer):
        """A layer of nothing but one colour. Its scene is made once for each."""
        if rgb not in self.coloured_scenes:
            self.coloured_scenes[rgb] = self.scene(placed(self.mesh(quad()), self.material(rgb)))
        self.layer(self.coloured_scenes[rgb], length, **layer)

    # ---- the pack

    def text(self):
        sections = [Element(SECTION_NAMES[n], *self.sections[n]) for n in range(1, len(SECTION_NAMES))]
        if self.music:
            is_name = isinstance(self.music, str)
            sections.append(Element('music', file=self.music) if is_name else self.music)
        return Element('production', *sections).write()

    def all_entries(self):
        documents = {'demo.xmlz': in_envelope(self.text().encode())}
        if self.loading:
            documents['loading.xmlz'] = in_envelope(self.loading.text().encode())
            documents.update(self.loading.entries)
        return {**documents, **self.entries}

    def write(self, folder, name='demo.dpk'):
        with open(os.path.join(folder, name), 'wb') as file:
            file.write(pack_bytes(self.all_entries()))

