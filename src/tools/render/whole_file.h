// Files that are there whole or not at all: written beside their place as NAME.PID-N.part,
// and renamed when they are complete. What stood there before stays until then.
//
// Devices and pipes are written as they are. A symbolic link stays one: what it points to
// is replaced. A file that may not be written is not replaced either.
#pragma once

#include <cstdint>
#include <span>
#include <string>
#include <vector>

struct whole_file {
    std::string path;    // where it will be
    std::string partial; // where it is written; that of `path` for devices and pipes
    int descriptor = -1; // open for writing
};

// Makes the partial file. False with one sentence: it cannot be made, or could not take
// its place.
[[nodiscard]] bool whole_file_begin(whole_file& file, const std::string& path, std::string& error);

// Closes the file and puts it in its place. False with one sentence; it is gone then.
[[nodiscard]] bool whole_file_keep(whole_file& file, std::string& error);

// Closes and removes the partial file. Nothing for one that was never begun, or is kept.
void whole_file_drop(whole_file& file);

// Writes a whole file at once. False with one sentence.
[[nodiscard]] bool write_file(const std::string& path, std::span<const uint8_t> bytes, std::string& error);

// All bytes to a descriptor, or false (errno tells).
[[nodiscard]] bool write_all(int descriptor, std::span<const uint8_t> bytes);

// Those of `paths` that are files already, in their order.
std::vector<std::string> existing_files(const std::vector<std::string>& paths);
