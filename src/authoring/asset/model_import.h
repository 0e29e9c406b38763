// Models of authors: files of some fifty formats as shapes that become meshes.
//
// The importing library runs in a process of its own with bounds on time, memory and files (contained_work.h,
// model_scene.h): a broken file costs a line, never the program. All meshes of a file are one shape, in the space of
// its root, v = 0 at the top of the picture; what a mesh cannot count is split. The same files give the same shapes.
// Our own format, ".mesh", is read as well, with or without the envelope that it has in packs.
#pragma once

#include "authoring/asset/model_scene.h"
#include "authoring/asset/shape.h"

#include <cstdint>
#include <string>
#include <vector>

enum model_normals : uint32_t {
    normals_kept,   // as in the file; smooth where a mesh has none, or some that are no directions
    normals_smooth, // made anew, across all that meets at one position
    normals_flat    // made anew, one for each triangle
};

struct model_options {
    double fit;                // the longest side, about the origin; 0: as in the file
    bool center;               // the middle of the model becomes the origin
    std::array<float, 3> turn; // degrees about x, then y, then z, before all else
    std::string part;          // only what this node, mesh or material has; empty: all
    model_normals normals;
};

// A mesh of the file where a node places it, for information; all of the file, whatever part was asked for.
struct model_part {
    std::string node, mesh, material;  // their names as in the file; any may be empty
    std::vector<std::string> textures; // of the material, as the file names them; "*0" lies in the file itself
    std::array<float, 4> diffuse;      // of the material: red, green, blue, alpha
    uint32_t vertices, triangles, coordinate_sets;
};

struct imported_model {
    std::vector<shape_data> shapes;         // at least one, each of at most max_shape_vertices, without fault
    std::vector<uint8_t> mesh_bytes;        // of a ".mesh" without options: its content as it lies there; else empty
    std::vector<model_part> parts;          // none for a ".mesh"
    std::vector<std::string> files_taken;   // below the model's folder, sorted, the model with them
    std::vector<std::string> files_refused; // named by the model, or tried in place of that, outside of the folder
    std::vector<std::string> files_missing; // looked for below the model's folder and not there
    uint32_t triangles_dropped;             // for want of an area, or of finite positions
};

// A file that has been read, to be asked for one part after the other. Reading is what takes time.
struct model_file {
    std::string name;                  // without its folder
    std::string problem;               // why it is no model, to be put behind its name; empty: it is one
    std::vector<uint8_t> mesh_content; // of a ".mesh"; empty: `scene` has it
    model_scene scene;
};

// Reads the model at `path`. What is wrong with it is told by every part that is asked for.
model_file open_model(const std::string& path);

// The model as the options want it. False, with the reason in `problem`: a line that begins with the file's name in
// quotes and ends with a full stop; `model` is then empty. Of a ".mesh" that stays as it is the shape may hold numbers
// that are not finite, as the player takes them.
bool take_model(const model_file& file, const model_options& options, imported_model& model, std::string& problem);
