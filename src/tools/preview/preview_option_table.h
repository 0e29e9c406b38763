// The options of brimlow-preview: one row each, from which the command line is read and --help, the manual page and the
// completion of bash are written.
//
// A new option is a row here and a case in preview_options.cpp (the compiler names it); then "brimlow-pages ." brings
// the written pages up to date.
#pragma once

#include "tools/common/option_row.h"

// Row n is option n: the order is that of --help and of the manual page.
enum preview_option : int32_t {
    preview_option_size,
    preview_option_aspect,
    preview_option_path,
    preview_option_caps,
    preview_option_seed,
    preview_option_fps,
    preview_option_at,
    preview_option_paused,
    preview_option_mute,
    preview_option_window,
    preview_option_fullscreen,
    preview_option_control,
    preview_option_help,
    preview_option_version,
    preview_option_count
};

enum preview_group : int32_t { preview_group_picture, preview_group_time, preview_group_window, preview_group_count };

extern const option_row preview_option_rows[preview_option_count];
