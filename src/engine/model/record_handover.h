// What a document that is there hands over to the one that is loaded in its place: whoever edits a show loads it
// again and again, and most of its records come from the same bytes each time.
//
// Every record that costs something has a key: a number made of all that it was read from. Where a record of the
// document before has the same key it is taken as it is, with its OpenGL objects, and nothing is decoded or made. One
// old record serves one new one, and their handles may differ. Both documents name what was taken until it is decided
// which of them lives on (shell/loading.h). Plain data; the player has none of it.
#pragma once

#include "model/document.h"

#include <compare>
#include <cstddef>
#include <cstdint>
#include <type_traits>
#include <vector>

// Equal for equal bytes, and in practice for no others: 128 bits.
struct source_key {
    uint64_t low = 0; // both 0: none
    uint64_t high = 0;

    bool operator==(const source_key&) const = default;
    auto operator<=>(const source_key&) const = default;
};

struct record_offer {
    source_key key;
    uint32_t handle; // in the document before
    bool taken;
};

struct taken_record {
    uint32_t section;
    uint32_t from; // handle in the document before
    uint32_t to;   // in the new one
};

struct record_handover {
    document* before = nullptr;                         // not owned; null: there is none
    std::vector<record_offer> offers[no_more_sections]; // what it has, by key
    std::vector<source_key> keys[no_more_sections]; // of the new document's records, by handle; empty behind the last
    std::vector<taken_record> taken;
    uint32_t made = 0; // records that have a key or could have one, and were made anew
};

// Mixes a length and so many bytes into a key.
void add_to_key(source_key& key, const void* bytes, size_t size);

template <typename number> void add_number(source_key& key, const number& value)
{
    static_assert(std::is_arithmetic_v<number>);
    add_to_key(key, &value, sizeof value);
}

// What the document before offers; sorted by whoever has offered all (sort_offers). A key of none offers nothing.
void offer_record(record_handover& h, uint32_t section, uint32_t handle, const source_key& key);
void sort_offers(record_handover& h);

// Takes a record of that key for the new record `to`: its handle in the document before. 0: there is none that nobody
// has taken, and the record counts as made anew. Notes the key in any case.
uint32_t take_record(record_handover& h, uint32_t section, uint32_t to, const source_key& key);

// The record is not to be taken by a later document: reading it says something that has to be said each time.
void drop_key(record_handover& h, uint32_t section, uint32_t handle);

// The key of a record of the new document; that of none where it has none.
source_key key_of_record(const record_handover& h, uint32_t section, uint32_t handle);
