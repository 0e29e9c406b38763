// Small documents whose frames are advanced and planned, without OpenGL: what the tests of
// frames share.
//
// A bench owns its document and all that drawing remembers. Records carry OpenGL names given
// here. It begins as a program does: nothing has stepped, no material has been applied.
#pragma once

#include "builders.h"
#include "render/frame_advance.h"
#include "render/frame_plan.h"
#include "render/layer_plan.h"
#include "render/material_state.h"

#include <cstdint>
#include <initializer_list>
#include <string>
#include <vector>

struct frame_bench {
    test_document content;
    document& d = content.d;
    draw_context context = {&content.d, {0, 0, 1, 0xFF, 3, 0, 0, 0, 0, 0}, false}; // fixed path, no buffers
    frame_view view = {800, 600, 1.25f, {0, 0, 0, 0}};
    manipulator_tools tools = {};
    standing_state standing = initial_standing_state();
    frame f = {};

    frame_bench();
    ~frame_bench();
    frame_bench(const frame_bench&) = delete;
    frame_bench& operator=(const frame_bench&) = delete;
};

// ---- records; handles ---------------------------------------------------------------

// A reference (section 10) to a picture of that OpenGL name.
uint32_t add_image(frame_bench& b, uint32_t texture);
uint32_t add_cube(frame_bench& b, uint32_t texture);

// A reference to a picture of 64 x 64 x 8 bits that is computed: the test effect, whose first
// parameter is the function (0: none), so that it is another picture at every time.
uint32_t add_moving(frame_bench& b, uint32_t texture, uint32_t function);

// A light or a colour: nine constants.
uint32_t add_values(frame_bench& b, std::initializer_list<float> values);

// The time itself (times `slope`) as a function.
uint32_t add_time(frame_bench& b, float slope = 1.0f);

// Blending "Replace" (2), colour (0.25, 0.5, 0.75, 1), all else zero. The reference is good
// until the next one is added.
material_record& add_material(frame_bench& b, uint32_t* handle = nullptr);

// A program of that name with locations Position 1, Normal 2, TexCoordIn1..3 3..5;
// Projection 11, Modelview 12, NormalMatrix 13, TextureMatrix 14, LightPosition1 and 2 15
// and 16, u1.. 21...
shader_program& give_program(material_record& material, uint32_t name);

// A mesh of three vertices and more: vertex v at (v, 2 v, 3 v), all normals (0, 0, 1), set k
// of coordinates (k, v); one triangle of the first three.
uint32_t add_mesh(frame_bench& b, uint32_t vertices = 3, uint32_t texcoord_sets = 1, bool normals = true);
mesh_arrays& arrays_of(frame_bench& b, uint32_t mesh);

// A mesh effect whose first parameter is the function; freed with the bench.
uint32_t add_effect(frame_bench& b, mesh_effect_kind kind, uint32_t function);

// The next manipulator of an object; parameters beyond those given are 0.
manipulator_record& add_manipulator(
    scene_object& object, manipulator_kind kind, std::initializer_list<float> params = {});

// ---- layers ---------------------------------------------------------------------------

// A layer over what is there: no target, no clear, the projection stays, no rotation.
layer_plan layer_of(uint32_t scene, uint32_t time = 0);
frame_layers layers_of(const std::vector<layer_plan>& layers);

// The same of one scene with these objects.
frame_layers layers_of(frame_bench& b, const std::vector<scene_object>& objects, uint32_t time = 0);

// ---- steps ------------------------------------------------------------------------------

// Advances a frame, plans what was advanced, does both.
void advance(frame_bench& b, const frame_layers& layers);
void plan(frame_bench& b, const frame_layers& layers);
void advance_and_plan(frame_bench& b, const frame_layers& layers);

// The planned commands as text.
std::string planned_text(frame_bench& b, const frame_layers& layers);

// ---- what a frame has -----------------------------------------------------------------

// The vertices that a mesh (by its number in frame.meshes) is drawn with, three floats each;
// none where it has none.
std::vector<float> drawn_positions(const frame_bench& b, size_t mesh);
std::vector<float> drawn_normals(const frame_bench& b, size_t mesh);
