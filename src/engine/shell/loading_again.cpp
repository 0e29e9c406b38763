#include "shell/loading_again.h"

#include "shell/shared_programs.h"
#include "texgen/generators.h"
#include "texgen/texture_graph.h"
#include "texgen/texture_keys.h"
#include "texgen/texture_upload_gl.h"

#include <algorithm>
#include <cassert>
#include <cstdlib>
#include <span>

// ---- generated textures ---------------------------------------------------------------

static void generate_pixels(generated_image& image)
{
    assert(image.pixels == nullptr);
    image.pixels = static_cast<uint8_t*>(std::calloc(generated_size * generated_size, 3));
    if (image.pixels != nullptr)
        generate_image(image, generated_size);
}

static void generate_images_needed(document& d, std::span<const uint32_t> nodes)
{
    const std::vector<bool> needed = images_needed(d.texture_table, nodes, d.generated_image_count);
    for (uint32_t number = 0; number < d.generated_image_count; ++number)
        if (needed[number])
            generate_pixels(d.generated_images[number]);
}

// The outputs that the document before does not have, and what they depend on.
static void make_new_textures(document& d, const texture_graph_keys& graph, const std::vector<bool>& wanted)
{
    if (std::find(wanted.begin(), wanted.end(), true) == wanted.end())
        return;
    const std::span<const generated_image> images = {d.generated_images, d.generated_image_count};
    if (graph.in_order) {
        const std::vector<uint32_t> nodes = nodes_needed(d.texture_table, graph, wanted);
        generate_images_needed(d, nodes);
        return generate_some_textures(d.texture_table, images, generated_size, nodes);
    }
    for (uint32_t number = 0; number < d.generated_image_count; ++number)
        generate_pixels(d.generated_images[number]);
    generate_textures(d.texture_table, images, generated_size);
}

void make_texture_graph_again(record_handover& h, document& d, const texture_format_table& formats)
{
    const texture_graph_keys graph = find_texture_keys(d.texture_table, {d.generated_images, d.generated_image_count});
    std::vector<bool> wanted(record_table_capacity + 1);
    for (auto [handle, node] : d.texture_table) {
        if (node.type != node_output)
            continue;
        const uint32_t from = take_record(h, section_texture_nodes, handle, graph.keys[handle]);
        if (from != 0)
            node.texture = table_get(h.before->texture_table, from)->texture;
        wanted[handle] = from == 0;
    }
    make_new_textures(d, graph, wanted);
    for (auto [handle, node] : d.texture_table) {
        if (!wanted[handle])
            continue;
        create_output_texture_gl(node, formats);
        upload_output_texture_gl(node, formats);
    }
    document_free_generated_images(d);
}

// ---- programs ---------------------------------------------------------------------------

bool take_program(record_handover& h, const source_key& key, uint32_t handle, const material_record& material)
{
    const uint32_t from = take_record(h, section_materials, handle, key);
    if (from == 0)
        return false;
    adopt_program(*table_get(h.before->material_table, from)->program, *material.program);
    return true;
}

// ---- what is offered ----------------------------------------------------------------

// Whether a record holds what its key promises.
static bool is_whole(const texture_node& node)
{
    return node.texture != 0;
}

static bool is_whole(const mesh_record& mesh)
{
    return mesh.data != nullptr;
}

static bool is_whole(const image_texture& image)
{
    return image.texture != 0;
}

static bool is_whole(const cube_map& cube)
{
    return cube.texture != 0;
}

// One that is borrowed has no key.
static bool is_whole(const material_record& material)
{
    return material.program != nullptr && material.program->program != 0;
}

template <typename record_type>
static void offer_table(
    record_handover& h, uint32_t section, const table<record_type>& records, const record_handover& made_with)
{
    for (auto [handle, record] : records)
        if (is_whole(record))
            offer_record(h, section, handle, key_of_record(made_with, section, handle));
}

void offer_records(
    record_handover& h, document& before, const record_handover& made_with, const std::vector<uint32_t>& drawn_into)
{
    h.before = &before;
    offer_table(h, section_texture_nodes, before.texture_table, made_with);
    offer_table(h, section_meshes, before.mesh_table, made_with);
    offer_table(h, section_image_textures, before.image_texture_table, made_with);
    offer_table(h, section_cube_maps, before.cube_map_table, made_with);
    offer_table(h, section_materials, before.material_table, made_with);
    std::erase_if(h.offers[section_image_textures], [&drawn_into](const record_offer& offer) {
        return std::find(drawn_into.begin(), drawn_into.end(), offer.handle) != drawn_into.end();
    });
    sort_offers(h);
}

// ---- what was taken -------------------------------------------------------------------

static void forget(texture_node& node)
{
    node.texture = 0;
}

// The lines of a wireframe go along: they would be made anew, and said to be, with every load.
static void forget(mesh_record& mesh)
{
    mesh = {};
}

static void forget(image_texture& image)
{
    image.texture = 0;
}

static void forget(cube_map& cube)
{
    cube.texture = 0;
}

static void forget(material_record& material)
{
    shader_program& program = *material.program;
    program.program = program.vertex_shader = program.fragment_shader = 0;
}

template <typename record_type> static void forget_record(const table<record_type>& records, uint32_t handle)
{
    record_type* record = table_get(records, handle);
    assert(record != nullptr);
    forget(*record);
}

static void forget_taken(document& d, uint32_t section, uint32_t handle)
{
    switch (static_cast<document_section>(section)) {
    case section_texture_nodes:
        return forget_record(d.texture_table, handle);
    case section_meshes:
        return forget_record(d.mesh_table, handle);
    case section_image_textures:
        return forget_record(d.image_texture_table, handle);
    case section_cube_maps:
        return forget_record(d.cube_map_table, handle);
    case section_materials:
        return forget_record(d.material_table, handle);
    case section_generated_images:
    case section_functions:
    case section_values:
    case section_dynamic_textures:
    case section_fonts:
    case section_objects:
    case section_mesh_effects:
    case section_scenes:
    case section_timeline:
    case section_music:
    case no_more_sections:
        break;
    }
    assert(false); // nobody takes these
}

// How a picture wraps is a material's word.
static void reset_wrap(const document& d, const taken_record& taken)
{
    if (taken.section == section_texture_nodes)
        reset_wrap_gl(table_get(d.texture_table, taken.to)->texture, false);
    if (taken.section == section_image_textures)
        reset_wrap_gl(table_get(d.image_texture_table, taken.to)->texture, false);
    if (taken.section == section_cube_maps)
        reset_wrap_gl(table_get(d.cube_map_table, taken.to)->texture, true);
}

void leave_taken(record_handover& h, document& target)
{
    for (const taken_record& taken : h.taken) {
        forget_taken(*h.before, taken.section, taken.from);
        reset_wrap(target, taken);
    }
    h.before = nullptr;
    for (std::vector<record_offer>& offers : h.offers)
        offers.clear();
}

void give_taken_back(record_handover& h, document& target)
{
    for (const taken_record& taken : h.taken)
        forget_taken(target, taken.section, taken.to);
    h = {};
}
