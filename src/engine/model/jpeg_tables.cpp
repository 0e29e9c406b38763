#include "model/jpeg_tables.h"

#include <algorithm>

enum jpeg_marker : uint8_t {
    marker_stuffed = 0x00, // a byte 0xFF of the coded picture
    marker_tables = 0xC4,
    marker_first_restart = 0xD0,
    marker_start = 0xD8,
    marker_end = 0xD9,
    marker_prefix = 0xFF
};

constexpr uint32_t max_codes = 256;
constexpr uint32_t code_lengths = 16;
constexpr uint32_t length_size = 2; // a segment's length counts itself

struct jpeg_bytes {
    const uint8_t* data;
    uint32_t size;
};

static uint32_t byte_at(const jpeg_bytes& jpeg, uint32_t at)
{
    return at < jpeg.size ? jpeg.data[at] : 0;
}

// The tables of a segment with `left` bytes, each a class and number, the counts of codes of
// every length, and one byte a code.
static bool tables_fit(const jpeg_bytes& jpeg, uint32_t at, int64_t left)
{
    while (left > 0) {
        uint32_t codes = 0;
        for (uint32_t length = 1; length <= code_lengths; ++length)
            codes += byte_at(jpeg, at + length);
        if (codes > max_codes)
            return false;
        at += 1 + code_lengths + codes;
        left -= 1 + code_lengths + codes;
    }
    return true;
}

static bool has_no_segment(uint8_t marker)
{
    return marker == marker_stuffed || (marker >= marker_first_restart && marker <= marker_start);
}

// Goes from marker to marker: over the segments by their lengths, so that nothing inside of
// one is taken for a marker, and through the coded picture byte by byte.
bool jpeg_tables_fit(const uint8_t* data, uint32_t size)
{
    if (size < 2 || data[0] != marker_prefix)
        return true;
    const jpeg_bytes jpeg = {data, size};
    uint32_t at = 0;
    while (at < size) {
        if (data[at++] != marker_prefix)
            continue;
        while (at < size && data[at] == marker_prefix) // may be repeated
            ++at;
        const auto marker = static_cast<uint8_t>(byte_at(jpeg, at++));
        if (marker == marker_end)
            return true;
        if (has_no_segment(marker))
            continue;
        const uint32_t length = byte_at(jpeg, at) << 8 | byte_at(jpeg, at + 1);
        if (marker == marker_tables && !tables_fit(jpeg, at + length_size, int64_t{length} - length_size))
            return false;
        at += std::min(std::max(length, length_size), size);
    }
    return true;
}
