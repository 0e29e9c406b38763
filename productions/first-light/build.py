#!/usr/bin/env python3
"""Builds the show "First Light": OUTDIR/demo.dpk, its music, and both documents as readable text.

    python3 productions/first-light/build.py OUTDIR

Needs nothing beyond Python 3. The scenes stand in files of their own, in the order of the show.
"""
import os
import shutil
import sys

HERE = os.path.dirname(os.path.abspath(__file__))
sys.path.insert(0, HERE)

import check  # noqa: E402
import lake  # noqa: E402
import loading  # noqa: E402
import morning  # noqa: E402
import night  # noqa: E402
import pack  # noqa: E402
import stones  # noqa: E402
from stage import BAR, BEAT, CREAM, INK, PEACH, Stage, bars  # noqa: E402

MUSIC = "first-light.ogg"

# (scene, bars). No cut falls on a whole second: then every track changes over at the same tick.
SCENES = ((night, 4), (lake, 5), (stones, 4), (morning, 4))


def show():
    stage = Stage("First Light")
    stage.document.music_file = MUSIC
    start, cuts = 0, []
    for scene, count in SCENES:
        end = start + bars(count)
        assert end % 100, "a cut on a whole second"
        scene.build(stage, start, end)
        cuts.append(end)
        start = end
    last = cuts[-1]
    stage.vignette(0, last)
    stage.fade(0, (0, 0, 0), 0, 3 * BEAT)
    for cut, color, before, after in ((cuts[0], INK, BEAT, BEAT), (cuts[1], PEACH, BEAT // 2, BEAT), (cuts[2], CREAM, BEAT, BEAT * 2)):
        stage.fade(cut, color, before, after)
    stage.fade(last - 20, CREAM, 2 * BEAT, 0, hold_dark=20)
    return stage


def main():
    if len(sys.argv) != 2:
        sys.exit("usage: build.py OUTDIR")
    out = sys.argv[1]
    os.makedirs(out, exist_ok=True)
    entries = {}
    for name, stage in (("loading", loading.build()), ("demo", show())):
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
