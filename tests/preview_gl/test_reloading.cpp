// A show that is loaded in the place of another one: what both have is taken over, and nobody can tell.
#include "edited_show.h"
#include "stage_bench.h"

#include <doctest/doctest.h>

TEST_CASE("an edited show that is loaded over the one before looks as if it had been loaded alone")
{
    const show_build plain = built_from("first-light", {});
    const std::vector<std::vector<source_edit>> edits = {
        {{"palette.lua", "rose  = {0.86, 0.46, 0.52}", "rose  = {0.36, 0.46, 0.92}"}},
        {{"stones.lua", "normalize = true,", "normalize = true, alpha = 0.5,"}},
        {{"stage.lua", "color = {0.05, 0.07, 0.17}", "color = {0.15, 0.07, 0.17}"}},
        {{"stones.lua", "local radius = 9", "local radius = 11"}},
        {{"lake.lua", "{ {0, -3.2, -6}, ", "{ {0, -3.9, -6}, "}},
        {{"stage.lua", "filter = name == \"spark.png\"", "filter = name == \"moon.png\""}},
        {{"stage.lua", "{0.55, 0.05, -0.22}", "{0.75, 0.05, -0.22}"}},
    };
    for (const std::vector<source_edit>& edit : edits) {
        CAPTURE(edit[0].to);
        check_reload(plain, built_from("first-light", edit));
    }
}

TEST_CASE("any show that is loaded over another one looks as if it had been loaded alone")
{
    const std::vector<std::string> shows = {"effects", "many", "dynamic", "textures", "shader", "transitions",
        "reflections", "spinning-cube", "letters", "pictures", "raw"};
    show_build before = built_from("examples/blending", {});
    for (const std::string& show : shows) {
        CAPTURE(show);
        show_build after = built_from("examples/" + show, {});
        check_reload(before, after);
        before = std::move(after);
    }
}

// ---- documents ----------------------------------------------------------------------------

static std::string cut(const std::string& text, size_t begin, size_t end)
{
    return text.substr(begin, end - begin);
}

// A picture that a layer draws into, in the same size and in another one.
static document_text with_target(const document_text& text, const std::string& mode)
{
    document_text drawn = text;
    drawn.records[section_timeline] = "<layer>"
        + with(clip_text(1, 0, 500), "type=\"0\"", "type=\"" + mode + "\" rtex=\"1\"") + "</layer><layer>"
        + clip_text(1, 0, 500) + "</layer>";
    return drawn;
}

// A document with a record of each kind, and with two materials: one with a program of its own, which bends the points
// of a line into a triangle, and one without.
static document_text document_of_every_kind()
{
    document_text text = complete_document();
    std::string& materials = text.records[section_materials];
    const std::string generated = with(materials, "<enable_glsl value=\"1\"", "<enable_glsl value=\"0\"");
    materials = with(materials, "void main(void) {}",
        "attribute vec3 Position; uniform float u1; varying vec2 at; void main(void) { at = Position.xy; gl_Position = "
        "vec4(Position.x - u1, Position.x * Position.x - 1.0, 0.0, 1.0); }");
    materials = with(materials, "void main(void) { }",
        "uniform sampler2D Texture0; uniform vec3 LightPosition2; varying vec2 at; void main(void) { gl_FragColor = "
        "texture2D(Texture0, at) + vec4(abs(LightPosition2), 0.0); }");
    materials += generated;
    return text;
}

TEST_CASE("a document with records of every kind is the same however much of it was there before")
{
    const document_text plain = document_of_every_kind();
    const show_build before = built_from(plain, complete_pack());
    std::vector<std::pair<document_text, std::vector<pack_content>>> others;
    const auto other = [&](uint32_t section, const std::string& records) {
        others.push_back({plain, complete_pack()});
        others.back().first.records[section] = records;
    };
    // Other handles: a record of its own in front, and each twice.
    for (const uint32_t section : {section_meshes, section_image_textures, section_cube_maps, section_materials}) {
        other(section, plain.records[section] + plain.records[section]);
        std::string first = plain.records[section];
        if (section == section_image_textures)
            first = with(first, "rock.tga", "face.tga");
        if (section == section_meshes)
            first = with(first, "cube.mesh", "bent.mesh");
        if (section == section_cube_maps)
            first = with(first, "face.tga", "pale.tga");
        other(section, first + plain.records[section]);
        others.back().second.push_back({"bent.mesh", in_envelope(mesh_text(4, 1, {0, 1, 2, 1, 3, 2}))});
        others.back().second.push_back({"pale.tga", tga_picture(2, 2, 3, 200)});
    }
    const std::string& nodes = plain.records[section_texture_nodes];
    other(section_texture_nodes, with(nodes, "<p>0.5</p>", "<p>0.25</p>"));
    other(section_texture_nodes, with(nodes, "texture_filter=\"2\"", "texture_filter=\"0\""));
    other(section_texture_nodes, with(nodes, "<output>2</output>", "")); // not in order
    other(section_texture_nodes, with(nodes, "<i>0</i>", "<i>1</i>"));   // round in a circle
    other(section_texture_nodes, nodes + cut(nodes, nodes.find("<t name=\"out"), nodes.size()));
    other(section_generated_images, with(plain.records[section_generated_images], "0.25", "0.75"));
    other(section_dynamic_textures, with(plain.records[section_dynamic_textures], "type=\"1\"", "type=\"2\""));
    other(section_materials, with(plain.records[section_materials], "- 1.0, 0.0", "- 0.5, 0.0"));
    other(section_materials, with(plain.records[section_materials], "<light2 value=\"1\"/>", ""));
    others.push_back({with_target(plain, "1"), complete_pack()});
    others.push_back({with_target(plain, "5"), complete_pack()});
    for (size_t n = 0; n < others.size(); ++n) {
        CAPTURE(n);
        check_reload(before, built_from(others[n].first, others[n].second));
        if (n > 0)
            check_reload(built_from(others[n - 1].first, others[n - 1].second), before);
    }
}
