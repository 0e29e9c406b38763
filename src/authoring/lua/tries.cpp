#include "authoring/lua/tries.h"

#include "authoring/lua/tokens.h"

#include <algorithm>
#include <charconv>
#include <cmath>

static constexpr size_t deepest = 250;      // Lua itself takes 200
static constexpr size_t longest_label = 48; // bytes

// ---- where a token stands -----------------------------------------------------------------------

namespace {

enum level_kind : uint8_t { level_statements, level_braces, level_parens, level_squares };

constexpr size_t no_site = SIZE_MAX;

// Statements, or what stands in brackets.
struct level {
    level_kind kind = level_statements;
    std::string path;                 // the name that was read last: "lamp.alpha", "parts[2]"
    std::vector<std::string> targets; // of statements and fields: what gets the values
    bool assigning = false;           // behind the "=" of statements, or of a field
    size_t entry = 1;                 // counts arguments, values, and fields without a name
    uint32_t blocks = 0;              // of statements: "if" and "do" that have no "end" yet
    size_t opened = 0;                // of brackets: the byte behind
    std::string callee;               // of parens: what is called; empty: nothing, or something without a name
    size_t site = no_site;            // of parens: the try that they belong to
    uint32_t argument_tokens = 0;     // of that try
    size_t argument_begin = 0;
    bool argument_negative = false;
    source_token argument_number;
};

struct site_reader {
    std::string_view text;
    std::vector<try_site> sites;
    std::vector<level> levels = {level()};
    source_token before = {token_end, 1, {}}; // the token in front
    source_token before_that = {token_end, 1, {}};
};

} // namespace

static level& innermost(site_reader& r)
{
    return r.levels.back();
}

static bool is_one_of(std::string_view text, std::initializer_list<const char*> words)
{
    return std::any_of(words.begin(), words.end(), [text](const char* word) { return text == word; });
}

static bool is_reserved(std::string_view name)
{
    return is_one_of(name,
        {"and", "break", "do", "else", "elseif", "end", "false", "for", "function", "goto", "if", "in", "local", "nil",
            "not", "or", "repeat", "return", "then", "true", "until", "while"});
}

// Whether an expression may end with the token, so that a name behind it begins a statement.
static bool ends_expression(const source_token& token)
{
    switch (token.kind) {
    case token_number:
    case token_text:
        return true;
    case token_name:
        return !is_reserved(token.text) || is_one_of(token.text, {"end", "false", "nil", "true"});
    case token_sign:
        return is_one_of(token.text, {")", "]", "}", "...", "::"});
    case token_end:
        break;
    }
    return false;
}

static size_t offset_of(const site_reader& r, const source_token& token)
{
    return static_cast<size_t>(token.text.data() - r.text.data());
}

static size_t offset_behind(const site_reader& r, const source_token& token)
{
    return offset_of(r, token) + token.text.size();
}

// ---- labels ---------------------------------------------------------------------------------------

static std::string with_entry(const std::string& name, size_t entry)
{
    return name + " " + std::to_string(entry);
}

// What a value is for that stands at the end of the first `count` levels.
static std::string label_at(const std::vector<level>& levels, size_t count)
{
    if (count == 0)
        return "";
    const level& in = levels[count - 1];
    switch (in.kind) {
    case level_statements:
        return in.assigning && !in.targets.empty() ? in.targets[std::min(in.entry, in.targets.size()) - 1] : "";
    case level_braces: {
        const std::string around = in.assigning ? in.targets[0] : label_at(levels, count - 1);
        return in.assigning || around.empty() ? around : with_entry(around, in.entry);
    }
    case level_parens: {
        const std::string around = label_at(levels, count - 1);
        if (in.callee.empty() || in.site != no_site)
            return around;
        return (around.empty() ? "" : around + ": ") + with_entry(in.callee, in.entry);
    }
    case level_squares:
        return label_at(levels, count - 1);
    }
    return "";
}

// Never in the middle of a character.
static void shorten(std::string& label)
{
    if (label.size() <= longest_label)
        return;
    size_t length = longest_label;
    while (length > 0 && (static_cast<unsigned char>(label[length]) & 0xc0) == 0x80)
        --length;
    label.resize(length);
}

// Behind a name; what would make it too long is dots.
static void add_to_name(std::string& name, const std::string& piece)
{
    if (name.size() + piece.size() <= longest_label)
        name += piece;
    else if (!name.ends_with("..."))
        name += "...";
}

static std::string label_here(const site_reader& r)
{
    std::string label = label_at(r.levels, r.levels.size());
    shorten(label);
    return label;
}

// ---- arguments --------------------------------------------------------------------------------------

// An argument of a try is over: keeps what is written out in it.
static void end_argument(site_reader& r)
{
    level& in = innermost(r);
    if (in.kind != level_parens || in.site == no_site)
        return;
    try_site& site = r.sites[in.site];
    const number_token read
        = in.argument_number.kind == token_number ? number_of_token(in.argument_number.text) : number_token();
    const bool is_plain
        = in.argument_tokens == (in.argument_negative ? 2u : 1u) && read.is_number && std::isfinite(read.value);
    const double value = in.argument_negative ? -read.value : read.value;
    if (is_plain && in.entry == 1) {
        site.can_write = true;
        site.value = value;
        site.has_point = !read.is_whole;
        site.begin = in.argument_begin;
        site.end = offset_behind(r, in.argument_number);
    } else if (is_plain && in.entry <= 3) {
        (in.entry == 2 ? site.least : site.most) = value;
    }
    in.argument_tokens = 0;
    in.argument_negative = false;
    in.argument_number = {};
}

// A token of an argument of a try: a number that is written out is a number alone, or "-" and one right behind it.
static void take_argument_token(site_reader& r, const source_token& token)
{
    level& in = innermost(r);
    if (in.kind != level_parens || in.site == no_site)
        return;
    const bool touches
        = in.argument_tokens == 1 && in.argument_negative && offset_behind(r, r.before) == offset_of(r, token);
    if (in.argument_tokens == 0)
        in.argument_begin = offset_of(r, token);
    if (in.argument_tokens == 0 && token.text == "-")
        in.argument_negative = true;
    else if (token.kind == token_number && (in.argument_tokens == 0 || touches))
        in.argument_number = token;
    ++in.argument_tokens;
}

// ---- tokens -----------------------------------------------------------------------------------------

static void begin_statement(site_reader& r)
{
    level& in = innermost(r);
    if (in.kind != level_statements)
        return;
    in.assigning = false;
    in.targets.clear();
    in.entry = 1;
    in.path.clear();
}

static void take_reserved(site_reader& r, std::string_view word)
{
    if (word == "function") {
        r.levels.push_back(level());
        return;
    }
    level& in = innermost(r);
    if (word == "end" && in.kind == level_statements) {
        if (in.blocks > 0)
            --in.blocks;
        else if (r.levels.size() > 1) {
            r.levels.pop_back();
            return; // what the function stands in goes on
        }
    }
    if ((word == "if" || word == "do") && in.kind == level_statements)
        ++in.blocks;
    if (!is_one_of(word, {"and", "or", "not", "nil", "true", "false"}))
        begin_statement(r);
}

static void take_name(site_reader& r, std::string_view name)
{
    if (is_reserved(name))
        return take_reserved(r, name);
    const bool goes_on = r.before.text == "." || r.before.text == ":";
    if (!goes_on && ends_expression(r.before))
        begin_statement(r);
    level& in = innermost(r);
    const bool is_attribute = r.before.text == "<"; // local x <const>: what is compared is not assigned to
    if (goes_on)
        add_to_name(in.path, std::string(r.before.text) + std::string(name));
    else if (!is_attribute)
        in.path = name.substr(0, longest_label);
}

static bool is_call_of_try(const site_reader& r)
{
    return r.before.kind == token_name && r.before.text == "try"
        && !is_one_of(r.before_that.text, {".", ":", "::", "function", "local", "goto", "for"});
}

static void open_bracket(site_reader& r, const source_token& token)
{
    level in;
    in.kind = token.text == "{" ? level_braces : token.text == "[" ? level_squares : level_parens;
    in.opened = offset_behind(r, token);
    const bool is_named = r.before.kind == token_name && !is_reserved(r.before.text);
    if (in.kind == level_parens && is_named)
        in.callee = innermost(r).path;
    if (in.kind == level_parens && is_call_of_try(r)) {
        in.site = r.sites.size();
        try_site site;
        site.line = r.before.line;
        site.label = label_here(r);
        site.closed = r.text.size();
        r.sites.push_back(std::move(site));
    }
    r.levels.push_back(std::move(in));
}

// What stands between square brackets, as part of a name.
static std::string index_text(const site_reader& r, const level& squares, const source_token& closing)
{
    const std::string_view inside = r.text.substr(squares.opened, offset_of(r, closing) - squares.opened);
    const bool is_short = inside.size() < longest_label / 2 && inside.find_first_of("\r\n") == std::string_view::npos;
    return is_short ? "[" + std::string(inside) + "]" : "[...]";
}

static void close_bracket(site_reader& r, const source_token& token)
{
    const level_kind kind = token.text == "}" ? level_braces : token.text == "]" ? level_squares : level_parens;
    const auto is_it = [kind](const level& each) { return each.kind == kind; };
    const auto found = std::find_if(r.levels.rbegin(), r.levels.rend(), is_it);
    if (found == r.levels.rend())
        return; // a text that is no Lua
    r.levels.resize(static_cast<size_t>(r.levels.rend() - found));
    end_argument(r);
    if (const size_t site = innermost(r).site; site != no_site)
        r.sites[site].closed = offset_of(r, token);
    const std::string index = kind == level_squares ? index_text(r, innermost(r), token) : "";
    r.levels.pop_back();
    add_to_name(innermost(r).path, index);
}

static void take_comma(site_reader& r)
{
    end_argument(r);
    level& in = innermost(r);
    switch (in.kind) {
    case level_statements:
        if (in.assigning)
            ++in.entry;
        else
            in.targets.push_back(in.path);
        break;
    case level_braces:
        in.entry += in.assigning ? 0 : 1;
        in.assigning = false;
        break;
    case level_parens:
        ++in.entry;
        break;
    case level_squares:
        break;
    }
    in.path.clear();
}

static void take_equals(site_reader& r)
{
    level& in = innermost(r);
    if (in.kind != level_statements && in.kind != level_braces)
        return;
    if (in.kind == level_statements)
        in.entry = 1;
    else
        in.targets.clear();
    in.targets.push_back(in.path);
    in.assigning = true;
}

static void take_sign(site_reader& r, const source_token& token)
{
    if (is_one_of(token.text, {"(", "{", "["}))
        open_bracket(r, token);
    else if (is_one_of(token.text, {")", "}", "]"}))
        close_bracket(r, token);
    else if (token.text == "," || (token.text == ";" && innermost(r).kind == level_braces))
        take_comma(r);
    else if (token.text == "=")
        take_equals(r);
    else if (token.text == ";" || token.text == "::")
        begin_statement(r);
}

std::vector<try_site> find_tries(std::string_view text)
{
    site_reader r;
    r.text = text;
    token_reader tokens = read_tokens(text);
    for (source_token token = next_token(tokens); token.kind != token_end; token = next_token(tokens)) {
        const bool is_separator = token.text == "," || token.text == ")";
        if (!is_separator)
            take_argument_token(r, token);
        if (token.kind == token_name)
            take_name(r, token.text);
        else if (token.kind == token_sign)
            take_sign(r, token);
        r.before_that = r.before;
        r.before = token;
        if (r.levels.size() > deepest || r.sites.size() > most_tries_of_a_text)
            break;
    }
    r.sites.resize(std::min(r.sites.size(), most_tries_of_a_text));
    return std::move(r.sites);
}

// ---- numbers as they are written --------------------------------------------------------------------

static std::string number_as_written(double value, bool has_point)
{
    const double size = std::fabs(value);
    const bool is_usual = value == 0 || (size >= 1e-6 && size < 1e15); // without an exponent
    char text[64];
    const auto format = is_usual ? std::chars_format::fixed : std::chars_format::general;
    const auto written = std::to_chars(text, text + sizeof text, value == 0 ? 0.0 : value, format);
    std::string number(text, written.ptr);
    if (has_point && number.find_first_of(".e") == std::string::npos)
        number += ".0";
    return number;
}

std::string with_try_written(std::string_view text, const try_site& site, double value)
{
    if (!site.can_write || !std::isfinite(value) || site.begin > site.end || site.end > text.size())
        return "";
    const std::string number = value == site.value ? std::string(text.substr(site.begin, site.end - site.begin))
                                                   : number_as_written(value, site.has_point);
    return std::string(text.substr(0, site.begin)) + number + std::string(text.substr(site.end));
}

// ---- sliders ------------------------------------------------------------------------------------------

static int power_of_step(double least, double most)
{
    const double way = most / 2 - least / 2; // of the whole one, singles may be too far apart
    return way > 0 ? std::clamp(static_cast<int>(std::floor(std::log10(way) + std::log10(2.0) + 1e-9)) - 3, -300, 0)
                   : 0;
}

double try_step(double least, double most, bool whole)
{
    return whole ? 1 : std::pow(10.0, power_of_step(least, most));
}

double nearest_tried(double value, double least, double most, double step)
{
    const int decimals = std::clamp(static_cast<int>(std::lround(-std::log10(step))), 0, 300);
    char text[700]; // as decimals are meant: 0.35 and not the 0.35000000000000003 of 350 * 0.001
    const auto written = std::to_chars(text, text + sizeof text, value, std::chars_format::fixed, decimals);
    double nearest = value;
    std::from_chars(text, written.ptr, nearest);
    return std::clamp(nearest, least, most) + 0.0; // the ends have as many digits as they like; never -0
}
