#include "sheet_font.h"

#include <algorithm>

// The next letter of a UTF-8 text, which is shortened by it; U+FFFD for broken bytes.
static uint32_t take_letter(std::string_view& text)
{
    const auto byte = [&](size_t i) { return static_cast<uint32_t>(static_cast<unsigned char>(text[i])); };
    const uint32_t first = byte(0);
    const size_t length = first < 0x80  ? 1
        : first >= 0xC2 && first < 0xE0 ? 2
        : first >= 0xE0 && first < 0xF0 ? 3
        : first >= 0xF0 && first < 0xF5 ? 4
                                        : 0;
    if (length < 2 || length > text.size()) {
        text.remove_prefix(1);
        return length == 1 ? first : 0xFFFD;
    }
    uint32_t letter = first & (0x7Fu >> length);
    for (size_t i = 1; i < length; ++i) {
        if ((byte(i) & 0xC0) != 0x80) {
            text.remove_prefix(i);
            return 0xFFFD;
        }
        letter = letter << 6 | (byte(i) & 0x3F);
    }
    text.remove_prefix(length);
    return letter;
}

// Null for what is only space.
static const sheet_glyph* find_glyph(const sheet_font& font, uint32_t letter)
{
    if (letter <= ' ' || letter == 0xA0)
        return nullptr;
    const sheet_glyph* end = font.glyphs + font.glyph_count;
    const auto is_before = [](const sheet_glyph& glyph, uint32_t wanted) { return glyph.letter < wanted; };
    const sheet_glyph* found = std::lower_bound(font.glyphs, end, letter, is_before);
    if (found != end && found->letter == letter)
        return found;
    return letter == '?' ? nullptr : find_glyph(font, '?');
}

static int32_t advance_of(const sheet_font& font, uint32_t letter)
{
    const sheet_glyph* glyph = find_glyph(font, letter);
    return glyph ? glyph->advance : font.space;
}

uint32_t text_width(const sheet_font& font, std::string_view text)
{
    uint32_t width = 0;
    while (!text.empty())
        width += static_cast<uint32_t>(advance_of(font, take_letter(text)));
    return width;
}

static uint8_t blend(uint8_t below, uint8_t ink, int32_t coverage)
{
    return static_cast<uint8_t>((below * (15 - coverage) + ink * coverage + 7) / 15);
}

static void draw_glyph(picture& p, const sheet_glyph& glyph, int32_t x, int32_t y, sheet_color color)
{
    for (uint32_t i = 0; i < glyph.width * glyph.height; ++i) {
        const int64_t to_x = int64_t{x} + i % glyph.width;
        const int64_t to_y = int64_t{y} + i / glyph.width;
        if (to_x < 0 || to_y < 0 || to_x >= p.width || to_y >= p.height)
            continue;
        const char digit = glyph.coverage[i];
        const int32_t coverage = digit <= '9' ? digit - '0' : digit - 'a' + 10;
        uint8_t* pixel = &p.rgb[(static_cast<size_t>(to_y) * p.width + static_cast<size_t>(to_x)) * 3];
        pixel[0] = blend(pixel[0], color.red, coverage);
        pixel[1] = blend(pixel[1], color.green, coverage);
        pixel[2] = blend(pixel[2], color.blue, coverage);
    }
}

void draw_text(picture& p, const sheet_font& font, int32_t x, int32_t y, std::string_view text, sheet_color color)
{
    if (!is_whole(p))
        return;
    while (!text.empty()) {
        const uint32_t letter = take_letter(text);
        if (const sheet_glyph* glyph = find_glyph(font, letter))
            draw_glyph(p, *glyph, x + glyph->left, y + font.ascent + glyph->top, color);
        x += advance_of(font, letter);
    }
}

std::string cut_text(const sheet_font& font, std::string_view text, uint32_t width)
{
    if (text_width(font, text) <= width)
        return std::string(text);
    const uint32_t dots = text_width(font, "...");
    if (dots > width)
        return {};
    uint32_t used = dots;
    std::string_view rest = text;
    size_t kept = 0;
    while (!rest.empty()) {
        used += static_cast<uint32_t>(advance_of(font, take_letter(rest)));
        if (used > width)
            break;
        kept = text.size() - rest.size();
    }
    while (kept > 0 && text[kept - 1] == ' ')
        --kept;
    return std::string(text.substr(0, kept)) + "...";
}
