#include "authoring/show/element.h"

#include <charconv>
#include <cmath>

std::string number_text(double value)
{
    const float single = static_cast<float>(value) + 0.0f; // no negative zero
    if (!std::isfinite(single))
        return "0";
    char text[40];
    const auto end = std::to_chars(text, text + sizeof text, single).ptr;
    return {text, end};
}

element_value value_of(const std::string& text)
{
    return {text};
}

element_value value_of(double number)
{
    return {number_text(number)};
}

element_value value_of_int(int64_t number)
{
    return {std::to_string(number)};
}

element_value value_of(const authored_record* link)
{
    return link != nullptr ? element_value{"", link, 0} : element_value{"0"};
}

element& add_child(element& parent, const std::string& name)
{
    parent.children.push_back({name});
    return parent.children.back();
}

element& add_text(element& parent, const std::string& name, element_value value)
{
    element& child = add_child(parent, name);
    child.text = std::move(value);
    return child;
}

void add_attribute(element& node, const std::string& name, element_value value)
{
    node.attributes.push_back({name, std::move(value)});
}

element& add_setting(element& parent, const std::string& name, element_value value)
{
    element& child = add_child(parent, name);
    add_attribute(child, "value", std::move(value));
    return child;
}

std::string attribute_fault(const std::string& text)
{
    if (text.find('"') != std::string::npos)
        return "has a \" in it, and a document has no way to write one: leave it out";
    if (text.find("/>") != std::string::npos)
        return "has \"/>\" in it, which would end it there: put a blank between";
    return {};
}

std::string text_fault(const std::string& text)
{
    if (text.find('<') != std::string::npos)
        return "has a \"<\" in it, and a document has no way to write one: turn the comparison round (b > a)";
    if (text.find("/>") != std::string::npos)
        return "has \"/>\" in it, which would end it there: put a blank between";
    return {};
}

// ---- writing ------------------------------------------------------------------------

static std::string written(const element_value& value)
{
    return value.link != nullptr ? std::to_string(static_cast<int64_t>(value.link->number) + value.shift) : value.text;
}

static std::string keyed(const element_value& value)
{
    if (value.link == nullptr)
        return value.text;
    return "\x01" + std::to_string(value.link->id) + "+" + std::to_string(value.shift);
}

void write_element(const element& node, uint32_t depth, std::string& out)
{
    out.append(2 * depth, ' ');
    out += "<" + node.name;
    for (const element_attribute& attribute : node.attributes)
        out += " " + attribute.name + "=\"" + written(attribute.value) + "\"";
    if (node.text) {
        out += ">" + written(*node.text) + "</" + node.name + ">\n";
    } else if (node.children.empty()) {
        out += "/>\n";
    } else {
        out += ">\n";
        for (const element& child : node.children)
            write_element(child, depth + 1, out);
        out.append(2 * depth, ' ');
        out += "</" + node.name + ">\n";
    }
}

static void append_key(const element& node, std::string& key)
{
    key += "<" + node.name;
    for (const element_attribute& attribute : node.attributes)
        key += " " + attribute.name + "=" + keyed(attribute.value) + "\x02";
    key += ">";
    if (node.text)
        key += keyed(*node.text);
    for (const element& child : node.children)
        append_key(child, key);
    key += "</>";
}

std::string element_key(const element& node)
{
    std::string key;
    append_key(node, key);
    return key;
}
