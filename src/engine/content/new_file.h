// A file that is written beside the place it is meant for, and takes that place when it
// is whole. Until then what was there stays as it is; when the new file is dropped, or
// the process is asked to end, nothing of it is left.
//
// Signals that end a process (hang-up, interrupt, quit, terminate, and the one for a file
// that grows too large) are held back from new_file_open until the file is kept or
// dropped; a write that finds one waiting fails with "it was interrupted", and the signal
// acts as soon as the file is dropped.
//
// Functions give null when all is well, or the reason, to be put behind a name and a
// colon; it holds until the next call.
#pragma once

#include <csignal>
#include <cstddef>
#include <string>

struct new_file {
    bool open;             // neither kept nor dropped yet
    int descriptor;        // of the file beside; below 0: closed
    bool replaces;         // something was at the target
    bool may_replace;      // the target may be there when the new file takes its place
    std::string target;    // behind symbolic links
    std::string temporary; // where the file is until it is kept
    sigset_t held;         // the signals that are held back
};

// Begins a file that is meant for `path`; a symbolic link there is followed, and what it
// points to is replaced. A new file gets the permissions 0600, less the process's mask;
// one that replaces another gets those of the other, and its owner where that is allowed.
// Refused: what exists, unless it may be replaced; what is no plain file; what the user
// may not write into.
[[nodiscard]] const char* new_file_open(new_file& file, const std::string& path, bool may_replace);

// Appends `size` bytes.
[[nodiscard]] const char* new_file_write(new_file& file, const void* bytes, size_t size);

// Puts the file into its place; where it replaces another, not before its bytes are safe
// on the disk. With a reason the file is dropped.
[[nodiscard]] const char* new_file_keep(new_file& file);

// Removes it again. Does nothing for a file that is not open.
void new_file_drop(new_file& file);
