#include "model/read_element.h"

#include "content/numbers.h"
#include "content/printable.h"
#include "model/capabilities.h"
#include "model/document.h"

#include <algorithm>
#include <cassert>
#include <cmath>
#include <cstdarg>
#include <cstdlib>
#include <limits>
#include <string_view>
#include <strings.h>
#include <utility>

constexpr size_t quoted_text_limit = 64; // bytes of a document's text that a message shows
constexpr size_t kept_warnings = 4096;   // what a document of nothing but mistakes may take of the memory

// ---- places and messages ----------------------------------------------------------

document_place place_of_section(document_reader& reader, uint32_t section)
{
    return {reader, section, nullptr, nullptr, 0};
}

document_place place_of_record(document_reader& reader, uint32_t section, uint32_t record)
{
    assert(record > 0);
    return {reader, section, nullptr, "record", record};
}

document_place place_of_part(const document_place& outer, const char* name, uint32_t number)
{
    assert(name != nullptr);
    return {outer.reader, outer.section, &outer, name, number};
}

// Adds a problem at `place`, which its line begins with and whose section, record and parts the caller has set.
static void keep_problem(
    document_reader& reader, document_problem& problem, const std::string& place, const std::string& what)
{
    assert(reader.target != nullptr && !what.empty());
    reader.warning_count += problem.fatal ? 0 : 1;
    if (!problem.fatal && reader.warning_count > kept_warnings)
        return;
    problem.text = std::string(problem.fatal ? "Error: " : "Warning: ") + reader.target->name + ": " + place;
    problem.place_length = problem.text.size();
    problem.text += what;
    reader.problems.push_back(std::move(problem));
}

void add_problem(document_reader& reader, bool fatal, const std::string& what)
{
    document_problem problem{};
    problem.fatal = fatal;
    keep_problem(reader, problem, "", what);
}

// Fills in where the problem is, and says it: ", record 2, object 5".
static std::string locate(const document_place& at, document_problem& problem)
{
    problem.section = at.section;
    if (at.name == nullptr)
        return "";
    std::string path;
    if (at.outer != nullptr) {
        path = locate(*at.outer, problem);
        problem.parts.push_back({at.name, at.number});
    } else {
        problem.record = at.number;
    }
    path += std::string(", ") + at.name;
    return at.number != 0 ? path + " " + std::to_string(at.number) : path;
}

static void add_problem_at(const document_place& at, bool fatal, const std::string& what)
{
    assert(at.section >= section_generated_images && at.section < no_more_sections);
    document_problem problem{};
    problem.fatal = fatal;
    const std::string path = locate(at, problem);
    keep_problem(at.reader, problem, section_label(at.section) + path + ": ", what);
}

bool fail(const document_place& at, const std::string& what)
{
    add_problem_at(at, true, what);
    return false;
}

void warn(const document_place& at, const std::string& what)
{
    add_problem_at(at, false, what);
}

void warn_outside(const document_place& at, const char* what, int64_t number, int64_t last, const char* instead)
{
    warn(at,
        line_of("%s %lld is outside 0..%lld: %s.", what, static_cast<long long>(number), static_cast<long long>(last),
            instead));
}

bool check_choice(const document_place& at, const char* what, int64_t number, int64_t last, const char* instead)
{
    assert(last >= 0);
    if (number >= 0 && number <= last)
        return true;
    warn_outside(at, what, number, last, instead);
    return false;
}

// Where a text of more than `limit` bytes may be cut: not within a letter.
static size_t cut_of(const std::string_view text, size_t limit)
{
    assert(limit > 3); // or there is nothing to go back to
    if (text.size() <= limit)
        return text.size();
    const auto continues = [text](size_t at) { return (static_cast<uint8_t>(text[at]) & 0xC0) == 0x80; };
    for (size_t cut = limit; cut + 3 >= limit; --cut)
        if (!continues(cut))
            return cut;
    return limit; // no letter is that long
}

std::string quoted(const char* text)
{
    const std::string_view all = text != nullptr ? text : "";
    const size_t cut = cut_of(all, quoted_text_limit);
    return "\"" + printable(all.substr(0, cut)) + (cut < all.size() ? "..." : "") + "\"";
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

namespace {

// A text with a number at its start.
template <typename number> struct parsed {
    number value;
    const char* rest; // what follows the digits
    bool has_digits;
    bool fits; // into 32 bits, into a finite single
};

} // namespace

static parsed<int32_t> parse_int(const char* text)
{
    assert(text != nullptr);
    using limits = std::numeric_limits<int32_t>;
    char* rest = nullptr;
    const long long value = std::strtoll(text, &rest, 10);
    const long long clamped = std::clamp<long long>(value, limits::min(), limits::max());
    return {static_cast<int32_t>(clamped), rest, rest != text, clamped == value};
}

static parsed<float> parse_real(const char* text)
{
    assert(text != nullptr);
    char* rest = nullptr;
    const float value = static_cast<float>(std::strtod(text, &rest));
    return {value, rest, rest != text, std::isfinite(value)};
}

// Whether nothing but blanks or a comment stands there. Behind whole numbers a point and
// zeros are nothing either: tools write them so.
static bool is_nothing(const char* rest, bool whole)
{
    if (whole && *rest == '.')
        rest += 1 + std::strspn(rest + 1, "0");
    rest += std::strspn(rest, " \t\r\n\v\f");
    return *rest == 0 || std::strncmp(rest, "<!--", 4) == 0;
}

// `what` names the attribute; null: the element's text.
template <typename number>
static void check_number(const document_place& at, const char* what, const char* text, const parsed<number>& result)
{
    constexpr bool whole = std::numeric_limits<number>::is_integer;
    if (result.has_digits && result.fits && is_nothing(result.rest, whole))
        return;
    const std::string start = (what != nullptr ? std::string(what) + " " : "") + quoted(text);
    if (!result.fits && !whole)
        warn(at, start + " is no finite number.");
    else // a whole number may have ten digits, and a single shows what was written with six
        warn(at, start + line_of(" is read as %.*g.", whole ? 10 : 6, static_cast<double>(result.value)));
}

// What stands in the place of a missing attribute: its name with a blank behind it, which belongs
// to the name, or with other capitals. "; WHAT", or nothing.
static std::string look_alike(const xml_node& node, const char* attribute)
{
    const size_t length = std::strlen(attribute);
    for (int32_t index = 0; index < node.attribute_count; ++index) {
        const char* name = node.attributes[index].name;
        if (name == nullptr || strncasecmp(name, attribute, length) != 0)
            continue;
        const size_t blanks = std::strspn(name + length, " \t\r\n\v\f");
        if (name[length + blanks] != 0)
            continue;
        if (std::strncmp(name, attribute, length) != 0)
            return "; " + quoted(name) + " is another name";
        if (blanks != 0)
            return "; a blank stands before its \"=\"";
    }
    return "";
}

static void check_attribute_is_single(const document_place& at, const xml_node& node, const char* attribute)
{
    uint32_t count = 0;
    for (int32_t index = 0; index < node.attribute_count; ++index) {
        const char* name = node.attributes[index].name;
        count += name != nullptr && std::strcmp(name, attribute) == 0 ? 1 : 0;
    }
    if (count > 1)
        warn(at, "attribute " + quoted(attribute) + " stands there again, and the first one counts.");
}

const char* read_attribute(const document_place& at, const xml_node& node, const char* attribute)
{
    assert(attribute != nullptr);
    const char* text = xml_get_attribute(&node, attribute);
    if (text == nullptr)
        fail(at, "attribute " + quoted(attribute) + " is missing" + look_alike(node, attribute) + ".");
    else
        check_attribute_is_single(at, node, attribute);
    return text;
}

bool read_int(const document_place& at, const xml_node& node, const char* attribute, int32_t& value)
{
    const char* text = read_attribute(at, node, attribute);
    if (text == nullptr)
        return false;
    const parsed<int32_t> result = parse_int(text);
    check_number(at, attribute, text, result);
    value = result.value;
    return true;
}

bool read_real(const document_place& at, const xml_node& node, const char* attribute, float& value)
{
    const char* text = read_attribute(at, node, attribute);
    if (text == nullptr)
        return false;
    const parsed<float> result = parse_real(text);
    check_number(at, attribute, text, result);
    value = result.value;
    return true;
}

bool read_handle(const document_place& at, const xml_node& node, const char* attribute, uint32_t& handle)
{
    int32_t value = 0;
    if (!read_int(at, node, attribute, value))
        return false;
    handle = static_cast<uint32_t>(value);
    return true;
}

static bool has_number_text(const document_place& at, const xml_node& node)
{
    return node.text != nullptr || fail(at, "the number is missing.");
}

bool read_text_int(const document_place& at, const xml_node& node, int32_t& value)
{
    if (!has_number_text(at, node))
        return false;
    const parsed<int32_t> result = parse_int(node.text);
    check_number(at, nullptr, node.text, result);
    value = result.value;
    return true;
}

bool read_text_real(const document_place& at, const xml_node& node, float& value)
{
    if (!has_number_text(at, node))
        return false;
    const parsed<float> result = parse_real(node.text);
    check_number(at, nullptr, node.text, result);
    value = result.value;
    return true;
}

bool read_animated(const document_place& at, const xml_node& node, animated_rule rule, animated_value& value)
{
    const char* type = read_attribute(at, node, "type");
    if (type == nullptr)
        return false;
    const bool named_dynamic = std::strcmp(type, "dynamic") == 0;
    const bool named_static = std::strcmp(type, "static") == 0;
    const bool dynamic = rule == dynamic_if_named ? named_dynamic : !named_static;
    if (!named_dynamic && !named_static)
        warn(at,
            "type " + quoted(type) + " is neither \"static\" nor \"dynamic\": it acts as \""
                + (dynamic ? "dynamic" : "static") + "\".");
    value.dynamic = dynamic ? 1 : 0;
    if (!dynamic)
        return read_real(at, node, "value", value.value);
    return read_function_value(at, node, value.value);
}

bool read_function_value(const document_place& at, const xml_node& node, float& value)
{
    int32_t function = 0;
    if (!read_int(at, node, "value", function))
        return false;
    value = static_cast<float>(function);
    if (table_get(at.reader.target->function_table, static_cast<uint32_t>(function)) == nullptr)
        warn(at, line_of("function %d does not exist.", function));
    return true;
}

bool read_byte(const document_place& at, const xml_node& node, const char* attribute, uint8_t& value)
{
    int32_t number = 0;
    if (!read_int(at, node, attribute, number))
        return false;
    value = low_byte(number);
    if (number < 0 || number > 255)
        warn(at, line_of("%s %d is outside 0..255: its low eight bits, %d, count.", attribute, number, value));
    return true;
}

bool read_format_and_filter(
    const document_place& at, const xml_node& node, const char* above, uint8_t& format, uint8_t& filter)
{
    int32_t format_number = 0;
    if (!read_int(at, node, "texture_format", format_number) || !read_byte(at, node, "texture_filter", filter))
        return false;
    constexpr int32_t last_format = texture_format_count - 1;
    if (format_number < 0 || format_number > last_format)
        return fail(at, line_of("texture_format %d is outside 0..%d.", format_number, last_format));
    format = static_cast<uint8_t>(format_number);
    check_choice(at, "texture_filter", filter, filter_kind_count - 1, above);
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

bool need_children(const document_place& at, const xml_node& node, uint32_t needed)
{
    const uint32_t count = count_children(node);
    return count >= needed || fail(at, line_of("too few children: %u of %u.", count, needed));
}

void check_child_count(const document_place& at, const xml_node& node, uint32_t read)
{
    if (const uint32_t count = count_children(node); count > read)
        warn(at, line_of("too many children: %u of %u; the others are not read.", count, read));
}

void check_parameter_count(const document_place& at, const char* kind, uint32_t given, uint32_t takes)
{
    if (given < takes)
        warn(at, line_of("too few parameters of \"%s\": %u of %u; the others are 0.", kind, given, takes));
}

void copy_name(const document_place& at, char* field, uint32_t size, const char* text)
{
    assert(field != nullptr && size > 0);
    std::memset(field, 0, size);
    if (text == nullptr)
        return;
    const size_t length = strnlen(text, size);
    std::memcpy(field, text, std::min<size_t>(length, size - 1));
    if (length == size)
        warn(at, "name " + quoted(text) + line_of(" is cut to %u bytes.", size - 1));
}

// Warns of children behind the `read` parameters: too many, or not called like one.
static void check_behind_parameters(const document_place& at, const xml_node& node, uint32_t read)
{
    for (const xml_node* child = node.first_child; child != nullptr; child = child->next_sibling) {
        if (!is_named(*child, "p"))
            return warn(at, quoted(child->name) + " is not called \"p\": neither it nor what follows is read.");
    }
    check_child_count(at, node, read);
}

bool read_function_handles(
    const document_place& at, const xml_node& node, const parameter_list& parameters, uint32_t* handles)
{
    assert(parameters.takes <= parameters.capacity);
    uint32_t index = 0;
    for (const xml_node* child = node.first_child; child != nullptr && is_named(*child, "p");
         child = child->next_sibling, ++index) {
        const document_place here = place_of_part(at, "p", index + 1);
        int32_t value = 0;
        if (!read_text_int(here, *child, value))
            return false;
        if (index >= parameters.capacity)
            continue;
        handles[index] = static_cast<uint32_t>(value);
        check_handle(here, at.reader.target->function_table, "function", handles[index]);
    }
    check_parameter_count(at, parameters.kind, index, parameters.takes);
    check_behind_parameters(at, node, std::min(index, parameters.capacity));
    return true;
}

// ---- references -----------------------------------------------------------------------

void warn_of_missing(const document_place& at, const char* what, uint32_t handle)
{
    warn(at, line_of("%s %d does not exist.", what, static_cast<int32_t>(handle)));
}

// ---- records --------------------------------------------------------------------------

void fail_full_table(const document_place& at)
{
    fail(at, line_of("more than %u records.", record_table_capacity));
}
