// Record tables for who changes documents: records put between others, taken out, exchanged and counted.
//
// The tables are those of model/record_table.h, and so is what bad handles and positions do: null, 0, or
// no change. Buffers that a record points to are not freed with it.
#pragma once

#include "model/record_table.h"

#include <cstdint>

// A new record at a 1-based position (0 counts as 1, beyond the end appends).
uint32_t record_table_insert(record_table* table, uint32_t position);

// Frees the record at a position and closes the gap. Nothing for an empty position.
void record_table_remove_at(record_table* table, uint32_t position);

// 2: no such record; 1: it is referenced and stays; 0: removed.
int record_table_remove_unreferenced(record_table* table, uint32_t position);

// Exchanges two positions, both of 1..4095 (not 4096, on purpose) and in use.
void record_table_swap(record_table* table, uint32_t position_a, uint32_t position_b);

// The position of a handle; 0 when no record has it.
uint32_t record_table_position_of(const record_table* table, uint32_t handle);

// Reference counting; each prints one line on standard output
// ("Increase %u\n", "Decrease %u\n"; nothing for an unref at 0).
void record_table_ref(record_table* table, uint32_t handle);
void record_table_unref(record_table* table, uint32_t handle);

// True when the record exists and nobody references it.
bool record_table_removable(const record_table* table, uint32_t handle);
