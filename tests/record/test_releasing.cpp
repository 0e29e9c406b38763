// What a document takes of OpenGL while it is loaded and drawn, it gives back when it is unloaded.
#include "record_bench.h"

#include "document_text.h"
#include "render/compositor_gl.h"
#include "shell/loading.h"

#include <doctest/doctest.h>

#include <algorithm>
#include <sstream>

// ---- names ----------------------------------------------------------------------

namespace {

// Names of objects, as text: the driver of these tests gives no name to two kinds of them.
struct object_names {
    std::vector<std::string> made;
    std::vector<std::string> deleted;
};

} // namespace

// What stands behind the last `before` of a line, without closing brackets; all calls name one object.
static std::string name_behind(const std::string& line, const std::string& before)
{
    const std::string name = line.substr(line.rfind(before) + before.size());
    return name.substr(0, name.find_first_of("])"));
}

static object_names names_in(const std::string& calls)
{
    object_names names;
    std::istringstream lines(calls);
    for (std::string line; std::getline(lines, line);) {
        if (line.starts_with("glGen") || line.starts_with("glCreate"))
            names.made.push_back(name_behind(line, " = "));
        else if (line.starts_with("glDeleteTextures") || line.starts_with("glDeleteBuffers"))
            names.deleted.push_back(name_behind(line, "["));
        else if (line.starts_with("glDelete"))
            names.deleted.push_back(name_behind(line, "("));
    }
    std::sort(names.made.begin(), names.made.end());
    std::sort(names.deleted.begin(), names.deleted.end());
    return names;
}

static size_t count_between(const std::vector<std::string>& names, int first, int last)
{
    return static_cast<size_t>(std::count_if(names.begin(), names.end(),
        [=](const std::string& name) { return std::stoi(name) >= first && std::stoi(name) <= last; }));
}

// "TEXTURES textures, BUFFERS buffers, ...": names begin at 1, 101, 201 and 301.
static std::string counts_of(const std::vector<std::string>& names)
{
    return std::to_string(count_between(names, 1, 100)) + " textures, " + std::to_string(count_between(names, 101, 200))
        + " buffers, " + std::to_string(count_between(names, 201, 300)) + " shaders, "
        + std::to_string(count_between(names, 301, 400)) + " programs";
}

// ---- the document -----------------------------------------------------------------

// A record in every section, everything drawn: a quarter of the screen into the image, then the screen.
static document_text drawn_document()
{
    document_text text = complete_document();
    const std::string target = with(clip_text(1, 0, 500), "type=\"0\"", "type=\"5\" rtex=\"1\"");
    text.records[section_materials] += "<material><texture1 value=\"5\" wrapmode=\"0\" cgenmode=\"0\" rotation=\"0\" "
                                       "function=\"0\"/></material>"; // the picture that moves
    text.records[section_scenes]
        = with(text.records[section_scenes], "</scene>", scene_object_text(0, 4, 2, 1, "") + "</scene>");
    text.records[section_timeline] = "<track>" + clip_text(1, 0, 500) + "</track><track>" + target + "</track><track>"
        + clip_text(1, 0, 500) + "</track>";
    return text;
}

namespace {

struct releasing_case {
    bool glsl;
    bool buffers;
    bool first_images = true;
    bool links = true;
};

} // namespace

static void load(document& d, const releasing_case& c, const gl_caps& caps)
{
    const document_text text = drawn_document();
    pack_file* pack = open_pack(complete_pack());
    xml_node* root = xml_parse(to_text(text).c_str());
    document_create(d, "demo.xmlz", timeline_new());
    document_loader loader;
    document_loader_begin(loader, d, root, pack, {caps, {}, c.glsl, c.first_images, c.glsl});
    const bool loaded = document_loader_run(loader);
    CHECK_MESSAGE(loaded, loader.error);
    xml_free(root);
    pack_close(pack);
}

// Loads and draws, the second time in a window of another size: the target is made anew twice.
static void load_and_draw(document& d, const releasing_case& c, renderer& drawing)
{
    gl_caps caps = {0, 0, 1, 0xFF, 3, 0, 0, 0, 0, 0};
    caps.vbo = caps.pbo = c.buffers;
    load(d, c, caps);
    CHECK(compose_frame(d, 0, {800, 600, 1.25f, {0, 0, 0, 0}}, caps, c.glsl, drawing) != 0);
    CHECK(compose_frame(d, 100, {640, 480, 1.25f, {0, 0, 0, 0}}, caps, c.glsl, drawing) != 0);
}

static std::string released_counts(const releasing_case& c)
{
    record_bench b; // the engine remembers nothing of other tests
    b.answers.links = c.links;
    document d = {};
    load_and_draw(d, c, b.r);
    const object_names while_shown = names_in(take_gl_calls());
    unload_document(d);
    const object_names gone = names_in(take_gl_calls());
    CHECK(gone.made.empty());
    std::vector<std::string> deleted = while_shown.deleted;
    deleted.insert(deleted.end(), gone.deleted.begin(), gone.deleted.end());
    std::sort(deleted.begin(), deleted.end());
    CHECK(deleted == while_shown.made); // each exactly once
    CHECK(d.image_texture_table.raw == nullptr);
    unload_document(d);
    CHECK(take_gl_calls() == "\n");
    return counts_of(while_shown.made);
}

TEST_CASE("every name that loading and drawing a document make is deleted once when it is unloaded")
{
    // An output, a moving picture, an image that is made anew twice, a cube map; with buffers four arrays of the
    // mesh and the moving picture's memory; where programs draw the lines of a wireframe, and two programs.
    CHECK(released_counts({.glsl = false, .buffers = false}) == "6 textures, 0 buffers, 0 shaders, 0 programs");
    CHECK(released_counts({.glsl = false, .buffers = true}) == "6 textures, 5 buffers, 0 shaders, 0 programs");
    CHECK(released_counts({.glsl = true, .buffers = false}) == "6 textures, 0 buffers, 4 shaders, 2 programs");
    CHECK(released_counts({.glsl = true, .buffers = true}) == "6 textures, 6 buffers, 4 shaders, 2 programs");
}

TEST_CASE("so are a loading screen's, and those of programs that did not link")
{
    CHECK(released_counts({.glsl = true, .buffers = true, .first_images = false})
        == "6 textures, 6 buffers, 4 shaders, 2 programs");
    CHECK(released_counts({.glsl = true, .buffers = true, .links = false})
        == "6 textures, 5 buffers, 4 shaders, 4 programs"); // each once more, for the log
}

TEST_CASE("records whose OpenGL objects were released stay, and have none to release")
{
    record_bench b;
    document d = {};
    load_and_draw(d, {.glsl = true, .buffers = true}, b.r);
    take_gl_calls();
    release_document_gl(d);
    CHECK(counts_of(names_in(take_gl_calls()).deleted) == "4 textures, 6 buffers, 4 shaders, 2 programs");
    CHECK(table_get(d.image_texture_table, 1)->texture == 0);
    release_document_gl(d);
    CHECK(take_gl_calls() == "\n");
    unload_document(d);
    CHECK(take_gl_calls() == "\n");
}

TEST_CASE("a document whose memory alone is freed leaves its OpenGL objects to the context")
{
    record_bench b;
    document d = {};
    load_and_draw(d, {.glsl = true, .buffers = true}, b.r);
    take_gl_calls();
    unload_document_memory(d);
    CHECK(take_gl_calls() == "\n");
    CHECK(d.image_texture_table.raw == nullptr);
    unload_document(d);
    CHECK(take_gl_calls() == "\n");
}
