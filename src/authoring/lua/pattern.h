// Patterns of Lua's string library, matched with a bound on the work.
//
// Lua's own matcher runs to its end, which for a pattern such as ".-.-.-.-b" may be in some thousand years. This one
// counts what it tries and lets its caller stop it. Pure but for that call; letters are those of ASCII.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string_view>

constexpr size_t max_captures = 32;
constexpr size_t open_capture = SIZE_MAX;         // as a length: still open
constexpr size_t position_capture = SIZE_MAX - 1; // as a length: "()", a place in the text

struct pattern_capture {
    size_t begin;  // in the subject
    size_t length; // or one of the two above
};

struct pattern_match {
    std::string_view subject;
    std::string_view pattern;                            // without a leading "^" that anchors
    void (*tried)(void* user, uint64_t count) = nullptr; // is told of each thousand trials; may throw
    void* user = nullptr;
    uint64_t trials = 0;
    const char* fault = nullptr; // what is wrong with the pattern; nothing matches then
    size_t capture_count = 0;
    pattern_capture captures[max_captures];
};

constexpr size_t no_match = SIZE_MAX;

// Matches the pattern at `begin` of the subject: where the match ends, or no_match. The captures are those of this
// match.
size_t match_pattern(pattern_match& m, size_t begin);
