#include "content/xml_nodes.h"

#include <cassert>
#include <cstdlib>
#include <cstring>

xml_node* xml_new_empty_node()
{
    return static_cast<xml_node*>(std::calloc(1, sizeof(xml_node)));
}

// The array's capacity is the next power of two, so that appending n costs n.
xml_attribute* xml_append_attribute(xml_node* node, char* name)
{
    assert(node->attribute_count >= 0 && name != nullptr);
    const auto count = static_cast<size_t>(node->attribute_count);
    if ((count & (count - 1)) == 0) {
        const size_t capacity = count == 0 ? 1 : 2 * count;
        void* grown = std::realloc(node->attributes, capacity * sizeof(xml_attribute));
        if (!grown)
            return nullptr;
        node->attributes = static_cast<xml_attribute*>(grown);
    }
    xml_attribute* attribute = &node->attributes[count];
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

void xml_append_child(xml_node* parent, xml_node* last_child, xml_node* child)
{
    assert(child->parent == nullptr && child->next_sibling == nullptr);
    assert(last_child != nullptr ? last_child->next_sibling == nullptr : parent->first_child == nullptr);
    child->parent = parent;
    if (last_child)
        last_child->next_sibling = child;
    else
        parent->first_child = child;
}
