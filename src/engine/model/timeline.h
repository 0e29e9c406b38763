// The timeline: 32 tracks of up to 256 layers, and the tables that find the
// layer of a moment.
//
// Times are ticks of 1/100 s, slots are whole seconds (tick / 100). The documents
// call a track a layer and a layer a clip; the code says track and layer.
// A timeline belongs to its document.
#pragma once

#include <cstddef>
#include <cstdint>

constexpr uint32_t track_count = 32;
constexpr uint32_t layers_per_track = 256;
constexpr uint32_t slots_per_track = 256;                 // seconds that can be searched
constexpr uint32_t max_track_end = slots_per_track * 100; // ticks: 25,600 is the last end accepted
constexpr uint32_t no_layer = 0xFFFFFFFFu;

// What they mean stands in model/render_modes.h.
enum render_mode : uint32_t {
    render_simple = 0,
    render_to_texture = 1,
    render_link = 2,
    render_clear_depth = 3,
    render_to_texture_16_9 = 4,
    render_quarter = 5,
    render_quarter_keep = 6,
    render_quarter_4_3 = 7,
    render_clear_depth_link = 8,
    render_mode_count
};

enum camera_value : uint32_t {
    camera_x,
    camera_y,
    camera_z,
    camera_rotation_x,
    camera_rotation_y,
    camera_rotation_z, // degrees
    camera_fov,        // degrees, the full vertical angle
    camera_far,
    camera_value_count
};

enum fov_mode : uint8_t { fov_constant = 0, fov_orthographic = 1, fov_dynamic = 2 };

struct layer_record {
    uint32_t model_id;                       // no mesh: handle of scene_table; 0 draws nothing
    uint32_t space_before;                   // ticks of pause before the layer
    uint32_t offset;                         // ticks added for animation functions
    uint32_t length;                         // ticks
    uint32_t type;                           // render_mode
    uint32_t rtex;                           // the texture drawn into: handle of image_texture_table; 0 none
    uint32_t clearcolor;                     // handle of transform_table; 0 black
    uint8_t camera_mode[camera_value_count]; // 0 constant, 1 dynamic; for the field of view fov_mode
    float camera[camera_value_count];        // the constant, or a handle of function_table
};

// The size is fixed; the tail beyond the fields in use is reserved.
constexpr size_t timeline_size = 893312;
constexpr size_t timeline_used = track_count * 4 + sizeof(layer_record) * track_count * layers_per_track
    + 4 * track_count * slots_per_track + 4 * track_count * layers_per_track + track_count * 4;

struct timeline {
    uint32_t layer_count[track_count]; // layers on each track
    layer_record layers[track_count][layers_per_track];
    uint32_t slot_layer[track_count][slots_per_track]; // where a second's search starts; no_layer: nowhere
    uint32_t layer_end[track_count][layers_per_track]; // tick at which each layer ends
    uint32_t track_end[track_count];                   // greatest end on each track
    uint8_t reserved[timeline_size - timeline_used];
};
static_assert(sizeof(timeline) == timeline_size);

// A cleared timeline with every slot set to no_layer; freed with timeline_free.
timeline* timeline_new();
void timeline_free(timeline* t);

// Enters layer number `layer` of a track, whose span (its pause included) is
// start..end ticks. A layer that starts off a whole second and ends before the
// next one is not entered at all: it can never be found, and its layer_end stays
// 0. `track` below 32, `layer` below 256, end at most 25,600 (a slot of its own
// beyond the table is left out).
void register_layer(uint32_t start, uint32_t end, uint32_t layer, uint32_t track, timeline& t);

// What a track shows at a moment.
struct active_layer {
    bool found;          // else nothing
    uint32_t layer;      // its number
    uint32_t local_time; // ticks from the end of its pause
};

// The layer of `track` (below 32) at `time` ticks.
active_layer find_layer(const timeline& t, uint32_t track, uint32_t time);

// Whether a show ends at `time`: the first track alone decides whether anything is left.
bool timeline_is_over(const timeline& t, uint32_t time);
