#include "render/text.h"

#include "model/records.h"

#include <doctest/doctest.h>

#include <array>
#include <cstring>
#include <string>
#include <string_view>
#include <vector>

// The font's characters in glyph order, written out once more as one text.
static const char* const characters
    = "aAáÁbBcCdDeEéÉfFgGhHiIíÍjJkKlLmMnNoOóÓöÖőŐpPqQrRřŘsStTuUúÚüÜűŰvVwWxXyYzZ?!0123456789&/ ";

// A font whose every glyph is drawn, `width` wide and `offset` to the left.
static font_record solid_font(float offset, float width)
{
    font_record font = {};
    for (glyph_record& glyph : font.glyphs) {
        glyph.model = 1;
        glyph.offset = offset;
        glyph.width = width;
    }
    return font;
}

namespace {

struct line_of_glyphs {
    std::vector<int> glyphs;
    std::vector<float> pens;
};

} // namespace

static line_of_glyphs layout(std::string_view text, const font_record& font)
{
    char field[32] = {};
    std::memcpy(field, text.data(), text.size() < 32 ? text.size() : 32);
    placed_glyph out[max_placed_glyphs] = {};
    const uint32_t count = layout_text(field, font, out);
    line_of_glyphs line;
    for (uint32_t i = 0; i < count; ++i) {
        line.glyphs.push_back(out[i].glyph);
        line.pens.push_back(out[i].pen);
    }
    return line;
}

TEST_CASE("The glyphs' characters stand in the font's order")
{
    std::string all;
    for (const auto& character : glyph_characters)
        all += character;
    CHECK(all == characters);
}

TEST_CASE("Every character of the font maps to its own glyph")
{
    for (int glyph = 0; glyph < 87; ++glyph) {
        const auto* bytes = reinterpret_cast<const uint8_t*>(glyph_characters[glyph]);
        CAPTURE(glyph);
        if (bytes[1] == 0) {
            CHECK(glyph_of_byte(bytes[0]) == glyph);
        } else {
            CHECK(glyph_of_byte(bytes[0]) == 100);
            CHECK(glyph_of_second_byte(bytes[1]) == glyph);
        }
    }
}

TEST_CASE("Of all bytes only those of the font and two lead bytes mean something")
{
    int glyphs = 0;
    int leads = 0;
    for (int c = 0; c < 256; ++c) {
        const uint8_t glyph = glyph_of_byte(static_cast<uint8_t>(c));
        if (glyph == 100) {
            CHECK((c == 0xC3 || c == 0xC5));
            ++leads;
        } else if (glyph != 101) {
            CHECK(glyph < 87);
            ++glyphs;
        }
    }
    CHECK(leads == 2);
    CHECK(glyphs == 67); // 52 letters, 10 digits, ? ! & / and space
}

TEST_CASE("Bytes outside the table have no glyph")
{
    for (const int c : {0, 1, 31, 127, 0x80, 0xC4, 0xC6, 0xFF})
        CHECK(glyph_of_byte(static_cast<uint8_t>(c)) == 101);
    CHECK(glyph_of_byte('~') == 101);
    CHECK(glyph_of_byte('.') == 101);
    CHECK(glyph_of_byte('@') == 101);
    CHECK(glyph_of_byte('[') == 101);
    CHECK(glyph_of_byte('`') == 101);
    CHECK(glyph_of_byte('{') == 101);
    CHECK(glyph_of_byte(':') == 101);
}

TEST_CASE("Second bytes run from 0x81 to 0xBC, twenty of them with a glyph")
{
    int glyphs = 0;
    for (int c = 0; c < 256; ++c)
        if (glyph_of_second_byte(static_cast<uint8_t>(c)) != 101) {
            CHECK(c >= 0x81);
            CHECK(c <= 0xBC);
            ++glyphs;
        }
    CHECK(glyphs == 20);
    CHECK(glyph_of_second_byte(0x80) == 101);
    CHECK(glyph_of_second_byte(0xBD) == 101);
    CHECK(glyph_of_second_byte(0) == 101);
    CHECK(glyph_of_second_byte('a') == 101);
}

TEST_CASE("A text with an accent and a space maps byte by byte")
{
    CHECK(layout("\xC3\x81r 9!", solid_font(0, 1)).glyphs == std::vector<int>{3, 46, 86, 83, 73});
}

TEST_CASE("The second byte alone decides, whichever lead byte came first")
{
    CHECK(layout("\xC3\x90", solid_font(0, 1)).glyphs == std::vector<int>{41});
    CHECK(layout("\xC5\x90", solid_font(0, 1)).glyphs == std::vector<int>{41});
    CHECK(layout("\xC5\xA1", solid_font(0, 1)).glyphs == std::vector<int>{2});
}

TEST_CASE("A lead byte at the end of a line draws nothing")
{
    CHECK(layout("a\xC3", solid_font(0, 1)).glyphs == std::vector<int>{0});
    const std::string full = std::string(31, 'a') + "\xC3";
    CHECK(layout(full, solid_font(0, 1)).glyphs == std::vector<int>(31, 0));
}

TEST_CASE("A lead byte takes the next byte with it even when that has no glyph of its own")
{
    CHECK(layout("\xC3"
                 "ab",
              solid_font(0, 1))
              .glyphs
        == std::vector<int>{4});
    CHECK(layout("\xC3\xC3\x81"
                 "b",
              solid_font(0, 1))
              .glyphs
        == std::vector<int>{4});
}

TEST_CASE("A text ends at its first zero or at its 32nd byte")
{
    CHECK(layout(std::string_view("ab\0cd", 5), solid_font(0, 1)).glyphs == std::vector<int>{0, 4});
    CHECK(layout(std::string(32, 'b'), solid_font(0, 1)).glyphs == std::vector<int>(32, 4));
    CHECK(layout("", solid_font(0, 1)).glyphs.empty());
}

TEST_CASE("A drawn glyph stands its offset to the left and moves the pen by its width")
{
    CHECK(layout("aaa", solid_font(2, 5)).pens == std::vector<float>{-2, 3, 8});
    CHECK(layout("aaa", solid_font(-1.5f, 4)).pens == std::vector<float>{1.5f, 5.5f, 9.5f});
}

TEST_CASE("A blank moves the pen by its width less its offset")
{
    font_record font = solid_font(2, 5);
    font.glyphs[86].model = 0;
    // a: drawn at -2, pen 5; blank: pen 8; a: drawn at 6.
    CHECK(layout("a a", font).pens == std::vector<float>{-2, 6});
    CHECK(layout("a  a", font).pens == std::vector<float>{-2, 9});
    CHECK(layout("a a", font).glyphs == std::vector<int>{0, 0});
}

TEST_CASE("A byte without a glyph does not move the pen at all")
{
    CHECK(layout("a~.a", solid_font(2, 5)).pens == std::vector<float>{-2, 3});
    CHECK(layout("~~~~", solid_font(2, 5)).pens.empty());
    CHECK(layout("~~~~a", solid_font(2, 5)).pens == std::vector<float>{-2});
}

TEST_CASE("Each glyph brings its own offset and width")
{
    font_record font = solid_font(0, 10);
    font.glyphs[4] = {.model = 1, .material = 0, .bitmap = 0, .offset = 0.5f, .width = 3};
    CHECK(layout("abab", font).pens == std::vector<float>{0, 9.5f, 13, 22.5f});
}
