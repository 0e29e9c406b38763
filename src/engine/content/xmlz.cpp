#include "content/xmlz.h"
#include "content/owners.h"

#include <algorithm>
#include <climits>
#include <cstring>
#include <stb/stb_image.h>

static constexpr uint32_t size_word = 4;            // bytes in front of the stream
static constexpr uint64_t max_expansion = 1032;     // 258 bytes from two bits: more than deflate can do
static constexpr uint32_t max_stored_block = 65535; // bytes of one stored block

static uint32_t read_size_word(const uint8_t* entry)
{
    return entry[0] | static_cast<uint32_t>(entry[1]) << 8 | static_cast<uint32_t>(entry[2]) << 16
        | static_cast<uint32_t>(entry[3]) << 24;
}

xmlz_status xmlz_inflate(const uint8_t* entry, uint32_t entry_size, uint8_t** bytes, uint32_t* size)
{
    if (!entry || entry_size < size_word)
        return xmlz_damaged;
    const uint32_t declared = read_size_word(entry);
    if (declared > xmlz_max_size)
        return xmlz_too_large;
    const uint32_t stream_size = entry_size - size_word;
    if (stream_size > INT_MAX || declared > stream_size * max_expansion)
        return xmlz_damaged;

    // Cleared, because a broken stream may copy from bytes that it has not written yet.
    owned_block<uint8_t> content(static_cast<uint8_t*>(std::calloc(size_t{declared} + 1, 1)));
    if (!content)
        return xmlz_out_of_memory;
    const int inflated = stbi_zlib_decode_buffer(reinterpret_cast<char*>(content.get()), static_cast<int>(declared),
        reinterpret_cast<const char*>(entry + size_word), static_cast<int>(stream_size));
    if (inflated < 0 || static_cast<uint32_t>(inflated) != declared)
        return xmlz_damaged;
    *bytes = content.release();
    *size = declared;
    return xmlz_ok;
}

const char* xmlz_status_text(xmlz_status status)
{
    switch (status) {
    case xmlz_ok:
        return "";
    case xmlz_damaged:
        return "is damaged";
    case xmlz_too_large:
        return "declares more than 256 MiB";
    case xmlz_out_of_memory:
        return "does not fit in memory";
    }
    return "";
}

static uint32_t adler_32(const uint8_t* bytes, uint32_t size)
{
    uint32_t a = 1;
    uint32_t b = 0;
    for (uint32_t i = 0; i < size; ++i) {
        a = (a + bytes[i]) % 65521;
        b = (b + a) % 65521;
    }
    return b << 16 | a;
}

uint8_t* xmlz_store(const uint8_t* bytes, uint32_t size, uint32_t* entry_size)
{
    if (size > xmlz_max_size)
        return nullptr;
    const uint32_t block_count = std::max<uint32_t>(1, (size + max_stored_block - 1) / max_stored_block);
    const uint32_t total = size_word + 2 + 5 * block_count + size + 4;
    uint8_t* entry = static_cast<uint8_t*>(std::malloc(total));
    if (!entry)
        return nullptr;

    uint8_t* out = entry;
    for (uint32_t shift = 0; shift < 32; shift += 8)
        *out++ = static_cast<uint8_t>(size >> shift);
    *out++ = 0x78; // deflate, 32 KiB window
    *out++ = 0x01; // fastest; makes the two a multiple of 31
    for (uint32_t block = 0; block < block_count; ++block) {
        const uint32_t done = block * max_stored_block;
        const uint32_t length = std::min(max_stored_block, size - done);
        *out++ = block + 1 == block_count; // the last one says so; kind 0: stored
        *out++ = static_cast<uint8_t>(length);
        *out++ = static_cast<uint8_t>(length >> 8);
        *out++ = static_cast<uint8_t>(~length);
        *out++ = static_cast<uint8_t>(~length >> 8);
        if (length > 0)
            std::memcpy(out, bytes + done, length);
        out += length;
    }
    const uint32_t checksum = adler_32(bytes, size);
    for (int shift = 24; shift >= 0; shift -= 8)
        *out++ = static_cast<uint8_t>(checksum >> shift);
    *entry_size = total;
    return entry;
}
