#include "model/combine_mode.h"

#include "model/catalogues.h"

#include <algorithm>
#include <iterator>

// The one long list begins as unit 3's own, and ends with unit 1's.
constexpr int32_t long_list_second = third_unit_shift;
constexpr int32_t long_list_first = long_list_second + second_unit_combine_count;
static_assert(long_list_first + first_unit_combine_count == std::size(combine_functions));

static bool is_among(int32_t number, int32_t first, int32_t count)
{
    return number >= first && number < first + count;
}

// Below 0: none.
static int32_t find_mode(uint32_t unit, int32_t number)
{
    switch (unit) {
    case 0:
        if (is_among(number, 0, first_unit_combine_count))
            return number;
        return is_among(number, long_list_first, first_unit_combine_count) ? number - long_list_first : -1;
    case 1: // the two lists overlap: its own one wins
        if (is_among(number, 0, second_unit_combine_count))
            return number;
        return is_among(number, long_list_second, second_unit_combine_count) ? number - long_list_second : -1;
    case 2:
        return is_among(number, 0, third_unit_shift + second_unit_combine_count) ? number : -1;
    }
    return -1;
}

bool is_combine_mode(uint32_t unit, int32_t number)
{
    return find_mode(unit, number) >= 0;
}

uint8_t combine_mode_of_unit(uint32_t unit, int32_t number)
{
    return static_cast<uint8_t>(std::max(find_mode(unit, number), 0));
}
