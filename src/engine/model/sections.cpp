#include "model/sections.h"

#include "model/read_sections.h"

#include <iterator>

static constexpr section_row rows[] = {
    {section_generated_images, "generated images", read_generated_image, nullptr},
    {section_texture_nodes, "texture nodes", read_texture_node, check_texture_nodes},
    {section_meshes, "meshes", read_mesh, nullptr},
    {section_functions, "functions", read_function, nullptr},
    {section_values, "values", read_value_record, nullptr},
    {section_dynamic_textures, "dynamic textures", read_dynamic_texture, nullptr},
    {section_image_textures, "image textures", read_image_texture, nullptr},
    {section_cube_maps, "cube maps", read_cube_map, nullptr},
    {section_fonts, "fonts", read_font, nullptr},
    {section_objects, "objects", read_object_reference, nullptr},
    {section_materials, "materials", read_material, finish_materials},
    {section_mesh_effects, "mesh effects", read_effect, nullptr},
    {section_scenes, "scenes", read_scene, nullptr},
    {section_timeline, "timeline", read_track, check_timeline},
    {section_music, "music", pass_over_music_item, check_music},
};

// Whether row n is section n, from the first to the last.
static constexpr bool rows_are_in_order()
{
    for (uint32_t index = 0; index < std::size(rows); ++index)
        if (rows[index].number != index + 1)
            return false;
    return true;
}
static_assert(std::size(rows) + 1 == no_more_sections, "a section has no row");
static_assert(rows_are_in_order(), "a section's row is not in its place");

const section_row* find_section(uint32_t number)
{
    return number >= 1 && number < no_more_sections ? &rows[number - 1] : nullptr;
}

const char* section_name(uint32_t section)
{
    const section_row* row = find_section(section);
    return row != nullptr ? row->name : "unknown";
}

std::string section_label(uint32_t section)
{
    return "section " + std::to_string(section) + " (" + section_name(section) + ")";
}
