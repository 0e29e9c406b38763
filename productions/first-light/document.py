"""A document as a script writes it: records are made by name and get their handles here.

A number that moves is a Function, made by Document.function from segments; wherever a number is
expected a Function may stand. Everything is written out as elements whose order counts and whose
names are for the reader.
"""
import struct

TICKS_PER_SECOND = 100
LAST_TICK = 25600

BLEND = {"Alpha": 0, "Add": 1, "Replace": 2, "Add alpha": 3, "Substract alpha": 4}
COMBINE = (
    {"Multiply color": 0, "Ignore alpha, multiply color": 1, "Replace": 2, "Add color": 3},
    {"Add previous": 0, "Multiply previous": 1, "DOT3 previous": 2, "Interpolate with primary color": 3,
     "Interpolate with primary alpha": 4, "Add previous without alpha": 5},
    {"Multiply color and add previous": 0},
)
WRAP = {"Repeat": 0, "Edge clamp": 1}
COORDINATES = {"Off": 0, "Spheremap": 1, "Cubemap": 2}
LOOP = {"Off": 0, "Loop": 1, "Ping-pong": 2}
VALUE_KIND = {"Float": 0, "Integer": 1}
RENDER_MODE = {
    "Simple render": 0, "Render to texture": 1, "Link with previous": 2, "Clear Z-buffer and render": 3,
    "Render to texture, force 16:9": 4, "Render to quarter screen texture": 5,
    "Render to quarter screen texture and don't clean": 6, "Render to quarter screen texture, force 4:3": 7,
    "Clear Z-buffer and link with previous": 8,
}
MODES_WITH_TARGET = (1, 4, 5, 6, 7)
GENERATOR = {"Color": 0, "Sinus plasma": 1, "Radial colors": 2, "Maze": 3, "Bricks": 4, "Noise": 5}
GENERATOR_VALUES = (3, 5, 8, 6, 11, 4)
# Operations that combine their input with a generated image, and those that work on nodes alone.
IMAGE_OPERATION = {"Add": 101, "Multiply": 102, "Maximum": 103, "Minimum": 104}
NODE_OPERATION = {"Invert": 201, "Multiply": 202, "Offset": 203, "Ripple": 204, "Blur": 205, "Emboss": 206,
                  "Add 2": 207, "Mul 2": 208, "Max 2": 209, "Min 2": 210}
EFFECT_2D = {"Test 2d effect": 0, "Effect 1": 1, "Amoba": 2, "Rotate": 3, "Normalmap": 4}
EFFECT_2D_PARAMS = (2, 1, 1, 1, 1)
MESH_EFFECT = {"Lake water": 0, "Centerwave water": 1, "Swirl": 2, "Particles": 3, "Lake water 2": 4}
MESH_EFFECT_PARAMS = (1, 1, 2, 1, 1)
MANIPULATOR = {"XYZ Multiplier": 0, "X Multiplier": 1, "Rippler": 2, "Model placer": 3}
MANIPULATOR_PARAMS = (12, 10, 3, 9)
FORMAT = {"RGB": 0, "RGBA": 1, "LUMINANCE": 2, "LUMINANCE_ALPHA": 3, "small RGB": 4, "small RGBA": 5}
FILTER = {"nearest": 0, "linear": 1, "mipmaps": 2}

# The order of the letters in a font; the space is the last of the 87.
LETTERS = ("aAáÁbBcCdDeEéÉfFgGhHiIíÍjJkKlLmMnNoOóÓöÖőŐpPqQrRřŘsStTuUúÚüÜűŰvVwWxXyYzZ"
           "?!0123456789&/ ")
assert len(LETTERS) == 87


class Element:
    def __init__(self, name, attributes=None, children=None, text=None):
        self.name = name
        self.attributes = attributes or {}
        self.children = children or []
        self.text = text

    def write(self, out, depth=0):
        indent = "  " * depth
        head = indent + "<" + self.name
        for key, value in self.attributes.items():
            value = number(value) if isinstance(value, (int, float)) else str(value)
            assert '"' not in value and "/>" not in value, value
            head += ' %s="%s"' % (key, value)
        if self.text is not None:
            out.append("%s>%s</%s>" % (head, self.text, self.name))
        elif not self.children:
            out.append(head + "/>")
        else:
            out.append(head + ">")
            for child in self.children:
                child.write(out, depth + 1)
            out.append("%s</%s>" % (indent, self.name))


def number(value):
    """The shortest text that reads back as the same number; the player keeps numbers in single precision."""
    if isinstance(value, int):
        return "%d" % value
    single = struct.unpack("<f", struct.pack("<f", value))[0]
    for digits in range(1, 10):
        text = "%.*g" % (digits, single)
        if struct.unpack("<f", struct.pack("<f", float(text)))[0] == single:
            return repr(float(text)).removesuffix(".0")
    raise ValueError(value)


class Record:
    """Anything with a handle: its place in its section, counted from 1."""

    def __init__(self, handle, **more):
        self.handle = handle
        self.__dict__.update(more)


class Function(Record):
    pass


def animated(name, value, constant="static"):
    if isinstance(value, Function):
        return Element(name, {"type": "dynamic", "value": value.handle})
    return Element(name, {"type": constant, "value": float(value)})


# ---- segments of a function: (kind, length in ticks, parameters) ----------------

def hold(length, value):
    return (0, length, [value])


def line(length, start, end):
    return (1, length, [(end - start) / length, start])


def curve_to(length, start, end):
    """A parabola that arrives at its end without speed."""
    return (2, length, [(start - end) / length ** 2, length, end])


def curve_from(length, start, end):
    """A parabola that leaves its start without speed."""
    return (2, length, [(end - start) / length ** 2, 0.0, start])


def wave(length, middle, swing, period, phase=0.0):
    """A sine with its period in ticks; the phase counts in whole turns."""
    return (3, length, [swing, 6.2831853 / period, phase * 6.2831853, middle])


def swelling_wave(length, middle, swing_start, swing_end, period, phase=0.0):
    """A sine whose swing grows or dies down along the segment."""
    slope = (swing_end - swing_start) / length
    return (5, length, [slope, 6.2831853 / period, phase * 6.2831853, middle, swing_start])


def spline(length, points):
    """Up to twelve (tick, value) points with a smooth curve through them."""
    assert 2 <= len(points) <= 12
    assert all(b[0] - a[0] >= 1 for a, b in zip(points, points[1:]))
    return (4, length, [float(x) for point in points for x in point])


# ---- the document ---------------------------------------------------------------

class Unit:
    """What one texture unit of a material does."""

    def __init__(self, texture, combine, wrap="Repeat", coordinates="Off", turn=False):
        self.texture, self.combine, self.wrap = texture, combine, wrap
        self.coordinates, self.turn = coordinates, turn


class Document:
    SECTIONS = ("generated_images", "texture_nodes", "meshes", "animation_functions", "values",
                "dynamic_textures", "image_textures", "cube_maps", "fonts", "objects", "materials",
                "effects", "scenes", "timeline")

    def __init__(self, name):
        self.name = name
        self.records = {section: [] for section in self.SECTIONS}
        self.music_file = None
        self.files = {}              # entry name -> bytes
        self.cache = {}
        self.tracks = {}             # track -> list of clips
        self.node_outputs = {}

    def add(self, section, element, **more):
        self.records[section].append(element)
        kind = Function if section == "animation_functions" else Record
        return kind(len(self.records[section]), **more)

    # ---- generated textures

    def generated_image(self, kind, *values):
        code = GENERATOR[kind]
        values = [x for value in values for x in (value if isinstance(value, tuple) else (value,))]
        assert len(values) == GENERATOR_VALUES[code], (kind, len(values))
        texts = [Element("value", text=number(float(x))) for x in values]
        return self.add("generated_images", Element("image", {"type": code}, texts))

    def node(self, name, operation, first, second=None, *values):
        """A texture node. `second` is a generated image for the four operations that take one."""
        with_image = second is not None and not hasattr(second, "outputs")
        code = (IMAGE_OPERATION if with_image else NODE_OPERATION)[operation]
        assert len(name.encode()) < 35 and (second is not None or code < 207)
        attributes = {"name": name, "type": code, "texture_format": 0, "texture_filter": 1}
        if with_image:
            attributes["layer_id"] = second.handle - 1
        element = Element("node", attributes)
        inputs = [first] if with_image or second is None else [first, second]
        node = self.add("texture_nodes", element, outputs=[], inputs=inputs, values=values, written=element)
        self.cache.setdefault("nodes", []).append(node)
        for source in inputs:
            if source is not None:
                source.outputs.append(node.handle)
        return node

    def generated_texture(self, name, node, filtering="mipmaps"):
        element = Element("output", {"name": name, "type": 255, "texture_format": 0,
                                     "texture_filter": FILTER[filtering]},
                          [Element("input", text=str(node.handle))])
        record = self.add("texture_nodes", element, texture_kind=0)
        node.outputs.append(record.handle)
        return record

    def finish_nodes(self):
        for node in self.cache.get("nodes", []):
            handles = [0 if source is None else source.handle for source in node.inputs]
            node.written.children = ([Element("input", text=str(handle)) for handle in handles]
                                     + [Element("output", text=str(handle)) for handle in dict.fromkeys(node.outputs)]
                                     + [Element("value", text=number(float(x))) for x in node.values])

    # ---- things of the pack

    def entry(self, name, data):
        assert 0 < len(name.encode()) <= 31, name
        self.files.setdefault(name, data)
        return name

    def mesh(self, name, mesh):
        key = ("mesh", name)
        if key not in self.cache:
            self.entry(name + ".mesh", mesh.packed())
            self.cache[key] = self.add("meshes", Element("mesh", {"filename": name + ".mesh"}))
        return self.cache[key]

    def image(self, name, data, filtering="mipmaps", form="RGB", copy=0):
        key = ("image", name, filtering, form, copy)
        if key not in self.cache:
            self.entry(name, data)
            self.cache[key] = self.add("image_textures", Element("image", {
                "filename": name, "texture_format": FORMAT[form], "texture_filter": FILTER[filtering]}), texture_kind=1)
        return self.cache[key]

    def cube_map(self, names, datas, filtering="linear"):
        for name, data in zip(names, datas):
            self.entry(name, data)
        faces = dict(zip(("xp", "xn", "yp", "yn", "zp", "zn"), names))
        return self.add("cube_maps", Element("cube_map", {
            **faces, "texture_format": 0, "texture_filter": FILTER[filtering]}), texture_kind=3)

    # ---- numbers that move

    def function(self, *segments, loop="Off", begin=0, end=0, kind="Float"):
        assert 1 <= len(segments) <= 16
        children = []
        for code, length, values in segments:
            assert length > 0 and len(values) <= 24
            children.append(Element("segment", {"type": code, "length": int(length)},
                                    [Element("value", text=number(float(x))) for x in values]))
        key = ("function", loop, begin, end, kind, repr(segments))
        if key not in self.cache:
            self.cache[key] = self.add("animation_functions", Element("function", {
                "type": VALUE_KIND[kind], "loop_type": LOOP[loop], "loop_begin": begin, "loop_end": end}, children))
        return self.cache[key]

    def value_record(self, first=(0, 0, 0), second=(0, 0, 0), third=(0, 0, 0)):
        names = ("ambient_red", "ambient_green", "ambient_blue", "red", "green", "blue", "x", "y", "z")
        values = [animated(n, v) for n, v in zip(names, (*first, *second, *third))]
        return self.add("values", Element("record", {}, [Element("values", {}, values)]))

    def light(self, ambient, diffuse, position):
        return self.value_record(ambient, diffuse, position)

    def color(self, red, green, blue):
        return self.value_record(second=(red, green, blue))

    # ---- textures and shapes that the player computes

    def dynamic_texture(self, kind, size, bits, *functions, filtering="linear"):
        code = EFFECT_2D[kind]
        assert len(functions) == EFFECT_2D_PARAMS[code]
        return self.add("dynamic_textures", Element("effect", {
            "name": kind, "type": code, "texture_filter": FILTER[filtering],
            "texture_format": FORMAT["LUMINANCE" if bits == 8 else "RGB"],
            "resolution": "%dx%d" % (size, size), "bpp": bits},
            [Element("p", text=str(function.handle)) for function in functions]), texture_kind=2)

    def mesh_effect(self, kind, *functions):
        code = MESH_EFFECT[kind]
        assert len(functions) == MESH_EFFECT_PARAMS[code]
        return self.add("effects", Element("effect", {"name": kind, "type": code}, [
            Element("p", text=str(function.handle)) for function in functions]), is_effect=True)

    # ---- fonts, materials

    def texture_reference(self, texture):
        key = ("texture", texture.texture_kind, texture.handle)
        if key not in self.cache:
            self.cache[key] = self.add("objects", Element("texture", {
                "type": texture.texture_kind, "id": texture.handle}))
        return self.cache[key]

    def font(self, glyphs, material):
        """`glyphs`: letter -> (mesh or None, offset, width)."""
        children = []
        for letter in LETTERS:
            mesh, offset, width = glyphs[letter]
            children.append(Element("glyph", {
                "model": 0 if mesh is None else mesh.handle, "material": material.handle, "bitmap": 0,
                "offset": float(offset), "width": float(width)}))
        return self.add("fonts", Element("font", {}, children), materials=[material])

    def material(self, color=(1, 1, 1, 1), units=(), blend="Replace", cull=False, depth=True, normalize=False,
                 wire=None, light1=None, light2=None, fog=None, fog_color=None, hint="Nicest"):
        settings = [Element(name, {"value": int(on)}) for name, on in (
            ("backface_culling", cull), ("depth_test", depth), ("normalization", normalize),
            ("wireframe", wire is not None), ("blend_function", BLEND[blend]))]
        settings += [animated(name, value) for name, value in zip(("red", "green", "blue", "alpha"), color)]
        settings.append(animated("linewidth", 1.0 if wire is None else wire))
        settings += [Element(name, {"value": 0 if light is None else light.handle})
                     for name, light in (("light1", light1), ("light2", light2))]
        for index in range(3):
            unit = units[index] if index < len(units) else None
            values = {"value": 0, "wrapmode": 0, "cgenmode": 0, "rotation": 0, "function": 0}
            if unit is not None:
                values = {"value": self.texture_reference(unit.texture).handle, "wrapmode": WRAP[unit.wrap],
                          "cgenmode": COORDINATES[unit.coordinates], "rotation": int(unit.turn),
                          "function": COMBINE[index][unit.combine]}
            settings.append(Element("texture%d" % (index + 1), values))
        settings.append(Element("fogtype", {"value": 0 if fog is None else {"Fastest": 1, "Nicest": 2}[hint]}))
        start, end = (0, 1) if fog is None else fog
        settings += [animated("fogstart", start), animated("fogend", end),
                     Element("fogcolor", {"value": 0 if fog_color is None else fog_color.handle}),
                     Element("enable_glsl", {"value": 0})]
        return self.add("materials", Element("material", {}, settings), units=len(units))

    # ---- scenes and the timeline

    def scene(self, name):
        element = Element("scene", {"name": name})
        record = self.add("scenes", element)
        return Scene(self, element, record.handle, name)

    def clip(self, track, start, end, scene, mode, camera, clear=None, target=None, offset=0):
        assert 0 <= start < end <= LAST_TICK
        code = RENDER_MODE[mode]
        assert (target is not None) == (code in MODES_WITH_TARGET), mode
        self.tracks.setdefault(track, []).append((start, end, scene, code, camera, clear, target, offset))

    def finish_timeline(self):
        for track in range(max(self.tracks) + 1):
            children, at = [], 0
            for start, end, scene, mode, camera, clear, target, offset in sorted(
                    self.tracks.get(track, []), key=lambda clip: clip[0]):
                assert start >= at, "track %d: clips overlap at %d" % (track, start)
                # A span that does not reach the next whole second is never shown.
                assert at % 100 == 0 or at % 100 + end - at > 99, "track %d: lost clip at %d" % (track, start)
                attributes = {"id": scene.handle, "space_before": start - at, "length": end - start,
                              "offset": offset, "type": mode, "clearcolor": 0 if clear is None else clear.handle}
                if target is not None:
                    attributes["rtex"] = target.handle
                children.append(Element("clip", attributes, camera.elements()))
                at = end
            self.records["timeline"].append(Element("track", {}, children))

    def element(self):
        self.finish_nodes()
        self.finish_timeline()
        root = Element("production", {"name": self.name})
        root.children = [Element(section, {}, self.records[section]) for section in self.SECTIONS]
        root.children.append(Element("music", {"file": self.music_file} if self.music_file else {}))
        return root

    def text(self):
        out = []
        self.element().write(out)
        return "\n".join(out) + "\n"


class Scene:
    def __init__(self, document, element, handle, name):
        self.document, self.element, self.handle, self.name = document, element, handle, name
        self.drawn = []              # texture units of each object's materials, for the check of leftovers

    def place(self, kind, thing, material, font, text, at, turn, size, visible, offset, facing, manipulators):
        assert len(self.element.children) < 128 and len(text.encode()) <= 32, text
        size = (size, size, size) if not isinstance(size, tuple) else size
        names = ("x", "y", "z", "rotation_x", "rotation_y", "rotation_z", "scale_x", "scale_y", "scale_z")
        children = [animated(n, v) for n, v in zip(names, (*at, *turn, *size))]
        children += [Element("visible", {"value": 0 if visible is None else visible.handle}),
                     Element("time_offset", {"value": float(offset)}), Element("facing", {"value": int(facing)}),
                     Element("manipulators", {}, [m.element() for m in manipulators])]
        assert len(manipulators) <= 7
        self.element.children.append(Element("placed", {
            "type": kind, "object": 0 if thing is None else thing.handle,
            "material": 0 if material is None else material.handle,
            "font": 0 if font is None else font.handle, "text": text}, children))
        return self

    def model(self, mesh, material, at=(0, 0, 0), turn=(0, 0, 0), size=1.0, visible=None, offset=0, facing=False,
              manipulators=()):
        self.drawn.append(material.units)
        return self.place(0, mesh, material, None, "", at, turn, size, visible, offset, facing, manipulators)

    def effect(self, effect, material, at=(0, 0, 0), turn=(0, 0, 0), size=1.0, visible=None, offset=0, facing=False,
               manipulators=()):
        self.drawn.append(material.units)
        return self.place(1, effect, material, None, "", at, turn, size, visible, offset, facing, manipulators)

    def text(self, font, text, at=(0, 0, 0), turn=(0, 0, 0), size=1.0, visible=None, offset=0, facing=False,
             manipulators=()):
        self.drawn.append(font.materials[0].units)
        return self.place(2, None, None, font, text, at, turn, size, visible, offset, facing, manipulators)


class Manipulator:
    def __init__(self, kind, *params, model=None):
        self.code = MANIPULATOR[kind]
        self.params, self.model = params, model
        assert len(params) == MANIPULATOR_PARAMS[self.code], (kind, len(params))
        assert model is None or self.code == 3

    def element(self):
        children = []
        if self.model is not None:
            is_effect = getattr(self.model, "is_effect", False)
            children.append(Element("manipulator", {"type": int(is_effect), "model": self.model.handle}))
        children += [animated("p", value) for value in self.params]
        return Element("manipulator", {"type": self.code}, children)


def in_rows(counts, steps, turns=(0, 0, 0), growth=(0, 0, 0)):
    return Manipulator("XYZ Multiplier", *counts, *steps, *turns, *growth)


def in_line(count, step, turns=(0, 0, 0), growth=(0, 0, 0)):
    return Manipulator("X Multiplier", count, *step, *turns, *growth)


def on_vertices(model, at=(0, 0, 0), turn=(0, 0, 0), size=(1, 1, 1)):
    return Manipulator("Model placer", *at, *turn, *size, model=model)


def rippled(time, amplitude, wavelength):
    return Manipulator("Rippler", time, amplitude, wavelength)


class Camera:
    """Eight numbers of a clip and one that is read and not used."""

    def __init__(self, at=(0, 0, 0), turn=(0, 0, 0), fov=60.0, far=600.0):
        # The document moves the world, so it holds the eye's position negated.
        self.at, self.turn, self.fov, self.far = at, turn, fov, far

    def elements(self):
        names = ("x", "y", "z", "rotation_x", "rotation_y", "rotation_z")
        values = [v if isinstance(v, Function) else -v for v in self.at] + list(self.turn)
        children = [animated(n, v) for n, v in zip(names, values)]
        if self.fov is None:
            children.append(Element("field_of_view", {"type": "ortographic", "value": 0.0}))
        else:
            children.append(animated("field_of_view", self.fov))
        return children + [animated("far_plane", self.far), animated("unused", 0.0)]


def flat_camera():
    """The screen itself: (0, 0) is its top left corner, (1, 1) its bottom right one."""
    return Camera(fov=None)
