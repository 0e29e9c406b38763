#include "builders.h"
#include "effects/mesh_effect.h"
#include "effects/mesh_effect_kinds.h"
#include "effects/mesh_normals.h"
#include "reference.h"
#include "texgen/cosine_table.h"

#include <doctest/doctest.h>

#include <algorithm>
#include <array>
#include <cstdlib>
#include <vector>

// An effect that is freed at the end of the test.
struct test_effect {
    mesh_effect e;

    explicit test_effect(uint32_t type)
        : e{}
    {
        build_cosine_table();
        e.type = type;
        init_mesh_effect(e);
    }
    ~test_effect()
    {
        free_mesh_effect(e);
    }
    test_effect(const test_effect&) = delete;
    test_effect& operator=(const test_effect&) = delete;
};

static void step(test_effect& effect, float first, float second = 0.0f)
{
    const float params[2] = {first, second};
    step_mesh_effect(effect.e, params);
}

static water_state& water(test_effect& effect)
{
    return *static_cast<water_state*>(effect.e.state);
}

static swarm_state& swarm(test_effect& effect)
{
    return *static_cast<swarm_state*>(effect.e.state);
}

static std::vector<float> positions(const test_effect& effect)
{
    return {effect.e.mesh.positions, effect.e.mesh.positions + effect.e.mesh.vertex_count * 3};
}

static std::vector<float> normals(const test_effect& effect)
{
    return {effect.e.mesh.normals, effect.e.mesh.normals + effect.e.mesh.vertex_count * 3};
}

static std::vector<float> heights(const test_effect& effect)
{
    std::vector<float> result;
    for (uint32_t k = 0; k < effect.e.mesh.vertex_count; ++k)
        result.push_back(effect.e.mesh.positions[3 * k + 1]);
    return result;
}

// Real arithmetic on the C library's generator, as the tests replay it.
static double random_real()
{
    return std::rand() / 2147483648.0;
}

// ---- meshes and ownership ------------------------------------------------------------------

TEST_CASE("waters are grids in the x-z plane with two equal coordinate sets in steps of 1 / side")
{
    for (const uint32_t type : {0u, 1u, 4u}) {
        const test_effect effect(type);
        const mesh_arrays& mesh = effect.e.mesh;
        const uint32_t side = type == 4 ? 60 : 30;
        REQUIRE(mesh.vertex_count == side * side);
        CHECK(mesh.texcoord_sets == 2);
        CHECK(mesh.texcoords[2] == nullptr);
        uint32_t wrong = 0;
        for (uint32_t i = 0; i < side; ++i)
            for (uint32_t j = 0; j < side; ++j) {
                const uint32_t k = i * side + j;
                const auto row = static_cast<float>(i);
                const auto column = static_cast<float>(j);
                wrong += mesh.positions[3 * k] != row || mesh.positions[3 * k + 1] != 0.0f
                    || mesh.positions[3 * k + 2] != column;
                for (const float* set : {mesh.texcoords[0], mesh.texcoords[1]})
                    wrong += set[2 * k] != row / static_cast<float>(side)
                        || set[2 * k + 1] != column / static_cast<float>(side);
            }
        CHECK(wrong == 0);
    }
    const test_effect small(0);
    CHECK(small.e.mesh.texcoords[0][3] == 0.033333335f);
    const test_effect large(4);
    CHECK(large.e.mesh.texcoords[1][3] == 0.016666668f);
    CHECK(large.e.mesh.texcoords[1][2 * 60] == 0.016666668f);
}

TEST_CASE("grids list all first triangles before all second ones")
{
    for (const uint32_t type : {0u, 1u, 4u}) {
        const test_effect effect(type);
        const uint32_t side = type == 4 ? 60 : 30;
        std::vector<uint32_t> first;
        std::vector<uint32_t> second;
        for (uint32_t k = 0; k < side * (side - 1); ++k) {
            if (k % side == side - 1)
                continue;
            first.insert(first.end(), {k, k + 1, k + side + 1});
            second.insert(second.end(), {k, k + side + 1, k + side});
        }
        first.insert(first.end(), second.begin(), second.end());
        REQUIRE(effect.e.mesh.index_count == (type == 4 ? 20886 : 5046));
        CHECK(std::equal(
            first.begin(), first.end(), effect.e.mesh.indices, effect.e.mesh.indices + effect.e.mesh.index_count));
    }
}

TEST_CASE("the swirl is a fan of 255 triangles round vertex 0, closed by (0, 255, 1)")
{
    const test_effect effect(mesh_effect_swirl);
    const mesh_arrays& mesh = effect.e.mesh;
    CHECK(mesh.vertex_count == 256);
    CHECK(mesh.texcoord_sets == 0);
    REQUIRE(mesh.index_count == 765);
    CHECK(positions(effect) == std::vector<float>(768, 0.0f));
    for (uint32_t k = 1; k <= 254; ++k) {
        const uint16_t* triangle = mesh.indices + 3 * (k - 1);
        CHECK((triangle[0] == 0 && triangle[1] == k && triangle[2] == k + 1));
    }
    CHECK((mesh.indices[762] == 0 && mesh.indices[763] == 255 && mesh.indices[764] == 1));
}

TEST_CASE("the swarm is 32 points without triangles, normals and coordinates")
{
    const test_effect effect(mesh_effect_particles);
    CHECK(effect.e.mesh.vertex_count == 32);
    CHECK(effect.e.mesh.index_count == 0);
    CHECK(effect.e.mesh.texcoord_sets == 0);
    CHECK(effect.e.mesh.indices == nullptr);
    CHECK(effect.e.mesh.normals == nullptr);
}

TEST_CASE("freeing an effect twice, or one beyond the catalogue, is harmless")
{
    for (uint32_t type = 0; type <= mesh_effect_kind_count; ++type) {
        test_effect effect(type);
        free_mesh_effect(effect.e);
        free_mesh_effect(effect.e);
        CHECK(effect.e.state == nullptr);
        CHECK(effect.e.mesh.positions == nullptr);
        CHECK(effect.e.mesh.vertex_count == 0);
        step(effect, 5.0f, 5.0f);
        CHECK(effect.e.mesh.vertex_count == 0);
    }
}

TEST_CASE("line indices that drawing has made are freed with the mesh")
{
    test_effect effect(mesh_effect_swirl);
    effect.e.mesh.line_indices = static_cast<uint16_t*>(std::malloc(12));
    free_mesh_effect(effect.e);
    CHECK(effect.e.mesh.line_indices == nullptr);
}

TEST_CASE("a kind beyond the catalogue has neither state nor mesh")
{
    test_effect effect(5);
    CHECK(effect.e.state == nullptr);
    CHECK(effect.e.mesh.positions == nullptr);
    step(effect, 1.0f);
    CHECK(effect.e.mesh.vertex_count == 0);
}

TEST_CASE("the swirl has two parameters, all others one")
{
    CHECK(mesh_effect_param_count(mesh_effect_swirl) == 2);
    for (const uint32_t type : {0u, 1u, 3u, 4u, 5u})
        CHECK(mesh_effect_param_count(type) == 1);
}

// ---- parameters ----------------------------------------------------------------------------------

TEST_CASE("an update evaluates the functions at the time; handle 0 is 0 and a dangling one 1")
{
    test_document t;
    test_effect effect(mesh_effect_swirl);
    effect.e.functions[1] = add_function(t, linear_function());
    const uint32_t handle = add_record(t.d.effect_table, effect.e);
    test_effect expected(mesh_effect_swirl);

    update_mesh_effect(handle, t.d.effect_table, t.d.function_table, 40);
    step(expected, 0.0f, 40.0f);
    CHECK(positions(effect) == positions(expected));

    table_record<mesh_effect>(t.d.effect_table, handle)->functions[0] = 77;
    update_mesh_effect(handle, t.d.effect_table, t.d.function_table, 40);
    step(expected, 1.0f, 40.0f);
    CHECK(positions(effect) == positions(expected));
}

TEST_CASE("an update of a dangling effect does nothing")
{
    test_document t;
    update_mesh_effect(0, t.d.effect_table, t.d.function_table, 1);
    update_mesh_effect(9, t.d.effect_table, nullptr, 1);
    update_mesh_effect(1, nullptr, nullptr, 1);
    CHECK(true);
}

TEST_CASE("not-a-number and infinity change nothing")
{
    for (uint32_t type = 0; type < mesh_effect_kind_count; ++type)
        for (const float value : {not_a_number, infinity, -infinity}) {
            test_effect effect(type);
            for (int time = 0; time <= 6; ++time)
                step(effect, static_cast<float>(time) + 0.5f, 3.0f);
            const std::vector<float> before = positions(effect);
            step(effect, value, 3.0f);
            if (type == mesh_effect_swirl)
                step(effect, 6.5f, value);
            CHECK(positions(effect) == before);
            step(effect, 7.5f, 3.0f);
            CHECK(positions(effect) != before); // it goes on where it stood
        }
}

TEST_CASE("the second parameter of kinds with one is not looked at")
{
    test_effect effect(mesh_effect_centerwave);
    step(effect, 2.0f, not_a_number);
    CHECK(positions(effect)[1] == 0.0f);
    CHECK(heights(effect)[15 * 30 + 15] != 0.0f);
}

TEST_CASE("the largest finite parameters leave every position finite")
{
    constexpr float largest = std::numeric_limits<float>::max();
    for (uint32_t type = 0; type < mesh_effect_kind_count; ++type) {
        test_effect effect(type);
        for (int i = 0; i < 20; ++i)
            for (const float value : {largest, -largest, 0.0f, 2147483648.0f, -2147483648.0f}) {
                step(effect, value, largest);
                step(effect, value, value);
            }
        CHECK(all_finite(positions(effect)));
        if (effect.e.mesh.normals != nullptr)
            CHECK(all_finite(normals(effect)));
    }
}

// ---- the waters' clock -------------------------------------------------------------------------------

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

// ---- "Lake water" ------------------------------------------------------------------------------------------

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

// ---- "Lake water 2" ------------------------------------------------------------------------------------------

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
    water(effect).fields[2][middle] = -3; // -3 / 4 = 0, where a shift would give -1
    step(effect, 1.0f);
    CHECK(water(effect).fields[1][middle - 60] == 0);
    CHECK(water(effect).fields[1][middle - 1] == 0);
    CHECK(water(effect).fields[1][middle] == -1); // -3 + trunc(2.97)
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

// ---- both lakes over a long time ---------------------------------------------------------------------------------

// The same waters with floor and truncation written as real functions, and fields that
// change their names instead of their contents.
struct reference_water {
    int side;
    std::vector<double> before, one, two;
    int steps;
};

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

// ---- "Centerwave water"
// ----------------------------------------------------------------------------------------------

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

// ---- "Swirl"
// -------------------------------------------------------------------------------------------------------------

TEST_CASE("the swirl's points stand at (Y + k + c) c and (Y + k + s) s, with a shifted cosine for s")
{
    test_effect effect(mesh_effect_swirl);
    for (const std::array<float, 2> params :
        {std::array{0.0f, 0.0f}, std::array{0.1f, 3.0f}, std::array{-2.5f, 100.25f}, std::array{777.7f, -50.0f}}) {
        step(effect, params[0], params[1]);
        const auto x = static_cast<double>(params[0]);
        const auto y = static_cast<double>(params[1]);
        uint32_t wrong = 0;
        for (int k = 1; k < 256; ++k) {
            const double c = reference_cosine(static_cast<int64_t>(x * k * 651.8986));
            const double s = reference_cosine(static_cast<int64_t>((x * k + 1.5707964) * 651.8986));
            const float* p = effect.e.mesh.positions + 3 * k;
            wrong += p[0] != static_cast<float>((y + k + c) * c) || p[1] != static_cast<float>((y + k + s) * s)
                || p[2] != 0.0f;
        }
        CHECK(wrong == 0);
        for (int axis = 0; axis < 3; ++axis)
            CHECK(effect.e.mesh.positions[axis] == 0.0f);
    }
}

TEST_CASE("the swirl at X 0 is a line of k + 1 along x")
{
    test_effect effect(mesh_effect_swirl);
    step(effect, 0.0f, 0.0f);
    CHECK(effect.e.mesh.positions[3 * 1] == 2.0f);
    CHECK(effect.e.mesh.positions[3 * 255] == 256.0f);
    // a quarter of 4096 x 1.5707964 / 2 pi is 1023 after truncation or 1024: s is nearly 0
    CHECK(std::fabs(effect.e.mesh.positions[3 * 255 + 1]) < 0.5f);
}

TEST_CASE("the swirl recomputes its normals at every update")
{
    test_effect effect(mesh_effect_swirl);
    step(effect, 0.3f, 5.0f);
    std::vector<float> expected(768);
    compute_mesh_normals(positions(effect), std::span<const uint16_t>(effect.e.mesh.indices, 765), expected);
    CHECK(normals(effect) == expected);
    CHECK(normals(effect) != std::vector<float>(768, 0.0f));
}

TEST_CASE("the swirl stays within its radius over 200 updates")
{
    test_effect effect(mesh_effect_swirl);
    for (int time = 0; time < 200; ++time) {
        step(effect, static_cast<float>(time) * 0.013f, static_cast<float>(time));
        CHECK(all_finite(positions(effect)));
        CHECK(all_finite(normals(effect)));
        for (const float coordinate : positions(effect))
            CHECK(std::fabs(coordinate) <= 255.0f + 1.0f + 200.0f);
    }
}

// ---- "Particles"
// -------------------------------------------------------------------------------------------------------------

TEST_CASE("particles are drawn x, y, z, vx, vy, vz, one after the other")
{
    std::srand(42);
    test_effect effect(mesh_effect_particles);
    std::srand(42);
    uint32_t wrong = 0;
    for (uint32_t i = 0; i < swarm_size; ++i) {
        for (uint32_t axis = 0; axis < 3; ++axis) {
            const auto expected = static_cast<float>(random_real() * 10);
            wrong += swarm(effect).particles[i].position[axis] != expected
                || effect.e.mesh.positions[3 * i + axis] != expected;
        }
        for (uint32_t axis = 0; axis < 3; ++axis)
            wrong += swarm(effect).particles[i].velocity[axis] != static_cast<float>(random_real() * 0.1);
    }
    CHECK(wrong == 0);
    CHECK(swarm(effect).last == 0.0f);
}

static void place(test_effect& effect, const std::array<float, 6>& values)
{
    std::copy_n(values.begin(), 3, swarm(effect).particles[0].position);
    std::copy_n(values.begin() + 3, 3, swarm(effect).particles[0].velocity);
}

TEST_CASE("a particle at the origin is pulled with strength 1")
{
    test_effect effect(mesh_effect_particles);
    place(effect, {0.0f, 0.0f, 0.0f, 0.5f, -0.5f, 0.0f});
    step(effect, 0.5f);
    const swarm_particle& p = swarm(effect).particles[0];
    CHECK(p.position[0] == 0.25f);
    CHECK(p.position[1] == -0.25f);
    CHECK(p.position[2] == 0.0f);
    CHECK(p.velocity[0] == 0.0f);
    CHECK(p.velocity[1] == 0.0f);
    CHECK(p.velocity[2] == -0.5f); // a coordinate of 0 counts as positive
}

TEST_CASE("a particle is pulled by its old radius toward the side opposite to its new coordinate")
{
    test_effect effect(mesh_effect_particles);
    place(effect, {2.0f, 0.0f, 0.0f, -3.0f, 0.0f, 0.0f}); // 2 / 4 = 0.5
    step(effect, 1.0f);
    CHECK(swarm(effect).particles[0].position[0] == -1.0f);
    CHECK(swarm(effect).particles[0].velocity[0] == -2.5f);
}

TEST_CASE("the swarm's time counts both ways, and the mesh shows the new positions")
{
    test_effect effect(mesh_effect_particles);
    place(effect, {2.0f, 0.0f, 0.0f, 1.0f, 0.0f, 0.0f});
    step(effect, -2.0f);
    CHECK(swarm(effect).particles[0].position[0] == 4.0f);
    CHECK(swarm(effect).last == -2.0f);
    CHECK(effect.e.mesh.positions[0] == 4.0f);
    step(effect, -2.0f); // no time, no change
    CHECK(effect.e.mesh.positions[0] == 4.0f);
    CHECK(swarm(effect).particles[0].velocity[0] == 0.0f);
}

TEST_CASE("the swarm follows its rules for 300 updates and stays near the origin")
{
    std::srand(8);
    test_effect effect(mesh_effect_particles);
    std::vector<std::array<float, 6>> reference;
    for (const swarm_particle& p : swarm(effect).particles)
        reference.push_back({p.position[0], p.position[1], p.position[2], p.velocity[0], p.velocity[1], p.velocity[2]});
    uint32_t wrong = 0;
    float farthest = 0.0f;
    for (int time = 1; time <= 300; ++time) {
        step(effect, static_cast<float>(time) * 0.125f);
        for (uint32_t i = 0; i < swarm_size; ++i) {
            std::array<float, 6>& p = reference[i];
            const double r
                = std::hypot(static_cast<double>(p[0]), static_cast<double>(p[1]), static_cast<double>(p[2]));
            const double strength = r * r > 2 ? 2 / (r * r) : 1.0;
            for (uint32_t axis = 0; axis < 3; ++axis) {
                p[axis] = static_cast<float>(static_cast<double>(p[axis]) + static_cast<double>(p[3 + axis]) * 0.125);
                const double pull = std::copysign(strength * 0.125, p[axis] < 0.0f ? 1.0 : -1.0);
                p[3 + axis] = static_cast<float>(static_cast<double>(p[3 + axis]) + pull);
                const float computed = effect.e.mesh.positions[3 * i + axis];
                wrong += std::fabs(computed - p[axis]) > 1e-3f;
                farthest = std::max(farthest, std::fabs(computed));
                p[axis] = computed; // rounding may differ in the last bit: start again from the same place
                p[3 + axis] = swarm(effect).particles[i].velocity[axis];
            }
        }
        CHECK(all_finite(positions(effect)));
    }
    CHECK(wrong == 0);
    CHECK(farthest < 100.0f);
}

TEST_CASE("every word size computes the same meshes")
{
    uint64_t hash = 14695981039346656037u;
    std::srand(21);
    for (uint32_t type = 0; type < mesh_effect_kind_count; ++type) {
        test_effect effect(type);
        for (int time = 1; time <= 200; ++time) {
            step(effect, static_cast<float>(time) * 0.7f, static_cast<float>(time));
            hash = hash_of(positions(effect), hash);
            if (effect.e.mesh.normals != nullptr)
                hash = hash_of(normals(effect), hash);
        }
    }
    CHECK(hash == 3072750156310489116u);
}
