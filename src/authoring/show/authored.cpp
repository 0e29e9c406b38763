#include "authoring/show/authored.h"

#include "authoring/show/raw.h"

#include <cassert>

authored_record* add_authored(
    authored_document& document, document_section section, element content, const source_place& place)
{
    auto record = std::make_unique<authored_record>();
    record->section = section;
    record->content = std::move(content);
    record->place = place;
    record->id = static_cast<uint32_t>(document.records.size() + 1);
    document.records.push_back(std::move(record));
    return document.records.back().get();
}

authored_record* add_shared(
    authored_document& document, document_section section, element content, const source_place& place)
{
    const std::string key = std::to_string(section) + element_key(content);
    authored_record*& known = document.shared[key];
    if (known == nullptr)
        known = add_authored(document, section, std::move(content), place);
    return known;
}

// ---- numbers --------------------------------------------------------------------------

static void give_number(authored_document& document, authored_record& record)
{
    std::vector<authored_record*>& section = document.sections[record.section];
    section.push_back(&record);
    record.number = static_cast<uint32_t>(section.size());
}

static void visit(authored_document& document, const element& node);

// What a record names gets its number after it, so the sections read from the timeline inwards. A texture node's
// inputs come before it, as one would write them.
static void visit(authored_document& document, const element_value& value)
{
    auto* record = const_cast<authored_record*>(value.link); // ours: the document owns it
    if (record == nullptr || record->number != 0)
        return;
    for (const element& child : record->content.children)
        if (record->section == section_texture_nodes && child.name == "input")
            visit(document, *child.text);
    if (record->number != 0)
        return; // its inputs list it among their outputs
    give_number(document, *record);
    visit(document, record->content);
}

static void visit(authored_document& document, const element& node)
{
    for (const element_attribute& attribute : node.attributes)
        visit(document, attribute.value);
    if (node.text)
        visit(document, *node.text);
    for (const element& child : node.children)
        visit(document, child);
}

void number_records(authored_document& document, bool keep_order)
{
    for (const auto& record : document.records) {
        if (record->number == 0 && (keep_order || record->section == section_timeline)) {
            give_number(document, *record);
            if (!keep_order)
                visit(document, record->content);
        }
    }
}

// ---- text -----------------------------------------------------------------------------

std::string document_text(const authored_document& document)
{
    std::string out = "<production";
    if (!document.title.empty())
        out += " name=\"" + document.title + "\"";
    out += ">\n";
    for (uint32_t section = section_generated_images; section < section_music; ++section) {
        const std::string name = section_elements[section];
        if (document.sections[section].empty()) {
            out += "  <" + name + "/>\n";
            continue;
        }
        out += "  <" + name + ">\n";
        for (const authored_record* record : document.sections[section])
            write_element(record->content, 2, out);
        out += "  </" + name + ">\n";
    }
    if (!document.music.empty())
        out += "  <music file=\"" + document.music + "\"/>\n";
    return out + "</production>\n";
}

source_place place_in_document(
    const authored_document& document, document_section section, uint32_t record, uint32_t part)
{
    if (section >= no_more_sections || record == 0 || record > document.sections[section].size())
        return {};
    const authored_record& found = *document.sections[section][record - 1];
    if (part != 0 && part <= found.content.children.size() && !found.content.children[part - 1].place.file.empty())
        return found.content.children[part - 1].place;
    return found.place;
}
