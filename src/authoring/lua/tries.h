// Numbers that are tried by hand: the calls of try(value, least, most) in a source's text.
//
// Pure. Texts are read as the language's own reader parts them: strings and comments are passed over.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

// One call in a text.
struct try_site {
    uint32_t line = 0; // of its word, from 1
    std::string
        label; // what its value is for: "x" of "x = try(...)", "amount" of "{ amount = try(...) }"; may be empty
    bool can_write = false; // its first argument is a number that is written out, with or without a sign
    double value = 0;       // that number
    size_t begin = 0;       // its bytes in the text
    size_t end = 0;
    bool has_point = false;      // that number is written as one that is not whole: 1.0, 1e3
    std::optional<double> least; // the other arguments, where they are written out
    std::optional<double> most;
    size_t closed = 0; // the byte of its ")": a call is made when the calls inside it have been
};

constexpr size_t most_tries_of_a_text = 1000;

// All of a text, in its order; of a longer list the first.
std::vector<try_site> find_tries(std::string_view text);

// The text with another number at a site: the shortest that reads back the same, with a point where there was one, and
// nothing else changes. Empty: the site cannot be written, or the number is none.
std::string with_try_written(std::string_view text, const try_site& site, double value);

// By how much a slider's value goes: the power of ten that makes a thousand steps or more of its way, and 1 at most
// (0.001 from 0 to 1, 0.1 from 0 to 360); 1 where value, least and most are whole numbers.
double try_step(double least, double most, bool whole);

// The value that a slider stands at: `value` in whole steps, and not beyond its ends. Finite numbers, least <= most.
double nearest_tried(double value, double least, double most, double step);
