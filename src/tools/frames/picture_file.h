// Pictures as files: PNG by png_file, JPEG, and on the disk.
//
// What fails returns false (or an empty result) and puts one sentence without a full stop
// into `error`.
#pragma once

#include "tools/frames/picture.h"

#include <cstdint>
#include <string>
#include <vector>

// The picture as a baseline JPEG file in memory (`quality` 1..100); empty for a picture that
// cannot be encoded, or when there is no memory. The same pixels give the same bytes.
std::vector<uint8_t> encode_jpeg(const picture& p, int quality);

// Writes a whole PNG file (output_file.h).
[[nodiscard]] bool save_png(const std::string& path, const picture& p, std::string& error);

// Reads a PNG (any picture that the engine's decoder knows); grey becomes colour, and
// transparency is left out. `p` changes only on success.
[[nodiscard]] bool load_png(const std::string& path, picture& p, std::string& error);
