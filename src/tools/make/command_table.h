// The commands of brimlow-make and their options: one row each, from which the command line is read and --help,
// the manual page and the completion of bash are written.
//
// A new command is a row here and a case in main.cpp (the compiler names it), its options are rows of their
// own; then "brimlow-pages ." brings the written pages up to date.
#pragma once

#include "tools/common/option_row.h"

#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

// Row n is command n: the order is that of --help and of the manual page.
enum make_command : int32_t {
    command_new,
    command_build,
    command_check,
    command_open,
    command_diff,
    command_graph,
    command_list,
    command_inspect,
    command_extract,
    command_add,
    command_create,
    command_remove,
    command_wrap,
    command_unwrap,
    command_count // none: the program as a whole
};

enum command_group : int32_t { group_shows, group_packs, command_group_count };

// Texts may have several lines.
struct command_row {
    make_command id;
    command_group group;
    const char* name;
    const char* arguments;  // as the pages call them, capitals for what is to be put in
    size_t least;           // arguments that are no options
    size_t most;            // any_number: as many as one likes
    const char* wants;      // what is said where they are too few or too many
    const char* other_name; // by which some call it: it is not known, but understood; null: none
    value_offer offers[3];  // to a shell for the first argument, the second, and each behind it
    const char* summary;    // for --help of the program: one line
    const char* help;       // for --help, before the options
    const char* help_below; // behind them; empty: nothing
    const char* page;       // for the manual page: `bold`, _italic_; an empty line parts paragraphs
};

constexpr size_t any_number = SIZE_MAX;

extern const command_row command_rows[command_count];

enum make_option : int32_t {
    make_force,
    make_prefix,
    make_directory,
    make_output,
    make_textures,
    make_bpm,
    make_beats,
    make_first_beat,
    make_json,
    make_help,
    make_version
};

// All options: the group of each is its command, command_count for those of the program. An option means the same
// in each command that has it; help is known to all of them.
std::span<const option_row> make_option_rows();

// Those that a command knows, help among them; of the program itself with command_count.
std::vector<option_row> options_of(make_command command);
