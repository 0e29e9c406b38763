#include "model/document_reader.h"

#include "content/xml.h"
#include "model/read_element.h"
#include "model/sections.h"

#include <cassert>

constexpr uint32_t needed_sections = section_timeline; // the music is optional

static const xml_node* document_element(const xml_node* root)
{
    return root != nullptr ? root->first_child : nullptr;
}

void document_reader_begin(document_reader& reader, document& target, const xml_node* root, const pack_file* pack)
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
    constexpr uint32_t known_sections = no_more_sections - 1;
    if (count > known_sections) {
        std::string line = line_of("too many sections: %u of %u; the others are not read.", count, known_sections);
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
    assert(section >= 1 && section <= no_more_sections);
    reader.section = section;
    reader.section_node = find_section(section) != nullptr ? node : nullptr; // what follows is no section
    reader.record_node = reader.section_node != nullptr ? reader.section_node->first_child : nullptr;
    reader.record = 0;
}

static read_step end_in_failure(document_reader& reader)
{
    assert(has_failed(reader)); // who ends the reading says why
    add_cause(reader, reader.problems.back().text);
    return read_failed;
}

read_step document_read_step(document_reader& reader)
{
    if (has_failed(reader))
        return read_failed;
    assert(reader.target != nullptr);
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
    const section_row& row = *find_section(reader.section);
    if (reader.record_node == nullptr) {
        if (row.finish != nullptr)
            row.finish(reader);
        reader.section_finished = true;
        return read_section_end;
    }
    const xml_node& node = *reader.record_node;
    reader.record_node = node.next_sibling;
    ++reader.record;
    const bool read = row.read_one(place_of_record(reader, reader.section, reader.record), node);
    return read ? read_record : end_in_failure(reader);
}
