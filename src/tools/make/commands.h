// What brimlow-make does: a function a command.
//
// Each tells what it does on standard output and what went wrong as lines on standard
// error, with names as they may be shown, and gives the exit status.
#pragma once

#include "options.h"

enum exit_status : int { exit_done = 0, exit_failed = 1, exit_usage = 2 };

// A new show: new_show.cpp
exit_status run_new(const make_options& options);

// Shows: shows.cpp
exit_status run_build(const make_options& options);
exit_status run_check(const make_options& options);

// Packs back into source: open.cpp
exit_status run_open(const make_options& options);

// Looks at shows, packs and files: looks.cpp
exit_status run_diff(const make_options& options);
exit_status run_graph(const make_options& options);
exit_status run_inspect(const make_options& options);

// Packs: packs.cpp
exit_status run_list(const make_options& options);
exit_status run_extract(const make_options& options);
exit_status run_add(const make_options& options);
exit_status run_create(const make_options& options);
exit_status run_remove(const make_options& options);

// Envelopes: envelopes.cpp
exit_status run_envelope(const make_options& options);

// False, with a line, when a new pack at `path` would replace what it should not: what is no pack ever, and a pack
// without `force`.
bool may_become_pack(const std::string& path, bool force);

// A line where the player would not find a pack of this name.
void warn_of_unfound_name(const std::string& path);

// One line, "Error: BEFORE NAME BEHIND", with the name as it may be shown; exit_failed.
exit_status fail(const char* before, const std::string& name, const std::string& behind);

// The same for a whole sentence, which may begin with a capital.
exit_status fail_with(const std::string& sentence);
