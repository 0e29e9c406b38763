#include "document_text.h"

#include <cstring>
#include <doctest/doctest.h>

// ---- generated images -------------------------------------------------------------

TEST_CASE("a generated image keeps its kind and up to 24 values")
{
    document_text text;
    text.records[1] = "<a type=\"3\"><x>0.5</x><y>1</y></a><b type=\"-4\">" + repeated("<z>2</z>", 24) + "</b>";
    const reading r(text);
    CHECK(fatal_line(r) == "");
    REQUIRE(r.d.generated_image_count == 2);
    const generated_image& first = r.d.generated_images[0];
    CHECK(first.params.kind == generator_maze);
    CHECK(first.params.values[0] == 0.5f);
    CHECK(first.params.values[1] == 1.0f);
    CHECK(first.params.values[2] == 0.0f);
    CHECK(first.pixels == nullptr);
    CHECK(r.d.generated_images[1].params.kind == -4);
    CHECK(r.d.generated_images[1].params.values[23] == 2.0f);
}

TEST_CASE("25 values of a generated image are too many")
{
    document_text text;
    text.records[1] = "<a type=\"0\">" + repeated("<z>2</z>", 25) + "</a>";
    CHECK(joined(reading(text))
        == "Error: demo.xmlz: section 1 (generated images), record 1: more than 24 parameters.\n");
}

// ---- texture nodes ----------------------------------------------------------------

static const std::string node_head = "<t name=\"n\" type=\"207\" texture_format=\"1\" texture_filter=\"2\">";

// The first of `count` nodes; the others are there to be named.
static texture_node node_of(const std::string& element, uint32_t count = 9)
{
    document_text text;
    text.records[1] = "<i type=\"0\"/>";
    text.records[2] = element + repeated(node_head + "<i>0</i></t>", count - 1);
    const reading r(text);
    CHECK(fatal_line(r) == "");
    return *table_get(r.d.texture_table, 1);
}

TEST_CASE("a node has its inputs, outputs and values by the order of its children")
{
    const texture_node node = node_of(
        node_head + "<first>2</first><input>3</input><output>4</output><output>5</output><p>0.5</p><q>7</q></t>");
    CHECK(node.type == node_add_2);
    CHECK(std::strcmp(node.name, "n") == 0);
    CHECK(node.texture_format == 1);
    CHECK(node.texture_filter == 2);
    CHECK(node.state == node_pending);
    CHECK(node.input1 == 2);
    CHECK(node.input2 == 3);
    CHECK(node.output_count == 2);
    CHECK(node.outputs[0] == 4);
    CHECK(node.outputs[1] == 5);
    CHECK(node.outputs[2] == 0);
    CHECK(node.values[0] == 0.5f);
    CHECK(node.values[1] == 7.0f);
    CHECK(node.values[2] == 0.0f);
    CHECK(node.pixels == nullptr);
    CHECK(node.layer_id == 0);
}

TEST_CASE("the first child is input 1 even when it is called output")
{
    const texture_node node = node_of(node_head + "<output>2</output><output>3</output></t>");
    CHECK(node.input1 == 2);
    CHECK(node.input2 == 0);
    CHECK(node.output_count == 1);
    CHECK(node.outputs[0] == 3);
}

TEST_CASE("input is input 2 only as the second child")
{
    const texture_node node = node_of(node_head + "<i>0</i><output>2</output><input>3</input></t>");
    CHECK(node.input2 == 0);
    CHECK(node.output_count == 1);
    CHECK(node.values[0] == 3.0f);
    const texture_node first = node_of(node_head + "<input>2</input><input>3</input><input>4</input></t>");
    CHECK(first.input1 == 2);
    CHECK(first.input2 == 3);
    CHECK(first.values[0] == 4.0f);
}

TEST_CASE("outputs end at the first child of another name, and a later output is a parameter")
{
    const texture_node node
        = node_of(node_head + "<i>0</i><output>2</output><x>1.5</x><output>3</output><outputs>4</outputs></t>");
    CHECK(node.output_count == 1);
    CHECK(node.values[0] == 1.5f);
    CHECK(node.values[1] == 3.0f);
    CHECK(node.values[2] == 4.0f);
}

TEST_CASE("the name output is compared whole")
{
    const texture_node node = node_of(node_head + "<i>0</i><outputs>2</outputs><outpu>3</outpu></t>");
    CHECK(node.output_count == 0);
    CHECK(node.values[0] == 2.0f);
}

TEST_CASE("nine values of a node are kept, more are read and dropped")
{
    const texture_node node
        = node_of(node_head + "<i>0</i>" + repeated("<p>1</p>", 8) + repeated("<p>2</p>", 4) + "</t>");
    CHECK(node.values[7] == 1.0f);
    CHECK(node.values[8] == 2.0f);
    CHECK(node.input1 == 0);

    document_text text;
    text.records[2] = node_head + "<i>0</i>" + repeated("<p>1</p>", 9) + "<p/></t>";
    CHECK(fatal_line(reading(text))
        == "Error: demo.xmlz: section 2 (texture nodes), record 1, parameter 10: the number is missing.\n");
}

TEST_CASE("of an output node only the first child is read")
{
    const texture_node node = node_of(with(node_head, "207", "255") + "<i>2</i><input/><output/><p/></t>");
    CHECK(node.type == node_output);
    CHECK(node.input1 == 2);
    CHECK(node.input2 == 0);
    CHECK(node.output_count == 0);
    CHECK(node.layer_id == 0);
}

TEST_CASE("layer_id is read below type 201, unknown codes included, and nowhere else")
{
    for (const char* type : {"0", "101", "104", "200"}) {
        document_text text;
        text.records[1] = repeated("<i type=\"0\"/>", 8);
        text.records[2] = with(node_head, "\"207\"", "\"" + std::string(type) + "\" layer_id=\"7\"") + "<i>0</i></t>";
        const reading r(text);
        CHECK(fatal_line(r) == "");
        CHECK(table_get(r.d.texture_table, 1)->layer_id == 7);
        text.records[2] = without_attribute(text.records[2], "layer_id");
        CHECK(fatal_line(reading(text))
            == "Error: demo.xmlz: section 2 (texture nodes), record 1: attribute \"layer_id\" is missing.\n");
    }
    const texture_node node = node_of(with(node_head, "\"207\"", "\"201\" layer_id=\"7\"") + "<i>0</i></t>");
    CHECK(node.layer_id == 0);
}

TEST_CASE("a node's type keeps its low eight bits, with a warning")
{
    const std::string start = "Warning: demo.xmlz: section 2 (texture nodes), record 1: ";
    check_byte(2, with(node_head, "\"207\"", "\"T\" layer_id=\"0\"") + "<i>0</i></t>", "\"T\"", start + "type ",
        [](const reading& r) { return table_get(r.d.texture_table, 1)->type; });
}

TEST_CASE("whether a node has a layer, and whether it is an output, is asked about its byte")
{
    const struct {
        const char* type;
        uint8_t byte;
        uint32_t layer_id;
        uint32_t output_count;
    } cases[] = {{"457", 201, 0, 1}, {"357", 101, 3, 1}, {"-155", 101, 3, 1}, {"511", 255, 0, 0}, {"-1", 255, 0, 0}};
    for (const auto& c : cases) {
        document_text text;
        text.records[1] = repeated("<i type=\"0\"/>", 4);
        const std::string type = std::string("\"") + c.type + "\"";
        text.records[2] = with(node_head, "\"207\"", type + " layer_id=\"3\"") + "<i>0</i><output>1</output></t>";
        const reading r(text);
        const auto& node = *table_get(r.d.texture_table, 1);
        CHECK(node.type == c.byte);
        CHECK(node.layer_id == c.layer_id);
        CHECK(node.output_count == c.output_count);
        text.records[2] = without_attribute(text.records[2], "layer_id");
        CHECK(reading(text).failed == (c.layer_id != 0)); // only those need it
    }
}

TEST_CASE("filters keep their low eight bits, with a warning")
{
    check_byte(2, with(node_head, "texture_filter=\"2\"", "texture_filter=\"F\"") + "<i>0</i></t>", "\"F\"",
        "Warning: demo.xmlz: section 2 (texture nodes), record 1: texture_filter ",
        [](const reading& r) { return table_get(r.d.texture_table, 1)->texture_filter; });
    const document_text text = complete_document();
    check_byte(6, with(text.records[6], "texture_filter=\"1\"", "texture_filter=\"F\""), "\"F\"",
        "Warning: demo.xmlz: section 6 (dynamic textures), record 1: texture_filter ",
        [](const reading& r) { return table_get(r.d.dynamic_texture_table, 1)->texture_filter; });
    check_byte(7, with(text.records[7], "texture_filter=\"2\"", "texture_filter=\"F\""), "\"F\"",
        "Warning: demo.xmlz: section 7 (image textures), record 1: texture_filter ",
        [](const reading& r) { return table_get(r.d.image_texture_table, 1)->texture_filter; });
    check_byte(8, with(text.records[8], "texture_filter=\"1\"", "texture_filter=\"F\""), "\"F\"",
        "Warning: demo.xmlz: section 8 (cube maps), record 1: texture_filter ",
        [](const reading& r) { return table_get(r.d.cube_map_table, 1)->texture_filter; });
}

TEST_CASE("a node's name is cut to 34 bytes")
{
    const std::string name = "abcdefghijklmnopqrstuvwxyz0123456789";
    const texture_node node = node_of(with(node_head, "\"n\"", "\"" + name + "\"") + "<i>0</i></t>");
    CHECK(node.name == name.substr(0, 34));
}

TEST_CASE("a node without children, and one whose first child has no number, are errors")
{
    document_text text;
    text.records[2] = node_head + "</t>";
    CHECK(
        joined(reading(text)) == "Error: demo.xmlz: section 2 (texture nodes), record 1: too few children: 0 of 1.\n");
    text.records[2] = node_head + "<i/></t>";
    CHECK(joined(reading(text))
        == "Error: demo.xmlz: section 2 (texture nodes), record 1, input1: the number is missing.\n");
}

TEST_CASE("255 outputs are enough, 256 are too many")
{
    const texture_node node = node_of(node_head + "<i>0</i>" + repeated("<output>2</output>", 255) + "</t>");
    CHECK(node.output_count == 255);
    CHECK(node.outputs[254] == 2);
    document_text text;
    text.records[2] = node_head + "<i>0</i>" + repeated("<output>1</output>", 256) + "</t>";
    CHECK(
        fatal_line(reading(text)) == "Error: demo.xmlz: section 2 (texture nodes), record 1: more than 255 outputs.\n");
}

TEST_CASE("texture_format ends at 8")
{
    for (const char* format : {"-1", "9", "256"}) {
        document_text text;
        text.records[2] = with(node_head, "texture_format=\"1\"", std::string("texture_format=\"") + format + "\"")
            + "<i>0</i></t>";
        CHECK(fatal_line(reading(text))
            == std::string("Error: demo.xmlz: section 2 (texture nodes), record 1: texture_format ") + format
                + " is outside 0..8.\n");
    }
    CHECK(
        node_of(with(node_head, "texture_format=\"1\"", "texture_format=\"8\"") + "<i>0</i></t>").texture_format == 8);
}

TEST_CASE("what the nodes name is checked when all of them are read")
{
    document_text text;
    text.records[1] = repeated("<i type=\"0\"/>", 2);
    text.records[2] = node_head + "<i>2</i><input>3</input><output>2</output><output>9</output><output>-1</output></t>"
        + with(node_head, "\"207\"", "\"101\" layer_id=\"2\"") + "<i>5000</i></t>"
        + with(node_head, "\"207\"", "\"104\" layer_id=\"1\"") + "<i>0</i></t>"
        + with(node_head, "\"207\"", "\"102\" layer_id=\"-1\"") + "<i>0</i></t>"
        + with(node_head, "\"207\"", "\"99\" layer_id=\"50\"") + "<i>0</i></t>"
        + with(node_head, "\"207\"", "\"104\" layer_id=\"2\"") + "<i>0</i></t>";
    const reading r(text);
    CHECK_FALSE(r.failed);
    CHECK(dangling_lines(r)
        == "Warning: demo.xmlz: section 2 (texture nodes), record 1: output 9 does not exist.\n"
           "Warning: demo.xmlz: section 2 (texture nodes), record 1: output -1 does not exist.\n"
           "Warning: demo.xmlz: section 2 (texture nodes), record 2: input1 5000 does not exist.\n"
           "Warning: demo.xmlz: section 2 (texture nodes), record 2: layer_id 2 does not exist.\n"
           "Warning: demo.xmlz: section 2 (texture nodes), record 4: layer_id -1 does not exist.\n"
           "Warning: demo.xmlz: section 2 (texture nodes), record 6: layer_id 2 does not exist.\n");
    text.records[2] = node_head + "<i>1</i><input>2</input></t>";
    CHECK(dangling_lines(reading(text))
        == "Warning: demo.xmlz: section 2 (texture nodes), record 1: input2 2 does not exist.\n");
}

// ---- dynamic textures ---------------------------------------------------------------

static const std::string dynamic_head
    = "<d name=\"n\" type=\"1\" texture_format=\"1\" texture_filter=\"0\" resolution=\"64x64\" bpp=\"24\">";

static dynamic_texture dynamic_of(const std::string& element)
{
    document_text text;
    text.records[4] = repeated(function_text(), 3);
    text.records[6] = element;
    const reading r(text);
    CHECK(fatal_line(r) == "");
    return *table_get(r.d.dynamic_texture_table, 1);
}

TEST_CASE("a dynamic texture has its kind, sizes and functions")
{
    const dynamic_texture texture = dynamic_of(dynamic_head + "<p>2</p><p>0</p><p>3</p></d>");
    CHECK(std::strcmp(texture.name, "n") == 0);
    CHECK(texture.type == effect_2d_plasma);
    CHECK(texture.width == 64);
    CHECK(texture.height == 64);
    CHECK(texture.bpp == 24);
    CHECK(texture.texture_format == 1);
    CHECK(texture.texture_filter == 0);
    CHECK(texture.functions[0] == 2);
    CHECK(texture.functions[1] == 0);
    CHECK(texture.functions[2] == 3);
    CHECK(texture.functions[3] == 0);
    CHECK(texture.refreshed == 0);
    CHECK(texture.state == nullptr);
}

TEST_CASE("every resolution but three is 512 x 512")
{
    const struct {
        const char* text;
        uint32_t side;
    } cases[] = {{"64x64", 64}, {"128x128", 128}, {"256x256", 256}, {"512x512", 512}, {"32x32", 512}, {"", 512},
        {"64X64", 512}, {"64x64 ", 512}};
    for (const auto& c : cases) {
        CAPTURE(c.text);
        const dynamic_texture texture = dynamic_of(with(dynamic_head, "64x64", c.text) + "</d>");
        CHECK(texture.width == c.side);
        CHECK(texture.height == c.side);
    }
}

TEST_CASE("only exactly 8 gives eight bits a pixel")
{
    for (const char* bpp : {"24", "08", "8 ", "80", "", " 8"})
        CHECK(dynamic_of(with(dynamic_head, "bpp=\"24\"", std::string("bpp=\"") + bpp + "\"") + "</d>").bpp == 24);
    CHECK(dynamic_of(with(dynamic_head, "bpp=\"24\"", "bpp=\"8\"") + "</d>").bpp == 8);
}

TEST_CASE("the run of parameters ends at the first child with another name")
{
    const dynamic_texture texture = dynamic_of(dynamic_head + "<p>1</p><q/><p>2</p></d>");
    CHECK(texture.functions[0] == 1);
    CHECK(texture.functions[1] == 0);
    CHECK(dynamic_of(dynamic_head + "<q>1</q><p>2</p></d>").functions[0] == 0);
}

TEST_CASE("32 parameters of a dynamic texture are kept, more are read and dropped")
{
    const dynamic_texture texture = dynamic_of(dynamic_head + repeated("<p>1</p>", 31) + "<p>2</p><p>3</p></d>");
    CHECK(texture.functions[31] == 2);
    CHECK(texture.width == 64);
    CHECK(texture.texture == 0);
}

TEST_CASE("a dynamic texture's kind outside the catalogue is an error")
{
    for (const char* type : {"-1", "5", "257"}) {
        document_text text;
        text.records[6] = with(dynamic_head, "type=\"1\"", std::string("type=\"") + type + "\"") + "</d>";
        CHECK(joined(reading(text))
            == std::string("Error: demo.xmlz: section 6 (dynamic textures), record 1: type ") + type
                + " is no 2-D effect.\n");
    }
}

TEST_CASE("a dynamic texture may be of every kind in the catalogue")
{
    for (const std::string type : {"0", "1", "2", "3", "4"})
        CHECK(std::to_string(dynamic_of(with(dynamic_head, "type=\"1\"", "type=\"" + type + "\"") + "</d>").type)
            == type);
}

TEST_CASE("a dynamic texture warns of functions that do not exist, but not of 0")
{
    document_text text;
    text.records[6] = dynamic_head + "<p>0</p><p>12</p></d>";
    const reading r(text);
    CHECK_FALSE(r.failed);
    CHECK(
        joined(r) == "Warning: demo.xmlz: section 6 (dynamic textures), record 1, p 2: function 12 does not exist.\n");
    CHECK(table_get(r.d.dynamic_texture_table, 1)->functions[1] == 12);
    text.records[6] = dynamic_head + "<p/></d>";
    CHECK(joined(reading(text))
        == "Error: demo.xmlz: section 6 (dynamic textures), record 1, p 1: the number is missing.\n");
}
