// Entries of the pack that is to come: files of the author, read once each.
#pragma once

#include "authoring/show/lowering.h"

// A picture that a document names.
struct taken_picture {
    std::string entry;       // its name in the pack
    uint32_t components = 3; // 3 or 4
};

// Puts a picture of the show's folder into the pack, with its levels beside it. `made` is for messages.
taken_picture take_picture(lowering& l, const thing& made, const image_thing& image);

// Puts the files that the source names as they are into the pack: behind all others.
void take_entries(lowering& l);

// A black picture to be rendered to.
taken_picture take_target(lowering& l, std::array<uint32_t, 2> size);

// Puts a mesh's content into the pack and returns the entry's name, something like `wish`.
std::string take_mesh(lowering& l, const std::vector<uint8_t>& content, const std::string& wish);

// The file's name without folders and ending: "models/spider.obj" is "spider".
std::string stem_of(const std::string& file);

// The path of a file that a source names, below `folder`. Empty, with a sentence in `fault`, where it leads out of
// the folder or is not there.
std::string path_in_folder(const std::string& folder, const std::string& file, std::string& fault);

// "a JPEG picture, ...": what a file is by its first bytes and what to write for it, when it is known and no `wanted`
// ("model", "picture", "font", "music"); else empty.
std::string other_kind_of_file(const std::string& path, const std::string& file, const std::string& wanted);

// Reads a whole file. False, and a problem, when that fails.
bool read_file(lowering& l, const std::string& path, const source_place& place, std::vector<uint8_t>& bytes);
