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
    aspect_row(preview_option_aspect, preview_group_picture,
        "The shape that the show is drawn for: `auto` (that of the size), `4:3`, `16:9` or `16:10`."),
    path_row(preview_option_path, preview_group_picture,
        "`glsl` (shaders, as without this option) or `fixed` (texture combiners); keys 1 and 2 choose later."),
    caps_row(preview_option_caps, preview_group_picture,
        "Shows the show as a lesser card would:\n"
        "`no-vbo`, `no-pbo`, `no-npot`, `no-compression`, `no-combine4`, `no-combine3` and `units=1` to `units=4`,\n"
        "with commas between them; the key c goes through some of them."),
    seed_row(preview_option_seed, preview_group_picture),
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
        .wants = moment_wants,
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
    help_row(preview_option_help, preview_group_window),
    version_row(preview_option_version, preview_group_window),
};

static_assert(rows_are_in_order(preview_option_rows));
