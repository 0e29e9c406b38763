// Values of options that several programs have: how their texts are read.
//
// Pure. A text that is no such value gives false, and changes nothing where it says so.
#pragma once

#include <cstdint>
#include <string_view>
#include <vector>

constexpr uint32_t max_picture_side = 65535;

// What is said of these values: in messages, in --help, and to a shell.
inline constexpr char size_wants[] = "takes a size like 1280x720, each side 1 to 65535";
inline constexpr char aspect_wants[] = "takes auto, 4:3, 16:9 or 16:10";
inline constexpr char aspect_words[] = "auto 4:3 16:9 16:10";
inline constexpr char aspect_help[] = "auto, 4:3, 16:9 or 16:10 (auto)";
inline constexpr char path_wants[] = "takes glsl or fixed";
inline constexpr char path_words[] = "glsl fixed";
inline constexpr char path_help[] = "glsl or fixed (glsl)";
inline constexpr char caps_wants[]
    = "takes a list of no-vbo, no-pbo, no-npot, no-compression, no-combine4, no-combine3 and units=1 to units=4";
inline constexpr char caps_words[]
    = "no-vbo no-pbo no-npot no-compression no-combine4 no-combine3 units=1 units=2 units=3 units=4";
inline constexpr char caps_help[] = "plays as on a lesser card: no-vbo, no-pbo, no-npot,\n"
                                    "no-compression, no-combine4, no-combine3, units=1..4,\n"
                                    "with commas between them";
inline constexpr char seed_wants[] = "takes a number from 0 to 4294967295";
inline constexpr char seed_help[] = "start of the random numbers (the player's)";
inline constexpr char rate_wants[] = "takes frames a second like 60, 29.97 or 30000/1001, from 1/1000 to 1000";

// A whole number of digits alone, at most `most`; else `value` stays.
bool read_number(std::string_view text, uint32_t most, uint32_t& value);

// The parts between commas; an empty text has one, which is empty.
std::vector<std::string_view> split_list(std::string_view text);

// "1280x720", each side 1 to max_picture_side.
bool read_size(std::string_view text, uint32_t& width, uint32_t& height);

// "auto", "4:3", "16:9", "16:10" as aspect_choice.
bool read_aspect(std::string_view text, uint32_t& aspect);
