// Curves, numbers that move, lights and colours.
#include "authoring/show/lowering.h"

#include <cmath>
#include <iterator>

authored_record* lower_curve(lowering& l, const thing& made)
{
    const use_of_thing use = {&made, nullptr, 0};
    if (const auto known = l.made.find(use); known != l.made.end())
        return known->second.front();
    const curve& c = as<curve_thing>(&made)->c;
    element node = {"function"};
    add_attribute(node, "type", value_of_int(c.integer ? 1 : 0));
    add_attribute(node, "loop_type", value_of_int(c.loop));
    add_attribute(node, "loop_begin", value_of(c.loop_from));
    add_attribute(node, "loop_end", value_of(c.loop_to));
    static constexpr const char* names[] = {"a", "b", "c", "d", "e"};
    for (const curve_segment& segment : c.segments) {
        element& child = add_child(node, "segment");
        add_attribute(child, "type", value_of_int(segment.kind));
        add_attribute(child, "length", value_of_int(segment.length));
        for (size_t index = 0; index < segment.params.size(); ++index) {
            const bool is_point = segment.kind == segment_spline || index >= std::size(names);
            add_text(child, is_point ? (index % 2 == 0 ? "x" : "y") : names[index], value_of(segment.params[index]));
        }
    }
    authored_record* record = new_record(l, section_functions, std::move(node), made.place, made.name);
    l.made[use] = {record};
    return record;
}

void add_animated(lowering& l, element& parent, const char* name, const moving_number& number)
{
    element& child = add_child(parent, name);
    const bool dynamic = number.curve != nullptr;
    add_attribute(child, "type", value_of(std::string(dynamic ? "dynamic" : "static")));
    add_attribute(child, "value", dynamic ? value_of(lower_curve(l, *number.curve)) : value_of(number.constant));
}

authored_record* function_of(lowering& l, const moving_number& number, const source_place& place)
{
    if (number.curve != nullptr)
        return lower_curve(l, *number.curve);
    if (number.constant == 0)
        return nullptr;
    element node = {"function"};
    for (const auto& [name, value] :
        {std::pair{"type", "0"}, {"loop_type", "0"}, {"loop_begin", "0"}, {"loop_end", "0"}})
        add_attribute(node, name, value_of(std::string(value)));
    element& segment = add_child(node, "segment");
    add_attribute(segment, "type", value_of_int(segment_constant));
    add_attribute(segment, "length", value_of_int(1));
    add_text(segment, "a", value_of(number.constant));
    return new_record(l, section_functions, std::move(node), place, "");
}

authored_record* lower_value(lowering& l, const thing& made)
{
    const use_of_thing use = {&made, nullptr, 0};
    if (const auto known = l.made.find(use); known != l.made.end())
        return known->second.front();
    static constexpr const char* names[]
        = {"ambient_red", "ambient_green", "ambient_blue", "red", "green", "blue", "x", "y", "z"};
    element node = {"record"};
    element& values = add_child(node, "values");
    for (uint32_t index = 0; index < std::size(names); ++index)
        add_animated(l, values, names[index], as<value_thing>(&made)->values[index]);
    authored_record* record = new_record(l, section_values, std::move(node), made.place, made.name);
    l.made[use] = {record};
    return record;
}

double flat_width(const lowering& l)
{
    return 1 / l.show.aspect;
}

moving_number moved_number(lowering& l, const moving_number& number, double offset)
{
    if (number.curve == nullptr)
        return {number.constant + offset, nullptr};
    const curve& c = as<curve_thing>(number.curve)->c;
    return {0, add_thing(l.show, curve_thing{scaled_curve(c, 1, offset)}, number.curve->place, l.document)};
}

moving_number scaled_number(lowering& l, const moving_number& number, double factor)
{
    if (number.curve == nullptr)
        return {number.constant * factor + 0.0, nullptr}; // no negative zero
    const curve& c = as<curve_thing>(number.curve)->c;
    return {0, add_thing(l.show, curve_thing{scaled_curve(c, factor, 0)}, number.curve->place, l.document)};
}
