// What can only be seen before any material was applied: the first file of the program.
#include "record_bench.h"

#include "render/material_gl.h"
#include "render/matrix.h"
#include "render/scene_gl.h"

#include <doctest/doctest.h>

TEST_CASE("as long as no material has chosen a program, the shader path draws by the fixed pipeline")
{
    REQUIRE(current_program().state == program_never);
    begin_gl_recording();
    init_matrices();
    test_document content;
    gl_caps caps = initial_caps;
    float corner[3] = {1, 2, 3};
    uint16_t indices[3] = {0, 0, 0};
    mesh_effect effect = {};
    effect.type = mesh_effect_kind_count; // one that keeps still
    effect.mesh.vertex_count = 1;
    effect.mesh.index_count = 3;
    effect.mesh.positions = corner;
    effect.mesh.indices = indices;
    const uint32_t handle = table_add(content.d.effect_table, effect);
    scene_object object = {};
    object.type = object_genmesh;
    object.object = handle;
    object.values[6].value = object.values[7].value = object.values[8].value = 1.0f;
    scene_record scene = {};
    scene.object_count = 1;
    scene.objects = &object;
    const uint32_t shown = table_add(content.d.scene_table, scene);

    draw_model(shown, {.d = &content.d, .caps = &caps, .glsl = true, .time = 0, .rotation = {0, 0, 0}});
    CHECK(take_gl_calls() == R"(
glEnableClientState(GL_VERTEX_ARRAY)
glVertexPointer(3, GL_FLOAT, 0, [1 2 3])
glMatrixMode(GL_MODELVIEW)
glLoadMatrixf([1 0 0 0 0 1 0 0 0 0 1 0 0 0 0 1])
glDrawElements(GL_TRIANGLES, 3, GL_UNSIGNED_SHORT, [0 0 0])
glMatrixMode(GL_MODELVIEW)
glLoadMatrixf([1 0 0 0 0 1 0 0 0 0 1 0 0 0 0 1])
glDisableClientState(GL_NORMAL_ARRAY)
glDisableClientState(GL_VERTEX_ARRAY)
)");
    table_get(content.d.effect_table, handle)->mesh = {}; // they were borrowed
    table_get(content.d.scene_table, shown)->objects = nullptr;
}
