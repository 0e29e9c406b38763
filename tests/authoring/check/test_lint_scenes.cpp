// Texts, sizes, meshes under light.
#include "finding_lines.h"

#include <cstring>
#include <doctest/doctest.h>

// complete_pack with another cube.mesh.
static std::vector<pack_content> pack_with_mesh(const std::string& mesh)
{
    std::vector<pack_content> entries = complete_pack();
    entries[0].bytes = in_envelope(mesh);
    return entries;
}

// mesh_text with normals (0, 0, z).
static std::string mesh_with_normals(float z)
{
    std::string mesh = mesh_text(3, 1, {0, 1, 2});
    for (size_t vertex = 0; vertex < 3; ++vertex)
        std::memcpy(&mesh[4 + 3 * 20 + vertex * 12 + 8], &z, sizeof z);
    return mesh;
}

TEST_CASE("letters without a mesh are told of once each, and the space is not")
{
    document_text text = quiet_show();
    std::string& font = text.records[9];
    const std::string glyph = "<g model=\"1\" material=\"2\" bitmap=\"0\" offset=\"0\" width=\"1\"/>";
    const std::string blank = "<g model=\"0\" material=\"2\" bitmap=\"0\" offset=\"0\" width=\"1\"/>";
    const auto blank_out = [&](size_t number) { font.replace(6 + number * glyph.size(), glyph.size(), blank); };
    blank_out(28); // l
    blank_out(86); // the space
    blank_out(38); // ö
    text.records[13] = with(text.records[13], "Hello", "Hello W\xC3\xB6l");
    CHECK(findings_in(text)
        == "warning 13/1/object 2: font 1 has no mesh for \"l\", \"\xC3\xB6\": only a gap is seen there.\n");
    text.records[13] = with(text.records[13], "Hello W\xC3\xB6l", "Me to");
    CHECK(findings_in(text) == "");
}

TEST_CASE("an object of scale 0 is never seen, unless a multiplier adds to it or one direction is left")
{
    const std::string ones = repeated(animated("static", "1"), 3);
    const std::string zeros = repeated(animated("static", "0"), 3);
    document_text text = quiet_show();
    text.records[13] = with(text.records[13], ones, zeros);
    CHECK(findings_in(text) == "note 13/1/object 1: its scale is 0: it is never seen, 1 is as large as it was made.\n");
    document_text line = quiet_show();
    line.records[13]
        = with(line.records[13], ones, animated("static", "0") + animated("static", "1") + animated("static", "0"));
    CHECK(findings_in(line) == "");
    document_text flat = quiet_show();
    flat.records[13]
        = with(flat.records[13], ones, animated("static", "1") + animated("static", "0") + animated("static", "1"));
    CHECK(findings_in(flat) == "");
    document_text many = quiet_show();
    many.records[13] = "<scene>"
        + with(scene_object_text(0, 1, 1, 0, "",
                   "<m type=\"1\">" + animated("static", "4") + repeated(animated("static", "1"), 9) + "</m>"),
            ones, zeros)
        + scene_object_text(2, 0, 0, 1, "Hello") + "</scene>";
    CHECK(findings_in(many) == "");
    document_text none = quiet_show();
    none.records[13] = with(text.records[13], "object=\"1\"", "object=\"0\"");
    CHECK(findings_in(none).find("its scale is 0") == std::string::npos);
}

TEST_CASE("light does not reach a mesh without normals")
{
    CHECK(findings_in(quiet_show(), pack_with_mesh(mesh_with_normals(0)))
        == "warning 13/1/object 1: its material is lit, and its mesh has no normals: it gets the ambient light "
           "alone.\n");
    document_text dark = quiet_show();
    dark.records[11] = with(dark.records[11], "light1 value=\"1\"", "light1 value=\"0\"");
    dark.records[5] = "";
    CHECK(findings_in(dark, pack_with_mesh(mesh_with_normals(0))) == "");
}

TEST_CASE("a scale changes the light of a mesh whose normals are not brought back to length one")
{
    const auto scaled = [](const char* scale, const char* normalization, float normal) {
        document_text text = quiet_show();
        text.records[13]
            = with(text.records[13], repeated(animated("static", "1"), 3), repeated(animated("static", scale), 3));
        text.records[11]
            = with(text.records[11], "<light1", std::string("<normalization value=\"") + normalization + "\"/><light1");
        return findings_in(text, pack_with_mesh(mesh_with_normals(normal)));
    };
    CHECK(scaled("0.25", "0", 1)
        == "note 13/1/object 1: its scale makes its light too bright: its material does not set normalization.\n");
    CHECK(scaled("3", "0", 1)
        == "note 13/1/object 1: its scale makes its light too dark: its material does not set normalization.\n");
    CHECK(scaled("-0.25", "0", 1)
        == "note 13/1/object 1: its scale makes its light too bright: its material does not set normalization.\n");
    CHECK(scaled("0.25", "1", 1) == "");
    CHECK(scaled("0.6", "0", 1) == "");
    CHECK(scaled("-1", "0", 1) == "");
    CHECK(scaled("0.25", "0", 0.25f) == "");
}

TEST_CASE("vertices that belong to no triangle are told of where they are the most, and are no places")
{
    const auto pack = pack_with_mesh(mesh_text(7, 1, {0, 1, 2}));
    CHECK(findings_in(quiet_show(), pack)
        == "note 3/1: 4 of its 7 vertices belong to no triangle: they cost time and show nothing.\n");
    CHECK(findings_in(quiet_show(), pack_with_mesh(mesh_text(6, 1, {0, 1, 2}))) == "");
    document_text placed = quiet_show();
    placed.records[13] = "<scene>"
        + scene_object_text(
            0, 1, 1, 0, "", "<m type=\"3\"><manipulator type=\"0\" model=\"1\"/>" + placement_values() + "</m>")
        + scene_object_text(2, 0, 0, 1, "Hello") + "</scene>";
    CHECK(findings_in(placed, pack) == "");
}
