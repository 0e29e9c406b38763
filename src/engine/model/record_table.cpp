#include "model/record_table.h"

#include <algorithm>
#include <cassert>
#include <cstdlib>

// The first free handle from `handle` upward; the full mark when there is none.
static uint32_t first_free_from(const record_table& table, uint32_t handle)
{
    while (handle <= record_table_capacity && table.records[handle] != nullptr)
        ++handle;
    return handle;
}

record_table* record_table_new(uint32_t record_size)
{
    record_table* table = static_cast<record_table*>(std::calloc(1, sizeof(record_table)));
    if (table == nullptr)
        return nullptr;
    table->record_size = record_size;
    table->next_free = 1;
    return table;
}

uint32_t record_table_add(record_table* table)
{
    if (table == nullptr || table->count >= record_table_capacity)
        return 0;
    void* record = std::malloc(std::max(table->record_size, 1u));
    if (record == nullptr)
        return 0;

    const uint32_t handle = table->next_free;
    assert(handle >= 1 && handle <= record_table_capacity && table->records[handle] == nullptr);
    table->records[handle] = record;
    table->handle_echo[handle] = handle;
    table->ref_count[handle] = 0;
    ++table->count;
    table->order[table->count] = handle;
    table->position[handle] = table->count;
    // Handles below the one just used are never free: removal lowers next_free to them.
    table->next_free = table->count >= record_table_capacity ? record_table_full : first_free_from(*table, handle);
    return handle;
}

void* record_table_at(const record_table* table, uint32_t position)
{
    return record_table_get(table, record_table_handle_at(table, position));
}

uint32_t record_table_handle_at(const record_table* table, uint32_t position)
{
    if (table == nullptr || position < 1 || position > record_table_capacity)
        return 0;
    return table->order[position];
}

void record_table_free(record_table* table)
{
    if (table == nullptr)
        return;
    for (uint32_t p = table->count; p >= 1; --p)
        std::free(record_table_at(table, p));
    std::free(table);
}
