#include "words.h"

#include "content/printable.h"

#include <cstdio>

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
