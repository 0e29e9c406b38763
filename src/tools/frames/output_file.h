// The files that the program makes: each whole or not at all (content/new_file.h).
//
// What is there is replaced: whoever runs the program was asked before. A new file gets
// the rights that the mask leaves; devices and pipes are written as they are. Any thread
// may write files. False comes with one sentence, which names the file.
#pragma once

#include "content/new_file.h"

#include <cstdint>
#include <span>
#include <string>

// Begins a file that others write, under the name that new_file_path tells.
[[nodiscard]] bool begin_file(new_file& file, const std::string& path, std::string& error);

// Writes text behind what is there.
[[nodiscard]] bool append_to_file(new_file& file, const std::string& path, const std::string& text, std::string& error);

// Puts it into its place. When it cannot take that it is gone.
[[nodiscard]] bool keep_file(new_file& file, const std::string& path, std::string& error);

// Writes all of a file.
[[nodiscard]] bool write_file(const std::string& path, std::span<const uint8_t> bytes, std::string& error);
