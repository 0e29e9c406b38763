// Values of options that several programs have: how their texts are read.
//
// Pure. A text that is no such value gives false, and changes nothing where it says so.
#pragma once

#include <cstdint>
#include <string_view>
#include <vector>

constexpr uint32_t max_picture_side = 65535;

// A whole number of digits alone, at most `most`; else `value` stays.
bool read_number(std::string_view text, uint32_t most, uint32_t& value);

// The parts between commas; an empty text has one, which is empty.
std::vector<std::string_view> split_list(std::string_view text);

// "1280x720", each side 1 to max_picture_side.
bool read_size(std::string_view text, uint32_t& width, uint32_t& height);

// "auto", "4:3", "16:9", "16:10" as aspect_choice.
bool read_aspect(std::string_view text, uint32_t& aspect);
