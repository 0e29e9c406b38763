#include "render/layer_plan.h"

#include "builders.h"

#include <doctest/doctest.h>

#include <cmath>
#include <limits>

constexpr frame_view screen = {800, 600, 4.0f / 3.0f};
constexpr uint8_t clear_both = clear_color | clear_depth;

static gl_caps caps_with(bool any_size)
{
    gl_caps caps = initial_caps;
    caps.npot = any_size ? 1 : 0;
    return caps;
}

static frame_layers plan_at(const test_document& t, uint32_t time, bool any_size = true)
{
    return plan_layers(t.d, time, screen, caps_with(any_size));
}

namespace {

// A document with one scene (handle 1), whose tracks are filled by add_layer.
struct scene_document : test_document {
    scene_document()
    {
        add_scene(*this);
    }
};

} // namespace

// A layer of 1000 ticks in a mode, with a target.
static layer_record mode_layer(uint32_t type, uint32_t rtex = 0)
{
    layer_record layer = make_layer(type, 1000, 1);
    layer.rtex = rtex;
    return layer;
}

// ---- which layer ------------------------------------------------------------------

TEST_CASE("Side by side layers with a pause between them")
{
    scene_document t;
    add_layer(t, 0, make_layer(render_simple, 300, 1));
    layer_record second = make_layer(render_simple, 300, 1);
    second.space_before = 100;
    add_layer(t, 0, second);

    CHECK(plan_at(t, 0).drawn == 1);
    const frame_layers before = plan_at(t, 299);
    REQUIRE(before.layer_count == 1);
    CHECK(before.layers[0].layer == 0);
    CHECK(before.layers[0].time == 299);
    CHECK(plan_at(t, 300).drawn == 0); // the slot is the second layer's, which pauses
    CHECK(plan_at(t, 350).drawn == 0);
    CHECK(plan_at(t, 399).drawn == 0);
    const frame_layers begin = plan_at(t, 400);
    REQUIRE(begin.layer_count == 1);
    CHECK(begin.layers[0].layer == 1);
    CHECK(begin.layers[0].time == 0);
    REQUIRE(plan_at(t, 700).layer_count == 1);
    CHECK(plan_at(t, 700).layers[0].time == 300);
    CHECK(plan_at(t, 701).layer_count == 0);
    CHECK(plan_at(t, 701).drawn == 0);
}

TEST_CASE("On a whole second the later layer gets the tick, inside one the earlier")
{
    scene_document t;
    add_layer(t, 0, make_layer(render_simple, 300, 1));
    add_layer(t, 0, make_layer(render_simple, 250, 1));
    add_layer(t, 0, make_layer(render_simple, 250, 1));
    REQUIRE(plan_at(t, 300).layer_count == 1);
    CHECK(plan_at(t, 300).layers[0].layer == 1);
    CHECK(plan_at(t, 300).layers[0].time == 0);
    REQUIRE(plan_at(t, 550).layer_count == 1);
    CHECK(plan_at(t, 550).layers[0].layer == 1);
    CHECK(plan_at(t, 550).layers[0].time == 250);
    CHECK(plan_at(t, 551).layers[0].layer == 2);
    CHECK(plan_at(t, 551).layers[0].time == 1);
}

TEST_CASE("The search walks over layers that ended within the second")
{
    scene_document t;
    for (int i = 0; i < 8; ++i)
        add_layer(t, 0, make_layer(render_simple, i == 0 ? 200 : 130, 1));
    // Ends: 200, 330, 460, 590 ..; second 4 (400..499) begins in layer 2.
    CHECK(plan_at(t, 455).layers[0].layer == 2);
    CHECK(plan_at(t, 465).layers[0].layer == 3);
    CHECK(plan_at(t, 465).layers[0].time == 5);
}

TEST_CASE("A layer inside one second is never shown, and the one after it counts from 0")
{
    scene_document t;
    add_layer(t, 0, make_layer(render_simple, 2500, 1));
    layer_record waiting = make_layer(render_simple, 50, 1);
    waiting.space_before = 1200;
    add_layer(t, 3, waiting);                           // 0..1250
    add_layer(t, 3, make_layer(render_simple, 40, 1));  // 1250..1290, lost
    add_layer(t, 3, make_layer(render_simple, 500, 1)); // 1290..1790
    // The lost layer's end stayed 0: the search walks past it to the next one, whose
    // time then counts from 0, in the lost layer's own span too.
    for (const uint32_t time : {1260u, 1290u, 1300u, 1790u}) {
        const frame_layers frame = plan_at(t, time);
        REQUIRE(frame.layer_count == 2);
        CHECK(frame.layers[1].layer == 2);
        CHECK(frame.layers[1].time == time);
    }
    CHECK(plan_at(t, 1791).layer_count == 1);
}

TEST_CASE("The offset is added to the time of functions")
{
    scene_document t;
    layer_record layer = make_layer(render_simple, 500, 1);
    layer.space_before = 50;
    layer.offset = 1000;
    add_layer(t, 0, layer);
    REQUIRE(plan_at(t, 70).layer_count == 1);
    CHECK(plan_at(t, 70).layers[0].time == 1020);
}

TEST_CASE("Track 0 decides when the show is over")
{
    scene_document t;
    add_layer(t, 0, make_layer(render_simple, 300, 1));
    add_layer(t, 1, make_layer(render_simple, 900, 1));
    CHECK(plan_at(t, 300).layer_count == 2);
    CHECK(plan_at(t, 350).layer_count == 1); // second 3 is still track 0's
    CHECK(plan_at(t, 350).drawn == 1);
    CHECK(plan_at(t, 400).layer_count == 0);
    CHECK(plan_at(t, 400).drawn == 0);
}

TEST_CASE("Without layers on track 0 nothing is planned")
{
    scene_document t;
    add_layer(t, 1, make_layer(render_simple, 900, 1));
    CHECK(plan_at(t, 10).layer_count == 0);
}

TEST_CASE("A document without a timeline plans nothing")
{
    const document empty = {};
    CHECK(plan_layers(empty, 0, screen, initial_caps).layer_count == 0);
    CHECK(plan_layers(empty, 0, screen, initial_caps).drawn == 0);
}

TEST_CASE("Times beyond the table find nothing")
{
    scene_document t;
    add_layer(t, 0, make_layer(render_simple, 25600, 1));
    CHECK(plan_at(t, 25599).drawn == 1);
    CHECK(plan_at(t, 25600).drawn == 0);
    CHECK(plan_at(t, 25601).drawn == 0);
    CHECK(plan_at(t, 0xFFFFFFFFu).drawn == 0);
}

TEST_CASE("A layer without a scene is active but does not count as drawn")
{
    scene_document t;
    add_layer(t, 0, make_layer(render_simple, 300, 0));
    CHECK(plan_at(t, 10).layer_count == 1); // it still sets target, clear and camera
    CHECK(plan_at(t, 10).drawn == 0);
    add_layer(t, 1, make_layer(render_link, 300, 1));
    CHECK(plan_at(t, 10).layer_count == 2);
    CHECK(plan_at(t, 10).drawn == 1);
}

TEST_CASE("A scene that does not exist counts as none")
{
    scene_document t;
    add_layer(t, 0, make_layer(render_simple, 300, 77));
    REQUIRE(plan_at(t, 10).layer_count == 1);
    CHECK(plan_at(t, 10).layers[0].model_id == 0);
    CHECK(plan_at(t, 10).drawn == 0);
}

TEST_CASE("All 32 tracks are planned in order")
{
    scene_document t;
    for (uint32_t track = 0; track < track_count; ++track)
        add_layer(t, track, mode_layer(render_simple));
    const frame_layers frame = plan_at(t, 10);
    REQUIRE(frame.layer_count == 32);
    CHECK(frame.drawn == 32);
    for (uint32_t i = 0; i < 32; ++i)
        CHECK(frame.layers[i].track == i);
}

TEST_CASE("A track of 256 layers is searched to its end")
{
    scene_document t;
    for (uint32_t i = 0; i < layers_per_track; ++i)
        add_layer(t, 0, make_layer(render_simple, 90, 1));
    CHECK(plan_at(t, 23000).drawn == 1);
    CHECK(plan_at(t, 23039).layers[0].layer == 255);
    CHECK(plan_at(t, 23041).drawn == 0); // beyond the last layer, in a second that has a slot
}

// ---- targets ----------------------------------------------------------------------

TEST_CASE("A screen layer sets the whole viewport")
{
    scene_document t;
    add_layer(t, 0, mode_layer(render_simple));
    const frame_layers frame = plan_at(t, 10);
    CHECK(frame.layers[0].viewport_width == 800);
    CHECK(frame.layers[0].viewport_height == 600);
    CHECK(frame.layers[0].flush_texture == 0);
    CHECK(frame.layers[0].target == 0);
}

TEST_CASE("A texture is copied by the next screen layer, which clears and restores the viewport")
{
    scene_document t;
    const uint32_t texture = add_image_texture(t, 256, 128);
    add_layer(t, 0, mode_layer(render_simple));
    add_layer(t, 1, mode_layer(render_to_texture, texture));
    add_layer(t, 2, mode_layer(render_simple));
    const frame_layers frame = plan_at(t, 10);
    REQUIRE(frame.layer_count == 3);
    CHECK(frame.layers[1].target == texture);
    CHECK(frame.layers[1].flush_texture == 0);
    CHECK(frame.layers[1].recreate_width == 0);
    CHECK(frame.layers[1].viewport_width == 256);
    CHECK(frame.layers[1].viewport_height == 128);
    CHECK(frame.layers[1].clear == clear_nothing);
    CHECK(frame.layers[2].flush_texture == texture);
    CHECK(frame.layers[2].flush_width == 256);
    CHECK(frame.layers[2].flush_height == 128);
    CHECK(frame.layers[2].clear == clear_both);
    CHECK(frame.layers[2].viewport_width == 800);
    CHECK(frame.layers[2].viewport_height == 600);
}

TEST_CASE("A texture is copied once, and only the layer that copies clears for it")
{
    for (const uint32_t mode : {render_simple, render_link}) {
        scene_document t;
        add_layer(t, 0, mode_layer(render_to_texture, add_image_texture(t, 64, 64)));
        add_layer(t, 1, mode_layer(render_simple));
        add_layer(t, 2, mode_layer(mode));
        const frame_layers frame = plan_at(t, 10);
        REQUIRE(frame.layer_count == 3);
        CHECK(frame.layers[1].clear == clear_both);
        CHECK(frame.layers[2].flush_texture == 0);
        CHECK(frame.layers[2].clear == clear_nothing);
    }
}

TEST_CASE("Linked layers draw into the pending target and copy nothing")
{
    scene_document t;
    const uint32_t texture = add_image_texture(t, 256, 256);
    add_layer(t, 0, mode_layer(render_to_texture, texture));
    add_layer(t, 1, mode_layer(render_link));
    add_layer(t, 2, mode_layer(render_clear_depth_link));
    add_layer(t, 3, mode_layer(render_clear_depth));
    const frame_layers frame = plan_at(t, 10);
    REQUIRE(frame.layer_count == 4);
    for (const uint32_t linked : {1u, 2u}) {
        CHECK(frame.layers[linked].flush_texture == 0);
        CHECK(frame.layers[linked].viewport_width == 0);
        CHECK(frame.layers[linked].viewport_height == 0);
        CHECK(frame.layers[linked].target == 0);
    }
    CHECK(frame.layers[3].flush_texture == texture);
    CHECK(frame.layers[3].viewport_width == 800);
}

TEST_CASE("One texture layer after another copies the first and draws for the second")
{
    scene_document t;
    const uint32_t first = add_image_texture(t, 256, 256);
    const uint32_t second = add_image_texture(t, 128, 64);
    add_layer(t, 0, mode_layer(render_to_texture, first));
    add_layer(t, 1, mode_layer(render_to_texture_16_9, second));
    add_layer(t, 2, mode_layer(render_simple));
    const frame_layers frame = plan_at(t, 10);
    REQUIRE(frame.layer_count == 3);
    CHECK(frame.layers[1].flush_texture == first);
    CHECK(frame.layers[1].target == second);
    CHECK(frame.layers[1].viewport_width == 128);
    CHECK(frame.layers[1].clear == clear_both);
    CHECK(frame.layers[2].flush_texture == second);
    CHECK(frame.layers[2].flush_width == 128);
    CHECK(frame.layers[2].flush_height == 64);
}

TEST_CASE("A target still pending at the end is copied by nobody")
{
    scene_document t;
    const uint32_t texture = add_image_texture(t, 256, 256);
    add_layer(t, 0, mode_layer(render_simple));
    add_layer(t, 31, mode_layer(render_to_texture, texture));
    const frame_layers frame = plan_at(t, 10);
    REQUIRE(frame.layer_count == 2);
    for (uint32_t i = 0; i < 2; ++i)
        CHECK(frame.layers[i].flush_texture == 0);
    CHECK(plan_at(t, 11).layers[0].flush_texture == 0); // nor by the next frame
}

TEST_CASE("Without a texture of its own a texture layer copies a pending target and leaves it pending")
{
    for (const uint32_t missing : {0u, 99u}) // none, and a record that does not exist
        for (const uint32_t mode :
            {render_to_texture, render_to_texture_16_9, render_quarter, render_quarter_keep, render_quarter_4_3}) {
            scene_document t;
            const uint32_t texture = add_image_texture(t, 256, 256);
            add_layer(t, 0, mode_layer(render_to_texture, texture));
            add_layer(t, 1, mode_layer(mode, missing));
            add_layer(t, 2, mode_layer(render_simple));
            const frame_layers frame = plan_at(t, 10);
            REQUIRE(frame.layer_count == 3);
            CHECK(frame.layers[1].flush_texture == texture);
            CHECK(frame.layers[1].target == 0);
            CHECK(frame.layers[1].viewport_width == 0);
            CHECK(frame.layers[1].clear == clear_both);
            CHECK(frame.layers[2].flush_texture == texture);
        }
}

TEST_CASE("A quarter target takes half the screen, rounded down without textures of any size")
{
    scene_document t;
    const uint32_t texture = add_image_texture(t, 64, 64);
    add_layer(t, 0, mode_layer(render_quarter, texture));
    const frame_layers any = plan_at(t, 10, true);
    CHECK(any.layers[0].recreate_width == 400);
    CHECK(any.layers[0].recreate_height == 300);
    CHECK(any.layers[0].viewport_width == 400);
    CHECK(any.layers[0].viewport_height == 300);
    const frame_layers rounded = plan_at(t, 10, false);
    CHECK(rounded.layers[0].recreate_width == 256);
    CHECK(rounded.layers[0].recreate_height == 256);
    CHECK(rounded.layers[0].viewport_width == 256);
    CHECK(rounded.layers[0].viewport_height == 256);
}

TEST_CASE("Halves are whole numbers and every quarter mode takes them")
{
    for (const uint32_t mode : {render_quarter, render_quarter_keep, render_quarter_4_3}) {
        scene_document t;
        add_layer(t, 0, mode_layer(mode, add_image_texture(t, 64, 64)));
        const frame_layers frame = plan_layers(t.d, 10, {321, 241, 1.0f}, caps_with(true));
        CHECK(frame.layers[0].recreate_width == 160);
        CHECK(frame.layers[0].recreate_height == 120);
        const frame_layers rounded = plan_layers(t.d, 10, {321, 241, 1.0f}, caps_with(false));
        CHECK(rounded.layers[0].recreate_width == 128); // of 160
        CHECK(rounded.layers[0].recreate_height == 64); // of 120
    }
}

TEST_CASE("A quarter target of the right size is kept")
{
    scene_document t;
    add_layer(t, 0, mode_layer(render_quarter, add_image_texture(t, 400, 300)));
    const frame_layers frame = plan_at(t, 10);
    CHECK(frame.layers[0].recreate_width == 0);
    CHECK(frame.layers[0].viewport_width == 400);
}

TEST_CASE("Sides are rounded to 64, 128 or 256")
{
    CHECK(round_target_side(0) == 64);
    CHECK(round_target_side(127) == 64);
    CHECK(round_target_side(128) == 128);
    CHECK(round_target_side(255) == 128);
    CHECK(round_target_side(256) == 256);
    CHECK(round_target_side(4000) == 256);
}

TEST_CASE("A texture layer keeps its texture's size unless the screen is smaller")
{
    for (const uint32_t mode : {render_to_texture, render_to_texture_16_9}) {
        scene_document t;
        add_layer(t, 0, mode_layer(mode, add_image_texture(t, 512, 600)));
        add_layer(t, 1, mode_layer(mode, add_image_texture(t, 1024, 16)));
        add_layer(t, 2, mode_layer(mode, add_image_texture(t, 16, 601)));
        const frame_layers any = plan_at(t, 10, true);
        CHECK(any.layers[0].recreate_width == 0);
        CHECK(any.layers[0].viewport_height == 600);
        for (const uint32_t larger : {1u, 2u}) {
            CHECK(any.layers[larger].recreate_width == 800);
            CHECK(any.layers[larger].recreate_height == 600);
            CHECK(any.layers[larger].viewport_width == 800);
        }
        const frame_layers rounded = plan_at(t, 10, false);
        CHECK(rounded.layers[1].recreate_width == 256);
        CHECK(rounded.layers[1].recreate_height == 256);
    }
}

TEST_CASE("A target recreated twice in one frame counts with its latest size")
{
    scene_document t;
    add_image_texture(t, 64, 64); // another one in front, so that sizes are looked up by texture
    const uint32_t large = add_image_texture(t, 2000, 2000);
    add_layer(t, 0, mode_layer(render_quarter, 1));
    add_layer(t, 1, mode_layer(render_to_texture, large));
    add_layer(t, 2, mode_layer(render_quarter, large));
    add_layer(t, 3, mode_layer(render_quarter, large));
    add_layer(t, 4, mode_layer(render_simple));
    const frame_layers frame = plan_at(t, 0);
    REQUIRE(frame.layer_count == 5);
    CHECK(frame.layers[0].recreate_width == 400);
    CHECK(frame.layers[1].recreate_width == 800);
    CHECK(frame.layers[2].flush_width == 800);
    CHECK(frame.layers[2].flush_height == 600);
    CHECK(frame.layers[2].recreate_width == 400);
    CHECK(frame.layers[3].flush_width == 400);
    CHECK(frame.layers[3].recreate_width == 0);
    CHECK(frame.layers[4].flush_texture == large);
    CHECK(frame.layers[4].flush_width == 400);
    CHECK(frame.layers[4].flush_height == 300);
}

TEST_CASE("A recreated target counts with its new size for the rest of the frame")
{
    scene_document t;
    const uint32_t texture = add_image_texture(t, 64, 64);
    add_layer(t, 0, mode_layer(render_quarter, texture));
    add_layer(t, 1, mode_layer(render_to_texture, texture));
    add_layer(t, 2, mode_layer(render_simple));
    const frame_layers frame = plan_at(t, 10);
    REQUIRE(frame.layer_count == 3);
    CHECK(frame.layers[0].recreate_width == 400);
    CHECK(frame.layers[1].flush_width == 400);
    CHECK(frame.layers[1].flush_height == 300);
    CHECK(frame.layers[1].recreate_width == 0);
    CHECK(frame.layers[1].viewport_width == 400);
    CHECK(frame.layers[2].flush_width == 400);
    // The plan itself changes no record.
    CHECK(table_get(t.d.image_texture_table, texture)->width == 64);
}

TEST_CASE("Tiny and empty screens still give a target of at least a pixel")
{
    for (const uint32_t side : {0u, 1u})
        for (const bool any_size : {true, false}) {
            scene_document t;
            add_layer(t, 0, mode_layer(render_quarter, add_image_texture(t, 64, 32)));
            add_layer(t, 1, mode_layer(render_to_texture, add_image_texture(t, 64, 32)));
            const frame_layers frame = plan_layers(t.d, 10, {side, side, 1.0f}, caps_with(any_size));
            REQUIRE(frame.layer_count == 2);
            for (uint32_t i = 0; i < 2; ++i) {
                CHECK(frame.layers[i].recreate_width == (any_size ? 1 : 64));
                CHECK(frame.layers[i].viewport_height == (any_size ? 1 : 64));
            }
        }
}

// ---- clearing -----------------------------------------------------------------------

TEST_CASE("Track 0 clears colour and depth in every mode")
{
    for (uint32_t mode = 0; mode < render_mode_count; ++mode) {
        scene_document t;
        add_layer(t, 0, mode_layer(mode, add_image_texture(t, 64, 64)));
        CHECK(plan_at(t, 10).layers[0].clear == clear_both);
    }
}

TEST_CASE("Track 0 in a pause clears nothing: the next track's rule stands")
{
    scene_document t;
    layer_record late = mode_layer(render_simple);
    late.space_before = 50;
    add_layer(t, 0, late);
    add_layer(t, 1, mode_layer(render_simple));
    const frame_layers frame = plan_at(t, 10);
    REQUIRE(frame.layer_count == 1);
    CHECK(frame.layers[0].clear == clear_nothing);
}

TEST_CASE("Other tracks clear nothing, or depth in the two modes that ask for it")
{
    for (uint32_t mode = 0; mode < render_mode_count; ++mode) {
        scene_document t;
        add_layer(t, 0, mode_layer(render_simple));
        add_layer(t, 1, mode_layer(mode, add_image_texture(t, 64, 64)));
        const uint8_t expected = mode == 3 || mode == 8 ? clear_depth : clear_nothing;
        CHECK(plan_at(t, 10).layers[1].clear == expected);
    }
}

TEST_CASE("After a copy mode 3 clears colour too")
{
    scene_document t;
    add_layer(t, 0, mode_layer(render_to_texture, add_image_texture(t, 64, 64)));
    add_layer(t, 1, mode_layer(render_clear_depth));
    CHECK(plan_at(t, 10).layers[1].clear == clear_both);
}

TEST_CASE("The mode that keeps the picture holds back the clear after its copy")
{
    scene_document t;
    add_layer(t, 0, mode_layer(render_quarter_keep, add_image_texture(t, 400, 300)));
    add_layer(t, 1, mode_layer(render_simple));
    const frame_layers frame = plan_at(t, 10);
    CHECK(frame.layers[1].flush_texture != 0);
    CHECK(frame.layers[1].clear == clear_nothing);
}

TEST_CASE("After the mode that keeps the picture mode 3 clears depth only")
{
    scene_document t;
    add_layer(t, 0, mode_layer(render_quarter_keep, add_image_texture(t, 400, 300)));
    add_layer(t, 1, mode_layer(render_clear_depth));
    CHECK(plan_at(t, 10).layers[1].clear == clear_depth);
}

TEST_CASE("A linked layer in between cancels the kept picture")
{
    scene_document t;
    add_layer(t, 0, mode_layer(render_quarter_keep, add_image_texture(t, 400, 300)));
    add_layer(t, 1, mode_layer(render_link));
    add_layer(t, 2, mode_layer(render_simple));
    const frame_layers frame = plan_at(t, 10);
    REQUIRE(frame.layer_count == 3);
    CHECK(frame.layers[2].flush_texture != 0);
    CHECK(frame.layers[2].clear == clear_both);
}

TEST_CASE("A track in a pause between does not cancel the kept picture")
{
    scene_document t;
    add_layer(t, 0, mode_layer(render_quarter_keep, add_image_texture(t, 400, 300)));
    layer_record late = mode_layer(render_link);
    late.space_before = 500;
    add_layer(t, 1, late);
    add_layer(t, 2, mode_layer(render_simple));
    const frame_layers frame = plan_at(t, 10);
    REQUIRE(frame.layer_count == 2);
    CHECK(frame.layers[1].clear == clear_nothing);
}

TEST_CASE("On track 0 even the layer after a kept picture of the frame before clears")
{
    scene_document t;
    add_layer(t, 0, mode_layer(render_quarter_keep, add_image_texture(t, 400, 300)));
    CHECK(plan_at(t, 10).layers[0].clear == clear_both);
    CHECK(plan_at(t, 11).layers[0].clear == clear_both);
}

// ---- projection ---------------------------------------------------------------------

TEST_CASE("A constant field of view sets the projection except for linked layers")
{
    for (uint32_t mode = 0; mode < render_mode_count; ++mode) {
        scene_document t;
        add_layer(t, 0, mode_layer(mode, add_image_texture(t, 64, 64)));
        const layer_plan layer = plan_at(t, 10).layers[0];
        CHECK(layer.projection == (mode == 2 || mode == 8 ? projection_kept : projection_perspective));
        CHECK(layer.depth_test == 1);
        CHECK(layer.fov == 60.0f);
        CHECK(layer.far_distance == 100.0f);
    }
}

TEST_CASE("A dynamic field of view sets the projection of linked layers too")
{
    for (uint32_t mode = 0; mode < render_mode_count; ++mode) {
        scene_document t;
        layer_record layer = mode_layer(mode, add_image_texture(t, 64, 64));
        layer.camera_mode[camera_fov] = fov_dynamic;
        layer.camera[camera_fov] = static_cast<float>(add_function(t, linear_function(2.0f, 30.0f)));
        layer.offset = 5;
        add_layer(t, 0, layer);
        const layer_plan plan = plan_at(t, 10).layers[0];
        CHECK(plan.projection == projection_perspective);
        CHECK(plan.depth_test == 1);
        CHECK(plan.fov == 60.0f); // 2 * 15 + 30
    }
}

TEST_CASE("An orthographic layer draws without depth test in every mode")
{
    for (uint32_t mode = 0; mode < render_mode_count; ++mode) {
        scene_document t;
        layer_record layer = mode_layer(mode, add_image_texture(t, 64, 64));
        layer.camera_mode[camera_fov] = fov_orthographic;
        add_layer(t, 0, layer);
        const layer_plan plan = plan_at(t, 10).layers[0];
        CHECK(plan.projection == projection_orthographic);
        CHECK(plan.depth_test == 0);
    }
}

TEST_CASE("Two modes force an aspect of their own")
{
    for (const uint8_t fov : {fov_constant, fov_dynamic})
        for (uint32_t mode = 0; mode < render_mode_count; ++mode) {
            scene_document t;
            layer_record layer = mode_layer(mode, add_image_texture(t, 64, 64));
            layer.camera_mode[camera_fov] = fov;
            add_layer(t, 0, layer);
            const frame_layers frame = plan_layers(t.d, 10, {800, 600, 1.25f}, caps_with(true));
            CHECK(frame.layers[0].aspect == (mode == 4 ? 1.6f : mode == 7 ? 1.333333f : 1.25f));
        }
}

// ---- camera and colours -----------------------------------------------------------------

TEST_CASE("Camera values are constants or follow their functions at the function time")
{
    scene_document t;
    layer_record layer = make_layer(render_simple, 1000, 1);
    layer.space_before = 100;
    layer.offset = 1000;
    for (uint32_t i = 0; i < camera_value_count; ++i)
        layer.camera[i] = static_cast<float>(i + 1);
    add_function(t, linear_function(1.0f));
    const uint32_t handle = add_function(t, linear_function(3.0f, 1.0f));
    layer.camera_mode[camera_y] = 1;
    layer.camera[camera_y] = static_cast<float>(handle);
    layer.camera_mode[camera_rotation_z] = 1;
    layer.camera[camera_rotation_z] = 1.0f;
    layer.camera_mode[camera_far] = 1;
    layer.camera[camera_far] = static_cast<float>(handle);
    add_layer(t, 0, layer);

    REQUIRE(plan_at(t, 120).layer_count == 1);
    const layer_plan plan = plan_at(t, 120).layers[0];
    CHECK(plan.time == 1020);
    CHECK(plan.position[0] == 1.0f);
    CHECK(plan.position[1] == 3061.0f);
    CHECK(plan.position[2] == 3.0f);
    CHECK(plan.rotation[0] == 4.0f);
    CHECK(plan.rotation[1] == 5.0f);
    CHECK(plan.rotation[2] == 1020.0f);
    CHECK(plan.fov == 7.0f);
    CHECK(plan.far_distance == 3061.0f);
}

TEST_CASE("A camera value with a missing function is 1")
{
    scene_document t;
    layer_record layer = make_layer(render_simple, 1000, 1);
    layer.camera_mode[camera_x] = 1;
    layer.camera[camera_x] = 12.0f;
    add_layer(t, 0, layer);
    CHECK(plan_at(t, 10).layers[0].position[0] == 1.0f);
}

TEST_CASE("Values that are no numbers pass through")
{
    scene_document t;
    layer_record layer = make_layer(render_quarter, 1000, 1);
    layer.rtex = add_image_texture(t, 64, 64);
    for (float& value : layer.camera)
        value = std::nanf("");
    add_layer(t, 0, layer);
    for (uint32_t i = 0; i < camera_value_count; ++i)
        layer.camera_mode[i] = 2;
    add_layer(t, 1, layer);
    const float infinity = std::numeric_limits<float>::infinity();
    const frame_layers frame = plan_layers(t.d, 10, {800, 600, infinity}, caps_with(true));
    REQUIRE(frame.layer_count == 2);
    CHECK(std::isnan(frame.layers[0].position[0]));
    CHECK(std::isnan(frame.layers[0].fov));
    CHECK(frame.layers[1].fov == 1.0f); // a handle that is none
}

TEST_CASE("The clear colour is the record's values 3 to 5, each constant or dynamic")
{
    scene_document t;
    add_function(t, linear_function(0.01f));
    value_record color = {};
    for (uint32_t i = 0; i < 9; ++i)
        color.values[i] = 0.1f * static_cast<float>(i);
    color.values[4] = 1.0f;
    color.dynamic_flags[0] = 8; // value 4
    layer_record layer = mode_layer(render_simple);
    layer.clearcolor = table_add(t.d.transform_table, color);
    add_layer(t, 0, layer);
    const layer_plan plan = plan_at(t, 50).layers[0];
    CHECK(plan.clear_color[0] == 0.1f * 3.0f);
    CHECK(plan.clear_color[1] == 0.5f);
    CHECK(plan.clear_color[2] == 0.1f * 5.0f);
}

TEST_CASE("Without a colour record, or with one that does not exist, the clear colour is black")
{
    for (const uint32_t handle : {0u, 50u}) {
        scene_document t;
        add_color(t, 1, 1, 1);
        layer_record layer = mode_layer(render_simple);
        layer.clearcolor = handle;
        add_layer(t, 0, layer);
        for (const float channel : plan_at(t, 10).layers[0].clear_color)
            CHECK(channel == 0.0f);
    }
}

TEST_CASE("Modes outside the catalogue change no target and clear nothing off track 0")
{
    scene_document t;
    const uint32_t texture = add_image_texture(t, 64, 64);
    add_layer(t, 0, mode_layer(render_to_texture, texture));
    add_layer(t, 1, mode_layer(9, texture));
    add_layer(t, 2, mode_layer(0xFFFFFFFFu, texture));
    const frame_layers frame = plan_at(t, 10);
    REQUIRE(frame.layer_count == 3);
    for (const uint32_t i : {1u, 2u}) {
        CHECK(frame.layers[i].flush_texture == 0);
        CHECK(frame.layers[i].target == 0);
        CHECK(frame.layers[i].viewport_width == 0);
        CHECK(frame.layers[i].clear == clear_nothing);
    }
}
