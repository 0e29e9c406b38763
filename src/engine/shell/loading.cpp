#include "shell/loading.h"

#include "effects/dynamic_texture_gl.h"
#include "effects/mesh_effect.h"
#include "render/mesh_buffers_gl.h"
#include "render/shader_program_gl.h"
#include "render/shader_source.h"
#include "shell/loading_again.h"
#include "texgen/generators.h"
#include "texgen/texture_graph.h"
#include "texgen/texture_upload_gl.h"

#include <algorithm>
#include <cassert>
#include <cstdlib>

void document_loader_begin(document_loader& loader, document& target, const xml_node* root, const pack_file* pack,
    const loading_options& options)
{
    assert(target.name != nullptr); // document_create was called
    loader = {};
    loader.options = options;
    document_reader_begin(loader.reader, target, root, pack);
    loader.reader.handover = options.handover;
    if (options.handover == nullptr) // else most entries stay packed
        loader.ahead.reset(decode_ahead_begin(root, pack, options.workers));
    loader.reader.ahead = loader.ahead.get();
}

// ---- generated textures -------------------------------------------------------------

static void make_generated_image(document& d)
{
    if (d.generated_image_count == 0)
        return;
    assert(d.generated_images != nullptr);
    generated_image& image = d.generated_images[d.generated_image_count - 1];
    assert(image.pixels == nullptr); // the one that was read last
    image.pixels = static_cast<uint8_t*>(std::calloc(generated_size * generated_size, 3));
    if (image.pixels != nullptr)
        generate_image(image, generated_size);
}

// All nodes are there: computes the graph, hands over the outputs, drops the pixels.
static void make_texture_graph(document& d, const texture_format_table& formats)
{
    generate_textures(d.texture_table, {d.generated_images, d.generated_image_count}, generated_size);
    upload_generated_textures_gl(d.texture_table, formats);
    document_free_generated_images(d);
}

// ---- programs -----------------------------------------------------------------------

static void explain_failure(const document& d, uint32_t handle, const material_record& material,
    const shader_unit units[texture_unit_count], const loading_options& options)
{
    const std::string place = record_label(d, section_materials, handle);
    const std::string lines = explain_shader_failure(material, units, place);
    if (options.remarks == nullptr)
        std::fputs(lines.c_str(), stderr);
    else if (!lines.empty())
        options.remarks->push_back({section_materials, handle, has_custom_program(material), lines});
}

static void make_program(document_loader& loader, document& d, uint32_t handle, material_record& material)
{
    const loading_options& options = loader.options;
    shader_unit units[texture_unit_count];
    resolve_shader_units(material, d.object_table, d.texture_table, d.image_texture_table, d.dynamic_texture_table,
        d.cube_map_table, units);
    generate_shader(material, d.transform_table, units);
    if (material.program == nullptr)
        return;
    const source_key key = key_of_program(d, material, units);
    if (share_program(loader.programs, key, d, material))
        return;
    if (options.handover == nullptr || !take_program(*options.handover, key, handle, material)) {
        build_shader(material, units);
        if (options.shader_log)
            explain_failure(d, handle, material, units, options);
    }
    list_program(loader.programs, key, handle, material);
}

// ---- records ------------------------------------------------------------------------

static void make_record(document_loader& loader, document& d, uint32_t section, uint32_t handle)
{
    const loading_options& options = loader.options;
    assert(section >= 1 && section < no_more_sections);
    switch (static_cast<document_section>(section)) {
    case section_generated_images:
        if (options.handover == nullptr) // else which are needed is known once all nodes are there
            make_generated_image(d);
        break;
    case section_texture_nodes:
        if (options.handover != nullptr)
            break;
        if (texture_node* node = table_get(d.texture_table, handle); node && node->type == node_output)
            create_output_texture_gl(*node, options.formats);
        break;
    case section_meshes:
        if (mesh_record* mesh = table_get(d.mesh_table, handle); mesh && options.caps.vbo == 1)
            create_mesh_buffers_gl(mesh->arrays);
        break;
    case section_dynamic_textures:
        if (dynamic_texture* texture = table_get(d.dynamic_texture_table, handle))
            create_dynamic_texture_gl(
                *texture, d.function_table, options.formats, options.first_images, options.caps.pbo == 1);
        break;
    case section_image_textures:
        if (image_texture* image = table_get(d.image_texture_table, handle); image && image->texture == 0)
            upload_image_texture_gl(*image, options.formats);
        break;
    case section_cube_maps:
        if (cube_map* cube = table_get(d.cube_map_table, handle); cube && cube->texture == 0)
            upload_cube_map_gl(*cube, options.formats);
        break;
    case section_materials:
        if (material_record* material = table_get(d.material_table, handle); material && options.glsl)
            make_program(loader, d, handle, *material);
        break;
    case section_mesh_effects:
        if (mesh_effect* effect = table_get(d.effect_table, handle))
            init_mesh_effect(*effect);
        break;
    case section_functions:
    case section_values:
    case section_fonts:
    case section_objects:
    case section_scenes:
    case section_timeline:
    case section_music:
    case no_more_sections:
        break;
    }
}

// A document of many mistakes must not bury what else there is to read. Whoever wants all
// of them finds them in the reader.
constexpr size_t printed_warnings = 20;

static void print_new_warnings(document_loader& loader)
{
    const auto& problems = loader.reader.problems;
    assert(loader.problems_seen <= problems.size());
    for (; loader.problems_seen < problems.size(); ++loader.problems_seen) {
        const document_problem& problem = problems[loader.problems_seen];
        if (problem.fatal)
            loader.error = problem.text;
        else if (loader.problems_seen < printed_warnings && loader.options.remarks == nullptr)
            std::fprintf(stderr, "%s\n", problem.text.c_str());
    }
}

static void print_count_of_the_rest(const document_reader& reader)
{
    if (reader.warning_count <= printed_warnings)
        return;
    const size_t left = reader.warning_count - printed_warnings;
    std::fprintf(stderr, "Warning: %s: %zu more warning%s.\n", reader.target->name, left, left == 1 ? "" : "s");
}

read_step document_loader_step(document_loader& loader)
{
    document_reader& reader = loader.reader;
    const read_step step = document_read_step(reader);
    print_new_warnings(loader);
    assert(step != read_failed || !loader.error.empty());
    if ((step == read_done || step == read_failed) && loader.options.remarks == nullptr)
        print_count_of_the_rest(reader);
    if (step == read_record)
        make_record(loader, *reader.target, reader.section, reader.handle);
    if (step == read_section_end && reader.section == section_texture_nodes) {
        if (loader.options.handover != nullptr)
            make_texture_graph_again(*loader.options.handover, *reader.target, loader.options.formats);
        else
            make_texture_graph(*reader.target, loader.options.formats);
    }
    return step;
}

bool document_loader_run(document_loader& loader)
{
    for (;;) {
        switch (document_loader_step(loader)) {
        case read_record:
        case read_section_end:
            break;
        case read_done:
            return true;
        case read_failed:
            return false;
        }
    }
}

bool load_document(const pack_file* pack, const char* name, timeline* t, const loading_options& options,
    document& target, owned_tree& tree, std::string& problem)
{
    assert(name != nullptr && tree == nullptr);
    document_create(target, name, t);
    tree.reset(load_document_tree(pack, name, problem));
    if (tree == nullptr)
        return problem.empty();
    document_loader loader;
    document_loader_begin(loader, target, tree.get(), pack, options);
    const bool loaded = document_loader_run(loader);
    problem = loader.error;
    return loaded;
}

// ---- unloading ----------------------------------------------------------------------

static void release_gl(texture_node& node)
{
    release_output_texture_gl(node);
}

static void release_gl(mesh_record& mesh)
{
    release_mesh_buffers_gl(mesh.arrays);
}

static void release_gl(dynamic_texture& texture)
{
    release_dynamic_texture_gl(texture);
}

static void release_gl(image_texture& image)
{
    release_image_texture_gl(image);
}

static void release_gl(cube_map& cube)
{
    release_cube_map_gl(cube);
}

static void release_gl(material_record& material)
{
    if (material.program != nullptr)
        release_shader_gl(*material.program);
}

// Records without OpenGL objects. Every kind is named, so that a new one is asked what it has.
static void release_gl(animation_function&) { }
static void release_gl(value_record&) { }
static void release_gl(font_record&) { }
static void release_gl(object_reference&) { }
static void release_gl(mesh_effect&) { }
static void release_gl(scene_record&) { }

void release_document_gl(document& d)
{
    for_each_table(d, [](auto& records) {
        for (auto [handle, record] : records)
            release_gl(record);
    });
}

void unload_document_memory(document& d)
{
    for (auto [handle, effect] : d.effect_table)
        free_mesh_effect(effect);
    document_free(d);
}

void unload_document(document& d)
{
    release_document_gl(d);
    unload_document_memory(d);
}
