#include "builders.h"
#include "effects/mesh_effect.h"
#include "reference.h"
#include "test_effect.h"

#include <doctest/doctest.h>

#include <algorithm>
#include <cstdlib>
#include <limits>
#include <vector>

// ---- meshes and ownership ----------------------------------------------------------------

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

// ---- parameters --------------------------------------------------------------------------

TEST_CASE("an update evaluates the functions at the time; handle 0 is 0 and a dangling one 1")
{
    test_document t;
    test_effect effect(mesh_effect_swirl);
    effect.e.functions[1] = add_function(t, linear_function());
    const uint32_t handle = table_add(t.d.effect_table, effect.e);
    test_effect expected(mesh_effect_swirl);

    update_mesh_effect(handle, t.d.effect_table, t.d.function_table, 40);
    step(expected, 0.0f, 40.0f);
    CHECK(positions(effect) == positions(expected));

    table_get(t.d.effect_table, handle)->functions[0] = 77;
    update_mesh_effect(handle, t.d.effect_table, t.d.function_table, 40);
    step(expected, 1.0f, 40.0f);
    CHECK(positions(effect) == positions(expected));
}

TEST_CASE("an update of a dangling effect changes no other")
{
    test_document t;
    test_effect effect(mesh_effect_swirl);
    effect.e.functions[1] = add_function(t, linear_function());
    const uint32_t handle = table_add(t.d.effect_table, effect.e);
    for (const uint32_t dangling : {0u, handle + 1, 4096u, 4294967295u})
        update_mesh_effect(dangling, t.d.effect_table, t.d.function_table, 40);
    update_mesh_effect(handle, {}, t.d.function_table, 40);
    CHECK(positions(effect) == std::vector<float>(768, 0.0f));
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
