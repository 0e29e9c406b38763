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

std::string bash_completion()
{
    return bash_completion_of("brimlow-render", option_rows, offer_pack);
}
