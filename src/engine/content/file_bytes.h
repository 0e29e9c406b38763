// Whole files in memory.
#pragma once

#include <cstdint>

// Reads the file at `path` whole into a new block of size + 1 bytes, the last of
// which is zero; the caller frees it with free(). False, with both results
// untouched, when the file cannot be opened or read, or is larger than `limit`
// bytes.
[[nodiscard]] bool read_whole_file(const char* path, uint32_t limit, uint8_t** bytes, uint32_t* size);
