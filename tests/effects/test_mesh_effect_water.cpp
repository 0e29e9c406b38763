#include "effects/mesh_normals.h"
#include "reference.h"
#include "test_effect.h"

#include <doctest/doctest.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdlib>
#include <vector>

// ---- the waters' clock -------------------------------------------------------------------

TEST_CASE("a time that advances by fractions steps a lake once per whole unit")
{
    for (const uint32_t type : {0u, 4u}) {
        test_effect effect(type);
        water(effect).fields[2][700] = 3; // would move to field 1 with a step
        for (const float time : {0.25f, 0.5f, 0.75f, 0.99f})
            step(effect, time);
        CHECK(water(effect).last == 0);
        CHECK(water(effect).fields[2][700] == 3);
        step(effect, 1.0f);
        CHECK(water(effect).last == 1);
        CHECK(water(effect).fields[2][700] != 3);
        const std::vector<int32_t> after(water(effect).fields[2], water(effect).fields[2] + 900);
        for (const float time : {1.25f, 1.5f, 1.99f})
            step(effect, time);
        CHECK(std::equal(after.begin(), after.end(), water(effect).fields[2]));
    }
}

TEST_CASE("a time that jumps by two or more moves the clock without a step, both ways")
{
    for (const uint32_t type : {0u, 4u}) {
        test_effect effect(type);
        std::fill_n(water(effect).fields[0], 900, 7);
        water(effect).fields[1][700] = 3;
        const water_state before = water(effect);
        for (const float time : {2.0f, 10.9f, 8.0f, -5.5f, -7.0f, -100.0f}) {
            step(effect, time);
            CHECK(water(effect).last == static_cast<int32_t>(time));
            CHECK(std::equal(
                &before.fields[0][0], &before.fields[0][0] + 3 * max_water_entries, &water(effect).fields[0][0]));
        }
    }
}

TEST_CASE("a lake that comes back into sight after less than two units catches up by one step")
{
    test_effect effect(mesh_effect_lake);
    step(effect, 1.0f);
    CHECK(water(effect).last == 1);
    std::srand(3);
    step(effect, 2.9f);
    CHECK(water(effect).last == 2);
    const int next = std::rand();
    std::srand(3);
    for (int drop = 0; drop < 4; ++drop)
        std::rand();
    CHECK(next == std::rand()); // four drops, one step
}

TEST_CASE("a time that goes back by less than two units neither steps nor moves the clock")
{
    test_effect effect(mesh_effect_lake);
    step(effect, 10.0f);
    const water_state before = water(effect);
    step(effect, 8.25f);
    CHECK(water(effect).last == 10);
    CHECK(std::equal(&before.fields[0][0], &before.fields[0][0] + 3 * max_water_entries, &water(effect).fields[0][0]));
}

TEST_CASE("times beyond the whole numbers never step")
{
    test_effect effect(mesh_effect_lake);
    water(effect).fields[1][700] = 3;
    for (int i = 0; i < 3; ++i) {
        step(effect, 3e9f);
        CHECK(water(effect).last == -2147483647 - 1);
        CHECK(water(effect).fields[1][700] == 3);
    }
}

TEST_CASE("heights are 0.2 x (half of field 1, and fields 2 and 0 by the part of a unit gone)")
{
    for (const uint32_t type : {0u, 4u}) {
        test_effect effect(type);
        water(effect).fields[0][100] = 800;
        water(effect).fields[1][100] = -100;
        water(effect).fields[2][100] = 440;
        // (-50 + 0.25 x 220 + 0.75 x 400) x 0.2 = 61
        step(effect, 0.25f);
        CHECK(heights(effect)[100] == 61.0f);
        // 0.75 gone, backward: (-50 + 0.75 x 220 + 0.25 x 400) x 0.2 = 43
        step(effect, -0.75f);
        CHECK(heights(effect)[100] == 43.0f);
        // 1.75 back counts as 0.75
        step(effect, -1.75f);
        CHECK(heights(effect)[100] == 43.0f);
        // exactly 1 is not reduced: (-50 + 220) x 0.2 = 34
        step(effect, -1.0f);
        CHECK(heights(effect)[100] == 34.0f);
        CHECK(heights(effect)[101] == 0.0f);
    }
}

TEST_CASE("the second lake's heights are whole numbers, truncated toward zero")
{
    test_effect effect(mesh_effect_lake_2);
    water(effect).fields[1][100] = -19; // -19 x 0.5 x 0.2 = -1.9
    water(effect).fields[1][101] = 29;  // 2.9
    step(effect, 0.5f);
    CHECK(heights(effect)[100] == -1.0f);
    CHECK(heights(effect)[101] == 2.0f);
    test_effect lake(mesh_effect_lake);
    water(lake).fields[1][100] = -19;
    step(lake, 0.5f);
    CHECK(heights(lake)[100] == doctest::Approx(-1.9));
}

// ---- "Lake water" ------------------------------------------------------------------------

TEST_CASE("one step of a lake spreads half a height to the four neighbours and rounds down")
{
    struct {
        int32_t raised;
        int32_t neighbours;
    } const cases[] = {
        {4, 2},    // 4 >> 1 = 2, less 2 >> 5 = 0
        {-4, -1},  // -2, less -1
        {-3, -1},  // -3 >> 1 = -2, less -1
        {-1, 0},   // -1 >> 1 = -1, less -1
        {-64, -31} // -32, less -1
    };
    for (const auto& c : cases) {
        test_effect effect(mesh_effect_lake);
        const uint32_t middle = 15 * 30 + 15;
        water(effect).fields[2][middle] = c.raised; // is field 1 once they are exchanged
        step(effect, 1.0f);
        std::array<int32_t, 900> expected = {};
        for (const uint32_t k : {middle - 1, middle + 1, middle - 30, middle + 30})
            expected[k] = c.neighbours;
        CHECK(std::equal(expected.begin(), expected.end(), water(effect).fields[2]));
    }
}

TEST_CASE("a lake's step takes away what the entry had, and copies the old field 1 to field 0")
{
    test_effect effect(mesh_effect_lake);
    water(effect).fields[1][100] = -3;
    step(effect, 1.0f);
    CHECK(water(effect).fields[2][100] == 3); // 0 - (-3)
    CHECK(water(effect).fields[0][100] == -3);
    CHECK(std::count(water(effect).fields[0], water(effect).fields[0] + 900, 0) == 899);
}

TEST_CASE("what passes 4.8 falls to 4, and troughs have no limit")
{
    struct {
        int32_t before;
        int32_t after;
    } const cases[] = {{-4, 4}, {-5, 4}, {-1000, 4}, {320, -310}};
    for (const auto& c : cases) {
        test_effect effect(mesh_effect_lake);
        water(effect).fields[1][100] = c.before;
        step(effect, 1.0f);
        CHECK(water(effect).fields[2][100] == c.after); // -320 less -10
    }
}

TEST_CASE("a lake's first and last rows rest, its first and last columns are zeroed")
{
    test_effect effect(mesh_effect_lake);
    for (const uint32_t k : {5u, 29u, 30u, 59u, 870u, 875u, 899u})
        water(effect).fields[1][k] = 3; // becomes field 2, the one that is computed
    step(effect, 1.0f);
    CHECK(water(effect).fields[2][5] == 3);
    CHECK(water(effect).fields[2][875] == 3);
    for (const uint32_t k : {29u, 30u, 59u, 870u, 899u})
        CHECK(water(effect).fields[2][k] == 0);
}

TEST_CASE("four drops of -6, -5, -6, -5 fall into field 1 after the step, where the generator says")
{
    for (unsigned seed = 1; seed < 30; ++seed) {
        test_effect effect(mesh_effect_lake);
        std::srand(seed);
        step(effect, 1.0f);
        std::array<int32_t, 900> expected = {};
        std::srand(seed);
        for (const int32_t depth : {-6, -5, -6, -5})
            expected[static_cast<size_t>(random_real() * 900)] = depth;
        CHECK(std::equal(expected.begin(), expected.end(), water(effect).fields[1]));
        CHECK(std::count(water(effect).fields[2], water(effect).fields[2] + 900, 0) == 900);
    }
}

// ---- "Lake water 2" ----------------------------------------------------------------------

TEST_CASE("one step of the second lake goes over the grid in place")
{
    // A single height of 8 in a lake at rest. Above it: 8 / 4 = 2, less a hundredth: 1. To the
    // left the same. The entry itself then sees (1 + 1) / 4 = 0 and falls by trunc(-7.92); the
    // entries after it see only a height of 1.
    test_effect effect(mesh_effect_lake_2);
    const uint32_t middle = 30 * 60 + 30;
    water(effect).fields[2][middle] = 8;
    step(effect, 1.0f);
    std::vector<int32_t> rest_1(water(effect).fields[1], water(effect).fields[1] + 3600);
    std::vector<int32_t> rest_2(water(effect).fields[2], water(effect).fields[2] + 3600);
    CHECK(rest_1[middle - 60] == 1);
    CHECK(rest_1[middle - 1] == 1);
    CHECK(rest_1[middle] == 1);
    CHECK(rest_2[middle - 60] == 1);
    CHECK(rest_2[middle - 1] == 1);
    CHECK(rest_2[middle] == -7);
    CHECK(std::count(rest_1.begin(), rest_1.end(), 0) == 3597);
    CHECK(std::count(rest_2.begin(), rest_2.end(), 0) == 3597);
}

TEST_CASE("the second lake's heights move by the whole velocity, which is limited afterwards")
{
    test_effect effect(mesh_effect_lake_2);
    const uint32_t middle = 30 * 60 + 30;
    water(effect).fields[1][middle] = 100; // becomes the velocity
    water(effect).fields[1][middle + 9] = -100;
    step(effect, 1.0f);
    CHECK(water(effect).fields[1][middle] == 99);
    CHECK(water(effect).fields[2][middle] == 20);
    CHECK(water(effect).fields[1][middle + 9] == -99);
    CHECK(water(effect).fields[2][middle + 9] == -20);
}

TEST_CASE("the second lake divides by 4 toward zero")
{
    test_effect effect(mesh_effect_lake_2);
    const uint32_t middle = 30 * 60 + 30;
    water(effect).fields[2][middle] = -5; // -5 / 4 = -1 moves nothing (0.99), where a shift's -2 would
    step(effect, 1.0f);
    CHECK(water(effect).fields[1][middle - 60] == 0);
    CHECK(water(effect).fields[1][middle - 1] == 0);
    CHECK(water(effect).fields[1][middle] == -1); // -5 + trunc(4.95)
}

TEST_CASE("the second lake zeroes the first and last columns of the velocities only")
{
    test_effect effect(mesh_effect_lake_2);
    water(effect).fields[1][5 * 60] = 10;
    water(effect).fields[1][5 * 60 + 59] = 10;
    step(effect, 1.0f);
    CHECK(water(effect).fields[1][5 * 60] == 9);
    CHECK(water(effect).fields[2][5 * 60] == 0);
    CHECK(water(effect).fields[2][5 * 60 + 59] == 0);
    CHECK(water(effect).fields[1][5 * 60 + 59] != 0);
}

TEST_CASE("every sixth step of the second lake drops a height of 6 into field 1")
{
    test_effect effect(mesh_effect_lake_2);
    std::srand(11);
    for (int time = 1; time <= 5; ++time) {
        step(effect, static_cast<float>(time));
        CHECK(std::count(water(effect).fields[1], water(effect).fields[1] + 3600, 0) == 3600);
    }
    step(effect, 6.0f);
    std::srand(11);
    const auto entry = static_cast<size_t>(random_real() * 3600);
    CHECK(water(effect).fields[1][entry] == 6);
    CHECK(std::count(water(effect).fields[1], water(effect).fields[1] + 3600, 0) == 3599);
    CHECK(water(effect).step_count == 0);
}

// ---- both lakes over a long time ---------------------------------------------------------

namespace {

// The same waters with floor and truncation written as real functions, and fields that
// change their names instead of their contents.
struct reference_water {
    int side;
    std::vector<double> before, one, two;
    int steps;
};

} // namespace

static void reference_step(reference_water& w, bool springs)
{
    const auto n = static_cast<size_t>(w.side);
    w.before = w.one;
    std::swap(w.one, w.two);
    for (size_t k = n; k < n * n - n; ++k) {
        const double around = w.one[k - 1] + w.one[k + 1] + w.one[k - n] + w.one[k + n];
        if (springs) {
            const double v = std::trunc((std::trunc(around / 4) - w.one[k] + w.two[k]) * 0.99);
            w.one[k] += v;
            w.two[k] = std::min(std::max(v, -20.0), 20.0);
        } else {
            const double height = std::floor(around / 2) - w.two[k];
            const double damped = height - std::floor(height / 32);
            w.two[k] = damped > 4.8 ? 4 : damped;
        }
    }
    for (size_t i = 0; i < n; ++i)
        w.two[i * n] = w.two[i * n + n - 1] = 0;
    if (!springs)
        for (const double depth : {-6.0, -5.0, -6.0, -5.0})
            w.one[static_cast<size_t>(random_real() * 900)] = depth;
    else if (++w.steps % 6 == 0)
        w.one[static_cast<size_t>(random_real() * 3600)] = 6;
}

static uint32_t wrong_heights(const std::vector<float>& computed, const reference_water& w, double f, bool springs)
{
    uint32_t wrong = 0;
    for (size_t k = 0; k < computed.size(); ++k) {
        const double height = (w.one[k] * 0.5 + w.two[k] * f * 0.5 + w.before[k] * (1 - f) * 0.5) * 0.2;
        wrong += computed[k] != static_cast<float>(springs ? std::trunc(height) : height);
    }
    return wrong;
}

TEST_CASE("both lakes follow their rules for 300 steps, and their heights stay within bounds")
{
    for (const bool springs : {false, true}) {
        test_effect effect(springs ? mesh_effect_lake_2 : mesh_effect_lake);
        const int side = springs ? 60 : 30;
        const std::vector<double> rest(static_cast<size_t>(side * side), 0.0);
        reference_water w = {side, rest, rest, rest, 0};

        std::srand(77);
        std::vector<std::vector<float>> pictures;
        for (int time = 1; time <= 300; ++time) {
            step(effect, static_cast<float>(time) + 0.25f);
            pictures.push_back(heights(effect));
            CHECK(all_finite(normals(effect)));
        }

        std::srand(77);
        uint32_t wrong = 0;
        float lowest = 0.0f;
        float highest = 0.0f;
        for (const std::vector<float>& picture : pictures) {
            reference_step(w, springs);
            wrong += wrong_heights(picture, w, 0.25, springs);
            lowest = std::min(lowest, *std::min_element(picture.begin(), picture.end()));
            highest = std::max(highest, *std::max_element(picture.begin(), picture.end()));
        }
        CHECK(wrong == 0);
        CHECK(highest > 0.0f);
        CHECK(highest < 2.0f);
        CHECK(lowest > -20.0f);
    }
}

TEST_CASE("no state of a lake overflows, not even the wildest")
{
    for (const uint32_t type : {0u, 4u}) {
        test_effect effect(type);
        for (auto& field : water(effect).fields)
            for (uint32_t k = 0; k < max_water_entries; ++k)
                field[k] = k % 3 == 0 ? 2147483647 : -2147483647 - 1;
        for (int time = 1; time <= 50; ++time)
            step(effect, static_cast<float>(time));
        CHECK(all_finite(positions(effect)));
    }
}

// ---- "Centerwave water" ------------------------------------------------------------------

TEST_CASE("the centre wave is a cosine of the distance that fades out at 14")
{
    test_effect effect(mesh_effect_centerwave);
    for (const float time : {0.0f, 1.0f, 37.75f, -12.5f}) {
        step(effect, time);
        uint32_t wrong = 0;
        for (int k = 0; k < 900; ++k) {
            const double d = std::hypot(k / 30 - 15, k % 30 - 15);
            const auto steps = static_cast<int64_t>((d - static_cast<double>(time)) * 651.8986);
            const double height = d > 14 ? 0 : (14 - d) * 0.1 * reference_cosine(steps);
            wrong += heights(effect)[static_cast<size_t>(k)] != static_cast<float>(height);
        }
        CHECK(wrong == 0);
    }
    // the middle: (14 - 0) x 0.1 x cos(-time)
    step(effect, 0.0f);
    CHECK(heights(effect)[15 * 30 + 15] == doctest::Approx(1.4));
    CHECK(heights(effect)[1 * 30 + 15] == 0.0f); // d = 14
    CHECK(heights(effect)[0] == 0.0f);
}

TEST_CASE("a centre wave whose time moves by less than 0.01 keeps positions and normals")
{
    test_effect effect(mesh_effect_centerwave);
    step(effect, 3.0f);
    const std::vector<float> before = positions(effect);
    effect.e.mesh.normals[0] = 99.0f; // a normal that would be overwritten
    step(effect, 3.005f);
    CHECK(positions(effect) == before);
    CHECK(effect.e.mesh.normals[0] == 99.0f);
    step(effect, 3.009f); // still measured from 3
    CHECK(effect.e.mesh.normals[0] == 99.0f);
    step(effect, 3.02f);
    CHECK(positions(effect) != before);
    CHECK(effect.e.mesh.normals[0] != 99.0f);
}

TEST_CASE("a centre wave starts with the time -1, so that this time changes nothing")
{
    test_effect effect(mesh_effect_centerwave);
    step(effect, -1.0f);
    CHECK(heights(effect) == std::vector<float>(900, 0.0f));
    CHECK(normals(effect) == std::vector<float>(2700, 0.0f));
    step(effect, 0.0f);
    CHECK(heights(effect) != std::vector<float>(900, 0.0f));
}

TEST_CASE("normals of a flat surface point the way of the triangles, and follow every update")
{
    test_effect effect(mesh_effect_lake);
    step(effect, 0.5f);
    // first triangle: (0,0,0), (0,0,1), (1,0,1): e1 x e2 = (0, 0, -1) x (-1, 0, 0) = (0, 1, 0)
    std::vector<float> up(2700, 0.0f);
    for (size_t k = 0; k < 900; ++k)
        up[3 * k + 1] = 1.0f;
    CHECK(normals(effect) == up);
    for (int time = 1; time < 10; ++time)
        step(effect, static_cast<float>(time));
    CHECK(normals(effect) != up);
}

TEST_CASE("the second lake's normals belong to its heights, whether these move or stand still")
{
    std::srand(11);
    test_effect effect(mesh_effect_lake_2);
    int still = 0;
    int moved = 0;
    std::vector<float> before;
    for (int half = 1; half <= 200; ++half) {
        step(effect, static_cast<float>(half) * 0.5f);
        if (half == 100) // a wave high enough to show in whole heights
            water(effect).fields[1][1830] = 400;
        const mesh_arrays& mesh = effect.e.mesh;
        std::vector<float> expected(10800);
        compute_mesh_normals({mesh.positions, 10800}, {mesh.indices, mesh.index_count}, expected);
        CHECK(normals(effect) == expected);
        ++(positions(effect) == before ? still : moved);
        before = positions(effect);
    }
    CHECK(still > 20);
    CHECK(moved > 20);
}
