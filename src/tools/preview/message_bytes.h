// Records as bytes, for what travels between the two processes: numbers by their bytes from the lowest up, texts and
// lists behind their count.
//
// Reading is as careful as with a stranger's file: what is missing or out of range makes the reader bad, from then on
// everything is 0 and empty, and no more memory is taken than the bytes are worth.
#pragma once

#include <bit>
#include <cstddef>
#include <cstdint>
#include <span>
#include <string>
#include <string_view>
#include <vector>

// ---- writing ------------------------------------------------------------------------------

inline void put(std::vector<uint8_t>& out, uint64_t number, uint32_t size)
{
    for (uint32_t byte = 0; byte < size; ++byte)
        out.push_back(static_cast<uint8_t>(number >> (8 * byte)));
}

inline void put(std::vector<uint8_t>& out, double number)
{
    put(out, std::bit_cast<uint64_t>(number), 8);
}

inline void put(std::vector<uint8_t>& out, std::string_view text)
{
    put(out, text.size(), 4);
    out.insert(out.end(), text.begin(), text.end());
}

inline void put(std::vector<uint8_t>& out, const std::string& text)
{
    put(out, std::string_view(text));
}

template <typename kind> void put_list(std::vector<uint8_t>& out, const std::vector<kind>& list)
{
    put(out, list.size(), 4);
    for (const kind& each : list)
        put(out, each);
}

// ---- reading ------------------------------------------------------------------------------

struct byte_reader {
    std::span<const uint8_t> left;
    bool good = true; // nothing was missing or out of range so far
};

inline std::span<const uint8_t> take_bytes(byte_reader& in, uint64_t size)
{
    if (!in.good || size > in.left.size()) {
        in.good = false;
        return {};
    }
    const std::span<const uint8_t> bytes = in.left.first(static_cast<size_t>(size));
    in.left = in.left.subspan(static_cast<size_t>(size));
    return bytes;
}

inline uint64_t take_number(byte_reader& in, uint32_t size)
{
    uint64_t number = 0;
    uint32_t shift = 0;
    for (const uint8_t byte : take_bytes(in, size)) {
        number |= uint64_t{byte} << shift;
        shift += 8;
    }
    return number;
}

// Not above `most`.
inline uint64_t take_number(byte_reader& in, uint32_t size, uint64_t most)
{
    const uint64_t number = take_number(in, size);
    in.good &= number <= most;
    return in.good ? number : 0;
}

inline void take(byte_reader& in, uint32_t& number)
{
    number = static_cast<uint32_t>(take_number(in, 4));
}

inline void take(byte_reader& in, bool& flag)
{
    flag = take_number(in, 1, 1) != 0;
}

inline void take(byte_reader& in, double& number)
{
    number = std::bit_cast<double>(take_number(in, 8));
}

inline void take(byte_reader& in, std::string& text)
{
    const std::span<const uint8_t> bytes = take_bytes(in, take_number(in, 4));
    text.assign(bytes.begin(), bytes.end());
}

// Every entry has four bytes at least.
template <typename kind> void take_list(byte_reader& in, std::vector<kind>& list)
{
    list.clear();
    uint64_t count = take_number(in, 4, in.left.size() / 4);
    for (; count > 0 && in.good; --count)
        take(in, list.emplace_back());
}
