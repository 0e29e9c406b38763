// Which of a show's files have been saved: inotify on the folders that hold them.
//
// A file counts as saved when its writer closes it or another file is moved to its name: never half of a line. Editors
// that write beside and rename are seen, and files that are not there yet.
#pragma once

#include <map>
#include <set>
#include <string>
#include <vector>

struct file_watch {
    int descriptor = -1;
    std::map<int, std::string> folders; // by inotify's number
    std::set<std::string> files;        // whole paths
    double changed_at = 0;              // steady seconds of the last change that was seen and not yet told; 0: none
};

[[nodiscard]] bool watch_open(file_watch& w, std::string& problem);

// These files, and the folders in which they are or would be, from here on.
void watch_files(file_watch& w, const std::vector<std::string>& paths);

// Whether some of them were saved, and nothing more came for `quiet` seconds. Never waits.
bool watch_poll(file_watch& w, double now, double quiet = 0.008);

void watch_close(file_watch& w);
