// What the words of one run share.
#pragma once

#include "authoring/show/show.h"

#include <cstdint>

// What the words of one run work on: the sandbox's user pointer.
struct word_state {
    show_description* show;
    uint32_t document = 0;                                 // that is being described: 1 inside loading()
    uint32_t nameless = 0;                                 // shapes without a name so far
    void (*print)(void* user, const char* line) = nullptr; // takes what the source prints; null: dropped
    void* print_user = nullptr;
};
