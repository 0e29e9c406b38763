#include "option_pages.h"

#include "option_table.h"

#include "tools/common/option_texts.h"

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

std::string help_text()
{
    std::string text = help_begin;
    for (int32_t group = 0; group < option_group_count; ++group) {
        text += groups[group].help;
        text += help_rows(option_rows, group, help_column);
        text += groups[group].help_below;
    }
    return text;
}

// ---- the manual page ---------------------------------------------------------------------

std::string manual_options()
{
    std::string text;
    for (int32_t group = 0; group < option_group_count; ++group) {
        text += std::string(".SS ") + groups[group].page + "\n";
        text += manual_rows(option_rows, group);
    }
    return text;
}

// ---- the completion of bash ----------------------------------------------------------------

constexpr const char bash_begin[]
    = R"(# Completes the options of brimlow-render in bash, once it has read this file with "source".
#
# Written by brimlow-pages from the program's table of options; not edited by hand.

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

constexpr const char bash_end[] = "complete -F _brimlow_render brimlow-render\n";

std::string bash_completion()
{
    std::string names;
    std::string values;
    for (const option_row& row : option_rows) {
        names += (names.empty() ? "" : " ") + std::string(row.name);
        if (row.value == nullptr)
            continue;
        const std::string letter = row.letter == 0 ? "" : std::string("-") + row.letter + " | ";
        const std::string words = row.words == nullptr ? "" : std::string(" words='") + row.words + "'";
        values += "    " + letter + row.name + ") offer=" + bash_offer(row.offers) + words + " ;;\n";
    }
    return bash_begin + names + bash_middle + values + "    esac\n" + bash_offering + bash_end;
}
