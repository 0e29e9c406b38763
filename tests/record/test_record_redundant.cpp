// Whole frames tell OpenGL nothing that it knows.
#include "full_show.h"
#include "record_redundant.h"
#include "recording_gl.h"
#include "render/compositor_gl.h"

#include <doctest/doctest.h>

#include <string>
#include <vector>

namespace {

using lines = std::vector<std::string>;

} // namespace

// ---- the test's own eyes ------------------------------------------------------------------

TEST_CASE("a call changes nothing where the same was told before, in the same place")
{
    told_state state;
    CHECK(redundant_calls("\nglEnable(GL_FOG)\nglEnable(GL_FOG)\nglDisable(GL_FOG)\nglEnable(GL_FOG)\n", state)
        == lines{"glEnable(GL_FOG)"});
    CHECK(redundant_calls("glActiveTexture(GL_TEXTURE0)\nglBindTexture(GL_TEXTURE_2D, 7)\n"
                          "glActiveTexture(GL_TEXTURE1)\nglBindTexture(GL_TEXTURE_2D, 7)\n",
        state)
              .empty());
    CHECK(redundant_calls("glBindTexture(GL_TEXTURE_2D, 7)\n", state) == lines{"glBindTexture(GL_TEXTURE_2D, 7)"});
    CHECK(redundant_calls("glTexEnvi(GL_TEXTURE_ENV, GL_COMBINE_RGB, GL_ADD)\nglActiveTexture(GL_TEXTURE0)\n"
                          "glTexEnvi(GL_TEXTURE_ENV, GL_COMBINE_RGB, GL_ADD)\n"
                          "glTexEnvi(GL_TEXTURE_ENV, GL_COMBINE_RGB, GL_ADD)\n",
              state)
        == lines{"glTexEnvi(GL_TEXTURE_ENV, GL_COMBINE_RGB, GL_ADD)"});
    CHECK(redundant_calls("glFogf(GL_FOG_START, 1)\nglFogf(GL_FOG_END, 1)\nglFogf(GL_FOG_START, 1)\n", state)
        == lines{"glFogf(GL_FOG_START, 1)"});
}

TEST_CASE("matrices, samplers, uniforms and arrays belong to what is chosen at the moment")
{
    told_state state;
    const std::string matrices = "glMatrixMode(GL_MODELVIEW)\nglLoadMatrixf([1])\nglMatrixMode(GL_PROJECTION)\n"
                                 "glLoadMatrixf([1])\n";
    CHECK(redundant_calls(matrices, state).empty());
    CHECK(redundant_calls(matrices, state) == lines{"glLoadMatrixf([1])", "glLoadMatrixf([1])"});
    CHECK(redundant_calls("glLightfv(GL_LIGHT0, GL_POSITION, [1 2 3 1])\nglMatrixMode(GL_MODELVIEW)\n"
                          "glLoadMatrixf([2])\nglLightfv(GL_LIGHT0, GL_POSITION, [1 2 3 1])\n",
        state)
              .empty());
    CHECK(redundant_calls("glUseProgram(5)\nglUniform1f(1, 2)\nglUseProgram(6)\nglUniform1f(1, 2)\nglUseProgram(5)\n"
                          "glUniform1f(1, 2)\n",
              state)
        == lines{"glUniform1f(1, 2)"});
    const std::string array = "glVertexPointer(3, GL_FLOAT, 0, 0)\n";
    CHECK(
        redundant_calls(
            "glBindBuffer(GL_ARRAY_BUFFER, 4)\n" + array + "glBindBuffer(GL_ARRAY_BUFFER, 5)\n" + array + array, state)
        == lines{"glVertexPointer(3, GL_FLOAT, 0, 0)"});
}

TEST_CASE("current coordinates are nobody's after an array was drawn in their place")
{
    told_state state;
    const std::string origin = "glVertexAttrib4f(3, 0, 0, 0, 1)\n";
    const std::string draw = "glDrawElements(GL_TRIANGLES, 3, GL_UNSIGNED_SHORT, 0)\n";
    CHECK(redundant_calls(origin + draw + origin, state) == lines{"glVertexAttrib4f(3, 0, 0, 0, 1)"});
    CHECK(redundant_calls("glEnableVertexAttribArray(3)\n" + draw + origin, state).empty());
}

// ---- frames ---------------------------------------------------------------------------------

TEST_CASE("no call of a frame changes nothing: both paths, with and without buffers")
{
    for (const bool glsl : {false, true})
        for (const uint8_t buffers : {uint8_t{0}, uint8_t{1}}) {
            CAPTURE(glsl);
            CAPTURE(buffers);
            begin_gl_recording();
            frame_bench b;
            add_full_show(b, false);
            b.context.caps.vbo = b.context.caps.pbo = buffers;
            renderer r;
            told_state state;
            for (uint32_t time = 1; time < 4; ++time) {
                compose_frame(b.d, time, b.view, b.context.caps, glsl, r);
                const std::string calls = take_gl_calls();
                CAPTURE(time);
                CHECK(calls.size() > 10000);
                std::string redundant;
                for (const std::string& call : redundant_calls(calls, state))
                    redundant += call + "\n";
                CHECK(redundant == "");
            }
            release_renderer_gl(r);
        }
}
