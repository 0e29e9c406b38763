#include "render/scene_plan.h"

#include <doctest/doctest.h>

#include <cstdio>
#include <cstdlib>
#include <limits>
#include <string>
#include <unistd.h>
#include <vector>

namespace {

struct bench {
    document d = {};
    scene_object object = {};

    bench()
    {
        d.function_table = table_new<animation_function>();
        d.mesh_table = table_new<mesh_record>();
        d.effect_table = table_new<mesh_effect>();
    }
    ~bench()
    {
        table_free(d.function_table);
        table_free(d.mesh_table);
        table_free(d.effect_table);
    }
    bench(const bench&) = delete;
    bench& operator=(const bench&) = delete;

    uint32_t add_constant_function(float value)
    {
        return add_function(segment_constant, value);
    }
    uint32_t add_function(segment_kind kind, float a)
    {
        const uint32_t handle = table_add(d.function_table);
        animation_function* f = table_get(d.function_table, handle);
        *f = {};
        f->segment_count = 1;
        f->segment_type[0] = kind;
        f->segment_length[0] = 1000;
        f->segment_params[0][0] = a;
        f->cached_time = no_cached_time;
        return handle;
    }
};

// A mesh over vectors of the test.
struct mesh_bench {
    std::vector<float> positions;
    std::vector<float> normals;
    std::vector<uint16_t> indices;
    mesh_arrays arrays = {};

    explicit mesh_bench(uint32_t vertex_count, float first)
        : positions(size_t{vertex_count} * 3)
        , normals(size_t{vertex_count} * 3, 0.5f)
        , indices{0, 1, 2}
    {
        for (float& p : positions)
            p = first++;
        arrays.vertex_count = vertex_count;
        arrays.index_count = 3;
        arrays.positions = positions.data();
        arrays.normals = normals.data();
        arrays.indices = indices.data();
    }
    ~mesh_bench()
    {
        std::free(arrays.line_indices);
    }
    mesh_bench(const mesh_bench&) = delete;
    mesh_bench& operator=(const mesh_bench&) = delete;
};

// What generate_line_index_array prints.
std::string printed_lines(mesh_arrays& mesh, int calls)
{
    std::FILE* caught = std::tmpfile();
    std::fflush(stdout);
    const int kept = dup(1);
    dup2(fileno(caught), 1);
    for (int i = 0; i < calls; ++i)
        generate_line_index_array(mesh);
    std::fflush(stdout);
    dup2(kept, 1);
    close(kept);
    std::rewind(caught);
    char text[256] = {};
    const size_t size = std::fread(text, 1, sizeof text - 1, caught);
    std::fclose(caught);
    return std::string(text, size);
}

} // namespace

TEST_CASE("an object's time is the sum with its offset, truncated")
{
    CHECK(object_time(100, 0.0f) == 100);
    CHECK(object_time(100, 0.75f) == 100);
    CHECK(object_time(100, -0.25f) == 99);
    CHECK(object_time(100, 20.5f) == 120);
    CHECK(object_time(25600, -25600.0f) == 0);
}

TEST_CASE("an object's time below zero is a very late tick, not the beginning")
{
    CHECK(object_time(0, -0.5f) == 0);
    CHECK(object_time(0, -1.0f) == 0xFFFFFFFFu);
    CHECK(object_time(10, -50.0f) == 0xFFFFFFD8u); // -40
    CHECK(object_time(10, -50.75f) == 0xFFFFFFD8u);
}

TEST_CASE("an object's time beyond 32 signed bits is tick 2147483648")
{
    CHECK(object_time(0, 2147483520.0f) == 2147483520u);
    CHECK(object_time(0, 2147483648.0f) == 2147483648u);
    CHECK(object_time(10, 1e30f) == 2147483648u);
    CHECK(object_time(10, -1e30f) == 2147483648u);
    CHECK(object_time(10, std::numeric_limits<float>::quiet_NaN()) == 2147483648u);
    CHECK(object_time(10, std::numeric_limits<float>::infinity()) == 2147483648u);
    CHECK(object_time(0xFFFFFF00u, 0.0f) == 2147483648u);
    CHECK(object_time(0xFFFFFF00u, -4294967040.0f) == 0); // 0xFFFFFF00
}

TEST_CASE("an object whose visibility is 0.999 is hidden, at exactly 1.0 it shows")
{
    bench b;
    b.object.visibility = b.add_constant_function(0.999f);
    CHECK(!object_is_visible(b.object, b.d.function_table, 5));
    b.object.visibility = b.add_constant_function(1.0f);
    CHECK(object_is_visible(b.object, b.d.function_table, 5));
    b.object.visibility = b.add_constant_function(-3.0f);
    CHECK(!object_is_visible(b.object, b.d.function_table, 5));
}

TEST_CASE("an object without a visibility function, or with one that does not exist, shows")
{
    bench b;
    CHECK(object_is_visible(b.object, b.d.function_table, 5));
    b.object.visibility = 55;
    CHECK(object_is_visible(b.object, b.d.function_table, 5));
    CHECK(object_is_visible(b.object, {}, 5));
}

TEST_CASE("camera-facing flags are bits from the highest, object n in byte n / 8")
{
    scene_record scene = {};
    scene.camera_facing[0] = 128 | 1;
    scene.camera_facing[15] = 1;
    CHECK(faces_camera(scene, 0));
    CHECK(!faces_camera(scene, 1));
    CHECK(faces_camera(scene, 7));
    CHECK(!faces_camera(scene, 8));
    CHECK(faces_camera(scene, 127));
    CHECK(!faces_camera(scene, 126));
    CHECK(!faces_camera(scene, 128));
}

TEST_CASE("an object's own placement holds its nine values in order")
{
    bench b;
    for (uint32_t i = 0; i < placement_value_count; ++i)
        b.object.values[i] = {static_cast<float>(i + 1), 0};
    b.object.values[4] = {static_cast<float>(b.add_function(segment_linear, 2.0f)), 1}; // 2 x
    const placement own = object_placement(b.object, b.d.function_table, 30);
    CHECK(own.position[0] == 1.0f);
    CHECK(own.position[2] == 3.0f);
    CHECK(own.rotation[0] == 4.0f);
    CHECK(own.rotation[1] == 60.0f);
    CHECK(own.rotation[2] == 6.0f);
    CHECK(own.scale[0] == 7.0f);
    CHECK(own.scale[2] == 9.0f);
}

TEST_CASE("a model placer takes a mesh, or with model type 1 the mesh of an effect, or nothing")
{
    bench b;
    const uint32_t mesh = table_add(b.d.mesh_table);
    *table_get(b.d.mesh_table, mesh) = {};
    const uint32_t effect = table_add(b.d.effect_table);
    *table_get(b.d.effect_table, effect) = {};
    manipulator_record m = {};
    CHECK(manipulator_mesh(m, b.d) == nullptr);
    m.model = mesh;
    CHECK(manipulator_mesh(m, b.d) == &table_get(b.d.mesh_table, mesh)->arrays);
    m.model_type = 1;
    CHECK(manipulator_mesh(m, b.d) == &table_get(b.d.effect_table, effect)->mesh);
    m.model = 9;
    CHECK(manipulator_mesh(m, b.d) == nullptr);
    m.model = mesh;
    for (const int32_t unknown : {2, -1}) {
        m.model_type = unknown;
        CHECK(manipulator_mesh(m, b.d) == nullptr);
    }
}

TEST_CASE("the lines of a triangle are its three edges in order")
{
    mesh_bench mesh(4, 0.0f);
    mesh.indices = {0, 1, 2, 3, 2, 1};
    mesh.arrays.indices = mesh.indices.data();
    mesh.arrays.index_count = 6;
    CHECK(printed_lines(mesh.arrays, 1) == "GenerateLineIndexArray\n");
    const uint16_t expected[12] = {0, 1, 1, 2, 2, 0, 3, 2, 2, 1, 1, 3};
    REQUIRE(mesh.arrays.line_indices != nullptr);
    for (int i = 0; i < 12; ++i)
        CHECK(mesh.arrays.line_indices[i] == expected[i]);
}

TEST_CASE("building lines says so each time it is done")
{
    mesh_bench mesh(3, 0.0f);
    CHECK(printed_lines(mesh.arrays, 2) == "GenerateLineIndexArray\nGenerateLineIndexArray\n");
}
