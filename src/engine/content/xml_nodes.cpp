#include "content/xml_nodes.h"

#include <algorithm>
#include <cassert>
#include <cstdlib>
#include <cstring>

static constexpr size_t first_block_size = 256; // bytes of a tree that is one node
static constexpr size_t largest_step = 1u << 16;
static constexpr size_t alignment = sizeof(void*);

// ---- memory ----------------------------------------------------------------------

namespace {

// What stands at the beginning of each block.
struct memory_block {
    memory_block* before; // the block that was filled before this one
};

} // namespace

struct xml_memory {
    memory_block* last;
    char* next;       // the first byte that is free
    char* end;        // of the last block
    size_t next_size; // bytes of the block to come
};

// Begins a block with room for at least `bytes`; the rest of the one before stays unused.
static memory_block* new_block(memory_block* before, size_t bytes, size_t usual)
{
    const size_t size = std::max(bytes, usual);
    auto* block = static_cast<memory_block*>(std::malloc(sizeof(memory_block) + size));
    if (block)
        block->before = before;
    return block;
}

static size_t aligned(size_t bytes)
{
    return (bytes + alignment - 1) & ~(alignment - 1);
}

static void* take_in_new_block(xml_memory& memory, size_t bytes)
{
    memory_block* block = new_block(memory.last, bytes, memory.next_size);
    if (!block)
        return nullptr;
    char* begin = reinterpret_cast<char*>(block + 1);
    memory.last = block;
    memory.next = begin + bytes;
    memory.end = begin + std::max(bytes, memory.next_size);
    memory.next_size = std::min(2 * memory.next_size, largest_step);
    return begin;
}

static void* take(xml_memory& memory, size_t bytes)
{
    bytes = aligned(bytes);
    if (static_cast<size_t>(memory.end - memory.next) < bytes)
        return take_in_new_block(memory, bytes);
    char* taken = memory.next;
    memory.next += bytes;
    return taken;
}

void* xml_take(xml_node* node, size_t bytes)
{
    return take(*node->memory, bytes);
}

char* xml_take_copy(xml_node* node, const char* bytes, size_t length)
{
    assert(bytes != nullptr);
    char* copy = static_cast<char*>(take(*node->memory, length + 1));
    if (!copy)
        return nullptr;
    std::memcpy(copy, bytes, length);
    copy[length] = '\0';
    return copy;
}

// ---- nodes -----------------------------------------------------------------------

xml_node* xml_new_tree(size_t room)
{
    static_assert(first_block_size > sizeof(xml_memory) + sizeof(xml_node) + 2 * alignment);
    memory_block* block = new_block(nullptr, first_block_size + room, 0);
    if (!block)
        return nullptr;
    char* begin = reinterpret_cast<char*>(block + 1);
    auto* memory = reinterpret_cast<xml_memory*>(begin);
    *memory = {block, begin + aligned(sizeof(xml_memory)), begin + first_block_size + room,
        std::clamp(aligned(room), 4 * first_block_size, largest_step)};
    auto* node = static_cast<xml_node*>(take(*memory, sizeof(xml_node)));
    *node = {};
    node->memory = memory;
    return node;
}

xml_node* xml_new_child(xml_node* parent, xml_node* last_child)
{
    assert(last_child != nullptr ? last_child->next_sibling == nullptr : parent->first_child == nullptr);
    auto* child = static_cast<xml_node*>(take(*parent->memory, sizeof(xml_node)));
    if (!child)
        return nullptr;
    *child = {};
    child->parent = parent;
    child->memory = parent->memory;
    (last_child ? last_child->next_sibling : parent->first_child) = child;
    return child;
}

// In place where nothing was taken since, as while a tag is read; else in an array of twice the size.
static bool grow_attributes(xml_node* node)
{
    xml_memory& memory = *node->memory;
    const auto capacity = static_cast<size_t>(node->attribute_capacity);
    const bool is_last = capacity > 0 && reinterpret_cast<char*>(node->attributes + capacity) == memory.next;
    if (is_last && static_cast<size_t>(memory.end - memory.next) >= sizeof(xml_attribute)) {
        memory.next += sizeof(xml_attribute);
        ++node->attribute_capacity;
        return true;
    }
    const size_t wanted = std::max<size_t>(2 * capacity, 1);
    auto* grown = static_cast<xml_attribute*>(take(memory, wanted * sizeof(xml_attribute)));
    if (!grown)
        return false;
    std::copy_n(node->attributes, capacity, grown);
    node->attributes = grown;
    node->attribute_capacity = static_cast<int32_t>(wanted);
    return true;
}

xml_attribute* xml_append_attribute(xml_node* node, char* name)
{
    assert(node->attribute_count >= 0 && name != nullptr);
    if (node->attribute_count == node->attribute_capacity && !grow_attributes(node))
        return nullptr;
    xml_attribute* attribute = &node->attributes[node->attribute_count];
    *attribute = {name, nullptr};
    ++node->attribute_count;
    return attribute;
}

xml_attribute* xml_find_attribute(const xml_node* node, const char* name)
{
    for (int32_t i = 0; i < node->attribute_count; ++i) {
        xml_attribute* attribute = &node->attributes[i];
        if (attribute->name && std::strcmp(attribute->name, name) == 0)
            return attribute;
    }
    return nullptr;
}

void xml_free_tree(xml_node* top)
{
    assert(top->parent == nullptr);
    for (memory_block* block = top->memory->last; block;) {
        memory_block* before = block->before;
        std::free(block);
        block = before;
    }
}
