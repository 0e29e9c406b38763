// The calls that a frame is: targets, clears, projections, cameras, in their order.
#include "record_bench.h"

#include "render/compositor_gl.h"

#include <doctest/doctest.h>

#include <cstdlib>

// A layer with a field of view of 90 degrees that shows an empty scene.
static layer_record wide_layer(record_bench& b, uint32_t type)
{
    layer_record layer = make_layer(type, 1000, add_scene(b.content));
    layer.camera[camera_fov] = 90.0f;
    return layer;
}

static uint32_t add_target(record_bench& b, uint32_t texture, uint32_t width, uint32_t height)
{
    const uint32_t handle = add_image_texture(b.content, width, height);
    table_get(b.d.image_texture_table, handle)->texture = texture;
    return handle;
}

// The lists without what every layer has at its end.
static std::string take_layers()
{
    return take_gl_calls({"glActiveTexture", "glBindTexture", "glTexParameteri", "glCopyTexSubImage2D",
        "glDeleteTextures", "glGenTextures", "glTexImage2D", "glViewport", "glClear"});
}

// ---- one layer ------------------------------------------------------------------

TEST_CASE("a layer is target, clear, projection, clear colour, camera, in this order")
{
    record_bench b;
    layer_record layer = wide_layer(b, render_simple);
    layer.clearcolor = add_color(b.content, 0.25f, 0.5f, 0.75f);
    layer.camera[camera_x] = 1.0f;
    layer.camera[camera_x + 1] = 2.0f;
    layer.camera[camera_x + 2] = 3.0f;
    for (uint32_t i = 0; i < 3; ++i)
        layer.camera[camera_rotation_x + i] = 90.0f;
    add_layer(b.content, 0, layer);
    CHECK(b.compose() == 1);
    // Perspective: 1 / 1.25; -(100 + 0.1) / (100 - 0.1); -2 x 100 x 0.1 / (100 - 0.1).
    // Camera: Rz Rx Ry, then the translation: x to -x, y to z, z to y.
    CHECK(take_gl_calls() == R"(
glViewport(0, 0, 800, 600)
glClear(GL_COLOR_BUFFER_BIT | GL_DEPTH_BUFFER_BIT)
glEnable(GL_DEPTH_TEST)
glMatrixMode(GL_PROJECTION)
glLoadMatrixf([0.8 0 0 0 0 1 0 0 0 0 -1.002 -1 0 0 -0.2002 0])
glMatrixMode(GL_MODELVIEW)
glClearColor(0.25, 0.5, 0.75, 1)
glMatrixMode(GL_MODELVIEW)
glLoadMatrixf([-1 0 0 0 0 0 1 0 0 1 0 0 -1 3 2 1])
)");
}

TEST_CASE("each layer's camera begins at the origin, each frame's too")
{
    record_bench b;
    layer_record layer = wide_layer(b, render_simple);
    layer.camera[camera_x] = 1.0f;
    add_layer(b.content, 0, layer);
    layer = wide_layer(b, render_link);
    layer.camera[camera_x + 1] = 2.0f;
    add_layer(b.content, 1, layer);
    for (uint32_t frame = 0; frame < 2; ++frame) {
        b.compose();
        CHECK(take_gl_calls({"glLoadMatrixf"}) == R"(
glLoadMatrixf([0.8 0 0 0 0 1 0 0 0 0 -1.002 -1 0 0 -0.2002 0])
glLoadMatrixf([1 0 0 0 0 1 0 0 0 0 1 0 1 0 0 1])
glLoadMatrixf([1 0 0 0 0 1 0 0 0 0 1 0 0 2 0 1])
)");
    }
}

TEST_CASE("an orthographic layer has no depth test and y down")
{
    record_bench b;
    layer_record layer = wide_layer(b, render_simple);
    layer.camera_mode[camera_fov] = fov_orthographic;
    add_layer(b.content, 0, layer);
    b.compose();
    CHECK(take_gl_calls({"glEnable", "glDisable", "glLoadMatrixf"}) == R"(
glDisable(GL_DEPTH_TEST)
glLoadMatrixf([2 0 0 0 0 -2 0 0 0 0 -1 0 -1 1 0 1])
glLoadMatrixf([1 0 0 0 0 1 0 0 0 0 1 0 0 0 0 1])
)");
}

TEST_CASE("the scene is drawn last, at the layer's function time, facing the layer's camera")
{
    record_bench b;
    uint32_t material = 0;
    material_record& m = b.add_material(&material);
    m.color[0] = static_cast<float>(b.add_time(0.01f));
    m.color_dynamic[0] = 1;
    m.texture[0] = b.add_image(7);
    m.rotation[0] = 1; // by the rotation about y
    layer_record layer = wide_layer(b, render_simple);
    layer.offset = 25;
    layer.camera[camera_rotation_x + 1] = 90.0f;
    layer.model_id = b.add_scene({b.object(object_model, b.add_triangle(1), material)});
    table_get(b.d.scene_table, layer.model_id)->camera_facing[0] = 128;
    add_layer(b.content, 0, layer);
    b.time = 50;
    CHECK(b.compose() == 1);
    // Facing the camera undoes its turn: the copy's matrix is the identity.
    CHECK(take_gl_calls({"glClearColor", "glColor4f", "glLoadMatrixf", "glDrawElements"}) == R"(
glLoadMatrixf([0.8 0 0 0 0 1 0 0 0 0 -1.002 -1 0 0 -0.2002 0])
glClearColor(0, 0, 0, 1)
glLoadMatrixf([0 0 -1 0 0 1 0 0 1 0 0 0 0 0 0 1])
glColor4f(0.75, 0.5, 0.75, 1)
glLoadMatrixf([0 -1 0 0 1 0 0 0 0 0 1 0 0 1 0 1])
glLoadMatrixf([1 0 0 0 0 1 0 0 0 0 1 0 0 0 0 1])
glDrawElements(GL_TRIANGLES, 3, GL_UNSIGNED_SHORT, [0 1 2])
glLoadMatrixf([0 0 -1 0 0 1 0 0 1 0 0 0 0 0 0 1])
)");
}

TEST_CASE("the first scene of a document is drawn like any other")
{
    record_bench b;
    uint32_t material = 0;
    b.add_material(&material);
    const uint32_t scene = b.add_scene({b.object(object_model, b.add_triangle(1), material)});
    REQUIRE(scene == 1);
    add_layer(b.content, 0, make_layer(render_simple, 1000, scene));
    b.compose();
    CHECK(take_gl_calls({"glDrawElements"}) == "\nglDrawElements(GL_TRIANGLES, 3, GL_UNSIGNED_SHORT, [0 1 2])\n");
}

TEST_CASE("cube maps turn back by the layer's rotations about y and x")
{
    record_bench b;
    uint32_t material = 0;
    b.add_material(&material).texture[0] = b.add_cube(7);
    layer_record layer = wide_layer(b, render_simple);
    layer.camera[camera_rotation_x] = -90.0f;
    layer.camera[camera_rotation_x + 1] = 90.0f;
    layer.camera[camera_rotation_x + 2] = 45.0f;
    layer.model_id = b.add_scene({b.object(object_model, b.add_triangle(1), material)});
    add_layer(b.content, 0, layer);
    b.compose();
    const std::string calls = take_gl_calls({"glMatrixMode", "glLoadMatrixf"});
    CHECK(calls.find("\nglMatrixMode(GL_TEXTURE)\nglLoadMatrixf([0 0 1 0 -1 0 0 0 0 -1 0 0 0 0 0 1])\n"
                     "glMatrixMode(GL_MODELVIEW)\n")
        != std::string::npos);
}

TEST_CASE("a layer without a model sets its state, draws nothing and does not count")
{
    record_bench b;
    layer_record layer = wide_layer(b, render_simple);
    layer.model_id = 0;
    add_layer(b.content, 0, layer);
    CHECK(b.compose() == 0);
    CHECK(take_gl_calls({"glViewport", "glClear", "glClearColor"}) == R"(
glViewport(0, 0, 800, 600)
glClear(GL_COLOR_BUFFER_BIT | GL_DEPTH_BUFFER_BIT)
glClearColor(0, 0, 0, 1)
)");
}

TEST_CASE("behind the end nothing is called")
{
    record_bench b;
    add_layer(b.content, 0, wide_layer(b, render_simple));
    b.time = 1001;
    CHECK(b.compose() == 0);
    CHECK(take_gl_calls() == "\n");
}

// ---- render modes ---------------------------------------------------------------

TEST_CASE("each mode, behind a plain layer: where it draws, what it clears, how it projects")
{
    const std::string identity = "glLoadMatrixf([1 0 0 0 0 1 0 0 0 0 1 0 0 0 0 1])\n";
    const auto perspective = [&](const char* f) {
        return std::string("glLoadMatrixf([") + f + " 0 0 0 0 1 0 0 0 0 -1.002 -1 0 0 -0.2002 0])\n" + identity;
    };
    const std::string expected[9] = {
        "\nglViewport(0, 0, 800, 600)\nglEnable(GL_DEPTH_TEST)\n" + perspective("0.8"),
        "\nglViewport(0, 0, 256, 128)\nglEnable(GL_DEPTH_TEST)\n" + perspective("0.8"),
        "\nglEnable(GL_DEPTH_TEST)\n" + identity,
        "\nglViewport(0, 0, 800, 600)\nglClear(GL_DEPTH_BUFFER_BIT)\nglEnable(GL_DEPTH_TEST)\n" + perspective("0.8"),
        "\nglViewport(0, 0, 256, 128)\nglEnable(GL_DEPTH_TEST)\n" + perspective("0.625"),
        "\nglViewport(0, 0, 400, 300)\nglEnable(GL_DEPTH_TEST)\n" + perspective("0.8"),
        "\nglViewport(0, 0, 400, 300)\nglEnable(GL_DEPTH_TEST)\n" + perspective("0.8"),
        "\nglViewport(0, 0, 400, 300)\nglEnable(GL_DEPTH_TEST)\n" + perspective("0.75"),
        "\nglClear(GL_DEPTH_BUFFER_BIT)\nglEnable(GL_DEPTH_TEST)\n" + identity,
    };
    for (uint32_t mode = 0; mode < 9; ++mode) {
        record_bench b;
        const uint32_t target = add_target(b, 7, 256, 128);
        add_layer(b.content, 0, wide_layer(b, render_simple));
        layer_record layer = wide_layer(b, mode);
        layer.rtex = target;
        add_layer(b.content, 1, layer);
        CHECK(b.compose() == 2);
        const std::string calls = take_gl_calls({"glViewport", "glClear", "glEnable", "glDisable", "glLoadMatrixf"});
        const size_t second = calls.find(identity) + identity.size();
        CHECK("\n" + calls.substr(second) == expected[mode]);
    }
}

TEST_CASE("the first track clears colour and depth in every mode")
{
    for (uint32_t mode = 0; mode < 9; ++mode) {
        record_bench b;
        add_layer(b.content, 0, wide_layer(b, mode));
        b.compose();
        CHECK(take_gl_calls({"glClear"}) == "\nglClear(GL_COLOR_BUFFER_BIT | GL_DEPTH_BUFFER_BIT)\n");
    }
}

TEST_CASE("a linked layer keeps the projection only with a constant field of view")
{
    record_bench b;
    add_layer(b.content, 0, wide_layer(b, render_simple));
    layer_record layer = wide_layer(b, render_link);
    layer.camera_mode[camera_fov] = fov_dynamic;
    layer.camera[camera_fov] = static_cast<float>(add_function(b.content, constant_function(90.0f)));
    layer.camera[camera_far] = 10.0f;
    add_layer(b.content, 1, layer);
    layer.camera_mode[camera_fov] = fov_orthographic;
    add_layer(b.content, 2, layer);
    b.compose();
    CHECK(take_gl_calls({"glEnable", "glDisable", "glLoadMatrixf"}) == R"(
glEnable(GL_DEPTH_TEST)
glLoadMatrixf([0.8 0 0 0 0 1 0 0 0 0 -1.002 -1 0 0 -0.2002 0])
glLoadMatrixf([1 0 0 0 0 1 0 0 0 0 1 0 0 0 0 1])
glEnable(GL_DEPTH_TEST)
glLoadMatrixf([0.8 0 0 0 0 1 0 0 0 0 -1.0202 -1 0 0 -0.20202 0])
glLoadMatrixf([1 0 0 0 0 1 0 0 0 0 1 0 0 0 0 1])
glDisable(GL_DEPTH_TEST)
glLoadMatrixf([2 0 0 0 0 -2 0 0 0 0 -1 0 -1 1 0 1])
glLoadMatrixf([1 0 0 0 0 1 0 0 0 0 1 0 0 0 0 1])
)");
}

TEST_CASE("a clear colour is set behind its layer's clear: it is the next clear's")
{
    record_bench b;
    const uint32_t target = add_target(b, 7, 256, 128);
    layer_record layer = wide_layer(b, render_to_texture);
    layer.rtex = target;
    layer.clearcolor = add_color(b.content, 1.0f, 0.0f, 0.0f);
    add_layer(b.content, 0, layer);
    layer_record screen = wide_layer(b, render_simple);
    screen.clearcolor = add_color(b.content, 0.0f, static_cast<float>(b.add_time(0.01f)), 0.0f);
    table_get(b.d.transform_table, screen.clearcolor)->dynamic_flags[0] = 8; // value 4
    add_layer(b.content, 1, screen);
    b.time = 50;
    b.compose();
    CHECK(take_gl_calls({"glClear", "glClearColor"}) == R"(
glClear(GL_COLOR_BUFFER_BIT | GL_DEPTH_BUFFER_BIT)
glClearColor(1, 0, 0, 1)
glClear(GL_COLOR_BUFFER_BIT | GL_DEPTH_BUFFER_BIT)
glClearColor(0, 0.5, 0, 1)
)");
}

// ---- targets --------------------------------------------------------------------

TEST_CASE("the next layer that is not linked copies the picture into its texture, on the first unit")
{
    record_bench b;
    add_layer(b.content, 0, wide_layer(b, render_simple));
    layer_record layer = wide_layer(b, render_to_texture);
    layer.rtex = add_target(b, 7, 256, 128);
    add_layer(b.content, 1, layer);
    add_layer(b.content, 2, wide_layer(b, render_link));
    add_layer(b.content, 3, wide_layer(b, render_clear_depth_link));
    add_layer(b.content, 4, wide_layer(b, render_simple));
    add_layer(b.content, 5, wide_layer(b, render_simple));
    b.compose();
    CHECK(take_layers() == R"(
glViewport(0, 0, 800, 600)
glClear(GL_COLOR_BUFFER_BIT | GL_DEPTH_BUFFER_BIT)
glViewport(0, 0, 256, 128)
glClear(GL_DEPTH_BUFFER_BIT)
glActiveTexture(GL_TEXTURE0)
glBindTexture(GL_TEXTURE_2D, 7)
glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MIN_FILTER, GL_LINEAR)
glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MAG_FILTER, GL_LINEAR)
glCopyTexSubImage2D(GL_TEXTURE_2D, 0, 0, 0, 0, 0, 256, 128)
glViewport(0, 0, 800, 600)
glClear(GL_COLOR_BUFFER_BIT | GL_DEPTH_BUFFER_BIT)
glViewport(0, 0, 800, 600)
)");
}

TEST_CASE("a texture that is filled by the last layer is not copied")
{
    record_bench b;
    layer_record layer = wide_layer(b, render_to_texture);
    layer.rtex = add_target(b, 7, 256, 128);
    add_layer(b.content, 0, layer);
    b.compose();
    b.compose();
    CHECK(take_gl_calls({"glCopyTexSubImage2D"}) == "\n");
}

TEST_CASE("the mode that keeps the picture holds back the clear of the layer right behind it")
{
    constexpr uint32_t modes[4] = {render_simple, render_clear_depth, render_to_texture, render_quarter_keep};
    // The layer right behind clears nothing, or its depth; the one behind that clears again where a
    // texture waits, unless the layer before it is of that mode too.
    constexpr const char* clears[4]
        = {"", "glClear(GL_DEPTH_BUFFER_BIT)\n", "glClear(GL_COLOR_BUFFER_BIT | GL_DEPTH_BUFFER_BIT)\n", ""};
    for (uint32_t i = 0; i < 4; ++i) {
        record_bench b;
        add_layer(b.content, 0, wide_layer(b, render_simple));
        layer_record layer = wide_layer(b, render_quarter_keep);
        layer.rtex = add_target(b, 7, 400, 300);
        add_layer(b.content, 1, layer);
        layer_record next = wide_layer(b, modes[i]);
        next.rtex = add_target(b, 8, 400, 300);
        add_layer(b.content, 2, next);
        add_layer(b.content, 3, wide_layer(b, render_simple));
        b.compose();
        CHECK(take_gl_calls({"glClear"})
            == std::string("\nglClear(GL_COLOR_BUFFER_BIT | GL_DEPTH_BUFFER_BIT)\n") + clears[i]);
    }
}

TEST_CASE("a target layer without a texture copies a waiting picture, and leaves it waiting")
{
    record_bench b;
    layer_record layer = wide_layer(b, render_to_texture);
    layer.rtex = add_target(b, 7, 256, 128);
    add_layer(b.content, 0, layer);
    add_layer(b.content, 1, wide_layer(b, render_quarter)); // rtex 0
    add_layer(b.content, 2, wide_layer(b, render_clear_depth));
    b.compose();
    CHECK(take_gl_calls({"glViewport", "glBindTexture", "glCopyTexSubImage2D", "glClear"}) == R"(
glViewport(0, 0, 256, 128)
glClear(GL_COLOR_BUFFER_BIT | GL_DEPTH_BUFFER_BIT)
glBindTexture(GL_TEXTURE_2D, 7)
glCopyTexSubImage2D(GL_TEXTURE_2D, 0, 0, 0, 0, 0, 256, 128)
glClear(GL_COLOR_BUFFER_BIT | GL_DEPTH_BUFFER_BIT)
glBindTexture(GL_TEXTURE_2D, 7)
glCopyTexSubImage2D(GL_TEXTURE_2D, 0, 0, 0, 0, 0, 256, 128)
glViewport(0, 0, 800, 600)
glClear(GL_COLOR_BUFFER_BIT | GL_DEPTH_BUFFER_BIT)
)");
}

TEST_CASE("a quarter target of another size is made anew, black, and its old texture is deleted")
{
    record_bench b;
    b.view.width = 16;
    b.view.height = 12;
    layer_record layer = wide_layer(b, render_quarter);
    const uint32_t target = add_target(b, 7, 256, 128);
    layer.rtex = target;
    table_get(b.d.image_texture_table, target)->pixels = static_cast<uint8_t*>(std::malloc(1));
    add_layer(b.content, 0, layer);
    add_layer(b.content, 1, wide_layer(b, render_simple));
    b.compose();
    CHECK(take_layers()
        == R"(
glActiveTexture(GL_TEXTURE0)
glDeleteTextures(1, [7])
glGenTextures(1) = 1
glBindTexture(GL_TEXTURE_2D, 1)
glTexImage2D(GL_TEXTURE_2D, 0, 3, 8, 6, 0, GL_RGB, GL_UNSIGNED_BYTE, )"
            + bytes_as_text(std::vector<uint8_t>(8 * 6 * 3)) + R"()
glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MAG_FILTER, GL_LINEAR)
glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MIN_FILTER, GL_LINEAR)
glViewport(0, 0, 8, 6)
glClear(GL_COLOR_BUFFER_BIT | GL_DEPTH_BUFFER_BIT)
glActiveTexture(GL_TEXTURE0)
glBindTexture(GL_TEXTURE_2D, 1)
glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MIN_FILTER, GL_LINEAR)
glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MAG_FILTER, GL_LINEAR)
glCopyTexSubImage2D(GL_TEXTURE_2D, 0, 0, 0, 0, 0, 8, 6)
glViewport(0, 0, 16, 12)
glClear(GL_COLOR_BUFFER_BIT | GL_DEPTH_BUFFER_BIT)
)");
    const image_texture& made = *table_get(b.d.image_texture_table, target);
    CHECK(made.format == 3);
    CHECK(made.width == 8);
    CHECK(made.height == 6);
    CHECK(made.components == 3);
    CHECK(made.texture == 1);
    CHECK(made.pixels == nullptr);
    b.compose(); // from the second frame on it has its size
    CHECK(take_gl_calls({"glDeleteTextures", "glGenTextures", "glTexImage2D"}) == "\n");
}

// Side for side of the screen; 64 below 128, 128 below 256, else 256 without textures of any size.
TEST_CASE("targets are fitted to the screen, in powers of two where the card wants them")
{
    struct fitting {
        uint32_t mode, width, height; // of the target
        uint32_t screen_width, screen_height;
        uint8_t npot;
        const char* viewport;
        bool made;
    };
    constexpr fitting fittings[] = {
        {render_to_texture, 800, 600, 800, 600, 1, "glViewport(0, 0, 800, 600)", false},
        {render_to_texture, 801, 600, 800, 600, 1, "glViewport(0, 0, 800, 600)", true},
        {render_to_texture_16_9, 512, 601, 800, 600, 1, "glViewport(0, 0, 800, 600)", true},
        {render_to_texture, 1024, 512, 800, 600, 0, "glViewport(0, 0, 256, 256)", true},
        {render_to_texture, 512, 512, 800, 600, 0, "glViewport(0, 0, 512, 512)", false},
        {render_quarter, 400, 300, 800, 600, 1, "glViewport(0, 0, 400, 300)", false},
        {render_quarter_4_3, 400, 301, 801, 601, 1, "glViewport(0, 0, 400, 300)", true},
        {render_quarter, 256, 256, 800, 600, 0, "glViewport(0, 0, 256, 256)", false},
        {render_quarter_keep, 256, 128, 512, 510, 0, "glViewport(0, 0, 256, 128)", false},
        {render_quarter, 256, 256, 511, 256, 0, "glViewport(0, 0, 128, 128)", true},
        {render_quarter, 256, 256, 255, 254, 0, "glViewport(0, 0, 64, 64)", true},
    };
    for (const fitting& f : fittings) {
        CAPTURE(f.viewport);
        record_bench b;
        b.caps.npot = f.npot;
        b.view.width = f.screen_width;
        b.view.height = f.screen_height;
        layer_record layer = wide_layer(b, f.mode);
        layer.rtex = add_target(b, 7, f.width, f.height);
        add_layer(b.content, 0, layer);
        b.compose();
        const std::string calls = take_gl_calls({"glViewport", "glDeleteTextures"});
        CHECK(calls == (f.made ? "\nglDeleteTextures(1, [7])\n" : "\n") + std::string(f.viewport) + "\n");
    }
}

// ---- tiles and costs ------------------------------------------------------------

TEST_CASE("a tile cuts the screen's viewport and projection, and no target's")
{
    record_bench b;
    b.view.tile = {400, 150, 200, 300};
    layer_record layer = wide_layer(b, render_to_texture);
    layer.rtex = add_target(b, 7, 256, 128);
    layer.camera_mode[camera_fov] = fov_orthographic;
    add_layer(b.content, 0, layer);
    layer_record screen = wide_layer(b, render_simple);
    screen.camera_mode[camera_fov] = fov_orthographic;
    add_layer(b.content, 1, screen);
    b.compose();
    // x: 800 / 200 times as wide, moved by (800 - 2 x 400) / 200 - 1; y: 600 / 300 times as high,
    // moved by (600 - 2 x 150) / 300 - 1. The screen's x at 0.5 (pixel 400) comes to -1, its y at 0.75
    // from above (pixel 150 from below) to -1.
    CHECK(take_gl_calls({"glViewport", "glLoadMatrixf"}).find(R"(
glViewport(0, 0, 200, 300)
glLoadMatrixf([8 0 0 0 0 -4 0 0 0 0 -1 0 -5 2 0 1])
)") != std::string::npos);
    b.compose();
    CHECK(take_gl_calls({"glViewport"}) == "\nglViewport(0, 0, 256, 128)\nglViewport(0, 0, 200, 300)\n");
}

TEST_CASE("a tile of a perspective picture moves with the distance")
{
    record_bench b;
    b.view.tile = {400, 150, 200, 300};
    add_layer(b.content, 0, wide_layer(b, render_simple));
    b.compose();
    // x' = 4 x + (-1) w with w = -z: 3.2 and +1 at z; y' = 2 y + 0 w.
    CHECK(take_gl_calls({"glLoadMatrixf"}).starts_with(R"(
glLoadMatrixf([3.2 0 0 0 0 2 0 0 1 0 -1.002 -1 0 0 -0.2002 0])
)"));
}

TEST_CASE("a layer's cost is asked for around all its calls")
{
    record_bench b;
    add_layer(b.content, 0, wide_layer(b, render_simple));
    add_layer(b.content, 1, wide_layer(b, render_link));
    frame_cost_record costs = {};
    costs.layer_count = 7;
    costs.queries[0] = 11;
    CHECK(compose_frame(b.d, 0, b.view, b.caps, false, &costs) == 2);
    const std::string calls = take_gl_calls();
    CHECK(calls.starts_with("\nglBeginQuery(GL_TIME_ELAPSED, 11)\nglViewport(0, 0, 800, 600)\n"));
    CHECK(calls.find("0 0 0 1])\nglEndQuery(GL_TIME_ELAPSED)\nglEnable(GL_DEPTH_TEST)\n") != std::string::npos);
    CHECK(calls.ends_with("0 0 0 1])\n")); // the second layer has no query
    CHECK(costs.layer_count == 2);
    CHECK(costs.layers[0].track == 0);
    CHECK(costs.layers[1].track == 1);
    CHECK(costs.layers[0].cpu_ms >= 0.0);
}
