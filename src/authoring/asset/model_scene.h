// A model file as the importing library reads it: its nodes and meshes in one space, nothing else changed.
//
// The library knows some fifty formats and is handed files of strangers, so it reads in a process of its own
// (contained_work.h), and what comes back is checked like any other bytes. It may open the model and what that names
// in its own folder and below, for reading. Bones, animation, lights and cameras are left out: a model is in the
// pose in which it rests.
#pragma once

#include "authoring/asset/shape.h"

#include <cstdint>
#include <string>
#include <vector>

constexpr uint32_t max_model_bytes = 1u << 28;    // of all files that a model is read from together: 256 MiB
constexpr uint32_t max_model_triangles = 2000000; // placed ones: a mesh at two nodes counts twice
constexpr uint32_t max_model_pieces = 100000;

struct model_node {
    std::string name;
    uint32_t parent; // in the list of nodes, before it; the first one is its own
};

struct model_material {
    std::string name;
    std::vector<std::string>
        textures;                 // names as the file has them, "*0" for one that lies in it, in the library's order
    std::array<float, 4> diffuse; // red, green, blue, alpha; 1 where the file says nothing
};

// A mesh where a node places it.
struct model_piece {
    std::string mesh;  // its name
    uint32_t node;     // in the list of nodes
    uint32_t material; // in the list of materials; none at its end or behind
    shape_data shape;  // vertices of triangles alone, v up; normals as in the file, of any length, or none
};

// What a file has that a model has no use for. Formats whose readers are told to pass these over count none.
struct model_left_out {
    uint32_t other_faces; // points and lines
    uint32_t animations, bones, lights, cameras;
};

struct model_scene {
    std::string format; // as the library calls it: "glTF2"; may be empty
    std::vector<model_node> nodes;
    std::vector<model_material> materials;
    std::vector<model_piece> pieces; // in the order of the nodes
    model_left_out left_out;
    std::vector<std::string> files_taken;   // what was opened, below the model's folder, sorted; the model is one
    std::vector<std::string> files_refused; // what it names outside of that, "../b", sorted
    std::vector<std::string> files_missing; // what was looked for there and was not found, sorted
};

// Whether a name's ending is one of a model's, as the importing library knows them: ".obj", in whatever case.
bool is_model_name(const std::string& name);

// Reads the model `name` of the working folder, in the process that calls: see contained_work.h. Empty, or what is
// wrong, to be put behind the file's name: "cannot be read as a model: no importer knows it".
std::string read_model_scene(const std::string& name, model_scene& scene);

// A scene as bytes, and back: false when they are none, with no more memory taken than there are bytes.
void write_model_scene(const model_scene& scene, std::vector<uint8_t>& bytes);
bool parse_model_scene(const std::vector<uint8_t>& bytes, model_scene& scene);
