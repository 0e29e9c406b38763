// The word that a misspelt one was meant to be.
#pragma once

#include <span>
#include <string>
#include <string_view>

// Of the words, the one that `word` comes closest to: at most two letters changed, left out or put in, or its
// beginning. Dashes count as letters. Empty when none is close; of several the first.
std::string near_word(std::string_view word, std::span<const std::string_view> words);
