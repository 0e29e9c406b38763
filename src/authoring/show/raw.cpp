#include "authoring/show/raw.h"

#include "authoring/near_name.h"

#include <vector>

const char* const section_elements[no_more_sections]
    = {"", "generated_images", "texture_nodes", "meshes", "functions", "values", "dynamic_textures", "image_textures",
        "cube_maps", "fonts", "objects", "materials", "effects", "scenes", "timeline", "music"};

element element_of(const xml_node& node)
{
    element made = {node.name != nullptr ? node.name : ""};
    for (int32_t index = 0; index < node.attribute_count; ++index) {
        const xml_attribute& attribute = node.attributes[index];
        add_attribute(made, attribute.name, value_of(std::string(attribute.value != nullptr ? attribute.value : "")));
    }
    if (node.text != nullptr)
        made.text = value_of(std::string(node.text));
    for (const xml_node* child = node.first_child; child != nullptr; child = child->next_sibling)
        made.children.push_back(element_of(*child));
    return made;
}

static bool find_section_element(const std::string& name, document_section& section)
{
    for (uint32_t number = section_generated_images; number < section_music; ++number) {
        if (name != section_elements[number])
            continue;
        section = static_cast<document_section>(number);
        return true;
    }
    return false;
}

std::string raw_element(const std::string& name, const std::string& text, document_section& section, element& content)
{
    if (!find_section_element(name, section))
        return "there is no section \"" + name + "\""
            + did_you_mean(name, std::vector<std::string>(section_elements + 1, section_elements + section_music))
            + ".";
    const owned_tree root(xml_parse(text.c_str()));
    if (root == nullptr || root->first_child == nullptr)
        return "there is no element in the text: write <material> ... </material>.";
    if (root->first_child->next_sibling != nullptr)
        return "there is more than one element in the text: each wants a raw of its own.";
    content = element_of(*root->first_child);
    return {};
}
