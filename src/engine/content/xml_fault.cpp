#include "content/xml_fault.h"

#include <algorithm>
#include <cassert>
#include <cctype>
#include <cstring>
#include <string_view>
#include <vector>

static constexpr uint32_t fault_max_items = 1u << 20;
static constexpr size_t fault_max_depth = 64; // elements that a closing tag is compared with

namespace {

enum scan_state : uint32_t {
    state_text,   // between tags
    state_opened, // behind "<", before the name
    state_name,
    state_tag, // inside a start tag, between attributes
    state_attribute_name,
    state_before_value, // behind "="
    state_value,        // inside double quotes
    state_skipped_tag,  // a closing tag or an instruction
    state_comment
};

enum scan_event : uint32_t {
    event_open, // a start tag that stays open: the current element has no child yet
    event_close,
    event_self_close
};

struct open_tag {
    std::string_view name; // without one until its tag has been read
    uint32_t line;
};

struct fault_search {
    scan_state state;
    scan_event event;
    const char* token;          // where the name under way began
    std::string_view attribute; // the last one's name
    uint32_t items_left;        // elements and attributes that may still come
    bool exhausted;             // too many of them
    std::vector<open_tag> open; // by their names, as far as they tell
    uint32_t line;              // of the byte to be read
    uint32_t comment_line;      // of the comment under way
    xml_fault unclosed;         // the first of each kind
    xml_fault stray;
    xml_fault misread; // of a value or a comment
    bool unbalanced;   // a closing tag came while nothing was open
};

} // namespace

// ---- the reader's rules, a byte at a time ------------------------------------------

static bool is_space(char byte)
{
    return std::isspace(static_cast<unsigned char>(byte)) != 0;
}

static bool count_item(fault_search& search)
{
    search.exhausted = search.exhausted || search.items_left == 0;
    --search.items_left;
    return !search.exhausted;
}

static void open_element(fault_search& search)
{
    if (!count_item(search))
        return;
    search.state = state_opened;
    search.open.push_back({{}, search.line});
}

static void read_less_than(fault_search& search, const char* at)
{
    if (at[1] == '/')
        search.event = event_close;
    if (at[1] == '/' || at[1] == '?')
        search.state = state_skipped_tag;
    else if (at[1] != '!')
        open_element(search);
    else if (at[2] == '-' && at[3] == '-')
        search.state = state_comment;
}

static std::string_view token_before(const fault_search& search, const char* end)
{
    return {search.token, static_cast<size_t>(end - search.token)};
}

static void take_name(fault_search& search, const char* end)
{
    assert(!search.open.empty());
    search.open.back().name = token_before(search, end);
}

static void take_attribute_name(fault_search& search, const char* end)
{
    if (!count_item(search))
        return;
    search.attribute = token_before(search, end);
    search.state = state_before_value;
}

static void end_tag(fault_search& search, const char* at, bool closes)
{
    if (search.state == state_name)
        take_name(search, at);
    if (closes)
        search.event = event_self_close;
    else if (search.state != state_skipped_tag)
        search.event = event_open;
    search.state = state_text;
}

static void read_byte(fault_search& search, const char* at)
{
    if (is_space(*at)) {
        if (search.state == state_name) {
            take_name(search, at);
            search.state = state_tag;
        }
        return;
    }
    if (search.state == state_opened || search.state == state_tag) {
        search.token = at;
        search.state = search.state == state_opened ? state_name : state_attribute_name;
    }
    switch (*at) {
    case '<':
        if (search.state == state_text)
            read_less_than(search, at);
        break;
    case '=':
        if (search.state == state_attribute_name)
            take_attribute_name(search, at);
        break;
    case '"':
        if (search.state == state_value)
            search.state = state_tag;
        else if (search.state == state_before_value)
            search.state = state_value;
        break;
    case '/':
        if (at[1] == '>')
            end_tag(search, at, true);
        break;
    case '>':
        if (search.state != state_text && search.state != state_comment)
            end_tag(search, at, false);
        break;
    case '-':
        if (search.state == state_comment && at[1] == '-' && at[2] == '>')
            search.state = state_text;
        break;
    }
}

// ---- what no author means ------------------------------------------------------------

static void note_fault(xml_fault& fault, xml_fault_kind kind, uint32_t line, std::string_view name)
{
    if (fault.kind == xml_no_fault)
        fault = {kind, line, std::string(name)};
}

static void note_unclosed(fault_search& search, const open_tag& element)
{
    note_fault(search.unclosed, xml_unclosed_element, element.line, element.name);
}

// A closing tag, whose name stands at `at`. One of no open element closes the last one,
// as the reader takes it: it may be no more than misspelt.
static void close_by_name(fault_search& search, const char* at)
{
    const std::string_view name(at, std::strcspn(at, "> \t\r\n"));
    const auto is_meant = [name](const open_tag& element) { return element.name == name; };
    auto& open = search.open;
    const auto outermost = open.rbegin() + static_cast<std::ptrdiff_t>(std::min(open.size(), fault_max_depth));
    const auto meant = std::find_if(open.rbegin(), outermost, is_meant);
    if (meant != outermost) {
        if (meant != open.rbegin())
            note_unclosed(search, open.back());
        open.erase(meant.base() - 1, open.end());
        return;
    }
    note_fault(search.stray, xml_stray_closing_tag, search.line, name);
    search.unbalanced = search.unbalanced || open.empty();
    if (!open.empty())
        open.pop_back();
}

static bool is_in_start_tag(scan_state state)
{
    return state != state_text && state != state_skipped_tag && state != state_comment;
}

// What the byte does to a value or a comment that no author means. `is_open`: an element is
// open that a "/>" ends.
static void note_misread(fault_search& search, const char* at, bool is_open)
{
    const bool ends_element = *at == '/' && at[1] == '>';
    if (search.state == state_comment && ends_element && is_open)
        return note_fault(search.misread, xml_cut_comment, search.comment_line, "");
    const bool is_cut = search.state == state_value && (ends_element || *at == '>');
    const bool is_bare
        = search.state == state_before_value && !is_space(*at) && *at != '"' && *at != '>' && !ends_element;
    if (is_cut || is_bare)
        note_fault(search.misread, is_cut ? xml_cut_value : xml_unquoted_value, search.line, search.attribute);
}

// Reads one byte as the reader does, and looks at what that does to the open elements.
static void search_byte(fault_search& search, const char* at)
{
    const scan_state before = search.state;
    const bool is_open = is_in_start_tag(before) || search.event == event_open;
    note_misread(search, at, is_open && !search.open.empty());
    read_byte(search, at);
    search.line += *at == '\n' ? 1 : 0;
    if (*at == '/' && at[1] == '>' && is_open && !search.open.empty())
        search.open.pop_back();
    if (*at != '<' || before != state_text)
        return;
    if (search.state == state_skipped_tag && at[1] == '/')
        close_by_name(search, at + 2);
    if (search.state == state_comment)
        search.comment_line = search.line;
}

static xml_fault fault_of(const fault_search& search)
{
    if (search.state == state_comment)
        return {xml_unfinished_comment, search.comment_line, ""};
    xml_fault tag = search.unclosed;
    if (tag.kind == xml_no_fault && search.unbalanced)
        tag = search.stray;
    if (search.misread.kind == xml_no_fault)
        return tag;
    return tag.kind != xml_no_fault && tag.line < search.misread.line ? tag : search.misread;
}

xml_fault xml_find_fault(const char* text)
{
    if (!text)
        return {};
    fault_search search = {};
    search.items_left = fault_max_items;
    search.line = 1;
    for (const char* at = text; *at != '\0' && !search.exhausted; ++at)
        search_byte(search, at);
    if (!search.open.empty())
        note_unclosed(search, search.open.back());
    return search.exhausted ? xml_fault{} : fault_of(search);
}
