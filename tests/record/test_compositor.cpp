// The calls that a frame is: targets, clears, projections, cameras, in their order.
#include "record_bench.h"

#include "render/compositor_gl.h"
#include "render/mesh_buffers_gl.h"

#include <GL/glew.h>

#include <doctest/doctest.h>

#include <cstdlib>

// A layer with a field of view of 90 degrees that shows a triangle without a material: projection,
// depth test and camera are told with the first mesh.
static layer_record wide_layer(record_bench& b, uint32_t type)
{
    layer_record layer = make_layer(type, 1000, b.add_scene({b.bare_object(b.add_triangle(1))}));
    layer.camera[camera_fov] = 90.0f;
    return layer;
}

static uint32_t add_target(record_bench& b, uint32_t texture, uint32_t width, uint32_t height)
{
    const uint32_t handle = add_image_texture(b.content, width, height);
    table_get(b.d.image_texture_table, handle)->texture = texture;
    return handle;
}

// The lists without what the meshes of a layer make of it.
static std::string take_layers()
{
    return take_gl_calls({"glActiveTexture", "glBindTexture", "glTexParameteri", "glCopyTexSubImage2D",
        "glDeleteTextures", "glGenTextures", "glTexImage2D", "glViewport", "glClear"});
}

// ---- one layer ------------------------------------------------------------------

TEST_CASE("a layer is viewport, clear, projection, depth test, camera, in this order")
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
glMatrixMode(GL_PROJECTION)
glLoadMatrixf([0.8 0 0 0 0 1 0 0 0 0 -1.002 -1 0 0 -0.2002 0])
glMatrixMode(GL_MODELVIEW)
glEnableClientState(GL_NORMAL_ARRAY)
glNormalPointer(GL_FLOAT, 0, [0 0 1])
glEnableClientState(GL_VERTEX_ARRAY)
glVertexPointer(3, GL_FLOAT, 0, [1 2 3])
glEnable(GL_DEPTH_TEST)
glLoadMatrixf([-1 0 0 0 0 0 1 0 0 1 0 0 -1 3 2 1])
glDrawElements(GL_TRIANGLES, 3, GL_UNSIGNED_SHORT, [0 1 2])
)");
    b.compose(); // its clear colour comes with the next clear; all else stands
    CHECK(take_gl_calls() == R"(
glClearColor(0.25, 0.5, 0.75, 1)
glClear(GL_COLOR_BUFFER_BIT | GL_DEPTH_BUFFER_BIT)
glDrawElements(GL_TRIANGLES, 3, GL_UNSIGNED_SHORT, [0 1 2])
)");
    b.compose();
    CHECK(take_gl_calls() == R"(
glClear(GL_COLOR_BUFFER_BIT | GL_DEPTH_BUFFER_BIT)
glDrawElements(GL_TRIANGLES, 3, GL_UNSIGNED_SHORT, [0 1 2])
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
    for (const std::string projection : {"glLoadMatrixf([0.8 0 0 0 0 1 0 0 0 0 -1.002 -1 0 0 -0.2002 0])\n", ""}) {
        b.compose();
        CHECK(
            take_gl_calls({"glLoadMatrixf"}) == "\n" + projection + R"(glLoadMatrixf([1 0 0 0 0 1 0 0 0 0 1 0 1 0 0 1])
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
glLoadMatrixf([2 0 0 0 0 -2 0 0 0 0 -1 0 -1 1 0 1])
glDisable(GL_DEPTH_TEST)
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
    // Facing the camera undoes its turn: the copy's matrix, the last, is the identity. The one before it
    // turns the picture.
    CHECK(take_gl_calls({"glClearColor", "glColor4f", "glLoadMatrixf", "glDrawElements"}) == R"(
glLoadMatrixf([0.8 0 0 0 0 1 0 0 0 0 -1.002 -1 0 0 -0.2002 0])
glColor4f(0.75, 0.5, 0.75, 1)
glLoadMatrixf([0 -1 0 0 1 0 0 0 0 0 1 0 0 1 0 1])
glLoadMatrixf([1 0 0 0 0 1 0 0 0 0 1 0 0 0 0 1])
glDrawElements(GL_TRIANGLES, 3, GL_UNSIGNED_SHORT, [0 1 2])
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
    CHECK(take_gl_calls() == R"(
glViewport(0, 0, 800, 600)
glClear(GL_COLOR_BUFFER_BIT | GL_DEPTH_BUFFER_BIT)
)");
    CHECK(b.r.standing.clear_color[3] == 1.0f); // its own, for the next clear
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

// What a layer of the last frame tells an OpenGL of which nothing is known.
static std::string layer_alone(record_bench& b, uint32_t number)
{
    frame& f = b.r.f;
    const uint32_t begin = number == 0 ? 0 : f.command_end[number - 1];
    f.commands.resize(f.command_end[number]);
    f.commands.erase(f.commands.begin(), f.commands.begin() + static_cast<std::ptrdiff_t>(begin));
    f.command_end[0] = static_cast<uint32_t>(f.commands.size());
    b.r.gl = gl_state();
    frame_layers layers = {};
    layers.layer_count = 1;
    take_gl_calls();
    draw_frame(layers, context_for(b.d, b.caps, false), b.r);
    return take_gl_calls({"glViewport", "glClear", "glEnable", "glDisable", "glLoadMatrixf"});
}

TEST_CASE("each mode, behind a plain layer: where it draws, what it clears, how it projects")
{
    const auto perspective = [](const char* x, const char* y) {
        return std::string("glLoadMatrixf([") + x + " 0 0 0 0 " + y + " 0 0 0 0 -1.002 -1 0 0 -0.2002 0])\n"
            + "glEnable(GL_DEPTH_TEST)\nglLoadMatrixf([1 0 0 0 0 1 0 0 0 0 1 0 0 0 0 1])\n";
    };
    const std::string kept = perspective("1.38564", "1.73205"); // the plain layer's 60 degrees
    const std::string expected[9] = {
        "\nglViewport(0, 0, 800, 600)\n" + perspective("0.8", "1"),
        "\nglViewport(0, 0, 256, 128)\n" + perspective("0.8", "1"),
        "\n" + kept,
        "\nglViewport(0, 0, 800, 600)\nglClear(GL_DEPTH_BUFFER_BIT)\n" + perspective("0.8", "1"),
        "\nglViewport(0, 0, 256, 128)\n" + perspective("0.625", "1"),
        "\nglViewport(0, 0, 400, 300)\n" + perspective("0.8", "1"),
        "\nglViewport(0, 0, 400, 300)\n" + perspective("0.8", "1"),
        "\nglViewport(0, 0, 400, 300)\n" + perspective("0.75", "1"),
        "\nglClear(GL_DEPTH_BUFFER_BIT)\n" + kept,
    };
    for (uint32_t mode = 0; mode < 9; ++mode) {
        CAPTURE(mode);
        record_bench b;
        const uint32_t target = add_target(b, 7, 256, 128);
        layer_record plain = wide_layer(b, render_simple);
        plain.camera[camera_fov] = 60.0f;
        add_layer(b.content, 0, plain);
        layer_record layer = wide_layer(b, mode);
        layer.rtex = target;
        add_layer(b.content, 1, layer);
        CHECK(b.compose() == 2);
        CHECK(layer_alone(b, 1) == expected[mode]);
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
glLoadMatrixf([0.8 0 0 0 0 1 0 0 0 0 -1.002 -1 0 0 -0.2002 0])
glEnable(GL_DEPTH_TEST)
glLoadMatrixf([1 0 0 0 0 1 0 0 0 0 1 0 0 0 0 1])
glLoadMatrixf([0.8 0 0 0 0 1 0 0 0 0 -1.0202 -1 0 0 -0.20202 0])
glLoadMatrixf([2 0 0 0 0 -2 0 0 0 0 -1 0 -1 1 0 1])
glDisable(GL_DEPTH_TEST)
)");
}

TEST_CASE("a layer's clear colour is the next clear's, also the next frame's first")
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
    for (const std::string before : {"", "glClearColor(0, 0.5, 0, 1)\n"}) { // a new context clears to nothing
        b.compose();
        CHECK(take_gl_calls({"glClear", "glClearColor"})
            == "\n" + before + R"(glClear(GL_COLOR_BUFFER_BIT | GL_DEPTH_BUFFER_BIT)
glClearColor(1, 0, 0, 1)
glClear(GL_COLOR_BUFFER_BIT | GL_DEPTH_BUFFER_BIT)
)");
    }
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
)"); // the last layer's viewport is there
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
glGenTextures(1) = 1
glActiveTexture(GL_TEXTURE0)
glDeleteTextures(1, [7])
glBindTexture(GL_TEXTURE_2D, 1)
glTexImage2D(GL_TEXTURE_2D, 0, 3, 8, 6, 0, GL_RGB, GL_UNSIGNED_BYTE, )"
            + bytes_as_text(std::vector<uint8_t>(8 * 6 * 3)) + R"()
glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MAG_FILTER, GL_LINEAR)
glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MIN_FILTER, GL_LINEAR)
glViewport(0, 0, 8, 6)
glClear(GL_COLOR_BUFFER_BIT | GL_DEPTH_BUFFER_BIT)
glBindTexture(GL_TEXTURE_2D, 1)
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

// ---- what passes on -------------------------------------------------------------

// A layer that shows a triangle with a material.
static layer_record textured_layer(record_bench& b, uint32_t type, uint32_t material)
{
    layer_record layer = wide_layer(b, type);
    layer.model_id = b.add_scene({b.object(object_model, b.add_triangle(1), material)});
    return layer;
}

static uint32_t add_reference(record_bench& b, uint32_t image)
{
    return table_add(b.d.object_table, object_reference{texture_image, image, 1});
}

// The calls behind the first of `from`.
static std::string behind(const std::string& calls, const std::string& from)
{
    const size_t found = calls.find(from);
    return found == std::string::npos ? "nothing" : calls.substr(found + from.size());
}

TEST_CASE("what a material of one layer left stands for a mesh of the next layer and of the next frame")
{
    record_bench b;
    uint32_t material = 0;
    material_record& m = b.add_material(&material);
    m.texture[0] = b.add_image(7);
    m.depth_test = 1;
    add_layer(b.content, 0, wide_layer(b, render_simple));
    add_layer(b.content, 1, textured_layer(b, render_link, material));
    layer_record last = wide_layer(b, render_link);
    last.camera_mode[camera_fov] = fov_orthographic; // without a depth test of its own
    add_layer(b.content, 2, last);
    b.compose();
    const std::string drawing = "glDrawElements(GL_TRIANGLES, 3, GL_UNSIGNED_SHORT, [0 1 2])\n";
    CHECK(behind(behind(take_gl_calls(), drawing), drawing) == R"(glMatrixMode(GL_PROJECTION)
glLoadMatrixf([2 0 0 0 0 -2 0 0 0 0 -1 0 -1 1 0 1])
glMatrixMode(GL_MODELVIEW)
glNormalPointer(GL_FLOAT, 0, [0 0 1])
glVertexPointer(3, GL_FLOAT, 0, [1 2 3])
glDisable(GL_DEPTH_TEST)
glClientActiveTexture(GL_TEXTURE0)
glTexCoordPointer(2, GL_FLOAT, 0, [1 0.5])
)" + drawing);
    b.r.gl = gl_state();
    b.compose(); // the first layer's mesh, too, has the picture and the colour now
    const std::string calls = take_gl_calls();
    const std::string first = calls.substr(0, calls.find(drawing));
    CHECK(first.find("\nglColor4f(0.25, 0.5, 0.75, 1)\n") != std::string::npos);
    CHECK(first.find("\nglBindTexture(GL_TEXTURE_2D, 7)\n") != std::string::npos);
    CHECK(first.find("\nglTexCoordPointer(2, GL_FLOAT, 0, [1 0.5])\n") != std::string::npos);
}

TEST_CASE("on the shader path a program stands for meshes of the next layer and frame, with its uniforms")
{
    record_bench b;
    uint32_t material = 0;
    material_record& m = b.add_material(&material);
    b.give_program(m);
    m.program->modelview_location = m.program->normal_matrix_location = -1;
    m.program->uniform_functions[0] = b.add_time();
    add_layer(b.content, 0, wide_layer(b, render_simple));
    add_layer(b.content, 1, textured_layer(b, render_link, material));
    add_layer(b.content, 2, wide_layer(b, render_link));
    b.time = 4;
    b.compose(true);
    const std::string told = R"(
glDrawElements(GL_TRIANGLES, 3, GL_UNSIGNED_SHORT, [0 1 2])
glUseProgram(50)
glUniform1f(21, 4)
glUniformMatrix4fv(11, 1, GL_FALSE, [0.8 0 0 0 0 1 0 0 0 0 -1.002 -1 0 0 -0.2002 0])
glDrawElements(GL_TRIANGLES, 3, GL_UNSIGNED_SHORT, [0 1 2])
glDrawElements(GL_TRIANGLES, 3, GL_UNSIGNED_SHORT, [0 1 2])
)";
    CHECK(take_gl_calls({"glUseProgram", "glUniform1f", "glUniformMatrix4fv", "glDrawElements"}) == told);
    b.time = 5;
    b.compose(true); // the first layer is drawn with the program, as it was told for the frame before
    CHECK(take_gl_calls({"glUseProgram", "glUniform1f", "glUniformMatrix4fv", "glDrawElements"}) == R"(
glDrawElements(GL_TRIANGLES, 3, GL_UNSIGNED_SHORT, [0 1 2])
glUniform1f(21, 5)
glDrawElements(GL_TRIANGLES, 3, GL_UNSIGNED_SHORT, [0 1 2])
glDrawElements(GL_TRIANGLES, 3, GL_UNSIGNED_SHORT, [0 1 2])
)");
    b.r.gl = gl_state();
    b.time = 6;
    b.compose(true); // an OpenGL of which nothing is known: 5 is what stands until the material is applied
    CHECK(take_gl_calls({"glUseProgram", "glUniform1f", "glDrawElements"}) == R"(
glUseProgram(50)
glUniform1f(21, 5)
glDrawElements(GL_TRIANGLES, 3, GL_UNSIGNED_SHORT, [0 1 2])
glUniform1f(21, 6)
glDrawElements(GL_TRIANGLES, 3, GL_UNSIGNED_SHORT, [0 1 2])
glDrawElements(GL_TRIANGLES, 3, GL_UNSIGNED_SHORT, [0 1 2])
)");
}

TEST_CASE("a picture that was copied into stays in the first unit for a mesh without a material, wrapping as it did")
{
    record_bench b;
    uint32_t material = 0;
    material_record& m = b.add_material(&material);
    m.texture[0] = b.add_image(5);
    m.wrapmode[0] = wrap_edge_clamp;
    layer_record layer = textured_layer(b, render_to_texture, material);
    layer.rtex = add_target(b, 7, 256, 128);
    add_layer(b.content, 0, layer);
    add_layer(b.content, 1, wide_layer(b, render_simple));
    b.compose();
    CHECK(take_gl_calls({"glBindTexture", "glTexParameteri", "glCopyTexSubImage2D", "glDrawElements"}) == R"(
glBindTexture(GL_TEXTURE_2D, 5)
glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_WRAP_S, GL_CLAMP_TO_EDGE)
glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_WRAP_T, GL_CLAMP_TO_EDGE)
glDrawElements(GL_TRIANGLES, 3, GL_UNSIGNED_SHORT, [0 1 2])
glBindTexture(GL_TEXTURE_2D, 7)
glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MIN_FILTER, GL_LINEAR)
glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MAG_FILTER, GL_LINEAR)
glCopyTexSubImage2D(GL_TEXTURE_2D, 0, 0, 0, 0, 0, 256, 128)
glDrawElements(GL_TRIANGLES, 3, GL_UNSIGNED_SHORT, [0 1 2])
)");
    b.r.gl = gl_state();
    b.compose(); // the next frame binds its picture again, and the copy's behind it
    CHECK(take_gl_calls({"glBindTexture"}) == "\nglBindTexture(GL_TEXTURE_2D, 5)\nglBindTexture(GL_TEXTURE_2D, 7)\n");
}

TEST_CASE("a picture that was copied into wraps as a material said that drew nothing, or in a frame that nobody saw")
{
    record_bench b;
    uint32_t swarm_material = 0;
    material_record& clamped = b.add_material(&swarm_material);
    clamped.texture[0] = b.add_image(7);
    clamped.wrapmode[0] = wrap_edge_clamp;
    uint32_t material = 0;
    b.add_material(&material).texture[0] = b.add_image(5);
    const uint32_t swarm = b.add_triangle();
    b.arrays(swarm).index_count = 0;
    layer_record layer = wide_layer(b, render_to_texture);
    layer.model_id = b.add_scene(
        {b.object(object_model, swarm, swarm_material), b.object(object_model, b.add_triangle(), material)});
    layer.rtex = add_target(b, 7, 256, 128);
    add_layer(b.content, 0, layer);
    add_layer(b.content, 1, wide_layer(b, render_simple));
    b.compose();
    const std::string copied_and_drawn = R"(glCopyTexSubImage2D(GL_TEXTURE_2D, 0, 0, 0, 0, 0, 256, 128)
glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_WRAP_S, GL_CLAMP_TO_EDGE)
glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_WRAP_T, GL_CLAMP_TO_EDGE)
glDrawElements(GL_TRIANGLES, 3, GL_UNSIGNED_SHORT, [0 1 2])
)";
    CHECK(take_gl_calls({"glTexParameteri", "glCopyTexSubImage2D", "glDrawElements"}).ends_with(copied_and_drawn));

    table_get(b.d.scene_table, layer.model_id)->objects[0].object = 0; // it was said once, and nobody saw it
    b.r.gl = gl_state();
    b.compose();
    CHECK(take_gl_calls({"glTexParameteri", "glCopyTexSubImage2D", "glDrawElements"}).ends_with(copied_and_drawn));
}

TEST_CASE("a copy into the picture that the first unit shows leaves its wrapping alone")
{
    record_bench b;
    const uint32_t target = add_target(b, 7, 256, 128);
    uint32_t material = 0;
    material_record& m = b.add_material(&material);
    m.texture[0] = add_reference(b, target);
    m.wrapmode[0] = wrap_edge_clamp;
    layer_record layer = textured_layer(b, render_to_texture, material);
    layer.rtex = target;
    add_layer(b.content, 0, layer);
    add_layer(b.content, 1, wide_layer(b, render_simple));
    b.compose();
    CHECK(
        take_gl_calls({"glActiveTexture", "glBindTexture", "glTexParameteri", "glCopyTexSubImage2D", "glDrawElements"})
        == R"(
glActiveTexture(GL_TEXTURE0)
glBindTexture(GL_TEXTURE_2D, 7)
glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_WRAP_S, GL_CLAMP_TO_EDGE)
glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_WRAP_T, GL_CLAMP_TO_EDGE)
glActiveTexture(GL_TEXTURE1)
glDrawElements(GL_TRIANGLES, 3, GL_UNSIGNED_SHORT, [0 1 2])
glActiveTexture(GL_TEXTURE0)
glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MIN_FILTER, GL_LINEAR)
glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MAG_FILTER, GL_LINEAR)
glCopyTexSubImage2D(GL_TEXTURE_2D, 0, 0, 0, 0, 0, 256, 128)
glDrawElements(GL_TRIANGLES, 3, GL_UNSIGNED_SHORT, [0 1 2])
)");
    CHECK(b.r.standing.material.units[0].wrap == wrap_edge_clamp);
}

// Deleting a texture leaves nothing in the units that show it.
TEST_CASE("a target that is made anew leaves no unit with its old name, and is in the first unit itself")
{
    record_bench b;
    const uint32_t target = add_target(b, 7, 256, 128);
    uint32_t material = 0;
    material_record& m = b.add_material(&material);
    m.texture[0] = b.add_image(5);
    m.texture[1] = add_reference(b, target);
    m.wrapmode[1] = wrap_edge_clamp;
    add_layer(b.content, 0, textured_layer(b, render_simple, material));
    layer_record layer = wide_layer(b, render_quarter);
    layer.rtex = target;
    add_layer(b.content, 1, layer);
    b.compose();
    const std::string calls = take_gl_calls(
        {"glActiveTexture", "glBindTexture", "glDeleteTextures", "glTexParameteri", "glTexImage2D", "glDrawElements"});
    CHECK(without(behind(calls, "[0 1 2])\n"), "glTexImage2D") == R"(glActiveTexture(GL_TEXTURE0)
glDeleteTextures(1, [7])
glBindTexture(GL_TEXTURE_2D, 1)
glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MAG_FILTER, GL_LINEAR)
glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MIN_FILTER, GL_LINEAR)
glBindTexture(GL_TEXTURE_2D, 1)
glActiveTexture(GL_TEXTURE1)
glBindTexture(GL_TEXTURE_2D, 0)
glDrawElements(GL_TRIANGLES, 3, GL_UNSIGNED_SHORT, [0 1 2])
)");
    b.compose(); // the material shows it by its new name, and says how that wraps
    CHECK(take_gl_calls({"glBindTexture", "glTexParameteri", "glDrawElements"}) == R"(
glBindTexture(GL_TEXTURE_2D, 5)
glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_WRAP_S, GL_REPEAT)
glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_WRAP_T, GL_REPEAT)
glBindTexture(GL_TEXTURE_2D, 1)
glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_WRAP_S, GL_CLAMP_TO_EDGE)
glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_WRAP_T, GL_CLAMP_TO_EDGE)
glDrawElements(GL_TRIANGLES, 3, GL_UNSIGNED_SHORT, [0 1 2])
glDrawElements(GL_TRIANGLES, 3, GL_UNSIGNED_SHORT, [0 1 2])
)");
}

TEST_CASE("a target that two layers want in two sizes is made anew twice in one frame")
{
    record_bench b;
    const uint32_t target = add_target(b, 7, 1024, 1024);
    uint32_t material = 0;
    b.add_material(&material).texture[0] = add_reference(b, target);
    for (uint32_t i = 0; i < 2; ++i) {
        layer_record layer = textured_layer(b, i == 0 ? render_to_texture : render_quarter, material);
        layer.rtex = target;
        add_layer(b.content, i, layer);
    }
    b.compose();
    CHECK(take_gl_calls({"glGenTextures", "glDeleteTextures", "glBindTexture", "glCopyTexSubImage2D", "glDrawElements"})
        == R"(
glGenTextures(1) = 1
glGenTextures(1) = 2
glDeleteTextures(1, [7])
glBindTexture(GL_TEXTURE_2D, 1)
glBindTexture(GL_TEXTURE_2D, 1)
glDrawElements(GL_TRIANGLES, 3, GL_UNSIGNED_SHORT, [0 1 2])
glCopyTexSubImage2D(GL_TEXTURE_2D, 0, 0, 0, 0, 0, 800, 600)
glDeleteTextures(1, [1])
glBindTexture(GL_TEXTURE_2D, 2)
glBindTexture(GL_TEXTURE_2D, 2)
glDrawElements(GL_TRIANGLES, 3, GL_UNSIGNED_SHORT, [0 1 2])
)");
    CHECK(table_get(b.d.image_texture_table, target)->texture == 2);
    CHECK(table_get(b.d.image_texture_table, target)->width == 400);
    b.compose(); // both layers take the smaller one from then on
    CHECK(take_gl_calls({"glGenTextures", "glDeleteTextures", "glBindTexture"}) == "\n");
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

// A layer of one second behind those of the first track.
static void add_second(record_bench& b, uint32_t type, uint32_t rtex = 0)
{
    layer_record layer = wide_layer(b, type);
    layer.length = 100;
    layer.rtex = rtex;
    add_layer(b.content, 0, layer);
}

TEST_CASE("a first layer that keeps the viewport has that of the frame before, also in tiles")
{
    record_bench b;
    add_second(b, render_simple);
    add_second(b, render_to_texture, add_target(b, 7, 256, 128));
    add_second(b, render_link);
    const auto viewports = [&b](uint32_t time) {
        b.time = time;
        b.compose();
        return take_gl_calls({"glViewport"});
    };
    CHECK(viewports(50) == "\nglViewport(0, 0, 800, 600)\n");
    b.view.tile = {400, 150, 200, 300};
    CHECK(viewports(250) == "\nglViewport(0, 0, 200, 300)\n");
    b.view.tile = {600, 150, 100, 300};
    CHECK(viewports(251) == "\nglViewport(0, 0, 100, 300)\n");
    CHECK(viewports(150) == "\nglViewport(0, 0, 256, 128)\n");
    CHECK(viewports(252) == "\n"); // no tile cuts a target
}

TEST_CASE("a first layer that keeps the viewport has that of a frame that nobody saw")
{
    record_bench b;
    add_second(b, render_simple);
    add_second(b, render_link);
    const draw_context context = context_for(b.d, b.caps, false);
    const frame_layers layers = plan_layers(b.d, 50, b.view, b.caps);
    advance_frame(layers, context, b.r);
    plan_frame(layers, context, b.view, b.r);
    draw_lasting_gl(context, b.r);
    CHECK(take_gl_calls({"glViewport"}) == "\n");
    b.time = 150;
    b.compose();
    CHECK(take_gl_calls({"glViewport"}) == "\nglViewport(0, 0, 800, 600)\n");
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
    CHECK(compose_frame(b.d, 0, b.view, b.caps, false, b.r, &costs) == 2);
    const std::string calls = take_gl_calls();
    CHECK(calls.starts_with("\nglBeginQuery(GL_TIME_ELAPSED, 11)\nglViewport(0, 0, 800, 600)\n"));
    CHECK(calls.ends_with(R"(
glDrawElements(GL_TRIANGLES, 3, GL_UNSIGNED_SHORT, [0 1 2])
glEndQuery(GL_TIME_ELAPSED)
glNormalPointer(GL_FLOAT, 0, [0 0 1])
glVertexPointer(3, GL_FLOAT, 0, [1 2 3])
glDrawElements(GL_TRIANGLES, 3, GL_UNSIGNED_SHORT, [0 1 2])
)")); // the second layer has no query
    CHECK(costs.layer_count == 2);
    CHECK(costs.layers[0].track == 0);
    CHECK(costs.layers[1].track == 1);
    CHECK(costs.layers[0].cpu_ms >= 0.0);
}

// ---- beside frames ----------------------------------------------------------------

TEST_CASE("the screen is cleared with the last layer's clear colour")
{
    record_bench b;
    clear_standing_gl(b.r);
    CHECK(take_gl_calls() == "\nglClear(GL_COLOR_BUFFER_BIT | GL_DEPTH_BUFFER_BIT)\n");
    layer_record layer = wide_layer(b, render_simple);
    layer.clearcolor = add_color(b.content, 0.25f, 0.5f, 0.75f);
    add_layer(b.content, 0, layer);
    b.compose();
    take_gl_calls();
    clear_standing_gl(b.r);
    CHECK(
        take_gl_calls() == "\nglClearColor(0.25, 0.5, 0.75, 1)\nglClear(GL_COLOR_BUFFER_BIT | GL_DEPTH_BUFFER_BIT)\n");
    clear_standing_gl(b.r);
    CHECK(take_gl_calls() == "\nglClear(GL_COLOR_BUFFER_BIT | GL_DEPTH_BUFFER_BIT)\n");
}

// A frame of all kinds of commands but the vertices': a target that is made anew and copied
// into, a picture that moves, a wireframe in buffers.
static void add_varied_frame(record_bench& b)
{
    b.caps.vbo = 1;
    uint32_t material = 0;
    material_record& m = b.add_material(&material);
    b.give_program(m);
    m.wireframe = 1;
    m.texture[0] = b.add_moving(9, b.add_time());
    const uint32_t mesh = b.add_triangle(1);
    create_mesh_buffers_gl(b.arrays(mesh));
    layer_record layer = wide_layer(b, render_quarter);
    layer.rtex = add_target(b, 7, 256, 128);
    layer.model_id = b.add_scene({b.object(object_model, mesh, material)});
    add_layer(b.content, 0, layer);
    add_layer(b.content, 1, wide_layer(b, render_simple));
    take_gl_calls();
}

TEST_CASE("of a frame that nobody sees only what outlasts it is drawn: targets' sizes, pictures, lines")
{
    record_bench b;
    add_varied_frame(b);
    const draw_context context = context_for(b.d, b.caps, true);
    frame_layers layers = plan_layers(b.d, 3, b.view, b.caps);
    advance_frame(layers, context, b.r);
    CHECK(take_gl_calls() == "\n");
    reserve_targets_gl(layers);
    CHECK(take_gl_calls() == "\nglGenTextures(1) = 1\n");
    plan_frame(layers, context, b.view, b.r);
    CHECK(take_gl_calls() == "\n");
    draw_lasting_gl(context, b.r);
    const std::string black = "GL_RGB, GL_UNSIGNED_BYTE, " + bytes_as_text(std::vector<uint8_t>(400 * 300 * 3)) + ")\n";
    CHECK(take_gl_calls()
        == R"(
glActiveTexture(GL_TEXTURE0)
glDeleteTextures(1, [7])
glBindTexture(GL_TEXTURE_2D, 1)
glTexImage2D(GL_TEXTURE_2D, 0, 3, 400, 300, 0, )"
            + black + R"(glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MAG_FILTER, GL_LINEAR)
glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MIN_FILTER, GL_LINEAR)
glBindTexture(GL_TEXTURE_2D, 9)
glTexSubImage2D(GL_TEXTURE_2D, 0, 0, 0, 64, 64, GL_LUMINANCE, GL_UNSIGNED_BYTE, )"
            + bytes_as_text(b.r.f.pixels) + R"()
glGenBuffers(1) = 105
glBindBuffer(GL_ELEMENT_ARRAY_BUFFER, 105)
glBufferData(GL_ELEMENT_ARRAY_BUFFER, 12, [0 1 1 2 2 0], GL_STATIC_DRAW)
glBindBuffer(GL_ELEMENT_ARRAY_BUFFER, 0)
)");
    b.time = 3;
    b.compose(true); // they need not be told again
    const std::string calls = take_gl_calls();
    for (const char* call : {"glGenTextures", "glDeleteTextures", "glTexImage2D", "glTexSubImage2D", "glBufferData"})
        CHECK(calls.find(call) == std::string::npos);
    CHECK(calls.find("glBindBuffer(GL_ELEMENT_ARRAY_BUFFER, 105)\n") != std::string::npos);
}

TEST_CASE("a renderer gives its buffers back once, and begins anew as one that knows nothing")
{
    record_bench b;
    b.caps.vbo = 1;
    uint32_t material = 0;
    b.add_material(&material);
    scene_object object = b.object(object_model, b.add_triangle(1), material);
    object.manipulator_count = 1;
    object.manipulators[0].type = manipulator_rippler;
    const uint32_t scene = b.add_scene({object});
    b.draw(scene, false);
    const std::string first = take_gl_calls();
    CHECK(first.find("\nglGenBuffers(1) = 101\n") != std::string::npos);
    CHECK(first.find("\nglGenBuffers(1) = 102\n") != std::string::npos);
    release_renderer_gl(b.r);
    CHECK(take_gl_calls() == "\nglDeleteBuffers(1, [101])\nglDeleteBuffers(1, [102])\n");
    CHECK(b.r.tools.rippler.positions == nullptr);
    CHECK_FALSE(b.r.standing.material.applied);
    release_renderer_gl(b.r);
    CHECK(take_gl_calls() == "\n");
    b.draw(scene, false);
    const std::string again = take_gl_calls();
    CHECK(again.size() == first.size()); // the same but for the buffers' names
    CHECK(again.find("\nglGenBuffers(1) = 103\n") != std::string::npos);
    CHECK(again.find("\nglPolygonMode(") != std::string::npos);
    glDeleteBuffers = nullptr; // a driver that has lost them
    release_renderer_gl(b.r);
    CHECK(take_gl_calls() == "\n");
}

// ---- what others do in between ----------------------------------------------------

TEST_CASE("after others have made objects, all objects are told again, and nothing that only drawing sets")
{
    for (const bool glsl : {false, true}) {
        record_bench b;
        b.caps.vbo = 1;
        uint32_t material = 0;
        material_record& m = b.add_material(&material);
        b.give_program(m);
        m.texture[0] = b.add_image(7);
        m.program->uniform_functions[0] = b.add_time();
        m.program->texcoord_location[1] = m.program->texcoord_location[2] = -1;
        const uint32_t mesh = b.add_triangle(1);
        create_mesh_buffers_gl(b.arrays(mesh));
        const uint32_t scene = b.add_scene({b.object(object_model, mesh, material)});
        b.draw(scene, glsl);
        take_gl_calls();
        forget_objects(b.r.gl);
        b.draw(scene, glsl);
        const std::string vertices = R"(
glBindBuffer(GL_ARRAY_BUFFER, 102)
glNormalPointer(GL_FLOAT, 0, 0)
glBindBuffer(GL_ARRAY_BUFFER, 101)
glVertexPointer(3, GL_FLOAT, 0, 0)
glBindBuffer(GL_ELEMENT_ARRAY_BUFFER, 104)
glActiveTexture(GL_TEXTURE0)
glBindTexture(GL_TEXTURE_2D, 7)
glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_WRAP_S, GL_REPEAT)
glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_WRAP_T, GL_REPEAT)
)";
        const std::string drawing = "glDrawElements(GL_TRIANGLES, 3, GL_UNSIGNED_SHORT, 0)\n";
        const std::string fixed = R"(glClientActiveTexture(GL_TEXTURE0)
glBindBuffer(GL_ARRAY_BUFFER, 103)
glTexCoordPointer(2, GL_FLOAT, 0, 0)
)";
        const std::string program = R"(glUseProgram(50)
glUniform1f(21, 0)
glVertexAttribPointer(1, 3, GL_FLOAT, GL_FALSE, 0, 0)
glBindBuffer(GL_ARRAY_BUFFER, 102)
glVertexAttribPointer(2, 3, GL_FLOAT, GL_FALSE, 0, 0)
glBindBuffer(GL_ARRAY_BUFFER, 103)
glVertexAttribPointer(3, 2, GL_FLOAT, GL_FALSE, 0, 0)
glUniformMatrix4fv(11, 1, GL_FALSE, [1 0 0 0 0 1 0 0 0 0 1 0 0 0 0 1])
glUniformMatrix4fv(12, 1, GL_FALSE, [1 0 0 0 0 1 0 0 0 0 1 0 0 0 0 1])
glUniformMatrix3fv(13, 1, GL_FALSE, [1 0 0 0 1 0 0 0 1])
)";
        CHECK(take_gl_calls() == vertices + (glsl ? program : fixed) + drawing);
    }
}

TEST_CASE("where others have bound a buffer, a mesh in memory is drawn without one")
{
    record_bench b;
    uint32_t material = 0;
    b.add_material(&material);
    const uint32_t scene = b.add_scene({b.object(object_model, b.add_triangle(1), material)});
    b.draw(scene, false);
    take_gl_calls();
    forget_objects(b.r.gl);
    b.draw(scene, false);
    CHECK(take_gl_calls({"glBindBuffer", "glDrawElements"}) == R"(
glBindBuffer(GL_ARRAY_BUFFER, 0)
glBindBuffer(GL_ELEMENT_ARRAY_BUFFER, 0)
glDrawElements(GL_TRIANGLES, 3, GL_UNSIGNED_SHORT, [0 1 2])
)");
}
