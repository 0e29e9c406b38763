#include "document_text.h"

#include <cstring>
#include <doctest/doctest.h>

// ---- meshes -----------------------------------------------------------------------

static std::vector<pack_content> with_mesh(const std::string& bytes)
{
    return {{"x.mesh", bytes}};
}

static std::string mesh_lines(const std::vector<pack_content>& entries)
{
    document_text text;
    text.records[3] = "<m filename=\"x.mesh\"/>";
    return joined(reading(text, entries));
}

TEST_CASE("a mesh record keeps the inflated bytes and points into them")
{
    document_text text;
    text.records[3] = "<m filename=\"x.mesh\"/>";
    const reading r(text, with_mesh(in_envelope(mesh_text(3, 2, {0, 1, 2}))));
    CHECK(joined(r) == "");
    const auto* mesh = table_get(r.d.mesh_table, 1);
    CHECK(mesh->arrays.vertex_count == 3);
    CHECK(mesh->arrays.texcoord_sets == 2);
    CHECK(mesh->arrays.index_count == 3);
    CHECK(reinterpret_cast<uint8_t*>(mesh->arrays.positions) == mesh->data + 4);
    CHECK(mesh->arrays.positions[3] == 1.0f);
    CHECK(mesh->arrays.position_buffer == 0);
}

TEST_CASE("what is wrong with a mesh's entry is said in one line")
{
    const std::string start = "Error: demo.xmlz: section 3 (meshes), record 1: ";
    CHECK(mesh_lines({}) == start + "entry \"x.mesh\" is missing.\n");
    const std::string n31(31, 'n');
    const auto named = [&](const std::string& name) {
        document_text text = complete_document();
        text.records[3] = "<mesh filename=\"" + name + "\"/>";
        return fatal_line(reading(text));
    };
    CHECK(named(n31) == start + "entry \"" + n31 + "\" is missing.\n");
    CHECK(named(n31 + "n") == start + "\"" + n31 + "n\" is longer than the 31 bytes of an entry's name.\n");
    CHECK(named("f\xC3\xA9l.mesh") == start + "entry \"f\xC3\xA9l.mesh\" is missing.\n");
    CHECK(mesh_lines(with_mesh("")) == start + "entry \"x.mesh\" is damaged.\n");
    CHECK(mesh_lines(with_mesh("v 0.5 1.25 -3\nv 1 2 3\n"))
        == start + "entry \"x.mesh\" is not compressed (no envelope).\n");
    CHECK(mesh_lines(with_mesh(mesh_text(3, 1, {}))) == start + "entry \"x.mesh\" is not compressed (no envelope).\n");
    CHECK(mesh_lines(with_mesh(in_envelope(mesh_text(3, 1, {})).substr(0, 100)))
        == start + "entry \"x.mesh\" is damaged.\n");
    CHECK(mesh_lines(with_mesh(std::string("\xFF\xFF\xFF\xFF\x78\x01", 6)))
        == start + "entry \"x.mesh\" declares more than 256 MiB.\n");
    CHECK(mesh_lines(with_mesh(in_envelope("abc"))) == start + "\"x.mesh\" is not a mesh: 3 bytes are no mesh.\n");
    CHECK(mesh_lines(with_mesh(in_envelope(mesh_text(3, 4, {}))))
        == start + "\"x.mesh\" is not a mesh: 4 coordinate sets instead of 1 to 3.\n");
    CHECK(mesh_lines(with_mesh(in_envelope(mesh_text(3, 1, {}).substr(0, 99))))
        == start + "\"x.mesh\" is not a mesh: 99 bytes are too few for 3 vertices.\n");
    CHECK(mesh_lines(with_mesh(in_envelope(mesh_text(3, 1, {0, 1, 3}))))
        == start + "\"x.mesh\" is not a mesh: index 3 passes its 3 vertices.\n");
}

TEST_CASE("an entry whose offsets leave the pack is damaged")
{
    std::string bytes = packed(with_mesh(in_envelope(mesh_text(3, 1, {}))));
    bytes[39] = 0x7F; // the end offset of the first slot
    pack_file* pack = open_packed(bytes);
    document_text text;
    text.records[3] = "<m filename=\"x.mesh\"/>";
    xml_node* root = xml_parse(to_text(text).c_str());
    document d;
    document_create(d, "demo.xmlz", nullptr);
    document_reader reader;
    document_reader_begin(reader, d, root, pack);
    while (document_read_step(reader) != read_failed)
        REQUIRE(reader.section <= section_meshes);
    REQUIRE(reader.problems.size() == 1);
    CHECK(reader.problems[0].text == "Error: demo.xmlz: section 3 (meshes), record 1: entry \"x.mesh\" is damaged.");
    document_free(d);
    xml_free(root);
    pack_close(pack);
}

TEST_CASE("without a pack every entry is missing")
{
    xml_node* root = xml_parse(to_text(complete_document()).c_str());
    document d;
    document_create(d, "demo.xmlz", nullptr);
    document_reader reader;
    document_reader_begin(reader, d, root, nullptr);
    while (document_read_step(reader) != read_failed)
        REQUIRE(reader.section <= section_meshes);
    CHECK(reader.problems.back().text
        == "Error: demo.xmlz: section 3 (meshes), record 1: entry \"cube.mesh\" is missing.");
    document_free(d);
    xml_free(root);
}

TEST_CASE("one entry named again and again cannot fill the memory")
{
    // The count stands in the reader, so the test need not really unfold two GiB.
    document_text text;
    text.records[3] = repeated("<m filename=\"x.mesh\"/>", 2);
    xml_node* root = xml_parse(to_text(text).c_str());
    pack_file* pack = open_pack(with_mesh(in_envelope(mesh_text(3, 1, {}))));
    document d;
    document_create(d, "demo.xmlz", nullptr);
    document_reader reader;
    document_reader_begin(reader, d, root, pack);
    while (reader.section < section_meshes || reader.record < 1)
        REQUIRE(document_read_step(reader) != read_failed);
    CHECK(reader.unfolded_bytes == 100); // 4 + (24 + 8) * 3
    reader.unfolded_bytes = max_unfolded_bytes - 99;
    CHECK(document_read_step(reader) == read_failed);
    CHECK(reader.problems.back().text
        == "Error: demo.xmlz: section 3 (meshes), record 2: meshes and images unfold to more than 2048 MiB.");
    document_free(d);
    xml_free(root);
    pack_close(pack);
}

// ---- image textures -----------------------------------------------------------------

static document_text image_text(const std::string& name = "a.tga", int filter = 2)
{
    document_text text;
    text.records[7]
        = "<i filename=\"" + name + "\" texture_format=\"4\" texture_filter=\"" + std::to_string(filter) + "\"/>";
    return text;
}

TEST_CASE("an image texture is decoded from its entry")
{
    const reading r(image_text(), {{"a.tga", tga_picture(4, 6, 3)}});
    CHECK(joined(r) == "");
    const auto* image = table_get(r.d.image_texture_table, 1);
    CHECK(image->width == 4);
    CHECK(image->height == 6);
    CHECK(image->components == 3);
    CHECK(image->pixels[0] == 10);
    CHECK(image->pixels[4 * 6 * 3 - 1] == 12);
    CHECK(image->level1 == nullptr);
    CHECK(image->level2 == nullptr);
    CHECK(image->texture_format == 4);
    CHECK(image->texture_filter == 2);
}

TEST_CASE("grey pictures become three components, grey with alpha four")
{
    const reading grey(image_text(), {{"a.tga", tga_picture(2, 2, 1)}});
    CHECK(table_get(grey.d.image_texture_table, 1)->components == 3);
    const reading grey_alpha(image_text(), {{"a.tga", tga_picture(2, 2, 2)}});
    CHECK(table_get(grey_alpha.d.image_texture_table, 1)->components == 4);
}

TEST_CASE("images and faces count towards what a document unfolds to")
{
    document_text text;
    text.records[7] = repeated("<i filename=\"a.tga\" texture_format=\"0\" texture_filter=\"0\"/>", 3);
    text.records[8] = "<c xp=\"f.tga\" xn=\"f.tga\" yp=\"f.tga\" yn=\"f.tga\" zp=\"f.tga\" zn=\"f.tga\" "
                      "texture_format=\"0\" texture_filter=\"0\"/>";
    xml_node* root = xml_parse(to_text(text).c_str());
    pack_file* pack = open_pack({{"a.tga", tga_picture(5, 7, 4)}, {"f.tga", tga_picture(3, 3, 3)}});
    document d;
    document_create(d, "demo.xmlz", nullptr);
    document_reader reader;
    document_reader_begin(reader, d, root, pack);
    while (reader.section < section_image_textures || reader.record < 1)
        REQUIRE(document_read_step(reader) != read_failed);
    CHECK(reader.unfolded_bytes == 140); // 5 x 7 x 4
    while (reader.section < section_cube_maps || reader.record < 1)
        REQUIRE(document_read_step(reader) != read_failed);
    CHECK(reader.unfolded_bytes == 3 * 140 + 6 * 27);
    document_free(d);
    xml_free(root);
    pack_close(pack);
}

TEST_CASE("the last byte that a document may unfold to is still its own")
{
    document_text text;
    text.records[7] = repeated("<i filename=\"a.tga\" texture_format=\"0\" texture_filter=\"0\"/>", 3);
    xml_node* root = xml_parse(to_text(text).c_str());
    pack_file* pack = open_pack({{"a.tga", tga_picture(5, 7, 4)}});
    document d;
    document_create(d, "demo.xmlz", nullptr);
    document_reader reader;
    document_reader_begin(reader, d, root, pack);
    while (reader.section < section_image_textures || reader.record < 1)
        REQUIRE(document_read_step(reader) != read_failed);
    reader.unfolded_bytes = max_unfolded_bytes - 140;
    CHECK(document_read_step(reader) == read_record);
    CHECK(document_read_step(reader) == read_failed);
    document_free(d);
    xml_free(root);
    pack_close(pack);
}

TEST_CASE("ready-made levels are taken when they have half and a quarter of the size")
{
    // 13 x 7: integer halves are 6 x 3 and 3 x 1.
    const reading r(image_text(),
        {{"a.tga", tga_picture(13, 7, 3)}, {"a_mm1.tga", tga_picture(6, 3, 3, 50)},
            {"a_mm2.tga", tga_picture(3, 1, 3, 90)}});
    CHECK(joined(r) == "");
    const auto* image = table_get(r.d.image_texture_table, 1);
    REQUIRE(image->level1 != nullptr);
    REQUIRE(image->level2 != nullptr);
    CHECK(image->level1[0] == 50);
    CHECK(image->level1[6 * 3 * 3 - 1] == 52);
    CHECK(image->level2[0] == 90);
}

TEST_CASE("a ready-made level has the components of its image")
{
    const reading r(image_text(),
        {{"a.tga", tga_picture(4, 4, 4)}, {"a_mm1.tga", tga_picture(2, 2, 3, 50)},
            {"a_mm2.tga", tga_picture(1, 1, 1, 90)}});
    const auto* image = table_get(r.d.image_texture_table, 1);
    REQUIRE(image->level1 != nullptr);
    CHECK(image->level1[3] == 255);
    CHECK(image->level1[4 * 4 - 1] == 255);
    REQUIRE(image->level2 != nullptr);
    CHECK(image->level2[2] == 90);
}

TEST_CASE("levels of another size, broken ones and a level 2 alone")
{
    const reading wrong(
        image_text(), {{"a.tga", tga_picture(8, 8, 3)}, {"a_mm1.tga", tga_picture(4, 3, 3)}, {"a_mm2.tga", "broken"}});
    CHECK(fatal_line(wrong) == "");
    CHECK(table_get(wrong.d.image_texture_table, 1)->level1 == nullptr);
    CHECK(table_get(wrong.d.image_texture_table, 1)->level2 == nullptr);
    const reading alone(image_text(),
        {{"a.tga", tga_picture(8, 8, 3)}, {"a_mm2.tga", tga_picture(2, 2, 3)}, {"a_mm3.tga", tga_picture(1, 1, 3)}});
    CHECK(table_get(alone.d.image_texture_table, 1)->level1 == nullptr);
    CHECK(table_get(alone.d.image_texture_table, 1)->level2 != nullptr);
}

TEST_CASE("a name of three characters has no levels, one of four has them by its mark in front")
{
    const reading three(image_text("abc"), {{"abc", tga_picture(2, 2, 3)}, {"_mm1abc", tga_picture(1, 1, 3)}});
    CHECK(joined(three) == "");
    CHECK(table_get(three.d.image_texture_table, 1)->level1 == nullptr);
    const reading four(image_text("abcd"), {{"abcd", tga_picture(2, 2, 3)}, {"_mm1abcd", tga_picture(1, 1, 3)}});
    CHECK(table_get(four.d.image_texture_table, 1)->level1 != nullptr);
}

TEST_CASE("what is wrong with an image's entry is said in one line")
{
    const std::string start = "Error: demo.xmlz: section 7 (image textures), record 1: ";
    CHECK(joined(reading(image_text("rock.png"), {{"rock.png", "no picture"}}))
        == start + "cannot decode \"rock.png\".\n");
    CHECK(joined(reading(image_text("rock.png"), {{"rock.jpg", "x"}})) == start + "entry \"rock.png\" is missing.\n");
    CHECK(joined(reading(image_text("rock.png"), {{"rock.png", ""}})) == start + "cannot decode \"rock.png\".\n");
    std::string large = tga_picture(1, 1, 3);
    std::memcpy(&large[12], "\xFF\xFF", 2);
    CHECK(joined(reading(image_text(), {{"a.tga", large}})) == start + "\"a.tga\" is too large.\n");
    document_text format = image_text();
    format.records[7] = with(format.records[7], "texture_format=\"4\"", "texture_format=\"9\"");
    CHECK(joined(reading(format, {{"a.tga", tga_picture(1, 1, 3)}})) == start + "texture_format 9 is outside 0..8.\n");
}

// ---- cube maps ------------------------------------------------------------------------

static document_text cube_text()
{
    document_text text;
    text.records[8] = "<c xp=\"0.tga\" xn=\"1.tga\" yp=\"2.tga\" yn=\"3.tga\" zp=\"4.tga\" zn=\"5.tga\" "
                      "texture_format=\"5\" texture_filter=\"1\"/>";
    return text;
}

static std::vector<pack_content> cube_entries()
{
    std::vector<pack_content> entries;
    for (uint8_t face = 0; face < 6; ++face)
        entries.push_back(
            {std::to_string(face) + ".tga", tga_picture(4, 4, face == 2 ? 4 : 3, static_cast<uint8_t>(10 * face + 1))});
    return entries;
}

TEST_CASE("a cube map has its six faces in the order of the axes")
{
    const reading r(cube_text(), cube_entries());
    CHECK(joined(r) == "");
    const auto* cube = table_get(r.d.cube_map_table, 1);
    CHECK(cube->size == 4);
    CHECK(cube->texture_format == 5);
    CHECK(cube->texture_filter == 1);
    for (uint32_t face = 0; face < 6; ++face) {
        CHECK(cube->faces[face][0] == 10 * face + 1);
        CHECK(cube->components[face] == (face == 2 ? 4 : 3));
    }
}

TEST_CASE("cube faces that are no equal squares are errors")
{
    const std::string start = "Error: demo.xmlz: section 8 (cube maps), record 1, ";
    std::vector<pack_content> entries = cube_entries();
    entries[3].bytes = tga_picture(4, 2, 3);
    CHECK(joined(reading(cube_text(), entries)) == start + "yn: \"3.tga\" is 4 x 2, not a square.\n");
    entries[3].bytes = tga_picture(2, 2, 3);
    CHECK(joined(reading(cube_text(), entries)) == start + "yn: \"3.tga\" has sides of 2 pixels, the first face 4.\n");
    entries[0].bytes = tga_picture(3, 4, 3);
    CHECK(joined(reading(cube_text(), entries)) == start + "xp: \"0.tga\" is 3 x 4, not a square.\n");
    entries[0].bytes = "x";
    CHECK(joined(reading(cube_text(), entries)) == start + "xp: cannot decode \"0.tga\".\n");
    entries[0].name = "other";
    CHECK(joined(reading(cube_text(), entries)) == start + "xp: entry \"0.tga\" is missing.\n");
}
