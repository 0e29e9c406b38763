// The files that a model may be read from: itself, and what it names in its own folder and below.
//
// What lies elsewhere is refused before it is looked at, and nothing is ever written. Symbolic links count as what they
// point to, but for the model itself.
#pragma once

#include <assimp/cfileio.h>
#include <cstdint>
#include <string>
#include <vector>

struct model_files {
    std::string folder;               // the working folder, without links
    std::string model;                // name of the model in it
    uint64_t bytes_left;              // of all files that may yet be opened
    bool too_large;                   // a file was not opened for want of these
    std::vector<std::string> taken;   // names below the folder, each once
    std::vector<std::string> refused; // in the same way, "../b", each once
    std::vector<std::string> missing; // below the folder, looked for and not there, each once
};

// For a model in the working folder, all of whose files together may have `most_bytes`.
model_files files_of_model(const std::string& model, uint64_t most_bytes);

// How the importing library opens files; `files` outlives it.
aiFileIO file_system_of(model_files& files);
