// Scenes: what is placed in them, and what multiplies it.
#include "authoring/show/lowering.h"

#include <iterator>

static void add_manipulator(lowering& l, element& parent, const manipulator_thing& made)
{
    element& node = add_child(parent, "manipulator");
    add_attribute(node, "type", value_of_int(made.type));
    if (made.model != nullptr) {
        const bool is_effect = as<effect_thing>(made.model) != nullptr;
        element& model = add_child(node, "manipulator");
        add_attribute(model, "type", value_of_int(is_effect ? placer_effect : placer_mesh));
        add_attribute(model, "model",
            value_of(is_effect ? lower_effect(l, *made.model) : lower_one_mesh(l, *made.model, made.model->place)));
    }
    for (const moving_number& param : made.params)
        add_animated(l, node, "p", param);
}

// Where a text begins whose middle or end is to be at its place. The pen knows no scale.
static moving_number beginning_of_text(lowering& l, const placed_thing& made, bool flat)
{
    if (made.align == 0 || as<font_thing>(made.what) == nullptr)
        return made.at[0];
    const double width = text_width(l, *made.what, made.text, flat);
    return moved_number(l, made.at[0], made.align == 1 ? -width / 2 : -width);
}

static void add_placement(lowering& l, element& node, const placed_thing& made, const moving_point& at,
    const moving_point& scale, const source_place& place)
{
    static constexpr const char* names[]
        = {"x", "y", "z", "rotation_x", "rotation_y", "rotation_z", "scale_x", "scale_y", "scale_z"};
    const moving_point* points[] = {&at, &made.rotation, &scale};
    for (uint32_t index = 0; index < std::size(names); ++index)
        add_animated(l, node, names[index], (*points[index / 3])[index % 3]);
    add_setting(
        node, "visible", value_of(made.visible != nullptr ? function_of(l, {0, made.visible}, place) : nullptr));
    add_setting(node, "time_offset", value_of(made.time_offset));
    add_setting(node, "facing", value_of_int(made.facing ? 1 : 0));
    element& manipulators = add_child(node, "manipulators");
    for (const thing* manipulator : made.manipulators)
        add_manipulator(l, manipulators, *as<manipulator_thing>(manipulator));
}

namespace {
struct placed_numbers {
    const authored_record* object;
    const authored_record* material;
    const authored_record* font;
};
} // namespace

static void add_object(lowering& l, element& scene, const thing& placed, const placed_numbers& numbers,
    const moving_point& scale, bool flat = false)
{
    const placed_thing& made = *as<placed_thing>(&placed);
    element& node = add_child(scene, "placed");
    node.place = placed.place;
    add_attribute(node, "type", value_of_int(made.kind));
    add_attribute(node, "object", value_of(numbers.object));
    add_attribute(node, "material", value_of(numbers.material));
    add_attribute(node, "font", value_of(numbers.font));
    add_attribute(node, "text", value_of(made.text));
    const moving_point at = {beginning_of_text(l, made, flat), made.at[1], made.at[2]};
    add_placement(l, node, made, at, scale, placed.place);
}

// A screen is 4 wide and 3 high, and y grows downward there: letters made of a font's file come out upright
// and as wide as they are.
static moving_point scale_of_letters(lowering& l, const placed_thing& made, bool flat)
{
    const font_thing* font = as<font_thing>(made.what);
    if (font == nullptr || font->file.empty() || !flat || l.show.keep_order)
        return made.scale;
    return {scaled_number(l, made.scale[0], flat_width(l)), scaled_number(l, made.scale[1], -1), made.scale[2]};
}

static void add_placed(lowering& l, element& scene, const thing& placed, bool flat)
{
    const placed_thing& made = *as<placed_thing>(&placed);
    const bool flat_look = flat && !l.show.keep_order;
    const authored_record* material
        = made.material != nullptr && made.kind != object_text ? lower_material(l, *made.material, flat_look) : nullptr;
    const uint32_t turned = l.show.keep_order ? 0 : sets_to_turn(made.material);
    if (made.what == nullptr)
        return add_object(l, scene, placed, {nullptr, material, nullptr}, made.scale);
    if (const font_thing* font_of = as<font_thing>(made.what)) {
        const bool has_material = made.material != nullptr || font_of->material != nullptr || font_of->file.empty();
        if (!has_material && !l.show.keep_order)
            add_problem(l.built.problems, problem_warning, placed.place,
                "the text \"" + made.text + "\" has no material, and is not drawn: write material = ... behind it.");
        const authored_record* font = lower_font(l, *made.what, made.material, flat_look);
        return add_object(l, scene, placed, {nullptr, material, font}, scale_of_letters(l, made, flat), flat_look);
    }
    if (as<effect_thing>(made.what) != nullptr)
        return add_object(l, scene, placed,
            {object_of_shape(l, object_genmesh, lower_effect(l, *made.what), placed.place), material, nullptr},
            made.scale);
    if (as<reference_thing>(made.what) != nullptr)
        return add_object(l, scene, placed, {lower_reference(l, *made.what), material, nullptr}, made.scale);
    for (authored_record* mesh : lower_mesh(l, *made.what, turned))
        add_object(
            l, scene, placed, {object_of_shape(l, object_model, mesh, placed.place), material, nullptr}, made.scale);
}

authored_record* lower_scene(lowering& l, const thing& made, bool flat)
{
    const use_of_thing use = {&made, nullptr, flat && !l.show.keep_order ? 1u : 0u};
    if (const auto known = l.made.find(use); known != l.made.end())
        return known->second.front();
    if (as<scene_thing>(&made)->placed.empty() && !l.show.keep_order)
        add_problem(l.built.problems, problem_note, made.place,
            "scene \"" + made.name
                + "\" is empty: place objects in it, or write pause { from =, to = } for a clip of nothing.");
    element node = {"scene"};
    add_attribute(node, "name", value_of(made.name));
    for (const thing* placed : as<scene_thing>(&made)->placed)
        add_placed(l, node, *placed, flat);
    if (node.children.size() > max_scene_objects)
        add_problem(l.built.problems, problem_error, made.place,
            "scene \"" + made.name + "\" has " + std::to_string(node.children.size())
                + " objects, and a scene takes 128: make two, or multiply one by a manipulator.");
    authored_record* record = add_authored(document_of(l), section_scenes, std::move(node), made.place);
    record->name = made.name;
    l.made[use] = {record};
    return record;
}
