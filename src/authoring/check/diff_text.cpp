// Differences as lines and as JSON.
#include "authoring/check/diff.h"

#include "content/printable.h"

#include <cassert>
#include <nlohmann/json.hpp>

namespace {
using json = nlohmann::ordered_json;
} // namespace

static const char* name_of(change_kind kind)
{
    switch (kind) {
    case change_added:
        return "added";
    case change_removed:
        return "removed";
    case change_changed:
        return "changed";
    case change_moved:
        return "moved";
    }
    return "";
}

// ---- lines --------------------------------------------------------------------------

constexpr size_t shown_value = 72; // bytes of a shader or another long text

static std::string shown(const std::string& value)
{
    if (value.empty())
        return "nothing";
    const std::string text = printable(value.substr(0, shown_value));
    return value.size() > shown_value ? text + "..." : text;
}

// "object 5", "object 5 (4 before)".
static std::string shown_number(const std::string& name, uint32_t before, uint32_t after)
{
    if (after == 0 || before == 0 || before == after)
        return name + " " + std::to_string(after != 0 ? after : before);
    return name + " " + std::to_string(after) + " (" + std::to_string(before) + " before)";
}

static void add_fields(std::string& text, const std::string& place, const std::vector<field_change>& fields)
{
    for (const field_change& change : fields)
        text += place + ", " + change.field + ": " + shown(change.before) + " -> " + shown(change.after) + "\n";
}

static std::string place_of(const document_change& document, const record_change& record)
{
    std::string place = document.name + ": " + section_label(record.section);
    if (record.section == section_music)
        return place;
    place += ", " + shown_number("record", record.before, record.after);
    return record.label.empty() ? place : place + " \"" + printable(record.label) + "\"";
}

// One that has changed is its fields.
static void add_change(
    std::string& text, const std::string& place, change_kind kind, const std::vector<field_change>& fields)
{
    if (kind != change_changed)
        text += place + ": " + name_of(kind) + "\n";
    add_fields(text, place, fields);
}

static void add_record(std::string& text, const document_change& document, const record_change& record)
{
    const std::string place = place_of(document, record);
    add_change(text, place, record.kind, record.fields);
    for (const part_change& part : record.parts)
        add_change(text, place + ", " + shown_number(part.name, part.before, part.after), part.kind, part.fields);
}

static std::string shown_entry(const entry_change& entry)
{
    const std::string name = "\"" + printable(entry.name) + "\"";
    const std::string before = std::to_string(entry.size_before);
    const std::string after = std::to_string(entry.size_after);
    switch (entry.kind) {
    case change_added:
        return name + ": added, " + after + " bytes\n";
    case change_removed:
        return name + ": removed, " + before + " bytes\n";
    case change_changed:
    case change_moved:
        break;
    }
    return name + ": changed, " + (before == after ? after : before + " -> " + after) + " bytes\n";
}

std::string difference_text(const pack_difference& difference)
{
    std::string text;
    for (const document_change& document : difference.documents) {
        if (document.kind != change_changed)
            text += document.name + ": " + name_of(document.kind) + "\n";
        if (!document.problem.empty())
            text += document.name + ": cannot be compared whole, " + document.problem + "\n";
        for (const record_change& record : document.records)
            add_record(text, document, record);
    }
    for (const entry_change& entry : difference.entries)
        text += shown_entry(entry);
    return text;
}

// ---- JSON -----------------------------------------------------------------------------

static json json_fields(const std::vector<field_change>& fields)
{
    json list = json::array();
    for (const field_change& change : fields)
        list.push_back({{"field", change.field}, {"before", change.before}, {"after", change.after}});
    return list;
}

static json json_parts(const std::vector<part_change>& parts)
{
    json list = json::array();
    for (const part_change& part : parts)
        list.push_back({{"part", part.name}, {"change", name_of(part.kind)}, {"before", part.before},
            {"after", part.after}, {"fields", json_fields(part.fields)}});
    return list;
}

static json json_document(const document_change& document)
{
    json records = json::array();
    for (const record_change& record : document.records)
        records.push_back({{"section", record.section}, {"section_name", section_name(record.section)},
            {"change", name_of(record.kind)}, {"before", record.before}, {"after", record.after},
            {"label", record.label}, {"fields", json_fields(record.fields)}, {"parts", json_parts(record.parts)}});
    return {{"document", document.name}, {"change", name_of(document.kind)}, {"problem", document.problem},
        {"records", records}};
}

std::string difference_json(const pack_difference& difference)
{
    json documents = json::array();
    for (const document_change& document : difference.documents)
        documents.push_back(json_document(document));
    json entries = json::array();
    for (const entry_change& entry : difference.entries)
        entries.push_back({{"entry", entry.name}, {"change", name_of(entry.kind)}, {"size_before", entry.size_before},
            {"size_after", entry.size_after}});
    const json all = {{"equal", is_without_difference(difference)}, {"documents", documents}, {"entries", entries}};
    return all.dump(1, ' ', false, json::error_handler_t::replace) + "\n"; // of names that are no UTF-8
}
