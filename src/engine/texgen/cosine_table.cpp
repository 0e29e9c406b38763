#include "texgen/cosine_table.h"

#include <cmath>

// The period's last digits are cut off, so that an entry near a zero crossing
// differs from the exact cosine in its last bits; every picture counts on these.
constexpr double full_turn = 6.2831853;

float cosine_table[cosine_table_size];

void build_cosine_table()
{
    for (uint32_t i = 0; i < cosine_table_size; ++i)
        cosine_table[i] = static_cast<float>(std::cos(static_cast<double>(i) * full_turn / 4096.0));
}
