// Mesh effects and scenes.
#include "model/read_sections.h"

#include "content/numbers.h"
#include "model/catalogues.h"
#include "model/document.h"
#include "model/glyphs.h"

#include <algorithm>
#include <cassert>
#include <cstdlib>

// ---- mesh effects -----------------------------------------------------------------

bool read_effect(const document_place& at, const xml_node& node)
{
    mesh_effect* effect = add_record(at, at.reader.target->effect_table);
    int32_t type = 0;
    if (effect == nullptr || !read_int(at, node, "type", type))
        return false;
    if (type < 0 || type >= static_cast<int32_t>(mesh_effect_kind_count))
        return fail(at, line_of("type %d is no effect.", type));
    effect->type = static_cast<uint32_t>(type);
    copy_name(at, effect->name, sizeof(effect->name), xml_get_attribute(&node, "name"));
    const effect_type_entry& entry = effect_types[type];
    return read_function_handles(at, node, {entry.name, entry.param_count, max_mesh_effect_params}, effect->functions);
}

// ---- manipulators -------------------------------------------------------------------

static void check_manipulator_mesh(const document_place& at, const manipulator_record& manipulator)
{
    const document& d = *at.reader.target;
    if (manipulator.model_type == placer_mesh)
        check_handle(at, d.mesh_table, "model", manipulator.model);
    else if (manipulator.model_type == placer_effect)
        check_handle(at, d.effect_table, "model", manipulator.model);
    else
        warn_outside(at, "the model's type", manipulator.model_type, placer_mesh_kind_count - 1, "there is no model");
}

// The mesh that a placer puts copies on: reals, truncated.
static bool read_manipulator_mesh(const document_place& at, const xml_node& node, manipulator_record& manipulator)
{
    assert(at.outer != nullptr);
    float type = 0.0f;
    float mesh = 0.0f;
    if (!read_real(at, node, "type", type) || !read_real(at, node, "model", mesh))
        return false;
    manipulator.model_type = truncate_to_int(type);
    manipulator.model = static_cast<uint32_t>(truncate_to_int(mesh));
    check_manipulator_mesh(*at.outer, manipulator);
    return true;
}

static void check_manipulator(const document_place& at, const manipulator_record& manipulator, uint32_t params)
{
    assert(manipulator.type >= 0 && manipulator.type < manipulator_kind_count);
    const manipulator_entry& entry = manipulators[manipulator.type];
    check_parameter_count(at, entry.name, params, entry.param_count);
    if (params > entry.param_count)
        warn(at,
            line_of("too many parameters of \"%s\": %u of %u; the others are not used.", entry.name, params,
                entry.param_count));
    if (entry.places_model != 0 && manipulator.model == 0)
        warn(at, line_of("\"%s\" without a model changes nothing.", entry.name));
}

static bool read_manipulator(const document_place& at, const xml_node& node, manipulator_record& manipulator)
{
    if (!read_int(at, node, "type", manipulator.type))
        return false;
    if (manipulator.type < 0 || manipulator.type >= manipulator_kind_count)
        return fail(at, line_of("type %d is no manipulator.", manipulator.type));
    const xml_node* child = node.first_child;
    if (child != nullptr && is_named(*child, "manipulator")) {
        if (!read_manipulator_mesh(place_of_part(at, "manipulator"), *child, manipulator))
            return false;
        child = child->next_sibling;
    }
    uint32_t index = 0;
    for (; child != nullptr; child = child->next_sibling, ++index) {
        animated_value value{};
        if (!read_animated(place_of_part(at, "parameter", index + 1), *child, dynamic_if_named, value))
            return false;
        if (index < max_manipulator_params)
            manipulator.params[index] = value;
    }
    check_manipulator(at, manipulator, index);
    return true;
}

static bool read_manipulators(const document_place& at, const xml_node& container, scene_object& object)
{
    for (const xml_node* child = container.first_child; child != nullptr; child = child->next_sibling) {
        const document_place here = place_of_part(at, "manipulator", object.manipulator_count + 1);
        if (object.manipulator_count == max_manipulators)
            return fail(here, line_of("more than %u manipulators.", max_manipulators));
        if (!read_manipulator(here, *child, object.manipulators[object.manipulator_count]))
            return false;
        ++object.manipulator_count;
    }
    return true;
}

// The product of the first `numbers` parameters, as far as constants tell: 1 of one that moves.
static double constant_product(const document_place& at, const manipulator_record& manipulator, uint32_t numbers)
{
    assert(numbers <= max_manipulator_params);
    double copies = 1;
    for (uint32_t index = 0; index < numbers; ++index) {
        const animated_value& param = manipulator.params[index];
        const int32_t number = param.dynamic != 0 ? 1 : truncate_to_int(static_cast<double>(param.value));
        if (number < 1)
            warn(at,
                line_of("%s %.6g makes no copy: the object is not drawn.",
                    quoted(manipulators[manipulator.type].param_name[index]).c_str(),
                    static_cast<double>(param.value)));
        copies *= std::max(number, 0);
    }
    return copies;
}

// One at every vertex; 1 of a model without known vertices.
static double constant_vertices(const document_place& at, const manipulator_record& manipulator)
{
    const auto* mesh = table_get(at.reader.target->mesh_table, manipulator.model);
    return mesh != nullptr && manipulator.model_type == placer_mesh ? mesh->arrays.vertex_count : 1;
}

// How many copies a manipulator makes of each place, as far as that is known. 0: none, which has
// been warned about.
static double constant_copies(const document_place& at, const manipulator_record& manipulator)
{
    switch (static_cast<manipulator_kind>(manipulator.type)) {
    case manipulator_xyz_multiplier:
        return constant_product(at, manipulator, 3);
    case manipulator_x_multiplier:
        return constant_product(at, manipulator, 1);
    case manipulator_rippler:
        return 1;
    case manipulator_model_placer:
        return constant_vertices(at, manipulator);
    case manipulator_kind_count:
        break;
    }
    assert(false); // a kind beyond the catalogue ends the reading
    return 1;
}

// What is told here need not be told again when the object is drawn.
static void check_copies(const document_place& at, scene_object& object)
{
    assert(object.manipulator_count <= max_manipulators);
    double copies = 1;
    for (uint32_t index = 0; index < object.manipulator_count; ++index)
        copies *= constant_copies(place_of_part(at, "manipulator", index + 1), object.manipulators[index]);
    if (copies <= max_placements)
        return;
    warn(at, line_of("its manipulators make %.0f copies; the first %u are drawn.", copies, max_placements));
    object.copies_cut = copies_cut_told;
}

// ---- scene objects --------------------------------------------------------------------

// The length in bytes of what a text shows by one glyph, or cannot show.
static uint32_t letter_length(const char* text, uint32_t left)
{
    assert(left > 0);
    uint32_t length = 1;
    if (glyph_of_byte(static_cast<uint8_t>(*text)) == glyph_lead_byte)
        return std::min(2u, left);
    while (length < left && (static_cast<uint8_t>(text[length]) & 0xC0) == 0x80)
        ++length;
    return length;
}

static bool has_glyph(const char* letter, uint32_t length)
{
    assert(length > 0);
    const uint8_t glyph = glyph_of_byte(static_cast<uint8_t>(letter[0]));
    if (glyph != glyph_lead_byte)
        return glyph != glyph_none;
    return length == 2 && glyph_of_second_byte(static_cast<uint8_t>(letter[1])) != glyph_none;
}

// `text` is the document's, of which the object keeps the first bytes. A letter that the cut
// goes through is no letter without a glyph.
static void check_text(const document_place& at, const char* text, const scene_object& object)
{
    const auto kept = static_cast<uint32_t>(strnlen(object.text, scene_text_size));
    assert(strnlen(text, scene_text_size) == kept);
    if (text[kept] != 0)
        warn(at, "text " + quoted(text) + line_of(" is cut to %u bytes.", scene_text_size));
    for (uint32_t i = 0; i < kept;) {
        const uint32_t length = letter_length(object.text + i, kept - i);
        const bool goes_on = i + length == kept && (static_cast<uint8_t>(text[kept]) & 0xC0) == 0x80;
        if (!goes_on && !has_glyph(object.text + i, length)) {
            const std::string letter(object.text + i, length);
            return warn(at, "text " + quoted(text) + ": there is no glyph for " + quoted(letter.c_str()) + ".");
        }
        i += length;
    }
}

static bool read_object_attributes(const document_place& at, const xml_node& node, scene_object& object)
{
    if (!read_int(at, node, "type", object.type) || !read_handle(at, node, "object", object.object)
        || !read_handle(at, node, "material", object.material) || !read_handle(at, node, "font", object.font))
        return false;
    const char* text = read_attribute(at, node, "text");
    if (text == nullptr)
        return false;
    std::memcpy(object.text, text, strnlen(text, scene_text_size)); // no terminator when it is 32 long
    if (object.type == object_text)
        check_text(at, text, object);
    return true;
}

// What must be there for anything to be drawn, where the object asks for it.
static void check_drawable(const document_place& at, const scene_object& object)
{
    if (!check_choice(at, "type", object.type, object_kind_count - 1, "nothing is drawn"))
        return;
    if (object.type == object_model && object.object != 0 && object.material == 0)
        warn(at, "a model without a material is not drawn.");
    if (object.type == object_text && object.text[0] != 0 && object.font == 0)
        warn(at, "a text without a font is not drawn.");
}

// Letters are drawn as they are: what deforms a mesh has nothing to deform.
static void check_ripplers(const document_place& at, const scene_object& object)
{
    for (uint32_t index = 0; index < object.manipulator_count; ++index) {
        if (object.type == object_text && object.manipulators[index].type == manipulator_rippler)
            warn(place_of_part(at, "manipulator", index + 1), "a text is not rippled.");
    }
}

// The object's reference in the sense that drawing gives it.
static void check_scene_object(const document_place& at, const scene_object& object)
{
    const document& d = *at.reader.target;
    check_drawable(at, object);
    if (object.object != 0 && (object.type == object_model || object.type == object_genmesh)) {
        const uint32_t handle = resolve_scene_object(d, object);
        const bool found = object.type == object_model ? table_get(d.mesh_table, handle) != nullptr
                                                       : table_get(d.effect_table, handle) != nullptr;
        if (!found)
            warn_of_missing(at, "object", object.object);
    }
    check_handle(at, d.material_table, "material", object.material);
    check_handle(at, d.font_table, "font", object.font);
}

// Thirteen children in a fixed order: nine placement values, visibility, time offset,
// camera-facing mark, manipulators. The time offset is a real between whole numbers.
static bool read_scene_object(const document_place& at, const xml_node& node, scene_object& object, bool& camera_facing)
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
    check_choice(place_of_part(at, "camera facing"), "value", mark, 1, "it acts as 0");
    check_child_count(at, node, child_count);
    if (!read_manipulators(at, *child->next_sibling, object))
        return false;
    check_copies(at, object);
    check_ripplers(at, object);
    return true;
}

// ---- scenes -----------------------------------------------------------------------------

static bool allocate_objects(const document_place& at, const xml_node& node, scene_record& scene)
{
    assert(scene.objects == nullptr);
    const uint32_t count = count_children(node);
    if (count > max_scene_objects)
        return fail(at, line_of("more than %u objects.", max_scene_objects));
    if (count == 0)
        return true;
    scene.objects = static_cast<scene_object*>(std::calloc(count, sizeof(scene_object)));
    if (scene.objects == nullptr)
        return fail(at, "not enough memory.");
    scene.object_count = count;
    assert(scene.object_count <= max_scene_objects);
    return true;
}

bool read_scene(const document_place& at, const xml_node& node)
{
    scene_record* scene = add_record(at, at.reader.target->scene_table);
    if (scene == nullptr || !allocate_objects(at, node, *scene))
        return false;
    copy_name(at, scene->name, sizeof(scene->name), xml_get_attribute(&node, "name"));
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
