// What the tests of this room share: a cosine of their own, hashes, extreme values.
#pragma once

#include <cmath>
#include <cstdint>
#include <cstring>
#include <limits>
#include <span>

constexpr float not_a_number = std::numeric_limits<float>::quiet_NaN();
constexpr float infinity = std::numeric_limits<float>::infinity();

// cos(2 pi n / 4096) as the table's entry for n gives it, without the table: n is brought
// into -4095..4095 with its sign kept.
inline double reference_cosine(int64_t n)
{
    const int64_t entry = 4096 + (n - n / 4096 * 4096);
    return static_cast<double>(static_cast<float>(std::cos(static_cast<double>(entry) * 6.2831853 / 4096.0)));
}

// FNV-1a over bytes, and over the bits of singles.
inline uint64_t hash_of(std::span<const uint8_t> bytes, uint64_t hash = 14695981039346656037u)
{
    for (const uint8_t byte : bytes)
        hash = (hash ^ byte) * 1099511628211u;
    return hash;
}

inline uint64_t hash_of(std::span<const float> values, uint64_t hash = 14695981039346656037u)
{
    for (const float value : values) {
        uint8_t bytes[sizeof(float)];
        std::memcpy(bytes, &value, sizeof(float));
        hash = hash_of(std::span<const uint8_t>(bytes), hash);
    }
    return hash;
}

inline bool all_finite(std::span<const float> values)
{
    for (const float value : values)
        if (!std::isfinite(value))
            return false;
    return true;
}
