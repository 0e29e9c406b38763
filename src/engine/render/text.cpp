#include "render/text.h"

#include "model/records.h"

#include <cassert>
#include <iterator>

uint32_t layout_text(const char text[32], const font_record& font, std::span<placed_glyph, max_placed_glyphs> out)
{
    uint32_t length = 0;
    while (length < scene_text_size && text[length] != '\0')
        ++length;

    uint32_t placed = 0;
    float pen = 0.0f;
    for (uint32_t i = 0; i < length; ++i) {
        uint8_t glyph = glyph_of_byte(static_cast<uint8_t>(text[i]));
        if (glyph == glyph_lead_byte) {
            ++i; // a lead byte at the end is followed by the terminating zero
            glyph = glyph_of_second_byte(i < length ? static_cast<uint8_t>(text[i]) : 0);
        }
        if (glyph == glyph_none)
            continue;

        assert(glyph < std::size(font.glyphs) && placed < out.size());
        const glyph_record& record = font.glyphs[glyph];
        pen = static_cast<float>(static_cast<double>(pen) - record.offset);
        if (record.model == 0) {
            // Quirk: a blank does not take its offset back ("a blank moves the pen
            // by its width less its offset").
            pen = static_cast<float>(static_cast<double>(pen) + record.width);
            continue;
        }
        out[placed++] = {glyph, pen};
        pen = static_cast<float>(static_cast<double>(pen) + record.width + record.offset);
    }
    return placed;
}
