#include "authoring/lua/wording.h"

#include "authoring/near_name.h"

#include <algorithm>
#include <charconv>

static constexpr size_t longest_text = 500; // bytes of a problem

// ---- small readers ---------------------------------------------------------------------------------------------

static bool take(std::string_view& rest, std::string_view text)
{
    if (!rest.starts_with(text)) {
        return false;
    }
    rest.remove_prefix(text.size());
    return true;
}

// Takes what stands before `end`, and `end`.
static bool take_until(std::string_view& rest, std::string_view end, std::string_view& taken)
{
    const size_t i = rest.find(end);
    if (i == std::string_view::npos) {
        return false;
    }
    taken = rest.substr(0, i);
    rest.remove_prefix(i + end.size());
    return true;
}

static std::string quoted(std::string_view text)
{
    return "\"" + std::string(text) + "\"";
}

// ---- places ----------------------------------------------------------------------------------------------------

static bool is_name_of(std::string_view short_name, const std::string& file)
{
    if (short_name == file) {
        return true;
    }
    return short_name.starts_with("...") && std::string_view(file).ends_with(short_name.substr(3));
}

std::string strip_place(std::string_view message, const std::vector<std::string>& files, source_place& place)
{
    bool found = false;
    for (;;) {
        const size_t end = message.find(": ");
        const size_t colon = end == std::string_view::npos || end == 0 ? end : message.rfind(':', end - 1);
        if (end == std::string_view::npos || colon == std::string_view::npos) {
            return std::string(message);
        }
        uint32_t line = 0;
        const char* last = message.data() + end;
        const auto read = std::from_chars(message.data() + colon + 1, last, line);
        const std::string_view name = message.substr(0, colon);
        const auto file
            = std::find_if(files.begin(), files.end(), [&](const std::string& f) { return is_name_of(name, f); });
        if (read.ec != std::errc() || read.ptr != last || (file == files.end() && !name.starts_with("library:"))) {
            return std::string(message);
        }
        if (file != files.end() && !found) {
            place = {*file, line};
            found = true;
        }
        message.remove_prefix(end + 2);
    }
}

// ---- running programs ------------------------------------------------------------------------------------------

static std::string kind_in_words(std::string_view kind)
{
    if (kind == "nil") {
        return "nothing (nil)";
    }
    if (kind == "string") {
        return "a text";
    }
    if (kind == "boolean") {
        return "true or false";
    }
    if (kind == "no value") {
        return "nothing";
    }
    const bool vowel = !kind.empty() && std::string_view("aeiouAEIOU").find(kind[0]) != std::string_view::npos;
    return (vowel ? "an " : "a ") + std::string(kind);
}

namespace {

struct failed_value { // of "attempt to index a nil value (field 'x')"
    std::string_view kind;
    std::string_view role; // "local", "field" ...; empty: Lua does not know
    std::string_view name;
};

} // namespace

static bool take_value(std::string_view& rest, failed_value& value)
{
    if (!(take(rest, "a ") || take(rest, "an ")) || !take_until(rest, " value", value.kind)) {
        return false;
    }
    std::string_view role;
    std::string_view name;
    if (take(rest, " (") && take_until(rest, " '", role) && take_until(rest, "')", name)) {
        value.role = role;
        value.name = name;
    }
    return true;
}

// "\"x\" is nothing (nil)", as the beginning of a sentence.
static std::string value_is(const failed_value& value)
{
    const bool has_name = !value.name.empty() && value.role != "metamethod" && value.role != "for iterator";
    return (has_name ? quoted(value.name) : std::string("what stands here")) + " is " + kind_in_words(value.kind);
}

static std::string call_wording(const failed_value& value, std::span<const std::string> names)
{
    if (value.role == "for iterator") {
        return "this \"for\" walks " + kind_in_words(value.kind) + ": write ipairs(list) or pairs(table).";
    }
    const bool is_member = value.role == "field" || value.role == "method" || value.role == "global";
    if (value.kind == "nil" && is_member) {
        return "there is no \"" + std::string(value.name) + "\" to call" + did_you_mean(value.name, names) + ".";
    }
    return value_is(value) + ", which cannot be called.";
}

static std::string index_wording(const failed_value& value, std::span<const std::string> names)
{
    if (value.kind != "nil") {
        return value_is(value) + ", which has no fields.";
    }
    const bool is_member = value.role == "field" || value.role == "global";
    return value_is(value) + ", and has no fields" + (is_member ? did_you_mean(value.name, names) : std::string())
        + ".";
}

static std::string attempt_wording(std::string_view rest, std::span<const std::string> names)
{
    failed_value value = {};
    if (take(rest, "call ") && take_value(rest, value)) {
        return call_wording(value, names);
    }
    if (take(rest, "index ") && take_value(rest, value)) {
        return index_wording(value, names);
    }
    if ((take(rest, "perform arithmetic on ") || take(rest, "perform bitwise operation on "))
        && take_value(rest, value)) {
        return value_is(value) + ", which cannot be computed with.";
    }
    if (take(rest, "concatenate ") && take_value(rest, value)) {
        return value_is(value) + ", which \"..\" cannot join to a text.";
    }
    if (take(rest, "get length of ") && take_value(rest, value)) {
        return value_is(value) + ", which has no length (\"#\").";
    }
    std::string_view first;
    std::string_view second;
    std::string_view sum = rest; // "add a 'string' with a 'number'"
    if (take_until(sum, " a '", first) && take_until(sum, "' with a '", first) && take_until(sum, "'", second)) {
        return kind_in_words(first) + " and " + kind_in_words(second)
            + " cannot be computed with each other: tonumber(text) makes a number of a text.";
    }
    if (rest == "divide by zero" || rest.starts_with("perform 'n")) {
        return "a whole number is divided by 0.";
    }
    if (take(rest, "compare two ") && take_until(rest, " values", first)) {
        return "two values that are each " + kind_in_words(first) + " cannot be compared with \"<\" or \">\".";
    }
    if (take(rest, "compare ") && take_until(rest, " with ", first)) {
        return kind_in_words(first) + " cannot be compared with " + kind_in_words(rest) + ".";
    }
    return {};
}

// "bad argument #1 to 'insert' (table expected, got nil)"
static std::string argument_wording(std::string_view rest)
{
    std::string_view number;
    std::string_view function;
    if (!take_until(rest, " to '", number) || !take_until(rest, "' (", function) || !rest.ends_with(")")) {
        return {};
    }
    rest.remove_suffix(1);
    const std::string whose = function == "?" ? "given here" : "of " + std::string(function);
    const std::string text = "value " + std::string(number) + " " + whose;
    if (rest == "no value" || rest == "value expected") {
        return text + " is missing.";
    }
    std::string_view wanted;
    if (take_until(rest, " expected, got ", wanted)) {
        return text + " is " + kind_in_words(rest) + " and should be " + kind_in_words(wanted) + ".";
    }
    return text + ": " + std::string(rest) + ".";
}

// "bad 'for' limit (number expected, got string)"
static std::string for_wording(std::string_view rest)
{
    std::string_view part;
    std::string_view got;
    if (!take_until(rest, " (number expected, got ", part) || !take_until(rest, ")", got)) {
        return {};
    }
    const std::string which = part == "initial value" ? "first value" : part == "limit" ? "last value" : "step";
    return "the " + which + " of this \"for\" is " + kind_in_words(got) + " and should be a number.";
}

// "invalid value (table) at index 2 in table for 'concat'"
static std::string joined_wording(std::string_view rest)
{
    std::string_view kind;
    std::string_view index;
    if (!take_until(rest, ") at index ", kind) || !take_until(rest, " in table", index)) {
        return {};
    }
    return "element " + std::string(index) + " is " + kind_in_words(kind)
        + ", and table.concat joins texts and numbers.";
}

static std::string known_wording(std::string_view rest, std::span<const std::string> names)
{
    if (take(rest, "attempt to ")) {
        return attempt_wording(rest, names);
    }
    if (take(rest, "bad argument #")) {
        return argument_wording(rest);
    }
    if (take(rest, "bad 'for' ")) {
        return for_wording(rest);
    }
    if (take(rest, "invalid value (")) {
        return joined_wording(rest);
    }
    if (rest == "'for' step is zero") {
        return "the step of this \"for\" is 0.";
    }
    if (rest.find("stack overflow") != std::string_view::npos) {
        return "functions call each other too deep: does one call itself without an end?";
    }
    if (rest.starts_with("number") && rest.ends_with("has no integer representation")) {
        return "this number is not whole, and must be.";
    }
    if (rest == "table index is nil" || rest == "table index is NaN") {
        return "a field is set whose name is "
            + std::string(rest == "table index is nil" ? "nothing (nil)." : "no number.");
    }
    if (rest == "assertion failed!") {
        return "assert was given false or nothing (nil).";
    }
    if (rest.find("chain too long") != std::string_view::npos) {
        return "metatables lead to each other in a circle.";
    }
    if (rest == "too many results to unpack") {
        return "more values are unpacked than can be handed over at once: keep them in a table.";
    }
    return {};
}

std::string plain_wording(const std::string& message, std::span<const std::string> names)
{
    const std::string text = known_wording(message, names);
    return text.empty() ? message : text;
}

// ---- programs that do not compile ------------------------------------------------------------------------------

static std::string token_in_words(std::string_view token)
{
    if (token == "<eof>" || token == "'<eof>'") {
        return "the end of the file";
    }
    if (token.size() >= 2 && token.front() == '\'' && token.back() == '\'') {
        token = token.substr(1, token.size() - 2);
    }
    const bool is_text = token.size() >= 2 && token.front() == '"' && token.back() == '"';
    return is_text ? std::string(token) : quoted(token);
}

// What people write who know other languages, and how it is written here: the end of a sentence.
static std::string_view other_language(std::string_view wanted, std::string_view token)
{
    if (token == "'!'") {
        return ": \"not equal\" is written \"~=\", and \"not\" with letters";
    }
    if (wanted == "'then'" && token == "'='") {
        return ": \"equal\" is written \"==\"";
    }
    const bool is_value
        = token.size() > 2 && (token[1] == '"' || token[1] == '{' || (token[1] >= '0' && token[1] <= '9'));
    if (wanted == "<name>" && is_value) {
        return "; a field of a table is written name = value, with no colon";
    }
    return {};
}

// "'}' expected (to close '{' at line 3)", "'=' expected"
static std::string expected_wording(std::string_view rest, std::string_view token)
{
    std::string_view wanted;
    if (!take_until(rest, " expected", wanted)) {
        return {};
    }
    std::string_view opener;
    std::string_view line;
    std::string text = (wanted == "<name>" ? std::string("a name") : token_in_words(wanted)) + " is missing before "
        + token_in_words(token);
    if (take(rest, " (to close '") && take_until(rest, "' at line ", opener) && take_until(rest, ")", line)) {
        text += ", for the \"" + std::string(opener) + "\" of line " + std::string(line);
    }
    const std::string_view hint = other_language(wanted, token);
    if (!hint.empty()) {
        return text + std::string(hint) + ".";
    }
    const bool in_list = wanted == "'}'" || wanted == "')'";
    const bool at_end = token.find("<eof>") != std::string_view::npos;
    return text + (in_list && !at_end ? "; or a comma is." : ".");
}

static std::string syntax_wording(std::string_view what, std::string_view token)
{
    if (what == "unexpected symbol") {
        const bool closes = token == "'}'" || token == "')'" || token == "']'" || token == "'end'";
        if (token == "<eof>") {
            return "the file ends in the middle of a statement: a value or a bracket is missing.";
        }
        const bool is_comment = token == "'//'";
        return token_in_words(token) + " cannot stand here"
            + (closes            ? "; is it one too many?"
                    : is_comment ? ": a comment begins with \"--\"."
                                 : std::string(other_language({}, token)) + ".");
    }
    if (what == "<eof> expected" || what == "'<eof>' expected") {
        return token_in_words(token) + " cannot stand here; is it one too many?";
    }
    if (what == "syntax error") {
        if (token.size() == 3 && std::string_view("+-*/").find(token[1]) != std::string_view::npos) {
            const std::string sign(1, token[1]);
            return token_in_words(token) + " cannot stand here: \"i " + sign + "= 1\" is written \"i = i " + sign
                + " 1\".";
        }
        return "before " + token_in_words(token)
            + " stands no whole statement: a call with its brackets, or \"=\", is missing.";
    }
    if (what == "unfinished string") {
        return "a text is not closed before the end of its line: its second quotation mark is missing.";
    }
    if (what.starts_with("unfinished long")) {
        return "a " + std::string(what.starts_with("unfinished long comment") ? "comment" : "text") + " is not closed"
            + std::string(what.substr(what.find(" (") == std::string_view::npos ? what.size() : what.find(" (")))
            + ": its \"]]\" is missing.";
    }
    if (what == "malformed number") {
        return token_in_words(token) + " is no number.";
    }
    if (what == "invalid escape sequence") {
        token = token.size() > 3 ? token.substr(2, token.size() - 3) : token; // less "'", quotation mark and "'"
        return token_in_words(token)
            + " holds a \"\\\" with a letter that means nothing: write \"\\\\\" for one \"\\\".";
    }
    if (what.find("C stack overflow") != std::string_view::npos
        || what.find("too many C levels") != std::string_view::npos) {
        return "brackets, functions or blocks stand too deep in one another.";
    }
    std::string_view name;
    std::string_view rest = what;
    if (take(rest, "attempt to assign to const variable '") && take_until(rest, "'", name)) {
        return quoted(name) + " is constant and takes no other value.";
    }
    rest = what;
    if (take(rest, "no visible label '") && take_until(rest, "' for <goto>", name)) {
        return "there is no label " + quoted(name) + " for this goto.";
    }
    if (what.starts_with("break outside loop")) {
        return "this \"break\" stands outside every loop.";
    }
    return expected_wording(what, token);
}

std::string plain_syntax_wording(const std::string& message)
{
    const std::string_view whole = message;
    const size_t near = whole.rfind(" near ");
    const std::string_view what = whole.substr(0, near);
    const std::string_view token = near == std::string_view::npos ? std::string_view() : whole.substr(near + 6);
    const std::string text = syntax_wording(what, token);
    if (!text.empty()) {
        return text;
    }
    return std::string(what) + (token.empty() ? "." : ", near " + token_in_words(token) + ".");
}

// ---- one line --------------------------------------------------------------------------------------------------

// Bytes of the UTF-8 character at the beginning, 0 when there is none.
static size_t character_length(std::string_view text)
{
    const unsigned char first = static_cast<unsigned char>(text[0]);
    const size_t length = first < 0x80  ? 1
        : first >= 0xc2 && first < 0xe0 ? 2
        : first < 0xf0                  ? 3
        : first < 0xf5                  ? 4
                                        : 0;
    if (length == 0 || length > text.size() || (first >= 0x80 && first < 0xc2)) {
        return 0;
    }
    for (size_t i = 1; i < length; ++i) {
        if ((static_cast<unsigned char>(text[i]) & 0xc0) != 0x80) {
            return 0;
        }
    }
    return length;
}

std::string one_line(std::string_view text)
{
    std::string line;
    while (!text.empty() && line.size() < longest_text) {
        const size_t length = character_length(text);
        const unsigned char first = static_cast<unsigned char>(text[0]);
        if (first == '\n' || first == '\t' || first == '\r') {
            line += ' ';
        } else if (length == 0 || first < 32 || first == 127) {
            line += '?';
        } else {
            line += text.substr(0, length);
        }
        text.remove_prefix(std::max<size_t>(length, 1));
    }
    while (!line.empty() && line.back() == ' ') {
        line.pop_back();
    }
    if (!text.empty()) {
        line += " ...";
    }
    if (line.empty()) {
        return "no reason given.";
    }
    return line.back() == '.' || line.back() == '?' || line.back() == '!' ? line : line + ".";
}
