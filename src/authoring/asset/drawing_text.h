// Texts as drawings and reports show them. The same everywhere: no locale has a say.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

// "1:04.25"; below 0 with a minus in front.
std::string time_text(double seconds);

// 25600 as "25,600".
std::string grouped_text(uint64_t number);

// A text between tags of an SVG or of a label: "&lt;" for "<", and what no drawing shows spelled out (printable).
std::string escaped_text(std::string_view text);
