#include "shell/dialog_logic.h"

#include <doctest/doctest.h>

#include <cstddef>
#include <vector>

namespace {

// A dialog as it opens, driven by presses.
struct dialog {
    player_choices choices;
    dialog_state state;
};

} // namespace

static dialog opened()
{
    dialog d;
    dialog_begin(d.state, d.choices);
    return d;
}

static dialog_pass_result hold(dialog& d, int32_t x, int32_t y)
{
    return dialog_pass(d.state, d.choices, x, y, true);
}

static dialog_pass_result release(dialog& d, int32_t x, int32_t y)
{
    return dialog_pass(d.state, d.choices, x, y, false);
}

static void click(dialog& d, int32_t x, int32_t y)
{
    hold(d, x, y);
    release(d, x, y);
}

// Everything that the viewer can choose, in one row.
static std::vector<int64_t> numbers(const player_choices& s)
{
    return {s.resolution_index, s.aspect_index, s.fullscreen, s.antialiasing, s.music_enabled, s.use_vbo, s.use_glsl};
}

TEST_CASE("dialog: it opens with everything on, desktop size, automatic aspect and shaders")
{
    CHECK(numbers(opened().choices) == std::vector<int64_t>{0, 0, 1, 1, 1, 1, 1});
}

TEST_CASE("dialog: a click beside every region changes nothing and draws nothing")
{
    dialog d = opened();
    CHECK(!hold(d, 200, 5).redraw);
    CHECK(!release(d, 200, 5).started);
    CHECK(numbers(d.choices) == numbers(opened().choices));
}

TEST_CASE("dialog: every resolution row begins and ends where it should")
{
    const int32_t first[] = {15, 34, 64, 94, 127, 157, 190, 220, 250, 283, 314, 345};
    const int32_t last[] = {33, 63, 93, 126, 156, 189, 219, 249, 282, 313, 344, 383};
    for (uint32_t row = 0; row < 12; ++row) {
        CAPTURE(row);
        for (const int32_t y : {first[row], last[row]}) {
            dialog d = opened();
            d.choices.resolution_index = (row + 1) % 12;
            hold(d, 80, y);
            CHECK(d.choices.resolution_index == row);
        }
    }
}

TEST_CASE("dialog: the last resolution row goes on below the window")
{
    dialog d = opened();
    hold(d, 80, 400);
    CHECK(d.choices.resolution_index == 11);
    d = opened();
    hold(d, 80, 32767);
    CHECK(d.choices.resolution_index == 11);
}

TEST_CASE("dialog: the resolution list ends at its columns and above its first row")
{
    const int32_t outside[][2] = {{7, 100}, {168, 100}, {80, 14}, {80, -1}};
    for (const auto& p : outside) {
        dialog d = opened();
        CHECK(!hold(d, p[0], p[1]).redraw);
        CHECK(d.choices.resolution_index == 0);
    }
    for (const int32_t x : {8, 167}) {
        dialog d = opened();
        CHECK(hold(d, x, 100).redraw);
        CHECK(d.choices.resolution_index == 3);
    }
}

TEST_CASE("dialog: every aspect row begins and ends where it should")
{
    const int32_t first[] = {10, 36, 67, 100};
    const int32_t last[] = {35, 66, 99, 130};
    for (uint32_t row = 0; row < 4; ++row) {
        CAPTURE(row);
        for (const int32_t x : {186, 261}) {
            for (const int32_t y : {first[row], last[row]}) {
                dialog d = opened();
                d.choices.aspect_index = (row + 1) % 4;
                hold(d, x, y);
                CHECK(d.choices.aspect_index == row);
            }
        }
    }
}

TEST_CASE("dialog: the aspect list ends at its columns and rows")
{
    const int32_t outside[][2] = {{185, 50}, {262, 50}, {200, 9}, {200, 131}};
    for (const auto& p : outside) {
        dialog d = opened();
        CHECK(!hold(d, p[0], p[1]).redraw);
        CHECK(d.choices.aspect_index == 0);
    }
}

TEST_CASE("dialog: the upper rendering path is fixed-function, the lower one the shaders")
{
    for (const int32_t y : {316, 340}) {
        dialog d = opened();
        hold(d, 212, y);
        CHECK(d.choices.use_glsl == 0);
    }
    for (const int32_t y : {344, 372}) {
        dialog d = opened();
        d.choices.use_glsl = 0;
        hold(d, 433, y);
        CHECK(d.choices.use_glsl == 1);
    }
}

TEST_CASE("dialog: between and around the rendering paths nothing matches")
{
    const int32_t outside[][2] = {{320, 315}, {320, 341}, {320, 343}, {320, 373}, {211, 330}, {434, 330}};
    for (const auto& p : outside) {
        CAPTURE(p[1]);
        dialog d = opened();
        d.choices.use_glsl = 7; // neither row
        dialog_begin(d.state, d.choices);
        CHECK(!hold(d, p[0], p[1]).redraw);
        CHECK(d.choices.use_glsl == 7);
    }
}

TEST_CASE("dialog: columns that match with rows that do not let later regions have the press")
{
    // x 212..261 belongs to the aspect list, the paths and the start button alike.
    dialog d = opened();
    hold(d, 230, 330);
    CHECK(d.choices.use_glsl == 0);
    CHECK(d.choices.aspect_index == 0);
    d = opened();
    CHECK(hold(d, 230, 220).start_pressed);
    // x 283..295 belongs to the paths, the start button and all four boxes.
    d = opened();
    hold(d, 290, 80);
    CHECK(d.choices.music_enabled == -1);
}

namespace {

struct box_case {
    int32_t player_choices::*option;
    int32_t top;
    int32_t bottom;
};

} // namespace

constexpr box_case boxes[] = {
    {&player_choices::fullscreen, 14, 26},
    {&player_choices::antialiasing, 45, 57},
    {&player_choices::music_enabled, 76, 89},
    {&player_choices::use_vbo, 106, 120},
};

TEST_CASE("dialog: a check box is clickable exactly inside its own rectangle")
{
    for (const box_case& box : boxes) {
        CAPTURE(box.top);
        const int32_t inside[][2] = {{283, box.top}, {295, box.bottom}};
        for (const auto& p : inside) {
            dialog d = opened();
            CHECK(hold(d, p[0], p[1]).redraw);
            std::vector<int64_t> expected = numbers(opened().choices);
            expected[2 + static_cast<size_t>(&box - boxes)] = -1;
            CHECK(numbers(d.choices) == expected);
        }
        const int32_t outside[][2] = {{282, box.top}, {296, box.top}, {290, box.top - 1}, {290, box.bottom + 1}};
        for (const auto& p : outside) {
            dialog d = opened();
            CHECK(!hold(d, p[0], p[1]).redraw);
            CHECK(d.choices.*box.option == 1);
        }
    }
}

TEST_CASE("dialog: the rest of a mark's square is not clickable")
{
    dialog d = opened();
    hold(d, 279, 10);
    hold(d, 300, 31);
    CHECK(numbers(d.choices) == numbers(opened().choices));
}

TEST_CASE("dialog: a box toggles by negation, so a second press brings it back")
{
    dialog d = opened();
    click(d, 289, 20);
    CHECK(d.choices.fullscreen == -1);
    click(d, 289, 20);
    CHECK(d.choices.fullscreen == 1);
}

TEST_CASE("dialog: a held box toggles and draws once")
{
    dialog d = opened();
    CHECK(hold(d, 289, 20).redraw);
    for (int pass = 0; pass < 40; ++pass)
        CHECK(!hold(d, 289, 20).redraw);
    CHECK(d.choices.fullscreen == -1);
}

TEST_CASE("dialog: one latch serves all four boxes of a press")
{
    dialog d = opened();
    hold(d, 289, 20);
    CHECK(!hold(d, 289, 51).redraw);
    hold(d, 289, 20);
    CHECK(d.choices.fullscreen == -1);
    CHECK(d.choices.antialiasing == 1);
    release(d, 289, 51);
    click(d, 289, 51);
    CHECK(d.choices.antialiasing == -1);
}

TEST_CASE("dialog: dragging moves the selection of the lists and of the path")
{
    dialog d = opened();
    hold(d, 80, 141);
    CHECK(hold(d, 80, 173).redraw);
    CHECK(d.choices.resolution_index == 5);
    hold(d, 220, 51);
    hold(d, 220, 115);
    CHECK(d.choices.aspect_index == 3);
    hold(d, 320, 328);
    hold(d, 320, 358);
    CHECK(d.choices.use_glsl == 1);
}

TEST_CASE("dialog: a drag into a box toggles it, since the press has not toggled yet")
{
    dialog d = opened();
    hold(d, 80, 141);
    CHECK(hold(d, 289, 82).redraw);
    CHECK(d.choices.music_enabled == -1);
}

TEST_CASE("dialog: choosing what is chosen already draws nothing")
{
    dialog d = opened();
    CHECK(hold(d, 80, 48).redraw);
    CHECK(!hold(d, 90, 50).redraw);
    release(d, 90, 50);
    CHECK(!hold(d, 90, 40).redraw);
}

TEST_CASE("dialog: pressing and releasing on the start button starts")
{
    dialog d = opened();
    const dialog_pass_result pressed = hold(d, 318, 217);
    CHECK(pressed.redraw);
    CHECK(pressed.start_pressed);
    CHECK(!pressed.started);
    CHECK(!hold(d, 318, 217).redraw);
    CHECK(release(d, 318, 217).started);
}

TEST_CASE("dialog: the start button is hit exactly inside its rectangle")
{
    const int32_t inside[][2] = {{201, 192}, {436, 192}, {201, 243}, {436, 243}};
    for (const auto& p : inside) {
        dialog d = opened();
        CHECK(hold(d, p[0], p[1]).start_pressed);
        CHECK(release(d, p[0], p[1]).started);
    }
    const int32_t outside[][2] = {{200, 217}, {437, 217}, {318, 191}, {318, 244}};
    for (const auto& p : outside) {
        dialog d = opened();
        CHECK(!hold(d, p[0], p[1]).redraw);
        CHECK(!release(d, 318, 217).started);
    }
}

TEST_CASE("dialog: releasing outside the start button does not start")
{
    dialog d = opened();
    hold(d, 318, 217);
    hold(d, 100, 5);
    CHECK(!release(d, 100, 5).started);
    CHECK(!release(d, 318, 217).started); // and going back without a press does not either
}

TEST_CASE("dialog: dragging out of the start button and back in starts")
{
    dialog d = opened();
    hold(d, 318, 217);
    hold(d, 100, 5);
    CHECK(d.state.start_armed == 1);
    CHECK(release(d, 318, 217).started);
}

TEST_CASE("dialog: leaving the start button with the button held draws it as not pressed")
{
    dialog d = opened();
    hold(d, 318, 217);
    const dialog_pass_result left = hold(d, 318, 260);
    CHECK(left.redraw);
    CHECK(!left.start_pressed);
    CHECK(!hold(d, 318, 262).redraw);
    const dialog_pass_result back = hold(d, 318, 217);
    CHECK(back.redraw);
    CHECK(back.start_pressed);
}

TEST_CASE("dialog: a press that began elsewhere arms the start button by dragging onto it")
{
    dialog d = opened();
    hold(d, 80, 141);
    CHECK(hold(d, 318, 217).start_pressed);
    CHECK(release(d, 318, 217).started);
}

TEST_CASE("dialog: an armed start button survives other regions while the button is held")
{
    dialog d = opened();
    hold(d, 318, 217);
    const dialog_pass_result list = hold(d, 80, 141);
    CHECK(list.redraw);
    CHECK(!list.start_pressed);
    CHECK(d.choices.resolution_index == 4);
    CHECK(release(d, 318, 217).started);
}

TEST_CASE("dialog: nothing is drawn while the button is up")
{
    dialog d = opened();
    hold(d, 318, 217);
    CHECK(!release(d, 20, 5).redraw); // the pressed picture stays
    CHECK(d.state.start_armed == 0);
    CHECK(d.state.previous_start_hit == 1);
    CHECK(hold(d, 20, 5).redraw); // and goes with the next press
}

TEST_CASE("dialog: releasing clears the latch and the arming")
{
    dialog d = opened();
    hold(d, 289, 20);
    hold(d, 318, 217);
    release(d, 0, 0);
    CHECK(d.state.toggle_latch == 0);
    CHECK(d.state.start_armed == 0);
}

static std::vector<int> flat(const dialog_drawing& drawing)
{
    std::vector<int> all;
    for (uint32_t i = 0; i < drawing.count; ++i) {
        const dialog_blit& blit = drawing.blits[i];
        all.insert(all.end(), {static_cast<int>(blit.image), blit.x, blit.y});
    }
    return all;
}

TEST_CASE("dialog drawing: the first one shows background, three highlights and all four marks")
{
    const std::vector<int> expected = {dialog_image_background, 0, 0, dialog_image_resolution, 6, 9,
        dialog_image_aspect, 185, 8, dialog_image_path, 207, 346, dialog_image_check, 279, 10, dialog_image_check, 279,
        40, dialog_image_check, 279, 71, dialog_image_check, 279, 103};
    CHECK(flat(plan_dialog_drawing(opened().choices, false)) == expected);
}

TEST_CASE("dialog drawing: only options that are exactly 1 have a mark, and the start button comes last")
{
    player_choices choices = opened().choices;
    choices.fullscreen = -1;
    choices.music_enabled = -1;
    choices.use_glsl = 0;
    choices.aspect_index = 3;
    choices.resolution_index = 11;
    const std::vector<int> expected = {dialog_image_background, 0, 0, dialog_image_resolution, 6, 347,
        dialog_image_aspect, 185, 102, dialog_image_path, 207, 315, dialog_image_check, 279, 40, dialog_image_check,
        279, 103, dialog_image_pressed, 196, 188};
    CHECK(flat(plan_dialog_drawing(choices, true)) == expected);
}

TEST_CASE("dialog drawing: every row has its own highlight place")
{
    const int resolution_y[] = {9, 35, 66, 97, 128, 159, 191, 222, 253, 284, 315, 347};
    const int aspect_y[] = {8, 39, 70, 102};
    player_choices choices = opened().choices;
    for (uint32_t row = 0; row < 12; ++row) {
        choices.resolution_index = row;
        CHECK(plan_dialog_drawing(choices, false).blits[1].y == resolution_y[row]);
    }
    for (uint32_t row = 0; row < 4; ++row) {
        choices.aspect_index = row;
        CHECK(plan_dialog_drawing(choices, false).blits[2].y == aspect_y[row]);
    }
}

TEST_CASE("dialog drawing: rows beyond the lists are drawn as the last")
{
    player_choices choices = opened().choices;
    choices.resolution_index = 12;
    choices.aspect_index = 0xFFFFFFFFu;
    const dialog_drawing drawing = plan_dialog_drawing(choices, false);
    CHECK(drawing.blits[1].y == 347);
    CHECK(drawing.blits[2].y == 102);
}
