#include "authoring/check/read_documents.h"

#include "model/document_reader.h"

#include <algorithm>
#include <cassert>
#include <utility>

constexpr uint32_t max_errors = 256; // of one document: behind them it is nothing but mistakes

void free_read_document::operator()(read_document* document) const
{
    document_free(document->d);
    delete document;
}

// A problem of the document as a whole, from its line.
static document_problem problem_of_line(const std::string& line, const char* name)
{
    const size_t place_length = std::string("Error: ").size() + std::string(name).size() + 2;
    assert(line.size() > place_length);
    document_problem problem{};
    problem.fatal = true;
    problem.text = line;
    problem.place_length = place_length;
    return problem;
}

// Whether the reading may go on behind a fatal problem. Not without sections, nor where every further record would
// take memory that the player would not.
static bool can_go_on(const document_reader& reader, uint32_t errors)
{
    return reader.section != 0 && errors < max_errors && reader.unfolded_bytes <= max_unfolded_bytes;
}

static void read_all(read_document& document, const pack_file* pack, record_handover* handover = nullptr)
{
    document_reader reader;
    document_reader_begin(reader, document.d, document.root, pack);
    reader.handover = handover;
    std::vector<std::pair<size_t, document_problem>> errors; // and how many warnings stand before each
    for (bool going = true; going;) {
        switch (document_read_step(reader)) {
        case read_record:
        case read_section_end:
            break;
        case read_done:
            going = false;
            break;
        case read_failed:
            errors.emplace_back(reader.problems.size() - 1, std::move(reader.problems.back()));
            reader.problems.pop_back(); // so that the next step reads the next record
            going = can_go_on(reader, static_cast<uint32_t>(errors.size()));
            break;
        }
    }
    document.errors = static_cast<uint32_t>(errors.size());
    document.warning_count = reader.warning_count;
    document.problems = std::move(reader.problems);
    for (size_t index = errors.size(); index-- > 0;)
        document.problems.insert(document.problems.begin() + static_cast<std::ptrdiff_t>(errors[index].first),
            std::move(errors[index].second));
}

static owned_read_document new_read_document(const char* name)
{
    assert(name != nullptr);
    owned_read_document document(new read_document{});
    document_create(document->d, name, timeline_new());
    return document;
}

owned_read_document read_document_tree(const char* name, const xml_node* root, const pack_file* pack)
{
    owned_read_document document = new_read_document(name);
    document->root = root;
    document->present = true;
    read_all(*document, pack);
    return document;
}

// ---- again ----------------------------------------------------------------------------

constexpr document_section kept_sections[] = {section_meshes, section_image_textures, section_cube_maps};

static void offer_known(known_document& known, record_handover& handover)
{
    if (known.read == nullptr)
        return;
    handover.before = &known.read->d;
    for (const document_section section : kept_sections)
        for (uint32_t handle = 1; handle < known.made_with.keys[section].size(); ++handle)
            offer_record(handover, section, handle, key_of_record(known.made_with, section, handle));
    sort_offers(handover);
}

// What was taken belongs to the new document alone.
static void forget_taken(document& before, const std::vector<taken_record>& taken)
{
    for (const taken_record& each : taken) {
        if (each.section == section_meshes)
            *table_get(before.mesh_table, each.from) = {};
        else if (each.section == section_image_textures)
            *table_get(before.image_texture_table, each.from) = {};
        else if (each.section == section_cube_maps)
            *table_get(before.cube_map_table, each.from) = {};
    }
}

static void read_again(read_document& document, const pack_file* pack, known_document& known)
{
    record_handover handover;
    offer_known(known, handover);
    read_all(document, pack, &handover);
    if (known.read != nullptr)
        forget_taken(known.read->d, handover.taken);
    known.read.reset();
    known.made_with = {};
    for (const document_section section : kept_sections)
        known.made_with.keys[section] = std::move(handover.keys[section]);
}

void know_document(known_document& known, owned_read_document document)
{
    known.read.reset();
    if (document->errors != 0 || document->root == nullptr) {
        known.made_with = {};
        return;
    }
    document->tree.reset();
    document->root = nullptr;
    known.read = std::move(document);
}

owned_read_document read_packed_document(const char* name, const pack_file* pack, known_document* known)
{
    owned_read_document document = new_read_document(name);
    std::string problem;
    document->tree.reset(load_document_tree(pack, name, problem));
    document->root = document->tree.get();
    document->present = document->root != nullptr || !problem.empty();
    if (document->root != nullptr && known != nullptr) {
        read_again(*document, pack, *known);
    } else if (document->root != nullptr) {
        read_all(*document, pack);
    } else if (!problem.empty()) {
        document->errors = 1;
        document->problems.push_back(problem_of_line(problem, name));
    }
    return document;
}

bool has_error(const read_document& document, uint32_t section, uint32_t record)
{
    return std::any_of(document.problems.begin(), document.problems.end(), [=](const document_problem& problem) {
        return problem.fatal && problem.section == section && problem.record == record;
    });
}
