// What an entry of a pack is, or a file: a document, a mesh, a picture, music, another pack; a model or a font, from
// which sources make meshes.
//
// Everything is told that can be told without playing; what is wrong is a problem, what is allowed and perhaps not
// meant a note. Both are texts that begin with a verb, to be put behind the name ("is damaged.").
#pragma once

#include "authoring/asset/font_import.h"
#include "authoring/asset/model_import.h"
#include "model/mesh_bytes.h"

#include <array>
#include <cstdint>
#include <string>
#include <vector>

struct pack_file;

enum inspected_kind : uint8_t {
    inspected_other, // nothing that the player knows: its first bytes are told
    inspected_document,
    inspected_mesh,
    inspected_picture,
    inspected_music,
    inspected_model, // a file alone: packs hold meshes
    inspected_font,  // the same
    inspected_pack
};

struct inspected_section {
    std::string name; // "materials", as messages name it
    uint32_t records;
};

struct inspected_document_facts {
    std::string title; // the document element's name
    std::string music; // empty: none
    std::vector<inspected_section> sections;
    uint32_t tracks;
    uint32_t clips;
    uint64_t ticks; // the end of the last clip
};

struct inspected_mesh_facts {
    uint32_t vertices;
    uint32_t coordinate_sets;
    uint32_t triangles;
    uint32_t unused_vertices;  // of no triangle
    uint32_t empty_triangles;  // with one vertex twice
    std::array<float, 3> low;  // corners of the box around all vertices
    std::array<float, 3> high; // both 0 without vertices
};

enum alpha_use : uint8_t { alpha_none, alpha_opaque, alpha_on_or_off, alpha_soft };

struct inspected_level {
    std::string name;
    uint32_t width; // pixels
    uint32_t height;
};

struct inspected_picture_facts {
    std::string format; // "PNG"; empty: by its content (TGA)
    uint32_t width;     // pixels
    uint32_t height;
    uint32_t components; // 3 or 4, as decoded
    alpha_use alpha;
    std::vector<inspected_level> levels; // ready-made ones that the player takes
};

struct inspected_music_facts {
    double seconds; // as the player plays it
    uint32_t samples_per_second;
    uint32_t channels;
};

struct inspected_model_facts {
    std::string format; // as its reader calls it; may be empty
    model_left_out left_out;
    uint32_t triangles_dropped; // for want of an area, or of finite positions
    std::vector<model_part> parts;
    uint32_t meshes;   // that it becomes; these are 0 where a problem keeps it from that
    uint32_t vertices; // of them together
    uint32_t triangles;
    uint32_t coordinate_sets;
    std::array<float, 3> low; // corners of their box
    std::array<float, 3> high;
    std::vector<std::string> files; // that it names and that are read with it
};

struct inspected_font_facts {
    font_facts file;                  // of its first face
    std::vector<std::string> lacking; // letters of a document's font, UTF-8
};

struct inspection {
    std::string name;
    inspected_kind kind;
    uint64_t size;                     // bytes
    bool in_envelope;                  // as documents and meshes of a pack are
    uint64_t unfolded;                 // bytes in the envelope; 0: none
    uint32_t entries;                  // of a pack
    std::string first_bytes;           // at most 64, of what is nothing else
    inspected_document_facts document; // these by kind, the others stay empty
    inspected_mesh_facts mesh;
    inspected_picture_facts picture;
    inspected_music_facts music;
    inspected_model_facts model;
    inspected_font_facts font;
    std::vector<std::string> problems;
    std::vector<std::string> notes;
};

// Looks at an entry of a pack. False, with one line in `problem`, when there is none of that name or it cannot be
// read.
[[nodiscard]] bool inspect_entry(
    const pack_file* pack, const std::string& name, inspection& found, std::string& problem);

// The same for a file of up to 1 GiB; ready-made levels are looked for beside it.
[[nodiscard]] bool inspect_file(const std::string& path, inspection& found, std::string& problem);

// Lines for people, each ending in a newline, and the same as one JSON object.
std::string inspection_text(const inspection& found);
std::string inspection_json(const inspection& found);
