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

// The calls before the first mesh of a frame that is drawn again from what stood before its
// materials, as each tile of it is. Its second mesh has a material with all that can be left.
static std::string calls_of_first_mesh_again(bool glsl)
{
    record_bench b;
    uint32_t material = 0;
    material_record& m = b.add_material(&material);
    m.blend_function = blend_add;
    m.backface_culling = 1;
    m.wireframe = 1;
    m.linewidth = 3.0f;
    m.light1 = b.add_values({0.1f, 0.2f, 0.3f, 0.4f, 0.5f, 0.6f, 7, 8, 9});
    m.fogtype = fog_fastest;
    m.texture[0] = b.add_image(7);
    b.give_program(m);
    const uint32_t triangle = b.add_triangle();
    const uint32_t scene = b.add_scene({b.bare_object(triangle), b.object(object_model, triangle, material)});
    b.draw(scene, glsl);
    take_gl_calls();
    b.r.standing = initial_standing_state();
    b.draw(scene, glsl);
    const std::string calls = take_gl_calls({"glEnable", "glDisable", "glPolygonMode", "glLineWidth", "glColor4f",
        "glBlendFunc", "glUseProgram", "glDisableClientState", "glDisableVertexAttribArray", "glDrawElements"});
    return calls.substr(0, calls.find("glDrawElements"));
}

TEST_CASE("a frame that is drawn again from before any material has a new context's state again")
{
    CHECK(calls_of_first_mesh_again(false) == R"(
glDisable(GL_CULL_FACE)
glEnable(GL_DEPTH_TEST)
glPolygonMode(GL_FRONT_AND_BACK, GL_FILL)
glLineWidth(1)
glColor4f(1, 1, 1, 1)
glBlendFunc(GL_ONE, GL_ZERO)
glDisable(GL_LIGHTING)
glDisable(GL_FOG)
glDisable(GL_TEXTURE_2D)
glDisableClientState(GL_TEXTURE_COORD_ARRAY)
)");
    CHECK(calls_of_first_mesh_again(true) == R"(
glEnable(GL_DEPTH_TEST)
glBlendFunc(GL_ONE, GL_ZERO)
glDisable(GL_CULL_FACE)
glLineWidth(1)
glUseProgram(0)
glDisableVertexAttribArray(1)
glDisableVertexAttribArray(2)
glDisableVertexAttribArray(3)
glDisableVertexAttribArray(4)
glDisableVertexAttribArray(5)
)");
}
