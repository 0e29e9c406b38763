// The letters of a font file as shapes: TrueType, OpenType, Type 1 and what else FreeType knows that has outlines.
//
// A letter's shape stands on the base line (y = 0) with its pen at x = 0, in units of the scene. Nothing is kept;
// no other file than the font's is read. The same file and options give the same shapes everywhere: nothing
// is hinted.
#pragma once

#include "authoring/asset/shape.h"

#include <array>
#include <cstdint>
#include <string>
#include <vector>

constexpr uint32_t font_letters = 87;           // as many as a font of a document has, in the order of model/glyphs.h
constexpr double default_font_detail = 0.00015; // a sixth of a pixel where a capital fills 1,080 rows

struct font_options {
    double height;   // of a capital H, units of the scene; above 0
    double depth;    // units of the scene, about z = 0; 0: flat
    double bevel;    // how much of the rim is rounded, units of the scene; no more than half the depth is used
    double tracking; // added to the way from letter to letter, units of the scene; may be negative
    double detail;   // how far straight pieces may lie off a curve, in heights: above 0, at most 0.1
    uint32_t face;   // of a collection (.ttc), from 0
};

struct imported_glyph {
    shape_data shape; // no vertices: a blank
    double offset;    // for the pen, as a document's font keeps them: the shape stands at pen - offset ...
    double width;     // ... and moves the pen by `width`, a blank by width - offset
};

struct imported_font {
    std::array<imported_glyph, font_letters> glyphs; // those that are not wanted are all zero
    std::vector<std::string> lacking;                // the wanted letters that the font lacks, UTF-8; blanks instead
};

// What a font file says of itself. Heights are shares of a capital H's, and so of the `height` of font_options.
struct font_facts {
    std::string family, style; // as the file has them, UTF-8; may be empty
    std::string format;        // "TrueType"
    uint32_t faces;            // of a collection; 1
    double capital;            // height of a capital H, in ems
    double small;              // of an x; 0: the font has none
    double above, below;       // the base line: how far its lines reach, both 0 or more
};

// The facts of one face, counted from 0. False, with one line in `problem` that names the file.
[[nodiscard]] bool read_font_facts(const std::string& path, uint32_t face, font_facts& facts, std::string& problem);

// The letters that are set in `wanted` (font_letters long). A texture lies over a letter from the font's highest
// line (v = 0) to its lowest (v = 1), and as far along it to the right (u = 1). False, with one line in `problem`
// that names the file: no font, one without outlines, a letter that cannot become a mesh, options out of range.
[[nodiscard]] bool import_font(const std::string& path, const font_options& options, const std::vector<bool>& wanted,
    imported_font& font, std::string& problem);
