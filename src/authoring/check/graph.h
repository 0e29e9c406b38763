// What a document's records are made of, and who uses them: as a text for Graphviz's dot, and as a drawing.
//
// A box is a record, an arrow leads to who uses it. Textures show their pictures, computed as the player computes
// them. A mesh, a mesh effect or a material that one scene alone uses stands as a line in the scene's box, and meshes
// of letters are counted in their font's.
#pragma once

#include "model/document.h"

#include <cstdint>
#include <string>
#include <vector>

struct xml_node;

enum graph_extent : uint8_t {
    graph_textures,  // generated images, texture nodes and what becomes of them
    graph_everything // and pictures, meshes, effects, fonts, materials, scenes, clips
};

// What a record is called in the source; "" where it has no name there. Records count from 1.
using graph_record_name = std::string (*)(const void* context, document_section section, uint32_t record);

struct graph_options {
    graph_extent extent = graph_everything;
    graph_record_name name_of = nullptr; // null: the names that the document and its entries have
    const void* context = nullptr;       // handed to name_of
};

struct graph_picture {
    std::string color;        // "#ec0001": no other place of the drawing has this colour
    std::vector<uint8_t> png; // what is put there, 96 x 96 pixels at most
};

struct document_graph {
    std::string dot;
    std::vector<graph_picture> pictures; // in the order of the text
};

// Of a document that was read from below `root` (the unnamed root of its tree). Computes its texture nodes, whose
// pixels stay with it; nothing else of it changes.
document_graph make_document_graph(document& d, const xml_node* root, const graph_options& options);

// The text alone, for those who lay it out themselves: grey where pictures were.
std::string plain_dot(const document_graph& graph);

// The drawing of dot, an SVG, with the pictures in their places.
std::string put_graph_pictures(const std::string& svg, const std::vector<graph_picture>& pictures);

// Lays the graph out with the program dot and makes the drawing. False, with one line in `problem`, when the
// program is not there, fails, or takes longer than two minutes.
[[nodiscard]] bool draw_graph(const document_graph& graph, std::string& svg, std::string& problem);
