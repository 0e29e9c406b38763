#include "../built_source.h"

#include <doctest/doctest.h>

static const std::string noise = "local p = texture.noise { color = { 1, 0.5, 0.25 }, random_seed = 3 }\n";

static built_source build_texture(const std::string& words, const std::string& texture)
{
    return build_scene(words, "screen() { material = material { texture = " + texture + " } }");
}

TEST_CASE("a generated picture has its numbers in the catalogue's order")
{
    const built_source b = build_texture(noise, "p");
    CHECK(
        fields_of(b, section_generated_images, 1, {"type", "parameter 1", "parameter 2", "parameter 3", "parameter 4"})
        == "5 1 0.5 0.25 3");
    CHECK(fields_of(b, section_texture_nodes, 1, {"type", "layer_id", "input1", "parameter 1", "parameter 2"})
        == "101 0 0 1 1");
    CHECK(
        fields_of(b, section_texture_nodes, 2, {"type", "input1", "texture_filter", "texture_format"}) == "255 1 2 0");
    CHECK(fields_of(b, section_objects, 1, {"type", "id"}) == "0 2");
}

TEST_CASE("equal generated pictures are one, nodes never")
{
    const built_source b
        = build_texture(noise + noise + "local q = texture.noise { color = \"red\", random_seed = 3 }\n",
            "texture.noise { color = { 1, 0.5, 0.25 }, random_seed = 3 }:add(p):add(q)");
    CHECK(records(b, section_generated_images) == 2);
    CHECK(field_of(b, section_texture_nodes, 1, "layer_id") == "0");
    CHECK(field_of(b, section_texture_nodes, 2, "layer_id") == "0");
    CHECK(field_of(b, section_texture_nodes, 3, "layer_id") == "1");
}

TEST_CASE("a node used twice as a texture is one texture, with another filter two")
{
    const built_source b = build_scene(noise + "local n = p:blur()",
        "screen() { material = material { texture = n, texture2 = n } }, "
        "screen() { material = material { texture = n:texture { filter = \"linear\" } } }");
    CHECK(fields_of(b, section_materials, 1, {"texture1", "texture2"}) == "1 1");
    CHECK(field_of(b, section_materials, 2, "texture1") == "2");
    CHECK(records(b, section_texture_nodes) == 4);
}

TEST_CASE("nodes of nothing are black, and need no record")
{
    const built_source b
        = build_texture(noise, "texture.black {}:maximum(p, { scale_1 = 0.5, scale_2 = 2, name = \"m\" })");
    CHECK(fields_of(b, section_texture_nodes, 1, {"name", "type", "input1", "layer_id", "parameter 1", "parameter 2"})
        == "m 103 0 0 0.5 2");
    const built_source bare = build_texture("", "texture.black {}");
    CHECK(bare.told.find("input1") == std::string::npos);
    CHECK(fields_of(bare, section_texture_nodes, 1, {"type", "input1"}) == "255 0");
    CHECK(records(bare, section_texture_nodes) == 1);
}

TEST_CASE("a target is a picture of its own, however equal it is")
{
    const built_source b
        = build_scene("local a, b = target { width = 64, height = 32 }, target { width = 64, height = 32 }",
            "screen() { material = material { texture = a, texture2 = b } }");
    CHECK(records(b, section_image_textures) == 2);
    CHECK(fields_of(b, section_image_textures, 1, {"width", "height", "texture_filter", "texture_format"})
        == "64 32 1 0");
    CHECK(fields_of(b, section_materials, 1, {"texture1", "texture2"}) == "1 2");
    CHECK(b.built.entries.size() == 3); // the document, one black picture, the screen with its coordinates turned
}

TEST_CASE("dynamic textures are never shared")
{
    const built_source b = build_scene("local function d() return dynamic(\"Effect 1\", { size = 256, bits = 8 }) end",
        "screen() { material = material { texture = d(), texture2 = d() } }");
    CHECK(records(b, section_dynamic_textures) == 2);
    CHECK(fields_of(b, section_dynamic_textures, 1, {"resolution", "bpp", "texture_format", "texture_filter"})
        == "256 8 2 1");
    CHECK(fields_of(b, section_objects, 2, {"type", "id"}) == "2 2");
}

TEST_CASE("an image has the format of its picture, and equal images are one")
{
    const test_folder folder;
    copy_file(folder, "examples/pictures/boat.png", "boat.png");
    write_file(folder, "show.lua",
        "local a, b = image \"boat.png\", image(\"boat.png\", { filter = \"mipmaps\" })\n"
        "local c = image(\"boat.png\", { filter = \"nearest\", format = \"luminance\" })\n"
        "track { scene \"s\" { screen() { material = material { texture = a, texture2 = b, texture3 = c } } } "
        "{ from = 0, to = 100 } }");
    const built_source b = build_folder(folder);
    CHECK(records(b, section_image_textures) == 2);
    const bool has_alpha = field_of(b, section_image_textures, 1, "components") == "4";
    CHECK(fields_of(b, section_image_textures, 1, {"texture_format", "texture_filter"}) == (has_alpha ? "1 2" : "0 2"));
    CHECK(fields_of(b, section_image_textures, 2, {"texture_format", "texture_filter"}) == "2 0");
    CHECK(fields_of(b, section_materials, 1, {"texture1", "texture2", "texture3"}) == "1 1 2");
}

TEST_CASE("a cube map takes six files from one pattern")
{
    const test_folder folder;
    for (const char* face : {"xp", "xn", "yp", "yn", "zp", "zn"})
        copy_file(
            folder, std::string("examples/reflections/evening_") + face + ".png", std::string("sky_") + face + ".png");
    write_file(folder, "show.lua",
        "local sky = cube_map \"sky_*.png\" { filter = \"linear\" }\n"
        "track { scene \"s\" { screen() { material = material { texture = { texture = sky, coordinates = \"cubemap\" } "
        "} } } { from = 0, to = 100 } }");
    const built_source b = build_folder(folder);
    CHECK(b.told == "");
    CHECK(records(b, section_cube_maps) == 1);
    CHECK(fields_of(b, section_cube_maps, 1, {"texture_filter", "texture_format"}) == "1 0");
    CHECK(fields_of(b, section_objects, 1, {"type", "id"}) == "3 1");
    const std::string text = text_of_document(b);
    CHECK(text.find("xp=\"sky_xp.png\" xn=\"sky_xn.png\" yp=\"sky_yp.png\" yn=\"sky_yn.png\" zp=\"sky_zp.png\" "
                    "zn=\"sky_zn.png\"")
        != std::string::npos);
}
