"""The small productions of the picture tests: between them every generator, texture operation, 2-D effect,
mesh effect, manipulator, blending, combine mode and kind of render target.

SHOWS: name -> function that writes demo.dpk into a folder; STILLS: name -> the frames that are kept.
"""
import math
import os
import sys

HERE = os.path.dirname(os.path.abspath(__file__))
ROOT = os.path.dirname(os.path.dirname(HERE))
sys.path.insert(0, os.path.join(os.path.dirname(HERE), 'support'))
from packs import png, quad, sphere  # noqa: E402
from production import (ADD, ADD_ALPHA, ALPHA, CUBE, DYNAMIC, GENERATED, GENMESH, IMAGE, REPLACE, SUBTRACT_ALPHA,  # noqa: E402
                        TEXT, Element, Production, animated, dynamic, manipulator, placed)

FRAMES_PER_SECOND = 4
SECOND = 100  # ticks
LONG = 25000  # ticks, until nobody looks any more
REPLACED = 2  # unit 1: "Replace"


def tiles(show, materials, columns, rows, meshes=None):
    """Materials side by side in a scene for an orthographic layer."""
    square = show.mesh(quad()) if meshes is None else None
    return show.scene(*(placed(meshes[n] if meshes else square, material,
                               at=((n % columns + 0.04) / columns, (n // columns + 0.04) / rows, 0),
                               scaled=(0.92 / columns, 0.92 / rows, 1))
                        for n, material in enumerate(materials)))


def picture(size, shade):
    return png(size, size, b''.join(bytes(shade(x / size, y / size)) for y in range(size) for x in range(size)), 9)


def checks(x, y):
    light = 230 if (int(x * 8) + int(y * 8)) % 2 else 90
    return light, int(light * (0.4 + 0.6 * x)), int(light * (0.4 + 0.6 * y))


def ball(x, y):
    """A shining ball, and a height map for DOT3."""
    px, py = 2 * x - 1, 2 * y - 1
    pz = math.sqrt(max(0.0, 1 - px * px - py * py))
    return tuple(int(127.5 + 127.5 * c) for c in (px, -py, pz))


def textures(folder):
    """Six generators, then the operations on them."""
    show = Production()
    show.generated_image(0, 0.9, 0.5, 0.1)
    show.generated_image(1, 1, 0.8, 0.5, 3, 2)
    show.generated_image(2, 1, 0.9, 0.4, 0.1, 0, 0.4, 1.5, 20)
    show.generated_image(3, 0.5, 0.9, 0.7, 4, 7, 0.5)
    show.generated_image(4, 0.7, 0.25, 0.15, 0.8, 0.8, 0.75, 8, 4, 2, 3, 32)
    show.generated_image(5, 0.9, 0.9, 1, 11)

    def shown(node, filtering=2):
        return show.reference(GENERATED, show.texture_node(255, node, filtering=filtering))

    layers = [show.texture_node(101, 0, 0, 1, image=n) for n in range(6)]
    outputs = [shown(node) for node in layers]
    bricks, noise, plasma = layers[4], layers[5], layers[1]
    operations = [
        show.texture_node(101, bricks, 0.5, 0.5, image=1), show.texture_node(102, bricks, 1 / 255, image=5),
        show.texture_node(103, bricks, 1, 0.8, image=3), show.texture_node(104, bricks, 1, 1, image=2),
        show.texture_node(201, bricks), show.texture_node(202, bricks, 1.6), show.texture_node(203, bricks, 40, 90),
        show.texture_node(204, bricks, 0.05, 0.1, 2, 3), show.texture_node(205, noise), show.texture_node(206, bricks, 2),
        show.texture_node(207, bricks, 0.5, 0.5, input2=plasma), show.texture_node(208, bricks, 1 / 255, input2=noise),
        show.texture_node(209, bricks, 0.8, 1, input2=plasma), show.texture_node(210, bricks, 1, 1, input2=plasma),
        show.texture_node(206, plasma, 4)]
    results = [shown(node) for node in operations]
    for references, columns, rows in ((outputs, 3, 2), (results, 5, 3)):
        materials = [show.material(textures=[(r, REPLACED)]) for r in references]
        show.layer(tiles(show, materials, columns, rows), SECOND)
    show.write(folder)


def effects(folder):
    """The 2-D effects on a wall; then mesh effects, lit, with a swarm of balls."""
    show = Production()
    rise = show.function((1, 10 * SECOND, 0.02, 0))
    turn = show.function((1, 10 * SECOND, 0.01, 0))
    light = show.values(0.3, 0.3, 0.3, 1, 0.9, 0.8, 2, 6, 4)
    surfaces = [show.dynamic_texture(kind, rise, turn, resolution=size, bpp=depth)
                for kind, size, depth in ((0, '64x64', '24'), (1, '128x128', '24'), (2, '128x128', '24'),
                                          (3, '128x128', '24'), (4, '64x64', '24'), (1, '256x256', '8'))]
    materials = [show.material(textures=[(show.reference(DYNAMIC, s), REPLACED)]) for s in surfaces]
    show.layer(tiles(show, materials, 3, 2), SECOND)

    slow = show.function((1, 10 * SECOND, 0.002, 0))
    step = show.function((1, 10 * SECOND, 0.0399, 0))  # a lake's step in nearly every frame
    swirl, radius = show.function((1, 10 * SECOND, 0.0002, 0.05)), show.function((0, 10 * SECOND, 20))
    for kind in range(5):
        show.effect(kind, (step, rise, swirl, slow, step)[kind], radius)
    solid = show.mesh(sphere(6, 8))
    look = [show.material(c, light1=light, depth_test=1, normalization=1) for c in
            ((0.3, 0.6, 1), (0.2, 0.9, 0.6), (1, 0.6, 0.2), (1, 1, 1), (0.7, 0.5, 1))]
    fan = show.material((1, 0.6, 0.2, 0.1), blend=ALPHA)  # its triangles lie on each other: no depth test
    small = (0.06, 0.25, 0.06)
    world = show.scene(
        placed(1, look[0], GENMESH, at=(-2.1, 0.9, 0), scaled=small),
        placed(2, look[1], GENMESH, at=(0.3, 0.9, 0), scaled=small),
        placed(3, fan, GENMESH, at=(1.3, -0.9, 0), scaled=(0.003, 0.003, 1)),
        placed(5, look[4], GENMESH, at=(-2.1, -1.1, 0), scaled=(0.03, 2, 0.03)),
        placed(4, look[3], GENMESH, at=(0, 0, 0)),
        placed(solid, look[3], at=(-1, -1, 0), scaled=(0.08, 0.08, 0.08),
               manipulators=[manipulator(3, 0, 0, 0, 0, 0, 0, 0.2, 0.2, 0.2, model=(1, 4))]))
    show.layer(world, 6 * SECOND, camera=(0, -1.9, -6, 20, 0, 0), fov=45)
    show.write(folder)


def materials(folder):
    """Blendings, combine modes of units 2 and 3, environment maps, fog, lights, lines, manipulators, text."""
    show = Production()
    turn = show.function((1, 10 * SECOND, 0.4, 0))
    light = show.values(0.25, 0.25, 0.25, 1, 0.9, 0.8, 3, 4, 5)
    blue_light = show.values(0, 0, 0, 0.2, 0.3, 1, -4, 0, 2)
    fog = show.values(0, 0, 0, 0.5, 0.2, 0.4, 0, 0, 0)
    checked = show.reference(IMAGE, show.image(picture(64, checks), filtering=2))
    shining = show.reference(IMAGE, show.image(picture(64, ball)))
    for face, rgb in enumerate(((220, 60, 60), (60, 220, 60), (240, 240, 200), (40, 40, 60), (60, 60, 220), (220, 200, 60))):
        show.entries['face%d.png' % face] = picture(16, lambda x, y, rgb=rgb: tuple(int(c * (0.5 + x / 2)) for c in rgb))
    cube = show.reference(CUBE, show.cube_map(*('face%d.png' % n for n in range(6)), filtering=1))

    # Still 1: every blending over a checked wall, then two and three units.
    wall = show.scene(placed(show.mesh(quad()), show.material(textures=[(checked, REPLACED)])))
    colour = (0.9, 0.5, 0.2, 0.6)
    patches = [show.material(colour, blend=blend) for blend in (ALPHA, ADD, REPLACE, ADD_ALPHA, SUBTRACT_ALPHA)]
    patches += [show.material(colour, [(checked, 0), (shining, mode)]) for mode in range(6)]
    patches += [show.material(colour, [(checked, 1), (shining, 1), (checked, mode)]) for mode in (0, 1, 2, 4)]
    # Down by one unit at a time: on the fixed path units behind the first empty one stay on.
    patches += [show.material(colour, [(checked, 0), (shining, 1)]), show.material(colour, [(checked, 0)]),
                show.material(colour)]
    show.layer(wall, SECOND)
    show.layer(tiles(show, patches, 6, 3), SECOND, track=2)

    # Still 2: balls in space.
    solid = show.mesh(sphere())
    balls = [show.material((1, 0.8, 0.6), light1=light, depth_test=1, backface_culling=1),
             show.material((1, 1, 1), light1=light, light2=blue_light, depth_test=1),
             show.material((1, 1, 1), [(checked, 0)], light1=light, depth_test=1),
             show.material((1, 1, 1), depth_test=1, texture1=environment(shining, 1)),
             show.material((1, 1, 1), depth_test=1, texture1=environment(cube, 2)),
             show.material((0.2, 0.9, 0.6), wireframe=1, depth_test=1),
             show.material((1, 1, 1), [(checked, 0)], light1=light, depth_test=1, fogtype=2, fogcolor=fog,
                           fogstart=animated('fogstart', 4), fogend=animated('fogend', 14))]
    letter = show.mesh(quad(0, 0, 0.7, 1))
    show.font(letter, balls[0], width=0.8)
    row = [placed(solid, balls[n], at=(-2.1 + 1.4 * (n % 4), 1.2 - 1.3 * (n // 4), 0), turned=(0, dynamic(turn), 0),
                  scaled=(0.6, 0.6, 0.6)) for n in range(6)]
    row.append(placed(solid, balls[6], at=(0.7, -0.6, -7), turned=(0, dynamic(turn), 0), scaled=(0.4, 0.4, 0.4),
                      manipulators=[manipulator(0, 2, 2, 4, 0.9, 0.9, 2, 10, 0, 0, 0, 0, 0)]))
    row.append(placed(solid, balls[2], at=(-1.6, -1.5, 0), scaled=(0.5, 0.5, 0.5),
                      manipulators=[manipulator(1, 3, 1.1, 0, 0, 0, 0, 30, -0.1, -0.1, -0.1)]))
    row.append(placed(0, balls[0], TEXT, 1, 'ABC', at=(0.4, -2.2, 0), scaled=(0.5, 0.5, 0.5)))
    show.layer(show.scene(*row), SECOND, space_before=0, camera=(0, 0.3, -6.5, 0, 0, 0), fov=45)
    show.write(folder)


def environment(reference, generation):
    """The setting of unit 1 with coordinates from the reflection (1 a shining ball, 2 a cube map)."""
    return Element('texture1', value=reference, wrapmode=0, cgenmode=generation, rotation=0, function=REPLACED)


def layers(folder):
    """A ball rendered to textures in every way, its copies on walls; the rippler; linked and cleared layers."""
    show = Production()
    turn = show.function((1, 10 * SECOND, 0.5, 0))
    wave = show.function((1, 10 * SECOND, 0.05, 0))
    light = show.values(0.3, 0.3, 0.3, 1, 1, 1, 3, 4, 5)
    night = show.values(0, 0, 0, 0.1, 0.1, 0.3, 0, 0, 0)
    checked = show.reference(IMAGE, show.image(picture(64, checks), filtering=2))
    targets = [show.image(png(128, 128)) for _ in range(5)]
    walls = [show.material(textures=[(show.reference(IMAGE, t), REPLACED)]) for t in targets]
    solid = show.mesh(sphere())
    skin = show.material((1, 1, 1), [(checked, 0)], light1=light, depth_test=1)
    still = show.scene(placed(solid, skin, turned=(20, dynamic(turn), 0)))
    rippled = show.scene(placed(solid, skin, manipulators=[manipulator(2, dynamic(wave), 0.02, 6)]))
    camera = dict(camera=(0, 0, -3, 0, 0, 0), fov=50)
    length = 2 * SECOND
    for track, (mode, target) in enumerate(zip((1, 4, 5, 6, 7), targets), 1):
        show.layer(rippled if mode == 5 else still, length, track=track, mode=mode, rtex=target, clearcolor=night, **camera)
    show.layer(tiles(show, walls, 3, 2), length, track=6)
    show.layer(still, length, track=7, mode=8, camera=(-1.6, 1, -5, 0, 0, 0), fov=50)
    show.layer(still, length, track=8, mode=2, camera=(-1.2, 1, -5, 0, 0, 0), fov=50)
    show.layer(rippled, length, track=9, mode=3, camera=(-2, 1.6, -6, 0, 0, 0), fov=60)
    show.write(folder)


def held(folder):
    """A picture that never moves, with something of everything: the player in its window is compared with it too."""
    show = Production()
    light = show.values(0.25, 0.25, 0.25, 1, 0.9, 0.8, 3, 4, 5)
    fog = show.values(0, 0, 0, 0.5, 0.2, 0.4, 0, 0, 0)
    night = show.values(0, 0, 0, 0.2, 0.2, 0.4, 0, 0, 0)  # which every driver rounds alike
    still = show.function((0, LONG, 0.3))
    show.generated_image(1, 1, 0.8, 0.5, 3, 2)
    show.generated_image(4, 0.7, 0.25, 0.15, 0.8, 0.8, 0.75, 8, 4, 2, 3, 32)
    show.generated_image(3, 0.5, 0.9, 0.7, 4, 7, 0.5)
    plasma, bricks, maze = (show.texture_node(101, 0, 0, 1, image=n) for n in range(3))
    maze = show.reference(GENERATED, show.texture_node(255, maze))
    mixed = show.texture_node(255, show.texture_node(209, bricks, 0.8, 1, input2=plasma), filtering=2)
    checked = show.image(picture(64, checks), filtering=2)
    shining = show.image(picture(64, ball))
    target = show.image(png(128, 128))
    surface = show.dynamic_texture(1, still, still, resolution='128x128')
    for face, rgb in enumerate(((220, 60, 60), (60, 220, 60), (240, 240, 200), (40, 40, 60), (60, 60, 220), (220, 200, 60))):
        show.entries['face%d.png' % face] = picture(16, lambda x, y, rgb=rgb: tuple(int(c * (0.5 + x / 2)) for c in rgb))
    cube = show.reference(CUBE, show.cube_map(*('face%d.png' % n for n in range(6)), filtering=1))
    mixed, surface = show.reference(GENERATED, mixed), show.reference(DYNAMIC, surface)
    checked, shining, target_seen = (show.reference(IMAGE, n) for n in (checked, shining, target))
    solid = show.mesh(sphere())
    looks = [show.material((1, 1, 1), [(checked, 0)], light1=light, depth_test=1),
             show.material((1, 1, 1), depth_test=1, texture1=environment(shining, 1)),
             show.material((1, 1, 1), depth_test=1, texture1=environment(cube, 2)),
             show.material((1, 1, 1), [(checked, 0)], light1=light, depth_test=1, fogtype=2, fogcolor=fog,
                           fogstart=animated('fogstart', 4), fogend=animated('fogend', 9)),
             show.material((1, 0.8, 0.6, 0.5), blend=ALPHA, light1=light, depth_test=1, backface_culling=1)]
    letter = show.mesh(quad(0, 0, 0.7, 1))
    show.font(letter, looks[4], width=0.8)
    turned = show.scene(placed(solid, looks[0], turned=(20, 30, 0)))
    walls = [show.material(textures=[(r, REPLACED)]) for r in (mixed, surface, target_seen, maze)]
    walls += [show.material((0.9, 0.5, 0.2, 0.6), [(checked, 0), (shining, mode)]) for mode in (1, 3)]
    balls = [placed(solid, looks[n], at=(-2.1 + 1.4 * n, 0.9, 0), turned=(10, 40, 0), scaled=(0.6, 0.6, 0.6))
             for n in range(4)]
    balls.append(placed(solid, looks[0], at=(-1.6, -1.2, 0), scaled=(0.4, 0.4, 0.4),
                        manipulators=[manipulator(1, 3, 1.1, 0, 0, 0, 0, 30, -0.1, -0.1, -0.1)]))
    balls.append(placed(0, looks[4], TEXT, 1, 'HELD', at=(0.2, -1.9, 0)))
    camera = dict(camera=(0, 0, -3, 0, 0, 0), fov=50)
    show.layer(turned, LONG, mode=5, rtex=target, clearcolor=night, **camera)
    show.layer(tiles(show, walls, 3, 2), LONG, track=2)
    show.layer(show.scene(*balls), LONG, track=3, camera=(0, 0.2, -6, 0, 0, 0), fov=45)
    show.write(folder)


SHOWS = {'textures': textures, 'effects': effects, 'materials': materials, 'layers': layers, 'held': held}
SOURCES = {'spinning-cube': os.path.join(ROOT, 'productions', 'examples', 'spinning-cube'),     # that brimlow-make builds
           'first-light': os.path.join(ROOT, 'productions', 'first-light')}
STILLS = {'textures': (0, 4), 'effects': (3, 11, 27), 'materials': (0, 5), 'layers': (2, 7), 'held': (0,),
          'spinning-cube': (4, 12), 'first-light': (32, 96, 160, 224, 256)}
