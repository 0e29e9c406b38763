// Options that several programs have: their rows, and how the texts of their values are read.
//
// Pure. A text that is no such value gives false, and changes nothing where it says so.
#pragma once

#include "tools/common/option_row.h"

#include <cstdint>
#include <string_view>
#include <vector>

constexpr uint32_t max_picture_side = 65535;

// What is said of these values: in messages, in --help, and to a shell.
inline constexpr char size_wants[] = "takes a size like 1280x720, each side 1 to 65535";
inline constexpr char rate_wants[] = "takes frames a second like 60, 29.97 or 30000/1001, from 1/1000 to 1000";
inline constexpr char moment_wants[] = "takes a time like 12.5, 1:02.25, 750f or 40%";

// Rows of options that they have alike; `page`: what the program's own manual page says of it.
constexpr option_row aspect_row(int32_t id, int32_t group, const char* page)
{
    return {.id = id,
        .group = group,
        .name = "--aspect",
        .value = "SHAPE",
        .wants = "takes auto, 4:3, 16:9 or 16:10",
        .offers = offer_word,
        .words = "auto 4:3 16:9 16:10",
        .help = "auto, 4:3, 16:9 or 16:10 (auto)",
        .page = page};
}

constexpr option_row path_row(int32_t id, int32_t group, const char* page)
{
    return {.id = id,
        .group = group,
        .name = "--path",
        .value = "PATH",
        .wants = "takes glsl or fixed",
        .offers = offer_word,
        .words = "glsl fixed",
        .help = "glsl or fixed (glsl)",
        .page = page};
}

constexpr option_row caps_row(int32_t id, int32_t group, const char* page)
{
    return {.id = id,
        .group = group,
        .name = "--caps",
        .value = "LIST",
        .wants = "takes a list of no-vbo, no-pbo, no-npot, no-compression, no-combine4, no-combine3 and units=1 to "
                 "units=4",
        .offers = offer_words,
        .words = "no-vbo no-pbo no-npot no-compression no-combine4 no-combine3 units=1 units=2 units=3 units=4",
        .help = "plays as on a lesser card: no-vbo, no-pbo, no-npot,\n"
                "no-compression, no-combine4, no-combine3, units=1..4,\n"
                "with commas between them",
        .page = page};
}

constexpr option_row seed_row(int32_t id, int32_t group)
{
    return {.id = id,
        .group = group,
        .name = "--seed",
        .value = "N",
        .wants = "takes a number from 0 to 4294967295",
        .help = "start of the random numbers (the player's)",
        .page = "Starts the random numbers anew; 1 is what the player has."};
}

// A whole number of digits alone, at most `most`; else `value` stays.
bool read_number(std::string_view text, uint32_t most, uint32_t& value);

// The parts between commas; an empty text has one, which is empty.
std::vector<std::string_view> split_list(std::string_view text);

// "1280x720", each side 1 to max_picture_side.
bool read_size(std::string_view text, uint32_t& width, uint32_t& height);

// "auto", "4:3", "16:9", "16:10" as aspect_choice.
bool read_aspect(std::string_view text, uint32_t& aspect);
