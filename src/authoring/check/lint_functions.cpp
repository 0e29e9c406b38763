// Looks at functions of time.
#include "authoring/check/lint.h"
#include "authoring/counted.h"

#include "anim/animation_function.h"
#include "content/numbers.h"
#include "model/values.h"

#include <algorithm>
#include <cassert>

static int32_t tick_of(float time)
{
    return truncate_to_int(static_cast<double>(time));
}

static bool loops(const animation_function& function, loop_kind kind)
{
    return function.loop_type == kind && tick_of(function.loop_end) > tick_of(function.loop_begin);
}

// Where its last segment ends; no end: a length is negative, or none fits.
static uint64_t length_of(const animation_function& function)
{
    uint64_t length = 0;
    for (uint32_t index = 0; index < function.segment_count; ++index)
        length += function.segment_length[index];
    return length;
}

static bool has_end(const animation_function& function)
{
    return function.segment_count > 0
        && std::none_of(function.segment_length, function.segment_length + function.segment_count,
            [](uint32_t length) { return length > INT32_MAX; });
}

// Rule: a ping-pong whose begin is not 0. From the first turn on it swings between 0 and the loop's length.
void lint_ping_pong(const lint_target& t)
{
    for (auto [handle, function] : t.d.function_table) {
        const int32_t begin = tick_of(function.loop_begin);
        if (!loops(function, loop_ping_pong) || begin == 0)
            continue;
        const int32_t end = tick_of(function.loop_end);
        add_finding(t, problem_warning, section_functions, handle,
            "the ping-pong begins at tick " + std::to_string(begin)
                + ", but the begin is not added back: from the first turn on it swings between tick 0 and tick "
                + std::to_string(static_cast<int64_t>(end) - begin) + ".");
    }
}

// Rule: a loop ends behind its function, which does not end with a constant: it stands still there in each round.
void lint_loop_behind_end(const lint_target& t)
{
    for (auto [handle, function] : t.d.function_table) {
        if (!loops(function, loop_around) && !loops(function, loop_ping_pong))
            continue;
        const uint64_t length = length_of(function);
        const auto end = static_cast<uint32_t>(std::max(tick_of(function.loop_end), 0));
        if (!has_end(function) || end <= length
            || function.segment_type[function.segment_count - 1] == segment_constant)
            continue;
        add_finding(t, problem_note, section_functions, handle,
            "the loop ends at tick " + std::to_string(end) + ", its segments at tick " + std::to_string(length)
                + ": it stands still for " + counted(end - length, "tick") + " of each round.");
    }
}

// Rule: a function that is one movement of at most sixteen ticks, without a loop. A number that was meant in seconds
// looks so; what is meant to jump has a constant before it or behind it.
void lint_short_functions(const lint_target& t)
{
    constexpr uint64_t shortest = 16;
    for (auto [handle, function] : t.d.function_table) {
        const uint64_t length = length_of(function);
        if (function.segment_count != 1 || function.loop_type == loop_around || function.loop_type == loop_ping_pong
            || function.segment_type[0] == segment_constant || length == 0 || length > shortest)
            continue;
        add_finding(t, problem_note, section_functions, handle,
            "it moves for " + counted(length, "tick") + ", which are " + as_seconds(length) + ": "
                + std::to_string(length) + " seconds are " + std::to_string(100 * length) + ".");
    }
}

// ---- what is never visible ------------------------------------------------------------

static bool is_ever_visible(animation_function& function)
{
    for (uint32_t time = 0; time <= max_track_end; ++time)
        if (evaluate_function(function, time) >= 1.0f)
            return true;
    return false;
}

// Rule: an object's visibility is below 1 at every tick that a show can have.
void lint_visibility(const lint_target& t)
{
    enum answer : uint8_t { not_asked, visible, hidden };
    std::vector<answer> answers(record_table_capacity + 1, not_asked);
    for (auto [handle, scene] : t.d.scene_table) {
        for (uint32_t index = 0; index < scene.object_count; ++index) {
            const uint32_t visibility = scene.objects[index].visibility;
            animation_function* function = table_get(t.d.function_table, visibility);
            if (function == nullptr)
                continue;
            assert(visibility < answers.size());
            if (answers[visibility] == not_asked)
                answers[visibility] = is_ever_visible(*function) ? visible : hidden;
            if (answers[visibility] == hidden)
                add_finding(t, problem_note, section_scenes, handle,
                    "its visibility, function " + std::to_string(visibility)
                        + ", is below 1 at every time: the object is never shown.",
                    {{"object", index + 1}});
        }
    }
}
