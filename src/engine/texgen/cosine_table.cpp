#include "texgen/cosine_table.h"

#include <cmath>

// The period's last digits are cut off, so that an entry near a zero crossing
// differs from the exact cosine in its last bits; every picture counts on these.
constexpr double full_turn = 6.2831853;

float cosine_table[cosine_table_size];
direction half_angles[half_angle_count + 1];

// One turned by a step again and again: in double the error stays below 10^-12.
static void build_half_angles()
{
    constexpr double step = 3.14159265358979323846 / half_angle_count;
    const double step_cosine = std::cos(step);
    const double step_sine = std::sin(step);
    double cosine = 1.0;
    double sine = 0.0;
    for (direction& entry : half_angles) {
        entry = {static_cast<float>(cosine), static_cast<float>(sine)};
        const double turned = cosine * step_cosine - sine * step_sine;
        sine = sine * step_cosine + cosine * step_sine;
        cosine = turned;
    }
}

void build_cosine_table()
{
    for (uint32_t i = 0; i < cosine_table_size; ++i)
        cosine_table[i] = static_cast<float>(std::cos(static_cast<double>(i) * full_turn / 4096.0));
    build_half_angles();
}
