#include "png_text.h"

#include <cstring>

constexpr size_t signature_size = 8;
constexpr size_t header_end = signature_size + 25; // the chunk IHDR: 13 bytes and 12 around them
constexpr uint8_t signature[signature_size] = {0x89, 'P', 'N', 'G', '\r', '\n', 0x1A, '\n'};

static bool is_png(std::span<const uint8_t> png)
{
    return png.size() >= header_end && std::memcmp(png.data(), signature, signature_size) == 0;
}

static uint32_t big_endian(const uint8_t* bytes)
{
    return static_cast<uint32_t>(bytes[0]) << 24 | static_cast<uint32_t>(bytes[1]) << 16
        | static_cast<uint32_t>(bytes[2]) << 8 | bytes[3];
}

static void append_big_endian(std::vector<uint8_t>& bytes, uint32_t value)
{
    for (int shift = 24; shift >= 0; shift -= 8)
        bytes.push_back(static_cast<uint8_t>(value >> shift));
}

// The check sum of the PNG format (ISO 3309), bit by bit: chunks of text are short.
static uint32_t check_sum(std::span<const uint8_t> bytes)
{
    uint32_t sum = 0xFFFFFFFFu;
    for (const uint8_t byte : bytes) {
        sum ^= byte;
        for (int bit = 0; bit < 8; ++bit)
            sum = (sum & 1) != 0 ? (sum >> 1) ^ 0xEDB88320u : sum >> 1;
    }
    return ~sum;
}

void png_add_text(std::vector<uint8_t>& png, const std::string& keyword, const std::string& text)
{
    if (!is_png(png))
        return;
    std::vector<uint8_t> chunk;
    append_big_endian(chunk, static_cast<uint32_t>(keyword.size() + 1 + text.size()));
    for (const char* kind = "tEXt"; *kind != '\0'; ++kind)
        chunk.push_back(static_cast<uint8_t>(*kind));
    chunk.insert(chunk.end(), keyword.begin(), keyword.end());
    chunk.push_back(0);
    chunk.insert(chunk.end(), text.begin(), text.end());
    append_big_endian(chunk, check_sum(std::span(chunk).subspan(4)));
    png.insert(png.begin() + header_end, chunk.begin(), chunk.end());
}

std::string png_read_text(std::span<const uint8_t> png, const std::string& keyword)
{
    if (!is_png(png))
        return "";
    for (size_t at = signature_size; at + 12 <= png.size();) {
        const size_t size = big_endian(&png[at]);
        if (size > png.size() - at - 12)
            return "";
        const std::string content(reinterpret_cast<const char*>(&png[at + 8]), size);
        const size_t zero = content.find('\0');
        if (std::memcmp(&png[at + 4], "tEXt", 4) == 0 && zero != std::string::npos
            && content.substr(0, zero) == keyword)
            return content.substr(zero + 1);
        at += size + 12;
    }
    return "";
}
