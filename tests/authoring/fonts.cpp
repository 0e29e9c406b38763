// Imports every font of the folders that are named, all letters, flat, with depth and with a bevel: one row a file.
//
//     test_fonts FOLDER...
//
// A letter's surface is compared with what FreeType's own drawing of it covers. Status 1 where a letter is no
// closed mesh or has another surface, or where a file that ought to be a font is none.
#include "asset/shape_measures.h"
#include "authoring/asset/font_import.h"
#include "model/glyphs.h"

#include <ft2build.h>

#include FT_FREETYPE_H

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdio>
#include <filesystem>
#include <memory>
#include <string>
#include <utility>
#include <vector>

namespace {
struct close_library {
    void operator()(FT_Library library) const
    {
        FT_Done_FreeType(library);
    }
};
using owned_library = std::unique_ptr<FT_LibraryRec_, close_library>;

struct font_row {
    uint32_t letters;  // that have a shape
    uint32_t vertices; // of the largest, with a bevel
    uint32_t wrong;
    double farthest; // of a letter's surface from FreeType's, as a part of it
};
} // namespace

// The surface of a letter in squares of the font's unit, as FreeType draws it at one pixel for `unit` units; negative
// where it does not.
static double drawn_area(FT_Face face, const char* letter, double unit)
{
    const uint8_t first = static_cast<uint8_t>(letter[0]), second = static_cast<uint8_t>(letter[1]);
    const FT_ULong code = first < 0x80 ? first : (first & 0x1Fu) << 6 | (second & 0x3Fu);
    if (FT_Load_Char(face, code, FT_LOAD_NO_HINTING | FT_LOAD_NO_BITMAP | FT_LOAD_RENDER) != 0)
        return -1;
    const FT_Bitmap& bitmap = face->glyph->bitmap;
    uint64_t sum = 0;
    for (unsigned y = 0; y < bitmap.rows; ++y)
        for (unsigned x = 0; x < bitmap.width; ++x)
            sum += bitmap.buffer[static_cast<ptrdiff_t>(y) * bitmap.pitch + static_cast<ptrdiff_t>(x)];
    return static_cast<double>(sum) / 255 * unit * unit;
}

// Empty, or what is wrong with a letter in its three forms.
static std::string letter_fault(
    const shape_data& flat, const shape_measures& f, const shape_data& deep, const shape_data& bevelled)
{
    const shape_measures d = measure_shape(deep), b = measure_shape(bevelled);
    const double block = f.front * 0.3;
    for (const shape_data* shape : {&flat, &deep, &bevelled})
        if (!shape_fault(*shape).empty())
            return shape_fault(*shape);
    if (f.back > 1e-6 * f.front)
        return "looks backwards";
    if (d.open_edges != 0 || b.open_edges != 0)
        return "is not closed";
    if (f.uneven_normals + d.uneven_normals + b.uneven_normals != 0)
        return "has normals that are not of length 1";
    if (std::abs(d.volume - block) > 1e-4 * block)
        return "is not as deep as its surface says";
    if (b.volume > block || b.volume < 0.85 * block || bevelled.positions.size() <= deep.positions.size())
        return "has an odd bevel";
    if (b.wrong_normals > 100) // of some 10,000
        return "has a bevel that folds over";
    return "";
}

static font_row check_font(const std::string& path, FT_Face face, const std::array<imported_font, 3>& forms)
{
    font_row row = {};
    constexpr FT_UInt pixels = 512;
    FT_Set_Pixel_Sizes(face, pixels, pixels);
    FT_Select_Charmap(face, FT_ENCODING_UNICODE);
    const double em = face->units_per_EM;
    const bool by_number = FT_Get_Char_Index(face, 'H') != 0;
    double capital = 0;
    if (by_number && FT_Load_Char(face, 'H', FT_LOAD_NO_SCALE) == 0)
        capital = static_cast<double>(face->glyph->metrics.horiBearingY);
    for (uint32_t i = 0; i < font_letters; ++i) {
        const shape_data& flat = forms[0].glyphs[i].shape;
        if (flat.positions.empty())
            continue;
        ++row.letters;
        row.vertices = std::max(row.vertices, shape_vertex_count(forms[2].glyphs[i].shape));
        const shape_measures measures = measure_shape(flat);
        std::string fault = letter_fault(flat, measures, forms[1].glyphs[i].shape, forms[2].glyphs[i].shape);
        if (by_number) {
            const double drawn = drawn_area(face, glyph_characters[i], em / pixels);
            const double difference = std::abs(measures.front * capital * capital / drawn - 1);
            row.farthest = std::max(row.farthest, difference);
            if (!(difference < 0.01))
                fault = "has another surface than FreeType's";
        }
        if (!fault.empty()) {
            ++row.wrong;
            std::printf("%s: '%s' %s\n", path.c_str(), glyph_characters[i], fault.c_str());
        }
    }
    return row;
}

// Imports a font in its three forms and prints its row. False: something is wrong.
static bool try_font(FT_Library library, const std::string& path)
{
    const std::vector<bool> all(font_letters, true);
    const std::array<font_options, 3> options = {{{1, 0, 0, 0, default_font_detail, 0},
        {1, 0.3, 0, 0, default_font_detail, 0}, {1, 0.3, 0.03, 0, default_font_detail, 0}}};
    std::array<imported_font, 3> forms;
    std::string problem;
    for (size_t i = 0; i < forms.size(); ++i) {
        if (!import_font(path, options[i], all, forms[i], problem)) {
            std::printf("%s\n", problem.c_str());
            return path.ends_with(".afm");
        }
    }
    FT_Face face = nullptr;
    if (FT_New_Face(library, path.c_str(), 0, &face) != 0)
        return false;
    const font_row row = check_font(path, face, forms);
    FT_Done_Face(face);
    std::string lacking;
    for (const std::string& letter : forms[0].lacking)
        lacking += letter;
    std::printf("%s: %u letters, at most %u vertices, surface within %.2f %%%s%s\n", path.c_str(), row.letters,
        row.vertices, 100 * row.farthest, lacking.empty() ? "" : ", lacks ", lacking.c_str());
    return row.wrong == 0;
}

int main(int count, char** arguments)
{
    FT_Library handle = nullptr;
    if (FT_Init_FreeType(&handle) != 0)
        return 2;
    const owned_library library(handle);
    std::vector<std::string> paths;
    for (int i = 1; i < count; ++i) {
        std::error_code error;
        for (const auto& entry : std::filesystem::recursive_directory_iterator(arguments[i], error))
            if (entry.is_regular_file())
                paths.push_back(entry.path().string());
    }
    std::sort(paths.begin(), paths.end());
    size_t wrong = 0;
    for (const std::string& path : paths)
        wrong += try_font(library.get(), path) ? 0u : 1u;
    std::printf("%zu files, %zu wrong\n", paths.size(), wrong);
    return paths.empty() || wrong != 0 ? 1 : 0;
}
