// Words inside PNG files: which driver made a picture.
//
// Texts are Latin letters without zero bytes; the chunk is "tEXt" (keyword, 0, text).
#pragma once

#include <cstdint>
#include <span>
#include <string>
#include <vector>

// Puts a text behind the header of a PNG file in memory. A file that is none stays as it is.
void png_add_text(std::vector<uint8_t>& png, const std::string& keyword, const std::string& text);

// The first text of a keyword; empty when there is none. Stops at damage.
std::string png_read_text(std::span<const uint8_t> png, const std::string& keyword);
