// Builders of minimal records for tests and benchmarks: documents with empty
// tables, animation functions, layers on a timeline.
//
// A test_document owns everything that is added to it and frees it at the end of
// the test. Buffers that its records point to (mesh data, scene objects) must come
// from malloc. Nothing here calls OpenGL; records keep GL name 0.
#pragma once

#include "model/document.h"

#include <cstdint>
#include <initializer_list>
#include <vector>

// ---- animation functions --------------------------------------------------------

// A function without segments, freshly loaded: nothing cached.
animation_function empty_function();

// Appends a segment; parameters beyond those given are 0.
void add_segment(animation_function& function, int32_t type, uint32_t length, std::initializer_list<float> params);

// One segment of a formula; `length` ticks long.
animation_function one_segment(int32_t type, uint32_t length, std::initializer_list<float> params);

// The value `value` at every time.
animation_function constant_function(float value);

// The time itself, in ticks (times `slope`), up to `length`.
animation_function linear_function(float slope = 1.0f, float value_at_0 = 0.0f, uint32_t length = 1000000);

// ---- documents ------------------------------------------------------------------

// A document with every table present and empty, and a timeline without layers.
struct test_document {
    document d;
    uint32_t running_end[track_count]; // end of each track so far, ticks

    test_document();
    ~test_document();
    test_document(const test_document&) = delete;
    test_document& operator=(const test_document&) = delete;
};

uint32_t add_function(test_document& t, const animation_function& function);

// A value record whose values 3, 4, 5 are a colour; constants.
uint32_t add_color(test_document& t, float red, float green, float blue);

// An image texture of a size, without pixels.
uint32_t add_image_texture(test_document& t, uint32_t width, uint32_t height);

// A scene without objects, so that a layer has something to show.
uint32_t add_scene(test_document& t);

// A scene with copies of these objects.
uint32_t add_scene(test_document& t, const std::vector<scene_object>& objects);

// An object at the origin with scale 1, always visible.
scene_object object_at_origin(object_kind kind, uint32_t object, uint32_t material);

// ---- timelines ------------------------------------------------------------------

// A layer of `length` ticks in a mode, showing scene `model_id`; its field of view
// is a constant 60 degrees, its far plane 100.
layer_record make_layer(uint32_t type, uint32_t length, uint32_t model_id);

// Puts the layer behind the last one of its track and registers it. Its number.
uint32_t add_layer(test_document& t, uint32_t track, const layer_record& layer);
