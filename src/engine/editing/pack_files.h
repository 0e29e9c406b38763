// Packs for who makes them: written from a list of entries, and taken apart into files.
//
// The format is content/pack.h's. What is refused is printed as one line on standard error, with the
// system's reason, and the result is false. Streams stay the caller's; calls move their position.
#pragma once

#include "editing/pack_list.h"

#include <cstdint>

// ---- single entries --------------------------------------------------------------

// The bytes of the first entry called `name`, as pack_read_entry hands them out, for callers that
// need no reason: null for everything but pack_found.
void* pack_find_entry(const pack_file* pack, const char* name, uint32_t* out_size);

// The entry called like `name` with its last three characters replaced by "ktx".
// Names of less than three characters find nothing.
void* pack_find_entry_ktx(const pack_file* pack, const char* name, uint32_t* out_size);

// ---- writing ---------------------------------------------------------------------

// Why an entry may not have this name, to be put behind it ("is longer than 31
// bytes"); null when it may. Refused: empty names, 32 bytes and more, a leading
// "/", and "..".
const char* pack_name_problem(const char* name);

// Writes a pack with the list's entries, in order; entries without a directory are
// copied from `old_pack`, which may be null when there are none. Everything is looked at
// first: false, and nothing written, for refused names, sources that are no readable files
// or are the output itself, entries that `old_pack` lacks, and more than 4 GiB.
//
// The pack is written beside `out_path` and takes its place when it is whole: false as
// well when writing fails, and then what was there is there still. A new pack gets the
// permissions 0600, one that replaces a file those of that file; a symbolic link stays,
// and what it points to is replaced; other hard links to that keep the old bytes.
bool pack_write(const pack_file_list* list, const char* out_path, const pack_file* old_pack);

// The same, and tells what it does: "count = %d\n" with the number of entries taken
// from the old pack, "NAME: %s\n" for each of them, then "size of the file: %d\n"
// or "size=%d\n" for each entry written. `out_path` may be the very file that
// `old_pack` reads, which goes on reading the old bytes.
bool pack_write_in_place(const pack_file_list* list, const char* out_path, const pack_file* old_pack);

// Writes each entry to the file `prefix` + name; folders that the name asks for are made.
// A new file gets the permissions 0600; one that is there is replaced by the whole new
// one, or left as it is and reported where `replace` is false. An entry that is damaged
// or has a refused name, a target that is a symbolic link or the pack itself:
// reported and left out, and the result is false.
bool pack_extract_all(const pack_file* pack, const char* prefix, bool replace = true);

// The same for the entries of a list, taken from source_dir + name where a
// directory is set.
bool pack_export_list(const pack_file_list* list, const pack_file* pack, const char* prefix, bool replace = true);
