// What the driver is taken not to have: a show as a lesser card plays it.
#pragma once

#include "shell/capability_report.h"

#include <cstdint>
#include <string>
#include <string_view>

struct lesser_card {
    bool no_vbo = false;
    bool no_pbo = false;
    bool no_npot = false;
    bool no_compression = false;
    bool no_combine4 = false;
    bool no_combine3 = false;
    uint32_t units = 0; // at most so many texture units, 1..4; 0: as many as there are

    bool operator==(const lesser_card&) const = default;
};

// Reads a list like "no-vbo,units=2". False for anything else; `card` may have changed then.
bool read_lesser_card(std::string_view text, lesser_card& card);

// The list that reads back as the card; empty for one that lacks nothing.
std::string lesser_card_text(const lesser_card& card);

// The driver's answers, less what the card lacks.
driver_offer offer_of_card(driver_offer offer, const lesser_card& card);
