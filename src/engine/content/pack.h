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
// A pack is opened once and read by whoever is given it: its index is taken into memory
// then, and nothing changes it later, so that several threads may read one pack at a time.
// A pack that changes while it is open is read by the index that it had.
//
// Buffers that are handed out belong to the caller: free(). Nothing is printed but
// "unexpected error" for an index that ends without a terminator, whenever a look-up gets
// there. Packs are written and taken apart by editing/pack_files.
#pragma once

#include <cstdint>
#include <cstdio>
#include <memory>
#include <span>
#include <vector>

constexpr uint32_t pack_name_size = 32; // bytes of a slot's name field
constexpr uint32_t pack_slot_size = 40;
constexpr uint32_t pack_index_offset = 3;
constexpr uint8_t pack_magic[pack_index_offset] = {0x44, 0x50, 0x01}; // what every pack of ours begins with

// ---- opening ---------------------------------------------------------------------

// Slots that are kept in memory; those behind them are read at each look-up that gets there.
// Bounds what a large file that is no pack at all can take.
constexpr uint32_t pack_kept_slots = 1u << 18;

enum pack_index_end : uint32_t {
    pack_index_terminated, // by an empty name
    pack_index_cut,        // by the end of the file
    pack_index_goes_on     // more slots than are kept
};

// An open pack: where its bytes are, and its index. Made by the functions below.
struct pack_file {
    FILE* stream;                    // closed with the pack; null: its bytes lie in memory
    std::span<const uint8_t> memory; // of a pack in memory, not owned
    uint64_t size;                   // bytes of the pack when it was opened
    std::vector<uint8_t> slots;      // the index without its terminator; a last slot that is cut is zero-filled
    uint64_t slot_bytes;             // of `slots`, those that the pack has
    pack_index_end end;
    std::vector<uint32_t> places;  // a slot's number + 1 at or behind its name's hash, 0: none; of one name the first
    std::vector<uint32_t> endless; // slots without a zero byte, in order: their names go on in the slot behind
};

// Opens the pack in a file that can be read at any place; `stream` passes to the pack. Null
// for a null stream.
[[nodiscard]] pack_file* pack_open(FILE* stream, uint32_t kept_slots = pack_kept_slots);

// Opens the pack in these bytes, which stay the caller's and must outlive it. Never null.
[[nodiscard]] pack_file* pack_open_bytes(std::span<const uint8_t> bytes, uint32_t kept_slots = pack_kept_slots);

// Frees the pack and closes its file. Null does nothing.
void pack_close(pack_file* pack);

// A pack that is closed at the end of its scope.
struct close_pack {
    void operator()(pack_file* pack) const
    {
        pack_close(pack);
    }
};
using owned_pack = std::unique_ptr<pack_file, close_pack>;

// ---- reading ---------------------------------------------------------------------

enum pack_status : uint32_t {
    pack_found,
    pack_missing, // no entry of that name, or no pack
    pack_damaged, // its offsets leave the pack, end lies before start - 1, or its bytes cannot be read
    pack_out_of_memory
};

struct pack_slot {
    char name[pack_name_size + 1]; // always terminated
    uint32_t start;                // offset of the first byte
    uint32_t size;                 // bytes; 0 when damaged
    bool damaged;                  // the offsets leave the pack
};

// Where the first entry called `name` lies, the rest as pack_read_entry has it: pack_found,
// pack_missing or pack_damaged. `slot` changes with pack_found only, and its name is what the
// index has.
[[nodiscard]] pack_status pack_find_entry(const pack_file* pack, const char* name, pack_slot& slot);

// The same for a name of 1 to 31 bytes by the index in memory alone: prints nothing, and knows
// nothing of slots behind the kept ones.
[[nodiscard]] bool pack_knows_entry(const pack_file* pack, const char* name, pack_slot& slot);

// The bytes of the first entry called `name`: a new block of exactly *size bytes,
// not zero-terminated, never null. The empty name takes the first slot unseen, even
// in an empty index. Anything but pack_found leaves both results untouched. Sizes
// are checked against the pack's own size before memory is taken. A null `pack` or
// `name` finds nothing.
[[nodiscard]] pack_status pack_read_entry(const pack_file* pack, const char* name, uint8_t** bytes, uint32_t* size);

// Slot number `index`, counted from 0. False at the end of the index (the
// terminator, or the end of the file), which prints nothing, and for a null pack.
bool pack_read_slot(const pack_file* pack, uint32_t index, pack_slot& slot);

// Whether the file begins with the bytes of pack_magic; playing does without them. False
// for a null pack.
bool pack_begins(const pack_file* pack);

// Whether the index ends at slot number `index` as it should, with an empty name of 32
// bytes: false where a slot stands there, and where the file ends instead.
bool pack_index_ends(const pack_file* pack, uint32_t index);

// The bytes of that slot's entry, as pack_read_entry hands them out.
[[nodiscard]] pack_status pack_read_slot_bytes(const pack_file* pack, const pack_slot& slot, uint8_t** bytes);
