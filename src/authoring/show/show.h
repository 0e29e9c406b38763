// A show while its source runs, and what comes of it.
#pragma once

#include "authoring/problem.h"
#include "authoring/show/authored.h"
#include "authoring/show/kept_work.h"
#include "authoring/show/things.h"
#include "authoring/show/tried.h"

#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <string>
#include <unordered_set>
#include <vector>

// Names in the order in which they came, each once; empty ones, too.
struct distinct_names {
    std::vector<std::string> in_order;
    std::unordered_set<std::string> known; // the same
};

constexpr uint32_t authored_document_count = 2; // the show, the loading screen

// What a source has said so far.
struct show_description {
    std::string folder; // of the source, ends in "/"; empty: the working directory
    std::string title;
    std::string music; // a file of the folder; empty: none
    source_place music_place;
    double bpm = 0; // 0: not said
    double beats_per_bar = 4;
    double aspect = 4.0 / 3; // of the screens that it is made for
    bool has_units = false;  // a time was said with its unit
    bool keep_order = false;
    std::vector<std::unique_ptr<thing>> things;                             // in the order in which they were made
    kept_work own_work;
    kept_work* kept = nullptr; // what models, fonts, pictures and music are read into; null: own_work
    int compression = 9;       // of documents and meshes, as zlib has it: 0 to 9
    distinct_names files_wanted; // below the folder: looked for, whether they are there or not
    std::vector<std::vector<const thing*>> tracks[authored_document_count]; // clips of each track {}, in drawing order
};

// An entry of the pack that is to come.
struct pack_entry {
    std::string name;
    std::vector<uint8_t> bytes; // as they stand in the pack
    std::string file;           // that it comes from; empty: none
};

// What a build took and made.
struct built_show {
    std::unique_ptr<authored_document> documents[authored_document_count]; // null: there is none
    std::vector<pack_entry> entries;                                       // documents first
    std::vector<std::string> files_taken; // below the folder: sources, assets, the music
    std::vector<std::string> files_wanted; // that were looked for as well, and not taken: most are not there
    std::string music;                    // the music's file, below the folder; empty: none
    source_place music_place;             // where the source says so
    double music_seconds = 0;             // 0: none, or none that plays
    std::string title;
    double bpm = 0; // 0: not said
    double beats_per_bar = 4;
    std::vector<tried_call> tried;        // in the order of the files and their texts
    problem_list problems;
};

// Adds a name that is not known yet.
void add_name(distinct_names& names, const std::string& name);

// Tells that a file is looked for: once it is there, or is another, the show may be another. Names that lead out of the
// folder are passed over.
void want_file(show_description& show, const std::string& file);

// What files are read into, each once, however often it is wanted.
kept_work& work_of(show_description& show);

// Adds a thing to the show.
thing* add_thing(show_description& show, thing_value value, const source_place& place, uint32_t document);

void add_problem(problem_list& problems, problem_severity severity, const source_place& place, const std::string& text);
bool has_errors(const problem_list& problems);

// Makes documents and entries of a description. Problems that it finds are added; with errors among them the
// entries are not to be used.
void lower_show(show_description& show, built_show& built);

// Looks only at the files that a description names: for sources that have errors of their own.
void look_at_files(show_description& show, built_show& built);

// The bytes of a pack of these entries.
std::vector<uint8_t> pack_bytes(const std::vector<pack_entry>& entries);
