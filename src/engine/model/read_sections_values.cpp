// Animation functions and value records.
#include "model/read_sections.h"

#include "content/numbers.h"
#include "model/catalogues.h"
#include "model/document.h"

#include <cassert>
#include <cmath>
#include <iterator>

// ---- animation functions ----------------------------------------------------------

// A spline takes up to twelve points, the others the parameters of their formula.
static void check_segment(const document_place& at, int32_t type, int32_t length, uint32_t params)
{
    if (length < 0)
        warn(at, line_of("length %d is negative: the segment has no end.", length));
    if (!check_choice(at, "type", type, segment_kind_count - 1, "the function is 1 there"))
        return;
    if (type != segment_spline)
        check_parameter_count(at, function_types[type].name, params, function_types[type].param_count);
    else if (params < 2)
        check_parameter_count(at, function_types[type].name, params, 2);
    else if (params % 2 != 0)
        warn(at, line_of("the last of %u numbers is the x of a point without y, which is 0.", params));
}

static bool read_segment(const document_place& at, const xml_node& node, animation_function& function, uint32_t index)
{
    assert(index < max_segments);
    int32_t length = 0;
    if (!read_int(at, node, "type", function.segment_type[index]) || !read_int(at, node, "length", length))
        return false;
    function.segment_length[index] = static_cast<uint32_t>(length);
    uint32_t param = 0;
    for (const xml_node* child = node.first_child; child != nullptr; child = child->next_sibling, ++param) {
        if (param == max_segment_params)
            return fail(at, line_of("more than %u parameters.", max_segment_params));
        if (!read_text_real(place_of_part(at, "parameter", param + 1), *child, function.segment_params[index][param]))
            return false;
    }
    check_segment(at, function.segment_type[index], length, param);
    return true;
}

// The ends of a loop are whole ticks, and a number that no tick has is one far below 0.
static void check_loop(const document_place& at, const animation_function& function)
{
    const int32_t begin = truncate_to_int(static_cast<double>(function.loop_begin));
    const int32_t end = truncate_to_int(static_cast<double>(function.loop_end));
    constexpr float ticks = 2147483648.0f;
    const bool fits = std::abs(function.loop_begin) < ticks && std::abs(function.loop_end) < ticks;
    if (!fits)
        warn(at, line_of("loop_begin and loop_end have to lie within %d ticks.", INT32_MAX));
    else if (end <= begin)
        warn(at, line_of("loop_end, tick %d, does not lie behind loop_begin, tick %d.", end, begin));
}

static void check_function(const document_place& at, const animation_function& function)
{
    check_choice(at, "type", function.value_type, std::size(parameter_kinds) - 1, "the player does not use it");
    if (check_choice(at, "loop_type", function.loop_type, loop_kind_count - 1, "the function does not loop")
        && function.loop_type != loop_off)
        check_loop(at, function);
    if (function.segment_count == 0)
        warn(at, "no segments: the function is 1.");
}

bool read_function(const document_place& at, const xml_node& node)
{
    animation_function* function = add_record(at, at.reader.target->function_table);
    if (function == nullptr)
        return false;
    function->cached_time = no_cached_time;
    if (!read_byte(at, node, "type", function->value_type) || !read_byte(at, node, "loop_type", function->loop_type)
        || !read_real(at, node, "loop_begin", function->loop_begin)
        || !read_real(at, node, "loop_end", function->loop_end))
        return false;
    uint32_t index = 0;
    for (const xml_node* child = node.first_child; child != nullptr; child = child->next_sibling, ++index) {
        const document_place here = place_of_part(at, "segment", index + 1);
        if (index == max_segments)
            return fail(here, line_of("more than %u segments.", max_segments));
        if (!read_segment(here, *child, *function, index))
            return false;
        function->segment_count = static_cast<uint8_t>(index + 1);
    }
    check_function(at, *function);
    return true;
}

// ---- value records ------------------------------------------------------------------

static void mark_dynamic(value_record& record, uint32_t index)
{
    assert(index < std::size(record.values));
    uint8_t& flags = record.dynamic_flags[index < 6 ? 0 : 1];
    const int bit = index < 6 ? 128 >> index : 128 >> (index - 6);
    flags = static_cast<uint8_t>(flags | bit);
}

bool read_value_record(const document_place& at, const xml_node& node)
{
    constexpr uint32_t value_count = 9;
    value_record* record = add_record(at, at.reader.target->transform_table);
    if (record == nullptr || !need_children(at, node, 1))
        return false;
    const xml_node& wrapper = *node.first_child;
    if (!need_children(place_of_part(at, "wrapper"), wrapper, value_count))
        return false;
    check_child_count(at, node, 1);
    check_child_count(place_of_part(at, "wrapper"), wrapper, value_count);
    const xml_node* child = wrapper.first_child;
    for (uint32_t index = 0; index < value_count; ++index, child = child->next_sibling) {
        animated_value value{};
        if (!read_animated(place_of_part(at, "value", index + 1), *child, dynamic_if_named, value))
            return false;
        record->values[index] = value.value;
        if (value.dynamic != 0)
            mark_dynamic(*record, index);
    }
    return true;
}
