// What two shows differ in, and whether they are the very same.
#include "finding_lines.h"

#include "authoring/check/diff.h"

#include <doctest/doctest.h>
#include <utility>
#include <zlib.h>

static std::vector<pack_content> pack_of(const document_text& show)
{
    std::vector<pack_content> entries = complete_pack();
    entries.push_back({"demo.xmlz", in_envelope(to_text(show))});
    return entries;
}

static std::string differences(const std::vector<pack_content>& before, const std::vector<pack_content>& after)
{
    const owned_pack a(open_pack(before));
    const owned_pack b(open_pack(after));
    const pack_difference difference = diff_packs(a.get(), b.get());
    const std::string text = difference_text(difference);
    CHECK(text.empty() == is_without_difference(difference));
    return text;
}

static std::string differences(const document_text& before, const document_text& after)
{
    return differences(pack_of(before), pack_of(after));
}

// "" where the two are the very same, else where they differ first.
static std::string inequality(const std::string& a, const std::string& b,
    const std::vector<pack_content>& a_entries = complete_pack(),
    const std::vector<pack_content>& b_entries = complete_pack())
{
    const owned_tree trees[2] = {owned_tree(xml_parse(a.c_str())), owned_tree(xml_parse(b.c_str()))};
    const owned_pack packs[2] = {owned_pack(open_pack(a_entries)), owned_pack(open_pack(b_entries))};
    const owned_read_document first = read_document_tree("demo.xmlz", trees[0].get(), packs[0].get());
    const owned_read_document second = read_document_tree("demo.xmlz", trees[1].get(), packs[1].get());
    std::string why = "x";
    const bool equal = documents_equal(*first, *second, why);
    CHECK(equal == why.empty());
    return why;
}

static std::string inequality(const document_text& a, const document_text& b)
{
    return inequality(to_text(a), to_text(b));
}

// ---- records ------------------------------------------------------------------------

TEST_CASE("a show does not differ from itself, nor from one that is written otherwise")
{
    CHECK(differences(complete_document(), complete_document()) == "");
    document_text other = complete_document();
    other.records[11] = with(other.records[11], "value=\"0.5\"", "value=\"0.50\"");
    other.records[13] = with(other.records[13], "<scene name", "<szene author=\"me\" name");
    CHECK(differences(complete_document(), other) == "");
}

TEST_CASE("a number that was changed is one line")
{
    document_text other = quiet_show();
    other.records[11] = with(other.records[11], "value=\"0.5\"", "value=\"0.7\"");
    CHECK(differences(quiet_show(), other) == "demo.xmlz: section 11 (materials), record 1, green: 0.5 -> 0.7\n");
}

TEST_CASE("records in front of others are one line each, and whoever refers to the others has not changed")
{
    document_text other = complete_document();
    const document_text before = complete_document();
    other.records[4] = with(function_text(), "<a>1</a>", "<a>7</a>") + other.records[4];
    for (const uint32_t section : {6u, 12u})
        other.records[section] = with(other.records[section], "<p>1</p>", "<p>2</p>");
    other.records[11] = with(other.records[11], "type=\"dynamic\" value=\"1\"", "type=\"dynamic\" value=\"2\"");
    other.records[11] = with(other.records[11], "u1=\"1\"", "u1=\"2\"");
    other.records[3] = "<mesh filename=\"cube.mesh\"/>" + other.records[3];
    CHECK(differences(before, other)
        == "demo.xmlz: section 3 (meshes), record 2 \"cube.mesh\": added\n"
           "demo.xmlz: section 4 (functions), record 1: added\n");
}

TEST_CASE("an object in front of others, a changed clip and another text are told by their part")
{
    document_text other = quiet_show();
    other.records[13] = with(
        other.records[13], "<scene name=\"first\">", "<scene name=\"first\">" + scene_object_text(0, 1, 2, 0, ""));
    other.records[13] = with(other.records[13], "Hello", "Goodbye");
    other.records[14] = with(other.records[14], "length=\"300\"", "length=\"400\"");
    CHECK(differences(quiet_show(), other)
        == "demo.xmlz: section 13 (scenes), record 1 \"first\", object 1: added\n"
           "demo.xmlz: section 13 (scenes), record 1 \"first\", object 3 (2 before), text: \"Hello\" -> \"Goodbye\"\n"
           "demo.xmlz: section 14 (timeline), record 1, clip 1, length: 300 -> 400\n");
}

TEST_CASE("a record that leads elsewhere has changed, and one that moved has moved")
{
    document_text before = quiet_show();
    before.records[4] += with(function_text(), "<a>1</a>", "<a>2</a>") + with(function_text(), "<a>1</a>", "<a>3</a>");
    document_text other = before;
    other.records[11] = with(other.records[11], "type=\"dynamic\" value=\"1\"", "type=\"dynamic\" value=\"2\"");
    CHECK(
        differences(before, other) == "demo.xmlz: section 11 (materials), record 2, alpha: function 1 -> function 2\n");
    other = before;
    other.records[4] = with(function_text(), "<a>1</a>", "<a>2</a>") + with(function_text(), "<a>1</a>", "<a>3</a>")
        + function_text();
    other.records[11] = with(other.records[11], "type=\"dynamic\" value=\"1\"", "type=\"dynamic\" value=\"3\"");
    CHECK(differences(before, other) == "demo.xmlz: section 4 (functions), record 3 (1 before): moved\n");
}

TEST_CASE("a texture node in the middle of a graph is one change, with the two that name it")
{
    const auto node = [](const char* type, const char* rest) {
        return std::string("<t name=\"n\" texture_format=\"0\" texture_filter=\"0\" type=\"") + type
            + "\" layer_id=\"0\">" + rest + "</t>";
    };
    document_text before = complete_document();
    before.records[2] = node("101", "<i>0</i><output>2</output><p>1</p><p>0.5</p>")
        + node("205", "<i>1</i><output>3</output>") + node("255", "<i>2</i>");
    before.records[10] = with(before.records[10], "type=\"0\" id=\"2\"", "type=\"0\" id=\"3\"");
    document_text after = before;
    after.records[2] = node("101", "<i>0</i><output>2</output><p>1</p><p>0.5</p>")
        + node("201", "<i>1</i><output>3</output>") + node("205", "<i>2</i><output>4</output>")
        + node("255", "<i>3</i>");
    after.records[10] = with(after.records[10], "type=\"0\" id=\"3\"", "type=\"0\" id=\"4\"");
    CHECK(differences(before, after)
        == "demo.xmlz: section 2 (texture nodes), record 1 \"n\", output 1: 2 (now 3) -> 2\n"
           "demo.xmlz: section 2 (texture nodes), record 2 \"n\": added\n"
           "demo.xmlz: section 2 (texture nodes), record 3 (2 before) \"n\", input1: 1 -> 2\n");
}

TEST_CASE("texture nodes are told apart by what they are computed from")
{
    const auto chain = [](int first, const char* layer) {
        const std::string head = "<t name=\"n\" texture_format=\"0\" texture_filter=\"0\" ";
        const auto number = [first](int node) { return std::to_string(first + node); };
        return head + "type=\"101\" layer_id=\"" + layer + "\"><i>0</i><output>" + number(1)
            + "</output><p>1</p><p>1</p></t>" + head + "type=\"205\"><i>" + number(0) + "</i><output>" + number(2)
            + "</output></t>" + head + "type=\"255\"><i>" + number(1) + "</i></t>";
    };
    document_text before = complete_document();
    before.records[1] += "<layer type=\"5\"><r>1</r><g>1</g><b>1</b><s>1</s></layer>";
    before.records[2] = chain(1, "0") + chain(4, "1");
    before.records[10] = with(before.records[10], "type=\"0\" id=\"2\"", "type=\"0\" id=\"3\"");
    document_text after = before;
    after.records[2] = chain(1, "1") + chain(4, "0");
    after.records[10] = with(after.records[10], "type=\"0\" id=\"3\"", "type=\"0\" id=\"6\"");
    const std::string moved = differences(before, after);
    CHECK(moved.find(" -> ") == std::string::npos); // nothing leads elsewhere
    CHECK(moved.find("section 2 (texture nodes), record 5 (2 before) \"n\": moved\n") != std::string::npos);
}

TEST_CASE("a reference to another kind leads elsewhere, though its number stays")
{
    document_text other = complete_document();
    other.records[10] = with(other.records[10], "type=\"3\"", "type=\"2\"");
    CHECK(differences(complete_document(), other)
        == "demo.xmlz: section 10 (objects), record 3, type: 3 -> 2\n"
           "demo.xmlz: section 10 (objects), record 3, id: 1 -> 1\n");
}

TEST_CASE("the music's file is told of")
{
    document_text other = quiet_show();
    other.music_attributes = " file=\"tune.ogg\"";
    CHECK(differences(quiet_show(), other) == "demo.xmlz: section 15 (music), file: none -> \"tune.ogg\"\n");
}

// ---- packs ---------------------------------------------------------------------------

TEST_CASE("entries are added, removed, and changed, in the order of their names")
{
    std::vector<pack_content> before = pack_of(quiet_show());
    std::vector<pack_content> after = before;
    before.push_back({"a.txt", "1"});
    after.push_back({"b.txt", "12"});
    before.push_back({"c.txt", "123"});
    after.push_back({"c.txt", "124"});
    before.push_back({"d.txt", "1"});
    after.push_back({"d.txt", "11"});
    CHECK(differences(before, after)
        == "\"a.txt\": removed, 1 bytes\n\"b.txt\": added, 2 bytes\n\"c.txt\": changed, 3 bytes\n"
           "\"d.txt\": changed, 1 -> 2 bytes\n");
}

TEST_CASE("an envelope around the same is the same however it is packed")
{
    const std::string content(5000, 'x');
    std::string packed = {static_cast<char>(5000 & 255), static_cast<char>(5000 >> 8), 0, 0};
    uLongf size = compressBound(5000);
    packed.resize(4 + size);
    REQUIRE(compress2(reinterpret_cast<Bytef*>(packed.data() + 4), &size,
                reinterpret_cast<const Bytef*>(content.data()), 5000, 9)
        == Z_OK);
    packed.resize(4 + size);
    REQUIRE(packed != in_envelope(content));
    CHECK(differences(std::vector<pack_content>{{"a.mesh", packed}}, {{"a.mesh", in_envelope(content)}}) == "");
    const std::string other = in_envelope(std::string(4999, 'x') + "y");
    CHECK(differences(std::vector<pack_content>{{"a.mesh", packed}}, {{"a.mesh", other}})
        == "\"a.mesh\": changed, " + std::to_string(packed.size()) + " -> " + std::to_string(other.size())
            + " bytes\n");
}

TEST_CASE("a document that one pack lacks is one line, and one that cannot be read says why")
{
    std::vector<pack_content> without = complete_pack();
    CHECK(differences(without, pack_of(quiet_show())) == "demo.xmlz: added\n");
    CHECK(differences(pack_of(quiet_show()), without) == "demo.xmlz: removed\n");
    document_text broken = quiet_show();
    broken.records[3] = "<mesh filename=\"gone\"/>";
    CHECK(
        differences(quiet_show(), broken)
            .rfind("demo.xmlz: cannot be compared whole, after: Error: demo.xmlz: section 3 (meshes), record 1: entry "
                   "\"gone\" is missing.\n",
                0)
        == 0);
    CHECK(is_without_difference(diff_packs(nullptr, nullptr)));
}

TEST_CASE("differences are an object of JSON, too")
{
    document_text other = quiet_show();
    other.records[11] = with(other.records[11], "value=\"0.5\"", "value=\"0.7\"");
    std::vector<pack_content> after = pack_of(other);
    after.push_back({"b\xFF", "12"});
    const owned_pack a(open_pack(pack_of(quiet_show())));
    const owned_pack b(open_pack(after));
    std::string text = difference_json(diff_packs(a.get(), b.get()));
    std::string dense;
    for (const char letter : text)
        if (letter != ' ' && letter != '\n')
            dense += letter;
    CHECK(dense
        == "{\"equal\":false,\"documents\":[{\"document\":\"demo.xmlz\",\"change\":\"changed\",\"problem\":\"\","
           "\"records\":[{\"section\":11,\"section_name\":\"materials\",\"change\":\"changed\",\"before\":1,\"after\":"
           "1,"
           "\"label\":\"\",\"fields\":[{\"field\":\"green\",\"before\":\"0.5\",\"after\":\"0.7\"}],\"parts\":[]}]}],"
           "\"entries\":[{\"entry\":\"b\xEF\xBF\xBD\",\"change\":\"added\",\"size_before\":0,\"size_after\":2}]}");
}

// ---- the very same --------------------------------------------------------------------

TEST_CASE("documents are the very same whatever is not read")
{
    document_text other = complete_document();
    other.records[13] = with(other.records[13], "<scene name", "<szene author=\"me\" name");
    CHECK(inequality(complete_document(), other) == "");
}

TEST_CASE("one bit of any number makes two documents")
{
    const document_text complete = complete_document();
    const struct {
        uint32_t section;
        const char* from;
        const char* to;
        const char* why;
    } changes[] = {
        {1, "<g>0.5</g>", "<g>0.50000006</g>",
            "section 1 (generated images), record 1, parameter 2: 0.5 and 0.50000006."},
        {2, "name=\"sum\"", "name=\"sun\"", "section 2 (texture nodes), record 1, name: sum and sun."},
        {2, "<output>2</output>", "<output>1</output>", "section 2 (texture nodes), record 1, output 1: 2 and 1."},
        {4, "length=\"100\"", "length=\"101\"", "section 4 (functions), record 1, segment 1, length: 100 and 101."},
        {4, "<a>1</a>", "<a>-0</a>", "section 4 (functions), record 1, segment 1, a: 1 and -0."},
        {5, "value=\"0.5\"", "value=\"1\"", "section 5 (values), record 1, value 1: 0.5 and 1."},
        {6, "bpp=\"24\"", "bpp=\"8\"", "section 6 (dynamic textures), record 1, bpp: 24 and 8."},
        {7, "texture_filter=\"2\"", "texture_filter=\"1\"",
            "section 7 (image textures), record 1, texture_filter: 2 and 1."},
        {8, "texture_format=\"3\"", "texture_format=\"1\"",
            "section 8 (cube maps), record 1, texture_format: 3 and 1."},
        {9, "offset=\"0.5\"", "offset=\"0\"", "section 9 (fonts), record 1, glyph 1, offset: 0.5 and 0."},
        {10, "id=\"2\"", "id=\"1\"", "section 10 (objects), record 1, id: 2 and 1."},
        {11, "type=\"dynamic\" value=\"1\"", "type=\"static\" value=\"1\"",
            "section 11 (materials), record 1, red: function 1 and 1."},
        {11, "void main(void) {}", "void main(void) { }",
            "section 11 (materials), record 1, vertex_shader: \"void main(void) {}\" and \"void main(void) { }\"."},
        {12, "<p>1</p>", "<p>0</p>", "section 12 (mesh effects), record 1, p 1: 1 and 0."},
        {13, "name=\"first\"", "name=\"one\"", "section 13 (scenes), record 1, name: first and one."},
        {13, "object=\"4\"", "object=\"1\"", "section 13 (scenes), record 1, object 1, object: 4 and 1."},
        {13, "<facing value=\"0\"/>", "<facing value=\"1\"/>",
            "section 13 (scenes), record 1, object 1, camera facing: 0 and 1."},
        {13, "model=\"1\"/><v type=\"static\" value=\"0\"/>", "model=\"1\"/><v type=\"static\" value=\"2\"/>",
            "section 13 (scenes), record 1, object 1, manipulator 1 Position X: 0 and 2."},
        {14, "type=\"static\" value=\"60\"", "type=\"ortographic\" value=\"60\"",
            "section 14 (timeline), record 1, clip 1, field of view: 60 and ortographic."},
        {14, "offset=\"0\"", "offset=\"-1\"", "section 14 (timeline), record 1, clip 1, offset: 0 and -1."},
    };
    for (const auto& change : changes) {
        document_text other = complete;
        other.records[change.section] = with(other.records[change.section], change.from, change.to);
        const std::string why = inequality(complete, other);
        CHECK(why == change.why);
    }
    document_text other = complete;
    other.music_attributes = "";
    CHECK(inequality(complete, other) == "section 15 (music), record 1, file: \"music.ogg\" and none.");
}

TEST_CASE("numbers, order and contents of records make two documents, and so do warnings")
{
    document_text other = quiet_show();
    other.records[4] += function_text();
    CHECK(inequality(quiet_show(), other) == "section 4 (functions): 1 record and 2.");
    other = quiet_show();
    other.records[14] += "<track/>";
    CHECK(inequality(quiet_show(), other) == "section 14 (timeline): 1 record and 2.");
    other = quiet_show();
    other.records[13] = with(other.records[13], "</scene>", scene_object_text(0, 1, 1, 0, "") + "</scene>");
    CHECK(inequality(quiet_show(), other) == "section 13 (scenes), record 1: 2 objects and 3.");
    other = quiet_show();
    other.records[11] = with(other.records[11], "<light1", "<lihgt1 value=\"1\"/><light1");
    CHECK(inequality(quiet_show(), other)
        == "the player says \"nothing\" and \"Warning: demo.xmlz: section 11 (materials), record 1: setting \"lihgt1\" "
           "is "
           "unknown.\".");
    std::vector<pack_content> entries = complete_pack();
    entries[1].bytes.back() ^= 1; // the last pixel
    const std::string text = to_text(quiet_show());
    CHECK(inequality(text, text, complete_pack(), entries).rfind("section 7 (image textures), record 1, pixels: ", 0)
        == 0);
    entries = complete_pack();
    entries[0].bytes = in_envelope(mesh_text(3, 1, {0, 2, 1}));
    CHECK(
        inequality(text, text, complete_pack(), entries).rfind("section 3 (meshes), record 1, bytes of triangles: ", 0)
        == 0);
}
