// The words of the language: what a source may write to describe a show.
//
// Words that make something are table driven (show/kinds.h). A word that is used wrongly reports one line and
// goes on as if the field had not been given, so that one run finds many mistakes; only what leaves nothing to
// go on with ends the run.
#pragma once

struct lua_State;

// Makes the words known: to be run by sandbox_run_function, before the library and the source.
int add_words(lua_State* L);
