// Which items of two lists are the same ones: so that one that was put in between is one difference and not a thousand.
#pragma once

#include <cstdint>
#include <vector>

constexpr uint32_t no_item = 0xFFFFFFFFu;

// Items are counted from 0. One of the two may be no_item: the other list has no such item.
struct aligned_items {
    uint32_t a;
    uint32_t b;
    bool moved; // it is the same, and stands before another one than it did

    bool operator==(const aligned_items&) const = default;
};

// How alike item a and item b are, from 0 to 1000.
using item_likeness = uint32_t (*)(void* context, uint32_t a, uint32_t b);

// Every item of both lists once, pairs in the order of b with those of a that have no pair between them. Items with
// equal keys in the longest order that both lists share are pairs; between them those that are alike by half, or the
// only ones; then equal keys anywhere, which have moved. Lists of up to 4096 items.
std::vector<aligned_items> align_items(
    const std::vector<uint32_t>& a_keys, const std::vector<uint32_t>& b_keys, item_likeness likeness, void* context);
