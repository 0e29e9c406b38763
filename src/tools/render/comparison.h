// Visual regression: the numbered pictures of a directory against new ones.
//
// A reference is a file like 00750.png: the frame of that number, as
// "brimlow-render --at ... -o DIR/%05d.png" writes it. The file says which driver made it.
// The same driver must make the same bytes again. Another one may round differently at
// the edges of triangles and inside its texture filters: there the mean difference of any
// colour may be up to `comparison_tolerance` of 255 (tests/pictures/README.md has the
// measurements: another rasteriser stays below that, and a lost object does not).
#pragma once

#include "tools/frames/picture.h"

#include <cstdint>
#include <string>
#include <vector>

constexpr double comparison_tolerance = 1.0;

struct reference_picture {
    uint64_t frame = 0;
    std::string path;
    std::string driver; // empty: it does not say
    picture image;
};

// The references of a directory by frame. False with one sentence: there are none, one
// cannot be read, or their sizes differ.
[[nodiscard]] bool load_references(
    const std::string& directory, std::vector<reference_picture>& references, std::string& problem);

struct comparison_result {
    bool passed = false;
    std::string text; // "00750.png: equal", without a line end
};

// Compares. A failure leaves NUMBER.new.png and NUMBER.difference.png (eight times
// amplified) beside the reference; a success removes those of an earlier failure.
comparison_result compare_with_reference(
    const reference_picture& reference, const picture& image, const std::string& driver);
