// What a sandbox consists of: for the files that make it up, not for words.
#pragma once

#include "authoring/lua/sandbox_options.h"
#include "authoring/lua/tries.h"
#include "authoring/problem.h"

#include <cstddef>
#include <cstdint>
#include <lua.hpp>
#include <map>
#include <string>
#include <string_view>
#include <vector>

enum stop_reason : uint8_t {
    stop_none,
    stop_steps,  // too many instructions and charges
    stop_time,   // too much computing
    stop_memory, // all blocks together
    stop_text,   // one text
    stop_values  // handed over at once
};

struct sandbox {
    sandbox_options options;
    lua_State* L = nullptr;
    bool running = false;
    size_t memory = 0;               // bytes that Lua holds
    double last_look = 0.0;          // at the limits: seconds of computing
    bool wary = false;               // single instructions may take long: look more often
    uint64_t steps = 0;              // of this run
    uint64_t refusals = 0;           // of memory, in this run: each makes Lua collect all its garbage
    double begun = 0.0;              // seconds of computing before this run
    double excused = 0.0;            // seconds of this run that do not count
    stop_reason stopped = stop_none; // once set, the run ends, whatever catches errors
    stop_reason refused = stop_none; // why memory was refused last
    source_place refused_at;         // the line that asked for it
    source_place stopped_at;
    problem_list problems;
    uint64_t untold = 0; // problems beyond the list
    std::vector<std::string> files;
    std::map<std::string, std::vector<try_site>> tries; // by file
    std::vector<std::string> files_missing;
    std::vector<std::string> being_read;  // files that require has begun and not ended
    std::vector<std::string> known_names; // of fields and methods
    uint64_t random[4] = {};
    uint32_t lines_printed = 0;
};

sandbox& sandbox_of(lua_State* L);

// Ends the run: raises an error that no pcall keeps.
[[noreturn]] void stop_run(lua_State* L, stop_reason reason);

// Raises the error on the top of the stack once more when the run has been stopped; `status` is lua_pcall's.
void keep_stopped(lua_State* L, int status);

// The names that can be read where the running function stands: words, globals, and its locals.
std::vector<std::string> names_in_sight(lua_State* L);

// Pushes the table of words, or that of the source's own globals.
void push_words(lua_State* L);
void push_globals(lua_State* L);

// Compiles a text of the show (`is_library`: of the library) and pushes it as a function. Otherwise adds a problem and
// raises: a problem that has been told.
void load_source(lua_State* L, const std::string& name, std::string_view text, bool is_library);

// Reads a file of the show's folder, which is noted among the files. Returns what is wrong, or empty.
std::string read_source_file(sandbox& s, const std::string& name, std::string& text);

// Registry key of the marker that is raised when the problem has been told already.
void raise_told(lua_State* L);

// What stands in the words from the start.
void define_plain_words(lua_State* L); // plain_words.cpp
void define_table_words(lua_State* L); // table_words.cpp
void define_text_words(lua_State* L);  // text_words.cpp
void define_require(lua_State* L);     // source_files.cpp
