#include "words.h"

#include <cstdio>

// The length of the UTF-8 character at `at`; 0 where there is none.
static size_t character_length(const std::string& text, size_t at)
{
    const auto byte = [&text](size_t i) { return i < text.size() ? static_cast<uint8_t>(text[i]) : uint8_t{0}; };
    const uint8_t first = byte(at);
    if (first < 0x80)
        return 1;
    const size_t length = first >= 0xF0 ? 4 : first >= 0xE0 ? 3 : 2;
    if (first < 0xC2 || first > 0xF4)
        return 0;
    for (size_t i = 1; i < length; ++i)
        if ((byte(at + i) & 0xC0) != 0x80)
            return 0;
    const bool overlong = (first == 0xE0 && byte(at + 1) < 0xA0) || (first == 0xF0 && byte(at + 1) < 0x90);
    const bool outside = (first == 0xED && byte(at + 1) >= 0xA0) || (first == 0xF4 && byte(at + 1) >= 0x90);
    return overlong || outside ? 0 : length;
}

// U+0080 to U+009F are commands of a terminal, too.
static bool is_control(const std::string& text, size_t at, size_t length)
{
    const uint8_t first = static_cast<uint8_t>(text[at]);
    return (length == 1 && (first < 0x20 || first == 0x7F))
        || (length == 2 && first == 0xC2 && static_cast<uint8_t>(text[at + 1]) < 0xA0);
}

std::string printable(const std::string& text)
{
    std::string result;
    for (size_t at = 0; at < text.size();) {
        const size_t length = character_length(text, at);
        const size_t step = length == 0 ? 1 : length;
        if (length != 0 && !is_control(text, at, length)) {
            result.append(text, at, length);
        } else {
            for (size_t i = at; i < at + step; ++i) {
                char escape[8];
                std::snprintf(escape, sizeof escape, "\\x%02x", unsigned{static_cast<uint8_t>(text[i])});
                result += escape;
            }
        }
        at += step;
    }
    return result;
}

std::string counted(uint64_t count, const char* thing)
{
    return std::to_string(count) + " " + thing + (count == 1 ? "" : "s");
}

std::string enumerated(const std::vector<std::string>& parts)
{
    std::string text;
    for (size_t i = 0; i < parts.size(); ++i) {
        const bool last = i + 1 == parts.size();
        text += i == 0 ? "" : last ? " and " : ", ";
        text += parts[i];
    }
    return text;
}

bool split_words(std::string_view text, std::vector<std::string>& words)
{
    words.clear();
    char quote = 0;
    bool in_word = false;
    for (size_t i = 0; i < text.size(); ++i) {
        const char c = text[i];
        if (quote == 0 && (c == ' ' || c == '\t' || c == '\n')) {
            in_word = false;
            continue;
        }
        if (!in_word)
            words.emplace_back();
        in_word = true;
        if (c == quote) {
            quote = 0;
        } else if (quote == 0 && (c == '"' || c == '\'')) {
            quote = c;
        } else if (c == '\\' && quote != '\'') {
            if (++i == text.size())
                return false;
            words.back() += text[i];
        } else {
            words.back() += c;
        }
    }
    return quote == 0;
}

void say(const std::string& line)
{
    std::fprintf(stderr, "%s\n", printable(line).c_str());
}
