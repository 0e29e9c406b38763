#include "option_pages.h"

#include "option_table.h"

#include <algorithm>
#include <string_view>
#include <vector>

static std::vector<std::string_view> lines_of(std::string_view text)
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

constexpr size_t help_column = 26; // where texts begin

constexpr const char help_begin[] = R"(brimlow-render: renders a production frame by frame, without window or sound.

  brimlow-render [options] [PACK]

PACK is a file, a folder (its first pack is taken, as by the player) or "-" for
standard input; without it the working directory is the folder.
)";

constexpr const char help_of_times[] = R"(
TIME is seconds (12.5), minutes and seconds (1:02.25), a frame (750f) or a share
of the production (40%).
)";

constexpr const char help_end[] = R"(
Videos need the program ffmpeg. Files are written beside their place and renamed
when they are complete. Where one exists you are asked; without a terminal it is
kept, and the run ends.

Exit status: 0 done; 1 the production is broken, a comparison found a change, or
something could not be written; 2 the command line is wrong; 3 no OpenGL, or too
few samples; 4 --flashes found too many; 130 stopped by Ctrl-C, with what was
done until then kept.
)";

namespace {

// What stands above a group, and below it.
struct group_words {
    const char* help;
    const char* help_below;
    const char* page;
};

} // namespace

constexpr group_words groups[option_group_count] = {
    {"\nPicture\n", "", "Picture"},
    {"\nMoments\n", help_of_times, "Moments"},
    {"\nOutput\n", "", "Output"},
    {"\n", help_end, "Other"},
};

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

static std::string help_row(const option_row& row)
{
    std::string text;
    std::string head = help_head(row);
    for (const std::string_view line : lines_of(row.help)) {
        head.resize(help_column, ' ');
        text += head + std::string(line) + "\n";
        head.clear();
    }
    return text;
}

std::string help_text()
{
    std::string text = help_begin;
    for (int32_t group = 0; group < option_group_count; ++group) {
        text += groups[group].help;
        for (const option_row& row : option_rows)
            if (row.group == group)
                text += help_row(row);
        text += groups[group].help_below;
    }
    return text;
}

// ---- the manual page ---------------------------------------------------------------------

// A dash of man(7) that is one on a terminal, too, and can be searched for.
static void append_letter(std::string& text, char letter)
{
    text += letter == '-' ? "\\-" : std::string(1, letter);
}

// Text with `bold` and _italic_ parts.
static std::string manual_text(std::string_view marked)
{
    std::string text;
    char open = 0;
    for (const char letter : marked) {
        if (letter != '`' && letter != '_') {
            append_letter(text, letter);
            continue;
        }
        text += open == letter ? "\\fR" : letter == '`' ? "\\fB" : "\\fI";
        open = open == letter ? char{0} : letter;
    }
    return text;
}

// A value like "N[/D]": what is to be put in is italic, what stands as it is bold.
static std::string manual_value(std::string_view value)
{
    std::string text;
    std::string_view font;
    for (const char letter : value) {
        const bool is_name = letter >= 'A' && letter <= 'Z';
        const std::string_view wanted = is_name ? "\\fI" : letter == '[' || letter == ']' ? "\\fR" : "\\fB";
        if (wanted != font)
            text += wanted;
        font = wanted;
        append_letter(text, letter);
    }
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

static std::string manual_row(const option_row& row)
{
    std::string text = ".TP\n" + manual_head(row);
    for (const std::string_view line : lines_of(row.page))
        text += line.empty() ? ".IP\n" : manual_text(line) + "\n";
    return text;
}

std::string manual_options()
{
    std::string text;
    for (int32_t group = 0; group < option_group_count; ++group) {
        text += std::string(".SS ") + groups[group].page + "\n";
        for (const option_row& row : option_rows)
            if (row.group == group)
                text += manual_row(row);
    }
    return text;
}

// ---- the completion of bash ----------------------------------------------------------------

// Bash hands over words that it has parted at "=" and ":" too: the line is looked at instead, and
// what stands before the last of these letters is left out of what is offered.
constexpr const char bash_begin[]
    = R"(# Completes the options of brimlow-render in bash, once it has read this file with "source".
#
# Written by brimlow-render-pages from the program's table of options; not edited by hand.

_brimlow_render()
{
    local line=${COMP_LINE:0:COMP_POINT} option='' offer=dpk words='' before
    local value=${line##*[[:space:]]}
    local -a given
    read -ra given <<<"${line%"$value"}"
    case $value in
    --*=*) option=${value%%=*} value=${value#*=} ;;
    -*)
        offer=word
        words=')";

constexpr const char bash_middle[] = R"('
        ;;
    *) [ ${#given[@]} -eq 0 ] || option=${given[-1]} ;;
    esac
    case $option in
)";

constexpr const char bash_end[] = R"(    esac

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
complete -F _brimlow_render brimlow-render
)";

// How a file is offered is told by how its name ends.
static std::string bash_offer(const option_row& row)
{
    switch (row.offers) {
    case offer_nothing:
        return "offer=nothing";
    case offer_word:
        return std::string("offer=word words='") + row.words + "'";
    case offer_words:
        return std::string("offer=words words='") + row.words + "'";
    case offer_file:
        return "offer=''";
    case offer_png_file:
        return "offer=.png";
    case offer_folder:
        return "offer=/"; // no file's name ends so
    }
    return "";
}

std::string bash_completion()
{
    std::string names;
    std::string values;
    for (const option_row& row : option_rows) {
        names += (names.empty() ? "" : " ") + std::string(row.name);
        if (row.value == nullptr)
            continue;
        const std::string letter = row.letter == 0 ? "" : std::string("-") + row.letter + " | ";
        values += "    " + letter + row.name + ") " + bash_offer(row) + " ;;\n";
    }
    return bash_begin + names + bash_middle + values + bash_end;
}
