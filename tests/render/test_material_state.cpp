#include "render/material_state.h"

#include "content/matrix.h"
#include "frame_bench.h"
#include "render/material_plan.h"
#include "render/shader_source.h"

#include <doctest/doctest.h>

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <cstring>
#include <limits>
#include <string>

namespace {

// Materials applied one after the other from a camera's place, on either path.
struct state_bench : frame_bench {
    uint32_t time = 0;
    float camera_angles[2] = {0, 0}; // about y, about x
    float modelview[16];

    state_bench()
    {
        copy_matrix(identity, modelview);
    }
    void apply(const material_record& material, bool glsl = false)
    {
        const material_context with = {.d = &d,
            .caps = &context.caps,
            .camera_angles = {camera_angles[0], camera_angles[1]},
            .modelview = modelview};
        const material_numbers numbers = evaluate_material(material, d, time, glsl);
        if (glsl)
            apply_material_glsl(material, numbers, with, standing);
        else
            apply_material_fixed(material, numbers, with, standing);
    }
    const material_state& state() const
    {
        return standing.material;
    }
    const unit_state& unit(uint32_t number) const
    {
        return standing.material.units[number];
    }
};

} // namespace

static bool same_numbers(const float* a, const float* b, uint32_t count)
{
    return std::equal(a, a + count, b);
}

static bool is_identity(const float* m)
{
    return same_numbers(m, identity, 16);
}

// A material that brings a program of its own.
static void give_texts(material_record& material)
{
    material.enable_glsl = 1;
    material.custom_vertex_shader = strdup("void main() {}");
    material.custom_fragment_shader = strdup("void main() {}");
}

// ---- before any material ----------------------------------------------------------------

TEST_CASE("at first nothing stands but the depth test and plain matrices")
{
    const standing_state standing = initial_standing_state();
    CHECK(is_identity(standing.projection));
    CHECK(is_identity(standing.material.light_view));
    CHECK(!standing.material.applied);
    CHECK(standing.material.depth_test);
    CHECK(standing.material.blending == blend_none);
    CHECK(standing.material.line_width == 0.0f);
    CHECK(standing.program.status == program_never);
    for (const float channel : standing.clear_color)
        CHECK(channel == 0.0f);
    for (const unit_state& unit : standing.material.units)
        CHECK(!unit.used);
}

TEST_CASE("programs have three units, the fixed pipeline as many of them as the driver has")
{
    gl_caps caps = initial_caps;
    for (const uint32_t units : {0u, 1u, 2u, 3u, 4u, 255u}) {
        caps.texture_units = static_cast<uint8_t>(units);
        CHECK(unit_limit(caps, true) == 3);
        CHECK(unit_limit(caps, false) == std::min(units, 3u));
    }
}

// ---- what both paths share --------------------------------------------------------------

TEST_CASE("culling and the depth test are what the last material says, on both paths")
{
    for (const bool glsl : {false, true}) {
        state_bench b;
        material_record material = {};
        CHECK(!b.state().applied);
        material.backface_culling = 1;
        b.apply(material, glsl);
        CHECK(b.state().applied);
        CHECK(b.state().cull_back);
        CHECK(!b.state().depth_test);
        material.backface_culling = 0;
        material.depth_test = 7; // any number but 0
        b.apply(material, glsl);
        CHECK(!b.state().cull_back);
        CHECK(b.state().depth_test);
    }
}

TEST_CASE("blending beyond the catalogue keeps what an earlier material set, on both paths")
{
    for (const bool glsl : {false, true}) {
        state_bench b;
        material_record material = {};
        material.blend_function = blend_kind_count;
        b.apply(material, glsl);
        CHECK(b.state().blending == blend_none);
        for (uint8_t kind = 0; kind < blend_kind_count; ++kind) {
            material.blend_function = kind;
            b.apply(material, glsl);
            CHECK(b.state().blending == kind);
            for (const uint32_t beyond : {5u, 6u, 255u}) {
                material.blend_function = static_cast<uint8_t>(beyond);
                b.apply(material, glsl);
                CHECK(b.state().blending == kind);
            }
        }
    }
}

TEST_CASE("a line width counts for wireframes and above 0, on both paths")
{
    for (const bool glsl : {false, true}) {
        state_bench b;
        material_record material = {};
        material.linewidth = 3.0f;
        b.apply(material, glsl);
        CHECK(b.state().line_width == 0.0f); // no wireframe
        material.wireframe = 1;
        b.apply(material, glsl);
        CHECK(b.state().line_width == 3.0f);
        for (const float nothing : {0.0f, -0.0f, -2.0f, std::nanf("")}) {
            material.linewidth = nothing;
            b.apply(material, glsl);
            CHECK(b.state().line_width == 3.0f);
        }
        material.linewidth = static_cast<float>(add_time(b, 0.5f));
        material.linewidth_dynamic = 1;
        b.time = 9;
        b.apply(material, glsl);
        CHECK(b.state().line_width == 4.5f);
        material.wireframe = 0;
        b.time = 10;
        b.apply(material, glsl);
        CHECK(b.state().line_width == 4.5f);
    }
}

// ---- the fixed-function path --------------------------------------------------------------

TEST_CASE("normals, wireframe and colour are what the last material says")
{
    state_bench b;
    material_record material = {};
    material.normalization = 1;
    const float color[4] = {0.1f, 0.2f, 0.3f, 0.4f};
    std::copy_n(color, 4, material.color);
    b.apply(material);
    CHECK(b.state().normalize);
    CHECK(!b.state().wireframe);
    CHECK(same_numbers(b.state().color, color, 4));
    material.normalization = 0;
    material.wireframe = 1;
    material.color[1] = static_cast<float>(add_time(b, 0.25f));
    material.color_dynamic[1] = 1;
    b.time = 6;
    b.apply(material);
    CHECK(!b.state().normalize);
    CHECK(b.state().wireframe);
    CHECK(b.state().color[0] == 0.1f);
    CHECK(b.state().color[1] == 1.5f);
}

TEST_CASE("the shader path leaves alone what only the fixed pipeline has")
{
    state_bench b;
    material_record material = {};
    material.normalization = 1;
    material.wireframe = 1;
    material.fogtype = fog_nicest;
    material.light1 = add_values(b, {1, 2, 3, 4, 5, 6, 7, 8, 9});
    std::fill_n(material.color, 4, 1.0f);
    give_program(material, 50);
    b.apply(material, true);
    CHECK(!b.state().normalize);
    CHECK(!b.state().wireframe);
    CHECK(b.state().fog_type == fog_none);
    CHECK(b.state().lights == 0);
    CHECK(b.state().light[0].diffuse[0] == 0.0f);
    CHECK(b.state().color[0] == 0.0f);
    std::free(material.program);
}

TEST_CASE("lights stand with the camera that they were given under")
{
    state_bench b;
    material_record both = {};
    both.light1 = add_values(b, {1, 2, 3, 4, 5, 6, 7, 8, 9});
    both.light2 = add_values(b, {11, 12, 13, 14, 15, 16, 17, 18, 19});
    translate(b.modelview, 1, 2, 3);
    float first_camera[16];
    copy_matrix(b.modelview, first_camera);
    b.apply(both);
    CHECK(b.state().lights == 2);
    const float ambient[3] = {1, 2, 3}, diffuse[3] = {4, 5, 6}, position[3] = {7, 8, 9};
    CHECK(same_numbers(b.state().light[0].ambient, ambient, 3));
    CHECK(same_numbers(b.state().light[0].diffuse, diffuse, 3));
    CHECK(same_numbers(b.state().light[0].position, position, 3)); // the world's: OpenGL turns it
    CHECK(b.state().light[1].ambient[0] == 11.0f);
    CHECK(b.state().light[1].diffuse[2] == 16.0f);
    CHECK(b.state().light[1].position[1] == 18.0f);
    CHECK(same_numbers(b.state().light_view, first_camera, 16));

    translate(b.modelview, 5, 0, 0); // another layer
    b.apply(material_record{});
    CHECK(b.state().lights == 0);
    CHECK(same_numbers(b.state().light_view, first_camera, 16));
    CHECK(b.state().light[0].ambient[1] == 2.0f);

    material_record one = {};
    one.light1 = both.light2;
    b.apply(one);
    CHECK(b.state().lights == 1);
    CHECK(b.state().light[0].ambient[0] == 11.0f);
    CHECK(b.state().light[1].ambient[0] == 11.0f); // not written
    CHECK(same_numbers(b.state().light_view, b.modelview, 16));
}

TEST_CASE("a second light alone, and a light that does not exist, light nothing")
{
    state_bench b;
    material_record material = {};
    material.light2 = add_values(b, {1, 2, 3, 4, 5, 6, 7, 8, 9});
    translate(b.modelview, 1, 2, 3);
    for (const uint32_t missing : {0u, 99u}) {
        material.light1 = missing;
        b.apply(material);
        CHECK(b.state().lights == 0);
        CHECK(b.state().light[1].ambient[0] == 0.0f);
        CHECK(is_identity(b.state().light_view));
    }
    material.light1 = material.light2;
    material.light2 = 99;
    b.apply(material);
    CHECK(b.state().lights == 1);
}

TEST_CASE("lights move with their functions")
{
    state_bench b;
    material_record material = {};
    material.light1 = add_values(b, {0, 0, 0, 0, 0, 0, static_cast<float>(add_time(b)), 0, 0});
    table_get(b.d.transform_table, material.light1)->dynamic_flags[1] = 128;
    b.time = 12;
    b.apply(material);
    CHECK(b.state().light[0].position[0] == 12.0f);
}

TEST_CASE("fog is set where a material has it and stands, unused, where one has none")
{
    state_bench b;
    material_record foggy = {};
    foggy.fogtype = fog_fastest;
    foggy.fogcolor = add_color(b.content, 0.1f, 0.2f, 0.3f);
    foggy.fogstart = 2.0f;
    foggy.fogend = static_cast<float>(add_time(b));
    foggy.fogend_dynamic = 1;
    b.time = 30;
    b.apply(foggy);
    CHECK(b.state().fog_type == fog_fastest);
    const float color[3] = {0.1f, 0.2f, 0.3f};
    CHECK(same_numbers(b.state().fog.color, color, 3));
    CHECK(b.state().fog.start == 2.0f);
    CHECK(b.state().fog.end == 30.0f);
    b.apply(material_record{});
    CHECK(b.state().fog_type == fog_none);
    CHECK(b.state().fog.end == 30.0f);
    foggy.fogtype = fog_nicest;
    b.time = 2; // where it begins: a little is put between
    b.apply(foggy);
    CHECK(b.state().fog_type == fog_nicest);
    CHECK(b.state().fog.end > b.state().fog.start);
}

TEST_CASE("a unit takes everything from its material")
{
    state_bench b;
    material_record material = {};
    material.texture[0] = add_image(b, 7);
    material.wrapmode[0] = wrap_edge_clamp;
    material.combine_mode[0] = first_replace;
    material.texture[1] = add_image(b, 8);
    material.cgenmode[1] = coordinates_sphere;
    material.combine_mode[1] = second_dot3_previous;
    material.texture[2] = add_image(b, 9);
    material.cgenmode[2] = 77; // beyond the catalogue: the mesh's own
    b.apply(material);
    for (uint32_t i = 0; i < texture_unit_count; ++i) {
        CHECK(b.unit(i).used);
        CHECK(b.unit(i).on);
        CHECK(!b.unit(i).cube_map);
        CHECK(b.unit(i).flat_texture == 7 + i);
        CHECK(b.unit(i).cube_texture == 0);
        CHECK(b.unit(i).wrap == (i == 0 ? wrap_edge_clamp : wrap_repeat));
        CHECK(b.unit(i).mesh_coordinates == (i != 1));
        CHECK(is_identity(b.unit(i).matrix));
    }
    CHECK(b.unit(0).coordinates == coordinates_off);
    CHECK(b.unit(1).coordinates == coordinates_sphere);
    CHECK(b.unit(2).coordinates == 77);
    CHECK(b.unit(0).combine_mode == first_replace);
    CHECK(b.unit(1).combine_mode == second_dot3_previous);
}

TEST_CASE("the first empty unit is switched off, those after it keep what an earlier material left")
{
    state_bench b;
    material_record full = {};
    for (uint32_t i = 0; i < texture_unit_count; ++i) {
        full.texture[i] = add_image(b, 7 + i);
        full.combine_mode[i] = 2;
    }
    full.wrapmode[2] = wrap_edge_clamp;
    b.apply(full);
    material_record one = {};
    one.texture[0] = add_image(b, 20);
    one.texture[2] = add_image(b, 21);
    b.apply(one);
    CHECK(b.unit(0).flat_texture == 20);
    CHECK(b.unit(0).on);
    CHECK(b.unit(1).used);
    CHECK(!b.unit(1).on);
    CHECK(!b.unit(1).mesh_coordinates);
    CHECK(b.unit(1).flat_texture == 8); // bound, but without a part
    CHECK(b.unit(1).combine_mode == 2);
    CHECK(b.unit(2).on);
    CHECK(b.unit(2).mesh_coordinates);
    CHECK(b.unit(2).flat_texture == 9);
    CHECK(b.unit(2).wrap == wrap_edge_clamp);
    CHECK(b.unit(2).combine_mode == 2);
    b.apply(material_record{});
    CHECK(!b.unit(0).on);
    CHECK(!b.unit(1).on);
    CHECK(b.unit(2).on);
}

TEST_CASE("a unit that was never set is switched off too where it is the first empty one")
{
    state_bench b;
    b.apply(material_record{});
    CHECK(b.unit(0).used);
    CHECK(!b.unit(0).on);
    CHECK(!b.unit(1).used);
}

TEST_CASE("units beyond the driver's are neither set nor switched off")
{
    state_bench b;
    material_record material = {};
    for (uint32_t i = 0; i < texture_unit_count; ++i)
        material.texture[i] = add_image(b, 7 + i);
    b.context.caps.texture_units = 2;
    b.apply(material);
    CHECK(b.unit(1).on);
    CHECK(!b.unit(2).used);
    b.context.caps.texture_units = 1;
    material.texture[1] = 0;
    b.apply(material);
    CHECK(b.unit(1).on);
    b.context.caps.texture_units = 0;
    b.apply(material_record{});
    CHECK(b.unit(0).on);
}

TEST_CASE("a unit keeps a flat picture beside its cube map, which wins while it is set")
{
    for (const bool glsl : {false, true}) {
        state_bench b;
        material_record flat = {}, cube = {};
        flat.texture[0] = add_image(b, 7);
        cube.texture[0] = add_cube(b, 8);
        give_program(flat, 50);
        give_program(cube, 51);
        b.apply(flat, glsl);
        b.apply(cube, glsl);
        CHECK(b.unit(0).cube_map);
        CHECK(b.unit(0).flat_texture == 7);
        CHECK(b.unit(0).cube_texture == 8);
        b.apply(flat, glsl);
        CHECK(!b.unit(0).cube_map);
        CHECK(b.unit(0).cube_texture == 8);
        std::free(flat.program);
        std::free(cube.program);
    }
}

TEST_CASE("how a picture wraps holds in every unit that shows it")
{
    for (const bool glsl : {false, true}) {
        state_bench b;
        const uint32_t picture = add_image(b, 7);
        const uint32_t cube = add_cube(b, 7); // a number is one kind's name only
        material_record repeated = {}, clamped = {};
        repeated.texture[0] = add_image(b, 8);
        repeated.texture[1] = cube;
        repeated.texture[2] = picture;
        clamped.texture[0] = picture;
        clamped.wrapmode[0] = wrap_edge_clamp;
        give_program(repeated, 50);
        give_program(clamped, 51);
        b.apply(repeated, glsl);
        CHECK(b.unit(2).wrap == wrap_repeat);
        b.apply(clamped, glsl);
        CHECK(b.unit(0).wrap == wrap_edge_clamp);
        CHECK(b.unit(1).wrap == wrap_repeat);
        CHECK(b.unit(2).wrap == wrap_edge_clamp);

        clamped.texture[1] = picture; // twice in one material: the last unit's word
        clamped.wrapmode[1] = wrap_repeat;
        b.apply(clamped, glsl);
        for (uint32_t i = 0; i < texture_unit_count; ++i)
            CHECK(b.unit(i).wrap == wrap_repeat);
        std::free(repeated.program);
        std::free(clamped.program);
    }
}

TEST_CASE("how a cube map wraps holds in every unit that shows it, and in no other cube map")
{
    state_bench b;
    material_record repeated = {}, clamped = {};
    repeated.texture[0] = add_cube(b, 8);
    repeated.texture[1] = add_cube(b, 9);
    repeated.texture[2] = add_cube(b, 7);
    clamped.texture[0] = repeated.texture[2];
    clamped.wrapmode[0] = wrap_edge_clamp;
    b.apply(repeated);
    b.apply(clamped);
    CHECK(b.unit(0).wrap == wrap_edge_clamp);
    CHECK(b.unit(1).wrap == wrap_repeat);
    CHECK(b.unit(2).wrap == wrap_edge_clamp);
}

TEST_CASE("wrapping does not reach units that no material has used")
{
    state_bench b;
    material_record material = {};
    material.texture[0] = add_image(b, 0); // a picture without a name, as unused units have
    material.wrapmode[0] = wrap_edge_clamp;
    b.apply(material);
    CHECK(b.unit(0).wrap == wrap_edge_clamp);
    CHECK(b.unit(2).wrap == wrap_repeat);
}

TEST_CASE("on the fixed path a turning picture and a cube map have a matrix")
{
    state_bench b;
    b.camera_angles[0] = 30.0f;
    b.camera_angles[1] = 40.0f;
    material_record material = {};
    material.texture[0] = add_image(b, 7);
    material.rotation[0] = 1;
    material.texture[1] = add_cube(b, 8);
    material.texture[2] = add_image(b, 9);
    material.cgenmode[2] = coordinates_cube; // coordinates alone turn nothing here
    b.apply(material);
    float turned[16], back[16];
    build_texture_matrix(true, false, b.camera_angles, turned);
    build_texture_matrix(false, true, b.camera_angles, back);
    CHECK(same_numbers(b.unit(0).matrix, turned, 16));
    CHECK(same_numbers(b.unit(1).matrix, back, 16));
    CHECK(is_identity(b.unit(2).matrix));
}

// ---- the shader path ------------------------------------------------------------------------

TEST_CASE("a program's locations stand with it, those of uniforms where a function drives them")
{
    state_bench b;
    material_record material = {};
    shader_program& made = give_program(material, 50);
    made.uniform_functions[0] = add_time(b);
    made.uniform_functions[23] = add_time(b, 2.0f);
    b.time = 7;
    b.apply(material, true);
    const program_state& program = b.standing.program;
    CHECK(program.status == program_ready);
    CHECK(program.program == 50);
    CHECK(program.projection == 11);
    CHECK(program.modelview == 12);
    CHECK(program.normal_matrix == 13);
    CHECK(program.texture_matrix_location == 14);
    CHECK(program.light_location[0] == 15);
    CHECK(program.light_location[1] == 16);
    CHECK(program.position == 1);
    CHECK(program.normal == 2);
    for (int32_t i = 0; i < 3; ++i)
        CHECK(program.texcoord[i] == 3 + i);
    for (uint32_t i = 0; i < user_uniform_count; ++i) {
        const bool driven = i == 0 || i == 23;
        CHECK(program.uniform_location[i] == (driven ? static_cast<int32_t>(21 + i) : -1));
        CHECK(program.uniforms[i] == (i == 0 ? 7.0f : i == 23 ? 14.0f : 0.0f));
    }
    std::free(material.program);
}

TEST_CASE("a program that did not build leaves none, and no unit is touched")
{
    state_bench b;
    material_record built = {}, broken = {}, without = {};
    built.texture[0] = broken.texture[0] = add_image(b, 7);
    give_program(built, 50);
    give_program(broken, 0);
    broken.texture[0] = add_image(b, 8);
    broken.backface_culling = 1;
    broken.blend_function = blend_add;
    for (const material_record* failing : {&broken, &without}) {
        b.apply(built, true);
        b.apply(*failing, true);
        CHECK(b.standing.program.status == program_failed);
        CHECK(b.standing.program.program == 0);
        CHECK(b.unit(0).flat_texture == 7);
        CHECK(b.state().cull_back == (failing == &broken)); // what is no program's is set
        CHECK(b.state().blending == (failing == &broken ? blend_add : blend_alpha));
    }
    b.apply(built, true);
    CHECK(b.standing.program.status == program_ready);
    std::free(built.program);
    std::free(broken.program);
}

TEST_CASE("lights of programs stand as the camera sees them, a second one alone too")
{
    state_bench b;
    rotate_y(b.modelview, 90);
    translate(b.modelview, 0, 0, 10);
    material_record material = {};
    give_program(material, 50);
    material.light2 = add_values(b, {0, 0, 0, 0, 0, 0, 1, 2, 3});
    b.apply(material, true);
    const program_state& program = b.standing.program;
    CHECK(!program.has_light[0]);
    CHECK(program.has_light[1]);
    // (1, 2, 3) moved to (1, 2, 13); a quarter about y brings z to x and x to -z.
    CHECK(program.light_position[1][0] == doctest::Approx(13));
    CHECK(program.light_position[1][1] == doctest::Approx(2));
    CHECK(program.light_position[1][2] == doctest::Approx(-1));
    material.light1 = material.light2;
    material.light2 = 99;
    b.apply(material, true);
    CHECK(program.has_light[0]);
    CHECK(!program.has_light[1]);
    CHECK(program.light_position[0][0] == doctest::Approx(13));
    std::free(material.program);
}

TEST_CASE("the texture matrix is that of the last unit that needs one, transposed for generated programs")
{
    state_bench b;
    b.camera_angles[0] = 30.0f;
    b.camera_angles[1] = 40.0f;
    float turned[16], back[16];
    build_texture_matrix(true, false, b.camera_angles, turned);
    build_texture_matrix(false, true, b.camera_angles, back);
    material_record material = {};
    give_program(material, 50);
    material.texture[0] = add_cube(b, 7); // a cube map alone turns nothing here
    const program_state& program = b.standing.program;
    b.apply(material, true);
    CHECK(!program.turns_texture);
    material.rotation[0] = 1;
    b.apply(material, true);
    CHECK(program.turns_texture);
    CHECK(program.transposed);
    CHECK(same_numbers(program.texture_matrix, turned, 16));
    material.texture[1] = add_image(b, 8);
    material.cgenmode[1] = coordinates_cube;
    material.texture[2] = add_image(b, 9);
    b.apply(material, true);
    CHECK(same_numbers(program.texture_matrix, back, 16));
    material.rotation[1] = 1; // wins over reflections
    b.apply(material, true);
    CHECK(same_numbers(program.texture_matrix, turned, 16));
    material.texture[0] = 0; // no unit at all
    b.apply(material, true);
    CHECK(!program.turns_texture);

    give_texts(material);
    b.apply(material, true);
    CHECK(!program.transposed);
    std::free(material.custom_vertex_shader);
    std::free(material.custom_fragment_shader);
    std::free(material.program);
}

TEST_CASE("programs see three units whatever the driver's fixed pipeline has, and switch none off")
{
    state_bench b;
    b.context.caps.texture_units = 1;
    material_record full = {}, one = {};
    give_program(full, 50);
    give_program(one, 51);
    for (uint32_t i = 0; i < texture_unit_count; ++i)
        full.texture[i] = add_image(b, 7 + i);
    one.texture[0] = add_image(b, 20);
    b.apply(full, true);
    b.apply(one, true);
    const uint32_t bound[3] = {20, 8, 9};
    for (uint32_t i = 0; i < texture_unit_count; ++i) {
        CHECK(b.unit(i).used);
        CHECK(!b.unit(i).on); // the fixed pipeline's word
        CHECK(b.unit(i).flat_texture == bound[i]);
    }
    std::free(full.program);
    std::free(one.program);
}

// ---- textures that come and go ---------------------------------------------------------------

TEST_CASE("a picture bound for an upload is what the first unit sees, and wraps as it did")
{
    state_bench b;
    material_record material = {};
    material.texture[0] = add_image(b, 7);
    material.texture[1] = add_image(b, 8);
    material.wrapmode[0] = wrap_edge_clamp;
    b.apply(material);
    bind_flat_texture(b.standing, 7);
    CHECK(b.unit(0).wrap == wrap_edge_clamp); // the same picture
    bind_flat_texture(b.standing, 30);
    CHECK(b.unit(0).flat_texture == 30);
    CHECK(b.unit(0).wrap == wrap_as_it_is); // not as the other one did
    CHECK(b.unit(1).flat_texture == 8);
    b.apply(material);
    CHECK(b.unit(0).flat_texture == 7);
    CHECK(b.unit(0).wrap == wrap_edge_clamp);
}

TEST_CASE("a picture bound for a copy wraps as the last material that named it said, whatever came between")
{
    for (const bool glsl : {false, true}) {
        state_bench b;
        material_record clamped = {};
        clamped.texture[0] = add_image(b, 7);
        clamped.wrapmode[0] = wrap_edge_clamp;
        give_program(clamped, 50);
        material_record repeated = {};
        repeated.texture[0] = add_image(b, 8);
        give_program(repeated, 51);
        b.apply(clamped, glsl);
        b.apply(repeated, glsl);
        bind_flat_texture(b.standing, 7);
        CHECK(b.unit(0).wrap == wrap_edge_clamp);
        bind_flat_texture(b.standing, 8);
        CHECK(b.unit(0).wrap == wrap_repeat);
        clamped.wrapmode[0] = wrap_repeat;
        b.apply(clamped, glsl);
        b.apply(repeated, glsl);
        bind_flat_texture(b.standing, 7);
        CHECK(b.unit(0).wrap == wrap_repeat);
        forget_texture(b.standing, 7); // the name may come to stand for another picture
        bind_flat_texture(b.standing, 8);
        bind_flat_texture(b.standing, 7);
        CHECK(b.unit(0).wrap == wrap_as_it_is);
        std::free(clamped.program);
        std::free(repeated.program);
    }
}

TEST_CASE("beside a cube map a picture bound for an upload changes neither it nor how it wraps")
{
    state_bench b;
    material_record material = {};
    material.texture[0] = add_cube(b, 7);
    material.wrapmode[0] = wrap_edge_clamp;
    b.apply(material);
    bind_flat_texture(b.standing, 30);
    CHECK(b.unit(0).cube_map);
    CHECK(b.unit(0).cube_texture == 7);
    CHECK(b.unit(0).flat_texture == 30);
    CHECK(b.unit(0).wrap == wrap_edge_clamp);
}

TEST_CASE("a texture that is deleted is in no unit any more")
{
    state_bench b;
    material_record flat = {}, cube = {};
    for (uint32_t i = 0; i < texture_unit_count; ++i) {
        flat.texture[i] = add_image(b, i == 1 ? 8 : 7);
        cube.texture[i] = add_cube(b, i == 2 ? 8 : 9);
    }
    b.apply(flat);
    b.apply(cube);
    forget_texture(b.standing, 7);
    forget_texture(b.standing, 9);
    const uint32_t flats[3] = {0, 8, 0}, cubes[3] = {0, 0, 8};
    for (uint32_t i = 0; i < texture_unit_count; ++i) {
        CHECK(b.unit(i).flat_texture == flats[i]);
        CHECK(b.unit(i).cube_texture == cubes[i]);
    }
}
