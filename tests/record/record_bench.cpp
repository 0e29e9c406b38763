#include "record_bench.h"

#include "effects/dynamic_texture.h"
#include "render/shader_source.h"
#include "texgen/cosine_table.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <iterator>
#include <map>
#include <sstream>

// ---- beginning and end ----------------------------------------------------------

record_bench::record_bench()
    : answers(begin_gl_recording())
{
    build_cosine_table();
    layer.depth_test = 1;
    layer.projection = projection_kept;
}

record_bench::~record_bench()
{
    release_renderer_gl(r);
}

// ---- records --------------------------------------------------------------------

uint32_t record_bench::add_image(uint32_t texture)
{
    image_texture image = {};
    image.texture = texture;
    const uint32_t handle = table_add(d.image_texture_table, image);
    return table_add(d.object_table, object_reference{texture_image, handle, 1});
}

uint32_t record_bench::add_cube(uint32_t texture)
{
    cube_map cube = {};
    cube.texture = texture;
    const uint32_t handle = table_add(d.cube_map_table, cube);
    return table_add(d.object_table, object_reference{texture_cube, handle, 1});
}

uint32_t record_bench::add_moving(uint32_t texture, uint32_t function)
{
    dynamic_texture moving = {};
    moving.type = effect_2d_test;
    moving.width = moving.height = 64;
    moving.bpp = 8;
    moving.functions[0] = function;
    moving.texture = texture;
    moving.state = init_dynamic_texture(moving.type, moving.width, moving.height, moving.bpp);
    const uint32_t handle = table_add(d.dynamic_texture_table, moving);
    return table_add(d.object_table, object_reference{texture_dynamic, handle, 1});
}

uint32_t record_bench::add_values(const std::array<float, 9>& values)
{
    value_record record = {};
    std::copy(values.begin(), values.end(), record.values);
    return table_add(d.transform_table, record);
}

uint32_t record_bench::add_time(float slope)
{
    return add_function(content, linear_function(slope));
}

material_record& record_bench::add_material(uint32_t* handle)
{
    constexpr float color[4] = {0.25f, 0.5f, 0.75f, 1.0f};
    material_record material = {};
    material.blend_function = 2;
    std::copy_n(color, 4, material.color);
    const uint32_t made = table_add(d.material_table, material);
    if (handle != nullptr)
        *handle = made;
    return *table_get(d.material_table, made);
}

void record_bench::give_program(material_record& material, uint32_t name)
{
    shader_program& program = *new_shader_program();
    program.program = name;
    program.position_location = 1;
    program.normal_location = 2;
    program.projection_location = 11;
    program.modelview_location = 12;
    program.normal_matrix_location = 13;
    program.texture_matrix_location = 14;
    for (int32_t i = 0; i < 2; ++i)
        program.light_position_location[i] = 15 + i;
    for (int32_t i = 0; i < 3; ++i)
        program.texcoord_location[i] = 3 + i;
    for (int32_t i = 0; i < static_cast<int32_t>(user_uniform_count); ++i)
        program.uniform_locations[i] = 21 + i;
    material.program = &program;
}

static const float triangle_positions[9] = {1, 2, 3, 4, 2, 3, 1, 5, 3};
static const float triangle_normals[9] = {0, 0, 1, 0, 1, 0, 1, 0, 0};
static const float triangle_sets[3][6] = {{1, 0.5f, 0, 0.5f, 0, 0}, {2, 0.5f, 0, 0.5f, 0, 0}, {3, 0.5f, 0, 0.5f, 0, 0}};
static const uint16_t triangle_indices[3] = {0, 1, 2};

uint32_t record_bench::add_triangle(uint32_t sets)
{
    mesh_record mesh = {};
    mesh.data = static_cast<uint8_t*>(std::malloc(
        sizeof triangle_positions + sizeof triangle_normals + sizeof triangle_sets + sizeof triangle_indices));
    float* at = reinterpret_cast<float*>(mesh.data);
    mesh.arrays.vertex_count = 3;
    mesh.arrays.index_count = 3;
    mesh.arrays.texcoord_sets = sets;
    mesh.arrays.positions = at;
    at = std::copy(std::begin(triangle_positions), std::end(triangle_positions), at);
    mesh.arrays.normals = at;
    at = std::copy(std::begin(triangle_normals), std::end(triangle_normals), at);
    for (uint32_t set = 0; set < sets; ++set) {
        mesh.arrays.texcoords[set] = at;
        at = std::copy(std::begin(triangle_sets[set]), std::end(triangle_sets[set]), at);
    }
    mesh.arrays.indices = reinterpret_cast<uint16_t*>(at);
    std::copy(std::begin(triangle_indices), std::end(triangle_indices), mesh.arrays.indices);
    return table_add(d.mesh_table, mesh);
}

mesh_arrays& record_bench::arrays(uint32_t mesh)
{
    return table_get(d.mesh_table, mesh)->arrays;
}

scene_object record_bench::object(object_kind kind, uint32_t object, uint32_t material)
{
    return object_at_origin(kind, object, material);
}

uint32_t record_bench::add_scene(const std::vector<scene_object>& objects)
{
    return ::add_scene(content, objects);
}

scene_object record_bench::bare_object(uint32_t mesh)
{
    font_record font = {};
    font.glyphs[0] = {mesh, 0, 0, 0.0f, 0.0f};
    scene_object letter = object(object_text, 0, 0);
    letter.font = table_add(d.font_table, font);
    std::snprintf(letter.text, sizeof letter.text, "a");
    return letter;
}

// ---- work -----------------------------------------------------------------------

static uint32_t handle_of(const document& d, const material_record& material)
{
    for (auto [handle, record] : d.material_table)
        if (&record == &material)
            return handle;
    return 0;
}

static void apply(record_bench& b, const material_record& material, uint32_t sets, bool glsl)
{
    uint32_t& scene = b.triangle_scene[sets];
    if (scene == 0)
        scene = b.add_scene({b.object(object_model, b.add_triangle(sets), 0)});
    table_get(b.d.scene_table, scene)->objects[0].material = handle_of(b.d, material);
    b.draw(scene, glsl);
}

void record_bench::apply_fixed(const material_record& material, uint32_t sets)
{
    apply(*this, material, sets, false);
}

void record_bench::apply_glsl(const material_record& material, uint32_t sets)
{
    apply(*this, material, sets, true);
}

void record_bench::draw(uint32_t scene, bool glsl)
{
    frame_layers layers = {};
    layers.layer_count = 1;
    layers.layers[0] = layer;
    layers.layers[0].time = time;
    layers.layers[0].model_id = scene;
    std::copy_n(camera, 3, layers.layers[0].rotation);
    draw_layers(d, layers, view, caps, glsl, r);
}

uint32_t record_bench::compose(bool glsl)
{
    return compose_frame(d, time, view, caps, glsl, r);
}

// ---- reading lists --------------------------------------------------------------

// How many arguments a combiner function reads.
static uint32_t argument_count(const std::string& function)
{
    if (function == "GL_REPLACE")
        return 1;
    return function == "GL_INTERPOLATE" || function == "GL_MODULATE_ADD_ATI" ? 3 : 2;
}

static std::string combiner_half(std::map<std::string, std::string>& state, const std::string& half)
{
    const std::string function = state["GL_COMBINE_" + half];
    const bool four = state["GL_TEXTURE_ENV_MODE"] == "GL_COMBINE4_NV";
    std::string text = function + "(";
    for (uint32_t i = 0; i < (four ? 4 : argument_count(function)); ++i) {
        const std::string end = std::to_string(i) + "_" + half + (i == 3 ? "_NV" : "");
        text += (i == 0 ? "" : ", ") + state["GL_SOURCE" + end] + "." + state["GL_OPERAND" + end];
    }
    return text + ")";
}

std::string combiner_state(const std::string& calls, uint32_t unit)
{
    const std::string selecting = "glActiveTexture(";
    const std::string selected = selecting + "GL_TEXTURE" + std::to_string(unit) + ")";
    std::map<std::string, std::string> state;
    std::istringstream lines(calls);
    bool active = false;
    for (std::string line; std::getline(lines, line);) {
        if (line.starts_with(selecting))
            active = line == selected;
        const size_t first = line.find(", ");
        const size_t second = line.rfind(", ");
        if (active && line.starts_with("glTexEnvi(") && first != second)
            state[line.substr(first + 2, second - first - 2)] = line.substr(second + 2, line.size() - second - 3);
    }
    return state["GL_TEXTURE_ENV_MODE"] + ": " + combiner_half(state, "RGB") + "; " + combiner_half(state, "ALPHA");
}

std::string without(const std::string& calls, std::string_view word)
{
    std::string kept;
    std::istringstream lines(calls);
    for (std::string line; std::getline(lines, line);)
        if (line.find(word) == std::string::npos)
            kept += line + "\n";
    return kept;
}
