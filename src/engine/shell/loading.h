// Loading: makes what the records of a document need while they are read.
//
// One step reads one record and makes its pictures, OpenGL objects and programs;
// between steps the caller may draw whatever it likes. Needs a current context, and
// the cosine and maze tables. Lines: the first twenty warnings of a document go to
// standard error as they come, and at its end how many more there are; a fatal problem
// is left in the loader for the caller to print.
#pragma once

#include "content/xml.h"
#include "model/capabilities.h"
#include "model/decode_ahead.h"
#include "model/document_reader.h"
#include "model/record_handover.h"
#include "shell/shared_programs.h"

#include <cstdint>
#include <string>
#include <vector>

// What is to be told of a record while it is made, beside what the reader found: why a program does not build.
struct loading_remark {
    uint32_t section;
    uint32_t record;  // from 1
    bool own_program; // its author's, not one that was generated
    std::string text; // lines, each with its end
};

// What a document is made for.
struct loading_options {
    gl_caps caps;
    texture_format_table formats;
    bool glsl;                           // materials get programs
    bool first_images;                   // dynamic textures get their picture of time 0 (the production)
    bool shader_log = false;             // programs that do not build are explained on standard error
    uint32_t workers = decode_worker_count(); // that unpack entries beforehand, at the most; 0: none
    record_handover* handover = nullptr; // not owned; a document that is loaded again takes from it what stays the same
    std::vector<loading_remark>* remarks = nullptr; // takes what is told; then nothing is written to standard error
};

struct document_loader {
    owned_decode_ahead ahead; // unpacks entries beside the reader; null: the reader does it alone
    document_reader reader;
    loading_options options;
    program_list programs; // that the document has built
    size_t problems_seen;  // of the reader's: printed, or passed over
    std::string error;    // the fatal line; empty while all is well
};

// Prepares to load the document of a tree into `target` (document_create).
void document_loader_begin(document_loader& loader, document& target, const xml_node* root, const pack_file* pack,
    const loading_options& options);

// Reads and makes one record, or finishes a section.
read_step document_loader_step(document_loader& loader);

// Loads the rest of a document. False: loader.error holds the line.
bool document_loader_run(document_loader& loader);

// Creates `target` with the timeline `t`, which becomes the document's, and loads the pack's
// entry `name` into it, whole. A document that the pack lacks stays empty and leaves `tree`
// null; else `tree` holds its elements. False: `problem` holds the fatal line.
bool load_document(const pack_file* pack, const char* name, timeline* t, const loading_options& options,
    document& target, owned_tree& tree, std::string& problem);

// Deletes all OpenGL objects of a document (textures, buffers, programs and their shaders) and
// forgets their names; the states of its dynamic textures go with them. Twice is harmless. Needs the
// context that they were made in. Of what is still in use there, textures and buffers are unbound
// at once, and a program goes when another one is made current: nothing may be drawn with the state as
// it stands any more, and whoever remembers what is bound has to forget it.
void release_document_gl(document& d);

// Frees the memory of a document: the states of its mesh effects and dynamic textures, its
// tables and its timeline. OpenGL objects stay until the context goes, and with them the state
// as it stands. So goes the loading screen, as the first meshes of the show may be drawn with
// what it left. A second call does nothing.
void unload_document_memory(document& d);

// Both. A second call does nothing. Who goes on drawing in this context must forget the names
// that it knows (forget_objects): the driver gives them again.
void unload_document(document& d);
