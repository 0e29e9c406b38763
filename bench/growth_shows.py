"""Shows of any size, for bench/growth.py: packs made by tests/support/production.py, and sources for brimlow-make.

Every function writes one show of size `n` into a folder and gives the path of what is to be measured.
"""
import os
import sys

sys.path.insert(0, os.path.join(os.path.dirname(os.path.dirname(os.path.abspath(__file__))), 'tests', 'support'))
from packs import in_envelope, mesh_bytes, pack_bytes, png, quad  # noqa: E402
from production import (DYNAMIC, GENERATED, GENMESH, MESHES, TEXT, Element, Production, dynamic,  # noqa: E402
                        manipulator, placed)

XYZ_MULTIPLIER, X_MULTIPLIER, RIPPLER, MODEL_PLACER = range(4)
PLASMA, INVERT = 1, 201
SCENE_OBJECTS, TRACK_CLIPS, TRACKS = 128, 256, 32
WHOLE = 2000   # ticks, the length of a clip that is all of its show


def saved(show, folder, name='demo.dpk'):
    show.write(folder, name)
    return os.path.join(folder, name)


def points(count):
    """A mesh of so many points in a row, with one triangle."""
    return mesh_bytes([(0.001 * n, 0, 0) for n in range(count)], [(0, 0)] * count, [0, 1, 2])


def one_object(folder, content, *manipulators, more=()):
    """A show of one object, with meshes for its manipulators: the object's is the first of them."""
    show = Production()
    mesh = show.mesh(content)
    for other in more:
        show.mesh(other)
    show.layer(show.scene(placed(mesh, show.material(), manipulators=manipulators)), WHOLE, fov=60)
    return saved(show, folder)


# ---- frames -------------------------------------------------------------------------------------

def xyz_copies(folder, n):
    return one_object(folder, quad(), manipulator(XYZ_MULTIPLIER, n, 1, 1, 0.1, 0.1, 0.1, 1, 1, 1, 0, 0, 0))


def x_copies(folder, n):
    return one_object(folder, quad(), manipulator(X_MULTIPLIER, n, 0.1, 0.1, 0.1, 1, 1, 1, 0, 0, 0))


def placed_copies(folder, n):
    """On the points of another mesh, and four times over where one mesh does not have so many."""
    times = 1 if n <= 50000 else 4
    return one_object(folder, quad(), manipulator(X_MULTIPLIER, times, 1, 0, 0, 0, 0, 0, 0, 0, 0),
                      manipulator(MODEL_PLACER, 0, 0, 0, 0, 0, 0, 1, 1, 1, model=(0, 2)), more=[points(max(n // times, 3))])


def rippled_points(folder, n):
    return one_object(folder, points(max(n, 3)), manipulator(RIPPLER, 0, 1, 1))


def objects_of(folder, n, make):
    """n objects on as few tracks as they need; all are seen. `make` gives one of a show and its number."""
    show = Production()
    for track in range((n + SCENE_OBJECTS - 1) // SCENE_OBJECTS):
        here = range(track * SCENE_OBJECTS, min(n, (track + 1) * SCENE_OBJECTS))
        show.layer(show.scene(*(make(show, number) for number in here)), WHOLE, track=track + 1, fov=60)
    return saved(show, folder)


def first(show, section, make):
    """Handle 1 of a section, made at the first call."""
    return 1 if show.sections[section] else make()


def model(show, number):
    material = show.material((number % 7 / 7, 0, 0)) if number < 7 else number % 7 + 1
    return placed(first(show, MESHES, lambda: show.mesh(quad())), material, at=(number, 0, 0))


def model_objects(folder, n):
    return objects_of(folder, n, model)


def moving_object(show, number):
    """Nine numbers that follow functions of its own."""
    functions = [dynamic(show.function((1, WHOLE, 0.01 * k, number))) for k in range(3)]
    material = first(show, 11, show.material)
    return placed(first(show, MESHES, lambda: show.mesh(quad())), material, at=functions)


def moving_objects(folder, n):
    return objects_of(folder, min(n, 1365), moving_object)


def text_objects(folder, n):
    def text(show, number):
        if not number:
            show.font(show.mesh(quad()), show.material())
        return placed(0, 1, kind=TEXT, font=1, text='thirty-two letters are the most!')
    return objects_of(folder, n, text)


def effect_objects(folder, n):
    """Every one has a water of its own."""
    def water(show, number):
        return placed(show.effect(0), first(show, 11, show.material), kind=GENMESH)
    return objects_of(folder, n, water)


def tracks(folder, n):
    show = Production()
    scene = show.scene(placed(show.mesh(quad()), show.material()))
    for track in range(n):
        show.layer(scene, WHOLE, track=track + 1, fov=60)
    return saved(show, folder)


def clips(folder, n):
    """On as few tracks as they need, a second each: the fourth second shows one clip a track."""
    show = Production()
    scene = show.scene(placed(show.mesh(quad()), show.material()))
    for clip in range(n):
        show.layer(scene, 100, track=clip // TRACK_CLIPS + 1, fov=60)
    return saved(show, folder)


# ---- records ------------------------------------------------------------------------------------

def records(add):
    """A show of one object, and n records that `add` makes of the show and a number."""
    def make(folder, n):
        show = Production()
        show.layer(show.scene(placed(show.mesh(quad(), 'first'), show.material())), WHOLE, fov=60)
        for number in range(n - 1):
            add(show, number)
        return saved(show, folder)
    return make


def node(show, number):
    """A chain of inversions that ends in a texture."""
    if not number:
        show.texture_node(INVERT, 0, outputs=[2])
    show.texture_node(INVERT, number + 1, outputs=[number + 3])


def unfed_node(show, number):
    show.texture_node(INVERT, 0, outputs=())


def cube_map(show, number):
    show.entries.setdefault('face', png(4, 4))
    show.cube_map(*['face'] * 6)


def image(show, number):
    show.entries['image%d.png' % number] = show.entries['image0.png'] if number else png(4, 4)
    show.add(7, Element('image', filename='image%d.png' % number, texture_format=0, texture_filter=1))


def textured_material(show, number):
    if not number:
        show.dynamic_texture(PLASMA)
        show.reference(DYNAMIC, 1)
    show.material((number / 4096, 1, 1), textures=[1], blend=0, light1=1, depth_test=1)


RECORDS = {
    'generators': records(lambda show, number: show.generated_image(0, 1, 0.5, 0.25)),
    'texture nodes': records(unfed_node),
    'chained nodes': records(node),
    'meshes (entries)': records(lambda show, number: show.mesh(quad())),
    'functions': records(lambda show, number: show.function((1, 100, 1, number))),
    'values': records(lambda show, number: show.values(*range(9))),
    'dynamic textures': records(lambda show, number: show.dynamic_texture(PLASMA)),
    'images (entries)': records(image),
    'cube maps': records(cube_map),
    'fonts': records(lambda show, number: show.font(1, 1)),
    'references': records(lambda show, number: show.reference(GENERATED, number + 1)),
    'materials': records(textured_material),
    'mesh effects': records(lambda show, number: show.effect(0, 0)),
    'scenes': records(lambda show, number: show.scene(placed(1, 1))),
    'clips': clips,
}


# ---- texts and packs ----------------------------------------------------------------------------

def document(folder, text):
    """A pack of one document of this text, below the production's own element."""
    path = os.path.join(folder, 'demo.dpk')
    with open(path, 'wb') as file:
        file.write(pack_bytes({'demo.xmlz': in_envelope(text.encode())}))
    return path


def flat_text(folder, n):
    """n bytes of elements beside each other, as documents have them."""
    element = '    <value type="static" value="0.125"/>\n'
    return document(folder, '<production>\n' + element * (n // len(element)) + '</production>\n')


def nested_text(folder, n):
    """n bytes of elements in each other."""
    depth = n // len('<record></record>')
    return document(folder, '<record>' * depth + '</record>' * depth)


def attribute_text(folder, n):
    """n bytes of one element's attributes."""
    return document(folder, '<production %s/>' % ' '.join('u%d="0.125"' % k for k in range(n // 13)))


def content_text(folder, n):
    """n bytes between two tags, as programs of materials lie there."""
    return document(folder, '<production>%s</production>' % ('gl_FragColor = vec4(1.0);\n' * (n // 26)))


def pack_of(folder, n):
    """n entries that no document names, and a document."""
    show = Production()
    show.layer(show.scene(placed(show.mesh(quad()), show.material())), WHOLE, fov=60)
    for number in range(n - 2):
        show.entries['entry%d' % number] = b'0123456789'
    return saved(show, folder)


def files_of(folder, n):
    """n small files; their names."""
    names = ['file%d' % number for number in range(n)]
    for name in names:
        with open(os.path.join(folder, name), 'wb') as file:
            file.write(b'0123456789')
    return names


# ---- sources --------------------------------------------------------------------------------------

SOURCE = '''
local function tile(size)
    return shape { positions = { { 0, 0, 0 }, { size, 0, 0 }, { 0, size, 0 } }, triangles = { { 1, 2, 3 } } }
end
local n, first, paint = %d, tile(1), material { color = "red" }
local picture = texture.black {}
local scenes, here = {}, nil
local function show_it(object)
    if not here or #here == 100 then
        here = {}
        scenes[#scenes + 1] = here
    end
    here[#here + 1] = object
end
%s
for k, objects in ipairs(scenes) do
    local each = scene("scene " .. k) (objects)
    track { each { from = 200 * (k - 1), to = 200 * k, camera = { at = { 0, 0, 5 }, fov = 50 } } }
end
'''
SOURCES = {
    'objects': 'for k = 1, n do show_it(first { material = paint, at = { k, 0, 0 } }) end',
    'shapes': 'for k = 1, n do show_it(tile(k) { material = paint }) end',
    'materials': 'for k = 1, n do show_it(first { material = material { color = { k / n, 0, 0 } } }) end',
    'curves': 'for k = 1, n do show_it(first { material = paint, at = { linear(0, k, 100), 0, 0 } }) end',
    'generated': '''
local picture = texture.noise { color = "white", random_seed = 1 }
for k = 1, n do picture = picture:invert() end
show_it(first { material = material { texture = picture } })''',
    'clips': '''
local one = scene "one" { first { material = paint } }
for k = 1, n do
    local from = 200 * ((k - 1) % 128)
    track { one { from = from, to = from + 200, camera = { at = { 0, 0, 5 } } } }
end''',
}


def source(kind):
    def make(folder, n):
        path = os.path.join(folder, 'show.lua')
        with open(path, 'w', encoding='utf-8') as file:
            file.write(SOURCE % (n, SOURCES[kind]))
        return path
    return make
