// What the words of one run share.
#pragma once

#include "authoring/show/show.h"

#include <cstdint>
#include <map>
#include <set>
#include <span>
#include <utility>

using try_place = std::pair<std::string, uint32_t>; // a file, and a line or a site of it

// The calls of try.
struct try_calls {
    std::span<const try_override> overrides;
    std::map<try_place, tried_call> made;      // by site
    std::map<try_place, size_t> last_of_line;  // by line: the place, among the sites of the line, of the one called last
    std::set<try_place> told;                  // lines whose calls have no slider, of which that was said
};

// What the words of one run work on: the sandbox's user pointer.
struct word_state {
    show_description* show;
    uint32_t document = 0;                                 // that is being described: 1 inside loading()
    uint32_t nameless = 0;                                 // shapes without a name so far
    void (*print)(void* user, const char* line) = nullptr; // takes what the source prints; null: dropped
    void* print_user = nullptr;
    try_calls tries = {};
};
