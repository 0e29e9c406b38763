// Looks at the elements themselves: sections in another's place, parameters that nobody reads.
#include "authoring/check/lint.h"
#include "authoring/counted.h"

#include "model/catalogues.h"
#include "model/read_element.h"
#include "model/sections.h"

#include <cassert>
#include <cstdlib>

// ---- sections in another's place ---------------------------------------------------

static bool has(const xml_node* node, const char* attribute)
{
    return xml_get_attribute(node, attribute) != nullptr;
}

// The section that an element would be a record of, by attributes that no other one's have; 0: it may be any.
static uint32_t section_like(const xml_node& record)
{
    const xml_node* child = record.first_child;
    if (has(&record, "filename"))
        return has(&record, "texture_format") ? section_image_textures : section_meshes;
    if (has(&record, "resolution"))
        return section_dynamic_textures;
    if (has(&record, "texture_format") && has(&record, "type"))
        return section_texture_nodes;
    if (has(&record, "loop_type"))
        return section_functions;
    if (has(&record, "xp") && has(&record, "xn"))
        return section_cube_maps;
    if (has(&record, "id") && has(&record, "type"))
        return section_objects;
    if (has(child, "bitmap") && has(child, "width"))
        return section_fonts;
    if (has(child, "object") && has(child, "font"))
        return section_scenes;
    if (has(child, "space_before") && has(child, "length"))
        return section_timeline;
    return 0;
}

// Rule: the first record of a section has the attributes of another section's records, which those of its own do
// not have. The reading says then what is missing, which is no help.
void lint_swapped_sections(const lint_target& t)
{
    const xml_node* element = child_of(child_of(t.read.root, 0), 0);
    for (uint32_t section = 1; element != nullptr && section < section_music; ++section) {
        const uint32_t like = element->first_child != nullptr ? section_like(*element->first_child) : 0;
        if (like != 0 && like != section)
            t.findings.push_back({problem_warning, t.d.name, section, 0, {},
                std::string(swapped_section_text) + section_label(like)
                    + ": the order of the sections counts, not their names."});
        element = element->next_sibling;
    }
}

// ---- parameters that nobody reads ----------------------------------------------------

// The number in an element: its own text, or the attribute "value".
static bool says_something(const xml_node& node)
{
    const char* text = node.text != nullptr ? node.text : xml_get_attribute(&node, "value");
    return text != nullptr && std::strtod(text, nullptr) != 0.0;
}

// Rule: more parameters than the kind takes, and one of those behind is not 0. Tools fill up with 0.
static void check_extra(const lint_target& t, uint32_t section, uint32_t record, const xml_node* first, uint32_t takes,
    const char* kind, const std::vector<document_part>& parts)
{
    uint32_t given = 0;
    bool lost = false;
    for (const xml_node* node = first; node != nullptr; node = node->next_sibling, ++given)
        lost = lost || (given >= takes && says_something(*node));
    if (lost)
        add_finding(t, problem_warning, section, record,
            "\"" + std::string(kind) + "\" takes " + counted(takes, "parameter") + ", and there are "
                + std::to_string(given) + ": the others are not used.",
            parts);
}

static void check_generator(const lint_target& t, uint32_t record, const xml_node& node)
{
    const int32_t kind = t.d.generated_images[record - 1].params.kind;
    if (kind < 0 || kind >= generator_kind_count)
        return;
    const texture_generator_entry& entry = texture_generators[kind];
    check_extra(t, section_generated_images, record, node.first_child, 3 * entry.colour_count + entry.number_count,
        entry.name, {});
}

static void check_node(const lint_target& t, uint32_t record, const xml_node& node)
{
    const texture_node* read = table_get(t.d.texture_table, record);
    const texture_operation_entry* entry = read != nullptr ? operation_of(read->type) : nullptr;
    const xml_node* child = child_of(&node, 1); // behind input 1
    if (entry == nullptr || child == nullptr)
        return;
    if (is_named(*child, "input"))
        child = child->next_sibling;
    while (child != nullptr && is_named(*child, "output"))
        child = child->next_sibling;
    check_extra(t, section_texture_nodes, record, child, entry->param_count, entry->name, {});
}

static void check_segments(const lint_target& t, uint32_t record, const xml_node& node)
{
    const animation_function* function = table_get(t.d.function_table, record);
    if (function == nullptr)
        return;
    const xml_node* segment = node.first_child;
    for (uint32_t index = 0; segment != nullptr && index < function->segment_count; ++index) {
        const int32_t type = function->segment_type[index];
        if (type >= 0 && type < segment_kind_count)
            check_extra(t, section_functions, record, segment->first_child, function_types[type].param_count,
                function_types[type].name, {{"segment", index + 1}});
        segment = segment->next_sibling;
    }
}

static void check_effect(const lint_target& t, uint32_t record, const xml_node& node)
{
    const mesh_effect* effect = table_get(t.d.effect_table, record);
    if (effect == nullptr || effect->type >= mesh_effect_kind_count)
        return;
    const effect_type_entry& entry = effect_types[effect->type];
    check_extra(t, section_mesh_effects, record, node.first_child, entry.param_count, entry.name, {});
}

static void check_dynamic_texture(const lint_target& t, uint32_t record, const xml_node& node)
{
    const dynamic_texture* texture = table_get(t.d.dynamic_texture_table, record);
    if (texture == nullptr || texture->type >= effect_2d_kind_count)
        return;
    const effect_2d_entry& entry = effects_2d[texture->type];
    check_extra(t, section_dynamic_textures, record, node.first_child, entry.param_count, entry.name, {});
}

template <typename check>
static void for_each_element(const lint_target& t, uint32_t section, uint32_t count, check&& look)
{
    const xml_node* element = element_of(t.read, section, 0);
    const xml_node* node = element != nullptr ? element->first_child : nullptr;
    for (uint32_t record = 1; node != nullptr && record <= count; ++record, node = node->next_sibling)
        look(t, record, *node);
}

void lint_extra_parameters(const lint_target& t)
{
    for_each_element(t, section_generated_images, t.d.generated_image_count, check_generator);
    for_each_element(t, section_texture_nodes, record_table_capacity, check_node);
    for_each_element(t, section_functions, record_table_capacity, check_segments);
    for_each_element(t, section_dynamic_textures, record_table_capacity, check_dynamic_texture);
    for_each_element(t, section_mesh_effects, record_table_capacity, check_effect);
}
