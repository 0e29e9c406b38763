#include "plain_xml.h"

#include <algorithm>
#include <cassert>
#include <cctype>
#include <cstdlib>
#include <cstring>
#include <vector>

// ---- nodes -----------------------------------------------------------------------

static plain_node* new_empty_node()
{
    return static_cast<plain_node*>(std::calloc(1, sizeof(plain_node)));
}

// The array's capacity is the next power of two, so that appending n costs n.
static plain_attribute* append_attribute(plain_node* node, char* name)
{
    assert(node->attribute_count >= 0 && name != nullptr);
    const auto count = static_cast<size_t>(node->attribute_count);
    if ((count & (count - 1)) == 0) {
        const size_t capacity = count == 0 ? 1 : 2 * count;
        void* grown = std::realloc(node->attributes, capacity * sizeof(plain_attribute));
        if (!grown)
            return nullptr;
        node->attributes = static_cast<plain_attribute*>(grown);
    }
    plain_attribute* attribute = &node->attributes[count];
    *attribute = {name, nullptr};
    ++node->attribute_count;
    return attribute;
}

static void append_child(plain_node* parent, plain_node* last_child, plain_node* child)
{
    assert(child->parent == nullptr && child->next_sibling == nullptr);
    assert(last_child != nullptr ? last_child->next_sibling == nullptr : parent->first_child == nullptr);
    child->parent = parent;
    if (last_child)
        last_child->next_sibling = child;
    else
        parent->first_child = child;
}

// ---- strings ---------------------------------------------------------------------

static char* copy_bytes(const char* begin, size_t length)
{
    assert(begin != nullptr);
    char* copy = static_cast<char*>(std::malloc(length + 1));
    if (!copy)
        return nullptr;
    std::memcpy(copy, begin, length);
    copy[length] = '\0';
    return copy;
}

// ---- reading ---------------------------------------------------------------------

namespace {

enum reader_state : uint32_t {
    state_text = 0,   // between tags
    state_opened = 1, // behind "<", before the name
    state_name = 2,
    state_tag = 3, // inside a start tag, between attributes
    state_attribute_name = 5,
    state_before_value = 6, // behind "="
    state_value = 7,        // inside double quotes
    state_skipped_tag = 8,  // a closing tag or an instruction
    state_comment = 9
};

enum reader_event : uint32_t {
    event_open = 0, // a start tag that stays open: the current element has no child yet
    event_close = 1,
    event_self_close = 2
};

struct plain_reader {
    plain_node* root;
    plain_node* current;
    plain_node* last_top_level; // the root's last child
    const char* token;          // where the name, value or text under way began
    reader_state state;
    reader_event event;
    uint32_t items_left; // elements and attributes that may still come
    bool exhausted;      // no memory, or too many items: the text counts as ended
};

} // namespace

static bool is_space(char byte)
{
    return std::isspace(static_cast<unsigned char>(byte)) != 0;
}

static char* copy_token(plain_reader& reader, const char* end)
{
    assert(reader.token <= end);
    char* copy = copy_bytes(reader.token, static_cast<size_t>(end - reader.token));
    reader.exhausted = reader.exhausted || !copy;
    return copy;
}

static bool count_item(plain_reader& reader)
{
    reader.exhausted = reader.exhausted || reader.items_left == 0;
    --reader.items_left;
    return !reader.exhausted;
}

static void open_element(plain_reader& reader)
{
    plain_node* node = count_item(reader) ? new_empty_node() : nullptr;
    if (!node) {
        reader.exhausted = true;
        return;
    }
    plain_node* current = reader.current;
    assert(current == reader.root || current->parent != nullptr);
    if (current == reader.root) // whatever came last: the root has no siblings
        append_child(current, reader.last_top_level, node);
    else if (reader.event == event_open)
        append_child(current, nullptr, node);
    else
        append_child(current->parent, current, node);
    if (node->parent == reader.root)
        reader.last_top_level = node;
    reader.current = node;
    reader.state = state_opened;
}

// "</": the first one behind a start tag ends an element without children, which
// stays current so that a sibling can follow; the next one ends its parent.
static void close_element(plain_reader& reader, const char* at)
{
    reader.state = state_skipped_tag;
    if (reader.current == reader.root)
        return;
    if (reader.event != event_open)
        reader.current = reader.current->parent;
    else if (at > reader.token)
        reader.current->text = copy_token(reader, at);
    reader.event = event_close;
}

static void read_less_than(plain_reader& reader, const char* at)
{
    if (at[1] == '/')
        close_element(reader, at);
    else if (at[1] == '?')
        reader.state = state_skipped_tag;
    else if (at[1] != '!')
        open_element(reader);
    else if (at[2] == '-' && at[3] == '-')
        reader.state = state_comment;
}

static void take_name(plain_reader& reader, const char* end)
{
    assert(reader.current != reader.root && reader.current->name == nullptr);
    reader.current->name = copy_token(reader, end);
}

static void take_attribute_name(plain_reader& reader, const char* end)
{
    assert(reader.current != reader.root);
    char* name = count_item(reader) ? copy_token(reader, end) : nullptr;
    if (!name || !append_attribute(reader.current, name)) {
        std::free(name);
        reader.exhausted = true;
        return;
    }
    reader.state = state_before_value;
}

static void take_value(plain_reader& reader, const char* end)
{
    plain_node* node = reader.current;
    assert(node->attribute_count > 0);
    node->attributes[node->attribute_count - 1].value = copy_token(reader, end);
    reader.state = state_tag;
}

// "/>" counts in every state, also in quoted values, text and comments (deliberate;
// pinned by "a slash and a greater-than sign end an element wherever they stand").
static void self_close(plain_reader& reader, const char* at)
{
    if (reader.state == state_name)
        take_name(reader, at);
    reader.state = state_text;
    reader.event = event_self_close;
    reader.token = at + 2;
}

static void end_tag(plain_reader& reader, const char* at)
{
    if (reader.state == state_name)
        take_name(reader, at);
    if (reader.state != state_skipped_tag)
        reader.event = event_open;
    reader.state = state_text;
    reader.token = at + 1;
}

// One byte. Names begin before anything else is looked at, so that "<>" has an
// empty name and `<a ="1">` an attribute with an empty one.
static void read_byte(plain_reader& reader, const char* at)
{
    if (is_space(*at)) {
        if (reader.state == state_name) {
            take_name(reader, at);
            reader.state = state_tag;
        }
        return;
    }
    if (reader.state == state_opened || reader.state == state_tag) {
        reader.token = at;
        reader.state = reader.state == state_opened ? state_name : state_attribute_name;
    }
    switch (*at) {
    case '<':
        if (reader.state == state_text)
            read_less_than(reader, at);
        break;
    case '=':
        if (reader.state == state_attribute_name)
            take_attribute_name(reader, at);
        break;
    case '"':
        if (reader.state == state_value) {
            take_value(reader, at);
        } else if (reader.state == state_before_value) {
            reader.token = at + 1;
            reader.state = state_value;
        }
        break;
    case '/':
        if (at[1] == '>')
            self_close(reader, at);
        break;
    case '>':
        if (reader.state != state_text && reader.state != state_comment)
            end_tag(reader, at);
        break;
    case '-':
        if (reader.state == state_comment && at[1] == '-' && at[2] == '>')
            reader.state = state_text; // the token stays: the comment is part of the text
        break;
    }
}

plain_node* plain_parse(const char* text, uint32_t max_items)
{
    plain_reader reader = {};
    reader.root = reader.current = new_empty_node();
    reader.token = text;
    reader.items_left = max_items;
    if (!reader.root || !text)
        return reader.root;
    for (const char* at = text; *at != '\0' && !reader.exhausted; ++at)
        read_byte(reader, at);
    return reader.root;
}

// ---- freeing ---------------------------------------------------------------------

static void free_one_node(plain_node* node)
{
    assert(node->attribute_count == 0 || node->attributes != nullptr);
    for (int32_t i = 0; i < node->attribute_count; ++i) {
        std::free(node->attributes[i].name);
        std::free(node->attributes[i].value);
    }
    std::free(node->attributes);
    std::free(node->name);
    std::free(node->text);
    std::free(node);
}

// Works through one chain: each node's children are linked behind the chain's end
// before the node goes, so a deep tree needs no stack.
void plain_free(plain_node* node)
{
    if (!node)
        return;
    node->next_sibling = nullptr;
    plain_node* chain_end = node;
    while (node) {
        chain_end->next_sibling = node->first_child;
        while (chain_end->next_sibling)
            chain_end = chain_end->next_sibling;
        plain_node* next = node->next_sibling;
        free_one_node(node);
        node = next;
    }
}

// ---- looking for faults ------------------------------------------------------------

static constexpr uint32_t fault_max_items = 1u << 20;
static constexpr size_t fault_max_depth = 64; // elements that a closing tag is compared with

namespace {

struct tag_start {
    const plain_node* node; // whose name is there once its tag has been read
    uint32_t line;
};

struct fault_search {
    plain_reader reader;
    std::vector<tag_start> open; // by their names, as far as they tell
    uint32_t line;               // of the byte to be read
    uint32_t comment_line;       // of the comment under way
    xml_fault unclosed;          // the first of each kind
    xml_fault stray;
    xml_fault misread; // of a value or a comment
    bool unbalanced;   // a closing tag came while nothing was open
};

} // namespace

static void note_fault(xml_fault& fault, xml_fault_kind kind, uint32_t line, const char* name, size_t length)
{
    if (fault.kind == xml_no_fault)
        fault = {kind, line, std::string(name, length)};
}

static void note_unclosed(fault_search& search, const tag_start& element)
{
    assert(element.node != nullptr);
    const char* name = element.node->name ? element.node->name : "";
    note_fault(search.unclosed, xml_unclosed_element, element.line, name, std::strlen(name));
}

// A closing tag, whose name stands at `name`. One of no open element closes the last one,
// as the reader takes it: it may be no more than misspelt.
static void close_by_name(fault_search& search, const char* name)
{
    const size_t length = std::strcspn(name, "> \t\r\n");
    const auto is_meant = [name, length](const tag_start& element) {
        return element.node->name && std::strlen(element.node->name) == length
            && std::strncmp(element.node->name, name, length) == 0;
    };
    auto& open = search.open;
    const auto outermost = open.rbegin() + static_cast<std::ptrdiff_t>(std::min(open.size(), fault_max_depth));
    const auto meant = std::find_if(open.rbegin(), outermost, is_meant);
    if (meant != outermost) {
        if (meant != open.rbegin())
            note_unclosed(search, open.back());
        open.erase(meant.base() - 1, open.end());
        return;
    }
    note_fault(search.stray, xml_stray_closing_tag, search.line, name, length);
    search.unbalanced = search.unbalanced || open.empty();
    if (!open.empty())
        open.pop_back();
}

static bool is_in_start_tag(reader_state state)
{
    return state != state_text && state != state_skipped_tag && state != state_comment;
}

// What the byte does to a value or a comment that no author means. `is_open`: an element is
// open that a "/>" ends.
static void note_misread(fault_search& search, const char* at, bool is_open)
{
    const plain_reader& reader = search.reader;
    const bool ends_element = *at == '/' && at[1] == '>';
    if (reader.state == state_comment && ends_element && is_open)
        return note_fault(search.misread, xml_cut_comment, search.comment_line, "", 0);
    const bool is_cut = reader.state == state_value && (ends_element || *at == '>');
    const bool is_bare
        = reader.state == state_before_value && !is_space(*at) && *at != '"' && *at != '>' && !ends_element;
    if (!is_cut && !is_bare)
        return;
    assert(reader.current->attribute_count > 0);
    const char* name = reader.current->attributes[reader.current->attribute_count - 1].name;
    note_fault(search.misread, is_cut ? xml_cut_value : xml_unquoted_value, search.line, name, std::strlen(name));
}

// Reads one byte as the reader does, and looks at what that does to the open elements.
static void search_byte(fault_search& search, const char* at)
{
    plain_reader& reader = search.reader;
    const reader_state before = reader.state;
    const bool is_open = is_in_start_tag(before) || reader.event == event_open;
    note_misread(search, at, is_open && !search.open.empty());
    read_byte(reader, at);
    search.line += *at == '\n' ? 1 : 0;
    if (*at == '/' && at[1] == '>' && is_open && !search.open.empty())
        search.open.pop_back();
    if (*at != '<' || before != state_text)
        return;
    if (reader.state == state_opened)
        search.open.push_back({reader.current, search.line});
    if (reader.state == state_skipped_tag && at[1] == '/')
        close_by_name(search, at + 2);
    if (reader.state == state_comment)
        search.comment_line = search.line;
}

static xml_fault fault_of(const fault_search& search)
{
    if (search.reader.state == state_comment)
        return {xml_unfinished_comment, search.comment_line, ""};
    xml_fault tag = search.unclosed;
    if (tag.kind == xml_no_fault && search.unbalanced)
        tag = search.stray;
    if (search.misread.kind == xml_no_fault)
        return tag;
    return tag.kind != xml_no_fault && tag.line < search.misread.line ? tag : search.misread;
}

xml_fault plain_find_fault(const char* text)
{
    if (!text)
        return {};
    fault_search search = {};
    plain_reader& reader = search.reader;
    reader.root = reader.current = new_empty_node();
    reader.token = text;
    reader.items_left = fault_max_items;
    search.line = 1;
    if (!reader.root)
        return {};
    for (const char* at = text; *at != '\0' && !reader.exhausted; ++at)
        search_byte(search, at);
    if (!search.open.empty())
        note_unclosed(search, search.open.back());
    const xml_fault fault = reader.exhausted ? xml_fault{} : fault_of(search);
    plain_free(reader.root);
    return fault;
}
