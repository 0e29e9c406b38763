// Files to be read, whole files in memory, and all bytes to a descriptor.
//
// Reasons are texts to be put behind a name and a colon ("No such file or directory",
// "it is a folder"); they hold until the next call.
#pragma once

#include <cstdint>
#include <cstdio>
#include <span>
#include <sys/types.h>

// Opens the file at `path` for reading; the caller closes it. Null, with the reason in
// `problem` where that is asked for, for what cannot be opened and for what is no plain
// file; it never waits for a pipe's other end.
[[nodiscard]] FILE* open_plain_file(const char* path, const char** problem = nullptr);

// Why something of this mode (st_mode) is no plain file; null when it is one.
const char* plain_file_problem(mode_t mode);

// Reads the file at `path` whole into a new block of size + 1 bytes, the last of
// which is zero; the caller frees it with free(). False, with both results
// untouched and the reason in `problem` (which may be null), when the file cannot be
// opened or read, or is larger than `limit` bytes.
[[nodiscard]] bool read_whole_file(
    const char* path, uint32_t limit, uint8_t** bytes, uint32_t* size, const char** problem = nullptr);

// Writes all bytes, however small the pieces that are taken. False: errno tells.
[[nodiscard]] bool write_all(int descriptor, std::span<const uint8_t> bytes);
