// Shows of the repository, built from edited sources.
#pragma once

#include "tools/preview/show_build.h"

#include <string>
#include <vector>

// An edit of a file of a show's source: `from`, which must be there, becomes `to`, once.
struct source_edit {
    std::string file;
    std::string from;
    std::string to;
};

// A production's folder ("first-light"), built with edits of its files. What cannot be built fails the test.
show_build built_from(const std::string& production, const std::vector<source_edit>& edits);
