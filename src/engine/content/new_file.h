// A file that is written beside the place it is meant for, and takes that place when it
// is whole. Until then what was there stays as it is; when the new file is dropped, or
// the process is asked to end, nothing of it is left.
//
// Who writes a file says how in its rules: a pack is the only copy of what it holds, a
// rendered picture can be made again at any time.
//
// Functions give null when all is well, or the reason, to be put behind a name and a
// colon; it holds until the thread's next call. Several threads may write a file each,
// where no rules hold signals back.
#pragma once

#include <csignal>
#include <cstddef>
#include <string>
#include <sys/types.h>

struct new_file_rules {
    mode_t permissions = 0600;        // where nothing is replaced, less the process's mask
    bool may_replace = false;         // the target may be there when the file takes its place
    bool devices_as_they_are = false; // a device or pipe at the target is written itself
    bool signals_wait = false;        // until the file is kept or dropped, see below
    bool safe_on_disk = false;        // before it replaces another
};

// Where signals wait, those that end a process (hang-up, interrupt, quit, terminate, and
// the one for a file that grows too large) are held back from new_file_open until the file
// is kept or dropped; a write that finds one waiting fails with "it was interrupted", and
// the signal acts as soon as the file is dropped.
struct new_file {
    bool open = false;     // neither kept nor dropped yet
    int descriptor = -1;   // open for writing; below 0: closed
    bool replaces = false; // something was at the target
    new_file_rules rules;
    std::string target;    // behind symbolic links
    std::string temporary; // where the file is until it is kept: NAME.PID-N.part; empty: a device
    sigset_t held = {};    // the signals that are held back
};

// Begins a file that is meant for `path`; a symbolic link there is followed, and what it
// points to is replaced. One that replaces another gets its permissions and its owner
// where that is allowed. Refused: what exists, unless it may be replaced; what is no plain
// file, unless devices are written as they are; what the user may not write into.
[[nodiscard]] const char* new_file_open(new_file& file, const std::string& path, const new_file_rules& rules);

// The name under which an open file is written: its temporary one, or the device's.
const std::string& new_file_path(const new_file& file);

// Appends `size` bytes.
[[nodiscard]] const char* new_file_write(new_file& file, const void* bytes, size_t size);

// Puts the file into its place. With a reason the file is dropped.
[[nodiscard]] const char* new_file_keep(new_file& file);

// Removes it again. Does nothing for a file that is not open.
void new_file_drop(new_file& file);

// All of it at once: a file of these bytes.
[[nodiscard]] const char* new_file_put(
    const std::string& path, const new_file_rules& rules, const void* bytes, size_t size);
