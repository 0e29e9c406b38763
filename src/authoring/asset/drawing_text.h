// Texts as drawings and reports show them. The same everywhere: no locale has a say.
#pragma once

#include <string>
#include <string_view>

// "1:04.25"; below 0 with a minus in front.
std::string time_text(double seconds);

// A text between tags of an SVG or of a label: "&lt;" for "<", and what no drawing shows spelled out (printable).
std::string escaped_text(std::string_view text);
