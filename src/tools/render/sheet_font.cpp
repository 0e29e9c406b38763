#include "sheet_font.h"

#include <algorithm>
#include <cmath>
#include <stb/stb_truetype.h>
#include <vector>

extern "C" const uint8_t sheet_font_file[]; // sheet_fonts.S
extern "C" const uint8_t sheet_font_bold_file[];

namespace {

struct opened_font {
    stbtt_fontinfo info;
    float scale; // pixels for a unit of the font
};

} // namespace

// Capitals and digits of whole pixels are sharp above and below.
static opened_font open_font(const uint8_t* file, int capital_height)
{
    opened_font font = {};
    int top = 0;
    stbtt_InitFont(&font.info, file, 0);
    stbtt_GetCodepointBox(&font.info, 'H', nullptr, nullptr, nullptr, &top);
    font.scale = static_cast<float>(capital_height) / static_cast<float>(top);
    return font;
}

static const opened_font& opened(sheet_font font)
{
    static const opened_font fonts[sheet_font_count]
        = {open_font(sheet_font_file, 12), open_font(sheet_font_bold_file, 22)};
    return fonts[font];
}

// ---- letters -----------------------------------------------------------------------------

// The next letter of a UTF-8 text, which is shortened by it; "?" for broken bytes.
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
        return length == 1 ? first : uint32_t{'?'};
    }
    uint32_t letter = first & (0x7Fu >> length);
    for (size_t i = 1; i < length; ++i) {
        if ((byte(i) & 0xC0) != 0x80) {
            text.remove_prefix(i);
            return '?';
        }
        letter = letter << 6 | (byte(i) & 0x3F);
    }
    text.remove_prefix(length);
    return letter;
}

// What is only space, control letters among it, is a space.
static int glyph_of(const opened_font& font, uint32_t letter)
{
    const int glyph = stbtt_FindGlyphIndex(&font.info, static_cast<int>(std::max<uint32_t>(letter, ' ')));
    return glyph != 0 ? glyph : stbtt_FindGlyphIndex(&font.info, '?');
}

static float advance_of(const opened_font& font, int glyph)
{
    int advance = 0;
    stbtt_GetGlyphHMetrics(&font.info, glyph, &advance, nullptr);
    return font.scale * static_cast<float>(advance);
}

// ---- lines -------------------------------------------------------------------------------

namespace {

struct placed_glyph {
    int glyph;
    float begin; // pixels from the first pen position
    float end;
    size_t bytes; // of the text, up to the end of its letter
};

} // namespace

// Every letter at its own fraction of a pixel, pairs closer together where the font says so.
static std::vector<placed_glyph> place_glyphs(const opened_font& font, std::string_view text)
{
    std::vector<placed_glyph> line;
    float x = 0;
    for (std::string_view rest = text; !rest.empty();) {
        const int glyph = glyph_of(font, take_letter(rest));
        if (!line.empty())
            x += font.scale * static_cast<float>(stbtt_GetGlyphKernAdvance(&font.info, line.back().glyph, glyph));
        line.push_back({glyph, x, x + advance_of(font, glyph), text.size() - rest.size()});
        x = line.back().end;
    }
    return line;
}

static float width_of(const std::vector<placed_glyph>& line)
{
    return line.empty() ? 0 : line.back().end;
}

int32_t font_ascent(sheet_font font)
{
    int ascent = 0;
    stbtt_GetFontVMetrics(&opened(font).info, &ascent, nullptr, nullptr);
    return static_cast<int32_t>(std::lround(opened(font).scale * static_cast<float>(ascent)));
}

uint32_t text_width(sheet_font font, std::string_view text)
{
    return static_cast<uint32_t>(std::ceil(width_of(place_glyphs(opened(font), text))));
}

static uint8_t blend(uint8_t below, uint8_t ink, uint8_t coverage)
{
    return static_cast<uint8_t>((below * (255 - coverage) + ink * coverage + 127) / 255);
}

static void blend_pixel(picture& p, int64_t x, int64_t y, sheet_color color, uint8_t coverage)
{
    if (coverage == 0 || x < 0 || y < 0 || x >= p.width || y >= p.height)
        return;
    uint8_t* pixel = &p.rgb[(static_cast<size_t>(y) * p.width + static_cast<size_t>(x)) * 3];
    pixel[0] = blend(pixel[0], color.red, coverage);
    pixel[1] = blend(pixel[1], color.green, coverage);
    pixel[2] = blend(pixel[2], color.blue, coverage);
}

// With the pen at (x + shift, y) on the base line; `shift` is 0 to below 1.
static void draw_glyph(
    picture& p, const opened_font& font, int glyph, int64_t x, float shift, int64_t y, sheet_color color)
{
    int left = 0;
    int top = 0;
    int right = 0;
    int bottom = 0;
    const float scale = font.scale;
    stbtt_GetGlyphBitmapBoxSubpixel(&font.info, glyph, scale, scale, shift, 0, &left, &top, &right, &bottom);
    const int width = right - left;
    const int height = bottom - top;
    if (width <= 0 || height <= 0)
        return; // a space
    std::vector<uint8_t> coverage(static_cast<size_t>(width) * static_cast<size_t>(height));
    stbtt_MakeGlyphBitmapSubpixel(&font.info, coverage.data(), width, height, width, scale, scale, shift, 0, glyph);
    for (int i = 0; i < width * height; ++i)
        blend_pixel(p, x + left + i % width, y + top + i / width, color, coverage[static_cast<size_t>(i)]);
}

void draw_text(picture& p, sheet_font font, int32_t x, int32_t y, std::string_view text, sheet_color color)
{
    if (!is_whole(p))
        return;
    const int64_t base_line = int64_t{y} + font_ascent(font);
    for (const placed_glyph& placed : place_glyphs(opened(font), text)) {
        const float whole = std::floor(placed.begin);
        draw_glyph(
            p, opened(font), placed.glyph, x + static_cast<int64_t>(whole), placed.begin - whole, base_line, color);
    }
}

std::string cut_text(sheet_font font, std::string_view text, uint32_t width)
{
    const float room = static_cast<float>(width);
    const std::vector<placed_glyph> line = place_glyphs(opened(font), text);
    if (width_of(line) <= room)
        return std::string(text);
    const float dots = width_of(place_glyphs(opened(font), "..."));
    if (dots > room)
        return {};
    size_t kept = 0;
    for (const placed_glyph& placed : line)
        if (placed.end + dots <= room)
            kept = placed.bytes;
    while (kept > 0 && text[kept - 1] == ' ')
        --kept;
    return std::string(text.substr(0, kept)) + "...";
}
