#include "authoring/asset/font_import.h"

#include "model/glyphs.h"
#include "shape_measures.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <doctest/doctest.h>
#include <fstream>
#include <sstream>
#include <unistd.h>

static const std::string fonts = "/usr/share/fonts/";
static const std::string sans = fonts + "truetype/dejavu/DejaVuSans.ttf";
static const std::string mono = fonts + "truetype/dejavu/DejaVuSansMono.ttf";
static const std::string serif = fonts + "opentype/urw-base35/C059-Roman.otf";
static const std::string type1 = fonts + "type1/urw-base35/P052-Roman.t1";
static const std::string dingbats = fonts + "type1/urw-base35/D050000L.t1";

static const font_options plain = {1, 0, 0, 0, default_font_detail, 0};

namespace {
// A file of these bytes, gone at the end.
struct temporary_font {
    std::string path;
    explicit temporary_font(const std::string& bytes, const std::string& ending = ".ttf")
    {
        char pattern[] = "/tmp/test_font_XXXXXX";
        const int descriptor = mkstemp(pattern);
        REQUIRE(descriptor >= 0);
        close(descriptor);
        std::remove(pattern);
        path = pattern + ending;
        std::ofstream(path, std::ios::binary).write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
    }
    ~temporary_font()
    {
        std::remove(path.c_str());
    }
    temporary_font(const temporary_font&) = delete;
    temporary_font& operator=(const temporary_font&) = delete;
};
} // namespace

static std::string bytes_of(const std::string& path)
{
    std::ifstream file(path, std::ios::binary);
    std::ostringstream bytes;
    bytes << file.rdbuf();
    REQUIRE(bytes.str().size() > 1000);
    return bytes.str();
}

static uint32_t number_of(const char* letter)
{
    for (uint32_t i = 0; i < font_letters; ++i)
        if (std::strcmp(glyph_characters[i], letter) == 0)
            return i;
    FAIL("no such letter");
    return 0;
}

static std::vector<bool> only(std::initializer_list<const char*> letters)
{
    std::vector<bool> wanted(font_letters, false);
    for (const char* letter : letters)
        wanted[number_of(letter)] = true;
    return wanted;
}

static imported_font import_of(const std::string& path, const font_options& options, const std::vector<bool>& wanted)
{
    imported_font font;
    std::string problem;
    CHECK(import_font(path, options, wanted, font, problem));
    CHECK(problem.empty());
    return font;
}

static std::string problem_of(const std::string& path, const font_options& options = plain)
{
    imported_font font;
    std::string problem;
    CHECK(!import_font(path, options, std::vector<bool>(font_letters, true), font, problem));
    CHECK(std::count(problem.begin(), problem.end(), '\n') == 0);
    return problem;
}

static const imported_glyph& glyph_of(const imported_font& font, const char* letter)
{
    return font.glyphs[number_of(letter)];
}

// The lowest and the highest of one of the coordinates.
static std::pair<float, float> extent_of(const shape_data& shape, size_t axis)
{
    REQUIRE(!shape.positions.empty());
    std::pair<float, float> extent = {shape.positions[axis], shape.positions[axis]};
    for (size_t i = axis; i < shape.positions.size(); i += 3)
        extent = {std::min(extent.first, shape.positions[i]), std::max(extent.second, shape.positions[i])};
    return extent;
}

// ---- letters ------------------------------------------------------------------

TEST_CASE("A capital H stands on the base line and is as high as asked for")
{
    for (const std::string& path : {sans, serif, type1}) {
        font_options options = plain;
        options.height = 0.25;
        const imported_font font = import_of(path, options, only({"H", "Á", "g"}));
        CHECK(std::abs(extent_of(glyph_of(font, "H").shape, 1).first) < 0.002f);
        CHECK(extent_of(glyph_of(font, "H").shape, 1).second == 0.25f);
        CHECK(extent_of(glyph_of(font, "Á").shape, 1).second > 0.3f);
        CHECK(extent_of(glyph_of(font, "g").shape, 1).first < -0.04f);
    }
}

TEST_CASE("A letter moves the pen by what the font says, in heights of its H")
{
    // DejaVu Sans Mono: every letter 1233 units wide, its capitals 1493 high.
    font_options options = plain;
    options.height = 2;
    imported_font font = import_of(mono, options, only({"H", "i", " ", "ő"}));
    for (const char* letter : {"H", "i", " ", "ő"}) {
        CHECK(glyph_of(font, letter).width == doctest::Approx(2 * 1233.0 / 1493.0));
        CHECK(glyph_of(font, letter).offset == 0.0);
    }
    options.tracking = -0.25;
    font = import_of(mono, options, only({"H", " "}));
    CHECK(glyph_of(font, "H").width == doctest::Approx(2 * 1233.0 / 1493.0 - 0.25));
    CHECK(glyph_of(font, " ").width == doctest::Approx(2 * 1233.0 / 1493.0 - 0.25));
}

TEST_CASE("The space is a blank and lacks nothing")
{
    const imported_font font = import_of(sans, plain, only({" "}));
    CHECK(glyph_of(font, " ").shape.positions.empty());
    CHECK(glyph_of(font, " ").width > 0);
    CHECK(font.lacking.empty());
}

TEST_CASE("Only the wanted letters are read")
{
    const imported_font font = import_of(sans, plain, only({"B", "8"}));
    for (uint32_t i = 0; i < font_letters; ++i)
        CHECK(font.glyphs[i].shape.positions.empty() == (i != number_of("B") && i != number_of("8")));
}

TEST_CASE("Letters that the font lacks are named and become blanks")
{
    const std::vector<bool> all(font_letters, true);
    CHECK(import_of(sans, plain, all).lacking.empty());
    // A font of symbols, which has no letters by their names: the keys a to Z draw symbols, but none has an accent.
    const imported_font symbols = import_of(dingbats, plain, all);
    CHECK(!glyph_of(symbols, "a").shape.positions.empty());
    CHECK(!glyph_of(symbols, "&").shape.positions.empty());
    CHECK(symbols.lacking
        == std::vector<std::string>{
            "á", "Á", "é", "É", "í", "Í", "ó", "Ó", "ö", "Ö", "ő", "Ő", "ř", "Ř", "ú", "Ú", "ü", "Ü", "ű", "Ű"});
    CHECK(glyph_of(symbols, "ő").shape.positions.empty());
    CHECK(glyph_of(symbols, "ő").width > 0);
}

TEST_CASE("A bevel stays within half of the depth")
{
    font_options options = plain;
    options.depth = 0.1;
    options.bevel = 5;
    const imported_font font = import_of(sans, options, only({"H"}));
    CHECK(extent_of(glyph_of(font, "H").shape, 2).first == -0.05f);
    CHECK(extent_of(glyph_of(font, "H").shape, 2).second == 0.05f);
    CHECK(shape_fault(glyph_of(font, "H").shape).empty());
}

TEST_CASE("The bevel of thin and slanted strokes does not fold over")
{
    font_options options = plain;
    options.depth = 0.3;
    options.bevel = 0.03;
    const imported_font font
        = import_of(fonts + "opentype/urw-base35/NimbusRoman-Italic.otf", options, only({"i", "k", "í"}));
    for (const char* letter : {"i", "k", "í"}) {
        const shape_measures measures = measure_shape(glyph_of(font, letter).shape);
        CHECK(measures.open_edges == 0);
        CHECK(measures.wrong_normals <= 10); // of some 8,000
    }
}

TEST_CASE("A finer detail takes more triangles, and letters without curves no more")
{
    font_options options = plain;
    const imported_font fine = import_of(sans, options, only({"O", "H"}));
    options.detail = 0.01;
    const imported_font coarse = import_of(sans, options, only({"O", "H"}));
    CHECK(glyph_of(fine, "O").shape.triangles.size() > 3 * glyph_of(coarse, "O").shape.triangles.size() / 2);
    CHECK(glyph_of(fine, "H").shape.triangles == glyph_of(coarse, "H").shape.triangles);
    CHECK(glyph_of(fine, "H").shape.triangles.size() == 3 * 10); // twelve corners
}

TEST_CASE("The same font gives the same shapes")
{
    font_options options = plain;
    options.depth = 0.2;
    options.bevel = 0.03;
    const imported_font first = import_of(type1, options, only({"&", "ř"}));
    const imported_font second = import_of(type1, options, only({"a", "&", "ř", "Z"}));
    for (const char* letter : {"&", "ř"}) {
        CHECK(glyph_of(first, letter).shape.positions == glyph_of(second, letter).shape.positions);
        CHECK(glyph_of(first, letter).shape.triangles == glyph_of(second, letter).shape.triangles);
    }
}

// ---- files --------------------------------------------------------------------

// A number of `size` bytes, the most significant one first.
static std::string big_number(uint64_t value, int size)
{
    std::string bytes;
    for (int i = size - 1; i >= 0; --i)
        bytes += static_cast<char>(value >> (8 * i));
    return bytes;
}

// A collection of two fonts: their tables' places are counted from the begin of the file.
static std::string collection_of(const std::string& first, const std::string& second)
{
    std::string result = "ttcf" + big_number(0x00010000, 4) + big_number(2, 4) + big_number(20, 4)
        + big_number(static_cast<uint32_t>(20 + first.size()), 4);
    for (const std::string* font : {&first, &second}) {
        std::string moved = *font;
        const size_t tables
            = static_cast<size_t>(static_cast<uint8_t>(moved[4])) * 256 + static_cast<uint8_t>(moved[5]);
        for (size_t i = 0; i < tables; ++i) {
            const size_t at = 12 + 16 * i + 8;
            uint32_t place = 0;
            for (size_t k = 0; k < 4; ++k)
                place = place << 8 | static_cast<uint8_t>(moved[at + k]);
            moved.replace(at, 4, big_number(place + static_cast<uint32_t>(result.size()), 4));
        }
        result += moved;
    }
    return result;
}

TEST_CASE("A collection gives the face that is asked for")
{
    const temporary_font file(collection_of(bytes_of(sans), bytes_of(mono)), ".ttc");
    font_options options = plain;
    CHECK(glyph_of(import_of(file.path, options, only({"i"})), "i").width == doctest::Approx(569.0 / 1493.0));
    options.face = 1;
    CHECK(glyph_of(import_of(file.path, options, only({"i"})), "i").width == doctest::Approx(1233.0 / 1493.0));
    options.face = 2;
    CHECK(problem_of(file.path, options) == "\"" + file.path + "\" has no face 2; its last is 1.");
}

TEST_CASE("What is no font with outlines is told in a line")
{
    CHECK(problem_of("/no/such.ttf") == "\"/no/such.ttf\" cannot be read: No such file or directory.");
    CHECK(problem_of("/tmp") == "\"/tmp\" cannot be read: it is a folder.");
    const temporary_font empty(""), text("no font at all\n");
    const std::string no_font = " is no font that can be read; use a .ttf, .otf, .ttc, .pfb or .t1 file.";
    CHECK(problem_of(empty.path) == "\"" + empty.path + "\"" + no_font);
    CHECK(problem_of(text.path) == "\"" + text.path + "\"" + no_font);
    const std::string measures = fonts + "type1/urw-base35/P052-Roman.afm";
    CHECK(problem_of(measures)
        == "\"" + measures + "\" holds only the measures of a font; name the .pfb, .pfa or .t1 file beside it.");
    const temporary_font pictures("STARTFONT 2.1\nFONT -a-b-medium-r-normal--8-80-75-75-c-80-iso8859-1\nSIZE 8 75 75\n"
                                  "FONTBOUNDINGBOX 8 8 0 0\nSTARTPROPERTIES 2\nFONT_ASCENT 8\nFONT_DESCENT 0\n"
                                  "ENDPROPERTIES\nCHARS 1\nSTARTCHAR A\nENCODING 65\nSWIDTH 1000 0\nDWIDTH 8 0\n"
                                  "BBX 8 8 0 0\nBITMAP\n18\n24\n42\n42\n7E\n42\n42\n42\nENDCHAR\nENDFONT\n",
        ".bdf");
    CHECK(problem_of(pictures.path)
        == "\"" + pictures.path + "\" is a font of pictures, without outlines; use a .ttf, .otf, .pfb or .t1 file.");
}

TEST_CASE("Options out of range are told in a line")
{
    const std::string about = "\"" + sans + "\": ";
    font_options options = plain;
    options.height = 0;
    CHECK(problem_of(sans, options) == about + "a font's height is above 0, and at most 1,000,000.");
    options = plain;
    options.depth = -1;
    CHECK(problem_of(sans, options) == about + "a font's depth is 0 (flat) to 1,000,000.");
    options = plain;
    options.bevel = 0.1;
    CHECK(problem_of(sans, options) == about + "a bevel needs a depth; give the font one, twice the bevel or more.");
    options.bevel = std::nan("");
    CHECK(problem_of(sans, options) == about + "a font's bevel is 0 (none) to 1,000,000.");
    options = plain;
    options.tracking = 1e7;
    CHECK(problem_of(sans, options) == about + "a font's tracking is -1,000,000 to 1,000,000.");
    options = plain;
    options.detail = 0.2;
    CHECK(problem_of(sans, options) == about + "a font's detail is above 0, and at most 0.1.");
}

// ---- letters made for the purpose ----------------------------------------------

// A TrueType font whose letters B, H and a are this ring of points; 1000 units an em, every letter 500 wide.
static std::string font_of(const std::vector<std::pair<int, int>>& ring)
{
    const auto word = [](int value) { return big_number(static_cast<uint32_t>(value) & 0xFFFFu, 2); };
    std::string outline = word(1) + word(0) + word(0) + word(1000) + word(700) + word(static_cast<int>(ring.size()) - 1)
        + word(0) + std::string(ring.size(), 1);
    for (size_t i = 0; i < ring.size(); ++i)
        outline += word(ring[i].first - (i == 0 ? 0 : ring[i - 1].first));
    for (size_t i = 0; i < ring.size(); ++i)
        outline += word(ring[i].second - (i == 0 ? 0 : ring[i - 1].second));
    outline.resize((outline.size() + 3) / 4 * 4, 0);

    std::string groups;
    for (const char letter : {'B', 'H', 'a'})
        groups += big_number(static_cast<uint8_t>(letter), 4) + big_number(static_cast<uint8_t>(letter), 4)
            + big_number(1, 4);
    const std::vector<std::pair<std::string, std::string>> tables = {
        {"cmap",
            word(0) + word(1) + word(3) + word(10) + big_number(12, 4) + word(12) + word(0) + big_number(52, 4)
                + big_number(0, 4) + big_number(3, 4) + groups},
        {"glyf", outline},
        {"head",
            big_number(0x10000, 4) + big_number(0, 8) + big_number(0x5F0F3CF5, 4) + word(0) + word(1000)
                + std::string(16, 0) + word(0) + word(0) + word(1000) + word(700) + word(0) + word(8) + word(2)
                + word(1) + word(0)},
        {"hhea", big_number(0x10000, 4) + word(800) + word(-200) + word(0) + word(500) + std::string(22, 0) + word(1)},
        {"hmtx", word(500) + word(0) + word(0)},
        {"loca", big_number(0, 8) + big_number(static_cast<uint32_t>(outline.size()), 4)},
        {"maxp", big_number(0x10000, 4) + word(2) + word(20000) + word(1) + std::string(22, 0)}};
    std::string head = big_number(0x10000, 4) + word(static_cast<int>(tables.size())) + word(0) + word(0) + word(0);
    std::string body;
    for (const auto& [name, bytes] : tables) {
        head += name + big_number(0, 4) + big_number(static_cast<uint32_t>(12 + 16 * tables.size() + body.size()), 4)
            + big_number(static_cast<uint32_t>(bytes.size()), 4);
        body += bytes;
        body.resize((body.size() + 3) / 4 * 4, 0);
    }
    return head + body;
}

// A ring of `teeth` teeth on a bar, none of which crosses another; two points a tooth.
static std::vector<std::pair<int, int>> comb_of(int teeth)
{
    std::vector<std::pair<int, int>> ring = {{0, 0}, {4 * teeth, 0}};
    for (int i = 2 * teeth; i > 0; --i)
        ring.push_back({2 * i, i % 2 == 0 ? 700 : 350});
    ring.push_back({0, 350});
    return ring;
}

TEST_CASE("A letter made by hand keeps its places")
{
    const temporary_font file(font_of({{0, 0}, {150, 0}, {400, 0}, {400, 700}, {0, 700}, {0, 300}}));
    const imported_font font = import_of(file.path, plain, only({"H", "a", "c", " "}));
    CHECK(extent_of(glyph_of(font, "H").shape, 0).second == doctest::Approx(4.0 / 7));
    CHECK(shape_vertex_count(glyph_of(font, "H").shape) == 4); // without the points on its edges
    CHECK(glyph_of(font, "a").width == doctest::Approx(5.0 / 7));
    CHECK(font.lacking == std::vector<std::string>{"c", " "});
    CHECK(glyph_of(font, "c").width == doctest::Approx(5.0 / 7)); // half an em
    CHECK(glyph_of(font, " ").width == doctest::Approx(2.5 / 7)); // a quarter
}

TEST_CASE("A letter with an outline that crosses itself is filled whole")
{
    // Two squares in one ring, the second turned the same way and over the first one's corner.
    const temporary_font file(font_of({{0, 0}, {400, 0}, {400, 400}, {200, 400}, {200, 200}, {600, 200}, {600, 700},
        {200, 700}, {200, 400}, {0, 400}}));
    font_options options = plain;
    options.height = 7;
    options.depth = 1;
    options.bevel = 0.1;
    const imported_font font = import_of(file.path, options, only({"B"}));
    CHECK(shape_fault(glyph_of(font, "B").shape).empty());
    options.depth = options.bevel = 0;
    const shape_data flat = glyph_of(import_of(file.path, options, only({"B"})), "B").shape;
    double twice = 0;
    for (size_t i = 0; i + 2 < flat.triangles.size(); i += 3) {
        const float* const a = &flat.positions[3 * flat.triangles[i]];
        const float* const b = &flat.positions[3 * flat.triangles[i + 1]];
        const float* const c = &flat.positions[3 * flat.triangles[i + 2]];
        twice += double(b[0] - a[0]) * (c[1] - a[1]) - double(b[1] - a[1]) * (c[0] - a[0]);
    }
    CHECK(twice / 2 == doctest::Approx(4 * 4 + 4 * 5 - 2 * 2));
}

TEST_CASE("A letter that is too fine is named")
{
    const std::string finer = " has too fine an outline; give a greater detail, or use a plainer font.";
    const temporary_font many(font_of(comb_of(4100))); // more than 8,192 points
    CHECK(problem_of(many.path) == "the letter 'a' of \"" + many.path + "\"" + finer);
    const temporary_font fine(font_of(comb_of(2000)));
    font_options options = plain;
    options.depth = 1;
    options.bevel = 0.0001;
    const std::string problem = problem_of(fine.path, options);
    CHECK(problem.find("the letter 'a' of \"" + fine.path + "\" becomes ") == 0);
    CHECK(problem.find(" vertices, and a mesh holds 65,535; give a greater detail, or no bevel.") != std::string::npos);
    // Every edge goes right across: half of some 500,000 pairs meet.
    std::vector<std::pair<int, int>> tangle;
    for (int i = 0; i < 1000; ++i)
        tangle.push_back({i * 389 % 1000, i % 2 == 0 ? i * 7 % 100 : 700 - i * 11 % 100});
    const temporary_font tangled(font_of(tangle));
    CHECK(problem_of(tangled.path) == "the letter 'a' of \"" + tangled.path + "\"" + finer);
    std::vector<std::pair<int, int>> wound; // 300 times round the same square
    for (int i = 0; i < 1200; ++i)
        wound.push_back({i % 4 == 1 || i % 4 == 2 ? 400 : 0, i % 4 < 2 ? 0 : 700});
    const temporary_font rounds(font_of(wound));
    CHECK(problem_of(rounds.path) == "the letter 'a' of \"" + rounds.path + "\"" + finer);
}

// ---- damaged files ------------------------------------------------------------

// Imports what is left of a font: letters that are whole, or one line.
static void import_damaged(const std::string& bytes)
{
    const temporary_font file(bytes);
    font_options options = plain;
    options.depth = 0.2;
    options.bevel = 0.02;
    options.detail = 0.005;
    imported_font font;
    std::string problem;
    if (import_font(file.path, options, only({"B", "&", "ř", "g"}), font, problem)) {
        for (const imported_glyph& glyph : font.glyphs)
            CHECK(shape_fault(glyph.shape).empty());
    } else {
        CHECK(!problem.empty());
    }
}

TEST_CASE("A font that was cut off gives letters or a line")
{
    for (const std::string& path : {mono, serif, type1}) {
        const std::string bytes = bytes_of(path);
        for (size_t i = 0; i < 40; ++i)
            import_damaged(bytes.substr(0, i < 20 ? i * 7 : bytes.size() * (i - 19) / 21));
    }
}

TEST_CASE("A font with wrong bytes gives letters or a line")
{
    uint32_t state = 1;
    const auto random = [&state](uint32_t below) {
        state = state * 1664525 + 1013904223;
        return static_cast<uint32_t>((uint64_t(state) * below) >> 32);
    };
    for (const std::string& path : {mono, serif, type1}) {
        const std::string whole = bytes_of(path);
        for (uint32_t i = 0; i < 60; ++i) {
            std::string bytes = whole;
            const uint32_t changes = 1u << random(10);
            const uint32_t end
                = static_cast<uint32_t>(random(2) == 0 ? bytes.size() : 2000); // the tables of tables too
            for (uint32_t k = 0; k < changes; ++k)
                bytes[random(end)] = static_cast<char>(random(256));
            import_damaged(bytes);
        }
    }
}
