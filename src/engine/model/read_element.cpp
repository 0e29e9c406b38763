#include "model/read_element.h"

#include "content/numbers.h"
#include "model/capabilities.h"

#include <algorithm>
#include <cstdarg>
#include <cstdlib>
#include <limits>

constexpr size_t quoted_text_limit = 64; // bytes of a document's text that a message shows

// ---- places and messages ----------------------------------------------------------

place place_of_record(document_reader& reader, uint32_t section, uint32_t record)
{
    return {reader, section, nullptr, "record", record};
}

place place_of_part(const place& outer, const char* name, uint32_t number)
{
    return {outer.reader, outer.section, &outer, name, number};
}

static std::string path_of(const place& at)
{
    std::string path = at.outer != nullptr ? path_of(*at.outer) : "";
    path += std::string(", ") + at.name;
    if (at.number != 0)
        path += " " + std::to_string(at.number);
    return path;
}

static void add_problem(const place& at, bool fatal, const std::string& what)
{
    std::string text = std::string(fatal ? "Error: " : "Warning: ") + at.reader.target->name + ": section "
        + std::to_string(at.section) + " (" + section_name(at.section) + ")" + path_of(at) + ": " + what;
    at.reader.problems.push_back({fatal, std::move(text)});
}

bool fail(const place& at, const std::string& what)
{
    add_problem(at, true, what);
    return false;
}

void warn(const place& at, const std::string& what)
{
    add_problem(at, false, what);
}

std::string quoted(const char* text)
{
    std::string result = "\"";
    for (const char* c = text; c != nullptr && *c != 0 && result.size() <= quoted_text_limit; ++c)
        result += *c >= ' ' && *c <= '~' ? *c : '?';
    return result + "\"";
}

std::string line_of(const char* format, ...)
{
    char line[256];
    va_list values;
    va_start(values, format);
    std::vsnprintf(line, sizeof(line), format, values);
    va_end(values);
    return line;
}

// ---- numbers ------------------------------------------------------------------------

int32_t int_of_text(const char* text)
{
    using limits = std::numeric_limits<int32_t>;
    const long value = std::strtol(text, nullptr, 10);
    return static_cast<int32_t>(std::clamp<long>(value, limits::min(), limits::max()));
}

float real_of_text(const char* text)
{
    return static_cast<float>(std::strtod(text, nullptr));
}

const char* read_attribute(const place& at, const xml_node& node, const char* attribute)
{
    const char* text = xml_get_attribute(&node, attribute);
    if (text == nullptr)
        fail(at, "attribute " + quoted(attribute) + " is missing.");
    return text;
}

bool read_int(const place& at, const xml_node& node, const char* attribute, int32_t& value)
{
    const char* text = read_attribute(at, node, attribute);
    value = text != nullptr ? int_of_text(text) : 0;
    return text != nullptr;
}

bool read_real(const place& at, const xml_node& node, const char* attribute, float& value)
{
    const char* text = read_attribute(at, node, attribute);
    value = text != nullptr ? real_of_text(text) : 0.0f;
    return text != nullptr;
}

bool read_handle(const place& at, const xml_node& node, const char* attribute, uint32_t& handle)
{
    int32_t value = 0;
    if (!read_int(at, node, attribute, value))
        return false;
    handle = static_cast<uint32_t>(value);
    return true;
}

static bool has_number_text(const place& at, const xml_node& node)
{
    return node.text != nullptr || fail(at, "the number is missing.");
}

bool read_text_int(const place& at, const xml_node& node, int32_t& value)
{
    if (!has_number_text(at, node))
        return false;
    value = int_of_text(node.text);
    return true;
}

bool read_text_real(const place& at, const xml_node& node, float& value)
{
    if (!has_number_text(at, node))
        return false;
    value = real_of_text(node.text);
    return true;
}

bool read_animated(const place& at, const xml_node& node, animated_rule rule, animated_value& value)
{
    const char* type = read_attribute(at, node, "type");
    if (type == nullptr)
        return false;
    const bool dynamic
        = rule == dynamic_if_named ? std::strcmp(type, "dynamic") == 0 : std::strcmp(type, "static") != 0;
    value.dynamic = dynamic ? 1 : 0;
    if (!dynamic)
        return read_real(at, node, "value", value.value);
    return read_function_value(at, node, value.value);
}

bool read_function_value(const place& at, const xml_node& node, float& value)
{
    int32_t function = 0;
    if (!read_int(at, node, "value", function))
        return false;
    value = static_cast<float>(function);
    if (record_table_get(at.reader.target->function_table, static_cast<uint32_t>(function)) == nullptr)
        warn(at, line_of("function %d does not exist.", function));
    return true;
}

bool read_byte(const place& at, const xml_node& node, const char* attribute, uint8_t& value)
{
    int32_t number = 0;
    if (!read_int(at, node, attribute, number))
        return false;
    value = low_byte(number);
    if (number < 0 || number > 255)
        warn(at, line_of("%s %d is outside 0..255: its low eight bits, %d, count.", attribute, number, value));
    return true;
}

bool read_format_and_filter(const place& at, const xml_node& node, uint8_t& format, uint8_t& filter)
{
    int32_t format_number = 0;
    if (!read_int(at, node, "texture_format", format_number) || !read_byte(at, node, "texture_filter", filter))
        return false;
    constexpr int32_t last_format = static_cast<int32_t>(texture_format_count) - 1;
    if (format_number < 0 || format_number > last_format)
        return fail(at, line_of("texture_format %d is outside 0..%d.", format_number, last_format));
    format = static_cast<uint8_t>(format_number);
    return true;
}

// ---- children -----------------------------------------------------------------------

uint32_t count_children(const xml_node& node)
{
    uint32_t count = 0;
    for (const xml_node* child = node.first_child; child != nullptr; child = child->next_sibling)
        ++count;
    return count;
}

bool need_children(const place& at, const xml_node& node, uint32_t needed)
{
    const uint32_t count = count_children(node);
    return count >= needed || fail(at, line_of("too few children: %u of %u.", count, needed));
}

void copy_name(char* field, uint32_t size, const char* text)
{
    std::memset(field, 0, size);
    if (text != nullptr)
        std::memcpy(field, text, strnlen(text, size - 1));
}

bool read_function_handles(const place& at, const xml_node& node, uint32_t* handles, uint32_t capacity)
{
    uint32_t index = 0;
    for (const xml_node* child = node.first_child; child != nullptr && is_named(*child, "p");
         child = child->next_sibling, ++index) {
        const place here = place_of_part(at, "p", index + 1);
        int32_t value = 0;
        if (!read_text_int(here, *child, value))
            return false;
        if (index >= capacity)
            continue;
        handles[index] = static_cast<uint32_t>(value);
        check_handle(here, at.reader.target->function_table, "function", handles[index]);
    }
    return true;
}

// ---- references -----------------------------------------------------------------------

void check_handle(const place& at, const record_table* table, const char* what, uint32_t handle)
{
    if (handle != 0 && record_table_get(table, handle) == nullptr)
        warn(at, line_of("%s %d does not exist.", what, static_cast<int32_t>(handle)));
}

// ---- records --------------------------------------------------------------------------

void* add_cleared_record(const place& at, record_table* table)
{
    const uint32_t handle = table != nullptr ? record_table_add(table) : 0;
    void* record = record_table_get(table, handle);
    if (record == nullptr) {
        fail(at, line_of("more than %u records.", record_table_capacity));
        return nullptr;
    }
    std::memset(record, 0, table->record_size);
    at.reader.handle = handle;
    return record;
}
