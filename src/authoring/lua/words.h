// The words of the language: what a source may write to describe a show.
//
// Words that make something are table driven (show/kinds.h). A word that is used wrongly reports one line and
// goes on as if the field had not been given, so that one run finds many mistakes; only what leaves nothing to
// go on with ends the run.
#pragma once

#include "authoring/show/show.h"

struct lua_State;

// What the words of one run work on: the sandbox's user pointer.
struct word_state {
    show_description* show;
    uint32_t document = 0; // that is being described: 1 inside loading()
    uint32_t nameless = 0; // shapes without a name so far
    void (*print)(void* user, const char* line) = nullptr; // takes what the source prints; null: dropped
    void* print_user = nullptr;
};

// Makes the words known: to be run by sandbox_run_function, before the library and the source.
int add_words(lua_State* L);
