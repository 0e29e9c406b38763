// The sandbox: in it a show's source runs, a Lua 5.4 program from whoever wrote it.
//
// It reads the show's own folder and the library that is laid into the program, and reaches nothing else: no
// files, no clock, no environment, no bytecode. Steps, memory and computing time are bounded. The same source
// computes the same on every run: tables are walked in sorted order, random numbers are ours, no text shows an
// address, no locale is asked.
//
// A sandbox belongs to one thread. What runs in it raises Lua errors, which are C++ exceptions here: a word may
// hold std::string and the like when it raises one, for they unwind. Words are C functions; whoever defines them
// includes lua.hpp.
#pragma once

#include "authoring/lua/sandbox_options.h"
#include "authoring/lua/tries.h"
#include "authoring/problem.h"

#include <cstddef>
#include <cstdint>
#include <exception>
#include <memory>
#include <span>
#include <string>
#include <string_view>
#include <vector>

struct lua_State;
struct sandbox; // one Lua state with its limits, problems and files

struct close_sandbox {
    void operator()(sandbox* s) const;
};
using owned_sandbox = std::unique_ptr<sandbox, close_sandbox>;

// A fresh sandbox with the words of Lua that are safe. Null only when the system has no memory at all.
owned_sandbox sandbox_open(const sandbox_options& options);

// Runs a file of the folder ("show.lua"). False when it ended early; what went wrong is then a problem more.
// The words may have reported errors although it is true.
bool sandbox_run_file(sandbox& s, const std::string& name);

// The same for a text that stands in no file; `name` is its file in problems.
bool sandbox_run_text(sandbox& s, const std::string& name, std::string_view text);

// Runs a text of the library, whose globals become words of the language. False and a problem when it fails.
bool sandbox_run_library(sandbox& s, std::string_view name);

// Runs a function of ours with the sandbox's protection: `f` gets the state with nothing on its stack, and may raise
// errors. For defining words before a source runs, and for what is done with its values afterwards.
bool sandbox_run_function(sandbox& s, int (*f)(lua_State*));

// All problems so far, in the order in which they were found; not more than max_sandbox_problems, and then a last one
// that says how many more there were.
problem_list sandbox_problems(const sandbox& s);
constexpr size_t max_sandbox_problems = 200;

// The show's own files that were read, below its folder, in the order of reading: what to watch for changes.
const std::vector<std::string>& sandbox_files(const sandbox& s);

// Those that were looked for below the folder and not there, or could not be read: once they are, the source is another.
const std::vector<std::string>& sandbox_missing_files(const sandbox& s);

// Instructions of the last run, charges among them. The limits of steps and time hold for each run.
uint64_t sandbox_steps(const sandbox& s);

// ---- for words: C functions that run in a sandbox ------------------------------------------------------------

// The options' user pointer.
void* sandbox_user(lua_State* L);

// The line of the show's own source that is being run: of the innermost function that is neither C nor of the library.
source_place current_place(lua_State* L);

// The calls of try in a file of the show that was run, as its text has them.
std::span<const try_site> tries_of_file(lua_State* L, const std::string& file);

// Adds a problem and goes on. The text has no place and ends with a full stop.
void report(lua_State* L, problem_severity severity, const source_place& place, std::string text);

// Ends the source, unless it asked for that with pcall: an error at the current place. The text as in report.
[[noreturn]] void raise_error(lua_State* L, const std::string& text);

// Counts `steps` more, for work that grows with what the source gave; raises when that was too much.
void charge_steps(lua_State* L, uint64_t steps);

// Computing that is not the source's own (a large model is read) does not count while this lives.
struct excused_time {
    explicit excused_time(lua_State* state);
    ~excused_time();
    excused_time(const excused_time&) = delete;
    excused_time& operator=(const excused_time&) = delete;

private:
    lua_State* L;
    double begun; // seconds
};

// Random numbers start anew. Equal seeds give equal numbers on every machine (xoshiro256**).
void set_random_seed(lua_State* L, uint64_t seed);

// The next random number, 0 <= n < 1: what math.random() gives.
double random_number(lua_State* L);

// Defines a global word. `name` is known to "did you mean" from then on.
void define_word(lua_State* L, const char* name, int (*word)(lua_State*));

// The same for the value on the top of the stack, which is popped.
void define_value(lua_State* L, const char* name);

// Reading a name that the table at `index` lacks becomes an error that says so, with near names of it; `what` is what
// a reader calls the table ("math", "a text", "texture"). The table gets a metatable of its own for that.
void make_strict(lua_State* L, int index, const char* what);

// A name that fields and methods may have, for "did you mean" where Lua only knows that something is nil.
void add_known_name(lua_State* L, const char* name);

// What a reader calls the value at `index`, for messages: "a number", "a text", "a table", "nothing" (nil), or, of
// objects of ours (a metatable with "__name"), "a scene".
std::string value_kind(lua_State* L, int index);

// The text of a value as tostring gives it: numbers in the C locale, tables and functions numbered ("table: 1").
std::string value_text(lua_State* L, int index);

// Walks a table in its sorted order: the keys, numbers by value, then texts by their bytes, then false and true, are
// put into a new list on the top of the stack; returns how many. Raises for keys without an order (tables, functions).
size_t push_sorted_keys(lua_State* L, int index);

// A C function that may throw what is no Lua error (no memory): define_word(L, "mesh", guarded<mesh_word>).
void raise_foreign_error(lua_State* L, const char* what);
template <int (*word)(lua_State*)> int guarded(lua_State* L)
{
    try {
        return word(L);
    } catch (const std::exception& e) {
        raise_foreign_error(L, e.what());
        return 0;
    }
}
