// Editing and writing element trees.
#include "editing/xml_edit.h"

#include "content/text_buffer.h"

#include <cfloat>
#include <cstdlib>
#include <doctest/doctest.h>
#include <limits>
#include <string>

static std::string written(const xml_node* node)
{
    char* text = xml_write(node);
    const std::string copy = text ? text : "(null)";
    std::free(text);
    return copy;
}

TEST_CASE("setting an attribute appends it or replaces the first of its name")
{
    xml_node* root = xml_parse("<a x=\"1\" x=\"2\"/>");
    xml_node* a = root->first_child;
    const char* stored = xml_set_attribute(a, "x", "9");
    CHECK(stored == xml_get_attribute(a, "x"));
    CHECK(std::string(stored) == "9");
    CHECK(a->attribute_count == 2);
    CHECK(std::string(a->attributes[1].value) == "2");
    xml_set_attribute(a, "y", "3");
    CHECK(a->attribute_count == 3);
    CHECK(std::string(a->attributes[2].name) == "y");
    CHECK(std::string(a->attributes[2].value) == "3");
    xml_free(root);
}

TEST_CASE("an attribute can be set to its own value")
{
    xml_node* node = xml_new_node("a");
    xml_set_attribute(node, "x", "same");
    CHECK(std::string(xml_set_attribute(node, "x", xml_get_attribute(node, "x"))) == "same");
    xml_free(node);
}

TEST_CASE("an attribute can be set to no value")
{
    xml_node* node = xml_new_node("a");
    CHECK(xml_set_attribute(node, "x", nullptr) == nullptr);
    CHECK(node->attribute_count == 1);
    CHECK(xml_get_attribute(node, "x") == nullptr);
    CHECK(xml_set_attribute(nullptr, "x", "1") == nullptr);
    xml_free(node);
}

TEST_CASE("numbers become attributes in their own forms")
{
    xml_node* node = xml_new_node("a");
    CHECK(std::string(xml_set_attribute_u32(node, "u", 4294967295u)) == "4294967295");
    CHECK(std::string(xml_set_attribute_i32(node, "i", -2147483647 - 1)) == "-2147483648");
    CHECK(std::string(xml_set_attribute_f32(node, "f", 0.1f)) == "0.100000");
    CHECK(std::string(xml_set_attribute_f32(node, "f", -2.5f)) == "-2.500000");
    CHECK(node->attribute_count == 3);
    xml_free(node);
}

TEST_CASE("a number longer than 31 characters is cut")
{
    xml_node* node = xml_new_node("a");
    // 2^127 = 170141183460469231731687303715884105728, of which 31 characters fit.
    CHECK(std::string(xml_set_attribute_f32(node, "f", 0x1p127f)) == "1701411834604692317316873037158");
    xml_set_text_f32_precise(node, 0x1p127f);
    CHECK(std::string(node->text) == "1701411834604692317316873037158");
    xml_free(node);
}

TEST_CASE("many attributes survive the growth of their array")
{
    xml_node* node = xml_new_node("a");
    for (uint32_t i = 0; i < 1000; ++i)
        xml_set_attribute_u32(node, ("n" + std::to_string(i)).c_str(), i);
    REQUIRE(node->attribute_count == 1000);
    for (uint32_t i = 0; i < 1000; ++i)
        CHECK(std::string(xml_get_attribute(node, ("n" + std::to_string(i)).c_str())) == std::to_string(i));
    xml_free(node);
}

TEST_CASE("attributes are added to what the reader made")
{
    for (int count = 0; count < 9; ++count) {
        std::string text = "<a";
        for (int i = 0; i < count; ++i)
            text += " x=\"1\"";
        xml_node* root = xml_parse((text + "/>").c_str());
        xml_set_attribute(root->first_child, "y", "2");
        CHECK(root->first_child->attribute_count == count + 1);
        CHECK(std::string(xml_get_attribute(root->first_child, "y")) == "2");
        xml_free(root);
    }
}

TEST_CASE("a new node is detached and empty")
{
    xml_node* node = xml_new_node("a");
    CHECK(std::string(node->name) == "a");
    CHECK(node->attributes == nullptr);
    CHECK(node->attribute_count == 0);
    CHECK(node->text == nullptr);
    CHECK(node->next_sibling == nullptr);
    CHECK(node->first_child == nullptr);
    CHECK(node->parent == nullptr);
    xml_free(node);
}

TEST_CASE("children are added behind the last one")
{
    xml_node* a = xml_new_node("a");
    xml_node* b = xml_add_child(a, "b");
    xml_node* c = xml_add_child(a, "c");
    CHECK(a->first_child == b);
    CHECK(b->next_sibling == c);
    CHECK(b->parent == a);
    CHECK(c->parent == a);
    CHECK(c->next_sibling == nullptr);
    CHECK(xml_add_child(nullptr, "d") == nullptr);
    xml_free(a);
}

TEST_CASE("text is replaced, by itself as well, and removed")
{
    xml_node* node = xml_new_node("a");
    xml_set_text(node, "one");
    xml_set_text(node, node->text);
    CHECK(std::string(node->text) == "one");
    xml_set_text(node, nullptr);
    CHECK(node->text == nullptr);
    xml_set_text(nullptr, "x");
    xml_free(node);
}

TEST_CASE("numbers become texts in their own forms")
{
    xml_node* node = xml_new_node("a");
    xml_set_text_f32(node, 0.1f);
    CHECK(std::string(node->text) == "0.100000");
    xml_set_text_f32_precise(node, 0.1f); // the nearest single: 0.100000001490116...
    CHECK(std::string(node->text) == "0.100000001490");
    xml_set_text_u32(node, 4294967295u);
    CHECK(std::string(node->text) == "4294967295");
    xml_free(node);
}

TEST_CASE("freeing null does nothing")
{
    xml_free(nullptr);
}

TEST_CASE("freeing a node below the top leaves the tree as it is")
{
    xml_node* root = xml_parse("<a><b><x/></b><c/></a>");
    xml_node* a = root->first_child;
    xml_node* b = a->first_child;
    a->first_child = b->next_sibling;
    xml_free(b);
    CHECK(std::string(a->first_child->name) == "c");
    xml_free(root);
}

TEST_CASE("a tree is written with two blanks per level")
{
    xml_node* root = xml_parse("<a x=\"1\"><b/><c y=\"2\" z=\"\">t</c><d><e/></d></a>");
    CHECK(written(root->first_child)
        == "<a x=\"1\">\n"
           "  <b/>\n"
           "  <c y=\"2\" z=\"\">t</c>\n"
           "  <d>\n"
           "    <e/>\n"
           "  </d>\n"
           "</a>\n");
    xml_free(root);
}

TEST_CASE("only the node and what is below it is written")
{
    xml_node* root = xml_parse("<a><b><c/></b><d/></a>");
    CHECK(written(root->first_child->first_child) == "<b>\n  <c/>\n</b>\n");
    CHECK(xml_write(nullptr) == nullptr);
    xml_free(root);
}

TEST_CASE("a node with text and children is written with its text only")
{
    xml_node* a = xml_new_node("a");
    xml_add_child(a, "b");
    xml_set_text(a, "t");
    CHECK(written(a) == "<a>t</a>\n");
    xml_free(a);
}

TEST_CASE("an empty text is written as a text")
{
    xml_node* a = xml_new_node("a");
    xml_set_text(a, "");
    CHECK(written(a) == "<a></a>\n");
    xml_free(a);
}

TEST_CASE("nothing is escaped")
{
    xml_node* a = xml_new_node("a");
    xml_set_attribute(a, "x", "<\"&%s");
    xml_set_text(a, "<&>%d");
    CHECK(written(a) == "<a x=\"<\"&%s\"><&>%d</a>\n");
    xml_free(a);
}

TEST_CASE("a nameless node is written without a name")
{
    xml_node* root = xml_parse("<a/>");
    CHECK(written(root) == "<>\n  <a/>\n</>\n");
    xml_free(root);
    xml_node* empty = xml_new_node(nullptr);
    CHECK(written(empty) == "</>\n");
    xml_set_text(empty, "t");
    CHECK(written(empty) == "<>t</>\n");
    xml_free(empty);
}

TEST_CASE("attributes without a name or a value are written as far as they go")
{
    xml_node* root = xml_parse("<a x=>");
    CHECK(written(root->first_child) == "<a x=\"\"/>\n");
    root->first_child->attributes[0].name = nullptr;
    CHECK(written(root->first_child) == "<a \"\"/>\n");
    xml_free(root);
}

TEST_CASE("every written piece is cut at 4095 bytes")
{
    const std::string longer(5000, 'v');
    SUBCASE("a name")
    {
        xml_node* node = xml_new_node(longer.c_str());
        CHECK(written(node) == "<" + longer.substr(0, 4095) + "/>\n");
        xml_free(node);
    }
    SUBCASE("a value")
    {
        xml_node* node = xml_new_node("a");
        xml_set_attribute(node, "x", longer.c_str());
        CHECK(written(node) == "<a x=\"" + longer.substr(0, 4095) + "\"/>\n");
        xml_free(node);
    }
    SUBCASE("an attribute's name with its equals sign")
    {
        xml_node* node = xml_new_node("a");
        xml_set_attribute(node, longer.c_str(), "1");
        CHECK(written(node) == "<a " + longer.substr(0, 4095) + "\"1\"/>\n");
        xml_free(node);
    }
    SUBCASE("a text together with its closing tag")
    {
        xml_node* node = xml_new_node("a");
        xml_set_text(node, longer.c_str());
        CHECK(written(node) == "<a>" + longer.substr(0, 4094));
        xml_set_text(node, longer.substr(0, 4089).c_str()); // 1 + 4089 + 5 bytes: just fits
        CHECK(written(node) == "<a>" + longer.substr(0, 4089) + "</a>\n");
        xml_set_text(node, longer.substr(0, 4090).c_str()); // loses its line end
        CHECK(written(node) == "<a>" + longer.substr(0, 4090) + "</a>");
        xml_free(node);
    }
}

TEST_CASE("a written tree reads back as the same tree")
{
    xml_node* root = xml_parse("<a x=\"1\"><b/><c y=\"2\"> t\n</c><d><e/><e/></d></a>");
    const std::string once = written(root->first_child);
    xml_node* again = xml_parse(once.c_str());
    CHECK(written(again->first_child) == once);
    CHECK(std::string(again->first_child->first_child->next_sibling->text) == " t\n");
    xml_free(again);
    xml_free(root);
}

// A chain of `depth` nodes below `top`.
static void add_chain(xml_node* top, uint32_t depth)
{
    for (xml_node* node = top; depth > 0; --depth)
        node = xml_add_child(node, "n");
}

TEST_CASE("a tree of many levels is written without recursion")
{
    constexpr uint32_t depth = 6000;
    xml_node* top = xml_new_node("n");
    add_chain(top, depth);
    const std::string text = written(top);
    // Every level d but the last is "<n>" and "</n>" on lines of their own, both
    // with 2 d blanks; the last is "<n/>".
    const size_t blanks = 2 * size_t{depth} * (depth - 1) + 2 * depth;
    CHECK(text.size() == blanks + depth * 4 + depth * 5 + 5);
    CHECK(text.substr(0, 12) == "<n>\n  <n>\n  ");
    const size_t deepest = text.find("<n/>");
    REQUIRE(deepest != std::string::npos);
    CHECK(text.substr(deepest - 2 * depth - 1, 2 * depth + 1) == "\n" + std::string(2 * depth, ' '));
    xml_free(top);
}

TEST_CASE("a text that would pass 256 MiB is not written")
{
    xml_node* top = xml_new_node("n");
    add_chain(top, 20000); // 800 MB of blanks
    CHECK(xml_write(top) == nullptr);
    xml_free(top);
}
