// One run of the whole player in a process of its own.
#pragma once

#include "scripted_sdl.h"

#include <initializer_list>
#include <string>
#include <string_view>
#include <vector>

constexpr scripted_click start_button = {318, 217};

// A show; but for a complete one its records need nothing of OpenGL.
struct scripted_show {
    uint32_t functions = 0;        // records of the production, besides its scene and its clip
    uint32_t notes = 0;            // children of the music element
    std::string music = "";        // the name of its file; empty: none
    bool has_loading = false;      // a loading screen
    std::string damaged = "";      // the name of a document that is none
    std::string empty_record = ""; // the name of a document with a record that lacks everything
    bool has_production = true;    // demo.xmlz
    uint32_t ways = 0;             // of drawing that the production comes to, by materials of one each
    bool is_complete = false;      // instead of all that: a record in every section of both documents
};

struct played_run {
    std::string calls; // lines, with a newline before the first; the last tells how the process ended
    int status;        // of the process
};

// Runs the player with the show as demo.dpk, a tone of one second as tone.ogg, the same with comments that leave
// their packet as odd.ogg, and `arguments` behind the program's name. `prepare` is called in the process before,
// null: nothing.
played_run play(const sdl_script& script, const scripted_show& show, const std::vector<std::string>& arguments = {},
    void (*prepare)() = nullptr);

// The lines that begin with one of these.
std::string lines_of(const std::string& calls, std::initializer_list<std::string_view> beginnings);

// What stands between the first line `from` and the next line `to`, both included; to the end without `to`.
std::string part_of(const std::string& calls, const std::string& from, const std::string& to);

// How many lines are exactly `line`.
size_t count_of(const std::string& calls, const std::string& line);
