#!/usr/bin/env python3
"""Rasterises the letters of contact sheets from DejaVu Sans: writes sheet_font_table.cpp.

Only needed to redraw the letters; the program is built from the table. Needs Pillow.
    python3 make_sheet_font.py [DIRECTORY OF DejaVuSans.ttf AND DejaVuSans-Bold.ttf]
"""
import os
import sys

from PIL import Image, ImageDraw, ImageFont

HERE = os.path.dirname(os.path.abspath(__file__))
FONTS = [("small", "DejaVuSans.ttf", 16), ("large", "DejaVuSans-Bold.ttf", 30)]
LETTERS = [chr(c) for c in range(33, 127)] + [chr(c) for c in range(161, 256) if c != 173] + list("–—‘’“”…")


def glyph(font, letter):
    """Coverage of the ink in sixteen steps, rows of hexadecimal digits, and where it stands."""
    left, top, right, bottom = font.getbbox(letter, anchor="ls")
    image = Image.new("L", (right - left, bottom - top), 0)
    ImageDraw.Draw(image).text((-left, -top), letter, font=font, fill=255, anchor="ls")
    digits = "".join("%x" % ((v * 15 + 127) // 255) for v in image.tobytes())
    return "{%d, %d, %d, %d, %d, %d, \"%s\"}," % (ord(letter), round(font.getlength(letter)), left, top,
                                                 image.width, image.height, digits)


def main():
    directory = sys.argv[1] if len(sys.argv) > 1 else "/usr/share/fonts/truetype/dejavu"
    lines = ["// Written by make_sheet_font.py from DejaVu Sans; not edited by hand.",
             "// clang-format off", '#include "sheet_font.h"', ""]
    for name, file, size in FONTS:
        font = ImageFont.truetype(os.path.join(directory, file), size, layout_engine=ImageFont.Layout.BASIC)
        ascent, descent = font.getmetrics()
        lines.append("static const sheet_glyph %s_glyphs[] = {" % name)
        lines += ["    " + glyph(font, letter) for letter in LETTERS]
        lines += ["};", "",
                  "const sheet_font %s_sheet_font = {%s_glyphs, %d, %d, %d, %d};" % (
                      name, name, len(LETTERS), ascent, descent, round(font.getlength(" "))), ""]
    with open(os.path.join(HERE, "sheet_font_table.cpp"), "w", encoding="utf-8") as f:
        f.write("\n".join(lines).rstrip() + "\n")


if __name__ == "__main__":
    main()
