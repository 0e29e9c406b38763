// Tables of numbers: what the tests of record tables share.
#pragma once

#include "editing/table_edit.h"
#include "model/record_table.h"

#include <doctest/doctest.h>

#include <memory>
#include <vector>

struct free_table {
    void operator()(record_table* table) const
    {
        record_table_free(table);
    }
};
using owned_table = std::unique_ptr<record_table, free_table>;

// The number that a table of numbers holds for a handle.
inline uint32_t& number_of(const record_table* table, uint32_t handle)
{
    return *static_cast<uint32_t*>(record_table_get(table, handle));
}

// Record n holds n x 10.
inline owned_table make_table(uint32_t records)
{
    owned_table table(record_table_new(sizeof(uint32_t)));
    for (uint32_t i = 0; i < records; ++i) {
        const uint32_t handle = record_table_add(table.get());
        number_of(table.get(), handle) = handle * 10;
    }
    return table;
}

// The handles in the order of positions.
inline std::vector<uint32_t> order_of(const record_table* table)
{
    std::vector<uint32_t> handles;
    for (uint32_t p = 1; p <= table->count; ++p) {
        handles.push_back(record_table_handle_at(table, p));
        CHECK(record_table_position_of(table, handles.back()) == p);
    }
    return handles;
}

using handles = std::vector<uint32_t>;
