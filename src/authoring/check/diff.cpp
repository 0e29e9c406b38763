#include "authoring/check/diff.h"

#include "authoring/check/alignment.h"
#include "authoring/check/lint.h"
#include "authoring/check/record_fields.h"
#include "authoring/counted.h"
#include "content/owners.h"
#include "content/pack.h"
#include "content/xmlz.h"

#include <algorithm>
#include <cassert>
#include <cstring>
#include <map>
#include <unordered_map>

namespace {

// What of the two documents are the same records: by section and number, 0 for none.
struct record_pairs {
    std::vector<uint32_t> after[no_more_sections]; // of the record before
    std::vector<uint32_t> before[no_more_sections];
};

// Records are made fields of when they are asked for: all of them at once would be many times a document.
struct comparison {
    const read_document& a;
    const read_document& b;
    record_pairs pairs;
};

// What items say, by the hash of it: each other one has the next number.
using key_numbers = std::unordered_map<uint64_t, uint32_t>;

} // namespace

// ---- the same field -----------------------------------------------------------------

static bool same_field(const comparison& c, const record_field& a, const record_field& b)
{
    if (a.section == 0 && b.section == 0)
        return a.value == b.value;
    return a.section == b.section && a.record <= c.pairs.after[a.section].size()
        && c.pairs.after[a.section][a.record - 1] == b.record;
}

static uint32_t count_same(const comparison& c, const field_list& a, const field_list& b)
{
    uint32_t same = 0;
    for (size_t index = 0; index < std::min(a.size(), b.size()); ++index)
        same += same_field(c, a[index], b[index]) ? 1u : 0u;
    return same;
}

static uint32_t likeness_of(uint64_t same, uint64_t all)
{
    return all == 0 ? 1000 : static_cast<uint32_t>(1000 * same / all);
}

static uint32_t likeness_of_fields(const comparison& c, const field_list& a, const field_list& b)
{
    return likeness_of(count_same(c, a, b), std::max(a.size(), b.size()));
}

static uint32_t likeness_of_records(const comparison& c, const record_fields& a, const record_fields& b)
{
    uint64_t same = count_same(c, a.fields, b.fields);
    uint64_t all = std::max(a.fields.size(), b.fields.size());
    for (size_t part = 0; part < std::max(a.parts.size(), b.parts.size()); ++part) {
        if (part < a.parts.size() && part < b.parts.size())
            same += count_same(c, a.parts[part], b.parts[part]);
        all += part < b.parts.size() ? b.parts[part].size() : a.parts[part].size();
    }
    return likeness_of(same, all);
}

// ---- keys ---------------------------------------------------------------------------------

// A text for what a field says: references by the pair that they lead to, or by their own number where there is none.
static void add_to_key(std::string& key, const record_field& field, const record_pairs& pairs, bool is_before)
{
    if (field.section == 0) {
        key += field.value;
    } else {
        const std::vector<uint32_t>& befores = pairs.before[field.section];
        const uint32_t before = is_before ? field.record : befores[field.record - 1];
        const bool paired = is_before ? pairs.after[field.section][field.record - 1] != 0 : before != 0;
        key += paired ? "=" : is_before ? "<" : ">";
        key += std::to_string(field.section) + ":" + std::to_string(paired ? before : field.record);
    }
    key += '\n';
}

static std::string key_of_fields(const field_list& fields, const record_pairs& pairs, bool is_before)
{
    std::string key;
    for (const record_field& field : fields)
        add_to_key(key, field, pairs, is_before);
    return key;
}

static uint32_t number_of(key_numbers& numbers, const std::string& key)
{
    return numbers.emplace(hash_of_bytes(key.data(), key.size()), static_cast<uint32_t>(numbers.size())).first->second;
}

static std::vector<uint32_t> keys_of_parts(
    const record_fields& record, const record_pairs& pairs, bool is_before, key_numbers& numbers)
{
    std::vector<uint32_t> keys;
    for (const field_list& part : record.parts)
        keys.push_back(number_of(numbers, key_of_fields(part, pairs, is_before)));
    return keys;
}

static std::vector<uint32_t> keys_of_records(
    const read_document& read, uint32_t section, const record_pairs& pairs, bool is_before, key_numbers& numbers)
{
    std::vector<uint32_t> keys;
    for (uint32_t number = 1; number <= record_count(read, section); ++number) {
        const record_fields record = fields_of_record(read, section, number);
        std::string key = key_of_fields(record.fields, pairs, is_before);
        for (const field_list& part : record.parts)
            key += "|" + key_of_fields(part, pairs, is_before);
        keys.push_back(number_of(numbers, key));
    }
    return keys;
}

// Texture nodes refer to each other, so that their pairs cannot be known before: what a node says is its own numbers
// and, in turn, what its inputs say. Those that use it do not count, and a circle says nothing.
static uint32_t key_of_node(const read_document& read, uint32_t node, const record_pairs& pairs, bool is_before,
    key_numbers& numbers, std::vector<uint32_t>& keys)
{
    constexpr uint32_t in_progress = no_item - 1;
    uint32_t& known = keys[node - 1];
    if (known != no_item)
        return known;
    known = in_progress;
    std::string key;
    const field_list fields = fields_of_record(read, section_texture_nodes, node).fields;
    for (const record_field& field : fields) {
        if (field.section != section_texture_nodes)
            add_to_key(key, field, pairs, is_before);
        else if (field.name.rfind("input", 0) == 0)
            key += std::to_string(key_of_node(read, field.record, pairs, is_before, numbers, keys)) + '\n';
    }
    keys[node - 1] = number_of(numbers, key);
    return keys[node - 1];
}

static std::vector<uint32_t> keys_of_section(
    const read_document& read, uint32_t section, const record_pairs& pairs, bool is_before, key_numbers& numbers)
{
    if (section != section_texture_nodes)
        return keys_of_records(read, section, pairs, is_before, numbers);
    std::vector<uint32_t> keys(record_count(read, section), no_item);
    for (uint32_t node = 1; node <= keys.size(); ++node)
        key_of_node(read, node, pairs, is_before, numbers, keys);
    return keys;
}

// ---- pairs of records -----------------------------------------------------------------------

namespace {

struct section_context {
    const comparison& c;
    uint32_t section;
    uint32_t known; // whose fields are kept, from 0: one record before is compared with many behind each other
    record_fields fields;
};

} // namespace

static std::vector<aligned_items> align_section(comparison& c, uint32_t section)
{
    key_numbers numbers;
    const std::vector<uint32_t> a_keys = keys_of_section(c.a, section, c.pairs, true, numbers);
    const std::vector<uint32_t> b_keys = keys_of_section(c.b, section, c.pairs, false, numbers);
    section_context context = {c, section, no_item, {}};
    const auto likeness = [](void* at, uint32_t a, uint32_t b) {
        auto& here = *static_cast<section_context*>(at);
        if (here.known != a)
            here.fields = fields_of_record(here.c.a, here.section, a + 1);
        here.known = a;
        return likeness_of_records(here.c, here.fields, fields_of_record(here.c.b, here.section, b + 1));
    };
    std::vector<aligned_items> items = align_items(a_keys, b_keys, likeness, &context);
    for (const aligned_items& item : items)
        if (item.a != no_item && item.b != no_item) {
            c.pairs.after[section][item.a] = item.b + 1;
            c.pairs.before[section][item.b] = item.a + 1;
        }
    return items;
}

// ---- what has changed -------------------------------------------------------------------------

// What a field said before, with what became of the record that it led to.
static std::string value_before(const comparison& c, const record_field& field)
{
    if (field.section == 0)
        return field.value;
    const uint32_t after = c.pairs.after[field.section][field.record - 1];
    if (after == 0)
        return field.value + " (removed)";
    return after == field.record ? field.value : field.value + " (now " + std::to_string(after) + ")";
}

static std::vector<field_change> changed_fields(const comparison& c, const field_list& a, const field_list& b)
{
    std::vector<field_change> changes;
    for (size_t index = 0; index < std::max(a.size(), b.size()); ++index) {
        const bool in_a = index < a.size();
        const bool in_b = index < b.size();
        if (in_a && in_b && same_field(c, a[index], b[index]))
            continue;
        changes.push_back(
            {in_b ? b[index].name : a[index].name, in_a ? value_before(c, a[index]) : "", in_b ? b[index].value : ""});
    }
    return changes;
}

namespace {

struct parts_context {
    const comparison& c;
    const record_fields& a;
    const record_fields& b;
};

} // namespace

static std::vector<part_change> changed_parts(const comparison& c, const record_fields& a, const record_fields& b)
{
    key_numbers numbers;
    const std::vector<uint32_t> a_keys = keys_of_parts(a, c.pairs, true, numbers);
    const std::vector<uint32_t> b_keys = keys_of_parts(b, c.pairs, false, numbers);
    parts_context context = {c, a, b};
    const auto likeness = [](void* at, uint32_t part_a, uint32_t part_b) {
        const auto& here = *static_cast<const parts_context*>(at);
        return likeness_of_fields(here.c, here.a.parts[part_a], here.b.parts[part_b]);
    };
    std::vector<part_change> changes;
    for (const aligned_items& item : align_items(a_keys, b_keys, likeness, &context)) {
        if (item.a == no_item) {
            changes.push_back({change_added, b.part_name, 0, item.b + 1, {}});
        } else if (item.b == no_item) {
            changes.push_back({change_removed, a.part_name, item.a + 1, 0, {}});
        } else {
            const std::vector<field_change> fields = changed_fields(c, a.parts[item.a], b.parts[item.b]);
            if (item.moved || !fields.empty())
                changes.push_back(
                    {item.moved ? change_moved : change_changed, b.part_name, item.a + 1, item.b + 1, fields});
        }
    }
    return changes;
}

// What a document calls a record.
static std::string label_of(const read_document& read, uint32_t section, uint32_t record)
{
    const xml_node* node = section != section_music ? element_of(read, section, record) : nullptr;
    for (const char* attribute : {"name", "filename"})
        if (const char* label = xml_get_attribute(node, attribute); label != nullptr)
            return label;
    return "";
}

static void add_record_change(
    const comparison& c, uint32_t section, const aligned_items& item, std::vector<record_change>& changes)
{
    const uint32_t before = item.a == no_item ? 0 : item.a + 1;
    const uint32_t after = item.b == no_item ? 0 : item.b + 1;
    record_change change = {change_changed, section, before, after, "", {}, {}};
    change.label = after != 0 ? label_of(c.b, section, after) : label_of(c.a, section, before);
    if (after == 0 || before == 0) {
        change.kind = after == 0 ? change_removed : change_added;
        changes.push_back(std::move(change));
        return;
    }
    const record_fields a = fields_of_record(c.a, section, before);
    const record_fields b = fields_of_record(c.b, section, after);
    change.kind = item.moved ? change_moved : change_changed;
    change.fields = changed_fields(c, a.fields, b.fields);
    change.parts = changed_parts(c, a, b);
    if (item.moved || !change.fields.empty() || !change.parts.empty())
        changes.push_back(std::move(change));
}

// Each section behind those that its records refer to.
constexpr document_section comparing_order[]
    = {section_functions, section_values, section_generated_images, section_texture_nodes, section_meshes,
        section_dynamic_textures, section_image_textures, section_cube_maps, section_mesh_effects, section_objects,
        section_materials, section_fonts, section_scenes, section_timeline, section_music};
static_assert(std::size(comparing_order) + 1 == no_more_sections, "a section is compared never, or twice");

std::vector<record_change> diff_documents(const read_document& before, const read_document& after)
{
    comparison c = {before, after, {}};
    for (uint32_t section = 1; section < no_more_sections; ++section) {
        c.pairs.after[section].assign(record_count(before, section), 0);
        c.pairs.before[section].assign(record_count(after, section), 0);
    }
    std::vector<record_change> changes;
    for (const document_section section : comparing_order)
        for (const aligned_items& item : align_section(c, section))
            add_record_change(c, section, item, changes);
    std::stable_sort(changes.begin(), changes.end(),
        [](const record_change& a, const record_change& b) { return a.section < b.section; });
    return changes;
}

// ---- packs -------------------------------------------------------------------------------------

namespace {

struct entry_content {
    owned_block<uint8_t> bytes; // null: it cannot be read
    uint32_t size;
};

} // namespace

// Of two entries with one name the first, which the player takes.
static std::map<std::string, entry_content> entries_of(const pack_file* pack)
{
    std::map<std::string, entry_content> entries;
    pack_slot slot{};
    for (uint32_t index = 0; pack_read_slot(pack, index, slot); ++index) {
        if (entries.count(slot.name) != 0)
            continue;
        uint8_t* bytes = nullptr;
        const bool read = pack_read_slot_bytes(pack, slot, &bytes) == pack_found;
        entries[slot.name] = {owned_block<uint8_t>(read ? bytes : nullptr), slot.size};
    }
    return entries;
}

static bool same_bytes(const entry_content& a, const entry_content& b)
{
    return a.size == b.size && (a.bytes == nullptr) == (b.bytes == nullptr)
        && (a.bytes == nullptr || std::memcmp(a.bytes.get(), b.bytes.get(), a.size) == 0);
}

static entry_content out_of_envelope(const entry_content& entry)
{
    uint8_t* bytes = nullptr;
    uint32_t size = 0;
    if (entry.bytes == nullptr || xmlz_inflate(entry.bytes.get(), entry.size, &bytes, &size) != xmlz_ok)
        return {};
    return {owned_block<uint8_t>(bytes), size};
}

// Two envelopes may be packed in different ways around the same.
static bool same_content(const entry_content& a, const entry_content& b)
{
    if (same_bytes(a, b))
        return true;
    const entry_content inside_a = out_of_envelope(a);
    const entry_content inside_b = out_of_envelope(b);
    return inside_a.bytes != nullptr && inside_b.bytes != nullptr && same_bytes(inside_a, inside_b);
}

static std::string reading_problem(const read_document& before, const read_document& after)
{
    for (const read_document* read : {&before, &after})
        for (const document_problem& problem : read->problems)
            if (problem.fatal)
                return std::string(read == &before ? "before: " : "after: ") + problem.text;
    return "";
}

static void compare_documents(
    const char* name, const pack_file* before, const pack_file* after, pack_difference& difference)
{
    const owned_read_document a = read_packed_document(name, before);
    const owned_read_document b = read_packed_document(name, after);
    document_change change = {name, change_changed, "", {}};
    if (a->present != b->present) {
        change.kind = a->present ? change_removed : change_added;
    } else {
        change.problem = reading_problem(*a, *b);
        change.records = diff_documents(*a, *b);
        if (change.problem.empty() && change.records.empty())
            return; // written otherwise, and the same
    }
    difference.documents.push_back(std::move(change));
}

pack_difference diff_packs(const pack_file* before, const pack_file* after)
{
    pack_difference difference;
    std::map<std::string, entry_content> a = entries_of(before);
    std::map<std::string, entry_content> b = entries_of(after);
    for (const char* name : {loading_document_name, show_document_name}) {
        const bool in_both = a.count(name) != 0 && b.count(name) != 0;
        const bool in_any = a.count(name) != 0 || b.count(name) != 0;
        if (in_any && !(in_both && same_bytes(a[name], b[name])))
            compare_documents(name, before, after, difference);
        a.erase(name);
        b.erase(name);
    }
    for (const auto& [name, entry] : a) {
        const auto other = b.find(name);
        if (other == b.end())
            difference.entries.push_back({change_removed, name, entry.size, 0});
        else if (!same_content(entry, other->second))
            difference.entries.push_back({change_changed, name, entry.size, other->second.size});
    }
    for (const auto& [name, entry] : b)
        if (a.count(name) == 0)
            difference.entries.push_back({change_added, name, 0, entry.size});
    std::stable_sort(difference.entries.begin(), difference.entries.end(),
        [](const entry_change& x, const entry_change& y) { return x.name < y.name; });
    return difference;
}

bool is_without_difference(const pack_difference& difference)
{
    return difference.entries.empty() && difference.documents.empty();
}

// ---- the very same ---------------------------------------------------------------------------------

static std::string first_other_field(const field_list& a, const field_list& b)
{
    for (size_t index = 0; index < std::max(a.size(), b.size()); ++index) {
        const std::string in_a = index < a.size() ? a[index].value : "nothing";
        const std::string in_b = index < b.size() ? b[index].value : "nothing";
        if (in_a != in_b)
            return (index < a.size() ? a[index].name : b[index].name) + ": " + in_a + " and " + in_b;
    }
    return "";
}

static std::string first_difference(const record_fields& a, const record_fields& b)
{
    if (const std::string field = first_other_field(a.fields, b.fields); !field.empty())
        return ", " + field;
    for (size_t part = 0; part < std::min(a.parts.size(), b.parts.size()); ++part)
        if (const std::string field = first_other_field(a.parts[part], b.parts[part]); !field.empty())
            return std::string(", ") + a.part_name + " " + std::to_string(part + 1) + ", " + field;
    if (a.parts.size() != b.parts.size())
        return ": " + counted(a.parts.size(), a.part_name) + " and " + std::to_string(b.parts.size());
    return "";
}

static bool sections_equal(const read_document& a, const read_document& b, uint32_t section, std::string& why)
{
    const uint32_t count = record_count(a, section);
    if (count != record_count(b, section)) {
        why = section_label(section) + ": " + counted(count, "record") + " and "
            + std::to_string(record_count(b, section)) + ".";
        return false;
    }
    for (uint32_t record = 1; record <= count; ++record) {
        const std::string difference
            = first_difference(fields_of_record(a, section, record), fields_of_record(b, section, record));
        if (!difference.empty()) {
            why = section_label(section) + ", record " + std::to_string(record) + difference + ".";
            return false;
        }
    }
    return true;
}

static bool problems_equal(const read_document& a, const read_document& b, std::string& why)
{
    for (size_t index = 0; index < std::max(a.problems.size(), b.problems.size()); ++index) {
        const std::string in_a = index < a.problems.size() ? a.problems[index].text : "nothing";
        const std::string in_b = index < b.problems.size() ? b.problems[index].text : "nothing";
        if (in_a != in_b) {
            why = "the player says \"" + in_a + "\" and \"" + in_b + "\".";
            return false;
        }
    }
    why = a.warning_count == b.warning_count ? "" : "the numbers of warnings differ.";
    return why.empty();
}

bool documents_equal(const read_document& a, const read_document& b, std::string& why)
{
    why.clear();
    if (a.present != b.present) {
        why = std::string("only ") + (a.present ? "the first" : "the second") + " is there.";
        return false;
    }
    for (uint32_t section = 1; section < no_more_sections; ++section)
        if (!sections_equal(a, b, section, why))
            return false;
    return problems_equal(a, b, why);
}
