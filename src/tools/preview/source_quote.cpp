#include "tools/preview/source_quote.h"

#include <algorithm>
#include <fstream>

constexpr size_t most_quoted = 240; // bytes

std::string quote_line(const std::string& path, uint32_t line)
{
    std::ifstream file(path);
    std::string text;
    for (uint32_t n = 0; n < line; ++n)
        if (!std::getline(file, text))
            return "";
    std::replace(text.begin(), text.end(), '\t', ' ');
    std::erase_if(text, [](char c) { return static_cast<uint8_t>(c) < 0x20 || c == 0x7F; });
    text.erase(0, text.find_first_not_of(' '));
    if (text.size() > most_quoted) {
        size_t end = most_quoted;
        while (end > 0 && (static_cast<uint8_t>(text[end]) & 0xC0) == 0x80) // never within a letter
            --end;
        text.resize(end);
    }
    return text;
}
