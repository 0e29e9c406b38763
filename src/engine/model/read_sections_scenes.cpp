// Mesh effects and scenes.
#include "model/read_sections.h"

#include "content/numbers.h"

#include <algorithm>
#include <cstdlib>

// ---- mesh effects -----------------------------------------------------------------

bool read_effect(const place& at, const xml_node& node)
{
    mesh_effect* effect = add_record<mesh_effect>(at, at.reader.target->effect_table);
    int32_t type = 0;
    if (effect == nullptr || !read_int(at, node, "type", type))
        return false;
    if (type < 0 || type >= static_cast<int32_t>(mesh_effect_kind_count))
        return fail(at, line_of("type %d is no effect.", type));
    effect->type = static_cast<uint32_t>(type);
    copy_name(effect->name, sizeof(effect->name), xml_get_attribute(&node, "name"));
    return read_function_handles(at, node, effect->functions, max_mesh_effect_params);
}

// ---- manipulators -------------------------------------------------------------------

static void check_manipulator_model(const place& at, const manipulator_record& manipulator)
{
    const document& d = *at.reader.target;
    if (manipulator.model_type == object_model)
        check_handle(at, d.mesh_table, "model", manipulator.model);
    if (manipulator.model_type == object_genmesh)
        check_handle(at, d.effect_table, "model", manipulator.model);
}

// The model that a placer puts copies on: reals, truncated.
static bool read_manipulator_model(const place& at, const xml_node& node, manipulator_record& manipulator)
{
    float type = 0.0f;
    float model = 0.0f;
    if (!read_real(at, node, "type", type) || !read_real(at, node, "model", model))
        return false;
    manipulator.model_type = truncate_to_int(type);
    manipulator.model = static_cast<uint32_t>(truncate_to_int(model));
    check_manipulator_model(*at.outer, manipulator);
    return true;
}

static bool read_manipulator(const place& at, const xml_node& node, manipulator_record& manipulator)
{
    if (!read_int(at, node, "type", manipulator.type))
        return false;
    if (manipulator.type < 0 || manipulator.type >= manipulator_kind_count)
        return fail(at, line_of("type %d is no manipulator.", manipulator.type));
    const xml_node* child = node.first_child;
    if (child != nullptr && is_named(*child, "manipulator")) {
        if (!read_manipulator_model(place_of_part(at, "manipulator"), *child, manipulator))
            return false;
        child = child->next_sibling;
    }
    for (uint32_t index = 0; child != nullptr; child = child->next_sibling, ++index) {
        animated_value value{};
        if (!read_animated(place_of_part(at, "parameter", index + 1), *child, dynamic_if_named, value))
            return false;
        if (index < max_manipulator_params)
            manipulator.params[index] = value;
    }
    return true;
}

static bool read_manipulators(const place& at, const xml_node& container, scene_object& object)
{
    for (const xml_node* child = container.first_child; child != nullptr; child = child->next_sibling) {
        const place here = place_of_part(at, "manipulator", object.manipulator_count + 1);
        if (object.manipulator_count == max_manipulators)
            return fail(here, line_of("more than %u manipulators.", max_manipulators));
        if (!read_manipulator(here, *child, object.manipulators[object.manipulator_count]))
            return false;
        ++object.manipulator_count;
    }
    return true;
}

// ---- scene objects --------------------------------------------------------------------

static bool read_object_attributes(const place& at, const xml_node& node, scene_object& object)
{
    if (!read_int(at, node, "type", object.type) || !read_handle(at, node, "object", object.object)
        || !read_handle(at, node, "material", object.material) || !read_handle(at, node, "font", object.font))
        return false;
    const char* text = read_attribute(at, node, "text");
    if (text == nullptr)
        return false;
    std::memcpy(object.text, text, strnlen(text, scene_text_size)); // no terminator when it is 32 long
    return true;
}

// The object's reference in the sense that drawing gives it.
static void check_scene_object(const place& at, const scene_object& object)
{
    const document& d = *at.reader.target;
    if (object.object != 0 && (object.type == object_model || object.type == object_genmesh)) {
        const record_table* table = object.type == object_model ? d.mesh_table : d.effect_table;
        if (record_table_get(table, resolve_scene_object(d, object)) == nullptr)
            warn(at, line_of("object %d does not exist.", static_cast<int32_t>(object.object)));
    }
    check_handle(at, d.material_table, "material", object.material);
    check_handle(at, d.font_table, "font", object.font);
}

// Thirteen children in a fixed order: nine placement values, visibility, time offset,
// camera-facing mark, manipulators. The time offset is a real between whole numbers.
static bool read_scene_object(const place& at, const xml_node& node, scene_object& object, bool& camera_facing)
{
    constexpr uint32_t child_count = placement_value_count + 4;
    if (!read_object_attributes(at, node, object) || !need_children(at, node, child_count))
        return false;
    check_scene_object(at, object);
    const xml_node* child = node.first_child;
    for (uint32_t index = 0; index < placement_value_count; ++index, child = child->next_sibling) {
        if (!read_animated(place_of_part(at, "value", index + 1), *child, dynamic_if_named, object.values[index]))
            return false;
    }
    if (!read_handle(place_of_part(at, "visibility"), *child, "value", object.visibility))
        return false;
    check_handle(at, at.reader.target->function_table, "visibility", object.visibility);
    child = child->next_sibling;
    if (!read_real(place_of_part(at, "time offset"), *child, "value", object.time_offset))
        return false;
    child = child->next_sibling;
    int32_t mark = 0;
    if (!read_int(place_of_part(at, "camera facing"), *child, "value", mark))
        return false;
    camera_facing = mark == 1;
    return read_manipulators(at, *child->next_sibling, object);
}

// ---- scenes -----------------------------------------------------------------------------

static bool allocate_objects(const place& at, const xml_node& node, scene_record& scene)
{
    const uint32_t count = count_children(node);
    if (count > max_scene_objects)
        return fail(at, line_of("more than %u objects.", max_scene_objects));
    if (count == 0)
        return true;
    scene.objects = static_cast<scene_object*>(std::calloc(count, sizeof(scene_object)));
    if (scene.objects == nullptr)
        return fail(at, "not enough memory.");
    scene.object_count = count;
    return true;
}

bool read_scene(const place& at, const xml_node& node)
{
    scene_record* scene = add_record<scene_record>(at, at.reader.target->scene_table);
    if (scene == nullptr || !allocate_objects(at, node, *scene))
        return false;
    copy_name(scene->name, sizeof(scene->name), xml_get_attribute(&node, "name"));
    const xml_node* child = node.first_child;
    for (uint32_t index = 0; index < scene->object_count; ++index, child = child->next_sibling) {
        bool camera_facing = false;
        if (!read_scene_object(place_of_part(at, "object", index + 1), *child, scene->objects[index], camera_facing))
            return false;
        if (camera_facing)
            scene->camera_facing[index / 8] = static_cast<uint8_t>(scene->camera_facing[index / 8] | 128 >> index % 8);
    }
    return true;
}
