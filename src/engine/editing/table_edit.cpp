#include "editing/table_edit.h"

#include <algorithm>
#include <cassert>
#include <cstdio>
#include <cstdlib>

constexpr uint32_t max_swap_position = record_table_capacity - 1; // swapping leaves the last position out

static bool is_live(const record_table* table, uint32_t handle)
{
    return record_table_get(table, handle) != nullptr;
}

static void put_at(record_table& table, uint32_t position, uint32_t handle)
{
    assert(position >= 1 && position <= table.count && handle >= 1 && handle <= record_table_capacity);
    table.order[position] = handle;
    table.position[handle] = position;
}

uint32_t record_table_insert(record_table* table, uint32_t position)
{
    const uint32_t handle = record_table_add(table);
    if (handle == 0)
        return 0;
    const uint32_t place = std::clamp(position, 1u, table->count);
    for (uint32_t p = table->count; p > place; --p)
        put_at(*table, p, table->order[p - 1]);
    put_at(*table, place, handle);
    return handle;
}

void record_table_remove_at(record_table* table, uint32_t position)
{
    const uint32_t handle = record_table_handle_at(table, position);
    if (!is_live(table, handle))
        return;

    assert(position >= 1 && position <= table->count); // only there is a live one
    std::free(table->records[handle]);
    table->records[handle] = nullptr;
    table->handle_echo[handle] = 0;
    table->ref_count[handle] = 0;
    table->position[handle] = 0;
    table->next_free = std::min(table->next_free, handle);

    for (uint32_t p = position; p < table->count; ++p)
        put_at(*table, p, table->order[p + 1]);
    table->order[table->count] = 0;
    --table->count;
}

int record_table_remove_unreferenced(record_table* table, uint32_t position)
{
    const uint32_t handle = record_table_handle_at(table, position);
    if (!is_live(table, handle))
        return 2;
    if (table->ref_count[handle] != 0)
        return 1;
    record_table_remove_at(table, position);
    return 0;
}

// Quirk: position 4096 can hold a record but cannot be swapped
// ("swapping with position 4096 does nothing").
void record_table_swap(record_table* table, uint32_t position_a, uint32_t position_b)
{
    if (position_a > max_swap_position || position_b > max_swap_position)
        return;
    const uint32_t handle_a = record_table_handle_at(table, position_a);
    const uint32_t handle_b = record_table_handle_at(table, position_b);
    if (!is_live(table, handle_a) || !is_live(table, handle_b))
        return;
    put_at(*table, position_a, handle_b);
    put_at(*table, position_b, handle_a);
}

uint32_t record_table_position_of(const record_table* table, uint32_t handle)
{
    return is_live(table, handle) ? table->position[handle] : 0;
}

void record_table_ref(record_table* table, uint32_t handle)
{
    if (!is_live(table, handle))
        return;
    ++table->ref_count[handle];
    std::printf("Increase %u\n", handle);
}

void record_table_unref(record_table* table, uint32_t handle)
{
    if (!is_live(table, handle) || table->ref_count[handle] == 0)
        return;
    --table->ref_count[handle];
    std::printf("Decrease %u\n", handle);
}

bool record_table_removable(const record_table* table, uint32_t handle)
{
    return is_live(table, handle) && table->ref_count[handle] == 0;
}
