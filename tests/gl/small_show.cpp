#include "small_show.h"

#include "content/xml.h"
#include "effects/manipulator.h"
#include "render/compositor_gl.h"
#include "shell/loading.h"

#include <GL/glew.h>

#include <doctest/doctest.h>

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <cstring>
#include <unistd.h>
#include <utility>

// ---- texts ----------------------------------------------------------------------

number::number(double constant)
{
    char digits[64];
    std::snprintf(digits, sizeof digits, "%.9g", constant);
    value = digits;
}

number written(const char* text)
{
    number n;
    n.value = text;
    return n;
}

number dynamic(int function)
{
    number n(function);
    n.type = "dynamic";
    return n;
}

number orthographic()
{
    number n(0);
    n.type = "ortographic";
    return n;
}

std::array<number, 8> wide_camera()
{
    return {0, 0, 0, 0, 0, 0, 90, 100};
}

static std::string animated_text(const std::string& name, const number& n)
{
    return "<" + name + " type=\"" + n.type + "\" value=\"" + n.value + "\"/>";
}

static std::string attribute(const std::string& name, int value)
{
    return " " + name + "=\"" + std::to_string(value) + "\"";
}

std::string to_text(const placed_object& o)
{
    std::string result = "<object" + attribute("type", o.type) + attribute("object", o.object)
        + attribute("material", o.material) + attribute("font", o.font) + " text=\"" + o.text + "\">";
    for (const number& n : o.place)
        result += animated_text("v", n);
    return result + "<visibility" + attribute("value", o.visibility) + "/><offset value=\"" + o.offset.value
        + "\"/><facing" + attribute("value", o.facing) + "/><manipulators>" + o.manipulators
        + "</manipulators></object>";
}

std::string manipulator(int type, const std::vector<number>& params, int model, int model_type)
{
    std::string result = "<m" + attribute("type", type) + ">";
    if (model >= 0)
        result += "<manipulator" + attribute("type", model_type) + attribute("model", model) + "/>";
    for (const number& n : params)
        result += animated_text("v", n);
    return result + "</m>";
}

std::string setting(const std::string& name, int value)
{
    return "<" + name + attribute("value", value) + "/>";
}

std::string setting(const std::string& name, const number& value)
{
    return animated_text(name, value);
}

std::string color(const number& red, const number& green, const number& blue, const number& alpha)
{
    return setting("red", red) + setting("green", green) + setting("blue", blue) + setting("alpha", alpha);
}

std::string unit(int unit_number, const unit_text& u)
{
    return "<texture" + std::to_string(unit_number) + attribute("value", u.texture) + attribute("wrapmode", u.wrapmode)
        + attribute("cgenmode", u.cgenmode) + attribute("rotation", u.rotation) + attribute("function", u.function)
        + "/>";
}

// ---- meshes and pictures ----------------------------------------------------------

mesh_content square(float left, float low, float right, float high)
{
    return {{left, low, 0, right, low, 0, right, high, 0, left, high, 0}, {0, 0, 1, 0, 0, 1, 0, 0, 1, 0, 0, 1},
        {{0, 0, 1, 0, 1, 1, 0, 1}}, {0, 1, 2, 0, 2, 3}};
}

mesh_content sphere()
{
    constexpr int rings = 32;
    constexpr int sides = 48;
    constexpr double pi = 3.14159265358979;
    mesh_content m;
    m.sets.resize(1);
    for (int ring = 0; ring <= rings; ++ring) {
        for (int side = 0; side <= sides; ++side) {
            const double a = pi * ring / rings;
            const double b = 2 * pi * side / sides;
            for (const double c : {std::sin(a) * std::cos(b), std::cos(a), std::sin(a) * std::sin(b)})
                m.positions.push_back(static_cast<float>(c));
            m.sets[0].push_back(static_cast<float>(side) * 4.0f / sides);
            m.sets[0].push_back(static_cast<float>(ring) * 2.0f / rings);
        }
    }
    m.normals = m.positions;
    for (int ring = 0; ring < rings; ++ring) {
        for (int side = 0; side < sides; ++side) {
            const int k = ring * (sides + 1) + side;
            const int below = k + sides + 1;
            for (const int i : {k, k + 1, below + 1, k, below + 1, below})
                m.indices.push_back(static_cast<uint16_t>(i));
        }
    }
    return m;
}

mesh_content lump(float x, float y, float z, float radius)
{
    mesh_content m;
    for (int corner = 0; corner < 6; ++corner) {
        float p[3] = {x, y, z};
        float n[3] = {0, 0, 0};
        n[corner / 2] = corner % 2 == 0 ? 1.0f : -1.0f;
        p[corner / 2] += n[corner / 2] * radius;
        m.positions.insert(m.positions.end(), p, p + 3);
        m.normals.insert(m.normals.end(), n, n + 3);
    }
    m.sets.push_back(std::vector<float>(12, 0.5f));
    for (const int a : {0, 1})
        for (const int b : {2, 3})
            for (const int c : {4, 5})
                for (const int i : {a, b, c})
                    m.indices.push_back(static_cast<uint16_t>(i));
    return m;
}

template <typename value> static void append(std::string& bytes, const std::vector<value>& values)
{
    bytes.append(reinterpret_cast<const char*>(values.data()), values.size() * sizeof(value));
}

static std::string mesh_bytes(const mesh_content& m)
{
    std::string bytes;
    append(bytes,
        std::vector<uint16_t>{static_cast<uint16_t>(m.positions.size() / 3), static_cast<uint16_t>(m.sets.size())});
    append(bytes, m.positions);
    for (const std::vector<float>& set : m.sets)
        append(bytes, set);
    append(bytes, m.normals);
    append(bytes, m.indices);
    return bytes;
}

// An uncompressed TGA picture with alpha, the first pixel at the top left.
static std::string tga_of(int width, int height, const std::vector<rgba>& pixels)
{
    std::string bytes(18, '\0');
    bytes[2] = 2;
    bytes[12] = static_cast<char>(width & 255);
    bytes[13] = static_cast<char>(width >> 8);
    bytes[14] = static_cast<char>(height & 255);
    bytes[15] = static_cast<char>(height >> 8);
    bytes[16] = 32;
    bytes[17] = 0x28;
    for (const rgba& c : pixels)
        for (const int channel : {c.blue, c.green, c.red, c.alpha})
            bytes += static_cast<char>(channel);
    return bytes;
}

// ---- records --------------------------------------------------------------------

int show_text::add(document_section section, const std::string& record)
{
    text.records[section] += record;
    return ++counts[section];
}

static std::string add_entry(show_text& s, const std::string& bytes, const char* ending)
{
    const std::string name = "e" + std::to_string(s.entries.size()) + ending;
    s.entries.push_back({name, bytes});
    return name;
}

int show_text::mesh(const mesh_content& content)
{
    const std::string name = add_entry(*this, in_envelope(mesh_bytes(content)), ".mesh");
    return add(section_meshes, "<mesh filename=\"" + name + "\"/>");
}

int show_text::function(const std::string& segments, int loop_type, double loop_begin, double loop_end)
{
    return add(section_functions,
        "<f type=\"0\"" + attribute("loop_type", loop_type) + " loop_begin=\"" + number(loop_begin).value
            + "\" loop_end=\"" + number(loop_end).value + "\">" + segments + "</f>");
}

int show_text::constant(const number& value)
{
    return function("<s type=\"0\" length=\"100\"><a>" + value.value + "</a></s>");
}

int show_text::linear(double slope, double value_at_0)
{
    return function(
        "<s type=\"1\" length=\"20000\"><a>" + number(slope).value + "</a><b>" + number(value_at_0).value + "</b></s>");
}

int show_text::values(const std::array<number, 9>& v)
{
    std::string record = "<v><values>";
    for (const number& n : v)
        record += animated_text("v", n);
    return add(section_values, record + "</values></v>");
}

int show_text::clear_color(double red, double green, double blue)
{
    return values({0, 0, 0, red, green, blue, 0, 0, 0});
}

int show_text::light(double ambient, double diffuse, double x, double y, double z)
{
    return values({ambient, ambient, ambient, diffuse, diffuse, diffuse, x, y, z});
}

int show_text::image(int width, int height, const std::vector<rgba>& pixels, int filter, int format)
{
    const std::string name = add_entry(*this, tga_of(width, height, pixels), ".tga");
    return add(section_image_textures,
        "<i filename=\"" + name + "\"" + attribute("texture_format", format) + attribute("texture_filter", filter)
            + "/>");
}

int show_text::black_image(int width, int height, int format)
{
    return image(width, height, std::vector<rgba>(static_cast<size_t>(width * height), rgba{0, 0, 0}), 0, format);
}

int show_text::reference(texture_kind kind, int id)
{
    return add(section_objects, "<o" + attribute("type", kind) + attribute("id", id) + "/>");
}

int show_text::texture(int width, int height, const std::vector<rgba>& pixels, int filter)
{
    return reference(texture_image, image(width, height, pixels, filter));
}

int show_text::plain_texture(const rgba& c)
{
    return texture(2, 2, {c, c, c, c});
}

const rgb cube_face_colors[6] = {{255, 0, 0}, {0, 255, 255}, {0, 255, 0}, {255, 0, 255}, {0, 0, 255}, {255, 255, 0}};

int show_text::cube_texture()
{
    static const char* const faces[6] = {"xp", "xn", "yp", "yn", "zp", "zn"};
    std::string record = "<c";
    for (int face = 0; face < 6; ++face) {
        const rgba c = {cube_face_colors[face].red, cube_face_colors[face].green, cube_face_colors[face].blue};
        record += std::string(" ") + faces[face] + "=\"" + add_entry(*this, tga_of(2, 2, {c, c, c, c}), ".tga") + "\"";
    }
    return reference(texture_cube,
        add(section_cube_maps, record + attribute("texture_format", 0) + attribute("texture_filter", 0) + "/>"));
}

static std::string function_list(const std::vector<int>& functions)
{
    std::string list;
    for (const int f : functions)
        list += "<p>" + std::to_string(f) + "</p>";
    return list;
}

int show_text::dynamic_texture(int type, int bits, const std::vector<int>& functions)
{
    return add(section_dynamic_textures,
        "<d name=\"moving\"" + attribute("type", type) + attribute("texture_format", bits == 8 ? 2 : 0)
            + attribute("texture_filter", 0) + " resolution=\"64x64\"" + attribute("bpp", bits) + ">"
            + function_list(functions) + "</d>");
}

int show_text::material(const std::string& settings)
{
    return add(section_materials, "<material>" + settings + "</material>");
}

int show_text::plain_material(const rgb& c)
{
    return material(setting("blend_function", 2) + color(c.red / 255.0, c.green / 255.0, c.blue / 255.0));
}

int show_text::effect(int type, const std::vector<int>& functions)
{
    return add(section_mesh_effects, "<e" + attribute("type", type) + ">" + function_list(functions) + "</e>");
}

int show_text::scene(const std::vector<placed_object>& objects)
{
    std::string record = "<scene name=\"s\">";
    for (const placed_object& o : objects)
        record += to_text(o);
    return add(section_scenes, record + "</scene>");
}

int show_text::full_scene(int material_handle)
{
    return scene({{.object = mesh(square(0, 0, 1, 1)), .material = material_handle}});
}

void show_text::show(int track, const clip& c)
{
    std::string record = "<clip" + attribute("id", c.scene) + attribute("space_before", c.space_before)
        + attribute("length", c.length) + attribute("offset", c.offset) + attribute("type", c.mode)
        + attribute("rtex", c.rtex) + attribute("clearcolor", c.clearcolor) + ">";
    for (const number& n : c.camera)
        record += animated_text("v", n);
    tracks[track] += record + animated_text("v", 0) + "</clip>";
}

std::string show_text::document() const
{
    document_text all = text;
    int last = track_count - 1;
    while (last >= 0 && tracks[last].empty())
        --last;
    for (int track = 0; track <= last; ++track)
        all.records[section_timeline] += "<layer>" + tracks[track] + "</layer>";
    return to_text(all);
}

// ---- shows ----------------------------------------------------------------------

namespace {

// What reaches standard output and standard error while it lives.
struct output_capture {
    int saved[2];
    FILE* kept;

    output_capture()
        : kept(std::tmpfile())
    {
        REQUIRE(kept != nullptr);
        std::fflush(stdout);
        for (int stream = 0; stream < 2; ++stream) {
            saved[stream] = dup(stream + 1);
            dup2(fileno(kept), stream + 1);
        }
    }

    // Ends it; what was written.
    std::string end()
    {
        std::fflush(stdout);
        for (int stream = 0; stream < 2; ++stream) {
            dup2(saved[stream], stream + 1);
            close(saved[stream]);
        }
        std::string all(static_cast<size_t>(lseek(fileno(kept), 0, SEEK_END)), '\0');
        const ssize_t got = pread(fileno(kept), all.data(), all.size(), 0);
        std::fclose(kept);
        return all.substr(0, got > 0 ? static_cast<size_t>(got) : 0);
    }
};

} // namespace

// True for lines that all tell of references to nothing.
static bool only_warnings(const std::string& lines)
{
    for (size_t begin = 0; begin < lines.size();) {
        const size_t end = lines.find('\n', begin);
        if (end == std::string::npos || lines.compare(begin, 9, "Warning: ") != 0)
            return false;
        begin = end + 1;
    }
    return true;
}

static gl_caps caps_for(const show_options& options)
{
    gl_caps caps = driver_caps();
    caps.vbo = options.vbo;
    caps.pbo = options.pbo;
    caps.npot = options.npot;
    return caps;
}

small_show::small_show(const show_text& text, const show_options& options)
    : d{}
    , caps{}
    , glsl(options.glsl)
    , many_copies(options.many_copies)
{
    open_test_window();
    forget_state();
    caps = caps_for(options);
    reset_rippler_cache(test_renderer().tools.rippler);
    xml_node* root = xml_parse(text.document().c_str());
    pack_file* pack = open_pack(text.entries);
    document_create(d, "demo.xmlz", timeline_new());
    document_loader loader;
    document_loader_begin(loader, d, root, pack, {caps, driver_formats(), glsl, options.first_images});
    output_capture capture;
    const bool loaded = document_loader_run(loader);
    const std::string lines = capture.end();
    pack_close(pack);
    xml_free(root);
    CHECK_MESSAGE(only_warnings(lines), lines);
    CHECK_MESSAGE((options.dangling ? !lines.empty() : lines.find(" does not exist.") == std::string::npos), lines);
    REQUIRE_MESSAGE(loaded, loader.error);
    CHECK(glGetError() == GL_NO_ERROR);
}

small_show::small_show(const show_text& text, bool shader_path)
    : small_show(text, show_options{.glsl = shader_path})
{
}

small_show::~small_show()
{
    unload_document(d);
    reset_rippler_cache(test_renderer().tools.rippler);
}

picture small_show::frame(uint32_t time)
{
    output_capture capture;
    forget_objects(test_renderer().gl); // other shows may have been loaded
    drawn = compose_frame(d, time, view, caps, glsl, test_renderer());
    std::string lines = capture.end();
    CHECK(glGetError() == GL_NO_ERROR);
    const std::string of_wireframes = "GenerateLineIndexArray\n";
    for (; lines.starts_with(of_wireframes); ++line_arrays)
        lines.erase(0, of_wireframes.size());
    if (many_copies)
        cut_copies += std::exchange(lines, "");
    CHECK(lines == "");
    return read_window();
}

const image_texture& small_show::image(int handle) const
{
    const auto* record = table_get(d.image_texture_table, static_cast<uint32_t>(handle));
    REQUIRE(record != nullptr);
    return *record;
}

dynamic_texture& small_show::moving(int handle) const
{
    auto* record = table_get(d.dynamic_texture_table, static_cast<uint32_t>(handle));
    REQUIRE(record != nullptr);
    return *record;
}

stored_texture read_texture(uint32_t name)
{
    stored_texture t;
    glActiveTexture(GL_TEXTURE0);
    glBindTexture(GL_TEXTURE_2D, name);
    glGetTexLevelParameteriv(GL_TEXTURE_2D, 0, GL_TEXTURE_WIDTH, &t.width);
    glGetTexLevelParameteriv(GL_TEXTURE_2D, 0, GL_TEXTURE_HEIGHT, &t.height);
    glGetTexLevelParameteriv(GL_TEXTURE_2D, 0, GL_TEXTURE_INTERNAL_FORMAT, &t.internal_format);
    glGetTexParameteriv(GL_TEXTURE_2D, GL_TEXTURE_MIN_FILTER, &t.minification);
    glGetTexParameteriv(GL_TEXTURE_2D, GL_TEXTURE_MAG_FILTER, &t.magnification);
    t.bytes.resize(static_cast<size_t>(t.width) * static_cast<size_t>(t.height) * 3);
    glPixelStorei(GL_PACK_ALIGNMENT, 1);
    glGetTexImage(GL_TEXTURE_2D, 0, GL_RGB, GL_UNSIGNED_BYTE, t.bytes.data());
    CHECK(glGetError() == GL_NO_ERROR);
    return t;
}

rgb texel(const stored_texture& t, int x, int y)
{
    const uint8_t* at = t.bytes.data() + static_cast<size_t>(y * t.width + x) * 3;
    return {at[0], at[1], at[2]};
}

// ---- checking -------------------------------------------------------------------

void check_color(const rgb& found, const rgb& expected, int tolerance)
{
    INFO(std::string("found ") << found.red << " " << found.green << " " << found.blue << ", expected " << expected.red
                               << " " << expected.green << " " << expected.blue);
    CHECK(is_near(found, expected, tolerance));
}

void check_pixel(const picture& p, int x, int y, const rgb& expected, int tolerance)
{
    INFO(std::string("pixel ") << x << ", " << y);
    check_color(pixel_at(p, x, y), expected, tolerance);
}

rgb to_rgb(double red, double green, double blue)
{
    const auto byte = [](double c) { return static_cast<int>(std::lround(std::clamp(c, 0.0, 1.0) * 255.0)); };
    return {byte(red), byte(green), byte(blue)};
}

static bool is_lit(const rgb& c)
{
    return c.red > 128 || c.green > 128 || c.blue > 128;
}

int lit_pixels_in_row(const picture& p, int y)
{
    int lit = 0;
    for (int x = 0; x < window_width; ++x)
        lit += is_lit(pixel_at(p, x, y));
    return lit;
}

int lit_pixels_in_column(const picture& p, int x)
{
    int lit = 0;
    for (int y = 0; y < window_height; ++y)
        lit += is_lit(pixel_at(p, x, y));
    return lit;
}
