// Small documents whose drawing is recorded: what the tests of this folder share.
//
// A bench owns its document; its records carry OpenGL names given here (no object is
// made). It starts with a driver that has forgotten everything and a renderer that knows
// nothing of OpenGL's state and has never applied a material. What it draws it remembers:
// calls that would change nothing are left out of the next list.
#pragma once

#include "builders.h"
#include "model/capabilities.h"
#include "model/document.h"
#include "recording_gl.h"
#include "render/compositor_gl.h"

#include <array>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

struct record_bench {
    test_document content;
    document& d = content.d;
    gl_caps caps = {0, 0, 1, 0xFF, 3, 0, 0, 0, 0, 0}; // any size, three units, no extension
    gl_answers& answers;
    uint32_t time = 0;
    float camera[3] = {0, 0, 0};                       // the layer's rotations about x, y, z
    frame_view view = {800, 600, 1.25f, {0, 0, 0, 0}}; // of compose
    layer_plan layer = {};                             // of draw: depth test, the projection in force, no clear
    renderer r;                                        // what drawing remembers
    uint32_t triangle_scene[4] = {};                   // of apply_*, by number of coordinate sets; 0: none yet

    record_bench();
    ~record_bench();
    record_bench(const record_bench&) = delete;
    record_bench& operator=(const record_bench&) = delete;

    // ---- records; handles unless said otherwise ----
    uint32_t add_image(uint32_t texture);                     // section 10's reference to a picture of that name
    uint32_t add_cube(uint32_t texture);                      // the same for a cube map
    uint32_t add_moving(uint32_t texture, uint32_t function); // an 8-bit ramp of 64 x 64
    uint32_t add_values(const std::array<float, 9>& values);
    uint32_t add_time(float slope = 1.0f); // a function: slope x ticks

    // Replaces what is there (blend function 2), colour (0.25, 0.5, 0.75, 1), all else zero.
    material_record& add_material(uint32_t* handle = nullptr);

    // A program of name 50 for a material, with locations Position 1, Normal 2, TexCoordIn1..3
    // 3..5; Projection 11, Modelview 12, NormalMatrix 13, TextureMatrix 14, LightPosition1
    // and 2 15 and 16, u1.. 21...
    void give_program(material_record& material, uint32_t name = 50);

    // One triangle: positions from (1, 2, 3) on, normals from (0, 0, 1), set k from (k, 0.5).
    uint32_t add_triangle(uint32_t sets = 1);
    mesh_arrays& arrays(uint32_t mesh);

    // An object at the origin, unscaled.
    scene_object object(object_kind kind, uint32_t object, uint32_t material);
    uint32_t add_scene(const std::vector<scene_object>& objects);

    // An object that draws a mesh without a material: with what stands.
    scene_object bare_object(uint32_t mesh);

    // ---- work; the calls so far are left in the list ----
    // A frame of one triangle, the same for each number of sets, with a material of the
    // bench (null materials: bare_object).
    void apply_fixed(const material_record& material, uint32_t sets = 3);
    void apply_glsl(const material_record& material, uint32_t sets = 3);
    // A frame of one layer that shows a scene.
    void draw(uint32_t scene, bool glsl);
    uint32_t compose(bool glsl = false);
};

// What a list's glTexEnvi calls make of one unit's combiner, as the last call of each
// parameter says while the unit is the active one: "MODE: FUNCTION(SOURCE.OPERAND, ...);
// FUNCTION(...)", the colour and the alpha, each with the arguments that its function reads.
std::string combiner_state(const std::string& calls, uint32_t unit);

// A list without the lines that have `word` in them.
std::string without(const std::string& calls, std::string_view word);
