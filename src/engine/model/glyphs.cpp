#include "model/glyphs.h"

#include "model/records.h"

#include <array>
#include <iterator>

const char glyph_characters[87][3]
    = {"a", "A", "á", "Á", "b", "B", "c", "C", "d", "D", "e", "E", "é", "É", "f", "F", "g", "G", "h", "H", "i", "I",
        "í", "Í", "j", "J", "k", "K", "l", "L", "m", "M", "n", "N", "o", "O", "ó", "Ó", "ö", "Ö", "ő", "Ő", "p", "P",
        "q", "Q", "r", "R", "ř", "Ř", "s", "S", "t", "T", "u", "U", "ú", "Ú", "ü", "Ü", "ű", "Ű", "v", "V", "w", "W",
        "x", "X", "y", "Y", "z", "Z", "?", "!", "0", "1", "2", "3", "4", "5", "6", "7", "8", "9", "&", "/", " "};
static_assert(std::size(glyph_characters) == glyph_count);

constexpr uint8_t first_byte = 0x20;        // the first byte with an entry of its own
constexpr uint8_t first_second_byte = 0x81; // and the first of the bytes after a lead byte

// Glyphs of the letters a..z; the upper-case glyph follows each.
constexpr uint8_t letter_glyphs[26]
    = {0, 4, 6, 8, 10, 14, 16, 18, 20, 24, 26, 28, 30, 32, 34, 42, 44, 46, 50, 52, 54, 62, 64, 66, 68, 70};

static constexpr std::array<uint8_t, 166> make_byte_glyphs()
{
    std::array<uint8_t, 166> glyphs{};
    glyphs.fill(glyph_none);
    for (uint32_t i = 0; i < 26; ++i) {
        glyphs['a' + i - first_byte] = letter_glyphs[i];
        glyphs['A' + i - first_byte] = static_cast<uint8_t>(letter_glyphs[i] + 1);
    }
    for (uint32_t i = 0; i < 10; ++i)
        glyphs['0' + i - first_byte] = static_cast<uint8_t>(74 + i);
    glyphs['?' - first_byte] = 72;
    glyphs['!' - first_byte] = 73;
    glyphs['&' - first_byte] = 84;
    glyphs['/' - first_byte] = 85;
    glyphs[' ' - first_byte] = 86;
    glyphs[0xC3 - first_byte] = glyph_lead_byte;
    glyphs[0xC5 - first_byte] = glyph_lead_byte;
    return glyphs;
}

static constexpr std::array<uint8_t, 60> make_second_byte_glyphs()
{
    struct entry {
        uint8_t byte;
        uint8_t glyph;
    };
    constexpr entry entries[] = {{0x81, 3}, {0x89, 13}, {0x8D, 23}, {0x90, 41}, {0x91, 40}, {0x93, 37}, {0x96, 39},
        {0x98, 49}, {0x99, 48}, {0x9A, 57}, {0x9C, 59}, {0xA1, 2}, {0xA9, 12}, {0xAD, 22}, {0xB0, 61}, {0xB1, 60},
        {0xB3, 36}, {0xB6, 38}, {0xBA, 56}, {0xBC, 58}};
    std::array<uint8_t, 60> glyphs{};
    glyphs.fill(glyph_none);
    for (const entry& e : entries)
        glyphs[static_cast<uint8_t>(e.byte - first_second_byte)] = e.glyph;
    return glyphs;
}

constexpr std::array<uint8_t, 166> byte_glyphs = make_byte_glyphs();
constexpr std::array<uint8_t, 60> second_byte_glyphs = make_second_byte_glyphs();

uint8_t glyph_of_byte(uint8_t c)
{
    const uint8_t index = static_cast<uint8_t>(c - first_byte);
    return index < byte_glyphs.size() ? byte_glyphs[index] : glyph_none;
}

// Quirk: the lead byte is not asked for, so that 0xC3 0x90 is Ő like 0xC5 0x90
// ("the second byte alone decides").
uint8_t glyph_of_second_byte(uint8_t c)
{
    const uint8_t index = static_cast<uint8_t>(c - first_second_byte);
    return index < second_byte_glyphs.size() ? second_byte_glyphs[index] : glyph_none;
}
