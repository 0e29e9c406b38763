#!/usr/bin/env python3
"""Builds the show "First Light": OUTDIR/demo.dpk, its music, and both documents as readable text.

    python3 productions/first-light/build.py OUTDIR            the whole show
    python3 productions/first-light/build.py OUTDIR temple     one scene of it, to work on

Needs nothing beyond Python 3. The scenes stand in files of their own, in the order of the show.
"""
import os
import shutil
import sys

HERE = os.path.dirname(os.path.abspath(__file__))
sys.path.insert(0, HERE)

import bloom  # noqa: E402
import check  # noqa: E402
import lake  # noqa: E402
import loading  # noqa: E402
import morning  # noqa: E402
import night  # noqa: E402
import pack  # noqa: E402
import stones  # noqa: E402
import temple  # noqa: E402
import windows  # noqa: E402
from stage import BEAT, CREAM, INK, PEACH, Stage, bars  # noqa: E402

MUSIC = "first-light.ogg"

# (scene, bars). No cut falls on a whole second: then every track changes over at the same tick.
SCENES = ((night, 4), (lake, 5), (stones, 4), (temple, 4), (windows, 4), (bloom, 3), (morning, 4))


# What covers the cut at the end of each scene: colour, ticks to come, ticks to go.
CUTS = ((INK, BEAT, BEAT), (PEACH, BEAT // 2, BEAT), (INK, BEAT // 2, BEAT), (INK, BEAT // 2, BEAT),
        (CREAM, BEAT // 4, 2 * BEAT), (CREAM, BEAT, 2 * BEAT))


def show(scenes):
    stage = Stage("First Light")
    stage.document.music_file = MUSIC
    start = 0
    stage.fade(0, (0, 0, 0), 0, 3 * BEAT)
    for (scene, count), cut in zip(scenes, (*CUTS, None)):
        end = start + bars(count)
        assert end % 100 or len(scenes) < len(SCENES), "a cut on a whole second"
        scene.build(stage, start, end)
        stage.caption(start + BEAT // 2, scene.CAPTION)
        if end != sum(bars(count) for _, count in scenes):
            stage.fade(end, *cut)
        start = end
    stage.vignette(0, start)
    stage.fade(start - 20, CREAM, 2 * BEAT, 0, hold_dark=20)
    return stage


def main():
    if len(sys.argv) < 2:
        sys.exit("usage: build.py OUTDIR [SCENE ...]")
    scenes = [s for s in SCENES if len(sys.argv) == 2 or s[0].__name__ in sys.argv[2:]]
    out = sys.argv[1]
    os.makedirs(out, exist_ok=True)
    entries = {}
    for name, stage in (("loading", loading.build()), ("demo", show(scenes))):
        document = stage.document
        text = document.text()
        check.document(name, document)
        with open(os.path.join(out, name + ".xml"), "w", encoding="utf-8") as file:
            file.write(text)
        entries[name + ".xmlz"] = pack.compressed(text.encode("utf-8"))
        for entry, data in document.files.items():
            assert entries.setdefault(entry, data) == data, entry
    pack.write_pack(os.path.join(out, "demo.dpk"), entries)
    shutil.copyfile(os.path.join(HERE, MUSIC), os.path.join(out, MUSIC))
    print("%s: %d entries, %d KiB" % (os.path.join(out, "demo.dpk"), len(entries),
                                      os.path.getsize(os.path.join(out, "demo.dpk")) // 1024))


if __name__ == "__main__":
    main()
