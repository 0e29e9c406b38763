#include "content/xml.h"

#include <cassert>
#include <cstring>

#if defined(__SSE2__)
#include <emmintrin.h>
#endif

// ---- marks -----------------------------------------------------------------------

static constexpr uint32_t block_size = 32; // bytes that are looked at together, a bit for each

#if defined(__SSE2__)

// Which of the bytes are marks: "<", ">", "=", a double quote, or zero.
static uint32_t marks_of_half(const char* bytes)
{
    const __m128i half = _mm_loadu_si128(reinterpret_cast<const __m128i*>(bytes));
    const __m128i tags
        = _mm_or_si128(_mm_cmpeq_epi8(half, _mm_set1_epi8('<')), _mm_cmpeq_epi8(half, _mm_set1_epi8('>')));
    const __m128i values
        = _mm_or_si128(_mm_cmpeq_epi8(half, _mm_set1_epi8('=')), _mm_cmpeq_epi8(half, _mm_set1_epi8('"')));
    const __m128i ends = _mm_cmpeq_epi8(half, _mm_setzero_si128());
    return static_cast<uint32_t>(_mm_movemask_epi8(_mm_or_si128(_mm_or_si128(tags, values), ends)));
}

static uint32_t marks_of(const char* bytes)
{
    return marks_of_half(bytes) | marks_of_half(bytes + block_size / 2) << block_size / 2;
}

#else

static uint32_t marks_of(const char* bytes)
{
    uint32_t marks = 0;
    for (uint32_t n = 0; n < block_size; ++n) {
        const char byte = bytes[n];
        const bool is_mark = byte == '<' || byte == '>' || byte == '=' || byte == '"' || byte == '\0';
        marks |= static_cast<uint32_t>(is_mark) << n;
    }
    return marks;
}

#endif

// "\t\n\v\f\r" lie side by side.
static bool is_blank(char byte)
{
    return byte == ' ' || (byte >= '\t' && byte <= '\r');
}

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
    uint32_t marks;      // of the block under way, those that come
    char* block;
};

} // namespace

// The next mark; null at the end of the text.
static char* next_mark(xml_reader& reader)
{
    while (reader.marks == 0) {
        reader.block += block_size;
        reader.marks = marks_of(reader.block);
    }
    char* at = reader.block + __builtin_ctz(reader.marks);
    reader.marks &= reader.marks - 1;
    return *at != '\0' ? at : nullptr;
}

// The next one of `mark` and ">", which ends all but texts and comments.
static char* next_of(xml_reader& reader, char mark)
{
    char* at = next_mark(reader);
    while (at && *at != mark && *at != '>')
        at = next_mark(reader);
    return at;
}

// Each of these reads on behind the mark that it is given. False: the text is at its end, or
// counts as ended, without memory or with too many items.

// Ends a tag, or what stands where one could, at its ">". A slash before it ends the element
// wherever that stands: in quoted values, text and comments (deliberate; pinned by "a slash
// and a greater-than sign end an element wherever they stand").
static bool end_tag(xml_reader& reader, char* greater, bool opens)
{
    assert(*greater == '>');
    if (greater[-1] == '/')
        reader.event = event_self_close;
    else if (opens)
        reader.event = event_open;
    reader.text_begin = greater + 1;
    return true;
}

// A closing tag or an instruction.
static bool skip_tag(xml_reader& reader)
{
    char* end = next_of(reader, '>');
    return end && end_tag(reader, end, false);
}

// Behind a comment the text goes on where it began: the comment is part of it.
static bool skip_comment(xml_reader& reader)
{
    while (char* at = next_of(reader, '>')) {
        if (at[-1] == '/')
            return end_tag(reader, at, false);
        if (at[-1] == '-' && at[-2] == '-')
            return true;
    }
    return false;
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

// The attributes of an element, whose name ends at the blank `name_end`.
static bool read_attributes(xml_reader& reader, char* name_end)
{
    char* name = skip_blanks(name_end);
    char* at = next_of(reader, '=');
    while (at && at < name_end) // in the element's name
        at = next_of(reader, '=');
    *name_end = '\0'; // now that no block with it is looked at again
    while (at && *at == '=') {
        *at = '\0';
        xml_attribute* attribute = reader.items_left-- > 0 ? xml_append_attribute(reader.current, name) : nullptr;
        if (!attribute)
            return false;
        char* quote = next_of(reader, '"');
        at = quote && *quote == '"' ? next_of(reader, '"') : quote;
        if (!at || *at == '>') // the tag ends before the value does
            break;
        *at = '\0';
        attribute->value = quote + 1;
        name = skip_blanks(at + 1);
        at = next_of(reader, '=');
    }
    return at && end_tag(reader, at, true);
}

// A start tag, from behind its "<". Its name begins with the first byte that is no blank,
// whatever that is, so that "<>" has an empty one, as `<a ="1">` has an attribute with an
// empty name.
static bool read_start_tag(xml_reader& reader, char* at)
{
    char* name = skip_blanks(at);
    char* end = name;
    while (!is_blank(*end) && *end != '>' && *end != '\0')
        ++end;
    if (*end == '\0')
        return false;
    reader.current->name = name;
    if (*end != '>')
        return read_attributes(reader, end);
    while (next_mark(reader) != end) { } // marks in the name
    end_tag(reader, end, true);
    *(end > name && end[-1] == '/' ? end - 1 : end) = '\0';
    return true;
}

// At a "<" between tags.
static bool read_less_than(xml_reader& reader, char* at)
{
    if (at[1] == '/') {
        close_element(reader, at);
        return skip_tag(reader);
    }
    if (at[1] == '?')
        return skip_tag(reader);
    if (at[1] != '!')
        return open_element(reader) && read_start_tag(reader, at + 1);
    return at[2] != '-' || at[3] != '-' || skip_comment(reader);
}

static void read_text(xml_reader& reader, char* text)
{
    reader.text_begin = text;
    reader.block = text;
    reader.marks = marks_of(text);
    bool goes_on = true;
    while (goes_on) {
        char* at = next_of(reader, '<');
        if (!at)
            return;
        if (*at == '<')
            goes_on = read_less_than(reader, at);
        else if (at[-1] == '/')
            end_tag(reader, at, false);
    }
}

xml_node* xml_parse(const char* text)
{
    return xml_parse_bounded(text, xml_max_items);
}

xml_node* xml_parse_bounded(const char* text, uint32_t max_items)
{
    const size_t length = text ? std::strlen(text) : 0;
    const size_t room = size_t{2} * block_size + length; // what looks one byte back finds one in front
    xml_reader reader = {};
    reader.root = reader.current = xml_new_tree(room);
    if (!reader.root || length == 0)
        return reader.root;
    char* copy = static_cast<char*>(xml_take(reader.root, room)) + block_size;
    std::memset(copy - block_size, 0, block_size);
    std::memcpy(copy, text, length);
    std::memset(copy + length, 0, block_size);
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
