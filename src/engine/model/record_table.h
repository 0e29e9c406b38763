// Record tables: what all records of a production are kept in.
//
// table<material_record> is what everybody uses; record_table is the memory underneath,
// which knows only how large its records are.
//
// A table holds up to 4096 records of one size, each addressed by a handle
// 1..4096 that stays the same for the record's life; 0 means "none". Positions
// 1..count give the order, which is the order of creation unless editing/table_edit
// changes it. The table owns its records (raw, trivially
// copyable memory); a bad handle or position gives null, 0 or no change.
#pragma once

#include <cassert>
#include <cstdint>
#include <type_traits>

constexpr uint32_t record_table_capacity = 4096;
constexpr uint32_t record_table_full = record_table_capacity + 1; // next_free of a full table

struct record_table {
    uint32_t record_size;                            // bytes of every record
    void* records[record_table_capacity + 1];        // by handle, null when free; [0] unused
    uint32_t handle_echo[record_table_capacity + 1]; // the handle while in use, else 0
    uint32_t ref_count[record_table_capacity + 1];   // references taken, by handle
    uint32_t next_free;                              // handle of the next add, 4097 when full
    uint32_t count;                                  // records in the table
    uint32_t order[record_table_capacity + 1];       // handle at each position 1..count
    uint32_t position[record_table_capacity + 1];    // position of each handle
};

// A new empty table, owned by the caller (record_table_free).
record_table* record_table_new(uint32_t record_size);

// A new record at the end; its bytes are undefined. 0 when the table is full.
uint32_t record_table_add(record_table* table);

// The record of a handle; null for a null table, a free handle or one outside 1..4096.
inline void* record_table_get(const record_table* table, uint32_t handle)
{
    if (table == nullptr || handle < 1 || handle > record_table_capacity)
        return nullptr;
    return table->records[handle];
}

// The record at a position; null outside 1..count.
void* record_table_at(const record_table* table, uint32_t position);

uint32_t record_table_handle_at(const record_table* table, uint32_t position);

// Frees every record, last position first, and the table. Null does nothing.
void record_table_free(record_table* table);

// ---- tables of one kind of record ---------------------------------------------------

// One step of a loop over a table.
template <typename record_type> struct numbered_record {
    uint32_t handle;
    record_type& record;
};

template <typename record_type> struct table_iterator {
    const record_table* raw;
    uint32_t position;

    numbered_record<record_type> operator*() const
    {
        assert(record_table_at(raw, position) != nullptr); // the loop removed a record
        return {record_table_handle_at(raw, position), *static_cast<record_type*>(record_table_at(raw, position))};
    }
    table_iterator& operator++()
    {
        ++position;
        return *this;
    }
    bool operator==(const table_iterator& other) const = default;
};

// A table that knows what is in it. Copies mean the same table, and its owner frees it
// (table_free). {} is an empty table that takes nothing.
//
//     for (auto [handle, material] : d.material_table)
//
// visits the records themselves in the order of positions. One that the loop adds is not
// visited; the loop may remove none.
template <typename record_type> struct table {
    record_table* raw;

    table_iterator<record_type> begin() const
    {
        return {raw, 1};
    }
    table_iterator<record_type> end() const
    {
        return {raw, raw != nullptr ? raw->count + 1 : 1};
    }
};

// A new empty table, owned by the caller.
template <typename record_type> table<record_type> table_new()
{
    static_assert(std::is_trivially_copyable_v<record_type>, "records lie in raw memory");
    return {record_table_new(sizeof(record_type))};
}

// A copy of `value` (left out: zero) as a new record at the end; its handle, 0 when the table is full.
template <typename record_type>
uint32_t table_add(const table<record_type>& records, const std::type_identity_t<record_type>& value = {})
{
    const uint32_t handle = record_table_add(records.raw);
    if (void* record = record_table_get(records.raw, handle))
        *static_cast<record_type*>(record) = value;
    return handle;
}

// The record of a handle; null as record_table_get.
template <typename record_type> record_type* table_get(const table<record_type>& records, uint32_t handle)
{
    assert(records.raw == nullptr || records.raw->record_size == sizeof(record_type));
    return static_cast<record_type*>(record_table_get(records.raw, handle));
}

// The record at a position 1..table_count; null outside.
template <typename record_type> record_type* table_at(const table<record_type>& records, uint32_t position)
{
    assert(records.raw == nullptr || records.raw->record_size == sizeof(record_type));
    return static_cast<record_type*>(record_table_at(records.raw, position));
}

template <typename record_type> uint32_t table_count(const table<record_type>& records)
{
    return records.raw != nullptr ? records.raw->count : 0;
}

// Frees every record and the table; whose field it was has an empty one then. Buffers that
// the records point to stay.
template <typename record_type> void table_free(table<record_type>& records)
{
    record_table_free(records.raw);
    records = {};
}
