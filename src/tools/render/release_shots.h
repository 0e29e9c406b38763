// The stills that go with a release: the sizes that the scene's sites and party
// systems take.
#pragma once

#include "tools/frames/picture.h"

#include <string>
#include <vector>

constexpr uint32_t shot_width = 1920; // of the picture that is given
constexpr uint32_t shot_height = 1080;
constexpr size_t shot_limit = 64000; // bytes of the 400 x 225 file: below 64 KB in either sense

struct encoded_shot {
    std::vector<uint8_t> bytes; // empty: it cannot be made that small
    bool is_jpeg = false;
    int quality = 0; // of a JPEG
};

// The picture as a file of at most `limit` bytes: a PNG where it fits, else a JPEG of
// the best quality that does (95 downward in steps of 5, at last 1).
encoded_shot encode_below(const picture& p, size_t limit);

// From one 1920 x 1080 picture (another size is scaled to it) writes into `directory`,
// which is made where it is missing:
//   NAME-1920x1080.png   NAME-400x225.png or .jpg (under 64 KB)   NAME-160x90.png
// `written` gets the paths as they are written. False with `error` at the first that
// could not be.
[[nodiscard]] bool write_release_shots(const picture& full, const std::string& directory, const std::string& name,
    std::vector<std::string>& written, std::string& error);

// All names that these shots may get.
std::vector<std::string> release_shot_names(const std::string& directory, const std::string& name);
