// What the two processes of the preview say to each other, as bytes.
#pragma once

#include "tools/preview/builder_builds.h"

#include <cstdint>
#include <optional>
#include <span>
#include <vector>

struct build_order {
    uint64_t number = 0;
    build_wish wish;
};

constexpr size_t largest_order = 128 << 10; // bytes: what a socket takes at once everywhere

// Nothing for bytes that are not a whole one.
std::vector<uint8_t> encode_order(const build_order& order);
std::optional<build_order> decode_order(std::span<const uint8_t> bytes);
