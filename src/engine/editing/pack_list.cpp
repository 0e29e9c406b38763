#include "editing/pack_list.h"

#include "content/pack.h"

#include <cassert>
#include <cstdlib>
#include <cstring>

pack_file_list* pack_file_list_new()
{
    return static_cast<pack_file_list*>(std::calloc(1, sizeof(pack_file_list)));
}

static void free_strings(pack_file_list* node)
{
    assert(node != nullptr);
    std::free(node->name);
    std::free(node->source_dir);
    node->name = nullptr;
    node->source_dir = nullptr;
}

pack_file_list* pack_file_list_append(pack_file_list* list, char* name, char* source_dir)
{
    pack_file_list* last = list;
    while (last && last->name)
        last = last->next;
    pack_file_list* new_last = last && name ? pack_file_list_new() : nullptr;
    if (!new_last) { // nothing to append, nowhere, or no memory: the strings are ours to free all the same
        std::free(name);
        std::free(source_dir);
        return last;
    }
    assert(last->name == nullptr && last->next == nullptr); // the list's empty end
    last->name = name;
    last->source_dir = source_dir;
    last->next = new_last;
    return new_last;
}

pack_file_list* pack_file_list_remove(pack_file_list* list, uint32_t index)
{
    pack_file_list* before = nullptr;
    pack_file_list* node = list;
    for (; node && node->name && index > 0; --index) {
        before = node;
        node = node->next;
    }
    if (!node || !node->name) {
        std::puts("Error: index not found!");
        return list;
    }
    pack_file_list* next = node->next;
    free_strings(node);
    std::free(node);
    if (!before)
        return next;
    before->next = next;
    return list;
}

void pack_file_list_free(pack_file_list* list)
{
    while (list) {
        pack_file_list* next = list->next;
        free_strings(list);
        std::free(list);
        list = next;
    }
}

void pack_file_list_clear(pack_file_list* list)
{
    if (!list)
        return;
    free_strings(list);
    pack_file_list_free(list->next);
    list->next = nullptr;
}

pack_file_list* pack_list_names(const pack_file* pack)
{
    pack_file_list* list = pack_file_list_new();
    pack_file_list* last = list;
    pack_slot slot;
    uint32_t count = 0;
    for (; last && pack_read_slot(pack, count, slot); ++count)
        last = pack_file_list_append(last, strdup(slot.name), nullptr);
    if (last && pack && !pack_index_ends(pack, count))
        std::puts("unexpected error");
    return list;
}
