#include "model/document.h"

#include "content/xml.h"
#include "model/read_sections.h"

constexpr uint32_t needed_sections = section_timeline; // the music is optional

static const xml_node* document_element(const xml_node* root)
{
    return root != nullptr ? root->first_child : nullptr;
}

void document_reader_begin(document_reader& reader, document& target, const xml_node* root, FILE* pack)
{
    reader = {};
    reader.target = &target;
    reader.pack = pack;
    const xml_node* element = document_element(root);
    reader.section_node = element != nullptr ? element->first_child : nullptr;
    if (element != nullptr && element->next_sibling != nullptr)
        add_problem(reader, false, "more than one element at the top: the first is read.");
}

static bool has_failed(const document_reader& reader)
{
    return !reader.problems.empty() && reader.problems.back().fatal;
}

// What is missing, or too much, may be the consequence of a tag: a second look at the text.
static void add_cause(const document_reader& reader, std::string& line)
{
    const std::string fault = find_text_fault(reader.pack, reader.target->name);
    if (!fault.empty())
        line.replace(line.size() - 1, 1, "; " + fault + ".");
}

static bool enough_sections(document_reader& reader)
{
    uint32_t count = 0;
    for (const xml_node* node = reader.section_node; node != nullptr; node = node->next_sibling)
        ++count;
    if (count > section_music) {
        std::string line = line_of("too many sections: %u of %u; the others are not read.", count, section_music);
        add_cause(reader, line);
        add_problem(reader, false, line);
    }
    if (count >= needed_sections)
        return true;
    add_problem(reader, true, line_of("too few sections: %u of %u.", count, needed_sections));
    return false;
}

static void enter_section(document_reader& reader, uint32_t section, const xml_node* node)
{
    reader.section = section;
    reader.section_node = section <= section_music ? node : nullptr; // what follows is no section
    reader.record_node = reader.section_node != nullptr ? reader.section_node->first_child : nullptr;
    reader.record = 0;
}

// The file is the player's to find; here an element that says something else than a file.
static void check_music(document_reader& reader)
{
    const xml_node& node = *reader.section_node;
    if ((node.attribute_count != 0 || node.text != nullptr) && xml_get_attribute(&node, "file") == nullptr)
        warn(place_of_section(reader, section_music), "attribute \"file\" is missing: there is no music.");
}

static void end_section(document_reader& reader)
{
    if (reader.section == section_texture_nodes)
        check_texture_nodes(reader);
    if (reader.section == section_materials) {
        check_glyph_materials(reader);
        mark_material_textures(*reader.target);
    }
    if (reader.section == section_timeline)
        check_timeline(reader);
    if (reader.section == section_music)
        check_music(reader);
}

static bool read_one(const place& at, const xml_node& node)
{
    switch (static_cast<document_section>(at.section)) {
    case section_generated_images:
        return read_generated_image(at, node);
    case section_texture_nodes:
        return read_texture_node(at, node);
    case section_meshes:
        return read_mesh(at, node);
    case section_functions:
        return read_function(at, node);
    case section_values:
        return read_value_record(at, node);
    case section_dynamic_textures:
        return read_dynamic_texture(at, node);
    case section_image_textures:
        return read_image_texture(at, node);
    case section_cube_maps:
        return read_cube_map(at, node);
    case section_fonts:
        return read_font(at, node);
    case section_objects:
        return read_object_reference(at, node);
    case section_materials:
        return read_material(at, node);
    case section_mesh_effects:
        return read_effect(at, node);
    case section_scenes:
        return read_scene(at, node);
    case section_timeline:
        return read_track(at, node, at.number - 1);
    case section_music:
        return true; // its attribute is the player's; children are items without a meaning
    }
    return true;
}

static read_step end_in_failure(document_reader& reader)
{
    add_cause(reader, reader.problems.back().text);
    return read_failed;
}

read_step document_read_step(document_reader& reader)
{
    if (has_failed(reader))
        return read_failed;
    reader.handle = 0;
    if (reader.section == 0) {
        if (!enough_sections(reader))
            return end_in_failure(reader);
        enter_section(reader, section_generated_images, reader.section_node);
    } else if (reader.section_finished) {
        reader.section_finished = false;
        enter_section(reader, reader.section + 1, reader.section_node->next_sibling);
    }
    if (reader.section_node == nullptr)
        return read_done;
    if (reader.record_node == nullptr) {
        end_section(reader);
        reader.section_finished = true;
        return read_section_end;
    }
    const xml_node& node = *reader.record_node;
    reader.record_node = node.next_sibling;
    ++reader.record;
    const bool read = read_one(place_of_record(reader, reader.section, reader.record), node);
    return read ? read_record : end_in_failure(reader);
}
