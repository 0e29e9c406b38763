#include "content/xmlz.h"
#include "content/owners.h"

#include <algorithm>
#include <cassert>
#include <cstring>
#include <zlib.h>

static constexpr uint32_t size_word = 4;            // bytes in front of the stream
static constexpr uint32_t stream_header = 2;        // bytes that say how it is compressed
static constexpr uint64_t max_expansion = 1032;     // 258 bytes from two bits: more than deflate can do
static constexpr uint32_t max_stored_block = 65535; // bytes of one stored block

static uint32_t read_size_word(const uint8_t* entry)
{
    return entry[0] | static_cast<uint32_t>(entry[1]) << 8 | static_cast<uint32_t>(entry[2]) << 16
        | static_cast<uint32_t>(entry[3]) << 24;
}

// Whether a stream's two first bytes are those of deflate with a window of up to 32 KiB.
static bool is_stream_header(const uint8_t* bytes)
{
    return (bytes[0] & 0x0F) == 8 && bytes[0] >> 4 <= 7 && (bytes[0] << 8 | bytes[1]) % 31 == 0;
}

// Inflates a stream, which must be whole down to its checksum and fill `content` exactly.
static xmlz_status inflate_whole(const uint8_t* bytes, uint32_t size, uint8_t* content, uint32_t content_size)
{
    assert(bytes != nullptr && content != nullptr);
    z_stream stream = {};
    stream.next_in = const_cast<uint8_t*>(bytes); // the library only reads them
    stream.avail_in = size;
    stream.next_out = content;
    stream.avail_out = content_size;
    if (inflateInit(&stream) != Z_OK)
        return xmlz_out_of_memory;
    const int ending = inflate(&stream, Z_FINISH);
    inflateEnd(&stream);
    if (ending == Z_MEM_ERROR)
        return xmlz_out_of_memory;
    return ending == Z_STREAM_END && stream.avail_out == 0 ? xmlz_ok : xmlz_damaged;
}

xmlz_status xmlz_inflate(const uint8_t* entry, uint32_t entry_size, uint8_t** bytes, uint32_t* size)
{
    assert(bytes != nullptr && size != nullptr);
    if (!entry || entry_size < size_word + stream_header)
        return xmlz_damaged;
    if (!is_stream_header(entry + size_word))
        return xmlz_bare;
    const uint32_t declared = read_size_word(entry);
    if (declared > xmlz_max_size)
        return xmlz_too_large;
    const uint32_t stream_size = entry_size - size_word;
    if (declared > stream_size * max_expansion)
        return xmlz_damaged;

    owned_block<uint8_t> content(static_cast<uint8_t*>(std::malloc(size_t{declared} + 1)));
    if (!content)
        return xmlz_out_of_memory;
    if (const xmlz_status status = inflate_whole(entry + size_word, stream_size, content.get(), declared);
        status != xmlz_ok)
        return status;
    content[declared] = 0;
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
    case xmlz_bare:
        return "is not compressed (no envelope)";
    case xmlz_too_large:
        return "declares more than 256 MiB";
    case xmlz_out_of_memory:
        return "does not fit in memory";
    }
    return "";
}

uint8_t* xmlz_store(const uint8_t* bytes, uint32_t size, uint32_t* entry_size)
{
    if (size > xmlz_max_size)
        return nullptr;
    assert((bytes != nullptr || size == 0) && entry_size != nullptr);
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
    const auto checksum = static_cast<uint32_t>(adler32_z(1, bytes, size));
    for (int shift = 24; shift >= 0; shift -= 8)
        *out++ = static_cast<uint8_t>(checksum >> shift);
    assert(out == entry + total);
    *entry_size = total;
    return entry;
}
