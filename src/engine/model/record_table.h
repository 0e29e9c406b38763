// Record tables: the one collection of the production model.
//
// A table holds up to 4096 records of one size, each addressed by a handle
// 1..4096 that stays the same for the record's life; 0 means "none". Positions
// 1..count give the order, which is the order of creation unless it is changed
// by insert, remove or swap. The table owns its records (raw, trivially
// copyable memory); a bad handle or position gives null, 0 or no change.
#pragma once

#include <cstdint>

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

// A new record at a 1-based position (0 counts as 1, beyond the end appends).
uint32_t record_table_insert(record_table* table, uint32_t position);

// The record of a handle; null for a null table, a free handle or one outside 1..4096.
void* record_table_get(const record_table* table, uint32_t handle);

// The record at a position; null outside 1..count.
void* record_table_at(const record_table* table, uint32_t position);

// Frees the record at a position and closes the gap. Nothing for an empty position.
void record_table_remove_at(record_table* table, uint32_t position);

// 2: no such record; 1: it is referenced and stays; 0: removed.
int record_table_remove_unreferenced(record_table* table, uint32_t position);

// Exchanges two positions, both of 1..4095 (not 4096, on purpose) and in use.
void record_table_swap(record_table* table, uint32_t position_a, uint32_t position_b);

uint32_t record_table_handle_at(const record_table* table, uint32_t position);
uint32_t record_table_position_of(const record_table* table, uint32_t handle);

// Reference counting; each prints one line on standard output
// ("Increase %u\n", "Decrease %u\n"; nothing for an unref at 0).
void record_table_ref(record_table* table, uint32_t handle);
void record_table_unref(record_table* table, uint32_t handle);

// True when the record exists and nobody references it.
bool record_table_removable(const record_table* table, uint32_t handle);

// Frees every record, last position first, and the table. Null does nothing.
void record_table_free(record_table* table);

// The record of a handle as its type; null as record_table_get.
template <typename record> record* table_record(const record_table* table, uint32_t handle)
{
    return static_cast<record*>(record_table_get(table, handle));
}
