// Tracks and their layers, which the documents call layers and clips, and the music.
#include "model/document.h"
#include "model/read_sections.h"
#include "model/render_modes.h"

#include <cassert>

constexpr uint32_t needed_camera_children = camera_value_count; // a ninth is read and not used

static bool read_layer_attributes(const document_place& at, const xml_node& node, layer_record& layer)
{
    int32_t space_before = 0;
    int32_t length = 0;
    int32_t type = 0;
    if (!read_handle(at, node, "id", layer.model_id) || !read_int(at, node, "space_before", space_before)
        || !read_int(at, node, "length", length) || !read_handle(at, node, "offset", layer.offset)
        || !read_int(at, node, "type", type))
        return false;
    layer.type = static_cast<uint32_t>(type);
    const bool has_target = render_mode_of(layer.type).target == mode_draws_to_texture;
    if (has_target && !read_handle(at, node, "rtex", layer.rtex))
        return false;
    if (!read_handle(at, node, "clearcolor", layer.clearcolor))
        return false;
    if (space_before < 0)
        return fail(at, line_of("space_before %d is negative.", space_before));
    if (length < 0)
        return fail(at, line_of("length %d is negative.", length));
    layer.space_before = static_cast<uint32_t>(space_before);
    layer.length = static_cast<uint32_t>(length);
    return true;
}

static void check_layer(const document_place& at, const layer_record& layer)
{
    assert(uint64_t{layer.space_before} + layer.length <= max_track_end);
    const document& d = *at.reader.target;
    check_choice(at, "type", static_cast<int32_t>(layer.type), render_mode_count - 1,
        "it acts as 2, with a projection of its own");
    if (const auto offset = static_cast<int32_t>(layer.offset); offset < 0)
        warn(at, line_of("offset %d is negative: the time of its functions begins near its end.", offset));
    check_handle(at, d.scene_table, "id", layer.model_id);
    check_handle(at, d.image_texture_table, "rtex", layer.rtex);
    check_handle(at, d.transform_table, "clearcolor", layer.clearcolor);
}

// "ortographic" is the documents' own spelling.
static bool read_field_of_view(const document_place& at, const xml_node& node, uint8_t& mode, float& value)
{
    const char* type = read_attribute(at, node, "type");
    if (type == nullptr)
        return false;
    mode = fov_constant;
    if (std::strcmp(type, "ortographic") == 0)
        mode = fov_orthographic;
    if (std::strcmp(type, "dynamic") == 0)
        mode = fov_dynamic;
    if (mode == fov_constant && std::strcmp(type, "static") != 0)
        warn(at,
            "type " + quoted(type)
                + " is neither \"static\" nor \"dynamic\" nor \"ortographic\": it acts as \"static\".");
    return mode == fov_dynamic ? read_function_value(at, node, value) : read_real(at, node, "value", value);
}

static bool read_camera_value(const document_place& at, const xml_node& node, layer_record& layer, uint32_t index)
{
    assert(index <= camera_value_count);
    if (index == camera_fov)
        return read_field_of_view(at, node, layer.camera_mode[index], layer.camera[index]);
    animated_value value{};
    if (!read_animated(at, node, dynamic_if_named, value))
        return false;
    if (index < camera_value_count) {
        layer.camera_mode[index] = value.dynamic;
        layer.camera[index] = value.value;
    }
    return true;
}

static bool read_camera(const document_place& at, const xml_node& node, layer_record& layer)
{
    if (!need_children(at, node, needed_camera_children))
        return false;
    check_child_count(at, node, camera_value_count + 1);
    const xml_node* child = node.first_child;
    for (uint32_t index = 0; index <= camera_value_count && child != nullptr; ++index, child = child->next_sibling) {
        if (!read_camera_value(place_of_part(at, "value", index + 1), *child, layer, index))
            return false;
    }
    return true;
}

// Lays the layer behind the one before it, its pause included in its span.
static bool enter_layer(
    const document_place& at, const layer_record& layer, uint32_t index, uint32_t track, timeline& t)
{
    const uint32_t start = at.reader.layer_start;
    assert(track < track_count && index < layers_per_track && start <= max_track_end);
    const uint64_t end = uint64_t{start} + layer.space_before + layer.length;
    if (end > max_track_end)
        return fail(at, line_of("ends at %llu ticks, beyond %u.", static_cast<unsigned long long>(end), max_track_end));
    register_layer(start, static_cast<uint32_t>(end), index, track, t);
    if (start % 100 != 0 && start / 100 == end / 100)
        warn(at, "the clip is never shown: it begins within a second and ends before the next one.");
    at.reader.layer_start = static_cast<uint32_t>(end);
    return true;
}

// Whether a track draws a scene at tick 0.
static bool draws_at_once(const timeline& t)
{
    for (uint32_t track = 0; track < track_count; ++track) {
        const layer_record& first = t.layers[track][0];
        if (first.space_before == 0 && first.model_id != 0)
            return true;
    }
    return false;
}

// A show ends at the first frame without a track 1 or without a scene; a loading screen may
// well begin later.
void check_timeline(document_reader& reader)
{
    const timeline* t = reader.target->timeline;
    const document_place at = place_of_section(reader, section_timeline);
    const bool is_show = std::strcmp(reader.target->name, "loading.xmlz") != 0;
    if (t != nullptr && t->slot_layer[0][0] == no_layer)
        warn(at,
            std::string("track 1 has no clip in its first second: ")
                + (is_show ? "the show is over at once." : "nothing is shown."));
    else if (t != nullptr && is_show && !draws_at_once(*t))
        warn(at, "no track draws a scene at its beginning: the show is over at once.");
    if (reader.record > track_count)
        warn(at, line_of("%u tracks: the first %u are read.", reader.record, track_count));
}

bool read_track(const document_place& at, const xml_node& node)
{
    const uint32_t track = at.number - 1;
    timeline* t = at.reader.target->timeline;
    if (t == nullptr || track >= track_count)
        return true;
    at.reader.handle = track + 1;
    at.reader.layer_start = 0;
    uint32_t index = 0;
    for (const xml_node* child = node.first_child; child != nullptr; child = child->next_sibling, ++index) {
        const document_place here = place_of_part(at, "clip", index + 1);
        if (index == layers_per_track)
            return fail(here, line_of("more than %u clips.", layers_per_track));
        layer_record& layer = t->layers[track][index];
        if (!read_layer_attributes(here, *child, layer) || !read_camera(here, *child, layer)
            || !enter_layer(here, layer, index, track, *t))
            return false;
        check_layer(here, layer);
        t->layer_count[track] = index + 1;
    }
    return true;
}

// ---- the music --------------------------------------------------------------------------

bool pass_over_music_item(const document_place&, const xml_node&)
{
    return true;
}

void check_music(document_reader& reader)
{
    const xml_node& node = *reader.section_node;
    if ((node.attribute_count != 0 || node.text != nullptr) && xml_get_attribute(&node, "file") == nullptr)
        warn(place_of_section(reader, section_music), "attribute \"file\" is missing: there is no music.");
}
