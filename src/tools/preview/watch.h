// Which of a show's files have been saved: inotify on the folders that hold them.
//
// A file counts as saved when its writer closes it or another file is moved to its name: never half of a line. Editors
// that write beside and rename are seen, and so are files and folders that are not there yet, links and what they point
// at, and folders that are replaced as a whole. A file that is removed is not told: most are about to be put back.
// Where the system has no watches left, the files' times are looked at once a second instead, and one line says so.
#pragma once

#include <cstdint>
#include <map>
#include <string>
#include <vector>

// What is known of a file from the outside: another one of these, and it is another content.
struct file_stamp {
    bool exists = false;
    uint64_t device = 0;
    uint64_t inode = 0;
    uint64_t size = 0;
    int64_t changed_ns = 0;

    bool operator==(const file_stamp&) const = default;
};

// A folder with the names in it that matter (watched_name).
struct watched_folder {
    std::string path;
    std::map<std::string, uint8_t> names;
};

struct file_watch {
    int descriptor = -1;
    bool looks = false;                    // at the times of files: inotify does not do it
    std::map<int, watched_folder> folders; // by inotify's number
    std::map<std::string, file_stamp> files;
    double changed_at = 0;   // steady seconds of the last change that was seen and not yet told; 0: none
    double first_change = 0; // of the first such
    double noticed = 0;      // when the change came that was told last
    double looked_at = 0;    // steady seconds
    int64_t told_ns = 0;     // when it was told, as files' times count
};

// False: `problem` is one sentence. (It goes on by looking where inotify fails.)
[[nodiscard]] bool watch_open(file_watch& w, std::string& problem);

// These files, and the folders in which they are or would be, from here on. One that was not among them before and was
// saved after the last change was told counts as changed: whoever built has read what it was before.
void watch_files(file_watch& w, const std::vector<std::string>& paths);

// Whether some of them were saved, and nothing more came for `quiet` seconds (or too long something came). Never waits.
bool watch_poll(file_watch& w, double now, double quiet = 0.004);

void watch_close(file_watch& w);
