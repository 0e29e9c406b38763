// What one build leaves for the next: models, letters of fonts, pictures and music that have been read.
//
// Whoever builds again and again owns one and hands it to every build; each build without has one of its own. What is
// kept is good for as long as no file that it came from is another, which is asked of the file system once a build.
// Results are the same with and without. A file that was written just before it was read is read again, as nobody could
// tell whether it was written once more in the same moment.
#pragma once

#include "authoring/asset/font_import.h"
#include "authoring/asset/model_import.h"
#include "authoring/asset/music_check.h"
#include "authoring/asset/picture_import.h"

#include <array>
#include <cstdint>
#include <map>
#include <string>
#include <vector>

// What the file system knows of a file that is to be read.
struct read_stamp {
    std::string path;
    bool is_there = false;
    bool is_calm = false; // it had not been written for a while when this was taken
    uint64_t device = 0;
    uint64_t inode = 0;
    uint64_t size = 0;
    int64_t written = 0; // nanoseconds
    int64_t changed = 0;
};

read_stamp stamp_of(const std::string& path);

// What is kept of something that was read, and until when.
struct kept_files {
    std::vector<read_stamp> stamps; // of all that it came from
    uint64_t looked = 0;            // the build that made sure of them last
};

struct kept_part {
    imported_model model;
    uint64_t looked = 0; // the build that used it last
};

struct kept_model {
    kept_files from;
    model_file file;
    std::map<std::string, kept_part> parts; // by their options
};

struct kept_font {
    kept_files from;
    imported_font letters;
};

struct kept_picture {
    kept_files from;
    imported_picture picture;
};

struct kept_music {
    kept_files from;
    music_file_facts facts;
};

// A black picture to be rendered to, which comes from no file.
struct kept_black_picture {
    std::vector<uint8_t> bytes;
    uint64_t looked = 0; // the build that used it last
};

struct kept_work {
    uint64_t build = 0;                                     // number of the one under way
    std::map<std::string, kept_model> models;               // by path
    std::map<std::string, kept_font> fonts;                 // by path, options and letters
    std::map<std::string, kept_picture> pictures;           // by path and what was asked for
    std::map<std::string, kept_music> music;                // by path
    std::map<std::array<uint32_t, 2>, kept_black_picture> targets; // by size
};

// References to what is kept stay good until the build ends.
void begin_build(kept_work& work);

// Drops what this build did not use, unless it was `broken`: then the next one will want it again.
void end_build(kept_work& work, bool broken);

// open_model, take_model, import_font and check_music, but for what is kept. Those that give a pointer give null with
// the reason in `problem`.
const model_file& keep_model(kept_work& work, const std::string& path);
const imported_model* keep_part(
    kept_work& work, const std::string& path, const model_options& options, std::string& problem);
const imported_font* keep_font(kept_work& work, const std::string& path, const font_options& options,
    const std::vector<bool>& wanted, std::string& problem);
const music_file_facts* keep_music(kept_work& work, const std::string& path, std::string& problem);

// The picture that is kept of a file as `wish` has it, a text that tells it from others of that file; null: there is
// none, and keep_picture takes one.
const imported_picture* find_picture(kept_work& work, const std::string& path, const std::string& wish);
const imported_picture& keep_picture(
    kept_work& work, const read_stamp& from, const std::string& wish, imported_picture picture);

// target_picture, but for what is kept.
const std::vector<uint8_t>& keep_target(kept_work& work, std::array<uint32_t, 2> size);
