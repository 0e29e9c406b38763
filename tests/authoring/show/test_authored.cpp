#include "authoring/show/authored.h"

#include "../built_source.h"

#include <doctest/doctest.h>

static element named(const char* name)
{
    element node = {"e"};
    add_attribute(node, "name", value_of(std::string(name)));
    return node;
}

TEST_CASE("equal content is one record where it may be shared, of one section only")
{
    authored_document document;
    const authored_record* first = add_shared(document, section_functions, named("a"), {"show.lua", 3});
    CHECK(add_shared(document, section_functions, named("a"), {"show.lua", 9}) == first);
    CHECK(add_shared(document, section_functions, named("b"), {}) != first);
    CHECK(add_shared(document, section_values, named("a"), {}) != first);
    CHECK(add_authored(document, section_functions, named("a"), {}) != first);
    CHECK(first->place.line == 3);
    CHECK(document.records.size() == 4);
}

// A timeline that names scene 2 of three, which names functions 3 and 1.
static void fill(authored_document& document)
{
    const authored_record* functions[3];
    for (size_t index = 0; index < 3; ++index)
        functions[index] = add_authored(document, section_functions, named("f"), {});
    element scenes[3] = {{"scene"}, {"scene"}, {"scene"}};
    add_setting(scenes[1], "x", value_of(functions[2]));
    add_text(scenes[1], "y", value_of(functions[0]));
    const authored_record* second = nullptr;
    for (element& scene : scenes) {
        const authored_record* made = add_authored(document, section_scenes, scene, {});
        second = &scene == &scenes[1] ? made : second;
    }
    element track = {"track"};
    add_attribute(add_child(track, "clip"), "id", value_of(second));
    add_authored(document, section_timeline, track, {});
}

TEST_CASE("records that tracks lead to are numbered by first use, and the others stay out")
{
    authored_document document;
    fill(document);
    number_records(document, false);
    CHECK(document.records[2]->number == 1);
    CHECK(document.records[0]->number == 2);
    CHECK(document.records[1]->number == 0);
    CHECK(document.records[4]->number == 1);
    CHECK(document.sections[section_functions].size() == 2);
    CHECK(document.sections[section_scenes].size() == 1);
}

TEST_CASE("where the order is kept every record has the number of its making")
{
    authored_document document;
    fill(document);
    number_records(document, true);
    for (uint32_t index = 0; index < 3; ++index) {
        CHECK(document.records[index]->number == index + 1);
        CHECK(document.records[3 + index]->number == index + 1);
    }
}

TEST_CASE("a node's inputs are numbered before it, what it feeds behind it")
{
    const built_source b
        = build_scene("local a = texture.noise { color = \"white\", random_seed = 1 }:node { name = \"a\" }\n"
                      "local b = a:blur { name = \"b\" }\n"
                      "local c = a:add(b, { name = \"c\" })\n"
                      "local t = c:invert { name = \"d\" }:texture { name = \"out\" }",
            "screen() { material = material { texture = t } }");
    CHECK(fields_of(b, section_texture_nodes, 1, {"name", "input1", "output 1", "output 2"}) == "a 0 2 3");
    CHECK(fields_of(b, section_texture_nodes, 2, {"name", "input1", "output 1"}) == "b 1 3");
    CHECK(fields_of(b, section_texture_nodes, 3, {"name", "input1", "input2", "output 1"}) == "c 1 2 4");
    CHECK(fields_of(b, section_texture_nodes, 4, {"name", "input1", "output 1"}) == "d 3 5");
    CHECK(fields_of(b, section_texture_nodes, 5, {"name", "input1", "type"}) == "out 4 255");
}

TEST_CASE("a document has its fourteen sections in order, and its music")
{
    authored_document document;
    document.title = "A title";
    document.music = "tune.ogg";
    fill(document);
    number_records(document, true);
    const std::string text = document_text(document);
    size_t at = 0;
    for (const char* part : {"<production name=\"A title\">", "<generated_images/>", "<texture_nodes/>", "<meshes/>",
             "<functions>", "</functions>", "<values/>", "<dynamic_textures/>", "<image_textures/>", "<cube_maps/>",
             "<fonts/>", "<objects/>", "<materials/>", "<effects/>", "<scenes>", "</scenes>", "<timeline>",
             "<clip id=\"2\"/>", "</timeline>", "<music file=\"tune.ogg\"/>", "</production>"}) {
        const size_t found = text.find(part, at);
        CHECK_MESSAGE(found != std::string::npos, part);
        at = found == std::string::npos ? at : found;
    }
    document.music = "";
    CHECK(document_text(document).find("music") == std::string::npos);
}

TEST_CASE("a part's place is its own where it has one, else its record's")
{
    authored_document document;
    element scene = {"scene"};
    add_child(scene, "placed").place = {"show.lua", 7};
    add_child(scene, "placed");
    add_authored(document, section_scenes, scene, {"show.lua", 3});
    number_records(document, true);
    CHECK(place_in_document(document, section_scenes, 1, 0).line == 3);
    CHECK(place_in_document(document, section_scenes, 1, 1).line == 7);
    CHECK(place_in_document(document, section_scenes, 1, 2).line == 3);
    CHECK(place_in_document(document, section_scenes, 1, 9).line == 3);
    CHECK(place_in_document(document, section_scenes, 2, 0).line == 0);
    CHECK(place_in_document(document, section_scenes, 0, 0).line == 0);
    CHECK(place_in_document(document, section_fonts, 1, 0).line == 0);
}
