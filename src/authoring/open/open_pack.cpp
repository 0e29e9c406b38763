#include "authoring/open/open_pack.h"

#include "authoring/open/open_words.h"
#include "content/owners.h"
#include "content/pack.h"
#include "content/xmlz.h"
#include "editing/pack_files.h"

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <map>
#include <set>

const char* const opened_documents[opened_document_count] = {"demo.xmlz", "loading.xmlz"};

namespace {

struct opened_entries {
    std::map<std::string, std::string> files; // names of entries: of the files that they are in
    std::vector<std::string> order;
};

} // namespace

// Whether an entry's name can be a file's: one that leads nowhere else, and is no file of ours.
static bool is_file_name(const std::string& name)
{
    return pack_name_problem(name.c_str()) == nullptr && name != "show.lua" && name.back() != '/'
        && std::all_of(name.begin(), name.end(), [](char letter) { return static_cast<unsigned char>(letter) >= 32; });
}

static bool is_document(const std::string& name)
{
    return std::any_of(opened_documents, opened_documents + opened_document_count,
        [&name](const char* document) { return name == document; });
}

static void take_entries(
    const pack_file* pack, opened_show& show, opened_entries& entries, std::vector<std::string>& notes)
{
    pack_slot slot;
    for (uint32_t index = 0; pack_read_slot(pack, index, slot); ++index) {
        const std::string name = slot.name;
        uint8_t* bytes = nullptr;
        if (is_document(name) || entries.files.count(name) != 0)
            continue;
        if (pack_read_slot_bytes(pack, slot, &bytes) != pack_found) {
            notes.push_back("the entry \"" + name + "\" is damaged: it is left out.");
            continue;
        }
        const owned_block<uint8_t> block(bytes);
        const std::string file = is_file_name(name) ? name : "entry-" + std::to_string(index + 1);
        entries.files[name] = file;
        entries.order.push_back(name);
        show.files.push_back({file, {bytes, bytes + slot.size}});
    }
}

// The text of a document; false: there is none, or, with a note, none that can be read.
static bool document_content(
    const pack_file* pack, const char* name, std::vector<uint8_t>& content, std::vector<std::string>& notes)
{
    uint8_t* bytes = nullptr;
    uint32_t size = 0;
    const pack_status found = pack_read_entry(pack, name, &bytes, &size);
    if (found == pack_missing)
        return false;
    const owned_block<uint8_t> entry(found == pack_found ? bytes : nullptr);
    uint8_t* text = nullptr;
    uint32_t length = 0;
    const xmlz_status status = found == pack_found ? xmlz_inflate(bytes, size, &text, &length) : xmlz_damaged;
    if (status != xmlz_ok) {
        notes.push_back("the document \"" + std::string(name) + "\" " + xmlz_status_text(status) + ": it is left out.");
        return false;
    }
    const owned_block<uint8_t> inflated(text);
    content.assign(text, text + length);
    return true;
}

static std::string quoted_call(const std::string& word, const std::string& file, const std::string& name)
{
    if (file == name && name.find('/') == std::string::npos) // else the word takes what stands behind the last one
        return word + " " + lua_text(file) + "\n";
    return word + "(" + lua_text(file) + ", { name = " + lua_text(name) + " })\n";
}

static void append(std::vector<uint8_t>& bytes, const std::string& text)
{
    bytes.insert(bytes.end(), text.begin(), text.end());
}

// A document by records where it can be, else its text in a file of its own.
static std::string document_words(
    uint32_t index, const std::vector<uint8_t>& content, const opening_rules& rules, opened_show& show)
{
    std::string text(content.begin(), content.end());
    const owned_tree root(xml_parse(text.c_str()));
    if (rules.as_text || root == nullptr || !can_be_opened(*root)) {
        const std::string file = index == 0 ? "demo.xml" : "loading.xml";
        show.files.push_back({file, content});
        return quoted_call("document", file, opened_documents[index]);
    }
    if (index == 0)
        return open_document(*root, rules.raw, "");
    return "loading(function()\n" + open_document(*root, rules.raw, "    ") + "end)\n";
}

static std::string show_words(const std::vector<uint8_t>& content, bool as_text, opened_show& show)
{
    const std::string text(content.begin(), content.end());
    const owned_tree root(xml_parse(text.c_str()));
    const xml_node* element = root != nullptr ? root->first_child : nullptr;
    std::string words = "show { ";
    if (const char* title = element != nullptr ? xml_get_attribute(element, "name") : nullptr;
        title != nullptr && !as_text)
        words += "title = " + lua_text(title) + ", ";
    const xml_node* music = root != nullptr ? document_music_element(root.get()) : nullptr;
    if (const char* file = music != nullptr ? xml_get_attribute(music, "file") : nullptr; file != nullptr) {
        show.music = file; // lies beside the pack, whoever names it
        if (!as_text)
            words += "music = " + lua_text(file) + ", ";
    }
    return words + "keep_order = true }\n\n";
}

// What the documents name comes with their words; the rest goes in as it is.
static bool is_named(const std::string& source, const std::string& entry)
{
    return source.find("mesh(" + lua_text(entry) + ")") != std::string::npos
        || source.find("image(" + lua_text(entry) + ",") != std::string::npos
        || source.find("= " + lua_text(entry) + ",") != std::string::npos
        || source.find("= " + lua_text(entry) + " ") != std::string::npos;
}

void open_pack(const pack_file* pack, const std::array<opening_rules, opened_document_count>& rules, opened_show& show,
    std::vector<std::string>& notes)
{
    show = {};
    show.files.push_back({"show.lua", {}});
    opened_entries entries;
    take_entries(pack, show, entries, notes);
    std::vector<uint8_t> contents[opened_document_count];
    std::string words;
    for (uint32_t index = 0; index < opened_document_count; ++index)
        if (document_content(pack, opened_documents[index], contents[index], notes))
            words += document_words(index, contents[index], rules[index], show) + "\n";
    std::string source
        = "-- Opened from a pack: every record keeps its number.\n" + show_words(contents[0], rules[0].as_text, show);
    for (const std::string& name : entries.order)
        if (!is_named(words, name))
            source += quoted_call("entry", entries.files[name], name);
    append(show.files[0].bytes, source + "\n" + words);
}
