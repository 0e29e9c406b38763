#include "content/xml.h"

#include <cassert>
#include <cstring>

#if defined(__SSE2__)
#include <emmintrin.h>
#endif

// ---- scanning --------------------------------------------------------------------

static constexpr size_t scan_width = 16; // bytes that a scan may look at behind the zero that ends the text

#if defined(__SSE2__)

static uint32_t places_of(__m128i equal)
{
    return static_cast<uint32_t>(_mm_movemask_epi8(equal));
}

static __m128i load_bytes(const char* at)
{
    return _mm_loadu_si128(reinterpret_cast<const __m128i*>(at));
}

// The first of `mark`, ">" and the end of the text.
static char* find_mark(char* at, char mark)
{
    const __m128i marks = _mm_set1_epi8(mark);
    const __m128i greater = _mm_set1_epi8('>');
    for (;; at += scan_width) {
        const __m128i bytes = load_bytes(at);
        const __m128i found = _mm_or_si128(_mm_or_si128(_mm_cmpeq_epi8(bytes, marks), _mm_cmpeq_epi8(bytes, greater)),
            _mm_cmpeq_epi8(bytes, _mm_setzero_si128()));
        if (const uint32_t places = places_of(found); places != 0)
            return at + __builtin_ctz(places);
    }
}

// The first blank, ">" or end of the text.
static char* find_name_end(char* at)
{
    const __m128i blank = _mm_set1_epi8(' ');
    const __m128i greater = _mm_set1_epi8('>');
    const __m128i first_control = _mm_set1_epi8('\t');
    const __m128i controls = _mm_set1_epi8('\r' - '\t');
    for (;; at += scan_width) {
        const __m128i bytes = load_bytes(at);
        const __m128i behind_tab = _mm_sub_epi8(bytes, first_control);
        const __m128i is_blank = _mm_or_si128(_mm_cmpeq_epi8(bytes, blank),
            _mm_cmpeq_epi8(_mm_min_epu8(behind_tab, controls), behind_tab)); // "\t\n\v\f\r" lie side by side
        const __m128i found = _mm_or_si128(
            _mm_or_si128(is_blank, _mm_cmpeq_epi8(bytes, greater)), _mm_cmpeq_epi8(bytes, _mm_setzero_si128()));
        if (const uint32_t places = places_of(found); places != 0)
            return at + __builtin_ctz(places);
    }
}

#endif

static bool is_blank(char byte)
{
    return byte == ' ' || (byte >= '\t' && byte <= '\r');
}

#if !defined(__SSE2__)

static char* find_mark(char* at, char mark)
{
    while (*at != mark && *at != '>' && *at != '\0')
        ++at;
    return at;
}

static char* find_name_end(char* at)
{
    while (!is_blank(*at) && *at != '>' && *at != '\0')
        ++at;
    return at;
}

#endif

static char* skip_blanks(char* at)
{
    while (is_blank(*at))
        ++at;
    return at;
}

// ---- reading ---------------------------------------------------------------------

namespace {

enum reader_event : uint32_t {
    event_open = 0, // a start tag that stays open: the current element has no child yet
    event_close = 1,
    event_self_close = 2
};

// Reads a copy of the text in the tree's memory. Names, values and texts are pieces of the
// copy, each ended by a zero in place of the mark that ended it.
struct xml_reader {
    xml_node* root;
    xml_node* current;
    xml_node* last_top_level; // the root's last child
    char* text_begin;         // behind the last tag
    reader_event event;
    uint32_t items_left; // elements and attributes that may still come
};

} // namespace

// Each of these reads on from `at` and returns where the text between tags goes on; at the
// end of the text its zero. Null: no memory, or too many items, and the text counts as ended.

// Ends a tag, or what stands where one could, at its ">". A slash before it ends the element
// wherever that stands: in quoted values, text and comments (deliberate; pinned by "a slash
// and a greater-than sign end an element wherever they stand").
static char* end_tag(xml_reader& reader, char* greater, bool opens)
{
    assert(*greater == '>');
    if (greater[-1] == '/')
        reader.event = event_self_close;
    else if (opens)
        reader.event = event_open;
    reader.text_begin = greater + 1;
    return greater + 1;
}

// A closing tag or an instruction.
static char* skip_tag(xml_reader& reader, char* at)
{
    char* end = find_mark(at, '>');
    return *end == '>' ? end_tag(reader, end, false) : end;
}

// Behind a comment the text goes on where it began: the comment is part of it.
static char* skip_comment(xml_reader& reader, char* at)
{
    for (;; ++at) {
        at = find_mark(at, '>');
        if (*at == '\0')
            return at;
        if (at[-1] == '/')
            return end_tag(reader, at, false);
        if (at[-1] == '-' && at[-2] == '-')
            return at + 1;
    }
}

// "</": the first one behind a start tag ends an element without children, which
// stays current so that a sibling can follow; the next one ends its parent.
static void close_element(xml_reader& reader, char* at)
{
    if (reader.current == reader.root)
        return;
    if (reader.event != event_open) {
        reader.current = reader.current->parent;
    } else if (at > reader.text_begin) {
        *at = '\0';
        reader.current->text = reader.text_begin;
    }
    reader.event = event_close;
}

static bool open_element(xml_reader& reader)
{
    if (reader.items_left-- == 0)
        return false;
    xml_node* current = reader.current;
    assert(current == reader.root || current->parent != nullptr);
    xml_node* node = nullptr;
    if (current == reader.root) // whatever came last: the root has no siblings
        node = xml_new_child(current, reader.last_top_level);
    else if (reader.event == event_open)
        node = xml_new_child(current, nullptr);
    else
        node = xml_new_child(current->parent, current);
    if (!node)
        return false;
    if (node->parent == reader.root)
        reader.last_top_level = node;
    reader.current = node;
    return true;
}

// From behind "=". The value, if there is one, is that of the last attribute.
static char* read_value(xml_attribute& attribute, char* at)
{
    at = find_mark(at, '"');
    if (*at != '"')
        return at;
    char* begin = at + 1;
    at = find_mark(begin, '"');
    if (*at != '"')
        return at;
    *at = '\0';
    attribute.value = begin;
    return at + 1;
}

static char* read_attributes(xml_reader& reader, char* at)
{
    for (;;) {
        char* name = skip_blanks(at);
        at = find_mark(name, '=');
        if (*at == '\0')
            return at;
        if (*at == '>')
            return end_tag(reader, at, true);
        *at = '\0';
        xml_attribute* attribute = reader.items_left-- > 0 ? xml_append_attribute(reader.current, name) : nullptr;
        if (!attribute)
            return nullptr;
        at = read_value(*attribute, at + 1);
    }
}

// A start tag, from behind its "<". Its name begins with the first byte that is no blank,
// whatever that is, so that "<>" has an empty one, as `<a ="1">` has an attribute with an
// empty name.
static char* read_start_tag(xml_reader& reader, char* at)
{
    char* name = skip_blanks(at);
    char* end = find_name_end(name);
    if (*end == '\0')
        return end;
    reader.current->name = name;
    if (*end != '>') {
        *end = '\0';
        return read_attributes(reader, end + 1);
    }
    char* behind = end_tag(reader, end, true);
    *(end > name && end[-1] == '/' ? end - 1 : end) = '\0';
    return behind;
}

// At a "<" between tags.
static char* read_less_than(xml_reader& reader, char* at)
{
    if (at[1] == '/') {
        close_element(reader, at);
        return skip_tag(reader, at + 1);
    }
    if (at[1] == '?')
        return skip_tag(reader, at + 1);
    if (at[1] != '!')
        return open_element(reader) ? read_start_tag(reader, at + 1) : nullptr;
    return at[2] == '-' && at[3] == '-' ? skip_comment(reader, at + 1) : at + 1;
}

static void read_text(xml_reader& reader, char* text)
{
    reader.text_begin = text;
    for (char* at = text; at != nullptr;) {
        at = find_mark(at, '<');
        if (*at == '\0')
            return;
        if (*at == '<')
            at = read_less_than(reader, at);
        else
            at = at[-1] == '/' ? end_tag(reader, at, false) : at + 1;
    }
}

xml_node* xml_parse(const char* text)
{
    return xml_parse_bounded(text, xml_max_items);
}

xml_node* xml_parse_bounded(const char* text, uint32_t max_items)
{
    const size_t length = text ? std::strlen(text) : 0;
    const size_t room = 2 * scan_width + length; // what looks one byte back finds one in front
    xml_reader reader = {};
    reader.root = reader.current = xml_new_tree(room);
    if (!reader.root || length == 0)
        return reader.root;
    char* copy = static_cast<char*>(xml_take(reader.root, room)) + scan_width;
    std::memset(copy - scan_width, 0, scan_width);
    std::memcpy(copy, text, length);
    std::memset(copy + length, 0, scan_width);
    reader.items_left = max_items;
    read_text(reader, copy);
    return reader.root;
}

// ---- queries ---------------------------------------------------------------------

const char* xml_get_attribute(const xml_node* node, const char* name)
{
    if (!node || !name)
        return nullptr;
    const xml_attribute* attribute = xml_find_attribute(node, name);
    return attribute ? attribute->value : nullptr;
}

// ---- freeing ---------------------------------------------------------------------

void xml_free(xml_node* node)
{
    if (node && !node->parent)
        xml_free_tree(node);
}
