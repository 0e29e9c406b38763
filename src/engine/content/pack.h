// Packs: flat archives of named entries, one per production.
//
//   offset       size
//   0            3        the bytes 0x44 0x50 0x01, written and never checked
//   3            40 x N   the index, a slot per entry
//   3 + 40 N     32       terminator: an empty name
//   40 N + 35    ...      the entries' bytes, back to back
//
// A slot is a name of at most 31 bytes, zero-filled to 32, then the offsets of the
// entry's first and last byte, unsigned 32-bit big-endian. An empty entry ends one
// before its start. Names are plain bytes, compared exactly; the first of two
// entries with one name wins.
//
// Streams stay the caller's; calls move their position. Buffers that are handed
// out belong to the caller: free(). The reading half prints nothing but
// "unexpected error" for an index that ends without a terminator. The writing half
// prints what it refuses as one line on standard error, with the system's reason, and
// returns false.
#pragma once

#include <cstdint>
#include <cstdio>

constexpr uint32_t pack_name_size = 32; // bytes of a slot's name field
constexpr uint32_t pack_slot_size = 40;
constexpr uint32_t pack_index_offset = 3;
constexpr uint8_t pack_magic[pack_index_offset] = {0x44, 0x50, 0x01}; // what every pack of ours begins with

// ---- reading -------------------------------------------------------------------

enum pack_status : uint32_t {
    pack_found,
    pack_missing, // no entry of that name, or no pack
    pack_damaged, // its offsets leave the pack, end lies before start - 1, or its bytes cannot be read
    pack_out_of_memory
};

// The bytes of the first entry called `name`: a new block of exactly *size bytes,
// not zero-terminated, never null. The empty name takes the first slot unseen, even
// in an empty index. Anything but pack_found leaves both results untouched. Sizes
// are checked against the file's own size before memory is taken. A null `pack` or
// `name` finds nothing.
[[nodiscard]] pack_status pack_read_entry(FILE* pack, const char* name, uint8_t** bytes, uint32_t* size);

// The same for callers that need no reason: null for everything but pack_found.
void* pack_find_entry(FILE* pack, const char* name, uint32_t* out_size);

// The entry called like `name` with its last three characters replaced by "ktx".
// Names of less than three characters find nothing.
void* pack_find_entry_ktx(FILE* pack, const char* name, uint32_t* out_size);

struct pack_slot {
    char name[pack_name_size + 1]; // always terminated
    uint32_t start;                // offset of the first byte
    uint32_t size;                 // bytes; 0 when damaged
    bool damaged;                  // the offsets leave the pack
};

// Slot number `index`, counted from 0. False at the end of the index (the
// terminator, or the end of the file), which prints nothing, and for a null pack.
bool pack_read_slot(FILE* pack, uint32_t index, pack_slot& slot);

// Whether the file begins with the bytes of pack_magic; playing does without them. False
// for a null pack.
bool pack_begins(FILE* pack);

// Whether the index ends at slot number `index` as it should, with an empty name of 32
// bytes: false where a slot stands there, and where the file ends instead.
bool pack_index_ends(FILE* pack, uint32_t index);

// The bytes of that slot's entry, as pack_read_entry hands them out.
[[nodiscard]] pack_status pack_read_slot_bytes(FILE* pack, const pack_slot& slot, uint8_t** bytes);

// ---- lists: what the writing half works on ---------------------------------------

// A singly linked list that ends in an empty node (`name` null); an empty list is
// that node alone.
struct pack_file_list {
    char* name;           // owned; the entry's name; null in the last node
    char* source_dir;     // owned; the bytes come from the file source_dir + name; null: from an existing pack
    pack_file_list* next; // owned
};

// All names in index order, taken from no directory.
pack_file_list* pack_list_names(FILE* pack);

pack_file_list* pack_file_list_new();

// Stores the two strings (from malloc; the list frees them) in the list's last
// node and gives it a new last node, which is returned: appending to that is quick.
// Nothing is put between directory and name: a directory ends in "/". A null name
// appends nothing.
pack_file_list* pack_file_list_append(pack_file_list* list, char* name, char* source_dir);

// Removes the entry with that number, from 0, and returns the list's head. Prints
// "Error: index not found!" when there is none.
pack_file_list* pack_file_list_remove(pack_file_list* list, uint32_t index);

void pack_file_list_free(pack_file_list* list);  // null does nothing
void pack_file_list_clear(pack_file_list* list); // `list` itself stays, as an empty list

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
bool pack_write(const pack_file_list* list, const char* out_path, FILE* old_pack);

// The same, and tells what it does: "count = %d\n" with the number of entries taken
// from the old pack, "NAME: %s\n" for each of them, then "size of the file: %d\n"
// or "size=%d\n" for each entry written. `out_path` may be the very file that
// `old_pack` reads, which goes on reading the old bytes.
bool pack_write_in_place(const pack_file_list* list, const char* out_path, FILE* old_pack);

// Writes each entry to the file `prefix` + name; folders that the name asks for are made.
// A new file gets the permissions 0600; one that is there is replaced by the whole new
// one, or left as it is and reported where `replace` is false. An entry that is damaged
// or has a refused name, a target that is a symbolic link or the pack itself:
// reported and left out, and the result is false.
bool pack_extract_all(FILE* pack, const char* prefix, bool replace = true);

// The same for the entries of a list, taken from source_dir + name where a
// directory is set.
bool pack_export_list(const pack_file_list* list, FILE* pack, const char* prefix, bool replace = true);
