#include "model/record_handover.h"

#include <algorithm>
#include <cassert>
#include <cstring>

// ---- keys -----------------------------------------------------------------------------

constexpr uint64_t odd_numbers[2] = {0x9E3779B97F4A7C15u, 0xC2B2AE3D27D4EB4Fu};

// Turns every word into another one that no other word turns into, so that two texts that differ in one word never
// meet.
static uint64_t mixed(uint64_t sum, uint64_t word, uint64_t odd)
{
    sum = (sum ^ word) * odd;
    return sum ^ (sum >> 32);
}

static void add_word(source_key& key, uint64_t word)
{
    key.low = mixed(key.low, word, odd_numbers[0]);
    key.high = mixed(key.high + key.low, word, odd_numbers[1]);
}

void add_to_key(source_key& key, const void* bytes, size_t size)
{
    assert(bytes != nullptr || size == 0);
    const auto* at = static_cast<const uint8_t*>(bytes);
    add_word(key, ~uint64_t{size}); // no length leaves the key of none as it is
    for (; size >= sizeof(uint64_t); at += sizeof(uint64_t), size -= sizeof(uint64_t)) {
        uint64_t word = 0;
        std::memcpy(&word, at, sizeof word);
        add_word(key, word);
    }
    uint64_t rest = 0;
    if (size > 0)
        std::memcpy(&rest, at, size);
    add_word(key, rest);
}

// ---- offers -----------------------------------------------------------------------------

void offer_record(record_handover& h, uint32_t section, uint32_t handle, const source_key& key)
{
    assert(section < no_more_sections && handle != 0);
    if (key != source_key{})
        h.offers[section].push_back({key, handle, false});
}

void sort_offers(record_handover& h)
{
    for (std::vector<record_offer>& offers : h.offers)
        std::stable_sort(
            offers.begin(), offers.end(), [](const record_offer& a, const record_offer& b) { return a.key < b.key; });
}

static void note_key(record_handover& h, uint32_t section, uint32_t handle, const source_key& key)
{
    assert(section < no_more_sections && handle <= record_table_capacity);
    std::vector<source_key>& keys = h.keys[section];
    if (keys.size() <= handle)
        keys.resize(size_t{handle} + 1);
    keys[handle] = key;
}

uint32_t take_record(record_handover& h, uint32_t section, uint32_t to, const source_key& key)
{
    note_key(h, section, to, key);
    std::vector<record_offer>& offers = h.offers[section];
    auto offer = std::lower_bound(offers.begin(), offers.end(), key,
        [](const record_offer& each, const source_key& wanted) { return each.key < wanted; });
    while (offer != offers.end() && offer->key == key && offer->taken)
        ++offer;
    if (offer == offers.end() || offer->key != key) {
        ++h.made;
        return 0;
    }
    offer->taken = true;
    h.taken.push_back({section, offer->handle, to});
    return offer->handle;
}

void drop_key(record_handover& h, uint32_t section, uint32_t handle)
{
    note_key(h, section, handle, {});
}

source_key key_of_record(const record_handover& h, uint32_t section, uint32_t handle)
{
    assert(section < no_more_sections);
    return handle < h.keys[section].size() ? h.keys[section][handle] : source_key{};
}
