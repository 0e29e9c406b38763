#include "model/sections.h"

#include "model/read_sections.h"

#include <iterator>

static constexpr section_row rows[] = {
    {section_generated_images, "generated images", true, read_generated_image, nullptr},
    {section_texture_nodes, "texture nodes", true, read_texture_node, check_texture_nodes},
    {section_meshes, "meshes", true, read_mesh, nullptr},
    {section_functions, "functions", true, read_function, nullptr},
    {section_values, "values", true, read_value_record, nullptr},
    {section_dynamic_textures, "dynamic textures", true, read_dynamic_texture, nullptr},
    {section_image_textures, "image textures", true, read_image_texture, nullptr},
    {section_cube_maps, "cube maps", true, read_cube_map, nullptr},
    {section_fonts, "fonts", true, read_font, nullptr},
    {section_objects, "objects", true, read_object_reference, nullptr},
    {section_materials, "materials", true, read_material, finish_materials},
    {section_mesh_effects, "mesh effects", true, read_effect, nullptr},
    {section_scenes, "scenes", true, read_scene, nullptr},
    {section_timeline, "timeline", true, read_track, check_timeline},
    {section_music, "music", false, pass_over_music_item, check_music},
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
