// The music of a production as samples.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

struct decoded_music {
    uint32_t samples_per_second = 0; // the file's own; 0: there is no sound
    std::vector<int16_t> pairs;      // left, right, left, ...
};

// Decodes the first `seconds` of an Ogg Vorbis file, or all that there is.
// A file that the player would play as silence gives no sound and a sentence in `warning`.
decoded_music decode_music(const std::string& path, double seconds, std::string& warning);
