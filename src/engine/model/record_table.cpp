#include "model/record_table.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>

constexpr uint32_t max_swap_position = record_table_capacity - 1; // swapping leaves the last position out

static bool is_live(const record_table* table, uint32_t handle)
{
    return record_table_get(table, handle) != nullptr;
}

// The first free handle from `handle` upward; the full mark when there is none.
static uint32_t first_free_from(const record_table& table, uint32_t handle)
{
    while (handle <= record_table_capacity && table.records[handle] != nullptr)
        ++handle;
    return handle;
}

static void put_at(record_table& table, uint32_t position, uint32_t handle)
{
    table.order[position] = handle;
    table.position[handle] = position;
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
    return table == nullptr ? 0 : record_table_insert(table, table->count + 1);
}

uint32_t record_table_insert(record_table* table, uint32_t position)
{
    if (table == nullptr || table->count >= record_table_capacity)
        return 0;
    void* record = std::malloc(std::max(table->record_size, 1u));
    if (record == nullptr)
        return 0;

    const uint32_t handle = table->next_free;
    table->records[handle] = record;
    table->handle_echo[handle] = handle;
    table->ref_count[handle] = 0;

    const uint32_t place = std::clamp(position, 1u, table->count + 1);
    for (uint32_t p = table->count; p >= place; --p)
        put_at(*table, p + 1, table->order[p]);
    put_at(*table, place, handle);

    ++table->count;
    // Handles below the one just used are never free: removal lowers next_free to them.
    table->next_free = table->count >= record_table_capacity ? record_table_full : first_free_from(*table, handle);
    return handle;
}

void* record_table_get(const record_table* table, uint32_t handle)
{
    if (table == nullptr || handle < 1 || handle > record_table_capacity)
        return nullptr;
    return table->records[handle];
}

void* record_table_at(const record_table* table, uint32_t position)
{
    return record_table_get(table, record_table_handle_at(table, position));
}

void record_table_remove_at(record_table* table, uint32_t position)
{
    const uint32_t handle = record_table_handle_at(table, position);
    if (!is_live(table, handle))
        return;

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

uint32_t record_table_handle_at(const record_table* table, uint32_t position)
{
    if (table == nullptr || position < 1 || position > record_table_capacity)
        return 0;
    return table->order[position];
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

void record_table_free(record_table* table)
{
    if (table == nullptr)
        return;
    for (uint32_t p = table->count; p >= 1; --p)
        std::free(record_table_at(table, p));
    std::free(table);
}
