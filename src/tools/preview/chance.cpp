#include "tools/preview/chance.h"

#include <cstdlib>
#include <cstring>

// The library writes down where it is in its numbers when it is told to go on with others.
static char* take_over_numbers()
{
    alignas(int32_t) static char aside[sizeof(chance_place)];
    static bool made = false;
    if (made)
        return setstate(aside);
    made = true;
    return initstate(1, aside, sizeof aside);
}

chance_place chance_now()
{
    chance_place place;
    char* const numbers = take_over_numbers();
    std::memcpy(place.words.data(), numbers, sizeof place.words);
    setstate(numbers);
    return place;
}

void chance_put(const chance_place& place)
{
    char* const numbers = take_over_numbers();
    std::memcpy(numbers, place.words.data(), sizeof place.words);
    setstate(numbers);
}
