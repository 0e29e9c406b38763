#include "authoring/asset/font_import.h"

#include "authoring/asset/font_outline.h"
#include "authoring/asset/font_solid.h"
#include "authoring/asset/font_tessellate.h"
#include "content/file_bytes.h"
#include "content/owners.h"
#include "model/glyphs.h"

#include <ft2build.h>

#include FT_FONT_FORMATS_H
#include FT_FREETYPE_H
#include FT_OUTLINE_H
#include FT_TRUETYPE_TABLES_H

#include <algorithm>
#include <cassert>
#include <cmath>
#include <iterator>
#include <memory>
#include <string_view>

constexpr uint32_t max_font_bytes = 256u << 20;
constexpr double max_length = 1e6;            // units of the scene
constexpr double largest_detail = 0.1;        // heights
constexpr uint32_t max_mesh_vertices = 65535; // of one letter
constexpr double capital_share = 0.7;         // of the em, for fonts that do not tell
constexpr double nearest_points = 0.25;       // of the tolerance: nearer ones are one
static_assert(std::size(glyph_characters) == font_letters);

namespace {
struct close_library {
    void operator()(FT_Library library) const
    {
        FT_Done_FreeType(library);
    }
};

struct close_face {
    void operator()(FT_Face face) const
    {
        FT_Done_Face(face);
    }
};

// A font file that is open. The members go in the opposite order.
struct open_font {
    owned_block<uint8_t> bytes;
    std::unique_ptr<FT_LibraryRec_, close_library> library;
    std::unique_ptr<FT_FaceRec_, close_face> face;
    double em;               // font units, above 0
    double capital;          // height of a capital H, font units, above 0
    double line_top;         // font units
    double line_height;      // font units, above 0
    bool unicode;            // letters are found by their Unicode numbers, else by the keys that type them
    uint32_t character_base; // added to a key's number: some fonts of symbols keep theirs from 0xF000 on
};
} // namespace

// The number of a letter of one or two bytes of UTF-8.
static uint32_t letter_code(const char* letter)
{
    const uint8_t first = static_cast<uint8_t>(letter[0]), second = static_cast<uint8_t>(letter[1]);
    return first < 0x80 ? first : (first & 0x1Fu) << 6 | (second & 0x3Fu);
}

static FT_UInt letter_glyph(const open_font& font, const char* letter)
{
    const uint32_t code = letter_code(letter);
    if (!font.unicode && code >= 0x80)
        return 0;
    return FT_Get_Char_Index(font.face.get(), code + font.character_base);
}

static std::string problem_of(const std::string& path, std::string_view text)
{
    return "\"" + path + "\" " + std::string(text) + ".";
}

// ---- opening ------------------------------------------------------------------

static bool ends_in(std::string_view name, std::string_view ending)
{
    return name.size() >= ending.size() && name.substr(name.size() - ending.size()) == ending;
}

static uint32_t count_letters(const open_font& font)
{
    uint32_t count = 0;
    for (const char* letter : glyph_characters)
        count += letter_glyph(font, letter) != 0 ? 1u : 0u;
    return count;
}

// The table of characters that finds the most letters. Fonts of symbols may have none by Unicode numbers.
static void choose_characters(open_font& font)
{
    constexpr std::array<std::pair<FT_Encoding, uint32_t>, 4> choices = {{{FT_ENCODING_UNICODE, 0},
        {FT_ENCODING_MS_SYMBOL, 0xF000}, {FT_ENCODING_ADOBE_CUSTOM, 0}, {FT_ENCODING_APPLE_ROMAN, 0}}};
    std::pair<FT_Encoding, uint32_t> best = choices[0];
    uint32_t most = 0;
    const auto choose = [&](const std::pair<FT_Encoding, uint32_t>& choice) {
        font.unicode = choice.first == FT_ENCODING_UNICODE;
        font.character_base = choice.second;
        return FT_Select_Charmap(font.face.get(), choice.first) == 0;
    };
    for (const auto& choice : choices) {
        const uint32_t found = choose(choice) ? count_letters(font) : 0;
        if (found > most) {
            most = found;
            best = choice;
        }
    }
    choose(best);
}

// How high a letter is, in font units; 0 where the font cannot tell.
static double letter_height(const open_font& font, const char* letter)
{
    FT_Face const face = font.face.get();
    const FT_UInt glyph = letter_glyph(font, letter);
    FT_BBox box = {};
    if (glyph != 0 && FT_Load_Glyph(face, glyph, FT_LOAD_NO_SCALE) == 0
        && face->glyph->format == FT_GLYPH_FORMAT_OUTLINE)
        FT_Outline_Get_CBox(&face->glyph->outline, &box);
    return static_cast<double>(std::max<FT_Pos>(box.yMax, 0));
}

static double capital_height(const open_font& font)
{
    FT_Face const face = font.face.get();
    if (const double height = letter_height(font, "H"); height > 0)
        return height;
    const TT_OS2* const table = static_cast<const TT_OS2*>(FT_Get_Sfnt_Table(face, FT_SFNT_OS2));
    if (table != nullptr && table->version >= 2 && table->version != 0xFFFF && table->sCapHeight > 0)
        return table->sCapHeight;
    return capital_share * font.em;
}

static void measure_font(open_font& font)
{
    FT_Face const face = font.face.get();
    font.em = face->units_per_EM > 0 ? face->units_per_EM : 1000.0;
    font.capital = capital_height(font);
    font.line_top = face->ascender;
    font.line_height = face->ascender - face->descender;
    if (!(font.line_height > 0)) {
        font.line_top = 0.8 * font.em;
        font.line_height = font.em;
    }
}

static bool open_font_file(const std::string& path, uint32_t number, open_font& font, std::string& problem)
{
    uint8_t* bytes = nullptr;
    uint32_t size = 0;
    const char* reason = nullptr;
    if (!read_whole_file(path.c_str(), max_font_bytes, &bytes, &size, &reason)) {
        problem = problem_of(path, std::string("cannot be read: ") + reason);
        return false;
    }
    font.bytes.reset(bytes);
    FT_Library library = nullptr;
    if (FT_Init_FreeType(&library) != 0) {
        problem = problem_of(path, "cannot be read: FreeType does not start");
        return false;
    }
    font.library.reset(library);
    FT_Face face = nullptr;
    const FT_Error error = FT_New_Memory_Face(library, bytes, static_cast<FT_Long>(size), 0, &face);
    if (error != 0) {
        problem = problem_of(path,
            ends_in(path, ".afm") || ends_in(path, ".pfm")
                ? "holds only the measures of a font; name the .pfb, .pfa or .t1 file beside it"
                : "is no font that can be read; use a .ttf, .otf, .ttc, .pfb or .t1 file");
        return false;
    }
    font.face.reset(face);
    const uint32_t faces = static_cast<uint32_t>(std::max<FT_Long>(face->num_faces, 1));
    if (number >= faces) {
        problem
            = problem_of(path, "has no face " + std::to_string(number) + "; its last is " + std::to_string(faces - 1));
        return false;
    }
    if (number > 0) {
        font.face.reset();
        if (FT_New_Memory_Face(library, bytes, static_cast<FT_Long>(size), static_cast<FT_Long>(number), &face) != 0) {
            problem = problem_of(path, "has a damaged face " + std::to_string(number));
            return false;
        }
        font.face.reset(face);
    }
    if (!FT_IS_SCALABLE(face)) {
        problem = problem_of(path, "is a font of pictures, without outlines; use a .ttf, .otf, .pfb or .t1 file");
        return false;
    }
    choose_characters(font);
    measure_font(font);
    return true;
}

// ---- one letter ---------------------------------------------------------------

static outline_point point_of(const FT_Vector* v)
{
    return {static_cast<double>(v->x), static_cast<double>(v->y)};
}

static int on_move(const FT_Vector* to, void* pen)
{
    pen_move(*static_cast<outline_pen*>(pen), point_of(to));
    return 0;
}

static int on_line(const FT_Vector* to, void* pen)
{
    pen_line(*static_cast<outline_pen*>(pen), point_of(to));
    return 0;
}

static int on_conic(const FT_Vector* control, const FT_Vector* to, void* pen)
{
    pen_conic(*static_cast<outline_pen*>(pen), point_of(control), point_of(to));
    return 0;
}

static int on_cubic(const FT_Vector* control1, const FT_Vector* control2, const FT_Vector* to, void* pen)
{
    pen_cubic(*static_cast<outline_pen*>(pen), point_of(control1), point_of(control2), point_of(to));
    return 0;
}

// The clean outline of the glyph that is loaded; empty for a blank. Returns what is wrong, empty for nothing.
static std::string clean_outline(FT_Outline& glyph, double tolerance, letter_outline& outline)
{
    constexpr FT_Outline_Funcs pens = {on_move, on_line, on_conic, on_cubic, 0, 0};
    outline_pen pen = {};
    pen.tolerance = tolerance;
    if (FT_Outline_Decompose(&glyph, &pens, &pen) != 0)
        return "is damaged";
    if (pen.too_many || outline_crossings(pen.rings, true, max_outline_crossings) >= max_outline_crossings)
        return "has too fine an outline; give a greater detail, or use a plainer font";
    if (!outline_border(pen.rings, (glyph.flags & FT_OUTLINE_EVEN_ODD_FILL) != 0, outline))
        return "has an outline that cannot be filled";
    thin_outline(outline, tolerance * nearest_points);
    if (outline_crossings(outline, false, 1) != 0) { // points on their grid may have pushed edges over another
        const letter_outline crossed = outline;
        if (!outline_border(crossed, false, outline))
            return "has an outline that cannot be filled";
        thin_outline(outline, 0);
    }
    if (outline_point_count(outline) > max_outline_points)
        return "has too fine an outline; give a greater detail, or use a plainer font";
    return "";
}

// Whether a fault is found in a finished letter; the line says what to do about it.
static std::string letter_fault(const shape_data& shape)
{
    const uint32_t vertices = shape_vertex_count(shape);
    if (vertices > max_mesh_vertices)
        return "becomes " + std::to_string(vertices)
            + " vertices, and a mesh holds 65,535; give a greater detail, or no bevel";
    const std::string fault = shape_fault(shape);
    return fault.empty() ? "" : "becomes no mesh: " + fault;
}

static std::string import_outline(
    const open_font& font, const font_options& options, FT_Outline& glyph, shape_data& shape)
{
    letter_outline outline;
    std::string problem = clean_outline(glyph, options.detail * font.capital, outline);
    if (!problem.empty() || outline.empty())
        return problem;
    const letter_solid solid = {options.height / font.capital, options.depth,
        std::min(options.bevel, options.depth / 2), font.line_top, font.line_height};
    if (!make_letter_shape(outline, solid, shape))
        return "has an outline that cannot be filled";
    return letter_fault(shape);
}

// Returns what is wrong with the letter, empty for nothing.
static std::string import_letter(
    const open_font& font, const font_options& options, const char* letter, imported_glyph& out, bool& lacking)
{
    FT_Face const face = font.face.get();
    const double scale = options.height / font.capital;
    const FT_UInt number = letter_glyph(font, letter);
    const bool space = letter[0] == ' ';
    lacking = number == 0;
    out.width = (space ? 0.25 : 0.5) * font.em * scale + options.tracking; // as wide as such letters mostly are
    if (lacking)
        return "";
    if (FT_Load_Glyph(face, number, FT_LOAD_NO_SCALE) != 0)
        return "is damaged";
    out.width = static_cast<double>(face->glyph->metrics.horiAdvance) * scale + options.tracking;
    if (face->glyph->format != FT_GLYPH_FORMAT_OUTLINE)
        return "is no outline";
    const std::string problem = import_outline(font, options, face->glyph->outline, out.shape);
    lacking = problem.empty() && !space && out.shape.triangles.empty();
    return problem;
}

// ---- the font -----------------------------------------------------------------

static bool in_range(double value, double least, double most)
{
    return value >= least && value <= most; // not for what is no number
}

static std::string options_problem(const font_options& options)
{
    if (!(options.height > 0) || options.height > max_length)
        return "a font's height is above 0, and at most 1,000,000";
    if (!in_range(options.depth, 0, max_length))
        return "a font's depth is 0 (flat) to 1,000,000";
    if (!in_range(options.bevel, 0, max_length))
        return "a font's bevel is 0 (none) to 1,000,000";
    if (options.bevel > 0 && options.depth == 0)
        return "a bevel needs a depth; give the font one, twice the bevel or more";
    if (!in_range(options.tracking, -max_length, max_length))
        return "a font's tracking is -1,000,000 to 1,000,000";
    if (!(options.detail > 0) || options.detail > largest_detail)
        return "a font's detail is above 0, and at most 0.1";
    return "";
}

bool read_font_facts(const std::string& path, uint32_t face, font_facts& facts, std::string& problem)
{
    facts = {};
    problem.clear();
    open_font font = {};
    if (!open_font_file(path, face, font, problem))
        return false;
    const auto text = [](const char* name) { return std::string(name != nullptr ? name : ""); };
    facts = {.family = text(font.face->family_name),
        .style = text(font.face->style_name),
        .format = text(FT_Get_Font_Format(font.face.get())),
        .faces = static_cast<uint32_t>(std::max<FT_Long>(font.face->num_faces, 1)),
        .capital = font.capital / font.em,
        .small = letter_height(font, "x") / font.capital,
        .above = std::max(font.line_top / font.capital, 0.0),
        .below = std::max((font.line_height - font.line_top) / font.capital, 0.0)};
    return true;
}

bool import_font(const std::string& path, const font_options& options, const std::vector<bool>& wanted,
    imported_font& font, std::string& problem)
{
    assert(wanted.size() == font_letters);
    font = {};
    problem = options_problem(options);
    if (!problem.empty()) {
        problem = "\"" + path + "\": " + problem + ".";
        return false;
    }
    open_font file = {};
    if (!open_font_file(path, options.face, file, problem))
        return false;
    for (uint32_t i = 0; i < font_letters; ++i) {
        if (!wanted[i])
            continue;
        const char* const letter = glyph_characters[i];
        bool lacking = false;
        const std::string wrong = import_letter(file, options, letter, font.glyphs[i], lacking);
        if (!wrong.empty()) {
            problem = "the letter '" + std::string(letter) + "' of \"" + path + "\" " + wrong + ".";
            return false;
        }
        if (lacking)
            font.lacking.push_back(letter);
    }
    return true;
}
