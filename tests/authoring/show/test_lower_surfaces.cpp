#include "../built_source.h"

#include <doctest/doctest.h>

static built_source build_material(const std::string& fields, const std::string& words = "")
{
    return build_scene(words, "screen() { material = material { " + fields + " } }");
}

TEST_CASE("a material that says nothing is white, replaces, and hides by depth")
{
    CHECK(fields_of(build_material(""), section_materials, 1,
              {"backface_culling", "depth_test", "normalization", "wireframe", "blend_function", "red", "green", "blue",
                  "alpha", "linewidth", "light1", "light2", "texture1", "texture2", "texture3", "fogtype", "fogcolor",
                  "enable_glsl", "vertex_shader"})
        == "0 1 0 0 2 1 1 1 1 1 0 0 0 0 0 0 0 0 none");
}

TEST_CASE("a material has what it says")
{
    const built_source b
        = build_material("cull = true, depth = false, normalize = true, wireframe = true, line_width = 3, "
                         "blend = \"alpha\", color = { 0.25, 0.5, 0.75, 0.125 }");
    CHECK(fields_of(b, section_materials, 1,
              {"backface_culling", "depth_test", "normalization", "wireframe", "linewidth", "red", "green", "blue",
                  "alpha"})
        == "1 0 1 1 3 0.25 0.5 0.75 0.125");
    CHECK(field_of(b, section_materials, 1, "blend_function")
        != field_of(build_material("blend = \"add\""), section_materials, 1, "blend_function"));
    CHECK(field_of(build_material("color = \"#00000080\""), section_materials, 1, "alpha") == "0.5019608");
    CHECK(field_of(build_material("color = \"#00000080\", alpha = 0.25"), section_materials, 1, "alpha") == "0.25");
}

TEST_CASE("a lit material keeps its normals' length unless it says not to")
{
    CHECK(field_of(build_material("light = light {}"), section_materials, 1, "normalization") == "1");
    CHECK(field_of(build_material("light2 = light {}"), section_materials, 1, "normalization") == "1");
    CHECK(
        field_of(build_material("light = light {}, normalize = false"), section_materials, 1, "normalization") == "0");
}

TEST_CASE("a unit says how its texture is laid on")
{
    const built_source b = build_material(
        "texture2 = { texture = d, combine = 2, wrap = \"edge clamp\", coordinates = \"spheremap\", turn = true }, "
        "texture3 = d",
        "local d = dynamic \"Effect 1\"");
    CHECK(fields_of(b, section_materials, 1,
              {"texture1", "texture2", "texture2 wrapmode", "texture2 cgenmode", "texture2 rotation",
                  "texture2 function", "texture3", "texture3 wrapmode", "texture3 function"})
        == "0 1 1 1 1 2 1 0 0");
    CHECK(records(b, section_objects) == 1);
}

TEST_CASE("fog has its reach, its colour and its quality")
{
    CHECK(fields_of(build_material("fog = {}"), section_materials, 1, {"fogtype", "fogstart", "fogend", "fogcolor"})
        == "2 0 1 0");
    CHECK(
        fields_of(build_material("fog = { from = 2, to = linear(3, 4, 100), color = \"red\", quality = \"fastest\" }"),
            section_materials, 1, {"fogtype", "fogstart", "fogend", "fogcolor"})
        == "1 2 function 1 1");
}

TEST_CASE("a shader has its texts and its uniforms")
{
    const built_source b = build_material("shader = { vertex = \"a > b\", fragment = [[f]], "
                                          "uniforms = { u1 = linear(0, 1, 100), u24 = 2 }, enabled = false }");
    CHECK(fields_of(b, section_materials, 1, {"enable_glsl", "u1", "u2", "u24", "vertex_shader", "fragment_shader"})
        == "0 1 0 2 \"a > b\" \"f\"");
    CHECK(field_of(build_material("shader = { vertex = \"v\", fragment = \"f\" }"), section_materials, 1, "enable_glsl")
        == "1");
}

TEST_CASE("equal materials are one, and one that says nothing about depth is two where a scene is flat")
{
    const built_source b = build_text(
        "local a, b = material { color = \"red\" }, material { color = \"#f00\" }\n"
        "local c = material { color = \"red\", depth = true }\n"
        "local s = scene \"s\" { screen() { material = a }, screen() { material = b }, screen() { material = c } }\n"
        "track { s { from = 0, to = 100 }, s { from = 0, to = 100, flat = true } }");
    CHECK(records(b, section_scenes) == 2);
    CHECK(records(b, section_materials) == 2);
    CHECK(parts_of(b, section_scenes, 1, 1, {"material"}) == parts_of(b, section_scenes, 1, 3, {"material"}));
    CHECK(part_of(b, section_scenes, 2, 1, "material") == part_of(b, section_scenes, 2, 2, "material"));
    CHECK(part_of(b, section_scenes, 2, 1, "material") != part_of(b, section_scenes, 1, 1, "material"));
    CHECK(part_of(b, section_scenes, 2, 3, "material") == part_of(b, section_scenes, 1, 1, "material"));
}

TEST_CASE("a raw material is what it is, wherever it is named")
{
    const built_source b = build_text(
        "local raw_one = raw(\"materials\", [[<material><red type=\"static\" value=\"0.5\"/></material>]])\n"
        "local s = scene \"s\" { screen() { material = raw_one }, screen() { material = raw_one } }\n"
        "track { s { from = 0, to = 100, flat = true } }");
    CHECK(records(b, section_materials) == 1);
    CHECK(fields_of(b, section_materials, 1, {"red", "green"}) == "0.5 0");
    CHECK(part_of(b, section_scenes, 1, 2, "material") == "1");
}

TEST_CASE("an object that names no reference is not taken for one that has its number")
{
    const built_source b
        = build_scene("local function tri(x) return shape { positions = { { 0, 0, 0 }, { x, 0, 0 }, { 0, 1, 0 } }, "
                      "triangles = { { 1, 2, 3 } } } end\nlocal first, r = tri(1), reference(tri(2))",
            "first { material = material {} }, r { material = material {} }");
    REQUIRE(b.demo != nullptr);
    const scene_object* objects = table_get(b.demo->d.scene_table, 1)->objects;
    for (uint32_t index = 0; index < 2; ++index) {
        const uint32_t mesh = resolve_scene_object(b.demo->d, objects[index]);
        CHECK(table_get(b.demo->d.mesh_table, mesh)->arrays.positions[3] == static_cast<float>(index + 1));
    }
}

TEST_CASE("a reference is an entry of the objects section, whatever it leads to")
{
    const built_source b = build_scene("local r = reference(screen())\nlocal e = reference(effect \"Lake water\")",
        "r { material = material {} }, e { material = material {} }");
    CHECK(fields_of(b, section_objects, 1, {"type", "id"}) == "0 1");
    CHECK(fields_of(b, section_objects, 2, {"type", "id"}) == "1 1");
    CHECK(parts_of(b, section_scenes, 1, 1, {"type", "object"}) == "0 1");
    CHECK(parts_of(b, section_scenes, 1, 2, {"type", "object"}) == "1 2");
}
