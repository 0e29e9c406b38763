#include "shell/dialog_logic.h"

#include <algorithm>
#include <cassert>
#include <iterator>

namespace {

// All bounds are inclusive.
struct region {
    int32_t left;
    int32_t top;
    int32_t right;
    int32_t bottom;
};

struct list_row {
    int32_t top; // pointer
    int32_t bottom;
    int16_t highlight_y;
};

} // namespace

constexpr int32_t resolution_left = 8;
constexpr int32_t resolution_right = 167;
constexpr int32_t resolution_top = 15;
constexpr int16_t resolution_highlight_x = 6;
constexpr int32_t no_limit = 0x7FFFFFFF; // the last row goes on below the window

constexpr list_row resolution_rows[]
    = {{resolution_top, 33, 9}, {34, 63, 35}, {64, 93, 66}, {94, 126, 97}, {127, 156, 128}, {157, 189, 159},
        {190, 219, 191}, {220, 249, 222}, {250, 282, 253}, {283, 313, 284}, {314, 344, 315}, {345, no_limit, 347}};
static_assert(std::size(resolution_rows) == resolution_count);

constexpr int32_t aspect_left = 186;
constexpr int32_t aspect_right = 261;
constexpr int16_t aspect_highlight_x = 185;
constexpr list_row aspect_rows[] = {{10, 35, 8}, {36, 66, 39}, {67, 99, 70}, {100, 130, 102}};
static_assert(std::size(aspect_rows) == aspect_count);

// Row 0 is the fixed-function path, row 1 the shaders; between them lies a gap.
constexpr int32_t path_left = 212;
constexpr int32_t path_right = 433;
constexpr int16_t path_highlight_x = 207;
constexpr list_row path_rows[] = {{316, 340, 315}, {344, 372, 346}};

constexpr region start_button = {201, 192, 436, 243};
constexpr int16_t start_image_x = 196;
constexpr int16_t start_image_y = 188;

namespace {

struct check_box {
    region hit;
    int16_t mark_y;
    int32_t player_choices::*option;
};

} // namespace

constexpr int16_t mark_x = 279;
constexpr check_box check_boxes[] = {
    {{283, 14, 295, 26}, 10, &player_choices::fullscreen},
    {{283, 45, 295, 57}, 40, &player_choices::antialiasing},
    {{283, 76, 295, 89}, 71, &player_choices::music_enabled},
    {{283, 106, 295, 120}, 103, &player_choices::use_vbo},
};

// A press turns an option's sign about, which does nothing to 0.
static constexpr bool boxes_begin_on_or_off()
{
    constexpr player_choices fresh;
    for (const check_box& box : check_boxes)
        if (fresh.*box.option != 1 && fresh.*box.option != -1)
            return false;
    return true;
}
static_assert(boxes_begin_on_or_off(), "an option begins neither on nor off, so that its box cannot be ticked");
static_assert(max_dialog_blits == 5 + std::size(check_boxes), "a dialog with all boxes ticked has another size");

static bool inside(const region& r, int32_t x, int32_t y)
{
    return x >= r.left && x <= r.right && y >= r.top && y <= r.bottom;
}

// The row under the pointer; `count` when there is none.
template <uint32_t count> static uint32_t row_at(const list_row (&rows)[count], int32_t y)
{
    uint32_t row = 0;
    while (row < count && (y < rows[row].top || y > rows[row].bottom))
        ++row;
    return row;
}

template <uint32_t count>
static bool list_hit(const list_row (&rows)[count], int32_t left, int32_t right, int32_t x, int32_t y, uint32_t& row)
{
    if (x < left || x > right)
        return false;
    row = row_at(rows, y);
    return row < count;
}

namespace {

struct press_effect {
    bool start_hit;
    bool toggled;
};

} // namespace

// The first region that holds the pointer decides. One whose columns match but whose
// rows do not lets the ones after it have a look.
static press_effect apply_press(dialog_state& state, player_choices& choices, int32_t x, int32_t y)
{
    uint32_t row = 0;
    if (list_hit(resolution_rows, resolution_left, resolution_right, x, y, row)) {
        choices.resolution_index = row;
        return {};
    }
    if (list_hit(aspect_rows, aspect_left, aspect_right, x, y, row)) {
        choices.aspect_index = row;
        return {};
    }
    if (list_hit(path_rows, path_left, path_right, x, y, row)) {
        choices.use_glsl = static_cast<int32_t>(row);
        return {};
    }
    // Where the press began is not asked: dragging onto the button arms it too.
    if (inside(start_button, x, y)) {
        state.start_armed = 1;
        return {.start_hit = true, .toggled = false};
    }
    for (const check_box& box : check_boxes) {
        if (!inside(box.hit, x, y))
            continue;
        if (state.toggle_latch != 0)
            return {};
        state.toggle_latch = 1;
        choices.*box.option = -(choices.*box.option);
        return {.start_hit = false, .toggled = true};
    }
    return {};
}

static void remember_drawn(dialog_state& state, const player_choices& choices, bool start_hit)
{
    state.previous_resolution = choices.resolution_index;
    state.previous_aspect = choices.aspect_index;
    state.previous_glsl = choices.use_glsl;
    state.previous_start_hit = start_hit ? 1 : 0;
}

static bool drawn_as_it_stands(const dialog_state& state, const player_choices& choices, bool start_hit)
{
    return state.previous_aspect == choices.aspect_index && state.previous_resolution == choices.resolution_index
        && state.previous_glsl == choices.use_glsl && state.previous_start_hit == (start_hit ? 1 : 0);
}

void dialog_begin(dialog_state& state, const player_choices& choices)
{
    state = {};
    remember_drawn(state, choices, false);
}

dialog_pass_result dialog_pass(dialog_state& state, player_choices& choices, int32_t x, int32_t y, bool left_down)
{
    assert(state.start_armed <= 1 && (state.toggle_latch == 0 || state.toggle_latch == 1));
    const bool on_armed_start = inside(start_button, x, y) && state.start_armed != 0;
    if (!left_down) {
        // A pressed button that the pointer left while held stays on screen until the next
        // drawing; a started dialog keeps its state, nobody asks again.
        if (on_armed_start)
            return {.redraw = false, .start_pressed = false, .started = true};
        state.start_armed = 0;
        state.toggle_latch = 0;
        return {};
    }
    const press_effect effect = apply_press(state, choices, x, y);
    if (!effect.toggled && drawn_as_it_stands(state, choices, effect.start_hit))
        return {};
    remember_drawn(state, choices, effect.start_hit);
    const bool pressed = state.start_armed != 0 && inside(start_button, x, y);
    return {.redraw = true, .start_pressed = pressed, .started = false};
}

template <uint32_t count> static int16_t highlight_y(const list_row (&rows)[count], uint32_t row)
{
    return rows[std::min(row, count - 1)].highlight_y;
}

static void add_blit(dialog_drawing& drawing, dialog_image image, int16_t x, int16_t y)
{
    assert(image < dialog_image_count && drawing.count < max_dialog_blits);
    drawing.blits[drawing.count++] = {image, x, y};
}

dialog_drawing plan_dialog_drawing(const player_choices& choices, bool start_pressed)
{
    const int16_t resolution_y = highlight_y(resolution_rows, choices.resolution_index);
    const int16_t aspect_y = highlight_y(aspect_rows, choices.aspect_index);
    const int16_t path_y = highlight_y(path_rows, choices.use_glsl == 1 ? 1 : 0);
    dialog_drawing drawing = {};
    add_blit(drawing, dialog_image_background, 0, 0);
    add_blit(drawing, dialog_image_resolution, resolution_highlight_x, resolution_y);
    add_blit(drawing, dialog_image_aspect, aspect_highlight_x, aspect_y);
    add_blit(drawing, dialog_image_path, path_highlight_x, path_y);
    for (const check_box& box : check_boxes)
        if (choices.*box.option == 1)
            add_blit(drawing, dialog_image_check, mark_x, box.mark_y);
    if (start_pressed)
        add_blit(drawing, dialog_image_pressed, start_image_x, start_image_y);
    return drawing;
}
