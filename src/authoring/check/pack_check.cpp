#include "authoring/check/pack_check.h"

#include "authoring/check/lint.h"
#include "content/pack.h"
#include "content/printable.h"
#include "model/image_decode.h"

#include <algorithm>
#include <cassert>
#include <set>

constexpr const char* face_names[cube_face_count] = {"xp", "xn", "yp", "yn", "zp", "zn"};

static void add_name(const xml_node& node, const char* attribute, std::set<std::string>& names)
{
    const char* name = xml_get_attribute(&node, attribute);
    if (name != nullptr)
        names.insert(name);
}

// Its levels too, whatever its filter: a filter of another number may be a matter of trying.
static void add_picture(const xml_node& node, std::set<std::string>& names)
{
    const char* name = xml_get_attribute(&node, "filename");
    if (name == nullptr)
        return;
    names.insert(name);
    for (const uint32_t level : {1u, 2u})
        names.insert(name_of_level(name, level).text);
}

static void add_named_entries(const read_document& read, std::set<std::string>& names)
{
    const auto first = [&read](uint32_t section) {
        const xml_node* element = element_of(read, section, 0);
        return element != nullptr ? element->first_child : nullptr;
    };
    for (uint32_t section = 1; section < section_music; ++section) // a section may stand in another's place
        for (const xml_node* node = first(section); node != nullptr; node = node->next_sibling) {
            add_picture(*node, names);
            for (const char* face : face_names)
                add_name(*node, face, names);
        }
}

bool looks_like_a_pack(const pack_file* pack)
{
    if (pack_begins(pack))
        return true;
    pack_slot slot{};
    for (uint32_t index = 0; pack_read_slot(pack, index, slot); ++index)
        if (std::string(slot.name) == show_document_name || std::string(slot.name) == loading_document_name)
            return true;
    return false;
}

static void add_pack_finding(finding_list& findings, problem_severity severity, const std::string& text)
{
    findings.push_back({severity, "", 0, 0, {}, text});
}

// A document that cannot be read names nothing, so nothing is said of what it may name.
static bool names_are_known(const read_document& read)
{
    return !read.present || read.root != nullptr;
}

void check_pack(const pack_file* pack, const read_document& loading, const read_document& show, finding_list& findings)
{
    if (pack == nullptr)
        return;
    if (!loading.present && !show.present)
        add_pack_finding(findings, problem_warning, "there is no entry \"demo.xmlz\": the show is over at once.");
    std::set<std::string> named = {show_document_name, loading_document_name, ""};
    add_named_entries(loading, named);
    add_named_entries(show, named);
    const bool all_known = names_are_known(loading) && names_are_known(show);
    std::set<std::string> seen;
    pack_slot slot{};
    uint32_t index = 0;
    for (; pack_read_slot(pack, index, slot); ++index) {
        const std::string shown = "entry \"" + printable(slot.name) + "\"";
        if (!seen.insert(slot.name).second)
            add_pack_finding(findings, problem_warning, shown + " stands there again: the first one is taken.");
        else if (all_known && named.count(slot.name) == 0)
            add_pack_finding(findings, problem_note, shown + " is named by no document.");
        if (slot.damaged)
            add_pack_finding(findings, problem_warning, shown + " lies outside the pack.");
    }
    if (!pack_index_ends(pack, index))
        add_pack_finding(findings, problem_warning, "the index does not end with an empty name.");
}
