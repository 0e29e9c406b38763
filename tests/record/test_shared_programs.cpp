// Materials whose programs have equal texts: built once, told each material's own numbers, given back once.
#include "record_bench.h"

#include "document_text.h"
#include "shell/loading.h"
#include "shell/loading_again.h"

#include <doctest/doctest.h>

#include <algorithm>
#include <cstdlib>
#include <memory>
#include <string>
#include <vector>

namespace {

// A document of these materials, each with a function of its number, loaded for the shader path.
struct shared_document {
    document d = {};
    record_handover handover;
    std::vector<loading_remark> remarks;

    explicit shared_document(const std::vector<std::string>& materials, document* before = nullptr,
        const record_handover* made_with = nullptr)
    {
        document_text text = complete_document();
        text.records[section_functions] = repeated(function_text(), 4);
        text.records[section_materials] = "";
        for (const std::string& material : materials)
            text.records[section_materials] += "<material>" + material + "</material>";
        if (before != nullptr)
            offer_records(handover, *before, *made_with, {});
        pack_file* pack = open_pack(complete_pack());
        xml_node* root = xml_parse(to_text(text).c_str());
        document_create(d, "demo.xmlz", timeline_new());
        loading_options options = {{0, 0, 1, 0xFF, 3, 0, 0, 0, 0, 0}, {}, true, true, true};
        options.handover = &handover;
        options.remarks = &remarks;
        document_loader loader;
        document_loader_begin(loader, d, root, pack, options);
        const bool loaded = document_loader_run(loader);
        CHECK_MESSAGE(loaded, loader.error);
        xml_free(root);
        pack_close(pack);
    }
    ~shared_document()
    {
        unload_document(d);
    }
    shared_document(const shared_document&) = delete;
    shared_document& operator=(const shared_document&) = delete;

    // The OpenGL names of the materials' programs.
    std::vector<uint32_t> programs() const
    {
        std::vector<uint32_t> names;
        for (auto [handle, material] : d.material_table)
            names.push_back(material.program->program);
        return names;
    }
};

using names = std::vector<uint32_t>;

} // namespace

// A material whose red follows a function.
static std::string red_of(int function)
{
    return "<red type=\"dynamic\" value=\"" + std::to_string(function)
        + "\"/><green type=\"static\" value=\"0.5\"/><blue type=\"static\" value=\"0.5\"/>"
          "<alpha type=\"static\" value=\"1\"/>";
}

static std::string setting(const std::string& name, int value)
{
    return "<" + name + " value=\"" + std::to_string(value) + "\"/>";
}

static size_t count_of(const std::string& calls, const std::string& word)
{
    size_t count = 0;
    for (size_t at = calls.find(word); at != std::string::npos; at = calls.find(word, at + 1))
        ++count;
    return count;
}

// ---- building -------------------------------------------------------------------------

TEST_CASE("programs with equal texts are built once, whatever else their materials say")
{
    record_bench b;
    take_gl_calls();
    // Blending, culling and which function drives a uniform are not in the texts.
    shared_document s({red_of(1), red_of(2) + setting("blend_function", 1), setting("light1", 1) + red_of(1),
        red_of(3) + setting("backface_culling", 1), setting("light1", 1) + red_of(2)});
    CHECK(s.programs() == names{301, 301, 302, 301, 302});
    const std::string calls = take_gl_calls();
    CHECK(count_of(calls, "glCreateProgram") == 2);
    CHECK(count_of(calls, "glCompileShader") == 4);
    const material_record& second = *table_get(s.d.material_table, 2);
    CHECK(second.program->uniform_functions[0] == 2);
    CHECK(second.program->vertex_source != table_get(s.d.material_table, 1)->program->vertex_source);
}

TEST_CASE("a material's own program is not that of a generated one, even with its text")
{
    record_bench b;
    const shared_document plain({red_of(1)});
    const shader_program& generated = *table_get(plain.d.material_table, 1)->program;
    std::string uniforms = " u1=\"1\"";
    for (uint32_t i = 2; i <= user_uniform_count; ++i)
        uniforms += " u" + std::to_string(i) + "=\"0\"";
    const std::string own = "<enable_glsl value=\"1\"/><glsl_uniforms" + uniforms + "/><vertex_shader>"
        + generated.vertex_source + "</vertex_shader><fragment_shader>" + generated.fragment_source
        + "</fragment_shader>";
    shared_document s({red_of(1), own + red_of(1), own + red_of(2)});
    const names found = s.programs();
    CHECK(found[1] != found[0]); // whose texture matrix goes up as it lies
    CHECK(found[2] == found[1]);
}

// A uniform that a material never tells has to be what it is in a new program.
TEST_CASE("materials with the same program of their own, of which other uniforms are told, do not share it")
{
    record_bench b;
    const auto own = [](int function, const std::string& more) {
        std::string uniforms = " u1=\"" + std::to_string(function) + "\"";
        for (uint32_t i = 2; i <= user_uniform_count; ++i)
            uniforms += " u" + std::to_string(i) + "=\"0\"";
        return "<enable_glsl value=\"1\"/><glsl_uniforms" + uniforms
            + "/><vertex_shader>text</vertex_shader><fragment_shader>text</fragment_shader>" + more;
    };
    const auto pictured = [](int coordinates, int rotation) {
        return "<texture1 value=\"1\" wrapmode=\"0\" cgenmode=\"" + std::to_string(coordinates) + "\" rotation=\""
            + std::to_string(rotation) + "\" function=\"0\"/>";
    };
    const std::string second_light = setting("light1", 1) + setting("light2", 1);
    std::vector<std::string> materials;
    for (const int function : {1, 2}) {
        materials.push_back(own(function, ""));
        materials.push_back(own(0, ""));
        for (const std::string& more :
            {setting("light1", 1), second_light, pictured(0, 0), pictured(1, 0), pictured(0, 1)})
            materials.push_back(own(function, more));
    }
    shared_document s(materials);
    const names found = s.programs();
    REQUIRE(found.size() == 14);
    for (size_t i = 0; i < 7; ++i) {
        CAPTURE(i);
        CHECK(std::count(found.begin(), found.begin() + 7, found[i]) == 1);
        CHECK(found[7 + i] == found[i]);
    }
}

TEST_CASE("a program that does not build is built by every material, and each is told why")
{
    record_bench b;
    b.answers.links = false;
    b.answers.program_log = "no\n";
    take_gl_calls();
    shared_document s({red_of(1), red_of(2)});
    CHECK(s.programs() == names{0, 0});
    REQUIRE(s.remarks.size() == 2);
    CHECK(s.remarks[1].record == 2);
    CHECK(count_of(take_gl_calls(), "glCompileShader") == 4);
}

// ---- drawing --------------------------------------------------------------------------

TEST_CASE("materials that share a program tell it their own numbers each time that they draw after another")
{
    record_bench b;
    b.answers.locations = {{"Position", 1}, {"Projection", 11}, {"Modelview", 12}, {"u1", 21}};
    shared_document s({red_of(2), red_of(3)}); // the first function has been asked for a picture
    REQUIRE(s.programs() == names{301, 301});
    for (uint32_t function = 2; function <= 3; ++function)
        table_get(s.d.function_table, function)->segment_params[0][0] = static_cast<float>(function) + 0.5f;
    const mesh_record& mesh = *table_get(s.d.mesh_table, 1);
    REQUIRE(mesh.arrays.index_count >= 3);
    std::vector<scene_object> objects;
    for (const uint32_t material : {1u, 2u, 2u, 1u})
        objects.push_back(object_at_origin(object_model, 4, material));
    scene_record& scene = *table_get(s.d.scene_table, 1);
    std::free(scene.objects);
    scene.objects = static_cast<scene_object*>(std::calloc(objects.size(), sizeof(scene_object)));
    std::copy(objects.begin(), objects.end(), scene.objects);
    scene.object_count = static_cast<uint32_t>(objects.size());
    take_gl_calls();
    compose_frame(s.d, 0, b.view, b.caps, true, b.r);
    const std::string calls = take_gl_calls({"glUseProgram", "glUniform1f", "glDrawElements"});
    const std::string draw = calls.substr(calls.rfind("glDrawElements"));
    CHECK(calls
        == "\nglUseProgram(301)\nglUniform1f(21, 2.5)\n" + draw + "glUniform1f(21, 3.5)\n" + draw + draw
            + "glUniform1f(21, 2.5)\n" + draw);
}

// ---- giving back ------------------------------------------------------------------------

TEST_CASE("a shared program is given back once")
{
    record_bench b;
    shared_document s({red_of(1), red_of(2), red_of(3)});
    take_gl_calls();
    release_document_gl(s.d);
    const std::string calls = take_gl_calls();
    CHECK(count_of(calls, "glDeleteProgram(301)") == 1);
    CHECK(count_of(calls, "glDeleteProgram") == 1);
    CHECK(count_of(calls, "glDeleteShader") == 2);
    CHECK(s.programs() == names{0, 0, 0});
    release_document_gl(s.d);
    CHECK(count_of(take_gl_calls(), "glDelete") == 0);
}

TEST_CASE("a document that is loaded again takes a shared program from the material that has built it, and it lives on")
{
    record_bench b;
    auto before = std::make_unique<shared_document>(std::vector<std::string>{red_of(1), red_of(2)});
    take_gl_calls();
    // The first material is another one now; the two others share as before.
    shared_document s({setting("light1", 1), red_of(3), red_of(1)}, &before->d, &before->handover);
    CHECK(s.programs() == names{302, 301, 301});
    CHECK(count_of(take_gl_calls(), "glCreateProgram") == 1);
    leave_taken(s.handover, s.d);
    before.reset();
    CHECK(count_of(take_gl_calls(), "glDeleteProgram") == 0);
    release_document_gl(s.d);
    CHECK(count_of(take_gl_calls(), "glDeleteProgram(301)") == 1);
}

TEST_CASE("a document that is not to be after all gives a shared program back to the one before")
{
    record_bench b;
    shared_document before({red_of(1), red_of(2)});
    {
        shared_document s({red_of(3), red_of(1)}, &before.d, &before.handover);
        CHECK(s.programs() == names{301, 301});
        give_taken_back(s.handover, s.d);
        take_gl_calls();
    }
    CHECK(count_of(take_gl_calls(), "glDeleteProgram") == 0);
    CHECK(before.programs() == names{301, 301});
}
