#include "document_text.h"

#include "content/xmlz.h"

#include <cstdlib>
#include <cstring>
#include <doctest/doctest.h>
#include <set>

// ---- whole documents ------------------------------------------------------------

TEST_CASE("a complete document is read into one record of every kind, without a word")
{
    const reading r(complete_document());
    CHECK(joined(r) == "");
    CHECK_FALSE(r.failed);
    CHECK(r.d.generated_image_count == 1);
    CHECK(table_count(r.d.texture_table) == 2);
    CHECK(table_count(r.d.mesh_table) == 1);
    CHECK(table_count(r.d.function_table) == 1);
    CHECK(table_count(r.d.transform_table) == 1);
    CHECK(table_count(r.d.dynamic_texture_table) == 1);
    CHECK(table_count(r.d.image_texture_table) == 1);
    CHECK(table_count(r.d.cube_map_table) == 1);
    CHECK(table_count(r.d.font_table) == 1);
    CHECK(table_count(r.d.object_table) == 5);
    CHECK(table_count(r.d.material_table) == 1);
    CHECK(table_count(r.d.effect_table) == 1);
    CHECK(table_count(r.d.scene_table) == 1);
    CHECK(r.d.timeline->layer_count[0] == 2);
}

TEST_CASE("a complete document has something of every section but the music, and of every table")
{
    const document_text text = complete_document();
    for (uint32_t section = 1; section < no_more_sections; ++section)
        CHECK_MESSAGE(text.records[section].empty() == (section == section_music), section_label(section));
    reading r(text);
    uint32_t number = 0;
    for_each_table(r.d, [&number](const auto& records) {
        ++number;
        CHECK_MESSAGE(table_count(records) > 0, "table ", number);
    });
}

TEST_CASE("records come one a step, sections end in order, and reading stays done")
{
    const std::string text = "<d><a><x type=\"5\"/><x type=\"0\"/></a><b/><c/><d/><e/><f/><g/><h/><i/><j/><k/><l/><m/>"
                             "<n><t/></n><o file=\"m\"><p/><p/></o></d>";
    xml_node* root = xml_parse(text.c_str());
    document d;
    document_create(d, "demo.xmlz", timeline_new());
    document_reader reader;
    document_reader_begin(reader, d, root, nullptr);

    CHECK(document_read_step(reader) == read_record);
    CHECK(reader.section == 1);
    CHECK(reader.record == 1);
    CHECK(reader.handle == 1);
    CHECK_FALSE(reader.section_finished);
    CHECK(d.generated_image_count == 1);
    CHECK(document_read_step(reader) == read_record);
    CHECK(reader.record == 2);
    CHECK(reader.handle == 2);
    CHECK(document_read_step(reader) == read_section_end);
    CHECK(reader.section == 1);
    CHECK(reader.section_finished);
    for (uint32_t section = 2; section <= 13; ++section) {
        CHECK(document_read_step(reader) == read_section_end);
        CHECK(reader.section == section);
    }
    CHECK(document_read_step(reader) == read_record);
    CHECK(reader.section == section_timeline);
    CHECK(reader.handle == 1);
    CHECK(document_read_step(reader) == read_section_end);
    for (uint32_t child = 1; child <= 2; ++child) {
        CHECK(document_read_step(reader) == read_record);
        CHECK(reader.section == section_music);
        CHECK(reader.record == child);
        CHECK(reader.handle == 0);
    }
    CHECK(document_read_step(reader) == read_section_end);
    CHECK(document_read_step(reader) == read_done);
    CHECK(document_read_step(reader) == read_done);
    document_free(d);
    xml_free(root);
}

TEST_CASE("a failed reading stays failed and says nothing more")
{
    xml_node* root = xml_parse("<d><a><x/></a><b/><c/><d/><e/><f/><g/><h/><i/><j/><k/><l/><m/><n/></d>");
    document d;
    document_create(d, "demo.xmlz", timeline_new());
    document_reader reader;
    document_reader_begin(reader, d, root, nullptr);
    CHECK(document_read_step(reader) == read_failed);
    CHECK(document_read_step(reader) == read_failed);
    REQUIRE(reader.problems.size() == 1);
    CHECK(reader.problems[0].fatal);
    CHECK(reader.problems[0].text
        == "Error: demo.xmlz: section 1 (generated images), record 1: attribute \"type\" is missing.");
    document_free(d);
    xml_free(root);
}

TEST_CASE("names of sections and of the document element do not matter")
{
    document_text text;
    std::string renamed = with(to_text(text), "<s4></s4>", "<anything>" + function_text() + "</anything>");
    renamed = with(renamed, "<document>", "<loading>");
    const reading r(renamed);
    CHECK(joined(r) == "");
    CHECK(table_count(r.d.function_table) == 1);
}

TEST_CASE("fewer than fourteen sections are an error, fourteen are enough")
{
    const reading thirteen(to_text(document_text{}, 13));
    CHECK(thirteen.failed);
    CHECK(joined(thirteen) == "Error: demo.xmlz: too few sections: 13 of 14.\n");
    CHECK(thirteen.records_read == 0);

    const reading fourteen(to_text(document_text{}, 14));
    CHECK_FALSE(fourteen.failed);
    CHECK(fourteen.sections_ended.size() == 14);

    const reading empty("");
    CHECK(joined(empty) == "Error: demo.xmlz: too few sections: 0 of 14.\n");
}

TEST_CASE("sections beyond the fifteenth are passed over but count as items")
{
    const std::string text = with(to_text(document_text{}), "</document>", "<more><a/><b/></more></document>");
    const reading r(text);
    CHECK_FALSE(r.failed);
    CHECK(r.sections_ended.size() == 15);
    CHECK(r.records_read == 2); // a scene and a track
    CHECK(document_item_count(r.root) == 4);
    CHECK(joined(r) == "Warning: demo.xmlz: too many sections: 16 of 15; the others are not read.\n");
}

TEST_CASE("items are the children of all sections")
{
    const reading r(complete_document());
    // 1 2 1 1 1 1 1 1 1 5 1 1 1 1, and none of the music
    CHECK(document_item_count(r.root) == 19);
    CHECK(r.records_read == 19);
    CHECK(document_item_count(nullptr) == 0);
    const reading empty("");
    CHECK(document_item_count(empty.root) == 0);
}

TEST_CASE("the music element is the fifteenth section, whatever its name")
{
    const reading r(complete_document());
    const xml_node* music = document_music_element(r.root);
    REQUIRE(music != nullptr);
    CHECK(std::strcmp(xml_get_attribute(music, "file"), "music.ogg") == 0);
    const reading without(to_text(complete_document(), 14));
    CHECK(document_music_element(without.root) == nullptr);
    CHECK(document_music_element(nullptr) == nullptr);
}

TEST_CASE("a second document_free does nothing, and an uncreated document can be freed")
{
    document d;
    document_create(d, "demo.xmlz", nullptr);
    CHECK(d.scene_table.raw != nullptr);
    document_free(d);
    CHECK(d.scene_table.raw == nullptr);
    document_free(d);
    document empty{};
    document_free(empty);
    CHECK(empty.timeline == nullptr);
}

TEST_CASE("a document lists each of its tables once: all are made, each with records of its own size, and freed")
{
    document d;
    document_create(d, "demo.xmlz", nullptr);
    CHECK(d.texture_table.raw->record_size == sizeof(texture_node));
    CHECK(d.scene_table.raw->record_size == sizeof(scene_record));
    std::set<const record_table*> seen;
    for_each_table(d, [&seen]<typename record>(const table<record>& records) {
        REQUIRE(records.raw != nullptr);
        CHECK(records.raw->record_size == sizeof(record));
        seen.insert(records.raw);
    });
    CHECK(seen.size() == 12);
    document_free(d);
    for_each_table(d, [](const auto& records) { CHECK(records.raw == nullptr); });
}

TEST_CASE("freeing the generated images frees their pixels and those of the nodes")
{
    reading r(complete_document());
    r.d.generated_images[0].pixels = static_cast<uint8_t*>(std::malloc(3));
    auto* node = table_get(r.d.texture_table, 1);
    node->pixels = static_cast<uint8_t*>(std::malloc(3));
    document_free_generated_images(r.d);
    CHECK(r.d.generated_images == nullptr);
    CHECK(r.d.generated_image_count == 0);
    CHECK(node->pixels == nullptr);
}

TEST_CASE("a document is freed with what was made for its records later")
{
    reading r(complete_document());
    r.d.generated_images[0].pixels = static_cast<uint8_t*>(std::malloc(3));
    table_get(r.d.texture_table, 2)->pixels = static_cast<uint8_t*>(std::malloc(3));
    table_get(r.d.mesh_table, 1)->arrays.line_indices = static_cast<uint16_t*>(std::malloc(12));
    auto* material = table_get(r.d.material_table, 1);
    material->program = static_cast<shader_program*>(std::calloc(1, sizeof(shader_program)));
    material->program->vertex_source = strdup("v");
    material->program->fragment_source = strdup("f");
    auto* dynamic = table_get(r.d.dynamic_texture_table, 1);
    dynamic->state = static_cast<effect_2d_state*>(std::calloc(1, sizeof(effect_2d_state)));
    dynamic->state->buffer = static_cast<uint8_t*>(std::malloc(3));
    document_free(r.d); // the leak checker has the last word
    CHECK(r.d.material_table.raw == nullptr);
}

TEST_CASE("every section has its name in messages")
{
    CHECK(std::strcmp(section_name(1), "generated images") == 0);
    CHECK(std::strcmp(section_name(2), "texture nodes") == 0);
    CHECK(std::strcmp(section_name(7), "image textures") == 0);
    CHECK(std::strcmp(section_name(11), "materials") == 0);
    CHECK(std::strcmp(section_name(13), "scenes") == 0);
    CHECK(std::strcmp(section_name(15), "music") == 0);
    CHECK(std::strcmp(section_name(0), "unknown") == 0);
    CHECK(std::strcmp(section_name(16), "unknown") == 0);
    CHECK(std::strcmp(section_name(0xFFFFFFFFu), "unknown") == 0);
}

TEST_CASE("a full table is a fatal problem at the record that does not fit")
{
    document_text text;
    text.records[10] = repeated("<o type=\"0\" id=\"0\"/>", 4096);
    const reading full(text);
    CHECK(fatal_line(full) == "");
    CHECK(table_count(full.d.object_table) == 4096);
    text.records[10] += "<o type=\"0\" id=\"0\"/>";
    const reading over(text);
    CHECK(fatal_line(over) == "Error: demo.xmlz: section 10 (objects), record 4097: more than 4096 records.\n");

    document_text images;
    images.records[1] = repeated("<i type=\"0\"/>", 4097);
    const reading many_images(images);
    CHECK(fatal_line(many_images)
        == "Error: demo.xmlz: section 1 (generated images), record 4097: more than 4096 records.\n");
}

// ---- numbers and names -------------------------------------------------------------

static object_reference reference_of(const std::string& type, const std::string& id)
{
    document_text text;
    text.records[10] = "<o type=\"" + type + "\" id=\"" + id + "\"/>";
    const reading r(text);
    CHECK(fatal_line(r) == "");
    return *table_get(r.d.object_table, 1);
}

TEST_CASE("whole numbers are decimal, junk behind the digits is ignored, an empty text is 0")
{
    CHECK(reference_of("12abc", "").type == 12);
    CHECK(reference_of("12abc", "").id == 0);
    CHECK(reference_of("  -7", "+3").type == -7);
    CHECK(reference_of("  -7", "+3").id == 3);
    CHECK(reference_of("0x10", "010").type == 0);
    CHECK(reference_of("0x10", "010").id == 10);
    CHECK(reference_of("3.9", "x").type == 3);
}

TEST_CASE("whole numbers beyond 32 bits are clamped on every word size")
{
    CHECK(reference_of("99999999999999999999", "0").type == 2147483647);
    CHECK(reference_of("-99999999999999999999", "0").type == -2147483647 - 1);
    CHECK(reference_of("2147483648", "0").type == 2147483647);
    CHECK(reference_of("-2147483649", "0").type == -2147483647 - 1);
}

TEST_CASE("real numbers are stored in single precision")
{
    document_text text;
    text.records[4] = with(function_text(), "<a>1</a>", "<a>0.1</a><a>1e2x</a><a> -.5</a><a>1e300</a><a>x</a>");
    const reading r(text);
    const auto* function = table_get(r.d.function_table, 1);
    CHECK(function->segment_params[0][0] == 0.1f);
    CHECK(function->segment_params[0][1] == 100.0f);
    CHECK(function->segment_params[0][2] == -0.5f);
    CHECK(function->segment_params[0][3] > 3e38f);
    CHECK(function->segment_params[0][4] == 0.0f);
}

TEST_CASE("an attribute without a value counts as missing")
{
    document_text text;
    text.records[10] = "<o id=\"1\" type=\"0/>";
    const reading r(text);
    CHECK(joined(r) == "Error: demo.xmlz: section 10 (objects), record 1: attribute \"type\" is missing.\n");
}

TEST_CASE("a child without text is a missing number")
{
    document_text text;
    text.records[1] = "<i type=\"0\"><r>1</r><g/></i>";
    const reading r(text);
    CHECK(
        joined(r) == "Error: demo.xmlz: section 1 (generated images), record 1, parameter 2: the number is missing.\n");
}

TEST_CASE("what a message quotes stays one short line of whole letters")
{
    document_text text;
    text.records[3] = "<mesh filename=\"a\nb\tc\xC3\xA9\"/>";
    const reading r(text);
    CHECK(fatal_line(r)
        == "Error: demo.xmlz: section 3 (meshes), record 1: entry \"a\\x0Ab\\x09c\xC3\xA9\" is missing.\n");
    const auto shown = [&](const std::string& name) {
        document_text named;
        named.records[2] = "<t name=\"n\" type=\"201\" texture_format=\"0\" texture_filter=\"0\"><i>" + name
            + "</i></t>"; // quoted by the warning that it is no number
        const std::string all = joined(reading(named));
        return all.substr(all.find('"'), all.find(" is read as") - all.find('"'));
    };
    const std::string x63(63, 'x');
    CHECK(shown(x63 + "x") == "\"" + x63 + "x\"");
    CHECK(shown(x63 + "xy") == "\"" + x63 + "x...\"");
    CHECK(shown(x63 + "\xC3\xA9") == "\"" + x63 + "...\"");
    CHECK(shown(x63.substr(1) + "\xC3\xA9") == "\"" + x63.substr(1) + "\xC3\xA9\"");
    CHECK(shown(x63.substr(1) + "\xE2\x82\xAC") == "\"" + x63.substr(1) + "...\"");
    CHECK(shown(x63.substr(2) + "\xF0\x9D\x84\x9E") == "\"" + x63.substr(2) + "...\"");
    CHECK(shown(std::string(70, '\x80')).size() == 64 * 4 + 5); // no letters, so no whole ones
}

// ---- scene objects -------------------------------------------------------------------

static scene_object object_meaning(int32_t type, uint32_t number)
{
    scene_object object{};
    object.type = type;
    object.object = number;
    return object;
}

TEST_CASE("a scene object means the id of a reference of its own kind, else its number")
{
    document_text text;
    text.records[10] = "<o type=\"0\" id=\"40\"/><o type=\"1\" id=\"50\"/><o type=\"2\" id=\"60\"/>";
    const reading r(text);
    CHECK(resolve_scene_object(r.d, object_meaning(object_model, 1)) == 40);
    CHECK(resolve_scene_object(r.d, object_meaning(object_genmesh, 1)) == 1);
    CHECK(resolve_scene_object(r.d, object_meaning(object_genmesh, 2)) == 50);
    CHECK(resolve_scene_object(r.d, object_meaning(object_model, 2)) == 2);
    CHECK(resolve_scene_object(r.d, object_meaning(object_text, 3)) == 3);
    CHECK(resolve_scene_object(r.d, object_meaning(object_model, 9)) == 9);
    CHECK(resolve_scene_object(r.d, object_meaning(object_model, 0)) == 0);
    CHECK(resolve_scene_object(document{}, object_meaning(object_model, 7)) == 7);
}

TEST_CASE("a reference that a material names as a texture is no scene object's")
{
    const document_text text = complete_document();
    const reading r(text);
    // 2 and 1 are the material's second and first texture; 4 is nobody's.
    CHECK(resolve_scene_object(r.d, object_meaning(object_genmesh, 2)) == 2);
    CHECK(resolve_scene_object(r.d, object_meaning(object_model, 1)) == 1);
    CHECK(resolve_scene_object(r.d, object_meaning(object_model, 4)) == 1);
    CHECK(table_get(r.d.object_table, 3)->named_by_material == 1);
    CHECK(table_get(r.d.object_table, 4)->named_by_material == 0);
}

// ---- documents in a pack ----------------------------------------------------------------

static xml_node* tree_from_pack(const std::vector<pack_content>& entries, std::string& problem)
{
    pack_file* pack = open_pack(entries);
    xml_node* root = load_document_tree(pack, "demo.xmlz", problem);
    pack_close(pack);
    return root;
}

TEST_CASE("a document is read from its entry of the pack")
{
    std::string problem = "old";
    xml_node* root = tree_from_pack({{"demo.xmlz", in_envelope("<a><b>text</b></a>")}}, problem);
    REQUIRE(root != nullptr);
    CHECK(problem == "");
    CHECK(std::strcmp(root->first_child->first_child->text, "text") == 0);
    xml_free(root);
}

TEST_CASE("a document that is not in the pack is no problem")
{
    std::string problem = "old";
    CHECK(tree_from_pack({{"other.xmlz", "x"}}, problem) == nullptr);
    CHECK(problem == "");
    CHECK(load_document_tree(nullptr, "demo.xmlz", problem) == nullptr);
    CHECK(problem == "");
}

TEST_CASE("a document that does not inflate is a problem")
{
    std::string problem;
    CHECK(tree_from_pack({{"demo.xmlz", "abc"}}, problem) == nullptr);
    CHECK(problem == "Error: demo.xmlz: the document is damaged.");
    CHECK(tree_from_pack({{"demo.xmlz", "<production/>"}}, problem) == nullptr);
    CHECK(problem == "Error: demo.xmlz: the document is not compressed (no envelope).");
    std::string broken = in_envelope("<a/>");
    broken.pop_back();
    CHECK(tree_from_pack({{"demo.xmlz", broken}}, problem) == nullptr);
    CHECK(problem == "Error: demo.xmlz: the document is damaged.");
    broken = in_envelope("<a/>");
    broken[6] = static_cast<char>(7); // a block of no known kind
    CHECK(tree_from_pack({{"demo.xmlz", broken}}, problem) == nullptr);
    CHECK(problem == "Error: demo.xmlz: the document is damaged.");
    std::string large = in_envelope("<a/>");
    std::memcpy(large.data(), "\x01\x00\x00\x10", 4); // 2^28 + 1 bytes
    CHECK(tree_from_pack({{"demo.xmlz", large}}, problem) == nullptr);
    CHECK(problem == "Error: demo.xmlz: the document declares more than 256 MiB.");
}

TEST_CASE("a document whose entry leaves the pack is a problem")
{
    std::string problem;
    std::string bytes = packed({{"demo.xmlz", in_envelope("<a/>")}});
    bytes[39] = 0x7F; // the end offset of the first slot
    pack_file* pack = open_packed(bytes);
    CHECK(load_document_tree(pack, "demo.xmlz", problem) == nullptr);
    CHECK(problem == "Error: demo.xmlz: the document is damaged.");
    pack_close(pack);
}
