// A window with an OpenGL context, and small scenes drawn into it: what the tests of
// the drawing side share.
//
// The window is opened once per program. A drawing_window owns its document; OpenGL objects
// stay until the program ends. Reading a picture checks that OpenGL reports no error.
#pragma once

#include "builders.h"
#include "model/capabilities.h"
#include "model/document.h"
#include "render/compositor_gl.h"

#include <cstdint>
#include <vector>

constexpr int window_width = 160;
constexpr int window_height = 120;

struct rgb {
    int red;
    int green;
    int blue;
};

// Rows from the bottom up, three bytes a pixel.
struct picture {
    std::vector<uint8_t> bytes;
};

rgb pixel_at(const picture& p, int x, int y);
rgb center_of(const picture& p);
bool is_near(const rgb& a, const rgb& b, int tolerance);

// The greatest difference of any byte, and the mean over all bytes.
int greatest_difference(const picture& a, const picture& b);
double mean_difference(const picture& a, const picture& b);

// ---- the window -----------------------------------------------------------------

void open_test_window();   // the first call opens it
void forget_state();       // OpenGL's state is again what the player's display set-up leaves
renderer& test_renderer(); // what drawing remembers, until forget_state
picture read_window();
gl_caps driver_caps(); // buffers off
texture_format_table driver_formats();

// ---- records ----------------------------------------------------------------------

struct drawing_window {
    test_document content;
    document& d = content.d;
    gl_caps caps;
    float camera[3] = {0, 0, 0}; // rotations about x, y, z
    bool perspective = false;    // else (0, 0) is top left, (1, 1) bottom right, z -1..1
    uint32_t time = 0;
    rgb background = {0, 0, 0};
    int last_path = -1; // of the last draw: 0 fixed, 1 shaders

    drawing_window(); // opens the window
    drawing_window(const drawing_window&) = delete;
    drawing_window& operator=(const drawing_window&) = delete;

    // References (object_table) to pictures of one colour, or of four.
    uint32_t add_texture(const float color[4]);
    uint32_t add_checkered_texture();
    uint32_t add_cube_map();

    // A square from (0, 0) to (1, 1) at z = 0 with 1..3 coordinate sets; set n is
    // shifted by n quarters. A sphere of radius 1 around the origin.
    uint32_t add_quad(uint32_t texcoord_sets = 1);
    uint32_t add_sphere();

    uint32_t add_light(float ambient, float diffuse, const float position[3]);

    // White, blending "Replace", no depth test, no texture. The record.
    material_record& add_material(uint32_t* handle);

    // A scene of objects, each at the origin with scale 1.
    uint32_t add_scene(const std::vector<scene_object>& objects);
    scene_object object(object_kind kind, uint32_t object, uint32_t material);

    // Writes and builds the program of every material; false when a log is not empty.
    bool build_programs();

    // Clears, draws a scene on a path, reads the picture.
    picture draw(uint32_t scene, bool glsl);

    // The same on top of what is there.
    void draw_over(uint32_t scene, bool glsl);
    picture read();
};
