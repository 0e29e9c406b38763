// What a source makes, before it is known which records a document needs of it: the same material is one record
// in space and another in a flat scene, a font one for each material that its texts have.
//
// Things name each other by address; the show owns them all and frees none before itself.
#pragma once

#include "authoring/asset/font_import.h"
#include "authoring/asset/model_import.h"
#include "authoring/asset/shape.h"
#include "authoring/curve/curve.h"
#include "authoring/show/element.h"
#include "model/document.h"
#include "model/records.h"

#include <array>
#include <cstdint>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <variant>
#include <vector>

struct thing;
struct authored_record;

// A number that stands still, or the curve that it follows.
struct moving_number {
    double constant = 0;
    const thing* curve = nullptr;
};
using moving_point = std::array<moving_number, 3>;

struct curve_thing {
    curve c;
};

// Where something goes in space.
struct path_thing {
    moving_point at;
};

// Where a clip is seen from: the eye, the document's three angles, field of view and far plane.
struct camera_thing {
    moving_point at;          // of the eye
    bool moves_world = false; // `at` is how far the world is moved instead
    moving_point rotation;
    moving_number fov = {60, nullptr};
    moving_number far = {600, nullptr};
};

// A record of nine values: a light, a colour.
struct value_thing {
    std::array<moving_number, 9> values;
    bool is_light = false;
};

struct picture_thing {
    uint32_t generator = 0;
    std::vector<double> values;
};

constexpr uint8_t node_black = 0; // no record: the picture that a node without an input reads

struct node_thing {
    uint8_t code = node_black;
    std::string name;
    const thing* input1 = nullptr; // nodes
    const thing* input2 = nullptr;
    const thing* picture = nullptr; // codes below 201
    std::vector<double> values;
    uint32_t filter = filter_linear; // kept in the document, used of outputs alone
    uint32_t format = 0;
};

struct output_thing {
    const thing* node = nullptr;
    std::string name;
    uint32_t filter = filter_mipmaps;
    uint32_t format = 0;
};

struct image_thing {
    std::string file; // empty: a target
    std::string name; // of the entry; empty: the file's own
    uint32_t filter = filter_mipmaps;
    std::optional<uint32_t> format;    // none: by the picture
    std::array<uint32_t, 2> size = {}; // 0: as it is; of a target: pixels
    std::array<std::string, 2> levels; // files; empty: none
    bool turned = false;               // a target whose users turn their coordinates
};

struct cube_map_thing {
    std::array<std::string, cube_face_count> files;
    uint32_t filter = filter_linear;
    uint32_t format = 0;
};

struct dynamic_thing {
    uint32_t type = 0;
    std::string name;
    std::array<uint32_t, 2> size = {128, 128};
    uint32_t bits = 24;
    uint32_t filter = filter_linear;
    uint32_t format = 0;
    std::vector<moving_number> params;
};

struct mesh_thing {
    std::string file; // empty: `shape` is the whole
    model_options options = {0, false, {}, {}, normals_kept};
    shape_data shape;
    std::string name; // of the entry; empty: the file's, or a number
};

struct effect_thing {
    uint32_t type = 0;
    std::string name;
    std::vector<moving_number> params;
};

struct glyph_thing {
    const thing* mesh = nullptr;
    const thing* material = nullptr;
    uint32_t bitmap = 0;
    double offset = 0;
    double width = 0;
};

struct font_thing {
    std::string file; // empty: `glyphs` are the whole
    font_options options = {1, 0, 0, 0, default_font_detail, 0};
    bool all_letters = false;
    std::vector<glyph_thing> glyphs; // none or glyph_count
    const thing* material = nullptr; // of texts that name none
};

struct unit_description {
    const thing* texture = nullptr; // null: empty
    uint32_t combine = 0;
    uint32_t wrap = wrap_repeat;
    uint32_t coordinates = coordinates_off;
    bool turn = false;
};

struct shader_description {
    std::string vertex;
    std::string fragment;
    std::array<moving_number, user_uniform_count> uniforms; // curves, or nothing
    bool has_uniforms = false;
    bool enabled = true;
};

struct fog_description {
    uint32_t quality = fog_nicest;
    moving_number from = {0, nullptr};
    moving_number to = {1, nullptr};
    const thing* color = nullptr;
};

struct material_thing {
    std::array<unit_description, texture_unit_count> units;
    std::array<moving_number, 4> color = {{{1, nullptr}, {1, nullptr}, {1, nullptr}, {1, nullptr}}};
    uint32_t blend = blend_replace;
    std::optional<bool> depth;     // none: on in space, off in flat scenes
    std::optional<bool> normalize; // none: on where it is lit
    bool cull = false;
    bool wireframe = false;
    moving_number line_width = {1, nullptr};
    std::array<const thing*, 2> lights = {};
    std::optional<fog_description> fog;
    std::optional<shader_description> shader;
};

struct manipulator_thing {
    uint32_t type = 0;
    const thing* model = nullptr; // a mesh or an effect
    std::vector<moving_number> params;
};

struct placed_thing {
    int32_t kind = object_model;
    const thing* what = nullptr; // a mesh, an effect, a reference, a font; null: nothing
    std::string text;
    const thing* material = nullptr;
    moving_point at;
    moving_point rotation;
    moving_point scale = {{{1, nullptr}, {1, nullptr}, {1, nullptr}}};
    const thing* visible = nullptr; // a curve
    double time_offset = 0;
    bool facing = false;
    std::vector<const thing*> manipulators;
    uint32_t align = 0; // of align_choices
};

struct scene_thing {
    std::vector<const thing*> placed;
    bool filled = false;
};

struct clip_thing {
    const thing* scene = nullptr;    // null: draws nothing
    bool has_fault = false;          // a time that was said is none, and has been told
    std::optional<double> from = {}; // ticks; what is not said comes from the track
    std::optional<double> to = {};
    std::optional<camera_thing> camera = {};
    std::optional<bool> flat = {};
    uint32_t mode = 0;
    const thing* into = nullptr;
    const thing* clear = nullptr;
    const thing* next_clear = nullptr;
    double time_offset = 0;
};

// An entry of the section of objects, where a source says which.
struct reference_thing {
    int32_t type = 0;
    const thing* what = nullptr; // null: `id` is meant as it stands
    int64_t id = 0;
};

// A file that goes into the pack as it is, or a whole document's text.
struct entry_thing {
    std::string file;
    std::string name;         // of the entry; empty: the file's
    bool is_document = false; // the text of this document, in the envelope
};

struct raw_thing {
    document_section section = section_materials;
    element content;
};

using thing_value = std::variant<curve_thing, path_thing, camera_thing, value_thing, picture_thing, node_thing,
    output_thing, image_thing, cube_map_thing, dynamic_thing, mesh_thing, effect_thing, font_thing, material_thing,
    manipulator_thing, placed_thing, scene_thing, clip_thing, reference_thing, entry_thing, raw_thing>;

struct thing {
    thing_value value;
    source_place place;
    std::string name;             // what the source calls it
    uint32_t document = 0;        // 0: the show, 1: the loading screen
    bool explicit_record = false; // a curve that keep_order counts
    mutable bool used = false;    // something else has been made of it, or it has its place
};

template <typename kind> const kind* as(const thing* what)
{
    return what != nullptr ? std::get_if<kind>(&what->value) : nullptr;
}
