// What is drawn before any material was applied.
#include "record_bench.h"

#include <doctest/doctest.h>

TEST_CASE("as long as no material has chosen a program, the shader path draws by the fixed pipeline")
{
    record_bench b;
    float corner[3] = {1, 2, 3};
    uint16_t indices[3] = {0, 0, 0};
    mesh_effect effect = {};
    effect.type = mesh_effect_kind_count; // one that keeps still
    effect.mesh.vertex_count = 1;
    effect.mesh.index_count = 3;
    effect.mesh.positions = corner;
    effect.mesh.indices = indices;
    const uint32_t handle = table_add(b.d.effect_table, effect);
    const uint32_t scene = b.add_scene({b.object(object_genmesh, handle, 0)});
    REQUIRE(b.r.standing.program.status == program_never);

    b.draw(scene, true);
    CHECK(take_gl_calls() == R"(
glMatrixMode(GL_PROJECTION)
glLoadMatrixf([1 0 0 0 0 1 0 0 0 0 1 0 0 0 0 1])
glMatrixMode(GL_MODELVIEW)
glDisableClientState(GL_NORMAL_ARRAY)
glEnableClientState(GL_VERTEX_ARRAY)
glVertexPointer(3, GL_FLOAT, 0, [1 2 3])
glEnable(GL_DEPTH_TEST)
glLoadMatrixf([1 0 0 0 0 1 0 0 0 0 1 0 0 0 0 1])
glDrawElements(GL_TRIANGLES, 3, GL_UNSIGNED_SHORT, [0 0 0])
)");
    b.layer.depth_test = 0;
    b.draw(scene, true);
    CHECK(take_gl_calls() == R"(
glDisable(GL_DEPTH_TEST)
glDrawElements(GL_TRIANGLES, 3, GL_UNSIGNED_SHORT, [0 0 0])
)");
    table_get(b.d.effect_table, handle)->mesh = {}; // they were borrowed
}
