#include "option_texts.h"

#include <algorithm>

std::vector<std::string_view> lines_of(std::string_view text)
{
    std::vector<std::string_view> lines;
    for (size_t begin = 0; begin <= text.size();) {
        const size_t end = std::min(text.find('\n', begin), text.size());
        lines.push_back(text.substr(begin, end - begin));
        begin = end + 1;
    }
    return lines;
}

// ---- --help ------------------------------------------------------------------------------

// "  -o, --output NAME".
static std::string help_head(const option_row& row)
{
    std::string head = "  ";
    if (row.letter != 0)
        head += std::string("-") + row.letter + ", ";
    head += row.name;
    if (row.value != nullptr)
        head += std::string(" ") + row.value;
    return head;
}

std::string help_rows(std::span<const option_row> rows, int32_t group, size_t column)
{
    std::string text;
    for (const option_row& row : rows) {
        if (row.group != group)
            continue;
        std::string head = help_head(row);
        for (const std::string_view line : lines_of(row.help)) {
            head.resize(column, ' ');
            text += head + std::string(line) + "\n";
            head.clear();
        }
    }
    return text;
}

// ---- the manual page ---------------------------------------------------------------------

// A dash of man(7) that is one on a terminal, too, and can be searched for; a backslash is none of its requests.
static void append_letter(std::string& text, char letter)
{
    text += letter == '-' ? "\\-" : letter == '\\' ? "\\e" : std::string(1, letter);
}

std::string manual_text(std::string_view marked)
{
    std::string text;
    char open = 0;
    for (const char letter : marked) {
        const bool marks = letter == '`' || (letter == '_' && open != '`');
        if (!marks) {
            append_letter(text, letter);
            continue;
        }
        text += open == letter ? "\\fR" : letter == '`' ? "\\fB" : "\\fI";
        open = open == letter ? char{0} : letter;
    }
    return text;
}

std::string manual_value(std::string_view value)
{
    std::string text;
    std::string_view font;
    for (const char letter : value) {
        const bool is_name = letter >= 'A' && letter <= 'Z';
        const bool is_sign = letter == '[' || letter == ']' || letter == '|';
        const std::string_view wanted = letter == ' ' ? font : is_name ? "\\fI" : is_sign ? "\\fR" : "\\fB";
        if (wanted != font)
            text += wanted;
        font = wanted;
        append_letter(text, letter);
    }
    return text;
}

std::string manual_lines(std::string_view marked, std::string_view request)
{
    std::string text;
    for (const std::string_view line : lines_of(marked))
        text += (line.empty() ? std::string(request) : manual_text(line)) + "\n";
    return text;
}

static std::string manual_head(const option_row& row)
{
    const std::string value = row.value == nullptr ? "" : " " + manual_value(row.value);
    std::string head = ".B ";
    if (row.letter != 0)
        head += std::string("\\-") + row.letter + value + "\\fR,\\fB ";
    return head + manual_text(row.name) + value + "\n";
}

std::string manual_rows(std::span<const option_row> rows, int32_t group)
{
    std::string text;
    for (const option_row& row : rows)
        if (row.group == group)
            text += ".TP\n" + manual_head(row) + manual_lines(row.page, ".IP");
    return text;
}

// ---- the completion of bash ----------------------------------------------------------------

// How a file is offered is told by how its name ends.
std::string bash_offer(value_offer offers)
{
    switch (offers) {
    case offer_nothing:
        return "nothing";
    case offer_word:
        return "word";
    case offer_words:
        return "words";
    case offer_file:
        return "''";
    case offer_png_file:
        return ".png";
    case offer_pack:
        return "dpk";
    case offer_source:
        return ".lua";
    case offer_show:
        return "'[dl][pu][ka]'"; // one of the two, near enough
    case offer_folder:
        return "/"; // no file's name ends so
    case offer_entry:
        return "entry";
    }
    return "";
}

// Bash hands over words that it has parted at "=" and ":" too: the line is looked at instead, and
// what stands before the last of these letters is left out of what is offered.
const char bash_offering[] = R"(
    COMPREPLY=()
    case $offer in
    nothing) return ;;
    word) mapfile -t COMPREPLY < <(compgen -W "$words" -- "$value") ;;
    words)
        before=${value%"${value##*,}"}
        mapfile -t COMPREPLY < <(compgen -P "$before" -W "$words" -- "${value##*,}")
        ;;
    *)
        compopt -o filenames 2>/dev/null
        mapfile -t COMPREPLY < <(compgen -d -- "$value"; compgen -f -X "!*$offer" -- "$value" | while IFS= read -r name
            do [ -d "$name" ] || printf '%s\n' "$name"; done)
        ;;
    esac
    before=${value%"${value##*[=:]}"}
    COMPREPLY=("${COMPREPLY[@]#"$before"}")
}
)";

constexpr const char bash_head[]
    = R"(# Completes the options of PROGRAM in bash, once it has read this file with "source".
#
# Written by brimlow-pages from the program's table of options; not edited by hand.

FUNCTION()
{
    local line=${COMP_LINE:0:COMP_POINT} option='' offer=OFFER words='' before
    local value=${line##*[[:space:]]}
    local -a given
    read -ra given <<<"${line%"$value"}"
    case $value in
    --*=*) option=${value%%=*} value=${value#*=} ;;
    -*)
        offer=word
        words='NAMES'
        ;;
    *) [ ${#given[@]} -eq 0 ] || option=${given[-1]} ;;
    esac
    case $option in
VALUES    esac
)";

static void put(std::string& text, const std::string& place, const std::string& what)
{
    for (size_t at = text.find(place); at != std::string::npos; at = text.find(place, at + what.size()))
        text.replace(at, place.size(), what);
}

std::string bash_completion_of(const std::string& program, std::span<const option_row> rows, value_offer arguments)
{
    std::string names;
    std::string values;
    for (const option_row& row : rows) {
        names += (names.empty() ? "" : " ") + std::string(row.name);
        if (row.value == nullptr)
            continue;
        const std::string letter = row.letter == 0 ? "" : std::string("-") + row.letter + " | ";
        const std::string words = row.words == nullptr ? "" : std::string(" words='") + row.words + "'";
        values += "    " + letter + row.name + ") offer=" + bash_offer(row.offers) + words + " ;;\n";
    }
    std::string function = "_" + program;
    std::replace(function.begin(), function.end(), '-', '_');
    std::string text = bash_head;
    put(text, "PROGRAM", program);
    put(text, "FUNCTION", function);
    put(text, "OFFER", bash_offer(arguments));
    put(text, "NAMES", names);
    put(text, "VALUES", values);
    return text + bash_offering + "complete -F " + function + " " + program + "\n";
}
