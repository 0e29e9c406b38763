// The recording driver itself, and the state that never changes again.
#include "recording_gl.h"

#include "shell/driver_gl.h"

#include <GL/glew.h>

#include <doctest/doctest.h>

TEST_CASE("the state that never changes is set once, with the black ambient light of the model")
{
    begin_gl_recording();
    set_unchanging_state_gl();
    CHECK(take_gl_calls() == R"(
glEnable(GL_DEPTH_TEST)
glDepthFunc(GL_LEQUAL)
glEnable(GL_BLEND)
glShadeModel(GL_SMOOTH)
glEnable(GL_COLOR_MATERIAL)
glLightModelfv(GL_LIGHT_MODEL_AMBIENT, [0 0 0 1])
glTexGeni(GL_S, GL_TEXTURE_GEN_MODE, GL_SPHERE_MAP)
glTexGeni(GL_T, GL_TEXTURE_GEN_MODE, GL_SPHERE_MAP)
glColorMaterial(GL_FRONT, GL_AMBIENT_AND_DIFFUSE)
)");
}

TEST_CASE("the recording driver reads pixels at the alignment in force")
{
    begin_gl_recording();
    const uint8_t rows[8] = {1, 2, 3, 0, 4, 5, 6, 0};
    glTexImage2D(GL_TEXTURE_2D, 0, GL_RGB, 1, 2, 0, GL_RGB, GL_UNSIGNED_BYTE, rows);
    glPixelStorei(GL_UNPACK_ALIGNMENT, 1);
    glTexImage2D(GL_TEXTURE_2D, 0, GL_RGB, 1, 2, 0, GL_RGB, GL_UNSIGNED_BYTE, rows);
    CHECK(take_gl_calls({"glTexImage2D"}) == R"(
glTexImage2D(GL_TEXTURE_2D, 0, GL_RGB, 1, 2, 0, GL_RGB, GL_UNSIGNED_BYTE, [1 2 3 4 5 6])
glTexImage2D(GL_TEXTURE_2D, 0, GL_RGB, 1, 2, 0, GL_RGB, GL_UNSIGNED_BYTE, [1 2 3 0 4 5])
)");
    CHECK(take_gl_calls() == "\n");
}

TEST_CASE("what the driver offers is asked for by name")
{
    gl_answers& answers = begin_gl_recording();
    answers.integers[GL_MAX_TEXTURE_UNITS] = 8;
    __GLEW_ATI_texture_env_combine3 = GL_TRUE;
    const driver_offer offer = ask_driver_gl();
    CHECK(take_gl_calls() == "\nglGetIntegerv(GL_MAX_TEXTURE_UNITS) = 8\n");
    CHECK(offer.texture_units == 8);
    CHECK(offer.version_2_1);
    CHECK(offer.shader_objects);
    CHECK(offer.ati_combine3);
    CHECK_FALSE(offer.nv_combine4);
}
