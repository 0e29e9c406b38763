#include "content/vorbis_comments.h"

#include <cassert>
#include <cstdint>
#include <cstring>
#include <vector>

constexpr size_t page_head_size = 27; // up to the number of segments, which is its last byte
constexpr size_t max_packet_size = size_t{16} << 20;
constexpr uint8_t full_segment = 255; // the packet goes on in the next one

static bool read_page_head(FILE* file, std::vector<uint8_t>& segment_sizes)
{
    uint8_t head[page_head_size];
    if (std::fread(head, 1, sizeof head, file) != sizeof head || std::memcmp(head, "OggS", 4) != 0)
        return false;
    segment_sizes.resize(head[page_head_size - 1]);
    return std::fread(segment_sizes.data(), 1, segment_sizes.size(), file) == segment_sizes.size();
}

// The first packet has a page of its own.
static bool skip_first_page(FILE* file)
{
    std::vector<uint8_t> segment_sizes;
    if (!read_page_head(file, segment_sizes))
        return false;
    long size = 0;
    for (const uint8_t segment : segment_sizes)
        size += segment;
    return std::fseek(file, size, SEEK_CUR) == 0;
}

// The packet that begins on the page at hand, which may go on over any number of pages.
static bool read_packet(FILE* file, std::vector<uint8_t>& packet)
{
    assert(packet.empty());
    std::vector<uint8_t> segment_sizes;
    while (read_page_head(file, segment_sizes)) {
        for (const uint8_t segment : segment_sizes) {
            const size_t old_size = packet.size();
            packet.resize(old_size + segment);
            if (packet.size() > max_packet_size || std::fread(packet.data() + old_size, 1, segment, file) != segment)
                return false;
            if (segment < full_segment)
                return true;
        }
        if (segment_sizes.empty())
            return false;
    }
    return false;
}

// Takes a little-endian number off the front; false when there is none.
static bool take_number(const std::vector<uint8_t>& packet, size_t& at, uint32_t& number)
{
    assert(at <= packet.size());
    if (packet.size() - at < 4)
        return false;
    number = packet[at] | static_cast<uint32_t>(packet[at + 1]) << 8 | static_cast<uint32_t>(packet[at + 2]) << 16
        | static_cast<uint32_t>(packet[at + 3]) << 24;
    at += 4;
    return true;
}

static bool skip_text(const std::vector<uint8_t>& packet, size_t& at)
{
    uint32_t length = 0;
    if (!take_number(packet, at, length) || length > packet.size() - at)
        return false;
    at += length;
    assert(at <= packet.size());
    return true;
}

static bool texts_fit(const std::vector<uint8_t>& packet)
{
    constexpr char mark[] = "\3vorbis";
    constexpr size_t mark_size = sizeof mark - 1;
    if (packet.size() < mark_size || std::memcmp(packet.data(), mark, mark_size) != 0)
        return false;
    size_t at = mark_size;
    uint32_t count = 0;
    bool fits = skip_text(packet, at) && take_number(packet, at, count); // the vendor, then the comments
    for (; fits && count > 0; --count)
        fits = skip_text(packet, at);
    return fits;
}

bool vorbis_comments_fit(FILE* file)
{
    assert(file != nullptr);
    std::vector<uint8_t> packet;
    std::rewind(file);
    const bool fit = skip_first_page(file) && read_packet(file, packet) && texts_fit(packet);
    std::rewind(file);
    return fit;
}
