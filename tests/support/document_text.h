// Texts of documents, the packs that carry them, and a document read from both.
//
// A document_text holds what stands inside each of the fifteen sections; the snippets
// below are valid records that tests change by a word. Packs are temporary files.
#pragma once

#include "content/pack.h"
#include "content/xml.h"
#include "model/document_reader.h"

#include <cstdint>
#include <cstdio>
#include <string>
#include <vector>

// ---- texts ----------------------------------------------------------------------

struct document_text {
    // The children of each section, by its number; [0] unused. Of a timeline of "" and scenes of ""
    // one clip of one empty scene is written, which nobody warns of; one of " " is empty.
    std::string records[no_more_sections];
    std::string music_attributes; // ` file="music.ogg"`
};

// The document's text with its first `sections` sections.
std::string to_text(const document_text& text, uint32_t sections = no_more_sections - 1);

// One valid record in each section, each named by another one, so that reading it warns
// of nothing. Its entries are those of complete_pack.
document_text complete_document();

// `text` with the first `from` in it replaced by `to`; `from` must be there.
std::string with(std::string text, const std::string& from, const std::string& to);

// `text` without the first ` name="..."` in it, which must be there.
std::string without_attribute(const std::string& text, const std::string& name);

std::string repeated(const std::string& text, uint32_t count);

// <v type="TYPE" value="VALUE"/>
std::string animated(const std::string& type, const std::string& value);

// Nine constants 0, the last three of them 1: a placement.
std::string placement_values();

// A scene object of a kind with `manipulators` in its container.
std::string scene_object_text(
    int type, int object, int material, int font, const std::string& text, const std::string& manipulators = "");

// A clip of mode 0 with nine camera values.
std::string clip_text(int id, int space_before, int length);

// A function of one constant segment.
std::string function_text();

// ---- packs ----------------------------------------------------------------------

struct pack_content {
    std::string name; // at most 31 bytes
    std::string bytes;
};

// The bytes of a pack with these entries.
std::string packed(const std::vector<pack_content>& entries);

// An open pack of these bytes, or with these entries, in a temporary file; the caller closes it.
pack_file* open_packed(const std::string& bytes);
pack_file* open_pack(const std::vector<pack_content>& entries);

// The entries that complete_document names.
std::vector<pack_content> complete_pack();

// Bytes in the envelope of documents and meshes.
std::string in_envelope(const std::string& bytes);

// A mesh without envelope: vertex v lies at (v, 0, 0), its coordinates are (set, v), its
// normals (0, 0, 1).
std::string mesh_text(uint16_t vertices, uint16_t sets, const std::vector<uint16_t>& indices);

// An uncompressed TGA picture of 1 to 4 components, the first pixel at the top left.
// Component c of every pixel is first + c.
std::string tga_picture(uint16_t width, uint16_t height, uint32_t components, uint8_t first = 10);

// ---- reading --------------------------------------------------------------------

// A document read to its end, or to its first fatal problem; named "demo.xmlz".
struct reading {
    document d;
    xml_node* root;
    pack_file* pack;
    std::vector<std::string> lines; // all problems
    std::vector<document_problem> problems;
    bool failed;
    uint32_t records_read;
    std::vector<uint32_t> sections_ended;

    explicit reading(const document_text& text, const std::vector<pack_content>& entries = complete_pack());
    explicit reading(const std::string& text, const std::vector<pack_content>& entries = complete_pack());
    ~reading();
    reading(const reading&) = delete;
    reading& operator=(const reading&) = delete;
};

// All lines of a reading, each with its newline.
std::string joined(const reading& r);

// Of these the fatal one, and those that say that something "does not exist.": for tests
// whose documents are odd in other ways, too.
std::string fatal_line(const reading& r);
std::string dangling_lines(const reading& r);

// All lines that hold `part`, each with its newline.
std::string lines_with(const reading& r, const std::string& part);

// Holds that a number of `record`, the only one of its section, is kept by its low eight bits:
// puts numbers in place of `from`, with its quotes, and expects their bytes from `byte_of`. Those that no byte
// holds are warned about by "`warning`257 is outside ..."; others may be warned about otherwise.
void check_byte(uint32_t section, const std::string& record, const std::string& from, const std::string& warning,
    uint8_t (*byte_of)(const reading& r));
