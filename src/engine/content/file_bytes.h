// Files of the system: opened, or whole in memory. Only regular files count; a pipe
// could be waited for without an end.
#pragma once

#include <cstdint>
#include <cstdio>

// Opens the regular file at `path` for reading; the caller closes it. Null for a
// directory, a pipe or a device, which is not waited for, and for what cannot be
// opened.
[[nodiscard]] FILE* open_regular_file(const char* path);

// Reads the file at `path` whole into a new block of size + 1 bytes, the last of
// which is zero; the caller frees it with free(). False, with both results
// untouched, when the file cannot be opened or read, or is larger than `limit`
// bytes.
[[nodiscard]] bool read_whole_file(const char* path, uint32_t limit, uint8_t** bytes, uint32_t* size);
