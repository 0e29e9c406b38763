// The shared cosine table: 8192 singles, two full periods, built once at start-up. Beside it stand the directions of
// half its angles.
#pragma once

#include <cstdint>

constexpr uint32_t cosine_table_size = 8192;

extern float cosine_table[cosine_table_size]; // entry i = cos(i * 6.2831853 / 4096), in double

// What an angle's cosine and sine are.
struct direction {
    float cosine;
    float sine;
};

constexpr uint32_t half_angle_count = 4096;

extern direction half_angles[half_angle_count + 1]; // entry i: of i * pi / 4096, half the angle of step i

// Fills both tables; a second call does nothing new.
void build_cosine_table();

// cos(2 pi n / 4096) for any n: entry 4096 + (n rem 4096), the remainder with the
// sign of n.
inline float cosine_at(int32_t n)
{
    return cosine_table[4096 + n % 4096];
}
