// The options of brimlow-render: one row each, from which the command line is read and
// --help, the manual page and the completion of bash are written.
//
// A new option is a row here and a case in options.cpp (the compiler names it); then
// "brimlow-pages ." brings the written pages up to date.
#pragma once

#include "tools/common/option_row.h"

// Row n is option n: the order is that of --help and of the manual page.
enum option_id : int32_t {
    option_size,
    option_aspect,
    option_path,
    option_samples,
    option_caps,
    option_seed,
    option_tile,
    option_window,
    option_fps,
    option_from,
    option_to,
    option_at,
    option_loading,
    option_output,
    option_png_level,
    option_crf,
    option_ffmpeg,
    option_contact_sheet,
    option_shots,
    option_flashes,
    option_times,
    option_commands,
    option_compare,
    option_yes,
    option_no,
    option_verbose,
    option_quiet,
    option_help,
    option_version,
    option_count
};

enum option_group : int32_t { group_picture, group_moments, group_output, group_other, option_group_count };

extern const option_row option_rows[option_count];
