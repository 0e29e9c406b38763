#include "near_word.h"

#include <algorithm>
#include <vector>

// How many letters must be changed, left out or put in to make `a` of `b`.
static size_t letters_apart(std::string_view a, std::string_view b)
{
    std::vector<size_t> row(b.size() + 1);
    for (size_t j = 0; j < row.size(); ++j)
        row[j] = j;
    for (size_t i = 0; i < a.size(); ++i) {
        size_t corner = row[0]; // of the row before
        row[0] = i + 1;
        for (size_t j = 0; j < b.size(); ++j) {
            const size_t above = row[j + 1];
            row[j + 1] = std::min({above + 1, row[j] + 1, corner + (a[i] == b[j] ? 0 : 1)});
            corner = above;
        }
    }
    return row.back();
}

std::string near_word(std::string_view word, std::span<const std::string_view> words)
{
    constexpr size_t shortest_word = 4; // an option's with its dashes: "--fl" is enough for --flashes
    std::string_view closest;
    size_t least = word.size() < shortest_word ? 1 : 3; // more letters apart are another word
    for (const std::string_view candidate : words) {
        const bool begins = word.size() >= shortest_word && candidate.starts_with(word);
        const size_t apart = begins ? 1 : letters_apart(word, candidate);
        if (apart < least)
            closest = candidate;
        least = std::min(apart, least);
    }
    return std::string(closest);
}
