#include "../built_source.h"

#include "model/glyphs.h"

#include <doctest/doctest.h>

static const std::string triangle
    = "local function tri(more) local t = { positions = { { 0, 0, 0 }, { 1, 0, 0 }, { 0, 1, 0 } }, "
      "triangles = { { 1, 2, 3 } } } for k, v in pairs(more or {}) do t[k] = v end return shape(t) end\n";
static const std::string first_set = "coordinates = { { 0, 0.25 }, { 1, 0 }, { 0, 1 } }";
static const std::string second_set = "coordinates2 = { { 0.5, 0.125 }, { 1, 0 }, { 0, 1 } }";

// The first vertex's v in every set of a mesh.
static std::string first_v(const built_source& b, uint32_t mesh)
{
    const mesh_record* record = b.demo != nullptr ? table_get(b.demo->d.mesh_table, mesh) : nullptr;
    std::string all;
    for (uint32_t set = 0; record != nullptr && set < record->arrays.texcoord_sets; ++set)
        all += (set == 0 ? "" : " ") + number_text(static_cast<double>(record->arrays.texcoords[set][1]));
    return all;
}

TEST_CASE("a shape's numbers are the mesh's")
{
    const built_source b = build_scene(triangle, "tri { " + first_set + " } { material = material {} }");
    REQUIRE(records(b, section_meshes) == 1);
    const mesh_arrays& arrays = table_get(b.demo->d.mesh_table, 1)->arrays;
    CHECK(arrays.vertex_count == 3);
    CHECK(arrays.index_count == 3);
    CHECK(arrays.positions[3] == 1.0f);
    CHECK(arrays.positions[7] == 1.0f);
    CHECK(arrays.indices[2] == 2);
    CHECK(arrays.normals[2] == 1.0f); // towards the eye, counter-clockwise
    CHECK(first_v(b, 1) == "0.25");
}

TEST_CASE("meshes of equal content are one record and one entry")
{
    const built_source b = build_scene(
        triangle, "tri() { material = material {} }, tri { name = \"other\" } { material = material {} }");
    CHECK(records(b, section_meshes) == 1);
    CHECK(b.built.entries.size() == 2);
    CHECK(part_of(b, section_scenes, 1, 2, "object") == "1");
}

static built_source build_target(const std::string& mesh, const std::string& units)
{
    return build_scene(triangle + "local t = target { width = 64, height = 64 }\nlocal d = dynamic \"Effect 1\"\n",
        "tri { " + mesh + " } { material = material { " + units + " } }");
}

TEST_CASE("coordinates are turned where a target is shown by them, and only there")
{
    CHECK(first_v(build_target(first_set, "texture = t"), 1) == "0.75");
    CHECK(first_v(build_target(first_set, "texture = d"), 1) == "0.25");
    CHECK(first_v(build_target(first_set, "texture = target { upright = false }"), 1) == "0.25");
    CHECK(first_v(build_target(first_set, "texture = { texture = t, coordinates = \"spheremap\" }"), 1) == "0.25");
    CHECK(first_v(build_target(first_set + ", " + second_set, "texture = t, texture2 = d"), 1) == "0.75 0.125");
    CHECK(first_v(build_target(first_set + ", " + second_set, "texture = d, texture2 = t"), 1) == "0.25 0.875");
    CHECK(first_v(build_target(first_set + ", " + second_set, "texture = t, texture2 = t"), 1) == "0.75 0.875");
}

TEST_CASE("a unit that has no set of its own gets one where the first is read as it is")
{
    CHECK(first_v(build_target(first_set, "texture2 = t"), 1) == "0.75");
    CHECK(first_v(build_target(first_set, "texture = t, texture2 = t"), 1) == "0.75");
    CHECK(first_v(build_target(first_set, "texture = d, texture2 = t"), 1) == "0.25 0.75");
    CHECK(first_v(build_target(first_set, "texture = d, texture3 = t"), 1) == "0.25 0.25 0.75");
    CHECK(first_v(build_target(first_set, "texture2 = t, texture3 = d"), 1) == "0.25 0.75");
}

TEST_CASE("a mesh that is shown both ways is two meshes")
{
    const built_source b = build_scene(triangle + "local m = tri { " + first_set + ", name = \"both\" }",
        "m { material = material { texture = target {} } }, m { material = material {} }");
    CHECK(records(b, section_meshes) == 2);
    CHECK(first_v(b, 1) == "0.75");
    CHECK(first_v(b, 2) == "0.25");
    CHECK(text_of_document(b).find("filename=\"both-turned.mesh\"") != std::string::npos);
}

// A model of more vertices than one mesh holds.
static std::string large_model()
{
    std::string text;
    for (uint32_t triangle_number = 0; triangle_number < 30000; ++triangle_number) {
        const std::string x = std::to_string(triangle_number % 200), y = std::to_string(triangle_number / 200);
        text += "v " + x + " " + y + " 0\nv " + x + ".5 " + y + " 0\nv " + x + " " + y + ".5 0.25\n";
    }
    for (uint32_t vertex = 1; vertex <= 90000; vertex += 3)
        text += "f " + std::to_string(vertex) + " " + std::to_string(vertex + 1) + " " + std::to_string(vertex + 2)
            + "\n";
    return text;
}

TEST_CASE("a mesh of too many vertices is placed in parts, and told where one part counts")
{
    const test_folder folder;
    write_file(folder, "large.obj", large_model());
    write_file(folder, "show.lua",
        "local large = mesh \"large.obj\"\n"
        "track { scene \"s\" { large { material = material {}, at = { 7, 0, 0 } },\n"
        "screen() { material = material {}, manipulators = { on_vertices(large) } } } { from = 0, to = 100 } }");
    const built_source b = build_folder(folder);
    CHECK(b.told.find("1: a mesh with more than 65,535 vertices is placed in 2 parts") != std::string::npos);
    CHECK(part_count(b, section_scenes, 1) == 3);
    CHECK(parts_of(b, section_scenes, 1, 1, {"object", "x"}) == "1 7");
    CHECK(parts_of(b, section_scenes, 1, 2, {"object", "x"}) == "2 7");
    uint32_t triangles = 0;
    for (uint32_t mesh = 1; mesh <= 2; ++mesh)
        triangles += number_of(field_of(b, section_meshes, mesh, "triangles"));
    CHECK(triangles == 30000);
}

TEST_CASE("effects are never shared, and follow functions")
{
    const built_source b = build_scene("local function e() return effect(\"Particles\", { name = \"p\" }) end",
        "e() { material = material {} }, e() { material = material {} }");
    CHECK(records(b, section_mesh_effects) == 2);
    CHECK(field_of(b, section_mesh_effects, 2, "name") == "p");
    CHECK(parts_of(b, section_scenes, 1, 2, {"type", "object"}) == "1 2");
}

TEST_CASE("a font of one's own has its letters where the document counts them")
{
    const built_source b = build_scene(triangle
            + "local ink = material { color = \"red\" }\n"
              "local f = font { glyphs = { a = { mesh = tri(), material = ink, offset = 0.5, width = 1.5, bitmap = 3 "
              "}, "
              "[\"?\"] = { width = 2 }, space = { width = 0.25 }, [7] = { width = 9 } } }",
        "f \"a\" {}");
    CHECK(parts_of(b, section_fonts, 1, 1, {"model", "material", "bitmap", "offset", "width"}) == "1 1 3 0.5 1.5");
    CHECK(parts_of(b, section_fonts, 1, 87, {"model", "width"}) == "0 0.25");
    size_t twos = 0, nines = 0;
    for (uint32_t glyph = 1; glyph <= 87; ++glyph) {
        twos += part_of(b, section_fonts, 1, glyph, "width") == "2" ? 1u : 0u;
        nines += part_of(b, section_fonts, 1, glyph, "width") == "9" ? 1u : 0u;
    }
    CHECK(twos == 1);
    CHECK(nines == 1);
    CHECK(parts_of(b, section_scenes, 1, 1, {"type", "object", "material", "font", "text"}) == "2 0 0 1 \"a\"");
}

TEST_CASE("a font of a file is one for each material and for flat scenes, with the letters that texts use")
{
    const test_folder folder;
    copy_file(folder, "examples/letters/letters.ttf", "letters.ttf");
    write_file(folder, "show.lua",
        "local f = font(\"letters.ttf\", { height = 0.5 })\n"
        "local red, blue = material { color = \"red\" }, material { color = \"blue\" }\n"
        "local s = scene \"s\" { f \"ab\" { material = red }, f \"b\" { material = blue }, f \"a\" { material = red, "
        "scale = 2 } }\n"
        "track { s { from = 0, to = 100 }, s { from = 0, to = 100, flat = true } }");
    const built_source b = build_folder(folder);
    CHECK(b.told == "");
    CHECK(records(b, section_fonts) == 4);
    CHECK(records(b, section_meshes) == 2);
    CHECK(parts_of(b, section_scenes, 1, 3, {"font", "scale x", "scale y", "scale z"}) == "1 2 2 2");
    CHECK(parts_of(b, section_scenes, 2, 3, {"scale x", "scale y", "scale z"}) == "1.5 -2 2");
    const uint32_t flat = number_of(part_of(b, section_scenes, 2, 1, "font"));
    CHECK(flat != number_of(part_of(b, section_scenes, 1, 1, "font")));
    CHECK(std::strtod(part_of(b, section_fonts, flat, 1, "width").c_str(), nullptr)
        == doctest::Approx(0.75 * std::strtod(part_of(b, section_fonts, 1, 1, "width").c_str(), nullptr)));
    std::string letters;
    for (uint32_t glyph = 1; glyph <= glyph_count; ++glyph)
        letters += part_of(b, section_fonts, 1, glyph, "model") != "0" ? glyph_characters[glyph - 1] : "";
    CHECK(letters == "ab");
    // a material of space hides by depth, one of a flat scene does not
    CHECK(
        field_of(b, section_materials, number_of(part_of(b, section_fonts, flat, 1, "material")), "depth_test") == "0");
    CHECK(field_of(b, section_materials, number_of(part_of(b, section_fonts, 1, 1, "material")), "depth_test") == "1");
}
