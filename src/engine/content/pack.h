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
// out belong to the caller: free(). Nothing is printed but "unexpected error" for an index
// that ends without a terminator. Packs are written and taken apart by editing/pack_files.
#pragma once

#include <cstdint>
#include <cstdio>

constexpr uint32_t pack_name_size = 32; // bytes of a slot's name field
constexpr uint32_t pack_slot_size = 40;
constexpr uint32_t pack_index_offset = 3;
constexpr uint8_t pack_magic[pack_index_offset] = {0x44, 0x50, 0x01}; // what every pack of ours begins with

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
