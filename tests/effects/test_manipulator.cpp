#include "effects/manipulator.h"
#include "effects/mesh_normals.h"
#include "model/catalogues.h"
#include "reference.h"
#include "texgen/cosine_table.h"

#include <doctest/doctest.h>

#include <algorithm>
#include <array>
#include <initializer_list>
#include <utility>
#include <vector>

namespace {

using params_12 = std::array<float, 12>;

} // namespace

static placement make_placement(std::initializer_list<float> values)
{
    placement p = {};
    std::copy_n(values.begin(), 3, p.position);
    std::copy_n(values.begin() + 3, 3, p.rotation);
    std::copy_n(values.begin() + 6, 3, p.scale);
    return p;
}

static const placement sample = make_placement({1, 2, 3, 10, 20, 30, 1, 1, 1});
static const placement another = make_placement({-5, 0, 7, 0, 90, 0, 2, 3, 4});

static std::array<float, 9> values_of(const placement& p)
{
    return {p.position[0], p.position[1], p.position[2], p.rotation[0], p.rotation[1], p.rotation[2], p.scale[0],
        p.scale[1], p.scale[2]};
}

namespace {

// Tools of a test's own, with an empty cache.
struct test_tools {
    manipulator_tools all = {};

    test_tools()
    {
        build_cosine_table();
    }
    ~test_tools()
    {
        reset_rippler_cache(all.rippler);
    }
    test_tools(const test_tools&) = delete;
    test_tools& operator=(const test_tools&) = delete;
};

} // namespace

// The result of one manipulator on copies of the given placements.
static placement_list applied(test_tools& tools, int32_t kind, const params_12& params,
    std::initializer_list<placement> input, const mesh_arrays* mesh = nullptr, const mesh_arrays* place_model = nullptr)
{
    placement_list list = {input, false};
    apply_manipulator(list, kind, params, mesh, place_model, tools.all);
    return list;
}

// The same with new tools.
static placement_list applied(int32_t kind, const params_12& params, std::initializer_list<placement> input,
    const mesh_arrays* mesh = nullptr, const mesh_arrays* place_model = nullptr)
{
    test_tools tools;
    return applied(tools, kind, params, input, mesh, place_model);
}

namespace {

// A mesh of the given vertices and triangles.
struct test_mesh {
    std::vector<float> positions;
    std::vector<uint16_t> indices;
    mesh_arrays arrays;

    test_mesh(std::vector<float> p, std::vector<uint16_t> i)
        : positions(std::move(p))
        , indices(std::move(i))
        , arrays{}
    {
        arrays.vertex_count = static_cast<uint32_t>(positions.size() / 3);
        arrays.index_count = static_cast<uint32_t>(indices.size());
        arrays.positions = positions.data();
        arrays.indices = indices.data();
    }
    test_mesh(const test_mesh&) = delete;
    test_mesh& operator=(const test_mesh&) = delete;
};

} // namespace

TEST_CASE("manipulators have 12, 10, 3 and 9 parameters")
{
    const uint32_t counts[4] = {12, 10, 3, 9};
    for (int32_t kind = 0; kind < 4; ++kind)
        CHECK(manipulator_param_count(kind) == counts[kind]);
    for (const int32_t kind : {-1, 4, 2147483647})
        CHECK(manipulator_param_count(kind) == 0);
}

TEST_CASE("every manipulator has the parameters that its catalogue names")
{
    for (int32_t kind = 0; kind < manipulator_kind_count; ++kind) {
        CAPTURE(kind);
        CHECK(manipulator_param_count(kind) == manipulators[kind].param_count);
        CHECK(manipulators[kind].param_count <= max_manipulator_params);
    }
}

TEST_CASE("a kind beyond the catalogue leaves the list as it is")
{
    for (const int32_t kind : {-1, 4, 1000}) {
        test_tools tools;
        placement_list list = {{sample, another}, true};
        const placement* items = list.items.data();
        apply_manipulator(list, kind, params_12{}, nullptr, nullptr, tools.all);
        CHECK(list.items.data() == items);
        REQUIRE(list.items.size() == 2);
        CHECK(values_of(list.items[1]) == values_of(another));
        CHECK(list.cut);
    }
}

// ---- "XYZ Multiplier" --------------------------------------------------------------------

TEST_CASE("the XYZ multiplier makes a grid for every input, z fastest, each axis with its own number")
{
    const params_12 params = {2.9f, 3.0f, 2.0f, 10, 100, 1000, 0.5f, 0.25f, 0.125f, -1, 1, 2};
    const placement_list list = applied(manipulator_xyz_multiplier, params, {sample, another});
    REQUIRE(list.items.size() == 2 * 2 * 3 * 2);
    for (uint32_t i = 0; i < list.items.size(); ++i) {
        const placement& from = i < 12 ? sample : another;
        const std::array<float, 3> n
            = {static_cast<float>(i % 12 / 6), static_cast<float>(i % 6 / 2), static_cast<float>(i % 2)};
        std::array<float, 9> expected = values_of(from);
        for (size_t v = 0; v < 9; ++v)
            expected[v] += params[3 + v] * n[v % 3];
        CHECK(values_of(list.items[i]) == expected);
    }
    CHECK(list.items[1].position[2] == 1003.0f);
    CHECK(list.items[2].position[1] == 102.0f);
    CHECK(list.items[6].position[0] == 11.0f);
}

TEST_CASE("the XYZ multiplier with a number of 0 or below is empty")
{
    for (const float number : {0.0f, 0.99f, -0.5f, -1.0f, -3e9f, 3e9f, not_a_number, infinity})
        for (size_t axis = 0; axis < 3; ++axis) {
            params_12 params = {2, 2, 2, 1, 1, 1, 1, 1, 1, 1, 1, 1};
            params[axis] = number;
            const placement_list list = applied(manipulator_xyz_multiplier, params, {sample, another});
            CHECK(list.items.size() == 0);
        }
    // two negative numbers do not make a positive one
    const placement_list list = applied(manipulator_xyz_multiplier, {-2, -2, 2}, {sample});
    CHECK(list.items.size() == 0);
}

TEST_CASE("multiplied lists end after 131,072 placements, the first ones")
{
    const placement_list flat = applied(manipulator_xyz_multiplier, {2e9f, 1, 1, 1}, {sample, another});
    REQUIRE(flat.items.size() == max_placements);
    CHECK(flat.items[max_placements - 1].position[0] == 1.0f + 131071.0f);
    const placement_list cube = applied(manipulator_xyz_multiplier, {2e9f, 2e9f, 2e9f, 1, 1, 1}, {sample});
    REQUIRE(cube.items.size() == max_placements);
    CHECK(cube.items[max_placements - 1].position[0] == 1.0f);
    CHECK(cube.items[max_placements - 1].position[2] == 3.0f + 131071.0f);
    const placement_list row = applied(manipulator_x_multiplier, {2e9f, 0, 1}, {sample, another});
    REQUIRE(row.items.size() == max_placements);
    CHECK(row.items[max_placements - 1].position[1] == 2.0f + 131071.0f);
}

TEST_CASE("counts of billions with a 0 among them end at once")
{
    const placement_list list = applied(manipulator_xyz_multiplier, {2e9f, 2e9f, 0}, {sample});
    CHECK(list.items.size() == 0);
    const placement_list first = applied(manipulator_xyz_multiplier, {0, 2e9f, 2e9f}, {sample});
    CHECK(first.items.size() == 0);
}

TEST_CASE("an empty list stays empty through every manipulator")
{
    const test_mesh model({0, 0, 0, 1, 1, 1}, {});
    for (int32_t kind = 0; kind < 4; ++kind) {
        const placement_list list = applied(kind, {3, 3, 3, 1, 1, 1, 1, 1, 1}, {}, nullptr, &model.arrays);
        CHECK(list.items.size() == 0);
    }
}

TEST_CASE("a chain of multipliers to millions of placements stays within the bound")
{
    test_tools tools;
    placement_list list = {{sample}, false};
    for (int i = 0; i < 7; ++i)
        apply_manipulator(list, manipulator_x_multiplier, params_12{100, 1}, nullptr, nullptr, tools.all);
    CHECK(list.items.size() == max_placements);
}

// ---- "X Multiplier" ----------------------------------------------------------------------

TEST_CASE("the X multiplier steps all nine values with the number of the copy")
{
    const params_12 params = {3, 1, 2, 3, 4, 5, 6, 0.5f, 0.25f, -1};
    const placement_list list = applied(manipulator_x_multiplier, params, {sample, another});
    REQUIRE(list.items.size() == 6);
    for (uint32_t i = 0; i < 6; ++i) {
        std::array<float, 9> expected = values_of(i < 3 ? sample : another);
        for (size_t v = 0; v < 9; ++v)
            expected[v] += params[1 + v] * static_cast<float>(i % 3);
        CHECK(values_of(list.items[i]) == expected);
    }
}

TEST_CASE("the X multiplier with 1 returns the input unchanged, whatever the steps are")
{
    const params_12 params = {1.5f, 1, infinity, not_a_number, 4, 5, 6, 7, 8, 9};
    const placement_list list = applied(manipulator_x_multiplier, params, {sample, another});
    REQUIRE(list.items.size() == 2);
    CHECK(values_of(list.items[0]) == values_of(sample));
    CHECK(values_of(list.items[1]) == values_of(another));
}

TEST_CASE("the X multiplier with 0 or less is empty")
{
    for (const float number : {0.0f, 0.5f, -1.0f, -1e20f, not_a_number}) {
        const placement_list list = applied(manipulator_x_multiplier, {number, 1, 1, 1}, {sample});
        CHECK(list.items.size() == 0);
    }
}

TEST_CASE("steps are added once, in double precision")
{
    // 0.1f x 3 in single precision steps would give 0.3f + 1 bit
    const placement_list list
        = applied(manipulator_x_multiplier, {4, 0.1f}, {make_placement({0, 0, 0, 0, 0, 0, 1, 1, 1})});
    CHECK(list.items[3].position[0] == static_cast<float>(static_cast<double>(0.1f) * 3));
}

// ---- "Rippler" ---------------------------------------------------------------------------

static void ripple(test_tools& tools, const mesh_arrays* mesh, float time, float amplitude, float wavelength)
{
    const placement_list list = applied(tools, manipulator_rippler, {time, amplitude, wavelength}, {sample}, mesh);
    CHECK(list.items.size() == 1);
}

static std::vector<float> cached_positions(const test_tools& tools)
{
    const rippler_cache& cache = tools.all.rippler;
    return {cache.positions, cache.positions + size_t{cache.vertex_count} * 3};
}

TEST_CASE("the rippler leaves the list as it is")
{
    test_tools tools;
    const test_mesh mesh({0, 0, 0, 1, 0, 0, 0, 1, 0}, {0, 1, 2});
    for (const mesh_arrays* model : {static_cast<const mesh_arrays*>(nullptr), &mesh.arrays}) {
        const placement_list list = applied(tools, manipulator_rippler, {0, 1, 1}, {sample, another}, model);
        REQUIRE(list.items.size() == 2);
        CHECK(values_of(list.items[0]) == values_of(sample));
        CHECK(values_of(list.items[1]) == values_of(another));
    }
}

TEST_CASE("a rippler without a mesh, or with an empty one, leaves the cache unfilled")
{
    test_tools tools;
    ripple(tools, nullptr, 0, 1, 1);
    CHECK(tools.all.rippler.positions == nullptr);
    const mesh_arrays empty = {};
    ripple(tools, &empty, 0, 1, 1);
    CHECK(tools.all.rippler.positions == nullptr);
}

TEST_CASE("displacements add up in the cache from call to call, and the model stays as it is")
{
    test_tools tools;
    const std::vector<float> start = {0, 1, 2, 3, 4, 5, 6, 7, 9};
    const test_mesh mesh(start, {0, 1, 2});
    for (int frame = 1; frame <= 4; ++frame) {
        ripple(tools, &mesh.arrays, 0, 2, 0); // a wavelength and time of 0: cos 0 = 1
        for (size_t i = 0; i < 9; ++i)
            CHECK(tools.all.rippler.positions[i] == start[i] + 2.0f * static_cast<float>(frame));
    }
    CHECK(mesh.positions == start);
}

TEST_CASE("every coordinate is displaced by its own value, over several frames")
{
    test_tools tools;
    const test_mesh mesh({0.25f, -1.5f, 2, 3.75f, 40, -5, 6, 7, 8}, {0, 1, 2});
    std::vector<double> expected(mesh.positions.begin(), mesh.positions.end());
    for (int frame = 0; frame < 50; ++frame) {
        const auto time = static_cast<float>(frame) * 0.37f;
        ripple(tools, &mesh.arrays, time, 0.3f, 1.7f);
        for (double& c : expected) {
            const double steps = c * static_cast<double>(1.7f) * 651.8986 + static_cast<double>(time) * 651.8986;
            c = static_cast<double>(
                static_cast<float>(c + static_cast<double>(0.3f) * reference_cosine(static_cast<int64_t>(steps))));
        }
        CHECK(cached_positions(tools) == std::vector<float>(expected.begin(), expected.end()));
    }
}

TEST_CASE("the cache's normals are those of the cached positions with the model's triangles")
{
    test_tools tools;
    const test_mesh mesh({0, 0, 0, 1, 0, 0, 0, 1, 0, 1, 1, 1}, {0, 1, 2, 1, 3, 2});
    ripple(tools, &mesh.arrays, 0.4f, 0.5f, 2.0f);
    std::vector<float> expected(12);
    compute_mesh_normals(cached_positions(tools), mesh.indices, expected);
    CHECK(std::equal(expected.begin(), expected.end(), tools.all.rippler.normals));
    CHECK(expected != std::vector<float>(12, 0.0f));
}

TEST_CASE("two ripplers on different models share the cache of whichever ran first")
{
    test_tools tools;
    const test_mesh first({0, 0, 0, 1, 0, 0, 0, 1, 0}, {0, 1, 2});
    const test_mesh larger({9, 9, 9, 8, 8, 8, 7, 7, 7, 6, 6, 6}, {0, 1, 2, 0, 2, 3});
    const test_mesh smaller({5, 5, 5}, {});
    ripple(tools, &first.arrays, 0, 1, 0);
    ripple(tools, &larger.arrays, 0, 1, 0);
    CHECK(tools.all.rippler.vertex_count == 3);
    CHECK(cached_positions(tools) == std::vector<float>{2, 2, 2, 3, 2, 2, 2, 3, 2});
    // the larger model's second triangle reaches beyond the cache
    std::vector<float> normals(9);
    compute_mesh_normals(cached_positions(tools), std::vector<uint16_t>{0, 1, 2}, normals);
    CHECK(std::equal(normals.begin(), normals.end(), tools.all.rippler.normals));

    ripple(tools, &smaller.arrays, 0, 1, 0); // moves the whole cache, not only the one vertex it has
    CHECK(cached_positions(tools) == std::vector<float>{3, 3, 3, 4, 3, 3, 3, 4, 3});
}

TEST_CASE("a rippler parameter that is no finite number moves nothing")
{
    test_tools tools;
    const test_mesh mesh({1, 2, 3}, {});
    ripple(tools, &mesh.arrays, not_a_number, 1, 1);
    ripple(tools, &mesh.arrays, 0, infinity, 1);
    ripple(tools, &mesh.arrays, 0, 1, -infinity);
    CHECK(cached_positions(tools) == std::vector<float>{1, 2, 3});
    for (int frame = 0; frame < 5; ++frame)
        ripple(tools, &mesh.arrays, 3e38f, 3e38f, 3e38f);
    CHECK(all_finite(cached_positions(tools)));
}

TEST_CASE("a rippler on a mesh without indices clears its normals")
{
    test_tools tools;
    test_mesh mesh({1, 2, 3}, {});
    mesh.arrays.indices = nullptr;
    mesh.arrays.index_count = 3; // a count without indices
    ripple(tools, &mesh.arrays, 0, 1, 1);
    CHECK(tools.all.rippler.normals[0] == 0.0f);
}

// ---- "Model placer" ----------------------------------------------------------------------

TEST_CASE("the model placer puts every placement at every vertex; rotation and scale are the input's")
{
    const test_mesh model({0, 0, 0, 1, 2, 3}, {});
    const params_12 params = {100, 200, 300, 0, 0, 0, 1, 1, 1};
    const placement_list list = applied(manipulator_model_placer, params, {sample, another}, nullptr, &model.arrays);
    REQUIRE(list.items.size() == 4);
    CHECK(values_of(list.items[0]) == std::array<float, 9>{101, 202, 303, 10, 20, 30, 1, 1, 1});
    CHECK(values_of(list.items[1]) == std::array<float, 9>{102, 204, 306, 10, 20, 30, 1, 1, 1});
    CHECK(values_of(list.items[2]) == std::array<float, 9>{95, 200, 307, 0, 90, 0, 2, 3, 4});
    CHECK(values_of(list.items[3]) == std::array<float, 9>{96, 202, 310, 0, 90, 0, 2, 3, 4});
}

TEST_CASE("the placer scales first, turns about z, y and x, and moves last")
{
    const test_mesh model({1, 0, 0, 0, 1, 0}, {});
    // (1,0,0) x 2 = (2,0,0); a quarter about z: (0,2,0); a quarter about x: (0,0,2); moved.
    const params_12 params = {10, 20, 30, 90, 0, 90, 2, 3, 4};
    const placement_list list = applied(manipulator_model_placer, params, {placement{}}, nullptr, &model.arrays);
    REQUIRE(list.items.size() == 2);
    CHECK(list.items[0].position[0] == doctest::Approx(10));
    CHECK(list.items[0].position[1] == doctest::Approx(20));
    CHECK(list.items[0].position[2] == doctest::Approx(32));
    // (0,1,0) x 3 = (0,3,0); about z: (-3,0,0); about x: the same
    CHECK(list.items[1].position[0] == doctest::Approx(7));
    CHECK(list.items[1].position[1] == doctest::Approx(20));
    CHECK(list.items[1].position[2] == doctest::Approx(30));

    // y between them: (0,0,1) by y a quarter is (1,0,0), and x leaves that
    const test_mesh deep({0, 0, 1}, {});
    const placement_list turned
        = applied(manipulator_model_placer, {0, 0, 0, 90, 90, 0, 1, 1, 1}, {placement{}}, nullptr, &deep.arrays);
    CHECK(turned.items[0].position[0] == doctest::Approx(1));
    CHECK(std::fabs(turned.items[0].position[1]) < 1e-5f);
    CHECK(std::fabs(turned.items[0].position[2]) < 1e-5f);
}

TEST_CASE("the placer without a model leaves the list as it is, with an empty model it is empty")
{
    const params_12 params = {1, 1, 1, 0, 0, 0, 1, 1, 1};
    const placement_list copied = applied(manipulator_model_placer, params, {sample, another});
    REQUIRE(copied.items.size() == 2);
    CHECK(values_of(copied.items[1]) == values_of(another));
    const mesh_arrays empty = {};
    const placement_list none = applied(manipulator_model_placer, params, {sample}, nullptr, &empty);
    CHECK(none.items.size() == 0);
}

TEST_CASE("placed lists end after 131,072 placements")
{
    std::vector<float> vertices(65535 * 3);
    for (size_t v = 0; v < 65535; ++v)
        vertices[3 * v] = static_cast<float>(v);
    const test_mesh model(std::move(vertices), {});
    test_tools tools;
    placement_list result = {{sample}, false};
    apply_manipulator(result, manipulator_x_multiplier, params_12{20, 0, 1}, nullptr, nullptr, tools.all);
    apply_manipulator(
        result, manipulator_model_placer, params_12{0, 0, 0, 0, 0, 0, 1, 1, 1}, nullptr, &model.arrays, tools.all);
    REQUIRE(result.items.size() == max_placements);
    CHECK(result.items[65534].position[0] == 65535.0f);
    CHECK(result.items[65535].position[0] == 1.0f);
    CHECK(result.items[65535].position[1] == 3.0f);
    CHECK(result.items[max_placements - 1].position[0] == 1.0f + static_cast<float>((max_placements - 1) % 65535));
}

TEST_CASE("every manipulator takes any parameters")
{
    test_tools tools;
    const test_mesh model({0, 0, 0, 1, 0, 0, 0, 1, 0}, {0, 1, 2});
    for (int32_t kind = 0; kind < 4; ++kind)
        for (const float value : {3.4e38f, -3.4e38f, infinity, -infinity, not_a_number, -0.0f}) {
            params_12 params;
            params.fill(value);
            if (kind < 2)
                params[0] = 2;
            const placement_list list = applied(tools, kind, params, {sample}, &model.arrays, &model.arrays);
            CHECK(list.items.size() <= 6);
        }
}

TEST_CASE("a list that would have been longer says so, and so does every list that is made from it")
{
    const placement_list exact = applied(manipulator_x_multiplier, {65536, 1}, {sample, another});
    CHECK(exact.items.size() == 131072);
    CHECK(!exact.cut);
    const placement_list one_more = applied(manipulator_x_multiplier, {131073, 1}, {sample});
    CHECK(one_more.items.size() == 131072);
    CHECK(one_more.cut);
    const placement_list cube = applied(manipulator_xyz_multiplier, {512, 512, 2}, {sample});
    CHECK(cube.cut);
    const placement_list empty = applied(manipulator_xyz_multiplier, {512, 512, 0}, {sample});
    CHECK(!empty.cut);

    test_tools tools;
    const test_mesh model({0, 0, 0}, {});
    placement_list list = {{sample}, false};
    apply_manipulator(list, manipulator_x_multiplier, params_12{2e9f, 1}, nullptr, nullptr, tools.all);
    for (int32_t kind = 0; kind < manipulator_kind_count; ++kind) {
        apply_manipulator(list, kind, params_12{1, 1, 1}, &model.arrays, &model.arrays, tools.all);
        CHECK(list.cut);
    }
    apply_manipulator(list, manipulator_x_multiplier, params_12{0}, nullptr, nullptr, tools.all);
    CHECK(list.items.empty());
    CHECK(!list.cut); // nothing is drawn, so nothing is left out
}
