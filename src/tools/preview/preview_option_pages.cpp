#include "tools/preview/preview_option_pages.h"

#include "tools/common/option_texts.h"
#include "tools/preview/preview_option_table.h"

constexpr size_t help_column = 26; // where texts begin

constexpr const char help_begin[] = R"(brimlow-preview: plays a show while it is being written.

  brimlow-preview [options] [SHOW.lua|FOLDER|PACK]

A source is built again whenever one of its files is saved, and plays on where
it was. A folder means its show.lua, or else its first pack; without any, the
working directory is the folder.
)";

constexpr const char help_of_times[] = R"(
TIME is seconds (12.5), minutes and seconds (1:02.25), a frame (750f) or a share
of the show (40%).
)";

constexpr const char help_end[] = R"(
Keys, in the window: Space plays and pauses; Left and Right go a second, with
Shift a beat; , and . go a frame; Home and End; a and b set a loop, x ends it;
m sound, 1 2 path, c lesser cards, s a still, r builds again, Tab the overlay,
f the whole screen, F1 all keys, Escape ends.

Exit status: 0 done; 1 there is no such show, or no such socket can be made;
2 the command line is wrong; 3 no display, or no OpenGL.
)";

constexpr const char* group_heads[preview_group_count] = {"Picture", "Time", "Window and control"};

std::string preview_help_text()
{
    std::string text = help_begin;
    for (int32_t group = 0; group < preview_group_count; ++group) {
        text += std::string("\n") + group_heads[group] + "\n";
        text += help_rows(preview_option_rows, group, help_column);
        text += group == preview_group_time ? help_of_times : "";
    }
    return text + help_end;
}

std::string preview_manual_options()
{
    std::string text;
    for (int32_t group = 0; group < preview_group_count; ++group)
        text += std::string(".SS ") + group_heads[group] + "\n" + manual_rows(preview_option_rows, group);
    return text;
}

std::string preview_bash_completion()
{
    return bash_completion_of("brimlow-preview", preview_option_rows, offer_show);
}
