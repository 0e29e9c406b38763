// The place in the C library's random numbers, as something that can be kept and put back: waters, swarms and "Amoba"
// draw from them, so a frame is the same again only from the same place.
//
// For the sequence that std::srand begins, and for one thread.
#pragma once

#include <array>
#include <cstdint>

// As the library keeps it: 31 numbers, and which of them is next.
struct chance_place {
    std::array<int32_t, 32> words = {};

    bool operator==(const chance_place&) const = default;
};

chance_place chance_now();
void chance_put(const chance_place& place);
