#include "tools/preview/chance.h"

#include <cstdlib>
#include <doctest/doctest.h>
#include <vector>

static std::vector<int> draw(int count)
{
    std::vector<int> numbers;
    for (int i = 0; i < count; ++i)
        numbers.push_back(std::rand());
    return numbers;
}

TEST_CASE("keeping the place in the random numbers does not change what a seed begins")
{
    std::srand(5);
    const std::vector<int> undisturbed = draw(200);
    std::srand(5);
    std::vector<int> numbers;
    for (int i = 0; i < 200; ++i) {
        chance_put(chance_now());
        numbers.push_back(std::rand());
    }
    CHECK(numbers == undisturbed);
}

TEST_CASE("a place that is put back gives the same numbers again, however far others have gone")
{
    std::srand(1);
    draw(37);
    const chance_place place = chance_now();
    const std::vector<int> first = draw(500);
    std::srand(77);
    draw(3);
    chance_put(place);
    CHECK(chance_now() == place);
    CHECK(draw(500) == first);
}

TEST_CASE("a seed begins anew after a place was put back")
{
    std::srand(9);
    const std::vector<int> first = draw(64);
    chance_put(chance_now());
    draw(11);
    std::srand(9);
    CHECK(draw(64) == first);
}
