#include "content/pack.h"
#include "content/owners.h"

#include <algorithm>
#include <bit>
#include <cassert>
#include <cerrno>
#include <cstring>
#include <functional>
#include <string_view>
#include <sys/stat.h>
#include <unistd.h>

static constexpr uint32_t slots_per_read = 1024;
static constexpr uint32_t no_slot = UINT32_MAX;

// ---- bytes -----------------------------------------------------------------------

static size_t read_file_at(FILE* stream, uint64_t offset, uint8_t* bytes, size_t size)
{
    size_t done = 0;
    while (done < size) {
        const ssize_t length = pread(fileno(stream), bytes + done, size - done, static_cast<off_t>(offset + done));
        if (length == 0 || (length < 0 && errno != EINTR))
            break;
        done += length > 0 ? static_cast<size_t>(length) : 0;
    }
    return done;
}

// Fills `bytes` from the pack. Returns how many there are: fewer where the pack ends.
static size_t read_at(const pack_file& pack, uint64_t offset, uint8_t* bytes, size_t size)
{
    assert(bytes != nullptr || size == 0);
    if (pack.stream)
        return read_file_at(pack.stream, offset, bytes, size);
    if (offset >= pack.memory.size())
        return 0;
    const size_t length = std::min(size, pack.memory.size() - static_cast<size_t>(offset));
    if (length > 0)
        std::memcpy(bytes, pack.memory.data() + offset, length);
    return length;
}

static uint32_t read_big_endian(const uint8_t* bytes)
{
    return static_cast<uint32_t>(bytes[0]) << 24 | static_cast<uint32_t>(bytes[1]) << 16
        | static_cast<uint32_t>(bytes[2]) << 8 | bytes[3];
}

// ---- slots -----------------------------------------------------------------------

namespace {

// A slot as it stands in the pack. What the pack lacks is zero.
struct raw_slot {
    uint8_t bytes[pack_slot_size];
    size_t read; // bytes that were there
};

} // namespace

static uint64_t slot_offset(uint32_t index)
{
    return pack_index_offset + uint64_t{index} * pack_slot_size;
}

static uint32_t kept_slot_count(const pack_file& pack)
{
    return static_cast<uint32_t>(pack.slots.size() / pack_slot_size);
}

static raw_slot read_raw_slot(const pack_file& pack, uint32_t index)
{
    raw_slot slot = {};
    if (index >= kept_slot_count(pack)) {
        slot.read = read_at(pack, slot_offset(index), slot.bytes, sizeof slot.bytes);
        return slot;
    }
    const size_t at = size_t{index} * pack_slot_size;
    std::memcpy(slot.bytes, pack.slots.data() + at, sizeof slot.bytes);
    slot.read = static_cast<size_t>(std::min<uint64_t>(pack.slot_bytes - at, pack_slot_size));
    return slot;
}

// The entry that a slot points to; false when its offsets leave the pack.
static bool entry_range(const pack_file& pack, const raw_slot& slot, uint32_t& start, uint32_t& size)
{
    if (slot.read < pack_slot_size)
        return false;
    start = read_big_endian(slot.bytes + pack_name_size);
    const uint32_t end = read_big_endian(slot.bytes + pack_name_size + 4);
    size = end + 1 - start; // wraps to 0 for the empty entry at the very start
    return (end >= start || size == 0) && start <= pack.size && size <= pack.size - start;
}

// Whether `rest`, its zero included, stands in the pack at `offset`.
static bool stands_at(const pack_file& pack, uint64_t offset, const char* rest)
{
    uint8_t block[256];
    for (size_t left = std::strlen(rest) + 1; left > 0;) {
        const size_t size = std::min(left, sizeof block);
        if (read_at(pack, offset, block, size) != size || std::memcmp(block, rest, size) != 0)
            return false;
        offset += size;
        rest += size;
        left -= size;
    }
    return true;
}

// Whether slot number `index` is called `name`: every byte of the name, and a zero
// right behind it. The comparison does not end with the name field: behind it come
// the slot's offsets and whatever follows in the file, so that a name of 32 bytes
// meets the first byte of the start offset.
static bool slot_has_name(const pack_file& pack, uint32_t index, const uint8_t* slot, const char* name)
{
    assert(name[0] != '\0');
    for (size_t i = 0; i < pack_slot_size; ++i) {
        if (slot[i] != static_cast<uint8_t>(name[i]))
            return false;
        if (name[i] == '\0')
            return true;
    }
    return stands_at(pack, slot_offset(index) + pack_slot_size, name + pack_slot_size);
}

// ---- the index in memory -----------------------------------------------------------

// Takes the slots up to the index's end, or up to `most` of them.
static void keep_slots(pack_file& pack, uint32_t most)
{
    pack.end = pack_index_goes_on;
    for (uint32_t count = 0; count < most;) {
        const uint32_t wanted = std::min(most - count, slots_per_read);
        const size_t begin = size_t{count} * pack_slot_size;
        pack.slots.resize(begin + size_t{wanted} * pack_slot_size);
        uint8_t* slots = pack.slots.data() + begin;
        const size_t read = read_at(pack, slot_offset(count), slots, size_t{wanted} * pack_slot_size);
        pack.slot_bytes = begin + read;
        for (uint32_t i = 0; i < wanted; ++i, ++count) {
            const uint8_t* slot = slots + size_t{i} * pack_slot_size;
            const bool is_whole = size_t{i} * pack_slot_size + pack_name_size <= read;
            if (is_whole && slot[0] != 0)
                continue;
            pack.end = is_whole ? pack_index_terminated : pack_index_cut;
            count += slot[0] != 0 ? 1 : 0; // a piece of a slot may have a name, too
            pack.slots.resize(size_t{count} * pack_slot_size);
            return;
        }
    }
}

// Up to its zero byte; a whole slot where it has none.
static std::string_view name_of_slot(const pack_file& pack, uint32_t index)
{
    const char* slot = reinterpret_cast<const char*>(pack.slots.data()) + size_t{index} * pack_slot_size;
    return {slot, strnlen(slot, pack_slot_size)};
}

// Where a name of less than a slot's bytes stands in pack.places, or would: there is room.
static size_t place_of(const pack_file& pack, std::string_view name)
{
    const size_t mask = pack.places.size() - 1; // their number is a power of two
    size_t place = std::hash<std::string_view>()(name) & mask;
    while (pack.places[place] != 0 && name_of_slot(pack, pack.places[place] - 1) != name)
        place = (place + 1) & mask;
    return place;
}

// Of slots with one name the first one counts.
static void name_slots(pack_file& pack)
{
    const uint32_t count = kept_slot_count(pack);
    pack.places.resize(std::bit_ceil(size_t{2} * count + 1));
    for (uint32_t index = 0; index < count; ++index) {
        const std::string_view name = name_of_slot(pack, index);
        if (name.size() == pack_slot_size)
            pack.endless.push_back(index);
        else if (uint32_t& number = pack.places[place_of(pack, name)]; number == 0)
            number = index + 1;
    }
}

static pack_file* open_pack(const pack_file& source, uint32_t kept_slots)
{
    pack_file* pack = new pack_file(source);
    keep_slots(*pack, kept_slots);
    pack->slots.shrink_to_fit(); // before names point into it
    name_slots(*pack);
    return pack;
}

pack_file* pack_open(FILE* stream, uint32_t kept_slots)
{
    if (!stream)
        return nullptr;
    assert(fileno(stream) >= 0);
    struct stat status;
    pack_file source = {};
    source.stream = stream;
    source.size = fstat(fileno(stream), &status) == 0 && status.st_size > 0 ? static_cast<uint64_t>(status.st_size) : 0;
    return open_pack(source, kept_slots);
}

pack_file* pack_open_bytes(std::span<const uint8_t> bytes, uint32_t kept_slots)
{
    pack_file source = {};
    source.memory = bytes;
    source.size = bytes.size();
    return open_pack(source, kept_slots);
}

void pack_close(pack_file* pack)
{
    if (!pack)
        return;
    if (pack->stream)
        std::fclose(pack->stream);
    delete pack;
}

// ---- looking up --------------------------------------------------------------------

static uint32_t find_kept_slot(const pack_file& pack, const char* name)
{
    const size_t length = std::strlen(name);
    if (length < pack_slot_size) {
        const uint32_t number = pack.places[place_of(pack, std::string_view(name, length))];
        return number != 0 ? number - 1 : no_slot;
    }
    for (const uint32_t index : pack.endless)
        if (slot_has_name(pack, index, pack.slots.data() + size_t{index} * pack_slot_size, name))
            return index;
    return no_slot;
}

// Goes through the slots that are not kept, down to the end of the index.
static pack_status find_behind_kept(const pack_file& pack, const char* name, raw_slot& slot)
{
    std::vector<uint8_t> block(size_t{slots_per_read} * pack_slot_size);
    size_t block_read = 0;
    uint32_t in_block = slots_per_read;
    for (uint32_t index = kept_slot_count(pack);; ++index, ++in_block) {
        if (in_block == slots_per_read) {
            block_read = read_at(pack, slot_offset(index), block.data(), block.size());
            std::memset(block.data() + block_read, 0, block.size() - block_read);
            in_block = 0;
        }
        const size_t at = size_t{in_block} * pack_slot_size;
        std::memcpy(slot.bytes, block.data() + at, sizeof slot.bytes);
        slot.read = std::min<size_t>(block_read - std::min(at, block_read), pack_slot_size);
        if (slot.read < pack_name_size)
            std::puts("unexpected error");
        if (slot.bytes[0] == 0)
            return pack_missing;
        if (slot_has_name(pack, index, slot.bytes, name))
            return pack_found;
        if (slot.read < pack_name_size)
            return pack_missing;
    }
}

// The first slot of that name. Ends at the empty name, or at the end of the file.
static pack_status find_slot(const pack_file& pack, const char* name, raw_slot& slot)
{
    if (name[0] == '\0') { // the first slot, unseen (deliberate; pinned by "the empty name takes the first entry")
        slot = read_raw_slot(pack, 0);
        return pack_found;
    }
    const uint32_t index = find_kept_slot(pack, name);
    if (index == no_slot && pack.end == pack_index_goes_on)
        return find_behind_kept(pack, name, slot);
    if (index != no_slot)
        slot = read_raw_slot(pack, index);
    if (pack.end == pack_index_cut && (index == no_slot || slot.read < pack_name_size))
        std::puts("unexpected error");
    return index != no_slot ? pack_found : pack_missing;
}

// ---- reading ---------------------------------------------------------------------

static pack_status read_range(const pack_file& pack, uint32_t start, uint32_t size, uint8_t** bytes)
{
    assert(bytes != nullptr);
    owned_block<uint8_t> block(static_cast<uint8_t*>(std::malloc(size > 0 ? size : 1)));
    if (!block)
        return pack_out_of_memory;
    if (read_at(pack, start, block.get(), size) != size)
        return pack_damaged;
    *bytes = block.release();
    return pack_found;
}

static bool fill_slot(const pack_file& pack, const raw_slot& raw, pack_slot& slot)
{
    pack_slot found = {};
    if (!entry_range(pack, raw, found.start, found.size))
        return false;
    std::memcpy(found.name, raw.bytes, pack_name_size);
    slot = found;
    return true;
}

pack_status pack_find_entry(const pack_file* pack, const char* name, pack_slot& slot)
{
    if (!pack || !name)
        return pack_missing;
    raw_slot raw;
    const pack_status status = find_slot(*pack, name, raw);
    if (status != pack_found)
        return status;
    return fill_slot(*pack, raw, slot) ? pack_found : pack_damaged;
}

bool pack_knows_entry(const pack_file* pack, const char* name, pack_slot& slot)
{
    if (!pack || !name || name[0] == '\0' || std::strlen(name) >= pack_name_size)
        return false;
    const uint32_t index = find_kept_slot(*pack, name);
    return index != no_slot && fill_slot(*pack, read_raw_slot(*pack, index), slot);
}

pack_status pack_read_entry(const pack_file* pack, const char* name, uint8_t** bytes, uint32_t* size)
{
    assert(bytes != nullptr && size != nullptr);
    pack_slot slot;
    pack_status status = pack_find_entry(pack, name, slot);
    if (status == pack_found)
        status = read_range(*pack, slot.start, slot.size, bytes);
    if (status == pack_found)
        *size = slot.size;
    return status;
}

bool pack_read_slot(const pack_file* pack, uint32_t index, pack_slot& slot)
{
    if (!pack)
        return false;
    const raw_slot raw = read_raw_slot(*pack, index);
    if (raw.read < pack_name_size || raw.bytes[0] == 0)
        return false;
    slot = {};
    std::memcpy(slot.name, raw.bytes, pack_name_size);
    slot.damaged = !entry_range(*pack, raw, slot.start, slot.size);
    if (slot.damaged)
        slot.size = 0;
    return true;
}

bool pack_begins(const pack_file* pack)
{
    uint8_t first[sizeof pack_magic] = {};
    return pack && read_at(*pack, 0, first, sizeof first) == sizeof first
        && std::memcmp(first, pack_magic, sizeof first) == 0;
}

bool pack_index_ends(const pack_file* pack, uint32_t index)
{
    if (!pack)
        return false;
    const raw_slot raw = read_raw_slot(*pack, index);
    return raw.read >= pack_name_size && raw.bytes[0] == 0;
}

pack_status pack_read_slot_bytes(const pack_file* pack, const pack_slot& slot, uint8_t** bytes)
{
    if (!pack)
        return pack_missing;
    return slot.damaged ? pack_damaged : read_range(*pack, slot.start, slot.size, bytes);
}
