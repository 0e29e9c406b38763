#include "drawing_window.h"

#include "content/matrix.h"
#include "render/shader_program_gl.h"
#include "render/shader_source.h"
#include "shell/driver_gl.h"
#include "texgen/cosine_table.h"

#include <GL/glew.h>

#include <SDL/SDL.h>

#include <doctest/doctest.h>

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>

#ifdef __SANITIZE_ADDRESS__
// What the window's library keeps for itself.
extern "C" const char* __lsan_default_suppressions()
{
    return "leak:libX11\n";
}
#endif

// ---- the window -----------------------------------------------------------------

void open_test_window()
{
    static bool opened = false;
    if (opened)
        return;
    opened = true;
    if (SDL_Init(SDL_INIT_VIDEO) != 0 || SDL_SetVideoMode(window_width, window_height, 24, SDL_OPENGL) == nullptr) {
        std::printf("cannot open a window: %s\n", SDL_GetError());
        std::exit(1);
    }
    // Never closed: the display takes the window back at the end, and a driver that is unloaded
    // before it would look like a leak of its own memory.
    glewInit();
    while (glGetError() != GL_NO_ERROR) { } // the loader of the entry points may leave one
    build_cosine_table();
    set_unchanging_state_gl();
    glPushAttrib(GL_ALL_ATTRIB_BITS);
    glPushClientAttrib(GL_CLIENT_ALL_ATTRIB_BITS);
}

renderer& test_renderer()
{
    static renderer r;
    return r;
}

void forget_state()
{
    release_renderer_gl(test_renderer());
    glUseProgram(0);
    glPopAttrib();
    glPopClientAttrib();
    glPushAttrib(GL_ALL_ATTRIB_BITS);
    glPushClientAttrib(GL_CLIENT_ALL_ATTRIB_BITS);
    // The lit material follows the colour as it is set, not as it is taken back.
    float set[4];
    glColor4f(0.0f, 0.0f, 0.0f, 1.0f);
    glGetFloatv(GL_CURRENT_COLOR, set);
    glColor4f(1.0f, 1.0f, 1.0f, 1.0f);
    CHECK(glGetError() == GL_NO_ERROR);
}

picture read_window()
{
    picture p;
    p.bytes.resize(static_cast<size_t>(window_width) * window_height * 3);
    glPixelStorei(GL_PACK_ALIGNMENT, 1);
    glReadPixels(0, 0, window_width, window_height, GL_RGB, GL_UNSIGNED_BYTE, p.bytes.data());
    CHECK(glGetError() == GL_NO_ERROR);
    return p;
}

gl_caps driver_caps()
{
    gl_caps caps = initial_caps;
    GLint units = 0;
    glGetIntegerv(GL_MAX_TEXTURE_UNITS, &units);
    caps.texture_units = static_cast<uint8_t>(std::min(units, 4));
    caps.npot = 1;
    caps.nv_combine4 = GLEW_NV_texture_env_combine4 ? 1 : 0;
    caps.ati_combine3 = GLEW_ATI_texture_env_combine3 && caps.nv_combine4 == 0 ? 1 : 0;
    return caps;
}

texture_format_table driver_formats()
{
    if (!GLEW_ARB_texture_compression)
        return {{GL_RGB, GL_RGBA, GL_LUMINANCE, GL_LUMINANCE_ALPHA, GL_RGB, GL_RGBA, GL_LUMINANCE, GL_LUMINANCE_ALPHA,
            GL_RGB}};
    return {{GL_RGB, GL_RGBA, GL_LUMINANCE, GL_LUMINANCE_ALPHA, GL_COMPRESSED_RGB, GL_COMPRESSED_RGBA,
        GL_COMPRESSED_LUMINANCE, GL_COMPRESSED_LUMINANCE_ALPHA, GL_RGB}};
}

drawing_window::drawing_window()
    : caps{}
{
    open_test_window();
    forget_state();
    caps = driver_caps();
}

// ---- pictures -------------------------------------------------------------------

rgb pixel_at(const picture& p, int x, int y)
{
    const uint8_t* at = p.bytes.data() + static_cast<size_t>(y * window_width + x) * 3;
    return {at[0], at[1], at[2]};
}

rgb center_of(const picture& p)
{
    return pixel_at(p, window_width / 2, window_height / 2);
}

bool is_near(const rgb& a, const rgb& b, int tolerance)
{
    return std::abs(a.red - b.red) <= tolerance && std::abs(a.green - b.green) <= tolerance
        && std::abs(a.blue - b.blue) <= tolerance;
}

int greatest_difference(const picture& a, const picture& b)
{
    int greatest = 0;
    for (size_t i = 0; i < a.bytes.size(); ++i)
        greatest = std::max(greatest, std::abs(a.bytes[i] - b.bytes[i]));
    return greatest;
}

double mean_difference(const picture& a, const picture& b)
{
    double sum = 0;
    for (size_t i = 0; i < a.bytes.size(); ++i)
        sum += std::abs(a.bytes[i] - b.bytes[i]);
    return sum / static_cast<double>(a.bytes.size());
}

// ---- records --------------------------------------------------------------------

static uint32_t upload(GLenum target, const std::vector<uint8_t>& pixels, int side)
{
    GLuint name = 0;
    glActiveTexture(GL_TEXTURE0);
    glGenTextures(1, &name);
    glBindTexture(target, name);
    glTexParameteri(target, GL_TEXTURE_MIN_FILTER, GL_NEAREST);
    glTexParameteri(target, GL_TEXTURE_MAG_FILTER, GL_NEAREST);
    if (target == GL_TEXTURE_2D)
        glTexImage2D(target, 0, GL_RGBA, side, side, 0, GL_RGBA, GL_UNSIGNED_BYTE, pixels.data());
    else
        for (GLenum face = 0; face < 6; ++face)
            glTexImage2D(GL_TEXTURE_CUBE_MAP_POSITIVE_X + face, 0, GL_RGBA, 1, 1, 0, GL_RGBA, GL_UNSIGNED_BYTE,
                pixels.data() + face * 4);
    return name;
}

static uint32_t add_image_reference(drawing_window& b, uint32_t texture)
{
    image_texture image = {};
    image.texture = texture;
    const uint32_t handle = table_add(b.d.image_texture_table, image);
    return table_add(b.d.object_table, object_reference{texture_image, handle, 1});
}

uint32_t drawing_window::add_texture(const float color[4])
{
    std::vector<uint8_t> pixels(16);
    for (size_t i = 0; i < pixels.size(); ++i)
        pixels[i] = static_cast<uint8_t>(std::lround(color[i % 4] * 255.0f));
    return add_image_reference(*this, upload(GL_TEXTURE_2D, pixels, 2));
}

uint32_t drawing_window::add_checkered_texture()
{
    const std::vector<uint8_t> pixels = {255, 0, 0, 255, 0, 255, 0, 128, 0, 0, 255, 64, 200, 180, 40, 255};
    return add_image_reference(*this, upload(GL_TEXTURE_2D, pixels, 2));
}

uint32_t drawing_window::add_cube_map()
{
    const std::vector<uint8_t> pixels
        = {255, 0, 0, 255, 0, 255, 255, 255, 0, 255, 0, 255, 255, 0, 255, 255, 0, 0, 255, 255, 255, 255, 0, 255};
    cube_map cube = {};
    cube.texture = upload(GL_TEXTURE_CUBE_MAP, pixels, 1);
    const uint32_t handle = table_add(d.cube_map_table, cube);
    return table_add(d.object_table, object_reference{texture_cube, handle, 1});
}

// The arrays of a mesh, put where the record's one block owns them.
static uint32_t add_mesh(drawing_window& b, const std::vector<float>& positions, const std::vector<float>& normals,
    const std::vector<std::vector<float>>& sets, const std::vector<uint16_t>& indices)
{
    size_t floats = positions.size() + normals.size();
    for (const std::vector<float>& set : sets)
        floats += set.size();
    mesh_record mesh = {};
    mesh.data = static_cast<uint8_t*>(std::malloc(floats * sizeof(float) + indices.size() * sizeof(uint16_t)));
    float* at = reinterpret_cast<float*>(mesh.data);
    const auto put = [&at](const std::vector<float>& values) {
        float* start = at;
        at = std::copy(values.begin(), values.end(), at);
        return start;
    };
    mesh.arrays.vertex_count = static_cast<uint32_t>(positions.size() / 3);
    mesh.arrays.index_count = static_cast<uint32_t>(indices.size());
    mesh.arrays.texcoord_sets = static_cast<uint32_t>(sets.size());
    mesh.arrays.positions = put(positions);
    for (size_t i = 0; i < sets.size(); ++i)
        mesh.arrays.texcoords[i] = put(sets[i]);
    mesh.arrays.normals = put(normals);
    mesh.arrays.indices = reinterpret_cast<uint16_t*>(at);
    std::copy(indices.begin(), indices.end(), mesh.arrays.indices);
    return table_add(b.d.mesh_table, mesh);
}

uint32_t drawing_window::add_quad(uint32_t texcoord_sets)
{
    const std::vector<float> corners = {0, 0, 1, 0, 1, 1, 0, 1};
    std::vector<float> positions;
    std::vector<float> normals;
    for (size_t i = 0; i < 4; ++i) {
        positions.insert(positions.end(), {corners[i * 2], corners[i * 2 + 1], 0.0f});
        normals.insert(normals.end(), {0.0f, 0.0f, 1.0f});
    }
    std::vector<std::vector<float>> sets(texcoord_sets, corners);
    for (size_t set = 0; set < sets.size(); ++set)
        for (float& c : sets[set])
            c += 0.25f * static_cast<float>(set);
    return add_mesh(*this, positions, normals, sets, {0, 1, 2, 0, 2, 3});
}

uint32_t drawing_window::add_sphere()
{
    constexpr int rings = 24;
    constexpr int sides = 32;
    std::vector<float> positions;
    std::vector<float> texcoords;
    std::vector<uint16_t> indices;
    for (int ring = 0; ring <= rings; ++ring) {
        for (int side = 0; side <= sides; ++side) {
            const double a = 3.14159265358979 * ring / rings;
            const double b = 2 * 3.14159265358979 * side / sides;
            positions.insert(positions.end(),
                {static_cast<float>(std::sin(a) * std::cos(b)), static_cast<float>(std::cos(a)),
                    static_cast<float>(std::sin(a) * std::sin(b))});
            texcoords.insert(
                texcoords.end(), {static_cast<float>(side) * 4.0f / sides, static_cast<float>(ring) * 2.0f / rings});
        }
    }
    for (int ring = 0; ring < rings; ++ring) {
        for (int side = 0; side < sides; ++side) {
            const uint16_t k = static_cast<uint16_t>(ring * (sides + 1) + side);
            const uint16_t below = static_cast<uint16_t>(k + sides + 1);
            for (const int i : {k + 0, k + 1, below + 1, k + 0, below + 1, below + 0})
                indices.push_back(static_cast<uint16_t>(i));
        }
    }
    return add_mesh(*this, positions, positions, {texcoords}, indices);
}

uint32_t drawing_window::add_light(float ambient, float diffuse, const float position[3])
{
    value_record record = {};
    for (uint32_t i = 0; i < 3; ++i) {
        const float tint = 1.0f - 0.2f * static_cast<float>(i);
        record.values[i] = ambient * tint;
        record.values[3 + i] = diffuse * tint;
        record.values[6 + i] = position[i];
    }
    return table_add(d.transform_table, record);
}

material_record& drawing_window::add_material(uint32_t* handle)
{
    material_record material = {};
    material.blend_function = 2;
    std::fill_n(material.color, 4, 1.0f);
    material.linewidth = 1.0f;
    *handle = table_add(d.material_table, material);
    return *table_get(d.material_table, *handle);
}

scene_object drawing_window::object(object_kind kind, uint32_t object, uint32_t material)
{
    return object_at_origin(kind, object, material);
}

uint32_t drawing_window::add_scene(const std::vector<scene_object>& objects)
{
    return ::add_scene(content, objects);
}

// ---- drawing --------------------------------------------------------------------

bool drawing_window::build_programs()
{
    bool silent = true;
    for (auto [handle, material] : d.material_table) {
        shader_unit units[texture_unit_count];
        resolve_shader_units(material, d.object_table, d.texture_table, d.image_texture_table, d.dynamic_texture_table,
            d.cube_map_table, units);
        generate_shader(material, d.transform_table, units);
        build_shader(material, units);
        silent &= std::strcmp(material.program->info_log, "VS:\nFS:") == 0 && material.program->program != 0;
    }
    return silent;
}

// The camera goes round the origin: it is moved first and turned then, which a layer says
// the other way round.
static void place_camera(const float camera[3], layer_plan& layer)
{
    float turn[16];
    copy_matrix(identity, turn);
    rotate_y(turn, -camera[1]);
    rotate_x(turn, -camera[0]);
    rotate_z(turn, -camera[2]);
    constexpr float place[3] = {0.3f, -0.2f, -3.0f};
    transform_point(turn, place, layer.position);
}

void drawing_window::draw_over(uint32_t scene, bool glsl)
{
    if (last_path != -1 && last_path != (glsl ? 1 : 0))
        forget_state(); // tests change paths where a run of the player has one
    last_path = glsl ? 1 : 0;
    frame_layers layers = {};
    layers.layer_count = 1;
    layer_plan& layer = layers.layers[0];
    layer.time = time;
    layer.model_id = scene;
    layer.depth_test = 1;
    layer.projection = perspective ? projection_perspective : projection_orthographic;
    layer.fov = 60.0f;
    layer.aspect = 4.0f / 3.0f;
    layer.far_distance = 100.0f;
    std::copy_n(camera, 3, layer.rotation);
    if (perspective)
        place_camera(camera, layer);
    forget_objects(test_renderer().gl); // the bench has made some
    const frame_view view = {window_width, window_height, 4.0f / 3.0f};
    draw_layers(d, layers, view, caps, glsl, test_renderer());
}

picture drawing_window::read()
{
    return read_window();
}

picture drawing_window::draw(uint32_t scene, bool glsl)
{
    glViewport(0, 0, window_width, window_height);
    glClearColor(static_cast<float>(background.red) / 255.0f, static_cast<float>(background.green) / 255.0f,
        static_cast<float>(background.blue) / 255.0f, 1.0f);
    glClear(GL_COLOR_BUFFER_BIT | GL_DEPTH_BUFFER_BIT);
    draw_over(scene, glsl);
    return read();
}
