#include "option_table.h"

#include "tools/frames/option_values.h"

constexpr option_row option_rows[option_count] = {
    {.id = option_size,
        .group = group_picture,
        .name = "--size",
        .value = "WxH",
        .wants = size_wants,
        .help = "pixels (1280x720; 1920x1080 with --shots)",
        .page = "Pixels; 1280x720 unless given, 1920x1080 with `--shots`."},
    aspect_row(option_aspect, group_picture,
        "The shape that the production is drawn for: `auto` (that of the size), `4:3`, `16:9` or `16:10`."),
    path_row(option_path, group_picture, "`glsl` (shaders, as without this option) or `fixed` (texture combiners)."),
    {.id = option_samples,
        .group = group_picture,
        .name = "--samples",
        .value = "N",
        .wants = "takes a number from 0 to 64",
        .help = "samples of antialiasing a pixel (0: none)",
        .page = "Antialiasing with at least _N_ samples a pixel; 0 is none.\n"
                "A driver with fewer ends the run with status 3 and a line that says how many it has: the software\n"
                "rasteriser has 4."},
    caps_row(option_caps, group_picture,
        "Shows the production as a lesser card would:\n"
        "`no-vbo`, `no-pbo`, `no-npot`, `no-compression`, `no-combine4`, `no-combine3` and `units=1` to `units=4`,\n"
        "with commas between them."),
    seed_row(option_seed, group_picture),
    {.id = option_tile,
        .group = group_picture,
        .name = "--tile",
        .value = "SIDE",
        .wants = "takes a number of pixels from 16 to 65535",
        .help = "tiles of at most SIDE pixels (the driver's limit)",
        .page = "Renders the picture in tiles of at most _SIDE_ pixels.\n"
                "Sizes above the driver's limit are rendered in tiles of that limit.\n"
                "Frames that draw into textures, or over the frame before, cannot be put together from\n"
                "tiles; this is said and ends the run."},
    {.id = option_window,
        .group = group_picture,
        .name = "--window",
        .help = "renders in a window, which shows it",
        .page = "Renders in a window, which shows the frames as they come.\n"
                "Closing it, or Escape in it, ends the run like Ctrl-C."},
    {.id = option_fps,
        .group = group_moments,
        .name = "--fps",
        .value = "N[/D]",
        .wants = rate_wants,
        .help = "frames a second (60); 23.976, 29.97, 59.94 and 119.88\n"
                "are 24, 30, 60 and 120 x 1000/1001",
        .page = "Frames a second; 60 unless given.\n"
                "23.976 (or 23.98), 29.97, 47.952, 59.94, 119.88 and 239.76 stand for 24, 30, 48, 60, 120 and 240\n"
                "times 1000/1001, as television counts; any other decimal number is taken exactly as it stands,\n"
                "with at most three decimals."},
    {.id = option_from,
        .group = group_moments,
        .name = "--from",
        .value = "TIME",
        .wants = moment_wants,
        .help = "begins at TIME; the frames before it are played unseen",
        .page = "Begins with the first frame at or after _TIME_.\n"
                "The frames before it are played unseen, so that effects are where they would be."},
    {.id = option_to,
        .group = group_moments,
        .name = "--to",
        .value = "TIME",
        .wants = moment_wants,
        .help = "ends before TIME",
        .page = "Ends before the first frame at or after _TIME_.\n"
                "A segment that begins there has no gap to this one, in pictures and in sound."},
    {.id = option_at,
        .group = group_moments,
        .name = "--at",
        .value = "TIME[,TIME...]",
        .wants = "takes up to 1000 times like 12.5, 1:02.25, 750f or 40%, with commas between them",
        .help = "only the frames on the screen at these moments",
        .page = "Stills: only the frames that are on the screen at these moments; 100% is the last frame."},
    {.id = option_loading,
        .group = group_moments,
        .name = "--loading",
        .value = "P[,P...]",
        .wants = "takes per cents from 0 to 100 with commas between them",
        .help = "the loading screen at P per cent instead",
        .page = "Stills of the loading screen at _P_ per cent instead of the production."},
    {.id = option_output,
        .group = group_output,
        .letter = 'o',
        .name = "--output",
        .value = "NAME",
        .wants = "takes a name like show.mp4, still.png, frames/%05d.png or -",
        .offers = offer_file,
        .help = "frames/%05d.png   a picture a frame, by its number\n"
                "still.png         the one picture of --at or --loading\n"
                "show.mp4          H.264 and AAC\n"
                "show.mkv          FFV1 and FLAC, without loss\n"
                "show.webm         VP9 and Opus\n"
                "-                 YUV4MPEG2 on standard output, silent",
        .page = "A name with one place for numbers, like _frames/%05d.png_,\n"
                "gives a picture for each frame, called by its number; folders are made.\n"
                "Another name in _.png_ takes the one picture of `--at` or `--loading`.\n"
                "\n"
                "_.mp4_ (H.264 and AAC), _.mkv_ (FFV1 and FLAC, without loss) and _.webm_ (VP9 and Opus) are made by\n"
                "`ffmpeg`(1), with the music from its start, cut or padded with silence to the sample.\n"
                "\n"
                "\"-\" writes YUV4MPEG2 to standard output.\n"
                "\n"
                "An .mp4 and a .webm have even sides: an odd one gets its last column or row twice."},
    {.id = option_png_level,
        .group = group_output,
        .name = "--png-level",
        .value = "N",
        .wants = "takes a number from 0 (not packed) to 12 (the smallest)",
        .help = "how hard pictures of -o are packed (1); more is slower",
        .page = "How hard the pictures of `-o` are packed: 0 (not at all) to 12 (the smallest); 1 unless given.\n"
                "6 makes files a tenth smaller than 1 and takes four times as long, 9 another twentieth and thirty\n"
                "times.\n"
                "The pixels are the same."},
    {.id = option_crf,
        .group = group_output,
        .name = "--crf",
        .value = "N",
        .wants = "takes a number from 0 (the best) to 63",
        .help = "quality of .mp4 (17) and .webm (24); less is better",
        .page
        = "The quality of an .mp4 (0 to 51; 17 unless given) or a .webm (0 to 63; 24); less is better and larger."},
    {.id = option_ffmpeg,
        .group = group_output,
        .name = "--ffmpeg",
        .value = "WORDS",
        .wants = "takes words for ffmpeg in one argument, like --ffmpeg \"-preset slow\"",
        .any_value = true,
        .help = "more options for ffmpeg, like \"-preset slow\"",
        .page = "More options for `ffmpeg`, in one argument, as a shell would read them (\"-preset slow\").\n"
                "They stand behind those of this program and win over them."},
    {.id = option_contact_sheet,
        .group = group_output,
        .name = "--contact-sheet",
        .value = "FILE",
        .wants = "takes the name of a .png file",
        .offers = offer_png_file,
        .help = "a PNG with stills (of --at, or 16) and their times",
        .page = "A PNG with the stills of `--at`, or with sixteen of the whole range, and their times."},
    {.id = option_shots,
        .group = group_output,
        .name = "--shots",
        .value = "DIR",
        .wants = "takes a directory",
        .offers = offer_folder,
        .help = "the stills of --at in the sizes of a release",
        .page = "Each still of `--at` at 1920x1080, at 400x225 below 64 KB, and at 160x90."},
    {.id = option_flashes,
        .group = group_output,
        .name = "--flashes",
        .help = "counts flashes; status 4 where they are too many",
        .page = "Counts luminance and red flashes by the rule WCAG 2.3.1 and lists the moments with more\n"
                "than three in a second, in which case the exit status is 4.\n"
                "This is no guarantee."},
    {.id = option_times,
        .group = group_output,
        .name = "--times",
        .value = "FILE",
        .wants = "takes the name of a file",
        .offers = offer_file,
        .help = "a report (JSON) of CPU and GPU time by frame and track",
        .page
        = "Writes CPU and GPU time by frame and track (counted from 1) as JSON, and prints the ten slowest moments."},
    {.id = option_commands,
        .group = group_output,
        .name = "--commands",
        .value = "FILE",
        .wants = "takes the name of a file, or -",
        .offers = offer_file,
        .help = "what is drawn, command by command, as text",
        .page
        = "Writes as text what is drawn in each frame, in order: targets, clears, and each mesh with its material,\n"
          "where it stands and from where it is seen; below the number and the time of the frame and the track.\n"
          "\"-\" is standard output."},
    {.id = option_compare,
        .group = group_output,
        .name = "--compare",
        .value = "DIR",
        .wants = "takes a directory",
        .offers = offer_folder,
        .help = "renders the numbered pictures of DIR anew and compares",
        .page = "Renders the frames whose numbered pictures lie in _DIR_ again, at their size, and compares.\n"
                "A picture of the same driver must be equal in every byte, one of another driver within a\n"
                "mean difference of 1 of 255.\n"
                "The new picture and the difference are left beside a picture that has changed."},
    {.id = option_yes,
        .group = group_other,
        .letter = 'y',
        .name = "--yes",
        .help = "replaces outputs that exist",
        .page = "Replaces outputs that exist."},
    {.id = option_no,
        .group = group_other,
        .letter = 'n',
        .name = "--no",
        .help = "keeps them: the run ends before it draws",
        .page = "Keeps them: where one exists, the run ends with status 1 before anything is drawn.\n"
                "Without either the user is asked; where standard input or standard error is no terminal it is as\n"
                "with `-n`."},
    {.id = option_verbose,
        .group = group_other,
        .letter = 'v',
        .name = "--verbose",
        .help = "tells the driver and what it has",
        .page = "Tells which driver draws, and what it has, as the player does."},
    {.id = option_quiet,
        .group = group_other,
        .letter = 'q',
        .name = "--quiet",
        .help = "tells problems only",
        .page = "Tells errors and warnings only."},
    help_row(option_help, group_other),
    version_row(option_version, group_other),
};

static_assert(rows_are_in_order(option_rows));
