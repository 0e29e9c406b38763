// Numbers that are tried by hand: the calls of try(value, least, most) in a source's text.
//
// Pure. Texts are read as the language's own reader parts them: strings and comments are passed over.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

// One call in a text.
struct try_site {
    uint32_t line = 0;      // from 1
    std::string label;      // what its value is for: "x" of "x = try(...)", "amount" of "{ amount = try(...) }"; may be empty
    bool can_write = false; // its first argument is a number that is written out, with or without a sign
    double value = 0;       // that number
    size_t begin = 0;       // its bytes in the text
    size_t end = 0;
};

// All of a text, in its order.
std::vector<try_site> find_tries(std::string_view text);

// The text with another number at a site; the number is the shortest that reads back the same, and nothing else changes.
// Empty: the site cannot be written.
std::string with_try_written(std::string_view text, const try_site& site, double value);
