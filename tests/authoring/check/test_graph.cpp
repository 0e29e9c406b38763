#include "authoring/asset/pixels.h"
#include "authoring/check/graph.h"
#include "content_files.h"
#include "document_text.h"

#include <algorithm>
#include <cstdlib>
#include <doctest/doctest.h>
#include <sys/stat.h>

static bool has(const std::string& text, const std::string& part)
{
    return text.find(part) != std::string::npos;
}

static document_graph graph_of(reading& r, const graph_options& options = {})
{
    return make_document_graph(r.d, r.root, options);
}

// The line of a box or an arrow that begins with these words.
static std::string line_of(const document_graph& graph, const std::string& beginning)
{
    const size_t at = graph.dot.find("\n  " + beginning);
    if (at == std::string::npos)
        return "";
    return graph.dot.substr(at + 3, graph.dot.find('\n', at + 1) - at - 3);
}

// ---- the text ------------------------------------------------------------------------------

TEST_CASE("Each record has a box with its name and number, and arrows lead to who uses it")
{
    reading r(complete_document());
    const document_graph graph = graph_of(r);
    CHECK(has(line_of(graph, "g1 ["), "<B>Color</B>"));
    CHECK(has(line_of(graph, "n1 ["), "<B>sum</B>"));
    CHECK(has(line_of(graph, "n1 ["), ">node 1<BR/>Add 1, 0.5</FONT>"));
    CHECK(has(line_of(graph, "n2 ["), ">node 2<BR/>texture</FONT>"));
    CHECK(has(line_of(graph, "i1 ["), "<B>rock.tga</B>"));
    CHECK(has(line_of(graph, "i1 ["), ">image 1<BR/>4 x 8</FONT>"));
    CHECK(has(line_of(graph, "c1 ["), ">cube map 1<BR/>six of 2</FONT>"));
    CHECK(has(line_of(graph, "d1 ["), ">dynamic texture 1<BR/>Effect 1, 64</FONT>"));
    CHECK(has(line_of(graph, "f1 ["), "<B>font 1</B>"));
    CHECK(has(line_of(graph, "f1 ["), ">87 letters, 1 mesh</FONT>"));
    CHECK(has(line_of(graph, "s1 ["), "<B>first</B>"));
    CHECK(has(line_of(graph, "s1 ["), ">scene 1<BR/>2 objects</FONT>"));
    CHECK(has(line_of(graph, "t1 ["), ">2 clips</FONT>"));
    for (const char* arrow : {"g1 -> n1;", "n1 -> n2;", "n2 -> a1;", "i1 -> a1;", "c1 -> a1;", "a1 -> f1;", "a1 -> s1;",
             "f1 -> s1;", "m1 -> s1 [style=dashed];", "m1 -> s1;", "s1 -> t1:c1;", "s1 -> t1:c2;"})
        CHECK_MESSAGE(!line_of(graph, arrow).empty(), std::string(arrow));
}

TEST_CASE("The graph of textures holds nothing else")
{
    reading r(complete_document());
    const document_graph graph = graph_of(r, {graph_textures, nullptr, nullptr});
    CHECK(!line_of(graph, "g1 -> n1;").empty());
    CHECK(!line_of(graph, "n1 -> n2;").empty());
    CHECK(!has(graph.dot, ">image 1<"));
    CHECK(!has(graph.dot, "material"));
    CHECK(!has(graph.dot, "nobody uses it")); // of the textures: their users are not shown
    CHECK(graph.pictures.size() == 3);
}

TEST_CASE("What one scene alone uses stands in its box, and arrows end at its line")
{
    document_text text = complete_document();
    text.records[9] = "";
    text.records[13] = "<scene name=\"only\">" + scene_object_text(0, 4, 1, 0, "") + scene_object_text(1, 5, 1, 0, "")
        + "</scene><scene name=\"other\"></scene>";
    text.records[12] += text.records[12]; // of which the second is used
    text.records[10] += "<o type=\"1\" id=\"2\"/>";
    text.records[13] = with(text.records[13], "object=\"5\"", "object=\"6\"");
    reading r(text);
    const document_graph graph = graph_of(r);
    CHECK(has(line_of(graph, "s1 ["), "PORT=\"a1\">"));
    CHECK(has(line_of(graph, "s1 ["), ">mesh 1 cube.mesh<"));
    CHECK(has(line_of(graph, "s1 ["), ">mesh effect 2<"));
    CHECK(line_of(graph, "a1 [").empty());
    CHECK(line_of(graph, "m1 [").empty());
    CHECK(!line_of(graph, "n2 -> s1:a1;").empty());
    CHECK(line_of(graph, "a1 -> s1").empty());
    CHECK(has(line_of(graph, "e1 ["), ">nobody uses it<"));
    CHECK(has(line_of(graph, "s2 ["), ">no clip shows it<"));
    CHECK(has(line_of(graph, "d1 ["), ">nobody uses it<"));
}

TEST_CASE("What a scene uses in two ways stands in its box once")
{
    document_text text = complete_document();
    text.records[9] = "";
    text.records[13] = with(text.records[13], "type=\"2\"", "type=\"0\"");
    reading r(text);
    const std::string box = line_of(graph_of(r), "s1 [");
    const size_t first = box.find(">mesh 1 cube.mesh<");
    REQUIRE(first != std::string::npos);
    CHECK(box.find(">mesh 1 cube.mesh<", first + 1) == std::string::npos);
}

TEST_CASE("Letters stand in their font, also when two fonts share them")
{
    document_text text = complete_document();
    text.records[9] += text.records[9];
    text.records[13] = "<scene name=\"first\">" + scene_object_text(2, 0, 1, 1, "One")
        + scene_object_text(2, 0, 1, 2, "Two") + "</scene>";
    reading r(text);
    const document_graph graph = graph_of(r);
    CHECK(line_of(graph, "m1").empty());
    CHECK(has(line_of(graph, "f2 ["), ">87 letters, 1 mesh</FONT>"));
    CHECK(has(line_of(graph, "s1 ["), ">\"Two\"<"));
}

TEST_CASE("Clips have their times, modes and targets")
{
    document_text text = complete_document();
    text.records[14] = "<layer>" + clip_text(1, 50, 12345)
        + with(with(clip_text(1, 0, 100), "type=\"0\"", "type=\"1\""), "clearcolor", "rtex=\"1\" clearcolor")
        + "</layer>";
    reading r(text);
    const document_graph graph = graph_of(r);
    CHECK(has(line_of(graph, "t1 ["), ">0:00.50 to 2:03.95<"));
    CHECK(has(line_of(graph, "t1 ["), ">2:03.95 to 2:04.95, Render to texture<"));
    CHECK(!line_of(graph, "t1:c2 -> i1 [color=").empty());
}

static std::string test_name(const void* context, document_section section, uint32_t record)
{
    CHECK(*static_cast<const int*>(context) == 7);
    return section == section_materials && record == 1 ? "skin <&> \x01" : "";
}

TEST_CASE("The source's names come before those of the document, and none is read as HTML")
{
    const int context = 7;
    reading r(complete_document());
    const document_graph graph = graph_of(r, {graph_everything, test_name, &context});
    CHECK(has(line_of(graph, "a1 ["), "<B>skin &lt;&amp;&gt; \\x01</B>"));
    CHECK(has(line_of(graph, "a1 ["), ">material 1<BR/>"));
    CHECK(has(line_of(graph, "s1 ["), "<B>first</B>"));
}

TEST_CASE("Nodes in a circle, and those of unknown kinds, are told apart")
{
    document_text text = complete_document();
    text.records[2]
        = "<t name=\"a\" type=\"201\" texture_format=\"0\" texture_filter=\"0\"><i>2</i><output>2</output></t>"
          "<t name=\"b\" type=\"201\" texture_format=\"0\" texture_filter=\"0\"><i>1</i><output>1</output></t>"
          "<t name=\"c\" type=\"99\" texture_format=\"0\" texture_filter=\"0\" layer_id=\"0\"><i>0</i></t>"
          "<t name=\"d\" type=\"201\" texture_format=\"0\" texture_filter=\"0\"><i>0</i></t>";
    reading r(text);
    const document_graph graph = graph_of(r, {graph_textures, nullptr, nullptr});
    CHECK(has(line_of(graph, "n1 ["), ">never computed: black<"));
    CHECK(has(line_of(graph, "n3 ["), ">no operation: black<"));
    CHECK(has(line_of(graph, "n4 ["), ">nobody uses it<"));
    CHECK(has(line_of(graph, "g1 ["), ">nobody uses it<"));
}

TEST_CASE("A document of nothing has a graph of nothing")
{
    reading r(document_text{});
    CHECK(has(graph_of(r).dot, "digraph show {\n"));
}

// ---- pictures --------------------------------------------------------------------------------

// Colour 1, 0.5, 0.25 goes whole into the first node, at most 255 of each, and from there to the output.
TEST_CASE("Textures show the pixels that the player computes, in 96 x 96")
{
    reading r(complete_document());
    const document_graph graph = graph_of(r, {graph_textures, nullptr, nullptr});
    REQUIRE(graph.pictures.size() == 3);
    const texture_node& node = *table_get(r.d.texture_table, 2);
    const pixel_block block = decoded_pixels(graph.pictures[2].png);
    CHECK(block.width == 96);
    CHECK(block.height == 96);
    REQUIRE(node.pixels != nullptr);
    for (size_t c = 0; c < 3; ++c) {
        CHECK(std::abs(block.bytes[(96 * 48 + 48) * 3 + c] - node.pixels[c]) <= 1);
        CHECK(node.pixels[c] > 0);
    }
    CHECK(node.pixels[0] > node.pixels[1]);
}

TEST_CASE("Pictures keep their sides, small ones stay small, and what shows through is laid over squares")
{
    document_text text = complete_document();
    std::vector<pack_content> pack = complete_pack();
    pack[1].bytes = tga_picture(400, 100, 4, 0); // alpha is 3 of 255
    reading r(text, pack);
    const document_graph graph = graph_of(r);
    REQUIRE(graph.pictures.size() == 6);
    const pixel_block image = decoded_pixels(graph.pictures[3].png);
    CHECK(image.width == 96);
    CHECK(image.height == 24);
    CHECK(image.components == 3);
    CHECK(std::abs(image.bytes[0] - 158) <= 1);     // 160 x 252 / 255
    CHECK(std::abs(image.bytes[8 * 3] - 207) <= 1); // 210 x 252 / 255, and next to nothing
    const pixel_block cube = decoded_pixels(graph.pictures[4].png);
    CHECK(cube.width == 96);
    CHECK(cube.height == 64);
    CHECK(decoded_pixels(graph.pictures[5].png).width == 64); // the dynamic texture
}

TEST_CASE("A maze is seen, though nothing was drawn before")
{
    document_text text;
    text.records[1] = "<g type=\"3\"><r>1</r><g>1</g><b>1</b><p>7</p><p>5</p><p>1</p></g>";
    reading r(text);
    const document_graph graph = graph_of(r, {graph_textures, nullptr, nullptr});
    REQUIRE(graph.pictures.size() == 1);
    const std::vector<uint8_t> pixels = decoded_pixels(graph.pictures[0].png).bytes;
    CHECK(std::count_if(pixels.begin(), pixels.end(), [](uint8_t byte) { return byte > 200; }) > 96 * 96);
}

TEST_CASE("The faces of a cube map stand in two rows")
{
    document_text text = complete_document();
    std::vector<pack_content> pack = complete_pack();
    for (int face = 0; face < 6; ++face) {
        const std::string name = "f" + std::to_string(face) + ".tga";
        text.records[8] = with(text.records[8], "face.tga", name);
        pack.push_back({name, tga_picture(2, 2, 3, static_cast<uint8_t>(40 * face))});
    }
    reading r(text, pack);
    const document_graph graph = graph_of(r);
    REQUIRE(graph.pictures.size() == 6);
    const pixel_block cube = decoded_pixels(graph.pictures[4].png);
    REQUIRE(cube.bytes.size() == 96 * 64 * 3);
    for (uint32_t face = 0; face < 6; ++face)
        CHECK(cube.bytes[((face / 3 * 32 + 16) * 96 + face % 3 * 32 + 16) * 3] == 40 * face);
}

TEST_CASE("Pictures take the places of their colours in the drawing, and nothing else changes")
{
    const std::string svg
        = "<svg><polygon fill=\"#ec0001\" stroke=\"none\" points=\"1,-31.5 1,-127.5 97,-127.5 97,-31.5\"/>"
          "<polygon fill=\"white\" points=\"0,0 1,1\"/><text>#ec0001</text></svg>";
    const std::string drawn = put_graph_pictures(svg, {{"#ec0001", {'M', 'a', 'n', 'y'}}});
    CHECK(drawn
        == "<svg><image x=\"1\" y=\"-127.5\" width=\"96\" height=\"96\" xlink:href=\"data:image/png;base64,TWFueQ==\"/>"
           "<rect x=\"1\" y=\"-127.5\" width=\"96\" height=\"96\" fill=\"none\" stroke=\"#dde4ea\"/>"
           "<polygon fill=\"white\" points=\"0,0 1,1\"/><text>#ec0001</text></svg>");
    CHECK(put_graph_pictures(svg, {}) == svg);
    CHECK(put_graph_pictures("<polygon fill=\"#ec0001\"", {{"#ec0002", {}}}) == "<polygon fill=\"#ec0001\"");
    CHECK(has(put_graph_pictures(svg, {{"#ec0001", {'a', 'b', 'c'}}}), ",YWJj\""));
}

TEST_CASE("The text alone has grey places for pictures")
{
    reading r(complete_document());
    const document_graph graph = graph_of(r);
    CHECK(has(graph.dot, "BGCOLOR=\"#ec0005\""));
    const std::string plain = plain_dot(graph);
    CHECK(!has(plain, "#ec00"));
    CHECK(plain.size() == graph.dot.size());
}

// ---- the program -------------------------------------------------------------------------------

namespace {

// Another list of folders for programs, until the end of the test.
struct changed_path {
    std::string before = std::getenv("PATH");
    explicit changed_path(const std::string& path)
    {
        setenv("PATH", path.c_str(), 1);
    }
    ~changed_path()
    {
        setenv("PATH", before.c_str(), 1);
    }
    changed_path(const changed_path&) = delete;
    changed_path& operator=(const changed_path&) = delete;
};

} // namespace

TEST_CASE("A graph is drawn with all its pictures")
{
    reading r(complete_document());
    const document_graph graph = graph_of(r);
    std::string svg;
    std::string problem = "left over";
    REQUIRE_MESSAGE(draw_graph(graph, svg, problem), problem);
    CHECK(problem.empty());
    CHECK(!has(svg, "#ec00"));
    size_t count = 0;
    for (size_t at = svg.find("<image "); at != std::string::npos; at = svg.find("<image ", at + 1))
        ++count;
    CHECK(count == graph.pictures.size());
    CHECK(has(svg, "</svg>"));
}

TEST_CASE("A graph without the program dot is refused with the package that has it")
{
    std::string svg;
    std::string problem;
    const temporary_directory folder;
    const changed_path path(folder.path);
    CHECK(!draw_graph({"digraph show {}", {}}, svg, problem));
    CHECK(problem
        == "The program dot is not there: install the package graphviz, or write to a file whose name ends in "
           "\".dot\".");
    CHECK(svg.empty());
}

TEST_CASE("A program dot that fails is told with its first line")
{
    std::string svg;
    std::string problem;
    CHECK(!draw_graph({"digraph show { [", {}}, svg, problem));
    CHECK(problem == "The program dot failed: Error: <stdin>: syntax error in line 1 near '['.");
    const temporary_directory folder;
    write_bytes(folder.path + "dot", "#!/bin/sh\nexit 1\n");
    chmod((folder.path + "dot").c_str(), 0700);
    const changed_path path(folder.path);
    CHECK(!draw_graph({"digraph show {}", {}}, svg, problem));
    CHECK(problem == "The program dot failed: no reason given.");
}
