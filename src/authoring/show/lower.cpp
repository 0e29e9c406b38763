#include "authoring/show/entries.h"
#include "authoring/show/lowering.h"

#include "authoring/asset/music_check.h"

#include "content/new_file.h"
#include "content/pack.h"
#include "model/glyphs.h"

#include <algorithm>
#include <filesystem>

thing* add_thing(show_description& show, thing_value value, const source_place& place, uint32_t document)
{
    auto made = std::make_unique<thing>();
    made->value = std::move(value);
    made->place = place;
    made->document = document;
    show.things.push_back(std::move(made));
    return show.things.back().get();
}

void add_problem(problem_list& problems, problem_severity severity, const source_place& place, const std::string& text)
{
    problems.push_back({severity, place.file, place.line, "", text});
}

bool has_errors(const problem_list& problems)
{
    return std::any_of(problems.begin(), problems.end(),
        [](const show_problem& problem) { return problem.severity == problem_error; });
}

kept_work& work_of(show_description& show)
{
    return show.kept != nullptr ? *show.kept : show.own_work;
}

authored_document& document_of(lowering& l)
{
    return *l.built.documents[l.document];
}

authored_record* new_record(
    lowering& l, document_section section, element content, const source_place& place, const std::string& name)
{
    authored_record* record = l.show.keep_order ? add_authored(document_of(l), section, std::move(content), place)
                                                : add_shared(document_of(l), section, std::move(content), place);
    if (record->name.empty())
        record->name = name;
    return record;
}

// ---- letters ----------------------------------------------------------------------------

std::vector<uint32_t> glyphs_of_text(const std::string& text)
{
    std::vector<uint32_t> glyphs;
    for (size_t index = 0; index < text.size(); ++index) {
        uint8_t glyph = glyph_of_byte(static_cast<uint8_t>(text[index]));
        if (glyph == glyph_lead_byte && index + 1 < text.size())
            glyph = glyph_of_second_byte(static_cast<uint8_t>(text[++index]));
        if (glyph < glyph_count)
            glyphs.push_back(glyph);
    }
    return glyphs;
}

static void note_letters(lowering& l, const placed_thing& placed)
{
    for (const uint32_t glyph : glyphs_of_text(placed.text))
        l.letters[placed.what].insert(glyph);
}

// ---- documents --------------------------------------------------------------------------

// In the order in which the source made them: each a record of its own, used or not.
static void lower_in_order(lowering& l)
{
    for (size_t index = 0; index < l.show.things.size(); ++index) { // grows where numbers are turned round
        const thing& made = *l.show.things[index];
        if (made.document != l.document)
            continue;
        if (as<curve_thing>(&made) != nullptr && made.explicit_record)
            lower_curve(l, made);
        else if (as<value_thing>(&made) != nullptr)
            lower_value(l, made);
        else if (as<picture_thing>(&made) != nullptr)
            lower_picture(l, made);
        else if (as<node_thing>(&made) != nullptr || as<output_thing>(&made) != nullptr)
            lower_node(l, made);
        else if (as<mesh_thing>(&made) != nullptr)
            lower_mesh(l, made, 0);
        else if (as<effect_thing>(&made) != nullptr)
            lower_effect(l, made);
        else if (as<image_thing>(&made) != nullptr || as<cube_map_thing>(&made) != nullptr
            || as<dynamic_thing>(&made) != nullptr)
            lower_texture(l, made);
        else if (as<reference_thing>(&made) != nullptr)
            lower_reference(l, made);
        else if (as<material_thing>(&made) != nullptr)
            lower_material(l, made, false);
        else if (as<font_thing>(&made) != nullptr)
            lower_font(l, made, nullptr, false);
        else if (as<scene_thing>(&made) != nullptr)
            lower_scene(l, made, false);
        else if (const raw_thing* raw = as<raw_thing>(&made); raw != nullptr && raw->section != section_timeline)
            lower_raw(l, made); // tracks have their places among the tracks
    }
}

authored_record* lower_raw(lowering& l, const thing& made)
{
    const use_of_thing use = {&made, nullptr, 0};
    if (const auto known = l.made.find(use); known != l.made.end())
        return known->second.front();
    const raw_thing& raw = *as<raw_thing>(&made);
    authored_record* record = add_authored(document_of(l), raw.section, raw.content, made.place);
    record->is_raw = true;
    l.made[use] = {record};
    return record;
}

// Names and texts come from everywhere; what one may not hold is told where its record is made.
static void check_texts(lowering& l, const element& node, const source_place& place)
{
    const auto say = [&](const std::string& text, const std::string& fault) {
        if (!fault.empty())
            add_problem(
                l.built.problems, problem_error, place, "the text \"" + text.substr(0, 40) + "\" " + fault + ".");
    };
    for (const element_attribute& attribute : node.attributes)
        say(attribute.value.text, attribute_fault(attribute.value.text));
    if (node.text)
        say(node.text->text, text_fault(node.text->text));
    for (const element& child : node.children)
        check_texts(l, child, child.place.file.empty() ? place : child.place);
}

// Whether an object of the document names an entry of the section of objects.
static bool places_references(const lowering& l)
{
    return !l.show.keep_order && std::any_of(l.show.things.begin(), l.show.things.end(), [&l](const auto& made) {
        const placed_thing* placed = as<placed_thing>(made.get());
        return placed != nullptr && made->document == l.document && as<reference_thing>(placed->what) != nullptr;
    });
}

static void lower_document(lowering& l, const char* entry)
{
    l.places_references = places_references(l);
    l.built.documents[l.document] = std::make_unique<authored_document>();
    authored_document& document = document_of(l);
    document.entry = entry;
    document.title = l.document == 0 ? l.show.title : "";
    document.music = l.document == 0 ? l.show.music : "";
    if (l.show.keep_order)
        lower_in_order(l);
    lower_timeline(l);
    finish_nodes(l);
    for (const auto& record : document.records)
        if (!record->is_raw)
            check_texts(l, record->content, record->place);
    number_records(document, l.show.keep_order);
}

static std::vector<uint8_t> bytes_of(const std::string& text)
{
    return {text.begin(), text.end()};
}

// The music goes beside the pack, not into it.
static void take_music(lowering& l)
{
    if (l.show.music.empty())
        return;
    std::error_code fault;
    const std::filesystem::path wish = std::filesystem::path(l.show.music).lexically_normal();
    const bool is_inside = !wish.is_absolute() && wish.begin()->string() != "..";
    want_file(l.show, l.show.music);
    if (is_inside && !std::filesystem::exists(l.show.folder / wish, fault))
        return add_problem(l.built.problems, problem_warning, l.show.music_place,
            "there is no music \"" + l.show.music + "\" beside the source"
                + near_file(l.show.folder + "/" + l.show.music)
                + (near_file(l.show.folder + "/" + l.show.music).empty() ? ": the show plays without." : ""));
    const std::string path = find_file(l, l.show.music, l.show.music_place);
    std::string problem;
    if (path.empty())
        return;
    l.built.music = l.show.music;
    l.built.music_place = l.show.music_place;
    const music_file_facts* facts = keep_music(work_of(l.show), path, problem);
    if (facts == nullptr) {
        const bool ends = problem.ends_with('.');
        add_problem(l.built.problems, l.show.keep_order ? problem_warning : problem_error, l.show.music_place,
            "\"" + l.show.music + "\" " + problem + (ends ? "" : "."));
        return;
    }
    l.built.music_seconds = music_seconds(*facts);
    for (const std::string& note : facts->notes)
        add_problem(l.built.problems, problem_note, l.show.music_place, "\"" + l.show.music + "\" " + note + ".");
}

// Whether the source brings the document as a text.
static bool is_text_of_file(const show_description& show, const std::string& entry)
{
    return std::any_of(show.things.begin(), show.things.end(), [&entry](const auto& made) {
        const entry_thing* text = as<entry_thing>(made.get());
        return text != nullptr && text->is_document && text->name == entry;
    });
}

void lower_show(show_description& show, built_show& built)
{
    lowering l = {show, built};
    l.names.taken = {"demo.xmlz", "loading.xmlz"};
    for (const auto& made : show.things)
        if (const placed_thing* placed = as<placed_thing>(made.get()); placed != nullptr && placed->kind == object_text)
            note_letters(l, *placed);
    static constexpr const char* entries[authored_document_count] = {"demo.xmlz", "loading.xmlz"};
    std::vector<pack_entry> documents;
    std::set<const thing*> used;
    for (l.document = 0; l.document < authored_document_count; ++l.document) {
        if (is_text_of_file(show, entries[l.document]) || (l.document != 0 && show.tracks[l.document].empty()))
            continue;
        l.made.clear();
        lower_document(l, entries[l.document]);
        documents.push_back({entries[l.document], enveloped(show, bytes_of(document_text(document_of(l)))), ""});
        for (const auto& made : l.made)
            used.insert(made.first.what);
    }
    if (!show.keep_order)
        tell_unused(l, used);
    l.document = 0;
    take_music(l);
    take_entries(l);
    built.entries.insert(built.entries.begin(), documents.begin(), documents.end());
}

void look_at_files(show_description& show, built_show& built)
{
    lowering l = {show, built};
    built.documents[0] = std::make_unique<authored_document>();
    const size_t count = show.things.size();
    for (size_t index = 0; index < count; ++index) {
        const thing& made = *show.things[index];
        const font_thing* font = as<font_thing>(&made);
        if (as<image_thing>(&made) != nullptr || as<cube_map_thing>(&made) != nullptr)
            lower_texture(l, made);
        else if (as<mesh_thing>(&made) != nullptr && !as<mesh_thing>(&made)->file.empty())
            lower_mesh(l, made, 0);
        else if (font != nullptr && !font->file.empty())
            lower_font(l, made, nullptr, false);
    }
    take_music(l);
    built.documents[0].reset();
    built.entries.clear();
}

// ---- packs ------------------------------------------------------------------------------

static void append_be(std::vector<uint8_t>& out, uint32_t number)
{
    for (int shift = 24; shift >= 0; shift -= 8)
        out.push_back(static_cast<uint8_t>(number >> shift));
}

std::vector<uint8_t> pack_bytes(const std::vector<pack_entry>& entries)
{
    std::vector<uint8_t> out(pack_magic, pack_magic + pack_index_offset);
    uint32_t start = pack_index_offset + pack_slot_size * static_cast<uint32_t>(entries.size()) + pack_name_size;
    size_t size = start;
    for (const pack_entry& entry : entries)
        size += entry.bytes.size();
    out.reserve(size);
    for (const pack_entry& entry : entries) {
        std::string name = entry.name;
        name.resize(pack_name_size, '\0');
        out.insert(out.end(), name.begin(), name.end());
        append_be(out, start);
        append_be(out, start + static_cast<uint32_t>(entry.bytes.size()) - 1);
        start += static_cast<uint32_t>(entry.bytes.size());
    }
    out.insert(out.end(), pack_name_size, 0);
    for (const pack_entry& entry : entries)
        out.insert(out.end(), entry.bytes.begin(), entry.bytes.end());
    return out;
}
