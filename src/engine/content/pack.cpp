#include "content/pack.h"
#include "content/owners.h"

#include <cassert>
#include <cstring>

// ---- the index -------------------------------------------------------------------

namespace {

// A slot as it stands in the file. What the file lacks is zero.
struct raw_slot {
    uint8_t bytes[pack_slot_size];
    size_t read; // bytes that were there
};

} // namespace

static bool seek(FILE* pack, uint64_t offset)
{
    assert(pack != nullptr);
    return fseeko(pack, static_cast<off_t>(offset), SEEK_SET) == 0;
}

static uint64_t slot_offset(uint32_t index)
{
    return pack_index_offset + uint64_t{index} * pack_slot_size;
}

static raw_slot read_raw_slot(FILE* pack)
{
    raw_slot slot = {};
    slot.read = std::fread(slot.bytes, 1, sizeof slot.bytes, pack);
    return slot;
}

static uint32_t read_big_endian(const uint8_t* bytes)
{
    return static_cast<uint32_t>(bytes[0]) << 24 | static_cast<uint32_t>(bytes[1]) << 16
        | static_cast<uint32_t>(bytes[2]) << 8 | bytes[3];
}

static uint64_t stream_size(FILE* pack)
{
    if (fseeko(pack, 0, SEEK_END) != 0)
        return 0;
    const off_t size = ftello(pack);
    return size > 0 ? static_cast<uint64_t>(size) : 0;
}

// The entry that a slot points to; false when its offsets leave the pack.
static bool entry_range(FILE* pack, const raw_slot& slot, uint32_t& start, uint32_t& size)
{
    if (slot.read < pack_slot_size)
        return false;
    start = read_big_endian(slot.bytes + pack_name_size);
    const uint32_t end = read_big_endian(slot.bytes + pack_name_size + 4);
    size = end + 1 - start; // wraps to 0 for the empty entry at the very start
    const uint64_t available = stream_size(pack);
    return (end >= start || size == 0) && start <= available && size <= available - start;
}

// Whether the slot at `offset` is called `name`: every byte of the name, and a zero
// right behind it. The comparison does not end with the name field: behind it come
// the slot's offsets and whatever follows in the file, so that a name of 32 bytes
// meets the first byte of the start offset.
static bool slot_has_name(FILE* pack, uint64_t offset, const raw_slot& slot, const char* name)
{
    assert(name[0] != '\0');
    size_t i = 0;
    for (; i < pack_slot_size; ++i) {
        if (slot.bytes[i] != static_cast<uint8_t>(name[i]))
            return false;
        if (name[i] == '\0')
            return true;
    }
    bool matches = true;
    for (; matches; ++i) {
        matches = std::fgetc(pack) == static_cast<uint8_t>(name[i]);
        if (name[i] == '\0')
            break;
    }
    return seek(pack, offset + pack_slot_size) && matches; // back to where the next slot begins
}

// The first slot of that name. Ends at the empty name, or at the end of the file.
static pack_status find_slot(FILE* pack, const char* name, raw_slot& slot)
{
    if (!seek(pack, pack_index_offset))
        return pack_missing;
    if (name[0] == '\0') { // the first slot, unseen (deliberate; pinned by "the empty name takes the first entry")
        slot = read_raw_slot(pack);
        return pack_found;
    }
    for (uint32_t index = 0;; ++index) {
        slot = read_raw_slot(pack);
        if (slot.read < pack_name_size)
            std::puts("unexpected error");
        if (slot.bytes[0] == 0)
            return pack_missing;
        if (slot_has_name(pack, slot_offset(index), slot, name))
            return pack_found;
        if (slot.read < pack_name_size)
            return pack_missing;
    }
}

// ---- reading ---------------------------------------------------------------------

static pack_status read_range(FILE* pack, uint32_t start, uint32_t size, uint8_t** bytes)
{
    assert(bytes != nullptr);
    owned_block<uint8_t> block(static_cast<uint8_t*>(std::malloc(size > 0 ? size : 1)));
    if (!block)
        return pack_out_of_memory;
    if (!seek(pack, start) || std::fread(block.get(), 1, size, pack) != size)
        return pack_damaged;
    *bytes = block.release();
    return pack_found;
}

pack_status pack_read_entry(FILE* pack, const char* name, uint8_t** bytes, uint32_t* size)
{
    assert(bytes != nullptr && size != nullptr);
    if (!pack || !name)
        return pack_missing;
    raw_slot slot;
    pack_status status = find_slot(pack, name, slot);
    if (status != pack_found)
        return status;
    uint32_t start = 0;
    uint32_t entry_size = 0;
    if (!entry_range(pack, slot, start, entry_size))
        return pack_damaged;
    status = read_range(pack, start, entry_size, bytes);
    if (status == pack_found)
        *size = entry_size;
    return status;
}

bool pack_read_slot(FILE* pack, uint32_t index, pack_slot& slot)
{
    if (!pack || !seek(pack, slot_offset(index)))
        return false;
    const raw_slot raw = read_raw_slot(pack);
    if (raw.read < pack_name_size || raw.bytes[0] == 0)
        return false;
    slot = {};
    std::memcpy(slot.name, raw.bytes, pack_name_size);
    slot.damaged = !entry_range(pack, raw, slot.start, slot.size);
    if (slot.damaged)
        slot.size = 0;
    return true;
}

bool pack_begins(FILE* pack)
{
    uint8_t first[sizeof pack_magic] = {};
    return pack && seek(pack, 0) && std::fread(first, 1, sizeof first, pack) == sizeof first
        && std::memcmp(first, pack_magic, sizeof first) == 0;
}

bool pack_index_ends(FILE* pack, uint32_t index)
{
    if (!pack || !seek(pack, slot_offset(index)))
        return false;
    const raw_slot raw = read_raw_slot(pack);
    return raw.read >= pack_name_size && raw.bytes[0] == 0;
}

pack_status pack_read_slot_bytes(FILE* pack, const pack_slot& slot, uint8_t** bytes)
{
    if (!pack)
        return pack_missing;
    return slot.damaged ? pack_damaged : read_range(pack, slot.start, slot.size, bytes);
}
