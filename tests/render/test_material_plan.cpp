#include "render/material_plan.h"

#include "content/matrix.h"

#include <doctest/doctest.h>

#include <cmath>
#include <initializer_list>

namespace {

// A document's tables, filled by hand.
struct bench {
    document d = {};
    material_record material = {};

    bench()
    {
        d.object_table = table_new<object_reference>();
        d.texture_table = table_new<texture_node>();
        d.image_texture_table = table_new<image_texture>();
        d.dynamic_texture_table = table_new<dynamic_texture>();
        d.cube_map_table = table_new<cube_map>();
        d.function_table = table_new<animation_function>();
        d.transform_table = table_new<value_record>();
    }
    ~bench()
    {
        for_each_table(d, [](auto& records) { table_free(records); });
    }
    bench(const bench&) = delete;
    bench& operator=(const bench&) = delete;

    template <typename record> record& add(const table<record>& records, uint32_t* handle = nullptr)
    {
        const uint32_t made = table_add(records);
        record* r = table_get(records, made);
        if (handle != nullptr)
            *handle = made;
        return *r;
    }
    uint32_t add_reference(int32_t kind, uint32_t id)
    {
        uint32_t handle = 0;
        object_reference& reference = add(d.object_table, &handle);
        reference.type = kind;
        reference.id = id;
        return handle;
    }
    uint32_t add_image(uint32_t texture)
    {
        uint32_t handle = 0;
        add(d.image_texture_table, &handle).texture = texture;
        return add_reference(texture_image, handle);
    }
    // a x + b over 1000 ticks
    uint32_t add_linear_function(float a, float b)
    {
        uint32_t handle = 0;
        animation_function& f = add(d.function_table, &handle);
        f.segment_count = 1;
        f.segment_type[0] = segment_linear;
        f.segment_length[0] = 1000;
        f.segment_params[0][0] = a;
        f.segment_params[0][1] = b;
        f.cached_time = no_cached_time;
        return handle;
    }
    uint32_t add_values(std::initializer_list<float> numbers, uint8_t flags0 = 0, uint8_t flags1 = 0)
    {
        uint32_t handle = 0;
        value_record& record = add(d.transform_table, &handle);
        uint32_t i = 0;
        for (const float number : numbers)
            record.values[i++] = number;
        record.dynamic_flags[0] = flags0;
        record.dynamic_flags[1] = flags1;
        return handle;
    }
    uint32_t plan(unit_plan units[texture_unit_count], uint32_t limit = texture_unit_count)
    {
        return plan_units(material, texture_tables_of(d), limit, units);
    }
};

// (x, y, z, 1) through a matrix.
void through_matrix(const float m[16], float x, float y, float z, float out[3])
{
    for (int r = 0; r < 3; ++r)
        out[r] = m[r] * x + m[4 + r] * y + m[8 + r] * z + m[12 + r];
}

} // namespace

TEST_CASE("each kind of texture reference leads to its own table")
{
    bench b;
    uint32_t id = 0;
    texture_node& node = b.add(b.d.texture_table, &id);
    node.type = node_output;
    node.texture = 11;
    const uint32_t generated = b.add_reference(texture_generated, id);
    const uint32_t image = b.add_image(12);
    b.add(b.d.dynamic_texture_table, &id).texture = 13;
    const uint32_t moving = b.add_reference(texture_dynamic, id);
    b.add(b.d.cube_map_table, &id).texture = 14;
    const uint32_t cube = b.add_reference(texture_cube, id);

    const texture_tables tables = texture_tables_of(b.d);
    CHECK(resolve_texture(tables, generated).texture == 11);
    CHECK(resolve_texture(tables, image).texture == 12);
    CHECK(resolve_texture(tables, moving).texture == 13);
    CHECK(resolve_texture(tables, moving).kind == texture_dynamic);
    CHECK(resolve_texture(tables, cube).texture == 14);
    CHECK(resolve_texture(tables, cube).kind == texture_cube);
}

TEST_CASE("references to nothing are empty units")
{
    bench b;
    uint32_t id = 0;
    b.add(b.d.texture_table, &id).type = node_blur;
    const texture_tables tables = texture_tables_of(b.d);
    CHECK(!resolve_texture(tables, 0).found);
    CHECK(!resolve_texture(tables, 5000).found);
    CHECK(!resolve_texture(tables, b.add_reference(texture_generated, id)).found); // no output node
    CHECK(!resolve_texture(tables, b.add_reference(texture_image, 3)).found);      // dangling
    CHECK(!resolve_texture(tables, b.add_reference(4, 1)).found);                  // no such kind
    CHECK(!resolve_texture(tables, b.add_reference(-1, 1)).found);
    CHECK(!resolve_texture({}, 1).found);
}

TEST_CASE("a material with texture 1 empty and texture 2 set uses no unit at all")
{
    bench b;
    b.material.texture[1] = b.add_image(5);
    unit_plan units[texture_unit_count];
    CHECK(b.plan(units) == 0);
}

TEST_CASE("an empty unit in the middle ends the units")
{
    bench b;
    b.material.texture[0] = b.add_image(5);
    b.material.texture[2] = b.add_image(6);
    unit_plan units[texture_unit_count];
    CHECK(b.plan(units) == 1);
    CHECK(units[0].texture == 5);
}

TEST_CASE("units beyond the driver's count are empty")
{
    bench b;
    for (uint32_t i = 0; i < texture_unit_count; ++i)
        b.material.texture[i] = b.add_image(20 + i);
    unit_plan units[texture_unit_count];
    CHECK(b.plan(units, 2) == 2);
    CHECK(b.plan(units, 0) == 0);
    CHECK(b.plan(units, 200) == 3);
    CHECK(units[2].texture == 22);
}

TEST_CASE("a unit's settings go with its picture")
{
    bench b;
    uint32_t id = 0;
    b.add(b.d.dynamic_texture_table, &id).texture = 9;
    b.material.texture[0] = b.add_reference(texture_dynamic, id);
    b.material.wrapmode[0] = 1;
    b.material.cgenmode[0] = coordinates_sphere;
    b.material.rotation[0] = 1;
    b.material.combine_mode[0] = first_replace;
    b.add(b.d.cube_map_table, &id).texture = 10;
    b.material.texture[1] = b.add_reference(texture_cube, id);
    unit_plan units[texture_unit_count];
    REQUIRE(b.plan(units) == 2);
    CHECK(units[0].dynamic_texture == 1);
    CHECK(!units[0].cube_map);
    CHECK(units[0].wrapmode == 1);
    CHECK(units[0].cgenmode == coordinates_sphere);
    CHECK(units[0].rotation == 1);
    CHECK(units[0].combine_mode == first_replace);
    CHECK(units[1].dynamic_texture == 0);
    CHECK(units[1].cube_map);
}

TEST_CASE("colours and the line width are constants or function values")
{
    bench b;
    const float constants[4] = {0.1f, 0.2f, 0.3f, 0.4f};
    for (uint32_t i = 0; i < 4; ++i)
        b.material.color[i] = constants[i];
    b.material.color[2] = static_cast<float>(b.add_linear_function(0.5f, 1.0f));
    b.material.color_dynamic[2] = 1;
    b.material.color[3] = 99.0f; // no such function: 1.0
    b.material.color_dynamic[3] = 1;
    b.material.linewidth = 3.5f;
    float color[4];
    plan_color(b.material, b.d, 10, color);
    CHECK(color[0] == 0.1f);
    CHECK(color[1] == 0.2f);
    CHECK(color[2] == 6.0f);
    CHECK(color[3] == 1.0f);
    CHECK(plan_line_width(b.material, b.d, 10) == 3.5f);
}

TEST_CASE("a light takes ambient, diffuse and position from its three triples")
{
    bench b;
    const uint32_t function = b.add_linear_function(1.0f, 0.0f);
    const float f = static_cast<float>(function);
    // dynamic: values 0, 5 and 7
    const uint32_t light = b.add_values({f, 2, 3, 4, 5, f, 7, f, 9}, 128 | 4, 64);
    light_state plan = {};
    REQUIRE(plan_light(light, b.d, 40, plan));
    CHECK(plan.ambient[0] == 40.0f);
    CHECK(plan.ambient[2] == 3.0f);
    CHECK(plan.diffuse[0] == 4.0f);
    CHECK(plan.diffuse[2] == 40.0f);
    CHECK(plan.position[0] == 7.0f);
    CHECK(plan.position[1] == 40.0f);
    CHECK(plan.position[2] == 9.0f);
    float position[3];
    REQUIRE(plan_light_position(light, b.d, 41, position));
    CHECK(position[1] == 41.0f);
    CHECK(!plan_light(0, b.d, 0, plan));
    CHECK(!plan_light(2, b.d, 0, plan));
    CHECK(!plan_light_position(2, b.d, 0, position));
}

TEST_CASE("fog without a colour is white, with one it takes values 3 to 5")
{
    bench b;
    b.material.fogtype = 2;
    b.material.fogstart = 2.0f;
    b.material.fogend = static_cast<float>(b.add_linear_function(0.0f, 30.0f));
    b.material.fogend_dynamic = 1;
    fog_state fog = plan_fog(b.material, b.d, 5);
    CHECK(fog.color[0] == 1.0f);
    CHECK(fog.color[1] == 1.0f);
    CHECK(fog.color[2] == 1.0f);
    CHECK(fog.start == 2.0f);
    CHECK(fog.end == 30.0f);

    b.material.fogcolor = b.add_values({9, 9, 9, 0.25f, 0.5f, 0.75f, 9, 9, 9});
    fog = plan_fog(b.material, b.d, 5);
    CHECK(fog.color[0] == 0.25f);
    CHECK(fog.color[1] == 0.5f);
    CHECK(fog.color[2] == 0.75f);
}

TEST_CASE("fog whose start is its end ends 0.001 behind it, or one step of a float where that is more")
{
    const struct {
        float at, start, end;
    } table[]
        = {{5.0f, 5.0f, 5.001f}, {0.0f, 0.0f, 0.001f}, {-5.0f, -5.0f, -4.999f}, {40000.0f, 40000.0f, 40000.00390625f},
            {16777216.0f, 16777216.0f, 16777218.0f}, {3.402823466e38f, 3.402823264e38f, 3.402823466e38f},
            {HUGE_VALF, 3.402823264e38f, 3.402823466e38f}, {-HUGE_VALF, -3.402823466e38f, -3.402823264e38f}};
    for (const auto& row : table) {
        float start = row.at;
        float end = row.at;
        widen_fog(start, end);
        CAPTURE(row.at);
        CHECK(start == row.start);
        CHECK(end == row.end);
    }
    float near_one = 1.0f;
    float hardly_behind = 1.00000012f;
    widen_fog(near_one, hardly_behind);
    CHECK(near_one == 1.0f);
    CHECK(hardly_behind == 1.00000012f);
    float begin = 9.0f;
    float before = 3.0f;
    widen_fog(begin, before);
    CHECK(begin == 9.0f);
    CHECK(before == 3.0f);
}

TEST_CASE("a plan of fog without a width has one, constant or dynamic")
{
    bench b;
    b.material.fogtype = 1;
    b.material.fogstart = 7.0f;
    b.material.fogend = 7.0f;
    CHECK(plan_fog(b.material, b.d, 0).end == 7.001f);
    b.material.fogend = static_cast<float>(b.add_linear_function(0.5f, 0.0f));
    b.material.fogend_dynamic = 1;
    CHECK(plan_fog(b.material, b.d, 14).end == 7.001f);
    CHECK(plan_fog(b.material, b.d, 13).end == 6.5f);
    CHECK(plan_fog(b.material, b.d, 15).end == 7.5f);
}

TEST_CASE("without rotation and cube map the texture matrix is the identity")
{
    float matrix[16];
    const float angles[2] = {30.0f, 40.0f};
    build_texture_matrix(true, true, angles, matrix); // leave something in it
    build_texture_matrix(false, false, angles, matrix);
    for (int i = 0; i < 16; ++i)
        CHECK(matrix[i] == (i % 5 == 0 ? 1.0f : 0.0f));
}

TEST_CASE("rotation turns about the picture's centre by minus the first angle, and beats the camera's")
{
    float matrix[16];
    const float angles[2] = {90.0f, 77.0f};
    float out[3];
    for (const bool camera_rotation : {false, true}) {
        build_texture_matrix(true, camera_rotation, angles, matrix);
        through_matrix(matrix, 0.5f, 0.5f, 0.0f, out); // the centre stays
        CHECK(out[0] == doctest::Approx(0.5));
        CHECK(out[1] == doctest::Approx(0.5));
        through_matrix(matrix, 1.0f, 0.5f, 0.0f, out); // clockwise by a quarter
        CHECK(out[0] == doctest::Approx(0.5));
        CHECK(out[1] == doctest::Approx(0.0));
    }
}

TEST_CASE("a cube map is turned back by both camera angles, about y outside and about x inside")
{
    // The camera turns the world by Rx(b) Ry(a); the texture matrix must undo it.
    const float a = 35.0f;
    const float b = -20.0f;
    float matrix[16];
    const float angles[2] = {a, b};
    build_texture_matrix(false, true, angles, matrix);
    const double ra = a * 3.14159265358979 / 180.0;
    const double rb = b * 3.14159265358979 / 180.0;
    const double world[3] = {0.3, -0.8, 0.52};
    // Ry(a): x' = x cos + z sin, z' = -x sin + z cos; then Rx(b): y' = y cos - z sin, z' = y sin + z cos
    const double x1 = world[0] * std::cos(ra) + world[2] * std::sin(ra);
    const double z1 = -world[0] * std::sin(ra) + world[2] * std::cos(ra);
    const double y2 = world[1] * std::cos(rb) - z1 * std::sin(rb);
    const double z2 = world[1] * std::sin(rb) + z1 * std::cos(rb);
    float back[3];
    through_matrix(matrix, static_cast<float>(x1), static_cast<float>(y2), static_cast<float>(z2), back);
    for (int i = 0; i < 3; ++i)
        CHECK(back[i] == doctest::Approx(world[i]).epsilon(1e-5));
}
