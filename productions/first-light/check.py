"""Looks over a finished document before it is packed: what the player would refuse or draw wrongly."""
from document import LAST_TICK

REFERENCES = (   # section, attribute or element -> table it points into
    ("fonts", "model", "meshes"), ("fonts", "material", "materials"),
    ("scenes", "material", "materials"), ("scenes", "font", "fonts"),
    ("timeline", "id", "scenes"), ("timeline", "rtex", "image_textures"), ("timeline", "clearcolor", "values"),
)


def walk(element):
    yield element
    for child in element.children:
        yield from walk(child)


def document(name, d):
    def fail(text, *more):
        raise SystemExit("%s: %s" % (name, text % more))

    counts = {section: len(records) for section, records in d.records.items()}
    for section, count in counts.items():
        if count > 4096:
            fail("%d %s", count, section)
    for section, attribute, table in REFERENCES:
        for record in d.records[section]:
            for element in walk(record):
                handle = element.attributes.get(attribute, 0)
                if not 0 <= int(handle) <= counts[table]:
                    fail("%s: %s %s does not exist", section, attribute, handle)
    for section in ("materials", "scenes", "timeline", "values"):
        for record in d.records[section]:
            for element in walk(record):
                if element.attributes.get("type") == "dynamic" \
                        and not 1 <= element.attributes["value"] <= counts["animation_functions"]:
                    fail("%s: function %s does not exist", section, element.attributes["value"])
    # A number of a placed object means a mesh or effect only while no entry of the list of references
    # that carries the same number is one that scenes may use; all of ours are textures of materials.
    named = {int(setting.attributes["value"]) for material in d.records["materials"]
             for setting in material.children if setting.name.startswith("texture")}
    for handle in range(1, counts["objects"] + 1):
        if handle not in named:
            fail("reference %d is used by no material", handle)
    for scene in d.records["scenes"]:
        if len(scene.children) > 128:
            fail("scene with %d objects", len(scene.children))
    timeline(d, fail)
    leftovers(d, fail)


def timeline(d, fail):
    """Track 0 keeps the show alive: without gaps, to the end of every other track."""
    clips = sorted(d.tracks[0], key=lambda clip: clip[0])
    at = 0
    for clip in clips:
        if clip[0] != at:
            fail("track 0 has a gap at %d", at)
        at = clip[1]
    for track, others in d.tracks.items():
        if track > 31 or len(others) > 256:
            fail("track %d", track)
        for clip in others:
            if clip[1] > at or clip[1] > LAST_TICK:
                fail("track %d goes on after the end, at %d", track, clip[1])


def leftovers(d, fail):
    """The fixed path turns off only the first texture unit that a material does not use, so a unit
    beyond it keeps its last texture: no material may use two units fewer than the one before it."""
    marks = sorted({tick for clips in d.tracks.values() for clip in clips for tick in clip[:2]})
    for begin, end in zip(marks, marks[1:]):
        active = [clip for track in sorted(d.tracks) for clip in d.tracks[track] if clip[0] < end and clip[1] > begin]
        on = [False] * 4
        for _ in range(2):
            for clip in active:
                for units in clip[2].drawn:
                    on = [k < units or (k != units and on[k]) for k in range(4)]
                    if any(on[units:3]):
                        fail('scene "%s" at tick %d: a unit beyond %d stays on', clip[2].name, begin, units)
