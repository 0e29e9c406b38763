#include "content/printable.h"

#include <cassert>
#include <cstdint>

// Length in bytes of the letter at the start of `text`; 0 where it is no UTF-8: a stray or
// missing byte, a longer form than needed, half of a pair, or a number beyond the last.
static size_t letter_length(std::string_view text)
{
    assert(!text.empty());
    const auto byte = [text](size_t at) { return static_cast<uint8_t>(text[at]); };
    const uint8_t first = byte(0);
    if (first < 0x80)
        return 1;
    size_t length = 0;
    if (first >= 0xC2 && first <= 0xDF)
        length = 2;
    else if (first >= 0xE0 && first <= 0xEF)
        length = 3;
    else if (first >= 0xF0 && first <= 0xF4)
        length = 4;
    if (length == 0 || text.size() < length)
        return 0;
    for (size_t at = 1; at < length; ++at)
        if ((byte(at) & 0xC0) != 0x80)
            return 0;
    const uint8_t second = byte(1);
    const bool refused = (first == 0xE0 && second < 0xA0) || (first == 0xED && second > 0x9F)
        || (first == 0xF0 && second < 0x90) || (first == 0xF4 && second > 0x8F);
    return refused ? 0 : length;
}

static bool is_control(std::string_view letter)
{
    assert(!letter.empty());
    const auto first = static_cast<uint8_t>(letter[0]);
    return first < 0x20 || first == 0x7F || (first == 0xC2 && static_cast<uint8_t>(letter[1]) < 0xA0);
}

static void append_spelled(std::string& text, std::string_view bytes)
{
    constexpr char digits[] = "0123456789ABCDEF";
    for (const char c : bytes) {
        const auto byte = static_cast<uint8_t>(c);
        text += {'\\', 'x', digits[byte >> 4], digits[byte & 15]};
    }
}

std::string printable(std::string_view text)
{
    std::string shown;
    while (!text.empty()) {
        const size_t length = letter_length(text);
        const std::string_view letter = text.substr(0, length == 0 ? 1 : length);
        if (length == 0 || is_control(letter))
            append_spelled(shown, letter);
        else
            shown += letter;
        text.remove_prefix(letter.size());
    }
    return shown;
}
