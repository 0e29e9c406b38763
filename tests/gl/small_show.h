// Small shows for tests: a document written as text, loaded as the player loads one, and
// drawn by the compositor into the window of drawing_window.h.
//
// A show_text collects the records of each section; adding one returns its handle. A
// small_show is such a text, loaded for one of the two paths. Loading checks that it warns
// of dangling references only where there are some; every frame checks that OpenGL reports no error and that
// nothing is printed but the one line for wireframes. In pictures row 0 is the lowest.
#pragma once

#include "document_text.h"
#include "drawing_window.h"
#include "render/layer_plan.h"

#include <array>
#include <cstdint>
#include <string>
#include <vector>

// ---- texts ----------------------------------------------------------------------

// A number that is a constant, or the handle of a function.
struct number {
    std::string value;
    const char* type = "static";

    number(double constant = 0);
};

number written(const char* text); // "nan", "inf" and the like
number dynamic(int function);
number orthographic(); // a field of view

struct placed_object {
    int type = object_model;
    int object = 0;
    int material = 0;
    int font = 0;
    std::string text = {};
    std::array<number, 9> place = {0, 0, 0, 0, 0, 0, 1, 1, 1}; // position, rotation, scale
    int visibility = 0;
    number offset = 0;
    bool facing = false;
    std::string manipulators = {};
};

std::string to_text(const placed_object& object);

// A manipulator with its parameters; model -1: it names none.
std::string manipulator(int type, const std::vector<number>& params, int model = -1, int model_type = 0);

struct clip {
    int scene = 0;
    int mode = 0;
    int rtex = 0;
    int clearcolor = 0;
    int space_before = 0;
    int length = 1000;
    int offset = 0;
    // x, y, z, rotations about x, y, z, field of view, far distance
    std::array<number, 8> camera = {0, 0, 0, 0, 0, 0, orthographic(), 100};
};

// A camera at the origin with a field of view of 90 degrees: one unit of height at
// distance 1 is 60 pixels of the window.
std::array<number, 8> wide_camera();

// <name value="VALUE"/> and <name type="static" value="VALUE"/>, for materials.
std::string setting(const std::string& name, int value);
std::string setting(const std::string& name, const number& value);
std::string color(const number& red, const number& green, const number& blue, const number& alpha = 1);

struct unit_text {
    int texture;
    int function = 0;
    int wrapmode = 0;
    int cgenmode = 0;
    int rotation = 0;
};
std::string unit(int unit_number, const unit_text& u);

// A mesh's bytes; every texture set has two numbers a vertex.
struct mesh_content {
    std::vector<float> positions;
    std::vector<float> normals;
    std::vector<std::vector<float>> sets;
    std::vector<uint16_t> indices;
};

mesh_content square(float left, float low, float right, float high); // at z = 0, normal +z, counter-clockwise
mesh_content sphere();                                               // radius 1; set 1 goes round four times
mesh_content lump(float x, float y, float z, float radius);          // an octahedron around a point

struct rgba {
    int red;
    int green;
    int blue;
    int alpha = 255;
};

struct show_text {
    document_text text;
    std::vector<pack_content> entries;
    int counts[no_more_sections] = {};
    std::string tracks[track_count];

    int add(document_section section, const std::string& record);

    int mesh(const mesh_content& content);
    int function(const std::string& segments, int loop_type = 0, double loop_begin = 0, double loop_end = 0);
    int constant(const number& value);               // a function of one value
    int linear(double slope, double value_at_0 = 0); // of time in ticks
    int values(const std::array<number, 9>& v);      // section 5
    int clear_color(double red, double green, double blue);
    int light(double ambient, double diffuse, double x, double y, double z);
    // The first pixel is the top left one; its texture coordinate is (0, 0).
    int image(int width, int height, const std::vector<rgba>& pixels, int filter = 0, int format = 1);
    int black_image(int width, int height, int format = 0);
    int reference(texture_kind kind, int id); // section 10
    int texture(int width, int height, const std::vector<rgba>& pixels, int filter = 0);
    int plain_texture(const rgba& c);
    int cube_texture(); // six colours: cube_face_colors
    int dynamic_texture(int type, int bits, const std::vector<int>& functions);
    int material(const std::string& settings);
    int plain_material(const rgb& c); // replaces what is there, without depth
    int effect(int type, const std::vector<int>& functions);
    int scene(const std::vector<placed_object>& objects);
    int full_scene(int material); // the whole window, seen orthographically
    void show(int track, const clip& c);

    // Everything as one text.
    std::string document() const;
};

// +x, -x, +y, -y, +z, -z
extern const rgb cube_face_colors[6];

// ---- shows ----------------------------------------------------------------------

struct show_options {
    bool glsl = false;
    bool vbo = false;
    bool pbo = false;
    bool npot = true;
    bool first_images = true;
    bool dangling = false;    // loading warns of references to nothing
    bool many_copies = false; // drawing may say that copies are left out
};

struct small_show {
    document d;
    gl_caps caps;
    bool glsl;
    bool many_copies;
    frame_view view = {window_width, window_height, 4.0f / 3.0f};
    uint32_t drawn = 0;       // what the last frame returned
    uint32_t line_arrays = 0; // lines "GenerateLineIndexArray" so far
    std::string cut_copies;   // with many_copies: what drawing has said so far

    small_show(const show_text& text, const show_options& options);
    small_show(const show_text& text, bool shader_path);
    ~small_show();
    small_show(const small_show&) = delete;
    small_show& operator=(const small_show&) = delete;

    picture frame(uint32_t time = 0);

    const image_texture& image(int handle) const;
    ::dynamic_texture& moving(int handle) const;
};

// A texture's level 0 as OpenGL has it; row 0 is the lowest (coordinate 0).
struct stored_texture {
    int width;
    int height;
    int internal_format;
    int minification;
    int magnification;
    std::vector<uint8_t> bytes; // red, green, blue
};
stored_texture read_texture(uint32_t name);
rgb texel(const stored_texture& t, int x, int y);

// ---- checking -------------------------------------------------------------------

// A colour within a tolerance; a failure names both.
void check_pixel(const picture& p, int x, int y, const rgb& expected, int tolerance = 2);
void check_color(const rgb& found, const rgb& expected, int tolerance = 2);
rgb to_rgb(double red, double green, double blue); // 0..1, clamped

// The lit pixels of a row from x = 0 on (any channel above 128).
int lit_pixels_in_row(const picture& p, int y);
int lit_pixels_in_column(const picture& p, int x);
