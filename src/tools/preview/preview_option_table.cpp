#include "tools/preview/preview_option_table.h"

#include "tools/frames/option_values.h"

constexpr option_row preview_option_rows[preview_option_count] = {
    {.id = preview_option_size,
        .group = preview_group_picture,
        .name = "--size",
        .value = "WxH",
        .wants = size_wants,
        .help = "pixels (as many as the window has for it)",
        .page = "Pixels of the picture, which is shown smaller or larger where the window has another place for it.\n"
                "Without this option it has the size of that place."},
    {.id = preview_option_aspect,
        .group = preview_group_picture,
        .name = "--aspect",
        .value = "SHAPE",
        .wants = aspect_wants,
        .offers = offer_word,
        .words = aspect_words,
        .help = aspect_help,
        .page = "The shape that the show is drawn for: `auto` (that of the size), `4:3`, `16:9` or `16:10`."},
    {.id = preview_option_path,
        .group = preview_group_picture,
        .name = "--path",
        .value = "PATH",
        .wants = path_wants,
        .offers = offer_word,
        .words = path_words,
        .help = path_help,
        .page = "`glsl` (shaders, as without this option) or `fixed` (texture combiners); keys 1 and 2 choose later."},
    {.id = preview_option_caps,
        .group = preview_group_picture,
        .name = "--caps",
        .value = "LIST",
        .wants = caps_wants,
        .offers = offer_words,
        .words = caps_words,
        .help = caps_help,
        .page
        = "Shows the show as a lesser card would:\n"
          "`no-vbo`, `no-pbo`, `no-npot`, `no-compression`, `no-combine4`, `no-combine3` and `units=1` to `units=4`,\n"
          "with commas between them; the key c goes through some of them."},
    {.id = preview_option_seed,
        .group = preview_group_picture,
        .name = "--seed",
        .value = "N",
        .wants = seed_wants,
        .help = seed_help,
        .page = "Starts the random numbers anew; 1 is what the player has."},
    {.id = preview_option_fps,
        .group = preview_group_time,
        .name = "--fps",
        .value = "N[/D]",
        .wants = rate_wants,
        .help = "frames a second (60)",
        .page = "The rate at which frames are counted, 60 a second unless given; written as `brimlow-render` has it.\n"
                "What remembers earlier frames looks as in a render of this rate."},
    {.id = preview_option_at,
        .group = preview_group_time,
        .name = "--at",
        .value = "TIME",
        .wants = "takes a time like 12.5, 1:02.25, 750f or 40%",
        .help = "begins at TIME",
        .page = "Begins at _TIME_ in the place of the beginning."},
    {.id = preview_option_paused,
        .group = preview_group_time,
        .name = "--paused",
        .help = "begins paused",
        .page = "Begins paused; Space plays."},
    {.id = preview_option_mute,
        .group = preview_group_time,
        .name = "--mute",
        .help = "begins without sound",
        .page = "Begins without sound; the key m brings it."},
    {.id = preview_option_window,
        .group = preview_group_window,
        .name = "--window",
        .value = "WxH",
        .wants = "takes a size like 1440x900, from 320x240 to 16384x16384",
        .help = "size of the window (1440x900)",
        .page = "The size of the window, 1440x900 unless given; on a screen of high density in its points."},
    {.id = preview_option_fullscreen,
        .group = preview_group_window,
        .name = "--fullscreen",
        .help = "begins with the whole screen",
        .page = "Begins with the whole screen; the key f goes back."},
    {.id = preview_option_control,
        .group = preview_group_window,
        .name = "--control",
        .value = "SOCKET",
        .wants = "takes the name that a socket is to have",
        .offers = offer_file,
        .help = "answers requests in JSON on a socket of this name",
        .page
        = "Makes a Unix socket of this name, which the user alone can open, and answers the requests in JSON that\n"
          "come through it, a line each.\n"
          "A socket of that name that nobody serves any more is replaced; any other file stays, and is an error."},
    {.id = preview_option_help,
        .group = preview_group_window,
        .letter = 'h',
        .name = "--help",
        .help = "this text",
        .page = "Prints a summary."},
    {.id = preview_option_version,
        .group = preview_group_window,
        .letter = 'V',
        .name = "--version",
        .help = "the version",
        .page = "Prints the version."},
};

static constexpr bool rows_are_in_order()
{
    for (int32_t i = 0; i < preview_option_count; ++i)
        if (preview_option_rows[i].id != i
            || (preview_option_rows[i].value == nullptr) != (preview_option_rows[i].wants[0] == '\0'))
            return false;
    return true;
}
static_assert(rows_are_in_order());
