#include "builders.h"

#include <algorithm>
#include <cstdlib>

animation_function empty_function()
{
    animation_function function = {};
    function.cached_time = no_cached_time;
    return function;
}

void add_segment(animation_function& function, int32_t type, uint32_t length, std::initializer_list<float> params)
{
    const uint32_t i = function.segment_count;
    if (i >= max_segments)
        return;
    function.segment_count = static_cast<uint8_t>(i + 1);
    function.segment_type[i] = type;
    function.segment_length[i] = length;
    std::copy_n(params.begin(), std::min<size_t>(params.size(), max_segment_params), function.segment_params[i]);
}

animation_function one_segment(int32_t type, uint32_t length, std::initializer_list<float> params)
{
    animation_function function = empty_function();
    add_segment(function, type, length, params);
    return function;
}

animation_function constant_function(float value)
{
    return one_segment(segment_constant, 100, {value});
}

animation_function linear_function(float slope, float value_at_0, uint32_t length)
{
    return one_segment(segment_linear, length, {slope, value_at_0});
}

test_document::test_document()
    : d{}
    , running_end{}
{
    document_create(d, "test.xmlz", timeline_new());
}

test_document::~test_document()
{
    document_free(d);
}

uint32_t add_function(test_document& t, const animation_function& function)
{
    return table_add(t.d.function_table, function);
}

uint32_t add_color(test_document& t, float red, float green, float blue)
{
    value_record color = {};
    color.values[3] = red;
    color.values[4] = green;
    color.values[5] = blue;
    return table_add(t.d.transform_table, color);
}

uint32_t add_image_texture(test_document& t, uint32_t width, uint32_t height)
{
    image_texture texture = {};
    texture.width = width;
    texture.height = height;
    texture.components = 3;
    return table_add(t.d.image_texture_table, texture);
}

uint32_t add_scene(test_document& t)
{
    return table_add(t.d.scene_table, scene_record{});
}

uint32_t add_scene(test_document& t, const std::vector<scene_object>& objects)
{
    scene_record scene = {};
    scene.object_count = static_cast<uint32_t>(objects.size());
    scene.objects = static_cast<scene_object*>(std::malloc(objects.size() * sizeof(scene_object)));
    std::copy(objects.begin(), objects.end(), scene.objects);
    return table_add(t.d.scene_table, scene);
}

scene_object object_at_origin(object_kind kind, uint32_t object, uint32_t material)
{
    scene_object made = {};
    made.type = kind;
    made.object = object;
    made.material = material;
    for (uint32_t i = 6; i < placement_value_count; ++i)
        made.values[i].value = 1.0f;
    return made;
}

layer_record make_layer(uint32_t type, uint32_t length, uint32_t model_id)
{
    layer_record layer = {};
    layer.type = type;
    layer.length = length;
    layer.model_id = model_id;
    layer.camera[camera_fov] = 60.0f;
    layer.camera[camera_far] = 100.0f;
    return layer;
}

uint32_t add_layer(test_document& t, uint32_t track, const layer_record& layer)
{
    timeline& tracks = *t.d.timeline;
    const uint32_t number = tracks.layer_count[track]++;
    tracks.layers[track][number] = layer;
    const uint32_t start = t.running_end[track];
    t.running_end[track] = start + layer.space_before + layer.length;
    register_layer(start, t.running_end[track], number, track, tracks);
    return number;
}
