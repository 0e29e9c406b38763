#include "model/picture_check.h"

#include <algorithm>
#include <cassert>
#include <cstring>

namespace {

// A picture; beyond its end its bytes count as zero, as the decoder takes them.
struct picture_bytes {
    const uint8_t* data;
    uint32_t size;
};

} // namespace

static uint32_t byte_at(const picture_bytes& picture, uint32_t at)
{
    return at < picture.size ? picture.data[at] : 0;
}

static uint32_t u16_at(const picture_bytes& picture, uint32_t at)
{
    return byte_at(picture, at) << 8 | byte_at(picture, at + 1);
}

static uint32_t u32_at(const picture_bytes& picture, uint32_t at)
{
    return u16_at(picture, at) << 16 | u16_at(picture, at + 2);
}

static bool begins_with(const picture_bytes& picture, const char* text, uint32_t length)
{
    return picture.size >= length && std::memcmp(picture.data, text, length) == 0;
}

// ---- JPEG -------------------------------------------------------------------------

namespace {

enum jpeg_marker : uint8_t {
    marker_stuffed = 0x00, // a byte 0xFF of the coded picture
    marker_tables = 0xC4,
    marker_first_restart = 0xD0,
    marker_start = 0xD8,
    marker_end = 0xD9,
    marker_prefix = 0xFF
};

} // namespace

constexpr uint32_t max_codes = 256;
constexpr uint32_t code_lengths = 16;
constexpr uint32_t length_size = 2; // a segment's length counts itself

// The tables of a segment with `left` bytes, each a class and number, the counts of codes of
// every length, and one byte a code.
static bool tables_fit(const picture_bytes& jpeg, uint32_t at, int64_t left)
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

static bool is_jpeg(const picture_bytes& picture)
{
    uint32_t at = 0;
    while (byte_at(picture, at) == marker_prefix) // may be repeated, here and below
        ++at;
    return at > 0 && byte_at(picture, at) == marker_start;
}

static bool has_no_segment(uint8_t marker)
{
    return marker == marker_stuffed || (marker >= marker_first_restart && marker <= marker_start);
}

// What follows the next byte that may begin a marker; the picture's size: there is none.
static uint32_t behind_prefix(const picture_bytes& jpeg, uint32_t at)
{
    assert(at < jpeg.size);
    const void* found = std::memchr(jpeg.data + at, marker_prefix, jpeg.size - at);
    return found != nullptr ? static_cast<uint32_t>(static_cast<const uint8_t*>(found) - jpeg.data) + 1 : jpeg.size;
}

// Goes from marker to marker: over the segments by their lengths, so that nothing inside of
// one is taken for a marker, and through the coded picture by its bytes.
static bool jpeg_is_harmless(const picture_bytes& jpeg)
{
    uint32_t at = 0;
    while (at < jpeg.size) {
        at = behind_prefix(jpeg, at);
        while (byte_at(jpeg, at) == marker_prefix)
            ++at;
        const auto marker = static_cast<uint8_t>(byte_at(jpeg, at++));
        if (marker == marker_end)
            return true;
        if (has_no_segment(marker))
            continue;
        const uint32_t length = u16_at(jpeg, at);
        if (marker == marker_tables && !tables_fit(jpeg, at + length_size, int64_t{length} - length_size))
            return false;
        at += std::max(length, length_size);
    }
    return true;
}

// ---- PNG --------------------------------------------------------------------------

constexpr char png_signature[] = "\x89PNG\r\n\x1A\n";
constexpr uint32_t png_signature_size = sizeof png_signature - 1;
constexpr uint32_t png_chunk_head_size = 8;     // length and type in front of the content
constexpr uint32_t png_chunk_checksum_size = 4; // behind it
constexpr uint32_t png_last_chunk = 0x49454E44; // "IEND"

static bool png_is_harmless(const picture_bytes& png)
{
    for (uint32_t at = png_signature_size; at < png.size;) {
        const uint32_t length = u32_at(png, at);
        const uint32_t type = u32_at(png, at + 4);
        if (type == png_last_chunk) // what follows is not the picture's
            return true;
        at += png_chunk_head_size;
        if (length > png.size - std::min(at, png.size))
            return false;
        at += length + png_chunk_checksum_size;
    }
    return true;
}

// ---- PSD --------------------------------------------------------------------------

constexpr char psd_signature[] = "8BPS";
constexpr uint32_t psd_signature_size = sizeof psd_signature - 1;
constexpr uint32_t psd_head_size = 26;
constexpr int psd_sections = 3; // in front of the pixels, each with its length before it

static bool psd_is_harmless(const picture_bytes& psd)
{
    uint32_t at = psd_head_size;
    for (int section = 0; section < psd_sections; ++section) {
        const uint32_t length = u32_at(psd, at);
        at += 4;
        if (at > psd.size || length > psd.size - at)
            return false;
        at += length;
    }
    return true;
}

// ---- all --------------------------------------------------------------------------

bool picture_is_harmless(const uint8_t* data, uint32_t size)
{
    assert(data != nullptr || size == 0);
    const picture_bytes picture = {data, size};
    if (is_jpeg(picture))
        return jpeg_is_harmless(picture);
    if (begins_with(picture, png_signature, png_signature_size))
        return png_is_harmless(picture);
    if (begins_with(picture, psd_signature, psd_signature_size))
        return psd_is_harmless(picture);
    return true;
}
